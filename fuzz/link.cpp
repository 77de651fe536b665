// A Varden logger whose port leads to a far end that answers from a script: the shell's commands and XMODEM.
#include <string>

#include "link/Form_Comm.h"
#include "support/far_end.h"
#include "varden/VardenLogger.h"
#include "varden/commands/shell.h"

namespace hy_wristlog::fuzz {
namespace {

constexpr std::string_view Lines[] = {"call version",
                                      "call battery",
                                      "call time",
                                      "call config",
                                      "call data",
                                      "call setup",
                                      "call prompt",
                                      "call memory #",
                                      "call poke # #",
                                      "call clock #",
                                      "call send",
                                      "call crc",
                                      "call erase",
                                      "call decode",
                                      "call line # #",
                                      "call binary # # # #",
                                      "call receive #",
                                      "call abort #",
                                      "on show ver\\r",
                                      "on show battery\\r",
                                      "on show clock time\\r",
                                      "on show config\\r",
                                      "on show data\\r",
                                      "on config\\r",
                                      "on \\x06",
                                      "on \\x15",
                                      "on C",
                                      "on \\r",
                                      "say >",
                                      "say \\x04",
                                      "say \\x18\\x18",
                                      "value 01.00.0001 01.00.0001",
                                      "value 3.01 02012026 2.95",
                                      "value #",
                                      "late #",
                                      "config # #",
                                      "payload # #",
                                      "stream # #",
                                      "send 1",
                                      "send 2",
                                      "packet 1 1 # 0",
                                      "packet 1 2 # 0",
                                      "packet # 1 # #",
                                      "take 2",
                                      "hex 0001FE",
                                      "mute",
                                      "error #",
                                      "gone #"};

struct VardenConversation : Conversation {
  using Conversation::Conversation;

  void hold() {
    if (world.failureOf([&] {
          link().subOpenPort(33, shell::Baud57600, shell::EightDataBits, shell::NoParity, shell::TwoStopBits,
                             0, false, true);
        }) != 0)
      return;
    std::size_t calls = 0;
    for (const Line& line : script)
      if (line.is("call") && ++calls <= MostCalls) call(line);
    reached("packets sent", static_cast<std::int64_t>(farEnd.packets()));
    reached("packets of data received", received);
  }

 private:
  Form_Comm& link() { return logger.link(); }

  void call(const Line& line) {
    const std::int32_t failure = failureOfCall([&] { obey(line); });
    require(!link().Get_DoingXMODEM(), "a transfer that does not end");
    if (failure == 0 && line.word(1) == "data") checkData();
  }

  /// Nothing counts as recorded that did not come in a sound packet.
  void checkData() {
    if (!logger.record.RawData || logger.record.RawData->empty()) return;
    const ByteArray& raw = *logger.record.RawData;
    require(farEnd.hasSent(raw, 1024) || farEnd.hasSent(raw, 128) || mixed(raw), "data that nobody sent");
    received += static_cast<std::int64_t>(raw.size() / 128);
  }
  /// Packets of both sizes.
  bool mixed(const ByteArray& raw) const {
    std::vector<bool> reachable(raw.size() + 1);
    reachable[0] = true;
    for (std::size_t at = 0; at < raw.size(); at += 128)
      for (const std::size_t size : {std::size_t{128}, std::size_t{1024}})
        if (reachable[at] && at + size <= raw.size() &&
            farEnd.hasSent({raw.begin() + static_cast<std::ptrdiff_t>(at),
                            raw.begin() + static_cast<std::ptrdiff_t>(at + size)},
                           size))
          reachable[at + size] = true;
    return reachable[raw.size()];
  }

  void obey(const Line& line) {
    const std::string_view name = line.word(1);
    const auto number = [&](std::size_t index) { return static_cast<std::int32_t>(line.number(index)); };
    const auto length = static_cast<std::int32_t>(line.number(2, -5, 20000));
    if (name == "prompt") logger.fncGetVardenPrompt();
    if (name == "version") logger.fncReadVardenFWversion();
    if (name == "battery") logger.fncReadVardenBatteryVoltage();
    if (name == "time") logger.fncReadVardenTime();
    if (name == "config") logger.fncReadVardenConfig(line.number(2) == 1);
    if (name == "data") logger.record.RawData.reset(), logger.fncReadVardenData();
    if (name == "setup") logger.fncReadVardenSetup();
    if (name == "memory") logger.fncReadVardenMemoryLocation(number(2));
    if (name == "poke") logger.subSetVardenMemoryLocation(number(2), static_cast<std::uint8_t>(number(3)));
    if (name == "clock") logger.subSetVardenClock(line.real(2));
    if (name == "stop") logger.subSetVardenAcqStop(number(2));
    if (name == "pointer") logger.subSetVardenMemoryPointer(number(2));
    if (name == "available") logger.subSetDataAvailFlag(number(2) != 0);
    if (name == "sleep") logger.subSetVardenSleep(number(2) != 0);
    if (name == "erase") logger.subClearVardenMemory();
    if (name == "send") logger.subSendVardenConfig();
    if (name == "crc") logger.subVardenConfigCRCreset();
    if (name == "line")
      link().fncGetCharLine(static_cast<char>(number(2)),
                            static_cast<std::int32_t>(line.number(3, -5, 60000)));
    if (name == "binary") {
      std::int32_t count = length;
      link().fncGetBinaryStream(count, 13, 8, 3, 3, static_cast<std::int32_t>(line.number(3, -5, 60000)), -1,
                                line.number(4) == 1, static_cast<std::int32_t>(line.number(5, -5, 5000)));
    }
    if (name == "receive") {
      const PacketArray packets = link().fncReceiveXmodemPackets(13, 8, 3, 3, length);
      if (packets) Form_Comm::fncGetFriendlyPacketText(*packets);
    }
    if (name == "abort")
      world->after(line.number(2, 0, 60000), [this] { failureOf([&] { link().subAbortProcess(); }); });
    if (name == "decode") {
      bool low = false;
      logger.fncDecodeDataArrays(low, {}, line.number(2) == 1);
      reached("epochs", logger.record.Samples);
    }
    if (name == "close") link().subClosePort();
  }

  VardenLogger logger;
  std::int64_t received = 0;
};

}  // namespace

const std::span<const std::string_view> Grammar = Lines;

void run(std::string_view script) { VardenConversation(script).hold(); }

}  // namespace hy_wristlog::fuzz
