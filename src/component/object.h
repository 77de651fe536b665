#pragma once

#include <memory>
#include <vector>

#include "component/handle.h"
#include "component/members.h"
#include "component/sinks.h"

namespace hy_wristlog::component {

/// An object of one of the classes.
class ObjectBody final : public Body {
 public:
  ObjectBody(const ClassTable& table, std::shared_ptr<void> instance);
  ~ObjectBody() override;

  enum FacetNumber { DispatchFacet, ContainerFacet, ClassInfoFacet, SeriesReaderFacet };
  int facetOf(const HyGuid& interfaceId) const override;

  const ClassTable& Table;
  const std::shared_ptr<void> Instance;
  struct Point {
    std::shared_ptr<SinkList> Sinks;
    Handle* Living = nullptr;  ///< the connection point while it lives
  };
  std::vector<Point> Points;  ///< as in the table
  bool Working = false;       ///< a workflow is running

 private:
  std::shared_ptr<LoggerEvents> listener_;
};

/// The component of an object, with a reference for the caller; null for null. An object has one component at
/// a time.
HyDispatch* wrap(const ClassTable& table, const std::shared_ptr<void>& instance);

/// The object that an interface pointer belongs to; null for null. Refuses anything but an object of that
/// class.
std::shared_ptr<void> unwrap(const ClassTable& table, HyUnknown* object);

}  // namespace hy_wristlog::component
