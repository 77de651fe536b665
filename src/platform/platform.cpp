#include <algorithm>
#include <utility>

#include "platform/linux/linux_platform.h"
#include "platform/platform.h"

namespace hy_wristlog {

MessageBoxButton Host::showMessageBox(std::string_view, std::string_view, std::int32_t buttons) {
  for (auto button : {MessageBoxButton::Cancel, MessageBoxButton::No, MessageBoxButton::Yes})
    if ((buttons & static_cast<std::int32_t>(button)) != 0) return button;
  return MessageBoxButton::Ok;
}

void setHost(std::shared_ptr<Host> host) { platform::current().setHost(std::move(host)); }

namespace platform {
namespace {

std::shared_ptr<Platform>& threadWorld() {
  thread_local std::shared_ptr<Platform> world;
  return world;
}

const std::shared_ptr<Platform>& machine() {
  thread_local const std::shared_ptr<Platform> world = makeLinuxPlatform();
  return world;
}

}  // namespace

Platform& current() {
  Platform* world = threadWorld().get();
  return world != nullptr ? *world : *machine();
}

std::shared_ptr<Platform> shareCurrent() { return threadWorld() ? threadWorld() : machine(); }

std::shared_ptr<Platform> use(std::shared_ptr<Platform> world) {
  return std::exchange(threadWorld(), std::move(world));
}

void NewFile::pass(std::string_view piece) {
  begun_ = true;
  write(piece);
}

void NewFile::add(std::string_view text) {
  constexpr std::size_t Piece = 65536;
  if (waiting_.size() + text.size() < Piece) {
    waiting_ += text;
    return;
  }
  if (!waiting_.empty()) pass(waiting_);
  waiting_.clear();
  if (text.size() < Piece)
    waiting_ += text;
  else
    pass(text);
}

void NewFile::finish() {
  if (!waiting_.empty() || !begun_) pass(waiting_);
  takePlace();
}

void Files::write(const std::string& path, std::string_view content) {
  const std::unique_ptr<NewFile> file = create(path);
  file->add(content);
  file->finish();
}

Host& Platform::host() {
  if (!host_) host_ = std::make_shared<Host>();
  return *host_;
}

void Platform::setHost(std::shared_ptr<Host> host) { host_ = std::move(host); }

void Platform::addEventSource(EventSource& source) { sources_.push_back(&source); }

void Platform::removeEventSource(EventSource& source) { std::erase(sources_, &source); }

void Platform::serveEvents() {
  if (serving_) return;
  serving_ = true;
  struct Reset {
    bool& flag;
    ~Reset() { flag = false; }
  } const reset{serving_};
  const std::vector<EventSource*> sources = sources_;
  for (EventSource* source : sources)
    if (std::find(sources_.begin(), sources_.end(), source) != sources_.end()) source->serveEvents();
  const std::shared_ptr<Host> host = host_;
  if (host) host->serveEvents();
}

}  // namespace platform
}  // namespace hy_wristlog
