// The words for codes and decode results, the same for every host. A state of GetStatus, such as "Dock Not
// Connected", is told by Class_Main_status.cpp.
#include <array>
#include <span>
#include <string>

#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/failure_numbers.h"

namespace hy_wristlog {
namespace {

using namespace FailureNumber;

struct Named {
  std::int32_t Code;
  const char* Name;
};

constexpr auto Names = std::to_array<Named>({
#define HY_FAILURE_NUMBER(name, number) {number, #name},
#define HY_RETURN_CODE(name, number) {number, #name},
#include "hy_wristlog/failure_numbers.inc"
});

struct Meaning {
  std::int32_t Code;
  const char* Words;
};

constexpr const char* StructureWords = "The logger's configuration has a structure that is not known here.";

constexpr auto Meanings = std::to_array<Meaning>({
    {ReturnCode::Success, "Success."},
    {InvalidCall,
     "The library was called in a way that it does not allow, or while another workflow was at work."},
    {Overflow, "A number came that does not fit its place: damaged on the way, or by the logger. Try again."},
    {OutOfMemory, "There is not enough memory for it, or the recording's gaps add up to years."},
    {Subscript, "The recording does not fit the logger's configuration."},
    {DivisionByZero, "A value is 0 that must not be."},
    {TypeMismatch,
     "Something came that is no number, or no date: damaged on the way, or by the logger. Try again."},
    {Internal, "An error inside the library."},
    {FileNotFound, "A file or folder was not found."},
    {FileExists, "There is a file of that name already."},
    {DiskFull, "The disk is full."},
    {PermissionDenied, "A file or folder could not be written: permission denied."},
    {PathFileAccess, "A file or folder could not be read or written."},
    {PathNotFound, "The folder of a file was not found."},
    {ObjectNotSet, "An argument holds no object."},
    {ObjectUnloaded, "A part of the program was used after it had been closed."},
    {NoCharacters,
     "The logger does not answer. Seat it in its dock anew; its battery may need to be charged or replaced."},
    {NoFinalCharacter, "The logger's answer broke off. Seat it in its dock anew and clean the contacts."},
    {WrongCharacters,
     "The logger's answer was garbled. Clean the contacts, try another cable, and try again."},
    {InvalidSettings, "The port's settings are not valid."},
    {TooFewBytes, "The logger sent too few bytes. Seat it in its dock anew and try again."},
    {DataOverrun, "The port has lost data. Disconnect other devices and try again."},
    {InvalidPacketArray, "There is nothing to send to the logger."},
    {NoInitiation, "The logger did not ask for its configuration. Try again."},
    {TransmitTooSlow, "The port does not send. Disconnect the dock and connect it again."},
    {NoAcknowledgement, "The logger did not confirm its configuration. Try again."},
    {RetriesExceeded,
     "Too many packets were damaged on the way. Clean the contacts, try another cable, and try again."},
    {NoEndAcknowledgement, "The logger did not confirm the end of its configuration. Try again."},
    {NoPacket, "The logger sent no data. Seat it in its dock anew and try again."},
    {PortOpen, "This is not possible while the port is open."},
    {InvalidTimeout, "The port's time limit is not valid."},
    {InvalidPort, "There is no such port."},
    {NotWhileDesigning, "The port cannot be used at this time."},
    {ReadOnlyProperty, "This value of the port can only be read."},
    {PortNotAvailable, "The port is in use by another program, or you may not open it."},
    {InvalidDevice, "The port does not take its settings. Disconnect the dock and connect it again."},
    {InvalidPortSettings, "The port does not know these settings."},
    {InvalidByteSize, "The port does not know this number of data bits."},
    {InvalidDefaults, "The port's own settings are not valid. Disconnect the dock and connect it again."},
    {HardwareNotAvailable,
     "The port's hardware is missing or in use. Disconnect the dock and connect it again."},
    {NoQueues, "The system gives the port no room for its data. Disconnect the dock and connect it again."},
    {PortClosed, "This is not possible while the port is closed."},
    {DeviceOpen, "The port is open already."},
    {NoNotification, "The port does not tell what happens on it. Disconnect the dock and connect it again."},
    {PortStateFailure,
     "The dock was disconnected, or its port has locked up. Disconnect it and connect it again."},
    {EventMaskFailure, "The port does not tell its events. Disconnect the dock and connect it again."},
    {DeviceFailure, "The port reported a failure. Disconnect the dock and connect it again."},
    {ClosedWhileInUse, "The port was closed while it was in use."},
    {DeviceBusy, "The port is busy. Try again."},
    {ReadFailure, "Nothing can be read from the port. Disconnect the dock and connect it again."},
    {ControlBlockFailure, "The port reported an internal error. Disconnect the dock and connect it again."},
    {NoZones, "This system knows no time zones. Install its time zone data."},
    {ReturnCode::NotFound, "No dock, or no logger in the dock. Connect the dock and seat the logger in it."},
    {ReturnCode::WrongMode, "The recording mode is not one of this model."},
    {ReturnCode::WrongEpoch, "The epoch length is not 15, 30, 60, 120 or 300 seconds."},
    {ReturnCode::WrongStart, "The start lies before the logger's time, or outside what it can do."},
    {ReturnCode::WrongLogger, "The logger in the dock is not of the chosen model."},
    {ReturnCode::WrongFirmware, "The logger's firmware version is not known here."},
    {ReturnCode::NoFactoryValues, "The logger has lost its factory calibration. It needs service."},
    {ReturnCode::VerificationFailed,
     "What the logger stored is not what was sent. Try again; weights and heights are kept in tenths, an "
     "identity in 64 characters."},
    {ReturnCode::Aborted, "Aborted. The recording is still in the logger."},
    {ReturnCode::SubjectUnusable, "Warning: the subject's details in the logger are incomplete."},
    {ReturnCode::NoData, "The logger holds no data."},
    {ReturnCode::UnknownZone, "The time zone is unknown, or the logger has none."},
    {ReturnCode::TooManyDocks, "More than one dock is connected. Leave one."},
    {ReturnCode::WrongDateFormat, "The date format is not known."},
    {ReturnCode::WrongTimeFormat, "The time format is not known."},
    {ReturnCode::WrongEnd,
     "The end lies before the start or outside what the logger can do. A start needs an end."},
    {ReturnCode::UnknownStructure, StructureWords},
    {ReturnCode::ClockFailed, "The logger's clock does not take the time. It needs service."},
    {ReturnCode::LoggerReset, "Warning: the logger has been reset since it was configured."},
    {ReturnCode::StillWaiting, "Warning: the logger is still waiting for its start."},
    {ReturnCode::ZoneDiffers, "Warning: the logger's time zone is unknown here, or has other rules."},
    {ReturnCode::NoSamples, "The recording holds no samples."},
    {ReturnCode::DecodeProblem, "The recording has a problem; see the decode result."},
    {NoUserName, "The system does not tell who is working."},
    {NoDomainName, "The system does not tell the domain of who is working."},
    {NoSignedChar, "A number does not fit a signed byte."},
    {WrongPacket, "A packet has no data, or a size or type that there is not."},
    {WrongDeviceType, "This type of device is not supported."},
    {OutOfRange, "A value is outside what the logger can keep."},
    {UnknownStructure, StructureWords},
    {DamagedConfig, "The logger's configuration is damaged."},
    {NoLightTest, "The recording is no light test."},
    {DamagedAnswer,
     "The logger's answers are damaged. Clean the contacts, try another cable, and try again."},
    {DockPortFailure,
     "The dock's port could not be opened. Another program may hold it; disconnect the dock and connect it "
     "again."},
    {InvalidDockPort,
     "The number of the dock's port is below 1. Disconnect the dock and connect it again, or correct "
     "Docks.INI."},
    {MemoryReadFailure, "The logger's memory could not be read. Seat it in its dock anew and try again."},
});

/// The same for the workflows with a Pendreader: the numbers that only they have, and those that mean
/// something else there.
constexpr auto PendrelMeanings = std::to_array<Meaning>({
    {NoCharacters,
     "The logger does not answer. Seat it in the reader anew; its battery may have to be replaced."},
    {NoFinalCharacter, "The logger's answer broke off. Seat it in the reader anew and clean the contacts."},
    {TooFewBytes, "The logger sent too little of its memory. Seat it in the reader anew and try again."},
    {ReturnCode::NoPortSetting, "No port is remembered for the Pendreader."},
    {ReturnCode::NotWritable, "A folder cannot be written to: the file's, or the one of Settings.INI."},
    {ReturnCode::NotFound,
     "No port has a logger in a Pendreader. Connect the reader and seat the logger in it."},
    {ReturnCode::WrongMode, "The recording mode is not one of activity (1) and activity and steps (2)."},
    {ReturnCode::WrongEpoch, "The epoch length is not 15, 30 or 60 seconds."},
    {ReturnCode::WrongStart,
     "The start lies outside what the logger can wait for, or cannot be read from it."},
    {ReturnCode::NotOpened, "The Pendreader's port could not be opened."},
    {ReturnCode::WrongLogger, "What is in the reader is no Pendrel logger known here."},
    {ReturnCode::WrongFirmware, "The logger's firmware version cannot be read. It needs service."},
    {ReturnCode::VerificationFailed,
     "What the logger stored is not what was sent. Try again; its battery may have to be replaced."},
    {ReturnCode::Aborted, "Aborted."},
    {ReturnCode::SubjectUnusable, "The subject's details in the logger are incomplete."},
    {ReturnCode::UnknownLength, "How much was recorded cannot be read from the logger."},
    {ReturnCode::UnreadableBlock,
     "A part of the memory could not be read in five attempts. Try another port or adapter."},
    {ReturnCode::WrongDate,
     "The logger cannot be told this date. It is no day of the calendar, or lies outside 1930 to 2029, which "
     "is all that the logger's two digits of the year can mean."},
    {ReturnCode::UnknownZone, "The time zone is unknown, or the logger has none."},
    {PendrelMemorySize, "The size of the logger's memory is not known here. It needs service."},
    {PendrelDeviceType, "A Pendrel logger is of no such type."},
    {PendrelOutOfRange, "A date or an address is outside what a Pendrel logger can keep."},
    {PendrelEpochLength, "A Pendrel logger does not have this epoch length."},
    {PendrelSetup, "The set-up is none that a Pendrel logger takes."},
    {PendrelPort, "The port's number is below 1."},
    {PendrelBlock, "More was asked for than the logger's memory holds: its set-up tells a wrong length."},
    {PendrelChecksum,
     "The logger's answers are damaged. Clean the contacts, try another cable, and try again."},
    {PendrelAddress, "The address is outside the logger's memory."},
    {StartPassed, "The start had passed before the logger could be told. Try again."},
    {DelayOutOfBounds, "The start is too near, or too far, for the logger to wait for. Choose another."},
    {WrongDelayEcho, "The logger did not repeat its waiting time as it was sent."},
    {PendrelMode, "A Pendrel logger does not have this recording mode."},
});

struct Verdict {
  const char* Name;
  const char* Words;
};

/// A row for each decode result, in their order.
constexpr auto Verdicts = std::to_array<Verdict>({
    {"Decode_OK", "The recording is sound."},
    {"Decode_ResetPOSTfailed", "The logger was reset and failed its self test; what came later is left out."},
    {"Decode_ResetPOSTpassed", "The logger was reset; what came later is left out."},
    {"Decode_Shutdown", "The logger shut down on a low battery."},
    {"Decode_MemoryFull", "The logger recorded until its memory was full."},
    {"Decode_StartBeforeLastStop", "A start lies before the last stop; what came later is left out."},
    {"Decode_AcqStopTimeBeforePriorData",
     "A stop is earlier than data recorded before it; what came later is left out."},
    {"Decode_MarkerEventOutsideAcquisition",
     "A marker lies outside the recording; what came later is left out."},
    {"Decode_InputError", "There was nothing to decode."},
    {"Decode_NonEventDataOutsideAcquisition",
     "There are data outside the recording's times; what came later is left out."},
    {"Decode_EventDecodingError", "The data are damaged; what came later is left out."},
    {"Decode_OverflowOccurred", "A light value is beyond its range."},
    {"Decode_AcqStartBeforeConfigStart", "The recording began before its configured start."},
    {"Decode_Physio_Decode_Error", "The data are damaged; what came later is left out."},
    {"Decode_Special65Kdefect",
     "This firmware cannot record more than 65535 bytes soundly; what came later is left out."},
    {"Decode_BigDiffBetweenAcqTimes",
     "The recording has a gap of more than 30 days; what came later is left out."},
    {"Decode_TooLongSinceLastAcqStop", "The recording stopped more than 30 days ago."},
    {"Decode_POSTcausedEventError", "The logger was reset; what came later is left out."},
});

template <class Row>
const Row* rowOf(std::span<const Row> rows, std::int32_t code) {
  for (const Row& row : rows)
    if (row.Code == code) return &row;
  return nullptr;
}

const Verdict* verdictOf(enmDecodeResult result) {
  const auto index = static_cast<std::size_t>(result);
  return index < Verdicts.size() ? &Verdicts[index] : nullptr;
}

}  // namespace

std::string Class_Main::CodeName(std::int32_t Code) {
  const Named* row = rowOf<Named>(Names, Code);
  return row != nullptr ? row->Name : "";
}

std::string Class_Main::CodeMeaning(std::int32_t Code, enmLoggerPointer LoggerType) {
  const Meaning* own = rowOf<Meaning>(PendrelMeanings, Code);
  const Meaning* row = rowOf<Meaning>(Meanings, Code);
  if (row == nullptr || (own != nullptr && LoggerType == LggrPntr_Pendreader)) row = own;
  return row != nullptr ? row->Words : "Unexpected failure.";
}

std::string Class_Main::ResultName(enmDecodeResult Result) {
  const Verdict* verdict = verdictOf(Result);
  return verdict != nullptr ? verdict->Name : "";
}

std::string Class_Main::ResultMeaning(enmDecodeResult Result) {
  const Verdict* verdict = verdictOf(Result);
  return verdict != nullptr ? verdict->Words : "";
}

}  // namespace hy_wristlog
