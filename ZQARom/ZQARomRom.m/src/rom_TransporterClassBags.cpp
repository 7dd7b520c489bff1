// The transporter's class tables: a class's metadata becomes a table with
// one column per attribute (two for a reference, a list or a double
// collection), the first column of each attribute entered in the class's
// bag under the attribute's field id.
#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cow_ConstMapIterator.h"
#include "omi_BtreeIterator.h"
#include "rfm_Row.h"
#include "rom_CatalogFieldHandle.h"
#include "rom_HeaderLayout.h"
#include "rom_Transporter.h"
#include "typ_ArchCompTable.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_TransporterClassBags";

char const kBadAttributeType[] = "rom_Transporter::GetTable - Invalid or unsupported attribute metadata type!";

// Defines the columns of one attribute and answers the first one's index,
// or -1 for a type that cannot be stored.
int DefineAttributeColumns(rfm_TableMetadata& table, cls_AttributeMetadata const& attribute) {
  cow_String const& name = attribute.m_Name;
  switch (attribute.m_Type) {
    case cls_AttrChar:
    case cls_AttrUnsignedChar:
    case cls_AttrShort:
    case cls_AttrUnsignedShort:
    case cls_AttrInt:
    case cls_AttrUnsignedInt:
    case cls_AttrBool:
      return table.DefineIntField(name);
    case cls_AttrFloat:
      return table.DefineFloatField(name);
    case cls_AttrDouble:
      return table.DefineDoubleField(name);
    case cls_AttrString:
    case cls_AttrText:
    case cls_AttrEnum:
      return table.DefineStringField(name);
    case cls_AttrObjectCow:
    case cls_AttrObjectPtr:
    case cls_AttrObjectLazy:
    case cls_AttrInternalCow: {
      // Readers find the second column at the first's index plus one.
      int const first = table.DefineIntField(name + kRomOidSuffix);
      table.DefineIntField(name + kRomClassIdSuffix);
      return first;
    }
    case cls_AttrList: {
      int const first = table.DefineHandleField(name + kRomHandleSuffix);
      table.DefineIntField(name + kRomColumnsSuffix);
      return first;
    }
    case cls_AttrMap:
    case cls_AttrBlob:
      return table.DefineHandleField(name + kRomHandleSuffix);
    case cls_AttrDoubleCollection: {
      int const first = table.DefineHandleField(name + kRomHandleSuffix);
      table.DefineHandleField(name + kRomHandle2Suffix);
      return first;
    }
    case cls_AttrLong:
    case cls_AttrUnsignedLong:
      break;
  }
  return -1;
}

bool IsMarker(cls_ClassMetadata const& md) { return md.BaseClassId() == cls_kNoClass && md.AttributeCount() == 0; }

[[noreturn]] void Raise(int line, atr_String const& text) { nex_ThrowMessage(kSourcePath, line, text); }
}  // namespace

rfm_TableMetadata rom_Transporter::ClassTableMetadata(cls_ClassMetadata const& md, rom_ClassBag* bag,
                                                      bool assertOnBadType) const {
  rfm_TableMetadata table(md.ClassName(), md.GetVersion());
  if (md.BaseClassId() != cls_kNoClass) table.DefineIntField(kRomBaseClassOidName);
  for (omi_BtreeIterator<cow_String, cls_AttributeMetadata> it(md.Attributes()); !it.IsDone(); it.Next()) {
    int const column = DefineAttributeColumns(table, it.CurrentValue());
    if (column < 0) {
      if (assertOnBadType)
        nex_ThrowAssertion(kSourcePath, __LINE__, (std::string("!\"") + kBadAttributeType + "\"").c_str());
      Raise(__LINE__, atr_translate(kBadAttributeType));
    }
    if (bag != nullptr) bag->SetFieldMapEntry(it.CurrentValue().m_FieldId, column);
  }
  return table;
}

rom_ClassBag* rom_Transporter::FindBag(unsigned int cid) const {
  auto const* leaf = m_ClassBags.ConstGetPtr(cid);
  return leaf != nullptr ? &leaf->Value().GetRef() : nullptr;
}

rom_ClassBag& rom_Transporter::GetClassBagForWrite(unsigned int cid) {
  if (rom_ClassBag* bag = FindBag(cid)) return *bag;
  SetupTable(GetClassMD(cid));
  return *FindBag(cid);
}

rom_ClassBag& rom_Transporter::GetClassBagForWrite(unsigned int cid, int version) {
  if (rom_ClassBag* bag = FindBag(cid)) return *bag;
  SetupTable(GetClassMD(cid, version));
  return *FindBag(cid);
}

rom_ClassBag& rom_Transporter::GetClassBagForRead(unsigned int cid) {
  if (rom_ClassBag* bag = FindBag(cid)) return *bag;
  cls_ClassMetadata const& md = GetClassMD(cid);
  // Reading never makes a table: a table of the class's name that the
  // catalogue does not lead to is not the class's, and a new empty one made
  // beside it would read as a class without objects.
  if (!IsMarker(md) && (!m_Database.HasTable(md.ClassName()) || !m_ClassHandles.IsMember(cid)))
    Raise(__LINE__, atr_SubstituteFormat(atr_translate("rom_Transporter::GetClassBagForRead - Table for class \"%s\" "
                                                       "is missing from the database: %s. The database is corrupt."),
                                         md.ClassName(), m_FileName));
  SetupTable(md);
  return *FindBag(cid);
}

void rom_Transporter::SetupTable(cls_ClassMetadata const& md) {
  cow_CountedHld<rom_ClassBag> bag(new rom_ClassBag(md.MaxFieldID()));
  if (!IsMarker(md)) {
    rfm_TableMetadata const definition = ClassTableMetadata(md, bag.GetPtr(), false);
    rfm_Handle handle;
    bool const stored = m_ClassHandles.ConstGetValue(md.ClassId(), handle);
    // Refused before binding, which would itself refuse a layout new to a
    // read-only file, with a message that does not name the class.
    if (!stored && m_Database.ReadOnly())
      Raise(__LINE__, atr_SubstituteFormat(atr_translate("rom_Transporter::SetupTable - Attempt to create new "
                                                         "class in read-only ZDB, Class: %s"),
                                           md.ClassName()));
    m_Database.Bind(definition);
    if (stored) {
      rfm_Table const table = m_Database.Table(handle, md.ExtentQuantum(), -1);
      // A catalogue row that leads to another class's table would give this
      // class that table's rows, read and written by its own column indexes.
      if (table.TableMetadata().TableName() != md.ClassName())
        Raise(__LINE__, atr_SubstituteFormat(atr_translate("rom_Transporter::SetupTable - The catalogue gives class "
                                                           "\"%s\" the table \"%s\" in %s. The database is corrupt."),
                                             md.ClassName(), table.TableMetadata().TableName(), m_FileName));
      bag.GetRef().SetTable(table);
    } else {
      rfm_Table const table = m_Database.Table(md.ClassName(), md.ExtentQuantum(), -1);
      bag.GetRef().SetTable(table);
      m_ClassHandles.Insert(md.ClassId(), table.Handle());
      rfm_Row const row = m_Catalog.NewRow();
      row.WriteFieldInt(rom_CatalogFieldHandle(kRomCatalogClassId), static_cast<int>(md.ClassId()));
      row.WriteFieldHandle(rom_CatalogFieldHandle(kRomCatalogClassTable), table.Handle());
      row.WriteFieldString(rom_CatalogFieldHandle(kRomCatalogClassName), md.ClassName());
      row.WriteFieldInt(rom_CatalogFieldHandle(kRomCatalogBaseClassId),
                        static_cast<int>(md.BaseClassId()));
      row.WriteFieldInt(rom_CatalogFieldHandle(kRomCatalogClassVersion), md.GetVersion());
    }
  }
  m_ClassBags.Insert(md.ClassId(), bag);
}

void rom_Transporter::SetupTableMetadata(cls_ClassMetadata const& md) {
  if (IsMarker(md)) return;
  rfm_TableMetadata const table = ClassTableMetadata(md, nullptr, true);
  if (m_TableMetadata.IsMember(md.ClassId())) {
    ZQA_ASSERT(kSourcePath, md.GetVersion() == table.GetVersionNumber());
    m_TableMetadata.Get(md.ClassId()).Insert(md.GetVersion(), table);
  } else {
    cow_Map<int, rfm_TableMetadata> versions;
    versions.Insert(md.GetVersion(), table);
    m_TableMetadata.Insert(md.ClassId(), versions);
  }
}

rfm_TableMetadata const& rom_Transporter::GetTableMetadata(unsigned int cid, int version) const {
  if (!m_TableMetadata.IsMember(cid))
    Raise(__LINE__, atr_SubstituteFormat(atr_translate("rom_Transporter::TableMetadata failed: can't get table "
                                                       "metadata for Class ID %d."),
                                         cid));
  cow_Map<int, rfm_TableMetadata> const& versions = m_TableMetadata.ConstGet(cid);
  if (!versions.IsMember(version))
    Raise(__LINE__, atr_SubstituteFormat(atr_translate("rom_Transporter::TableMetadata failed: can't get table "
                                                       "metadata for Class ID %d version number %d."),
                                         cid, version));
  return versions.ConstGet(version);
}

namespace {
std::vector<int> SortedVersions(cow_Map<unsigned int, cow_Map<int, rfm_TableMetadata>> const& layouts,
                                unsigned int cid) {
  std::vector<int> versions;
  if (!layouts.IsMember(cid)) return versions;
  for (cow_ConstMapIterator<int, rfm_TableMetadata> it(layouts.ConstGet(cid)); !it.IsDone(); it.Next())
    versions.push_back(it.CurrentKey());
  std::sort(versions.begin(), versions.end());
  return versions;
}
}  // namespace

// An absent version walks past every entry and answers the highest: callers
// have always relied on that.
int rom_Transporter::GetPreviousVersion(unsigned int cid, int version) const {
  int previous = -1;
  for (int const v : SortedVersions(m_TableMetadata, cid)) {
    if (v == version) return previous;
    previous = v;
  }
  return previous;
}

int rom_Transporter::GetNextVersion(unsigned int cid, int version) const {
  std::vector<int> const versions = SortedVersions(m_TableMetadata, cid);
  auto const found = std::find(versions.begin(), versions.end(), version);
  return found == versions.end() || found + 1 == versions.end() ? -1 : *(found + 1);
}

void rom_Transporter::CheckInheritence(unsigned int derived, unsigned int base) {
  int steps = 0;
  for (unsigned int current = derived;; current = BaseClassOf(current, steps)) {
    if (current == cls_kNoClass)
      Raise(__LINE__, atr_SubstituteFormat(atr_translate("Inheritence error: class %s (%08X) is not a derived type "
                                                         "of base class %s (%08X)\n"),
                                           typ_ArchCompTable::GetName(derived), derived,
                                           typ_ArchCompTable::GetName(base), base));
    if (current == base) return;
  }
}

void rom_Transporter::CheckCollectionType(cls_CollectionType implemented, unsigned int cid,
                                          cow_String const& member) const {
  cls_ClassMetadata const& md = GetClassMD(cid);
  cls_AttributeMetadata const& attribute = md.FindAttribute(member);
  if (!cls_CollectionsMatch(attribute.m_Collection, implemented))
    Raise(__LINE__, atr_SubstituteFormat(atr_translate("Implemented collection does not match metadata.\n  Class: "
                                                       "%s\n  Member: %s\n  Attribute collection type: %d\n  "
                                                       "Implemented collection type: %d"),
                                         md.ClassName(), member, static_cast<int>(attribute.m_Collection),
                                         static_cast<int>(implemented)));
}
