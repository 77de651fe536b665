#include <memory>
#include <utility>

#include "errors/Procedure.h"
#include "platform/platform.h"
#include "timezones/Class_TimeZoneTools.h"
#include "tools/Class_Tools.h"
#include "varden/VardenLogger.h"
#include "varden/config/config_codec.h"
#include "varden/config/logger_zone.h"
#include "varden/config/packets.h"
#include "varden/config/subject_codec.h"

namespace hy_wristlog {
namespace {

constexpr char Module[] = "Class_VardenLogger";
constexpr char UnknownZone[] = "UNK";

/// Runs a step whose failures are all passed on, with the procedure's bare name as their source.
template <class Step>
void passingOnAll(const char* name, Step&& step) {
  Procedure procedure{Module, name};
  procedure.trap([&](Failure& failure) {
    procedure.passesOn(failure.Number);
    return TrapAnswer::Dispatch;
  });
  try {
    procedure.run(step);
  } catch (const Failure& failure) {
    throw Failure(failure.Number, name, failure.Description);
  }
}

}  // namespace

void VardenLogger::subDecodeVardenLoggerConfig(const PacketArray& packets) {
  Procedure procedure{Module, "subDecodeVardenLoggerConfig"};
  procedure.run([&] {
    procedure.statement([&] { requirePackets(packets, "subDecodeVardenLoggerConfig"); });
    record.LastLoggerTime = -1;
    const ByteArray bytes =
        procedure.statement([&] { return packets ? joinPackets(*packets) : ByteArray{}; });
    record.RawConfigHex = Class_Tools::fncConvertByteArrayToHexString(bytes);
    procedure.statement([&] { checkConfigCrc(bytes); });
    procedure.statement([&] { checkConfigVersion(bytes); });
    procedure.statement([&] {
      record.ConfigBlock = readConfigBlock(bytes);
      // Engineers' pages find the block that was read last here, whichever logger sent it.
      platform::current().objects().get<VardenConfigBlock>() = record.ConfigBlock;
      applyConfigBlock(record.ConfigBlock, record);
    });
    procedure.statement([&] { subDecodeSubjectInfo(); });
    const TimeZoneRef zone = procedure.statement([&] { return findLoggerZone(record); });
    if (zone) record.TimeZone = zone;
    if (!record.TimeZone) return;
    procedure.statement([&] {
      record.GMToffset =
          Class_TimeZoneTools::fncCalcOffset(record.StartTimeGMT, *record.TimeZone, record.AutoDSTadjust);
    });
    if (record.TZstandardAbbrev != UnknownZone) return;
    // A copy is changed, because the zone itself belongs to the catalogue and others use it.
    record.TimeZone = std::make_shared<Class_TimeZoneInfo>(*record.TimeZone);
    record.TimeZone->Abbreviation = UnknownZone;
  });
}

PacketArray VardenLogger::fncEncodeVardenLoggerConfig() {
  Procedure procedure{Module, "fncEncodeVardenLoggerConfig"};
  return procedure.run([&]() -> PacketArray {
    const ByteArray bytes = procedure.statement([&] { return encodeConfigBlock(record); });
    if (bytes.empty()) return {};
    record.EncodedConfigBytes = bytes;
    return splitIntoPackets(bytes);
  });
}

void VardenLogger::Let_ConfigPackets(const PacketArray& packets) {
  passingOnAll("Let_ConfigPackets", [&] { subDecodeVardenLoggerConfig(packets); });
}

PacketArray VardenLogger::Get_ConfigPackets() { return fncEncodeVardenLoggerConfig(); }

void VardenLogger::subDecodeSubjectInfo() {
  Procedure procedure{Module, "subDecodeSubjectInfo"};
  procedure.run([&] { decodeSubjectText(record); });
}

void VardenLogger::subEncodeSubjectInfo() {
  Procedure procedure{Module, "subEncodeSubjectInfo"};
  procedure.run([&] { encodeSubjectText(record); });
}

void VardenLogger::subDecodeSubjectPacket(const PacketArray& packets) {
  Procedure procedure{Module, "subDecodeSubjectPacket"};
  procedure.run([&] {
    requirePackets(packets && !packets->empty() ? packets : PacketArray{}, "subDecodeSubjectPacket");
    record.EncodedSetup = decodeSubjectBytes(packets->front().BinData);
    procedure.statement([&] { subDecodeSubjectInfo(); });
  });
}

PacketArray VardenLogger::fncEncodeSubjectPacket() {
  Procedure procedure{Module, "fncEncodeSubjectPacket"};
  return procedure.run([&] { return PacketArray(splitIntoPackets(encodeSubjectBytes(record))); });
}

void VardenLogger::Let_SubjectPacket(const PacketArray& packets) {
  passingOnAll("Let_SubjectPacket", [&] { subDecodeSubjectPacket(packets); });
}

PacketArray VardenLogger::Get_SubjectPacket() { return fncEncodeSubjectPacket(); }

}  // namespace hy_wristlog
