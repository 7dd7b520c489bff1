#ifndef beam_results_h
#define beam_results_h

// What a load step computed: the displacement of each node that moves, and
// the extremes a viewer shows first. Written and read through the visitor
// interface, maps included: which row of the displacements belongs to which
// node is an int table, the extremes a map from name to value. A step holds
// its results lazily, so that reading the model reads none of them;
// ReadCount counts the objects built from a file, which lets a program
// check what reading really read.
//
// Invariant: every row the node table names is a whole row of the
// displacements (the reading constructor refuses anything else).

#include "cls_ClassRegistrar.h"
#include "cls_ReadVisitor.h"
#include "cls_Uid.h"
#include "cls_WriteVisitor.h"
#include "cow_String.h"

#include <map>
#include <vector>

class StepResults {
public:
  static constexpr unsigned int kClassId = 0x0100000A;
  // ux, uy, uz of a node.
  static constexpr int kDisplacementColumns = 3;

  // displacements holds kDisplacementColumns values for each row that
  // nodeRows names.
  StepResults(double time, std::vector<double> displacements, std::map<int, int> nodeRows,
              std::map<cow_String, double> extremes);
  explicit StepResults(cls_ReadVisitor const& visitor);
  void DBWrite(cls_WriteVisitor const& visitor) const;
  static void Register(cls_ClassRegistrar& registrar);
  // The objects the reading constructor has built in this process.
  static int ReadCount();

  bool operator==(StepResults const& o) const;
  cls_Uid const& Uid() const { return m_Uid; }

private:
  cls_Uid m_Uid;
  double m_Time;
  std::vector<double> m_Displacements;
  // Node id to row of m_Displacements.
  std::map<int, int> m_NodeRows;
  std::map<cow_String, double> m_Extremes;
};

#endif
