#include "beam_elements.h"

#include "beam_collections.h"
#include "cls_CowDtor.h"

#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

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

void Node::Register(cls_ClassRegistrar& registrar) {
  registrar.Register<Node>("Node", kClassId, 1, cls_kNoClass)
      .AddAttribute(NodeField::Id, cls_AttrInt)
      .AddAttribute(NodeField::X, cls_AttrDouble)
      .AddAttribute(NodeField::Y, cls_AttrDouble)
      .AddAttribute(NodeField::Z, cls_AttrDouble)
      .AddDtor(&cls_CowDtor<Node>);
}

Element::Element(int id, cow_COW<::Material> const& material, Formulation formulation, std::vector<int> nodes)
    : m_Id(id), m_Material(material), m_Formulation(formulation), m_Nodes(std::move(nodes)) {}

Element::Element(cls_ReadVisitor const& base, int corners)
    : m_Uid(base.GetUid()),
      m_Id(base.Read(ElementField::Id, int())),
      m_Material(base.ReadObjCow<::Material>(ElementField::Material)),
      m_Formulation(ParseFormulation(base.Read(ElementField::Formulation, cow_String()))) {
  int columns = 0;
  m_Nodes = beam_ReadList<int>(base, ElementField::Nodes, columns);
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
  beam_WriteList(visitor, ElementField::Nodes, m_Nodes, corners);
}

// A list member is a reference to a row of the list class, implemented by a
// list of values (cls_CollListPrim) or of objects (cls_CollListObj). The
// class is abstract: no constructor.
void Element::Register(cls_ClassRegistrar& registrar) {
  registrar.CreateClassMD("Element", kClassId, 1, nullptr, cls_kNoClass)
      .AddAttribute(ElementField::Id, cls_AttrInt)
      .AddAttribute(ElementField::Material, cls_AttrObjectCow, ::Material::kClassId)
      .AddAttribute(ElementField::Formulation, cls_AttrEnum)
      .AddAttribute(ElementField::Nodes, cls_AttrObjectCow, cls_kListClass, cls_CollListPrim);
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

void Hex8::Register(cls_ClassRegistrar& registrar) {
  registrar.Register<Hex8>("Hex8", kClassId, 1, Element::kClassId).AddDtor(&cls_CowDtor<Hex8>);
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

void Quad4::Register(cls_ClassRegistrar& registrar) {
  registrar.Register<Quad4>("Quad4", kClassId, 1, Element::kClassId)
      .AddAttribute(Quad4Field::Offset, cls_AttrObjectCow, Node::kClassId)
      .AddDtor(&cls_CowDtor<Quad4>);
}

bool Quad4::SameAs(Quad4 const& o) const {
  return Element::SameAs(o) && m_Offset.HasValue() == o.m_Offset.HasValue() &&
         (!m_Offset.HasValue() || *m_Offset.ConstGet() == *o.m_Offset.ConstGet());
}
