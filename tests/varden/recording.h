#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "base/dates.h"
#include "base/formats.h"
#include "varden/stream_decoder.h"

namespace hy_wristlog {

/// 2020-01-01 00:00:00; times in the streams of the tests count from there.
constexpr std::int32_t StartSeconds = 1577836800;
constexpr std::int32_t Day = 86400;

inline double dateAt(double seconds) { return (StartSeconds + seconds) / 86400.0 + 25569; }

/// A recording as a logger writes it.
struct Stream {
  ByteArray Bytes;

  Stream& raw(std::initializer_list<int> bytes) {
    for (const int byte : bytes) Bytes.push_back(static_cast<std::uint8_t>(byte));
    return *this;
  }
  Stream& many(std::size_t count, int byte) {
    Bytes.insert(Bytes.end(), count, static_cast<std::uint8_t>(byte));
    return *this;
  }
  Stream& event(int bits, std::int32_t seconds) { return eventValue(bits, StartSeconds + seconds); }
  Stream& eventValue(int bits, std::int32_t value) {
    const auto wire = static_cast<std::uint32_t>(value);
    return raw({253, bits, 0x5A})
        .raw({static_cast<int>(wire & 255), static_cast<int>(wire >> 8 & 255),
              static_cast<int>(wire >> 16 & 255), static_cast<int>(wire >> 24)});
  }
  Stream& status(int bits) { return raw({254, bits}); }
};

inline VardenRecord loggerRecord(enmDeviceType device, int mode, const char* firmware = "01.00.0001") {
  VardenRecord record;
  record.DeviceType = device;
  record.AcquisitionMode = static_cast<enmVardenLoggingMode>(mode);
  record.FirmwareVersion = firmware;
  record.EpochLength = 60;
  record.StartTimeGMT = dateAt(0);
  record.ActivityCalibration = 128;
  record.LightScaleCalibration = record.RedLightCalibration = record.GreenLightCalibration =
      record.BlueLightCalibration = 1;
  return record;
}

constexpr const char* OldEvents = "00.01.0030";
constexpr const char* NewEvents = "01.00.0001";
constexpr const char* NewScale = "01.01.0001";

struct Decoding {
  bool Diagnostic = false;
  double Now = dateAt(20 * Day);
  enmDecodeResult Result = Decode_InputError;
  bool LowBattery = false;
  std::vector<std::string> Messages{};

  void operator()(VardenRecord& record) {
    const DecodeOptions options{Diagnostic, Now,
                                [](double date) { return formatDate(date, "mm-dd hh:nn:ss"); },
                                [this](std::string_view title, std::string_view text) {
                                  Messages.push_back(std::string(title) + ": " + std::string(text));
                                }};
    StreamDecoder decoder(record, options);
    decoder.decode();
    decoder.finish();
    Result = decoder.result();
    LowBattery = decoder.lowBatteryDetected().value_or(false);
  }
  void operator()(VardenRecord& record, const Stream& stream) {
    record.RawData = stream.Bytes;
    record.BytesUsed = static_cast<std::int32_t>(stream.Bytes.size());
    (*this)(record);
  }
};

/// "number description" of the failure that `action` raises, or nothing.
template <class Action>
std::string raisedBy(Action&& action) {
  try {
    action();
    return {};
  } catch (const Failure& failure) {
    return std::to_string(failure.Number) + " " + failure.Description;
  }
}

}  // namespace hy_wristlog
