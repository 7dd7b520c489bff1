#include "atr_String.h"
#include "cls_WriteVisitor.h"
#include "nex_PrimException.h"
#include "rfm_Row.h"
#include "rom_ClassBag.h"
#include "rom_History.h"
#include "rom_MementoWrite.h"
#include "rom_Objects.h"
#include "rom_PtrBarn.h"
#include "rom_TestModel.h"
#include "rom_Transporter.h"
#include "rom_WriteRecord.h"
#include "zqa_TestDir.h"
#include "zqa_TextOf.h"

#include <gtest/gtest.h>

namespace {
using namespace rom_TestModel;
using Message = nex_PrimException<atr_String, 1>;
using Assertion = nex_PrimException<cow_String, 3>;

cls_FieldHandle const kNodeMaterial(5, "Material");
cls_FieldHandle const kQuadReference(21, "Reference");

// A transporter on a new file of the test model's classes.
struct NewFile {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  std::unique_ptr<rom_Transporter> t;
  NewFile() {
    Register(registrar);
    t = std::make_unique<rom_Transporter>(registrar, rfm_File::Open(dir.File("w.mdl"), utl_FileAccessCreate, false),
                                          "MDL", "objects", 0, -1);
  }
  rfm_Row Row(unsigned int cid, int oid) { return t->GetClassBagForWrite(cid).Table().ReadRow(oid); }
  int Int(unsigned int cid, int oid, char const* column) { return Row(cid, oid).ReadFieldInt(rfm_FieldHandle(column, -1)); }
  bool Has(unsigned int cid, int oid, char const* column) {
    return Row(cid, oid).DataIsPresent(rfm_FieldHandle(column, -1));
  }
};

cow_COW<rom_TestNode> NewNode(int id, cow_COW<rom_TestMaterial> const& material = cow_COW<rom_TestMaterial>()) {
  return cow_COW<rom_TestNode>(new rom_TestNode(id, id * 1.0, 0, 0, material));
}

TEST(ObjectWriteTest, IdentityDecidesTheRowAndAStoredValueIsOnlyReferredTo) {
  NewFile file;
  rom_Transporter& t = *file.t;
  Model model = Make(40, 3, 5);
  Write(t, model);
  int const nodes = t.GetTableSize(kNode);
  int const elements = t.GetTableSize(kElement);
  ASSERT_EQ(nodes, 40);
  // Unchanged values are in the barn: writing them again writes nothing.
  Write(t, model);
  EXPECT_EQ(t.GetTableSize(kNode), nodes);
  EXPECT_EQ(t.GetTableSize(kElement), elements);
  EXPECT_EQ(t.GetTableSize(kMaterial), 3);

  // A changed copy keeps its identity: it is written over its own row.
  cow_COW<rom_TestNode> changed = model.nodes[7];
  changed.Get()->m_X = 1234.5;
  EXPECT_EQ(rom_WriteObject(t, changed), rom_CidOid(kNode, 7));
  EXPECT_EQ(t.GetTableSize(kNode), nodes);
  EXPECT_EQ(file.Row(kNode, 7).ReadFieldDouble(rfm_FieldHandle("X", -1)), 1234.5);

  // The elements' base parts are rows of their own, each referred to once.
  std::vector<int> bases;
  for (int oid = 0; oid < t.GetTableSize(kHex8); ++oid) bases.push_back(file.Int(kHex8, oid, "##BaseClassOID"));
  for (int oid = 0; oid < t.GetTableSize(kQuad4); ++oid) bases.push_back(file.Int(kQuad4, oid, "##BaseClassOID"));
  std::sort(bases.begin(), bases.end());
  for (int i = 0; i < elements; ++i) EXPECT_EQ(bases.at(static_cast<std::size_t>(i)), i);
}

TEST(ObjectWriteTest, WithinAWriteRecordAnIdentityMetTwiceIsANewObject) {
  NewFile file;
  rom_Transporter& t = *file.t;
  cow_COW<rom_TestNode> node = NewNode(1);
  EXPECT_EQ(rom_WriteObject(t, node), rom_CidOid(kNode, 0));
  cow_COW<rom_TestNode> copy = node;
  copy.Get()->m_Id = 2;
  cls_Uid const before = copy.ConstGet()->Uid();
  {
    rom_WriteRecord const record(&t);
    EXPECT_EQ(t.WriteRecord(), &record);
    EXPECT_EQ(rom_WriteObject(t, node), rom_CidOid(kNode, 0));  // in the barn: only referred to
    cow_COW<rom_TestNode> again = node;
    again.Get()->m_Id = 3;                                        // not in the barn, written in place
    EXPECT_EQ(rom_WriteObject(t, again), rom_CidOid(kNode, 0));
    EXPECT_EQ(rom_WriteObject(t, copy), rom_CidOid(kNode, 1));    // the same identity again: a new object
    EXPECT_NE(copy.ConstGet()->Uid(), before);
    EXPECT_EQ(node.ConstGet()->Uid(), before);
  }
  EXPECT_EQ(t.WriteRecord(), nullptr);
  EXPECT_EQ(file.Int(kNode, 0, "Id"), 3);
  EXPECT_EQ(file.Int(kNode, 1, "Id"), 2);
  // Outside a record the same identity is written over its row again.
  cow_COW<rom_TestNode> later = copy;
  later.Get()->m_Id = 4;
  EXPECT_EQ(rom_WriteObject(t, later), rom_CidOid(kNode, 1));
  EXPECT_EQ(t.GetTableSize(kNode), 2);
}

TEST(ObjectWriteTest, AnIdentityOfOneClassWrittenAsAnotherRaises) {
  NewFile file;
  cow_COW<rom_TestNode> node = NewNode(1);
  rom_WriteObject(*file.t, node);
  cow_COW<rom_TestMaterial> impostor(new rom_TestMaterial);
  impostor.Get()->uid = node.ConstGet()->Uid();
  EXPECT_EQ("rom_MementoWrite::MakeWriteObjImpl - Class mismatch for UID - prev: Node, this: Material",
            zqa_TextOf<Message>([&] { rom_WriteObject(*file.t, impostor); }));
  rfm_Row listRow = file.Row(kNode, 0);
  EXPECT_EQ("rom_Transporter::MakeRefMemento - Class mismatch for UID - prev: Node, this: Material",
            zqa_TextOf<Message>([&] { file.t->MakeRefMemento(listRow, kMaterial, impostor.ConstGet()->uid); }));
  rom_PtrBarn const barn(*file.t);
  EXPECT_EQ("rom_Transporter::MakeRefMementoWithPtr - Class mismatch for UID - prev: Node, this: Material",
            zqa_TextOf<Message>([&] {
              file.t->MakeRefMementoWithPtr(listRow, kMaterial, impostor.ConstGet()->uid, impostor.ConstGet());
            }));
}

TEST(ObjectWriteTest, NullReferencesAndClassesWithoutATable) {
  NewFile file;
  rom_Transporter& t = *file.t;
  // A fresh row keeps no data for a null reference.
  cow_COW<rom_TestNode> node = NewNode(1);
  rom_WriteObject(t, node);
  EXPECT_FALSE(file.Has(kNode, 0, "Material#OID"));
  EXPECT_FALSE(file.Has(kNode, 0, "Material#ClassID"));
  // A reference that goes away is written as -1, class 1.
  cow_COW<rom_TestNode> withMaterial = node;
  withMaterial.Get()->m_Material = cow_COW<rom_TestMaterial>(new rom_TestMaterial);
  rom_WriteObject(t, withMaterial);
  EXPECT_EQ(file.Int(kNode, 0, "Material#OID"), 0);
  EXPECT_EQ(file.Int(kNode, 0, "Material#ClassID"), static_cast<int>(kMaterial));
  cow_COW<rom_TestNode> without = withMaterial;
  without.Get()->m_Material = cow_COW<rom_TestMaterial>();
  rom_WriteObject(t, without);
  EXPECT_EQ(file.Int(kNode, 0, "Material#OID"), -1);
  EXPECT_EQ(file.Int(kNode, 0, "Material#ClassID"), 1);

  // A member of a class without a table is a null reference in an object's
  // row, and keeps its class in a collection's row.
  rom_MementoWrite row(t, kNode, 0, cls_MementoWrite::kOwnedByCreator);
  cls_Uid marker;
  EXPECT_EQ(row.MakeWriteObj(kNodeMaterial, kMarker, marker, nullptr), nullptr);
  EXPECT_EQ(row.LastReference(), rom_CidOid(1, -1));
  rfm_Row collectionRow = file.Row(kNode, 0);
  EXPECT_EQ(t.MakeRefMemento(collectionRow, kMarker, marker), nullptr);
  EXPECT_EQ(collectionRow.ReadFieldInt(rfm_FieldHandle(0)), -1);
  EXPECT_EQ(collectionRow.ReadFieldInt(rfm_FieldHandle(1)), static_cast<int>(kMarker));
  EXPECT_TRUE(marker.IsNull());
  EXPECT_EQ(rom_WriteObject(t, cow_COW<rom_TestNode>()), rom_CidOid());
}

TEST(ObjectWriteTest, WithinASharedPointerOutputAnAddressIsStoredOnce) {
  NewFile file;
  rom_Transporter& t = *file.t;
  rom_TestNode const a(1, 1, 1, 1, cow_COW<rom_TestMaterial>());
  rom_TestNode const b(2, 2, 2, 2, cow_COW<rom_TestMaterial>());
  rom_MementoWrite quad(t, kQuad4, -1, cls_MementoWrite::kOwnedByCreator);
  cls_WriteVisitor const root(&quad);
  auto const writeMember = [&](cls_FieldHandle const& field, rom_TestNode const& node) {
    node.DBWrite(cls_WriteVisitor(root, field, nullptr, &node));
    return quad.LastReference();
  };
  // Outside an output an address is not remembered; identity still holds.
  EXPECT_EQ(writeMember(kQuadReference, a), rom_CidOid(kNode, 0));
  EXPECT_EQ(writeMember(kQuadReference, a), rom_CidOid(kNode, 0));
  quad.StartSharedPtrOutput();
  ASSERT_NE(t.PtrBarn(), nullptr);
  EXPECT_EQ(writeMember(kQuadReference, b), rom_CidOid(kNode, 1));
  EXPECT_TRUE(t.PtrBarn()->IsPresent(&b));
  EXPECT_EQ(writeMember(kQuadReference, b), rom_CidOid(kNode, 1));
  rfm_Row collectionRow = file.Row(kNode, 0);
  EXPECT_EQ(t.MakeRefMementoWithPtr(collectionRow, kNode, b.Uid(), &b), nullptr);
  EXPECT_EQ(collectionRow.ReadFieldInt(rfm_FieldHandle(0)), 1);
  quad.EndSharedPtrOutput();
  EXPECT_EQ(t.PtrBarn(), nullptr);
  EXPECT_EQ(t.GetTableSize(kNode), 2);
}

TEST(ObjectWriteTest, EnumerationsPersistOnlyAsText) {
  NewFile file;
  rom_MementoWrite row(*file.t, kElement, -1, cls_MementoWrite::kOwnedByCreator);
  EXPECT_EQ("rom_MementoWrite::WriteEnumAsInt - Enum persistence must use string based interface: CLS_WRITE_ENUM.",
            zqa_TextOf<Message>([&] { row.WriteEnumAsInt(cls_FieldHandle(2, "Kind"), 1); }));
  cow_COW<rom_TestHex8> hex(new rom_TestHex8);
  hex.Get()->m_Kind = rom_TestElement::Kind::kContact;
  rom_WriteObject(*file.t, hex);
  EXPECT_STREQ(file.Row(kElement, 1).ReadFieldString(rfm_FieldHandle("Kind", -1)).CStr(), "Contact");
}

TEST(ObjectWriteTest, HistoryEntriesLiveAsLongAsTheirIdentity) {
  NewFile file;
  rom_History& history = file.t->History();
  {
    cow_COW<rom_TestNode> node = NewNode(1);
    rom_WriteObject(*file.t, node);
    EXPECT_EQ(history.Size(), 1);
    EXPECT_NE(history.GetEntry(kNode, 0), nullptr);
    EXPECT_EQ(history.GetEntry(node.ConstGet()->Uid()), history.GetEntry(kNode, 0));
    // The barn still holds the value, and with it the identity.
    file.t->CowBarn().Clear();
    EXPECT_EQ(history.Size(), 1);
  }
  EXPECT_EQ(history.Size(), 0);
  cls_Uid kept;
  history.MakePermanentEntry(kept, kNode, 5);
  EXPECT_FALSE(kept.IsNull());
  kept = cls_Uid();
  EXPECT_NE(history.GetEntry(kNode, 5), nullptr);
  cls_Uid other;
  EXPECT_EQ("!m_CidOid2EntryMap.IsMember(rom_CidOid(cid, oid))",
            zqa_TextOf<Assertion>([&] { history.MakeEntry(other, kNode, 5); }));
}
}  // namespace
