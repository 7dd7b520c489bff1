// The copy of objects: a row's fields one by one, by their names' roles.
#include "rom_UtlCopy.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "omi_BtreeIterator.h"
#include "rfm_Row.h"
#include "rom_HeaderLayout.h"
#include "rom_UtlDatabase.h"
#include "rom_UtlPrune.h"
#include "rom_UtlVisitor.h"

#include <cstring>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_UtlCopy";

char const kNoField[] = "rom_UtlCopy - A row of %s holds the field \"%s\", which the table that takes its copy in "
                        "%s lacks.";
char const kHandleField[] = "rom_UtlCopy - The field \"%s\" of a row of %s holds a handle, which only the object "
                            "layer's collection rows may: the copy cannot follow it.";

bool EndsWith(cow_String const& name, char const* suffix) {
  int const length = static_cast<int>(std::strlen(suffix));
  return name.Length() >= length && std::strcmp(name.CStr() + name.Length() - length, suffix) == 0;
}

// name, which ends in suffix, with other in its place.
cow_String Partner(cow_String const& name, char const* suffix, char const* other) {
  return name.Substr(0, name.Length() - static_cast<int>(std::strlen(suffix))) + other;
}

bool IsIntField(rfm_MapName2FieldMetadata const& fields, cow_String const& name) {
  if (!fields.IsMember(name)) return false;
  rfm_FieldMetadata const& field = fields.ConstGet(name);
  return field.Present() != 0 && field.Type() == rfm_TypeInt;
}

bool IsCollectionClass(unsigned int cid) { return cid == kRomInternalListClass || cid == kRomInternalMapClass; }
}  // namespace

rom_UtlCopy::rom_UtlCopy(rom_UtlDatabase& target)
    : m_Target(&target),
      m_BaseClassOid(kRomBaseClassOidName, -1),
      m_Key(kRomElementKeyName, -1),
      m_ClassId(kRomElementClassIdName, -1),
      m_Oid(kRomElementOidName, -1),
      m_Data(kRomElementDataName, -1),
      m_TargetHandle(cow_String(kRomTargetName) + kRomHandleSuffix, -1),
      m_TargetHandle2(cow_String(kRomTargetName) + kRomHandle2Suffix, -1),
      m_TargetColumns(cow_String(kRomTargetName) + kRomColumnsSuffix, -1) {}

rom_UtlCopy::~rom_UtlCopy() = default;

void rom_UtlCopy::Remember(unsigned int cid, int oid, rom_UtlDatabase const& source, int copied) {
  m_CopyMap.Insert(rom_CidOidNdx(cid, oid, source.Index()), copied);
}

int rom_UtlCopy::CopyObject(unsigned int cid, int oid, rom_UtlDatabase const& source, bool excluded) {
  if (auto const* leaf = m_CopyMap.ConstGetPtr(rom_CidOidNdx(cid, oid, source.Index()))) return leaf->Value();
  if (m_Visitor != nullptr) {
    int const known = m_Visitor->AcceptObjectBeforeCopy(cid, oid);
    if (known >= 0) return known;
  }
  switch (cid) {
    case kRomInternalMapClass:
      return CopyMap(oid, source, excluded);
    case kRomInternalDblColClass:
      return CopyDoubleCollection(oid, source);
    case kRomInternalBlobClass:
      return CopyBlob(oid, source);
    case kRomInternalListClass:
      return CopyList(oid, source, excluded);
    default:
      break;
  }
  rfm_Row from = source.Object(cid, oid);
  rfm_Row to = m_Target->NewObject(cid);
  int const copied = to.Location();
  // Entered as soon as the row is taken, before its fields are walked: a
  // reference that leads back to this object, however far round, then finds
  // its copy here, and a cycle of references ends where it began instead of
  // copying its objects for ever.
  Remember(cid, oid, source, copied);
  CopyFields(cid, from, to, source);
  if (m_Visitor != nullptr) m_Visitor->AcceptObjectAfterCopy(from, to, cid);
  return copied;
}

void rom_UtlCopy::CopyFields(unsigned int cid, rfm_Row const& from, rfm_Row const& to,
                             rom_UtlDatabase const& source) {
  rfm_MapName2FieldMetadata const& fields = from.FieldMetadataMap();
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(fields); !it.IsDone(); it.Next()) {
    rfm_FieldMetadata const& field = it.CurrentValue();
    if (field.Present() == 0) continue;
    cow_String const& name = field.Name();
    bool const isInt = field.Type() == rfm_TypeInt;
    if (name == kRomBaseClassOidName) {
      CopyBaseClassPart(cid, from, to, source);
    } else if (isInt && EndsWith(name, kRomOidSuffix) &&
               IsIntField(fields, Partner(name, kRomOidSuffix, kRomClassIdSuffix))) {
      continue;  // a reference's object id, copied with its class id
    } else if (isInt && EndsWith(name, kRomClassIdSuffix)) {
      CopyReference(cid, fields, name, from, to, source);
    } else {
      CopyData(from, to, rfm_FieldHandle(name, -1), source);
    }
  }
}

void rom_UtlCopy::CopyBaseClassPart(unsigned int cid, rfm_Row const& from, rfm_Row const& to,
                                    rom_UtlDatabase const& source) {
  if (!from.DataIsPresent(m_BaseClassOid)) return;
  int const base = from.ReadFieldInt(m_BaseClassOid);
  int const copied = base < 0 ? -1 : CopyObject(m_Target->BaseClassID(cid), base, source, false);
  WriteInt(to, m_BaseClassOid, copied, source);
}

void rom_UtlCopy::CopyReference(unsigned int cid, rfm_MapName2FieldMetadata const& fields,
                                cow_String const& classIdName, rfm_Row const& from, rfm_Row const& to,
                                rom_UtlDatabase const& source) {
  cow_String const oidName = Partner(classIdName, kRomClassIdSuffix, kRomOidSuffix);
  rfm_FieldHandle const classId(classIdName, -1);
  rfm_FieldHandle const oid(oidName, -1);
  // Without its partner, or half written, the column is a plain number.
  if (!IsIntField(fields, oidName) || !from.DataIsPresent(classId) || !from.DataIsPresent(oid)) {
    CopyData(from, to, classId, source);
    return;
  }
  auto const referredClass = static_cast<unsigned int>(from.ReadFieldInt(classId));
  int const referredOid = from.ReadFieldInt(oid);
  bool const excluded = m_Prune != nullptr && m_Prune->Exclude(cid, Partner(classIdName, kRomClassIdSuffix, ""));
  bool const null = referredClass == kRomNoClass || referredOid < 0;
  if (excluded && (null || !IsCollectionClass(referredClass))) return;
  int const copied = null ? -1 : CopyObject(referredClass, referredOid, source, excluded);
  WriteInt(to, classId, static_cast<int>(null ? kRomNoClass : referredClass), source);
  WriteInt(to, oid, copied, source);
}

// Checked first: the record store's own message would not name the files.
void rom_UtlCopy::RequireField(rfm_Row const& to, rfm_FieldHandle const& field, rom_UtlDatabase const& source) const {
  if (!to.FieldIsPresent(field))
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kNoField), source.Database().FileName(), field.Name(),
                                          m_Target->Database().FileName()));
}

void rom_UtlCopy::WriteInt(rfm_Row const& to, rfm_FieldHandle const& field, int value,
                           rom_UtlDatabase const& source) const {
  RequireField(to, field, source);
  to.WriteFieldInt(field, value);
}

void rom_UtlCopy::CopyData(rfm_Row const& from, rfm_Row const& to, rfm_FieldHandle const& field,
                           rom_UtlDatabase const& source) const {
  if (!from.DataIsPresent(field)) return;
  // A handle names an object of the source's file, which means nothing in
  // the target's.
  if (from.FieldMetadataMap().ConstGet(field.Name()).Type() == rfm_TypeHandle)
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kHandleField), field.Name(), source.Database().FileName()));
  RequireField(to, field, source);
  to.CopyField(from, field);
}
