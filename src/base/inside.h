#pragma once

namespace hy_wristlog {

/// The library's own way to what stands inside a public class. Hosts have none.
struct Inside {
  template <class Face>
  static auto& of(Face& face) {
    return *face.inside_;
  }
  template <class Face>
  static const auto& of(const Face& face) {
    return *face.inside_;
  }
};

}  // namespace hy_wristlog
