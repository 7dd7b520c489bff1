#include "utl_PathFinder.h"

#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <sys/stat.h>

TEST(PathFinderTest, FirstListedDirectoryHoldingTheFileWins) {
  zqa_TestDir dir;
  for (char const* folder : {"a", "a/sub", "b", "b/sub", "c", "c/sub"}) ::mkdir(dir.File(folder).CStr(), 0755);
  zqa_WriteFileBytes(dir.File("a/sub/other"), "");
  zqa_WriteFileBytes(dir.File("b/sub/tool"), "");
  zqa_WriteFileBytes(dir.File("c/sub/tool"), "");
  std::string list = std::string(dir.File("a").CStr()) + "::" + dir.File("b").CStr() + ":" + dir.File("c").CStr();
  ::setenv("ZOR_PATH", list.c_str(), 1);
  EXPECT_EQ(dir.File("b/sub"), utl_PathFinder::getSubDirPath("ZOR_PATH", "sub", "tool", false, false, false));
  EXPECT_EQ("", utl_PathFinder::getSubDirPath("ZOR_PATH", "sub", "missing", false, false, false));
  ::unsetenv("ZOR_PATH");
  EXPECT_EQ("", utl_PathFinder::getSubDirPath("ZOR_PATH", "sub", "tool", false, false, false));
}
