#ifndef zdb_TableFinder_h
#define zdb_TableFinder_h

#include "rfm_Database.h"
#include "rfm_Table.h"

#include <set>
#include <string>

// Opens the tables that stored handles name. A handle read from a file may
// name anything: no object, an object of another kind, or a table that
// cannot be opened; the finder tells which instead of raising.
//
// Invariant: m_Objects holds the database's object handles as they were
// when the finder was made.
class zdb_TableFinder {
public:
  explicit zdb_TableFinder(rfm_Database const& database);

  // The table at handle, or a null table with why set to what the handle
  // names instead: "names no object", "names a stream, not a table",
  // "names a table that cannot be opened: REASON".
  rfm_Table Find(int handle, std::string& why) const;
  bool IsObject(int handle) const { return m_Objects.count(handle) != 0; }
  rfm_Database const& Database() const { return m_Database; }

private:
  rfm_Database m_Database;
  std::set<int> m_Objects;
};

#endif
