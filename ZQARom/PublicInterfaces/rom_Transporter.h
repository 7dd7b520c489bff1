#ifndef rom_Transporter_h
#define rom_Transporter_h

#include "ZQABasExport.h"
#include "cls_ClassRegistrar.h"
#include "cls_CollectionType.h"
#include "cls_PC.h"
#include "cls_PTrie.h"
#include "cls_PTrieIter.h"
#include "cow_CountedHld.h"
#include "cow_Map.h"
#include "cow_String.h"
#include "omi_UintTable.h"
#include "rfm_Database.h"
#include "rfm_Table.h"
#include "rfm_TableMetadata.h"
#include "rom_ClassBag.h"
#include "rom_CowBarn.h"
#include "rom_History.h"
#include "rom_TransporterBase.h"

#include <vector>

class cls_CowValue;
class cls_Uid;
class rom_MementoWrite;
class rom_PtrBarn;
class rom_ZDBHeaderParser;
class rom_WIPInterface;
class rom_WriteRecord;

// The object layer's object for one open database file: it owns the
// database, the catalogue of class tables, a class bag for each class it
// has touched, and the ring of persistent containers registered with it.
// Everything that moves objects between memory and rows asks it for tables
// and class metadata; it writes no application data itself.
//
// A class gets its table on first use: on the write path a class new to the
// file gets a table and a catalogue row; on the read path its table must
// exist. Opening a file opens no class table.
//
// Used by one thread at a time. The registrar must outlive the transporter.
class ZQA_EXPORT rom_Transporter : public rom_TransporterBase {
public:
  // A new database in file (see rfm_Database::Create for magic, description
  // and creation time), with a new header recording releaseType (negative:
  // this release's).
  rom_Transporter(cls_ClassRegistrar const& registrar, rfm_File const& file, cow_String const& magic,
                  cow_String const& description, long creationTime, int releaseType);
  // An existing database; a releaseType of 0 or more is recorded in its
  // header, which needs a writable file.
  rom_Transporter(cls_ClassRegistrar const& registrar, rfm_File const& file, cow_String const& magic,
                  int releaseType);
  rom_Transporter(rom_Transporter const&) = delete;
  rom_Transporter& operator=(rom_Transporter const&) = delete;
  ~rom_Transporter() override;

  void RegisterPC(cls_PC* container);
  // Both store the pointer and answer the previous one, so that scopes nest.
  rom_PtrBarn* SetPtrBarn(rom_PtrBarn* barn);
  rom_WriteRecord* SetWriteRecord(rom_WriteRecord* record);
  rom_PtrBarn* PtrBarn() const { return m_PtrBarn; }
  rom_History& History() { return m_History; }
  rom_CowBarn& CowBarn() { return m_CowBarn; }
  cls_ClassRegistrar const& Registrar() const { return *m_Registrar; }
  rom_WriteRecord* WriteRecord() const { return m_WriteRecord; }
  void SetWIPInterface(rom_WIPInterface* wip) { m_WIP = wip; }
  rom_WIPInterface* WIPInterface() const { return m_WIP; }

  // Flush pushes the containers' state into their agents, then flushes the
  // class tables, the catalogue and the database; FlushDatabase only the
  // catalogue and the database. Both do nothing on a read-only database.
  void Flush();
  void FlushDatabase();
  void FlushPCs();
  // Takes in what a writer flushed since: 0 when nothing changed (the
  // tables are left as they were), 1 after refreshing every open table; a
  // reader then also knows the classes the writer added.
  int Snap();

  // The class's current metadata, or the given version's: the object
  // layer's internal classes first, then the application's registrar.
  cls_ClassMetadata const& GetClassMD(unsigned int cid) const;
  cls_ClassMetadata const& GetClassMD(unsigned int cid, int version) const;
  // The metadata nearest up the class's chain of base classes that has a
  // copy-on-write destructor; raises when no class of the chain has one.
  cls_ClassMetadata const& FindMDWithDtor(unsigned int cid) const;
  int GetTableSize(unsigned int cid);
  void FillMapClassName2ClassVersion(int defaultVersion);
  cow_Map<int, int> const& GetMapClassID2ParentID() const { return m_MapClassID2ParentID; }

  // Class bags: the write path makes the class's table if the file has none,
  // the read path requires it.
  rom_ClassBag& GetClassBagForWrite(unsigned int cid);
  rom_ClassBag& GetClassBagForWrite(unsigned int cid, int version);
  rom_ClassBag& GetClassBagForRead(unsigned int cid);
  void SetupTable(cls_ClassMetadata const& md);
  void SetupTableMetadata(cls_ClassMetadata const& md);
  rfm_TableMetadata const& GetTableMetadata(unsigned int cid, int version) const;
  int GetPreviousVersion(unsigned int cid, int version) const;
  int GetNextVersion(unsigned int cid, int version) const;

  void CheckInheritence(unsigned int derived, unsigned int base);

  // The memento of the row of the object uid of class cid, referred to from
  // a collection's row, whose first two columns are the object id and the
  // class id; null when nothing more is to be written (a class without a
  // table; a copy-on-write value cow that the cow barn holds, stored
  // already; or, with ptr in the current pointer barn, an object written
  // already in this output).
  rom_MementoWrite* MakeRefMemento(rfm_Row& row, unsigned int cid, cls_Uid const& uid,
                                   cls_CowValue const* cow = nullptr);
  rom_MementoWrite* MakeRefMementoWithPtr(rfm_Row& row, unsigned int cid, cls_Uid const& uid, void const* ptr);

  // Builds the object in row oid of class cid, as cid's constructor does,
  // and answers it; the caller owns it.
  void* ReallyReadObjPtr(int oid, unsigned int cid, cls_Uid const& uid);
  // The object in row oid of class cid, which must be expected or derive
  // from it: the current pointer barn's, else a new one (kept in the barn if
  // there is one); the shared value of the cow barn, else a new one kept
  // there. A class that builds nothing answers null or the empty value.
  void* CheckReadObjPtr(int oid, unsigned int cid, unsigned int expected);
  cls_CowValue const& CheckReadObjCow(int oid, unsigned int cid, unsigned int expected);
  void CheckCollectionType(cls_CollectionType implemented, unsigned int cid, cow_String const& member) const;

  rfm_Database const& Database() const { return m_Database; }
  cow_String const& FileName() const { return m_FileName; }
  rfm_Table const& Catalog() const { return m_Catalog; }
  int MajorVersion() const { return m_MajorVersion; }
  int MinorVersion() const { return m_MinorVersion; }
  int UpdateVersion() const { return m_UpdateVersion; }
  int ReleaseType() const { return m_ReleaseType; }

private:
  void InitializeInternalTables();
  void InitNew(int releaseType);
  void InitExsisting(int releaseType);
  void TakeHeader(rom_ZDBHeaderParser const& header);
  void ReadNewCatalogRows();
  rfm_TableMetadata ClassTableMetadata(cls_ClassMetadata const& md, rom_ClassBag* bag, bool assertOnBadType) const;
  rom_ClassBag* FindBag(unsigned int cid) const;
  // Runs action on the table of every class bag that has one, in class id order.
  void ForEachClassTable(int (rfm_Table::*action)() const) const;
  // The base class of cid, one step further up its chain of base classes;
  // raises when steps pass any real hierarchy's depth: the application's
  // metadata then has a circle of base classes.
  unsigned int BaseClassOf(unsigned int cid, int& steps) const;
  // MakeRefMemento, raising mismatch for an identity of another class.
  rom_MementoWrite* MakeRefMementoImpl(rfm_Row& row, unsigned int cid, cls_Uid const& uid, char const* mismatch);

  cls_ClassRegistrar const* m_Registrar;
  cls_ClassRegistrar m_InternalRegistrar;
  // Made before everything below: a failing create or open leaves only the
  // registrars to unwind.
  rfm_Database m_Database;
  cow_String m_FileName;
  cls_PTrie<unsigned int, cow_CountedHld<rom_ClassBag>, 1> m_ClassBags;
  rfm_Table m_Catalog;
  omi_UintTable<rfm_Handle> m_ClassHandles;
  cow_Map<unsigned int, cow_Map<int, rfm_TableMetadata>> m_TableMetadata;
  int m_MajorVersion = 0;
  int m_MinorVersion = 0;
  int m_UpdateVersion = 0;
  int m_ReleaseType = -1;
  rom_History m_History;
  rom_CowBarn m_CowBarn;
  cls_PC m_PCRing;
  cow_Map<int, int> m_MapClassID2ParentID;
  int m_CatalogRowsRead = 0;
  rom_PtrBarn* m_PtrBarn = nullptr;
  rom_WriteRecord* m_WriteRecord = nullptr;
  rom_WIPInterface* m_WIP = nullptr;
  // The rows whose objects are being built, innermost last: a reference
  // back to one of them is a cycle, which building would follow for ever.
  std::vector<rom_CidOid> m_Building;
};

#endif
