#ifndef zdb_Command_h
#define zdb_Command_h

#include <string>
#include <vector>

// One subcommand of zdb: its name, a line for the overview, the text that
// its --help prints (the usage line first), and what it runs with the words
// that follow its name. Run answers the exit status; it raises
// zdb_UsageError or zdb_Failure (see zdb_Failure.h) to end early.
struct zdb_Command {
  char const* m_Name;
  char const* m_Summary;
  char const* m_Help;
  int (*m_Run)(std::vector<std::string> const& words);
};

extern zdb_Command const zdb_InfoCommand;
extern zdb_Command const zdb_ObjectsCommand;
extern zdb_Command const zdb_TablesCommand;
extern zdb_Command const zdb_ClassesCommand;
extern zdb_Command const zdb_DumpCommand;
extern zdb_Command const zdb_LocateCommand;
extern zdb_Command const zdb_CheckCommand;
extern zdb_Command const zdb_CompressCommand;
extern zdb_Command const zdb_DecompressCommand;
extern zdb_Command const zdb_WatchCommand;

#endif
