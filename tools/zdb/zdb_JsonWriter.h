#ifndef zdb_JsonWriter_h
#define zdb_JsonWriter_h

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

// Writes one JSON document, value by value, in the order of the calls; it
// puts the commas and colons, so callers only say what comes.
//
// Values JSON cannot hold have a representation of their own:
// - a string is bytes: valid UTF-8 passes as it is; a byte that is not part
//   of valid UTF-8 is written as the character of the same number
//   (\u0080 to \u00FF, as Latin-1 reads it); control characters, quotes
//   and backslashes are escaped;
// - a double is written in the shortest form that reads back as the same
//   double, always with a point or an exponent ("2.0", "-0.0", "1e+300"),
//   so that readers take it as a floating point number; NaN and the
//   infinities, which JSON has no numbers for, are the strings "NaN",
//   "Infinity" and "-Infinity".
//
// Invariant: m_Levels has one entry per open object or array, saying
// whether a value has been written in it yet.
class zdb_JsonWriter {
public:
  explicit zdb_JsonWriter(std::FILE* out) : m_Out(out) {}

  void BeginObject();
  void EndObject();
  void BeginArray();
  void EndArray();
  // The name of the next member of the current object.
  void Key(std::string_view name);
  void String(std::string_view bytes);
  void Integer(long long value);
  void Double(double value);
  void Null();
  // Ends the document's last line.
  void EndDocument() { std::fputc('\n', m_Out); }
  // Starts the next value on a new line, to keep large documents readable.
  void Break() { m_Break = true; }

  // The JSON forms of a string and of a double, as written above.
  static std::string StringText(std::string_view bytes);
  static std::string DoubleText(double value);

private:
  void BeforeValue();
  void Write(std::string const& text) { std::fputs(text.c_str(), m_Out); }

  std::FILE* m_Out;
  std::vector<bool> m_Levels;
  bool m_AfterKey = false;
  bool m_Break = false;
};

#endif
