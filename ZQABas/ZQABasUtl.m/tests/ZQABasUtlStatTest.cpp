#include "ZQABasUtlStat.h"

#include "atr_translate.h"
#include "nex_PrimException.h"
#include "nex_SystemErrorCode.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using SystemError = nex_PrimException<nex_SystemErrorCode, 1>;

namespace {

std::string Text(cow_String const& text) { return std::string(text.CStr(), static_cast<std::size_t>(text.Length())); }

// The type the browsing protocol derives from the two flags: 1, 2 or 3.
int TypeOf(cow_String const& path) {
  ZQABasUtlStat stat(path);
  EXPECT_TRUE(stat.Found()) << path.CStr();
  return stat.IsDirectory() ? 1 : stat.IsRegularFile() ? 2 : 3;
}

}  // namespace

TEST(StatTest, FileGivesItsSizeTimeAndAttributeWords) {
  zqa_TestDir dir;
  cow_String path = dir.File("f.zdb");
  zqa_WriteFileBytes(path, std::string(1234, 'x'));
  ASSERT_EQ(0, ::chmod(path.CStr(), 0640));
  struct timespec const times[2] = {{1000000000, 0}, {1234567890, 0}};
  ASSERT_EQ(0, ::utimensat(AT_FDCWD, path.CStr(), times, 0));
  struct stat status;
  ASSERT_EQ(0, ::stat(path.CStr(), &status));

  ZQABasUtlStat stat(path);
  EXPECT_TRUE(stat.Found());
  EXPECT_EQ(0, stat.ErrorCode());
  EXPECT_FALSE(stat.IsDirectory());
  EXPECT_TRUE(stat.IsRegularFile());
  EXPECT_EQ(1234, stat.Size());
  EXPECT_EQ(1234567890, stat.ModificationTime());
  EXPECT_EQ(S_IFREG | 0640u, stat.Mode());
  EXPECT_EQ(::geteuid(), stat.OwnerId());
  EXPECT_EQ(status.st_gid, stat.GroupId());
  EXPECT_NO_THROW(stat.ThrowIfFileNotFound());
}

TEST(StatTest, TypeFlagsTellDirectoriesFilesAndOthersAndFollowLinks) {
  zqa_TestDir dir;
  cow_String sub = dir.File("sub");
  ASSERT_EQ(0, ::mkdir(sub.CStr(), 0755));
  zqa_WriteFileBytes(dir.File("file"), "");
  ASSERT_EQ(0, ::mkfifo(dir.File("fifo").CStr(), 0644));
  ASSERT_EQ(0, ::symlink(sub.CStr(), dir.File("link").CStr()));
  ASSERT_EQ(0, ::symlink(dir.File("nowhere").CStr(), dir.File("dangling").CStr()));

  EXPECT_EQ(1, TypeOf(sub));
  EXPECT_EQ(2, TypeOf(dir.File("file")));
  EXPECT_EQ(3, TypeOf(dir.File("fifo")));
  EXPECT_EQ(1, TypeOf(dir.File("link")));
  EXPECT_TRUE(S_ISDIR(ZQABasUtlStat(dir.File("link")).Mode()));

  ZQABasUtlStat dangling(dir.File("dangling"));
  EXPECT_FALSE(dangling.Found());
  EXPECT_EQ(ENOENT, dangling.ErrorCode());
}

TEST(StatTest, FailedStatHoldsNothingAndThrowsTheSystemErrorNamingThePath) {
  zqa_TestDir dir;
  cow_String missing = dir.File("missing.zdb");
  ZQABasUtlStat stat(missing);
  EXPECT_FALSE(stat.Found());
  EXPECT_EQ(ENOENT, stat.ErrorCode());
  EXPECT_FALSE(stat.IsDirectory() || stat.IsRegularFile());
  EXPECT_EQ(0, stat.Size());
  EXPECT_EQ(0u, stat.Mode() | stat.OwnerId() | stat.GroupId());
  try {
    stat.ThrowIfFileNotFound();
    FAIL() << "no exception for a missing path";
  } catch (SystemError const& e) {
    EXPECT_EQ(ENOENT, e.Value().Code());
    EXPECT_EQ(Text(missing), Text(e.Value().Path()));
    EXPECT_EQ("No such file or directory", Text(e.Value().Reason()));
    EXPECT_EQ(Text(missing) + ": No such file or directory", e.what());
    EXPECT_STRNE("", e.SourcePath());
  }

  zqa_WriteFileBytes(dir.File("plain"), "x");
  cow_String underFile = dir.File("plain/child");
  try {
    ZQABasUtlStat(underFile).ThrowIfFileNotFound();
    FAIL() << "no exception for a path below a file";
  } catch (ZQABasException const& e) {
    ASSERT_NE(nullptr, dynamic_cast<SystemError const*>(&e));
    EXPECT_EQ(ENOTDIR, static_cast<SystemError const&>(e).Value().Code());
    EXPECT_EQ(Text(underFile) + ": Not a directory", e.what());
  }
}

TEST(StatTest, SystemErrorTextPassesThroughTheTranslator) {
  atr_Translator previous = atr_SetTranslator([](char const* text) {
    return std::strcmp(text, "%s: %s") == 0 ? atr_String("%s (%s)") : atr_String(text);
  });
  nex_SystemErrorCode error(EACCES, "/data/f.zdb");
  atr_SetTranslator(previous);
  EXPECT_EQ("/data/f.zdb (Permission denied)", Text(error.Text()));
  EXPECT_EQ("/data/f.zdb (Permission denied)", std::string(SystemError(error).what()));
}
