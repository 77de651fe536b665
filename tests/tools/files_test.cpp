#include <gtest/gtest.h>

#include "fake_world.h"
#include "tools/Class_Tools.h"
#include "tools/paths.h"

namespace hy_wristlog {
namespace {

class FilesTest : public testing::Test {
 protected:
  FilesTest() { files_.Folders.insert({"/data", "/data/full"}); }

  fake::InWorld world_;
  fake::Files& files_ = world_->TheFiles;
};

TEST_F(FilesTest, PathsAreTakenApart) {
  const struct {
    const char *Path, *Name, *Extension, *Folder, *Closed, *Open;
  } cases[] = {
      {"C:\\a\\b.txt", "b.txt", ".txt", "C:\\a\\", "C:\\a\\", "C:\\a"},
      {"C:\\a", "a", "", "C:\\a", "C:\\a\\", "C:\\a"},
      {"C:\\a.b", "a.b", ".b", "C:\\", "C:\\", "C:"},
      {"C:\\a.b\\", "a.b\\", "", "C:\\a.b\\", "C:\\a.b\\", "C:\\a.b"},
      {"/x.y/b.c.txt", "b.c.txt", ".txt", "/x.y/", "/x.y/", "/x.y"},
      {"/x.y/b", "b", "", "/x.y/b", "/x.y/b/", "/x.y/b"},
      {"/a\\b.txt", "b.txt", ".txt", "/a\\", "/a\\", "/a"},
      {"/a:b.txt", "a:b.txt", ".txt", "/", "/", ""},
      {"C:b.txt", "b.txt", ".txt", "C:", "C:\\", "C:"},
      {"b.txt", "b.txt", ".txt", "", "", ""},
      {"a b.t t", "a b.t t", "", "a b.t t", "a b.t t\\", "a b.t t"},
      {"", "", "", "", "", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Tools().fncRemovePath(c.Path), c.Name) << c.Path;
    EXPECT_EQ(Tools().fncReturnFileExtension(c.Path), c.Extension) << c.Path;
    EXPECT_EQ(Tools().fncRemoveFileName(c.Path), c.Folder) << c.Path;
    EXPECT_EQ(Tools().fncRemoveFileName(c.Path, true), c.Closed) << c.Path;
    EXPECT_EQ(Tools().fncRemoveFileName(c.Path, false), c.Open) << c.Path;
  }
  EXPECT_EQ(joinPath("/a", "b"), "/a/b");
  EXPECT_EQ(joinPath("C:\\a", "b"), "C:\\a\\b");
  EXPECT_EQ(joinPath("/a\\", "b"), "/a\\b");
  EXPECT_EQ(joinPath("", "b"), "b");
}

TEST_F(FilesTest, LinesGoThereAndBack) {
  const std::vector<std::string> lines = {"first", "", "third line"};
  EXPECT_TRUE(Tools().fncSaveFile("/data\\f.txt", lines));
  EXPECT_EQ(files_.Contents["/data/f.txt"], "first\r\n\r\nthird line\r\n");

  const struct {
    const char* Content;
    std::vector<std::string> Lines;
  } cases[] = {{"first\r\n\r\nthird\r\n", {"first", "", "third"}},
               {"one\ntwo\rthree", {"one", "two", "three"}},
               {"a\r\n", {"a"}},
               {"ab", {"ab"}},
               {"a\r\nb\r\n", {"a", "b"}}};
  for (const auto& c : cases) {
    files_.Contents["/data/f.txt"] = c.Content;
    const auto read = Tools().fncReadFile2Array("/data/f.txt");
    EXPECT_EQ(std::vector(read.begin(), read.end()), c.Lines) << c.Content;
    EXPECT_EQ(read.LBound(), 1);
  }
  for (const char* mostlyEmpty : {"", "a", "\r\n\r\n\r\n", "a\n\n\n"}) {
    files_.Contents["/data/f.txt"] = mostlyEmpty;
    EXPECT_EQ(fake::failureOf([] { Tools().fncReadFile2Array("/data/f.txt"); }).first, fault::Subscript);
  }
  EXPECT_TRUE(Tools().fncSaveFile("/data/f.txt", GrowingArray<std::string>{}));
  EXPECT_EQ(files_.Contents["/data/f.txt"], "");
}

TEST_F(FilesTest, SystemErrorsBecomeTheUsualFaults) {
  files_.Contents["/data/f"] = "x";
  const struct {
    const char* Path;
    int Error;
    std::int32_t Read;
  } cases[] = {
      {"/data/none", ENOENT, fault::FileNotFound},   {"/none/f", ENOENT, fault::PathNotFound},
      {"/none", ENOENT, fault::FileNotFound},        {"none", ENOENT, fault::FileNotFound},
      {"/data/f/g", ENOTDIR, fault::PathNotFound},   {"/data/f", EACCES, fault::PermissionDenied},
      {"/data/f", EPERM, fault::PermissionDenied},   {"/data/new", EROFS, fault::PermissionDenied},
      {"/data/full", EACCES, fault::PathFileAccess}, {"/data/full", EISDIR, fault::PathFileAccess},
      {"/data/f", ENOSPC, fault::DiskFull},          {"/data/f", EIO, fault::PathFileAccess},
  };
  for (const auto& c : cases) {
    files_.Refused = {{std::string("read:") + c.Path, c.Error}, {std::string("write:") + c.Path, c.Error}};
    const auto [number, words] = fake::failureOf([&] { Tools().fncReadFile2Array(c.Path); });
    EXPECT_EQ(number, c.Read) << c.Path << ' ' << c.Error;
    EXPECT_NE(words.find(std::string(c.Path) + " (words for " + std::to_string(c.Error) + ")"),
              std::string::npos);
    EXPECT_EQ(fake::failureOf([&] { Tools().fncSaveFile(c.Path, {}); }).first, c.Read) << c.Path;
  }
}

TEST_F(FilesTest, WhatIsThere) {
  files_.Contents = {{"/data/f.txt", "x"}, {"/data/r", "x"}, {"/data/h", "x"}, {"/data/rh", "x"}};
  files_.ReadOnly = {"/data/r", "/data/rh"};
  files_.Hidden = {"/data/h", "/data/rh"};
  const struct {
    const char* Path;
    bool File, Folder;
    const char* Access;
  } cases[] = {
      {"/data/f.txt", true, true, "FileExistsFullAccess"},
      {"/data\\f.txt", true, true, "FileExistsFullAccess"},
      {"/data/r", true, true, "FileExistsReadOnly"},
      {"/data/h", true, true, "FileExistsHidden"},
      {"/data/rh", true, true, "FileExistsReadOnlyAndHidden"},
      {"/data/no.txt", false, true, "FileDoesNotExist"},
      {"/data/no", false, false, "FileDoesNotExist"},
      {"/no/f.txt", false, false, "FileDoesNotExist"},
      {"/data", false, true, "FileDoesNotExist"},
      {"/data/", false, true, "FileDoesNotExist"},
      {"/x.txt", false, true, "FileDoesNotExist"},
      {"", false, true, "FileDoesNotExist"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Tools().fncFilePathExists(c.Path), c.File) << c.Path;
    EXPECT_EQ(Tools().fncDirDirectory(c.Path), c.Folder) << c.Path;
    EXPECT_EQ(Tools().fncCheckFileForReadWrite(c.Path), c.Access) << c.Path;
  }
  files_.Refused = {{"read:/data/f.txt", EACCES}, {"state:/data/h", EACCES}};
  EXPECT_EQ(fake::failureOf([] { Tools().fncCheckFileForReadWrite("/data/f.txt"); }).first,
            fault::PermissionDenied);
  EXPECT_EQ(fake::failureOf([] { Tools().fncFilePathExists("/data/h"); }).first, fault::PathFileAccess);
  EXPECT_EQ(fake::failureOf([] { Tools().fncDirDirectory("/data/h"); }).first, fault::PathFileAccess);
}

TEST_F(FilesTest, FoldersAreMadeForEveryone) {
  EXPECT_TRUE(Tools().fncMakeDirectorys("/data\\a\\b\\f.txt"));
  EXPECT_EQ(files_.ForEveryone, (std::vector<std::string>{"/data/a", "/data/a/b"}));
  EXPECT_TRUE(Tools().fncMakeDirectorys("/data/c"));
  EXPECT_TRUE(files_.Folders.contains("/data/c"));
  EXPECT_TRUE(Tools().fncMakeDirectorys("f.txt"));
  EXPECT_TRUE(world_->TheHost->Boxes.empty());

  files_.Contents["/data/file"] = "x";
  EXPECT_FALSE(Tools().fncMakeDirectorys("/data/file"));
  files_.Refused = {{"makeFolder:/data/d", EACCES}, {"open:/data/e", EPERM}};
  EXPECT_EQ(fake::failureOf([] { Tools().fncMakeDirectorys("/data/d/"); }).first, fault::PermissionDenied);

  EXPECT_TRUE(Tools().fncMakeDirectorys("/data/e/f"));
  ASSERT_EQ(world_->TheHost->Boxes.size(), 1U);
  EXPECT_EQ(world_->TheHost->Boxes[0],
            "Error: Unable to Add ACL to DACL\r\nHY_Wristlog was unable to edit the permissions\r\n"
            "of a directory named: /data/e\r\n"
            "Other software users will have limited access to this directory\r\n"
            "HY_Wristlog may not be able to write to the database.\r\n"
            "Please contact your system adminstrator or \r\nHalcyra Product Support.");

  files_.Refused = {{"state:/data/full", EACCES}};
  EXPECT_TRUE(Tools().fncSetAccess("everyone", "/data", -1));
  EXPECT_FALSE(Tools().fncSetAccess("Nobody", "/data", -1));
  EXPECT_FALSE(Tools().fncSetAccess("Everyone", "/none", -1));
  EXPECT_FALSE(Tools().fncSetAccess("Everyone", "/data/full", -1));
  ASSERT_EQ(world_->TheHost->Boxes.size(), 4U);
  EXPECT_TRUE(
      world_->TheHost->Boxes[1].starts_with("Error: Unable to Lookup the Current User Account: Nobody"));
  EXPECT_TRUE(world_->TheHost->Boxes[3].starts_with("Error: Unable to Get the File Security Descriptor\r\n"));
}

TEST_F(FilesTest, WritablePathsAreTriedOut) {
  EXPECT_TRUE(Tools().fncCheckPathforReadWrite("/data/f.txt"));
  EXPECT_TRUE(Tools().fncCheckPathforReadWrite("/data/new/deep"));
  EXPECT_TRUE(files_.Folders.contains("/data/new/deep"));
  EXPECT_TRUE(Tools().fncCheckPathforReadWrite("f.txt"));
  EXPECT_EQ(files_.Writes, 3);
  EXPECT_TRUE(files_.Contents.empty());
  for (const char* refused : {"write:/data/MyTemp.txt", "remove:/data/MyTemp.txt", "state:/data"}) {
    files_.Refused = {{refused, EACCES}};
    EXPECT_FALSE(Tools().fncCheckPathforReadWrite("/data/")) << refused;
  }
  files_.Refused = {{"makeFolder:/data/x", EACCES}};
  EXPECT_FALSE(Tools().fncCheckPathforReadWrite("/data/x"));
}

TEST_F(FilesTest, IniValuesAreRead) {
  files_.Contents["/data/s.ini"] =
      "\xEF\xBB\xBF[ Top ]\r\nKey = first \n;Key2=no\nplain\n\"Quoted\"='a\"b'\nEmpty=\nEq==x=\nLong=" +
      std::string(4094, 'x') +
      "\u00E9\n  [Other] rest\nkey=\" blank \"\n[top]\nLate=1\nbad]=2\n[open\nafter=3\n";
  const struct {
    const char *Section, *Key, *Value;
  } cases[] = {
      {"top", "KEY", "first"},     {"Top", "Key2", "default"},    {"Top", ";Key2", "default"},
      {"Top", "plain", "default"}, {"Top", "\"quoted\"", "a\"b"}, {"Top", "Empty", ""},
      {"Top", "Eq", "=x="},        {"OTHER", "Key", " blank "},   {"Top", "Late", "default"},
      {"None", "Key", "default"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Tools().fncINIread(c.Section, c.Key, "default", "/data\\s.ini"), c.Value) << c.Key;
  EXPECT_EQ(Tools().fncINIread("Top", "Long", "", "/data/s.ini"), std::string(4094, 'x'));
  EXPECT_EQ(Tools().fncINIread("Top", "Key", "default", "/data/none.ini"), "default");
}

TEST_F(FilesTest, IniFilesKeepWhatTheyHold) {
  std::string& content = files_.Contents["/data/s.ini"];
  content = "; hello\n[One]\na=1\nnoise\n\n[Two]\r\nb=2";
  const auto write = [](const char* section, const char* key, const char* value) {
    return Tools().fncINIwrite(section, key, value, "/data/s.ini");
  };
  EXPECT_TRUE(write("one", "A", "10"));
  EXPECT_TRUE(write("One", "new", "x y"));
  EXPECT_TRUE(write("Two", "c", ""));
  EXPECT_TRUE(write("Three", "d", "4"));
  EXPECT_EQ(content,
            "; hello\r\n[One]\r\nA=10\r\nnoise\r\nnew=x y\r\n\r\n[Two]\r\nb=2\r\nc=\r\n[Three]\r\nd=4\r\n");
  const int writes = files_.Writes;
  EXPECT_TRUE(Tools().fncINIdeleteItem("Two", "none", "/data/s.ini"));
  EXPECT_TRUE(Tools().fncINIdeleteSection("None", "/data/s.ini"));
  EXPECT_EQ(files_.Writes, writes);
  EXPECT_TRUE(Tools().fncINIdeleteItem("two", "B", "/data/s.ini"));
  EXPECT_TRUE(Tools().fncINIdeleteSection("ONE", "/data/s.ini"));
  EXPECT_EQ(content, "; hello\r\n[Two]\r\nc=\r\n[Three]\r\nd=4\r\n");

  for (const char* bad : {"a\nb", "a\r"}) {
    EXPECT_FALSE(write(bad, "k", "v"));
    EXPECT_FALSE(write("s", bad, "v"));
    EXPECT_FALSE(write("s", "k", bad));
  }
  EXPECT_TRUE(Tools().fncINIwrite("S", "k", "v", "/data/new.ini"));
  EXPECT_EQ(files_.Contents["/data/new.ini"], "[S]\r\nk=v\r\n");
  EXPECT_FALSE(Tools().fncINIwrite("S", "k", "v", "/none/new.ini"));
  files_.Refused = {{"read:/data/s.ini", EACCES}};
  const std::string before = content;
  EXPECT_FALSE(write("Two", "c", "9"));
  EXPECT_EQ(content, before);
}

}  // namespace
}  // namespace hy_wristlog
