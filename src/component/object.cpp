#include "component/object.h"

#include <utility>

#include "component/apartment.h"
#include "component/guid.h"
#include "component/vtables.h"

namespace hy_wristlog::component {

ObjectBody::ObjectBody(const ClassTable& table, std::shared_ptr<void> instance)
    : Table(table), Instance(std::move(instance)), Points(table.Points.size()) {
  for (Point& point : Points) point.Sinks = std::make_shared<SinkList>();
  if (Points.empty()) return;
  listener_ = makeListener(Points[0].Sinks, Points.size() > 1 ? Points[1].Sinks : nullptr);
  Table.Subscribe(Instance.get(), listener_);
}

ObjectBody::~ObjectBody() {
  Apartment::hereIfAny()->forgetObject(Instance.get());
  if (listener_) Table.Unsubscribe(Instance.get(), listener_);
  for (const Point& point : Points) point.Sinks->clear();
}

int ObjectBody::facetOf(const HyGuid& interfaceId) const {
  if (interfaceId == HY_IID_UNKNOWN || interfaceId == HY_IID_DISPATCH || interfaceId == Table.InterfaceId)
    return DispatchFacet;
  if (interfaceId == HY_IID_PROVIDE_CLASS_INFO) return ClassInfoFacet;
  if (interfaceId == HY_IID_SERIES_READER) return SeriesReaderFacet;
  if (interfaceId == HY_IID_CONNECTION_POINT_CONTAINER && !Points.empty()) return ContainerFacet;
  return -1;
}

HyDispatch* wrap(const ClassTable& table, const std::shared_ptr<void>& instance) {
  if (!instance) return nullptr;
  Apartment& apartment = Apartment::here();
  Handle* handle = apartment.findObject(instance.get());
  if (handle == nullptr) {
    handle = &makeHandle(std::make_unique<ObjectBody>(table, instance),
                         {&DispatchVtable, &ContainerVtable, &ClassInfoVtable, &SeriesReaderVtable});
    try {
      apartment.keepObject(instance.get(), *handle);
    } catch (...) {
      release(*handle);
      throw;
    }
  }
  return facetAs<HyDispatch>(*handle, ObjectBody::DispatchFacet);
}

std::shared_ptr<void> unwrap(const ClassTable& table, HyUnknown* object) {
  if (object == nullptr) return nullptr;
  const void* vtable = object->lpVtbl;
  if (vtable != &DispatchVtable && vtable != &ContainerVtable && vtable != &ClassInfoVtable &&
      vtable != &SeriesReaderVtable)
    throw Refusal{HY_DISP_E_TYPEMISMATCH};
  const Handle& handle = handleOf(object);
  if (const HyResult refused = enter(handle); refused != HY_S_OK) throw Refusal{refused};
  const auto& body = static_cast<const ObjectBody&>(*handle.Content);
  if (&body.Table != &table) throw Refusal{HY_DISP_E_TYPEMISMATCH};
  return body.Instance;
}

}  // namespace hy_wristlog::component
