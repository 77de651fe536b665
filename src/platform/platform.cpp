#include <algorithm>
#include <utility>

#include "platform/linux/linux_platform.h"
#include "platform/machine.h"
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

bool isMachine() { return threadWorld() == nullptr || threadWorld() == machine(); }

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
  if (!held_->PresentHost) held_->PresentHost = std::make_shared<Host>();
  return *held_->PresentHost;
}

void Platform::setHost(std::shared_ptr<Host> host) { held_->PresentHost = std::move(host); }

void Platform::addEventSource(EventSource& source) { held_->Sources.push_back(&source); }

void Platform::removeEventSource(EventSource& source) { std::erase(held_->Sources, &source); }

void Platform::serveEvents() {
  // The world may be left while an event is served.
  const std::shared_ptr<Held> held = held_;
  if (held->Serving) return;
  held->Serving = true;
  struct Reset {
    bool& flag;
    ~Reset() { flag = false; }
  } const reset{held->Serving};
  const std::vector<EventSource*> sources = held->Sources;
  for (EventSource* source : sources)
    if (std::find(held->Sources.begin(), held->Sources.end(), source) != held->Sources.end())
      source->serveEvents();
  const std::shared_ptr<Host> host = held->PresentHost;
  if (host) host->serveEvents();
}

}  // namespace platform
}  // namespace hy_wristlog
