#ifndef zdb_CheckPool_h
#define zdb_CheckPool_h

#include "rfm_OffsetConverter.h"
#include "utl_FileOffset.h"

#include <cstdint>
#include <string>
#include <unordered_map>

class zdb_CheckReport;
class zdb_CheckSpace;

// The check of the string pool (handle 1), and what the other checks ask of
// it: whether an external string, the 8 bytes that stand for a string
// elsewhere in the file, names a record of the pool.
//
//  offset  size  content
//       0     4  0xAAFFBBEE
//       4        records: length N (4 bytes), N characters, zeros up to a multiple of 4
class zdb_CheckPool {
public:
  static constexpr char const* kSubject = "string pool (handle 1)";
  // An external string is the record's offset in the form of a stored offset.
  static constexpr int kExternalSize = rfm_OffsetConverter::ExternalSize();

  // space is null when the file has no object at handle 1.
  zdb_CheckPool(zdb_CheckSpace const* space, zdb_CheckReport& report);

  // Whether the pool could be walked: when it could not, references into it
  // are not checked, since every one would fail for the same reason.
  bool Usable() const { return m_Usable; }
  // Whether external names a record; its characters go to text when asked.
  bool Resolve(char const* external, std::string* text = nullptr) const;
  // What external holds, for a report: "offset 52", or "offset nan" for a
  // value that is no offset.
  static std::string Describe(char const* external);

private:
  void Walk();

  zdb_CheckSpace const* m_Space;
  zdb_CheckReport& m_Report;
  bool m_Usable = false;
  std::unordered_map<utl_FileOffset, std::int32_t> m_Records;  // offset of each record, and its length
};

#endif
