#include "atr_StringBase.h"

#include "mem_Alloc.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>

namespace {

int TextLength(char const* text, int length) {
  if (text == nullptr) return 0;
  if (length >= 0) return length;
  std::size_t n = std::strlen(text);
  if (n > static_cast<std::size_t>(INT_MAX)) std::abort();
  return static_cast<int>(n);
}

// Clips [start, start + count) to [0, length) and returns the clipped count.
int ClipRange(int length, int& start, int count) {
  if (start < 0) start = 0;
  if (start > length) start = length;
  if (count < 0) return 0;
  return std::min(count, length - start);
}

int CheckedSum(int a, int b) {
  long long sum = static_cast<long long>(a) + b;
  if (sum > INT_MAX) std::abort();
  return static_cast<int>(sum);
}

}  // namespace

atr_StringBase::Header* atr_StringBase::NewRepresentation(int capacity) {
  void* block = mem_Malloc(sizeof(Header) + static_cast<std::size_t>(capacity) + 1);
  Header* header = static_cast<Header*>(block);
  header->m_Count = 1;
  header->m_Length = 0;
  header->m_Capacity = capacity;
  return header;
}

bool atr_StringBase::OwnsInlineChars() const noexcept {
  return m_Chars == reinterpret_cast<char*>(m_Header + 1);
}

atr_StringBase::atr_StringBase(char const* text) : atr_StringBase(text, -1) {}

atr_StringBase::atr_StringBase(char const* text, int length) {
  int n = TextLength(text, length);
  if (n == 0) return;
  char* chars = PrepareWrite(n);
  std::memcpy(chars, text, static_cast<std::size_t>(n));
  SetLength(n);
}

atr_StringBase::atr_StringBase(int value) {
  char text[16];
  int n = std::snprintf(text, sizeof text, "%d", value);
  *this = atr_StringBase(text, n);
}

atr_StringBase::atr_StringBase(unsigned int value) {
  char text[16];
  int n = std::snprintf(text, sizeof text, "%u", value);
  *this = atr_StringBase(text, n);
}

atr_StringBase::atr_StringBase(atr_StringBase const& other) noexcept
    : m_Chars(other.m_Chars), m_Header(other.m_Header) {
  if (m_Header) ++m_Header->m_Count;
}

atr_StringBase::atr_StringBase(atr_StringBase&& other) noexcept
    : m_Chars(other.m_Chars), m_Header(other.m_Header) {
  other.m_Chars = nullptr;
  other.m_Header = nullptr;
}

atr_StringBase::~atr_StringBase() { Delete(); }

atr_StringBase& atr_StringBase::operator=(atr_StringBase const& other) noexcept {
  if (other.m_Header == m_Header) return *this;  // already sharing it
  // Taking the right-hand share first makes self-assignment harmless.
  char* chars = other.m_Chars;
  Header* header = other.m_Header;
  if (header) ++header->m_Count;
  Delete();
  m_Chars = chars;
  m_Header = header;
  return *this;
}

atr_StringBase& atr_StringBase::operator=(atr_StringBase&& other) noexcept {
  if (this != &other) {
    Delete();
    m_Chars = other.m_Chars;
    m_Header = other.m_Header;
    other.m_Chars = nullptr;
    other.m_Header = nullptr;
  }
  return *this;
}

atr_StringBase& atr_StringBase::operator=(char const* text) {
  // Build first: text may point into this string.
  atr_StringBase copy(text);
  return *this = std::move(copy);
}

atr_StringBase atr_StringBase::Adopt(char* buffer, int length) {
  atr_StringBase result;
  if (buffer == nullptr) return result;
  buffer[length] = '\0';
  Header* header = NewRepresentation(0);
  header->m_Length = length;
  result.m_Header = header;
  result.m_Chars = buffer;
  return result;
}

void atr_StringBase::Delete() noexcept {
  if (m_Header == nullptr) return;
  if (--m_Header->m_Count == 0) {
    if (!OwnsInlineChars()) mem_Free(m_Chars);
    mem_Free(m_Header);
  }
  m_Header = nullptr;
  m_Chars = nullptr;
}

char* atr_StringBase::PrepareWrite(int length) {
  bool exclusive = m_Header && m_Header->m_Count == 1 && OwnsInlineChars();
  if (exclusive && length <= m_Header->m_Capacity) return m_Chars;
  int capacity = length;
  if (exclusive) capacity = std::max(length, static_cast<int>(std::min(2LL * m_Header->m_Capacity, 0x7fffffffLL)));
  Header* header = NewRepresentation(capacity);
  char* chars = reinterpret_cast<char*>(header + 1);
  int keep = std::min(Length(), length);
  if (keep > 0) std::memcpy(chars, m_Chars, static_cast<std::size_t>(keep));
  header->m_Length = keep;
  chars[keep] = '\0';
  Delete();
  m_Header = header;
  m_Chars = chars;
  return chars;
}

void atr_StringBase::SetLength(int length) noexcept {
  m_Header->m_Length = length;
  m_Chars[length] = '\0';
}

void atr_StringBase::append(char const* text, int textLength, int start, int count) {
  int available = TextLength(text, textLength);
  int n = ClipRange(available, start, count);
  if (n == 0) return;
  // When the source lies in this string's own characters, keep them alive
  // across the reallocation.
  std::less<char const*> before;
  bool aliases = m_Header && !before(text, m_Chars) && before(text, m_Chars + Length() + 1);
  atr_StringBase keepAlive;
  if (aliases) keepAlive = *this;
  int oldLength = Length();
  int newLength = CheckedSum(oldLength, n);
  char* chars = PrepareWrite(newLength);
  std::memmove(chars + oldLength, text + start, static_cast<std::size_t>(n));
  SetLength(newLength);
}

atr_StringBase atr_StringBase::Substr(int start, int count) const {
  int n = ClipRange(Length(), start, count);
  if (start == 0 && n == Length()) return *this;
  return atr_StringBase(CStr() + start, n);
}

int atr_StringBase::Find(char const* text, int start) const {
  int length = Length();
  int n = TextLength(text, -1);
  if (start < 0) start = 0;
  if (start > length || n > length - start) return kNotFound;
  if (n == 0) return start;
  char const* base = CStr();
  for (int i = start; i <= length - n; ++i) {
    if (base[i] == text[0] && std::memcmp(base + i, text, static_cast<std::size_t>(n)) == 0) return i;
  }
  return kNotFound;
}

int atr_StringBase::rfind(char const* text, int start, int textLength) const {
  int length = Length();
  int n = TextLength(text, textLength);
  if (n > length) return kNotFound;
  int last = std::min(start, length - n);
  char const* base = CStr();
  for (int i = last; i >= 0; --i) {
    if (std::memcmp(base + i, text, static_cast<std::size_t>(n)) == 0) return i;
  }
  return kNotFound;
}

int atr_StringBase::Substitute(atr_StringBase const& from, atr_StringBase const& to, int maxCount) {
  if (from.Empty()) return 0;
  atr_StringBase result;
  int replaced = 0;
  int position = 0;
  while (maxCount < 1 || replaced < maxCount) {
    int found = Find(from.CStr(), position);
    if (found == kNotFound) break;
    result.append(CStr(), Length(), position, found - position);
    result.append(to);
    position = found + from.Length();
    ++replaced;
  }
  if (replaced == 0) return 0;
  result.append(CStr(), Length(), position, kAll);
  *this = std::move(result);
  return replaced;
}

void atr_StringBase::Erase(int start, int count) { replace(start, count, "", 0, 0, 0); }

void atr_StringBase::replace(int start, int count, char const* text, int textLength, int textStart,
                             int textCount) {
  int length = Length();
  int removed = ClipRange(length, start, count);
  int inserted = ClipRange(TextLength(text, textLength), textStart, textCount);
  atr_StringBase result(CStr(), start);
  result.append(text, textLength, textStart, inserted);
  result.append(CStr(), length, start + removed, kAll);
  *this = std::move(result);
}

int atr_StringBase::Compare(atr_StringBase const& other) const noexcept {
  int a = Length();
  int b = other.Length();
  // Copies share their characters: nothing to compare.
  if (CStr() == other.CStr() && a == b) return 0;
  int common = std::memcmp(CStr(), other.CStr(), static_cast<std::size_t>(std::min(a, b)));
  if (common != 0) return common;
  return a < b ? -1 : (a > b ? 1 : 0);
}

int atr_StringBase::Compare(char const* text) const noexcept {
  int a = Length();
  std::size_t b = text ? std::strlen(text) : 0;
  std::size_t common = std::min(static_cast<std::size_t>(a), b);
  int c = std::memcmp(CStr(), text ? text : "", common);
  if (c != 0) return c;
  if (static_cast<std::size_t>(a) == b) return 0;
  return static_cast<std::size_t>(a) < b ? -1 : 1;
}
