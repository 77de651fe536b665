#include "replay/session_recorder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <filesystem>
#include <system_error>
#include <utility>

#include "hy_wristlog/failure.h"
#include "recording/signals_held.h"
#include "replay/redaction.h"
#include "replay/session_record.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace platform = hy_wristlog::platform;

namespace {

std::string systemWords(std::int32_t error) { return platform::current().environment().errorText(error); }

std::string freeName(const std::filesystem::path& path) {
  std::filesystem::path free = path;
  for (int number = 2; std::filesystem::exists(std::filesystem::symlink_status(free)); ++number)
    free = path.parent_path() /
           (path.stem().string() + "-" + std::to_string(number) + path.extension().string());
  return free.string();
}

}  // namespace

SessionRecorder::SessionRecorder(const std::string& file, bool redact, bool numbered)
    : wanted_(file), redact_(redact), keeps_(redact), numbered_(numbered) {
  const SignalsHeld held;
  create();
  if (redact) remove();
}

SessionRecorder::~SessionRecorder() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

void SessionRecorder::create() {
  file_ = numbered_ ? freeName(wanted_) : wanted_;
  descriptor_ = ::open(file_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOCTTY, 0600);
  if (descriptor_ >= 0) return;
  const std::int32_t error = errno;
  if (error == EEXIST)
    throw hw::Failure(hw::FailureNumber::FileExists, "wristlog",
                      file_ + " exists. A record takes no other file's place");
  throw hw::Failure(hw::FailureNumber::PathFileAccess, "wristlog", file_ + ": " + systemWords(error));
}

void SessionRecorder::remove() {
  if (descriptor_ < 0) return;
  ::close(std::exchange(descriptor_, -1));
  std::error_code none;
  std::filesystem::remove(file_, none);
}

std::shared_ptr<platform::Platform> SessionRecorder::begin(const std::shared_ptr<platform::Platform>& world,
                                                           const std::vector<std::string>& arguments,
                                                           const std::string& simulated) {
  write(headerLine(sessionIn(*world, arguments, simulated)));
  world_ = world;
  began_ = world->clock().timer();
  return platform::makeRecordedWorld(world, shared_from_this(), began_);
}

void SessionRecorder::take(const platform::WireEvent& event) noexcept {
  delay_ = std::max(delay_, event.Delay);
  try {
    write(eventLine(event, latest_));
  } catch (const std::exception&) {
    trouble_ = ENOMEM;
  }
}

void SessionRecorder::stop() {
  take({.Kind = platform::WireKind::Stop, .Time = world_->clock().timer() - began_});
}

void SessionRecorder::write(const std::string& line) noexcept {
  if (trouble_ != 0) return;
  if (keeps_) try {
      lines_ += line;
    } catch (const std::bad_alloc&) {
      trouble_ = ENOMEM;
    }
  if (descriptor_ < 0 || redact_) return;
  for (std::size_t at = 0; at < line.size();) {
    const auto count = ::write(descriptor_, line.data() + at, line.size() - at);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      trouble_ = count < 0 ? errno : EIO;
      return;
    }
    at += static_cast<std::size_t>(count);
  }
}

std::string SessionRecorder::text(int exitStatus, const std::string& words,
                                  const std::optional<hw::Failure>& failed) const {
  const std::string whole = lines_ + endLine(exitStatus, words, failed);
  return redact_ ? textOf(redacted(recordOf(whole))) : whole;
}

bool SessionRecorder::finish(int exitStatus, const std::optional<hw::Failure>& failed) {
  if (!world_) {
    remove();
    return true;
  }
  const SignalsHeld held;
  if (!redact_) {
    write(endLine(exitStatus, {}, failed));
  } else {
    try {
      const std::string whole = text(exitStatus, {}, failed);
      create();
      keeps_ = redact_ = false;
      write(whole);
    } catch (const hw::Failure& failure) {
      complain() << "No record was kept: " << failure.Description << ".\n";
      return failure.Number == hw::FailureNumber::InvalidCall;
    }
  }
  if (::fsync(descriptor_) != 0 && trouble_ == 0 && errno != EINVAL && errno != EROFS) trouble_ = errno;
  if (trouble_ == 0) return true;
  complain() << "The record " << file_ << " is not whole: " << systemWords(trouble_) << '\n';
  return false;
}

std::shared_ptr<SessionRecorder> recorderFor(const std::string& option, bool redact) {
  if (!option.empty()) return std::make_shared<SessionRecorder>(option, redact, false);
  const std::string named = platform::current().environment().variable("HY_WRISTLOG_RECORD").value_or("");
  if (named.empty()) return nullptr;
  return std::make_shared<SessionRecorder>(named, redact, true);
}

}  // namespace wristlog
