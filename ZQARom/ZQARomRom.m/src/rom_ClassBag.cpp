#include "rom_ClassBag.h"

#include "ZQABasAssert.h"
#include "cls_FieldHandle.h"
#include "rom_HeaderLayout.h"

#include <limits>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_ClassBag";

// The column of a member that the class's version does not declare: an
// index no table has, so that the record store finds no field there. Such
// a member reads as absent, whatever a table of another version of the
// class holds under its name, and cannot be written.
constexpr int kNoColumn = std::numeric_limits<int>::max();
}

rom_ClassBag::rom_ClassBag(int maxFieldId)
    : m_IndexMapArraySize(maxFieldId + 1 > 0 ? maxFieldId + 1 : 0),
      m_IndexMap(static_cast<std::size_t>(m_IndexMapArraySize), -1) {}

void rom_ClassBag::CheckEntry(int entryIndex) const {
  ZQA_ASSERT(kSourcePath, entryIndex >= 0 && entryIndex < m_IndexMapArraySize);
}

void rom_ClassBag::SetFieldMapEntry(int entryIndex, int column) {
  if (m_IndexMap.empty() || entryIndex < 0) return;
  CheckEntry(entryIndex);
  m_IndexMap[static_cast<std::size_t>(entryIndex)] = column;
}

int rom_ClassBag::MapField(int entryIndex) const {
  if (m_IndexMap.empty() || entryIndex < 0) return -1;
  CheckEntry(entryIndex);
  return m_IndexMap[static_cast<std::size_t>(entryIndex)];
}

int rom_ClassBag::ColumnIndex(int fieldId) const {
  if (fieldId < 0) return -1;
  int const index = fieldId < m_IndexMapArraySize ? m_IndexMap[static_cast<std::size_t>(fieldId)] : -1;
  return index >= 0 ? index : kNoColumn;
}

rfm_FieldHandle rom_ClassBag::Column(cls_FieldHandle const& field) const {
  int const index = ColumnIndex(field.FieldId());
  // By index the record store looks at no name: none is copied.
  return index >= 0 ? rfm_FieldHandle(index) : rfm_FieldHandle(field.Name(), -1);
}

void rom_ClassBag::ReferenceColumns(cls_FieldHandle const& field, rfm_FieldHandle& oid,
                                    rfm_FieldHandle& classId) const {
  int const index = ColumnIndex(field.FieldId());
  if (index == kNoColumn) {
    oid = rfm_FieldHandle(kNoColumn);
    classId = rfm_FieldHandle(kNoColumn);
  } else if (index >= 0) {
    oid = rfm_FieldHandle(index);
    classId = rfm_FieldHandle(index + 1);
  } else {
    oid = rfm_FieldHandle(field.Name(), kRomOidSuffix, -1);
    classId = rfm_FieldHandle(field.Name(), kRomClassIdSuffix, -1);
  }
}
