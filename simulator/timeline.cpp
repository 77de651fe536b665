#include "simulator/timeline.h"

#include <algorithm>
#include <utility>

namespace hy_wristlog::simulator {

void Timeline::advanceTo(Moment target) {
  while (fireNext(target)) {
  }
  now_ = std::max(now_, target);
}

void Timeline::advanceTo(Moment target, const std::function<bool()>& reached) {
  while (!reached())
    if (!fireNext(target)) {
      now_ = std::max(now_, target);
      return;
    }
}

bool Timeline::fireNext(Moment limit) {
  using Key = std::pair<Moment, std::uint64_t>;
  Alarm* next = nullptr;
  Key best{limit, UINT64_MAX};
  for (Alarm* alarm : alarms_)
    if (alarm->pending_ && Key{alarm->at_, alarm->order_} < best) {
      next = alarm;
      best = {alarm->at_, alarm->order_};
    }
  if (!once_.empty() && once_.begin()->first < best) {
    auto node = once_.extract(once_.begin());
    now_ = std::max(now_, node.key().first);
    node.mapped()();
    return true;
  }
  if (next == nullptr) return false;
  now_ = std::max(now_, next->at_);
  next->pending_ = false;
  next->action_();
  return true;
}

std::optional<Moment> Timeline::nextDue() const {
  std::optional<Moment> next;
  const auto consider = [&next](Moment at) { next = std::min(at, next.value_or(at)); };
  for (const Alarm* alarm : alarms_)
    if (alarm->pending_) consider(alarm->at_);
  if (!once_.empty()) consider(once_.begin()->first.first);
  return next;
}

void Timeline::after(nanoseconds delay, std::function<void()> action) {
  once_.emplace(std::pair{now_ + std::max(delay, nanoseconds{0}), order_++}, std::move(action));
}

Alarm::Alarm(Timeline& timeline, std::function<void()> action)
    : timeline_(timeline), action_(std::move(action)) {
  timeline_.alarms_.push_back(this);
}

Alarm::~Alarm() { std::erase(timeline_.alarms_, this); }

void Alarm::set(Moment at) {
  at_ = std::max(at, timeline_.now_);
  order_ = timeline_.order_++;
  pending_ = true;
}

}  // namespace hy_wristlog::simulator
