#include "commands/retrieval.h"

#include <string_view>
#include <utility>

#include "base/dates.h"
#include "base/numbers.h"
#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/failure_numbers.h"
#include "words/broken_retrieval.h"
#include "words/counted.h"

namespace wristlog {

namespace hw = hy_wristlog;

namespace {

namespace ReturnCode = hw::ReturnCode;

bool isWarning(std::int32_t code) {
  return hw::isOneOf(code, {ReturnCode::SubjectUnusable, ReturnCode::LoggerReset, ReturnCode::ZoneDiffers,
                            ReturnCode::DecodeProblem});
}

/// The words on a warning, without the word itself.
std::string warningWords(std::int32_t code) {
  constexpr std::string_view Label = "Warning: ";
  std::string words = hw::Class_Main::CodeMeaning(code);
  if (words.starts_with(Label)) words.erase(0, Label.size());
  return words;
}

}  // namespace

bool Retrieval::isGood() const {
  return Code == ReturnCode::Success || (IgnoresWarnings && isWarning(Code) && Verdict && IsDone);
}

/// The code is that of the last one. What came before it is seen in the logger.
std::vector<std::string> ignoredWarnings(const Retrieval& retrieval) {
  std::vector<std::string> warnings;
  if (!retrieval.IgnoresWarnings || !retrieval.isGood()) return warnings;
  const hw::Class_Subject& subject = *retrieval.Subject;
  const std::pair<bool, std::int32_t> found[] = {
      {subject.Get_Identity().empty() || subject.Get_Gender().empty() || subject.Get_GUID().empty() ||
           subject.Get_DOB() == hw::UnknownDate || subject.Get_Weight() == -1 || subject.Get_Height() == -1,
       ReturnCode::SubjectUnusable},
      {retrieval.Logger->Get_Resets() > 0, ReturnCode::LoggerReset},
      {false, ReturnCode::ZoneDiffers},
      {false, ReturnCode::DecodeProblem}};
  for (const auto& [seen, code] : found)
    if (seen || retrieval.Code == code) warnings.push_back(warningWords(code));
  return warnings;
}

Retrieval retrieve(hw::Class_Main& main, hw::enmLoggerPointer model, bool ignoreWarnings) {
  constexpr auto NotDecoded = static_cast<hw::enmDecodeResult>(-1);
  Retrieval retrieval;
  retrieval.IgnoresWarnings = ignoreWarnings;
  hw::enmDecodeResult verdict = NotDecoded;
  retrieval.Code = main.Retrieve(model, retrieval.Logger, retrieval.Subject, verdict, &retrieval.LowBattery,
                                 nullptr, ignoreWarnings);
  if (verdict != NotDecoded) retrieval.Verdict = verdict;
  retrieval.IsDone = retrieval.Logger->Get_RetrieveStep() == hw::RetrieveStep_Done;
  return retrieval;
}

std::string judge(Retrieval& retrieval, const RetrievedRecording& recording, hw::enmLoggerPointer model,
                  bool stopped) {
  // The request may have come before there was a logger to abort.
  if (stopped && retrieval.Code != 0 && !recording.isSound()) retrieval.Code = hw::ReturnCode::Aborted;
  if (!recording.hasOnlyTheLoggersBytes()) {
    retrieval.Verdict.reset();
    if (retrieval.Code == 0) retrieval.Code = NotWhole;
  }
  hw::Class_VardenLogger& logger = *retrieval.Logger;
  return wordsFor(BrokenRetrieval{retrieval.Code, model, logger.Get_RetrieveStep(),
                                  static_cast<std::int64_t>(recording.bytes()), logger.Get_BytesInLogger()});
}

std::string verdictWords(const Retrieval& retrieval) {
  const hw::Class_VardenLogger& logger = *retrieval.Logger;
  return hw::Class_Main::ResultMeaning(*retrieval.Verdict) + " " + counted(logger.Get_Samples(), "epoch") +
         " of " + counted(logger.Get_EpochLength(), "second") + " from logger " + logger.Get_SerialNumber() +
         ".";
}

}  // namespace wristlog
