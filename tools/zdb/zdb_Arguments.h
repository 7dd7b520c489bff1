#ifndef zdb_Arguments_h
#define zdb_Arguments_h

#include <map>
#include <string>
#include <vector>

// The command line of one subcommand: its positional arguments and its
// options. An option is "--name value" or "--name=value" when it takes a
// value, "--name" alone when it is a flag; "--" ends the options, so that
// a file whose name begins with "-" can be named.
//
// Invariant: every option held was declared, and those that take a value
// have one.
class zdb_Arguments {
public:
  // The options a subcommand knows, each with whether it takes a value.
  using Declared = std::map<std::string, bool>;

  // Raises zdb_UsageError for an undeclared option, a missing value, or a
  // number of positional arguments other than positionals.
  zdb_Arguments(std::vector<std::string> const& words, Declared const& declared, std::size_t positionals);

  std::string const& Positional(std::size_t index) const { return m_Positionals.at(index); }
  bool Has(std::string const& option) const { return m_Options.count(option) != 0; }
  // The value of an option given, or fallback.
  std::string Value(std::string const& option, std::string const& fallback) const;

  // Whether the words ask for help, wherever "--help" or "-h" stands
  // before "--".
  static bool AsksForHelp(std::vector<std::string> const& words);

private:
  std::vector<std::string> m_Positionals;
  std::map<std::string, std::string> m_Options;
};

// Reads a whole number in decimal, or in hexadecimal after "0x"; raises
// zdb_UsageError naming what for a text that is not one, or that lies
// outside [lowest, highest].
long long zdb_ParseNumber(std::string const& text, char const* what, long long lowest, long long highest);

#endif
