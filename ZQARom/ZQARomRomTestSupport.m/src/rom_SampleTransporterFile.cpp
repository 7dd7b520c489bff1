#include "rom_SampleTransporterFile.h"

#include "rfm_Array.h"
#include "rfm_Row.h"
#include "rom_HeaderLayout.h"
#include "rom_TestClasses.h"
#include "rom_Transporter.h"

#include <iterator>
#include <string>

namespace {

using namespace rom_TestClasses;

constexpr char kDescription[] = "a sample transporter file";
constexpr long kCreationTime = 1700000000;
constexpr int kReleaseType = 2;
constexpr int kListColumns = 2;
constexpr int kListRows = 4;

// The field of attribute fieldId called name (a reference's or a list's
// second column is the first one's index plus one).
rfm_FieldHandle Column(rom_ClassBag const& bag, int fieldId, char const* name, int second = 0) {
  return rfm_FieldHandle(name, bag.MapField(fieldId) + second);
}

void WriteMaterials(rom_ClassBag const& bag) {
  char const* const names[] = {"steel", "aluminium"};
  for (int i = 0; i < 3; ++i) {
    rfm_Row const row = bag.Table().NewRow();
    if (i < 2) row.WriteFieldString(Column(bag, 1, "Name"), names[i]);
    row.WriteFieldDouble(Column(bag, 2, "Young"), 210.0e9 / (i + 1));
    if (i != 1) row.WriteFieldFloat(Column(bag, 3, "Poisson"), 0.3f - 0.01f * static_cast<float>(i));
  }
}

void WriteNodes(rom_ClassBag const& bag) {
  for (int i = 0; i < 6; ++i) {
    rfm_Row const row = bag.Table().NewRow();
    row.WriteFieldInt(Column(bag, 1, "Id"), 100 + i);
    row.WriteFieldDouble(Column(bag, 2, "X"), i * 0.5);
    row.WriteFieldDouble(Column(bag, 3, "Y"), -i * 1.25);
    if (i % 3 != 2) row.WriteFieldDouble(Column(bag, 4, "Z"), i * i * 1.0);
    // The last node's material is a null reference.
    bool const null = i == 5;
    row.WriteFieldInt(Column(bag, 5, "Material#OID"), null ? -1 : i % 2);
    row.WriteFieldInt(Column(bag, 5, "Material#ClassID", 1), static_cast<int>(null ? kRomNoClass : kMaterial));
  }
}

void WriteElements(rom_ClassBag const& bag) {
  char const* const labels[] = {"hex 0", "hex 1", "quad 0"};
  for (char const* label : labels) bag.Table().NewRow().WriteFieldString(Column(bag, 1, "Label"), label);
}

// Rows of a derived class begin with the row of their base class's part.
rfm_Row DerivedRow(rom_ClassBag const& bag, int baseRow) {
  rfm_Row const row = bag.Table().NewRow();
  row.WriteFieldInt(rfm_FieldHandle(kRomBaseClassOidName, 0), baseRow);
  return row;
}

void WriteList(rfm_Row const& row, rom_ClassBag const& bag, int fieldId, std::string const& name, rfm_Handle list) {
  row.WriteFieldHandle(Column(bag, fieldId, (name + "#Handle").c_str()), list);
  row.WriteFieldInt(Column(bag, fieldId, (name + "#Columns").c_str(), 1), kListColumns);
}

}  // namespace

std::vector<unsigned int> rom_SampleTransporterFile::Classes() {
  std::vector<unsigned int> classes(std::begin(kAll), std::end(kAll));
  classes.push_back(kRomInternalListClass);
  return classes;
}

rom_SampleTransporterFile::Contents rom_SampleTransporterFile::Write(cls_ClassRegistrar const& registrar,
                                                                    rfm_File const& file) {
  Contents contents;
  rom_Transporter transporter(registrar, file, kMagic, kDescription, kCreationTime, kReleaseType);
  auto list = transporter.Database().ArrayInt(kListColumns, -1, 0);
  for (int i = 0; i < kListRows; ++i) {
    int const pair[kListColumns] = {i, i + 1};
    list.Write(pair, 1);
  }
  list.Flush();
  contents.m_Array = list.Handle();

  for (unsigned int classId : Classes()) {
    rom_ClassBag const& bag = transporter.GetClassBagForWrite(classId);
    if (bag.HasTable()) contents.m_Tables.push_back({classId, bag.Table().Handle()});
  }
  WriteMaterials(transporter.GetClassBagForWrite(kMaterial));
  WriteNodes(transporter.GetClassBagForWrite(kNode));
  WriteElements(transporter.GetClassBagForWrite(kElement));
  rom_ClassBag const& hex = transporter.GetClassBagForWrite(kHex8);
  WriteList(DerivedRow(hex, 0), hex, 1, "Nodes", list.Handle());
  DerivedRow(hex, 1);
  rom_ClassBag const& quad = transporter.GetClassBagForWrite(kQuad4);
  DerivedRow(quad, 2).WriteFieldDouble(Column(quad, 2, "Thickness"), 0.25);
  rom_ClassBag const& internal = transporter.GetClassBagForWrite(kRomInternalListClass);
  WriteList(internal.Table().NewRow(), internal, 1, "Target", list.Handle());
  transporter.Flush();
  return contents;
}
