#include "start_up/start_up.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "hy_wristlog/Class_Subject.h"
#include "signature/Class_Signature.h"
#include "simulator/simulated_world.h"
#include "start_up/error_files.h"
#include "support/failures.h"
#include "support/in_world.h"
#include "support/noting_host.h"
#include "support/surroundings.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {
namespace {

namespace fs = std::filesystem;
using platform::LocaleItem;
using simulator::always;

const char* const SiteFile = "/Library/ErrorActions.XML";

/// A world in which nobody can be named once `Nameless` is set.
class World : public simulator::SimulatedWorld, private platform::Environment {
 public:
  using SimulatedWorld::SimulatedWorld;
  bool Nameless = false;
  Environment& environment() override { return Nameless ? *this : inner(); }

 private:
  Environment& inner() { return SimulatedWorld::environment(); }
  std::string specialFolder(std::int32_t code) override { return inner().specialFolder(code); }
  std::string libraryFolder() override { return inner().libraryFolder(); }
  std::string localeInfo(LocaleItem item) override { return inner().localeInfo(item); }
  std::optional<std::string> variable(std::string_view name) override { return inner().variable(name); }
  std::string userName() override { throw platform::SystemError{2}; }
  std::string fullName() override { throw platform::SystemError{2}; }
  std::string domainName() override { throw platform::SystemError{5}; }
  std::string computerName() override { throw platform::SystemError{5}; }
  std::string errorText(std::int32_t number) override { return inner().errorText(number); }
};

struct Started : InWorld<World> {
  using InWorld::InWorld;
  /// A command that fails, as a host would meet it.
  static void failingCommand(int times = 1) {
    Procedure procedure{"M", "command", ProcedureKind::Command};
    procedure.run([&] {
      for (; times > 1; --times) procedure.statement([] { throw Failure(25000, "", "to be logged"); });
      throw Failure(42, "", "broken");
    });
  }
  /// Each log's name and number of failures.
  std::string logs() {
    std::map<std::string, std::string> found;
    const fs::path folder = (*this)->rootFolder() + "/CommonData/HY_Wristlog/Errors";
    if (fs::exists(folder))
      for (const auto& entry : fs::directory_iterator(folder))
        found[entry.path().filename()] = contentOf(entry.path());
    std::string all;
    for (const auto& [name, text] : found)
      all += name + " " + std::to_string((std::ranges::count(text, '\n') - 3) / 15) + "; ";
    return all;
  }
  void (*KeepsStartUpInTheProgram)() = &subMain;
};

TEST(StartUp, TheFirstLookFillsTheGlobalState) {
  const std::map<LocaleItem, std::string> german{{LocaleItem::ShortDate, "dd.MM.yyyy"},
                                                 {LocaleItem::LongDate, "d' de 'MMMM"},
                                                 {LocaleItem::Time, "h:mm tt"},
                                                 {LocaleItem::DecimalSeparator, ","}};
  for (const bool plain : {true, false}) {
    simulator::WorldOptions options;
    options.Locale = plain ? decltype(german){} : german;
    const Started world{options};
    const GlobalState& state = globals();
    EXPECT_EQ(state.ShortDateTimeFormat, plain ? "M/d/yyyy Hh:Nn:Ss" : "dd.MM.yyyy h:mm AMPM");
    EXPECT_EQ(state.LongDateTimeFormat, plain ? "dddd, MMMM dd, yyyy Hh:Nn:Ss" : "d de MMMM h:mm AMPM");
    EXPECT_EQ(state.DecimalSeparator, plain ? '.' : ',');
    EXPECT_EQ(state.UserDataFolder, world->rootFolder() + "/AppData/HY_Wristlog");
    EXPECT_EQ(state.CommonDataFolder, world->rootFolder() + "/CommonData/HY_Wristlog");
    EXPECT_EQ(state.DocumentsFolder, world->rootFolder() + "/Documents");
    EXPECT_TRUE(state.ErrorStack.size() == 1 && !state.ErrorStack[0]);
    EXPECT_EQ(state.ErrorActions.size(), 12U);
    EXPECT_EQ(SignatureService().Get_LogonUserName() + SignatureService().Get_DomainName(), "testerLAB");
  }
  Started nameless;
  nameless->Nameless = true;
  EXPECT_EQ(globals().ErrorActions.size(), 12U);
  EXPECT_EQ(SignatureService().Get_LogonUserName() + SignatureService().Get_DomainName(), "ERRORERROR");
  const std::tuple<std::string (*)(), std::int32_t, std::string> questions[] = {
      {&Class_Signature::fncGetFullName, 2, "Unable to retrieve current user name (2)"},
      {&Class_Signature::fncGetDomainController, 5, "Unable to retrieve domain name (5)"},
      {&Class_Signature::fncGetCurrentComputer, 5, "Unable to retrieve current computer name (5)"}};
  for (const auto& [ask, number, text] : questions)
    EXPECT_EQ(failureOf([&] { ask(); }), std::pair(number, text));
  EXPECT_EQ(nameless.logs(), "");
  Started::failingCommand();
  EXPECT_EQ(globals().ErrorStack[0]->ErrLogonID, "");
}

TEST(StartUp, ASitesActionsStandBeforeTheLibrarys) {
  Started world;
  const std::string anywhere =
      "  <ErrorModule>Generic</ErrorModule>\r\n  <ErrorProcedure>Generic</ErrorProcedure>\r\n";
  std::string text = "<?xml version=\"1.0\"?>\r\n<Errors>\r\n";
  for (const auto& [number, answer] : {std::pair{"42", "errResume"}, {"43", "5002"}})
    text += std::string(" <Error>\r\n  <ErrorNumber>") + number + "</ErrorNumber>\r\n" + anywhere +
            "  <ErrorAction>" + answer + "</ErrorAction>\r\n </Error>\r\n";
  putFile(world->rootFolder() + SiteFile, text + "</Errors>\r\n");
  const std::pair<std::int32_t, const char*> cases[] = {
      {42, "xx."}, {43, "x."}, {8018, "x8018"}, {44, "x44"}, {364, "x."}};
  for (const auto& [number, course] : cases) {
    globals().emptyErrorStack();
    std::string ran;
    const auto step = [&ran, number = number] {
      ran += 'x';
      if (ran == "x") throw Failure(number, "", "broken");
    };
    Procedure procedure{"M", "p"};
    const auto raised = numberOf([&] { procedure.run([&] { procedure.statement(step), ran += '.'; }); });
    EXPECT_EQ(ran + (raised == 0 ? "" : std::to_string(raised)), course);
  }
}

TEST(StartUp, AnUnreadableSiteFileCostsOnlyItself) {
  for (const bool refused : {true, false}) {
    Started world;
    putFile(world->rootFolder() + SiteFile, refused ? "<Errors>\n</Errors>\n" : "\n\n\n\n\n\n\n\n\n");
    if (refused) world->Faults.FileRead = {13, always()};
    EXPECT_EQ(globals().ErrorActions.size(), 12U);
    EXPECT_FALSE(globals().ErrorStack.at(0).has_value());
    EXPECT_EQ(world.logs(), refused ? "2026-03-02_09-00-00 ErrorLog.XML 2; " : "");
  }
}

TEST(StartUp, TheLogOfACommandIsRewrittenWithEachOfItsFailures) {
  Started world;
  Started::failingCommand();
  world->advance(std::chrono::seconds{9});
  Started::failingCommand();
  const std::string first = "2026-03-02_09-00-00 ErrorLog.XML 1; ";
  EXPECT_EQ(world.logs(), first) << "the echo of the first command's failure";
  world->advance(std::chrono::seconds{10});
  Started::failingCommand(2);
  const std::string second = "2026-03-02_09-00-19 ErrorLog.XML 2; ";
  EXPECT_EQ(world.logs(), first + second);
  globals().emptyErrorStack();
  Started::failingCommand(2);
  EXPECT_EQ(world.logs(), first + "2026-03-02_09-00-19 ErrorLog (2).XML 2; " + second);
}

TEST(StartUp, ALogFollowsNoLinkInTheSharedFolder) {
  Started world;
  const std::string shared = world->rootFolder() + "/CommonData/HY_Wristlog";
  Tools().fncMakeDirectorys(shared + "/");
  fs::create_directory(world->rootFolder() + "/elsewhere");
  fs::create_directory_symlink(world->rootFolder() + "/elsewhere", shared + "/Errors");
  Started::failingCommand();
  EXPECT_TRUE(fs::is_empty(world->rootFolder() + "/elsewhere"));
}

TEST(StartUp, ALogThatCannotBeWrittenIsToldInABox) {
  for (const auto& [error, told, folder] : {std::tuple{28, "61 ", false}, {30, "70 ", true}}) {
    Started world;
    const auto reader = std::make_shared<NotingHost>();
    world->setHost(reader);
    globals();
    (folder ? world->Faults.MakeFolder : world->Faults.FileWrite) = {error, always()};
    Started::failingCommand();
    EXPECT_TRUE(reader->Shown.starts_with(
        std::string("[fncErrorHandle] Error Handling Problem, Err Number: ") + told));
    EXPECT_EQ(reader->Shown.rfind("[fncErrorHandle]"), 0U) << "once";
    EXPECT_EQ(globals().ErrorStack.at(0)->ErrorNumber, 42);
  }
}

TEST(StartUp, TheUsersKeyPairIsMadeOrMissedWithoutHarm) {
  for (const bool nameless : {false, true}) {
    Started world;
    world->Nameless = nameless;
    globals();
    EXPECT_EQ(world.logs(), "");
    const char* const container = nameless ? "Somnaris_5.0_ERROR_ERROR" : "Somnaris_5.0_tester_LAB";
    const std::string file = globals().UserDataFolder + "/Keys/" + container + ".pem";
    EXPECT_EQ(world->cryptography().openContainer(file)->keyPairState(), platform::KeyPairState::Usable);
  }
  Started world;
  world->Faults.Cryptography = {30, simulator::always()};
  EXPECT_FALSE(globals().ErrorStack.at(0).has_value());
  EXPECT_EQ(world.logs(), "");
}

TEST(StartUp, ASubjectHasAnAge) {
  const Started world;
  Class_Subject subject;
  for (const auto& [born, age] : {std::pair{dateSerial(2000, 3, 2), "26"}, {0.0, "0"}}) {
    subject.Let_DOB(born);
    EXPECT_EQ(subject.Get_Age(), age);
  }
  subject.Let_DOB(1e9);
  EXPECT_THROW(subject.Get_Age(), Failure);
}

}  // namespace
}  // namespace hy_wristlog
