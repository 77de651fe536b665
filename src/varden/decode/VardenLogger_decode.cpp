#include <cmath>
#include <optional>
#include <utility>

#include "base/faults.h"
#include "base/formats.h"
#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "platform/platform.h"
#include "timezones/Class_TimeZoneTools.h"
#include "varden/VardenLogger.h"
#include "varden/config/packets.h"
#include "varden/decode/stream_decoder.h"
#include "varden/failures.h"

namespace hy_wristlog {
namespace {

constexpr const char* Module = "Class_VardenLogger";

DecodeOptions optionsOfThisWorld(bool diagnostic, std::optional<double> seenAt, bool beginningOnly) {
  return {diagnostic, seenAt ? *seenAt : Class_TimeZoneTools::fncGetGMTTime(),
          [format = DateFormat(globals().ShortDateTimeFormat)](double date) { return format(date); },
          [](std::string_view title, std::string_view text) {
            platform::current().host().showMessageBox(title, text,
                                                      static_cast<std::int32_t>(MessageBoxButton::Ok));
          },
          beginningOnly};
}

}  // namespace

void VardenLogger::subSetRawDataFromPackets(const PacketArray& packets) {
  Procedure procedure{Module, "subSetRawDataFromPackets"};
  procedure.run([&] {
    requirePackets(packets, "subSetRawDataFromPackets");
    record.RawData = joinPackets(*packets);
  });
}

enmDecodeResult VardenLogger::fncDecodeDataArrays(bool& LowBatteryDetected,
                                                  const std::optional<ByteArray>& RawBytes,
                                                  bool DiagnosticDecode, std::optional<double> SeenAt) {
  Procedure procedure{Module, "fncDecodeDataArrays"};
  DecodeOptions options;
  std::optional<StreamDecoder> decoder;
  procedure.cleanUp([&] {
    if (decoder) LowBatteryDetected = decoder->lowBatteryDetected().value_or(LowBatteryDetected);
  });
  procedure.run([&] {
    procedure.statement([&] {
      if (!RawBytes) return;
      record.RawData = *RawBytes;
      record.BytesUsed = fault::narrow<std::int32_t>(RawBytes->size());
    });
    procedure.statement([&] { options = optionsOfThisWorld(DiagnosticDecode, SeenAt, Get_RawDataIsPart()); });
    procedure.statement([&] { decoder.emplace(record, options).decode(); });
    procedure.statement([&] { decoder->finish(); });
  });
  return decoder ? decoder->result() : Decode_InputError;
}

void VardenLogger::setRawData(ByteArray raw) {
  record.BytesUsed = fault::narrow<std::int32_t>(raw.size());
  record.RawData.reset();
  lastRead_ = {record, raw};
  record.RawData = std::move(raw);
}

enmDecodeResult VardenLogger::decodeRecording(const ByteArray& configBlock, const ByteArray& raw,
                                              std::string_view firmware, bool& lowBatteryDetected,
                                              bool diagnostic, double seenAt) {
  const CommandUnderWay command;
  if (link().Get_PortReady()) fault::raise(fault::InvalidCall, "The logger's port is open");
  if (configBlock.empty() || raw.empty())
    raiseFrom("DecodeRecording", FailureNumber::OutOfRange, "No config block, or no bytes");
  if (!std::isfinite(seenAt)) raiseFrom("DecodeRecording", FailureNumber::OutOfRange, "SeenAt is no date");
  record = {};
  lastRead_ = {};
  retrieveStep_ = RetrieveStep_None;
  subDecodeVardenLoggerConfig(splitIntoPackets(configBlock));
  if (!firmware.empty()) record.FirmwareVersion = firmware;
  setRawData(raw);
  return fncDecodeDataArrays(lowBatteryDetected, std::nullopt, diagnostic,
                             seenAt == UnknownDate ? std::nullopt : std::optional(seenAt));
}

}  // namespace hy_wristlog
