#pragma once

#include <span>
#include <string>

#include "recording/codebook.h"
#include "recording/json.h"

namespace wristlog {

/// The codebook of a recording's tables and facts as a frictionless data package: datapackage.json. Tables of
/// a part of a recording are called "series.partial.csv" and so on. `family` is the logger's.
Json dataPackage(Family family, bool isPart);

/// A table of such a package. `path` is that of its file, or an array of several with the same columns.
Json tableResource(const std::string& name, const Json& path, std::span<const Field> fields);

}  // namespace wristlog
