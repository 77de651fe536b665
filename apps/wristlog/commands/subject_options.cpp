#include "commands/subject_options.h"

#include <cmath>

#include "engineering/dates.h"

namespace wristlog {
namespace {

/// Without a letter a retrieval ends with a warning. The same letter stands in records that name nobody.
constexpr const char* UntoldGender = "X";

float tenths(float value) { return std::round(value * 10) / 10; }

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

std::string upper(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return text;
}

hy_wristlog::Class_Subject subjectFrom(const SubjectOptions& options) {
  hy_wristlog::Class_Subject subject;
  subject.Let_Identity(trimmed(options.Identity));
  subject.Let_Initials(trimmed(options.Initials));
  subject.Let_Gender(options.Gender.empty() ? UntoldGender : options.Gender);
  subject.Let_GUID(options.Guid);
  subject.Let_Height(tenths(options.Height));
  subject.Let_Weight(tenths(options.Weight));
  if (!options.BirthDate.empty()) subject.Let_DOB(hy_wristlog::engineering::dateFromText(options.BirthDate));
  return subject;
}

}  // namespace wristlog
