#ifndef beam_elements_h
#define beam_elements_h

// The mesh of the beam: nodes, and the solid and shell elements on them.
// These classes write themselves (DBWrite) and read themselves (a
// constructor taking a cls_ReadVisitor), and register their metadata in
// Register; beam_elements.cpp shows how such a class stores a list member.

#include "beam_material.h"
#include "cls_ClassRegistrar.h"
#include "cls_ReadVisitor.h"
#include "cls_Uid.h"
#include "cls_WriteVisitor.h"
#include "cow_COW.h"

#include <vector>

class Node {
public:
  static constexpr unsigned int kClassId = 0x01000002;
  Node(int id, double x, double y, double z) : m_Id(id), m_X(x), m_Y(y), m_Z(z) {}
  explicit Node(cls_ReadVisitor const& visitor);
  void DBWrite(cls_WriteVisitor const& visitor) const;
  static void Register(cls_ClassRegistrar& registrar);
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

// The part every element has: a table of its own, never built alone. The
// element's connectivity is the ids of its corner nodes, stored as a list of
// int whose one logical row has a column per corner.
class Element {
public:
  static constexpr unsigned int kClassId = 0x01000003;
  static void Register(cls_ClassRegistrar& registrar);
  int Id() const { return m_Id; }
  cow_COW<Material> const& GetMaterial() const { return m_Material; }
  std::vector<int> const& Nodes() const { return m_Nodes; }
  // The same values; the material compared by name.
  bool SameAs(Element const& o) const;

protected:
  Element(int id, cow_COW<::Material> const& material, Formulation formulation, std::vector<int> nodes);
  // Raises when the stored connectivity is not one row of corners nodes.
  Element(cls_ReadVisitor const& base, int corners);
  void DBWriteBase(cls_WriteVisitor const& visitor, int corners) const;

private:
  cls_Uid m_Uid;
  int m_Id;
  cow_COW<::Material> m_Material;
  Formulation m_Formulation;
  std::vector<int> m_Nodes;
};

class Hex8 : public Element {
public:
  static constexpr unsigned int kClassId = 0x01000004;
  static constexpr int kCorners = 8;
  Hex8(int id, cow_COW<Material> const& material, std::vector<int> nodes);
  explicit Hex8(cls_ReadVisitor const& visitor);
  void DBWrite(cls_WriteVisitor const& visitor) const;
  static void Register(cls_ClassRegistrar& registrar);

private:
  cls_Uid m_Uid;
};

// A shell on the beam's top face; the node it is offset to is usually none.
class Quad4 : public Element {
public:
  static constexpr unsigned int kClassId = 0x01000005;
  static constexpr int kCorners = 4;
  Quad4(int id, cow_COW<Material> const& material, std::vector<int> nodes, cow_COW<Node> const& offset);
  explicit Quad4(cls_ReadVisitor const& visitor);
  void DBWrite(cls_WriteVisitor const& visitor) const;
  static void Register(cls_ClassRegistrar& registrar);
  cow_COW<Node> const& Offset() const { return m_Offset; }
  bool SameAs(Quad4 const& o) const;

private:
  cls_Uid m_Uid;
  cow_COW<Node> m_Offset;
};

#endif
