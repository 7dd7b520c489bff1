// Writes node objects (an int id, three doubles and a reference to one of
// 100 shared materials) through the object layer, one rom_WriteObject per
// node into a fresh file, then flushes and closes it; opens the file
// read-only and reads every node with rom_ReadObject, each for the first
// time (the transporter's cache empty). Runs the same values through
// rfm_Table rows directly: a table of an int, three doubles and the two
// ints of the reference, NewRow and WriteField..., then ReadRow and
// ReadField.... Prints objects per second for each of the four and the
// ratios object layer / rows, write and read. Every pass checks each value
// it read back. Times include opening and closing the file: the object
// layer's close ends what its cache and history built.
//
//   rom_ObjectCompare [objects] [only]     default 1000000
//
// With "only" given as objects or rows, runs that pass once alone (for a
// profiler) and prints its times.

#include "zqa_Bench.h"
#include "cls_ClassRegistrar.h"
#include "cls_CowDtor.h"
#include "cls_FieldHandle.h"
#include "cls_Persistent.h"
#include "cls_ReadVisitor.h"
#include "cls_Uid.h"
#include "cls_WriteVisitor.h"
#include "cow_COW.h"
#include "cow_String.h"
#include "rfm_Database.h"
#include "rfm_Table.h"
#include "rom_Objects.h"
#include "rom_Transporter.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kMaterials = 100;
constexpr int kRepeats = 3;
// Both paths grow their node table by the same extent quantum.
constexpr int kQuantum = 1 << 20;
char const kMagic[] = "MDL";

struct Material {
  static constexpr unsigned int kClassId = 0x01000201;
  cls_Uid uid;
  cow_String name;
  double young = 0;
};

namespace NodeField {
cls_FieldHandle const Id(1, "Id");
cls_FieldHandle const X(2, "X");
cls_FieldHandle const Y(3, "Y");
cls_FieldHandle const Z(4, "Z");
cls_FieldHandle const Material(5, "Material");
}  // namespace NodeField

// A node as an application writes it by hand: DBWrite and a reading
// constructor.
class Node {
public:
  static constexpr unsigned int kClassId = 0x01000202;
  Node(int id, double x, double y, double z, cow_COW<Material> const& material)
      : m_Id(id), m_X(x), m_Y(y), m_Z(z), m_Material(material) {}
  explicit Node(cls_ReadVisitor const& visitor)
      : m_Id(visitor.Read(NodeField::Id, int())),
        m_X(visitor.Read(NodeField::X, double())),
        m_Y(visitor.Read(NodeField::Y, double())),
        m_Z(visitor.Read(NodeField::Z, double())),
        m_Material(visitor.ReadObjCow<Material>(NodeField::Material)),
        m_Uid(visitor.GetUid()) {}

  void DBWrite(cls_WriteVisitor const& visitor) const {
    if (!visitor.StartWrite(kClassId, m_Uid)) return;
    visitor.Write(NodeField::Id, m_Id);
    visitor.Write(NodeField::X, m_X);
    visitor.Write(NodeField::Y, m_Y);
    visitor.Write(NodeField::Z, m_Z);
    visitor.WriteObj(NodeField::Material, m_Material);
  }

  int m_Id;
  double m_X, m_Y, m_Z;
  cow_COW<Material> m_Material;

private:
  cls_Uid m_Uid;
};

void Register(cls_ClassRegistrar& registrar) {
  cls_Persistent<Material>("Material", Material::kClassId, 1)
      .Identity(&Material::uid)
      .Member(1, "Name", &Material::name)
      .Member(2, "Young", &Material::young)
      .Register(registrar);
  registrar.Register<Node>("Node", Node::kClassId, 1, cls_kNoClass)
      .AddAttribute(NodeField::Id, cls_AttrInt)
      .AddAttribute(NodeField::X, cls_AttrDouble)
      .AddAttribute(NodeField::Y, cls_AttrDouble)
      .AddAttribute(NodeField::Z, cls_AttrDouble)
      .AddAttribute(NodeField::Material, cls_AttrObjectCow, Material::kClassId)
      .AddTableExtentQuantum(kQuantum)
      .AddDtor(&cls_CowDtor<Node>);
}

// The values of node i and of material m, so that a read can be checked
// without the model at hand.
double X(int i) { return i * 0.5; }
double Y(int i) { return -i * 0.25; }
double Z(int i) { return i * 0.125 + 1.0; }
int MaterialOf(int i) { return i % kMaterials; }
double Young(int m) { return 200e9 + m * 1e6; }

// What the application holds: node i refers to material i % 100, so the
// materials are stored in the order of their numbers.
struct Model {
  std::vector<cow_COW<Material>> materials;
  std::vector<cow_COW<Node>> nodes;
};

Model Make(int objects) {
  Model model;
  for (int m = 0; m < kMaterials; ++m) {
    auto* material = new Material;
    material->name = cow_String(("Steel-" + std::to_string(m)).c_str());
    material->young = Young(m);
    model.materials.emplace_back(material);
  }
  model.nodes.reserve(static_cast<std::size_t>(objects));
  for (int i = 0; i < objects; ++i)
    model.nodes.emplace_back(new Node(i, X(i), Y(i), Z(i), model.materials[static_cast<std::size_t>(MaterialOf(i))]));
  return model;
}

// A fresh model per pass: every pass gives its nodes their identities anew.
zqa_PassTimes ObjectPass(std::string const& path, cls_ClassRegistrar const& registrar, int objects) {
  zqa_PassTimes times;
  Model const model = Make(objects);
  times.writeSeconds = zqa_Seconds([&] {
    rom_Transporter transporter(registrar, rfm_File::Open(path.c_str(), utl_FileAccessCreate, true), kMagic, "",
                                0, -1);
    for (cow_COW<Node> const& node : model.nodes) rom_WriteObject(transporter, node);
    transporter.Flush();
  });
  times.readSeconds = zqa_Seconds([&] {
    rom_Transporter transporter(registrar, rfm_File::Open(path.c_str(), utl_FileAccessRead, false), kMagic, -1);
    zqa_Check(transporter.GetTableSize(Node::kClassId) == objects, "node table length");
    for (int i = 0; i < objects; ++i) {
      cow_COW<Node> const node = rom_ReadObject<Node>(transporter, i);
      Node const& n = *node.ConstGet();
      zqa_Check(n.m_Id == i && n.m_X == X(i) && n.m_Y == Y(i) && n.m_Z == Z(i) &&
                    n.m_Material.ConstGet()->young == Young(MaterialOf(i)),
                "node object");
    }
  });
  ::unlink(path.c_str());
  return times;
}

// The nodes' columns in a table of their own; the reference is the
// material's row and class, as the object layer stores it.
rfm_TableMetadata NodeLayout() {
  rfm_TableMetadata layout("Node", 1);
  layout.DefineIntField("Id");
  layout.DefineDoubleField("X");
  layout.DefineDoubleField("Y");
  layout.DefineDoubleField("Z");
  layout.DefineIntField("Material#OID");
  layout.DefineIntField("Material#ClassID");
  return layout;
}

// The columns by index, as the table placed them.
struct NodeColumns {
  explicit NodeColumns(rfm_Table const& table)
      : id(table.Index("Id")),
        x(table.Index("X")),
        y(table.Index("Y")),
        z(table.Index("Z")),
        materialOid(table.Index("Material#OID")),
        materialClassId(table.Index("Material#ClassID")) {}
  rfm_FieldHandle id, x, y, z, materialOid, materialClassId;
};

zqa_PassTimes RowPass(std::string const& path, int objects) {
  zqa_PassTimes times;
  Model const model = Make(objects);
  rfm_Handle handle;
  times.writeSeconds = zqa_Seconds([&] {
    rfm_Database database =
        rfm_Database::Create(rfm_File::Open(path.c_str(), utl_FileAccessCreate, true), kMagic, "", 0);
    rfm_Table table = database.Table(NodeLayout(), kQuantum, -1);
    NodeColumns const columns(table);
    for (cow_COW<Node> const& node : model.nodes) {
      Node const& n = *node.ConstGet();
      rfm_Row row = table.NewRow();
      row.WriteFieldInt(columns.id, n.m_Id);
      row.WriteFieldDouble(columns.x, n.m_X);
      row.WriteFieldDouble(columns.y, n.m_Y);
      row.WriteFieldDouble(columns.z, n.m_Z);
      row.WriteFieldInt(columns.materialOid, MaterialOf(n.m_Id));
      row.WriteFieldInt(columns.materialClassId, static_cast<int>(Material::kClassId));
    }
    table.Flush();
    handle = table.Handle();
    database.Flush();
  });
  times.readSeconds = zqa_Seconds([&] {
    rfm_Database database = rfm_Database::Open(rfm_File::Open(path.c_str(), utl_FileAccessRead, false), kMagic);
    rfm_Table table = database.Table(handle, -1, -1);
    NodeColumns const columns(table);
    zqa_Check(table.Length() == objects, "row table length");
    for (int i = 0; i < objects; ++i) {
      rfm_Row row = table.ReadRow(i);
      zqa_Check(row.ReadFieldInt(columns.id) == i && row.ReadFieldDouble(columns.x) == X(i) &&
                    row.ReadFieldDouble(columns.y) == Y(i) && row.ReadFieldDouble(columns.z) == Z(i) &&
                    row.ReadFieldInt(columns.materialOid) == MaterialOf(i) &&
                    row.ReadFieldInt(columns.materialClassId) == static_cast<int>(Material::kClassId),
                "node row");
    }
  });
  ::unlink(path.c_str());
  return times;
}

}  // namespace

int main(int argc, char** argv) {
  int const objects = argc > 1 ? std::atoi(argv[1]) : 1000000;
  zqa_Check(objects > 0, "objects");
  std::string const base = zqa_BenchPath("zqa-objects");
  cls_ClassRegistrar registrar;
  Register(registrar);

  if (argc > 2) {
    std::string const only = argv[2];
    zqa_PassTimes const alone =
        only == "rows" ? RowPass(base + ".rows.mdl", objects) : ObjectPass(base + ".objects.mdl", registrar, objects);
    std::printf("%s: write %.3f s, read %.3f s\n", only.c_str(), alone.writeSeconds, alone.readSeconds);
    return 0;
  }
  zqa_PassTimes const rows = zqa_Best(kRepeats, [&] { return RowPass(base + ".rows.mdl", objects); });
  zqa_PassTimes const objectLayer =
      zqa_Best(kRepeats, [&] { return ObjectPass(base + ".objects.mdl", registrar, objects); });

  auto perSecond = [&](double seconds) { return objects / seconds / 1e6; };
  std::printf("%d nodes of (int, three doubles, reference to one of %d shared materials), best of %d\n", objects,
              kMaterials, kRepeats);
  std::printf("%-26s %16s %16s\n", "", "write Mobjects/s", "read Mobjects/s");
  std::printf("%-26s %16.3f %16.3f\n", "rfm_Table rows", perSecond(rows.writeSeconds), perSecond(rows.readSeconds));
  std::printf("%-26s %16.3f %16.3f\n", "object layer", perSecond(objectLayer.writeSeconds),
              perSecond(objectLayer.readSeconds));
  std::printf("object layer / rows: write %.2f, read %.2f\n", rows.writeSeconds / objectLayer.writeSeconds,
              rows.readSeconds / objectLayer.readSeconds);
  return 0;
}
