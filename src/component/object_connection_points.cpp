#include <algorithm>
#include <utility>
#include <vector>

#include "component/enumerator.h"
#include "component/guid.h"
#include "component/object.h"
#include "component/vtables.h"

namespace hy_wristlog::component {
namespace {

/// A connection point. It keeps its object alive.
class PointBody final : public Body {
 public:
  PointBody(Handle& container, const ObjectBody& object, std::size_t number)
      : Container(container),
        Number(number),
        Events(*object.Table.Points[number]),
        Sinks(object.Points[number].Sinks) {
    addReference(container);
  }
  ~PointBody() override {
    // If another thread released this point, givePoint may already have made a new one in its place.
    auto* object = static_cast<ObjectBody*>(Container.Content.get());
    if (object != nullptr && object->Points[Number].Living == Self) object->Points[Number].Living = nullptr;
    release(Container);
  }
  int facetOf(const HyGuid& interfaceId) const override {
    return interfaceId == HY_IID_UNKNOWN || interfaceId == HY_IID_CONNECTION_POINT ? 0 : -1;
  }

  Handle& Container;
  const Handle* Self = nullptr;
  const std::size_t Number;
  const HyGuid& Events;
  const std::shared_ptr<SinkList> Sinks;
};

struct ConnectionItems {
  using Item = HyConnectData;
  static void hold(const Item& item) { item.pUnk->lpVtbl->AddRef(item.pUnk); }
  static void drop(const Item& item) { item.pUnk->lpVtbl->Release(item.pUnk); }
  static const HyGuid& interfaceId() { return HY_IID_ENUM_CONNECTIONS; }
};

struct PointItems {
  using Item = HyConnectionPoint*;
  static void hold(Item item) { item->lpVtbl->AddRef(item); }
  static void drop(Item item) { item->lpVtbl->Release(item); }
  static const HyGuid& interfaceId() { return HY_IID_ENUM_CONNECTION_POINTS; }
};

using Connections = Enumerator<HyEnumConnections, HyEnumConnectionsVtable, ConnectionItems>;
using Points = Enumerator<HyEnumConnectionPoints, HyEnumConnectionPointsVtable, PointItems>;

HyResult getConnectionInterface(HyConnectionPoint* self, HyGuid* interfaceId) noexcept {
  if (interfaceId == nullptr) return HY_E_POINTER;
  return call<PointBody>(self, [&](const PointBody& point) {
    *interfaceId = point.Events;
    return HY_S_OK;
  });
}

HyResult getConnectionPointContainer(HyConnectionPoint* self,
                                     HyConnectionPointContainer** container) noexcept {
  if (container == nullptr) return HY_E_POINTER;
  *container = nullptr;
  return call<PointBody>(self, [&](const PointBody& point) {
    addReference(point.Container);
    *container = facetAs<HyConnectionPointContainer>(point.Container, ObjectBody::ContainerFacet);
    return HY_S_OK;
  });
}

HyResult advise(HyConnectionPoint* self, HyUnknown* sink, std::uint32_t* cookie) noexcept {
  if (cookie == nullptr) return HY_E_POINTER;
  *cookie = 0;
  if (sink == nullptr) return HY_E_POINTER;
  return call<PointBody>(self, [&](const PointBody& point) {
    void* found = nullptr;
    for (const HyGuid* wanted : {&point.Events, &HY_IID_DISPATCH}) {
      if (sink->lpVtbl->QueryInterface(sink, wanted, &found) >= 0 && found != nullptr) break;
      found = nullptr;
    }
    if (found == nullptr) return HY_CONNECT_E_CANNOTCONNECT;
    auto* dispatch = static_cast<HyDispatch*>(found);
    try {
      *cookie = point.Sinks->connect(dispatch);
    } catch (...) {
      dispatch->lpVtbl->Release(dispatch);
      throw;
    }
    return HY_S_OK;
  });
}

HyResult unadvise(HyConnectionPoint* self, std::uint32_t cookie) noexcept {
  return call<PointBody>(self, [&](const PointBody& point) {
    return point.Sinks->disconnect(cookie) ? HY_S_OK : HY_CONNECT_E_NOCONNECTION;
  });
}

HyResult enumConnections(HyConnectionPoint* self, HyEnumConnections** connections) noexcept {
  if (connections == nullptr) return HY_E_POINTER;
  *connections = nullptr;
  return call<PointBody>(self, [&](const PointBody& point) {
    auto listed = std::make_shared<Listed<ConnectionItems>>();
    listed->All = point.Sinks->connections();
    *connections = Connections::make(std::move(listed));
    return HY_S_OK;
  });
}

constexpr HyConnectionPointVtable PointVtable{queryInterface<HyConnectionPoint>,
                                              addReferenceTo<HyConnectionPoint>,
                                              releaseOf<HyConnectionPoint>,
                                              getConnectionInterface,
                                              getConnectionPointContainer,
                                              advise,
                                              unadvise,
                                              enumConnections};

HyConnectionPoint* givePoint(Handle& container, ObjectBody& object, std::size_t number) {
  Handle*& point = object.Points[number].Living;
  // A point without references was released by another thread and will end: a new one takes its place.
  if (point == nullptr || addReference(*point) == 0) {
    point = &makeHandle(std::make_unique<PointBody>(container, object, number), {&PointVtable});
    static_cast<PointBody&>(*point->Content).Self = point;
  }
  return facetAs<HyConnectionPoint>(*point, 0);
}

HyResult enumConnectionPoints(HyConnectionPointContainer* self, HyEnumConnectionPoints** points) noexcept {
  if (points == nullptr) return HY_E_POINTER;
  *points = nullptr;
  return call<ObjectBody>(self, [&](ObjectBody& object) {
    auto listed = std::make_shared<Listed<PointItems>>();
    listed->All.reserve(object.Points.size());
    for (std::size_t i = 0; i < object.Points.size(); ++i)
      listed->All.push_back(givePoint(handleOf(self), object, i));
    *points = Points::make(std::move(listed));
    return HY_S_OK;
  });
}

HyResult findConnectionPoint(HyConnectionPointContainer* self, const HyGuid* interfaceId,
                             HyConnectionPoint** point) noexcept {
  if (point == nullptr) return HY_E_POINTER;
  *point = nullptr;
  if (interfaceId == nullptr) return HY_E_POINTER;
  return call<ObjectBody>(self, [&](ObjectBody& object) {
    for (std::size_t i = 0; i < object.Points.size(); ++i) {
      if (!(*interfaceId == *object.Table.Points[i])) continue;
      *point = givePoint(handleOf(self), object, i);
      return HY_S_OK;
    }
    return HY_CONNECT_E_NOCONNECTION;
  });
}

}  // namespace

constinit const HyConnectionPointContainerVtable ContainerVtable{
    queryInterface<HyConnectionPointContainer>, addReferenceTo<HyConnectionPointContainer>,
    releaseOf<HyConnectionPointContainer>, enumConnectionPoints, findConnectionPoint};

}  // namespace hy_wristlog::component
