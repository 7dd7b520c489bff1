#include "atr_SubstituteFormat.h"
#include "utl_File.h"
#include "zdb_TestTool.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

// A FIFO without a writer, a directory and a device are refused at once by
// the commands that open a file, with the library's one text naming it.
// Each run is killed if it outlives its time, so that a blocking open
// fails the test instead of hanging it.
TEST(ZdbNonRegularFileTest, InfoCheckAndWatchRefuseWhatIsNoRegularFileWithoutBlocking) {
  zqa_TestDir dir;
  std::string const fifo = dir.File("fifo.zdb").CStr();
  ASSERT_EQ(0, ::mkfifo(fifo.c_str(), 0600));
  std::string const directory = dir.File("directory.zdb").CStr();
  ASSERT_EQ(0, ::mkdir(directory.c_str(), 0700));
  for (std::string const& name : {fifo, directory, std::string("/dev/null")}) {
    std::string const refused = atr_SubstituteFormat(utl_File::kNotRegularFileText, name.c_str()).CStr();
    for (char const* command : {"info", "watch"}) {
      zdb_Run run = RunZdbWithin(30, {command, name});
      EXPECT_EQ(1, run.m_Status) << command << " " << name;
      EXPECT_EQ("", run.m_Out) << command << " " << name;
      EXPECT_EQ("zdb " + std::string(command) + ": " + name + ": " + refused + "\n", run.m_Err);
    }
    zdb_Run check = RunZdbWithin(30, {"check", name});
    EXPECT_EQ(1, check.m_Status) << name;
    EXPECT_EQ("the file cannot be opened: " + refused + "\n" + name + ": 1 problem\n", check.m_Out);
    EXPECT_EQ("", check.m_Err);
  }
}
