// The transporter's part in moving objects: mementos for a collection's
// rows, and building objects out of rows through the barns and the history.
#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cls_ClassMetadata.h"
#include "cls_CowValue.h"
#include "cls_ReadVisitor.h"
#include "cls_Static.h"
#include "rom_MementoRead.h"
#include "rom_MementoWrite.h"
#include "rom_PtrBarn.h"
#include "rom_Transporter.h"
#include "typ_ArchCompTable.h"

#include <algorithm>
#include <memory>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_TransporterObjects";

char const kRefMismatch[] = "rom_Transporter::MakeRefMemento - Class mismatch for UID - prev: %s, this: %s";
char const kRefWithPtrMismatch[] =
    "rom_Transporter::MakeRefMementoWithPtr - Class mismatch for UID - prev: %s, this: %s";
char const kCycle[] =
    "rom_Transporter::ReallyReadObjPtr - Object %s[%d] in %s refers back to itself through its members: a cycle of "
    "references cannot be read.";

// A collection's row: the object id, then the class id.
rfm_FieldHandle const kRefOidColumn(0);
rfm_FieldHandle const kRefClassIdColumn(1);

void WriteRef(rfm_Row& row, unsigned int cid, int oid) {
  row.WriteFieldInt(kRefOidColumn, oid);
  row.WriteFieldInt(kRefClassIdColumn, static_cast<int>(cid));
}

// Enters a row in the list of rows being built for as long as it lives.
class BuildingScope {
public:
  BuildingScope(std::vector<rom_CidOid>& building, rom_CidOid const& row) : m_Building(building) {
    m_Building.push_back(row);
  }
  BuildingScope(BuildingScope const&) = delete;
  BuildingScope& operator=(BuildingScope const&) = delete;
  ~BuildingScope() { m_Building.pop_back(); }

private:
  std::vector<rom_CidOid>& m_Building;
};
}  // namespace

rom_MementoWrite* rom_Transporter::MakeRefMemento(rfm_Row& row, unsigned int cid, cls_Uid const& uid,
                                                  cls_CowValue const* cow) {
  bool const shared = cow != nullptr && cow->HasValue();
  // As for an object's member: a value stored already is only referred to.
  // The barn holds only values stored in a table.
  if (shared) {
    if (rom_CowBarnStall const* stall = m_CowBarn.Stall(*cow)) {
      WriteRef(row, stall->Row().m_Cid, stall->Row().m_Oid);
      return nullptr;
    }
  }
  std::unique_ptr<rom_MementoWrite> made(MakeRefMementoImpl(row, cid, uid, kRefMismatch));
  if (made != nullptr && shared) m_CowBarn.Insert(cid, made->Oid(), *cow, FindMDWithDtor(cid));
  return made.release();
}

rom_MementoWrite* rom_Transporter::MakeRefMementoWithPtr(rfm_Row& row, unsigned int cid, cls_Uid const& uid,
                                                         void const* ptr) {
  if (ptr == nullptr || m_PtrBarn == nullptr) return MakeRefMemento(row, cid, uid);
  if (rom_PtrBarnStall const* stall = m_PtrBarn->Stall(ptr)) {
    WriteRef(row, stall->m_Row.m_Cid, stall->m_Row.m_Oid);
    return nullptr;
  }
  rom_MementoWrite* made = MakeRefMementoImpl(row, cid, uid, kRefWithPtrMismatch);
  if (made != nullptr) m_PtrBarn->Insert(cid, made->Oid(), ptr);
  return made;
}

rom_MementoWrite* rom_Transporter::MakeRefMementoImpl(rfm_Row& row, unsigned int cid, cls_Uid const& uid,
                                                      char const* mismatch) {
  // A class without a table keeps its class id here, unlike an object's
  // member, which stores the plain null reference: readers take both.
  if (!GetClassBagForWrite(cid).HasTable()) {
    WriteRef(row, cid, -1);
    return nullptr;
  }
  std::unique_ptr<rom_MementoWrite> made(rom_MementoWrite::MakeWriteObjImpl(*this, cid, uid, mismatch));
  WriteRef(row, cid, made->Oid());
  return made.release();
}

void* rom_Transporter::ReallyReadObjPtr(int oid, unsigned int cid, cls_Uid const& uid) {
  rom_CidOid const row(cid, oid);
  if (std::find(m_Building.begin(), m_Building.end(), row) != m_Building.end())
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kCycle), typ_ArchCompTable::GetName(cid), oid, m_FileName));
  BuildingScope const building(m_Building, row);
  // The stored class decides what is built, not the class the caller
  // expects.
  cls_ClassMetadata const& md = GetClassMD(cid);
  return md.Ctor(cls_ReadVisitor(new rom_MementoRead(*this, cid, oid, uid)));
}

void* rom_Transporter::CheckReadObjPtr(int oid, unsigned int cid, unsigned int expected) {
  CheckInheritence(cid, expected);
  rom_PtrBarn* barn = m_PtrBarn;
  if (barn != nullptr) {
    // The barn hands out what it was given; the objects it holds are built
    // here, never const.
    if (rom_PtrBarnStall const* stall = barn->Stall(cid, oid)) return const_cast<void*>(stall->m_Object);
  }
  void* object = ReallyReadObjPtr(oid, cid, m_History.RowIdentity(cid, oid));
  if (barn != nullptr && object != nullptr) barn->Insert(cid, oid, object);
  return object;
}

cls_CowValue const& rom_Transporter::CheckReadObjCow(int oid, unsigned int cid, unsigned int expected) {
  CheckInheritence(cid, expected);
  if (rom_CowBarnStall const* stall = m_CowBarn.Stall(cid, oid)) return stall->Value();
  cls_ClassMetadata const& md = GetClassMD(cid);
  // Adopted at once, so that a failure below ends the object.
  cls_CowValue const value(ReallyReadObjPtr(oid, cid, m_History.RowIdentity(cid, oid)), md);
  if (!value.HasValue()) return cls_Static::ConstIntCOW();
  // The barn's share is what keeps the object alive once value goes.
  return m_CowBarn.Insert(cid, oid, value, FindMDWithDtor(cid));
}
