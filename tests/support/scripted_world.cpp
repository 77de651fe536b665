#include "support/scripted_world.h"

#include <algorithm>

namespace hy_wristlog::scripted {
namespace {

using platform::LineErrors;
using platform::LineSettings;
using platform::ModemLines;

class Port final : public platform::SerialPort {
 public:
  explicit Port(World& world) : world_(world) { world_.IsOpen = true; }
  Port(const Port&) = delete;
  Port& operator=(const Port&) = delete;
  ~Port() override {
    world_.IsOpen = false;
    world_.note("close");
  }

  void configure(const LineSettings& settings) override {
    world_.before("configure");
    world_.note(std::to_string(settings.Baud) + ' ' + "emnos"[static_cast<int>(settings.Parity)] +
                std::to_string(settings.DataBits) + ' ' +
                std::to_string(static_cast<int>(settings.StopBits)));
  }
  std::size_t read(std::span<std::uint8_t> into) override {
    world_.before("read");
    const std::size_t count = std::min(into.size(), world_.Incoming.size());
    std::copy_n(world_.Incoming.begin(), count, into.begin());
    world_.Incoming.erase(0, count);
    return count;
  }
  std::size_t write(std::span<const std::uint8_t> bytes) override {
    world_.before("write");
    const std::string text(bytes.begin(), bytes.end());
    world_.Written += text;
    if (world_.OnWrite) world_.OnWrite(text);
    return bytes.size();
  }
  std::size_t outstanding() override {
    world_.before("outstanding");
    return world_.Outstanding;
  }
  void discardInput() override {
    world_.before("discard");
    world_.Incoming.clear();
  }
  void setDtr(bool on) override { setLine("dtr", on); }
  void setRts(bool on) override { setLine("rts", on); }
  ModemLines modemLines() override {
    world_.before("lines");
    return world_.Lines;
  }
  LineErrors takeErrors() override {
    world_.before("errors");
    return std::exchange(world_.Errors, {});
  }

 private:
  void setLine(const std::string& name, bool on) {
    world_.before(name);
    world_.note(name + (on ? " on" : " off"));
  }
  World& world_;
};

}  // namespace

std::unique_ptr<platform::SerialPort> World::open(std::int32_t number) {
  before("open");
  note("open " + std::to_string(number));
  return std::make_unique<Port>(*this);
}

}  // namespace hy_wristlog::scripted
