// A recording of any configuration: what the stream decoder makes of it.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "base/formats.h"
#include "support/fuzz.h"
#include "support/script.h"
#include "varden/decode/stream_decoder.h"
#include "varden/logging_modes.h"

namespace hy_wristlog::fuzz {
namespace {

constexpr std::string_view Lines[] = {"logger vivid # 60 01.00.0001",
                                      "logger kestrin2 # 15 00.01.0030",
                                      "logger vivid # 300 01.01.0001",
                                      "logger kestrin2 # # 00.01.0028",
                                      "calibrations # # # # #",
                                      "resets #",
                                      "used #",
                                      "begin #",
                                      "now #",
                                      "diagnostic",
                                      "start",
                                      "stop",
                                      "wait #",
                                      "samples # #",
                                      "samples # #",
                                      "event # #",
                                      "value # #",
                                      "status #",
                                      "fill # #",
                                      "bytes FD01"};

/// 2020-01-01; the times of the scripts count from there.
constexpr std::int64_t Origin = 1577836800;
constexpr std::size_t MostBytes = 300000;
/// Longer than the longest gap that counts as one; filling it takes no second.
constexpr std::int64_t LongestWait = 4000000;

double dateAt(std::int64_t seconds) { return static_cast<double>(Origin + seconds) / 86400.0 + 25569; }

/// A logger that records what the script says. Its clock goes on with the samples.
struct Recording {
  VardenRecord Record;
  DecodeOptions Options{
      false, dateAt(20 * 86400), [](double date) { return formatDate(date, "yyyy-mm-dd hh:nn:ss"); }, {}};

  explicit Recording(std::string_view script) {
    Record.DeviceType = KR_QUILLANDER;
    Record.AcquisitionMode = VardenMode_ActivityAndSpecialLight;
    Record.FirmwareVersion = "01.00.0001";
    Record.EpochLength = 60;
    Record.StartTimeGMT = dateAt(0);
    Record.ActivityCalibration = 128;
    Record.LightScaleCalibration = Record.RedLightCalibration = Record.GreenLightCalibration =
        Record.BlueLightCalibration = 1;
    for (const Line& line : linesOf(script)) obey(line);
    Record.BytesUsed = static_cast<std::int32_t>(static_cast<std::int64_t>(bytes_.size()) + more_);
    Record.RawData = bytes_;
  }

 private:
  void obey(const Line& line) {
    if (line.is("logger")) {
      Record.DeviceType = line.word(1) == "vivid"      ? KR_QUILLANDER
                          : line.word(1) == "kestrin2" ? KR_TOLKA
                                                       : static_cast<enmDeviceType>(line.number(1, 0, 9));
      Record.AcquisitionMode = static_cast<enmVardenLoggingMode>(line.number(2, -2, 300));
      Record.EpochLength = static_cast<std::int16_t>(line.number(3, -32768, 32767));
      Record.FirmwareVersion = line.word(4);
    } else if (line.is("calibrations")) {
      Record.ActivityCalibration = static_cast<std::uint8_t>(line.number(1));
      Record.LightScaleCalibration = static_cast<std::int32_t>(line.number(2, 0, 65535));
      Record.RedLightCalibration = static_cast<std::int32_t>(line.number(3, 0, 65535));
      Record.GreenLightCalibration = static_cast<std::int32_t>(line.number(4, 0, 65535));
      Record.BlueLightCalibration = static_cast<std::int32_t>(line.number(5, 0, 65535));
    } else if (line.is("resets")) {
      Record.Resets = static_cast<std::uint8_t>(line.number(1, 0, 15));
    } else if (line.is("used")) {
      more_ = line.number(1, -400000, 1000000);
    } else if (line.is("begin")) {
      Record.StartTimeGMT = dateAt(line.number(1, -Origin * 2, Origin * 2));
    } else if (line.is("now")) {
      Options.NowUtc = dateAt(line.number(1, -Origin * 2, Origin * 2));
    } else if (line.is("diagnostic")) {
      Options.Diagnostic = true;
    } else if (line.is("start")) {
      event(1, clock_);
    } else if (line.is("stop")) {
      event(2, clock_);
    } else if (line.is("wait")) {
      clock_ += line.number(1, -LongestWait, LongestWait);
    } else if (line.is("event")) {
      event(line.number(1), clock_ + line.number(2, -LongestWait, LongestWait));
    } else if (line.is("value")) {
      event(line.number(1), line.number(2) - Origin);
    } else if (line.is("status")) {
      put(254);
      put(line.number(1));
    } else if (line.is("fill")) {
      for (std::int64_t i = line.number(1, 0, 20000); i > 0; --i) put(line.number(2));
    } else if (line.is("bytes")) {
      for (const std::uint8_t byte : line.bytes()) put(byte);
    } else if (line.is("samples")) {
      samples(line.number(1, 0, 20000), Values(line.number(2)));
    }
  }

  void put(std::int64_t byte) {
    if (bytes_.size() < MostBytes) bytes_.push_back(static_cast<std::uint8_t>(byte));
  }
  void event(std::int64_t bits, std::int64_t seconds) {
    put(253);
    put(bits);
    put(0x5A);
    for (int i = 0; i < 4; ++i) put((Origin + seconds) >> 8 * i);
  }
  /// Records as long as the mode's, each of which begins with a byte that is no mark.
  void samples(std::int64_t count, Values values) {
    const LoggingMode* mode = findLoggingMode(Record.DeviceType, Record.AcquisitionMode);
    const std::int32_t length = mode != nullptr ? mode->recordLength() : 1;
    const bool light = mode != nullptr && mode->activityBytes() == 0;
    for (std::int64_t i = 0; i < count; ++i) {
      put(values.below(light ? 32 : 253));
      for (std::int32_t k = 1; k < length; ++k) put(values.below(!light && k == 1 ? 32 : 256));
    }
    clock_ += count * Record.EpochLength;
  }

  ByteArray bytes_;
  std::int64_t clock_ = 0, more_ = 0;
};

std::int32_t decode(Recording& recording) {
  StreamDecoder decoder(recording.Record, recording.Options);
  const std::int32_t failure = failureOf([&] { decoder.decode(); });
  if (failure == 0) decoder.finish();
  return failure;
}

template <class Do>
void forEachSeries(const VardenRecord& r, Do apply) {
  apply(r.ActivityArray), apply(r.LightArray), apply(r.RedLightArray), apply(r.GreenLightArray);
  apply(r.BlueLightArray), apply(r.MarkerArray), apply(r.Marker2Array), apply(r.WristStatusArray);
}

void checkSeries(const VardenRecord& record) {
  std::size_t epochs = 0;
  forEachSeries(record, [&](const auto& series) {
    require(series.empty() || epochs == 0 || series.size() == epochs, "series of unequal length");
    epochs = std::max(epochs, series.size());
  });
  for (const std::int32_t counts : record.ActivityArray)
    require(counts == EmptyActivity || (counts >= -1 && counts <= 32767), "activity out of range");
  for (const auto* light :
       {&record.LightArray, &record.RedLightArray, &record.GreenLightArray, &record.BlueLightArray})
    for (const float value : *light)
      require(std::isnan(value) || (value >= -1 && std::isfinite(value)), "light out of range");
  require(record.MarkerCount >= 0 && static_cast<std::size_t>(record.MarkerCount) <= record.EventArray.size(),
          "more markers than events");
}

bool sameBits(std::int32_t a, std::int32_t b) { return a == b; }
bool sameBits(Tristate a, Tristate b) { return a == b; }
bool sameBits(float a, float b) { return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b); }

template <class Series>
void requireSame(const Series& one, const Series& other) {
  require(std::equal(one.begin(), one.end(), other.begin(), other.end(),
                     [](const auto& a, const auto& b) { return sameBits(a, b); }),
          "the same bytes gave another series");
}

}  // namespace

const std::span<const std::string_view> Grammar = Lines;

void run(std::string_view script) {
  Recording recording(script);
  const VardenRecord& record = recording.Record;
  const std::int32_t failure = decode(recording);
  checkSeries(record);
  if (failure == 0 && record.Samples > 0) {
    forEachSeries(record, [&](const auto& series) {
      require(series.empty() || series.size() == static_cast<std::size_t>(record.Samples),
              "samples miscounted");
    });
    require(record.RawData && record.RawData->size() <= static_cast<std::size_t>(record.BytesUsed),
            "more bytes than were used");
    reached("epochs", record.Samples);
  }
  reached("bytes", record.BytesUsed > 0 ? record.BytesUsed : 0);
  reached("events", static_cast<std::int64_t>(record.EventArray.size()));
  for (std::size_t i = 0; i < std::min<std::size_t>(record.EventArray.size(), 100); ++i)
    failureOf([&] { require(!record.EventArray.text(i).empty(), "an event without words"); });

  if (record.Samples > 20000) return;
  Recording again(script);
  require(decode(again) == failure && again.Record.DecodeResult == record.DecodeResult, "another result");
  requireSame(record.ActivityArray, again.Record.ActivityArray);
  requireSame(record.LightArray, again.Record.LightArray);
  requireSame(record.RedLightArray, again.Record.RedLightArray);
  requireSame(record.MarkerArray, again.Record.MarkerArray);
  requireSame(record.WristStatusArray, again.Record.WristStatusArray);
}

}  // namespace hy_wristlog::fuzz
