#ifndef zdb_TestFiles_h
#define zdb_TestFiles_h

#include "rfm_TestDatabase.h"

#include <string>

// Databases made by the library for the tests of zdb, and the places in
// their bytes that the damage tests change.

// The sample: one object of each kind, holding values that need care when
// written out (NaN, infinities, -0, extreme doubles, floats, absent fields,
// strings with quotes, control characters and bytes that are not UTF-8).
//
//  Parts (table): id int, mass double, density float, label string, owner handle
//    row 0: 1, 2.5, 7.85f, "plain", ints
//    row 1: 2, -0.0, 0.1f, absent, absent
//    row 2: 3, NaN, +inf, kAwkwardLabel, ints
//    row 3: 4, 1e300, -inf, "", absent
//  ints (2 per row): {1, 2}, {-3, 2147483647}, {-2147483648, 0}
//  doubles (3 per row): {0.1, -0.0, 1e-300}, {inf, -inf, NaN}, {5e-324, DBL_MAX, 1.2345678901234568e20}
//  strings (2 per row): {"a", "b"}, {"", "\x80"}
//  stream: int 1 = 42, handle 2 = ints, float 3 = 0.25f, double 4 = 1/3, string 5 = "run-7"
struct zdb_Sample {
  static constexpr char const* kAwkwardLabel = "q\"b\\t\tn\nc\x01x\xff\xfeu\xc2\xb5";
  static constexpr long kCreationTime = 1700000000;

  std::string m_Name;
  int m_Ints;
  int m_Doubles;
  int m_Strings;
  int m_Stream;
  int m_Parts;
};

zdb_Sample MakeSample(cow_String const& name, rfm_TestFileKind kind = rfm_TestFileKind::Plain);

// Where the linkage of handle lies in a file of one group, and its fields.
std::size_t LinkageOffset(int handle);
constexpr std::size_t kAllocationField = 0;
constexpr std::size_t kLengthField = 8;
constexpr std::size_t kLocationField = 16;
constexpr std::size_t kNextField = 24;

// The file offset of byte offset of the object at handle, following its
// chain of extents in the file's one group.
std::size_t FileOffsetOf(std::string const& bytes, int handle, std::size_t offset);

#endif
