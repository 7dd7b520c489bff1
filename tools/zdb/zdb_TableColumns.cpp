#include "zdb_TableColumns.h"

#include "omi_BtreeIterator.h"
#include "rfm_TypeName.h"
#include "rom_HeaderLayout.h"
#include "zdb_CollectionTarget.h"
#include "zdb_Database.h"

#include <cstring>
#include <map>

namespace {

constexpr char kReferenceType[] = "reference";
constexpr char kListType[] = "list";
constexpr char kBlobType[] = "blob";
constexpr char kMapType[] = "map";

// The names of a reference's two fields, and of its column.
struct FieldPair {
  std::string m_Oid;
  std::string m_ClassId;
  std::string m_Name;
};

// The field of name, when the table has it present and of type int.
rfm_FieldMetadata const* IntField(rfm_MapName2FieldMetadata const& fields, std::string const& name) {
  if (!fields.IsMember(name.c_str())) return nullptr;
  rfm_FieldMetadata const& field = fields.ConstGet(name.c_str());
  return field.Present() && field.Type() == rfm_TypeInt ? &field : nullptr;
}

bool EndsWith(std::string const& text, char const* suffix) {
  std::size_t length = std::strlen(suffix);
  return text.size() >= length && text.compare(text.size() - length, length, suffix) == 0;
}

std::vector<zdb_Column> Columns(rfm_Table const& table, std::vector<FieldPair> const& pairs, std::uint32_t baseClass,
                                zdb_Column::Kind pairKind = zdb_Column::kReference) {
  rfm_MapName2FieldMetadata const& fields = table.GetFieldMap();
  std::vector<zdb_Column> references;
  std::map<std::string, std::size_t> referenceOf;  // by the name of either field
  for (FieldPair const& pair : pairs) {
    rfm_FieldMetadata const* oid = IntField(fields, pair.m_Oid);
    rfm_FieldMetadata const* classId = IntField(fields, pair.m_ClassId);
    if (oid == nullptr || classId == nullptr) continue;
    zdb_Column column;
    column.m_Kind = pairKind;
    column.m_Name = pair.m_Name;
    column.m_Type = rfm_TypeInt;
    column.m_Index = oid->Index();
    column.m_ClassIndex = classId->Index();
    referenceOf[pair.m_Oid] = referenceOf[pair.m_ClassId] = references.size();
    references.push_back(column);
  }
  std::vector<bool> placed(references.size(), false);
  std::vector<zdb_Column> columns;
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(fields); !it.IsDone(); it.Next()) {
    rfm_FieldMetadata const& field = it.CurrentValue();
    if (!field.Present()) continue;
    std::string name = it.CurrentKey().CStr();
    auto paired = referenceOf.find(name);
    if (paired != referenceOf.end()) {
      if (!placed[paired->second]) columns.push_back(references[paired->second]);
      placed[paired->second] = true;
      continue;
    }
    zdb_Column column;
    column.m_Name = name;
    column.m_Type = field.Type();
    column.m_Index = field.Index();
    if (baseClass != kRomNoClass && name == kRomBaseClassOidName && field.Type() == rfm_TypeInt) {
      column.m_Kind = zdb_Column::kBaseReference;
      column.m_BaseClass = baseClass;
    }
    columns.push_back(column);
  }
  return columns;
}

}  // namespace

std::vector<zdb_Column> zdb_FieldColumns(rfm_Table const& table) { return Columns(table, {}, kRomNoClass); }

std::vector<zdb_Column> zdb_ClassTableColumns(rfm_Table const& table, std::uint32_t baseClass) {
  std::vector<FieldPair> pairs;
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(table.GetFieldMap()); !it.IsDone(); it.Next()) {
    std::string name = it.CurrentKey().CStr();
    if (!EndsWith(name, kRomOidSuffix)) continue;
    std::string attribute = name.substr(0, name.size() - std::strlen(kRomOidSuffix));
    pairs.push_back({name, attribute + kRomClassIdSuffix, attribute});
  }
  return Columns(table, pairs, baseClass);
}

std::vector<zdb_Column> zdb_CollectionRowColumns(rfm_Table const& table, std::uint32_t baseClass,
                                                 zdb_Column::Kind target) {
  std::vector<zdb_Column> columns = zdb_ClassTableColumns(table, baseClass);
  std::string handle = std::string(kRomTargetName) + kRomHandleSuffix;
  std::string second = std::string(kRomTargetName) + kRomHandle2Suffix;
  for (zdb_Column& column : columns) {
    if (column.m_Type != rfm_TypeHandle) continue;
    if (column.m_Name == handle || (target == zdb_Column::kMapTarget && column.m_Name == second)) {
      column.m_Kind = target;
    }
  }
  return columns;
}

std::vector<zdb_Column> zdb_CollectionColumns(rfm_Table const& table) {
  return Columns(table, {{kRomElementOidName, kRomElementClassIdName, kRomElementOidName}}, kRomNoClass,
                 zdb_Column::kElementReference);
}

zdb_StoredReference zdb_ReadReference(rfm_Row const& row, zdb_Column const& column) {
  zdb_StoredReference reference;
  rfm_FieldHandle oid(column.m_Index);
  if (row.DataIsPresent(oid)) reference.m_Oid = row.ReadFieldInt(oid);
  if (column.m_Kind == zdb_Column::kBaseReference) {
    reference.m_ClassId = column.m_BaseClass;
    return reference;
  }
  rfm_FieldHandle classId(column.m_ClassIndex);
  if (row.DataIsPresent(classId)) reference.m_ClassId = static_cast<std::uint32_t>(row.ReadFieldInt(classId));
  return reference;
}

zdb_CollectionTarget zdb_TargetOf(zdb_TableFinder const& finder, zdb_Column const& column, int handle) {
  switch (column.m_Kind) {
    case zdb_Column::kListTarget:
      return zdb_CollectionTarget::OfList(finder, handle);
    case zdb_Column::kBlobTarget:
      return zdb_CollectionTarget::OfBlob(finder, handle);
    default:
      return zdb_CollectionTarget::OfMap(finder, handle);
  }
}

std::string zdb_ColumnTypeName(zdb_Column const& column) {
  switch (column.m_Kind) {
    case zdb_Column::kField:
      return rfm_TypeName(column.m_Type);
    case zdb_Column::kListTarget:
      return kListType;
    case zdb_Column::kBlobTarget:
      return kBlobType;
    case zdb_Column::kMapTarget:
      return kMapType;
    case zdb_Column::kReference:
    case zdb_Column::kElementReference:
    case zdb_Column::kBaseReference:
      break;
  }
  return kReferenceType;
}
