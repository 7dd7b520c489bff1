#include "rom_MementoWrite.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cls_CowValue.h"
#include "cls_FieldHandle.h"
#include "rom_ClassBag.h"
#include "rom_CowBarn.h"
#include "rom_History.h"
#include "rom_HistoryEntry.h"
#include "rom_HeaderLayout.h"
#include "rom_PtrBarn.h"
#include "rom_Transporter.h"
#include "rom_WriteRecord.h"
#include "typ_ArchCompTable.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_MementoWrite";

char const kMismatch[] = "rom_MementoWrite::MakeWriteObjImpl - Class mismatch for UID - prev: %s, this: %s";
char const kEnumAsInt[] =
    "rom_MementoWrite::WriteEnumAsInt - Enum persistence must use string based interface: CLS_WRITE_ENUM.";

// The stored null reference.
rom_CidOid const kNullReference(cls_kNoClass, -1);

// The bag of a memento of no class: no table, no columns.
rom_ClassBag const& NoClassBag() {
  static rom_ClassBag const bag(-1);
  return bag;
}
}  // namespace

rom_MementoWrite::rom_MementoWrite(rom_Transporter& transporter, unsigned int cid, int oid)
    : rom_MementoWrite(transporter, cid, oid, kOwnedByVisitor) {}

rom_MementoWrite::rom_MementoWrite(rom_Transporter& transporter, unsigned int cid, int oid, Ownership ownership)
    : cls_MementoWrite(ownership), m_Transporter(&transporter), m_Bag(&transporter.GetClassBagForWrite(cid)),
      m_Cid(cid) {
  if (!m_Bag->HasTable()) return;
  m_Row = oid < 0 ? m_Bag->Table().NewRow() : m_Bag->Table().UpdateRow(oid);
}

rom_MementoWrite::rom_MementoWrite(rom_Transporter& transporter)
    : cls_MementoWrite(kOwnedByCreator), m_Transporter(&transporter), m_Bag(&NoClassBag()), m_Cid(cls_kNoClass) {}

rom_MementoWrite::~rom_MementoWrite() = default;

cls_ClassRegistrar const& rom_MementoWrite::Registrar() const { return m_Transporter->Registrar(); }

int rom_MementoWrite::Oid() const { return m_Row.IsNull() ? -1 : m_Row.Location(); }

void rom_MementoWrite::WriteReference(cls_FieldHandle const& field, rom_CidOid const& target) {
  m_LastReference = target;
  // A memento without a row (a root's parent) only keeps the reference: its
  // columns are not looked up, which for a member of no column (a root's)
  // would build their names.
  if (m_Row.IsNull()) return;
  rfm_FieldHandle oid(-1), classId(-1);
  m_Bag->ReferenceColumns(field, oid, classId);
  WriteColumns(oid, classId, target);
}

void rom_MementoWrite::WriteColumns(rfm_FieldHandle const& oid, rfm_FieldHandle const& classId,
                                    rom_CidOid const& target) const {
  m_Row.WriteFieldInt(oid, target.m_Oid);
  m_Row.WriteFieldInt(classId, static_cast<int>(target.m_Cid));
}

bool rom_MementoWrite::FieldIsPresent(cls_FieldHandle const& field) const {
  return !m_Row.IsNull() && m_Row.FieldIsPresent(m_Bag->Column(field));
}

rom_MementoWrite* rom_MementoWrite::MakeWriteObjImpl(rom_Transporter& transporter, unsigned int cid,
                                                     cls_Uid const& uid, char const* mismatch) {
  rom_History& history = transporter.History();
  rom_WriteRecord* record = transporter.WriteRecord();
  rom_HistoryEntry* entry = history.GetEntry(uid);
  if (entry != nullptr) {
    if (entry->ClassId() != cid)
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate(mismatch), typ_ArchCompTable::GetName(entry->ClassId()),
                                            typ_ArchCompTable::GetName(cid)));
    // The object's row is written over in place.
    if (record == nullptr || record->Record(entry)) return new rom_MementoWrite(transporter, cid, entry->ObjectId());
    // Written already in this pass: the identity met again is a new object.
    uid.NewUid();
  }
  std::unique_ptr<rom_MementoWrite> made(new rom_MementoWrite(transporter, cid, -1));
  rom_HistoryEntry* fresh = history.MakeEntry(uid, cid, made->Oid());
  if (record != nullptr) record->Record(fresh);
  return made.release();
}

cls_MementoWrite* rom_MementoWrite::MakeWriteObj(cls_FieldHandle const& field, unsigned int cid, cls_Uid const& uid,
                                                 cls_CowValue const* cow) {
  if (!m_Transporter->GetClassBagForWrite(cid).HasTable()) {
    WriteReference(field, kNullReference);
    return nullptr;
  }
  rom_CowBarn& barn = m_Transporter->CowBarn();
  bool const shared = cow != nullptr && cow->HasValue();
  // A collection without an identity of its own belongs to its owner's
  // member: the row the member refers to already is written over.
  if (!shared && uid.IsNull()) {
    if (rom_MementoWrite* existing = ExistingCollection(field, cid)) return existing;
  }
  // A value stored already is only referred to: one lookup, however deep
  // the object.
  if (shared) {
    if (rom_CowBarnStall const* stall = barn.Stall(*cow)) {
      WriteReference(field, stall->Row());
      return nullptr;
    }
  }
  std::unique_ptr<rom_MementoWrite> made(MakeWriteObjImpl(*m_Transporter, cid, uid, kMismatch));
  WriteReference(field, rom_CidOid(cid, made->Oid()));
  if (shared) barn.Insert(cid, made->Oid(), *cow, m_Transporter->FindMDWithDtor(cid));
  return made.release();
}

cls_MementoWrite* rom_MementoWrite::MakeWriteObjWithPtr(cls_FieldHandle const& field, unsigned int cid,
                                                        cls_Uid const& uid, void const* ptr) {
  if (!m_Transporter->GetClassBagForWrite(cid).HasTable()) {
    WriteReference(field, kNullReference);
    return nullptr;
  }
  rom_PtrBarn* barn = ptr != nullptr ? m_Transporter->PtrBarn() : nullptr;
  if (barn != nullptr) {
    if (rom_PtrBarnStall const* stall = barn->Stall(ptr)) {
      WriteReference(field, stall->m_Row);
      return nullptr;
    }
  }
  std::unique_ptr<rom_MementoWrite> made(MakeWriteObjImpl(*m_Transporter, cid, uid, kMismatch));
  WriteReference(field, rom_CidOid(cid, made->Oid()));
  if (barn != nullptr) barn->Insert(cid, made->Oid(), ptr);
  return made.release();
}

cls_MementoWrite* rom_MementoWrite::MakeBaseWriteObj(unsigned int cid, cls_Uid const& uid) {
  m_Transporter->CheckInheritence(m_Cid, cid);
  rfm_FieldHandle const baseOid(kRomBaseClassOidColumn);
  if (!m_Transporter->GetClassBagForWrite(cid).HasTable()) {
    if (!m_Row.IsNull()) m_Row.WriteFieldInt(baseOid, -1);
    return nullptr;
  }
  std::unique_ptr<rom_MementoWrite> made(MakeWriteObjImpl(*m_Transporter, cid, uid, kMismatch));
  if (!m_Row.IsNull()) m_Row.WriteFieldInt(baseOid, made->Oid());
  return made.release();
}

void rom_MementoWrite::WriteNullObj(cls_FieldHandle const& field) {
  if (m_Row.IsNull()) return;
  rfm_FieldHandle oid(-1), classId(-1);
  m_Bag->ReferenceColumns(field, oid, classId);
  // A new row holds no data in the columns, which reads as null already.
  if (!m_Row.DataIsPresent(oid)) return;
  m_LastReference = kNullReference;
  WriteColumns(oid, classId, kNullReference);
}

void rom_MementoWrite::Write(cls_FieldHandle const& field, unsigned int cid, int oid) {
  WriteReference(field, rom_CidOid(cid, oid));
}

void rom_MementoWrite::WriteInt(cls_FieldHandle const& field, int value) {
  if (!m_Row.IsNull()) m_Row.WriteFieldInt(m_Bag->Column(field), value);
}

void rom_MementoWrite::Write(cls_FieldHandle const& field, bool const& value) { WriteInt(field, value ? 1 : 0); }
void rom_MementoWrite::Write(cls_FieldHandle const& field, char const& value) { WriteInt(field, value); }
void rom_MementoWrite::Write(cls_FieldHandle const& field, unsigned char const& value) { WriteInt(field, value); }
void rom_MementoWrite::Write(cls_FieldHandle const& field, short const& value) { WriteInt(field, value); }
void rom_MementoWrite::Write(cls_FieldHandle const& field, unsigned short const& value) { WriteInt(field, value); }
void rom_MementoWrite::Write(cls_FieldHandle const& field, int const& value) { WriteInt(field, value); }

void rom_MementoWrite::Write(cls_FieldHandle const& field, unsigned int const& value) {
  // Stored as the int of the same bits; reading narrows it back.
  WriteInt(field, static_cast<int>(value));
}

void rom_MementoWrite::Write(cls_FieldHandle const& field, float const& value) {
  if (!m_Row.IsNull()) m_Row.WriteFieldFloat(m_Bag->Column(field), value);
}

void rom_MementoWrite::Write(cls_FieldHandle const& field, double const& value) {
  if (!m_Row.IsNull()) m_Row.WriteFieldDouble(m_Bag->Column(field), value);
}

void rom_MementoWrite::Write(cls_FieldHandle const& field, cow_String const& value) {
  if (!m_Row.IsNull()) m_Row.WriteFieldString(m_Bag->Column(field), value);
}

void rom_MementoWrite::WriteEnumAsInt(cls_FieldHandle const&, int const&) {
  nex_ThrowMessage(kSourcePath, __LINE__, atr_translate(kEnumAsInt));
}

void rom_MementoWrite::NeuterString(cls_FieldHandle const& field, cow_String const& replacement) {
  if (!m_Row.IsNull()) m_Row.NeuterFieldString(m_Bag->Column(field), replacement);
}

void rom_MementoWrite::CheckCollectionType(cls_CollectionType implemented, cow_String const& member) const {
  // Internal classes declare no collection.
  if (m_Cid == cls_kNoClass) return;
  m_Transporter->CheckCollectionType(implemented, m_Cid, member);
}

void rom_MementoWrite::StartSharedPtrOutput() { m_PtrBarn.reset(new rom_PtrBarn(*m_Transporter)); }

void rom_MementoWrite::EndSharedPtrOutput() { m_PtrBarn.reset(); }
