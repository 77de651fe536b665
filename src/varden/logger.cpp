#include <algorithm>
#include <utility>

#include "errors/Procedure.h"
#include "platform/platform.h"
#include "timezones/Class_TimeZoneTools.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {
namespace {

constexpr char Module[] = "Class_VardenLogger";

/// A listener may unsubscribe while it is told.
template <class Tell>
void tellAll(const std::vector<std::shared_ptr<VardenLoggerEvents>>& listeners, Tell&& tell) {
  const auto present = listeners;  // NOLINT(performance-unnecessary-copy-initialization)
  for (const auto& listener : present) tell(*listener);
}

/// Asks whether the diagnostic window's text is to be kept, and closes the window.
void closeWindow(Form_Comm& link) {
  if (link.Get_Visible()) {
    constexpr std::int32_t YesNoCancel = static_cast<std::int32_t>(MessageBoxButton::Yes) |
                                         static_cast<std::int32_t>(MessageBoxButton::No) |
                                         static_cast<std::int32_t>(MessageBoxButton::Cancel);
    const auto pressed = platform::current().host().showMessageBox(
        "Copy diag to clipboard?",
        "Do you want a copy of the text in the diag window copied to the clipboard?", YesNoCancel);
    if (pressed == MessageBoxButton::Yes) link.cmdCopyAll();
  }
  link.hide();
}

}  // namespace

VardenLogger::VardenLogger() : mfrmComm_(new Form_Comm(this)) {}

VardenLogger::~VardenLogger() {
  try {
    closeWindow(*mfrmComm_);
  } catch (...) {  // NOLINT(bugprone-empty-catch): a logger ends whatever its window says
  }
}

std::unique_ptr<VardenLogger> VardenLogger::fncCopyClass() const {
  Procedure procedure{Module, "fncCopyClass"};
  return procedure.run([&] {
    auto copy = std::make_unique<VardenLogger>();
    copy->record = record.copy();
    return copy;
  });
}

void VardenLogger::subErase() { record.erase(); }

double VardenLogger::Get_CurrentGMTtime() const {
  if (record.LastLoggerTime == UnknownDate) return UnknownDate;
  Procedure procedure{Module, "Get_CurrentGMTtime"};
  return procedure.run([&] {
    return record.LastLoggerTime + (Class_TimeZoneTools::fncGetGMTTime() - record.LastTimeLoggerRead);
  });
}

ByteArray VardenLogger::Get_RawData(std::int32_t count) const {
  if (count == 0) {
    count = record.BytesUsed;
    if (count == 0) return record.RawData.value_or(ByteArray{});
  }
  if (count < 0 || !record.RawData) return {};
  const auto kept = std::min(static_cast<std::size_t>(count), record.RawData->size());
  return {record.RawData->begin(), record.RawData->begin() + static_cast<std::ptrdiff_t>(kept)};
}

std::string VardenLogger::Get_DeviceText() const {
  if (record.DeviceType == KR_QUILLANDER) return "Kestrin Vivid";
  if (record.DeviceType == KR_TOLKA) return "Kestrin 2";
  return {};
}

std::int32_t VardenLogger::Get_MaxBatteryLife() const {
  if (record.DeviceType == KR_QUILLANDER) return 365;
  if (record.DeviceType == KR_TOLKA) return 30;
  return 0;
}

bool VardenLogger::Get_CTcompliant() const {
  return record.DeviceType == KR_QUILLANDER || record.DeviceType == KR_TOLKA;
}

std::int32_t VardenLogger::Get_MaxBytesAvailable() const { return record.MemorySize * 1024; }

void VardenLogger::subShowFormComm() {
  Procedure procedure{Module, "subShowFormComm"};
  procedure.run([&] { link().Get_Visible() ? link().hide() : link().show(); });
}

void VardenLogger::subHideFormComm() {
  Procedure procedure{Module, "subHideFormComm"};
  procedure.run([&] { link().hide(); });
}

void VardenLogger::CommEventError(std::int32_t ErrorNum, std::string& ErrorDescription) {
  tellAll(listeners, [&](auto& listener) { listener.CommEventError(ErrorNum, ErrorDescription); });
}

void VardenLogger::CommProgress(std::string& ProgressText) {
  tellAll(listeners, [&](auto& listener) { listener.CommProgress(ProgressText); });
}

void VardenLogger::AbortAcknowledged() {
  commsAborted_ = true;
  tellAll(listeners, [](auto& listener) { listener.AbortAcknowledged(); });
}

void VardenLogger::XmodemPacketReceived(std::uint8_t, std::int32_t BytesSoFar) {
  platform::current().host().downloadProgress(BytesSoFar, std::max(record.BytesUsed, 0));
}

}  // namespace hy_wristlog
