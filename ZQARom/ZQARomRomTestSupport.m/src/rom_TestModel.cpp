#include "rom_TestModel.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "cls_CowDtor.h"
#include "cls_Persistent.h"
#include "rom_Objects.h"
#include "rom_Transporter.h"

#include <cstring>
#include <random>
#include <sstream>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRomTestSupport.m/src/rom_TestModel";
char const kUnknownKind[] = "unknown element kind \"%s\"";

namespace NodeField {
cls_FieldHandle const Id(1, "Id");
cls_FieldHandle const X(2, "X");
cls_FieldHandle const Y(3, "Y");
cls_FieldHandle const Z(4, "Z");
cls_FieldHandle const Material(5, "Material");
cls_FieldHandle const Temperature(6, "Temperature");
}  // namespace NodeField

namespace ElementField {
cls_FieldHandle const Id(1, "Id");
cls_FieldHandle const Kind(2, "Kind");
cls_FieldHandle const Material(3, "Material");
}  // namespace ElementField

cls_FieldHandle const kThickness(20, "Thickness");
cls_FieldHandle const kReference(21, "Reference");

cls_FieldHandle NodeOf(int corner) {
  return cls_FieldHandle(corner + 1, cow_String(("Node" + std::to_string(corner + 1)).c_str()));
}

rom_TestElement::Kind const kKinds[] = {rom_TestElement::Kind::kSolid, rom_TestElement::Kind::kShell,
                                        rom_TestElement::Kind::kContact};

// A stored text that names no kind is raised as the library raises what it
// finds wrong in a file, as a program built on it does.
rom_TestElement::Kind KindOf(cow_String const& text) {
  for (rom_TestElement::Kind kind : kKinds)
    if (std::strcmp(text.CStr(), rom_TestModel::KindName(kind)) == 0) return kind;
  nex_ThrowMessage(kSourcePath, __LINE__, atr_SubstituteFormat(kUnknownKind, text));
}

template <std::size_t N>
void WriteNodes(cls_WriteVisitor const& visitor, std::array<cow_COW<rom_TestNode>, N> const& nodes) {
  for (std::size_t corner = 0; corner < N; ++corner) visitor.WriteObj(NodeOf(static_cast<int>(corner)), nodes[corner]);
}

template <std::size_t N>
void ReadNodes(cls_ReadVisitor const& visitor, std::array<cow_COW<rom_TestNode>, N>& nodes) {
  for (std::size_t corner = 0; corner < N; ++corner)
    nodes[corner] = visitor.ReadObjCow<rom_TestNode>(NodeOf(static_cast<int>(corner)));
}
}  // namespace

char const* rom_TestModel::KindName(rom_TestElement::Kind kind) {
  switch (kind) {
    case rom_TestElement::Kind::kSolid:
      return "Solid";
    case rom_TestElement::Kind::kShell:
      return "Shell";
    case rom_TestElement::Kind::kContact:
      return "Contact";
  }
  return "?";
}

rom_TestNode::rom_TestNode(int id, double x, double y, double z, cow_COW<rom_TestMaterial> const& material)
    : m_Id(id), m_X(x), m_Y(y), m_Z(z), m_Material(material) {}

rom_TestNode::rom_TestNode(cls_ReadVisitor const& visitor)
    : m_Id(visitor.Read(NodeField::Id, int())),
      m_X(visitor.Read(NodeField::X, double())),
      m_Y(visitor.Read(NodeField::Y, double())),
      m_Z(visitor.Read(NodeField::Z, double())),
      m_Temperature(visitor.Read(NodeField::Temperature, rom_TestModel::kRoomTemperature)),
      m_Material(visitor.ReadObjCow<rom_TestMaterial>(NodeField::Material)),
      m_Uid(visitor.GetUid()) {}

void rom_TestNode::DBWrite(cls_WriteVisitor const& visitor) const {
  if (!visitor.StartWrite(kClassId, m_Uid)) return;
  visitor.Write(NodeField::Id, m_Id);
  visitor.Write(NodeField::X, m_X);
  visitor.Write(NodeField::Y, m_Y);
  visitor.Write(NodeField::Z, m_Z);
  // A version-1 table has no temperature.
  if (visitor.Memento()->FieldIsPresent(NodeField::Temperature)) visitor.Write(NodeField::Temperature, m_Temperature);
  visitor.WriteObj(NodeField::Material, m_Material);
}

rom_TestElement::rom_TestElement(cls_ReadVisitor const& base)
    : m_Id(base.Read(ElementField::Id, int())),
      m_Kind(KindOf(base.Read(ElementField::Kind, cow_String(rom_TestModel::KindName(Kind::kSolid))))),
      m_Material(base.ReadObjCow<rom_TestMaterial>(ElementField::Material)),
      m_ElementUid(base.GetUid()) {}

void rom_TestElement::DBWriteBase(cls_WriteVisitor const& visitor) const {
  if (!visitor.StartWrite(kClassId, m_ElementUid)) return;
  visitor.Write(ElementField::Id, m_Id);
  visitor.Write(ElementField::Kind, cow_String(rom_TestModel::KindName(m_Kind)));
  visitor.WriteObj(ElementField::Material, m_Material);
}

rom_TestHex8::rom_TestHex8(cls_ReadVisitor const& visitor)
    : rom_TestElement(cls_ReadVisitor::Base(visitor)), m_Uid(visitor.GetUid()) {
  ReadNodes(visitor, m_Nodes);
}

void rom_TestHex8::DBWrite(cls_WriteVisitor const& visitor) const {
  if (!visitor.StartWrite(kClassId, m_Uid)) return;
  DBWriteBase(cls_WriteVisitor(visitor, rom_TestElement::kClassId));
  WriteNodes(visitor, m_Nodes);
}

rom_TestQuad4::rom_TestQuad4(cls_ReadVisitor const& visitor)
    : rom_TestElement(cls_ReadVisitor::Base(visitor)),
      m_Thickness(visitor.Read(kThickness, double())),
      m_Reference(visitor.ReadObjCow<rom_TestNode>(kReference)),
      m_Uid(visitor.GetUid()) {
  ReadNodes(visitor, m_Nodes);
}

void rom_TestQuad4::DBWrite(cls_WriteVisitor const& visitor) const {
  if (!visitor.StartWrite(kClassId, m_Uid)) return;
  DBWriteBase(cls_WriteVisitor(visitor, rom_TestElement::kClassId));
  WriteNodes(visitor, m_Nodes);
  visitor.Write(kThickness, m_Thickness);
  visitor.WriteObj(kReference, m_Reference);
}

void rom_TestModel::Register(cls_ClassRegistrar& registrar, int nodeVersion, char const* namePrefix) {
  auto const name = [namePrefix](char const* className) { return cow_String(namePrefix).Append(className); };
  cls_Persistent<rom_TestMaterial>(name("Material"), kMaterial, 1)
      .Identity(&rom_TestMaterial::uid)
      .Member(1, "Name", &rom_TestMaterial::name)
      .Member(2, "Young", &rom_TestMaterial::young)
      .Member(3, "Poisson", &rom_TestMaterial::poisson)
      .Register(registrar);
  cls_ClassMetadata& node = registrar.Register<rom_TestNode>(name("Node"), kNode, nodeVersion, cls_kNoClass)
                                .AddAttribute(NodeField::Id, cls_AttrInt)
                                .AddAttribute(NodeField::X, cls_AttrDouble)
                                .AddAttribute(NodeField::Y, cls_AttrDouble)
                                .AddAttribute(NodeField::Z, cls_AttrDouble)
                                .AddAttribute(NodeField::Material, cls_AttrObjectCow, kMaterial)
                                .AddDtor(&cls_CowDtor<rom_TestNode>);
  if (nodeVersion >= 2) node.AddAttribute(NodeField::Temperature, cls_AttrDouble);
  registrar.CreateClassMD(name("Element"), kElement, 1, nullptr, cls_kNoClass)
      .AddAttribute(ElementField::Id, cls_AttrInt)
      .AddAttribute(ElementField::Kind, cls_AttrEnum)
      .AddAttribute(ElementField::Material, cls_AttrObjectCow, kMaterial);
  cls_ClassMetadata& hex = registrar.Register<rom_TestHex8>(name("Hex8"), kHex8, 1, kElement);
  for (int corner = 0; corner < 8; ++corner) hex.AddAttribute(NodeOf(corner), cls_AttrObjectCow, kNode);
  hex.AddDtor(&cls_CowDtor<rom_TestHex8>);
  cls_ClassMetadata& quad = registrar.Register<rom_TestQuad4>(name("Quad4"), kQuad4, 1, kElement);
  for (int corner = 0; corner < 4; ++corner) quad.AddAttribute(NodeOf(corner), cls_AttrObjectCow, kNode);
  quad.AddAttribute(kThickness, cls_AttrDouble)
      .AddAttribute(kReference, cls_AttrObjectCow, kNode)
      .AddDtor(&cls_CowDtor<rom_TestQuad4>);
  registrar.CreateClassMD(name("Marker"), kMarker, 1, nullptr, cls_kNoClass);
  cls_Persistent<rom_TestNodeSet>(name("NodeSet"), kNodeSet, 1)
      .Identity(&rom_TestNodeSet::uid)
      .Member(1, "Name", &rom_TestNodeSet::name)
      .Member(2, "Nodes", &rom_TestNodeSet::nodes)
      .Member(3, "Ids", &rom_TestNodeSet::ids, rom_TestNodeSet::kIdColumns)
      .Member(4, "Masks", &rom_TestNodeSet::masks)
      .Member(5, "Weights", &rom_TestNodeSet::weights)
      .Member(6, "Scales", &rom_TestNodeSet::scales)
      .Member(7, "Flags", &rom_TestNodeSet::flags)
      .Member(8, "Labels", &rom_TestNodeSet::labels)
      .Member(9, "Note", &rom_TestNodeSet::note)
      .Member(10, "ById", &rom_TestNodeSet::byId)
      .Member(11, "ByLabel", &rom_TestNodeSet::byLabel)
      .Member(12, "Attributes", &rom_TestNodeSet::attributes)
      .Member(13, "Tags", &rom_TestNodeSet::tags)
      .Register(registrar);
}

rom_TestModel::Model rom_TestModel::Make(int nodes, int materials, unsigned int seed, int nodeVersion) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> coordinate(-100.0, 100.0);
  Model model;
  for (int i = 0; i < materials; ++i) {
    rom_TestMaterial material;
    material.name = cow_String(("Steel-" + std::to_string(i)).c_str());
    material.young = 200e9 + coordinate(random) * 1e6;
    material.poisson = static_cast<float>(0.25 + coordinate(random) / 1000.0);
    model.materials.emplace_back(new rom_TestMaterial(material));
  }
  auto const anyMaterial = [&] { return model.materials[random() % model.materials.size()]; };
  for (int i = 0; i < nodes; ++i) {
    model.nodes.emplace_back(
        new rom_TestNode(i + 1, coordinate(random), coordinate(random), coordinate(random), anyMaterial()));
    double const temperature = 15.0 + (random() % 100) / 10.0;
    if (nodeVersion >= 2) model.nodes.back().Get()->m_Temperature = temperature;
  }
  auto const anyNode = [&] { return model.nodes[random() % model.nodes.size()]; };
  for (int i = 0; i < nodes / 4; ++i) {
    auto* hex = new rom_TestHex8;
    hex->m_Id = 2 * i + 1;
    hex->m_Kind = kKinds[random() % 3];
    hex->m_Material = anyMaterial();
    for (auto& node : hex->m_Nodes) node = anyNode();
    model.hexes.emplace_back(hex);
    auto* quad = new rom_TestQuad4;
    quad->m_Id = 2 * i + 2;
    quad->m_Kind = kKinds[random() % 3];
    quad->m_Material = anyMaterial();
    for (auto& node : quad->m_Nodes) node = anyNode();
    quad->m_Thickness = 0.5 + (random() % 50) / 10.0;
    if (random() % 4 == 0) quad->m_Reference = anyNode();
    model.quads.emplace_back(quad);
  }
  for (int i = 0; i <= nodes / 8; ++i) {
    auto* set = new rom_TestNodeSet;
    set->name = cow_String(("Set-" + std::to_string(i)).c_str());
    // The first set's lists and note are empty.
    int const size = i == 0 ? 0 : 1 + static_cast<int>(random() % 12);
    for (int k = 0; k < size; ++k) {
      set->nodes.push_back(k % 5 == 3 ? cow_COW<rom_TestNode>() : anyNode());
      set->masks.push_back(static_cast<unsigned int>(random()) * 2654435761u);
      set->weights.push_back(coordinate(random));
      set->scales.push_back(static_cast<float>(coordinate(random)));
      set->flags.push_back(random() % 2 == 0);
      set->labels.push_back(cow_String(k % 4 == 0 ? "" : ("n" + std::to_string(random() % 1000)).c_str()));
      // The maps draw nothing from random, so that the rest of the model
      // stays what the seed made before sets had maps.
      set->byId[7 * k - 20] = set->nodes.back();
      set->byLabel[set->labels.back()] = k % 3 == 1 ? cow_COW<rom_TestNode>() : set->nodes[(5 * k) % (k + 1)];
      set->attributes[cow_String(("a" + std::to_string(k)).c_str())] = 0.25 * k - i;
      set->tags[static_cast<unsigned int>(k + 1) * 2654435761u] = cow_String(("t" + std::to_string(k)).c_str());
    }
    for (int k = 0; k < size * rom_TestNodeSet::kIdColumns; ++k) set->ids.push_back(static_cast<int>(random()) - 99);
    for (int k = 0; k < size * 37; ++k) set->note.push_back(static_cast<char>(random()));
    model.sets.emplace_back(set);
  }
  return model;
}

void rom_TestModel::Write(rom_Transporter& transporter, Model const& model) {
  for (auto const& node : model.nodes) rom_WriteObject(transporter, node);
  for (auto const& hex : model.hexes) rom_WriteObject(transporter, hex);
  for (auto const& quad : model.quads) rom_WriteObject(transporter, quad);
  for (auto const& set : model.sets) rom_WriteObject(transporter, set);
}

rom_TestModel::Model rom_TestModel::Read(rom_Transporter& transporter) {
  Model model;
  int const nodes = transporter.GetTableSize(kNode);
  for (int oid = 0; oid < nodes; ++oid) model.nodes.push_back(rom_ReadObject<rom_TestNode>(transporter, oid));
  int const hexes = transporter.GetTableSize(kHex8);
  for (int oid = 0; oid < hexes; ++oid) model.hexes.push_back(rom_ReadObject<rom_TestHex8>(transporter, oid));
  int const quads = transporter.GetTableSize(kQuad4);
  for (int oid = 0; oid < quads; ++oid) model.quads.push_back(rom_ReadObject<rom_TestQuad4>(transporter, oid));
  int const sets = transporter.GetTableSize(kNodeSet);
  for (int oid = 0; oid < sets; ++oid) model.sets.push_back(rom_ReadObject<rom_TestNodeSet>(transporter, oid));
  return model;
}

namespace {
std::string MaterialDifference(cow_COW<rom_TestMaterial> const& expected, cow_COW<rom_TestMaterial> const& actual) {
  if (expected.HasValue() != actual.HasValue()) return "material present in one model only";
  if (!expected.HasValue()) return std::string();
  rom_TestMaterial const& e = *expected.ConstGet();
  rom_TestMaterial const& a = *actual.ConstGet();
  if (!(e.name == a.name) || e.young != a.young || e.poisson != a.poisson)
    return std::string("material ") + e.name.CStr() + " differs from " + a.name.CStr();
  return std::string();
}

std::string NodeDifference(cow_COW<rom_TestNode> const& expected, cow_COW<rom_TestNode> const& actual) {
  if (expected.HasValue() != actual.HasValue()) return "node present in one model only";
  if (!expected.HasValue()) return std::string();
  rom_TestNode const& e = *expected.ConstGet();
  rom_TestNode const& a = *actual.ConstGet();
  std::ostringstream text;
  if (e.m_Id != a.m_Id || e.m_X != a.m_X || e.m_Y != a.m_Y || e.m_Z != a.m_Z || e.m_Temperature != a.m_Temperature)
    text << "node " << e.m_Id << " differs from node " << a.m_Id;
  else
    text << MaterialDifference(e.m_Material, a.m_Material);
  return text.str();
}

template <class Element>
std::string ElementDifference(Element const& e, Element const& a) {
  if (e.m_Id != a.m_Id || e.m_Kind != a.m_Kind) return "element " + std::to_string(e.m_Id) + " differs";
  std::string difference = MaterialDifference(e.m_Material, a.m_Material);
  for (std::size_t corner = 0; difference.empty() && corner < e.m_Nodes.size(); ++corner)
    difference = NodeDifference(e.m_Nodes[corner], a.m_Nodes[corner]);
  return difference;
}

template <class K>
std::string NodeMapDifference(std::map<K, cow_COW<rom_TestNode>> const& expected,
                              std::map<K, cow_COW<rom_TestNode>> const& actual) {
  if (expected.size() != actual.size()) return "map sizes differ";
  for (auto e = expected.begin(), a = actual.begin(); e != expected.end(); ++e, ++a) {
    if (!(e->first == a->first)) return "map keys differ";
    std::string const difference = NodeDifference(e->second, a->second);
    if (!difference.empty()) return "map entry: " + difference;
  }
  return std::string();
}

std::string SetDifference(cow_COW<rom_TestNodeSet> const& expected, cow_COW<rom_TestNodeSet> const& actual) {
  rom_TestNodeSet const& e = *expected.ConstGet();
  rom_TestNodeSet const& a = *actual.ConstGet();
  std::string const set = std::string("set ") + e.name.CStr() + ": ";
  if (!(e.name == a.name)) return set + "name differs";
  if (e.nodes.size() != a.nodes.size()) return set + "node count differs";
  for (std::size_t k = 0; k < e.nodes.size(); ++k) {
    std::string const difference = NodeDifference(e.nodes[k], a.nodes[k]);
    if (!difference.empty()) return set + difference;
  }
  if (e.ids != a.ids) return set + "ids differ";
  if (e.masks != a.masks) return set + "masks differ";
  if (e.weights != a.weights) return set + "weights differ";
  if (e.scales != a.scales) return set + "scales differ";
  if (e.flags != a.flags) return set + "flags differ";
  if (e.labels != a.labels) return set + "labels differ";
  if (e.note != a.note) return set + "note differs";
  if (e.attributes != a.attributes) return set + "attributes differ";
  if (e.tags != a.tags) return set + "tags differ";
  std::string difference = NodeMapDifference(e.byId, a.byId);
  if (difference.empty()) difference = NodeMapDifference(e.byLabel, a.byLabel);
  if (!difference.empty()) return set + difference;
  return std::string();
}

template <class T, class Compare>
std::string ListDifference(char const* what, std::vector<cow_COW<T>> const& expected,
                           std::vector<cow_COW<T>> const& actual, Compare compare) {
  if (expected.size() != actual.size())
    return std::string(what) + ": " + std::to_string(expected.size()) + " expected, " +
           std::to_string(actual.size()) + " found";
  for (std::size_t i = 0; i < expected.size(); ++i) {
    std::string const difference = compare(expected[i], actual[i]);
    if (!difference.empty()) return std::string(what) + " " + std::to_string(i) + ": " + difference;
  }
  return std::string();
}
}  // namespace

std::string rom_TestModel::Difference(Model const& expected, Model const& actual) {
  std::string difference = ListDifference("node", expected.nodes, actual.nodes, NodeDifference);
  if (difference.empty())
    difference = ListDifference("hex", expected.hexes, actual.hexes,
                                [](cow_COW<rom_TestHex8> const& e, cow_COW<rom_TestHex8> const& a) {
                                  return ElementDifference(*e.ConstGet(), *a.ConstGet());
                                });
  if (difference.empty())
    difference = ListDifference(
        "quad", expected.quads, actual.quads, [](cow_COW<rom_TestQuad4> const& e, cow_COW<rom_TestQuad4> const& a) {
          std::string d = ElementDifference(*e.ConstGet(), *a.ConstGet());
          if (d.empty() && e.ConstGet()->m_Thickness != a.ConstGet()->m_Thickness) d = "thickness differs";
          if (d.empty()) d = NodeDifference(e.ConstGet()->m_Reference, a.ConstGet()->m_Reference);
          return d;
        });
  if (difference.empty()) difference = ListDifference("set", expected.sets, actual.sets, SetDifference);
  return difference;
}
