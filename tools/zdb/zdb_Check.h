#ifndef zdb_Check_h
#define zdb_Check_h

#include <string>

class zdb_CheckReport;

// The structural check of zdb check, without its printing: checks the
// database file at name, reading its bytes itself, and adds each problem
// it finds to report. Answers what it found, "plain file, 12 objects: 3
// tables, ..." as far as it got, or "" when the file could not be opened.
std::string zdb_CheckFile(std::string const& name, zdb_CheckReport& report);

#endif
