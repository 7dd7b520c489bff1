#ifndef zdb_ObjectFile_h
#define zdb_ObjectFile_h

#include "rfm_Database.h"
#include "rfm_Table.h"
#include "zdb_ClassCatalogue.h"
#include "zdb_ObjectHeader.h"
#include "zdb_TableColumns.h"
#include "zdb_TableFinder.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// A database read as a file of the object layer: its header, its class
// catalogue, and what the references in its tables name. A file without an
// object header has no catalogue, and its tables no references. Nothing it
// reads raises (see zdb_ObjectHeader and zdb_ClassCatalogue).
//
// Invariant: m_ClassOfTable maps the handle of every class table that the
// catalogue names and that was found to the first catalogue row naming it.
class zdb_ObjectFile {
public:
  explicit zdb_ObjectFile(rfm_Database const& database);
  zdb_ObjectFile(zdb_ObjectFile const&) = delete;
  zdb_ObjectFile& operator=(zdb_ObjectFile const&) = delete;

  bool Present() const { return m_Header.Present(); }
  zdb_TableFinder const& Finder() const { return m_Finder; }
  zdb_ObjectHeader const& Header() const { return m_Header; }
  zdb_ClassCatalogue const& Catalogue() const { return m_Catalogue; }

  // The catalogue row of the class whose table is at handle, or null.
  zdb_ClassRow const* ClassOfTable(int handle) const;
  // The columns of table by what it is in this file: a class's table (that
  // of ##InternalList, ##InternalBlob, ##InternalMap or ##InternalDblCol
  // with its target columns), a collection's (a table of the object
  // layer's own, not a class's), or neither (see zdb_TableColumns.h).
  std::vector<zdb_Column> Columns(rfm_Table const& table) const;

  // A class as a reference shows it: its name in the catalogue, else the
  // name of an internal class, else its id as zdb_HexWord writes it. A name
  // that could be mistaken for more than a name (a space, a bracket, a
  // quote, bytes that are not printable ASCII) is quoted by zdb_QuotedText.
  std::string ClassName(std::uint32_t classId) const;
  // A reference as zdb shows it: "Shape[3]", the class then the oid.
  std::string Label(std::uint32_t classId, int oid) const;

private:
  zdb_TableFinder m_Finder;
  zdb_ObjectHeader m_Header;
  zdb_ClassCatalogue m_Catalogue;
  std::map<int, zdb_ClassRow const*> m_ClassOfTable;
};

#endif
