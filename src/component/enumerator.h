#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "component/guid.h"
#include "component/handle.h"

namespace hy_wristlog::component {

/// The items of an enumerator and its clones, with a reference to each.
template <class Items>
struct Listed {
  Listed() = default;
  Listed(const Listed&) = delete;
  Listed& operator=(const Listed&) = delete;
  ~Listed() {
    for (const auto& item : All) Items::drop(item);
  }
  std::vector<typename Items::Item> All;
};

/// An enumerator over the items that existed when it was made.
template <class Interface, class Vtable, class Items>
class Enumerator final : public Body {
 public:
  using Item = typename Items::Item;

  static Interface* make(std::shared_ptr<Listed<Items>> listed, std::size_t next = 0) {
    return facetAs<Interface>(makeHandle(std::make_unique<Enumerator>(std::move(listed), next), {&Functions}),
                              0);
  }

  Enumerator(std::shared_ptr<Listed<Items>> listed, std::size_t next)
      : listed_(std::move(listed)), next_(next) {}

  int facetOf(const HyGuid& interfaceId) const override {
    return interfaceId == HY_IID_UNKNOWN || interfaceId == Items::interfaceId() ? 0 : -1;
  }

 private:
  static HyResult next(Interface* self, std::uint32_t count, Item* items, std::uint32_t* fetched) noexcept {
    if (fetched != nullptr) *fetched = 0;
    if (items == nullptr || (fetched == nullptr && count != 1)) return HY_E_POINTER;
    return call<Enumerator>(self, [&](Enumerator& place) {
      const std::size_t taken = place.advance(count);
      std::copy_n(place.listed_->All.begin() + static_cast<std::ptrdiff_t>(place.next_ - taken), taken,
                  items);
      std::for_each_n(items, taken, [](const Item& item) { Items::hold(item); });
      if (fetched != nullptr) *fetched = static_cast<std::uint32_t>(taken);
      return taken == count ? HY_S_OK : HY_S_FALSE;
    });
  }

  static HyResult skip(Interface* self, std::uint32_t count) noexcept {
    return call<Enumerator>(
        self, [&](Enumerator& place) { return place.advance(count) == count ? HY_S_OK : HY_S_FALSE; });
  }

  static HyResult reset(Interface* self) noexcept {
    return call<Enumerator>(self, [&](Enumerator& place) {
      place.next_ = 0;
      return HY_S_OK;
    });
  }

  static HyResult clone(Interface* self, Interface** made) noexcept {
    if (made == nullptr) return HY_E_POINTER;
    *made = nullptr;
    return call<Enumerator>(self, [&](Enumerator& place) {
      *made = make(place.listed_, place.next_);
      return HY_S_OK;
    });
  }

  std::size_t advance(std::uint32_t count) {
    const std::size_t taken = std::min<std::size_t>(count, listed_->All.size() - next_);
    next_ += taken;
    return taken;
  }

  static constexpr Vtable Functions{
      queryInterface<Interface>, addReferenceTo<Interface>, releaseOf<Interface>, next, skip, reset, clone};

  std::shared_ptr<Listed<Items>> listed_;
  std::size_t next_;
};

}  // namespace hy_wristlog::component
