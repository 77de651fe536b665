#include "recording/recording_world.h"

#include <charconv>

#include "engineering/dates.h"
#include "hy_wristlog/failure.h"
#include "hy_wristlog/host.h"
#include "platform/wrapped_platform.h"
#include "words/say.h"

namespace wristlog {

namespace platform = hy_wristlog::platform;

namespace {

class FixedClock : public platform::Clock {
 public:
  explicit FixedClock(const hy_wristlog::CivilTime& time) : time_(time) {}
  hy_wristlog::CivilTime utc() override { return time_; }
  hy_wristlog::CivilTime local() override { return time_; }
  double timer() override { return timer_; }
  void sleep(std::chrono::milliseconds duration) override {
    timer_ += std::chrono::duration<double>(duration).count();
  }
  void idle() override { sleep(std::chrono::milliseconds(1)); }

 private:
  hy_wristlog::CivilTime time_;
  double timer_ = 0;
};

/// An environment whose locale is neutral.
class NeutralTexts : public platform::Environment {
 public:
  explicit NeutralTexts(platform::Environment& inner) : inner_(inner) {}
  std::string localeInfo(platform::LocaleItem item) override {
    switch (item) {
      case platform::LocaleItem::DecimalSeparator:
        return ".";
      case platform::LocaleItem::Time:
        return "HH:mm:ss";
      case platform::LocaleItem::LongDate:
      case platform::LocaleItem::ShortDate:
        break;
    }
    return "yyyy-MM-dd";
  }
  std::string specialFolder(std::int32_t code) override { return inner_.specialFolder(code); }
  std::string libraryFolder() override { return inner_.libraryFolder(); }
  std::optional<std::string> variable(std::string_view name) override { return inner_.variable(name); }
  std::string userName() override { return inner_.userName(); }
  std::string fullName() override { return inner_.fullName(); }
  std::string domainName() override { return inner_.domainName(); }
  std::string computerName() override { return inner_.computerName(); }
  std::string errorText(std::int32_t number) override { return inner_.errorText(number); }

 private:
  platform::Environment& inner_;
};

class WorldAt : public platform::WrappedPlatform {
 public:
  WorldAt(const hy_wristlog::CivilTime& time, RecordingWorld::Texts texts)
      : WrappedPlatform(platform::shareCurrent()),
        clock_(time),
        neutral_(WrappedPlatform::environment()),
        texts_(texts) {}
  platform::Clock& clock() override { return clock_; }
  platform::Environment& environment() override {
    return texts_ == RecordingWorld::Texts::Neutral ? neutral_ : WrappedPlatform::environment();
  }

 private:
  FixedClock clock_;
  NeutralTexts neutral_;
  RecordingWorld::Texts texts_;
};

class BoxesOnStandardError : public hy_wristlog::Host {
 public:
  hy_wristlog::MessageBoxButton showMessageBox(std::string_view title, std::string_view text,
                                               std::int32_t buttons) override {
    complain().lines(text, "  ");
    return Host::showMessageBox(title, text, buttons);
  }
};

hy_wristlog::CivilTime civilOf(double utc) {
  const std::string iso = hy_wristlog::engineering::isoDate(utc);
  if (iso.empty())
    throw hy_wristlog::Failure(hy_wristlog::FailureNumber::InvalidCall, "wristlog",
                               "The time lies outside the years 100 to 9999");
  const auto digits = [&](std::size_t at, std::size_t length) {
    std::int32_t value = 0;
    std::from_chars(iso.data() + at, iso.data() + at + length, value);
    return value;
  };
  return {digits(0, 4), digits(5, 2), digits(8, 2), digits(11, 2), digits(14, 2), digits(17, 2), 0};
}

}  // namespace

RecordingWorld::RecordingWorld(double utc, Texts texts)
    : scope_(std::make_shared<WorldAt>(civilOf(utc), texts)) {
  hy_wristlog::setHost(std::make_shared<BoxesOnStandardError>());
}

}  // namespace wristlog
