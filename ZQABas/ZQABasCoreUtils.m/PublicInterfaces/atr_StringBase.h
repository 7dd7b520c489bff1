#ifndef atr_StringBase_h
#define atr_StringBase_h

#include "ZQABasExport.h"

#include <cstdint>

// A shared, counted string of bytes. The value is two words: the characters
// and a header holding the reference count and the length. A null header is
// the empty string. Copies share the characters; a change to a shared string
// first makes it private, so copying never copies characters.
//
// Invariant: when the header is set, m_Chars[length] is a terminating zero
// and the count is at least 1. Embedded zero bytes are part of the length.
class ZQA_EXPORT atr_StringBase {
public:
  // "All characters" as a count argument.
  static constexpr int kAll = 0x7fffffff;
  static constexpr int kNotFound = -1;

  atr_StringBase() noexcept = default;
  atr_StringBase(char const* text);
  atr_StringBase(char const* text, int length);
  explicit atr_StringBase(int value);
  explicit atr_StringBase(unsigned int value);
  atr_StringBase(atr_StringBase const& other) noexcept;
  atr_StringBase(atr_StringBase&& other) noexcept;
  ~atr_StringBase();

  atr_StringBase& operator=(atr_StringBase const& other) noexcept;
  atr_StringBase& operator=(atr_StringBase&& other) noexcept;
  atr_StringBase& operator=(char const* text);

  // Takes ownership of a mem_Malloc'd buffer of length + 1 bytes whose last
  // byte the string sets to zero.
  static atr_StringBase Adopt(char* buffer, int length);

  int Length() const noexcept { return m_Header ? m_Header->m_Length : 0; }
  bool Empty() const noexcept { return Length() == 0; }
  char const* CStr() const noexcept { return m_Header ? m_Chars : ""; }
  char operator[](int index) const noexcept { return CStr()[index]; }
  int ReferenceCount() const noexcept { return m_Header ? m_Header->m_Count : 0; }

  // Appends count characters of text from start; a textLength below 0 means
  // strlen(text), and a count past the end means the rest.
  void append(char const* text, int textLength, int start, int count);
  void append(atr_StringBase const& other) { append(other.CStr(), other.Length(), 0, kAll); }

  // The characters from start, count of them or the rest; clipped to the string.
  atr_StringBase Substr(int start, int count) const;

  // Position of the first occurrence of text at or after start, or kNotFound.
  int Find(char const* text, int start = 0) const;
  // Position of the last occurrence of text that begins at or before start
  // (kAll: anywhere), or kNotFound. textLength below 0 means strlen(text).
  int rfind(char const* text, int start = kAll, int textLength = -1) const;

  // Replaces up to maxCount occurrences of from by to (maxCount below 1:
  // all), left to right, and returns how many were replaced.
  int Substitute(atr_StringBase const& from, atr_StringBase const& to, int maxCount);
  void Erase(int start, int count);
  // Replaces count characters at start by textCount characters of text from textStart.
  void replace(int start, int count, char const* text, int textLength, int textStart, int textCount);

  // Drops this string's share of its representation, freeing it when it was
  // the last owner, and leaves the string empty.
  void Delete() noexcept;

  int Compare(atr_StringBase const& other) const noexcept;
  int Compare(char const* text) const noexcept;

private:
  struct Header {
    std::int32_t m_Count;
    std::int32_t m_Length;
    std::int32_t m_Capacity;  // room for characters behind the header; 0 for an adopted buffer
  };

  static Header* NewRepresentation(int capacity);
  bool OwnsInlineChars() const noexcept;
  // Makes the representation private with room for length characters; the
  // existing characters (up to the new length) are kept.
  char* PrepareWrite(int length);
  void SetLength(int length) noexcept;

  char* m_Chars = nullptr;
  Header* m_Header = nullptr;
};

inline bool operator==(atr_StringBase const& a, atr_StringBase const& b) { return a.Compare(b) == 0; }
inline bool operator!=(atr_StringBase const& a, atr_StringBase const& b) { return a.Compare(b) != 0; }
inline bool operator<(atr_StringBase const& a, atr_StringBase const& b) { return a.Compare(b) < 0; }
inline bool operator==(atr_StringBase const& a, char const* b) { return a.Compare(b) == 0; }
inline bool operator!=(atr_StringBase const& a, char const* b) { return a.Compare(b) != 0; }

#endif
