#pragma once

#include <nlohmann/json_fwd.hpp>

namespace wristlog {

/// A JSON document whose members keep their order. Who makes or reads one includes <nlohmann/json.hpp>.
using Json = nlohmann::ordered_json;

}  // namespace wristlog
