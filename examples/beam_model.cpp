#include "beam_model.h"

#include "cls_CollectionClass.h"
#include "cls_CowDtor.h"
#include "cls_MementoRead.h"
#include "cls_MementoWrite.h"
#include "cls_Persistent.h"
#include "cls_ReadListPrim.h"
#include "cls_Received.h"
#include "cls_WriteListPrim.h"
#include "rom_MementoRead.h"
#include "rom_MementoWrite.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace {

// Lists of values through the visitor interface: how a class that writes
// itself stores a std::vector member. A list is a row of the object layer's
// list class that the owner's row refers to; it has no identity of its own,
// so rewriting the owner writes the list over in that same row.
template <class E>
void WriteList(cls_WriteVisitor const& owner, cls_FieldHandle const& field, std::vector<E> const& values, int columns) {
  // Declared before the visitor: the object layer may tie the list row to
  // it while the visitor lives.
  cls_Uid const anonymous;
  cls_WriteVisitor const list(owner, field, nullptr, nullptr);
  if (!list.StartWrite(cls_kListClass, anonymous)) return;
  list.CheckCollectionType(cls_CollListPrim);
  cls_Received<cls_WriteListPrim<E>> writer(list.Memento()->MakeWriteListPrim(E(), columns));
  if (!writer || values.empty()) return;
  if constexpr (std::is_same_v<E, bool>) {
    // std::vector<bool> keeps no array of bool.
    for (bool const value : values) writer->Write(value);
  } else {
    writer->Write(values.data(), static_cast<int>(values.size()));
  }
}

// The list of values in field, and the number of elements in one of its
// logical rows; an empty list when the row holds none: a table of an older
// class version without the member, a null reference, a list row with no
// list in it.
template <class E>
std::vector<E> ReadList(cls_ReadVisitor const& owner, cls_FieldHandle const& field, int& columns) {
  std::vector<E> values;
  columns = 1;
  if (!owner.ObjIsPresent(field)) return values;
  cls_ReadVisitor const list(owner, field);
  if (list.Memento() == nullptr) return values;
  cls_Received<cls_ReadListPrim<E>> reader(list.Memento()->MakeReadListPrim(E()));
  if (!reader) return values;
  columns = reader->Columns();
  int const size = reader->Size();
  if (size <= 0) return values;
  if constexpr (std::is_same_v<E, bool>) {
    for (int i = 0; i < size; ++i) {
      reader->Next();
      values.push_back(reader->Read());
    }
  } else {
    values.resize(static_cast<std::size_t>(size));
    values.resize(static_cast<std::size_t>(reader->Read(values.data(), size)));
  }
  return values;
}

template <class E>
std::vector<E> ReadList(cls_ReadVisitor const& owner, cls_FieldHandle const& field) {
  int columns = 0;
  return ReadList<E>(owner, field, columns);
}

namespace NodeField {
cls_FieldHandle const Id(1, "Id");
cls_FieldHandle const X(2, "X");
cls_FieldHandle const Y(3, "Y");
cls_FieldHandle const Z(4, "Z");
}  // namespace NodeField

char const* const kFormulationText[] = {"full", "reduced"};

Formulation ParseFormulation(cow_String const& text) {
  for (int i = 0; i < 2; ++i)
    if (std::strcmp(text.CStr(), kFormulationText[i]) == 0) return static_cast<Formulation>(i);
  throw std::runtime_error(std::string("unknown formulation \"") + text.CStr() + "\"");
}

namespace ElementField {
cls_FieldHandle const Id(1, "Id");
cls_FieldHandle const Material(2, "Material");
cls_FieldHandle const Formulation(3, "Formulation");
cls_FieldHandle const Nodes(4, "Nodes");
}  // namespace ElementField

namespace Quad4Field {
cls_FieldHandle const Offset(1, "Offset");
}

namespace StepField {
cls_FieldHandle const Name(1, "Name");
cls_FieldHandle const Loads(2, "Loads");
cls_FieldHandle const Active(3, "Active");
cls_FieldHandle const Outputs(4, "Outputs");
cls_FieldHandle const History(5, "History");
}  // namespace StepField

}  // namespace

Node::Node(cls_ReadVisitor const& visitor)
    : m_Uid(visitor.GetUid()),
      m_Id(visitor.Read(NodeField::Id, int())),
      m_X(visitor.Read(NodeField::X, double())),
      m_Y(visitor.Read(NodeField::Y, double())),
      m_Z(visitor.Read(NodeField::Z, double())) {}

void Node::DBWrite(cls_WriteVisitor const& visitor) const {
  if (!visitor.StartWrite(kClassId, m_Uid)) return;
  visitor.Write(NodeField::Id, m_Id);
  visitor.Write(NodeField::X, m_X);
  visitor.Write(NodeField::Y, m_Y);
  visitor.Write(NodeField::Z, m_Z);
}

Element::Element(int id, cow_COW<::Material> const& material, Formulation formulation, std::vector<int> nodes)
    : m_Id(id), m_Material(material), m_Formulation(formulation), m_Nodes(std::move(nodes)) {}

Element::Element(cls_ReadVisitor const& base, int corners)
    : m_Uid(base.GetUid()),
      m_Id(base.Read(ElementField::Id, int())),
      m_Material(base.ReadObjCow<::Material>(ElementField::Material)),
      m_Formulation(ParseFormulation(base.Read(ElementField::Formulation, cow_String()))) {
  int columns = 0;
  m_Nodes = ReadList<int>(base, ElementField::Nodes, columns);
  if (columns != corners || m_Nodes.size() != static_cast<std::size_t>(corners))
    throw std::runtime_error("element " + std::to_string(m_Id) + " has " + std::to_string(m_Nodes.size()) +
                             " node ids in rows of " + std::to_string(columns) + ", not one row of " +
                             std::to_string(corners));
}

void Element::DBWriteBase(cls_WriteVisitor const& visitor, int corners) const {
  if (!visitor.StartWrite(kClassId, m_Uid)) return;
  visitor.Write(ElementField::Id, m_Id);
  visitor.WriteObj(ElementField::Material, m_Material);
  visitor.Write(ElementField::Formulation, cow_String(kFormulationText[static_cast<int>(m_Formulation)]));
  WriteList(visitor, ElementField::Nodes, m_Nodes, corners);
}

bool Element::SameAs(Element const& o) const {
  bool const sameMaterial = m_Material.HasValue() == o.m_Material.HasValue() &&
                            (!m_Material.HasValue() || m_Material.ConstGet()->name == o.m_Material.ConstGet()->name);
  return m_Id == o.m_Id && m_Formulation == o.m_Formulation && m_Nodes == o.m_Nodes && sameMaterial;
}

Hex8::Hex8(int id, cow_COW<Material> const& material, std::vector<int> nodes)
    : Element(id, material, Formulation::kFullIntegration, std::move(nodes)) {}

Hex8::Hex8(cls_ReadVisitor const& visitor)
    : Element(cls_ReadVisitor::Base(visitor), kCorners), m_Uid(visitor.GetUid()) {}

void Hex8::DBWrite(cls_WriteVisitor const& visitor) const {
  if (visitor.StartWrite(kClassId, m_Uid)) DBWriteBase(cls_WriteVisitor(visitor, Element::kClassId), kCorners);
}

Quad4::Quad4(int id, cow_COW<Material> const& material, std::vector<int> nodes, cow_COW<Node> const& offset)
    : Element(id, material, Formulation::kReducedIntegration, std::move(nodes)), m_Offset(offset) {}

Quad4::Quad4(cls_ReadVisitor const& visitor)
    : Element(cls_ReadVisitor::Base(visitor), kCorners),
      m_Uid(visitor.GetUid()),
      m_Offset(visitor.ReadObjCow<Node>(Quad4Field::Offset)) {}

void Quad4::DBWrite(cls_WriteVisitor const& visitor) const {
  if (!visitor.StartWrite(kClassId, m_Uid)) return;
  DBWriteBase(cls_WriteVisitor(visitor, Element::kClassId), kCorners);
  visitor.WriteObj(Quad4Field::Offset, m_Offset);
}

bool Quad4::SameAs(Quad4 const& o) const {
  return Element::SameAs(o) && m_Offset.HasValue() == o.m_Offset.HasValue() &&
         (!m_Offset.HasValue() || *m_Offset.ConstGet() == *o.m_Offset.ConstGet());
}

Step::Step(cow_String const& name, std::vector<double> loads, std::vector<bool> active, std::vector<cow_String> outputs)
    : m_Name(name), m_Loads(std::move(loads)), m_Active(std::move(active)), m_Outputs(std::move(outputs)) {}

Step::Step(cls_ReadVisitor const& visitor)
    : m_Uid(visitor.GetUid()),
      m_Name(visitor.Read(StepField::Name, cow_String())),
      m_Loads(ReadList<double>(visitor, StepField::Loads)),
      m_Active(ReadList<bool>(visitor, StepField::Active)),
      m_Outputs(ReadList<cow_String>(visitor, StepField::Outputs)),
      m_History(ReadList<double>(visitor, StepField::History)) {}

void Step::DBWrite(cls_WriteVisitor const& visitor) const {
  if (!visitor.StartWrite(kClassId, m_Uid)) return;
  visitor.Write(StepField::Name, m_Name);
  WriteList(visitor, StepField::Loads, m_Loads, kLoadColumns);
  WriteList(visitor, StepField::Active, m_Active, 1);
  WriteList(visitor, StepField::Outputs, m_Outputs, 1);
  WriteList(visitor, StepField::History, m_History, kHistoryColumns);
}

bool Step::operator==(Step const& o) const {
  return m_Name == o.m_Name && m_Loads == o.m_Loads && m_Active == o.m_Active && m_Outputs == o.m_Outputs &&
         m_History == o.m_History;
}

std::unique_ptr<cls_AgentListPrim<double>> OpenHistoryToAppend(rom_Transporter& file, int stepRow) {
  // The step's row, and the list row it refers to, reached as Step::DBWrite
  // reaches it.
  rom_MementoWrite step(file, Step::kClassId, stepRow, cls_MementoWrite::kOwnedByCreator);
  cls_WriteVisitor const owner(&step);
  cls_Uid const anonymous;
  cls_WriteVisitor const list(owner, StepField::History, nullptr, nullptr);
  if (!list.StartWrite(cls_kListClass, anonymous)) throw std::runtime_error("the step's history has no list row");
  list.CheckCollectionType(cls_CollListPrim);
  return std::unique_ptr<cls_AgentListPrim<double>>(list.Memento()->MakeAgentListDouble(Step::kHistoryColumns));
}

std::unique_ptr<cls_AgentListPrim<double>> OpenHistoryToFollow(rom_Transporter& file, int stepRow) {
  cls_ReadVisitor const step(new rom_MementoRead(file, Step::kClassId, stepRow, cls_Uid()));
  if (!step.ObjIsPresent(StepField::History)) throw std::runtime_error("the step has no history");
  cls_ReadVisitor const list(step, StepField::History);
  std::unique_ptr<cls_AgentListPrim<double>> agent(list.Memento() ? list.Memento()->MakeAgentListDouble() : nullptr);
  if (!agent) throw std::runtime_error("the step's history holds no list");
  return agent;
}

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
  // A list member is a reference to a row of the list class, implemented
  // by a list of values (cls_CollListPrim) or of objects (cls_CollListObj).
  registrar.CreateClassMD("Element", Element::kClassId, 1, nullptr, cls_kNoClass)
      .AddAttribute(ElementField::Id, cls_AttrInt)
      .AddAttribute(ElementField::Material, cls_AttrObjectCow, Material::kClassId)
      .AddAttribute(ElementField::Formulation, cls_AttrEnum)
      .AddAttribute(ElementField::Nodes, cls_AttrObjectCow, cls_kListClass, cls_CollListPrim);
  registrar.Register<Hex8>("Hex8", Hex8::kClassId, 1, Element::kClassId).AddDtor(&cls_CowDtor<Hex8>);
  registrar.Register<Quad4>("Quad4", Quad4::kClassId, 1, Element::kClassId)
      .AddAttribute(Quad4Field::Offset, cls_AttrObjectCow, Node::kClassId)
      .AddDtor(&cls_CowDtor<Quad4>);
  cls_Persistent<NodeSet>("NodeSet", NodeSet::kClassId, 1)
      .Identity(&NodeSet::uid)
      .Member(1, "Name", &NodeSet::name)
      .Member(2, "Nodes", &NodeSet::nodes)
      .Register(registrar);
  registrar.Register<Step>("Step", Step::kClassId, 1, cls_kNoClass)
      .AddAttribute(StepField::Name, cls_AttrString)
      .AddAttribute(StepField::Loads, cls_AttrObjectCow, cls_kListClass, cls_CollListPrim)
      .AddAttribute(StepField::Active, cls_AttrObjectCow, cls_kListClass, cls_CollListPrim)
      .AddAttribute(StepField::Outputs, cls_AttrObjectCow, cls_kListClass, cls_CollListPrim)
      .AddAttribute(StepField::History, cls_AttrObjectCow, cls_kListClass, cls_CollListPrim)
      .AddDtor(&cls_CowDtor<Step>);
  cls_Persistent<Model>("Model", Model::kClassId, 1)
      .Identity(&Model::uid)
      .Member(1, "Title", &Model::title)
      .Member(2, "Materials", &Model::materials)
      .Member(3, "Nodes", &Model::nodes)
      .Member(4, "Solids", &Model::solids)
      .Member(5, "Shells", &Model::shells)
      .Member(6, "Sets", &Model::sets)
      .Member(7, "Steps", &Model::steps)
      .Member(8, "Suppressed", &Model::suppressed)
      .Member(9, "Deck", &Model::deck)
      .Register(registrar);
}
