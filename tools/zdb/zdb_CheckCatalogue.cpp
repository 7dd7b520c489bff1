#include "zdb_CheckCatalogue.h"

#include "rfm_ObjectLayout.h"
#include "rfm_ObjectMagic.h"
#include "zdb_CheckBytes.h"
#include "zdb_CheckPool.h"
#include "zdb_CheckReport.h"
#include "zdb_CheckSpace.h"

#include <algorithm>
#include <set>

namespace {

constexpr int kRecordHead = 4 + zdb_CheckPool::kExternalSize;  // the length word and the table name
constexpr int kFieldEntry = 4 + zdb_CheckPool::kExternalSize;  // a type word and a field name

}  // namespace

int zdb_FieldSize(int type) { return rfm_ValueSize(type, zdb_CheckPool::kExternalSize); }

zdb_CheckCatalogue::zdb_CheckCatalogue(zdb_CheckSpace const* space, zdb_CheckPool const& pool, zdb_CheckReport& report)
    : m_Space(space), m_Pool(pool), m_Report(report) {
  Walk();
}

zdb_CheckedLayout const* zdb_CheckCatalogue::Find(utl_FileOffset handle) const {
  auto found = m_Layouts.find(handle);
  return found == m_Layouts.end() ? nullptr : &found->second;
}

void zdb_CheckCatalogue::Walk() {
  std::string subject = kSubject;
  if (m_Space == nullptr) {
    m_Report.Problem(subject + ": missing");
    return;
  }
  if (m_Space->Length() < 4) {
    m_Report.Problem(subject + ": too short for its first word");
    return;
  }
  std::int32_t magic = 0;
  if (!m_Space->Word(0, magic)) return;
  if (static_cast<std::uint32_t>(magic) != kRfmMetadataMagic) {
    m_Report.Problem(zdb_MagicProblem(subject, magic, kRfmMetadataMagic));
    return;
  }
  for (utl_FileOffset offset = 4; offset < m_Space->Length();) {
    std::string where = subject + ": the record at offset " + std::to_string(offset);
    std::int32_t length = 0;
    if (m_Space->Length() - offset < 4) {
      m_Report.Problem(where + " is cut short");
      return;
    }
    if (!m_Space->Word(offset, length)) return;
    if (length < kRecordHead || (length - kRecordHead) % kFieldEntry != 0 || length > m_Space->Length() - offset) {
      m_Report.Problem(where + " has an impossible length, " + std::to_string(length));
      return;
    }
    zdb_CheckedLayout layout;
    if (ReadRecord(offset, length, layout)) {
      auto [named, fresh] = m_Names.emplace(layout.m_Name, offset);
      if (!fresh) {
        m_Report.Problem(where + " describes table \"" + layout.m_Name + "\" again, first described at offset " +
                         std::to_string(named->second));
      } else {
        m_Layouts[offset] = std::move(layout);
      }
    }
    offset += length;
  }
}

bool zdb_CheckCatalogue::ReadRecord(utl_FileOffset offset, int length, zdb_CheckedLayout& layout) {
  std::string where = std::string(kSubject) + ": the record at offset " + std::to_string(offset);
  std::vector<char> bytes(static_cast<std::size_t>(length));
  if (!m_Space->Read(offset, bytes.data(), bytes.size())) return false;
  // Without a pool, names cannot be told; the pool's own problem says why.
  if (!m_Pool.Usable()) return false;
  if (!m_Pool.Resolve(bytes.data() + 4, &layout.m_Name)) {
    m_Report.Problem(where + " names its table by " + zdb_CheckPool::Describe(bytes.data() + 4) +
                     ", which is no string of the pool");
    return false;
  }
  where = std::string(kSubject) + ": table \"" + layout.m_Name + "\"";
  std::set<std::string> names;
  bool readable = true;
  for (int entry = kRecordHead; entry < length; entry += kFieldEntry) {
    char const* field = bytes.data() + entry;
    int type = zdb_Word(field);
    std::string name;
    int number = (entry - kRecordHead) / kFieldEntry;
    if (!m_Pool.Resolve(field + 4, &name)) {
      m_Report.Problem(where + ": field " + std::to_string(number) + " is named by " +
                       zdb_CheckPool::Describe(field + 4) + ", which is no string of the pool");
      readable = false;
      continue;
    }
    if (zdb_FieldSize(type) == 0) {
      m_Report.Problem(where + ": field \"" + name + "\" has type " + std::to_string(type) +
                       ", which no field can have");
      readable = false;
    }
    if (!names.insert(name).second) {
      m_Report.Problem(where + ": field \"" + name + "\" is described twice");
      readable = false;
    }
    layout.m_Fields.push_back({name, type, 0});
  }
  if (!readable) return false;
  std::sort(layout.m_Fields.begin(), layout.m_Fields.end(),
            [](zdb_CheckedLayout::Field const& a, zdb_CheckedLayout::Field const& b) { return a.m_Name < b.m_Name; });
  int positions = static_cast<int>(layout.m_Fields.size());
  layout.m_BitmapWords = (positions + 31) / 32;
  layout.m_RowSize = 4 * layout.m_BitmapWords;
  for (zdb_CheckedLayout::Field& field : layout.m_Fields) {
    field.m_Offset = layout.m_RowSize;
    layout.m_RowSize += zdb_FieldSize(field.m_Type);
  }
  return true;
}
