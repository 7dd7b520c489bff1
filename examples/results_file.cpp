// Writes the results of a small analysis the way a solver would, through
// the record store: a cantilever beam of hexahedra with a loaded end face
// of quadrilaterals, its nodes and elements in tables, the connectivity in
// an int array per element type, the run's information in a tagged stream,
// and per load step the nodal displacements in a double array, listed in a
// table of steps. It flushes after each step, so that a reader beside it
// (zdb watch) sees every step as it lands.

#include "ZQARomCore.h"
#include "rfm_Array.h"
#include "rfm_Database.h"
#include "rfm_File.h"
#include "rfm_Table.h"
#include "rfm_TaggedStream.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <vector>

namespace {

// The beam: kCells hexahedra along x, kSide by kSide across, 1 unit each.
constexpr int kCells = 8;
constexpr int kSide = 2;
constexpr int kSteps = 4;
constexpr double kTipDeflection = -0.02;  // of the last step, at the free end

int NodeId(int i, int j, int k) { return 1 + i + (kCells + 1) * (j + (kSide + 1) * k); }

struct Node {
  int m_Id;
  double m_X, m_Y, m_Z;
};

std::vector<Node> BeamNodes() {
  std::vector<Node> nodes;
  for (int k = 0; k <= kSide; ++k) {
    for (int j = 0; j <= kSide; ++j) {
      for (int i = 0; i <= kCells; ++i) nodes.push_back({NodeId(i, j, k), double(i), double(j), double(k)});
    }
  }
  return nodes;
}

void WriteNodes(rfm_Database const& database, std::vector<Node> const& nodes) {
  rfm_TableMetadata layout("Nodes", 1);
  rfm_FieldHandle id(layout.DefineIntField("id"));
  rfm_FieldHandle x(layout.DefineDoubleField("x"));
  rfm_FieldHandle y(layout.DefineDoubleField("y"));
  rfm_FieldHandle z(layout.DefineDoubleField("z"));
  rfm_Table table = database.Table(layout, -1, -1);
  for (Node const& node : nodes) {
    rfm_Row row = table.NewRow();
    row.WriteFieldInt(id, node.m_Id);
    row.WriteFieldDouble(x, node.m_X);
    row.WriteFieldDouble(y, node.m_Y);
    row.WriteFieldDouble(z, node.m_Z);
  }
  table.Flush();
}

// The elements: hexahedra of 8 nodes, and on the loaded end face (x at its
// largest) quadrilaterals of 4 nodes; each type's connectivity in an int
// array of its own, and each element's row of that array in the table.
void WriteElements(rfm_Database const& database) {
  rfm_Array<int, rfm_TypeInt> hexahedra = database.ArrayInt(8, -1, 0);
  rfm_Array<int, rfm_TypeInt> quadrilaterals = database.ArrayInt(4, -1, 0);
  rfm_TableMetadata layout("Elements", 1);
  rfm_FieldHandle id(layout.DefineIntField("id"));
  rfm_FieldHandle type(layout.DefineStringField("type"));
  rfm_FieldHandle connectivity(layout.DefineHandleField("connectivity"));
  rfm_FieldHandle row(layout.DefineIntField("row"));
  rfm_Table table = database.Table(layout, -1, -1);
  int next = 1;
  auto add = [&](char const* name, rfm_Array<int, rfm_TypeInt> const& array, int const* nodes) {
    rfm_Row element = table.NewRow();
    element.WriteFieldInt(id, next++);
    element.WriteFieldString(type, name);
    element.WriteFieldHandle(connectivity, array.Handle());
    element.WriteFieldInt(row, array.Length());
    array.Write(nodes, 1);
  };
  for (int k = 0; k < kSide; ++k) {
    for (int j = 0; j < kSide; ++j) {
      for (int i = 0; i < kCells; ++i) {
        int const nodes[8] = {
            NodeId(i, j, k),     NodeId(i + 1, j, k),     NodeId(i + 1, j + 1, k),     NodeId(i, j + 1, k),
            NodeId(i, j, k + 1), NodeId(i + 1, j, k + 1), NodeId(i + 1, j + 1, k + 1), NodeId(i, j + 1, k + 1)};
        add("hex8", hexahedra, nodes);
      }
    }
  }
  for (int k = 0; k < kSide; ++k) {
    for (int j = 0; j < kSide; ++j) {
      int const nodes[4] = {NodeId(kCells, j, k), NodeId(kCells, j + 1, k), NodeId(kCells, j + 1, k + 1),
                            NodeId(kCells, j, k + 1)};
      add("quad4", quadrilaterals, nodes);
    }
  }
  hexahedra.Flush();
  quadrilaterals.Flush();
  table.Flush();
}

void WriteRunInformation(rfm_Database const& database) {
  rfm_TaggedStream run = database.TaggedStream(0);
  run.WriteString(1, "results_file example");
  run.WriteInt(2, 1);
  run.WriteString(3, "static, linear elastic");
  run.WriteInt(4, kSteps);
  run.WriteDouble(5, 210e9);
  run.WriteFloat(6, 0.3f);
  run.Flush();
}

// Per step a double array of the nodes' displacements (ux, uy, uz), in node
// order: the bending line of a cantilever under an end load, scaled with the step.
void WriteSteps(rfm_Database const& database, std::vector<Node> const& nodes) {
  rfm_TableMetadata layout("Steps", 1);
  rfm_FieldHandle step(layout.DefineIntField("step"));
  rfm_FieldHandle time(layout.DefineDoubleField("time"));
  rfm_FieldHandle displacements(layout.DefineHandleField("displacements"));
  rfm_FieldHandle largest(layout.DefineDoubleField("max |u|"));
  rfm_Table table = database.Table(layout, -1, -1);
  double const length = kCells;
  for (int s = 1; s <= kSteps; ++s) {
    double load = double(s) / kSteps;
    rfm_Array<double, rfm_TypeDouble> array = database.ArrayDouble(3, -1, 0);
    double maximum = 0;
    for (Node const& node : nodes) {
      double xi = node.m_X / length;
      double uz = load * kTipDeflection * xi * xi * (3 - xi) / 2;
      double const u[3] = {-uz * (node.m_Z - kSide / 2.0) * 0.1, 0.0, uz};
      array.Write(u, 1);
      if (-uz > maximum) maximum = -uz;
    }
    array.Flush();
    rfm_Row row = table.NewRow();
    row.WriteFieldInt(step, s);
    row.WriteFieldDouble(time, load);
    row.WriteFieldHandle(displacements, array.Handle());
    row.WriteFieldDouble(largest, maximum);
    row.Release();
    table.Flush();
    database.Flush();
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: results_file FILE\n");
    return 2;
  }
  int modules = 0;
  ZQARomCore_initialize(modules);
  int status = EXIT_SUCCESS;
  try {
    rfm_File file = rfm_File::Open(argv[1], utl_FileAccessCreate, true);
    rfm_Database database = rfm_Database::Create(file, "DEMO", "Cantilever beam, 4 load steps", std::time(nullptr));
    std::vector<Node> nodes = BeamNodes();
    WriteRunInformation(database);
    WriteNodes(database, nodes);
    WriteElements(database);
    database.Flush();
    WriteSteps(database, nodes);
    std::printf("wrote %s: %zu nodes, %d hexahedra, %d quadrilaterals, %d steps\n", argv[1], nodes.size(),
                kCells * kSide * kSide, kSide * kSide, kSteps);
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s\n", e.what());
    status = EXIT_FAILURE;
  }
  ZQARomCore_finalize(modules);
  return status;
}
