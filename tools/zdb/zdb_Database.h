#ifndef zdb_Database_h
#define zdb_Database_h

#include "rfm_Database.h"
#include "rfm_File.h"

#include <string>
#include <vector>

// One object of a database as zdb lists it: its handle, its type as
// rfm_Database::HandleType tells it, and the sizes of its chain of extents.
struct zdb_Object {
  rfm_Handle m_Handle;
  rfm_Type m_Type;
  utl_FileOffset m_Length;
  utl_FileOffset m_Allocation;
  int m_Extents;  // extents that hold bytes; an object not yet written has none
};

// A database file opened for reading, whatever its kind, with what zdb
// makes of it: the kind of file, and its objects as zdb lists them.
class zdb_Database {
public:
  // Raises zdb_Failure naming the file when it cannot be opened as a database.
  explicit zdb_Database(std::string const& name);

  std::string const& Name() const { return m_Name; }
  rfm_File const& File() const { return m_File; }
  rfm_Database const& Database() const { return m_Database; }
  bool Compressed() const;
  // "plain" or "compressed".
  char const* Kind() const { return Compressed() ? "compressed" : "plain"; }

  std::vector<rfm_Handle> Handles() const;
  zdb_Object Describe(rfm_Handle handle) const;
  // Whether handle names an object.
  bool IsObject(rfm_Handle handle) const;

private:
  std::string m_Name;
  rfm_File m_File;
  rfm_Database m_Database;
};

// What the well-known handles hold, "" for any other.
char const* zdb_WellKnownRole(rfm_Handle handle);

#endif
