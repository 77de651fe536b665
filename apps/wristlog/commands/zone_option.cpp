#include "commands/zone_option.h"

#include "commands/subject_options.h"
#include "engineering/zone_names.h"
#include "hy_wristlog/failure.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

/// Raises UnknownZone when no zone of the catalogue has the rules of `name`.
void requireFit(const engineering::CatalogueFit& fit, const std::string& name) {
  if (!fit.Abbreviation.empty()) return;
  std::string nearest;
  for (const std::string& zone : fit.Nearest) nearest += (nearest.empty() ? "" : "; ") + zone;
  throw hw::Failure(hw::ReturnCode::UnknownZone, "wristlog",
                    "A logger cannot keep the time of " + name +
                        ": none of its zones has the same rules. The nearest are " + nearest +
                        ". --zone takes one of these letters");
}

}  // namespace

std::string zoneLetters(const std::string& text) {
  std::string letters = upper(text);
  if (!text.empty() && engineering::isInCatalogue(letters)) return letters;
  const std::string name = text.empty() ? engineering::localZoneName() : text;
  if (name.empty()) return letters;
  const auto fit = engineering::catalogueFit(name);
  if (!fit) return text.empty() ? text : letters;
  requireFit(*fit, name);
  if (text.empty()) return text;
  complain() << name << " is kept as " << fit->Abbreviation << ", " << fit->DisplayName
             << ", which has the same rules.\n";
  return fit->Abbreviation;
}

}  // namespace wristlog
