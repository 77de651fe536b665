#include "workflows/start_up.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "errors/failing_world.h"
#include "hy_wristlog/Class_Subject.h"
#include "signature/Class_Signature.h"
#include "simulator/simulated_world.h"
#include "workflows/error_files.h"

namespace hy_wristlog {
namespace {

namespace fs = std::filesystem;

/// A world in which nobody can be named once `Nameless` is set.
class World : public simulator::SimulatedWorld, private platform::Environment {
 public:
  using SimulatedWorld::SimulatedWorld;
  bool Nameless = false;
  platform::Environment& environment() override {
    return Nameless ? static_cast<platform::Environment&>(*this) : inner();
  }

 private:
  platform::Environment& inner() { return SimulatedWorld::environment(); }
  std::string specialFolder(std::int32_t code) override { return inner().specialFolder(code); }
  std::string libraryFolder() override { return inner().libraryFolder(); }
  std::string localeInfo(platform::LocaleItem item) override { return inner().localeInfo(item); }
  std::optional<std::string> variable(std::string_view name) override { return inner().variable(name); }
  std::string userName() override { throw platform::SystemError{2}; }
  std::string domainName() override { throw platform::SystemError{5}; }
  std::string computerName() override { throw platform::SystemError{5}; }
  std::string errorText(std::int32_t number) override { return inner().errorText(number); }
};

class StartUp : public testing::Test {
 protected:
  StartUp() { begin({}); }
  ~StartUp() override { platform::use(former_); }

  void begin(const simulator::WorldOptions& options) {
    world_ = std::make_shared<World>(options);
    platform::use(world_);
  }
  void writeActions(const std::string& text) const {
    std::ofstream(world_->rootFolder() + "/Library/ErrorActions.XML", std::ios::binary) << text;
  }
  /// A command that fails, as a host would meet it.
  static void failingCommand() {
    Procedure procedure{"M", "command", ProcedureKind::Command};
    procedure.run([&] { throw Failure(42, "", "broken"); });
  }
  /// Name and content of each log.
  std::map<std::string, std::string> logs() const {
    std::map<std::string, std::string> found;
    const fs::path folder = world_->rootFolder() + "/CommonData/HY_Wristlog/Errors";
    if (!fs::exists(folder)) return found;
    for (const auto& entry : fs::directory_iterator(folder)) {
      std::ostringstream text;
      text << std::ifstream(entry.path(), std::ios::binary).rdbuf();
      found[entry.path().filename()] = text.str();
    }
    return found;
  }
  static std::size_t count(const std::string& text, const std::string& what) {
    std::size_t times = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++times;
    return times;
  }

  std::shared_ptr<platform::Platform> former_ = platform::use(nullptr);
  std::shared_ptr<World> world_;
  void (*keepsStartUpInTheProgram_)() = &subMain;
};

TEST_F(StartUp, TheFirstLookFillsTheGlobalState) {
  using platform::LocaleItem;
  const std::pair<std::map<LocaleItem, std::string>, const char*> cases[] = {
      {{}, "M/d/yyyy;dddd, MMMM dd, yyyy;Hh:Nn:Ss;."},
      {{{LocaleItem::ShortDate, "dd.MM.yyyy"},
        {LocaleItem::LongDate, "d' de 'MMMM"},
        {LocaleItem::Time, "h:mm tt"},
        {LocaleItem::DecimalSeparator, ","}},
       "dd.MM.yyyy;d de MMMM;h:mm AMPM;,"},
  };
  for (const auto& [locale, formats] : cases) {
    simulator::WorldOptions options;
    options.Locale = locale;
    begin(options);
    const GlobalState& state = globals();
    EXPECT_EQ(state.ShortDateFormat + ";" + state.LongDateFormat + ";" + state.TimeOfDayFormat + ";" +
                  static_cast<char>(state.DecimalSeparator),
              formats);
    EXPECT_EQ(state.ShortDateTimeFormat, state.ShortDateFormat + " " + state.TimeOfDayFormat);
    EXPECT_EQ(state.LongDateTimeFormat, state.LongDateFormat + " " + state.TimeOfDayFormat);
    EXPECT_EQ(state.UserDataFolder, world_->rootFolder() + "/AppData/HY_Wristlog");
    EXPECT_EQ(state.CommonDataFolder, world_->rootFolder() + "/CommonData/HY_Wristlog");
    EXPECT_EQ(state.DocumentsFolder, world_->rootFolder() + "/Documents");
    EXPECT_TRUE(state.VersionFull.starts_with(state.VersionShort + "."));
    EXPECT_TRUE(state.ErrorStack.size() == 1 && !state.ErrorStack[0]);
    EXPECT_EQ(state.ErrorActions.size(), 12U);
    EXPECT_EQ(SignatureService().Get_LogonUserName() + SignatureService().Get_DomainName(), "testerLAB");
  }
}

TEST_F(StartUp, NamesThatTheSystemDoesNotTellReadError) {
  world_->Nameless = true;
  EXPECT_EQ(globals().ErrorActions.size(), 12U);
  EXPECT_EQ(SignatureService().Get_LogonUserName(), "ERROR");
  EXPECT_EQ(SignatureService().Get_DomainName(), "ERROR");
  EXPECT_THROW(SignatureService().Get_ComputerName(), Failure);
  EXPECT_TRUE(logs().empty());
  failingCommand();
  EXPECT_EQ(globals().ErrorStack[0]->ErrLogonID, "");
}

TEST_F(StartUp, ASitesActionsStandBeforeTheLibrarys) {
  std::string text = "<?xml version=\"1.0\"?>\r\n<Errors>\r\n";
  for (const auto& [number, answer] :
       {std::pair{"42", "errResume"}, {"43", "5002"}, {"8021", "errResumeNext"}})
    text += std::string(" <Error>\r\n  <ErrorNumber>") + number +
            "</ErrorNumber>\r\n  <ErrorModule>Generic</ErrorModule>\r\n"
            "  <ErrorProcedure>Generic</ErrorProcedure>\r\n  <ErrorAction>" +
            answer + "</ErrorAction>\r\n </Error>\r\n";
  writeActions(text + "</Errors>\r\n");
  for (const auto& [number, course] :
       {std::pair{42, "xx."}, {43, "x."}, {8021, "x."}, {8018, "x8018"}, {44, "x44"}, {364, "x."}}) {
    globals().emptyErrorStack();
    std::string ran;
    const auto step = [&ran, number = number] {
      ran += 'x';
      if (ran == "x") throw Failure(number, "", "broken");
    };
    try {
      Procedure procedure{"M", "p"};
      procedure.run([&] {
        procedure.statement(step);
        ran += '.';
      });
    } catch (const Failure& failure) {
      ran += std::to_string(failure.Number);
    }
    EXPECT_EQ(ran, course);
  }
}

TEST_F(StartUp, AnUnreadableSiteFileCostsOnlyItself) {
  for (const bool refused : {true, false}) {
    begin({});
    writeActions(refused ? "<Errors>\n</Errors>\n" : "\n\n\n\n\n\n\n\n\n");
    if (refused) world_->Faults.FileRead = {13, simulator::always()};
    EXPECT_EQ(globals().ErrorActions.size(), 12U);
    ASSERT_TRUE(globals().ErrorStack[0]);
    EXPECT_EQ(globals().ErrorStack[0]->ErrorNumber, refused ? 70 : 9);
    EXPECT_EQ(logs().size(), 1U);
  }
}

TEST_F(StartUp, TheLogOfACommandIsRewrittenWithEachOfItsFailures) {
  globals();
  failingCommand();
  const std::string first = "2026-03-02_09-00-00 ErrorLog.XML";
  ASSERT_EQ(logs().size(), 1U);
  EXPECT_EQ(count(logs().at(first), "\r\n <Error>\r\n"), 1U);
  EXPECT_EQ(count(logs().at(first), "\r\n"), 18U);
  EXPECT_EQ(count(logs().at(first), "HY_Wristlog Version " + globals().VersionFull), 1U);

  world_->advance(std::chrono::seconds{9});
  failingCommand();
  EXPECT_EQ(logs().size(), 1U) << "the echo of the first command's failure";

  world_->advance(std::chrono::seconds{10});
  Procedure command{"M", "longer", ProcedureKind::Command};
  command.run([&] {
    for (int i = 0; i < 2; ++i) {
      command.statement([] { throw Failure(25000, "", "to be logged"); });
      world_->advance(std::chrono::seconds{3});
    }
  });
  ASSERT_EQ(logs().size(), 2U);
  EXPECT_EQ(count(logs().at("2026-03-02_09-00-19 ErrorLog.XML"), "\r\n <Error>\r\n"), 2U);
}

TEST_F(StartUp, ALogThatCannotBeWrittenIsToldInABox) {
  const struct {
    std::int32_t Error, Fault;
    bool Folder;
  } cases[] = {{13, 70, false}, {5, 75, false}, {28, 61, false}, {30, 70, true}, {5, 75, true}};
  for (const auto& c : cases) {
    begin({});
    const auto reader = std::make_shared<failing::BoxReader>();
    world_->setHost(reader);
    globals();
    (c.Folder ? world_->Faults.MakeFolder : world_->Faults.FileWrite) = {c.Error, simulator::always()};
    failingCommand();
    ASSERT_EQ(reader->Boxes.size(), 1U) << c.Error;
    const std::string box = "fncErrorHandle|Error Handling Problem, Err Number: " + std::to_string(c.Fault);
    EXPECT_EQ(reader->Boxes[0].substr(0, box.size() + 1), box + " ");
    EXPECT_EQ(globals().ErrorStack.at(0)->ErrorNumber, 42);
    EXPECT_TRUE(logs().empty());
  }
}

TEST_F(StartUp, ASubjectHasAnAgeAndOneLetterOfGender) {
  Class_Subject subject;
  for (const auto& [born, age] : {std::pair{dateSerial(2000, 3, 2), "26"},
                                  {dateSerial(2000, 3, 3), "25"},
                                  {0, "0"},
                                  {dateSerial(2027, 3, 2), "-1"}}) {
    subject.Let_DOB(born);
    EXPECT_EQ(subject.Get_Age(), age);
  }
  subject.Let_DOB(1e9);
  EXPECT_THROW(subject.Get_Age(), Failure);
  EXPECT_EQ(globals().ErrorStack.back()->ErrorModule, "clsSubject");
  for (const auto& [value, gender] : {std::pair{"female", "F"}, {"", ""}}) {
    subject.Let_Gender(value);
    EXPECT_EQ(subject.Get_Gender(), gender);
  }
}

}  // namespace
}  // namespace hy_wristlog
