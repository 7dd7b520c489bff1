#include "utl_BinIStream.h"
#include "utl_BinOStream.h"
#include "utl_BinStreamException.h"

#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <climits>
#include <fcntl.h>
#include <string>
#include <utility>
#include <unistd.h>

namespace {

// Writes one value of every kind, in the order ReadAll reads them.
void WriteAll(utl_BinOStream& out) {
  out.WriteSchar(-2);
  out.WriteUchar(0xfe);
  out.WriteShort(-300);
  out.WriteInt(INT_MIN + 5);
  out.WriteUInt(0x01020304u);
  out.WriteInt64(-2);
  out.WriteUInt64(0x0102030405060708ull);
  out.WriteString(cow_String("a\0b", 3));
  out.Write("xyz", 3);
}

void ReadAll(utl_BinIStream& in) {
  EXPECT_EQ(-2, in.ReadSchar());
  EXPECT_EQ(0xfe, in.ReadUchar());
  EXPECT_EQ(-300, in.ReadShort());
  EXPECT_EQ(INT_MIN + 5, in.ReadInt());
  EXPECT_EQ(0x01020304u, in.ReadUInt());
  EXPECT_EQ(-2, in.ReadInt64());
  EXPECT_EQ(0x0102030405060708ull, in.ReadUInt64());
  EXPECT_EQ(cow_String("a\0b", 3), in.ReadString());
  char raw[3];
  in.Read(raw, 3);
  EXPECT_EQ("xyz", std::string(raw, 3));
}

// The bytes WriteAll gives in big-endian order.
std::string const kBigEndianBytes(
    "\xfe"
    "\xfe"
    "\xfe\xd4"
    "\x80\x00\x00\x05"
    "\x01\x02\x03\x04"
    "\xff\xff\xff\xff\xff\xff\xff\xfe"
    "\x01\x02\x03\x04\x05\x06\x07\x08"
    "\x00\x00\x00\x03"
    "a\0b"
    "xyz",
    38);

std::string Reversed(std::string text, std::size_t at, std::size_t size) {
  std::string part = text.substr(at, size);
  return text.replace(at, size, std::string(part.rbegin(), part.rend()));
}

int OpenForReading(cow_String const& name) { return ::open(name.CStr(), O_RDONLY | O_CLOEXEC); }

}  // namespace

TEST(BinStreamTest, EveryKindRoundTripsWithTheExactBytesOfEachOrder) {
  zqa_TestDir dir;
  std::string littleEndianBytes = kBigEndianBytes;
  // The Short, Int, UInt, Int64, UInt64 and the string's length, by offset and size.
  std::pair<std::size_t, std::size_t> const numbers[] = {{2, 2}, {4, 4}, {8, 4}, {12, 8}, {20, 8}, {28, 4}};
  for (auto [at, size] : numbers) littleEndianBytes = Reversed(littleEndianBytes, at, size);
  for (int endType : {omi_BigEndian, omi_LittleEndian}) {
    cow_String name = dir.File(endType == omi_BigEndian ? "big.bin" : "little.bin");
    int descriptor = ::open(name.CStr(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    {
      utl_BinOStream out(descriptor, endType);
      WriteAll(out);
      EXPECT_EQ("", zqa_ReadFileBytes(name));  // nothing leaves before a flush
    }
    ::close(descriptor);
    EXPECT_EQ(endType == omi_BigEndian ? kBigEndianBytes : littleEndianBytes, zqa_ReadFileBytes(name));

    descriptor = OpenForReading(name);
    utl_BinIStream in(descriptor, endType);
    ReadAll(in);
    EXPECT_THROW(in.ReadUchar(), utl_BinStreamEOF);
    ::close(descriptor);
  }
}

TEST(BinStreamTest, LongWritesAndStringsCrossTheBuffers) {
  zqa_TestDir dir;
  cow_String name = dir.File("long.bin");
  std::string block(3 * utl_BinOStream::kBufferSize + 5, 'b');
  std::string text(200000, 't');
  text[100000] = 'x';
  int descriptor = ::open(name.CStr(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  {
    utl_BinOStream out(descriptor, omi_BigEndian);
    out.WriteUchar(1);
    out.Write(block.data(), static_cast<int>(block.size()));
    out.WriteString(cow_String(text.data(), static_cast<int>(text.size())));
    out.WriteUchar(2);
    out.Flush();
  }
  ::close(descriptor);
  descriptor = OpenForReading(name);
  utl_BinIStream in(descriptor, omi_BigEndian);
  EXPECT_EQ(1, in.ReadUchar());
  std::string back(block.size(), '\0');
  in.Read(back.data(), static_cast<int>(back.size()));
  EXPECT_EQ(block, back);
  EXPECT_EQ(cow_String(text.data(), static_cast<int>(text.size())), in.ReadString());
  EXPECT_EQ(2, in.ReadUchar());
  ::close(descriptor);
}

TEST(BinStreamTest, ShortOrDamagedInputRaises) {
  zqa_TestDir dir;
  cow_String name = dir.File("short.bin");
  zqa_WriteFileBytes(name, std::string("\x00\x01\x02", 3));
  int descriptor = OpenForReading(name);
  utl_BinIStream in(descriptor, omi_BigEndian);
  try {
    in.ReadInt();
    FAIL() << "read an Int from three bytes";
  } catch (utl_BinStreamEOF const& e) {
    EXPECT_EQ("Unexpected end of the input on descriptor " + std::to_string(descriptor), std::string(e.what()));
  }
  ::close(descriptor);

  zqa_WriteFileBytes(name, std::string("\xff\xff\xff\xfe", 4));
  descriptor = OpenForReading(name);
  utl_BinIStream negative(descriptor, omi_BigEndian);
  EXPECT_THROW(negative.ReadString(), utl_BinStreamReadError);
  ::close(descriptor);

  descriptor = ::open(name.CStr(), O_WRONLY | O_CLOEXEC);
  utl_BinIStream writeOnly(descriptor, omi_BigEndian);
  try {
    writeOnly.ReadSchar();
    FAIL() << "read from a descriptor open for writing";
  } catch (utl_BinStreamReadError const& e) {
    EXPECT_EQ("Cannot read from descriptor " + std::to_string(descriptor) + ": Bad file descriptor",
              std::string(e.what()));
  }
  ::close(descriptor);
}
