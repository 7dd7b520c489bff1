// Lazily held objects: owners whose cls_Lazy members are read as proxies,
// loaded on request, and written back into their own file or into another
// one as copies of their rows.

#include "cls_Lazy.h"
#include "cls_Persistent.h"
#include "cls_Static.h"
#include "cls_StorageType.h"
#include "rfm_Row.h"
#include "rom_AgentProxy.h"
#include "rom_HistoryEntry.h"
#include "rom_MementoRead.h"
#include "rom_MementoWrite.h"
#include "rom_Objects.h"
#include "rom_StorageTypeTag.h"
#include "rom_Transporter.h"
#include "rom_UtlCopyTestFiles.h"
#include "rom_UtlDatabaseRom.h"
#include "rom_WIPInterface.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {
constexpr char kMagic[] = "LAZY";

// The lazily held class. Counts the objects built, to show what a read
// builds.
struct Leaf {
  static constexpr unsigned int kClassId = 0x01000301;
  static inline int s_Built = 0;
  Leaf() { ++s_Built; }
  cls_Uid uid;
  int id = 0;
  cow_COW<Leaf> next;
};

struct Holder {
  static constexpr unsigned int kClassId = 0x01000302;
  cls_Uid uid;
  int id = 0;
  cls_Lazy<Leaf> leaf;
  cls_Lazy<Leaf> spare;
};

// Holder as a program that reads its references at once declares it.
struct EagerHolder {
  static constexpr unsigned int kClassId = Holder::kClassId;
  cls_Uid uid;
  int id = 0;
  cow_COW<Leaf> leaf;
  cow_COW<Leaf> spare;
};

// An abstract kind of leaf: a table, but no constructor.
constexpr unsigned int kSketch = 0x01000303;

cls_FieldHandle const kLeafField(2, "Leaf");
cls_FieldHandle const kSpareField(3, "Spare");

void RegisterLeaf(cls_ClassRegistrar& registrar) {
  cls_Persistent<Leaf>("Leaf", Leaf::kClassId, 1)
      .Identity(&Leaf::uid)
      .Member(1, "Id", &Leaf::id)
      .Member(2, "Next", &Leaf::next)
      .Register(registrar);
}

void RegisterLazy(cls_ClassRegistrar& registrar) {
  RegisterLeaf(registrar);
  cls_Persistent<Holder>("Holder", Holder::kClassId, 1)
      .Identity(&Holder::uid)
      .Member(1, "Id", &Holder::id)
      .Member(kLeafField.FieldId(), kLeafField.Name(), &Holder::leaf)
      .Member(kSpareField.FieldId(), kSpareField.Name(), &Holder::spare)
      .Register(registrar);
  registrar.CreateClassMD("Sketch", kSketch, 1, nullptr, Leaf::kClassId)
      .AddAttribute(cls_FieldHandle(1, "Note"), cls_AttrInt);
}

void RegisterEager(cls_ClassRegistrar& registrar) {
  RegisterLeaf(registrar);
  cls_Persistent<EagerHolder>("Holder", EagerHolder::kClassId, 1)
      .Identity(&EagerHolder::uid)
      .Member(1, "Id", &EagerHolder::id)
      .Member(kLeafField.FieldId(), kLeafField.Name(), &EagerHolder::leaf)
      .Member(kSpareField.FieldId(), kSpareField.Name(), &EagerHolder::spare)
      .Register(registrar);
}

rfm_File Create(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessCreate, false); }
rfm_File ReadOnly(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessRead, false); }
rfm_File Update(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessUpdate, false); }

cow_COW<Leaf> MakeLeaf(int id, cow_COW<Leaf> const& next = cow_COW<Leaf>()) {
  cow_COW<Leaf> leaf(new Leaf);
  leaf.Get()->id = id;
  leaf.Get()->next = next;
  return leaf;
}

template <class H, class L>
cow_COW<H> MakeHolder(int id, L const& leaf, L const& spare) {
  cow_COW<H> holder(new H);
  holder.Get()->id = id;
  holder.Get()->leaf = leaf;
  holder.Get()->spare = spare;
  return holder;
}

// The rows of the sample file.
constexpr int kLeafL = 0;  // id 1, refers to M
constexpr int kLeafM = 1;  // id 2
constexpr int kLeafN = 2;  // id 3
constexpr int kHolders = 3;

int LeafId(cls_Lazy<Leaf> const& lazy) { return lazy.Get().ConstGet()->id; }

// A progress hook that counts.
class CountingProgress : public rom_WIPInterface {
public:
  void BeginLoad() override { ++m_Begun; }
  void EndLoad() override { ++m_Ended; }
  int m_Begun = 0;
  int m_Ended = 0;
};

class Proxy : public ::testing::Test {
protected:
  // Holder 0 holds L (which refers to M) and no spare; holder 1 holds L
  // too and N as its spare; holder 2 holds nothing. Written by a program
  // that holds its references as cls_Lazy values.
  Proxy() {
    RegisterLazy(m_Registrar);
    rom_Transporter t(m_Registrar, Create(m_Source), kMagic, "source", 0, -1);
    cow_COW<Leaf> const l = MakeLeaf(1, MakeLeaf(2));
    cls_Lazy<Leaf> const none;
    rom_WriteObject(t, MakeHolder<Holder, cls_Lazy<Leaf>>(10, l, none));
    rom_WriteObject(t, MakeHolder<Holder, cls_Lazy<Leaf>>(11, l, MakeLeaf(3)));
    rom_WriteObject(t, MakeHolder<Holder, cls_Lazy<Leaf>>(12, none, none));
    t.Flush();
  }

  static std::vector<cow_COW<Holder>> ReadHolders(rom_Transporter& t) {
    std::vector<cow_COW<Holder>> holders;
    for (int oid = 0; oid < kHolders; ++oid) holders.push_back(rom_ReadObject<Holder>(t, oid));
    return holders;
  }

  // Writes value into column of row oid of class cid, in place; a negative
  // oid is a new row.
  void Damage(unsigned int cid, int oid, char const* column, int value) const {
    rom_Transporter t(m_Registrar, Update(m_Source), kMagic, -1);
    rfm_Table const& table = t.GetClassBagForWrite(cid).Table();
    (oid < 0 ? table.NewRow() : table.UpdateRow(oid)).WriteFieldInt(rfm_FieldHandle(column, -1), value);
    t.Flush();
  }

  zqa_TestDir m_Dir;
  cls_ClassRegistrar m_Registrar;
  cow_String const m_Source = m_Dir.File("source.lzy");
  cow_String const m_Target = m_Dir.File("target.lzy");
};

TEST_F(Proxy, ReadingAnOwnerBuildsNoneOfItsLazyObjectsAndGetLoadsEachOnceForAllCopies) {
  rom_Transporter t(m_Registrar, ReadOnly(m_Source), kMagic, -1);
  Leaf::s_Built = 0;
  std::vector<cow_COW<Holder>> const holders = ReadHolders(t);
  EXPECT_EQ(Leaf::s_Built, 0);
  Holder const& first = *holders[0].ConstGet();
  Holder const& second = *holders[1].ConstGet();
  EXPECT_TRUE(first.leaf.HasValue());
  EXPECT_FALSE(first.leaf.IsLoaded());

  cls_Lazy<Leaf> const copy = first.leaf;
  EXPECT_EQ(LeafId(copy), 1);
  // L and the M it holds at once.
  EXPECT_EQ(Leaf::s_Built, 2);
  EXPECT_TRUE(first.leaf.IsLoaded());
  EXPECT_EQ(&first.leaf.Get(), &copy.Get());
  // The other holder's proxy of the same row finds it in the file's cache.
  EXPECT_TRUE(second.leaf.IsLoaded());
  EXPECT_EQ(second.leaf.Get().ConstGet(), copy.Get().ConstGet());
  EXPECT_EQ(Leaf::s_Built, 2);
  EXPECT_FALSE(second.spare.IsLoaded());
  EXPECT_EQ(LeafId(second.spare), 3);
  EXPECT_EQ(Leaf::s_Built, 3);

  // Null references: no value, loaded, nothing to build.
  for (cls_Lazy<Leaf> const& none : {first.spare, holders[2].ConstGet()->leaf}) {
    EXPECT_FALSE(none.HasValue());
    EXPECT_TRUE(none.IsLoaded());
    EXPECT_FALSE(none.Get().HasValue());
    EXPECT_TRUE(none.Uid().IsNull());
  }
}

TEST_F(Proxy, AnIdentityIsKnownWithoutLoadingAndIsTheLoadedObjectsOwn) {
  rom_Transporter t(m_Registrar, ReadOnly(m_Source), kMagic, -1);
  Leaf::s_Built = 0;
  std::vector<cow_COW<Holder>> const holders = ReadHolders(t);
  Holder const& first = *holders[0].ConstGet();
  cls_Uid const uid = first.leaf.Uid();
  EXPECT_FALSE(uid.IsNull());
  EXPECT_EQ(Leaf::s_Built, 0);
  // Another proxy of the same row, and the object read by the file itself.
  EXPECT_EQ(holders[1].ConstGet()->leaf.Uid(), uid);
  EXPECT_EQ(first.leaf.Get().ConstGet()->uid, uid);
  EXPECT_EQ(rom_ReadObject<Leaf>(t, kLeafL).ConstGet()->uid, uid);
  EXPECT_EQ(first.leaf.Uid(), uid);

  // An object read before its proxy is asked gives the proxy its identity.
  cls_Uid const spare = rom_ReadObject<Leaf>(t, kLeafN).ConstGet()->uid;
  EXPECT_EQ(holders[1].ConstGet()->spare.Uid(), spare);
}

TEST_F(Proxy, AnIdentityPromisedWithoutAnObjectLastsAsLongAsItsFile) {
  rom_Transporter t(m_Registrar, ReadOnly(m_Source), kMagic, -1);
  rom_MementoRead owner(t, Leaf::kClassId, kLeafL, cls_Uid());
  std::unique_ptr<cls_AgentProxy> next(owner.MakeAgentProxy(cls_FieldHandle(2, "Next"), Leaf::kClassId));
  // No Uid names the identity once this one goes; the file keeps it.
  void const* promised = next->GetUid().CatalogEntry();
  rom_HistoryEntry const* entry = t.History().GetEntry(Leaf::kClassId, kLeafM);
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->GetUid().CatalogEntry(), promised);
  EXPECT_EQ(next->GetUid().CatalogEntry(), promised);
  Leaf::s_Built = 0;
  EXPECT_EQ(rom_ReadObject<Leaf>(t, kLeafM).ConstGet()->uid.CatalogEntry(), promised);
  EXPECT_EQ(Leaf::s_Built, 1);
}

TEST_F(Proxy, LoadingTellsTheProgressHookAndEndsItAlsoWhenLoadingRaises) {
  // N's Next names a row past the end of its table; holder 2's leaf is a
  // sketch, which nothing can build.
  Damage(Leaf::kClassId, kLeafN, "Next#OID", 99);
  Damage(Leaf::kClassId, kLeafN, "Next#ClassID", static_cast<int>(Leaf::kClassId));
  Damage(kSketch, -1, "Note", 7);
  Damage(Holder::kClassId, 2, "Leaf#OID", 0);
  Damage(Holder::kClassId, 2, "Leaf#ClassID", static_cast<int>(kSketch));
  rom_Transporter t(m_Registrar, ReadOnly(m_Source), kMagic, -1);
  CountingProgress progress;
  t.SetWIPInterface(&progress);
  std::vector<cow_COW<Holder>> const holders = ReadHolders(t);
  EXPECT_EQ(LeafId(holders[0].ConstGet()->leaf), 1);
  EXPECT_EQ(progress.m_Begun, 1);
  EXPECT_EQ(progress.m_Ended, 1);
  // Found in the cache, and still told as a load.
  EXPECT_EQ(LeafId(holders[1].ConstGet()->leaf), 1);
  EXPECT_EQ(progress.m_Begun, 2);
  EXPECT_EQ(progress.m_Ended, 2);

  cls_Lazy<Leaf> const& damaged = holders[1].ConstGet()->spare;
  for (int attempt = 1; attempt <= 2; ++attempt) {
    std::string const raised = rom_RaisedText([&damaged] { damaged.Get(); });
    EXPECT_NE(raised.find("Object is not available in DB file"), std::string::npos) << raised;
    EXPECT_EQ(progress.m_Begun, 2 + attempt);
    EXPECT_EQ(progress.m_Ended, 2 + attempt);
    EXPECT_FALSE(damaged.IsLoaded());
    // The load's pointer barn is gone with it.
    EXPECT_EQ(t.PtrBarn(), nullptr);
  }
  cls_Lazy<Leaf> const& sketch = holders[2].ConstGet()->leaf;
  EXPECT_TRUE(sketch.HasValue());
  std::string const raised = rom_RaisedText([&sketch] { sketch.Get(); });
  EXPECT_NE(raised.find("Cow construction failure in class Sketch"), std::string::npos) << raised;
  EXPECT_EQ(progress.m_Begun, 5);
  EXPECT_EQ(progress.m_Ended, 5);
  t.SetWIPInterface(nullptr);
}

TEST_F(Proxy, AnOwnerWrittenBackIntoItsOwnFileKeepsItsReferencesWithoutLoadingThem) {
  {
    rom_Transporter t(m_Registrar, Update(m_Source), kMagic, -1);
    Leaf::s_Built = 0;
    std::vector<cow_COW<Holder>> holders = ReadHolders(t);
    for (cow_COW<Holder>& holder : holders) {
      holder.Get()->id += 100;
      rom_WriteObject(t, holder);
    }
    EXPECT_EQ(Leaf::s_Built, 0);
    EXPECT_EQ(t.GetTableSize(Holder::kClassId), kHolders);
    EXPECT_EQ(t.GetTableSize(Leaf::kClassId), 3);
    t.Flush();
  }
  rom_Transporter t(m_Registrar, ReadOnly(m_Source), kMagic, -1);
  std::vector<cow_COW<Holder>> const holders = ReadHolders(t);
  EXPECT_EQ(holders[0].ConstGet()->id, 110);
  EXPECT_EQ(LeafId(holders[0].ConstGet()->leaf), 1);
  EXPECT_EQ(holders[1].ConstGet()->leaf.Get().ConstGet(), holders[0].ConstGet()->leaf.Get().ConstGet());
  EXPECT_EQ(LeafId(holders[1].ConstGet()->spare), 3);
  EXPECT_FALSE(holders[0].ConstGet()->spare.HasValue());
  EXPECT_FALSE(holders[2].ConstGet()->leaf.HasValue());
  EXPECT_EQ(rom_CheckProblems(m_Source), std::vector<std::string>());
}

TEST_F(Proxy, AnOwnerWrittenIntoAnotherFileTakesItsObjectsRowsAlongOnceAndThenStandsForTheCopies) {
  {
    rom_Transporter target(m_Registrar, Create(m_Target), kMagic, "target", 0, -1);
    std::vector<cow_COW<Holder>> holders;
    {
      rom_Transporter source(m_Registrar, ReadOnly(m_Source), kMagic, -1);
      Leaf::s_Built = 0;
      holders = ReadHolders(source);
      cls_Uid const uid = holders[0].ConstGet()->leaf.Uid();
      rom_WriteObject(target, holders[0]);
      // L with the M it refers to, copied as rows.
      EXPECT_EQ(target.GetTableSize(Leaf::kClassId), 2);
      EXPECT_EQ(Leaf::s_Built, 0);
      // The copy took the identity along.
      rom_HistoryEntry const* entry = target.History().GetEntry(uid);
      ASSERT_NE(entry, nullptr);
      // Holder 1 holds L too: known to the target now, it is not copied again.
      rom_WriteObject(target, holders[1]);
      EXPECT_EQ(target.GetTableSize(Leaf::kClassId), 3);
      EXPECT_EQ(Leaf::s_Built, 0);
      rom_WriteObject(target, holders[2]);
      EXPECT_EQ(target.GetTableSize(Leaf::kClassId), 3);
      EXPECT_EQ(target.GetTableSize(Holder::kClassId), kHolders);
    }
    // The source is closed: the proxies stand for the target's rows now.
    EXPECT_EQ(LeafId(holders[0].ConstGet()->leaf), 1);
    EXPECT_EQ(LeafId(holders[1].ConstGet()->spare), 3);
    EXPECT_EQ(holders[1].ConstGet()->leaf.Get().ConstGet(), holders[0].ConstGet()->leaf.Get().ConstGet());
    EXPECT_EQ(Leaf::s_Built, 3);
    target.Flush();
  }
  rom_Transporter target(m_Registrar, ReadOnly(m_Target), kMagic, -1);
  std::vector<cow_COW<Holder>> const holders = ReadHolders(target);
  EXPECT_EQ(holders[1].ConstGet()->id, 11);
  EXPECT_EQ(LeafId(holders[0].ConstGet()->leaf), 1);
  EXPECT_EQ(holders[0].ConstGet()->leaf.Get().ConstGet()->next.ConstGet()->id, 2);
  EXPECT_EQ(holders[1].ConstGet()->leaf.Get().ConstGet(), holders[0].ConstGet()->leaf.Get().ConstGet());
  EXPECT_EQ(LeafId(holders[1].ConstGet()->spare), 3);
  EXPECT_FALSE(holders[0].ConstGet()->spare.HasValue());
  EXPECT_FALSE(holders[2].ConstGet()->leaf.HasValue());
  EXPECT_EQ(rom_CheckProblems(m_Target), std::vector<std::string>());
}

TEST_F(Proxy, ACopyCutShortByADamagedRowLeavesTheTargetReadableAndTheProxyAtItsSource) {
  // N's Next names a row past the end of its table.
  Damage(Leaf::kClassId, kLeafN, "Next#OID", 99);
  Damage(Leaf::kClassId, kLeafN, "Next#ClassID", static_cast<int>(Leaf::kClassId));
  rom_Transporter source(m_Registrar, ReadOnly(m_Source), kMagic, -1);
  cow_COW<Holder> const holder = rom_ReadObject<Holder>(source, 1);
  cls_Lazy<Leaf> const& spare = holder.ConstGet()->spare;
  {
    rom_Transporter target(m_Registrar, Create(m_Target), kMagic, "target", 0, -1);
    // The second attempt with a value of its own: the target's cache takes
    // a value in as soon as its row is taken, and writes it only once.
    cow_COW<Holder> again = holder;
    again.Get()->id = 12;
    for (cow_COW<Holder> const& attempt : {holder, again}) {
      std::string const raised = rom_RaisedText([&] { rom_WriteObject(target, attempt); });
      EXPECT_NE(raised.find("is not a row of its table"), std::string::npos) << raised;
      // L and M went whole, and are known; N, cut short, is not.
      EXPECT_NE(target.History().GetEntry(holder.ConstGet()->leaf.Uid()), nullptr);
      EXPECT_EQ(target.History().GetEntry(spare.Uid()), nullptr);
    }
    target.Flush();
  }
  // Were the proxy the target's, its closing would have dropped it.
  std::string const raised = rom_RaisedText([&spare] { spare.Get(); });
  EXPECT_NE(raised.find("Object is not available in DB file: Leaf[99]"), std::string::npos) << raised;
  EXPECT_EQ(rom_CheckProblems(m_Target), std::vector<std::string>());
  rom_Transporter target(m_Registrar, ReadOnly(m_Target), kMagic, -1);
  Holder const& copied = *rom_ReadObject<Holder>(target, 0).ConstGet();
  EXPECT_EQ(copied.id, 12);
  EXPECT_EQ(LeafId(copied.leaf), 1);
  EXPECT_FALSE(copied.spare.HasValue());
  // The leaves cut short hold what was copied before the damage was met.
  for (int oid = 0; oid < target.GetTableSize(Leaf::kClassId); ++oid) {
    Leaf const& leaf = *rom_ReadObject<Leaf>(target, oid).ConstGet();
    if (leaf.id == 3) {
      EXPECT_FALSE(leaf.next.HasValue());
    }
  }
}

TEST_F(Proxy, AFileThatKnowsTheObjectAlreadyGetsAReferenceToItsOwnRow) {
  rom_Transporter source(m_Registrar, ReadOnly(m_Source), kMagic, -1);
  rom_Transporter target(m_Registrar, Create(m_Target), kMagic, "target", 0, -1);
  // The target stores N itself first, read in full from the source.
  rom_CidOid const own = rom_WriteObject(target, rom_ReadObject<Leaf>(source, kLeafN));
  int const leaves = target.GetTableSize(Leaf::kClassId);
  cow_COW<Holder> const holder = rom_ReadObject<Holder>(source, 1);
  rom_WriteObject(target, holder);
  // Only L and M are new.
  EXPECT_EQ(target.GetTableSize(Leaf::kClassId), leaves + 2);
  rom_UtlDatabaseRom const view(target);
  rfm_Row const row = view.Object(Holder::kClassId, 0);
  EXPECT_EQ(view.Object(row, kSpareField.Name()).Location(), own.m_Oid);
}

TEST_F(Proxy, AProxyTransfersOnlyIntoTheObjectLayersOwnMementos) {
  struct OtherStorage {};
  rom_Transporter source(m_Registrar, ReadOnly(m_Source), kMagic, -1);
  rom_Transporter target(m_Registrar, Create(m_Target), kMagic, "target", 0, -1);
  rom_MementoRead owner(source, Holder::kClassId, 1, cls_Uid());
  std::unique_ptr<cls_AgentProxy> proxy(owner.MakeAgentProxy(kSpareField, Leaf::kClassId));
  rom_MementoWrite memento(target, Holder::kClassId, -1, cls_MementoWrite::kOwnedByCreator);
  int const classes = target.Catalog().Length();
  EXPECT_FALSE(proxy->Transfer(cls_StorageType<OtherStorage>::Id(), &memento, kSpareField));
  // Nothing copied: the target has no table of leaves.
  EXPECT_EQ(target.Catalog().Length(), classes);
  EXPECT_TRUE(memento.CopyBranch(proxy.get(), kSpareField));
  EXPECT_EQ(target.GetTableSize(Leaf::kClassId), 1);
  EXPECT_EQ(memento.LastReference(), rom_CidOid(Leaf::kClassId, 0));
  auto const& moved = static_cast<rom_AgentProxy const&>(*proxy);
  EXPECT_EQ(&moved.Transporter(), &target);
  EXPECT_EQ(moved.ObjectId(), 0);
}

TEST_F(Proxy, NullMissingAndMismatchedReferences) {
  {
    rom_Transporter t(m_Registrar, ReadOnly(m_Source), kMagic, -1);
    rom_MementoRead owner(t, Holder::kClassId, 0, cls_Uid());
    std::unique_ptr<cls_AgentProxy> null(owner.MakeAgentProxy(kSpareField, Leaf::kClassId));
    // A field the class has not (as in a file of an older version).
    std::unique_ptr<cls_AgentProxy> missing(owner.MakeAgentProxy(cls_FieldHandle(9, "Gone"), Leaf::kClassId));
    for (cls_AgentProxy const* proxy : {null.get(), missing.get()}) {
      EXPECT_FALSE(proxy->HasValue());
      EXPECT_TRUE(proxy->IsLoaded());
      EXPECT_FALSE(proxy->Load().HasValue());
      EXPECT_EQ(proxy->GetUid(), cls_Static::ConstUid());
      EXPECT_EQ(static_cast<rom_AgentProxy const*>(proxy)->ObjectId(), -1);
    }
    // Written anywhere, null stays null.
    rom_Transporter target(m_Registrar, Create(m_Target), kMagic, "target", 0, -1);
    rom_MementoWrite memento(target, Holder::kClassId, -1, cls_MementoWrite::kOwnedByCreator);
    EXPECT_TRUE(memento.CopyBranch(null.get(), kSpareField));
    EXPECT_EQ(memento.LastReference(), rom_CidOid(cls_kNoClass, -1));
  }
  // Holder 0's Leaf names a holder, which is no Leaf: reading the owner
  // raises what reading the member at once raises.
  Damage(Holder::kClassId, 0, "Leaf#ClassID", static_cast<int>(Holder::kClassId));
  std::string eager;
  {
    cls_ClassRegistrar registrar;
    RegisterEager(registrar);
    rom_Transporter t(registrar, ReadOnly(m_Source), kMagic, -1);
    eager = rom_RaisedText([&t] { rom_ReadObject<EagerHolder>(t, 0); });
  }
  rom_Transporter t(m_Registrar, ReadOnly(m_Source), kMagic, -1);
  Leaf::s_Built = 0;
  std::string const lazy = rom_RaisedText([&t] { rom_ReadObject<Holder>(t, 0); });
  EXPECT_NE(lazy.find("is not a derived type"), std::string::npos) << lazy;
  EXPECT_EQ(lazy, eager);
  EXPECT_EQ(Leaf::s_Built, 0);
}

TEST_F(Proxy, ALazyMemberIsStoredAsAReferenceMemberIs) {
  cls_ClassRegistrar eagerRegistrar;
  RegisterEager(eagerRegistrar);
  // The lazy program's file read at once.
  {
    rom_Transporter t(eagerRegistrar, ReadOnly(m_Source), kMagic, -1);
    EagerHolder const& holder = *rom_ReadObject<EagerHolder>(t, 1).ConstGet();
    EXPECT_EQ(holder.leaf.ConstGet()->id, 1);
    EXPECT_EQ(holder.leaf.ConstGet()->next.ConstGet()->id, 2);
    EXPECT_EQ(holder.spare.ConstGet()->id, 3);
    EXPECT_FALSE(rom_ReadObject<EagerHolder>(t, 2).ConstGet()->leaf.HasValue());
  }
  // The eager program's file read lazily.
  {
    rom_Transporter t(eagerRegistrar, Create(m_Target), kMagic, "eager", 0, -1);
    rom_WriteObject(t, MakeHolder<EagerHolder, cow_COW<Leaf>>(20, MakeLeaf(5, MakeLeaf(6)), cow_COW<Leaf>()));
    t.Flush();
  }
  rom_Transporter t(m_Registrar, ReadOnly(m_Target), kMagic, -1);
  Holder const& holder = *rom_ReadObject<Holder>(t, 0).ConstGet();
  EXPECT_EQ(LeafId(holder.leaf), 5);
  EXPECT_EQ(holder.leaf.Get().ConstGet()->next.ConstGet()->id, 6);
  EXPECT_FALSE(holder.spare.HasValue());
}

TEST_F(Proxy, AfterItsFileClosedOnlyWhatWasLoadedOrAskedForIsKnown) {
  cow_COW<Holder> first, second;
  cls_Lazy<Leaf> copy;
  cls_Uid asked;
  Leaf::s_Built = 0;
  {
    rom_Transporter t(m_Registrar, ReadOnly(m_Source), kMagic, -1);
    std::vector<cow_COW<Holder>> const holders = ReadHolders(t);
    first = holders[0];
    second = holders[1];
    copy = first.ConstGet()->leaf;
    first.ConstGet()->leaf.Get();
    asked = second.ConstGet()->spare.Uid();
  }
  // Loaded through the member, so through the copy made before.
  EXPECT_TRUE(copy.IsLoaded());
  EXPECT_EQ(LeafId(copy), 1);
  EXPECT_EQ(LeafId(first.ConstGet()->leaf), 1);
  EXPECT_FALSE(first.ConstGet()->leaf.Uid().IsNull());
  EXPECT_EQ(first.ConstGet()->leaf.Uid(), first.ConstGet()->leaf.Get().ConstGet()->uid);
  // L was loaded through holder 0; holder 1's proxy never loaded it.
  cls_Lazy<Leaf> const& unloaded = second.ConstGet()->leaf;
  EXPECT_TRUE(unloaded.HasValue());
  EXPECT_FALSE(unloaded.IsLoaded());
  std::string const raised = rom_RaisedText([&unloaded] { unloaded.Get(); });
  EXPECT_NE(raised.find("database was closed before the object of class Leaf was loaded"), std::string::npos)
      << raised;
  EXPECT_NE(rom_RaisedText([&unloaded] { unloaded.Uid(); }).find("closed before the identity"), std::string::npos);
  cls_Lazy<Leaf> const& spare = second.ConstGet()->spare;
  EXPECT_EQ(spare.Uid(), asked);
  EXPECT_NE(rom_RaisedText([&spare] { spare.Get(); }), "");
  EXPECT_EQ(Leaf::s_Built, 2);
}

}  // namespace
