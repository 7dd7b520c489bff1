#ifndef zdb_CheckReport_h
#define zdb_CheckReport_h

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// The problems a check found, one line each, in the order found. A
// subject that keeps failing the same way (every row of a damaged table)
// has its first few lines kept and the rest counted, so a large damaged file
// gives a readable report.
class zdb_CheckReport {
public:
  static constexpr int kLinesPerSubject = 5;

  void Problem(std::string const& line) { m_Lines.push_back(line); }
  // A problem of a repeating kind: kept for the first kLinesPerSubject of
  // its subject, counted after that.
  void RepeatedProblem(std::string const& subject, std::string const& line);
  // Adds a line for each subject that had more problems than were kept.
  void Close();

  std::vector<std::string> const& Lines() const { return m_Lines; }
  bool Clean() const { return m_Lines.empty(); }

private:
  std::vector<std::string> m_Lines;
  std::map<std::string, int> m_Repeats;
};

// The line for an object whose first word is not its kind's magic.
std::string zdb_MagicProblem(std::string const& subject, std::int32_t found, std::uint32_t expected);

#endif
