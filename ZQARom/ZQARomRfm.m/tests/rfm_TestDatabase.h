#ifndef rfm_TestDatabase_h
#define rfm_TestDatabase_h

#include "atr_String.h"
#include "nex_PrimException.h"
#include "rfm_Database.h"
#include "rfm_FileRepr.h"
#include "rfm_Space.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

// What the database tests share: making and opening databases in either
// kind of file, the text of a raised message, and the bytes of a space or
// of a whole file.

using rfm_TestMessage = nex_PrimException<atr_String, 1>;

// The kinds of file a database lives in. The record store presents the
// same behaviour in each; only the bytes on disk differ.
enum class rfm_TestFileKind { Plain, Compressed };

inline rfm_Database CreateTestDatabase(cow_String const& name, char const* magic = "APP", bool preallocate = false,
                                       rfm_TestFileKind kind = rfm_TestFileKind::Plain) {
  rfm_File file = kind == rfm_TestFileKind::Compressed ? rfm_File::CreateCompressed(name)
                                                       : rfm_File::Open(name, utl_FileAccessCreate, preallocate);
  return rfm_Database::Create(file, magic, "a test database", 1700000000);
}

inline rfm_Database OpenTestDatabase(cow_String const& name, utl_FileAccess access, char const* magic = "") {
  return rfm_Database::Open(rfm_File::Open(name, access, false), magic);
}

// The base of a suite that runs once for each kind of file: inside its
// tests, CreateTestDatabase makes a database of the instance's kind.
class rfm_FileKindTest : public testing::TestWithParam<rfm_TestFileKind> {
protected:
  rfm_Database CreateTestDatabase(cow_String const& name, char const* magic = "APP") const {
    return ::CreateTestDatabase(name, magic, false, GetParam());
  }
};

inline void PrintTo(rfm_TestFileKind kind, std::ostream* out) {
  *out << (kind == rfm_TestFileKind::Plain ? "Plain" : "Compressed");
}

inline std::string rfm_FileKindName(testing::TestParamInfo<rfm_TestFileKind> const& info) {
  return testing::PrintToString(info.param);
}

// Runs every test of suite, an rfm_FileKindTest, as Suite.Test/Plain and
// Suite.Test/Compressed.
#define RFM_INSTANTIATE_FOR_EACH_FILE_KIND(suite)                                                               \
  INSTANTIATE_TEST_SUITE_P(, suite, testing::Values(rfm_TestFileKind::Plain, rfm_TestFileKind::Compressed), \
                           rfm_FileKindName)

// The text of the message that body raises, or "no exception".
template <class Body>
std::string MessageOf(Body body) {
  try {
    body();
  } catch (rfm_TestMessage const& e) {
    return e.what();
  }
  return "no exception";
}

inline std::string SpaceBytes(rfm_Space const& space) {
  std::string bytes(static_cast<std::size_t>(space.Length()), '\0');
  space.Seek(0);
  if (!bytes.empty()) space.Read(bytes.data(), static_cast<int>(bytes.size()));
  return bytes;
}

inline std::string SpaceBytes(rfm_Database const& database, int handle) {
  return SpaceBytes(database.Space(rfm_Handle(handle), -1));
}

// The bytes of a file as the database layer addresses them, whatever its
// kind: for a plain file its content, for a compressed one what it unpacks to.
inline std::string LogicalFileBytes(cow_String const& name) {
  rfm_File file = rfm_File::Open(name, utl_FileAccessRead, false);
  std::string bytes;
  char block[4096];
  for (int got; (got = file->Read(block, sizeof block)) > 0;) bytes.append(block, static_cast<std::size_t>(got));
  return bytes;
}

#endif
