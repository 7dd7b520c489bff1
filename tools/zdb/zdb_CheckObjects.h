#ifndef zdb_CheckObjects_h
#define zdb_CheckObjects_h

#include <string>

class zdb_CheckCatalogue;
class zdb_CheckPool;
class zdb_CheckReport;
class zdb_CheckSpace;

// The checks of the objects that carry a format of their own, told by their
// first word: tables (header, layout, whole rows, presence bitmaps, pooled
// strings), arrays (header, element type, whole rows, pooled strings) and
// tagged streams (every item's tag, size and pooled string). Any other
// object is a plain space, whose bytes are its owner's affair.
class zdb_CheckObjects {
public:
  zdb_CheckObjects(zdb_CheckPool const& pool, zdb_CheckCatalogue const& catalogue, zdb_CheckReport& report)
      : m_Pool(pool), m_Catalogue(catalogue), m_Report(report) {}

  // Checks the object; answers its kind, "table", "array", "stream" or "space".
  char const* Check(zdb_CheckSpace const& space);

private:
  void CheckTable(zdb_CheckSpace const& space, std::string const& subject);
  void CheckArray(zdb_CheckSpace const& space, std::string const& subject);
  void CheckStream(zdb_CheckSpace const& space, std::string const& subject);
  // Reports external when it names no string of the pool.
  void CheckString(std::string const& subject, std::string const& where, char const* external);

  zdb_CheckPool const& m_Pool;
  zdb_CheckCatalogue const& m_Catalogue;
  zdb_CheckReport& m_Report;
};

#endif
