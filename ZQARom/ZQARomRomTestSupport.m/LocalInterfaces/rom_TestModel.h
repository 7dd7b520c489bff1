#ifndef rom_TestModel_h
#define rom_TestModel_h

#include "cls_ClassRegistrar.h"
#include "cls_FieldHandle.h"
#include "cls_ReadVisitor.h"
#include "cls_Uid.h"
#include "cls_WriteVisitor.h"
#include "cow_COW.h"
#include "cow_String.h"
#include "rom_CidOid.h"

#include <array>
#include <string>
#include <map>
#include <vector>

class rom_Transporter;

// A small finite-element model of real C++ classes, as the object layer's
// tests, its damaged-file cases and its fuzz target move it through a
// transporter: materials shared by many elements (through the typed
// helper), nodes referring to a material, and elements of two derived
// classes referring to their nodes and material, with an enumeration stored
// as its text and a reference that is often null.
//
// Node has two versions: version 2 adds Temperature, which a row of a
// version-1 table lacks (it reads as kRoomTemperature); a version-1 program
// writes no temperature.
namespace rom_TestModel {
constexpr unsigned int kMaterial = 0x01000101;
constexpr unsigned int kNode = 0x01000102;
constexpr unsigned int kElement = 0x01000103;
constexpr unsigned int kHex8 = 0x01000104;
constexpr unsigned int kQuad4 = 0x01000105;
constexpr unsigned int kMarker = 0x01000106;
constexpr unsigned int kNodeSet = 0x01000107;
constexpr double kRoomTemperature = 20.0;

// Registers the classes under their names, each after namePrefix, which
// lets the model share a file with other classes of the same names.
void Register(cls_ClassRegistrar& registrar, int nodeVersion = 1, char const* namePrefix = "");
}  // namespace rom_TestModel

struct rom_TestMaterial {
  static constexpr unsigned int kClassId = rom_TestModel::kMaterial;
  cls_Uid uid;
  cow_String name;
  double young = 0;
  float poisson = 0;
};

class rom_TestNode {
public:
  static constexpr unsigned int kClassId = rom_TestModel::kNode;
  rom_TestNode() = default;
  rom_TestNode(int id, double x, double y, double z, cow_COW<rom_TestMaterial> const& material);
  explicit rom_TestNode(cls_ReadVisitor const& visitor);
  void DBWrite(cls_WriteVisitor const& visitor) const;

  cls_Uid const& Uid() const { return m_Uid; }
  int m_Id = 0;
  double m_X = 0, m_Y = 0, m_Z = 0;
  double m_Temperature = rom_TestModel::kRoomTemperature;
  cow_COW<rom_TestMaterial> m_Material;

private:
  cls_Uid m_Uid;
};

// The base part of the elements: a table of its own, never built alone.
class rom_TestElement {
public:
  enum class Kind { kSolid, kShell, kContact };
  static constexpr unsigned int kClassId = rom_TestModel::kElement;

  cls_Uid const& ElementUid() const { return m_ElementUid; }
  int m_Id = 0;
  Kind m_Kind = Kind::kSolid;
  cow_COW<rom_TestMaterial> m_Material;

protected:
  rom_TestElement() = default;
  explicit rom_TestElement(cls_ReadVisitor const& base);
  void DBWriteBase(cls_WriteVisitor const& visitor) const;

private:
  cls_Uid m_ElementUid;
};

class rom_TestHex8 : public rom_TestElement {
public:
  static constexpr unsigned int kClassId = rom_TestModel::kHex8;
  rom_TestHex8() = default;
  explicit rom_TestHex8(cls_ReadVisitor const& visitor);
  void DBWrite(cls_WriteVisitor const& visitor) const;

  cls_Uid const& Uid() const { return m_Uid; }
  std::array<cow_COW<rom_TestNode>, 8> m_Nodes;

private:
  cls_Uid m_Uid;
};

class rom_TestQuad4 : public rom_TestElement {
public:
  static constexpr unsigned int kClassId = rom_TestModel::kQuad4;
  rom_TestQuad4() = default;
  explicit rom_TestQuad4(cls_ReadVisitor const& visitor);
  void DBWrite(cls_WriteVisitor const& visitor) const;

  cls_Uid const& Uid() const { return m_Uid; }
  std::array<cow_COW<rom_TestNode>, 4> m_Nodes;
  double m_Thickness = 0;
  // Null for most shells.
  cow_COW<rom_TestNode> m_Reference;

private:
  cls_Uid m_Uid;
};

// A named set of nodes with values per node, through the typed helper: a
// list of every kind, a blob, and maps keyed by int, unsigned int and
// string. Its node list and maps of nodes may hold null elements.
struct rom_TestNodeSet {
  static constexpr unsigned int kClassId = rom_TestModel::kNodeSet;
  // The elements of one logical row of ids.
  static constexpr int kIdColumns = 4;
  cls_Uid uid;
  cow_String name;
  std::vector<cow_COW<rom_TestNode>> nodes;
  std::vector<int> ids;
  std::vector<unsigned int> masks;
  std::vector<double> weights;
  std::vector<float> scales;
  std::vector<bool> flags;
  std::vector<cow_String> labels;
  std::vector<char> note;
  std::map<int, cow_COW<rom_TestNode>> byId;
  std::map<cow_String, cow_COW<rom_TestNode>> byLabel;
  std::map<cow_String, double> attributes;
  std::map<unsigned int, cow_String> tags;
};

namespace rom_TestModel {
// A whole model, as the application holds it.
struct Model {
  std::vector<cow_COW<rom_TestMaterial>> materials;
  std::vector<cow_COW<rom_TestNode>> nodes;
  std::vector<cow_COW<rom_TestHex8>> hexes;
  std::vector<cow_COW<rom_TestQuad4>> quads;
  std::vector<cow_COW<rom_TestNodeSet>> sets;
};

// A model of nodes nodes, materials materials, about nodes / 4 elements
// of each kind and nodes / 8 + 1 node sets (the first with empty lists),
// every value drawn from seed; nodes have temperatures other than the
// default only from version 2 on.
Model Make(int nodes, int materials, unsigned int seed, int nodeVersion = 1);
// Writes the nodes, the elements and the node sets as roots (the nodes and
// materials they refer to go with them).
void Write(rom_Transporter& transporter, Model const& model);
// Every node, element and node set of the file's tables.
Model Read(rom_Transporter& transporter);
// Empty when the two models hold equal values in the same order; else the
// first difference. Elements are compared with their nodes and materials.
std::string Difference(Model const& expected, Model const& actual);
// The kind's stored text.
char const* KindName(rom_TestElement::Kind kind);
}  // namespace rom_TestModel

#endif
