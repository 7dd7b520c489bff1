#include "atr_SubstituteFormat.h"

#include "mem_Alloc.h"

#include <cstdio>
#include <cstring>

namespace {

// One parsed conversion: "%[position$][flags][width][.precision][length]conversion".
struct Conversion {
  int position = 0;  // 1-based, 0 when sequential
  char printfStem[48];  // the conversion without position and length, ready for snprintf
  char kind = 0;     // conversion character
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Parses the conversion that starts at format[start] == '%'. On success sets
// end past it and fills conversion; fails for anything that is not a conversion.
bool Parse(char const* format, int length, int start, Conversion& conversion, int& end) {
  int i = start + 1;
  int digitsStart = i;
  int number = 0;
  while (i < length && IsDigit(format[i]) && number < 1000) number = number * 10 + (format[i++] - '0');
  if (i < length && format[i] == '$' && i > digitsStart && number > 0) {
    conversion.position = number;
    ++i;
  } else {
    i = digitsStart;
  }
  int bodyStart = i;
  while (i < length && std::strchr("-+ #0", format[i]) && format[i] != '\0') ++i;
  while (i < length && IsDigit(format[i])) ++i;
  if (i < length && format[i] == '.') {
    ++i;
    while (i < length && IsDigit(format[i])) ++i;
  }
  int bodyEnd = i;
  while (i < length && format[i] != '\0' && std::strchr("hlLqjzt", format[i])) ++i;
  if (i >= length || format[i] == '\0' || !std::strchr("diouxXcsfFeEgGaA", format[i])) return false;
  int bodyLength = bodyEnd - bodyStart;
  if (bodyLength > 40) return false;
  conversion.kind = format[i];
  conversion.printfStem[0] = '%';
  std::memcpy(conversion.printfStem + 1, format + bodyStart, static_cast<std::size_t>(bodyLength));
  conversion.printfStem[1 + bodyLength] = '\0';
  end = i + 1;
  return true;
}

template <class Value>
void AppendPrintf(atr_String& out, char const* printfFormat, Value value) {
  char small[128];
  int n = std::snprintf(small, sizeof small, printfFormat, value);
  if (n < 0) return;
  if (static_cast<std::size_t>(n) < sizeof small) {
    out.append(small, n, 0, n);
    return;
  }
  char* large = static_cast<char*>(mem_Malloc(static_cast<std::size_t>(n) + 1));
  std::snprintf(large, static_cast<std::size_t>(n) + 1, printfFormat, value);
  out.append(large, n, 0, n);
  mem_Free(large);
}

// The text of an argument when a %s asks for it.
atr_String AsText(atr_FormatArg const& arg) {
  switch (arg.GetKind()) {
    case atr_FormatArg::kText:
      return arg.Text();
    case atr_FormatArg::kInteger: {
      atr_String text;
      AppendPrintf(text, "%lld", arg.Integer());
      return text;
    }
    case atr_FormatArg::kReal:
      break;
  }
  atr_String text;
  AppendPrintf(text, "%g", arg.Real());
  return text;
}

void AppendConversion(atr_String& out, Conversion const& conversion, atr_FormatArg const& arg) {
  char printfFormat[56];
  bool integral = std::strchr("diouxXc", conversion.kind) != nullptr;
  if (conversion.kind == 's' || arg.GetKind() == atr_FormatArg::kText) {
    std::snprintf(printfFormat, sizeof printfFormat, "%ss", conversion.printfStem);
    AppendPrintf(out, printfFormat, AsText(arg).CStr());
  } else if (integral) {
    long long value = arg.GetKind() == atr_FormatArg::kReal ? static_cast<long long>(arg.Real()) : arg.Integer();
    if (conversion.kind == 'c') {
      std::snprintf(printfFormat, sizeof printfFormat, "%sc", conversion.printfStem);
      AppendPrintf(out, printfFormat, static_cast<int>(value));
    } else if (conversion.kind == 'd' || conversion.kind == 'i') {
      std::snprintf(printfFormat, sizeof printfFormat, "%sll%c", conversion.printfStem, conversion.kind);
      AppendPrintf(out, printfFormat, value);
    } else {
      // Unsigned forms show a value that fits 32 bits as the 32-bit word it
      // was, so -1 under %08X is FFFFFFFF.
      bool narrow = value >= -2147483648LL && value <= 4294967295LL;
      unsigned long long bits = narrow ? static_cast<unsigned int>(value) : static_cast<unsigned long long>(value);
      std::snprintf(printfFormat, sizeof printfFormat, "%sll%c", conversion.printfStem, conversion.kind);
      AppendPrintf(out, printfFormat, bits);
    }
  } else {
    double value = arg.GetKind() == atr_FormatArg::kReal ? arg.Real() : static_cast<double>(arg.Integer());
    std::snprintf(printfFormat, sizeof printfFormat, "%s%c", conversion.printfStem, conversion.kind);
    AppendPrintf(out, printfFormat, value);
  }
}

}  // namespace

atr_String atr_SubstituteFormatArgs(atr_StringBase const& format, atr_FormatArg const* args, int count) {
  atr_String out;
  char const* text = format.CStr();
  int length = format.Length();
  int nextArgument = 0;
  int i = 0;
  while (i < length) {
    int literalEnd = i;
    while (literalEnd < length && text[literalEnd] != '%') ++literalEnd;
    out.append(text, length, i, literalEnd - i);
    i = literalEnd;
    if (i >= length) break;
    if (i + 1 < length && text[i + 1] == '%') {
      out.append("%", 1, 0, 1);
      i += 2;
      continue;
    }
    Conversion conversion;
    int end = 0;
    if (!Parse(text, length, i, conversion, end)) {
      out.append(text, length, i, 1);
      ++i;
      continue;
    }
    int index = conversion.position > 0 ? conversion.position - 1 : nextArgument++;
    if (index < count) {
      AppendConversion(out, conversion, args[index]);
    } else {
      out.append(text, length, i, end - i);
    }
    i = end;
  }
  return out;
}
