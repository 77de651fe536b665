#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <functional>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif
#include <pwd.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/linux_platform.h"
#include "platform/linux/locale_patterns.h"
#include "support/surroundings.h"

namespace hy_wristlog::platform {
namespace {

std::int32_t errorOf(const std::function<void()>& action) try {
  action();
  return 0;
} catch (const SystemError& error) {
  return error.Number;
}

TEST(Folders, FollowTheUsersSettings) {
  const TemporaryFolder home;
  const std::string at = home.path();
  const auto world = makeLinuxPlatform();
  Environment& environment = world->environment();
  const Variable homeVariable{"HOME", at + "/"};
  for (const auto& config : {std::optional<std::string>{}, std::optional<std::string>{"relative"}}) {
    const Variable variable{"XDG_CONFIG_HOME", config};
    EXPECT_EQ(environment.specialFolder(26) + environment.specialFolder(5), at + "/.config" + at);
  }
  const Variable config{"XDG_CONFIG_HOME", at + "/conf"};
  EXPECT_EQ(environment.specialFolder(26), at + "/conf");
  const std::pair<const char*, std::string> documents[] = {
      {"# XDG_DOCUMENTS_DIR=\"/no\"\nXDG_DOCUMENTS_DIR=\"$HOME/Papers\"\n", at + "/Papers"},
      {"  XDG_DOCUMENTS_DIR=\"/srv/my \\\"papers\\\"\"", "/srv/my \"papers\""},
      {"XDG_DOCUMENTS_DIR=\"$HOME/\"\n", at},
      {"XDG_DOCUMENTS_DIR=\"relative\"\n", at},
      {"XDG_DOCUMENTS_DIR=\"/cut", "/cut"}};
  for (const auto& [file, folder] : documents) {
    home.put("conf/user-dirs.dirs", file);
    EXPECT_EQ(environment.specialFolder(5), folder) << file;
  }
  const std::string common = environment.specialFolder(35);
  const bool mayBeShared = ::access("/var/lib", W_OK) == 0 || ::access("/var/lib/HY_Wristlog", F_OK) == 0;
  EXPECT_TRUE(common.ends_with("/state") || (mayBeShared && common == "/var/lib")) << common;
  EXPECT_EQ(environment.specialFolder(27), "");
}

TEST(Environment, KnowsTheMachineAndItsWords) {
  const auto world = makeLinuxPlatform();
  Environment& environment = world->environment();
  EXPECT_EQ(environment.libraryFolder(), std::filesystem::read_symlink("/proc/self/exe").parent_path());
  EXPECT_FALSE(environment.userName().empty() || environment.computerName().empty());
  const std::string person = ::getpwuid(::geteuid())->pw_gecos;
  EXPECT_EQ(environment.fullName(), person.substr(0, person.find(',')));
  EXPECT_FALSE(environment.domainName().empty() || environment.domainName() == "(none)");
  EXPECT_EQ(environment.errorText(EACCES) + environment.errorText(259) + environment.errorText(-5),
            "Permission denied");
}

TEST(Environment, LocalClockFollowsTheZone) {
  const auto world = makeLinuxPlatform();
  Clock& clock = world->clock();
  for (const auto& [zone, minutes] : {std::pair{"<+0530>-5:30", 330}, {"<-03>3", -180}}) {
    const Variable tz{"TZ", zone};
    EXPECT_NEAR((dateFromCivil(clock.local()) - dateFromCivil(clock.utc())) * 1440, minutes, 0.1);
  }
  EXPECT_NEAR(dateFromCivil(clock.utc()),
              UnixEpochDate + static_cast<double>(std::time(nullptr)) / SecondsPerDay, 0.001);
  const double before = clock.timer();
  clock.sleep(std::chrono::milliseconds{5});
  clock.sleep(std::chrono::milliseconds{-5});
  clock.idle();
  EXPECT_GE(clock.timer() - before, 0.006);
}

TEST(Locale, FormatsBecomePatterns) {
  // clang-format off
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"%a %d %b %Y %T %Z", "ddd dd MMM yyyy", "Hh:Nn:Ss"}, {"%I:%M:%S %p", "", "h:Nn:Ss tt"},
      {"%a %-d. %B %Y, %H:%M", "ddd d. MMMM yyyy", "Hh:Nn"}, {"%Y年%m月%d日 %H時%M分%S秒", "yyyy年MM月dd日", "Hh時Nn分Ss秒"},
      {"%A %e de %B de %Y, %R", "dddd d \\d\\e MMMM \\d\\e yyyy", "Hh:Nn"}, {"%Ey/%Om/%02d", "yy/MM/dd", ""},
      {"%d\u00A0%m %H", "dd MM", "Hh"}, {"%-", "", ""}, {"%q%%100", "", ""}};
  // clang-format on
  for (const auto& [format, date, time] : cases) {
    EXPECT_EQ(datePatternFromStrftime(format), date) << format;
    EXPECT_EQ(timePatternFromStrftime(format), time) << format;
  }
}

std::string localeItems(const std::optional<std::string>& name) {
  const Variable all{"LC_ALL", name};
  const auto world = makeLinuxPlatform();
  const auto item = [&](LocaleItem item) { return world->environment().localeInfo(item) + "|"; };
  return item(LocaleItem::DecimalSeparator) + item(LocaleItem::ShortDate) + item(LocaleItem::LongDate) +
         item(LocaleItem::Time);
}

TEST(Locale, IsTheUsersAndNotTheProgramsOwn) {
#ifdef __SANITIZE_ADDRESS__
  // The C library loses its copy of LOCPATH in every newlocale.
  const __lsan::ScopedDisabler noLeakCheck;
#endif
  for (const char* name : {"C", "POSIX", "C.UTF-8", "xx_XX.nonsense", "../../etc"})
    EXPECT_EQ(localeItems(name), "||||") << name;

  const TemporaryFolder locales;
  for (const std::string source : {"de_DE -f ISO-8859-1 ", "en_US -f UTF-8 ", "ja_JP -f EUC-JP "}) {
    const std::string command =
        "localedef -i " + source + (locales / source.substr(0, 5)) + " >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0) GTEST_SKIP() << "locale sources are not installed";
  }
  const Variable path{"LOCPATH", locales.path()};
  EXPECT_EQ(localeItems("de_DE"), ",|dd.MM.yyyy|ddd dd MMM yyyy|Hh:Nn:Ss|");
  EXPECT_EQ(localeItems("en_US"), ".|MM/dd/yyyy|ddd dd MMM yyyy|h:Nn:Ss tt|");
  EXPECT_EQ(localeItems("ja_JP"), ".|yyyy年MM月dd日|yyyy年MM月dd日|Hh時Nn分Ss秒|");
  const Variable language{"LANG", "de_DE"}, times{"LC_TIME", "en_US"};
  EXPECT_EQ(localeItems(std::nullopt), ",|MM/dd/yyyy|ddd dd MMM yyyy|h:Nn:Ss tt|");
}

struct FilesTest : testing::Test {
  const TemporaryFolder folder_;
  const std::shared_ptr<Platform> world_ = makeLinuxPlatform();
  Files& files_ = world_->files();
};

TEST_F(FilesTest, AreReplacedWholeAndFollowNoTraps) {
  const std::string path = folder_ / "file";
  std::string all;
  for (int i = 0; i < 300000; ++i) all += static_cast<char>(i);
  for (const std::string& content : {all, std::string{}, std::string{"a\r\nb"}}) {
    files_.write(path, content);
    EXPECT_EQ(files_.read(path), content);
  }
  ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
  files_.write(path, "kept mode");
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms{0640});

  folder_.put("target", "unharmed");
  folder_.put(".hidden", "");
  folder_.link("link", "target");
  folder_.link("dangling", "nowhere");
  folder_.link("loop", "loop");
  std::filesystem::create_directory(folder_ / "folder");
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  ASSERT_EQ(::chmod(folder_.put("read only", "unharmed").c_str(), 0444), 0);
  const auto state = [&](const std::string& name) {
    const FileState state = files_.state(name);
    return std::string{"-fdo"[static_cast<int>(state.Kind)]} + (state.ReadOnly ? "r" : "") +
           (state.Hidden ? "h" : "");
  };
  const std::tuple<std::string, std::int32_t, std::int32_t, const char*> cases[] = {
      {"link", ELOOP, 0, "f"},          {"dangling", ELOOP, ENOENT, "o"},
      {"loop", ELOOP, ELOOP, "o"},      {"folder", EISDIR, EISDIR, "d"},
      {"folder/", EISDIR, EISDIR, "d"}, {"pipe", EINVAL, EINVAL, "o"},
      {"read only", EACCES, 0, "fr"},   {".hidden", 0, 0, "fh"},
      {"no/file", ENOENT, ENOENT, "-"}, {"file/below", ENOTDIR, ENOTDIR, "-"}};
  for (const auto& [name, writing, reading, kind] : cases) {
    const std::string place = folder_ / name;
    EXPECT_EQ(state(place), kind) << name;
    EXPECT_EQ(errorOf([&] { files_.write(place, "x"); }), writing) << name;
    EXPECT_EQ(errorOf([&] { files_.read(place); }), reading) << name;
  }
  EXPECT_EQ(errorOf([&] { files_.write("", ""); }), ENOENT);
  EXPECT_EQ(errorOf([&] { files_.write(std::string("a\0b", 3), ""); }), EINVAL);
  EXPECT_EQ(errorOf([&] { files_.write(folder_ / std::string(300, 'x'), ""); }), ENAMETOOLONG);
  EXPECT_EQ(contentOf(folder_ / "target") + contentOf(folder_ / "read only"), "unharmedunharmed");
  EXPECT_TRUE(files_.remove(path));
  EXPECT_FALSE(files_.remove(path));
  EXPECT_EQ(errorOf([&] { files_.remove(folder_ / "folder"); }), EISDIR);
}

TEST_F(FilesTest, AFailedWriteLeavesTheFormerFile) {
  const std::string path = folder_.put("file", "former");
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
  const rlimit tight{100000, limit.rlim_max};
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tight), 0);
  EXPECT_EQ(errorOf([&] { files_.write(path, std::string(1000000, 'x')); }), EFBIG);
  ::setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(contentOf(path), "former");
  const std::filesystem::directory_iterator entries{folder_.path()};
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1) << "a temporary file was left behind";
}

TEST_F(FilesTest, FoldersForEveryoneAreOpenAndFollowNoLinks) {
  const std::string shared = folder_ / "shared", own = folder_ / "own";
  const mode_t mask = ::umask(0077);
  files_.makeFolder(shared, true);
  files_.makeFolder(own, false);
  files_.makeFolder(own, true);
  ::umask(0);
  files_.makeFolder(folder_ / "open mask", false);
  files_.write(folder_ / "open mask/file", "");
  ::umask(mask);
  EXPECT_EQ(std::filesystem::status(folder_ / "open mask").permissions(), std::filesystem::perms{0755});
  EXPECT_EQ(std::filesystem::status(folder_ / "open mask/file").permissions(), std::filesystem::perms{0644});
  EXPECT_EQ(std::filesystem::status(shared).permissions(), std::filesystem::perms{01777});
  EXPECT_EQ(std::filesystem::status(own).permissions(), std::filesystem::perms{0700});
  folder_.put("own/secret", "secret");
  folder_.link("shared/trap", folder_ / "own/secret");
  EXPECT_EQ(errorOf([&] { files_.read(shared + "/trap"); }), ELOOP);
  EXPECT_EQ(errorOf([&] { files_.write(shared + "/trap", "x"); }), ELOOP);
  EXPECT_EQ(files_.state(shared + "/trap").Kind, FileKind::Other);
  folder_.link("shared/below", own);
  EXPECT_EQ(errorOf([&] { files_.write(shared + "/below/secret", "x"); }), ELOOP);
  EXPECT_EQ(errorOf([&] { files_.remove(shared + "/below/secret"); }), ELOOP);
  EXPECT_EQ(errorOf([&] { files_.makeFolder(shared + "/below/new", false); }), ELOOP);
  EXPECT_EQ(errorOf([&] { files_.makeFolder(shared + "/below", true); }), ELOOP);
  EXPECT_EQ(files_.read(own + "/secret"), "secret");
  ASSERT_EQ(::chmod(shared.c_str(), 0777), 0);
  EXPECT_EQ(files_.read(shared + "/trap"), "secret") << "a folder whose owner guards no entries";
  ASSERT_EQ(::chmod(shared.c_str(), 01777), 0);
  EXPECT_EQ(errorOf([&] { files_.makeFolder(own + "/secret", true); }), EEXIST);
  EXPECT_EQ(errorOf([&] { files_.makeFolder(folder_ / "no/such", true); }), ENOENT);
}

}  // namespace
}  // namespace hy_wristlog::platform
