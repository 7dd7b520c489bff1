// zdb: looks into database files from the command line. Each subcommand
// lives in a file of its own; this one finds it, prints help, and turns the
// ways a subcommand can end into exit statuses and messages.

#include "zdb_Arguments.h"
#include "zdb_Command.h"
#include "zdb_Failure.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

namespace {

zdb_Command const* const kCommands[] = {
    &zdb_InfoCommand,   &zdb_ObjectsCommand, &zdb_TablesCommand,   &zdb_ClassesCommand,    &zdb_DumpCommand,
    &zdb_LocateCommand, &zdb_CheckCommand,   &zdb_CompressCommand, &zdb_DecompressCommand, &zdb_WatchCommand,
};

void PrintOverview(std::FILE* out) {
  std::fputs("usage: zdb COMMAND [ARGUMENTS]\n\nLooks into database files of the record store.\n\ncommands:\n", out);
  for (zdb_Command const* command : kCommands) std::fprintf(out, "  %-11s %s\n", command->m_Name, command->m_Summary);
  std::fputs(
      "\n'zdb COMMAND --help' tells more about a command.\n"
      "Exit status: 0 on success, 1 when the work failed or a check found problems, 2 on bad usage.\n",
      out);
}

zdb_Command const* Find(std::string const& name) {
  for (zdb_Command const* command : kCommands) {
    if (name == command->m_Name) return command;
  }
  return nullptr;
}

// The help's first line is the usage line.
std::string UsageLine(zdb_Command const& command) {
  char const* end = std::strchr(command.m_Help, '\n');
  return end ? std::string(command.m_Help, end) : std::string(command.m_Help);
}

int Run(zdb_Command const& command, std::vector<std::string> const& words) {
  try {
    return command.m_Run(words);
  } catch (zdb_UsageError const& e) {
    std::fprintf(stderr, "zdb %s: %s\n%s\n", command.m_Name, e.what(), UsageLine(command).c_str());
    return kZdbUsage;
  } catch (std::exception const& e) {
    std::fprintf(stderr, "zdb %s: %s\n", command.m_Name, e.what());
  } catch (...) {
    std::fprintf(stderr, "zdb %s: an unexpected failure\n", command.m_Name);
  }
  return kZdbFailed;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  if (words.empty()) {
    PrintOverview(stderr);
    return kZdbUsage;
  }
  if (words[0] == "--help" || words[0] == "-h" || words[0] == "help") {
    zdb_Command const* command = words.size() > 1 ? Find(words[1]) : nullptr;
    if (command) {
      std::fputs(command->m_Help, stdout);
    } else {
      PrintOverview(stdout);
    }
    return kZdbSuccess;
  }
  zdb_Command const* command = Find(words[0]);
  if (command == nullptr) {
    std::fprintf(stderr, "zdb: unknown command \"%s\"\n\n", words[0].c_str());
    PrintOverview(stderr);
    return kZdbUsage;
  }
  words.erase(words.begin());
  if (zdb_Arguments::AsksForHelp(words)) {
    std::fputs(command->m_Help, stdout);
    return kZdbSuccess;
  }
  return Run(*command, words);
}
