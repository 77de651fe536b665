#include "simulator/named_faults.h"

#include <charconv>
#include <stdexcept>
#include <string>

namespace hy_wristlog::simulator {
namespace {

[[noreturn]] void refuse(const std::string& why) { throw std::invalid_argument(why); }

template <class Number>
Number numberIn(std::string_view text, Number least, Number most) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size() || !(value >= least && value <= most))
    refuse("\"" + std::string(text) + "\" is no number from " + std::to_string(least) + " to " +
           std::to_string(most));
  return value;
}

std::uint64_t bytesIn(std::string_view text) {
  constexpr std::uint64_t Most = 1ULL << 40;
  return numberIn<std::uint64_t>(text, 0, Most);
}

nanoseconds secondsIn(std::string_view text) {
  constexpr double Longest = 3600;
  return std::chrono::duration_cast<nanoseconds>(
      std::chrono::duration<double>(numberIn<double>(text, 0, Longest)));
}

/// The letter behind the stars of a Pendrel command; "prompt" for the carriage return that asks for it.
char commandIn(std::string_view text) {
  constexpr std::string_view Letters = "CNOPXGBADELWHF";
  if (text == "prompt") return '\r';
  if (text.size() != 1 || Letters.find(text.front()) == Letters.npos)
    refuse("\"" + std::string(text) + "\" is no command: C, N, O, P, X, G, B, A, D, E, L, W, H, F or prompt");
  return text.front();
}

template <auto Member>
void onLine(const ModelBench& bench, const Fault& when, std::string_view) {
  bench.line().Faults.*Member = when;
}

template <auto Member>
void onVarden(const ModelBench& bench, const Fault& when, std::string_view) {
  bench.Logger->Faults.*Member = when;
}

template <auto Member>
void onTransfer(const ModelBench& bench, const Fault& when, std::string_view) {
  bench.Logger->Faults.Transfer.*Member = when;
}

template <auto Member>
void onPendrel(const ModelBench& bench, const Fault& when, std::string_view) {
  bench.Pendrel->Faults.*Member = when;
}

template <auto Member>
void onCommand(const ModelBench& bench, const Fault& when, std::string_view argument) {
  (bench.Pendrel->Faults.*Member)[commandIn(argument)] = when;
}

/// Calls `set` with the faults of the logger, of whichever family it is.
template <class Set>
void onLogger(const ModelBench& bench, Set set) {
  bench.Logger != nullptr ? set(bench.Logger->Faults) : set(bench.Pendrel->Faults);
}

template <auto Member>
void onPort(const ModelBench& bench, const Fault& when, std::string_view) {
  (bench.Dock->Faults.*Member).When = when;
}

template <auto Member>
void cutAfter(const ModelBench& bench, const Fault&, std::string_view argument) {
  bench.line().Faults.*Member = bytesIn(argument);
}

void setSetupLine(const ModelBench& bench, const Fault&, std::string_view argument) {
  constexpr std::size_t LastLine = 7;
  const std::size_t colon = argument.find(':');
  if (colon == argument.npos) refuse("a line of the setup is given as 3:TEXT");
  const auto line = numberIn<std::size_t>(argument.substr(0, colon), 0, LastLine);
  bench.Pendrel->Faults.SetupLines[line] = argument.substr(colon + 1);
}

constexpr std::string_view BytesOut = "bytes to the logger", BytesIn = "bytes to the PC",
                           Echoes = "echoed characters", Openings = "openings of the port",
                           ValueLines = "value lines", Sent = "packets that the logger sends",
                           Received = "packets that the logger receives",
                           Commands = "commands of that letter", Blocks = "blocks";

constexpr NamedFault Faults[] = {
    // The line.
    {"lose to logger", BytesOut, "", "get lost", true, true, onLine<&LineFaults::LoseToLogger>},
    {"lose to pc", BytesIn, "", "get lost", true, true, onLine<&LineFaults::LoseToPc>},
    {"alter to logger", BytesOut, "", "have bits flipped", true, true, onLine<&LineFaults::AlterToLogger>},
    {"alter to pc", BytesIn, "", "have bits flipped", true, true, onLine<&LineFaults::AlterToPc>},
    {"alter mask", "", "MASK", "The bits that altered bytes have flipped, 1 to 255; else 4", true, true,
     [](const ModelBench& bench, const Fault&, std::string_view argument) {
       bench.line().Faults.AlterMask = static_cast<std::uint8_t>(numberIn<int>(argument, 1, 255));
     }},
    {"double to logger", BytesOut, "", "come twice", true, true, onLine<&LineFaults::DoubleToLogger>},
    {"double to pc", BytesIn, "", "come twice", true, true, onLine<&LineFaults::DoubleToPc>},
    {"delay to logger", BytesOut, "", "are held up, and all after them", true, true,
     onLine<&LineFaults::DelayToLogger>},
    {"delay to pc", BytesIn, "", "are held up, and all after them", true, true,
     onLine<&LineFaults::DelayToPc>},
    {"delay for", "", "SECONDS", "How long bytes are held up; else 0.3", true, true,
     [](const ModelBench& bench, const Fault&, std::string_view argument) {
       bench.line().Faults.DelayFor = secondsIn(argument);
     }},
    {"hold back", "", "SECONDS", "The adapter passes received bytes on together, so late at most", true, true,
     [](const ModelBench& bench, const Fault&, std::string_view argument) {
       bench.line().HoldBack = secondsIn(argument);
     }},
    {"overrun", BytesIn, "", "get lost, and the port counts an overrun", true, true,
     onLine<&LineFaults::OverrunToPc>},
    {"cut to logger after", "", "BYTES", "The line is dead once so many bytes went to the logger", true, true,
     cutAfter<&LineFaults::CutAfterToLogger>},
    {"cut to pc after", "", "BYTES", "The line is dead once so many bytes came to the PC", true, true,
     cutAfter<&LineFaults::CutAfterToPc>},
    {"cut after", "", "BYTES", "The line is dead once so many more bytes passed in both directions", true,
     true,
     [](const ModelBench& bench, const Fault&, std::string_view argument) {
       bench.line().Faults.CutAfterTotal = bench.line().traffic().total() + bytesIn(argument);
     }},
    {"cut ends on reopen", "", "", "A dead line works again when the port is opened again", true, true,
     [](const ModelBench& bench, const Fault& when, std::string_view) {
       bench.line().Faults.CutEndsOnReopen = when.Times != 0;
     }},
    // The dock.
    {"refuse open", Openings, "", "fail", true, true, onPort<&DockFaults::Open>},
    {"refuse settings", "settings of the port", "", "are refused", true, true,
     onPort<&DockFaults::Configure>},
    {"locked up", "", "", "The dock refuses all settings until it is plugged in again", true, true,
     [](const ModelBench& bench, const Fault& when, std::string_view) {
       bench.Dock->Faults.LockedUp = when.Times != 0;
     }},
    {"held", "", "", "Another program has the port", true, true,
     [](const ModelBench& bench, const Fault& when, std::string_view) {
       bench.Dock->Faults.Held = when.Times != 0;
     }},
    {"pull out after", "", "BYTES", "The logger is taken out once so many more bytes passed", true, true,
     [](const ModelBench& bench, const Fault&, std::string_view argument) {
       bench.Dock->pullOutAfterBytes(bytesIn(argument));
     }},
    {"unplug after", "", "BYTES", "The dock is unplugged once so many more bytes passed", true, true,
     [](const ModelBench& bench, const Fault&, std::string_view argument) {
       bench.Dock->unplugAfterBytes(bytesIn(argument));
     }},
    // Any logger.
    {"lose echo", Echoes, "", "get lost", true, true,
     [](const ModelBench& bench, const Fault& when, std::string_view) {
       onLogger(bench, [&](auto& faults) { faults.LoseEcho = when; });
     }},
    {"alter echo", Echoes, "", "are wrong", true, true,
     [](const ModelBench& bench, const Fault& when, std::string_view) {
       onLogger(bench, [&](auto& faults) { faults.AlterEcho = when; });
     }},
    {"delay echo", Echoes, "", "come late", true, true,
     [](const ModelBench& bench, const Fault& when, std::string_view) {
       onLogger(bench, [&](auto& faults) { faults.DelayEcho = when; });
     }},
    {"echo delay", "", "SECONDS", "How late echoes come; else 1.5", true, true,
     [](const ModelBench& bench, const Fault&, std::string_view argument) {
       onLogger(bench, [&](auto& faults) { faults.EchoDelay = secondsIn(argument); });
     }},
    {"silent", "", "", "The logger neither hears nor answers", true, true,
     [](const ModelBench& bench, const Fault& when, std::string_view) {
       onLogger(bench, [&](auto& faults) { faults.Silent = when.Times != 0; });
     }},
    // Kestrin Vivid and Kestrin 2.
    {"bad line checksum", ValueLines, "", "have a wrong checksum", true, false,
     onVarden<&LoggerFaults::BadLineChecksum>},
    {"zero line checksum", ValueLines, "", "have the checksum 0000", true, false,
     onVarden<&LoggerFaults::ZeroLineChecksum>},
    {"garbled clock", "answers with the clock's time", "", "are no number", true, false,
     onVarden<&LoggerFaults::GarbledClock>},
    {"ignore command", "commands", "", "are neither echoed nor obeyed", true, false,
     onVarden<&LoggerFaults::IgnoreCommand>},
    {"refuse clock", "settings of the clock", "", "are answered, but the clock keeps its time", true, false,
     onVarden<&LoggerFaults::RefuseClock>},
    {"misstore config", "configurations that a PC writes", "", "are stored with a wrong byte", true, false,
     onVarden<&LoggerFaults::MisstoreConfig>},
    {"misstored offset", "", "OFFSET", "Which byte is stored wrong, 64 to 255; else 240", true, false,
     [](const ModelBench& bench, const Fault&, std::string_view argument) {
       bench.Logger->Faults.MisstoredOffset =
           numberIn<std::size_t>(argument, ConfigBlock::WritableFrom, ConfigBlock::Size - 1);
     }},
    {"bad config checksum", "configurations that are read", "", "have a wrong checksum", true, false,
     onVarden<&LoggerFaults::BadConfigChecksum>},
    {"damage packet", Sent, "", "have a flipped bit", true, false, onTransfer<&TransferFaults::DamagePacket>},
    {"lose packet", Sent, "", "do not go out", true, false, onTransfer<&TransferFaults::LosePacket>},
    {"truncate packet", Sent, "", "go out by half", true, false, onTransfer<&TransferFaults::TruncatePacket>},
    {"misnumber packet", Sent, "", "are numbered two too high", true, false,
     onTransfer<&TransferFaults::MisnumberPacket>},
    {"double packet", Sent, "", "come again after their acknowledgement", true, false,
     onTransfer<&TransferFaults::DoublePacket>},
    {"cancel packet", Sent, "", "are replaced by two CAN, which ends the transfer", true, false,
     onTransfer<&TransferFaults::CancelPacket>},
    {"nak packet", Received, "", "are refused although they were good", true, false,
     onTransfer<&TransferFaults::NakPacket>},
    {"cancel receive", Received, "", "are answered by two CAN", true, false,
     onTransfer<&TransferFaults::CancelReceive>},
    {"lose answer", Received, "", "are stored, but the answer is lost", true, false,
     onTransfer<&TransferFaults::LoseAnswer>},
    {"nak end", "ends of a transfer to the logger", "", "are refused", true, false,
     onTransfer<&TransferFaults::NakEnd>},
    {"lose invitation", "invitations to send a packet", "", "get lost", true, false,
     onTransfer<&TransferFaults::LoseInvitation>},
    {"only short packets", "", "", "The logger knows no packets of 1024 bytes", true, false,
     [](const ModelBench& bench, const Fault& when, std::string_view) {
       bench.Logger->Faults.Transfer.OnlyShortPackets = when.Times != 0;
     }},
    // Pendrel loggers.
    {"unheeded", Commands, "COMMAND", "are echoed, but neither obeyed nor answered", false, true,
     onCommand<&PendrelFaults::Unheeded>},
    {"feigned", Commands, "COMMAND", "are answered, but not obeyed", false, true,
     onCommand<&PendrelFaults::Feigned>},
    {"bad checksum", Commands, "COMMAND", "are answered with a wrong checksum", false, true,
     onCommand<&PendrelFaults::BadChecksum>},
    {"wrong delay echo", "delays that a PC tells", "", "are repeated with a wrong digit", false, true,
     onPendrel<&PendrelFaults::WrongDelayEcho>},
    {"short block", Blocks, "", "lack their last bytes", false, true, onPendrel<&PendrelFaults::ShortBlock>},
    {"shortfall", "", "BYTES", "How many bytes short blocks lack; else 1", false, true,
     [](const ModelBench& bench, const Fault&, std::string_view argument) {
       bench.Pendrel->Faults.Shortfall = numberIn<std::size_t>(argument, 1, PendrelMemory::BlockSize);
     }},
    {"long block", Blocks, "", "have bytes too many", false, true, onPendrel<&PendrelFaults::LongBlock>},
    {"excess", "", "BYTES", "How many bytes long blocks have too many; else 7", false, true,
     [](const ModelBench& bench, const Fault&, std::string_view argument) {
       bench.Pendrel->Faults.Excess = numberIn<std::size_t>(argument, 1, PendrelMemory::BlockSize);
     }},
    {"block delay", "", "SECONDS", "How long after its command a block comes; else 1", false, true,
     [](const ModelBench& bench, const Fault&, std::string_view argument) {
       bench.Pendrel->Faults.BlockDelay = secondsIn(argument);
     }},
    {"setup line", "", "LINE:TEXT", "Sent in place of line 0 to 7 of the setup", false, true, setSetupLine},
};

}  // namespace

std::span<const NamedFault> namedFaults() { return Faults; }

void setNamedFault(const ModelBench& bench, std::string_view name, const Fault& when,
                   std::string_view argument) {
  const std::string quoted = "\"" + std::string(name) + "\"";
  for (const NamedFault& fault : Faults) {
    if (fault.Name != name) continue;
    if (!(bench.Logger != nullptr ? fault.ForVarden : fault.ForPendrel)) break;
    if (argument.empty() != fault.Argument.empty())
      refuse(quoted +
             (argument.empty() ? " needs its " + std::string(fault.Argument) : " takes no argument"));
    return fault.Set(bench, when, argument);
  }
  refuse("the logger has no fault " + quoted);
}

}  // namespace hy_wristlog::simulator
