#include "cls_ClassRegistrar.h"
#include "cls_CollectionType.h"
#include "cls_PC.h"
#include "atr_String.h"
#include "nex_PrimException.h"
#include "omi_BtreeIterator.h"
#include "typ_ArchCompTable.h"
#include "zqa_TextOf.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Message = nex_PrimException<atr_String, 1>;

std::vector<std::string> AttributeNames(cls_ClassMetadata const& md) {
  std::vector<std::string> names;
  for (omi_BtreeIterator<cow_String, cls_AttributeMetadata> it(md.Attributes()); !it.IsDone(); it.Next())
    names.push_back(it.CurrentKey().CStr());
  return names;
}

// A class the registrar builds through its C++ type.
struct Probe {
  explicit Probe(cls_ReadVisitor const&) {}
  void DBWrite(cls_WriteVisitor const&) const {}
};

}  // namespace

TEST(ClassRegistrarTest, KeepsVersionsAndAnswersByIdVersionAndName) {
  cls_ClassRegistrar registrar;
  registrar.CreateClassMD("Node", 0x01000002, 3, nullptr, cls_kNoClass);
  registrar.CreateClassMD("Node", 0x01000002, 1, nullptr, cls_kNoClass);
  registrar.CreateClassMD("Node", 0x01000002, 7, nullptr, cls_kNoClass);

  EXPECT_TRUE(registrar.ClassIsPresent(0x01000002));
  EXPECT_FALSE(registrar.ClassIsPresent(0x01000003));
  EXPECT_EQ(7, registrar.ConstGet(0x01000002).GetVersion());
  EXPECT_EQ(3, registrar.GetClassMetadata(0x01000002, 3).GetVersion());
  EXPECT_EQ(0x01000002u, registrar.GetClassID("Node"));
  EXPECT_EQ(cls_kNoClass, registrar.GetClassID("Nodes"));
  EXPECT_EQ(7, registrar.GetLastClassVersionNumber(0x01000002));
  EXPECT_EQ(-1, registrar.GetLastClassVersionNumber(0x01000003));
  EXPECT_EQ(-1, registrar.GetPreviousClassVersionNumber(0x01000002, 1));
  EXPECT_EQ(1, registrar.GetPreviousClassVersionNumber(0x01000002, 3));
  EXPECT_EQ(3, registrar.GetPreviousClassVersionNumber(0x01000002, 5));
  EXPECT_EQ(7, registrar.GetPreviousClassVersionNumber(0x01000002, 100));
  EXPECT_EQ(1, registrar.GetFirstClassVersionNumberGREQ(0x01000002, 0));
  EXPECT_EQ(3, registrar.GetFirstClassVersionNumberGREQ(0x01000002, 3));
  EXPECT_EQ(7, registrar.GetFirstClassVersionNumberGREQ(0x01000002, 4));
  EXPECT_EQ(-1, registrar.GetFirstClassVersionNumberGREQ(0x01000002, 8));

  EXPECT_EQ("cls_ClassRegistrar::AddClassMD - Class Node (01000002) version 3 is already registered.",
            zqa_TextOf<Message>([&] { registrar.CreateClassMD("Node", 0x01000002, 3, nullptr, cls_kNoClass); }));
  EXPECT_EQ(7, registrar.ConstGet(0x01000002).GetVersion());
  EXPECT_EQ("cls_ClassRegistrar::ConstGet - Class ID 01000003 is not registered.",
            zqa_TextOf<Message>([&] { registrar.ConstGet(0x01000003); }));
  EXPECT_EQ("cls_ClassRegistrar::GetClassMetadata - Class ID 01000002 version 2 is not registered.",
            zqa_TextOf<Message>([&] { registrar.GetClassMetadata(0x01000002, 2); }));

  EXPECT_EQ("cls_ClassRegistrar::DeleteClass - Class ID 01000002 is registered as Node, not as Hex8.",
            zqa_TextOf<Message>([&] { registrar.DeleteClass("Hex8", 0x01000002); }));
  registrar.DeleteClass("Node", 0x01000002);
  EXPECT_FALSE(registrar.ClassIsPresent(0x01000002));
  EXPECT_EQ(0, registrar.ClassCount());
}

TEST(ClassRegistrarTest, AttributesAreKeptInByteOrderOfTheirNames) {
  cls_ClassRegistrar registrar;
  cls_ClassMetadata& md = registrar.CreateClassMD("Node", 0x01000002, 1, nullptr, cls_kNoClass)
                              .AddAttribute(cls_FieldHandle(1, "id"), cls_AttrInt)
                              .AddAttribute(cls_FieldHandle(4, "Z"), cls_AttrDouble)
                              .AddAttribute(cls_FieldHandle(2, "X"), cls_AttrDouble)
                              .AddAttribute(cls_FieldHandle(3, "Material"), cls_AttrObjectCow, 0x01000001)
                              .AddAttribute(cls_FieldHandle(2, "X"), cls_AttrFloat);
  EXPECT_EQ((std::vector<std::string>{"Material", "X", "Z", "id"}), AttributeNames(md));
  EXPECT_EQ(4, md.MaxFieldID());
  EXPECT_EQ(cls_AttrFloat, md.FindAttribute("X").m_Type);
  EXPECT_EQ(0x01000001u, md.FindAttribute("Material").m_TargetClass);
  EXPECT_EQ(-1, md.FindAttribute("Y").m_FieldId);
  EXPECT_EQ(cls_CollNone, md.FindAttribute("Y").m_Collection);
  EXPECT_EQ(-1, registrar.CreateClassMD("Marker", 0x01000009, 1, nullptr, cls_kNoClass).MaxFieldID());
}

TEST(ClassRegistrarTest, RegisteredClassesAreNamedForMessages) {
  cls_ClassRegistrar registrar;
  cls_ClassMetadata& md = registrar.Register<Probe>("Probe", 0x7ABC0001, 2, cls_kNoClass);
  EXPECT_TRUE(md.HasCtor());
  EXPECT_FALSE(registrar.CreateClassMD("Abstract", 0x7ABC0002, 1, nullptr, cls_kNoClass).HasCtor());

  EXPECT_EQ("Probe", std::string(typ_ArchCompTable::GetName(0x7ABC0001).CStr()));
  EXPECT_EQ("0x7ABC0003", std::string(typ_ArchCompTable::GetName(0x7ABC0003).CStr()));
  typ_ArchCompTable::InsertEntry(0x7ABD, typ_ArchCompEntry(cow_List<cow_String>("", "Alpha", "Beta")));
  EXPECT_EQ("Beta", std::string(typ_ArchCompTable::GetName(0x7ABD0002).CStr()));
  EXPECT_EQ("0x7ABD0000", std::string(typ_ArchCompTable::GetName(0x7ABD0000).CStr()));
  EXPECT_EQ("0x7ABD0003", std::string(typ_ArchCompTable::GetName(0x7ABD0003).CStr()));
}

TEST(ClassRegistrarTest, CollectionsMatchTheSameKindOrAnyDeclared) {
  EXPECT_TRUE(cls_CollectionsMatch(cls_CollListObj, cls_CollListObj));
  EXPECT_FALSE(cls_CollectionsMatch(cls_CollListObj, cls_CollListPrim));
  EXPECT_FALSE(cls_CollectionsMatch(cls_CollNone, cls_CollMapInt2Obj));
  EXPECT_TRUE(cls_CollectionsMatch(cls_CollAny, cls_CollBlob));
}

namespace {
struct Container : cls_PC {
  std::vector<int>* log;
  int id;
  Container(std::vector<int>* l, int i) : log(l), id(i) {}
  void Flush() override { log->push_back(id); }
};
}  // namespace

TEST(PersistentContainerRingTest, LinksInOrderAndLeavesOnDisconnectAndDestruction) {
  std::vector<int> log;
  cls_PC head;
  EXPECT_FALSE(head.IsLinked());
  Container a(&log, 1), c(&log, 3);
  {
    Container b(&log, 2);
    a.Link(&head);
    b.Link(&head);
    c.Link(&head);
    for (cls_PC* node = head.Next(); node != &head; node = node->Next()) node->Flush();
    EXPECT_EQ((std::vector<int>{1, 2, 3}), log);
  }
  log.clear();
  for (cls_PC* node = head.Next(); node != &head; node = node->Next()) node->Flush();
  EXPECT_EQ((std::vector<int>{1, 3}), log);
  while (head.IsLinked()) head.Next()->Disconnect();
  EXPECT_FALSE(a.IsLinked());
  EXPECT_FALSE(c.IsLinked());
  a.Link(&head);
  a.Link(&head);  // linking again moves, never duplicates
  EXPECT_EQ(&a, head.Next());
  EXPECT_EQ(&head, a.Next());
}
