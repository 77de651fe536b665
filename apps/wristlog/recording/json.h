#pragma once

#include <nlohmann/json_fwd.hpp>

namespace wristlog {

/// A JSON document whose members keep their order. Files that make or read one include <nlohmann/json.hpp>.
using Json = nlohmann::ordered_json;

}  // namespace wristlog
