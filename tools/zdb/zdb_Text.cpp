#include "zdb_Text.h"

#include <charconv>
#include <cstdio>

namespace {

bool Continuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

template <class T>
std::string Shortest(T value) {
  char text[64];
  auto result = std::to_chars(text, text + sizeof text, value);
  return std::string(text, result.ptr);
}

}  // namespace

std::size_t zdb_Utf8SequenceLength(std::string_view bytes) {
  if (bytes.empty()) return 0;
  auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  unsigned char lead = at(0);
  if (lead < 0x80) return 1;
  std::size_t length;
  unsigned char low = 0x80;  // the range the second byte must lie in: no overlong forms, no surrogates
  unsigned char high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  } else {
    return 0;
  }
  if (bytes.size() < length || at(1) < low || at(1) > high) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if (!Continuation(at(i))) return 0;
  }
  return length;
}

std::string zdb_Quoted(std::string_view bytes, std::string (*escape)(unsigned char byte)) {
  std::string quoted = "\"";
  while (!bytes.empty()) {
    auto byte = static_cast<unsigned char>(bytes[0]);
    std::size_t sequence = zdb_Utf8SequenceLength(bytes);
    if (sequence == 0 || byte < 0x20 || byte == 0x7F || byte == '"' || byte == '\\') {
      quoted += escape(byte);
      sequence = 1;
    } else {
      quoted.append(bytes.substr(0, sequence));
    }
    bytes.remove_prefix(sequence);
  }
  return quoted + "\"";
}

char const* zdb_ShortEscape(unsigned char byte) {
  switch (byte) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\b':
      return "\\b";
    case '\f':
      return "\\f";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      return nullptr;
  }
}

std::string zdb_QuotedText(std::string_view bytes) {
  return zdb_Quoted(bytes, [](unsigned char byte) -> std::string {
    if (char const* escape = zdb_ShortEscape(byte)) return escape;
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\x%02X", byte);
    return escape;
  });
}

std::string zdb_DoubleText(double value) { return Shortest(value); }

std::string zdb_FloatText(float value) { return Shortest(value); }

std::string zdb_WithArticle(std::string const& noun) {
  bool vowel = !noun.empty() && std::string("aeiou").find(noun[0]) != std::string::npos;
  return (vowel ? "an " : "a ") + noun;
}

std::string zdb_HexWord(std::uint32_t word) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", word);
  return text;
}
