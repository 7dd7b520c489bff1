#include "rom_MementoRead.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cls_ClassMetadata.h"
#include "cls_FieldHandle.h"
#include "cls_Static.h"
#include "rom_ClassBag.h"
#include "rom_HeaderLayout.h"
#include "rom_History.h"
#include "rom_Transporter.h"
#include "typ_ArchCompTable.h"

#include <cstdio>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_MementoRead";

char const kNotAvailable[] = "rom_MementoRead::rom_MementoRead - Object is not available in DB file: %s[%d]";
char const kMemberNotAvailable[] = "rom_MementoRead::MakeReadObj - Object is not available in DB file: %s";
char const kCowFailure[] = "rom_MementoRead::ReadObjCow - Cow construction failure in class %s";
char const kEnumAsInt[] =
    "rom_MementoRead::ReadEnumAsInt - Enum persistence must use string based interface: CLS_READ_ENUM.";

[[noreturn]] void Raise(int line, atr_String const& text) { nex_ThrowMessage(kSourcePath, line, text); }
}  // namespace

rom_MementoRead::rom_MementoRead(rom_Transporter& transporter, unsigned int cid, int oid, cls_Uid const& uid)
    : cls_MementoRead(kOwnedByVisitor), m_Transporter(&transporter), m_Bag(&transporter.GetClassBagForRead(cid)),
      m_Cid(cid), m_Uid(uid) {
  if (!m_Bag->HasTable()) return;
  // A negative row would be the table's next row, not this object's.
  if (oid < 0 || oid >= m_Bag->Table().Length())
    Raise(__LINE__, atr_SubstituteFormat(atr_translate(kNotAvailable), typ_ArchCompTable::GetName(cid), oid));
  m_Row = m_Bag->Table().ReadRow(oid);
}

rom_MementoRead::~rom_MementoRead() = default;

void const* rom_MementoRead::DbId() const { return &m_Transporter->FileName(); }

bool rom_MementoRead::FieldIsPresent(cls_FieldHandle const& field) const {
  return !m_Row.IsNull() && m_Row.FieldIsPresent(m_Bag->Column(field));
}

bool rom_MementoRead::DataIsPresent(cls_FieldHandle const& field) const {
  return !m_Row.IsNull() && m_Row.DataIsPresent(m_Bag->Column(field));
}

bool rom_MementoRead::ObjIsPresent(cls_FieldHandle const& field) const {
  if (m_Row.IsNull()) return false;
  rfm_FieldHandle oid(-1), classId(-1);
  m_Bag->ReferenceColumns(field, oid, classId);
  return m_Row.DataIsPresent(oid) && m_Row.DataIsPresent(classId);
}

bool rom_MementoRead::ReadReference(cls_FieldHandle const& field, unsigned int& cid, int& oid) const {
  if (m_Row.IsNull()) return false;
  rfm_FieldHandle oidColumn(-1), classId(-1);
  m_Bag->ReferenceColumns(field, oidColumn, classId);
  if (!m_Row.DataIsPresent(oidColumn) || !m_Row.DataIsPresent(classId)) return false;
  oid = m_Row.ReadFieldInt(oidColumn);
  cid = static_cast<unsigned int>(m_Row.ReadFieldInt(classId));
  return !(cid == cls_kNoClass && oid < 0);
}

rom_MementoRead* rom_MementoRead::MakeMemento(unsigned int cid, int oid) {
  return new rom_MementoRead(*m_Transporter, cid, oid, m_Transporter->History().RowIdentity(cid, oid));
}

cls_MementoRead* rom_MementoRead::MakeReadObj(cls_FieldHandle const& field) {
  if (!ObjIsPresent(field)) Raise(__LINE__, atr_SubstituteFormat(atr_translate(kMemberNotAvailable), field.Name()));
  rfm_FieldHandle oidColumn(-1), classId(-1);
  m_Bag->ReferenceColumns(field, oidColumn, classId);
  int const oid = m_Row.ReadFieldInt(oidColumn);
  if (oid < 0) return nullptr;
  return MakeMemento(static_cast<unsigned int>(m_Row.ReadFieldInt(classId)), oid);
}

cls_MementoRead* rom_MementoRead::MakeBaseReadObj() {
  rfm_FieldHandle const baseOid(kRomBaseClassOidColumn);
  if (m_Row.IsNull() || !m_Row.DataIsPresent(baseOid)) return nullptr;
  int const oid = m_Row.ReadFieldInt(baseOid);
  if (oid < 0) return nullptr;
  return MakeMemento(m_Transporter->GetClassMD(m_Cid).BaseClassId(), oid);
}

int rom_MementoRead::ReadInt(cls_FieldHandle const& field, int absent) const {
  if (m_Row.IsNull()) return absent;
  rfm_FieldHandle const column = m_Bag->Column(field);
  return m_Row.DataIsPresent(column) ? m_Row.ReadFieldInt(column) : absent;
}

bool rom_MementoRead::Read(cls_FieldHandle const& field, bool const& type) { return ReadInt(field, type) != 0; }

char rom_MementoRead::Read(cls_FieldHandle const& field, char const& type) {
  return static_cast<char>(ReadInt(field, type));
}

unsigned char rom_MementoRead::Read(cls_FieldHandle const& field, unsigned char const& type) {
  return static_cast<unsigned char>(ReadInt(field, type));
}

short rom_MementoRead::Read(cls_FieldHandle const& field, short const& type) {
  return static_cast<short>(ReadInt(field, type));
}

unsigned short rom_MementoRead::Read(cls_FieldHandle const& field, unsigned short const& type) {
  return static_cast<unsigned short>(ReadInt(field, type));
}

int rom_MementoRead::Read(cls_FieldHandle const& field, int const& type) { return ReadInt(field, type); }

unsigned int rom_MementoRead::Read(cls_FieldHandle const& field, unsigned int const& type) {
  return static_cast<unsigned int>(ReadInt(field, static_cast<int>(type)));
}

float rom_MementoRead::Read(cls_FieldHandle const& field, float const& type) {
  if (m_Row.IsNull()) return type;
  rfm_FieldHandle const column = m_Bag->Column(field);
  return m_Row.DataIsPresent(column) ? m_Row.ReadFieldFloat(column) : type;
}

double rom_MementoRead::Read(cls_FieldHandle const& field, double const& type) {
  if (m_Row.IsNull()) return type;
  rfm_FieldHandle const column = m_Bag->Column(field);
  return m_Row.DataIsPresent(column) ? m_Row.ReadFieldDouble(column) : type;
}

cow_String rom_MementoRead::Read(cls_FieldHandle const& field, cow_String const& type) {
  if (m_Row.IsNull()) return type;
  rfm_FieldHandle const column = m_Bag->Column(field);
  return m_Row.DataIsPresent(column) ? m_Row.ReadFieldString(column) : type;
}

int rom_MementoRead::ReadEnumAsInt(cls_FieldHandle const&) { Raise(__LINE__, atr_translate(kEnumAsInt)); }

void* rom_MementoRead::ReadObjPtr(cls_FieldHandle const& field, unsigned int cid) {
  unsigned int stored = cls_kNoClass;
  int oid = -1;
  if (!ReadReference(field, stored, oid)) return nullptr;
  return m_Transporter->CheckReadObjPtr(oid, stored, cid);
}

cls_CowValue const& rom_MementoRead::ReadObjCow(cls_FieldHandle const& field, unsigned int cid) {
  unsigned int stored = cls_kNoClass;
  int oid = -1;
  if (!ReadReference(field, stored, oid)) return cls_Static::ConstIntCOW();
  cls_CowValue const& value = m_Transporter->CheckReadObjCow(oid, stored, cid);
  if (!value.HasValue()) {
    atr_String const text =
        atr_SubstituteFormat(atr_translate(kCowFailure), m_Transporter->GetClassMD(stored).ClassName());
    std::fprintf(stderr, "%s\n", text.CStr());
    Raise(__LINE__, text);
  }
  return value;
}
