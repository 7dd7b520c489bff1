#ifndef cls_FakeDatabase_h
#define cls_FakeDatabase_h

#include "cls_ClassRegistrar.h"
#include "cls_CowValue.h"
#include "cls_FieldHandle.h"
#include "cls_HistoryEntry.h"
#include "cls_MementoRead.h"
#include "cls_MementoWrite.h"
#include "cls_Uid.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <variant>

// An in-memory stand-in for the object layer, for the framework's tests: a
// row per (class id, object id), holding field id -> value, with the object
// layer's rules of identity (a history entry per Uid on the Uid's ring,
// recorded write passes) and a cache of shared values by row and by address.
// A class with no attributes and no base class has no table.

struct cls_FakeRef {
  unsigned int m_Cid;
  int m_Oid;
  bool operator==(cls_FakeRef const& other) const { return m_Cid == other.m_Cid && m_Oid == other.m_Oid; }
};
using cls_FakeValue = std::variant<bool, char, unsigned char, short, unsigned short, int, unsigned int, float, double,
                                   std::string, cls_FakeRef>;
using cls_FakeRow = std::map<int, cls_FakeValue>;
using cls_FakeCidOid = std::pair<unsigned int, int>;

class cls_FakeDatabase {
public:
  // The class of the root row, whose fields refer to the objects written
  // first; the tests register it.
  static constexpr unsigned int kRootClass = 0x01FFFFFF;
  // The field of a derived row that holds its base row's object id.
  static constexpr int kBaseField = -1;
  // Mementos alive in all databases.
  static inline int s_LiveMementos = 0;

  explicit cls_FakeDatabase(cls_ClassRegistrar const& registrar);
  ~cls_FakeDatabase();

  // The root's row; a memento its creator owns when ownedByVisitor is false.
  cls_MementoWrite* WriteRoot(bool ownedByVisitor = true);
  cls_MementoRead* ReadRoot();
  // Within a pass, a Uid met a second time is a new object.
  void StartPass() { m_InPass = true; }
  void EndPass();
  // As a new transporter on the same file: no cached values, no identities.
  void Reopen();
  // As a file written by an older version of the class, without the field.
  void DropColumn(unsigned int cid, int fieldId);

  int RowCount(unsigned int cid) const;
  cls_FakeRow const& Row(unsigned int cid, int oid) const { return m_Rows.at({cid, oid}); }
  // The shared values the database holds, and the history entries it has.
  int CachedValues() const { return static_cast<int>(m_CowByRow.size()); }
  int Entries() const { return static_cast<int>(m_Entries.size()); }

private:
  friend class cls_FakeEntry;
  friend class cls_FakeMementoWrite;
  friend class cls_FakeMementoRead;

  bool HasTable(unsigned int cid) const;
  void CheckDerives(unsigned int stored, unsigned int expected) const;
  // The row for uid's object of class cid in this write (see MakeWriteObjImpl
  // of the object layer).
  int RowFor(unsigned int cid, cls_Uid const& uid);
  int NewRow(unsigned int cid);
  class cls_FakeEntry* EntryOf(cls_Uid const& uid) const;
  cls_Uid UidOf(cls_FakeCidOid const& row);
  cls_CowValue const& Cache(cls_FakeCidOid const& row, cls_CowValue const& value);

  cls_ClassRegistrar const& m_Registrar;
  std::map<cls_FakeCidOid, cls_FakeRow> m_Rows;
  std::set<cls_FakeCidOid> m_Dropped;
  std::map<cls_FakeCidOid, class cls_FakeEntry*> m_Entries;
  std::map<cls_FakeCidOid, cls_CowValue> m_CowByRow;
  std::map<void const*, cls_FakeCidOid> m_RowByAddress;
  std::map<void const*, cls_FakeCidOid> m_PtrRows;
  int m_PtrOutputs = 0;
  bool m_InPass = false;
  bool m_Ending = false;
};

#endif
