#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "fake_world.h"
#include "tools/Class_Tools.h"
#include "tools/paths.h"

namespace hy_wristlog {
namespace {

namespace fs = std::filesystem;

/// The tools on the machine itself, in a folder of their own.
class MachineTest : public testing::Test {
 protected:
  MachineTest() {
    std::string pattern = (fs::temp_directory_path() / "wristlog-tools-XXXXXX").string();
    root_ = mkdtemp(pattern.data());
  }
  ~MachineTest() override { fs::remove_all(root_); }

  std::string at(std::string_view path) const { return joinPath(root_, path); }

  std::string root_;
};

TEST_F(MachineTest, FoldersAndFiles) {
  EXPECT_TRUE(Tools().fncMakeDirectorys(at("all\\of us\\f.txt")));
  for (const char* folder : {"all", "all/of us"})
    EXPECT_EQ(fs::status(at(folder)).permissions(), fs::perms::all | fs::perms::sticky_bit) << folder;
  EXPECT_TRUE(Tools().fncDirDirectory(at("all")));

  const std::vector<std::string> lines = {"one line", "another line"};
  EXPECT_TRUE(Tools().fncSaveFile(at("all/f.txt"), lines));
  EXPECT_TRUE(Tools().fncFilePathExists(at("all\\f.txt")));
  const auto read = Tools().fncReadFile2Array(at("all/f.txt"));
  EXPECT_EQ(std::vector(read.begin(), read.end()), lines);
  EXPECT_EQ(Tools().fncCheckFileForReadWrite(at("all/f.txt")), "FileExistsFullAccess");
  EXPECT_TRUE(Tools().fncCheckPathforReadWrite(at("all/new/")));
  EXPECT_TRUE(fs::is_empty(at("all/new")));

  EXPECT_EQ(fake::failureOf([&] { Tools().fncReadFile2Array(at("no")); }).first, fault::FileNotFound);
  EXPECT_EQ(fake::failureOf([&] { Tools().fncSaveFile(at("no/f"), lines); }).first, fault::PathNotFound);
  EXPECT_EQ(fake::failureOf([&] { Tools().fncSaveFile(at("all"), lines); }).first, fault::PathFileAccess);
  EXPECT_EQ(fake::failureOf([&] { Tools().fncMakeDirectorys(at("all/f.txt/x")); }).first,
            fault::PathNotFound);
  EXPECT_FALSE(Tools().fncCheckPathforReadWrite(at("all/f.txt/x")));
}

TEST_F(MachineTest, IniFiles) {
  const std::string file = at("Settings.INI");
  EXPECT_EQ(Tools().fncINIread("Communications", "COMport", "none", file), "none");
  EXPECT_TRUE(Tools().fncINIwrite("Communications", "COMport", "33", file));
  EXPECT_EQ(Tools().fncINIread("communications", "comport", "none", file), "33");
  EXPECT_FALSE(Tools().fncINIwrite("S", "k", "v", at("no/Settings.INI")));
}

TEST_F(MachineTest, Identifiers) {
  EXPECT_EQ(Tools().fncGenerateMD5hash(""), "D41D8CD98F00B204E9800998ECF8427E");
  EXPECT_EQ(Tools().fncGenerateMD5hash("abc"), "900150983CD24FB0D6963F7D28E17F72");
  const std::string guid = Tools().fncCreateGUID();
  EXPECT_EQ(guid.size(), 32U);
  EXPECT_EQ(guid.find_first_not_of("0123456789ABCDEF"), std::string::npos);
  EXPECT_NE(guid, Tools().fncCreateGUID());
}

}  // namespace
}  // namespace hy_wristlog
