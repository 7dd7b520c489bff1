#ifndef rom_TransporterMetadata_h
#define rom_TransporterMetadata_h

#include "rfm_TableMetadata.h"
#include "thr_ThreadSingleton.h"

#include <vector>

class rfm_Database;

// The layouts of the tables the object layer itself owns: the catalogue,
// and the tables that hold collections, one instance per collection. Each
// database a transporter serves has them bound, so that they are made by
// name. One per thread: binding needs no lock.
//
//   table                columns, in this order
//   ##Catalog            Class ID int, Class Table handle, Class Name string, Base Class ID int, Class Version int
//   ##List               OID int, ClassID int
//   ##StringArray        Data string
//   ##HandleArray        Data handle
//   ##Map                OID int, ClassID int, Key string
//   ##MapString2Handle   Handle handle, Key string
//   ##MapString2Double   Data double, Key string
//   ##MapString2Float    Data float, Key string
//   ##MapString2Int      Data int, Key string
//   ##MapString2String   Data string, Key string
//   ##MapInt2Obj         OID int, ClassID int, Key int
//   ##MapInt2Handle      Handle handle, Key int
//   ##MapInt2Double      Data double, Key int
//   ##MapInt2Float       Data float, Key int
//   ##MapInt2Int         Data int, Key int
//   ##MapInt2String      Data string, Key int
class rom_TransporterMetadata : public thr_ThreadSingleton<rom_TransporterMetadata> {
public:
  // Binds the collection tables' layouts in db.
  void Bind(rfm_Database const& db) const;
  // Binds the catalogue's layout in db.
  void BindCatalog(rfm_Database const& db) const;

  rfm_TableMetadata const& Catalog() const { return m_Tables.front(); }

private:
  friend class thr_ThreadSingleton<rom_TransporterMetadata>;
  rom_TransporterMetadata();
  static void BindIfPossible(rfm_Database const& db, rfm_TableMetadata const& table);

  std::vector<rfm_TableMetadata> m_Tables;  // the catalogue first
};

#endif
