#ifndef zdb_ClassCatalogue_h
#define zdb_ClassCatalogue_h

#include "rfm_Table.h"
#include "rfm_Type.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

class zdb_TableFinder;

// One row of the class catalogue, and what the table it names holds. A
// value that the row lacks, or whose field the catalogue lacks or holds
// with another type, is empty.
struct zdb_ClassRow {
  int m_Row = 0;
  std::optional<std::uint32_t> m_ClassId;
  std::optional<int> m_TableHandle;
  std::optional<std::string> m_Name;
  std::optional<std::uint32_t> m_BaseClassId;
  std::optional<int> m_Version;

  // The class's table, when the row names one that can be opened; why it
  // cannot otherwise (see zdb_TableFinder).
  bool m_TableFound = false;
  std::string m_TableMissing;
  std::string m_TableName;
  int m_TableRows = 0;
  rfm_Type m_BaseOidType = rfm_TypeNone;  // of the table's kRomBaseClassOidName field, none without one
};

// The object layer's class catalogue (see rom_HeaderLayout.h), read
// tolerantly, row by row: what it holds, and the problems of the catalogue
// itself (its name, its fields and their types, rows that lack a value or
// cannot be read) as lines for a check's report. The rules between classes
// are the check's (zdb_CheckObjectLayer). Nothing it reads raises.
//
// Invariant: m_ById maps each class id of m_Rows to the first row holding it.
class zdb_ClassCatalogue {
public:
  // catalogue may be null: the catalogue then holds nothing.
  zdb_ClassCatalogue(rfm_Table const& catalogue, zdb_TableFinder const& finder);

  std::vector<zdb_ClassRow> const& Rows() const { return m_Rows; }
  // The first row of class id, or null.
  zdb_ClassRow const* Find(std::uint32_t classId) const;
  // The catalogue's problems, "class catalogue (handle H): ..." each.
  std::vector<std::string> const& Problems() const { return m_Problems; }

  // What a check's line calls the class of row: class "Name" (0x00010001),
  // or class 0x00010001 when the row has no name.
  static std::string Subject(zdb_ClassRow const& row);

private:
  // Which of the catalogue's fields hold what they should, by rom_CatalogField.
  std::vector<bool> CheckFields(rfm_Table const& catalogue);
  void ReadRow(rfm_Table const& catalogue, int number, std::vector<bool> const& usable);
  void ReadClassTable(zdb_ClassRow& row, zdb_TableFinder const& finder) const;
  void Problem(std::string const& text) { m_Problems.push_back(m_Subject + ": " + text); }

  std::string m_Subject;
  std::vector<zdb_ClassRow> m_Rows;
  std::map<std::uint32_t, std::size_t> m_ById;
  std::vector<std::string> m_Problems;
};

#endif
