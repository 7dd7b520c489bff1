#include "beam_results.h"

#include "beam_collections.h"
#include "cls_CowDtor.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace {

namespace ResultsField {
cls_FieldHandle const Time(1, "Time");
cls_FieldHandle const Displacements(2, "Displacements");
cls_FieldHandle const NodeRows(3, "NodeRows");
cls_FieldHandle const Extremes(4, "Extremes");
}  // namespace ResultsField

int readCount = 0;

}  // namespace

StepResults::StepResults(double time, std::vector<double> displacements, std::map<int, int> nodeRows,
                         std::map<cow_String, double> extremes)
    : m_Time(time),
      m_Displacements(std::move(displacements)),
      m_NodeRows(std::move(nodeRows)),
      m_Extremes(std::move(extremes)) {}

StepResults::StepResults(cls_ReadVisitor const& visitor)
    : m_Uid(visitor.GetUid()),
      m_Time(visitor.Read(ResultsField::Time, double())),
      m_NodeRows(beam_ReadIntTable(visitor, ResultsField::NodeRows)),
      m_Extremes(beam_ReadNamedValues(visitor, ResultsField::Extremes)) {
  int columns = 0;
  m_Displacements = beam_ReadList<double>(visitor, ResultsField::Displacements, columns);
  if (!m_Displacements.empty() && columns != kDisplacementColumns)
    throw std::runtime_error("step results hold displacements in rows of " + std::to_string(columns) + ", not " +
                             std::to_string(kDisplacementColumns));
  std::size_t const rows = m_Displacements.size() / kDisplacementColumns;
  for (auto const& [node, row] : m_NodeRows)
    if (row < 0 || static_cast<std::size_t>(row) >= rows)
      throw std::runtime_error("step results place node " + std::to_string(node) + " in row " + std::to_string(row) +
                               " of " + std::to_string(rows) + " displacements");
  ++readCount;
}

void StepResults::DBWrite(cls_WriteVisitor const& visitor) const {
  if (!visitor.StartWrite(kClassId, m_Uid)) return;
  visitor.Write(ResultsField::Time, m_Time);
  beam_WriteList(visitor, ResultsField::Displacements, m_Displacements, kDisplacementColumns);
  beam_WriteIntTable(visitor, ResultsField::NodeRows, m_NodeRows);
  beam_WriteNamedValues(visitor, ResultsField::Extremes, m_Extremes);
}

// A map member is a reference to a row of the map class, implemented by the
// kind of map its code writes: an int table (cls_CollIntTableInt), a map
// from strings to values (cls_CollMapString2Prim), ...
void StepResults::Register(cls_ClassRegistrar& registrar) {
  registrar.Register<StepResults>("StepResults", kClassId, 1, cls_kNoClass)
      .AddAttribute(ResultsField::Time, cls_AttrDouble)
      .AddAttribute(ResultsField::Displacements, cls_AttrObjectCow, cls_kListClass, cls_CollListPrim)
      .AddAttribute(ResultsField::NodeRows, cls_AttrObjectCow, cls_kMapClass, cls_CollIntTableInt)
      .AddAttribute(ResultsField::Extremes, cls_AttrObjectCow, cls_kMapClass, cls_CollMapString2Prim)
      .AddDtor(&cls_CowDtor<StepResults>);
}

int StepResults::ReadCount() { return readCount; }

bool StepResults::operator==(StepResults const& o) const {
  return m_Time == o.m_Time && m_Displacements == o.m_Displacements && m_NodeRows == o.m_NodeRows &&
         m_Extremes == o.m_Extremes;
}
