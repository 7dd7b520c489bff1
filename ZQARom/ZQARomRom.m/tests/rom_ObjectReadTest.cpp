#include "atr_String.h"
#include "cls_CowDtor.h"
#include "cls_Static.h"
#include "nex_PrimException.h"
#include "rom_CowBarn.h"
#include "rom_HistoryEntry.h"
#include "rom_MementoRead.h"
#include "rom_MementoWrite.h"
#include "rom_Objects.h"
#include "rom_PtrBarn.h"
#include "rom_TestModel.h"
#include "rom_Transporter.h"
#include "zqa_TestDir.h"
#include "zqa_TextOf.h"

#include <gtest/gtest.h>

#include <memory>

namespace {
using namespace rom_TestModel;
using Message = nex_PrimException<atr_String, 1>;

cls_FieldHandle const kQuadReference(21, "Reference");

// An object that refers to another of its class: a chain, or, written by
// hand, a cycle. Phantom derives from it and cannot be built.
class Link {
public:
  static constexpr unsigned int kClassId = 0x01000181;
  static constexpr unsigned int kPhantom = 0x01000182;
  static inline cls_FieldHandle const kNext{1, "Next"};
  Link() = default;
  explicit Link(cls_ReadVisitor const& visitor)
      : m_Next(visitor.ReadObjCow<Link>(kNext)), m_Uid(visitor.GetUid()) {}
  void DBWrite(cls_WriteVisitor const& visitor) const {
    if (!visitor.StartWrite(kClassId, m_Uid)) return;
    visitor.WriteObj(kNext, m_Next);
  }
  static void Register(cls_ClassRegistrar& registrar) {
    registrar.Register<Link>("Link", kClassId, 1, cls_kNoClass)
        .AddAttribute(kNext, cls_AttrObjectCow, kClassId)
        .AddDtor(&cls_CowDtor<Link>);
    registrar.CreateClassMD("Phantom", kPhantom, 1, nullptr, kClassId);
  }
  cow_COW<Link> m_Next;

private:
  cls_Uid m_Uid;
};

// A file holding Make(40, 3, 9), open read-only.
struct ModelFile {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  Model model;
  std::unique_ptr<rom_Transporter> t;
  ModelFile() {
    Register(registrar);
    Link::Register(registrar);
    model = Make(40, 3, 9);
    {
      rom_Transporter writer(registrar, rfm_File::Open(dir.File("r.mdl"), utl_FileAccessCreate, false), "MDL",
                             "objects", 0, -1);
      Write(writer, model);
      cow_COW<Link> chain(new Link);
      chain.Get()->m_Next = cow_COW<Link>(new Link);
      rom_WriteObject(writer, chain);
      // Link 1 (chain's next) made to refer to itself; a phantom's row.
      rom_MementoWrite(writer, Link::kClassId, 1, cls_MementoWrite::kOwnedByCreator).Write(Link::kNext, Link::kClassId, 1);
      writer.GetClassBagForWrite(Link::kPhantom).Table().NewRow().WriteFieldInt(rfm_FieldHandle(0), -1);
      rom_MementoWrite(writer, Link::kClassId, 0, cls_MementoWrite::kOwnedByCreator).Write(Link::kNext, Link::kPhantom, 0);
      rom_WriteObject(writer, cow_COW<Link>(new Link));
      rom_MementoWrite(writer, Link::kClassId, 2, cls_MementoWrite::kOwnedByCreator).Write(Link::kNext, Link::kClassId, 1);
      writer.Flush();
    }
    t = std::make_unique<rom_Transporter>(registrar, rfm_File::Open(dir.File("r.mdl"), utl_FileAccessRead, false),
                                          "MDL", -1);
  }
};

TEST(ObjectReadTest, AStoredObjectIsOneValuePerTransporter) {
  ModelFile file;
  rom_Transporter& t = *file.t;
  cow_COW<rom_TestHex8> const hex = rom_ReadObject<rom_TestHex8>(t, 0);
  cow_COW<rom_TestNode> const& first = hex.ConstGet()->m_Nodes[0];
  int const stalls = t.CowBarn().Size();
  // Read again, as a root or through another reference: the same value.
  EXPECT_TRUE(rom_ReadObject<rom_TestHex8>(t, 0).Identical(hex));
  int oid = -1;
  for (int i = 0; i < 40; ++i)
    if (file.model.nodes[static_cast<std::size_t>(i)].ConstGet()->m_Id == first.ConstGet()->m_Id) oid = i;
  EXPECT_TRUE(rom_ReadObject<rom_TestNode>(t, oid).Identical(first));
  EXPECT_EQ(t.CowBarn().Size(), stalls);
  // The barn's value shares the application's count: the barn holds one.
  EXPECT_EQ(t.CowBarn().Stall(kHex8, 0)->Value().ReferenceCount(), 2);
  // The element's base part came with it, under its own identity.
  EXPECT_FALSE(hex.ConstGet()->ElementUid().IsNull());
  EXPECT_NE(hex.ConstGet()->ElementUid(), hex.ConstGet()->Uid());
  EXPECT_EQ(hex.ConstGet()->Uid(), t.History().GetEntry(kHex8, 0)->GetUid());
}

TEST(ObjectReadTest, RowsOutsideTheTableAndWrongClassesRaise) {
  ModelFile file;
  rom_Transporter& t = *file.t;
  EXPECT_EQ("rom_MementoRead::rom_MementoRead - Object is not available in DB file: Node[40]",
            zqa_TextOf<Message>([&] { rom_ReadObject<rom_TestNode>(t, 40); }));
  EXPECT_EQ(rom_ReadObject<rom_TestNode>(t, 39).ConstGet()->m_Id, 40);
  EXPECT_FALSE(rom_ReadObject<rom_TestNode>(t, rom_CidOid()).HasValue());
  // The stored class must derive from the one asked for: checked before any row.
  EXPECT_EQ("Inheritence error: class Hex8 (01000104) is not a derived type of base class Node (01000102)\n",
            zqa_TextOf<Message>([&] { rom_ReadObject<rom_TestNode>(t, rom_CidOid(kHex8, 1000)); }));
  EXPECT_EQ("rom_MementoRead::ReadEnumAsInt - Enum persistence must use string based interface: CLS_READ_ENUM.",
            zqa_TextOf<Message>([&] { rom_MementoRead(t, kElement, 0, cls_Uid()).ReadEnumAsInt(cls_FieldHandle(2, "Kind")); }));
}

TEST(ObjectReadTest, NullReferencesReadAsNothing) {
  ModelFile file;
  rom_Transporter& t = *file.t;
  int nulls = 0;
  for (int oid = 0; oid < t.GetTableSize(kQuad4); ++oid) {
    bool const expected = !file.model.quads[static_cast<std::size_t>(oid)].ConstGet()->m_Reference.HasValue();
    rom_MementoRead row(t, kQuad4, oid, cls_Uid());
    EXPECT_EQ(row.ObjIsPresent(kQuadReference), !expected);
    std::unique_ptr<rom_TestNode> const built(static_cast<rom_TestNode*>(row.ReadObjPtr(kQuadReference, kNode)));
    EXPECT_EQ(built == nullptr, expected);
    if (!expected) continue;
    ++nulls;
    EXPECT_FALSE(row.ReadObjCow(kQuadReference, kNode).HasValue());
    EXPECT_EQ("rom_MementoRead::MakeReadObj - Object is not available in DB file: Reference",
              zqa_TextOf<Message>([&] { row.MakeReadObj(kQuadReference); }));
  }
  EXPECT_GT(nulls, 0);
}

TEST(ObjectReadTest, PointerBarnsGiveOneAddressPerObjectWithinTheirScope) {
  ModelFile file;
  rom_Transporter& t = *file.t;
  std::unique_ptr<rom_TestNode> const a(static_cast<rom_TestNode*>(t.CheckReadObjPtr(3, kNode, kNode)));
  std::unique_ptr<rom_TestNode> const b(static_cast<rom_TestNode*>(t.CheckReadObjPtr(3, kNode, kNode)));
  EXPECT_NE(a.get(), b.get());
  EXPECT_EQ(a->m_Id, b->m_Id);
  {
    rom_PtrBarn const outer(t);
    std::unique_ptr<rom_TestNode> const c(static_cast<rom_TestNode*>(t.CheckReadObjPtr(3, kNode, kNode)));
    EXPECT_EQ(t.CheckReadObjPtr(3, kNode, kNode), c.get());
    {
      rom_PtrBarn const inner(t);
      EXPECT_EQ(t.PtrBarn(), &inner);
      EXPECT_FALSE(inner.IsPresent(kNode, 3));
    }
    EXPECT_EQ(t.PtrBarn(), &outer);
    EXPECT_TRUE(outer.IsPresent(c.get()));
  }
  EXPECT_EQ(t.PtrBarn(), nullptr);
}

TEST(ObjectReadTest, ReferenceCyclesAndClassesThatBuildNothingRaise) {
  ModelFile file;
  rom_Transporter& t = *file.t;
  EXPECT_EQ("rom_Transporter::ReallyReadObjPtr - Object Link[1] in " + std::string(file.dir.File("r.mdl").CStr()) +
                " refers back to itself through its members: a cycle of references cannot be read.",
            zqa_TextOf<Message>([&] { rom_ReadObject<Link>(t, 2); }));
  EXPECT_EQ(t.CowBarn().Stall(Link::kClassId, 1), nullptr);
  testing::internal::CaptureStderr();
  EXPECT_EQ("rom_MementoRead::ReadObjCow - Cow construction failure in class Phantom",
            zqa_TextOf<Message>([&] { rom_ReadObject<Link>(t, 0); }));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "rom_MementoRead::ReadObjCow - Cow construction failure in class Phantom\n");
}

// A value whose end reports to the barn, as an object's destructor might.
struct Holder {
  static constexpr unsigned int kClassId = 0x01000183;
  cow_COW<Holder> inner;
  rom_CowBarn* barn = nullptr;
  bool* insertedWhileCleaning = nullptr;
  ~Holder() {
    if (barn != nullptr)
      *insertedWhileCleaning = barn->Insert(99, 99, cls_CowValue(cow_COW<Holder>(new Holder)), *metadata).HasValue();
  }
  static inline cls_ClassMetadata const* metadata = nullptr;
};

TEST(ObjectReadTest, TheCowBarnKeepsEachAddressAndRowOnceAndCleansWhatOnlyItHolds) {
  cls_ClassRegistrar registrar;
  cls_ClassMetadata& md =
      registrar.CreateClassMD("Holder", Holder::kClassId, 1, nullptr, cls_kNoClass).AddDtor(&cls_CowDtor<Holder>);
  Holder::metadata = &md;
  rom_CowBarn barn;
  cow_COW<Holder> a(new Holder), b(new Holder);
  barn.Insert(1, 0, cls_CowValue(a), md);
  barn.Insert(1, 1, cls_CowValue(b), md);
  // The same address under a new row leaves its old row; a row taken by
  // another address leaves that address.
  barn.Insert(1, 2, cls_CowValue(a), md);
  EXPECT_FALSE(barn.IsPresent(1, 0));
  EXPECT_EQ(barn.Stall(cls_CowValue(a))->Row(), rom_CidOid(1, 2));
  barn.Insert(1, 1, cls_CowValue(a), md);
  EXPECT_FALSE(barn.IsPresent(cls_CowValue(b)));
  EXPECT_FALSE(barn.IsPresent(1, 2));
  EXPECT_EQ(barn.Size(), 1);

  // A chain only the barn holds is cleaned link by link; inserts meanwhile
  // keep nothing.
  bool insertedWhileCleaning = true;
  cow_COW<Holder> outer(new Holder);
  outer.Get()->inner = b;
  outer.Get()->barn = &barn;
  outer.Get()->insertedWhileCleaning = &insertedWhileCleaning;
  barn.Insert(2, 0, cls_CowValue(outer), md);
  barn.Insert(2, 1, cls_CowValue(b), md);
  outer = cow_COW<Holder>();
  b = cow_COW<Holder>();
  barn.CleanStalls();
  EXPECT_FALSE(insertedWhileCleaning);
  EXPECT_EQ(barn.Size(), 1);
  EXPECT_TRUE(barn.IsPresent(cls_CowValue(a)));
  a = cow_COW<Holder>();
  barn.CleanStalls();
  EXPECT_EQ(barn.Size(), 0);
}
}  // namespace

namespace {
TEST(ObjectReadTest, ACircleOfBaseClassesInTheProgramsMetadataRaisesInsteadOfLooping) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  registrar.CreateClassMD("Chicken", 0x01000191, 1, nullptr, 0x01000192);
  registrar.CreateClassMD("Egg", 0x01000192, 1, nullptr, 0x01000191);
  rom_Transporter t(registrar, rfm_File::Open(dir.File("c.mdl"), utl_FileAccessCreate, false), "MDL", "", 0, -1);
  std::string const circle =
      "rom_Transporter - The base classes of class Chicken (01000191) form a circle in the program's class metadata.";
  EXPECT_EQ(circle, zqa_TextOf<Message>([&] { t.CheckInheritence(0x01000191, 0x01000193); }));
  EXPECT_EQ(circle, zqa_TextOf<Message>([&] { t.FindMDWithDtor(0x01000191); }));
}
}  // namespace
