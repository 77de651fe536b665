#include "hy_wristlog/Class_Subject.h"

#include "base/ascii.h"
#include "base/code_page.h"
#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

std::string Class_Subject::Get_Age() const {
  Procedure procedure{"clsSubject", "Get_Age"};
  return procedure.run([&] { return std::to_string(Tools().fncAgeDiff(DOB_, now())); });
}

void Class_Subject::Let_Gender(const std::string& value) {
  const std::string ansi = ansiTextFromUtf8(value).substr(0, 1);
  Gender_ = utf8FromAnsiText(asciiUpper(ansi));
}

}  // namespace hy_wristlog
