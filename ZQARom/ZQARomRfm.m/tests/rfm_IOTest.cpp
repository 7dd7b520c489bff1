#include "rfm_FileException.h"
#include "rfm_FileReprLocal.h"
#include "rfm_MemoryIOS.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

// The byte order that is not the host's, to drive the swap path.
int ForeignEndType() { return omi_Swapper::HostEndType() == omi_LittleEndian ? omi_BigEndian : omi_LittleEndian; }

}  // namespace

TEST(IOTest, NumbersAreStoredLittleEndian) {
  zqa_TestDir dir;
  cow_String name = dir.File("numbers.bin");
  {
    rfm_FileReprLocal file(name, utl_FileAccessCreate, false);
    file.WriteInt(0x01020304);
    file.WriteFloat(1.0f);
    file.WriteDouble(-2.0);
    int const ints[3] = {-1, 7, 65536};
    file.WriteIntArray(ints, 3);
  }
  std::string const expected("\x04\x03\x02\x01"
                             "\x00\x00\x80\x3f"
                             "\x00\x00\x00\x00\x00\x00\x00\xc0"
                             "\xff\xff\xff\xff\x07\x00\x00\x00\x00\x00\x01\x00",
                             28);
  EXPECT_EQ(expected, zqa_ReadFileBytes(name));

  rfm_FileReprLocal file(name, utl_FileAccessRead, false);
  EXPECT_EQ(0x01020304, file.ReadInt());
  EXPECT_EQ(1.0f, file.ReadFloat());
  EXPECT_EQ(-2.0, file.ReadDouble());
  int ints[3] = {};
  EXPECT_EQ(3, file.ReadIntArray(ints, 3));
  EXPECT_EQ(65536, ints[2]);
}

TEST(IOTest, ForeignByteOrderSwapsEveryElement) {
  rfm_MemoryIOS io(ForeignEndType());
  ASSERT_TRUE(io.SwapBytes());
  io.WriteInt(0x01020304);
  double const values[2] = {1.5, -0.25};
  io.WriteDoubleArray(values, 2);
  io.WriteFloat(2.0f);

  std::string hostInt(4, '\0');
  int probe = 0x01020304;
  std::memcpy(hostInt.data(), &probe, 4);
  EXPECT_EQ(std::string(hostInt.rbegin(), hostInt.rend()), io.bytes.substr(0, 4));
  EXPECT_NE(io.bytes.substr(0, 4), hostInt);

  io.Seek(0);
  EXPECT_EQ(0x01020304, io.ReadInt());
  double back[2] = {};
  EXPECT_EQ(2, io.ReadDoubleArray(back, 2));
  EXPECT_EQ(1.5, back[0]);
  EXPECT_EQ(-0.25, back[1]);
  EXPECT_EQ(2.0f, io.ReadFloat());
}

TEST(IOTest, ShortArrayReadsReturnWholeElementsOnly) {
  zqa_TestDir dir;
  cow_String name = dir.File("short.bin");
  zqa_WriteFileBytes(name, std::string("\x01\x00\x00\x00\x02\x00\x00\x00\x03", 9));
  rfm_FileReprLocal file(name, utl_FileAccessRead, false);
  int values[3] = {-5, -5, -5};
  EXPECT_EQ(2, file.ReadIntArray(values, 3));
  EXPECT_EQ(1, values[0]);
  EXPECT_EQ(2, values[1]);
  EXPECT_EQ(-5, values[2]);
  EXPECT_EQ(9, file.Location());
  EXPECT_EQ(0, file.ReadIntArray(values, 1));

  file.Seek(8);
  EXPECT_EQ("***ERROR: Unexpected End Of File.", MessageOf([&] { file.ReadInt(); }));
  file.Seek(6);
  EXPECT_EQ("***ERROR: Unexpected End Of File.", MessageOf([&] { file.ReadDouble(); }));
}

TEST(IOTest, ArrayArgumentsAreChecked) {
  zqa_TestDir dir;
  rfm_FileReprLocal file(dir.File("args.bin"), utl_FileAccessCreate, false);
  int value = 0;
  EXPECT_EQ("***ERROR: Invalid array pointer.", MessageOf([&] { file.ReadIntArray(nullptr, 1); }));
  EXPECT_EQ("***ERROR: Invalid array pointer.", MessageOf([&] { file.WriteDoubleArray(nullptr, 1); }));
  EXPECT_EQ("***ERROR: Invalid length when reading array.", MessageOf([&] { file.ReadFloatArray(reinterpret_cast<float*>(&value), 0); }));
  // Writing deliberately reports the reading text.
  EXPECT_EQ("***ERROR: Invalid length when reading array.", MessageOf([&] { file.WriteIntArray(&value, 0); }));
  EXPECT_EQ("***ERROR: Invalid length when reading array.", MessageOf([&] { file.WriteIntArray(&value, -3); }));
  EXPECT_EQ(0, file.Location());
  EXPECT_EQ(0, file.LengthPysical());
}

TEST(IOTest, FixedStringsHaveExactlyTheirWidth) {
  zqa_TestDir dir;
  cow_String name = dir.File("strings.bin");
  {
    rfm_FileReprLocal file(name, utl_FileAccessCreate, false);
    file.WriteFixedString("ZKRRAPP", 8);
    file.WriteFixedString("much too long", 4);
    file.WriteFixedString("", 3);
    file.WriteFixedString("x", 0);
  }
  EXPECT_EQ(std::string("ZKRRAPP\0much\0\0\0", 15), zqa_ReadFileBytes(name));

  rfm_FileReprLocal file(name, utl_FileAccessRead, false);
  EXPECT_TRUE(file.ReadFixedString(0).Empty());
  EXPECT_EQ(0, file.Location());
  cow_String first = file.ReadFixedString(8);
  EXPECT_EQ(8, first.Length());
  EXPECT_STREQ("ZKRRAPP", first.CStr());
  EXPECT_EQ(cow_String("much"), file.ReadFixedString(4));
  EXPECT_EQ("***ERROR: Unexpected End Of File.", MessageOf([&] { file.ReadFixedString(4); }));
}
