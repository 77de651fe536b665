#include "platform/linux/remote/name_lookup.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <utility>

#include <netdb.h>

namespace hy_wristlog::platform {

/// What the C library works on. It must stay in place until the look-up is over.
struct NameLookup::Request {
  std::string Host, Service;
  addrinfo Hints{};
  gaicb Entry{};
  int StartError = 0;

  Request(std::string host, std::uint16_t port) : Host(std::move(host)), Service(std::to_string(port)) {
    Hints.ai_family = AF_UNSPEC;
    Hints.ai_socktype = SOCK_STREAM;
    Hints.ai_flags = AI_NUMERICSERV | AI_ADDRCONFIG;
    Entry.ar_name = Host.c_str();
    Entry.ar_service = Service.c_str();
    Entry.ar_request = &Hints;
  }
  Request(const Request&) = delete;
  Request& operator=(const Request&) = delete;
  ~Request() {
    if (Entry.ar_result != nullptr) ::freeaddrinfo(Entry.ar_result);
  }

  /// Addresses written in digits need no look-up.
  bool isNumeric() {
    addrinfo hints = Hints;
    hints.ai_flags = AI_NUMERICSERV | AI_NUMERICHOST;
    return ::getaddrinfo(Entry.ar_name, Entry.ar_service, &hints, &Entry.ar_result) == 0;
  }
  void start() {
    if (isNumeric()) return;
    gaicb* list[] = {&Entry};
    StartError = ::getaddrinfo_a(GAI_NOWAIT, list, 1, nullptr);
  }
  int state() { return Entry.ar_result != nullptr ? 0 : StartError != 0 ? StartError : ::gai_error(&Entry); }
};

namespace {

/// Keeps requests that were given up until the C library has let them go. It has no end of its own, since
/// one may be under way when the process ends or the library is unloaded.
template <class Request>
void keepUntilDone(std::unique_ptr<Request> request) {
  static std::mutex& lock = *new std::mutex;
  static std::vector<std::unique_ptr<Request>>& kept = *new std::vector<std::unique_ptr<Request>>;
  const std::lock_guard guard(lock);
  if (request) kept.push_back(std::move(request));
  std::erase_if(kept, [](const auto& each) { return each->state() != EAI_INPROGRESS; });
}

}  // namespace

NameLookup::NameLookup(const std::string& host, std::uint16_t port)
    : request_(std::make_unique<Request>(host, port)) {
  keepUntilDone<Request>(nullptr);
  request_->start();
}

NameLookup::~NameLookup() {
  if (!isDone()) ::gai_cancel(&request_->Entry);
  if (!isDone()) keepUntilDone(std::move(request_));
}

bool NameLookup::isDone() const { return request_->state() != EAI_INPROGRESS; }

int NameLookup::error() const { return request_->state(); }

std::vector<SocketAddress> NameLookup::addresses() const {
  std::vector<SocketAddress> addresses;
  if (error() != 0) return addresses;
  for (const addrinfo* found = request_->Entry.ar_result; found != nullptr; found = found->ai_next) {
    SocketAddress& address = addresses.emplace_back();
    address.Length = std::min<socklen_t>(found->ai_addrlen, sizeof address.Storage);
    std::memcpy(&address.Storage, found->ai_addr, address.Length);
  }
  return addresses;
}

}  // namespace hy_wristlog::platform
