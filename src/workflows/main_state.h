#pragma once

#include <cstdint>
#include <memory>

#include "base/dates.h"
#include "base/inside.h"
#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "pendrel/Pendrel.h"
#include "platform/platform.h"
#include "platform/work_under_way.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {

struct MainState {
  std::shared_ptr<Class_Pendrel> LegacyLogger = std::make_shared<Class_Pendrel>();
  std::shared_ptr<Class_VardenLogger> ActiveLogger = std::make_shared<Class_VardenLogger>();
  /// Hears the events of the present ActiveLogger; may be null.
  std::shared_ptr<LoggerEvents> Follower;
  bool AbortFlag = false;
  std::int16_t LegacyCOMport = 0;
  bool LegacyClearMemoryOnConfigure = true;
  std::int16_t PendrelProgressPercent = 0;
  std::int32_t PendrelBytesRead = 0;  ///< how much of the memory the last retrieval has read
  bool PendrelSetupTouched = false;   ///< the last ConfigureLegacy began to change the logger
  std::int16_t MaxCommunicationRetries = 1;
  bool WakeOnInput = false;
  bool AtWork = false;  ///< inside Configure, GetStatus or Retrieve

  VardenLogger& logger() { return Inside::of(*ActiveLogger); }
  Pendrel& pendrel() { return Inside::of(*LegacyLogger); }
  void follow(std::shared_ptr<LoggerEvents> follower);
  /// Replaces ActiveLogger by a new logger and shows it to the host.
  void makeActiveLogger();
};

/// Lets the world's waits be those of a Class_Main as long as one of its workflows runs, and keeps the thread
/// in this world for that time.
class WaitsOf {
 public:
  explicit WaitsOf(const MainState& state) : former_(world_->waits()) {
    ++world_->objects().get<platform::WorkUnderWay>().Count;
    world_->setWaits({state.WakeOnInput, &state.AbortFlag});
  }
  WaitsOf(const WaitsOf&) = delete;
  WaitsOf& operator=(const WaitsOf&) = delete;
  ~WaitsOf() {
    world_->setWaits(former_);
    --world_->objects().get<platform::WorkUnderWay>().Count;
  }

 private:
  std::shared_ptr<platform::Platform> world_ = platform::shareCurrent();
  platform::Waits former_;
};

/// Marks the time of a workflow. A host that is served in that time may ask for another workflow, which would
/// replace the logger at work: that workflow must not begin.
class WorkMark {
 public:
  explicit WorkMark(MainState& state) : state_(state), mayBegin_(!state.AtWork) { state.AtWork = true; }
  WorkMark(const WorkMark&) = delete;
  WorkMark& operator=(const WorkMark&) = delete;
  ~WorkMark() { state_.AtWork = !mayBegin_; }

  bool mayBegin() const { return mayBegin_; }

 private:
  MainState& state_;
  bool mayBegin_;
  WaitsOf waits_{state_};
};

}  // namespace hy_wristlog
