#include "cow_List.h"
#include "cow_ListIter.h"
#include "mem_Alloc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

namespace {

// Counts live instances and marks dead ones, so that leaks, double
// destruction and use of destroyed elements show up.
struct Counted {
  static int s_Live;
  static int s_Errors;
  static int s_CopiesBeforeThrow;  // negative: never throw
  static constexpr std::uint32_t kAlive = 0x600df00d;
  static constexpr std::uint32_t kDead = 0xdeaddead;
  static constexpr int kMovedFrom = -999999;

  Counted() : Counted(0) {}
  explicit Counted(int v) : value(v), magic(kAlive) { ++s_Live; }
  Counted(Counted const& other) : value(other.value), magic(kAlive) {
    if (s_CopiesBeforeThrow == 0) throw std::runtime_error("copy refused");
    if (s_CopiesBeforeThrow > 0) --s_CopiesBeforeThrow;
    Check(other);
    ++s_Live;
  }
  // A move leaves a marker behind, so a moved-from element left in view shows.
  Counted(Counted&& other) noexcept : value(other.value), magic(kAlive) {
    Check(other);
    other.value = kMovedFrom;
    ++s_Live;
  }
  Counted& operator=(Counted const& other) {
    Check(*this);
    Check(other);
    value = other.value;
    return *this;
  }
  Counted& operator=(Counted&& other) noexcept {
    Check(*this);
    Check(other);
    value = other.value;
    other.value = kMovedFrom;
    return *this;
  }
  ~Counted() {
    Check(*this);
    magic = kDead;
    --s_Live;
  }
  static void Check(Counted const& c) {
    if (c.magic != kAlive) ++s_Errors;
  }

  int value;
  std::uint32_t magic;
};
int Counted::s_Live = 0;
int Counted::s_Errors = 0;
int Counted::s_CopiesBeforeThrow = -1;

// Expects, at the end of a scope, as many live Counted as at its start and
// no misuse of a dead one in between.
class CountedBalance {
public:
  CountedBalance() : m_Live(Counted::s_Live), m_Errors(Counted::s_Errors) {}
  ~CountedBalance() {
    EXPECT_EQ(m_Live, Counted::s_Live);
    EXPECT_EQ(m_Errors, Counted::s_Errors);
  }

private:
  int m_Live;
  int m_Errors;
};

int ValueOf(int v) { return v; }
int ValueOf(Counted const& c) { return c.value; }

template <class T>
std::vector<int> Contents(cow_List<T> const& list) {
  std::vector<int> values;
  for (cow_ListIter<T> it(list); it.NotDone(); it.Next()) {
    EXPECT_EQ(static_cast<int>(values.size()), it.ArrayIndex());
    values.push_back(ValueOf(it.CurrentItem()));
  }
  return values;
}

std::vector<int> Values(std::deque<int> const& model) {
  return std::vector<int>(model.begin(), model.end());
}

// The slots that may hold a block: those overlapping the live positions,
// and the block of the first offset in a list that RemoveFirst emptied.
template <class T>
void ExpectSoundStructure(cow_List<T> const& list) {
  int const size = 1 << list.BlockShift();
  int const begin = list.FirstOffset();
  int const end = begin + list.Length();
  ASSERT_LE(end, list.TableSize() * size);
  for (int slot = 0; slot < list.TableSize(); ++slot) {
    bool const live = slot * size < end && (slot + 1) * size > begin;
    bool const emptiedFront = list.Length() == 0 && slot == begin / size && begin % size != 0;
    if (live || !emptiedFront) {
      ASSERT_EQ(!live, list.IsSlotNull(slot)) << "slot " << slot;
    }
  }
}

template <class T>
void FreeCArray(T* array, int count) {
  for (int i = 0; i < count; ++i) array[i].~T();
  mem_Free(array);
}

template <class T>
cow_List<T> Sequence(int count, int first = 0) {
  cow_List<T> list;
  for (int i = 0; i < count; ++i) list.Append(T(first + i));
  return list;
}

// Random writers and readers on one list, mirrored on a std::deque; copies
// and iterators taken along the way must keep the contents of their time.
template <class T>
void RunAgainstDeque(int capacityHint, std::uint32_t seed) {
  std::mt19937 random(seed);
  auto below = [&random](int n) { return n <= 0 ? 0 : static_cast<int>(random() % static_cast<unsigned>(n)); };
  int next = 1;
  cow_List<T> list(cow_ListConstruct(), capacityHint);
  std::deque<int> model;
  std::vector<std::pair<cow_List<T>, std::deque<int>>> copies;
  std::vector<std::pair<std::unique_ptr<cow_ListIter<T>>, std::vector<int>>> iterators;

  auto expectCopiesIntact = [&] {
    for (auto& copy : copies) ASSERT_EQ(Values(copy.second), Contents(copy.first));
    for (auto& iterator : iterators) {
      std::vector<int> seen;
      for (iterator.first->First(); iterator.first->NotDone(); iterator.first->Next())
        seen.push_back(ValueOf(iterator.first->CurrentItem()));
      ASSERT_EQ(iterator.second, seen);
    }
  };

  for (int step = 0; step < 3000; ++step) {
    int const length = static_cast<int>(model.size());
    int const operation = length > 400 ? 10 : below(20);
    switch (operation) {
      case 0:
      case 1:
        list.Append(T(next));
        model.push_back(next++);
        break;
      case 2:
        list.Prepend(T(next));
        model.push_front(next++);
        break;
      case 3: {
        int const index = below(length + 1);
        list.InsertIndex(index, T(next));
        model.insert(model.begin() + index, next++);
        break;
      }
      case 4:
        if (length > 0) {
          int const index = below(length);
          list.RemoveIndex(index);
          model.erase(model.begin() + index);
        }
        break;
      case 5:
        // Runs of RemoveFirst, now and then down to empty, exercise the
        // front blocks that are released without a reset.
        for (int count = std::min(length, below(4) == 0 ? length : 1 + below(20)); count > 0; --count) {
          list.RemoveFirst();
          model.pop_front();
        }
        break;
      case 6:
        if (length > 0) {
          list.RemoveLast();
          model.pop_back();
        }
        break;
      case 7:
        if (length > 0) {
          ASSERT_EQ(model.back(), ValueOf(list.Pop()));
          model.pop_back();
        }
        break;
      case 8:
        if (length > 0) {
          int const index = below(length);
          list.Put(index, T(next));
          model[index] = next++;
        }
        break;
      case 9:
        if (length > 0) {
          int const index = below(length);
          list.Get(index) = T(next);
          model[index] = next++;
        }
        break;
      case 10: {
        int const target = below(8) == 0 ? 0 : below(std::min(length, 400) + 40);
        list.Resize(target);
        model.resize(target);
        break;
      }
      case 11: {
        int const target = below(length + 40);
        list.Fill(target, T(next));
        if (target > length) model.resize(target, next);
        ++next;
        break;
      }
      case 12:
        if (below(4) == 0) {
          list.Clear();
          model.clear();
        }
        break;
      case 13:
        if (!copies.empty() && below(2) == 0) {
          auto const& source = copies[below(static_cast<int>(copies.size()))];
          list.Concatenate(source.first);
          model.insert(model.end(), source.second.begin(), source.second.end());
        } else if (length < 200) {
          list.Concatenate(list);
          std::deque<int> const twice = model;
          model.insert(model.end(), twice.begin(), twice.end());
        }
        break;
      case 14: {
        int const start = below(length + 10) - 5;
        int const end = below(length + 10) - 5;
        int const from = std::clamp(start, 0, length);
        int const to = std::clamp(std::max(end, from), from, length);
        cow_List<T> slice = list.Slice(start, end);
        ASSERT_EQ(std::vector<int>(model.begin() + from, model.begin() + to), Contents(slice));
        for (int i = 0; i < slice.Length(); ++i) ASSERT_FALSE(slice.SharesBlockWith(list, i));
        if (below(2) == 0) {
          list = slice;
          model.assign(model.begin() + from, model.begin() + to);
        }
        break;
      }
      case 15:
        if (!copies.empty()) {
          auto const& source = copies[below(static_cast<int>(copies.size()))];
          int count = -1;
          T* array = source.first.GetCArray(count);
          ASSERT_EQ(static_cast<int>(source.second.size()), count);
          list.SetFromArray(array, count);
          FreeCArray(array, count);
          model = source.second;
        }
        break;
      case 16:
      case 17:
        if (copies.size() < 6)
          copies.emplace_back(list, model);
        else
          copies[below(6)] = std::make_pair(list, model);
        break;
      case 18:
        if (!copies.empty()) {
          auto const& source = copies[below(static_cast<int>(copies.size()))];
          list = source.first;
          model = source.second;
        }
        break;
      case 19:
        if (iterators.size() < 3)
          iterators.emplace_back(std::make_unique<cow_ListIter<T>>(list), Values(model));
        else
          iterators[below(3)] = std::make_pair(std::make_unique<cow_ListIter<T>>(list), Values(model));
        break;
    }
    ASSERT_EQ(Values(model), Contents(list)) << "step " << step << " operation " << operation;
    if (!model.empty()) {
      int const index = below(static_cast<int>(model.size()));
      ASSERT_EQ(model[index], ValueOf(list[index]));
      ASSERT_EQ(model.front(), ValueOf(list.First()));
      ASSERT_EQ(model.back(), ValueOf(list.Last()));
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSoundStructure(list)) << "step " << step;
    if (step % 100 == 0) {
      ASSERT_NO_FATAL_FAILURE(expectCopiesIntact()) << "step " << step;
    }
  }
  ASSERT_NO_FATAL_FAILURE(expectCopiesIntact());
}

}  // namespace

TEST(ListTest, RandomOperationsMatchADequeForAPlainType) {
  RunAgainstDeque<int>(0, 20240611);
  RunAgainstDeque<int>(2000, 7);
}

TEST(ListTest, RandomOperationsMatchADequeAndBalanceEveryElementForACountedType) {
  CountedBalance balance;
  RunAgainstDeque<Counted>(0, 20240611);
  RunAgainstDeque<Counted>(2000, 7);
}

TEST(ListTest, AppendFillsBlocksBeforeTheTableGrows) {
  cow_List<int> list = Sequence<int>(16);
  EXPECT_EQ(16, list.TableSize());
  EXPECT_TRUE(list.IsSlotNull(1));
  list.Append(16);
  EXPECT_EQ(16, list.TableSize());
  EXPECT_FALSE(list.IsSlotNull(1));
  EXPECT_TRUE(list.IsSlotNull(2));
  while (list.Length() < 256) list.Append(list.Length());
  EXPECT_EQ(16, list.TableSize());
  list.Append(256);
  EXPECT_EQ(32, list.TableSize());
  EXPECT_EQ(0, list.FirstOffset());
  EXPECT_EQ(256, list[256]);
}

TEST(ListTest, PrependOnAFullTableOpensSixteenSlotsInFront) {
  cow_List<int> list = Sequence<int>(256);
  ASSERT_EQ(16, list.TableSize());
  list.Prepend(-1);
  EXPECT_EQ(32, list.TableSize());
  EXPECT_EQ(255, list.FirstOffset());
  for (int slot = 0; slot < 15; ++slot) EXPECT_TRUE(list.IsSlotNull(slot));
  for (int slot = 15; slot < 32; ++slot) EXPECT_FALSE(list.IsSlotNull(slot));
  EXPECT_EQ(-1, list.First());
  EXPECT_EQ(0, list[1]);
  EXPECT_EQ(255, list.Last());

  // An empty list gets a table with all its room in front.
  cow_List<int> empty;
  empty.Prepend(7);
  EXPECT_EQ(16, empty.TableSize());
  EXPECT_EQ(255, empty.FirstOffset());
}

TEST(ListTest, RemoveFirstReleasesEmptiedBlocksAndNeverResets) {
  cow_List<int> list = Sequence<int>(20);
  for (int i = 0; i < 15; ++i) list.RemoveFirst();
  EXPECT_FALSE(list.IsSlotNull(0));
  list.RemoveFirst();
  EXPECT_TRUE(list.IsSlotNull(0));
  EXPECT_EQ(16, list.FirstOffset());
  EXPECT_EQ(16, list.First());

  cow_List<int> wide(cow_ListConstruct(), 2000);
  for (int i = 0; i < 3; ++i) wide.Append(i);
  ASSERT_EQ(7, wide.BlockShift());
  for (int i = 0; i < 3; ++i) wide.RemoveFirst();
  EXPECT_TRUE(wide.IsEmpty());
  EXPECT_EQ(7, wide.BlockShift());
  EXPECT_EQ(3, wide.FirstOffset());
  wide.Append(9);
  EXPECT_EQ(9, wide.First());
  EXPECT_EQ(3, wide.FirstOffset());
  wide.Clear();
  EXPECT_EQ(4, wide.BlockShift());
  EXPECT_EQ(0, wide.FirstOffset());
  EXPECT_EQ(0, wide.TableSize());

  // Removing the last element any other way resets the shape as well.
  cow_List<int> single(cow_ListConstruct(), 2000);
  single.Append(1);
  EXPECT_EQ(1, single.Pop());
  EXPECT_EQ(4, single.BlockShift());
  EXPECT_EQ(0, single.FirstOffset());
}

TEST(ListTest, CapacityHintChoosesBlockShiftAndTableSize) {
  struct Case {
    int hint, shift, tableSize;
  };
  // 2^(shift+3) <= hint; the table holds the blocks that fit the hint, plus 16.
  for (Case c : {Case{0, 4, 0}, Case{1, 4, 16}, Case{255, 4, 16}, Case{256, 5, 24}, Case{257, 5, 25},
                 Case{1000, 6, 32}, Case{2000, 7, 32}, Case{4096, 9, 24}}) {
    cow_List<int> list(cow_ListConstruct(), c.hint);
    EXPECT_EQ(c.shift, list.BlockShift()) << c.hint;
    EXPECT_EQ(c.tableSize, list.TableSize()) << c.hint;
    EXPECT_TRUE(list.IsEmpty());
  }
  std::vector<int> items(1000);
  for (int i = 0; i < 1000; ++i) items[i] = i * 3;
  cow_List<int> filled(items.data(), 1000);
  EXPECT_EQ(6, filled.BlockShift());
  EXPECT_EQ(16, filled.TableSize());
  EXPECT_EQ(2997, filled.Last());
  cow_List<int> roomy(items.data(), 10, 1000);
  EXPECT_EQ(6, roomy.BlockShift());
  EXPECT_EQ(10, roomy.Length());
}

TEST(ListTest, SliceClampsItsBoundsAndCopiesEveryBlock) {
  cow_List<int> list = Sequence<int>(40);
  cow_List<int> whole = list.Slice(-5, 1000);
  EXPECT_EQ(Contents(list), Contents(whole));
  for (int i = 0; i < 40; ++i) EXPECT_FALSE(whole.SharesBlockWith(list, i));
  EXPECT_EQ(1, whole.ShareCount());
  EXPECT_EQ(1, list.ShareCount());
  EXPECT_TRUE(list.Slice(3, 2).IsEmpty());
  EXPECT_TRUE(list.Slice(50, 60).IsEmpty());
  EXPECT_EQ((std::vector<int>{17, 18, 19}), Contents(list.Slice(17, 20)));
}

TEST(ListTest, FillOnlyExtendsAndKeepsExistingElements) {
  cow_List<int> list = Sequence<int>(5);
  cow_List<int> copy = list;
  list.Fill(2, 99);
  EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4}), Contents(list));
  EXPECT_EQ(2, list.ShareCount());
  list.Fill(8, 99);
  EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4, 99, 99, 99}), Contents(list));
  EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4}), Contents(copy));

  cow_List<int> built(cow_ListFill(), 3, 5);
  EXPECT_EQ((std::vector<int>{5, 5, 5}), Contents(built));
}

TEST(ListTest, ACopyIsWrittenOneBlockAtATime) {
  cow_List<int> list = Sequence<int>(48);
  cow_List<int> copy = list;
  EXPECT_EQ(2, list.ShareCount());
  EXPECT_EQ(1, list.BlockReferences(1));
  copy.Put(20, -20);
  EXPECT_EQ(1, list.ShareCount());
  EXPECT_EQ(1, copy.ShareCount());
  EXPECT_TRUE(copy.SharesBlockWith(list, 0));
  EXPECT_FALSE(copy.SharesBlockWith(list, 20));
  EXPECT_TRUE(copy.SharesBlockWith(list, 40));
  EXPECT_EQ(2, list.BlockReferences(0));
  EXPECT_EQ(1, list.BlockReferences(1));
  EXPECT_EQ(1, copy.BlockReferences(1));
  EXPECT_EQ(20, list[20]);
  EXPECT_EQ(-20, copy[20]);

  // Shrinking a copy into a shared block keeps the other list's elements.
  copy.Resize(35);
  EXPECT_EQ(1, list.BlockReferences(2));
  EXPECT_EQ(47, list.Last());
  EXPECT_EQ(34, copy.Last());
}

TEST(ListTest, IteratorKeepsItsSnapshotWhileTheListIsWritten) {
  cow_List<int> list = Sequence<int>(48);
  cow_ListIter<int> it(list);
  EXPECT_EQ(2, list.ShareCount());
  list.Put(20, -1);
  EXPECT_EQ(2, list.BlockReferences(0));
  EXPECT_EQ(1, list.BlockReferences(1));
  EXPECT_EQ(2, list.BlockReferences(2));
  list.RemoveFirst();
  list.Append(100);
  std::vector<int> seen;
  for (; it.NotDone(); it.Next()) seen.push_back(it.CurrentItem());
  EXPECT_EQ(Contents(Sequence<int>(48)), seen);
  EXPECT_TRUE(it.IsDone());
  it.First();
  EXPECT_EQ(0, it.CurrentItem());
  EXPECT_EQ(-1, list[19]);
}

TEST(ListTest, InsertAndRemoveMoveTheShorterSide) {
  cow_List<int> list = Sequence<int>(40);
  list.InsertIndex(35, -35);
  EXPECT_EQ(0, list.FirstOffset());
  // The front moves into the 13 slots that 3 blocks leave free.
  list.InsertIndex(3, -3);
  EXPECT_EQ(13 * 16 - 1, list.FirstOffset());
  list.RemoveIndex(2);
  EXPECT_EQ(13 * 16, list.FirstOffset());
  list.RemoveIndex(38);
  EXPECT_EQ(13 * 16, list.FirstOffset());
  std::vector<int> expected = Contents(Sequence<int>(40));
  expected.insert(expected.begin() + 35, -35);
  expected.insert(expected.begin() + 3, -3);
  expected.erase(expected.begin() + 2);
  expected.erase(expected.begin() + 38);
  EXPECT_EQ(expected, Contents(list));
}

TEST(ListTest, ConcatenateAppendsCopiesEvenOfItself) {
  cow_List<int> list(1, 2, 3);
  list.Concatenate(list);
  EXPECT_EQ((std::vector<int>{1, 2, 3, 1, 2, 3}), Contents(list));
  cow_List<int> big = Sequence<int>(30);
  cow_List<int> copy = big;
  big.Concatenate(big);
  EXPECT_EQ(60, big.Length());
  EXPECT_EQ(29, big[59]);
  EXPECT_EQ(30, copy.Length());
  big.Concatenate(cow_List<int>());
  EXPECT_EQ(60, big.Length());
}

TEST(ListTest, ElementConstructorsAndCArrayCopies) {
  EXPECT_EQ((std::vector<int>{4}), Contents(cow_List<int>(4)));
  EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5}), Contents(cow_List<int>(1, 2, 3, 4, 5)));
  CountedBalance balance;
  cow_List<Counted> list = Sequence<Counted>(20, 100);
  int const live = Counted::s_Live;
  int count = 0;
  Counted* array = list.GetCArray(count);
  ASSERT_EQ(20, count);
  EXPECT_EQ(live + 20, Counted::s_Live);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(100 + i, array[i].value);
  FreeCArray(array, count);
}

TEST(ListTest, AThrowingElementCopyLeavesAValidListAndLeaksNothing) {
  CountedBalance balance;
  cow_List<Counted> list = Sequence<Counted>(10);
  Counted::s_CopiesBeforeThrow = 20;
  EXPECT_THROW(list.Fill(50, Counted(7)), std::runtime_error);
  Counted::s_CopiesBeforeThrow = -1;
  ASSERT_EQ(30, list.Length());
  EXPECT_EQ(7, list.Last().value);
  ExpectSoundStructure(list);

  // The copy of a shared block fails before the list changes.
  cow_List<Counted> copy = list;
  Counted::s_CopiesBeforeThrow = 3;
  EXPECT_THROW(list.Put(20, Counted(-1)), std::runtime_error);
  EXPECT_THROW(list.Prepend(Counted(-2)), std::runtime_error);
  Counted::s_CopiesBeforeThrow = -1;
  EXPECT_EQ(Contents(copy), Contents(list));
  EXPECT_TRUE(copy.SharesBlockWith(list, 20));
  ExpectSoundStructure(list);
}

TEST(ListDeathTest, IndexErrorsAbort) {
  cow_List<int> list = Sequence<int>(3);
  cow_List<int> empty;
  EXPECT_DEATH(list.ConstGet(-1), "");
  EXPECT_DEATH(list[3], "");
  EXPECT_DEATH(list.Get(3), "");
  EXPECT_DEATH(list.Put(-1, 0), "");
  EXPECT_DEATH(list.InsertIndex(4, 0), "");
  EXPECT_DEATH(list.RemoveIndex(3), "");
  EXPECT_DEATH(list.Resize(-1), "");
  EXPECT_DEATH(empty.First(), "");
  EXPECT_DEATH(empty.RemoveFirst(), "");
  EXPECT_DEATH(empty.RemoveLast(), "");
  EXPECT_DEATH(empty.Pop(), "");
}
