#include "component/sinks.h"

#include <algorithm>
#include <utility>

#include "component/handle.h"
#include "component/strings.h"

namespace hy_wristlog::component {
namespace {

/// A text that sinks may change.
class TextVariable {
 public:
  explicit TextVariable(std::string& text) : text_(text), string_(newString(text)), units_(unitsNow()) {}
  TextVariable(const TextVariable&) = delete;
  TextVariable& operator=(const TextVariable&) = delete;
  ~TextVariable() { hyStringFree(string_); }

  HyVariant reference() {
    HyVariant variant{};
    variant.vt = HY_VT_BYREF | HY_VT_BSTR;
    variant.pbstrVal = &string_;
    return variant;
  }
  void takeBack() {
    if (unitsNow() != units_) text_ = textOf(string_);
  }

 private:
  std::vector<std::uint16_t> unitsNow() const {
    return string_ == nullptr ? std::vector<std::uint16_t>{}
                              : std::vector<std::uint16_t>(string_, string_ + hyStringLength(string_));
  }

  std::string& text_;
  HyString string_;
  std::vector<std::uint16_t> units_;
};

class Listener final : public LoggerEvents {
 public:
  Listener(std::shared_ptr<SinkList> sinks, std::shared_ptr<SinkList> hostSinks)
      : sinks_(std::move(sinks)), hostSinks_(std::move(hostSinks)) {}

  void CommEventError(std::int32_t ErrorNum, std::string& ErrorDescription) override {
    withoutThrowing([&] {
      TextVariable text(ErrorDescription);
      HyVariant arguments[] = {text.reference(), number(ErrorNum)};
      sinks_->tell(HY_EVENT_COMM_EVENT_ERROR, arguments, 2);
      text.takeBack();
      return HY_S_OK;
    });
  }
  void CommProgress(std::string& ProgressText) override {
    withoutThrowing([&] {
      TextVariable text(ProgressText);
      HyVariant argument = text.reference();
      sinks_->tell(HY_EVENT_COMM_PROGRESS, &argument, 1);
      text.takeBack();
      return HY_S_OK;
    });
  }
  void AbortAcknowledged() override {
    withoutThrowing([&] {
      sinks_->tell(HY_EVENT_ABORT_ACKNOWLEDGED, nullptr, 0);
      return HY_S_OK;
    });
  }
  void DownloadProgress(std::int32_t BytesSoFar, std::int32_t BytesExpected) override {
    if (!hostSinks_) return;
    withoutThrowing([&] {
      HyVariant arguments[] = {number(BytesExpected), number(BytesSoFar)};
      hostSinks_->tell(HY_EVENT_DOWNLOAD_PROGRESS, arguments, 2);
      return HY_S_OK;
    });
  }

 private:
  static HyVariant number(std::int32_t value) {
    HyVariant variant{};
    variant.vt = HY_VT_I4;
    variant.lVal = value;
    return variant;
  }

  std::shared_ptr<SinkList> sinks_, hostSinks_;
};

}  // namespace

std::uint32_t SinkList::connect(HyDispatch* sink) {
  do ++lastCookie_;
  while (lastCookie_ == 0 || isConnected(lastCookie_));
  connections_.push_back({lastCookie_, sink});
  return lastCookie_;
}

bool SinkList::disconnect(std::uint32_t cookie) {
  const auto found = std::find_if(connections_.begin(), connections_.end(),
                                  [&](const Connection& connection) { return connection.Cookie == cookie; });
  if (found == connections_.end()) return false;
  HyDispatch* sink = found->Sink;
  connections_.erase(found);
  sink->lpVtbl->Release(sink);
  return true;
}

void SinkList::clear() {
  for (const Connection& connection : std::exchange(connections_, {}))
    connection.Sink->lpVtbl->Release(connection.Sink);
}

bool SinkList::isConnected(std::uint32_t cookie) const {
  return std::any_of(connections_.begin(), connections_.end(),
                     [&](const Connection& connection) { return connection.Cookie == cookie; });
}

std::vector<HyConnectData> SinkList::connections() const {
  std::vector<HyConnectData> data;
  data.reserve(connections_.size());
  for (const auto& [cookie, sink] : connections_) {
    sink->lpVtbl->AddRef(sink);
    data.push_back({reinterpret_cast<HyUnknown*>(sink), cookie});
  }
  return data;
}

void SinkList::tell(std::int32_t event, HyVariant* arguments, std::uint32_t count) {
  const std::vector<Connection> present = connections_;
  std::vector<HyVariant> own(count);
  for (const auto& [cookie, sink] : present) sink->lpVtbl->AddRef(sink);
  for (const auto& [cookie, sink] : present) {
    if (isConnected(cookie)) {
      std::copy_n(arguments, count, own.begin());
      HyDispParams params{own.data(), nullptr, count, 0};
      const auto tellOne = [&, target = sink] {
        return target->lpVtbl->Invoke(target, event, &HY_GUID_NULL, 0, HY_DISPATCH_METHOD, &params, nullptr,
                                      nullptr, nullptr);
      };
      withoutThrowing(tellOne);
    }
    sink->lpVtbl->Release(sink);
  }
}

std::shared_ptr<LoggerEvents> makeListener(const std::shared_ptr<SinkList>& sinks,
                                           const std::shared_ptr<SinkList>& hostSinks) {
  return std::make_shared<Listener>(sinks, hostSinks);
}

}  // namespace hy_wristlog::component
