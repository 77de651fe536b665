#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/formats.h"
#include "simulator/simulated_world.h"
#include "support/failures.h"
#include "support/in_world.h"
#include "support/noting_host.h"
#include "support/without_start_up.h"
#include "varden/decode/stream_decoder.h"

namespace hy_wristlog {

/// 2020-01-01 00:00:00; times in the streams of the tests count from there.
constexpr std::int32_t StartSeconds = 1577836800;
constexpr std::int32_t Day = 86400;
inline double dateAt(double seconds) { return (StartSeconds + seconds) / 86400.0 + 25569; }

/// A recording as a logger writes it. "start@0 5x3 status2 7 event64@240 event8=256 stop@300" is a start,
/// three samples of 5, a status, a sample, a dock event, a reset event with its value, and a stop.
struct Stream {
  ByteArray Bytes;

  Stream() = default;
  Stream(const char* notation) {
    std::istringstream words(notation);
    for (std::string word; words >> word;) {
      int first = 0, second = 0;
      const auto is = [&](const char* form, int count) {
        return std::sscanf(word.c_str(), form, &first, &second) == count;
      };
      is("start@%d", 1)     ? event(1, first)
      : is("stop@%d", 1)    ? event(2, first)
      : is("event%d@%d", 2) ? event(first, second)
      : is("event%d=%d", 2) ? eventValue(first, second)
      : is("status%d", 1)   ? status(first)
      : is("%dx%d", 2)      ? many(second, first)
      : is("%d", 1)         ? many(1, first)
                            : throw std::invalid_argument(word);
    }
  }

  Stream& many(int count, int byte) {
    Bytes.insert(Bytes.end(), static_cast<std::size_t>(count), static_cast<std::uint8_t>(byte));
    return *this;
  }
  Stream& event(int bits, std::int32_t seconds) { return eventValue(bits, StartSeconds + seconds); }
  Stream& eventValue(int bits, std::int32_t value) {
    many(1, 253).many(1, bits).many(1, 0x5A);
    for (int byte = 0; byte < 4; ++byte) many(1, value >> 8 * byte);
    return *this;
  }
  Stream& status(int bits) { return many(1, 254).many(1, bits); }
};

constexpr const char *OldEvents = "00.01.0030", *NewEvents = "01.00.0001", *NewScale = "01.01.0001";

inline VardenRecord loggerRecord(enmDeviceType device, int mode, const char* firmware = NewEvents) {
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

struct Decoding {
  bool Diagnostic = false;
  double Now = dateAt(20 * Day);
  enmDecodeResult Result = Decode_InputError;
  bool LowBattery = false;

  void operator()(VardenRecord& record) {
    const DecodeOptions options{
        Diagnostic, Now, [](double date) { return formatDate(date, "mm-dd hh:nn:ss"); }, {}};
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

inline std::string elementText(std::int32_t value) {
  return value == EmptyActivity ? "?" : std::to_string(value);
}
inline std::string elementText(Tristate value) {
  return value == Tristate::Empty ? "?" : value == Tristate::True ? "1" : "0";
}
inline std::string elementText(float value) {
  std::ostringstream text;
  text.precision(7);
  text << value;
  return std::isnan(value) ? "?" : text.str();
}

/// An array in the notation of the streams, "-1x2 5 0.5"; ? is an empty element.
template <class Array>
std::string seriesText(const Array& array) {
  std::string text;
  for (std::size_t i = 0, end = 0; i < array.size(); i = end) {
    const std::string element = elementText(array[i]);
    while (end < array.size() && elementText(array[end]) == element) ++end;
    text += (i > 0 ? " " : "") + element + (end - i > 1 ? "x" + std::to_string(end - i) : "");
  }
  return text;
}

/// The arrays that hold something: " A 34 L 0.5 R .. G .. B ..".
inline std::string seriesOf(const VardenRecord& record) {
  std::string text;
  const auto add = [&](const char* name, const auto& array) {
    if (!array.empty()) text += name + seriesText(array);
  };
  add(" A ", record.ActivityArray);
  add(" L ", record.LightArray);
  add(" R ", record.RedLightArray);
  add(" G ", record.GreenLightArray);
  add(" B ", record.BlueLightArray);
  return text;
}

/// "number description" of the failure that `step` raises, empty when there is none; with its source,
/// `outcome`.
template <class Step>
std::string raisedBy(Step&& step, bool withSource = false) {
  if (withSource) return outcome(step);
  const Failure failure = caught(step);
  return failure.Number == 0 ? "" : std::to_string(failure.Number) + " " + failure.Description;
}

struct InSimulatedWorld : testing::Test {
  InWorld<simulator::SimulatedWorld> world;
};

}  // namespace hy_wristlog
