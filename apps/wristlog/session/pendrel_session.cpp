#include "session/pendrel_session.h"

#include <nlohmann/json.hpp>

#include "hy_wristlog/failure.h"
#include "recording/json_output.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace {

/// A port that is named makes the choice of a dock by HY_WRISTLOG_DOCK void.
CommonOptions ofPendreader(CommonOptions common, const ReaderOptions& reader) {
  common.Model = hy_wristlog::LggrPntr_Pendreader;
  if (reader.Port != 0) common.UsesLink = false;
  return common;
}

}  // namespace

PendrelSession::PendrelSession(const CommonOptions& common, const ReaderOptions& reader, bool keepRecord)
    : session_(ofPendreader(common, reader), keepRecord), workflows_(session_.main()) {
  workflows_.TryingPort = [this](std::int16_t port) { showProgress("Trying COM" + std::to_string(port)); };
  std::int16_t port = reader.Port;
  if (port == 0 && !reader.Search) port = session_.simulatedPort().value_or(0);
  if (port == 0 && !reader.Search) workflows_.ChosenPort = session_.chosenReaderPort();
  if (port == 0) return;
  const std::int32_t code = workflows_.fncWriteCOMportToINI(port);
  if (code != 0) throw hy_wristlog::Failure(code, "wristlog", meaningOf(code));
}

std::string PendrelSession::meaningOf(std::int32_t code) {
  return pendrelExplanationOf(code, session_.main().Get_LegacyCOMport());
}

int PendrelSession::end(std::int32_t code, const Json& facts, const Words& words, const char* whenFailed) {
  session_.endProgress();
  const std::string meaning = meaningOf(code) + (code == 0 ? "" : whenFailed);
  if (asJson()) {
    Json document{{"return_code", code}, {"return_code_meaning", meaning}};
    document.update(facts);
    print(document);
  } else if (code == 0) {
    words(say());
  } else {
    complain() << "Code " << code << ": " << meaning << '\n';
  }
  return code == 0 ? Good : Unsuccessful;
}

}  // namespace wristlog
