#include "ZQABasUtlFilePath.h"

#include "atr_String.h"
#include "nex_PrimException.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string Text(cow_String const& text) { return std::string(text.CStr(), static_cast<std::size_t>(text.Length())); }

std::string Absolute(char const* path) { return Text(ZQABasUtlFilePath(path, "").AbsolutePathName()); }

std::string CurrentDirectory() {
  char buffer[4096];
  return ::getcwd(buffer, sizeof buffer) ? buffer : "";
}

// Fails a child's body: the parent sees a non-zero status, the log says why.
void Require(bool condition, std::string const& what) {
  if (condition) return;
  std::fprintf(stderr, "check failed: %s\n", what.c_str());
  throw std::runtime_error(what);
}

// The four answers as "erwx", a letter for yes and "-" for no.
std::string Answers(cow_String const& path) {
  ZQABasUtlFilePath file(path, "");
  std::string answers;
  answers += file.Exists() ? 'e' : '-';
  answers += file.IsReadable() ? 'r' : '-';
  answers += file.IsWriteable() ? 'w' : '-';
  answers += file.IsExecutable() ? 'x' : '-';
  return answers;
}

}  // namespace

TEST(FilePathTest, PathNameJoinsDirectoryAndName) {
  EXPECT_EQ("dir/name", Text(ZQABasUtlFilePath("dir", "name").PathName()));
  EXPECT_EQ("/dir/name", Text(ZQABasUtlFilePath("/dir/", "name").PathName()));
  EXPECT_EQ("name", Text(ZQABasUtlFilePath("", "name").PathName()));
  EXPECT_EQ("dir", Text(ZQABasUtlFilePath("dir", "").PathName()));
  EXPECT_EQ("", Text(ZQABasUtlFilePath("", "").PathName()));
}

TEST(FilePathTest, AbsolutePathNameResolvesDotsAndSlashesByTextAlone) {
  EXPECT_EQ("/a/b/d", Absolute("/a/./b//c/../d/"));
  EXPECT_EQ("/", Absolute("/"));
  EXPECT_EQ("/", Absolute("//./"));
  EXPECT_EQ("/x", Absolute("/../../x"));
  EXPECT_EQ("/a/.../.hidden", Absolute("/a/.../.hidden"));
  EXPECT_EQ("/no/such/dir/f.zdb", Absolute("/no/such/dir/f.zdb"));

  std::string cwd = CurrentDirectory();
  ASSERT_FALSE(cwd.empty());
  EXPECT_EQ(cwd + "/f.zdb", Absolute("sub/../f.zdb"));
  EXPECT_EQ(cwd + "/f.zdb", Text(ZQABasUtlFilePath(".", "f.zdb").AbsolutePathName()));
  EXPECT_EQ(cwd, Absolute(""));
  std::string parent = cwd.substr(0, cwd.rfind('/'));
  EXPECT_EQ(parent.empty() ? "/" : parent, Absolute(".."));

  EXPECT_EQ("zbxrdb://h:5000//abs/./f.zdb", Absolute("zbxrdb://h:5000//abs/./f.zdb"));
}

TEST(FilePathTest, AbsolutePathNameFailsNamingThePathWhenTheCurrentDirectoryIsGone) {
  zqa_TestDir dir;
  cow_String gone = dir.File("gone");
  int status = zqa_RunInChild([&] {
    Require(::mkdir(gone.CStr(), 0700) == 0 && ::chdir(gone.CStr()) == 0 && ::rmdir(gone.CStr()) == 0, "setup");
    try {
      ZQABasUtlFilePath("rel", "f.zdb").AbsolutePathName();
    } catch (nex_PrimException<atr_String, 1> const& e) {
      std::string text = e.what();
      Require(text.rfind("rel/f.zdb: ", 0) == 0, "message names the path: " + text);
      Require(text.find("No such file or directory") != std::string::npos, "message gives the reason: " + text);
      return;
    }
    Require(false, "no exception");
  });
  EXPECT_EQ(0, status);
}

TEST(FilePathTest, PermissionAnswersFollowTheModeForAnUnprivilegedUser) {
  zqa_TestDir dir;
  int status = zqa_RunInChild(
      [&] {
        struct {
          char const* name;
          mode_t mode;
          char const* answers;
        } const files[] = {{"none", 0000, "e---"}, {"readonly", 0444, "er--"}, {"all", 0755, "erwx"}};
        for (auto const& f : files) {
          cow_String path = dir.File(f.name);
          zqa_WriteFileBytes(path, "x");
          Require(::chmod(path.CStr(), f.mode) == 0, "chmod");
          Require(Answers(path) == f.answers, std::string(f.name) + " answers " + Answers(path));
        }

        Require(Answers(dir.File("missing")) == "----", "missing file answers " + Answers(dir.File("missing")));
      },
      true);
  EXPECT_EQ(0, status);
}

TEST(FilePathTest, UrlsAreReadableButNeverWriteable) {
  EXPECT_EQ("er--", Answers("zbxrdb://h:5000//no/such/f.zdb"));
  EXPECT_EQ("er--", Answers("zbxrdb://localhost/f.zdb"));
  EXPECT_EQ("----", Answers("zbxrdb://"));
}
