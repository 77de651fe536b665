#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hy_wristlog/enumerations.h"

/// The docks of this machine, whether a logger sits in them or not.
namespace hy_wristlog::engineering {

/// A dock of a model, as far as it can be seen without opening its port.
struct DockView {
  enmLoggerPointer Model = LggrPntr_None;
  std::string Words;           ///< "Kestrin Vivid"
  std::int32_t Connected = 0;  ///< how many docks of the model there are
  std::int32_t Port = 0;       ///< COM port of the only one; 0 when there is none, several, or no port
};

/// "Kestrin Vivid", "Kestrin 2" or "Pendreader".
std::string modelWords(enmLoggerPointer model);
std::string modelWords(enmDeviceType type);

/// One row a model of the docks in the calling thread's world. Raises the failures of the device search.
std::vector<DockView> docks();

/// The COM port of the only Pendreader in the calling thread's world; 0 when there is none, or several.
std::int16_t readerPort();

/// The path of the file that declares docks which the USB tree does not show. The file need not exist.
std::string declaredDocksFile();

/// What keeps docks that are declared there from being found, a sentence each.
std::vector<std::string> declarationTroubles();

enum class PortState : std::uint8_t { None, Free, InUse, NoPermission, Missing, Unusable };

struct PortView {
  PortState State = PortState::None;
  std::string Trouble;  ///< why it cannot be opened, and what to do about it; empty when it can
};

/// Opens COM port `port` for a moment. `None` below 1.
PortView portView(std::int32_t port);

/// "free", "in use", "no permission", "missing", "unusable", "no port".
std::string portWords(PortState state);

/// Whether COM port `port` is seen to be one of another machine.
bool isOnOtherMachine(std::int32_t port);

/// Why COM port `port` cannot be opened, and what to do about it; empty when it can be opened.
std::string portTrouble(std::int32_t port);

/// The same for each port from 1 to 64 that exists but is in use, or may not be opened by this user.
std::vector<std::string> portsOutOfReach();

}  // namespace hy_wristlog::engineering
