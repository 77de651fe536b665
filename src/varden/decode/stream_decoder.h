#pragma once

#include <optional>

#include "varden/decode/decode_walk.h"
#include "varden/decode/sample_decoder.h"

namespace hy_wristlog {

/// Decodes a recording: walks once over `RawData` and turns its event, status and sample records into the
/// arrays, one element an epoch, and into `EventArray`. It works on the record in place, so what was decoded
/// before a problem stays. It touches nothing but the record; what it needs of the world stands in the
/// options.
///
/// Call `decode`, then `finish`.
class StreamDecoder {
 public:
  StreamDecoder(VardenRecord& record, const DecodeOptions& options) : walk_{record, options} {}
  StreamDecoder(const StreamDecoder&) = delete;
  StreamDecoder& operator=(const StreamDecoder&) = delete;

  /// Checks the record, makes the arrays and walks over the bytes. Nothing is decoded, and the result stays
  /// `Decode_InputError`, without bytes and in a diagnostic decode of unknown firmware. After a failure the
  /// arrays hold the epochs decoded so far. Raises
  ///  - OutOfRange "Invalid Epoch Length", "Invalid Start Time", "Invalid Firmware Version", the texts of
  ///    missing calibrations, and "Incompatible Logging Mode", which mode 9 of the Quillander meets at its
  ///    first sample;
  ///  - WrongDeviceType "Incompatible Device Type";
  ///  - InvalidCall for an impossible start time;
  ///  - Overflow and OutOfMemory for a recording beyond all bounds, OutOfMemory also for gaps that add up to
  ///    more epochs of 15 s than two years have;
  ///  - DivisionByZero for an epoch length of 0 in a diagnostic decode;
  ///  - Subscript when `BytesUsed` reaches beyond the raw bytes, when a start that runs back has shrunk the
  ///    arrays below what is to be stored, and at a gap before a start while acquiring in mode 2 of the
  ///    Quillander.
  void decode();
  /// Cuts the arrays to the samples and hands result and counts to the record. Without samples the arrays
  /// keep an empty element for every byte.
  void finish();

  enmDecodeResult result() const { return walk_.Result; }
  /// No value when no walk began.
  std::optional<bool> lowBatteryDetected() const;

 private:
  void prepare();
  bool acceptsFirmware();
  void allocate();
  void walk();
  void cutAtReset();
  void round();
  void handleEvents();
  void handleStatus();
  void handleSample();
  void handleStray();
  void handleOldFirmwareBarrier();

  DecodeWalk walk_;
  std::optional<SampleDecoder> samples_;
  std::int64_t lengthBeforeReset_ = 0;
  bool barrier_ = false;
};

}  // namespace hy_wristlog
