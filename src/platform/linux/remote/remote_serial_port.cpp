#include "platform/linux/remote/remote_serial_port.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

#include "hy_wristlog/failure.h"
#include "platform/linux/linux_environment.h"

namespace hy_wristlog::platform {
namespace {

using SteadyClock = std::chrono::steady_clock;

/// Of what was received so much waits here at most; the rest waits in the network.
constexpr std::size_t MostWaiting = std::size_t{1} << 18;
constexpr std::size_t MostUnsent = std::size_t{1} << 16;
constexpr std::size_t LongestRefusal = 200;

constexpr std::chrono::milliseconds LongestFarewell{500};
/// For so long what comes is taken for older than a purge.
constexpr std::chrono::seconds LongestPurge{2};
/// After so much silence the server is asked, and has so much time to answer.
constexpr std::chrono::seconds QuietTime{3}, AnswerTime{5};

constexpr std::string_view OwnSignature = "HY_Wristlog";

bool isSupported(const LineSettings& settings) {
  const LineStopBits most = settings.DataBits == 5 ? LineStopBits::OneAndHalf : LineStopBits::Two;
  return settings.Baud > 0 && settings.DataBits >= 5 && settings.DataBits <= 8 &&
         (settings.StopBits == LineStopBits::One || settings.StopBits == most);
}

}  // namespace

RemoteSerialPort::RemoteSerialPort(std::unique_ptr<RemoteChannel> channel, std::string name)
    : channel_(std::move(channel)), name_(std::move(name)), heard_(SteadyClock::now()) {
  using namespace telnet;
  options_.allowHere(SuppressGoAhead);
  options_.allowThere(SuppressGoAhead);
  options_.allowThere(Echo);
  options_.allowThere(ComPort);
  options_.offerHere(messages_, Binary);
  options_.askThere(messages_, Binary);
  options_.offerHere(messages_, ComPort);
  sendMessages();
}

RemoteSerialPort::~RemoteSerialPort() {
  if (!begun_ || !gone_.empty()) return;
  try {
    sendMessages();
    const Time deadline = SteadyClock::now() + LongestFarewell;
    for (telnet::Bytes late; !channel_->isEnded() && SteadyClock::now() < deadline; late.clear()) {
      channel_->finish();
      channel_->await(std::chrono::milliseconds{10});
      channel_->receive(late);
    }
  } catch (const TlsTrouble&) {
    // It ends without a farewell.
  }
}

RemoteSerialPort::Opening RemoteSerialPort::opening() {
  using namespace telnet;
  pump();
  if (options_.isRefusedHere(ComPort) || options_.isRefusedHere(Binary) || options_.isRefusedThere(Binary))
    return Opening::Refused;
  if (channel_->isEnded() || !gone_.empty()) return Opening::Ended;
  const bool agreed = options_.isOnHere(ComPort) && options_.isOnHere(Binary) && options_.isOnThere(Binary);
  return agreed ? Opening::Agreed : Opening::UnderWay;
}

void RemoteSerialPort::begin() {
  using namespace com_port;
  constexpr std::uint8_t Everything = 255;
  begun_ = true;
  sendByte(SetControl, DtrOff);
  sendByte(SetControl, RtsOff);
  sendByte(SetControl, NoFlowControl);
  sendByte(SetModemStateMask, Everything);
  sendByte(SetLineStateMask, LineBreak | LineFraming | LineParityError | LineOverrun);
  // Whether these two are answered says how the port can be used.
  ++baud_.AnswersDue;
  addNumberMessage(messages_, SetBaudRate, AskValue);
  purge();
}

void RemoteSerialPort::dropReceived() {
  received_.clear();
  taken_ = 0;
}

void RemoteSerialPort::data(std::span<const std::uint8_t> bytes) {
  if (!begun_)
    bytes = bytes.first(std::min(bytes.size(), LongestRefusal - std::min(LongestRefusal, waiting())));
  if (!answersPurge_ || purges_.empty()) received_.insert(received_.end(), bytes.begin(), bytes.end());
}

void RemoteSerialPort::command(std::uint8_t) {}

void RemoteSerialPort::negotiation(std::uint8_t verb, std::uint8_t option) {
  options_.take(messages_, verb, option);
}

void RemoteSerialPort::subnegotiation(std::uint8_t option, std::span<const std::uint8_t> content) {
  using namespace com_port;
  const auto message = option == telnet::ComPort ? messageOf(content) : std::nullopt;
  if (!message) return;
  switch (message->Number) {
    case ServerOffset + Signature:
      if (message->Value.empty())
        addMessage(messages_, Signature,
                   {reinterpret_cast<const std::uint8_t*>(OwnSignature.data()), OwnSignature.size()});
      return;
    case ServerOffset + SetBaudRate:
      answersBaud_ = true;
      return takeAnswer(baud_, message->number());
    case ServerOffset + SetDataSize:
      return takeAnswer(size_, message->byte());
    case ServerOffset + SetParity:
      return takeAnswer(parity_, message->byte());
    case ServerOffset + SetStopSize:
      return takeAnswer(stop_, message->byte());
    case ServerOffset + NotifyLineState:
      return noteLineState(message->byte().value_or(0));
    case ServerOffset + NotifyModemState:
      if (const auto state = message->byte()) lines_ = linesOf(*state);
      return;
    case ServerOffset + SuspendFlow:
      suspended_ = true;
      return;
    case ServerOffset + ResumeFlow:
      suspended_ = false;
      return;
    case ServerOffset + PurgeData:
      answersPurge_ = true;
      if (purges_.empty()) return;
      delay_ =
          std::max(delay_, std::chrono::duration_cast<std::chrono::microseconds>(heard_ - purges_.front()));
      return purges_.pop_front();
    default:
      return;
  }
}

/// Only the answer to the last question counts: settings may have changed before the others came.
void RemoteSerialPort::takeAnswer(Setting& setting, std::optional<std::uint32_t> value) {
  if (setting.AnswersDue > 0) --setting.AnswersDue;
  if (setting.AnswersDue == 0 && setting.Wanted != 0 && value && *value != setting.Wanted) refused_ = true;
}

void RemoteSerialPort::noteLineState(std::uint8_t state) {
  using namespace com_port;
  const auto count = [&](std::uint32_t& errors, std::uint8_t bit) {
    if ((state & bit) != 0) ++errors;
  };
  count(errors_.Break, LineBreak);
  count(errors_.Framing, LineFraming);
  count(errors_.Parity, LineParityError);
  count(errors_.Overrun, LineOverrun);
}

void RemoteSerialPort::sendMessages() {
  if (!messages_.empty()) channel_->send(std::exchange(messages_, {}));
}

void RemoteSerialPort::pump() {
  if (!gone_.empty()) return;
  try {
    telnet::Bytes came;
    if (waiting() < MostWaiting) channel_->receive(came);
    if (!came.empty()) {
      heard_ = SteadyClock::now();
      answered_ = true;
      asked_.reset();
      if (taken_ == received_.size() || taken_ > MostWaiting) {
        received_.erase(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(taken_));
        taken_ = 0;
      }
      parser_.take(came, *this);
    }
    if (!purges_.empty() && SteadyClock::now() - purges_.front() > LongestPurge) purges_.clear();
    if (answersBaud_ && came.empty() && waiting() < MostWaiting) watchSilence();
    sendMessages();
    channel_->flush();
    if (!begun_ || !channel_->isEnded()) return;
    const int error = channel_->error();
    if (error == ETIMEDOUT || error == EHOSTUNREACH || error == ENETUNREACH || error == ENETDOWN)
      gone_ = "is out of reach: the network or the machine of the dock has fallen silent (" +
              systemErrorText(error) + "). Check the network and try again";
    else if (error != 0)
      gone_ =
          "has gone: the connection over the network broke off (" + systemErrorText(error) + "). Try again";
    else
      gone_ =
          "has gone: the machine of the dock has ended the connection. The dock was unplugged there, or "
          "its server was stopped";
  } catch (const TlsTrouble& trouble) {
    if (!begun_) throw;
    gone_ = trouble.Words;
  }
}

void RemoteSerialPort::watchSilence() {
  const Time now = SteadyClock::now();
  if (now - heard_ < QuietTime) return;
  if (!asked_) {
    asked_ = now;
    ++baud_.AnswersDue;
    com_port::addNumberMessage(messages_, com_port::SetBaudRate, com_port::AskValue);
  } else if (now - *asked_ > AnswerTime) {
    gone_ =
        "is out of reach: the network or the machine of the dock has fallen silent. Check the network and "
        "try again";
  }
}

void RemoteSerialPort::raiseGone() {
  throw Failure(FailureNumber::PortStateFailure, "MSComm", name_ + " " + gone_ + ".");
}

void RemoteSerialPort::checkPresent() {
  pump();
  if (!gone_.empty()) raiseGone();
  if (refused_)
    throw Failure(FailureNumber::PortStateFailure, "MSComm",
                  name_ + " does not support " + std::to_string(settings_.Baud) + " baud with " +
                      std::to_string(settings_.DataBits) + " data bits and this parity and stop bit setting");
}

void RemoteSerialPort::sendByte(std::uint8_t number, std::uint8_t value) {
  com_port::addByteMessage(messages_, number, value);
}

void RemoteSerialPort::set(Setting& setting, std::uint8_t number, std::uint8_t value) {
  setting.Wanted = value;
  ++setting.AnswersDue;
  sendByte(number, value);
}

void RemoteSerialPort::configure(const LineSettings& settings) {
  using namespace com_port;
  refused_ = false;
  settings_ = settings;
  if (!isSupported(settings)) {
    refused_ = true;
    checkPresent();
  }
  baud_.Wanted = static_cast<std::uint32_t>(settings.Baud);
  ++baud_.AnswersDue;
  addNumberMessage(messages_, SetBaudRate, baud_.Wanted);
  set(size_, SetDataSize, static_cast<std::uint8_t>(settings.DataBits));
  set(parity_, SetParity, codeOf(settings.Parity));
  set(stop_, SetStopSize, codeOf(settings.StopBits));
  checkPresent();
}

std::size_t RemoteSerialPort::read(std::span<std::uint8_t> into) {
  pump();
  const std::size_t count = std::min(into.size(), waiting());
  if (count == 0) checkPresent();
  std::copy_n(received_.begin() + static_cast<std::ptrdiff_t>(taken_), count, into.begin());
  taken_ += count;
  return count;
}

std::size_t RemoteSerialPort::write(std::span<const std::uint8_t> bytes) {
  checkPresent();
  const std::size_t unsent = channel_->unsent();
  if (suspended_ || unsent >= MostUnsent) return 0;
  bytes = bytes.first(std::min(bytes.size(), MostUnsent - unsent));
  telnet::addData(messages_, bytes);
  checkPresent();
  return bytes.size();
}

std::size_t RemoteSerialPort::outstanding() {
  checkPresent();
  return channel_->unsent();
}

/// What the server sends before it answers was received before the purge, so it goes too.
void RemoteSerialPort::purge() {
  sendByte(com_port::PurgeData, com_port::PurgeReceived);
  if (answersPurge_ || purges_.empty()) purges_.push_back(SteadyClock::now());
}

void RemoteSerialPort::discardInput() {
  checkPresent();
  dropReceived();
  purge();
  checkPresent();
}

void RemoteSerialPort::setDtr(bool on) {
  checkPresent();
  sendByte(com_port::SetControl, on ? com_port::DtrOn : com_port::DtrOff);
  checkPresent();
}

void RemoteSerialPort::setRts(bool on) {
  checkPresent();
  sendByte(com_port::SetControl, on ? com_port::RtsOn : com_port::RtsOff);
  checkPresent();
}

ModemLines RemoteSerialPort::modemLines() {
  checkPresent();
  return lines_;
}

LineErrors RemoteSerialPort::takeErrors() {
  checkPresent();
  return std::exchange(errors_, {});
}

void RemoteSerialPort::awaitInput(std::chrono::microseconds longest) {
  pump();
  if (waiting() > 0) return;
  // A port that has gone would be asked again at once.
  if (!gone_.empty()) longest = std::min<std::chrono::microseconds>(longest, std::chrono::milliseconds{1});
  channel_->await(longest);
}

}  // namespace hy_wristlog::platform
