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

  enum FacetNumber { DispatchFacet, ContainerFacet, ClassInfoFacet };
  int facetOf(const HyGuid& interfaceId) const override;

  const ClassTable& Table;
  const std::shared_ptr<void> Instance;
  struct Point {
    std::shared_ptr<SinkList> Sinks;
    Handle* Living = nullptr;  ///< the connection point while it lives
  };
  std::vector<Point> Points;  ///< as in the table
  bool Working = false;       ///< inside a workflow

 private:
  std::shared_ptr<LoggerEvents> listener_;
};

/// The component of an object, with a reference for the caller; null for none. An object has one component
/// as long as that lives.
HyDispatch* wrap(const ClassTable& table, const std::shared_ptr<void>& instance);

/// The object behind an interface pointer, null for null. Refuses what is no object of that class.
std::shared_ptr<void> unwrap(const ClassTable& table, HyUnknown* object);

}  // namespace hy_wristlog::component
