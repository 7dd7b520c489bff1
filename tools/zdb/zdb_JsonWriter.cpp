#include "zdb_JsonWriter.h"

#include "zdb_Text.h"

#include <cmath>
#include <cstdio>

void zdb_JsonWriter::BeforeValue() {
  if (m_AfterKey) {
    m_AfterKey = false;
    return;
  }
  if (!m_Levels.empty()) {
    if (m_Levels.back()) std::fputc(',', m_Out);
    m_Levels.back() = true;
  }
  if (m_Break) {
    std::fputc('\n', m_Out);
    m_Break = false;
  }
}

void zdb_JsonWriter::BeginObject() {
  BeforeValue();
  std::fputc('{', m_Out);
  m_Levels.push_back(false);
}

void zdb_JsonWriter::EndObject() {
  m_Levels.pop_back();
  std::fputc('}', m_Out);
}

void zdb_JsonWriter::BeginArray() {
  BeforeValue();
  std::fputc('[', m_Out);
  m_Levels.push_back(false);
}

void zdb_JsonWriter::EndArray() {
  m_Levels.pop_back();
  std::fputc(']', m_Out);
}

void zdb_JsonWriter::Key(std::string_view name) {
  BeforeValue();
  Write(StringText(name));
  std::fputc(':', m_Out);
  m_AfterKey = true;
}

void zdb_JsonWriter::String(std::string_view bytes) {
  BeforeValue();
  Write(StringText(bytes));
}

void zdb_JsonWriter::Integer(long long value) {
  BeforeValue();
  Write(std::to_string(value));
}

void zdb_JsonWriter::Double(double value) {
  BeforeValue();
  Write(DoubleText(value));
}

void zdb_JsonWriter::Null() {
  BeforeValue();
  Write("null");
}

std::string zdb_JsonWriter::StringText(std::string_view bytes) {
  return zdb_Quoted(bytes, [](unsigned char byte) -> std::string {
    if (char const* escape = zdb_ShortEscape(byte)) return escape;
    // Control characters, and bytes outside UTF-8 as the Latin-1 character of their number.
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04X", byte);
    return escape;
  });
}

std::string zdb_JsonWriter::DoubleText(double value) {
  if (std::isnan(value)) return "\"NaN\"";
  if (std::isinf(value)) return value > 0 ? "\"Infinity\"" : "\"-Infinity\"";
  std::string text = zdb_DoubleText(value);
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}
