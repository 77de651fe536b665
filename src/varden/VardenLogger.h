#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hy_wristlog/Class_VardenLogger.h"
#include "link/LoggerLink.h"
#include "varden/record.h"

namespace hy_wristlog {

/// What the attempts of a retrieval have read of a recording.
struct RecordingRead {
  VardenRecord Record;  ///< as it was before the bytes came
  ByteArray Raw;        ///< all bytes that the logger holds, or the longest beginning of them that came
};

/// The inside of Class_VardenLogger: the record, the link, and what is done with both. The source of a
/// failure names the class "Class_VardenLogger".
class VardenLogger : public LoggerLink {
 public:
  VardenRecord record;

  // The record: VardenLogger.cpp
  std::unique_ptr<VardenLogger> fncCopyClass() const;
  void subErase();
  double Get_CurrentGMTtime() const;
  ByteArray Get_RawData(std::int32_t count) const;
  std::string Get_DeviceText() const;
  std::int32_t Get_MaxBatteryLife() const;
  bool Get_CTcompliant() const;
  std::int32_t Get_MaxBytesAvailable() const;
  DateSeries Get_EventTimes() const;
  TextSeries Get_EventTexts() const;
  TextSeries Get_EventRecords() const;
  ByteSeries Get_ConfigBlock() const;
  const ByteSeries& Get_RawData() const { return lastRead_.Raw; }
  bool Get_RawDataIsPart() const;
  std::int32_t Get_BytesInLogger() const;
  enmRetrieveStep Get_RetrieveStep() const { return retrieveStep_; }
  /// Notes how far a retrieval has come; an attempt that comes less far than an earlier one changes nothing.
  void noteStep(enmRetrieveStep step) { retrieveStep_ = std::max(retrieveStep_, step); }
  void subShowFormComm();
  void subHideFormComm();

  // Firmware and what it can do: firmware.cpp
  bool fncHasMemoryFullFlag() const;
  bool fncHasLoadedVoltage() const;
  bool fncHasSleepMode() const;
  bool fncHasNewEventFormat() const;
  bool fncHasNewLightScaleFactors() const;
  bool fncIsValidFirmware() const;
  void subParseVersionInfo(std::string_view version);

  // Config block and subject text: config/VardenLogger_config.cpp
  void subDecodeVardenLoggerConfig(const PacketArray& packets);
  PacketArray fncEncodeVardenLoggerConfig();
  void Let_ConfigPackets(const PacketArray& packets);
  PacketArray Get_ConfigPackets();
  void subDecodeSubjectInfo();
  void subEncodeSubjectInfo();
  void subDecodeSubjectPacket(const PacketArray& packets);
  PacketArray fncEncodeSubjectPacket();
  void Let_SubjectPacket(const PacketArray& packets);
  PacketArray Get_SubjectPacket();

  // The shell: commands/VardenLogger_values.cpp, _settings.cpp, _transfers.cpp. A command that is not heard
  // raises NoCharacters or WrongCharacters, a missing answer NoCharacters or NoFinalCharacter. A value that
  // fails its check three times raises DamagedAnswer, a memory location that cannot be read
  // MemoryReadFailure. Reading a configuration also raises RetriesExceeded, NoPacket, UnknownStructure and
  // DamagedConfig; sending one also raises NoInitiation to NoEndAcknowledgement.
  /// Returns false, without a failure, when no logger answers.
  bool fncGetVardenPrompt();
  /// Whether the four digits after the first "#" are the CRC-16/XMODEM of the text before it, and not 0000.
  /// If so `line` becomes that text without blanks around it, otherwise empty.
  static bool fncCheckCRCandParse(std::string& line);
  void fncReadVardenFWversion();
  void fncReadVardenBatteryVoltage();
  void fncReadVardenTime();
  void fncReadVardenData();
  /// Returns a new logger with the configuration, or null when it went into this one.
  std::unique_ptr<VardenLogger> fncReadVardenConfig(bool NewLogger);
  void fncReadVardenSetup();
  std::uint8_t fncReadVardenMemoryLocation(std::int32_t address);
  void subSetVardenMemoryLocation(std::int32_t address, std::uint8_t value);
  void subSetVardenClock(std::optional<double> date);
  void subSetVardenAcqStop(std::int32_t seconds);
  void subSetVardenMemoryPointer(std::int32_t address);
  void subSetDataAvailFlag(bool available);
  void subSetVardenSleep(bool sleep);
  void subClearVardenMemory();
  void subSendVardenConfig();
  void subVardenConfigCRCreset();
  void subAbortLoggerComms();
  static bool fncIsVardenFromDeviceName(std::string_view name);
  std::string fncTimeStamp(std::int32_t index, std::optional<std::int32_t> EpochLength = {}) const;

  // Docks and ports: commands/VardenLogger_docks.cpp. A port that cannot be opened raises DockPortFailure, a
  // port number below 1 InvalidDockPort.
  std::int16_t fncTolkaDockCOMport(std::int16_t& NumConnected);
  std::int16_t fncQuillanderDockCOMport(std::int16_t& NumConnected);
  bool fncTolkaLoggerConnected(bool KeepPortOpen, bool LongDSRwait);
  bool fncQuillanderLoggerConnected(bool KeepPortOpen);
  std::int32_t fncOpenTolkaPort(std::int16_t intPort, bool DelayAfterOpen, bool LongDSRwait);
  std::int32_t fncOpenQuillanderPort(std::int16_t intPort, bool DelayAfterOpen);
  void subResetQuillander();
  void subCloseTolkaPort();
  void subCloseQuillanderPort();
  void subCloseDevicePort();

  // The recording: decode/VardenLogger_decode.cpp
  void subSetRawDataFromPackets(const PacketArray& packets);
  /// The recording is seen from the moment `SeenAt` (UTC), or from now.
  enmDecodeResult fncDecodeDataArrays(bool& LowBatteryDetected, const std::optional<ByteArray>& RawBytes,
                                      bool DiagnosticDecode, std::optional<double> SeenAt = std::nullopt);

  /// Makes bytes of a saved recording the raw data, as if they had just been read.
  void setRawData(ByteArray raw);
  /// Class_VardenLogger::DecodeRecording.
  enmDecodeResult decodeRecording(const ByteArray& configBlock, const ByteArray& raw,
                                  std::string_view firmware, bool& lowBatteryDetected, bool diagnostic,
                                  double seenAt);

  // Files for engineers: files/. A file is replaced whole. It stays as it was when there are no raw data,
  // which a message box tells, and after a failure. What the system refuses is raised as FileNotFound,
  // DiskFull, PermissionDenied, PathFileAccess or PathNotFound; each file has failures of its own. A report
  // that fails leaves what was composed so far if no file stood there. PathFileAccess is passed on, because
  // the library's usual action for it is to leave quietly, as if the file had been written.

  /// Writes the facts of the configuration, then one byte a line.
  void subSaveRawDataToFile(std::string_view path);
  /// Reads such a file into RawData and BytesUsed; the configuration stays. A file without the heading is
  /// refused in a message box. Raises what `readRawDump` raises, and what the system refuses.
  void subReadRawDataFromFile(std::string_view path);
  /// Decodes diagnostically, tells the result and a low battery in message boxes, and writes a row for each
  /// epoch and the events. Raises what decoding raises, and WrongDeviceType or OutOfRange for a device or
  /// mode without columns.
  void subSaveDecodedDataToFile(std::string_view path);
  /// Writes a Kestrin 2's light test, a row for each second. It begins with the start time in the stream,
  /// which becomes StartTimeGMT. Raises NoLightTest for a stream that does not begin with an acquisition
  /// start.
  void subSaveDecodedTolkaTestDataToFile(std::string_view path);
  /// Writes the activity alone, as a KRD file, from the last acquisition start, whose time becomes
  /// StartTimeGMT. Raises OutOfRange without an activity calibration and when BytesUsed is 0.
  void subSaveActivityOnlyKRD(std::string_view path);

  // The configuration as text: config/config_text.cpp

  /// Writes every value under its label, and the block as it was read. Other lines of the file stay. Raises
  /// InvalidCall for a text with line breaks and for dates outside the years 100 to 9999, and what the system
  /// refuses.
  void subWriteConfigToINIfile(std::string_view path);
  /// Takes the section "Config Data" into the record; what was derived from it (subject, zone) stays. A
  /// missing number counts as 0, a missing epoch as 1, a missing abbreviation as "UNK"; a missing date stays
  /// as it was. Raises TypeMismatch for a value that is no number, date or hexadecimal text and Overflow for
  /// one that does not fit its field. The record is then unchanged.
  void subReadConfigFromINIfile(std::string_view path);
  /// Writes the 256 bytes that would be sent. Raises what encoding raises, and what the system refuses.
  void subWriteConfigToBINfile(std::string_view path);
  /// A line for each value: label, separator, value, CR LF. Enumerations stand in words.
  std::string fncConfigToString(std::string_view separator);

  // Time: varden_seconds.cpp
  static double fncLoggerSecondsToDate(std::int32_t seconds);
  static std::int32_t fncDateToLoggerSeconds(double date);

  // Battery and capacity: battery.cpp
  float fncGetBatteryPercent(float voltage, float loadedVoltage) const;
  float fncGetBatteryLife(float voltage, float loadedVoltage, float& percent) const;
  float Get_BattLifeRemaining();
  std::int16_t Get_BatteryPercent();
  std::string fncFriendlyBatteryStatus();
  double Get_MaxRecordingTimeAvailable(bool fromPresentFill) const;
  /// The size of the last packet that fncReadVardenData has received. Up to so many bytes, less one, may fill
  /// it up after the recording's last byte.
  std::size_t lastPacketBytes() const { return lastPacketBytes_; }
  /// Empty until bytes of the recording have come. A new attempt erases the record, and not this.
  const RecordingRead& lastRead() const { return lastRead_; }

 private:
  /// The record that the bytes of the recording belong to.
  const VardenRecord& recordOfRead() const { return lastRead_.Raw.empty() ? record : lastRead_.Record; }
  /// Keeps the bytes of good packets, unless more of the same recording are there. The filling of the last
  /// packet is left out and, where bytes are missing, all after the first packet that is not the next one.
  void keepRead(std::vector<Class_Packet> packets);
  void AbortAcknowledged() override;
  void XmodemPacketReceived(std::uint8_t ThisPacket, std::int32_t BytesSoFar) override;

  std::int16_t dockCOMport_ = 0;
  bool abortMark_ = false;
  bool commsAborted_ = false;
  std::size_t lastPacketBytes_ = 0;
  RecordingRead lastRead_;
  enmRetrieveStep retrieveStep_ = RetrieveStep_None;
};

}  // namespace hy_wristlog
