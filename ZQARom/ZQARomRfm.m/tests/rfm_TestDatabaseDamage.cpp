#include "rfm_TestDatabaseDamage.h"

#include <algorithm>
#include <functional>

namespace {

// Whether the items of a tagged stream's bytes read exactly to its end:
// each a known tag, an id and a value of the tag's size, a string naming a
// record of the pool.
bool ItemsFill(std::string const& stream, std::function<bool(long long)> const& aString) {
  std::size_t at = 8;
  while (at + 8 <= stream.size()) {
    int tag = StoredInt(stream, at);
    std::size_t size = tag == 1 || tag == 3 ? 4 : tag == 2 || tag == 4 || tag == 6 ? 8 : 0;
    if (size == 0 || at + 8 + size > stream.size()) return false;
    if (tag == 6 && !aString(OffsetValue(StoredDouble(stream, at + 8)))) return false;
    at += 8 + size;
  }
  return at == stream.size();
}

}  // namespace

std::vector<DamageCase> DatabaseDamage(std::string const& bytes,
                                       std::vector<rfm_SampleDatabase::Object> const& objects) {
  DamageCases cases(bytes);
  DatabaseLayout layout(bytes);
  IntValues const anyCount = [](std::int32_t value) { return value >= 1; };

  cases.Text("magic", At(0), 8);
  cases.Int("version", At(8));
  cases.Text("description", At(12), 4, kUserData);
  cases.Text("description's end", At(40), 4, kUserData);
  cases.Int("closing word", At(496));
  cases.Text("transfer record's marker", At(500), 4);
  cases.Double("transfer record's length", At(504));
  cases.Int("flush count", At(512));
  cases.Int("creation time", At(516), kUserData);
  cases.Text("reserved", At(520), 4);

  for (std::size_t group = 0; group < layout.Groups().size(); ++group) {
    int used = layout.Used(group);
    // The first slots of each group, its last slot in use and its first free one.
    std::vector<int> slots;
    for (int slot = 0; slot < std::min(used, group == 0 ? 16 : 6); ++slot) slots.push_back(slot);
    slots.push_back(used - 1);
    if (used < 512) slots.push_back(used);
    for (int slot : slots) {
      std::string const name = "linkage " + std::to_string(group) + ":" + std::to_string(slot);
      std::size_t const at = layout.Groups()[group] + static_cast<std::size_t>(slot) * kLinkage;
      bool const last = slot > 0 && slot < used && StoredInt(bytes, at + 24) == 0;
      long long const allocation = OffsetValue(StoredDouble(bytes, at));
      cases.Double(name + " allocation", At(at));
      // A chain's last extent may hold any length within its allocation.
      cases.Double(name + " length", At(at + 8),
                   [last, allocation](long long length) { return last && length >= 0 && length <= allocation; });
      // Moved whole into bytes that belong to nothing, an extent reads them.
      cases.Double(name + " location", At(at + 16), [&layout, at, allocation, slot, used](long long location) {
        return slot > 0 && slot < used && layout.Free(location, allocation, at);
      });
      // A null next ends the chain early: a shorter object.
      cases.Int(name + " next", At(at + 24), kStructure, [slot](std::int32_t next) { return slot > 0 && next == 0; });
    }
  }

  // The string pool: its magic, then records of a length word, the
  // characters and padding to a multiple of 4.
  cases.Int("pool magic", layout.In(1, 0));
  std::size_t const poolLength = layout.Length(1);
  std::vector<std::int32_t> strings;
  for (std::size_t at = 4; at + 4 <= poolLength;) {
    int length = layout.Int(1, at);
    strings.push_back(static_cast<std::int32_t>(at));
    auto padded = [](long long size) { return (size + 3) & ~3LL; };
    if (strings.size() <= 24) {
      std::string const name = "pool record " + std::to_string(strings.size());
      cases.Int(name + " length", layout.In(1, at), kStructure,
                [length, padded](std::int32_t other) { return other >= 0 && padded(other) == padded(length); });
      if (length > 0) cases.Text(name + " characters", layout.In(1, at + 4), 1, kUserData);
    }
    at += 4 + static_cast<std::size_t>(padded(length));
  }
  OffsetValues const aString = [strings](long long offset) {
    return std::find(strings.begin(), strings.end(), offset) != strings.end();
  };

  // The catalogue: its magic, then per table a record length, the name, and
  // per field a type and a name.
  cases.Int("catalogue magic", layout.In(3, 0));
  std::size_t const catalogueLength = layout.Length(3);
  std::vector<std::int32_t> records;
  for (std::size_t at = 4; at < catalogueLength;) {
    int length = layout.Int(3, at);
    records.push_back(static_cast<std::int32_t>(at));
    std::string const name = "catalogue record at " + std::to_string(at);
    cases.Int(name + " length", layout.In(3, at));
    cases.Double(name + " name", layout.In(3, at + 4), aString);
    for (std::size_t field = at + 12; field < at + static_cast<std::size_t>(length); field += 12) {
      cases.Int(name + " field type", layout.In(3, field), kStructure, OneOf({1, 2, 3, 4, 6}));
      cases.Double(name + " field name", layout.In(3, field + 4), aString);
    }
    at += static_cast<std::size_t>(length);
  }

  for (rfm_SampleDatabase::Object const& object : objects) {
    int const handle = object.m_Handle.Value();
    std::string const name = "object " + std::to_string(handle);
    std::size_t const length = layout.Length(handle);
    switch (object.m_Type) {
      case rfm_TypeTable: {
        cases.Int(name + " magic", layout.In(handle, 0));
        cases.Int(name + " flush count", layout.In(handle, 4));
        cases.Int(name + " catalogue record", layout.In(handle, 8), kStructure, OneOf(records));
        // Rows: presence bits and fields, handles and string references included.
        for (std::size_t at = 12; at < std::min<std::size_t>(length, 12 + 64); at += 4) {
          cases.Int(name + " row bytes at " + std::to_string(at), layout.In(handle, at), kUserData);
        }
        break;
      }
      case rfm_TypeStream: {
        cases.Int(name + " magic", layout.In(handle, 0));
        cases.Int(name + " change count", layout.In(handle, 4));
        std::string stream;
        for (std::size_t at = 0; at < length; ++at) stream += bytes.at(layout.Locate(handle, at));
        for (std::size_t at = 8; at < length;) {
          int tag = layout.Int(handle, at);
          bool const narrow = tag == 1 || tag == 3;
          std::string const item = name + " item at " + std::to_string(at);
          // Another tag leaves a stream whose items still read to its end.
          cases.Int(item + " tag", layout.In(handle, at), kStructure, [stream, at, &aString](std::int32_t other) {
            std::string changed = stream;
            PutStoredInt(changed, at, other);
            return ItemsFill(changed, aString);
          });
          cases.Int(item + " id", layout.In(handle, at + 4), kUserData);
          std::size_t value = narrow ? 4 : 8;
          cases.Text(item + " value", layout.In(handle, at + 8), value, kUserData);
          at += 8 + value;
        }
        break;
      }
      case rfm_TypeSpace:
        cases.Text(name + " bytes", layout.In(handle, 0), 4, kUserData);
        break;
      default:
        cases.Int(name + " magic", layout.In(handle, 0));
        cases.Int(name + " change count", layout.In(handle, 4));
        cases.Int(name + " element type", layout.In(handle, 8), kStructure, OneOf({1, 3, 4, 6}));
        cases.Int(name + " fields per row", layout.In(handle, 12), kStructure, anyCount);
        if (length > 16) cases.Text(name + " first element", layout.In(handle, 16), 4, kUserData);
        break;
    }
  }

  for (std::size_t length : {0, 1, 8, 12, 500, 512, 516, 1023, 1024, 1052, 1024 + 14335, 1024 + 14336}) {
    cases.Truncate(length);
  }
  for (std::size_t length = 1024 + kGroup + 1; length < bytes.size(); length += 1531) cases.Truncate(length);
  cases.Truncate(bytes.size() - 1);

  // Inputs the plain fuzz target found before element types were checked,
  // reduced to the bytes that mattered: an array's element type with a
  // high byte set made HandleType answer a value no rfm_Type has.
  for (auto [object, high] : {std::pair{2, '\x70'}, {5, '\x5b'}}) {
    int const handle = objects.at(object).m_Handle.Value();
    cases.Add({"fuzzed: object " + std::to_string(handle) + " element type's high byte",
               {{layout.Locate(handle, 11), high}}});
  }
  return cases.Cases();
}
