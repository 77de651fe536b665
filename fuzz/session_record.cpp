// Session records: read, written and read again, and redacted.
#include "replay/session_record.h"

#include "replay/redaction.h"
#include "support/fuzz.h"
#include "support/script.h"

namespace hy_wristlog::fuzz {
namespace {

constexpr std::string_view Lines[] = {
    R"({"t":#,"open":1})",
    R"({"t":#,"open":1,"failure":{"number":8002,"source":"MSComm","description":"#"}})",
    R"({"t":#,"settings":{"baud":9600,"parity":"n","data_bits":8,"stop_bits":"2"}})",
    R"({"t":#,"out":"show config\r"})",
    R"({"t":#,"out":"C"})",
    R"({"t":#,"out":["18"]})",
    R"({"t":#,"out":"***C"})",
    R"({"t":#,"out":"***B"})",
    R"({"t":#,"in":"#","empty":#})",
    R"({"t":#,"in":["04"]})",
    R"({"t":#,"dtr":true,"link":#})",
    R"({"t":#,"discard":true})",
    R"({"t":#,"lines":{"cts":true,"dsr":true,"cd":false,"ring":false}})",
    R"({"t":#,"errors":{"overrun":1,"framing":0,"parity":0,"break":0,"overflow":#}})",
    R"({"t":#,"gone":true,"failure":{"number":8002,"source":"MSComm","description":"#"}})",
    R"({"t":#,"devices":"{4d36e978-e325-11ce-bfc1-08002be10318}","list":[{"id":"#","name":"#"}]})",
    R"({"t":#,"random":["00"]})",
    R"({"t":#,"stop":true})",
    R"({"t":#,"close":true})",
    R"({"exit_status":#,"failure":{"number":#,"source":"#","description":"#"}})"};

void requireSameAgain(const wristlog::SessionRecord& record) {
  const std::string text = textOf(record);
  require(textOf(wristlog::recordOf(text)) == text, "a record read again is another");
}

}  // namespace

const std::span<const std::string_view> Grammar = Lines;

void run(std::string_view text) {
  failureOf([&] {
    const wristlog::SessionRecord record = wristlog::recordOf(text);
    requireSameAgain(wristlog::recordOf(textOf(record)));
    reached("records", 1);
    const wristlog::SessionRecord neutral = wristlog::redacted(record);
    requireSameAgain(neutral);
    require(neutral.Redacted && neutral.Events.size() == record.Events.size(),
            "not the same record redacted");
    reached("redacted records", 1);
  });
}

}  // namespace hy_wristlog::fuzz
