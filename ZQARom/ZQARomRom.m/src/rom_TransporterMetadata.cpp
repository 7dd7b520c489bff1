#include "rom_TransporterMetadata.h"

#include "rfm_Database.h"
#include "rom_HeaderLayout.h"

#include <initializer_list>
#include <utility>

namespace {
using Columns = std::initializer_list<std::pair<char const*, rfm_Type>>;

rfm_TableMetadata Layout(char const* name, Columns columns) {
  rfm_TableMetadata table(name, 0);
  for (auto const& [column, type] : columns) switch (type) {
      case rfm_TypeInt:
        table.DefineIntField(column);
        break;
      case rfm_TypeHandle:
        table.DefineHandleField(column);
        break;
      case rfm_TypeFloat:
        table.DefineFloatField(column);
        break;
      case rfm_TypeDouble:
        table.DefineDoubleField(column);
        break;
      default:
        table.DefineStringField(column);
        break;
    }
  return table;
}
}  // namespace

rom_TransporterMetadata::rom_TransporterMetadata() {
  constexpr rfm_Type kInt = rfm_TypeInt, kHandle = rfm_TypeHandle, kString = rfm_TypeString,
                     kFloat = rfm_TypeFloat, kDouble = rfm_TypeDouble;
  m_Tables.reserve(16);
  m_Tables.push_back(Layout(kRomCatalogName, {{kRomCatalogClassIdName, kInt},
                                              {kRomCatalogClassTableName, kHandle},
                                              {kRomCatalogClassNameName, kString},
                                              {kRomCatalogBaseClassIdName, kInt},
                                              {kRomCatalogClassVersionName, kInt}}));
  m_Tables.push_back(Layout(kRomListTableName, {{kRomElementOidName, kInt}, {kRomElementClassIdName, kInt}}));
  m_Tables.push_back(Layout(kRomStringArrayTableName, {{kRomElementDataName, kString}}));
  m_Tables.push_back(Layout("##HandleArray", {{kRomElementDataName, kHandle}}));
  m_Tables.push_back(Layout(
      kRomMapTableName, {{kRomElementOidName, kInt}, {kRomElementClassIdName, kInt}, {kRomElementKeyName, kString}}));
  m_Tables.push_back(Layout("##MapString2Handle", {{"Handle", kHandle}, {kRomElementKeyName, kString}}));
  m_Tables.push_back(
      Layout(kRomMapString2DoubleTableName, {{kRomElementDataName, kDouble}, {kRomElementKeyName, kString}}));
  m_Tables.push_back(
      Layout(kRomMapString2FloatTableName, {{kRomElementDataName, kFloat}, {kRomElementKeyName, kString}}));
  m_Tables.push_back(Layout(kRomMapString2IntTableName, {{kRomElementDataName, kInt}, {kRomElementKeyName, kString}}));
  m_Tables.push_back(
      Layout(kRomMapString2StringTableName, {{kRomElementDataName, kString}, {kRomElementKeyName, kString}}));
  m_Tables.push_back(Layout(kRomMapInt2ObjTableName,
                            {{kRomElementOidName, kInt}, {kRomElementClassIdName, kInt}, {kRomElementKeyName, kInt}}));
  m_Tables.push_back(Layout("##MapInt2Handle", {{"Handle", kHandle}, {kRomElementKeyName, kInt}}));
  m_Tables.push_back(Layout(kRomMapInt2DoubleTableName, {{kRomElementDataName, kDouble}, {kRomElementKeyName, kInt}}));
  m_Tables.push_back(Layout(kRomMapInt2FloatTableName, {{kRomElementDataName, kFloat}, {kRomElementKeyName, kInt}}));
  m_Tables.push_back(Layout(kRomMapInt2IntTableName, {{kRomElementDataName, kInt}, {kRomElementKeyName, kInt}}));
  m_Tables.push_back(Layout(kRomMapInt2StringTableName, {{kRomElementDataName, kString}, {kRomElementKeyName, kInt}}));
}

// A read-only file cannot take a layout it lacks, and needs none: no table
// is made in it. Its own layouts are bound.
void rom_TransporterMetadata::BindIfPossible(rfm_Database const& db, rfm_TableMetadata const& table) {
  if (!db.ReadOnly() || db.HasTable(table.TableName())) db.Bind(table);
}

void rom_TransporterMetadata::Bind(rfm_Database const& db) const {
  for (std::size_t i = 1; i < m_Tables.size(); ++i) BindIfPossible(db, m_Tables[i]);
}

void rom_TransporterMetadata::BindCatalog(rfm_Database const& db) const { BindIfPossible(db, m_Tables.front()); }
