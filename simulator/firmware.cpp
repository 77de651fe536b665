#include "simulator/firmware.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace hy_wristlog::simulator {

Firmware::Firmware(std::string_view version) : version_(version) {
  const std::string text = digits();
  if (version_.size() != 10 || text.size() != 8 ||
      !std::ranges::all_of(text, [](unsigned char c) { return std::isdigit(c) != 0; }))
    throw std::invalid_argument("a firmware version looks like 01.01.0007");
  major_ = std::stoi(text.substr(0, 2));
  minor_ = std::stoi(text.substr(2, 2));
  build_ = std::stoi(text.substr(4));
}

std::string Firmware::digits() const {
  std::string text = version_;
  std::erase(text, '.');
  return text;
}

}  // namespace hy_wristlog::simulator
