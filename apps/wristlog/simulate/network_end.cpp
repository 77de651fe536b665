#include "simulate/network_end.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <utility>

namespace wristlog {

namespace platform = hy_wristlog::platform;

namespace {

constexpr std::size_t PieceSize = 4096, MostSentAway = 16;
/// What other servers of serial ports say, so that clients know it.
constexpr const char* InUse = "Port already in use\r\n";

}  // namespace

NetworkEnd::NetworkEnd(ServedLogger& logger, const ListenAddress& address,
                       std::unique_ptr<Connections> connections)
    : logger_(logger), connections_(std::move(connections)), listener_(listenAt(address)) {}

std::string NetworkEnd::device() const { return connections_->scheme() + "://" + nameOf(listener_); }

void NetworkEnd::watch(std::vector<pollfd>& list) const {
  list.push_back({listener_.get(), POLLIN, 0});
  for (const SentAway& away : sentAway_)
    list.push_back({away.Client->descriptor(),
                    static_cast<short>(POLLIN | away.Client->waitsFor(!away.Words.empty())), 0});
  if (!client_ || client_->isOver()) return;
  const int input = server_->hasRoom() ? POLLIN : 0, output = client_->waitsFor(server_->hasAnswer());
  list.push_back({client_->descriptor(), static_cast<short>(input | output), 0});
}

void NetworkEnd::serve() {
  if (!logger_.plugged()) {
    server_.reset();
    client_.reset();
    logger_.close();
  }
  accept();
  serveSentAway();
  if (client_) serveClient();
}

void NetworkEnd::accept() {
  std::string peer;
  while (platform::Descriptor socket = acceptFrom(listener_, peer)) {
    std::unique_ptr<Connection> client = connections_->make(std::move(socket));
    if (client_) {
      logger_.tell("refused", {{"reason", "in use"}, {"client", peer}},
                   "A second client, " + peer + ", was told that the port is in use.");
      sendAway(std::move(client), InUse);
    } else if (!logger_.plugged()) {
      sendAway(std::move(client), "There is no dock\r\n");
    } else if (const auto refusal = logger_.open(); refusal) {
      sendAway(std::move(client), logger_.bench().Dock->Faults.Held ? InUse : *refusal + "\r\n");
    } else {
      client_ = std::move(client);
      server_.emplace(logger_);
    }
  }
}

void NetworkEnd::sendAway(std::unique_ptr<Connection> client, const std::string& words) {
  constexpr double Patience = 2;
  if (sentAway_.size() >= MostSentAway) sentAway_.erase(sentAway_.begin());
  sentAway_.push_back({std::move(client), words, platform::current().clock().timer() + Patience});
}

/// What such a client says is taken, since a socket that is closed with bytes in it takes the words back.
void NetworkEnd::serveSentAway() {
  std::array<std::uint8_t, PieceSize> ignored{};
  const double now = platform::current().clock().timer();
  for (SentAway& away : sentAway_) {
    while (away.Client->read(ignored) > 0) {
    }
    if (away.Words.empty()) continue;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(away.Words.data());
    away.Words.erase(0, away.Client->write({bytes, away.Words.size()}));
    if (away.Words.empty()) away.Client->endWriting();
  }
  std::erase_if(sentAway_, [now](const SentAway& away) { return away.Client->isOver() || now > away.Until; });
}

void NetworkEnd::send() {
  platform::telnet::Bytes& answer = server_->answer();
  while (!answer.empty() && !client_->isOver()) {
    const std::size_t sent = client_->write(answer);
    if (sent == 0) return;
    answer.erase(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(sent));
  }
}

void NetworkEnd::serveClient() {
  std::array<std::uint8_t, PieceSize> piece{};
  while (!client_->isOver() && server_->hasRoom()) {
    const std::size_t count = client_->read(piece);
    if (count == 0) break;
    server_->take(std::span(piece).first(count));
    server_->serve();
  }
  server_->serve();
  send();
  client_->checkBroken();
  if (!client_->isOver() || !logger_.letGo(server_->isDone())) return;
  server_.reset();
  client_.reset();
}

}  // namespace wristlog
