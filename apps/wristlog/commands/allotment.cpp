#include "commands/allotment.h"

#include "base/ascii.h"
#include "hy_wristlog/failure.h"
#include "workflows/dock_names.h"

namespace wristlog {

namespace hw = hy_wristlog;

Allotment::Allotment(const HarvestOptions& options, const std::vector<hw::Dock>& docks)
    : options_(options), ofDocks_(docks.size(), nullptr) {
  const auto refuse = [&](const Participant& one, const std::string& words) {
    throw hw::Failure(hw::FailureNumber::InvalidCall, "wristlog",
                      options.ListFile + ", line " + std::to_string(one.Line) + ": " + words);
  };
  for (const Participant& one : options.Participants) {
    if (one.Dock.empty()) continue;
    const hw::Dock* found = nullptr;
    for (std::size_t place = 0; place < docks.size(); ++place) {
      if (!hw::answersTo(docks[place], one.Dock)) continue;
      if (found != nullptr)
        refuse(one, "The docks " + found->Name + " and " + docks[place].Name + " are both called " +
                        one.Dock + ": name one by its first name");
      if (ofDocks_[place] != nullptr)
        refuse(one, "The dock " + docks[place].Name + " is given to two participants");
      found = &docks[place];
      ofDocks_[place] = &one;
    }
  }
  std::size_t place = 0;
  for (const Participant& one : options.Participants) {
    if (!one.SerialNumber.empty() || !one.Dock.empty()) continue;
    while (place < docks.size() &&
           (ofDocks_[place] != nullptr || docks[place].Model == hw::LggrPntr_Pendreader))
      ++place;
    if (place < docks.size()) ofDocks_[place] = &one;
  }
}

const Participant* Allotment::find(std::size_t place, const std::string& serialNumber) const {
  for (const Participant& one : options_.Participants)
    if (!one.SerialNumber.empty() && hw::equalsIgnoringCase(one.SerialNumber, serialNumber)) return &one;
  return ofDocks_[place];
}

bool Allotment::take(const Participant& participant) {
  const std::lock_guard lock(mutex_);
  return taken_.insert(&participant).second;
}

}  // namespace wristlog
