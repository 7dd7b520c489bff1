#ifndef rfm_TestDamage_h
#define rfm_TestDamage_h

#include "rfm_TestBytes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

// Damage recipes for the damaged-file tests: a case is a set of bytes
// replaced in a valid file, or a cut, with what the damaged bytes held.

// What the damaged bytes held, and so which different data is allowed.
enum Meaning {
  kStructure,   // only correct data or an error
  kUserData,    // any data
  kOtherValue,  // a structural field with another value that keeps the file well formed
};

// One damaged file: bytes replaced at offsets, or the file cut short.
struct DamageCase {
  std::string m_What;
  std::vector<std::pair<std::size_t, char>> m_Edits;
  std::size_t m_Length = std::string::npos;  // cut to this many bytes unless npos
  Meaning m_Meaning = kStructure;

  std::string Apply(std::string bytes) const {
    for (auto const& edit : m_Edits) bytes.at(edit.first) = edit.second;
    if (m_Length != std::string::npos) bytes.resize(m_Length);
    return bytes;
  }
};

// Where byte i of a field lies in the file: fields of objects may straddle
// extents.
using Locator = std::function<std::size_t(std::size_t)>;

inline Locator At(std::size_t offset) {
  return [offset](std::size_t i) { return offset + i; };
}

// Which new values of a field leave the file well formed; the cases that
// write one are classed kOtherValue.
using IntValues = std::function<bool(std::int32_t)>;
// For stored offsets and sizes: the value as the library reads it, -1 for
// one it cannot read (negative, NaN or too large).
using OffsetValues = std::function<bool(long long)>;

inline IntValues OneOf(std::vector<std::int32_t> values) {
  return [values](std::int32_t value) { return std::find(values.begin(), values.end(), value) != values.end(); };
}

inline long long OffsetValue(double stored) {
  if (!(stored >= 0.0 && stored < std::ldexp(1.0, 62))) return -1;
  return static_cast<long long>(stored + 0.5);
}

// The cases for the fields of one file's bytes.
constexpr std::int32_t kLargestInt = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kSmallestInt = std::numeric_limits<std::int32_t>::min();

class DamageCases {
public:
  explicit DamageCases(std::string const& bytes) : m_Bytes(bytes) {}

  // A 32-bit field: single bit flips across the word, and extreme values.
  void Int(std::string const& what, Locator const& at, Meaning meaning = kStructure, IntValues const& other = {}) {
    std::size_t first = m_Cases.size();
    for (int bit : {0, 1, 2, 3, 5, 8, 12, 16, 23, 24, 30, 31}) Flip(what, at, bit, meaning);
    for (std::int32_t value : {0, -1, kLargestInt, kSmallestInt}) {
      std::string stored(4, '\0');
      PutStoredInt(stored, 0, value);
      Overwrite(what + " = " + std::to_string(value), at, stored, meaning);
    }
    if (!other) return;
    for (std::size_t i = first; i < m_Cases.size(); ++i) {
      if (other(StoredInt(After(m_Cases[i], at, 4), 0))) m_Cases[i].m_Meaning = kOtherValue;
    }
  }

  // A 32-bit field set to each of values, each a case of its own.
  void Values(std::string const& what, Locator const& at, std::vector<std::int32_t> const& values) {
    for (std::int32_t value : values) {
      std::string stored(4, '\0');
      PutStoredInt(stored, 0, value);
      Overwrite(what + " = " + std::to_string(value), at, stored, kStructure);
    }
  }

  // A stored offset or size, a double: flips in the mantissa's low, middle
  // and high bits, the exponent and the sign, and extreme values.
  void Double(std::string const& what, Locator const& at, OffsetValues const& other = {}) {
    std::size_t first = m_Cases.size();
    for (int bit : {0, 30, 47, 48, 49, 50, 51, 52, 53, 56, 62, 63}) Flip(what, at, bit, kStructure);
    double const values[] = {0.0,    -1.0,    2147483647.0, std::nan(""), 1.0e300, -1.0e300,
                             HUGE_VAL, 9007199254740992.0};
    for (double value : values) {
      std::string stored(8, '\0');
      PutStoredDouble(stored, 0, value);
      Overwrite(what + " = " + std::to_string(value), at, stored, kStructure);
    }
    if (!other) return;
    for (std::size_t i = first; i < m_Cases.size(); ++i) {
      if (other(OffsetValue(StoredDouble(After(m_Cases[i], at, 8), 0)))) m_Cases[i].m_Meaning = kOtherValue;
    }
  }

  // Bytes of text or padding: the lowest and highest bit of each, and zeros.
  void Text(std::string const& what, Locator const& at, std::size_t count, Meaning meaning = kStructure) {
    for (std::size_t i = 0; i < count; ++i) {
      Flip(what + " byte " + std::to_string(i), [&at, i](std::size_t) { return at(i); }, 0, meaning);
      Flip(what + " byte " + std::to_string(i), [&at, i](std::size_t) { return at(i); }, 7, meaning);
    }
    Overwrite(what + " zeroed", at, std::string(count, '\0'), meaning);
  }

  void Truncate(std::size_t length) {
    if (length >= m_Bytes.size()) return;
    DamageCase damage;
    damage.m_What = "cut to " + std::to_string(length) + " bytes";
    damage.m_Length = length;
    m_Cases.push_back(damage);
  }

  // Any other damage, such as an input a fuzz target found, as its edits
  // to these bytes.
  void Add(DamageCase const& damage) { m_Cases.push_back(damage); }

  std::vector<DamageCase> const& Cases() const { return m_Cases; }

private:
  void Flip(std::string const& what, Locator const& at, int bit, Meaning meaning) {
    DamageCase damage;
    damage.m_What = what + " bit " + std::to_string(bit) + " flipped";
    std::size_t offset = at(static_cast<std::size_t>(bit / 8));
    damage.m_Edits.emplace_back(offset, static_cast<char>(m_Bytes.at(offset) ^ (1 << (bit % 8))));
    damage.m_Meaning = meaning;
    m_Cases.push_back(damage);
  }

  void Overwrite(std::string const& what, Locator const& at, std::string const& stored, Meaning meaning) {
    DamageCase damage;
    damage.m_What = what;
    for (std::size_t i = 0; i < stored.size(); ++i) damage.m_Edits.emplace_back(at(i), stored[i]);
    damage.m_Meaning = meaning;
    m_Cases.push_back(damage);
  }

  // The field's bytes in the damaged file.
  std::string After(DamageCase const& damage, Locator const& at, std::size_t size) const {
    std::string field;
    for (std::size_t i = 0; i < size; ++i) {
      char byte = m_Bytes.at(at(i));
      for (auto const& edit : damage.m_Edits) {
        if (edit.first == at(i)) byte = edit.second;
      }
      field += byte;
    }
    return field;
  }

  std::string const& m_Bytes;
  std::vector<DamageCase> m_Cases;
};

#endif
