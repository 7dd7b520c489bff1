// zdb tables: every table layout of the catalogue, its fields, and the
// tables that use it with their rows.

#include "omi_BtreeIterator.h"
#include "rfm_Table.h"
#include "rfm_TypeName.h"
#include "zdb_Arguments.h"
#include "zdb_Command.h"
#include "zdb_Database.h"
#include "zdb_Failure.h"

#include <algorithm>
#include <cstdio>
#include <map>

namespace {

// The tables of the database by layout name: each table's handle and rows.
std::map<std::string, std::vector<std::pair<int, int> > > TablesByLayout(zdb_Database const& database) {
  std::map<std::string, std::vector<std::pair<int, int> > > tables;
  for (rfm_Handle handle : database.Handles()) {
    if (database.Database().HandleType(handle) != rfm_TypeTable) continue;
    rfm_Table table = database.Database().Table(handle, -1, -1);
    tables[table.TableMetadata().TableName().CStr()].emplace_back(handle.Value(), table.Length());
  }
  return tables;
}

void PrintLayout(rfm_TableMetadata const& layout, std::vector<std::pair<int, int> > const& tables) {
  std::printf("table \"%s\": %d field%s\n", layout.TableName().CStr(), layout.FieldCount(),
              layout.FieldCount() == 1 ? "" : "s");
  int width = 0;
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(layout.FieldMap()); !it.IsDone(); it.Next()) {
    width = std::max(width, it.CurrentKey().Length());
  }
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(layout.FieldMap()); !it.IsDone(); it.Next()) {
    std::printf("  %-*s  %s\n", width, it.CurrentKey().CStr(), rfm_TypeName(it.CurrentValue().Type()));
  }
  if (tables.empty()) {
    std::printf("  rows: no table uses this layout\n");
    return;
  }
  std::printf("  rows:");
  for (std::size_t i = 0; i < tables.size(); ++i) {
    std::printf("%s %d in handle %d", i == 0 ? "" : ",", tables[i].second, tables[i].first);
  }
  std::printf("\n");
}

int Run(std::vector<std::string> const& words) {
  zdb_Arguments arguments(words, {}, 1);
  zdb_Database database(arguments.Positional(0));
  return zdb_OnFile(database.Name(), [&] {
    rfm_Database const& db = database.Database();
    // The file's own descriptions, as no program has bound its own.
    db.Bind();
    auto tables = TablesByLayout(database);
    cow_List<cow_String> names = db.GetTableMetadataNames();
    for (int i = 0; i < names.Length(); ++i) {
      PrintLayout(*db.GetTableMetadata(names[i]), tables[names[i].CStr()]);
    }
    if (names.IsEmpty()) std::printf("no table layouts\n");
    return 0;
  });
}

}  // namespace

zdb_Command const zdb_TablesCommand = {
    "tables",
    "every table layout: its fields with their types, and its row counts",
    "usage: zdb tables FILE\n"
    "\n"
    "Prints each table layout of the catalogue: its name, its fields in\n"
    "position order (by name) with their types, and the rows of each table\n"
    "that uses it, with the table's handle.\n",
    Run,
};
