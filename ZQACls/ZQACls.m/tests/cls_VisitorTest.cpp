#include "cls_FakeDatabase.h"
#include "cls_Static.h"
#include "cls_TestModel.h"
#include "atr_String.h"
#include "nex_PrimException.h"
#include "omi_BtreeIterator.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace {

cow_COW<Node> MakeNode(int id, cow_COW<Material> const& material) {
  return cow_COW<Node>(new Node(id, id * 1.5, 2.0, -id, material));
}

template <class Body>
std::string MessageOf(Body body) {
  try {
    body();
  } catch (ZQABasException const& e) {
    return e.what();
  }
  return "nothing raised";
}

class VisitorTest : public ::testing::Test {
protected:
  VisitorTest() {
    RegisterTestModel(m_Registrar);
    m_Steel = cow_COW<Material>(new Material);
    m_Steel.Get()->name = "Steel";
    m_Steel.Get()->young = 210e9;
    m_Steel.Get()->poisson = 0.3;
  }
  // Every memento was deleted by the visitor that owned it.
  void TearDown() override { EXPECT_EQ(0, cls_FakeDatabase::s_LiveMementos); }

  // Writes each object in a field of the root row.
  template <class... Objects>
  void WriteRoot(Objects const&... objects) {
    cls_WriteVisitor root(m_Db.WriteRoot());
    ASSERT_TRUE(root.StartWrite(cls_FakeDatabase::kRootClass, cls_Static::ConstUid()));
    int field = 0;
    cls_FieldHandle const fields[] = {ModelFields::First, ModelFields::Second, ModelFields::Section,
                                      ModelFields::Marker};
    (root.WriteObj(fields[field++], objects), ...);
  }

  cls_ClassRegistrar m_Registrar;
  cls_FakeDatabase m_Db{m_Registrar};
  cow_COW<Material> m_Steel;
};

}  // namespace

TEST_F(VisitorTest, RoundTripsAModelStoringEachSharedValueOnce) {
  std::array<cow_COW<Node>, 12> nodes;
  for (int i = 0; i < 12; ++i) nodes[i] = MakeNode(i, m_Steel);
  cow_COW<Hex8> first(new Hex8("A", {nodes[0], nodes[1], nodes[2], nodes[3], nodes[4], nodes[5], nodes[6], nodes[7]}));
  cow_COW<Hex8> second(
      new Hex8("B", {nodes[4], nodes[5], nodes[6], nodes[7], nodes[8], nodes[9], nodes[10], nodes[11]}));
  // In one pass an identity met twice would be a new object: a shared value
  // is met once, as the object layer stores it once.
  m_Db.StartPass();
  WriteRoot(first, second);
  m_Db.EndPass();

  EXPECT_EQ(12, m_Db.RowCount(Node::kClassId));
  EXPECT_EQ(1, m_Db.RowCount(Material::kClassId));
  EXPECT_EQ(2, m_Db.RowCount(Hex8::kClassId));
  EXPECT_EQ(2, m_Db.RowCount(Element::kClassId));
  cls_FakeRow const& hex = m_Db.Row(Hex8::kClassId, 1);
  int const baseOid = std::get<int>(hex.at(cls_FakeDatabase::kBaseField));
  EXPECT_EQ(std::string("B"), std::get<std::string>(m_Db.Row(Element::kClassId, baseOid).at(1)));
  // A shared node is written once; the second element only refers to it.
  EXPECT_EQ(std::get<cls_FakeRef>(m_Db.Row(Hex8::kClassId, 0).at(5)), std::get<cls_FakeRef>(hex.at(1)));
  // Writing gave the objects their identities.
  EXPECT_FALSE(nodes[3].ConstGet()->Uid().IsNull());
  EXPECT_NE(first.ConstGet()->Uid(), first.ConstGet()->ElementUid());

  m_Db.Reopen();
  cls_ReadVisitor root(m_Db.ReadRoot());
  cow_COW<Hex8> const a = root.ReadObjCow<Hex8>(ModelFields::First);
  cow_COW<Hex8> const b = root.ReadObjCow<Hex8>(ModelFields::Second);
  EXPECT_FALSE(a.Identical(first));
  EXPECT_EQ(std::string("A"), a.ConstGet()->Label().CStr());
  EXPECT_EQ(std::string("B"), b.ConstGet()->Label().CStr());
  EXPECT_TRUE(root.ReadObjCow<Hex8>(ModelFields::First).Identical(a));
  for (int corner = 0; corner < 8; ++corner) {
    Node const& node = *b.ConstGet()->GetNode(corner).ConstGet();
    EXPECT_EQ(corner + 4, node.Id());
    EXPECT_DOUBLE_EQ((corner + 4) * 1.5, node.X());
    EXPECT_TRUE(node.GetMaterial().Identical(a.ConstGet()->GetNode(0).ConstGet()->GetMaterial()));
  }
  EXPECT_TRUE(a.ConstGet()->GetNode(4).Identical(b.ConstGet()->GetNode(0)));
  Material const& steel = *a.ConstGet()->GetNode(0).ConstGet()->GetMaterial().ConstGet();
  EXPECT_EQ(std::string("Steel"), steel.name.CStr());
  EXPECT_DOUBLE_EQ(0.3, steel.poisson);
  // Reading gave each row an identity of its own.
  EXPECT_FALSE(a.ConstGet()->Uid().IsNull());
  EXPECT_NE(a.ConstGet()->Uid(), a.ConstGet()->ElementUid());
  EXPECT_NE(a.ConstGet()->Uid(), b.ConstGet()->Uid());
}

TEST_F(VisitorTest, RewritingAnIdentityOverwritesItsRowAndAPassGivesASecondMeetingANewIdentity) {
  cow_COW<Node> node = MakeNode(1, m_Steel);
  WriteRoot(node);
  // The cache shares the node: changing it copies, with the same identity.
  node.Get()->SetX(9);
  WriteRoot(node);
  EXPECT_EQ(1, m_Db.RowCount(Node::kClassId));
  EXPECT_EQ(9.0, std::get<double>(m_Db.Row(Node::kClassId, 0).at(NodeFields::X.FieldId())));

  cow_COW<Node> fresh = MakeNode(2, m_Steel);
  cow_COW<Node> twin(*fresh.ConstGet());
  m_Db.StartPass();
  WriteRoot(fresh, twin);
  m_Db.EndPass();
  EXPECT_EQ(3, m_Db.RowCount(Node::kClassId));
  EXPECT_FALSE(fresh.ConstGet()->Uid().IsNull());
  EXPECT_NE(fresh.ConstGet()->Uid(), twin.ConstGet()->Uid());
  // The identity's ring leads each database to its own row.
  cls_FakeDatabase other(m_Registrar);
  {
    cls_WriteVisitor root(other.WriteRoot());
    root.WriteObj(ModelFields::First, twin);
  }
  cls_Uid const& uid = twin.ConstGet()->Uid();
  ASSERT_NE(nullptr, uid.FirstHistoryEntry());
  ASSERT_NE(nullptr, uid.NextHistoryEntry(uid.FirstHistoryEntry()));
  EXPECT_EQ(nullptr, uid.NextHistoryEntry(uid.NextHistoryEntry(uid.FirstHistoryEntry())));
  EXPECT_EQ(2, other.Entries());  // the node and its material
}

TEST_F(VisitorTest, AnObjectGivenByAddressIsStoredOnceWithinASharedPointerOutput) {
  Node const node(3, 0, 0, 0, m_Steel);
  m_Db.StartPass();
  {
    cls_WriteVisitor root(m_Db.WriteRoot());
    root.Memento()->StartSharedPtrOutput();
    node.DBWrite(cls_WriteVisitor(root, ModelFields::First, nullptr, &node));
    node.DBWrite(cls_WriteVisitor(root, ModelFields::Second, nullptr, &node));
    root.Memento()->EndSharedPtrOutput();
  }
  m_Db.EndPass();
  EXPECT_EQ(1, m_Db.RowCount(Node::kClassId));
  cls_FakeRow const& root = m_Db.Row(cls_FakeDatabase::kRootClass, 0);
  EXPECT_EQ(std::get<cls_FakeRef>(root.at(1)), std::get<cls_FakeRef>(root.at(2)));
}

TEST_F(VisitorTest, StartWriteFalseStopsTheWriteAndLeavesANullReference) {
  cow_COW<Marker> marker(new Marker);
  WriteRoot(cow_COW<Hex8>(), cow_COW<Hex8>(), cow_COW<Section>(), marker);
  EXPECT_EQ(0, Marker::s_MembersWritten);
  EXPECT_EQ(0, m_Db.RowCount(Marker::kClassId));
  EXPECT_EQ((cls_FakeRef{cls_kNoClass, -1}), std::get<cls_FakeRef>(m_Db.Row(cls_FakeDatabase::kRootClass, 0).at(4)));
  // Empty values are null references, which a new row leaves absent.
  EXPECT_EQ(0u, m_Db.Row(cls_FakeDatabase::kRootClass, 0).count(1));

  cls_WriteVisitor root(m_Db.WriteRoot());
  cls_WriteVisitor member(root, ModelFields::Marker, cls_CowValue(marker));
  EXPECT_FALSE(member.StartWrite(Marker::kClassId, cls_Uid()));
  EXPECT_EQ("cls_WriteVisitor - no row to write to: StartWrite answered false or was not called",
            MessageOf([&] { member.Write(NodeFields::Id, 1); }));
  EXPECT_EQ("cls_WriteVisitor::StartWrite - called twice",
            MessageOf([&] { member.StartWrite(Marker::kClassId, cls_Uid()); }));
  cls_WriteVisitor base(root, Element::kClassId);
  EXPECT_EQ(
      "cls_WriteVisitor::StartWrite - The visitor of the base class part of class 01000003 writes class "
      "01000004.",
      MessageOf([&] { base.StartWrite(Hex8::kClassId, cls_Uid()); }));

  // A member visitor checks its collection against the parent's class.
  cls_WriteVisitor nodes(root, ModelFields::Nodes, nullptr, nullptr);
  nodes.CheckCollectionType(cls_CollListObj);
  EXPECT_THROW(nodes.CheckCollectionType(cls_CollMapInt2Obj), std::runtime_error);
}

TEST_F(VisitorTest, VisitorsDeleteOnlyTheMementosTheyOwnAndShareThemAmongCopies) {
  std::unique_ptr<cls_MementoWrite> kept(m_Db.WriteRoot(false));
  {
    cls_WriteVisitor root(kept.get());
    root.WriteObj(ModelFields::Section, cow_COW<Section>(new Section));
  }
  EXPECT_EQ(1, cls_FakeDatabase::s_LiveMementos);
  kept.reset();

  cls_ReadVisitor copy = [this] {
    cls_ReadVisitor original(m_Db.ReadRoot());
    return cls_ReadVisitor(original);
  }();
  EXPECT_EQ(1, cls_FakeDatabase::s_LiveMementos);
  cls_ReadVisitor assigned(nullptr);
  assigned = copy;
  copy = cls_ReadVisitor(nullptr);
  EXPECT_TRUE(assigned.ReadObjCow<Section>(ModelFields::Section).HasValue());
  EXPECT_EQ(1, cls_FakeDatabase::s_LiveMementos);
}

TEST_F(VisitorTest, ReadsNullReferencesAsEmptyAndGivesAValueOnlyAsItsOwnClass) {
  std::array<cow_COW<Node>, 8> corners;
  corners[2] = MakeNode(7, cow_COW<Material>());
  WriteRoot(cow_COW<Hex8>(new Hex8("C", corners)), cow_COW<Hex8>(), cow_COW<Section>(), cow_COW<Marker>(new Marker));
  m_Db.Reopen();
  cls_ReadVisitor root(m_Db.ReadRoot());
  cow_COW<Hex8> hex = root.ReadObjCow<Hex8>(ModelFields::First);
  EXPECT_FALSE(hex.ConstGet()->GetNode(0).HasValue());
  EXPECT_FALSE(hex.ConstGet()->GetNode(2).ConstGet()->GetMaterial().HasValue());
  EXPECT_FALSE(root.ReadObjCow<Section>(ModelFields::Section).HasValue());
  EXPECT_EQ(nullptr, root.ReadObjPtr<Section>(ModelFields::Section));

  // A pointer read builds an object the caller owns.
  std::unique_ptr<Hex8> built(root.ReadObjPtr<Hex8>(ModelFields::First));
  EXPECT_EQ(std::string("C"), built->Label().CStr());
  EXPECT_EQ(hex.ConstGet()->GetNode(2).ConstGet()->Uid(), built->GetNode(2).ConstGet()->Uid());

  EXPECT_EQ("cls_CowValue::As - The value holds Hex8, not cow_COW<Element, cow_Direct<Element> >.",
            MessageOf([&] { root.ReadObjCow<Element>(ModelFields::First); }));
  // A visitor without a row reads every member as absent.
  cls_ReadVisitor none(root, ModelFields::Marker);
  EXPECT_TRUE(none.GetUid().IsNull());
  EXPECT_FALSE(none.FieldIsPresent(NodeFields::Id));
  EXPECT_EQ(42, none.Read(NodeFields::Id, 42));
}

TEST_F(VisitorTest, TypedHelperRegistersItsMembersAndWritesAndReadsThem) {
  cls_ClassMetadata const& metadata = m_Registrar.ConstGet(Section::kClassId);
  std::string types;
  for (omi_BtreeIterator<cow_String, cls_AttributeMetadata> it(metadata.Attributes()); !it.IsDone(); it.Next())
    types += std::string(it.CurrentKey().CStr()) + ":" + std::to_string(it.CurrentValue().m_Type) + " ";
  EXPECT_EQ("Angle:9 Closed:13 Flags:7 Label:11 Layers:5 Material:15 Thickness:10 ", types);
  EXPECT_EQ(Material::kClassId, metadata.FindAttribute("Material").m_TargetClass);
  EXPECT_TRUE(metadata.HasCtor());
  EXPECT_TRUE(metadata.HasCowDtor());

  cow_COW<Section> section(new Section);
  *section.Get() = Section{cls_Uid(), 3, 0xFFFFFFF0u, true, 0.25f, 1.5, "Shell", m_Steel};
  WriteRoot(cow_COW<Hex8>(), cow_COW<Hex8>(), section);
  m_Db.Reopen();
  m_Db.DropColumn(Section::kClassId, 1);
  cls_ReadVisitor root(m_Db.ReadRoot());
  Section const& read = *root.ReadObjCow<Section>(ModelFields::Section).ConstGet();
  EXPECT_EQ(-1, read.layers);  // not in the file: as constructed
  EXPECT_EQ(0xFFFFFFF0u, read.flags);
  EXPECT_TRUE(read.closed);
  EXPECT_EQ(0.25f, read.angle);
  EXPECT_EQ(1.5, read.thickness);
  EXPECT_EQ(std::string("Shell"), read.label.CStr());
  EXPECT_EQ(std::string("Steel"), read.material.ConstGet()->name.CStr());
  EXPECT_FALSE(read.uid.IsNull());

  EXPECT_EQ("cls_Persistent::Register - Class Bare declares no identity.",
            MessageOf([&] { cls_Persistent<Section>("Bare", 0x01000009, 1).Register(m_Registrar); }));
  EXPECT_EQ("cls_Persistent::Member - Class Twice declares field 2 Layers, whose id or name it has declared already.",
            MessageOf([] {
              cls_Persistent<Section>("Twice", 0x01000009, 1)
                  .Member(1, "Layers", &Section::layers)
                  .Member(2, "Layers", &Section::layers);
            }));
  EXPECT_FALSE(m_Registrar.ClassIsPresent(0x01000009));
}
