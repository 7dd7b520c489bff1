#ifndef cls_TestModel_h
#define cls_TestModel_h

#include "cls_ClassRegistrar.h"
#include "cls_CowDtor.h"
#include "cls_FakeDatabase.h"
#include "cls_FieldHandle.h"
#include "cls_Persistent.h"
#include "cls_ReadVisitor.h"
#include "cls_Uid.h"
#include "cls_WriteVisitor.h"
#include "cow_COW.h"
#include "cow_String.h"

#include <array>

// A small application model, written as the framework's README shows: a
// material and a section declared through the typed helper; a node, an
// element base and a derived hexahedron written by hand; a marker class
// without a table; and the root class that refers to the rest.

struct Material {
  static constexpr unsigned int kClassId = 0x01000001;
  cls_Uid uid;
  cow_String name;
  double young = 0, poisson = 0;
};

inline cls_Persistent<Material> const kMaterialClass = cls_Persistent<Material>("Material", Material::kClassId, 1)
                                                           .Identity(&Material::uid)
                                                           .Member(1, "Name", &Material::name)
                                                           .Member(2, "Young", &Material::young)
                                                           .Member(3, "Poisson", &Material::poisson);

// Every member type the helper knows.
struct Section {
  static constexpr unsigned int kClassId = 0x01000005;
  cls_Uid uid;
  int layers = -1;
  unsigned int flags = 0;
  bool closed = false;
  float angle = 0;
  double thickness = 0;
  cow_String label;
  cow_COW<Material> material;
};

inline cls_Persistent<Section> const kSectionClass = cls_Persistent<Section>("Section", Section::kClassId, 1)
                                                         .Identity(&Section::uid)
                                                         .Member(1, "Layers", &Section::layers)
                                                         .Member(2, "Flags", &Section::flags)
                                                         .Member(3, "Closed", &Section::closed)
                                                         .Member(4, "Angle", &Section::angle)
                                                         .Member(5, "Thickness", &Section::thickness)
                                                         .Member(6, "Label", &Section::label)
                                                         .Member(7, "Material", &Section::material);

namespace NodeFields {
cls_FieldHandle const Id(1, "Id");
cls_FieldHandle const Material(3, "Material");
cls_FieldHandle const X(4, "X");
cls_FieldHandle const Y(5, "Y");
cls_FieldHandle const Z(6, "Z");
}  // namespace NodeFields

class Node {
public:
  static constexpr unsigned int kClassId = 0x01000002;
  static void Register(cls_ClassRegistrar& registrar) {
    registrar.Register<Node>("Node", kClassId, 1, cls_kNoClass)
        .AddAttribute(NodeFields::Id, cls_AttrInt)
        .AddAttribute(NodeFields::X, cls_AttrDouble)
        .AddAttribute(NodeFields::Y, cls_AttrDouble)
        .AddAttribute(NodeFields::Z, cls_AttrDouble)
        .AddAttribute(NodeFields::Material, cls_AttrObjectCow, Material::kClassId)
        .AddDtor(&cls_CowDtor<Node>);
  }

  Node(int id, double x, double y, double z, cow_COW<Material> const& material)
      : m_Id(id), m_X(x), m_Y(y), m_Z(z), m_Material(material) {}
  explicit Node(cls_ReadVisitor const& visitor)
      : m_Uid(visitor.GetUid()),
        m_Id(visitor.Read(NodeFields::Id, int())),
        m_X(visitor.Read(NodeFields::X, double())),
        m_Y(visitor.Read(NodeFields::Y, double())),
        m_Z(visitor.Read(NodeFields::Z, double())),
        m_Material(visitor.ReadObjCow<Material>(NodeFields::Material)) {}

  void DBWrite(cls_WriteVisitor const& visitor) const {
    if (!visitor.StartWrite(kClassId, m_Uid)) return;
    visitor.Write(NodeFields::Id, m_Id);
    visitor.Write(NodeFields::X, m_X);
    visitor.Write(NodeFields::Y, m_Y);
    visitor.Write(NodeFields::Z, m_Z);
    visitor.WriteObj(NodeFields::Material, m_Material);
  }

  cls_Uid const& Uid() const { return m_Uid; }
  int Id() const { return m_Id; }
  double X() const { return m_X; }
  void SetX(double x) { m_X = x; }
  cow_COW<Material> const& GetMaterial() const { return m_Material; }

private:
  cls_Uid m_Uid;
  int m_Id = 0;
  double m_X = 0, m_Y = 0, m_Z = 0;
  cow_COW<Material> m_Material;
};

class Element {
public:
  static constexpr unsigned int kClassId = 0x01000003;
  static inline cls_FieldHandle const kLabel{1, "Label"};
  static void Register(cls_ClassRegistrar& registrar) {
    registrar.CreateClassMD("Element", kClassId, 1, nullptr, cls_kNoClass).AddAttribute(kLabel, cls_AttrString);
  }

  cls_Uid const& ElementUid() const { return m_ElementUid; }
  cow_String const& Label() const { return m_Label; }

protected:
  explicit Element(cow_String const& label) : m_Label(label) {}
  explicit Element(cls_ReadVisitor const& base)
      : m_ElementUid(base.GetUid()), m_Label(base.Read(kLabel, cow_String())) {}
  void DBWriteBase(cls_WriteVisitor const& visitor) const {
    if (!visitor.StartWrite(kClassId, m_ElementUid)) return;
    visitor.Write(kLabel, m_Label);
  }

private:
  // The base part's row is an object of its own, with its own identity.
  cls_Uid m_ElementUid;
  cow_String m_Label;
};

class Hex8 : public Element {
public:
  static constexpr unsigned int kClassId = 0x01000004;
  static cls_FieldHandle NodeField(int corner) {
    static char const* const kNames[8] = {"Node1", "Node2", "Node3", "Node4", "Node5", "Node6", "Node7", "Node8"};
    return cls_FieldHandle(corner + 1, kNames[corner]);
  }
  static void Register(cls_ClassRegistrar& registrar) {
    cls_ClassMetadata& metadata = registrar.Register<Hex8>("Hex8", kClassId, 1, Element::kClassId);
    for (int corner = 0; corner < 8; ++corner)
      metadata.AddAttribute(NodeField(corner), cls_AttrObjectCow, Node::kClassId);
    metadata.AddDtor(&cls_CowDtor<Hex8>);
  }

  Hex8(cow_String const& label, std::array<cow_COW<Node>, 8> const& nodes) : Element(label), m_Nodes(nodes) {}
  explicit Hex8(cls_ReadVisitor const& visitor) : Element(cls_ReadVisitor::Base(visitor)), m_Uid(visitor.GetUid()) {
    for (int corner = 0; corner < 8; ++corner) m_Nodes[corner] = visitor.ReadObjCow<Node>(NodeField(corner));
  }

  // The nodes are written through their own DBWrite, on member visitors.
  void DBWrite(cls_WriteVisitor const& visitor) const {
    if (!visitor.StartWrite(kClassId, m_Uid)) return;
    DBWriteBase(cls_WriteVisitor(visitor, Element::kClassId));
    for (int corner = 0; corner < 8; ++corner) {
      cow_COW<Node> const& node = m_Nodes[corner];
      if (node.HasValue())
        node.ConstGet()->DBWrite(cls_WriteVisitor(visitor, NodeField(corner), cls_CowValue(node)));
      else
        visitor.WriteNullObj(NodeField(corner));
    }
  }

  cls_Uid const& Uid() const { return m_Uid; }
  cow_COW<Node> const& GetNode(int corner) const { return m_Nodes[corner]; }

private:
  cls_Uid m_Uid;
  std::array<cow_COW<Node>, 8> m_Nodes;
};

// A class without attributes or base class: it has no table.
class Marker {
public:
  static constexpr unsigned int kClassId = 0x01000006;
  static inline int s_MembersWritten = 0;
  Marker() = default;
  explicit Marker(cls_ReadVisitor const&) {}
  void DBWrite(cls_WriteVisitor const& visitor) const {
    if (!visitor.StartWrite(kClassId, m_Uid)) return;
    ++s_MembersWritten;
  }

private:
  cls_Uid m_Uid;
};

// The root row's fields.
namespace ModelFields {
cls_FieldHandle const First(1, "First");
cls_FieldHandle const Second(2, "Second");
cls_FieldHandle const Section(3, "Section");
cls_FieldHandle const Marker(4, "Marker");
cls_FieldHandle const Nodes(5, "Nodes");
}  // namespace ModelFields

inline void RegisterTestModel(cls_ClassRegistrar& registrar) {
  kMaterialClass.Register(registrar);
  kSectionClass.Register(registrar);
  Node::Register(registrar);
  Element::Register(registrar);
  Hex8::Register(registrar);
  registrar.Register<Marker>("Marker", Marker::kClassId, 1, cls_kNoClass);
  registrar.CreateClassMD("Model", cls_FakeDatabase::kRootClass, 1, nullptr, cls_kNoClass)
      .AddAttribute(ModelFields::First, cls_AttrObjectCow, Hex8::kClassId)
      .AddAttribute(ModelFields::Second, cls_AttrObjectCow, Hex8::kClassId)
      .AddAttribute(ModelFields::Section, cls_AttrObjectCow, Section::kClassId)
      .AddAttribute(ModelFields::Marker, cls_AttrObjectCow, Marker::kClassId)
      .AddAttribute(ModelFields::Nodes, cls_AttrList, Node::kClassId, cls_CollListObj);
}

#endif
