// zdb locate: which object holds a byte of the file, for the study of a damaged one.

#include "zdb_Arguments.h"
#include "zdb_Command.h"
#include "zdb_Database.h"
#include "zdb_Failure.h"

#include <climits>
#include <cstdio>

namespace {

int Run(std::vector<std::string> const& words) {
  zdb_Arguments arguments(words, {}, 2);
  long long offset = zdb_ParseNumber(arguments.Positional(1), "offset", 0, LLONG_MAX);
  zdb_Database database(arguments.Positional(0));
  return zdb_OnFile(database.Name(), [&] {
    std::printf("%s\n", database.Database().GetObjectLocationReport(offset).CStr());
    return 0;
  });
}

}  // namespace

zdb_Command const zdb_LocateCommand = {
    "locate",
    "which object holds a byte of the file",
    "usage: zdb locate FILE OFFSET\n"
    "\n"
    "Prints the library's object location report for OFFSET, a byte of the\n"
    "file (of the logical bytes, for a compressed file), in decimal or in\n"
    "hexadecimal after 0x:\n"
    "  Object: 00000006 - Offset:                   12\n"
    "names the object's handle in hexadecimal (zdb dump --handle 0x6) and the\n"
    "offset within the object; \"Object not found.\" means that no object's\n"
    "bytes lie there: block 0, a linkage group, or reserved room.\n",
    Run,
};
