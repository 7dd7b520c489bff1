#ifndef rfm_TestDatabase_h
#define rfm_TestDatabase_h

#include "atr_String.h"
#include "nex_PrimException.h"
#include "rfm_Database.h"

#include <string>

// What the database tests share: making and opening databases, the text of
// a raised message, and the bytes of a space.

using rfm_TestMessage = nex_PrimException<atr_String, 1>;

inline rfm_Database CreateTestDatabase(cow_String const& name, char const* magic = "APP", bool preallocate = false) {
  return rfm_Database::Create(rfm_File::Open(name, utl_FileAccessCreate, preallocate), magic, "a test database",
                              1700000000);
}

inline rfm_Database OpenTestDatabase(cow_String const& name, utl_FileAccess access, char const* magic = "") {
  return rfm_Database::Open(rfm_File::Open(name, access, false), magic);
}

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

#endif
