#ifndef beam_model_h
#define beam_model_h

// The model of a cantilever beam as a preprocessor keeps it: materials,
// nodes, solid and shell elements, sets of nodes and of elements by name,
// load steps with their results, and the input deck the model was built
// from, under one root object.
//
// Each class is made persistent in one of the two ways an application has.
// Material, NodeSet, ElementSet, Step and Model declare their members once
// through the typed helper (cls_Persistent): a std::vector member is a
// list, a std::vector<char> a blob, a std::map a map, a cls_Lazy<U> a
// reference read only when asked for. Node, the elements and StepResults
// write themselves (DBWrite) and read themselves (a constructor taking a
// cls_ReadVisitor), collections included (beam_collections.h).

#include "beam_elements.h"
#include "beam_material.h"
#include "beam_results.h"
#include "cls_AgentListPrim.h"
#include "cls_ClassRegistrar.h"
#include "cls_Lazy.h"
#include "cls_Uid.h"
#include "cow_COW.h"
#include "cow_String.h"
#include "rom_Transporter.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

// The magic of a model file: what the application's files begin with.
constexpr char kModelMagic[] = "MDL";

// Nodes picked out by name. An empty handle keeps its place in the list: a
// sensor channel with no node.
struct NodeSet {
  static constexpr unsigned int kClassId = 0x01000006;
  cls_Uid uid;
  std::vector<cow_COW<Node>> nodes;
};

// Elements picked out by name, solids and shells apart.
struct ElementSet {
  static constexpr unsigned int kClassId = 0x01000009;
  cls_Uid uid;
  std::vector<cow_COW<Hex8>> solids;
  std::vector<cow_COW<Quad4>> shells;
};

// One load step of the analysis: the loads it applies, which elements take
// part, the results it writes, the history of the increments it has done,
// which grows while it runs, and what it computed, read only when asked for.
struct Step {
  static constexpr unsigned int kClassId = 0x01000007;
  // Fx, Fy, Fz at each loaded node.
  static constexpr int kLoadColumns = 3;
  // Time and tip deflection at the end of each increment.
  static constexpr int kHistoryColumns = 2;

  cls_Uid uid;
  cow_String name;
  // kLoadColumns values for each node of the set "Tip".
  std::vector<double> loads;
  // One flag per element, solids then shells; none: every element.
  std::vector<bool> active;
  std::vector<cow_String> outputs;
  std::vector<double> history;
  // None while the step has not run. Read from a file, read only when
  // asked for (Get).
  cls_Lazy<StepResults> results;
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
  // An empty handle keeps its name: a set the analysis fills.
  std::map<cow_String, cow_COW<NodeSet>> nodeSets;
  std::map<cow_String, cow_COW<ElementSet>> elementSets;
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
// Bend"); empty when they are equal. Reads every step's results.
std::string FirstDifference(Model const& expected, Model const& read);

// The history list of the step in row stepRow, open for as long as the
// agent lives. For the file's writer, to append increments to: an agent
// made on the write side starts the list empty. For a reader, to follow
// what the writer appends.
std::unique_ptr<cls_AgentListPrim<double>> OpenHistoryToAppend(rom_Transporter& file, int stepRow);
std::unique_ptr<cls_AgentListPrim<double>> OpenHistoryToFollow(rom_Transporter& file, int stepRow);

#endif
