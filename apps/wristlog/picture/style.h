#pragma once

#include <string>

/// The colours and fonts of the pictures, as style sheets for light and dark screens and for paper.
namespace wristlog::picture {

/// The classes of the actogram.
std::string pictureStyle();

/// What report.html has besides.
std::string pageStyle();

}  // namespace wristlog::picture
