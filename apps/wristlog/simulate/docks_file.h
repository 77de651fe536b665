#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "simulator/dockable.h"

namespace wristlog {

/// The section of Docks.INI that makes the served device a dock.
struct DockSection {
  hy_wristlog::simulator::DockKind Kind{};
  std::int32_t ComPort = 0;
  std::string Device;
  std::string Fingerprint;  ///< of the certificate of a device with TLS, else empty

  std::string name() const { return "Dock " + std::to_string(ComPort); }
  std::string text() const;
};

/// A section in a file of docks, as long as this lives. The rest of the file stays; a file that holds nothing
/// else is removed with it.
class KeptSection {
 public:
  explicit KeptSection(std::string file) : file_(std::move(file)) {}
  ~KeptSection();
  KeptSection(const KeptSection&) = delete;
  KeptSection& operator=(const KeptSection&) = delete;

  const std::string& file() const { return file_; }
  /// Puts it there in place of the former one. Raises Failure PermissionDenied when the file has a section of
  /// that name that somebody wrote or another server keeps, PathFileAccess when the file cannot be changed.
  void put(const DockSection& section);

 private:
  void change() const;

  std::string file_;
  DockSection section_;
};

}  // namespace wristlog
