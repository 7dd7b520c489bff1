// zdb info: what a database file is, from block 0 and the library's statistics.

#include "rfm_Block0.h"
#include "zdb_Arguments.h"
#include "zdb_Command.h"
#include "zdb_Database.h"
#include "zdb_Failure.h"
#include "zdb_ObjectHeader.h"
#include "zdb_TableFinder.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <optional>

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

// The object layer's header, in a file that has one: its form and version,
// the release that wrote it, and its catalogue. The items a header lacks
// are left out; a damaged header points to zdb check.
void ObjectHeaderLines(rfm_Database const& db) {
  zdb_TableFinder finder(db);
  zdb_ObjectHeader header(db, finder);
  if (!header.Present()) return;
  std::string form = zdb_ObjectHeader::FormName(header.GetForm());
  if (auto version = header.Item(kRomTagVersion)) form += ", version " + std::to_string(*version);
  if (!header.Problems().empty()) form += "; damaged, see zdb check";
  Line("header", form);
  std::optional<int> major = header.Item(kRomTagMajorVersion);
  std::optional<int> minor = header.Item(kRomTagMinorVersion);
  std::optional<int> update = header.Item(kRomTagUpdateVersion);
  std::optional<int> type = header.Item(kRomTagReleaseType);
  std::string release;
  // The object layer leaves out a version number that is 0.
  if (major || minor || update) {
    release = std::to_string(major.value_or(0)) + "." + std::to_string(minor.value_or(0)) + "." +
              std::to_string(update.value_or(0));
  }
  if (type) release += (release.empty() ? "type " : ", type ") + std::to_string(*type);
  if (!release.empty()) Line("release", release);
  std::optional<int> handle = header.CatalogueHandle();
  std::string catalogue = handle ? "handle " + std::to_string(*handle) : "none";
  if (!header.Catalogue().IsNull()) {
    int classes = header.Catalogue().Length();
    catalogue += ", " + std::to_string(classes) + (classes == 1 ? " class" : " classes");
  } else if (handle) {
    std::string why;
    finder.Find(*handle, why);
    catalogue += ", which " + why;
  }
  Line("catalogue", catalogue);
}

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
    ObjectHeaderLines(db);
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
    "groups and of objects, and the library's statistics lines.\n"
    "A file of the object layer (one whose table catalogue holds the layout\n"
    "of the class catalogue) shows its object header too: its form (tagged\n"
    "stream, table or version space) and version, the release that wrote it\n"
    "(major.minor.update and release type, those the header holds), and its\n"
    "catalogue's handle and number of classes.\n",
    Run,
};
