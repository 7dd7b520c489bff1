// zdb objects: one line per object of a database, found through the linkage groups.

#include "rfm_Table.h"
#include "rfm_TypeName.h"
#include "zdb_Arguments.h"
#include "zdb_Command.h"
#include "zdb_Database.h"
#include "zdb_Failure.h"

#include <cstdio>

namespace {

// What to call an object beside its type: the well-known role of handles 1
// to 3, or a table's name. A table that cannot be opened is told on
// standard error and answered as "(unreadable)"; failed becomes true.
std::string NameOf(zdb_Database const& database, zdb_Object const& object, bool& failed) {
  std::string role = zdb_WellKnownRole(object.m_Handle);
  if (!role.empty() || object.m_Type != rfm_TypeTable) return role;
  try {
    return database.Database().Table(object.m_Handle, -1, -1).TableMetadata().TableName().CStr();
  } catch (std::exception const& e) {
    std::fprintf(stderr, "zdb objects: %s: handle %d: %s\n", database.Name().c_str(), object.m_Handle.Value(),
                 e.what());
    failed = true;
    return "(unreadable)";
  }
}

int Run(std::vector<std::string> const& words) {
  zdb_Arguments arguments(words, {}, 1);
  zdb_Database database(arguments.Positional(0));
  return zdb_OnFile(database.Name(), [&] {
    bool failed = false;
    std::printf("%10s  %-13s %14s %14s %8s  %s\n", "handle", "type", "length", "allocation", "extents", "name");
    for (rfm_Handle handle : database.Handles()) {
      zdb_Object object = database.Describe(handle);
      std::printf("%10d  %-13s %14lld %14lld %8d  %s\n", handle.Value(), rfm_ObjectKindName(object.m_Type).c_str(),
                  static_cast<long long>(object.m_Length), static_cast<long long>(object.m_Allocation),
                  object.m_Extents, NameOf(database, object, failed).c_str());
    }
    return failed ? kZdbFailed : kZdbSuccess;
  });
}

}  // namespace

zdb_Command const zdb_ObjectsCommand = {
    "objects",
    "one line per object: handle, type, length, allocation, extents",
    "usage: zdb objects FILE\n"
    "\n"
    "Lists every object of the database in handle order: its handle, its type\n"
    "(table, stream, an array by its element type, or space), the bytes it\n"
    "holds (length) and reserves (allocation), the number of extents it is\n"
    "stored in, and a name: a table's name, or the role of handles 1 to 3.\n"
    "A table whose name cannot be read is listed as (unreadable), the reason\n"
    "goes to standard error, and the exit status is 1.\n",
    Run,
};
