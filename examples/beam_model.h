#ifndef beam_model_h
#define beam_model_h

// The model of a cantilever beam as a preprocessor keeps it: materials,
// nodes, solid and shell elements, node sets, load steps and the input deck
// the model was built from, under one root object.
//
// Each class is made persistent in one of the two ways an application has.
// Material, NodeSet and Model declare their members once through the typed
// helper (cls_Persistent): a std::vector member is a list, a
// std::vector<char> a blob. Node, the elements and Step write themselves
// (DBWrite) and read themselves (a constructor taking a cls_ReadVisitor);
// beam_model.cpp shows how such a class stores a list member.

#include "cls_AgentListPrim.h"
#include "cls_ClassRegistrar.h"
#include "cls_ReadVisitor.h"
#include "cls_Uid.h"
#include "cls_WriteVisitor.h"
#include "cow_COW.h"
#include "cow_String.h"
#include "rom_Transporter.h"

#include <memory>
#include <string>
#include <vector>

struct Material {
  static constexpr unsigned int kClassId = 0x01000001;
  cls_Uid uid;
  cow_String name;
  double young = 0;
  double poisson = 0;
};

class Node {
public:
  static constexpr unsigned int kClassId = 0x01000002;
  Node(int id, double x, double y, double z) : m_Id(id), m_X(x), m_Y(y), m_Z(z) {}
  explicit Node(cls_ReadVisitor const& visitor);
  void DBWrite(cls_WriteVisitor const& visitor) const;
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
  cow_COW<Node> const& Offset() const { return m_Offset; }
  bool SameAs(Quad4 const& o) const;

private:
  cls_Uid m_Uid;
  cow_COW<Node> m_Offset;
};

// Nodes picked out by name. An empty handle keeps its place in the list: a
// sensor channel with no node.
struct NodeSet {
  static constexpr unsigned int kClassId = 0x01000006;
  cls_Uid uid;
  cow_String name;
  std::vector<cow_COW<Node>> nodes;
};

// One load step of the analysis: the loads it applies, which elements take
// part, the results it writes, and the history of the increments it has
// done, which grows while it runs.
class Step {
public:
  static constexpr unsigned int kClassId = 0x01000007;
  // Fx, Fy, Fz at each loaded node.
  static constexpr int kLoadColumns = 3;
  // Time and tip deflection at the end of each increment.
  static constexpr int kHistoryColumns = 2;

  Step(cow_String const& name, std::vector<double> loads, std::vector<bool> active, std::vector<cow_String> outputs);
  explicit Step(cls_ReadVisitor const& visitor);
  void DBWrite(cls_WriteVisitor const& visitor) const;
  bool operator==(Step const& o) const;
  cow_String const& Name() const { return m_Name; }

private:
  cls_Uid m_Uid;
  cow_String m_Name;
  // kLoadColumns values for each node of the set "Tip".
  std::vector<double> m_Loads;
  // One flag per element, solids then shells; none: every element.
  std::vector<bool> m_Active;
  std::vector<cow_String> m_Outputs;
  std::vector<double> m_History;
};

// The root: everything of one beam.
struct Model {
  static constexpr unsigned int kClassId = 0x01000008;
  cls_Uid uid;
  cow_String title;
  std::vector<cow_COW<Material>> materials;
  std::vector<cow_COW<Node>> nodes;
  std::vector<cow_COW<Hex8>> solids;
  std::vector<cow_COW<Quad4>> shells;
  std::vector<cow_COW<NodeSet>> sets;
  std::vector<cow_COW<Step>> steps;
  // Ids of the elements left out of the analysis.
  std::vector<int> suppressed;
  // The input deck, as the user wrote it.
  std::vector<char> deck;
};

void RegisterModel(cls_ClassRegistrar& registrar);

// A cantilever of hex elements, 1 x 1 in section, with a shell on each top
// face; three steps, the last of which has run no increment yet.
cow_COW<Model> BuildBeam();

// Where read differs from expected, as a few words ("node 12", "step
// Bend"); empty when they are equal.
std::string FirstDifference(Model const& expected, Model const& read);

// The history list of the step in row stepRow, open for as long as the
// agent lives. For the file's writer, to append increments to: an agent
// made on the write side starts the list empty. For a reader, to follow
// what the writer appends.
std::unique_ptr<cls_AgentListPrim<double>> OpenHistoryToAppend(rom_Transporter& file, int stepRow);
std::unique_ptr<cls_AgentListPrim<double>> OpenHistoryToFollow(rom_Transporter& file, int stepRow);

#endif
