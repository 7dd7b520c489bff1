// The model file of a preprocessor: the classes of a small finite-element
// model (materials, nodes, elements of two kinds, and a marker class that
// holds nothing) are registered, and a transporter gives each class its
// table on first use, with a row in the file's catalogue. The file is then
// opened again read-only: the classes are found, and a class the file does
// not know is refused, as a read-only file cannot take a new table.

#include "ZQARomCore.h"
#include "cls_ClassRegistrar.h"
#include "rfm_File.h"
#include "rom_ClassBag.h"
#include "rom_Transporter.h"

#include <cstdio>
#include <ctime>
#include <exception>

namespace {

constexpr unsigned int kMaterial = 0x01000001;
constexpr unsigned int kNode = 0x01000002;
constexpr unsigned int kElement = 0x01000003;
constexpr unsigned int kHex8 = 0x01000004;
constexpr unsigned int kQuad4 = 0x01000005;
constexpr unsigned int kSelectionMark = 0x01000006;
constexpr unsigned int kLoadCase = 0x01000007;  // known to the program, not yet to the file

void RegisterModel(cls_ClassRegistrar& registrar) {
  registrar.CreateClassMD("Material", kMaterial, 1, nullptr, cls_kNoClass)
      .AddAttribute(cls_FieldHandle(1, "Name"), cls_AttrString)
      .AddAttribute(cls_FieldHandle(2, "Young"), cls_AttrDouble)
      .AddAttribute(cls_FieldHandle(3, "Poisson"), cls_AttrDouble);
  registrar.CreateClassMD("Node", kNode, 1, nullptr, cls_kNoClass)
      .AddAttribute(cls_FieldHandle(1, "Id"), cls_AttrInt)
      .AddAttribute(cls_FieldHandle(2, "X"), cls_AttrDouble)
      .AddAttribute(cls_FieldHandle(3, "Y"), cls_AttrDouble)
      .AddAttribute(cls_FieldHandle(4, "Z"), cls_AttrDouble);
  registrar.CreateClassMD("Element", kElement, 1, nullptr, cls_kNoClass)
      .AddAttribute(cls_FieldHandle(1, "Id"), cls_AttrInt)
      .AddAttribute(cls_FieldHandle(2, "Material"), cls_AttrObjectCow, kMaterial);
  registrar.CreateClassMD("Hex8", kHex8, 1, nullptr, kElement)
      .AddAttribute(cls_FieldHandle(1, "Nodes"), cls_AttrList, kNode, cls_CollListObj);
  registrar.CreateClassMD("Quad4", kQuad4, 1, nullptr, kElement)
      .AddAttribute(cls_FieldHandle(1, "Nodes"), cls_AttrList, kNode, cls_CollListObj)
      .AddAttribute(cls_FieldHandle(2, "Thickness"), cls_AttrDouble);
  registrar.CreateClassMD("SelectionMark", kSelectionMark, 1, nullptr, cls_kNoClass);
  registrar.CreateClassMD("LoadCase", kLoadCase, 1, nullptr, cls_kNoClass)
      .AddAttribute(cls_FieldHandle(1, "Name"), cls_AttrString);
}

constexpr unsigned int kModelClasses[] = {kMaterial, kNode, kElement, kHex8, kQuad4, kSelectionMark};

void Run(char const* path) {
  cls_ClassRegistrar registrar;
  RegisterModel(registrar);
  {
    rom_Transporter model(registrar, rfm_File::Open(path, utl_FileAccessCreate, false), "MDL",
                          "Model of a cantilever beam", static_cast<long>(std::time(nullptr)), -1);
    for (unsigned int classId : kModelClasses) model.GetClassBagForWrite(classId);
    model.Flush();
  }
  rom_Transporter model(registrar, rfm_File::Open(path, utl_FileAccessRead, false), "MDL", -1);
  int tables = 0;
  for (unsigned int classId : kModelClasses) {
    if (classId == kSelectionMark) continue;  // a class without attributes has no table
    tables += model.GetClassBagForRead(classId).HasTable();
  }
  std::printf("wrote %s: %d classes with tables, release %d.%d.%d\n", path, tables, model.MajorVersion(),
              model.MinorVersion(), model.UpdateVersion());
  try {
    model.GetClassBagForWrite(kLoadCase);
    std::printf("a read-only file took a new class\n");
  } catch (std::exception const& e) {
    std::printf("read-only: %s\n", e.what());
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s MODEL-FILE\n", argv[0]);
    return 2;
  }
  int modules = 0;
  ZQARomCore_initialize(modules);
  int status = 0;
  try {
    Run(argv[1]);
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s\n", e.what());
    status = 1;
  }
  ZQARomCore_finalize(modules);
  return status;
}
