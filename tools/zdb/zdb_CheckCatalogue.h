#ifndef zdb_CheckCatalogue_h
#define zdb_CheckCatalogue_h

#include "rfm_Type.h"
#include "utl_FileOffset.h"

#include <map>
#include <string>
#include <vector>

class zdb_CheckPool;
class zdb_CheckReport;
class zdb_CheckSpace;

// A table layout as the checker reads it from its catalogue record: the
// fields in position order (sorted by name, as every reader sorts them),
// each with its offset in a row.
struct zdb_CheckedLayout {
  struct Field {
    std::string m_Name;
    int m_Type;  // as stored: an rfm_Type once the record is known to be readable
    int m_Offset;
  };
  std::string m_Name;
  std::vector<Field> m_Fields;
  int m_BitmapWords = 0;
  int m_RowSize = 0;
};

// The check of the table catalogue (handle 3): every record's length, its
// table and field names (strings of the pool), its field types, and that no
// table name has two records. It keeps the layouts for the checks of rows.
//
//  offset  size  content
//       0     4  0xFAAAEBBB
//       4        records: length (4 bytes, 12 + 12 per field), name (8), fields of type (4) and name (8)
class zdb_CheckCatalogue {
public:
  static constexpr char const* kSubject = "table catalogue (handle 3)";

  // space is null when the file has no object at handle 3.
  zdb_CheckCatalogue(zdb_CheckSpace const* space, zdb_CheckPool const& pool, zdb_CheckReport& report);

  // The layout whose record is at handle, or null.
  zdb_CheckedLayout const* Find(utl_FileOffset handle) const;

private:
  void Walk();
  // Reads the record at offset, length bytes long; false when it is no
  // record a reader can parse.
  bool ReadRecord(utl_FileOffset offset, int length, zdb_CheckedLayout& layout);

  zdb_CheckSpace const* m_Space;
  zdb_CheckPool const& m_Pool;
  zdb_CheckReport& m_Report;
  std::map<utl_FileOffset, zdb_CheckedLayout> m_Layouts;
  std::map<std::string, utl_FileOffset> m_Names;
};

// The stored size of a field of type in a row; 0 for a type no field has.
int zdb_FieldSize(int type);

#endif
