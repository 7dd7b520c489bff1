#ifndef rfm_KillWorkload_h
#define rfm_KillWorkload_h

#include "atr_SubstituteFormat.h"
#include "rfm_Array.h"
#include "rfm_Database.h"
#include "rfm_Table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

// What the writers of the killed-writer tests write: two tables (one with
// strings, made row by row; one appended in columns) and three arrays (one
// of strings), each given a few rows at every step and all flushed after
// it; and the check that an object holds rows exactly as written.

enum rfm_KillObject { kNodes, kLoads, kCoordinates, kConnectivity, kNames, kObjects };
using rfm_KillCounts = std::array<int, kObjects>;

// What the writer appends at each step, drawn from a fixed seed, so that the
// test knows the rows of every object after any step.
class rfm_KillPlan {
public:
  static constexpr int kMostRowsPerStep = 12;

  explicit rfm_KillPlan(unsigned seed) : m_Random(seed) {}

  // Rows of object after step; step -1 is before the first.
  int RowsAfter(int step, int object) {
    while (static_cast<int>(m_Totals.size()) <= step) {
      rfm_KillCounts next = m_Totals.empty() ? rfm_KillCounts{} : m_Totals.back();
      for (int& rows : next) rows += std::uniform_int_distribution<int>(1, kMostRowsPerStep)(m_Random);
      m_Totals.push_back(next);
    }
    return step < 0 ? 0 : m_Totals[static_cast<std::size_t>(step)][static_cast<std::size_t>(object)];
  }

private:
  std::mt19937 m_Random;
  std::vector<rfm_KillCounts> m_Totals;
};

// The contents of row i of each object. Every third label is new, so the
// string pool grows at most flushes.
inline cow_String Label(int i) {
  return i % 3 == 0 ? atr_SubstituteFormat("node %d", i) : atr_SubstituteFormat("set %d", i % 10);
}
inline int NodeId(int i) { return 3 * i + 1; }
inline double NodeX(int i) { return i * 0.125 - 7; }
inline int LoadStep(int i) { return i / 4; }
inline float LoadValue(int i) { return i * 0.5f; }
inline std::array<double, 3> Coordinates(int i) { return {i * 1.0, i + 0.25, -2.0 * i}; }
inline std::array<int, 2> Connectivity(int i) { return {i, (i * 7919) % 10007}; }

inline rfm_TableMetadata NodesTable() {
  rfm_TableMetadata table("Nodes", 1);
  table.DefineIntField("id");
  table.DefineDoubleField("x");
  table.DefineStringField("label");
  return table;
}

inline rfm_TableMetadata LoadsTable() {
  rfm_TableMetadata table("Loads", 1);
  table.DefineIntField("step");
  table.DefineFloatField("value");
  return table;
}

// The writer's database: two tables (one with strings) and three arrays (one
// of strings), each given its rows of the plan at every step.
class rfm_KillWorkload {
public:
  rfm_KillWorkload(rfm_File const& file, unsigned seed)
      : m_Plan(seed),
        m_Database(rfm_Database::Create(file, "APP", "killed", 1700000000)),
        m_Nodes(m_Database.Table(NodesTable(), -1, -1)),
        m_Loads(m_Database.Table(LoadsTable(), -1, -1)),
        m_Coordinates(m_Database.ArrayDouble(3, -1, 0)),
        m_Connectivity(m_Database.ArrayInt(2, -1, 0)),
        m_Names(m_Database.ArrayString(1, -1, 0)) {}

  std::array<int, kObjects> Handles() const {
    return {m_Nodes.Handle().Value(), m_Loads.Handle().Value(), m_Coordinates.Handle().Value(),
            m_Connectivity.Handle().Value(), m_Names.Handle().Value()};
  }

  void Append(int step) {
    for (int i = First(step, kNodes); i < Last(step, kNodes); ++i) {
      rfm_Row row = m_Nodes.NewRow();
      row.WriteFieldInt(rfm_FieldHandle("id", -1), NodeId(i));
      row.WriteFieldDouble(rfm_FieldHandle("x", -1), NodeX(i));
      row.WriteFieldString(rfm_FieldHandle("label", -1), Label(i));
    }
    std::vector<int> steps;
    std::vector<float> values;
    for (int i = First(step, kLoads); i < Last(step, kLoads); ++i) {
      steps.push_back(LoadStep(i));
      values.push_back(LoadValue(i));
    }
    rfm_Column const loads[] = {rfm_Column::Ints(rfm_FieldHandle("step", -1), static_cast<int const*>(steps.data())),
                                rfm_Column::Floats(rfm_FieldHandle("value", -1), static_cast<float const*>(values.data()))};
    m_Loads.AppendColumns(static_cast<int>(steps.size()), loads, 2);
    for (int i = First(step, kCoordinates); i < Last(step, kCoordinates); ++i) {
      m_Coordinates.Write(Coordinates(i).data(), 1);
    }
    for (int i = First(step, kConnectivity); i < Last(step, kConnectivity); ++i) {
      m_Connectivity.Write(Connectivity(i).data(), 1);
    }
    for (int i = First(step, kNames); i < Last(step, kNames); ++i) {
      cow_String label = Label(i);
      m_Names.Write(&label, 1);
    }
  }

  void Flush() {
    m_Nodes.Flush();
    m_Loads.Flush();
    m_Coordinates.Flush();
    m_Connectivity.Flush();
    m_Names.Flush();
    m_Database.Flush();
  }

  rfm_Database const& Database() const { return m_Database; }

private:
  int First(int step, int object) { return m_Plan.RowsAfter(step - 1, object); }
  int Last(int step, int object) { return m_Plan.RowsAfter(step, object); }

  rfm_KillPlan m_Plan;
  rfm_Database m_Database;
  rfm_Table m_Nodes;
  rfm_Table m_Loads;
  rfm_Array<double, rfm_TypeDouble> m_Coordinates;
  rfm_Array<int, rfm_TypeInt> m_Connectivity;
  rfm_Array<cow_String, rfm_TypeString> m_Names;
};

// Runs check(row, i) on the first rows of table, up to most; answers the
// rows it holds.
template <class Check>
int CheckTableRows(rfm_Table const& table, int most, Check check) {
  int rows = table.Length();
  for (int i = 0; i < std::min(rows, most); ++i) check(table.ReadRow(i), i);
  return rows;
}

// Checks that the first rows of array, up to most, hold expected(i), its N
// elements of row i; answers the rows it holds.
template <class T, std::size_t N, rfm_Type Type, class Expected>
int CheckArrayRows(rfm_Array<T, Type> const& array, int most, Expected expected, char const* what) {
  int rows = array.Length();
  std::vector<T> values(N * static_cast<std::size_t>(rows) + 1);
  array.Seek(0);
  if (rows > 0) {
    EXPECT_EQ(static_cast<int>(N) * rows, array.Read(values.data(), rows));
  }
  for (int i = 0; i < std::min(rows, most); ++i) {
    std::array<T, N> row;
    std::copy_n(values.begin() + static_cast<std::ptrdiff_t>(N) * i, N, row.begin());
    EXPECT_EQ(expected(i), row) << what << " " << i;
  }
  return rows;
}

// Checks that object holds between fewest and most rows, each as written;
// answers the rows it holds.
inline int CheckObject(rfm_Database const& database, int object, rfm_Handle handle, int fewest, int most) {
  int rows = 0;
  switch (object) {
    case kNodes:
      rows = CheckTableRows(database.Table(handle, -1, -1), most, [](rfm_Row const& row, int i) {
        EXPECT_EQ(NodeId(i), row.ReadFieldInt(rfm_FieldHandle("id", -1))) << "node " << i;
        EXPECT_EQ(NodeX(i), row.ReadFieldDouble(rfm_FieldHandle("x", -1))) << "node " << i;
        EXPECT_EQ(Label(i), row.ReadFieldString(rfm_FieldHandle("label", -1))) << "node " << i;
      });
      break;
    case kLoads: {
      rfm_Table table = database.Table(handle, -1, -1);
      rows = table.Length();
      std::vector<int> steps(static_cast<std::size_t>(rows));
      std::vector<float> values(static_cast<std::size_t>(rows));
      std::vector<unsigned char> present(static_cast<std::size_t>(rows));
      rfm_Column const loads[] = {rfm_Column::Ints(rfm_FieldHandle("step", -1), steps.data()).Presence(present.data()),
                                  rfm_Column::Floats(rfm_FieldHandle("value", -1), values.data())};
      EXPECT_EQ(rows, table.ReadColumns(0, rows, loads, 2));
      for (int i = 0; i < std::min(rows, most); ++i) {
        std::size_t at = static_cast<std::size_t>(i);
        EXPECT_TRUE(present[at]) << "load " << i;
        EXPECT_EQ(LoadStep(i), steps[at]) << "load " << i;
        EXPECT_EQ(LoadValue(i), values[at]) << "load " << i;
      }
      break;
    }
    case kCoordinates:
      rows = CheckArrayRows<double, 3>(database.ArrayDouble(handle, -1, 0), most, Coordinates, "coordinates");
      break;
    case kConnectivity:
      rows = CheckArrayRows<int, 2>(database.ArrayInt(handle, -1, 0), most, Connectivity, "connectivity");
      break;
    case kNames:
      rows = CheckArrayRows<cow_String, 1>(
          database.ArrayString(handle, -1, 0), most, [](int i) { return std::array<cow_String, 1>{Label(i)}; }, "name");
      break;
  }
  EXPECT_LE(fewest, rows) << "object " << object << " lost rows of a completed flush";
  EXPECT_GE(most, rows) << "object " << object << " holds rows never written";
  return rows;
}

#endif
