#pragma once

#include <memory>
#include <utility>

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// A world that hands every member on to another one, except those that a derived class replaces.
class WrappedPlatform : public Platform {
 public:
  explicit WrappedPlatform(std::shared_ptr<Platform> inner) : inner_(std::move(inner)) {}

  const std::shared_ptr<Platform>& inner() const { return inner_; }

  Clock& clock() override { return inner_->clock(); }
  SerialPorts& serialPorts() override { return inner_->serialPorts(); }
  DeviceTree& deviceTree() override { return inner_->deviceTree(); }
  SettingsStore& settings() override { return inner_->settings(); }
  ZoneRecords& zones() override { return inner_->zones(); }
  Environment& environment() override { return inner_->environment(); }
  Files& files() override { return inner_->files(); }
  CryptographicProvider& cryptography() override { return inner_->cryptography(); }

 protected:
  /// A view, which shares the other world's host, waits, objects and event sources.
  struct View {};
  WrappedPlatform(View, std::shared_ptr<Platform> inner)
      : Platform(ViewOf{*inner}), inner_(std::move(inner)) {}

 private:
  std::shared_ptr<Platform> inner_;
};

}  // namespace hy_wristlog::platform
