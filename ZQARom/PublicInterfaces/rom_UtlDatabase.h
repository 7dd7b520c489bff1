#ifndef rom_UtlDatabase_h
#define rom_UtlDatabase_h

#include "ZQABasExport.h"
#include "cow_String.h"
#include "mem_Alloc.h"
#include "rfm_Database.h"
#include "rfm_Handle.h"
#include "rfm_Row.h"
#include "rfm_Table.h"

// A database as a row-level copy (rom_UtlCopy) sees it: the class tables by
// class id, each class's base class, and the tables that collections name
// by handle. Rows are read, made and followed through it; it builds no
// application object.
//
// Its index tells the databases of one copy apart: it is the third word of
// the copy's keys (rom_CidOidNdx), and never changes.
class ZQA_EXPORT rom_UtlDatabase : public mem_AllocationOperators {
public:
  explicit rom_UtlDatabase(int index) : m_Index(index) {}
  rom_UtlDatabase(rom_UtlDatabase const&) = delete;
  rom_UtlDatabase& operator=(rom_UtlDatabase const&) = delete;
  virtual ~rom_UtlDatabase();

  virtual rfm_Database const& Database() const = 0;
  // The base class of class cid; kRomNoClass for a class without one.
  virtual unsigned int BaseClassID(unsigned int cid) const = 0;
  // The table of class cid; raises, naming the file, for a class that has
  // none.
  virtual rfm_Table Table(unsigned int cid) const = 0;
  // The table at handle, such as a collection's.
  virtual rfm_Table Table(rfm_Handle handle) const = 0;

  int Index() const { return m_Index; }

  // Row oid of class cid, to read or to update; both raise, naming the file,
  // for a row that the class's table does not have.
  rfm_Row Object(unsigned int cid, int oid) const;
  rfm_Row UpdateObject(unsigned int cid, int oid);
  // A new row of class cid's table.
  rfm_Row NewObject(unsigned int cid);
  // The row that the reference member of row leads to, through its columns
  // member + "#ClassID" and member + "#OID"; a null row for a null
  // reference.
  rfm_Row Object(rfm_Row const& row, cow_String const& member) const;
  rfm_Row UpdateObject(rfm_Row const& row, cow_String const& member);
  // Whether the reference member of row leads to an object: both columns
  // hold data, and they are not a null reference.
  bool ObjectIsPresent(rfm_Row const& row, cow_String const& member) const;

private:
  // The row of class cid and object id oid, which must exist.
  void CheckRow(rfm_Table const& table, unsigned int cid, int oid) const;

  int m_Index;
};

#endif
