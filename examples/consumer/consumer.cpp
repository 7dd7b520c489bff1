// An application outside the library's tree: it writes a database with a
// table of nodes and an array of displacements, then opens it again, walks
// its objects and reads both back. Exit status 0 when everything came back
// as written.
#include "ZQARomCore.h"
#include "rfm_Array.h"
#include "rfm_Database.h"
#include "rfm_File.h"
#include "rfm_Table.h"

#include <cstdio>
#include <exception>

namespace {

constexpr int kNodes = 3;

void Write(char const* name) {
  rfm_Database database =
      rfm_Database::Create(rfm_File::Open(name, utl_FileAccessCreate, true), "JOB", "three nodes", 0);
  rfm_TableMetadata layout("Nodes", 1);
  rfm_FieldHandle id(layout.DefineIntField("id"));
  rfm_FieldHandle x(layout.DefineDoubleField("x"));
  rfm_Table nodes = database.Table(layout, -1, -1);
  rfm_Array<double, rfm_TypeDouble> displacements = database.ArrayDouble(3, -1, 0);
  for (int i = 0; i < kNodes; ++i) {
    rfm_Row row = nodes.NewRow();
    row.WriteFieldInt(id, 100 + i);
    row.WriteFieldDouble(x, 0.5 * i);
    double const u[3] = {0.0, 0.0, -0.01 * i};
    displacements.Write(u, 1);
  }
}

// Counts what does not read back as Write wrote it.
int ReadBack(char const* name) {
  rfm_Database database = rfm_Database::Open(rfm_File::Open(name, utl_FileAccessRead, false), "JOB");
  int wrong = database.ReadOnly() ? 0 : 1;
  cow_List<rfm_Handle> objects = database.ObjectHandles();
  for (int i = 0; i < objects.Length(); ++i) {
    rfm_Type type = database.HandleType(objects[i]);
    std::printf("object %d: type %d\n", objects[i].Value(), type);
    if (type == rfm_TypeTable) {
      rfm_Table nodes = database.Table(objects[i], -1, -1);
      if (nodes.TableMetadata().TableName() != cow_String("Nodes") || nodes.Length() != kNodes) ++wrong;
      rfm_FieldHandle id("id", -1);
      rfm_FieldHandle x("x", -1);
      for (int row = 0; row < nodes.Length(); ++row) {
        rfm_Row node = nodes.ReadRow(row);
        if (node.ReadFieldInt(id) != 100 + row || node.ReadFieldDouble(x) != 0.5 * row) ++wrong;
      }
    } else if (type == rfm_TypeDouble) {
      rfm_Array<double, rfm_TypeDouble> displacements = database.ArrayDouble(objects[i], -1, 0);
      double u[3 * kNodes] = {};
      if (displacements.Read(u, kNodes) != 3 * kNodes) ++wrong;
      for (int node = 0; node < kNodes; ++node) {
        if (u[3 * node + 2] != -0.01 * node) ++wrong;
      }
    }
  }
  // The string pool, the reserved space, the catalogue, the table and the array.
  if (objects.Length() != 5) ++wrong;
  return wrong;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  int modules = 0;
  ZQARomCore_initialize(modules);
  int wrong = 1;
  try {
    Write(argv[1]);
    wrong = ReadBack(argv[1]);
    std::printf("%s\n", wrong == 0 ? "read back as written" : "read back wrong");
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s\n", e.what());
  }
  ZQARomCore_finalize(modules);
  return wrong == 0 ? 0 : 1;
}
