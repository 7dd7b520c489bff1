// rom_UtlCopy on objects: the test model between transporter files and
// plain files, cycles of references, lone reference columns, identities.

#include "rfm_Row.h"
#include "rom_FastCopyVisitor.h"
#include "rom_HeaderLayout.h"
#include "rom_HistoryEntry.h"
#include "rom_Objects.h"
#include "rom_TestModel.h"
#include "rom_Transporter.h"
#include "rom_UtlCopy.h"
#include "rom_UtlCopyTestFiles.h"
#include "rom_UtlDatabaseRfm.h"
#include "rom_UtlDatabaseRom.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>

namespace {
using namespace rom_TestModel;

constexpr char kMagic[] = "MDL";
// Rows of Link refer to rows of their own table.
constexpr unsigned int kLink = 0x01000201;
// Tally's columns end as references' do, but each lacks its partner.
constexpr unsigned int kTally = 0x01000202;
constexpr unsigned int kModelClasses[] = {kMaterial, kNode,      kElement, kHex8, kQuad4, kNodeSet, kRomInternalListClass,
                                          kRomInternalBlobClass};

rfm_File Create(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessCreate, false); }
rfm_File ReadOnly(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessRead, false); }

rfm_FieldHandle Field(char const* name) { return rfm_FieldHandle(name, -1); }

// A source file holding a model, and the program's classes.
class UtlCopyFiles {
protected:
  UtlCopyFiles() : m_Model(Make(40, 3, 7)) {
    Register(m_Registrar);
    m_Registrar.CreateClassMD("Link", kLink, 1, nullptr, cls_kNoClass)
        .AddAttribute(cls_FieldHandle(1, "Name"), cls_AttrString)
        .AddAttribute(cls_FieldHandle(2, "Next"), cls_AttrObjectCow, kLink);
    m_Registrar.CreateClassMD("Tally", kTally, 1, nullptr, cls_kNoClass)
        .AddAttribute(cls_FieldHandle(1, "Count#OID"), cls_AttrInt)
        .AddAttribute(cls_FieldHandle(2, "Origin#ClassID"), cls_AttrInt);
    rom_Transporter source(m_Registrar, Create(m_Source), kMagic, "source", 0, -1);
    Write(source, m_Model);
    source.Flush();
  }

  // Copies every node, hex and quad in row order, so that each keeps its
  // object id.
  void CopyModel(rom_UtlCopy& copy, rom_UtlDatabase const& from) const {
    unsigned int const roots[] = {kNode, kHex8, kQuad4, kNodeSet};
    std::size_t const counts[] = {m_Model.nodes.size(), m_Model.hexes.size(), m_Model.quads.size(),
                                  m_Model.sets.size()};
    for (int i = 0; i < 4; ++i)
      for (int oid = 0; oid < static_cast<int>(counts[i]); ++oid)
        EXPECT_EQ(copy.CopyObject(roots[i], oid, from, false), oid);
  }

  zqa_TestDir m_Dir;
  cls_ClassRegistrar m_Registrar;
  Model const m_Model;
  cow_String const m_Source = m_Dir.File("source.mdl");
  cow_String const m_Target = m_Dir.File("target.mdl");
};

class UtlCopyModel : public UtlCopyFiles, public ::testing::TestWithParam<rom_CopyTarget> {};

TEST_P(UtlCopyModel, AnElementArrivesWithEachObjectItReachesOnce) {
  rom_Transporter source(m_Registrar, ReadOnly(m_Source), kMagic, -1);
  rom_Transporter target(m_Registrar, rom_CreateCopyTarget(GetParam(), m_Target), kMagic, "target", 0, -1);
  rom_UtlDatabaseRom const from(source);
  rom_UtlDatabaseRom to(target);
  rom_UtlCopy copy(to);
  int const hex = copy.CopyObject(kHex8, 3, from, false);
  EXPECT_EQ(copy.CopyObject(kHex8, 3, from, false), hex);
  rom_TestHex8 const& original = *m_Model.hexes[3].ConstGet();
  std::set<void const*> nodes, materials{original.m_Material.ConstGet()};
  for (auto const& node : original.m_Nodes) {
    nodes.insert(node.ConstGet());
    materials.insert(node.ConstGet()->m_Material.ConstGet());
  }
  EXPECT_EQ(target.GetTableSize(kHex8), 1);
  EXPECT_EQ(target.GetTableSize(kElement), 1);
  EXPECT_EQ(target.GetTableSize(kNode), static_cast<int>(nodes.size()));
  EXPECT_EQ(target.GetTableSize(kMaterial), static_cast<int>(materials.size()));
  Model expected, copied;
  expected.hexes.push_back(m_Model.hexes[3]);
  copied.hexes.push_back(rom_ReadObject<rom_TestHex8>(target, hex));
  EXPECT_EQ(Difference(expected, copied), "");
}

TEST_P(UtlCopyModel, AWholeModelReadsBackEqualAndChecksClean) {
  {
    rom_Transporter source(m_Registrar, ReadOnly(m_Source), kMagic, -1);
    rom_Transporter target(m_Registrar, rom_CreateCopyTarget(GetParam(), m_Target), kMagic, "target", 0, -1);
    rom_UtlDatabaseRom const from(source);
    rom_UtlDatabaseRom to(target);
    rom_UtlCopy copy(to);
    CopyModel(copy, from);
    for (unsigned int cid : kModelClasses) EXPECT_EQ(target.GetTableSize(cid), source.GetTableSize(cid)) << cid;
    // A reference the model leaves null reads as null through the view.
    bool sawNull = false;
    for (std::size_t oid = 0; oid < m_Model.quads.size(); ++oid) {
      bool const null = !m_Model.quads[oid].ConstGet()->m_Reference.HasValue();
      rfm_Row const row = to.Object(kQuad4, static_cast<int>(oid));
      EXPECT_EQ(to.ObjectIsPresent(row, "Reference"), !null) << oid;
      EXPECT_EQ(to.Object(row, "Reference").IsNull(), null) << oid;
      sawNull = sawNull || null;
    }
    EXPECT_TRUE(sawNull);
    target.Flush();
  }
  rom_Transporter target(m_Registrar, ReadOnly(m_Target), kMagic, -1);
  EXPECT_EQ(Difference(m_Model, Read(target)), "");
  EXPECT_EQ(rom_CheckProblems(m_Target), std::vector<std::string>());
}

TEST_P(UtlCopyModel, APlainFileViewPresentsItsCatalogueAndMakesACopyOfIt) {
  {
    rom_UtlDatabaseRfm const from(ReadOnly(m_Source));
    EXPECT_EQ(from.Index(), rom_UtlDatabaseRfm::kDefaultIndex);
    EXPECT_NE(from.Index(), rom_UtlDatabaseRom::kIndex);
    EXPECT_EQ(from.BaseClassID(kQuad4), kElement);
    EXPECT_EQ(from.BaseClassID(kNode), cls_kNoClass);
    EXPECT_EQ(from.Table(kQuad4).TableMetadata().TableName(), "Quad4");
    EXPECT_EQ(from.Table(kNode).Length(), static_cast<int>(m_Model.nodes.size()));
    std::string const unknown = rom_RaisedText([&from] { from.Table(0x0BADC1A5u); });
    EXPECT_NE(unknown.find(m_Source.CStr()), std::string::npos) << unknown;

    rom_UtlDatabaseRfm to(rom_CreateCopyTarget(GetParam(), m_Target), kMagic, from);
    for (unsigned int cid : kModelClasses) {
      EXPECT_EQ(to.Table(cid).Length(), 0);
      EXPECT_EQ(to.BaseClassID(cid), from.BaseClassID(cid));
    }
    rom_UtlCopy copy(to);
    CopyModel(copy, from);
    to.Flush();
  }
  rom_Transporter target(m_Registrar, ReadOnly(m_Target), kMagic, -1);
  EXPECT_EQ(Difference(m_Model, Read(target)), "");
  EXPECT_EQ(rom_CheckProblems(m_Target), std::vector<std::string>());
}

INSTANTIATE_TEST_SUITE_P(Targets, UtlCopyModel, ::testing::Values(rom_CopyTarget::kPlain, rom_CopyTarget::kCompressed),
                         [](auto const& info) { return rom_CopyTargetName(info.param); });

// Source and target transporters over the model's file and a new one.
class UtlCopyRows : public UtlCopyFiles, public ::testing::Test {
protected:
  UtlCopyRows()
      : m_From(new rom_Transporter(m_Registrar, rfm_File::Open(m_Source, utl_FileAccessUpdate, false), kMagic, -1)),
        m_To(new rom_Transporter(m_Registrar, Create(m_Target), kMagic, "target", 0, -1)),
        m_FromView(*m_From),
        m_ToView(*m_To) {}

  // A new row of class cid in the source.
  rfm_Row NewSourceRow(unsigned int cid) const { return m_From->GetClassBagForWrite(cid).Table().NewRow(); }

  std::unique_ptr<rom_Transporter> m_From;
  std::unique_ptr<rom_Transporter> m_To;
  rom_UtlDatabaseRom m_FromView;
  rom_UtlDatabaseRom m_ToView;
};

void WriteLink(rfm_Row const& row, char const* name, unsigned int cid, int oid) {
  row.WriteFieldString(Field("Name"), name);
  row.WriteFieldInt(Field("Next#OID"), oid);
  row.WriteFieldInt(Field("Next#ClassID"), static_cast<int>(cid));
}

TEST_F(UtlCopyRows, ACycleOfReferencesEndsWithEachRowCopiedOnce) {
  WriteLink(NewSourceRow(kLink), "a", kLink, 1);
  WriteLink(NewSourceRow(kLink), "b", kLink, 0);
  WriteLink(NewSourceRow(kLink), "self", kLink, 2);
  WriteLink(NewSourceRow(kLink), "end", cls_kNoClass, -1);
  rom_UtlCopy copy(m_ToView);
  int const a = copy.CopyObject(kLink, 0, m_FromView, false);
  EXPECT_EQ(m_To->GetTableSize(kLink), 2);
  rfm_Row const b = m_ToView.Object(m_ToView.Object(kLink, a), "Next");
  EXPECT_EQ(b.ReadFieldString(Field("Name")), "b");
  EXPECT_EQ(m_ToView.Object(b, "Next").Location(), a);
  EXPECT_EQ(copy.CopyObject(kLink, 1, m_FromView, false), b.Location());

  int const self = copy.CopyObject(kLink, 2, m_FromView, false);
  EXPECT_EQ(m_ToView.Object(m_ToView.Object(kLink, self), "Next").Location(), self);
  EXPECT_EQ(m_To->GetTableSize(kLink), 3);

  // A stored null reference stays the stored null reference.
  rfm_Row const end = m_ToView.Object(kLink, copy.CopyObject(kLink, 3, m_FromView, false));
  EXPECT_EQ(m_To->GetTableSize(kLink), 4);
  EXPECT_FALSE(m_ToView.ObjectIsPresent(end, "Next"));
  EXPECT_EQ(end.ReadFieldInt(Field("Next#ClassID")), static_cast<int>(cls_kNoClass));
  EXPECT_EQ(end.ReadFieldInt(Field("Next#OID")), -1);
}

TEST_F(UtlCopyRows, ColumnsNamedLikeHalfAReferenceCopyAsNumbers) {
  rfm_Row const row = NewSourceRow(kTally);
  row.WriteFieldInt(Field("Count#OID"), 7);
  row.WriteFieldInt(Field("Origin#ClassID"), static_cast<int>(kNode));
  rom_UtlCopy copy(m_ToView);
  rfm_Row const copied = m_ToView.Object(kTally, copy.CopyObject(kTally, 0, m_FromView, false));
  EXPECT_EQ(copied.ReadFieldInt(Field("Count#OID")), 7);
  EXPECT_EQ(copied.ReadFieldInt(Field("Origin#ClassID")), static_cast<int>(kNode));
  EXPECT_FALSE(m_To->Database().HasTable("Node"));
}

TEST_F(UtlCopyRows, BadRowsRaiseNamingTheFile) {
  WriteLink(NewSourceRow(kLink), "dangling", kLink, 99);
  WriteLink(NewSourceRow(kLink), "unknown", 0x0BADC1A5u, 0);
  // Row 2 is past the table's end itself.
  for (int oid : {0, 1, 2}) {
    rom_UtlCopy copy(m_ToView);
    std::string const raised = rom_RaisedText([&] { copy.CopyObject(kLink, oid, m_FromView, false); });
    EXPECT_NE(raised.find(m_Source.CStr()), std::string::npos) << raised;
    EXPECT_NE(raised.find(oid == 1 ? "0BADC1A5" : oid == 0 ? "99" : " 2 "), std::string::npos) << raised;
  }
}

TEST_F(UtlCopyRows, AnObjectTheTargetKnowsIsNotCopiedAgain) {
  auto const hex = rom_ReadObject<rom_TestHex8>(*m_From, 2);
  rom_CidOid const written = rom_WriteObject(*m_To, hex);
  // A node that the hex does not reach, whose identity both know, the
  // target at a row of its own. Node ids are their rows plus one.
  std::set<int> reached;
  for (auto const& corner : hex.ConstGet()->m_Nodes) reached.insert(corner.ConstGet()->m_Id - 1);
  int other = 0;
  while (reached.count(other) != 0) ++other;
  cls_Uid const node = m_From->History().RowIdentity(kNode, other);
  int const known = m_To->GetClassBagForWrite(kNode).Table().NewRow().Location();
  m_To->History().MakeEntry(node, kNode, known);
  int const nodes = m_To->GetTableSize(kNode);
  // A mark in the target's row of the hex's base part, which a copy would
  // write over.
  int const base = m_ToView.Object(kHex8, written.m_Oid).ReadFieldInt(Field("##BaseClassOID"));
  m_ToView.UpdateObject(kElement, base).WriteFieldInt(Field("Id"), -99);

  rom_FastCopyVisitor visitor(*m_From, *m_To);
  rom_UtlCopy copy(m_ToView);
  copy.SetVisitor(&visitor);
  EXPECT_EQ(copy.CopyObject(kHex8, 2, m_FromView, false), written.m_Oid);
  EXPECT_EQ(copy.CopyObject(kNode, other, m_FromView, false), known);
  EXPECT_EQ(m_To->GetTableSize(kHex8), 1);
  EXPECT_EQ(m_To->GetTableSize(kNode), nodes);
  EXPECT_EQ(m_ToView.Object(kElement, base).ReadFieldInt(Field("Id")), -99);
}

TEST_F(UtlCopyRows, AnObjectInTheSourceBarnIsWrittenFromItsValue) {
  auto const hex = rom_ReadObject<rom_TestHex8>(*m_From, 4);
  rom_FastCopyVisitor visitor(*m_From, *m_To);
  rom_UtlCopy copy(m_ToView);
  copy.SetVisitor(&visitor);
  int const copied = copy.CopyObject(kHex8, 4, m_FromView, false);
  EXPECT_GE(copied, 0);
  EXPECT_EQ(m_To->GetTableSize(kHex8), 1);
  rom_HistoryEntry const* entry = m_To->History().GetEntry(hex.ConstGet()->Uid());
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->Row(), rom_CidOid(kHex8, copied));
  // The target hands out the very value, and a second copy finds it.
  EXPECT_EQ(rom_ReadObject<rom_TestHex8>(*m_To, copied).ConstGet(), hex.ConstGet());
  rom_UtlCopy again(m_ToView);
  again.SetVisitor(&visitor);
  EXPECT_EQ(again.CopyObject(kHex8, 4, m_FromView, false), copied);
  EXPECT_EQ(m_To->GetTableSize(kHex8), 1);

  // A value whose identity has a row in the target, though not in its
  // barn, is written to that row.
  auto const other = rom_ReadObject<rom_TestHex8>(*m_From, 5);
  int const row = m_To->GetClassBagForWrite(kHex8).Table().NewRow().Location();
  m_To->History().MakeEntry(other.ConstGet()->Uid(), kHex8, row);
  EXPECT_EQ(copy.CopyObject(kHex8, 5, m_FromView, false), row);
  EXPECT_EQ(m_To->GetTableSize(kHex8), 2);
  EXPECT_TRUE(m_ToView.Object(kHex8, row).DataIsPresent(Field("##BaseClassOID")));
}

TEST_F(UtlCopyRows, ARowCopyTakesTheIdentityAlong) {
  rom_FastCopyVisitor visitor(*m_From, *m_To);
  rom_UtlCopy copy(m_ToView);
  copy.SetVisitor(&visitor);
  int const copied = copy.CopyObject(kNode, 11, m_FromView, false);
  rom_HistoryEntry const* source = m_From->History().GetEntry(kNode, 11);
  ASSERT_NE(source, nullptr);
  rom_HistoryEntry const* target = m_To->History().GetEntry(source->GetUid());
  ASSERT_NE(target, nullptr);
  EXPECT_EQ(target->Row(), rom_CidOid(kNode, copied));
  int const rows = m_To->GetTableSize(kNode) + m_To->GetTableSize(kMaterial);
  rom_UtlCopy again(m_ToView);
  again.SetVisitor(&visitor);
  EXPECT_EQ(again.CopyObject(kNode, 11, m_FromView, false), copied);
  EXPECT_EQ(m_To->GetTableSize(kNode) + m_To->GetTableSize(kMaterial), rows);
}
}  // namespace
