#include "zdb_CheckObjects.h"

#include "rfm_ObjectLayout.h"
#include "rfm_ObjectMagic.h"
#include "rfm_TaggedStream.h"
#include "zdb_CheckBytes.h"
#include "zdb_CheckCatalogue.h"
#include "zdb_CheckLinkage.h"
#include "zdb_CheckPool.h"
#include "zdb_CheckReport.h"
#include "zdb_CheckSpace.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <vector>

namespace {

constexpr int kTableHeader = kRfmTableHeaderSize;
constexpr int kArrayHeader = kRfmArrayHeaderSize;
constexpr int kStreamHeader = kRfmTaggedStreamHeaderSize;

// The header of an object, when its space holds it; the bytes that cannot
// be read have been reported where they lie.
bool ReadHeader(zdb_CheckSpace const& space, std::vector<std::int32_t>& words, std::string const& subject,
                zdb_CheckReport& report) {
  std::vector<char> bytes(words.size() * 4);
  if (space.Length() < static_cast<utl_FileOffset>(bytes.size())) {
    report.Problem(subject + ": its header is cut short (" + std::to_string(space.Length()) + " bytes)");
    return false;
  }
  if (!space.Read(0, bytes.data(), bytes.size())) return false;
  for (std::size_t word = 0; word < words.size(); ++word) words[word] = zdb_Word(bytes.data() + 4 * word);
  return true;
}

}  // namespace

char const* zdb_CheckObjects::Check(zdb_CheckSpace const& space) {
  std::int32_t magic = 0;
  if (space.Length() < kRfmObjectKindSize || !space.Word(0, magic)) return "space";
  std::string handle = std::to_string(space.Handle().Value());
  switch (static_cast<std::uint32_t>(magic)) {
    case kRfmTableMagic:
      CheckTable(space, "table at handle " + handle);
      return "table";
    case kRfmArrayMagic:
      CheckArray(space, "array at handle " + handle);
      return "array";
    case kRfmTaggedStreamMagic:
      CheckStream(space, "stream at handle " + handle);
      return "stream";
    default:
      return "space";
  }
}

void zdb_CheckObjects::CheckString(std::string const& subject, std::string const& where, char const* external) {
  if (!m_Pool.Usable() || m_Pool.Resolve(external)) return;
  m_Report.RepeatedProblem(
      subject, subject + ": " + where + ": " + zdb_CheckPool::Describe(external) + " is no string of the pool");
}

void zdb_CheckObjects::CheckTable(zdb_CheckSpace const& space, std::string const& subject) {
  std::vector<std::int32_t> header(3);
  if (!ReadHeader(space, header, subject, m_Report)) return;
  zdb_CheckedLayout const* layout = m_Catalogue.Find(static_cast<std::uint32_t>(header[2]));
  if (layout == nullptr) {
    m_Report.Problem(subject + ": its layout, at offset " + std::to_string(static_cast<std::uint32_t>(header[2])) +
                     " of the catalogue, is no record the catalogue could read");
    return;
  }
  // A table with no fields has rows of no size and no rows.
  if (layout->m_RowSize == 0) return;
  // There is no row count on disk: readers take the rows' bytes divided by
  // the row size, rounded to the nearest whole row, so that a torn last row,
  // as a killed writer leaves it, is read with zeros for its missing bytes.
  utl_FileOffset body = space.Length() - kTableHeader;
  utl_FileOffset rows = (2 * body + layout->m_RowSize) / (2 * layout->m_RowSize);
  if (rows > INT_MAX) {
    m_Report.Problem(subject + ": " + std::to_string(rows) + " rows, more than a row number can count");
    return;
  }
  // A row is read only when the table holds at least half of one, so a
  // damaged layout never sizes a buffer beyond twice the file's own bytes.
  if (rows == 0) return;
  int positions = static_cast<int>(layout->m_Fields.size());
  std::vector<char> row(static_cast<std::size_t>(layout->m_RowSize));
  for (utl_FileOffset number = 0; number < rows; ++number) {
    utl_FileOffset start = number * layout->m_RowSize;
    std::size_t stored = static_cast<std::size_t>(std::min<utl_FileOffset>(layout->m_RowSize, body - start));
    std::fill(row.begin() + static_cast<std::ptrdiff_t>(stored), row.end(), '\0');
    if (!space.Read(kTableHeader + start, row.data(), stored)) return;
    std::string where = "row " + std::to_string(number);
    // Presence bits beyond the fields are user bytes that no reader looks at.
    for (int position = 0; position < positions; ++position) {
      zdb_CheckedLayout::Field const& field = layout->m_Fields[static_cast<std::size_t>(position)];
      bool present = (zdb_Word(row.data() + 4 * (position / 32)) >> (position % 32)) & 1;
      if (present && field.m_Type == rfm_TypeString) {
        CheckString(subject, where + ", field \"" + field.m_Name + "\"", row.data() + field.m_Offset);
      }
    }
  }
}

void zdb_CheckObjects::CheckArray(zdb_CheckSpace const& space, std::string const& subject) {
  std::vector<std::int32_t> header(4);
  if (!ReadHeader(space, header, subject, m_Report)) return;
  int type = header[2];
  int fields = header[3];
  if (type != rfm_TypeInt && type != rfm_TypeFloat && type != rfm_TypeDouble && type != rfm_TypeString) {
    m_Report.Problem(subject + ": its element type " + std::to_string(type) + " is no array's");
    return;
  }
  if (fields < 1 || fields > kRfmArrayMaxFieldsPerRow) {
    m_Report.Problem(subject + ": " + std::to_string(fields) + " elements a row is impossible");
    return;
  }
  // As in a table, a torn last row is no damage.
  utl_FileOffset rows = (space.Length() - kArrayHeader) / (static_cast<utl_FileOffset>(fields) * zdb_FieldSize(type));
  if (type != rfm_TypeString) return;
  char external[zdb_CheckPool::kExternalSize];
  for (utl_FileOffset element = 0; element < rows * fields; ++element) {
    if (!space.Read(kArrayHeader + element * zdb_CheckPool::kExternalSize, external, sizeof external)) return;
    CheckString(subject, "row " + std::to_string(element / fields) + ", element " + std::to_string(element % fields),
                external);
  }
}

void zdb_CheckObjects::CheckStream(zdb_CheckSpace const& space, std::string const& subject) {
  std::vector<std::int32_t> header(2);
  if (!ReadHeader(space, header, subject, m_Report)) return;
  for (utl_FileOffset offset = kStreamHeader; offset < space.Length();) {
    std::string where = "the item at offset " + std::to_string(offset);
    char head[8];
    if (space.Length() - offset < static_cast<utl_FileOffset>(sizeof head)) {
      m_Report.Problem(subject + ": " + where + " is cut short");
      return;
    }
    if (!space.Read(offset, head, sizeof head)) return;
    int tag = zdb_Word(head);
    if (tag == rfm_TaggedStream::kFixedStringType) {
      m_Report.Problem(subject + ": " + where +
                       " is a fixed string, which carries no length: nothing after it can be read");
      return;
    }
    int size = zdb_FieldSize(tag);
    if (size == 0) {
      m_Report.Problem(subject + ": " + where + " has tag type " + std::to_string(tag) + ", which no item can have");
      return;
    }
    offset += sizeof head;
    if (space.Length() - offset < size) {
      m_Report.Problem(subject + ": " + where + " runs past the stream's end");
      return;
    }
    if (tag == rfm_TypeString) {
      char external[zdb_CheckPool::kExternalSize];
      if (!space.Read(offset, external, sizeof external)) return;
      CheckString(subject, where, external);
    }
    offset += size;
  }
}
