#include "words/meanings.h"

#include <algorithm>
#include <array>
#include <span>

#include "engineering/docks.h"
#include "engineering/zone_names.h"
#include "hy_wristlog/Class_Main.h"

namespace wristlog {
namespace {

using namespace hy_wristlog::FailureNumber;
using hy_wristlog::Class_Main;
namespace ReturnCode = hy_wristlog::ReturnCode;

/// What this program can do about a code.
struct Hint {
  std::int32_t Code;
  const char* Words;
};

constexpr const char* RetrievesAnyway = "--ignore-warnings retrieves all the same.";

constexpr auto Hints = std::to_array<Hint>({
    {Overflow, "If it comes again, see 'wristlog config show' for a value that cannot be."},
    {Subscript, "Try 'decode --diagnostic' on the saved bytes."},
    {DivisionByZero, "See 'wristlog config show' for one that cannot be."},
    {Internal, "Run it again with --console and send what it shows."},
    {NoZones, "They are in the package tzdata."},
    {FileExists, "--force writes over it."},
    {ReturnCode::SubjectUnusable, RetrievesAnyway},
    {ReturnCode::LoggerReset, RetrievesAnyway},
    {ReturnCode::StillWaiting, RetrievesAnyway},
    {ReturnCode::ZoneDiffers, RetrievesAnyway},
    {ReturnCode::UnknownZone, "See 'wristlog zones'."},
});

/// The same for the commands for a Pendreader.
constexpr auto PendrelHints = std::to_array<Hint>({
    {NoCharacters, "Another port can be searched with --search."},
    {ReturnCode::NoPortSetting, "Name it with --port, or search it with --search."},
    {ReturnCode::WrongEpoch, "When retrieving, --repair takes 30."},
    {ReturnCode::WrongStart, "When retrieving, --repair takes the present time."},
    {ReturnCode::SubjectUnusable, "When retrieving, --repair takes them as they are."},
    {ReturnCode::UnknownLength,
     "When retrieving, --repair reads 64 KB, all that the largest memory holds; of a smaller one raw.bin has "
     "the rest."},
    {ReturnCode::UnknownZone, "See 'wristlog zones'; when retrieving, --repair takes the machine's."},
    {PendrelPort, "Name another with --port."},
    {PendrelBlock, "What it holds is in raw.bin."},
});

std::string declarationTroubles() {
  std::string words;
  for (const std::string& trouble : hy_wristlog::engineering::declarationTroubles())
    words += (words.empty() ? "" : " ") + trouble;
  return words;
}

/// What a search for a Pendreader had to pass over: " No permission to use COM33 (/dev/ttyUSB0). ..."
std::string portsOutOfReach() {
  constexpr std::size_t MostShown = 3;
  const std::vector<std::string> troubles = hy_wristlog::engineering::portsOutOfReach();
  std::string words;
  for (std::size_t i = 0; i < std::min(troubles.size(), MostShown); ++i) words += " " + troubles[i];
  if (troubles.size() > MostShown)
    words += " " + std::to_string(troubles.size() - MostShown) + " other ports cannot be opened either.";
  return words;
}

/// " The machine's own zone is not known. ..." after the words on an unknown zone; empty where that is known.
std::string zoneTroubleAfter(std::int32_t code) {
  if (code != ReturnCode::UnknownZone) return {};
  const std::string trouble = hy_wristlog::engineering::localZoneTrouble();
  return trouble.empty() ? trouble : " The machine's own zone is not known. " + trouble;
}

constexpr std::array SilenceOfLogger{NoCharacters,    NoFinalCharacter, WrongCharacters, TooFewBytes,
                                     RetriesExceeded, NoPacket,         PortStateFailure};

/// What the network has to do with a logger's silence; empty for docks of this machine.
std::string networkTrouble(std::int32_t code, std::int32_t port) {
  const bool isSilence =
      std::find(SilenceOfLogger.begin(), SilenceOfLogger.end(), code) != SilenceOfLogger.end();
  if (!isSilence || !hy_wristlog::engineering::isOnOtherMachine(port)) return {};
  std::string trouble = hy_wristlog::engineering::portTrouble(port);
  if (!trouble.empty() || code != PortStateFailure) return trouble;
  return "The network to the dock failed, or the dock was disconnected there. Try again.";
}

std::string wordsForNoPort(const hy_wristlog::engineering::DockView& dock) {
  const std::string troubles = declarationTroubles();
  return "The " + dock.Words + " dock has no COM port. " +
         (troubles.empty() ? "Disconnect it and connect it again, or correct Docks.INI." : troubles);
}

const Hint* hintFor(std::int32_t code, std::span<const Hint> hints) {
  for (const Hint& hint : hints)
    if (hint.Code == code) return &hint;
  return nullptr;
}

}  // namespace

std::string meaningOf(std::int32_t returnCode) {
  std::string meaning = Class_Main::CodeMeaning(returnCode);
  if (const Hint* hint = hintFor(returnCode, Hints))
    return meaning + " " + hint->Words + zoneTroubleAfter(returnCode);
  if (Class_Main::CodeName(returnCode).empty())
    return meaning + " Run it again with --console to see what passes on the link.";
  return meaning;
}

std::string explanationOf(std::int32_t returnCode, hy_wristlog::enmLoggerPointer model) {
  constexpr std::array AboutTheDock{InvalidPort, PortNotAvailable, PortStateFailure, ReturnCode::NotFound,
                                    DockPortFailure};
  const bool isAboutTheDock =
      std::find(AboutTheDock.begin(), AboutTheDock.end(), returnCode) != AboutTheDock.end();
  try {
    for (const auto& dock : hy_wristlog::engineering::docks()) {
      if (dock.Model != model || dock.Connected > 1) continue;
      if (std::string trouble = networkTrouble(returnCode, dock.Port); !trouble.empty()) return trouble;
      if (!isAboutTheDock) break;
      const std::string name = dock.Words + " dock";
      if (dock.Connected == 0) return wordsForNoDock(name);
      if (dock.Port == 0) return wordsForNoPort(dock);
      std::string trouble = hy_wristlog::engineering::portTrouble(dock.Port);
      if (!trouble.empty()) return trouble;
      if (returnCode == ReturnCode::NotFound)
        return "There is no logger in the " + name + " on COM" + std::to_string(dock.Port) +
               ", or it is not connected well. Seat it anew and clean the contacts.";
    }
  } catch (const hy_wristlog::Failure&) {
    // The search for docks has failed, so only the code's own words can be told.
  }
  return meaningOf(returnCode);
}

std::string pendrelExplanationOf(std::int32_t returnCode, std::int16_t port) {
  if (returnCode == ReturnCode::NotOpened && port > 0) {
    std::string trouble = hy_wristlog::engineering::portTrouble(port);
    if (!trouble.empty()) return trouble;
  }
  if (std::string trouble = networkTrouble(returnCode, port); !trouble.empty()) return trouble;
  const std::string meaning = Class_Main::CodeMeaning(returnCode, hy_wristlog::LggrPntr_Pendreader);
  if (returnCode == ReturnCode::NotFound) return meaning + portsOutOfReach();
  if (const Hint* hint = hintFor(returnCode, PendrelHints))
    return meaning + " " + hint->Words + zoneTroubleAfter(returnCode);
  const bool ownMeaning = meaning != Class_Main::CodeMeaning(returnCode);
  return ownMeaning ? meaning : meaningOf(returnCode);
}

std::string wordsForNoDock(const std::string& name) {
  const std::string troubles = declarationTroubles();
  if (!troubles.empty()) return "No " + name + " is found. " + troubles;
  return "No " + name + " is connected. Connect it by USB, or declare its device in Docks.INI.";
}

std::string dockTroubleOf(hy_wristlog::enmLoggerPointer model) {
  for (const auto& dock : hy_wristlog::engineering::docks()) {
    if (dock.Model != model) continue;
    if (dock.Port > 0) return hy_wristlog::engineering::portTrouble(dock.Port);
    if (dock.Connected == 0) return declarationTroubles();
    if (dock.Connected == 1) return wordsForNoPort(dock);
  }
  return {};
}

std::string farTroubleOf(hy_wristlog::enmLoggerPointer model) {
  for (const auto& dock : hy_wristlog::engineering::docks())
    if (dock.Model == model && hy_wristlog::engineering::isOnOtherMachine(dock.Port))
      return hy_wristlog::engineering::portTrouble(dock.Port);
  return {};
}

std::string wordsFor(const hy_wristlog::Failure& failure) {
  std::string words = failure.Number == NoZones
                          ? "The time zone database is missing or cannot be read: install the package tzdata"
                          : failure.Description;
  if (!words.empty() && words.back() != '.') words += '.';
  return words + " (failure " + std::to_string(failure.Number) + ")";
}

}  // namespace wristlog
