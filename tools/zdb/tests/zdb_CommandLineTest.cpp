#include "zdb_TestTool.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

TEST(ZdbCommandLineTest, BadUsageExitsWithTwoAndHelpWithZero) {
  zdb_Run none = RunZdb({});
  EXPECT_EQ(2, none.m_Status);
  EXPECT_EQ(0u, none.m_Err.find("usage: zdb COMMAND [ARGUMENTS]\n"));

  zdb_Run unknown = RunZdb({"frobnicate", "x.zdb"});
  EXPECT_EQ(2, unknown.m_Status);
  EXPECT_EQ(0u, unknown.m_Err.find("zdb: unknown command \"frobnicate\"\n"));

  zdb_Run overview = RunZdb({"--help"});
  EXPECT_EQ(0, overview.m_Status);
  for (char const* name :
       {"info", "objects", "tables", "classes", "dump", "locate", "check", "compress", "decompress", "watch"}) {
    EXPECT_NE(std::string::npos, overview.m_Out.find(std::string("\n  ") + name + " ")) << name;
    zdb_Run help = RunZdb({name, "--help"});
    EXPECT_EQ(0, help.m_Status) << name;
    EXPECT_EQ(0u, help.m_Out.find(std::string("usage: zdb ") + name + " ")) << name;
    EXPECT_EQ(help.m_Out, RunZdb({"help", name}).m_Out) << name;
  }

  struct Case {
    std::vector<std::string> m_Arguments;
    char const* m_Err;
  };
  Case const cases[] = {
      {{"info"}, "zdb info: expected 1 argument, got 0\nusage: zdb info FILE\n"},
      {{"locate", "a.zdb"}, "zdb locate: expected 2 arguments, got 1\nusage: zdb locate FILE OFFSET\n"},
      {{"dump", "a.zdb", "--frob"}, "zdb dump: unknown option --frob\n"},
      {{"dump", "a.zdb", "--rows"}, "zdb dump: option --rows needs a value\n"},
      {{"dump", "a.zdb", "--json=yes"}, "zdb dump: option --json takes no value\n"},
      {{"dump", "a.zdb", "--rows", "5:2"}, "zdb dump: --rows 5:2 ends before it begins\n"},
      {{"dump", "a.zdb", "--rows=x:2"}, "zdb dump: first row \"x\" is not a whole number\n"},
      {{"dump", "a.zdb", "--handle", "0x"}, "zdb dump: handle \"0x\" is not a whole number\n"},
      {{"dump", "a.zdb", "--handle", "0"}, "zdb dump: handle 0 is out of range (1 to 2147483647)\n"},
      {{"dump", "a.zdb", "--table", "T", "--handle", "4"}, "zdb dump: give --table or --handle, not both\n"},
      {{"locate", "a.zdb", "-5"}, "zdb locate: offset -5 is out of range (0 to 9223372036854775807)\n"},
      {{"locate", "a.zdb", " 5"}, "zdb locate: offset \" 5\" is not a whole number\n"},
      {{"watch", "a.zdb", "--interval", "0"}, "zdb watch: --interval 0 is out of range (0.001 to 3600 seconds)\n"},
      {{"watch", "a.zdb", "--interval", "soon"}, "zdb watch: --interval \"soon\" is not a number of seconds\n"},
  };
  for (Case const& c : cases) {
    zdb_Run run = RunZdb(c.m_Arguments);
    EXPECT_EQ(2, run.m_Status) << c.m_Err;
    EXPECT_EQ(0u, run.m_Err.find(c.m_Err)) << run.m_Err;
    EXPECT_EQ("", run.m_Out);
  }
}

TEST(ZdbCommandLineTest, AFileThatCannotBeUsedIsNamedOnStandardErrorWithExitStatusOne) {
  zqa_TestDir dir;
  std::string missing = dir.File("missing.zdb").CStr();
  std::string text = dir.File("notes.txt").CStr();
  zqa_WriteFileBytes(text.c_str(), std::string(20000, 'x'));
  for (char const* command : {"info", "objects", "tables", "classes", "dump"}) {
    zdb_Run run = RunZdb({command, missing});
    EXPECT_EQ(1, run.m_Status) << command;
    EXPECT_EQ(std::string("zdb ") + command + ": " + missing + ": *** ERROR: No such file: " + missing + ".\n",
              run.m_Err);
    zdb_Run other = RunZdb({command, text});
    EXPECT_EQ(1, other.m_Status) << command;
    EXPECT_EQ(0u, other.m_Err.find(std::string("zdb ") + command + ": " + text + ": ")) << other.m_Err;
  }
  zdb_Run check = RunZdb({"check", missing});
  EXPECT_EQ(1, check.m_Status);
  EXPECT_EQ("zdb check: " + missing + ": no such file\n", check.m_Err);
  zdb_Run locate = RunZdb({"locate", missing, "0x10"});
  EXPECT_EQ(1, locate.m_Status);
  EXPECT_EQ(0u, locate.m_Err.find("zdb locate: " + missing + ": "));
}
