#include "cls_HistoryEntry.h"
#include "cls_Uid.h"
#include "cls_UidCatalogEntry.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

namespace {

// A ring member that counts its ends and may run code when it ends, as the
// object layer's entries do.
class Entry : public cls_HistoryEntry {
public:
  explicit Entry(int& ends, std::function<void()> atEnd = {}) : m_Ends(ends), m_AtEnd(std::move(atEnd)) {}
  ~Entry() override {
    ++m_Ends;
    if (m_AtEnd) m_AtEnd();
  }

private:
  int& m_Ends;
  std::function<void()> m_AtEnd;
};

std::vector<cls_HistoryEntry*> Members(cls_Uid const& uid) {
  std::vector<cls_HistoryEntry*> members;
  for (cls_HistoryEntry* entry = uid.FirstHistoryEntry(); entry != nullptr; entry = uid.NextHistoryEntry(entry))
    members.push_back(entry);
  return members;
}

}  // namespace

TEST(UidTest, CopiesShareAnIdentityThatNewUidReplacesForOneValueOnly) {
  cls_Uid null;
  EXPECT_TRUE(null.IsNull());
  EXPECT_EQ(cls_Uid(), null);
  EXPECT_EQ(nullptr, null.FirstHistoryEntry());

  cls_Uid first;
  first.AllocateUid();
  EXPECT_FALSE(first.IsNull());
  cls_Uid second(first);
  cls_Uid third;
  third = second;
  EXPECT_EQ(first, third);
  EXPECT_EQ(3, first.CatalogEntry()->References());
  cls_Uid sole;
  sole.AllocateUid();
  sole = sole;
  ASSERT_FALSE(sole.IsNull());
  EXPECT_EQ(1, sole.CatalogEntry()->References());

  // Through a const reference, as the object layer reaches an object's Uid.
  cls_Uid const& held = second;
  held.NewUid();
  EXPECT_NE(first, second);
  EXPECT_EQ(first, third);
  EXPECT_EQ(2, first.CatalogEntry()->References());
  EXPECT_EQ(1, second.CatalogEntry()->References());
}

TEST(UidTest, LastUidOfAnIdentityDeletesItsRingAndANullUidGetsAnIdentityWhenLinked) {
  int ends = 0;
  auto* older = new Entry(ends);
  auto* newer = new Entry(ends);
  auto* alone = new Entry(ends);
  cls_Uid uid;
  uid.LinkHistoryEntry(older);
  EXPECT_FALSE(uid.IsNull());
  cls_Uid copy(uid);
  copy.LinkHistoryEntry(newer);
  copy.LinkHistoryEntry(alone);
  EXPECT_EQ((std::vector<cls_HistoryEntry*>{alone, newer, older}), Members(uid));
  delete alone;
  EXPECT_EQ((std::vector<cls_HistoryEntry*>{newer, older}), Members(copy));

  uid = cls_Uid();
  EXPECT_EQ(1, ends);
  // Replacing the last Uid's identity ends the old one's ring.
  copy.NewUid();
  EXPECT_EQ(3, ends);
  EXPECT_TRUE(Members(copy).empty());
}

TEST(UidTest, RingTeardownSurvivesDestructorsThatReachTheIdentity) {
  int ends = 0;
  cls_Uid kept;
  cls_Uid uid;
  uid.AllocateUid();
  cls_UidCatalogEntry* identity = uid.CatalogEntry();
  // Members end newest first: the one that builds and drops a Uid on the
  // identity, the one that ends another member, the one that keeps a Uid;
  // the oldest must then survive for the kept Uid.
  auto* oldest = new Entry(ends);
  uid.LinkHistoryEntry(oldest);
  uid.LinkHistoryEntry(new Entry(ends, [&] { kept = cls_Uid(identity); }));
  auto* victim = new Entry(ends);
  uid.LinkHistoryEntry(victim);
  uid.LinkHistoryEntry(new Entry(ends, [&] { delete victim; }));
  uid.LinkHistoryEntry(new Entry(ends, [&] { cls_Uid passing(identity); }));

  uid = cls_Uid();
  EXPECT_EQ(4, ends);
  EXPECT_EQ(identity, kept.CatalogEntry());
  EXPECT_EQ(1, identity->References());
  EXPECT_EQ((std::vector<cls_HistoryEntry*>{oldest}), Members(kept));

  kept = cls_Uid();
  EXPECT_EQ(5, ends);
}
