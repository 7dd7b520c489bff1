#ifndef rom_KillWorkload_h
#define rom_KillWorkload_h

#include "atr_SubstituteFormat.h"
#include "cls_ClassRegistrar.h"
#include "rfm_File.h"
#include "rfm_Row.h"
#include "rom_HeaderLayout.h"
#include "rom_TestModel.h"
#include "rom_Transporter.h"

#include <algorithm>
#include <array>
#include <random>
#include <vector>

// What the writers of the object layer's killed-writer tests write: a
// model of kClasses classes, made one after the other as the steps go, a
// few at a step, each new class getting its table and catalogue row; at
// every step every class made so far is given a few rows; every step ends
// with the transporter's Flush. The plan is drawn from a fixed seed, so the
// test knows the classes and the rows of each after any step, and each row
// holds values computed from its class and its number. Every step also
// writes a small model of objects as roots (rom_TestModel), drawn from the
// seed and the step: its nodes and elements follow the previous step's in
// their tables, and its materials go with the nodes that refer to them.

namespace rom_Kill {

constexpr int kClasses = 24;
constexpr unsigned int kFirstClassId = 0x02000000;
// Every fourth class derives from the first, whose table begins with its
// base class part's row.
constexpr int kDerivedEvery = 4;
constexpr char kMagic[] = "KILL";

inline unsigned int ClassId(int k) { return kFirstClassId + static_cast<unsigned int>(k); }
inline cow_String ClassName(int k) { return atr_SubstituteFormat("Series%02d", k); }
inline int ClassVersion(int k) { return 1 + k % 3; }
inline bool Derived(int k) { return k % kDerivedEvery == kDerivedEvery - 1; }

// The fields of row i of class k. Every third label is new, so the string
// pool grows at most flushes.
inline int RowId(int k, int i) { return k * 100000 + i; }
inline double RowValue(int k, int i) { return i * 0.125 - k; }
inline cow_String RowLabel(int i) {
  return i % 3 == 0 ? atr_SubstituteFormat("row %d", i) : atr_SubstituteFormat("set %d", i % 10);
}
// A derived class's row i names row i of its base class's table.
inline int BaseRow(int i) { return i; }

// The objects of each step.
constexpr int kNodesPerStep = 8;
constexpr int kMaterialsPerStep = 2;
inline rom_TestModel::Model StepModel(unsigned seed, int step) {
  return rom_TestModel::Make(kNodesPerStep, kMaterialsPerStep, seed * 1000 + static_cast<unsigned>(step));
}
inline bool IsModelClass(unsigned int cid) {
  return (cid >= rom_TestModel::kMaterial && cid <= rom_TestModel::kNodeSet) || rom_IsInternalClass(cid);
}

inline void Register(cls_ClassRegistrar& registrar) {
  for (int k = 0; k < kClasses; ++k) {
    registrar.CreateClassMD(ClassName(k), ClassId(k), ClassVersion(k), nullptr, Derived(k) ? ClassId(0) : cls_kNoClass)
        .AddAttribute(cls_FieldHandle(1, "Id"), cls_AttrInt)
        .AddAttribute(cls_FieldHandle(2, "Value"), cls_AttrDouble)
        .AddAttribute(cls_FieldHandle(3, "Label"), cls_AttrString);
  }
  rom_TestModel::Register(registrar);
}

// The classes made and the rows of each after every step.
class Plan {
public:
  static constexpr int kMostNewClassesPerStep = 2;
  static constexpr int kMostRowsPerStep = 6;

  explicit Plan(unsigned seed) : m_Random(seed) {}

  // Classes made by the end of step; step -1 is before the first. The
  // first step makes at least one.
  int ClassesAfter(int step) {
    Extend(step);
    return step < 0 ? 0 : m_Classes[static_cast<std::size_t>(step)];
  }
  int RowsAfter(int step, int k) {
    Extend(step);
    return step < 0 ? 0 : m_Rows[static_cast<std::size_t>(step)][static_cast<std::size_t>(k)];
  }

private:
  void Extend(int step) {
    while (static_cast<int>(m_Classes.size()) <= step) {
      int classes = m_Classes.empty() ? 0 : m_Classes.back();
      int const made = std::uniform_int_distribution<int>(m_Classes.empty() ? 1 : 0, kMostNewClassesPerStep)(m_Random);
      classes = std::min(kClasses, classes + made);
      std::array<int, kClasses> rows = m_Rows.empty() ? std::array<int, kClasses>{} : m_Rows.back();
      for (int k = 0; k < classes; ++k) rows[k] += std::uniform_int_distribution<int>(0, kMostRowsPerStep)(m_Random);
      // A derived class's rows name rows of the first class's table.
      for (int k = 0; k < classes; ++k) {
        if (Derived(k)) rows[k] = std::min(rows[k], rows[0]);
      }
      m_Classes.push_back(classes);
      m_Rows.push_back(rows);
    }
  }

  std::mt19937 m_Random;
  std::vector<int> m_Classes;
  std::vector<std::array<int, kClasses>> m_Rows;
};

// The writer: a transporter on a new file, stepping through the plan.
class Writer {
public:
  Writer(cls_ClassRegistrar const& registrar, rfm_File const& file, unsigned seed)
      : m_Seed(seed), m_Plan(seed), m_Transporter(registrar, file, kMagic, "killed", 1700000000, -1) {}

  // Makes the step's new classes, appends its rows and writes its objects.
  void Step(int step) {
    for (int k = m_Plan.ClassesAfter(step - 1); k < m_Plan.ClassesAfter(step); ++k)
      m_Transporter.GetClassBagForWrite(ClassId(k));
    for (int k = 0; k < m_Plan.ClassesAfter(step); ++k) {
      rom_ClassBag const& bag = m_Transporter.GetClassBagForWrite(ClassId(k));
      for (int i = m_Plan.RowsAfter(step - 1, k); i < m_Plan.RowsAfter(step, k); ++i) {
        rfm_Row const row = bag.Table().NewRow();
        if (Derived(k)) row.WriteFieldInt(rfm_FieldHandle(kRomBaseClassOidName, 0), BaseRow(i));
        row.WriteFieldInt(rfm_FieldHandle("Id", bag.MapField(1)), RowId(k, i));
        row.WriteFieldDouble(rfm_FieldHandle("Value", bag.MapField(2)), RowValue(k, i));
        row.WriteFieldString(rfm_FieldHandle("Label", bag.MapField(3)), RowLabel(i));
      }
    }
    rom_TestModel::Write(m_Transporter, StepModel(m_Seed, step));
  }

  void Flush() { m_Transporter.Flush(); }
  rom_Transporter& Transporter() { return m_Transporter; }

private:
  unsigned m_Seed;
  Plan m_Plan;
  rom_Transporter m_Transporter;
};

}  // namespace rom_Kill

#endif
