#ifndef rfm_TestDamageRun_h
#define rfm_TestDamageRun_h

#include "cow_String.h"
#include "rfm_TestDamage.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

// Runs damaged-file cases in child processes and tallies how they ended.
// One child takes the cases in turn, each under a time limit and with an
// allocation limit for the whole child, walks each damaged file (by default
// with rfm_DatabaseWalk, which reads the file's last byte first, as a
// program that copies or checks a whole file does) and reports on a pipe how
// that ended; a child that dies
// (a crash, a sanitizer's report, the time limit) takes its current case
// with it, and a new child goes on with the next. The limits are far below
// what a count read from the file could cost if anything trusted it. Under
// the address sanitizer the child finally looks for leaked memory.

struct DamageResult {
  int m_Outcome;  // how the case ended, a sanitizer's exit status, or a signal
  std::string m_Message;
};

// How a damaged file is read whole: rfm_DatabaseWalk::Walk, or the walk of
// a layer above the record store, whose text is compared in the same way.
using DamageWalk = std::function<std::string(cow_String const&)>;

// Runs every case: write(case) makes the damaged file at name, whose walk
// is compared with expected. Answers one result per case, in order, and
// one more when the cases leaked memory.
std::vector<DamageResult> RunDamageCases(std::vector<DamageCase> const& cases,
                                         std::function<void(DamageCase const&)> const& write, cow_String const& name,
                                         std::string const& expected, DamageWalk const& walk = {});

// The outcomes of a run of cases, counted, with each library message and
// how often it came; and the cases that ended as no case may, in full.
// Different data is allowed only after damage to bytes that are not
// structure (see Meaning).
class DamageTally {
public:
  // name, the damaged file, is shown as <file> in messages. Unless
  // assertions are allowed, a case that ends in an internal assertion's
  // text fails: damage must give the user a message.
  DamageTally(std::vector<DamageCase> const& cases, std::vector<DamageResult> const& results, cow_String const& name,
              bool assertionsAllowed = true);

  int Cases() const { return m_Cases; }
  void Print(char const* title) const;
  void ExpectNoFailures() const;

private:
  void Add(DamageCase const& damage, DamageResult const& result, cow_String const& name);

  bool m_AssertionsAllowed;
  int m_Cases = 0;
  std::map<std::string, int> m_Counts;
  std::map<std::string, int> m_Messages;
  std::vector<std::string> m_Failures;
};

#endif
