// One class made persistent in the two ways an application has: declared
// through the typed helper (namespace typed), and written and read by its
// own code through the visitors (namespace visited). Both register the
// same attributes under the same class id, so a file written with the one
// reads with the other.
//
//   persisting_classes write typed|visitor FILE   writes a part as a root
//   persisting_classes read typed|visitor FILE    reads it back, prints it
//
// README.md's section "Persisting your classes" shows this file's code.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ZQARomCore.h"
#include "cls_ClassRegistrar.h"
#include "cls_CowDtor.h"
#include "cls_Persistent.h"
#include "cls_PersistentCollection.h"
#include "cls_ReadListPrim.h"
#include "cls_ReadMapKey2Prim.h"
#include "cls_Received.h"
#include "cls_WriteListPrim.h"
#include "cls_WriteMapKey2Prim.h"
#include "rfm_File.h"
#include "rom_Objects.h"
#include "rom_Transporter.h"

namespace {

char const kMagic[] = "PRT";

// A material, shared by the parts made of it.
struct Material {
  static constexpr unsigned int kClassId = 0x02000001;
  cls_Uid uid;
  cow_String name;
  double density = 0;
};

void RegisterMaterial(cls_ClassRegistrar& registrar) {
  cls_Persistent<Material>("Material", Material::kClassId, 1)
      .Identity(&Material::uid)
      .Member(1, "Name", &Material::name)
      .Member(2, "Density", &Material::density)
      .Register(registrar);
}

cow_COW<Material> Steel() {
  cow_COW<Material> steel(new Material);
  steel.Get()->name = "Steel";
  steel.Get()->density = 7850;
  return steel;
}

// What a read part holds, as one line.
std::string Describe(cow_String const& name, cow_COW<Material> const& material, std::vector<double> const& corners,
                     std::map<cow_String, int> const& tags) {
  std::string line = std::string("part ") + name.CStr() + " of " +
                     (material.HasValue() ? material.ConstGet()->name.CStr() : "no material") + ", corners";
  for (double const corner : corners) line += " " + std::to_string(static_cast<int>(corner));
  line += ", tags";
  for (auto const& [tag, count] : tags) line += std::string(" ") + tag.CStr() + "=" + std::to_string(count);
  return line;
}

}  // namespace

namespace typed {

struct Part {
  static constexpr unsigned int kClassId = 0x02000002;
  cls_Uid uid;                     // the object's identity in memory
  cow_String name;                 // a value
  cow_COW<Material> material;      // a reference to a shared object
  std::vector<double> corners;     // a list: x, y, z of each corner
  std::map<cow_String, int> tags;  // a map
};

void Register(cls_ClassRegistrar& registrar) {
  RegisterMaterial(registrar);
  cls_Persistent<Part>("Part", Part::kClassId, 1)
      .Identity(&Part::uid)
      .Member(1, "Name", &Part::name)
      .Member(2, "Material", &Part::material)
      .Member(3, "Corners", &Part::corners, 3)  // 3 values a row
      .Member(4, "Tags", &Part::tags)
      .Register(registrar);
}

void Write(char const* path) {
  cls_ClassRegistrar registrar;
  Register(registrar);
  rom_Transporter file(registrar, rfm_File::Open(path, utl_FileAccessCreate, false), kMagic, "One part",
                       static_cast<long>(std::time(nullptr)), -1);
  cow_COW<Part> part(new Part);
  part.Get()->name = "Bracket";
  part.Get()->material = Steel();
  part.Get()->corners = {0, 0, 0, 40, 0, 0, 40, 25, 0};
  part.Get()->tags = {{"bolts", 4}, {"welds", 2}};
  rom_WriteObject(file, part);  // the part, and the material it refers to
  file.Flush();
}

std::string Read(char const* path) {
  cls_ClassRegistrar registrar;
  Register(registrar);
  rom_Transporter file(registrar, rfm_File::Open(path, utl_FileAccessRead, false), kMagic, -1);
  cow_COW<Part> const part = rom_ReadObject<Part>(file, 0);  // row 0 of the class's table
  Part const& p = *part.ConstGet();
  return Describe(p.name, p.material, p.corners, p.tags);
}

}  // namespace typed

namespace visited {

namespace PartField {
cls_FieldHandle const Name(1, "Name");
cls_FieldHandle const Material(2, "Material");
cls_FieldHandle const Corners(3, "Corners");
cls_FieldHandle const Tags(4, "Tags");
}  // namespace PartField

class Part {
public:
  static constexpr unsigned int kClassId = 0x02000002;
  Part(cow_String name, cow_COW<Material> material, std::vector<double> corners, std::map<cow_String, int> tags)
      : m_Name(std::move(name)),
        m_Material(std::move(material)),
        m_Corners(std::move(corners)),
        m_Tags(std::move(tags)) {}
  explicit Part(cls_ReadVisitor const& visitor);
  void DBWrite(cls_WriteVisitor const& visitor) const;
  static void Register(cls_ClassRegistrar& registrar);
  std::string Describe() const { return ::Describe(m_Name, m_Material, m_Corners, m_Tags); }

private:
  cls_Uid m_Uid;
  cow_String m_Name;
  cow_COW<Material> m_Material;
  std::vector<double> m_Corners;
  std::map<cow_String, int> m_Tags;
};

void Part::DBWrite(cls_WriteVisitor const& visitor) const {
  if (!visitor.StartWrite(kClassId, m_Uid)) return;  // stored already, or no table
  visitor.Write(PartField::Name, m_Name);
  visitor.WriteObj(PartField::Material, m_Material);
  // A collection is a row of the object layer's own collection class, and
  // the store of its elements, poured in by a writer.
  cls_CollectionWriteRow const corners(visitor, PartField::Corners, cls_kListClass, cls_CollListPrim);
  cls_Received<cls_WriteListPrim<double>> list(corners.Memento() ? corners.Memento()->MakeWriteListPrim(double(), 3)
                                                                 : nullptr);
  if (list && !m_Corners.empty()) list->Write(m_Corners.data(), static_cast<int>(m_Corners.size()));
  cls_CollectionWriteRow const tags(visitor, PartField::Tags, cls_kMapClass, cls_CollMapString2Prim);
  cls_Received<cls_WriteMapKey2Prim<cow_String, int>> map(
      tags.Memento() ? tags.Memento()->MakeWriteMapString2Prim(int()) : nullptr);
  if (map)
    for (auto const& [tag, count] : m_Tags) map->Write(tag, count);
}

Part::Part(cls_ReadVisitor const& visitor)
    : m_Uid(visitor.GetUid()),
      m_Name(visitor.Read(PartField::Name, cow_String())),
      m_Material(visitor.ReadObjCow<Material>(PartField::Material)) {
  cls_CollectionReadRow const corners(visitor, PartField::Corners, cls_kListClass);
  cls_Received<cls_ReadListPrim<double>> list(corners.Memento() ? corners.Memento()->MakeReadListPrim(double())
                                                                : nullptr);
  if (list) {
    m_Corners.resize(static_cast<std::size_t>(std::max(list->Size(), 0)));
    m_Corners.resize(static_cast<std::size_t>(list->Read(m_Corners.data(), static_cast<int>(m_Corners.size()))));
  }
  cls_CollectionReadRow const tags(visitor, PartField::Tags, cls_kMapClass);
  cls_Received<cls_ReadMapKey2Prim<cow_String, int>> map(tags.Memento() ? tags.Memento()->MakeReadMapString2Prim(int())
                                                                        : nullptr);
  while (map && map->Next()) m_Tags.emplace(map->ReadKey(), map->Read());  // a key's first entry wins
}

void Part::Register(cls_ClassRegistrar& registrar) {
  registrar.Register<Part>("Part", kClassId, 1, cls_kNoClass)
      .AddAttribute(PartField::Name, cls_AttrString)
      .AddAttribute(PartField::Material, cls_AttrObjectCow, Material::kClassId)
      .AddAttribute(PartField::Corners, cls_AttrObjectCow, cls_kListClass, cls_CollListPrim)
      .AddAttribute(PartField::Tags, cls_AttrObjectCow, cls_kMapClass, cls_CollMapString2Prim)
      .AddDtor(&cls_CowDtor<Part>);  // held in cow_COW<Part>
}

void Write(char const* path) {
  cls_ClassRegistrar registrar;
  RegisterMaterial(registrar);
  Part::Register(registrar);
  rom_Transporter file(registrar, rfm_File::Open(path, utl_FileAccessCreate, false), kMagic, "One part",
                       static_cast<long>(std::time(nullptr)), -1);
  cow_COW<Part> const part(new Part("Bracket", Steel(), {0, 0, 0, 40, 0, 0, 40, 25, 0}, {{"bolts", 4}, {"welds", 2}}));
  rom_WriteObject(file, part);
  file.Flush();
}

std::string Read(char const* path) {
  cls_ClassRegistrar registrar;
  RegisterMaterial(registrar);
  Part::Register(registrar);
  rom_Transporter file(registrar, rfm_File::Open(path, utl_FileAccessRead, false), kMagic, -1);
  return rom_ReadObject<Part>(file, 0).ConstGet()->Describe();
}

}  // namespace visited

int main(int argc, char** argv) {
  bool const writing = argc == 4 && std::strcmp(argv[1], "write") == 0;
  bool const reading = argc == 4 && std::strcmp(argv[1], "read") == 0;
  bool const typedHelper = argc == 4 && std::strcmp(argv[2], "typed") == 0;
  if ((!writing && !reading) || (!typedHelper && std::strcmp(argv[2], "visitor") != 0)) {
    std::fprintf(stderr, "usage: %s write|read typed|visitor FILE\n", argv[0]);
    return 2;
  }
  char const* const path = argv[3];
  int modules = 0;
  ZQARomCore_initialize(modules);
  int status = 0;
  try {
    if (writing) {
      typedHelper ? typed::Write(path) : visited::Write(path);
      std::printf("wrote %s\n", path);
    } else {
      std::printf("read %s: %s\n", path, (typedHelper ? typed::Read(path) : visited::Read(path)).c_str());
    }
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s: %s\n", path, e.what());
    status = 1;
  }
  ZQARomCore_finalize(modules);
  return status;
}
