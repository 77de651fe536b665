#include "commands/zone_option.h"

#include "commands/subject_options.h"
#include "engineering/zone_names.h"
#include "engineering/zones.h"
#include "hy_wristlog/failure.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

/// Raises UnknownZone when no zone of the catalogue has the rules of `name`. `words` say what is in vain
/// then.
void requireFit(const engineering::CatalogueFit& fit, const std::string& name, const std::string& words,
                const char* option) {
  if (!fit.Abbreviation.empty()) return;
  std::string nearest;
  for (const std::string& zone : fit.Nearest) nearest += (nearest.empty() ? "" : "; ") + zone;
  throw hw::Failure(hw::ReturnCode::UnknownZone, "wristlog",
                    words + " the time of " + name +
                        ": none of the loggers' zones has the same rules. The nearest are " + nearest + ". " +
                        option + " takes one of these letters");
}

}  // namespace

std::string zoneLetters(const std::string& text) {
  std::string letters = upper(text);
  // Asked for an empty text too, since without a tz database nothing else is to be told.
  if (engineering::isInCatalogue(letters) && !text.empty()) return letters;
  if (const std::string trouble = text.empty() ? engineering::localZoneTrouble() : ""; !trouble.empty())
    throw hw::Failure(hw::ReturnCode::UnknownZone, "wristlog",
                      "The machine's time zone is not known. " + trouble + " Correct it, or give --zone");
  const std::string name = text.empty() ? engineering::localZoneName() : text;
  if (name.empty()) return letters;
  const auto fit = engineering::catalogueFit(name);
  if (!fit) return text.empty() ? text : letters;
  requireFit(*fit, name, "A logger cannot keep", "--zone");
  if (text.empty()) return text;
  complain() << name << " is kept as " << fit->Abbreviation << ", " << fit->DisplayName
             << ", which has the same rules.\n";
  return fit->Abbreviation;
}

DrawnZone drawnZone(const std::string& text) {
  if (text.empty()) return {};
  const std::string letters = upper(text);
  if (engineering::isInCatalogue(letters)) return {letters, engineering::zoneName(letters)};
  const auto fit = engineering::catalogueFit(text);
  if (!fit)
    throw hw::Failure(hw::ReturnCode::UnknownZone, "wristlog",
                      text +
                          " is no time zone. See 'wristlog zones' for the letters; or name one of the tz "
                          "database, as Europe/Paris");
  requireFit(*fit, text, "Nothing is drawn in", "--tz");
  return {fit->Abbreviation, text};
}

}  // namespace wristlog
