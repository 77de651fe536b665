#include <array>
#include <cerrno>
#include <filesystem>
#include <sstream>

#include "support/surroundings.h"
#include "tools/paths.h"
#include "tools/tools_test.h"

namespace hy_wristlog {
namespace {

namespace fs = std::filesystem;
using simulator::always, simulator::once;

/// Works in real files under the world's own folder.
struct FilesTest : ToolsTest {
  std::string at(const std::string& name) const { return world_->rootFolder() + "/" + name; }
  std::string put(const std::string& name, std::string_view content) const {
    return putFile(at(name), content);
  }
};

TEST_F(FilesTest, PathsAreTakenApart) {
  // Path; name, extension, folder; folder closed and open.
  // clang-format off
  const std::array<const char*, 6> cases[] = {
      {"C:\\a\\b.txt", "b.txt", ".txt", "C:\\a\\", "C:\\a\\", "C:\\a"},
      {"C:\\a", "a", "", "C:\\a", "C:\\a\\", "C:\\a"},
      {"C:\\a.b\\", "a.b\\", "", "C:\\a.b\\", "C:\\a.b\\", "C:\\a.b"},
      {"/x.y/b.c.txt", "b.c.txt", ".txt", "/x.y/", "/x.y/", "/x.y"},
      {"/a\\b.txt", "b.txt", ".txt", "/a\\", "/a\\", "/a"}, {"/a:b.txt", "a:b.txt", ".txt", "/", "/", ""},
      {"", "", "", "", "", ""}};
  // clang-format on
  for (const auto& [path, name, extension, folder, closed, open] : cases) {
    EXPECT_EQ(Tools().fncRemovePath(path), name) << path;
    EXPECT_EQ(Tools().fncReturnFileExtension(path), extension) << path;
    EXPECT_EQ(Tools().fncRemoveFileName(path), folder) << path;
    EXPECT_EQ(Tools().fncRemoveFileName(path, true), closed) << path;
    EXPECT_EQ(Tools().fncRemoveFileName(path, false), open) << path;
  }
  EXPECT_EQ(joinPath("/a", "b") + joinPath("C:\\a", "b") + joinPath("/a\\", "b") + joinPath("", "b"),
            "/a/bC:\\a\\b/a\\bb");
}

TEST_F(FilesTest, LinesGoThereAndBack) {
  using Lines = std::vector<std::string>;
  const std::string file = at("f.txt");
  EXPECT_TRUE(Tools().fncSaveFile(world_->rootFolder() + "\\f.txt", Lines{"first", "", "3rd"}));
  EXPECT_EQ(contentOf(file), "first\r\n\r\n3rd\r\n");
  const std::pair<const char*, Lines> cases[] = {{"first\r\n\r\nthird\r\n", {"first", "", "third"}},
                                                 {"one\ntwo\rthree", {"one", "two", "three"}},
                                                 {"ab", {"ab"}}};
  for (const auto& [content, lines] : cases) {
    put("f.txt", content);
    const auto read = Tools().fncReadFile2Array(file);
    EXPECT_EQ(std::vector(read.begin(), read.end()), lines) << content;
    EXPECT_EQ(read.LBound(), 1);
  }
  for (const char* mostlyEmpty : {"", "a", "\r\n\r\n\r\n", "a\n\n\n"}) {
    put("f.txt", mostlyEmpty);
    EXPECT_EQ(numberOf([&] { Tools().fncReadFile2Array(file); }), fault::Subscript);
  }
}

TEST_F(FilesTest, SystemErrorsBecomeTheUsualFaults) {
  put("f", "x");
  const std::string& root = world_->rootFolder();
  const std::tuple<std::string, int, std::int32_t> cases[] = {
      {at("none"), ENOENT, fault::FileNotFound},  {at("none/f"), ENOENT, fault::PathNotFound},
      {"/none", ENOENT, fault::FileNotFound},     {"none", ENOENT, fault::FileNotFound},
      {at("f/g"), ENOTDIR, fault::PathNotFound},  {at("f"), EPERM, fault::PermissionDenied},
      {at("f"), EACCES, fault::PermissionDenied}, {at("new"), EROFS, fault::PermissionDenied},
      {root, EACCES, fault::PathFileAccess},      {root, EISDIR, fault::PathFileAccess},
      {at("f"), ENOSPC, fault::DiskFull},         {at("f"), EIO, fault::PathFileAccess},
      {at("f"), EBUSY, fault::PermissionDenied},  {at("f"), ELOOP, fault::PathFileAccess}};
  for (const auto& [path, error, expected] : cases) {
    world_->Faults.FileRead = world_->Faults.FileWrite = {error, always()};
    const auto [number, words] = failureOf([&, &p = path] { Tools().fncReadFile2Array(p); });
    EXPECT_EQ(number, expected) << path << ' ' << error;
    const std::string detail = path + " (" +
                               (error == EBUSY   ? "another program keeps its folder locked"
                                : error == ELOOP ? "a symbolic link that is not followed here"
                                                 : world_->environment().errorText(error)) +
                               ")";
    EXPECT_NE(words.find(detail), std::string::npos) << words;
    EXPECT_EQ(numberOf([&, &p = path] { Tools().fncSaveFile(p, {}); }), expected) << path;
  }
}

TEST_F(FilesTest, WhatIsThere) {
  for (const char* name : {"f.txt", "r", ".h", ".rh"}) put(name, "x");
  for (const char* name : {"r", ".rh"}) fs::permissions(at(name), fs::perms::owner_read);
  fs::create_directory(at("folder"));
  // Name after the folder's, is a file, is a folder's, access.
  std::istringstream cases(
      "/f.txt 1 1 ExistsFullAccess \\f.txt 1 1 ExistsFullAccess /r 1 1 ExistsReadOnly /.h 1 1 ExistsHidden "
      "/.rh 1 1 ExistsReadOnlyAndHidden /no.txt 0 1 DoesNotExist /no 0 0 DoesNotExist "
      "/no/f.txt 0 0 DoesNotExist /folder 0 1 DoesNotExist /folder/ 0 1 DoesNotExist");
  bool file = false, folder = false;
  for (std::string name, access; cases >> name >> file >> folder >> access;) {
    const std::string path = world_->rootFolder() + name;
    EXPECT_EQ(Tools().fncFilePathExists(path), file) << path;
    EXPECT_EQ(Tools().fncDirDirectory(path), folder) << path;
    EXPECT_EQ(Tools().fncCheckFileForReadWrite(path), "File" + access) << path;
  }
  EXPECT_TRUE(Tools().fncDirDirectory("/x.txt"));
  world_->Faults.FileRead = {EACCES, always()};
  EXPECT_EQ(numberOf([&] { Tools().fncCheckFileForReadWrite(at("f.txt")); }), fault::PermissionDenied);
  const std::string unspeakable = at(std::string(300, 'x'));
  EXPECT_EQ(numberOf([&] { Tools().fncFilePathExists(unspeakable); }), fault::PathFileAccess);
  EXPECT_EQ(numberOf([&] { Tools().fncDirDirectory(unspeakable); }), fault::PathFileAccess);
}

TEST_F(FilesTest, FoldersAreMadeForEveryoneButNotAtHome) {
  const auto isShared = [&](const std::string& name) {
    return fs::status(at(name)).permissions() == (fs::perms::all | fs::perms::sticky_bit);
  };
  EXPECT_TRUE(Tools().fncMakeDirectorys(at("CommonData\\all\\of us\\f.txt")));
  EXPECT_TRUE(isShared("CommonData/all") && isShared("CommonData/all/of us"));
  fs::remove(at("AppData"));
  EXPECT_TRUE(Tools().fncMakeDirectorys(at("AppData/a/b")) && Tools().fncMakeDirectorys(at("Documents/c/")));
  for (const char* own : {"AppData", "AppData/a", "AppData/a/b", "Documents/c"})
    EXPECT_TRUE(fs::is_directory(at(own)) && !isShared(own)) << own;
  EXPECT_TRUE(Tools().fncMakeDirectorys(at("AppDataOfOthers")) && isShared("AppDataOfOthers"));
  EXPECT_FALSE(Tools().fncMakeDirectorys(put("file", "x")));
  EXPECT_EQ(numberOf([&] { Tools().fncMakeDirectorys(at("file/x")); }), fault::PathNotFound);
  EXPECT_EQ(host_->Shown, "");
  world_->Faults.MakeFolder = {EACCES, once()};
  EXPECT_EQ(numberOf([&] { Tools().fncMakeDirectorys(at("d/")); }), fault::PermissionDenied);
  world_->Faults.ShareFolder = {EPERM, once()};
  EXPECT_TRUE(Tools().fncMakeDirectorys(at("e/f")));
  const std::string words = "] Error: Unable to Add ACL to DACL\r\nHY_Wristlog was unable";
  EXPECT_TRUE(host_->Shown.find(words) < 40 && host_->Shown.find(words) == host_->Shown.rfind(words));
  EXPECT_NE(host_->Shown.find("of a directory named: " + at("e") + "\r\n"), std::string::npos);
}

TEST_F(FilesTest, WritablePathsAreTriedOut) {
  put("file", "");
  const auto writable = [&](const std::string& name) { return Tools().fncCheckPathforReadWrite(at(name)); };
  EXPECT_TRUE(writable("f.txt") && writable("new/deep"));
  EXPECT_TRUE(fs::is_empty(at("new/deep")) && !fs::exists(at("MyTemp.txt")));
  EXPECT_FALSE(writable("file/x") || writable(std::string(300, 'x')));
  world_->Faults.FileWrite = {EACCES, once()};
  EXPECT_FALSE(writable("new/"));
  world_->Faults.MakeFolder = {EACCES, once()};
  EXPECT_FALSE(writable("x"));
}

TEST_F(FilesTest, IniValuesAreRead) {
  const std::string file =
      put("s.ini",
          "\xEF\xBB\xBF[ Top ]\r\nKey = first \n;Key2=no\nplain\n\"Quoted\"='a\"b'\nEmpty=\nEq==x=\nLong=" +
              std::string(4094, 'x') +
              "\u00E9\n  [Other] rest\nkey=\" blank \"\n[top]\nLate=1\nbad]=2\n[open\nafter=3\n");
  const std::tuple<const char*, const char*, std::string> cases[] = {
      {"top", "KEY", "first"},       {"Top", "Key2", "default"},
      {"Top", ";Key2", "default"},   {"Top", "Empty", ""},
      {"Top", "\"quoted\"", "a\"b"}, {"Top", "Eq", "=x="},
      {"Top", "Late", "default"},    {"OTHER", "Key", " blank "},
      {"None", "Key", "default"},    {"Top", "Long", std::string(4094, 'x')}};
  for (const auto& [section, key, value] : cases)
    EXPECT_EQ(Tools().fncINIread(section, key, "default", file), value) << key;
  EXPECT_EQ(Tools().fncINIread("Top", "Key", "default", at("none.ini")), "default");
}

TEST_F(FilesTest, IniFilesKeepWhatTheyHold) {
  const std::string file = put("s.ini", "; hello\n[One]\na=1\nnoise\n\n[Two]\r\nb=2");
  const auto write = [&](const char* section, const char* key, const char* value) {
    return Tools().fncINIwrite(section, key, value, file);
  };
  EXPECT_TRUE(write("one", "A", "10") && write("One", "new", "x y") && write("Two", "c", "") &&
              write("Three", "d", "4"));
  EXPECT_EQ(contentOf(file),
            "; hello\r\n[One]\r\nA=10\r\nnoise\r\nnew=x y\r\n\r\n[Two]\r\nb=2\r\nc=\r\n[Three]\r\nd=4\r\n");
  world_->Faults.FileWrite = {EACCES, always()};
  EXPECT_TRUE(Tools().fncINIdeleteItem("Two", "none", file) && Tools().fncINIdeleteSection("None", file));
  EXPECT_FALSE(write("Two", "c", "9"));
  world_->Faults.FileWrite = {};
  EXPECT_TRUE(Tools().fncINIdeleteItem("two", "B", file) && Tools().fncINIdeleteSection("ONE", file));
  const std::string rest = "; hello\r\n[Two]\r\nc=\r\n[Three]\r\nd=4\r\n";
  EXPECT_EQ(contentOf(file), rest);

  for (const char* bad : {"a\nb", "a\r"})
    EXPECT_FALSE(write(bad, "k", "v") || write("s", bad, "v") || write("s", "k", bad));
  world_->Faults.FileRead = {EACCES, once()};
  EXPECT_FALSE(write("Two", "c", "9"));
  EXPECT_EQ(contentOf(file), rest);
  const std::string wide("[\0S\0]\0", 6);
  EXPECT_FALSE(Tools().fncINIwrite("S", "k", "v", put("wide.ini", wide)));
  EXPECT_EQ(contentOf(at("wide.ini")), wide);
  EXPECT_TRUE(Tools().fncINIwrite("S", "k", "v", at("new.ini")));
  EXPECT_EQ(contentOf(at("new.ini")), "[S]\r\nk=v\r\n");
  EXPECT_FALSE(Tools().fncINIwrite("S", "k", "v", at("none/new.ini")));
}

}  // namespace
}  // namespace hy_wristlog
