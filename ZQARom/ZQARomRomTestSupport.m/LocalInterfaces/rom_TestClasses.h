#ifndef rom_TestClasses_h
#define rom_TestClasses_h

#include "cls_ClassRegistrar.h"

// A small model's classes as the object layer's tests register them:
// Material, Node (referring to a Material), Element with derived Hex8 and
// Quad4, and Marker, a class without attributes.
namespace rom_TestClasses {
constexpr unsigned int kMaterial = 0x01000001;
constexpr unsigned int kNode = 0x01000002;
constexpr unsigned int kElement = 0x01000003;
constexpr unsigned int kHex8 = 0x01000004;
constexpr unsigned int kQuad4 = 0x01000005;
constexpr unsigned int kMarker = 0x01000006;
// Every class Register registers, in class id order.
constexpr unsigned int kAll[] = {kMaterial, kNode, kElement, kHex8, kQuad4, kMarker};

inline void Register(cls_ClassRegistrar& registrar, int nodeVersion = 1) {
  registrar.CreateClassMD("Material", kMaterial, 1, nullptr, cls_kNoClass)
      .AddAttribute(cls_FieldHandle(1, "Name"), cls_AttrString)
      .AddAttribute(cls_FieldHandle(2, "Young"), cls_AttrDouble)
      .AddAttribute(cls_FieldHandle(3, "Poisson"), cls_AttrFloat);
  registrar.CreateClassMD("Node", kNode, nodeVersion, nullptr, cls_kNoClass)
      .AddAttribute(cls_FieldHandle(1, "Id"), cls_AttrInt)
      .AddAttribute(cls_FieldHandle(4, "Z"), cls_AttrDouble)
      .AddAttribute(cls_FieldHandle(2, "X"), cls_AttrDouble)
      .AddAttribute(cls_FieldHandle(3, "Y"), cls_AttrDouble)
      .AddAttribute(cls_FieldHandle(5, "Material"), cls_AttrObjectCow, kMaterial);
  registrar.CreateClassMD("Element", kElement, 1, nullptr, cls_kNoClass)
      .AddAttribute(cls_FieldHandle(1, "Label"), cls_AttrString)
      .AddDtor([](cls_CowValue*) {});
  registrar.CreateClassMD("Hex8", kHex8, 1, nullptr, kElement)
      .AddAttribute(cls_FieldHandle(1, "Nodes"), cls_AttrList, kNode, cls_CollListObj);
  registrar.CreateClassMD("Quad4", kQuad4, 1, nullptr, kElement)
      .AddAttribute(cls_FieldHandle(2, "Thickness"), cls_AttrDouble)
      .AddAttribute(cls_FieldHandle(1, "Nodes"), cls_AttrList, kNode, cls_CollListObj);
  registrar.CreateClassMD("Marker", kMarker, 1, nullptr, cls_kNoClass);
}
}  // namespace rom_TestClasses

#endif
