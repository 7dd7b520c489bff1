// zdb info: what a database file is, from block 0 and the library's statistics.

#include "rfm_Block0.h"
#include "zdb_Arguments.h"
#include "zdb_Command.h"
#include "zdb_Database.h"
#include "zdb_Failure.h"

#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

// The application's magic: what follows "ZKRR" in the first eight bytes, up to a zero.
std::string ApplicationMagic(rfm_File const& file) {
  file.Seek(kRfmMagicOffset);
  cow_String stored = file.ReadFixedString(kRfmMagicSize);
  char const* application = stored.CStr() + std::strlen(kRfmDatabaseMagic);
  return std::string(application, strnlen(application, kRfmMagicSize - std::strlen(kRfmDatabaseMagic)));
}

int Version(rfm_File const& file) {
  file.Seek(kRfmVersionOffset);
  return file.ReadInt();
}

// The creation time in local time with its offset from UTC, then as stored.
std::string CreationTime(long seconds) {
  if (seconds == 0) return "not recorded";
  std::time_t time = seconds;
  std::tm local{};
  char text[64] = "";
  if (localtime_r(&time, &local) != nullptr) std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S %z", &local);
  return std::string(text) + " (" + std::to_string(seconds) + ")";
}

void Line(char const* label, std::string const& value) { std::printf("%-12s %s\n", label, value.c_str()); }

int Run(std::vector<std::string> const& words) {
  zdb_Arguments arguments(words, {}, 1);
  zdb_Database database(arguments.Positional(0));
  rfm_Database const& db = database.Database();
  return zdb_OnFile(database.Name(), [&] {
    Line("file", database.Name());
    Line("kind", database.Kind());
    Line("version", std::to_string(Version(database.File())));
    Line("magic", ApplicationMagic(database.File()));
    Line("description", db.Description().CStr());
    Line("created", CreationTime(rfm_Database::GetCreationTime(database.File())));
    Line("flush count", std::to_string(db.GetFlushCount()));
    Line("groups", std::to_string(db.GroupCount()));
    Line("objects", std::to_string(database.Handles().size()));
    cow_List<cow_String> statistics = db.GetDBStatistics();
    for (int i = 0; i < statistics.Length(); ++i) std::printf("%s\n", statistics[i].CStr());
    return 0;
  });
}

}  // namespace

zdb_Command const zdb_InfoCommand = {
    "info",
    "what a database file is: kind, version, magic, description, counts, statistics",
    "usage: zdb info FILE\n"
    "\n"
    "Prints the kind of file (plain or compressed), the format version, the\n"
    "application's magic, the description, the creation time (local time, then\n"
    "as stored: seconds since 1970), the flush count, the number of linkage\n"
    "groups and of objects, and the library's statistics lines.\n",
    Run,
};
