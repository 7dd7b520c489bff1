#include "rom_TransporterWalk.h"

#include "cow_ConstMapIterator.h"
#include "omi_BtreeIterator.h"
#include "rfm_DatabaseWalk.h"
#include "rfm_Row.h"
#include "rom_ClassCatalogue.h"
#include "rom_HeaderLayout.h"
#include "rom_Objects.h"
#include "rom_TestModel.h"
#include "rom_Transporter.h"
#include "rom_ZDBHeaderParser.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>

namespace {

// A column an attribute takes: its suffix after the attribute's name and
// its type. The columns of one attribute are adjacent, the first at the
// index the class bag maps.
struct Column {
  char const* suffix;
  rfm_Type type;
};

// The columns of each attribute type, as the object layer's format has them.
std::vector<Column> ColumnsOf(cls_AttributeType type) {
  switch (type) {
    case cls_AttrFloat:
      return {{"", rfm_TypeFloat}};
    case cls_AttrDouble:
      return {{"", rfm_TypeDouble}};
    case cls_AttrString:
    case cls_AttrText:
    case cls_AttrEnum:
      return {{"", rfm_TypeString}};
    case cls_AttrObjectCow:
    case cls_AttrObjectPtr:
    case cls_AttrObjectLazy:
    case cls_AttrInternalCow:
      return {{kRomOidSuffix, rfm_TypeInt}, {kRomClassIdSuffix, rfm_TypeInt}};
    case cls_AttrList:
      return {{kRomHandleSuffix, rfm_TypeHandle}, {kRomColumnsSuffix, rfm_TypeInt}};
    case cls_AttrMap:
    case cls_AttrBlob:
      return {{kRomHandleSuffix, rfm_TypeHandle}};
    case cls_AttrDoubleCollection:
      return {{kRomHandleSuffix, rfm_TypeHandle}, {kRomHandle2Suffix, rfm_TypeHandle}};
    default:
      return {{"", rfm_TypeInt}};
  }
}

// Numbers as their bits, so that every value, NaN included, compares exactly.
template <class T>
std::string Bits(T value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof value);
  char text[24];
  std::snprintf(text, sizeof text, "%c%llx", sizeof value == 4 ? 'f' : 'd', static_cast<unsigned long long>(bits));
  return text;
}

std::string Value(rfm_Row const& row, rfm_FieldHandle const& field, rfm_Type type) {
  if (!row.DataIsPresent(field)) return "-";
  switch (type) {
    case rfm_TypeFloat:
      return Bits(row.ReadFieldFloat(field));
    case rfm_TypeDouble:
      return Bits(row.ReadFieldDouble(field));
    case rfm_TypeString:
      return rfm_DatabaseWalk::Quoted(row.ReadFieldString(field));
    case rfm_TypeHandle:
      return "@" + std::to_string(row.ReadFieldHandle(field).Value());
    default:
      return std::to_string(row.ReadFieldInt(field));
  }
}

// Whether the class stores nothing: it has no table, and the read path,
// which requires a table, refuses it.
bool StoresNothing(cls_ClassMetadata const& md) {
  return md.BaseClassId() == kRomNoClass && md.AttributeCount() == 0;
}

}  // namespace

std::string rom_TransporterWalk::Walk(cow_String const& name, cls_ClassRegistrar const& registrar,
                                      std::vector<unsigned int> const& classIds, Access access) {
  rom_TransporterWalk walk;
  utl_FileAccess const mode = access == kReadOnly ? utl_FileAccessRead : utl_FileAccessUpdate;
  rom_Transporter transporter(registrar, rfm_File::Open(name, mode, false), "", -1);
  rfm_Database database = transporter.Database();
  rom_ZDBHeaderParser header(database);
  walk.Line("header form " + std::to_string(header.GetHeaderType()) + " version " + std::to_string(header.Version()) +
            " release " + std::to_string(transporter.MajorVersion()) + "." +
            std::to_string(transporter.MinorVersion()) + "." + std::to_string(transporter.UpdateVersion()) +
            " type " + std::to_string(transporter.ReleaseType()));
  int newest = -1;
  unsigned int const status = header.GetUpToDateStatus(registrar, &newest);
  walk.Line("status " + std::to_string(status) + " newest " + std::to_string(newest));
  std::map<std::string, int> versions;
  for (cow_ConstMapIterator<cow_String, int> it(database.GetMapClassName2ClassVersion()); !it.IsDone(); it.Next())
    versions[it.CurrentKey().CStr()] = it.CurrentValue();
  for (auto const& version : versions)
    walk.Line("class version " + version.first + " " + std::to_string(version.second));

  for (unsigned int classId : classIds) {
    cls_ClassMetadata const& md = transporter.GetClassMD(classId);
    // The write path makes nothing for a class that stores nothing, also in
    // a read-only file.
    rom_ClassBag const& bag =
        StoresNothing(md) ? transporter.GetClassBagForWrite(classId) : transporter.GetClassBagForRead(classId);
    if (!bag.HasTable()) {
      walk.Line("class " + std::string(md.ClassName().CStr()) + " has no table");
      continue;
    }
    walk.Line("class " + std::string(md.ClassName().CStr()) + " table " +
              rfm_DatabaseWalk::Quoted(bag.Table().TableMetadata().TableName()) + " rows " +
              std::to_string(bag.Table().Length()));
    walk.Rows(md, bag);
    walk.Objects(transporter, classId);
  }
  // The catalogue as a browser of files reads it, without the registrar;
  // last, since it opens every class's table by its handle, with the file's
  // own numbering of its fields rather than the one the program binds.
  rom_ClassCatalogue const catalogue(database);
  for (rom_ClassCatalogue::Class const& entry : catalogue.Classes()) {
    std::string line = "catalogue " + std::to_string(entry.m_ClassId) + " " + rfm_DatabaseWalk::Quoted(entry.m_Name) +
                       " version " + std::to_string(entry.m_Version) + " base " + std::to_string(entry.m_BaseClassId) +
                       " table " + std::to_string(entry.m_Table.Value()) + " rows " + std::to_string(entry.m_Rows);
    rfm_Table const table = database.Table(entry.m_Table, -1, -1);
    for (rom_ClassCatalogue::Reference const& reference : rom_ClassCatalogue::References(table.TableMetadata()))
      line += " reference " + rfm_DatabaseWalk::Quoted(reference.m_Member);
    walk.Line(line);
  }
  if (access == kForUpdate) transporter.Flush();
  return walk.m_Text;
}

void rom_TransporterWalk::Rows(cls_ClassMetadata const& md, rom_ClassBag const& bag) {
  rfm_Table const& table = bag.Table();
  for (int number = 0; table.RowExists(number); ++number) {
    rfm_Row const row = table.ReadRow(number);
    std::string line = "row " + std::to_string(number);
    if (md.BaseClassId() != kRomNoClass)
      line += std::string(" ") + kRomBaseClassOidName + "=" +
              Value(row, rfm_FieldHandle(kRomBaseClassOidName, 0), rfm_TypeInt);
    for (omi_BtreeIterator<cow_String, cls_AttributeMetadata> it(md.Attributes()); !it.IsDone(); it.Next()) {
      cls_AttributeMetadata const& attribute = it.CurrentValue();
      int const first = bag.MapField(attribute.m_FieldId);
      int offset = 0;
      for (Column const& column : ColumnsOf(attribute.m_Type)) {
        std::string const name = std::string(attribute.m_Name.CStr()) + column.suffix;
        rfm_FieldHandle const field(name.c_str(), first < 0 ? -1 : first + offset++);
        line += " " + name + "=" + Value(row, field, column.type);
      }
    }
    Line(line);
  }
}

void rom_TransporterWalk::Objects(rom_Transporter& transporter, unsigned int cid) {
  switch (cid) {
    case rom_TestModel::kMaterial:
      return ObjectsOf<rom_TestMaterial>(transporter, &rom_TransporterWalk::Describe);
    case rom_TestModel::kNode:
      return ObjectsOf<rom_TestNode>(transporter, &rom_TransporterWalk::Describe);
    case rom_TestModel::kHex8:
      return ObjectsOf<rom_TestHex8>(transporter, &rom_TransporterWalk::Describe);
    case rom_TestModel::kQuad4:
      return ObjectsOf<rom_TestQuad4>(transporter, &rom_TransporterWalk::Describe);
    case rom_TestModel::kNodeSet:
      return ObjectsOf<rom_TestNodeSet>(transporter, &rom_TransporterWalk::Describe);
    default:
      // Element is built only as the base part of the others.
      return;
  }
}

template <class T>
void rom_TransporterWalk::ObjectsOf(rom_Transporter& transporter,
                                    std::string (rom_TransporterWalk::*describe)(T const&) const) {
  int const objects = transporter.GetTableSize(T::kClassId);
  for (int oid = 0; oid < objects; ++oid) {
    cow_COW<T> const object = rom_ReadObject<T>(transporter, oid);
    std::string const row = std::string(transporter.GetClassMD(T::kClassId).ClassName().CStr()) + "[" +
                            std::to_string(oid) + "]";
    Line("object " + row + (object.HasValue() ? " " + (this->*describe)(*object.ConstGet()) : " empty"));
    m_Rows.emplace(object.ConstGet(), row);
  }
}

std::string rom_TransporterWalk::Row(void const* object) const {
  if (object == nullptr) return "null";
  auto const found = m_Rows.find(object);
  return found != m_Rows.end() ? found->second : "unwalked";
}

std::string rom_TransporterWalk::Describe(rom_TestMaterial const& material) const {
  return "name=" + rfm_DatabaseWalk::Quoted(material.name) + " young=" + Bits(material.young) +
         " poisson=" + Bits(material.poisson);
}

std::string rom_TransporterWalk::Describe(rom_TestNode const& node) const {
  return "id=" + std::to_string(node.m_Id) + " x=" + Bits(node.m_X) + " y=" + Bits(node.m_Y) + " z=" + Bits(node.m_Z) +
         " temperature=" + Bits(node.m_Temperature) + " material=" + Row(node.m_Material.ConstGet());
}

std::string rom_TransporterWalk::DescribeElement(rom_TestElement const& element) const {
  return "id=" + std::to_string(element.m_Id) + " kind=" + rom_TestModel::KindName(element.m_Kind) +
         " material=" + Row(element.m_Material.ConstGet());
}

std::string rom_TransporterWalk::Describe(rom_TestHex8 const& hex) const {
  std::string text = DescribeElement(hex) + " nodes=";
  for (auto const& node : hex.m_Nodes) text += " " + Row(node.ConstGet());
  return text;
}

std::string rom_TransporterWalk::Describe(rom_TestQuad4 const& quad) const {
  std::string text = DescribeElement(quad) + " thickness=" + Bits(quad.m_Thickness) + " nodes=";
  for (auto const& node : quad.m_Nodes) text += " " + Row(node.ConstGet());
  return text + " reference=" + Row(quad.m_Reference.ConstGet());
}

std::string rom_TransporterWalk::Describe(rom_TestNodeSet const& set) const {
  std::string text = "name=" + rfm_DatabaseWalk::Quoted(set.name) + " nodes=";
  for (auto const& node : set.nodes) text += " " + Row(node.ConstGet());
  text += " ids=";
  for (int id : set.ids) text += " " + std::to_string(id);
  text += " masks=";
  for (unsigned int mask : set.masks) text += " " + std::to_string(mask);
  text += " weights=";
  for (double weight : set.weights) text += " " + Bits(weight);
  text += " scales=";
  for (float scale : set.scales) text += " " + Bits(scale);
  text += " flags=";
  for (bool flag : set.flags) text += flag ? "1" : "0";
  text += " labels=";
  for (cow_String const& label : set.labels) text += " " + rfm_DatabaseWalk::Quoted(label);
  text += " note=";
  char const digits[] = "0123456789abcdef";
  for (char byte : set.note) {
    unsigned char const bits = static_cast<unsigned char>(byte);
    text += digits[bits >> 4];
    text += digits[bits & 15];
  }
  text += " byId=";
  for (auto const& [id, node] : set.byId) text += " " + std::to_string(id) + ":" + Row(node.ConstGet());
  text += " byLabel=";
  for (auto const& [label, node] : set.byLabel) text += " " + rfm_DatabaseWalk::Quoted(label) + ":" + Row(node.ConstGet());
  text += " attributes=";
  for (auto const& [name, value] : set.attributes) text += " " + rfm_DatabaseWalk::Quoted(name) + ":" + Bits(value);
  text += " tags=";
  for (auto const& [key, tag] : set.tags) text += " " + std::to_string(key) + ":" + rfm_DatabaseWalk::Quoted(tag);
  return text;
}
