#ifndef zdb_Text_h
#define zdb_Text_h

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// How zdb writes values as text, for people and for JSON alike.

// The length of the valid UTF-8 sequence that starts bytes, or 0 when the
// bytes there are no valid UTF-8 (an ill-formed, overlong or surrogate
// sequence, or one cut short by the end).
std::size_t zdb_Utf8SequenceLength(std::string_view bytes);

// bytes between double quotes: each valid UTF-8 sequence of printable
// characters passes as it is; every other byte (a control character, DEL, a
// quote, a backslash, a byte that is no part of valid UTF-8) is replaced by
// what escape makes of it.
std::string zdb_Quoted(std::string_view bytes, std::string (*escape)(unsigned char byte));

// The escape of a quote, a backslash and the control characters that C and
// JSON both name with a letter (\b \f \n \r \t); null for any other byte.
char const* zdb_ShortEscape(unsigned char byte);

// A string between double quotes for a person: quotes, backslashes and the
// control characters of zdb_ShortEscape escaped so, other control bytes and
// bytes that are not UTF-8 as \xHH; valid UTF-8 passes as it is.
std::string zdb_QuotedText(std::string_view bytes);

// The shortest decimal form that reads back as the same value: "0.1",
// "1e+300", "nan", "-inf".
std::string zdb_DoubleText(double value);
std::string zdb_FloatText(float value);

// A 32-bit word as 0x and eight hexadecimal digits: "0x0000ABCD".
std::string zdb_HexWord(std::uint32_t word);

// A noun with its indefinite article: "an int", "a double array".
std::string zdb_WithArticle(std::string const& noun);

#endif
