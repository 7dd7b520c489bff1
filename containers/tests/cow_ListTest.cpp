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

TEST(ListTest, GrowthAtEitherEndKeepsEveryValue) {
  cow_List<int> list;
  std::deque<int> model;
  for (int i = 0; i < 3000; ++i) {
    list.Append(i);
    model.push_back(i);
    if (i % 3 == 0) {
      list.Prepend(-i);
      model.push_front(-i);
    }
  }
  EXPECT_EQ(Values(model), Contents(list));

  cow_List<int> empty;
  empty.Prepend(7);
  empty.Prepend(6);
  empty.Append(8);
  EXPECT_EQ((std::vector<int>{6, 7, 8}), Contents(empty));
}

TEST(ListTest, AQueueEmptiedFromTheFrontKeepsWorkingAndLeaksNothing) {
  CountedBalance balance;
  for (int hint : {0, 2000}) {
    cow_List<Counted> queue(cow_ListConstruct(), hint);
    int next = 0;
    int expectedFirst = 0;
    for (int round = 0; round < 50; ++round) {
      for (int i = 0; i < 37; ++i) queue.Append(Counted(next++));
      while (queue.Length() > round % 5) {
        ASSERT_EQ(expectedFirst++, queue.First().value);
        queue.RemoveFirst();
      }
    }
    while (!queue.IsEmpty()) {
      ASSERT_EQ(expectedFirst++, queue.First().value);
      queue.RemoveFirst();
    }
    queue.Append(Counted(9));
    EXPECT_EQ(9, queue.First().value);
    EXPECT_EQ(9, queue.Last().value);
    queue.Clear();
    EXPECT_TRUE(queue.IsEmpty());
    queue.Prepend(Counted(1));
    EXPECT_EQ(1, queue.Pop().value);
    EXPECT_TRUE(queue.IsEmpty());
  }
}

TEST(ListTest, ListsSizedByAHintHoldWhatTheyAreGivenAndGrowPastIt) {
  for (int hint : {0, 1, 255, 256, 257, 1000, 2000, 4096, 100000}) {
    cow_List<int> list(cow_ListConstruct(), hint);
    EXPECT_TRUE(list.IsEmpty()) << hint;
    int const count = hint + hint / 2 + 20;
    for (int i = 0; i < count; ++i) list.Append(i * 3);
    ASSERT_EQ(count, list.Length()) << hint;
    for (int i = 0; i < count; ++i) ASSERT_EQ(i * 3, list[i]) << hint;
  }
  std::vector<int> items(1000);
  for (int i = 0; i < 1000; ++i) items[i] = i * 3;
  cow_List<int> filled(items.data(), 1000);
  EXPECT_EQ(items, Contents(filled));
  cow_List<int> roomy(items.data(), 10, 1000);
  EXPECT_EQ(std::vector<int>(items.begin(), items.begin() + 10), Contents(roomy));
  roomy.Prepend(-1);
  EXPECT_EQ(-1, roomy.First());
  EXPECT_EQ(27, roomy.Last());
}

TEST(ListTest, SliceClampsItsBoundsAndIsIndependentOfItsSource) {
  cow_List<int> list = Sequence<int>(40);
  cow_List<int> whole = list.Slice(-5, 1000);
  EXPECT_EQ(Contents(list), Contents(whole));
  whole.Put(20, -20);
  list.Put(21, -21);
  EXPECT_EQ(20, list[20]);
  EXPECT_EQ(21, whole[21]);
  EXPECT_TRUE(list.Slice(3, 2).IsEmpty());
  EXPECT_TRUE(list.Slice(50, 60).IsEmpty());
  EXPECT_EQ((std::vector<int>{17, 18, 19}), Contents(list.Slice(17, 20)));
}

TEST(ListTest, FillOnlyExtendsAndKeepsExistingElements) {
  cow_List<int> list = Sequence<int>(5);
  cow_List<int> copy = list;
  list.Fill(2, 99);
  EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4}), Contents(list));
  list.Fill(8, 99);
  EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4, 99, 99, 99}), Contents(list));
  EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4}), Contents(copy));

  cow_List<int> built(cow_ListFill(), 3, 5);
  EXPECT_EQ((std::vector<int>{5, 5, 5}), Contents(built));
}

TEST(ListTest, WritingACopyLeavesTheOriginalAsItWas) {
  cow_List<int> list = Sequence<int>(48);
  cow_List<int> copy = list;
  copy.Put(20, -20);
  EXPECT_EQ(20, list[20]);
  EXPECT_EQ(-20, copy[20]);

  // Shrinking a copy into a block it shares, then growing it again, writes
  // over places that are live in the original.
  copy.Resize(35);
  copy.Append(-35);
  copy.Append(-36);
  EXPECT_EQ(Contents(Sequence<int>(48)), Contents(list));
  std::vector<int> expected = Contents(Sequence<int>(35));
  expected[20] = -20;
  expected.push_back(-35);
  expected.push_back(-36);
  EXPECT_EQ(expected, Contents(copy));

  // Two lists that share a partly filled block both grow into its free places.
  cow_List<int> left = Sequence<int>(35);
  cow_List<int> right = left;
  right.Append(-35);
  left.Append(99);
  EXPECT_EQ(-35, right.Last());
  EXPECT_EQ(99, left.Last());

  // The same from the front: the copy's new first element must not land in
  // the original's block.
  cow_List<int> queue = Sequence<int>(20);
  queue.RemoveFirst();
  cow_List<int> front = queue;
  front.Prepend(-1);
  front.RemoveIndex(5);
  front.InsertIndex(3, -3);
  EXPECT_EQ(Contents(Sequence<int>(19, 1)), Contents(queue));
  std::vector<int> frontExpected = Contents(Sequence<int>(19, 1));
  frontExpected.insert(frontExpected.begin(), -1);
  frontExpected.erase(frontExpected.begin() + 5);
  frontExpected.insert(frontExpected.begin() + 3, -3);
  EXPECT_EQ(frontExpected, Contents(front));
}

TEST(ListTest, IteratorKeepsItsSnapshotWhileTheListIsWritten) {
  cow_List<int> list = Sequence<int>(48);
  cow_ListIter<int> it(list);
  list.Put(20, -1);
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

TEST(ListTest, InsertAndRemoveInsideKeepTheOrder) {
  cow_List<int> list = Sequence<int>(40);
  cow_List<int> copy = list;
  list.InsertIndex(35, -35);
  list.InsertIndex(3, -3);
  list.RemoveIndex(2);
  list.RemoveIndex(38);
  std::vector<int> expected = Contents(Sequence<int>(40));
  expected.insert(expected.begin() + 35, -35);
  expected.insert(expected.begin() + 3, -3);
  expected.erase(expected.begin() + 2);
  expected.erase(expected.begin() + 38);
  EXPECT_EQ(expected, Contents(list));
  EXPECT_EQ(Contents(Sequence<int>(40)), Contents(copy));
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
  list.Append(Counted(8));
  EXPECT_EQ(8, list[30].value);
  EXPECT_EQ(9, list[9].value);

  // The copy of a shared block fails before the list changes.
  cow_List<Counted> copy = list;
  Counted::s_CopiesBeforeThrow = 3;
  EXPECT_THROW(list.Put(20, Counted(-1)), std::runtime_error);
  EXPECT_THROW(list.Prepend(Counted(-2)), std::runtime_error);
  Counted::s_CopiesBeforeThrow = -1;
  EXPECT_EQ(Contents(copy), Contents(list));
  list.Put(20, Counted(-1));
  EXPECT_EQ(-1, list[20].value);
  EXPECT_EQ(7, copy[20].value);
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
