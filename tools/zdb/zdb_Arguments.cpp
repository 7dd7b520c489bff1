#include "zdb_Arguments.h"

#include "zdb_Failure.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>

namespace {

bool IsOption(std::string const& word) { return word.size() > 2 && word.compare(0, 2, "--") == 0; }

}  // namespace

zdb_Arguments::zdb_Arguments(std::vector<std::string> const& words, Declared const& declared, std::size_t positionals) {
  bool optionsEnded = false;
  for (std::size_t i = 0; i < words.size(); ++i) {
    std::string const& word = words[i];
    if (optionsEnded || !IsOption(word)) {
      if (word == "--") {
        optionsEnded = true;
        continue;
      }
      m_Positionals.push_back(word);
      continue;
    }
    std::string name = word.substr(2);
    std::string value;
    std::size_t equals = name.find('=');
    bool inlineValue = equals != std::string::npos;
    if (inlineValue) {
      value = name.substr(equals + 1);
      name.erase(equals);
    }
    auto known = declared.find(name);
    if (known == declared.end()) throw zdb_UsageError("unknown option --" + name);
    if (known->second && !inlineValue) {
      if (i + 1 == words.size()) throw zdb_UsageError("option --" + name + " needs a value");
      value = words[++i];
    }
    if (!known->second && inlineValue) throw zdb_UsageError("option --" + name + " takes no value");
    m_Options[name] = value;
  }
  if (m_Positionals.size() != positionals) {
    throw zdb_UsageError("expected " + std::to_string(positionals) + " argument" + (positionals == 1 ? "" : "s") +
                         ", got " + std::to_string(m_Positionals.size()));
  }
}

std::string zdb_Arguments::Value(std::string const& option, std::string const& fallback) const {
  auto found = m_Options.find(option);
  return found == m_Options.end() ? fallback : found->second;
}

bool zdb_Arguments::AsksForHelp(std::vector<std::string> const& words) {
  for (std::string const& word : words) {
    if (word == "--") return false;
    if (word == "--help" || word == "-h") return true;
  }
  return false;
}

long long zdb_ParseNumber(std::string const& text, char const* what, long long lowest, long long highest) {
  bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  char const* digits = text.c_str() + (hex ? 2 : 0);
  // strtoll alone would accept leading blanks, a plus sign and a sign after "0x".
  char const* first = !hex && *digits == '-' ? digits + 1 : digits;
  bool startsWell =
      hex ? std::isxdigit(static_cast<unsigned char>(*first)) : std::isdigit(static_cast<unsigned char>(*first));
  char* end = nullptr;
  errno = 0;
  long long value = startsWell ? std::strtoll(digits, &end, hex ? 16 : 10) : 0;
  if (!startsWell || *end != '\0') throw zdb_UsageError(std::string(what) + " \"" + text + "\" is not a whole number");
  if (errno == ERANGE || value < lowest || value > highest) {
    throw zdb_UsageError(std::string(what) + " " + text + " is out of range (" + std::to_string(lowest) + " to " +
                         std::to_string(highest) + ")");
  }
  return value;
}
