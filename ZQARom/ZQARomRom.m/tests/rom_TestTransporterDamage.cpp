#include "rom_TestTransporterDamage.h"

#include "rfm_ObjectMagic.h"
#include "rfm_TestDatabaseDamage.h"
#include "rom_HeaderLayout.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kHeader = kRfmRootTableHandle;
constexpr int kCatalogue = kRfmRootTableHandle2;

// A tagged stream's header (magic and change count) and a table's (magic,
// flush count and the offset of its record in the record store's
// catalogue), before their items and rows.
constexpr std::size_t kStreamHeader = 8;
constexpr std::size_t kTableHeader = 12;
constexpr std::size_t kLayoutRecord = 8;

// Item types of a tagged stream and the size of their values.
constexpr std::int32_t kItemInt = 1;
constexpr std::int32_t kItemHandle = 2;
constexpr std::int32_t kItemFloat = 3;
constexpr std::int32_t kItemDouble = 4;
std::size_t ItemValueSize(std::int32_t type) { return type == kItemInt || type == kItemFloat ? 4 : 8; }

// A catalogue row as stored: its presence word, then the fields in the byte
// order of their names, a handle taking an int and 4 bytes of padding, a
// string the 8-byte offset of its pool record. Presence bits follow the
// same order.
constexpr std::size_t kCatalogueRow = 32;
constexpr std::size_t kBaseClassIdAt = 4;
constexpr std::size_t kClassIdAt = 8;
constexpr std::size_t kClassNameAt = 12;
constexpr std::size_t kClassTableAt = 20;
constexpr std::size_t kClassVersionAt = 28;
constexpr std::int32_t kClassIdBit = 1 << 1;
constexpr std::int32_t kClassNameBit = 1 << 2;
constexpr std::int32_t kClassTableBit = 1 << 3;
constexpr std::int32_t kClassVersionBit = 1 << 4;
constexpr std::int32_t kFieldsThatLeadToTables = kClassIdBit | kClassNameBit | kClassTableBit;

std::string Hex(unsigned int value) {
  char text[16];
  std::snprintf(text, sizeof text, "%08X", value);
  return text;
}

// A 32-bit field set to value, a case of the given meaning.
DamageCase Word(std::string const& what, Locator const& at, std::int32_t value, Meaning meaning) {
  std::string stored(4, '\0');
  PutStoredInt(stored, 0, value);
  DamageCase damage{what, {}, std::string::npos, meaning};
  for (std::size_t i = 0; i < 4; ++i) damage.m_Edits.emplace_back(at(i), stored[i]);
  return damage;
}

// The offsets of the string pool's records, which a string field names.
std::vector<std::int32_t> PoolRecords(DatabaseLayout const& layout) {
  std::vector<std::int32_t> records;
  std::size_t const length = layout.Length(kRfmStringPoolHandle);
  for (std::size_t at = 4; at + 4 <= length;) {
    records.push_back(static_cast<std::int32_t>(at));
    at += 4 + ((static_cast<std::size_t>(layout.Int(kRfmStringPoolHandle, at)) + 3) & ~std::size_t(3));
  }
  return records;
}

// Handles that name something other than the right table: nothing, the
// record store's own objects, the header, the catalogue, every class table
// and the array, a free slot and a group the file does not have.
std::vector<std::int32_t> OtherHandles(DatabaseLayout const& layout,
                                       rom_SampleTransporterFile::Contents const& contents, std::int32_t right) {
  std::vector<std::int32_t> handles = {0, kRfmStringPoolHandle, kRfmReservedHandle, kRfmMetadataHandle, kHeader,
                                       kCatalogue, contents.m_Array.Value(), layout.Used(0),
                                       rfm_Handle::Make(static_cast<int>(layout.Groups().size()) + 6, 1).Value()};
  for (auto const& table : contents.m_Tables) handles.push_back(table.m_Handle.Value());
  handles.erase(std::remove(handles.begin(), handles.end(), right), handles.end());
  return handles;
}

void AddWords(DamageCases& cases, std::string const& what, Locator const& at, std::vector<std::int32_t> const& values,
              Meaning meaning = kStructure) {
  for (std::int32_t value : values) cases.Add(Word(what + " = " + std::to_string(value), at, value, meaning));
}

// The header: its root word, and each item's type, id and value. Only the
// catalogue's item leads anywhere; the others hold the writing release's
// numbers, which the object layer records as given.
void HeaderDamage(DamageCases& cases, DatabaseLayout const& layout,
                  rom_SampleTransporterFile::Contents const& contents) {
  cases.Int("header root word", layout.In(kHeader, 0));
  AddWords(cases, "header root word", layout.In(kHeader, 0), {0x12345678, static_cast<std::int32_t>(kRfmTableMagic)});
  // A version-space header finds the catalogue at handle 5 too: the file
  // reads whole, without the release's numbers.
  cases.Add(Word("header root word of a version space", layout.In(kHeader, 0),
                 static_cast<std::int32_t>(kRomVersionSpaceMagic), kOtherValue));
  cases.Int("header change count", layout.In(kHeader, 4));
  std::size_t const length = layout.Length(kHeader);
  for (std::size_t at = kStreamHeader; at < length;) {
    std::int32_t const type = layout.Int(kHeader, at);
    std::int32_t const id = layout.Int(kHeader, at + 4);
    bool const catalogue = id == kRomTagCatalog;
    std::string const item = "header item " + std::to_string(id);
    cases.Int(item + " type", layout.In(kHeader, at));
    // Another type of the same size: the item reads, but is not what its tag needs.
    AddWords(cases, item + " type", layout.In(kHeader, at), {type == kItemHandle ? kItemDouble : kItemFloat});
    cases.Int(item + " id", layout.In(kHeader, at + 4), catalogue ? kStructure : kUserData);
    if (catalogue) {
      std::int32_t const handle = layout.Int(kHeader, at + 8);
      cases.Int(item + " handle", layout.In(kHeader, at + 8));
      AddWords(cases, item + " handle", layout.In(kHeader, at + 8), OtherHandles(layout, contents, handle));
    } else {
      cases.Text(item + " value", layout.In(kHeader, at + 8), 4, kUserData);
    }
    at += 8 + ItemValueSize(type);
  }
}

// The catalogue: its table header, then each row field by field. Class ID,
// Class Name and Class Table lead to a class's table; Base Class ID and
// Class Version are recorded as given, and a row without a Class Version is
// one of an old file.
void CatalogueDamage(DamageCases& cases, std::string const& bytes, DatabaseLayout const& layout,
                     rom_SampleTransporterFile::Contents const& contents) {
  cases.Int("catalogue magic", layout.In(kCatalogue, 0));
  cases.Int("catalogue flush count", layout.In(kCatalogue, 4));
  cases.Int("catalogue layout record", layout.In(kCatalogue, kLayoutRecord));
  std::vector<std::int32_t> classRecords;
  for (auto const& table : contents.m_Tables) classRecords.push_back(layout.Int(table.m_Handle.Value(), kLayoutRecord));
  AddWords(cases, "catalogue layout record of a class table", layout.In(kCatalogue, kLayoutRecord), classRecords);

  std::vector<std::int32_t> const records = PoolRecords(layout);
  OffsetValues const aString = [records](long long offset) {
    return std::find(records.begin(), records.end(), offset) != records.end();
  };
  std::size_t const rows = (layout.Length(kCatalogue) - kTableHeader) / kCatalogueRow;
  for (std::size_t row = 0; row < rows; ++row) {
    std::size_t const at = kTableHeader + row * kCatalogueRow;
    unsigned int const classId = contents.m_Tables.at(row).m_ClassId;
    std::string const name = "catalogue row of " + Hex(classId);
    auto const field = [&layout, at](std::size_t offset) { return layout.In(kCatalogue, at + offset); };

    std::int32_t const presence = layout.Int(kCatalogue, at);
    cases.Int(name + " presence", field(0), kStructure,
              [](std::int32_t bits) { return (bits & kFieldsThatLeadToTables) == kFieldsThatLeadToTables; });
    cases.Add(Word(name + " without Class Version", field(0), presence & ~kClassVersionBit, kOtherValue));
    cases.Int(name + " Base Class ID", field(kBaseClassIdAt), kUserData);

    cases.Int(name + " Class ID", field(kClassIdAt));
    std::vector<std::int32_t> ids = {static_cast<std::int32_t>(kRomNoClass),
                                     static_cast<std::int32_t>(kRomInternalMapClass)};
    for (auto const& other : contents.m_Tables) {
      if (other.m_ClassId != classId) ids.push_back(static_cast<std::int32_t>(other.m_ClassId));
    }
    AddWords(cases, name + " Class ID", field(kClassIdAt), ids);

    cases.Double(name + " Class Name", field(kClassNameAt), aString);

    std::int32_t const handle = layout.Int(kCatalogue, at + kClassTableAt);
    cases.Int(name + " Class Table", field(kClassTableAt));
    AddWords(cases, name + " Class Table", field(kClassTableAt), OtherHandles(layout, contents, handle));
    cases.Text(name + " Class Table's padding", field(kClassTableAt + 4), 4);

    cases.Int(name + " Class Version", field(kClassVersionAt), kUserData);

    // The row repeats another: one class twice, and one class missing.
    std::size_t const source = row == 0 ? 1 : row - 1;
    DamageCase repeated{name + " repeats the row of " + Hex(contents.m_Tables.at(source).m_ClassId), {},
                        std::string::npos, kStructure};
    for (std::size_t i = 0; i < kCatalogueRow; ++i) {
      repeated.m_Edits.emplace_back(layout.Locate(kCatalogue, at + i),
                                    bytes.at(layout.Locate(kCatalogue, kTableHeader + source * kCatalogueRow + i)));
    }
    cases.Add(repeated);
  }
}

// The references of the model's objects: object ids and class ids that
// lead to no row, to a row of a class that is not the referred class or
// derived from it, or to nothing at all must end in the library's error; a
// null reference (object id -1 with no class, or a column without data), a
// negative base class row (no base class part) and another row of the right
// class are well formed.
void ReferenceDamage(DamageCases& cases, std::string const& bytes, DatabaseLayout const& layout,
                     rom_SampleTransporterFile::Contents const& contents) {
  using Stored = rom_SampleTransporterFile::Contents::Stored;
  for (auto const& reference : contents.m_References) {
    int const table = reference.m_Table.Value();
    auto const field = [&layout, table](Stored const& stored) { return layout.In(table, stored.m_At); };
    auto const set = [&](Stored const& stored, std::int32_t value) {
      DamageCase damage = Word("", field(stored), value, kStructure);
      return damage.m_Edits;
    };
    auto const add = [&cases](std::string const& what, std::vector<std::pair<std::size_t, char>> edits,
                              Meaning meaning) { cases.Add({what, std::move(edits), std::string::npos, meaning}); };
    auto const withoutData = [&](Stored const& stored) {
      std::size_t const at = layout.Locate(table, stored.m_PresenceAt);
      return std::vector<std::pair<std::size_t, char>>{
          {at, static_cast<char>(static_cast<unsigned char>(bytes.at(at)) & ~stored.m_PresenceMask)}};
    };
    std::string const oid = reference.m_What + (reference.m_Base ? "" : " object id");
    std::int32_t const rows = reference.m_TargetRows;
    for (std::int32_t value : {0, rows - 1}) add(oid + " = " + std::to_string(value), set(reference.m_Oid, value), kOtherValue);
    for (std::int32_t value : {rows, rows + 1, kLargestInt})
      add(oid + " = " + std::to_string(value), set(reference.m_Oid, value), kStructure);
    add(oid + " without data", withoutData(reference.m_Oid), kOtherValue);
    if (reference.m_Base) {
      for (std::int32_t value : {-1, kSmallestInt})
        add(oid + " = " + std::to_string(value), set(reference.m_Oid, value), kOtherValue);
      continue;
    }
    for (std::int32_t value : {-1, -2, kSmallestInt})
      add(oid + " = " + std::to_string(value), set(reference.m_Oid, value), kStructure);
    std::string const classId = reference.m_What + " class id";
    std::vector<std::int32_t> others = {0, static_cast<std::int32_t>(kRomNoClass),
                                        static_cast<std::int32_t>(kRomInternalListClass), kLargestInt};
    for (unsigned int other : rom_SampleTransporterFile::Classes()) others.push_back(static_cast<std::int32_t>(other));
    others.erase(std::remove(others.begin(), others.end(), static_cast<std::int32_t>(reference.m_Target)),
                 others.end());
    for (std::int32_t value : others)
      add(classId + " = " + Hex(static_cast<unsigned int>(value)), set(reference.m_ClassId, value), kStructure);
    add(classId + " without data", withoutData(reference.m_ClassId), kOtherValue);
    auto null = set(reference.m_Oid, -1);
    auto const noClass = set(reference.m_ClassId, static_cast<std::int32_t>(kRomNoClass));
    null.insert(null.end(), noClass.begin(), noClass.end());
    add(reference.m_What + " null", null, kOtherValue);
  }
}

}  // namespace

std::vector<DamageCase> TransporterDamage(std::string const& bytes,
                                          rom_SampleTransporterFile::Contents const& contents) {
  std::vector<rfm_SampleDatabase::Object> objects;
  for (auto const& table : contents.m_Tables) objects.push_back({table.m_Handle, rfm_TypeTable});
  objects.push_back({contents.m_Array, rfm_TypeInt});
  std::vector<DamageCase> all = DatabaseDamage(bytes, objects);

  DatabaseLayout const layout(bytes);
  DamageCases cases(bytes);
  HeaderDamage(cases, layout, contents);
  CatalogueDamage(cases, bytes, layout, contents);
  ReferenceDamage(cases, bytes, layout, contents);
  all.insert(all.end(), cases.Cases().begin(), cases.Cases().end());
  return all;
}
