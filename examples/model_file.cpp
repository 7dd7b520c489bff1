// The model file of a preprocessor, written by one process and read by
// another, as the preprocessor and the viewer do.
//
//   model_file write FILE   builds a cantilever beam (materials, nodes, solid
//                           and shell elements) and writes it as objects
//   model_file read FILE    opens the file read-only, reads the whole model
//                           back and compares it with the one it would build
//
// Each class is made persistent in one of the two ways an application has:
// Material declares its members once through the typed helper; Node and the
// elements write themselves (DBWrite) and read themselves (a constructor
// taking a cls_ReadVisitor). Materials are shared by many elements and nodes:
// the file holds each once, and reading gives one object per material.

#include "ZQARomCore.h"
#include "cls_ClassRegistrar.h"
#include "cls_CowDtor.h"
#include "cls_Persistent.h"
#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"
#include "rfm_File.h"
#include "rom_Objects.h"
#include "rom_PtrBarn.h"
#include "rom_Transporter.h"
#include "rom_WriteRecord.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

char const kMagic[] = "MDL";

struct Material {
  static constexpr unsigned int kClassId = 0x01000001;
  cls_Uid uid;
  cow_String name;
  double young = 0;
  double poisson = 0;
};

namespace NodeField {
cls_FieldHandle const Id(1, "Id");
cls_FieldHandle const X(2, "X");
cls_FieldHandle const Y(3, "Y");
cls_FieldHandle const Z(4, "Z");
}  // namespace NodeField

class Node {
public:
  static constexpr unsigned int kClassId = 0x01000002;
  Node(int id, double x, double y, double z) : m_Id(id), m_X(x), m_Y(y), m_Z(z) {}
  explicit Node(cls_ReadVisitor const& visitor)
      : m_Uid(visitor.GetUid()),
        m_Id(visitor.Read(NodeField::Id, int())),
        m_X(visitor.Read(NodeField::X, double())),
        m_Y(visitor.Read(NodeField::Y, double())),
        m_Z(visitor.Read(NodeField::Z, double())) {}
  void DBWrite(cls_WriteVisitor const& visitor) const {
    if (!visitor.StartWrite(kClassId, m_Uid)) return;
    visitor.Write(NodeField::Id, m_Id);
    visitor.Write(NodeField::X, m_X);
    visitor.Write(NodeField::Y, m_Y);
    visitor.Write(NodeField::Z, m_Z);
  }
  bool operator==(Node const& o) const { return m_Id == o.m_Id && m_X == o.m_X && m_Y == o.m_Y && m_Z == o.m_Z; }
  cls_Uid const& Uid() const { return m_Uid; }
  int Id() const { return m_Id; }

private:
  cls_Uid m_Uid;
  int m_Id;
  double m_X, m_Y, m_Z;
};

// How an element behaves; stored as its text, so that the file reads the
// same whatever the enumeration's numbers become.
enum class Formulation { kFullIntegration, kReducedIntegration };
char const* const kFormulationText[] = {"full", "reduced"};

namespace ElementField {
cls_FieldHandle const Id(1, "Id");
cls_FieldHandle const Material(2, "Material");
cls_FieldHandle const Formulation(3, "Formulation");
cls_FieldHandle const Offset(4, "Offset");
}  // namespace ElementField

cls_FieldHandle CornerField(int corner) {
  static char const* const names[] = {"N1", "N2", "N3", "N4", "N5", "N6", "N7", "N8"};
  return cls_FieldHandle(10 + corner, names[corner]);
}

// The part every element has: a table of its own, never built alone.
class Element {
public:
  static constexpr unsigned int kClassId = 0x01000003;
  int Id() const { return m_Id; }
  cow_COW<Material> const& GetMaterial() const { return m_Material; }

protected:
  Element(int id, cow_COW<::Material> const& material, Formulation formulation)
      : m_Id(id), m_Material(material), m_Formulation(formulation) {}
  explicit Element(cls_ReadVisitor const& base)
      : m_Uid(base.GetUid()),
        m_Id(base.Read(ElementField::Id, int())),
        m_Material(base.ReadObjCow<::Material>(ElementField::Material)),
        m_Formulation(ParseFormulation(base.Read(ElementField::Formulation, cow_String()))) {}
  void DBWriteBase(cls_WriteVisitor const& visitor) const {
    if (!visitor.StartWrite(kClassId, m_Uid)) return;
    visitor.Write(ElementField::Id, m_Id);
    visitor.WriteObj(ElementField::Material, m_Material);
    visitor.Write(ElementField::Formulation, cow_String(kFormulationText[static_cast<int>(m_Formulation)]));
  }
  bool SameBase(Element const& o) const {
    return m_Id == o.m_Id && m_Formulation == o.m_Formulation &&
           m_Material.ConstGet()->name == o.m_Material.ConstGet()->name;
  }

private:
  static Formulation ParseFormulation(cow_String const& text) {
    for (int i = 0; i < 2; ++i)
      if (std::strcmp(text.CStr(), kFormulationText[i]) == 0) return static_cast<Formulation>(i);
    throw std::runtime_error(std::string("unknown formulation \"") + text.CStr() + "\"");
  }

  cls_Uid m_Uid;
  int m_Id;
  cow_COW<::Material> m_Material;
  Formulation m_Formulation;
};

template <int N>
class Solid : public Element {
public:
  Solid(int id, cow_COW<Material> const& material, std::array<cow_COW<Node>, N> const& nodes)
      : Element(id, material, Formulation::kFullIntegration), m_Nodes(nodes) {}
  explicit Solid(cls_ReadVisitor const& visitor) : Element(cls_ReadVisitor::Base(visitor)), m_Uid(visitor.GetUid()) {
    for (int corner = 0; corner < N; ++corner) m_Nodes[corner] = visitor.ReadObjCow<Node>(CornerField(corner));
  }
  void DBWriteNodes(cls_WriteVisitor const& visitor) const {
    DBWriteBase(cls_WriteVisitor(visitor, Element::kClassId));
    for (int corner = 0; corner < N; ++corner) visitor.WriteObj(CornerField(corner), m_Nodes[corner]);
  }
  bool SameAs(Solid const& o) const {
    if (!SameBase(o)) return false;
    for (int corner = 0; corner < N; ++corner)
      if (!(*m_Nodes[corner].ConstGet() == *o.m_Nodes[corner].ConstGet())) return false;
    return true;
  }
  std::array<cow_COW<Node>, N> const& Nodes() const { return m_Nodes; }

protected:
  cls_Uid m_Uid;
  std::array<cow_COW<Node>, N> m_Nodes;
};

class Hex8 : public Solid<8> {
public:
  static constexpr unsigned int kClassId = 0x01000004;
  using Solid<8>::Solid;
  void DBWrite(cls_WriteVisitor const& visitor) const {
    if (visitor.StartWrite(kClassId, m_Uid)) DBWriteNodes(visitor);
  }
};

// A shell on the beam's top face; the node it is offset to is usually none.
class Quad4 : public Solid<4> {
public:
  static constexpr unsigned int kClassId = 0x01000005;
  Quad4(int id, cow_COW<Material> const& material, std::array<cow_COW<Node>, 4> const& nodes,
        cow_COW<Node> const& offset)
      : Solid<4>(id, material, nodes), m_Offset(offset) {}
  explicit Quad4(cls_ReadVisitor const& visitor)
      : Solid<4>(visitor), m_Offset(visitor.ReadObjCow<Node>(ElementField::Offset)) {}
  void DBWrite(cls_WriteVisitor const& visitor) const {
    if (!visitor.StartWrite(kClassId, m_Uid)) return;
    DBWriteNodes(visitor);
    visitor.WriteObj(ElementField::Offset, m_Offset);
  }
  bool SameAs(Quad4 const& o) const {
    return Solid<4>::SameAs(o) && m_Offset.HasValue() == o.m_Offset.HasValue() &&
           (!m_Offset.HasValue() || *m_Offset.ConstGet() == *o.m_Offset.ConstGet());
  }

private:
  cow_COW<Node> m_Offset;
};

void RegisterModel(cls_ClassRegistrar& registrar) {
  cls_Persistent<Material>("Material", Material::kClassId, 1)
      .Identity(&Material::uid)
      .Member(1, "Name", &Material::name)
      .Member(2, "Young", &Material::young)
      .Member(3, "Poisson", &Material::poisson)
      .Register(registrar);
  registrar.Register<Node>("Node", Node::kClassId, 1, cls_kNoClass)
      .AddAttribute(NodeField::Id, cls_AttrInt)
      .AddAttribute(NodeField::X, cls_AttrDouble)
      .AddAttribute(NodeField::Y, cls_AttrDouble)
      .AddAttribute(NodeField::Z, cls_AttrDouble)
      .AddDtor(&cls_CowDtor<Node>);
  registrar.CreateClassMD("Element", Element::kClassId, 1, nullptr, cls_kNoClass)
      .AddAttribute(ElementField::Id, cls_AttrInt)
      .AddAttribute(ElementField::Material, cls_AttrObjectCow, Material::kClassId)
      .AddAttribute(ElementField::Formulation, cls_AttrEnum);
  cls_ClassMetadata& hex = registrar.Register<Hex8>("Hex8", Hex8::kClassId, 1, Element::kClassId);
  for (int corner = 0; corner < 8; ++corner) hex.AddAttribute(CornerField(corner), cls_AttrObjectCow, Node::kClassId);
  hex.AddDtor(&cls_CowDtor<Hex8>);
  cls_ClassMetadata& quad = registrar.Register<Quad4>("Quad4", Quad4::kClassId, 1, Element::kClassId);
  for (int corner = 0; corner < 4; ++corner) quad.AddAttribute(CornerField(corner), cls_AttrObjectCow, Node::kClassId);
  quad.AddAttribute(ElementField::Offset, cls_AttrObjectCow, Node::kClassId).AddDtor(&cls_CowDtor<Quad4>);
}

// A cantilever of kLength hex elements, 1 x 1 in section, with a shell on
// each top face.
constexpr int kLength = 8;

struct Model {
  std::vector<cow_COW<Material>> materials;
  std::vector<cow_COW<Node>> nodes;
  std::vector<cow_COW<Hex8>> solids;
  std::vector<cow_COW<Quad4>> shells;
};

cow_COW<Material> MakeMaterial(char const* name, double young, double poisson) {
  auto* material = new Material;
  material->name = name;
  material->young = young;
  material->poisson = poisson;
  return cow_COW<Material>(material);
}

Model BuildBeam() {
  Model model;
  model.materials = {MakeMaterial("Steel", 210e9, 0.3), MakeMaterial("Aluminium", 70e9, 0.33)};
  // Nodes by station along the beam, then the four corners of the section.
  for (int station = 0; station <= kLength; ++station)
    for (int corner = 0; corner < 4; ++corner)
      model.nodes.emplace_back(new Node(4 * station + corner + 1, station, corner % 2, corner / 2));
  auto const node = [&](int station, int corner) { return model.nodes[static_cast<std::size_t>(4 * station + corner)]; };
  for (int e = 0; e < kLength; ++e) {
    std::array<cow_COW<Node>, 8> const corners = {node(e, 0),     node(e, 1),     node(e, 3),     node(e, 2),
                                                  node(e + 1, 0), node(e + 1, 1), node(e + 1, 3), node(e + 1, 2)};
    model.solids.emplace_back(new Hex8(e + 1, model.materials[0], corners));
    std::array<cow_COW<Node>, 4> const top = {node(e, 2), node(e, 3), node(e + 1, 3), node(e + 1, 2)};
    // Only the tip's shell is offset, to the tip's first node.
    cow_COW<Node> const offset = e == kLength - 1 ? node(kLength, 0) : cow_COW<Node>();
    model.shells.emplace_back(new Quad4(kLength + e + 1, model.materials[1], top, offset));
  }
  return model;
}

rom_CidOid WriteModel(rom_Transporter& model, Model const& beam) {
  rom_CidOid last;
  for (auto const& solid : beam.solids) last = rom_WriteObject(model, solid);
  for (auto const& shell : beam.shells) last = rom_WriteObject(model, shell);
  return last;
}

int Rows(rom_Transporter& model) {
  int rows = 0;
  for (unsigned int cid : {Material::kClassId, Node::kClassId, Element::kClassId, Hex8::kClassId, Quad4::kClassId})
    rows += model.GetTableSize(cid);
  return rows;
}

void Write(char const* path) {
  cls_ClassRegistrar registrar;
  RegisterModel(registrar);
  Model const beam = BuildBeam();
  rom_Transporter model(registrar, rfm_File::Open(path, utl_FileAccessCreate, false), kMagic,
                        "Model of a cantilever beam", static_cast<long>(std::time(nullptr)), -1);
  WriteModel(model, beam);
  model.Flush();
  int const rows = Rows(model);
  std::printf("wrote %s: %d materials, %d nodes, %d elements (%zu Hex8, %zu Quad4), %d rows\n", path,
              model.GetTableSize(Material::kClassId), model.GetTableSize(Node::kClassId),
              model.GetTableSize(Element::kClassId), beam.solids.size(), beam.shells.size(), rows);

  // The same objects again: each is known, and stored already.
  WriteModel(model, beam);
  std::printf("wrote the unchanged model again: %d rows added\n", Rows(model) - rows);

  // Within one write record an identity stands for one object: of two
  // changed copies of the tip node, the first is written over the node's
  // row, the second becomes a new object.
  cow_COW<Node> const& tip = beam.nodes.back();
  cow_COW<Node> first = tip, second = tip;
  first.Get();  // private copies, with the tip's identity
  second.Get();
  {
    rom_WriteRecord const record(&model);
    rom_CidOid const firstRow = rom_WriteObject(model, first);
    rom_CidOid const secondRow = rom_WriteObject(model, second);
    std::printf("in one write record, two copies of one node went to rows %d and %d, the second with %s identity\n",
                firstRow.m_Oid, secondRow.m_Oid, second.ConstGet()->Uid() == tip.ConstGet()->Uid() ? "the same" : "a new");
  }

  // An identity belongs to one class.
  cow_COW<Material> impostor = MakeMaterial("Impostor", 1, 0);
  impostor.Get()->uid = tip.ConstGet()->Uid();
  try {
    rom_WriteObject(model, impostor);
    std::printf("an identity changed its class\n");
  } catch (std::exception const& e) {
    std::printf("refused: %s\n", e.what());
  }
  model.Flush();
}

template <class T>
std::vector<cow_COW<T>> ReadAll(rom_Transporter& model) {
  std::vector<cow_COW<T>> objects;
  int const rows = model.GetTableSize(T::kClassId);
  for (int oid = 0; oid < rows; ++oid) objects.push_back(rom_ReadObject<T>(model, oid));
  return objects;
}

int Read(char const* path) {
  cls_ClassRegistrar registrar;
  RegisterModel(registrar);
  Model const beam = BuildBeam();
  rom_Transporter model(registrar, rfm_File::Open(path, utl_FileAccessRead, false), kMagic, -1);
  std::vector<cow_COW<Hex8>> const solids = ReadAll<Hex8>(model);
  std::vector<cow_COW<Quad4>> const shells = ReadAll<Quad4>(model);
  bool equal = solids.size() == beam.solids.size() && shells.size() == beam.shells.size();
  for (std::size_t i = 0; equal && i < solids.size(); ++i) equal = solids[i].ConstGet()->SameAs(*beam.solids[i].ConstGet());
  for (std::size_t i = 0; equal && i < shells.size(); ++i) equal = shells[i].ConstGet()->SameAs(*beam.shells[i].ConstGet());
  std::set<Material const*> materials;
  std::set<Node const*> nodes;
  for (auto const& solid : solids) {
    materials.insert(solid.ConstGet()->GetMaterial().ConstGet());
    for (auto const& node : solid.ConstGet()->Nodes()) nodes.insert(node.ConstGet());
  }
  for (auto const& shell : shells) {
    materials.insert(shell.ConstGet()->GetMaterial().ConstGet());
    for (auto const& node : shell.ConstGet()->Nodes()) nodes.insert(node.ConstGet());
  }
  std::printf("read %s: %zu Hex8 and %zu Quad4 %s the model written; %zu Material objects and %zu Node objects in "
              "memory\n",
              path, solids.size(), shells.size(), equal ? "equal" : "DIFFERENT FROM", materials.size(), nodes.size());

  // Objects held by plain pointer: within a pointer barn, a row read twice
  // is one object; without one, each read builds another.
  int const nodeRows = model.GetTableSize(Node::kClassId);
  std::set<void const*> addresses;
  std::vector<Node*> built;
  {
    rom_PtrBarn const barn(model);
    for (int round = 0; round < 2; ++round)
      for (int oid = 0; oid < nodeRows; ++oid) {
        void* node = model.CheckReadObjPtr(oid, Node::kClassId, Node::kClassId);
        if (addresses.insert(node).second) built.push_back(static_cast<Node*>(node));
      }
  }
  std::printf("read %d node rows twice by pointer in one barn: %zu addresses\n", nodeRows, addresses.size());
  for (Node* node : built) delete node;
  return equal && materials.size() == beam.materials.size() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 || (std::strcmp(argv[1], "write") != 0 && std::strcmp(argv[1], "read") != 0)) {
    std::fprintf(stderr, "usage: %s write|read MODEL-FILE\n", argv[0]);
    return 2;
  }
  int modules = 0;
  ZQARomCore_initialize(modules);
  int status = 0;
  try {
    if (std::strcmp(argv[1], "write") == 0)
      Write(argv[2]);
    else
      status = Read(argv[2]);
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s\n", e.what());
    status = 1;
  }
  ZQARomCore_finalize(modules);
  return status;
}
