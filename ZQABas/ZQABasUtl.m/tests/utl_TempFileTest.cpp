#include "utl_TempFile.h"

#include "atr_String.h"
#include "nex_PrimException.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

using Message = nex_PrimException<atr_String, 1>;

// Points TMPDIR at a directory for the life of the object.
class TemporaryDirectory {
public:
  explicit TemporaryDirectory(cow_String const& path) { ::setenv("TMPDIR", path.CStr(), 1); }
  ~TemporaryDirectory() { ::unsetenv("TMPDIR"); }
};

}  // namespace

TEST(TempFileTest, UniqueFileInTmpdirReadableAndRemovedOnDestruction) {
  zqa_TestDir dir;
  TemporaryDirectory tmpdir(dir.Path());
  cow_String name;
  {
    utl_TempFile file("cache");
    utl_TempFile other("cache");
    name = file.Name();
    EXPECT_EQ(0, name.Find(dir.File("cache").CStr()));
    EXPECT_NE(name, other.Name());
    EXPECT_GT(file.AvailableSpace(), 0u);

    zqa_WriteFileBytes(name, "page");
    int descriptor = file.OpenIfPresent();
    ASSERT_GE(descriptor, 0);
    char bytes[8] = {};
    EXPECT_EQ(4, ::read(descriptor, bytes, sizeof bytes));
    EXPECT_STREQ("page", bytes);
    ::close(descriptor);

    ::unlink(other.Name().CStr());
    EXPECT_LT(other.OpenIfPresent(), 0);
  }
  EXPECT_NE(0, ::access(name.CStr(), F_OK));

  // With its name removed the file lives on for whoever holds it open, and
  // a file of the same name made meanwhile is not the object's to remove.
  utl_TempFile file("held");
  name = file.Name();
  int descriptor = ::open(name.CStr(), O_RDWR);
  ASSERT_GE(descriptor, 0);
  file.RemoveName();
  EXPECT_TRUE(file.Name().Empty());
  EXPECT_NE(0, ::access(name.CStr(), F_OK));
  EXPECT_EQ(4, ::write(descriptor, "page", 4));
  EXPECT_EQ(0, ::lseek(descriptor, 0, SEEK_SET));
  char bytes[8] = {};
  EXPECT_EQ(4, ::read(descriptor, bytes, sizeof bytes));
  ::close(descriptor);
  zqa_WriteFileBytes(name, "another");
  file.RemoveName();
  EXPECT_EQ("another", zqa_ReadFileBytes(name));
  ::unlink(name.CStr());
}

TEST(TempFileTest, MissingDirectoryIsNamedInTheFailure) {
  zqa_TestDir dir;
  cow_String missing = dir.File("missing");
  TemporaryDirectory tmpdir(missing);
  try {
    utl_TempFile file("");
    FAIL() << "created a file in a missing directory";
  } catch (Message const& e) {
    EXPECT_EQ(cow_String("Cannot create a temporary file in ") + missing + ": No such file or directory", e.Value());
  }
}
