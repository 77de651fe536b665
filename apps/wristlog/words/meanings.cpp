#include "words/meanings.h"

#include <algorithm>
#include <array>

#include "engineering/recording.h"

namespace wristlog {
namespace {

struct Meaning {
  std::int32_t Code;
  const char* Words;
};

constexpr std::array<Meaning, 52> Meanings{{
    {0, "Success."},
    {6,
     "A number came that does not fit its place: damaged on the way, or by the logger. Try again; if it "
     "comes "
     "again, see 'wristlog config show' for a value that cannot be."},
    {9,
     "The recording does not fit the logger's configuration. Try 'decode --diagnostic' on the saved bytes."},
    {70, "A file or folder could not be written: permission denied."},
    {75, "A file or folder could not be read or written."},
    {91, "An argument holds no object."},
    {3001,
     "The logger does not answer. Seat it in its dock anew; its battery may need to be charged or replaced."},
    {3002, "The logger's answer broke off. Seat it in its dock anew and clean the contacts."},
    {3003, "The logger's answer was garbled. Clean the contacts, try another cable, and try again."},
    {3004, "The port's settings are not valid."},
    {3007, "There is nothing to send to the logger."},
    {3008, "The logger did not ask for its configuration. Try again."},
    {3009, "The port does not send. Disconnect the dock and connect it again."},
    {3010, "The logger did not confirm its configuration. Try again."},
    {3011, "Too many packets were damaged on the way. Clean the contacts, try another cable, and try again."},
    {3012, "The logger did not confirm the end of its configuration. Try again."},
    {3013, "The logger sent no data. Seat it in its dock anew and try again."},
    {8002, "There is no such port."},
    {8005, "The port is in use by another program, or you may not open it."},
    {8006, "The port does not take its settings. Disconnect the dock and connect it again."},
    {8015, "The dock was disconnected, or its port has locked up. Disconnect it and connect it again."},
    {8018, "The port was closed while it was in use."},
    {8021, "The port reported an internal error. Disconnect the dock and connect it again."},
    {10003, "No dock, or no logger in the dock. Connect the dock and seat the logger in it."},
    {10005, "The recording mode is not one of this model."},
    {10006, "The epoch length is not 15, 30, 60, 120 or 300 seconds."},
    {10007, "The start lies before the logger's time, or outside what it can do."},
    {10009, "The logger in the dock is not of the chosen model."},
    {10010, "The logger's firmware version is not known here."},
    {10011, "The logger has lost its factory calibration. It needs service."},
    {10012,
     "What the logger stored is not what was sent. Try again; weights and heights are kept in tenths, an "
     "identity in 64 characters."},
    {10013, "Aborted. The recording is still in the logger."},
    {10014,
     "Warning: the subject's details in the logger are incomplete. --ignore-warnings retrieves all the "
     "same."},
    {10015, "The logger holds no data."},
    {10019, "The time zone is unknown, or the logger has none. See 'wristlog zones'."},
    {10020, "More than one dock is connected. Leave one."},
    {10021, "The date format is not known."},
    {10022, "The time format is not known."},
    {10023, "The end lies before the start or outside what the logger can do. A start needs an end."},
    {10024, "The logger's configuration has a structure that is not known here."},
    {10025, "The logger's clock does not take the time. It needs service."},
    {10026,
     "Warning: the logger has been reset since it was configured. --ignore-warnings retrieves all the same."},
    {10027, "Warning: the logger is still waiting for its start. --ignore-warnings retrieves all the same."},
    {10028,
     "Warning: the logger's time zone is unknown here, or has other rules. --ignore-warnings retrieves all "
     "the same."},
    {10029, "The recording holds no samples."},
    {10030, "The recording has a problem; see the decode result."},
    {11502, "This type of device is not supported."},
    {11503, "A value is outside what the logger can keep."},
    {11504, "The logger's configuration has a structure that is not known here."},
    {11505, "The logger's configuration is damaged."},
    {11507, "The logger's answers are damaged. Clean the contacts, try another cable, and try again."},
    {11508,
     "The dock's port could not be opened. Another program may hold it; disconnect the dock and connect it "
     "again."},
}};

/// What the codes mean of the workflows with a Pendreader, where that is something of their own.
constexpr std::array<Meaning, 27> LegacyMeanings{{
    {3001,
     "The logger does not answer. Seat it in the reader anew; its battery may have to be replaced, or "
     "another "
     "port be searched with --search."},
    {3002, "The logger's answer broke off. Seat it in the reader anew and clean the contacts."},
    {3005, "The logger sent too little of its memory. Seat it in the reader anew and try again."},
    {3006, "The port has lost data. Disconnect other devices and try again."},
    {10001, "No port is remembered for the Pendreader. Name it with --port, or search it with --search."},
    {10002, "A folder cannot be written to: the file's, or the one of Settings.INI."},
    {10003, "No port has a logger in a Pendreader. Connect the reader and seat the logger in it."},
    {10005, "The recording mode is not one of activity (1) and activity and steps (2)."},
    {10006, "The epoch length is not 15, 30 or 60 seconds. When retrieving, --repair takes 30."},
    {10007,
     "The start lies outside what the logger can wait for, or cannot be read from it. When retrieving, "
     "--repair takes the present time."},
    {10008, "The Pendreader's port could not be opened."},
    {10009, "What is in the reader is no Pendrel logger known here."},
    {10010, "The logger's firmware version cannot be read. It needs service."},
    {10012, "What the logger stored is not what was sent. Try again; its battery may have to be replaced."},
    {10013, "Aborted."},
    {10014,
     "The subject's details in the logger are incomplete. When retrieving, --repair takes them as they are."},
    {10016,
     "How much was recorded cannot be read from the logger. When retrieving, --repair reads 64 KB, all that "
     "the largest "
     "memory holds; of a smaller one raw.bin has the rest."},
    {10017, "A part of the memory could not be read in five attempts. Try another port or adapter."},
    {10018,
     "The logger cannot be told this date. It is no day of the calendar, or lies outside 1930 to 2029, which "
     "is all that the logger's two digits of the year can mean."},
    {10019,
     "The time zone is unknown, or the logger has none. See 'wristlog zones'; when retrieving, --repair "
     "takes "
     "the machine's."},
    {10101, "The size of the logger's memory is not known here. It needs service."},
    {10106, "The port's number is below 1. Name another with --port."},
    {10107,
     "More was asked for than the logger's memory holds: its set-up tells a wrong length. What it holds is "
     "in "
     "raw.bin."},
    {10108, "The logger's answers are damaged. Clean the contacts, try another cable, and try again."},
    {10111, "The start had passed before the logger could be told. Try again."},
    {10112, "The start is too near, or too far, for the logger to wait for. Choose another."},
    {10113, "The logger did not repeat its waiting time as it was sent."},
}};

struct Verdict {
  const char* Name;
  const char* Words;
};

constexpr std::array<Verdict, 18> Verdicts{{
    {"Decode_OK", "The recording is sound."},
    {"Decode_ResetPOSTfailed", "The logger was reset and failed its self test; what came later is left out."},
    {"Decode_ResetPOSTpassed", "The logger was reset; what came later is left out."},
    {"Decode_Shutdown", "The logger shut down on a low battery."},
    {"Decode_MemoryFull", "The logger recorded until its memory was full."},
    {"Decode_StartBeforeLastStop", "A start lies before the last stop; what came later is left out."},
    {"Decode_AcqStopTimeBeforePriorData",
     "A stop lies before the data in front of it; what came later is left out."},
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
}};

const Verdict* verdictOf(hy_wristlog::enmDecodeResult result) {
  const auto index = static_cast<std::size_t>(result);
  return index < Verdicts.size() ? &Verdicts[index] : nullptr;
}

template <std::size_t Count>
const char* wordsIn(const std::array<Meaning, Count>& meanings, std::int32_t code) {
  const auto* found = std::find_if(meanings.begin(), meanings.end(),
                                   [&](const Meaning& meaning) { return meaning.Code == code; });
  return found != meanings.end() ? found->Words : nullptr;
}

}  // namespace

std::string meaningOf(std::int32_t returnCode) {
  const char* const words = wordsIn(Meanings, returnCode);
  return words != nullptr ? words
                          : "Unexpected failure. Run it again with --console to see what passes on the link.";
}

std::string explanationOf(std::int32_t returnCode, hy_wristlog::enmLoggerPointer model) {
  constexpr std::array AboutTheDock{8002, 8005, 8015, 10003, 11508};
  if (std::find(AboutTheDock.begin(), AboutTheDock.end(), returnCode) == AboutTheDock.end())
    return meaningOf(returnCode);
  try {
    for (const auto& dock : hy_wristlog::engineering::docks()) {
      if (dock.Model != model || dock.Connected > 1) continue;
      const std::string name = dock.Words + " dock";
      if (dock.Connected == 0)
        return "No " + name + " is connected. Connect it by USB, or declare its device in Docks.INI.";
      if (dock.Port == 0)
        return "The " + name + " has no COM port. Disconnect it and connect it again, or correct Docks.INI.";
      std::string trouble = hy_wristlog::engineering::portTrouble(dock.Port);
      if (!trouble.empty()) return trouble;
      if (returnCode == 10003)
        return "There is no logger in the " + name + " on COM" + std::to_string(dock.Port) +
               ", or it is not connected well. Seat it anew and clean the contacts.";
    }
  } catch (const hy_wristlog::Failure&) {
    // The general words remain.
  }
  return meaningOf(returnCode);
}

std::string legacyExplanationOf(std::int32_t returnCode, std::int16_t port) {
  constexpr std::int32_t NotOpened = 10008;
  if (returnCode == NotOpened && port > 0) {
    std::string trouble = hy_wristlog::engineering::portTrouble(port);
    if (!trouble.empty()) return trouble;
  }
  const char* const words = wordsIn(LegacyMeanings, returnCode);
  return words != nullptr ? words : meaningOf(returnCode);
}

std::string portTroubleOf(hy_wristlog::enmLoggerPointer model) {
  for (const auto& dock : hy_wristlog::engineering::docks())
    if (dock.Model == model && dock.Port > 0) return hy_wristlog::engineering::portTrouble(dock.Port);
  return {};
}

std::string wordsFor(const hy_wristlog::Failure& failure) {
  std::string words = failure.Description;
  if (!words.empty() && words.back() != '.') words += '.';
  return words + " (failure " + std::to_string(failure.Number) + ")";
}

std::string nameOf(hy_wristlog::enmDecodeResult result) {
  const Verdict* verdict = verdictOf(result);
  return verdict != nullptr ? verdict->Name : "";
}

std::string wordsFor(hy_wristlog::enmDecodeResult result) {
  const Verdict* verdict = verdictOf(result);
  return verdict != nullptr ? verdict->Words : "";
}

}  // namespace wristlog
