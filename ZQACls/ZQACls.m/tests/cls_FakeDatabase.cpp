#include "cls_FakeDatabase.h"

#include "cls_ClassMetadata.h"
#include "cls_ReadVisitor.h"
#include "cls_Static.h"
#include "cls_UidCatalogEntry.h"

#include <stdexcept>

namespace {
cls_FakeRef const kNullRef{cls_kNoClass, -1};
}

// A row's entry on its object's identity ring, as the object layer's history
// entries are.
class cls_FakeEntry : public cls_HistoryEntry {
public:
  cls_FakeEntry(cls_FakeDatabase& owner, cls_FakeCidOid const& row) : m_Owner(owner), m_Row(row) {}
  ~cls_FakeEntry() override {
    if (!m_Owner.m_Ending) m_Owner.m_Entries.erase(m_Row);
  }
  cls_FakeDatabase& m_Owner;
  cls_FakeCidOid m_Row;
  cls_UidCatalogEntry* m_Identity = nullptr;
  bool m_Recorded = false;
};

class cls_FakeMementoWrite : public cls_MementoWrite {
public:
  cls_FakeMementoWrite(cls_FakeDatabase& db, unsigned int cid, int oid, bool ownedByVisitor = true)
      : cls_MementoWrite(ownedByVisitor ? kOwnedByVisitor : kOwnedByCreator), m_Db(db), m_Cid(cid), m_Oid(oid) {
    ++cls_FakeDatabase::s_LiveMementos;
  }
  ~cls_FakeMementoWrite() override { --cls_FakeDatabase::s_LiveMementos; }

  cls_ClassRegistrar const& Registrar() const override { return m_Db.m_Registrar; }
  bool FieldIsPresent(cls_FieldHandle const& field) const override {
    return m_Db.m_Registrar.ConstGet(m_Cid).FindAttribute(field.Name()).m_FieldId >= 0;
  }
  cls_MementoWrite* MakeWriteObjWithPtr(cls_FieldHandle const& field, unsigned int cid, cls_Uid const& uid,
                                        void const* ptr) override {
    bool const cached = ptr != nullptr && m_Db.m_PtrOutputs > 0;
    if (cached && m_Db.m_PtrRows.count(ptr)) return Refer(field, m_Db.m_PtrRows.at(ptr));
    cls_FakeMementoWrite* made = Make(field, cid, uid);
    if (made != nullptr && cached) m_Db.m_PtrRows[ptr] = {cid, made->m_Oid};
    return made;
  }
  cls_MementoWrite* MakeWriteObj(cls_FieldHandle const& field, unsigned int cid, cls_Uid const& uid,
                                 cls_CowValue const* cow) override {
    if (cow != nullptr && m_Db.m_RowByAddress.count(cow->Address()))
      return Refer(field, m_Db.m_RowByAddress.at(cow->Address()));
    cls_FakeMementoWrite* made = Make(field, cid, uid);
    if (made != nullptr && cow != nullptr) m_Db.Cache({cid, made->m_Oid}, *cow);
    return made;
  }
  cls_MementoWrite* MakeBaseWriteObj(unsigned int cid, cls_Uid const& uid) override {
    if (m_Db.m_Registrar.ConstGet(m_Cid).BaseClassId() != cid) throw std::runtime_error("not the base class");
    if (!m_Db.HasTable(cid)) {
      Row()[cls_FakeDatabase::kBaseField] = -1;
      return nullptr;
    }
    auto* made = new cls_FakeMementoWrite(m_Db, cid, m_Db.RowFor(cid, uid));
    Row()[cls_FakeDatabase::kBaseField] = made->m_Oid;
    return made;
  }
  void WriteNullObj(cls_FieldHandle const& field) override {
    if (Row().count(field.FieldId())) Row()[field.FieldId()] = kNullRef;
  }

  void Write(cls_FieldHandle const& field, bool const& value) override { Row()[field.FieldId()] = value; }
  void Write(cls_FieldHandle const& field, char const& value) override { Row()[field.FieldId()] = value; }
  void Write(cls_FieldHandle const& field, unsigned char const& value) override { Row()[field.FieldId()] = value; }
  void Write(cls_FieldHandle const& field, short const& value) override { Row()[field.FieldId()] = value; }
  void Write(cls_FieldHandle const& field, unsigned short const& value) override { Row()[field.FieldId()] = value; }
  void Write(cls_FieldHandle const& field, int const& value) override { Row()[field.FieldId()] = value; }
  void Write(cls_FieldHandle const& field, unsigned int const& value) override { Row()[field.FieldId()] = value; }
  void Write(cls_FieldHandle const& field, float const& value) override { Row()[field.FieldId()] = value; }
  void Write(cls_FieldHandle const& field, double const& value) override { Row()[field.FieldId()] = value; }
  void Write(cls_FieldHandle const& field, cow_String const& value) override {
    Row()[field.FieldId()] = std::string(value.CStr(), value.Length());
  }
  void WriteEnumAsInt(cls_FieldHandle const&, int const&) override { throw std::runtime_error("enum as int"); }

  void CheckCollectionType(cls_CollectionType implemented, cow_String const& member) const override {
    if (!cls_CollectionsMatch(m_Db.m_Registrar.ConstGet(m_Cid).FindAttribute(member).m_Collection, implemented))
      throw std::runtime_error(std::string("collection of ") + member.CStr());
  }
  void StartSharedPtrOutput() override { ++m_Db.m_PtrOutputs; }
  void EndSharedPtrOutput() override {
    if (--m_Db.m_PtrOutputs == 0) m_Db.m_PtrRows.clear();
  }

private:
  cls_FakeRow& Row() { return m_Db.m_Rows.at({m_Cid, m_Oid}); }
  cls_MementoWrite* Refer(cls_FieldHandle const& field, cls_FakeCidOid const& row) {
    Row()[field.FieldId()] = cls_FakeRef{row.first, row.second};
    return nullptr;
  }
  cls_FakeMementoWrite* Make(cls_FieldHandle const& field, unsigned int cid, cls_Uid const& uid) {
    if (!m_Db.HasTable(cid)) {
      Row()[field.FieldId()] = kNullRef;
      return nullptr;
    }
    auto* made = new cls_FakeMementoWrite(m_Db, cid, m_Db.RowFor(cid, uid));
    Row()[field.FieldId()] = cls_FakeRef{cid, made->m_Oid};
    return made;
  }

  cls_FakeDatabase& m_Db;
  unsigned int m_Cid;
  int m_Oid;
};

class cls_FakeMementoRead : public cls_MementoRead {
public:
  cls_FakeMementoRead(cls_FakeDatabase& db, cls_FakeCidOid const& row, cls_Uid const& uid)
      : cls_MementoRead(kOwnedByVisitor), m_Db(db), m_Cid(row.first), m_Row(db.m_Rows.at(row)), m_Uid(uid) {
    ++cls_FakeDatabase::s_LiveMementos;
  }
  ~cls_FakeMementoRead() override { --cls_FakeDatabase::s_LiveMementos; }

  void const* DbId() const override { return &m_Db; }
  cls_Uid const& GetUid() const override { return m_Uid; }
  bool FieldIsPresent(cls_FieldHandle const& field) const override {
    return m_Db.m_Registrar.ConstGet(m_Cid).FindAttribute(field.Name()).m_FieldId >= 0 &&
           !m_Db.m_Dropped.count({m_Cid, field.FieldId()});
  }
  bool DataIsPresent(cls_FieldHandle const& field) const override { return m_Row.count(field.FieldId()) != 0; }
  bool ObjIsPresent(cls_FieldHandle const& field) const override {
    return DataIsPresent(field) && std::holds_alternative<cls_FakeRef>(m_Row.at(field.FieldId()));
  }
  cls_MementoRead* MakeReadObj(cls_FieldHandle const& field) override {
    cls_FakeRef const ref = std::get<cls_FakeRef>(m_Row.at(field.FieldId()));
    return ref.m_Oid < 0 ? nullptr : Make({ref.m_Cid, ref.m_Oid});
  }
  cls_MementoRead* MakeBaseReadObj() override {
    int const oid =
        m_Row.count(cls_FakeDatabase::kBaseField) ? std::get<int>(m_Row.at(cls_FakeDatabase::kBaseField)) : -1;
    return oid < 0 ? nullptr : Make({m_Db.m_Registrar.ConstGet(m_Cid).BaseClassId(), oid});
  }

  bool Read(cls_FieldHandle const& field, bool const& type) override { return Get(field, type); }
  char Read(cls_FieldHandle const& field, char const& type) override { return Get(field, type); }
  unsigned char Read(cls_FieldHandle const& field, unsigned char const& type) override { return Get(field, type); }
  short Read(cls_FieldHandle const& field, short const& type) override { return Get(field, type); }
  unsigned short Read(cls_FieldHandle const& field, unsigned short const& type) override { return Get(field, type); }
  int Read(cls_FieldHandle const& field, int const& type) override { return Get(field, type); }
  unsigned int Read(cls_FieldHandle const& field, unsigned int const& type) override { return Get(field, type); }
  float Read(cls_FieldHandle const& field, float const& type) override { return Get(field, type); }
  double Read(cls_FieldHandle const& field, double const& type) override { return Get(field, type); }
  cow_String Read(cls_FieldHandle const& field, cow_String const&) override {
    return cow_String(Get(field, std::string()).c_str());
  }
  int ReadEnumAsInt(cls_FieldHandle const&) override { throw std::runtime_error("enum as int"); }

  void* ReadObjPtr(cls_FieldHandle const& field, unsigned int cid) override {
    cls_FakeRef const ref = Get(field, kNullRef);
    if (ref.m_Oid < 0) return nullptr;
    m_Db.CheckDerives(ref.m_Cid, cid);
    return m_Db.m_Registrar.ConstGet(ref.m_Cid).Ctor(cls_ReadVisitor(Make({ref.m_Cid, ref.m_Oid})));
  }
  cls_CowValue const& ReadObjCow(cls_FieldHandle const& field, unsigned int cid) override {
    cls_FakeRef const ref = Get(field, kNullRef);
    if (ref.m_Oid < 0) return cls_Static::ConstIntCOW();
    m_Db.CheckDerives(ref.m_Cid, cid);
    cls_FakeCidOid const row{ref.m_Cid, ref.m_Oid};
    if (m_Db.m_CowByRow.count(row)) return m_Db.m_CowByRow.at(row);
    cls_ClassMetadata const& stored = m_Db.m_Registrar.ConstGet(ref.m_Cid);
    return m_Db.Cache(row, cls_CowValue(stored.Ctor(cls_ReadVisitor(Make(row))), stored));
  }

private:
  template <class T>
  T Get(cls_FieldHandle const& field, T const& absent) const {
    return m_Row.count(field.FieldId()) ? std::get<T>(m_Row.at(field.FieldId())) : absent;
  }
  cls_FakeMementoRead* Make(cls_FakeCidOid const& row) { return new cls_FakeMementoRead(m_Db, row, m_Db.UidOf(row)); }

  cls_FakeDatabase& m_Db;
  unsigned int m_Cid;
  cls_FakeRow const& m_Row;
  cls_Uid m_Uid;
};

cls_FakeDatabase::cls_FakeDatabase(cls_ClassRegistrar const& registrar) : m_Registrar(registrar) {
  m_Rows[{kRootClass, 0}];
}

cls_FakeDatabase::~cls_FakeDatabase() { Reopen(); }

void cls_FakeDatabase::Reopen() {
  // The cached objects end first; their identities may end entries here.
  m_CowByRow.clear();
  m_RowByAddress.clear();
  m_Ending = true;
  for (auto const& [row, entry] : m_Entries) delete entry;
  m_Entries.clear();
  m_Ending = false;
}

cls_MementoWrite* cls_FakeDatabase::WriteRoot(bool ownedByVisitor) {
  return new cls_FakeMementoWrite(*this, kRootClass, 0, ownedByVisitor);
}

cls_MementoRead* cls_FakeDatabase::ReadRoot() { return new cls_FakeMementoRead(*this, {kRootClass, 0}, cls_Uid()); }

void cls_FakeDatabase::EndPass() {
  m_InPass = false;
  for (auto const& [row, entry] : m_Entries) entry->m_Recorded = false;
}

void cls_FakeDatabase::DropColumn(unsigned int cid, int fieldId) {
  m_Dropped.insert({cid, fieldId});
  for (auto& [row, fields] : m_Rows)
    if (row.first == cid) fields.erase(fieldId);
}

int cls_FakeDatabase::RowCount(unsigned int cid) const {
  int count = 0;
  for (auto const& [row, fields] : m_Rows) count += row.first == cid;
  return count;
}

bool cls_FakeDatabase::HasTable(unsigned int cid) const {
  cls_ClassMetadata const& metadata = m_Registrar.ConstGet(cid);
  return metadata.AttributeCount() > 0 || metadata.BaseClassId() != cls_kNoClass;
}

void cls_FakeDatabase::CheckDerives(unsigned int stored, unsigned int expected) const {
  for (unsigned int cid = stored; cid != expected; cid = m_Registrar.ConstGet(cid).BaseClassId())
    if (cid == cls_kNoClass) throw std::runtime_error("stored class does not derive from the expected one");
}

int cls_FakeDatabase::RowFor(unsigned int cid, cls_Uid const& uid) {
  cls_FakeEntry* entry = EntryOf(uid);
  if (entry != nullptr && entry->m_Row.first != cid) throw std::runtime_error("class mismatch for UID");
  if (entry != nullptr && !(m_InPass && entry->m_Recorded)) {
    entry->m_Recorded = m_InPass;
    return entry->m_Row.second;
  }
  // A Uid met again in a pass is another object.
  if (entry != nullptr) uid.NewUid();
  int const oid = NewRow(cid);
  auto* made = new cls_FakeEntry(*this, {cid, oid});
  uid.LinkHistoryEntry(made);
  made->m_Identity = uid.CatalogEntry();
  made->m_Recorded = m_InPass;
  m_Entries[{cid, oid}] = made;
  return oid;
}

int cls_FakeDatabase::NewRow(unsigned int cid) {
  int const oid = RowCount(cid);
  m_Rows[{cid, oid}];
  return oid;
}

cls_FakeEntry* cls_FakeDatabase::EntryOf(cls_Uid const& uid) const {
  for (cls_HistoryEntry* entry = uid.FirstHistoryEntry(); entry != nullptr; entry = uid.NextHistoryEntry(entry))
    if (auto* mine = dynamic_cast<cls_FakeEntry*>(entry); mine != nullptr && &mine->m_Owner == this) return mine;
  return nullptr;
}

cls_Uid cls_FakeDatabase::UidOf(cls_FakeCidOid const& row) {
  if (m_Entries.count(row)) return cls_Uid(m_Entries.at(row)->m_Identity);
  cls_Uid uid;
  auto* made = new cls_FakeEntry(*this, row);
  uid.LinkHistoryEntry(made);
  made->m_Identity = uid.CatalogEntry();
  m_Entries[row] = made;
  return uid;
}

cls_CowValue const& cls_FakeDatabase::Cache(cls_FakeCidOid const& row, cls_CowValue const& value) {
  cls_CowValue& cached = m_CowByRow[row];
  m_RowByAddress.erase(cached.Address());
  cached = value;
  m_RowByAddress[cached.Address()] = row;
  return cached;
}
