#include "rom_SampleTransporterFile.h"

#include "omi_BtreeIterator.h"
#include "rfm_Array.h"
#include "rfm_ObjectLayout.h"
#include "rfm_Row.h"
#include "rfm_TableRepr.h"
#include "rom_HeaderLayout.h"
#include "rom_TestClasses.h"
#include "rom_TestModel.h"
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
// The model's size and the seed its values are drawn from.
constexpr int kModelNodes = 24;
constexpr int kModelMaterials = 3;
constexpr unsigned int kModelSeed = 5;

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

using Contents = rom_SampleTransporterFile::Contents;

// Where the field called name of a row lies in the table's bytes: after the
// table's header, the rows before it and the row's presence words, and the
// fields before it; presence bit p is bit p % 32 of little-endian word p / 32.
Contents::Stored StoredField(rfm_TableRepr const& table, int row, std::string const& name) {
  std::size_t const rowAt = static_cast<std::size_t>(kRfmTableHeaderSize) +
                            static_cast<std::size_t>(row) * static_cast<std::size_t>(table.RowSize());
  int const position = table.Position(rfm_FieldHandle(name.c_str(), -1));
  return {rowAt + static_cast<std::size_t>(table.FieldOffset(position)),
          rowAt + static_cast<std::size_t>(position / 32 * 4 + position % 32 / 8),
          static_cast<unsigned char>(1u << (position % 8))};
}

// The references of the first and the last row of class cid's table.
void AddReferences(rom_Transporter& transporter, unsigned int cid, std::vector<Contents::Reference>& references) {
  cls_ClassMetadata const& md = transporter.GetClassMD(cid);
  rfm_Table const& table = transporter.GetClassBagForWrite(cid).Table();
  std::string const className = md.ClassName().CStr();
  auto const rowsOf = [&transporter](unsigned int target) { return transporter.GetTableSize(target); };
  for (int row : {0, table.Length() - 1}) {
    std::string const what = className + " row " + std::to_string(row) + " ";
    if (md.BaseClassId() != kRomNoClass) {
      Contents::Stored const base = StoredField(table.Repr(), row, kRomBaseClassOidName);
      references.push_back({what + kRomBaseClassOidName, table.Handle(), md.BaseClassId(),
                            rowsOf(md.BaseClassId()), true, base, base});
    }
    for (omi_BtreeIterator<cow_String, cls_AttributeMetadata> it(md.Attributes()); !it.IsDone(); it.Next()) {
      cls_AttributeMetadata const& attribute = it.CurrentValue();
      if (attribute.m_Type != cls_AttrObjectCow) continue;
      std::string const name = attribute.m_Name.CStr();
      references.push_back({what + name, table.Handle(), attribute.m_TargetClass, rowsOf(attribute.m_TargetClass),
                            false, StoredField(table.Repr(), row, name + kRomOidSuffix),
                            StoredField(table.Repr(), row, name + kRomClassIdSuffix)});
    }
  }
}

}  // namespace

std::vector<unsigned int> rom_SampleTransporterFile::Classes() {
  std::vector<unsigned int> classes(std::begin(kAll), std::end(kAll));
  classes.push_back(kRomInternalListClass);
  classes.push_back(kRomInternalBlobClass);
  classes.push_back(kRomInternalMapClass);
  classes.insert(classes.end(), {rom_TestModel::kMaterial, rom_TestModel::kNode, rom_TestModel::kElement,
                                 rom_TestModel::kHex8, rom_TestModel::kQuad4, rom_TestModel::kMarker,
                                 rom_TestModel::kNodeSet});
  return classes;
}

void rom_SampleTransporterFile::Register(cls_ClassRegistrar& registrar) {
  rom_TestClasses::Register(registrar);
  rom_TestModel::Register(registrar, 1, kModelPrefix);
}

rom_SampleTransporterFile::Contents rom_SampleTransporterFile::Write(cls_ClassRegistrar const& registrar,
                                                                    rfm_File const& file) {
  Contents contents;
  rom_Transporter transporter(registrar, file, kMagic, kDescription, kCreationTime, kReleaseType);
  // One element a row, as the object layer stores a list: a logical row of
  // kListColumns elements spans as many rows of the array.
  auto list = transporter.Database().ArrayInt(1, -1, 0);
  for (int i = 0; i < kListRows; ++i) {
    int const pair[kListColumns] = {i, i + 1};
    list.Write(pair, kListColumns);
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
  rom_TestModel::Write(transporter, rom_TestModel::Make(kModelNodes, kModelMaterials, kModelSeed));
  for (unsigned int classId : {rom_TestModel::kNode, rom_TestModel::kElement, rom_TestModel::kHex8,
                               rom_TestModel::kQuad4, rom_TestModel::kNodeSet})
    AddReferences(transporter, classId, contents.m_References);
  transporter.Flush();
  return contents;
}
