#include "commands/retrieval.h"

#include "words/broken_retrieval.h"
#include "words/counted.h"
#include "words/meanings.h"

namespace wristlog {

namespace hw = hy_wristlog;

Retrieval retrieve(hw::Class_Main& main, hw::enmLoggerPointer model, bool ignoreWarnings) {
  constexpr auto NotDecoded = static_cast<hw::enmDecodeResult>(-1);
  Retrieval retrieval;
  hw::enmDecodeResult verdict = NotDecoded;
  retrieval.Code = main.Retrieve(model, retrieval.Logger, retrieval.Subject, verdict, &retrieval.LowBattery,
                                 nullptr, ignoreWarnings);
  if (verdict != NotDecoded) retrieval.Verdict = verdict;
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
  return wordsFor(*retrieval.Verdict) + " " + counted(logger.Get_Samples(), "epoch") + " of " +
         counted(logger.Get_EpochLength(), "second") + " from logger " + logger.Get_SerialNumber() + ".";
}

}  // namespace wristlog
