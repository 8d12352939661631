#include "core/MList.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "tests/common/TestRandom.h"
#include "tests/core/Balanced.h"

namespace {

using MListTest = Balanced;
using MStaticListTest = Balanced;

template <typename List>
std::vector<int> Values(const List& list) {
  return std::vector<int>(list.begin(), list.end());
}

template <typename List>
void AddNumbers(List& list, int count) {
  for (int i = 0; i < count; ++i) list.Add(i);
}

using Ints = std::vector<int>;

TEST_F(MListTest, AnEmptyOneHasNoMemory) {
  MList<int> list;
  const MList<int> copy(list);
  EXPECT_TRUE(list.IsEmpty());
  EXPECT_EQ(copy.GetCount(), 0);
  EXPECT_EQ(list.Find(1), -1);
  EXPECT_FALSE(list.RemoveValue(1));
  list.Clear();
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST_F(MListTest, HoldsCapacityElementsAndCountInThisOrder) {
  MList<int> list;
  AddNumbers(list, 5);
  struct {
    int32_t capacity;
    const int* items;
    int32_t count;
  } record;
  ASSERT_EQ(sizeof record, sizeof list);
  std::memcpy(&record, static_cast<const void*>(&list), sizeof record);
  EXPECT_GE(record.capacity, 5);
  EXPECT_EQ(record.items, list.begin());
  EXPECT_EQ(record.count, 5);
}

TEST_F(MListTest, GrowsByReallocatingInEverLargerSteps) {
  MList<int> list;
  AddNumbers(list, 1000);
  EXPECT_EQ(table.GetAllocated(), 0);
  EXPECT_LE(table.GetReallocated(), 12);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(list[i], i);
}

TEST_F(MListTest, MakesRoomAtOnceForAsManyAsAreReserved) {
  MList<int32_t> list;
  list.Add(7);
  list.Reserve(100);
  const int64_t calls = table.GetCalls();
  while (list.GetCount() < 100) list.Add(list.GetCount());
  EXPECT_EQ(table.GetCalls(), calls);
  list.Reserve(3);
  list.Reserve(-1);
  EXPECT_EQ(list.GetCount(), 100);
  EXPECT_EQ(list[0], 7);
}

TEST_F(MListTest, InsertsAndRemovesInOrder) {
  MList<int> list;
  AddNumbers(list, 3);
  list.Insert(0, 10);
  list.Insert(2, 11);
  list.Insert(5, 12);
  EXPECT_EQ(Values(list), (Ints{10, 0, 11, 1, 2, 12}));
  list.Remove(0);
  list.Remove(4);
  EXPECT_TRUE(list.RemoveValue(11));
  EXPECT_EQ(Values(list), (Ints{0, 1, 2}));
  list.Add(1);
  EXPECT_EQ(list.Find(1), 1);
  EXPECT_TRUE(list.RemoveValue(1));
  EXPECT_EQ(Values(list), (Ints{0, 2, 1}));
}

TEST_F(MListTest, AnElementMayBeAddedFromTheListItself) {
  MList<MString> list;
  list.Add(Buffer("a"));
  for (int i = 0; i < 20; ++i) list.Add(list[0]);
  list.Insert(0, list[20]);
  EXPECT_EQ(list.GetCount(), 22);
  for (const MString& text : list) EXPECT_EQ(text, "a");
}

TEST_F(MListTest, WrongIndicesRaiseAndChangeNothing) {
  MList<int> list;
  const MList<int>& constant = list;
  AddNumbers(list, 3);
  for (const int32_t index : {-1, 3, INT32_MIN, INT32_MAX}) {
    EXPECT_RAISES(list[index], "Index out of range.", 0);
    EXPECT_RAISES(constant[index], "Index out of range.", 0);
    EXPECT_RAISES(list.Remove(index), "Index out of range.", 0);
    if (index != 3) EXPECT_RAISES(list.Insert(index, 9), "Index out of range.", 0);
  }
  EXPECT_EQ(Values(list), (Ints{0, 1, 2}));
}

TEST_F(MListTest, CopiesAreOfTheirOwnAndMovesTakeTheElements) {
  MList<MString> list;
  list.Add(Buffer("a"));
  list.Add(Buffer("b"));
  MList<MString> copy(list);
  copy[0].Append("x");
  EXPECT_EQ(list[0], "a");
  MList<MString> moved(std::move(copy));
  EXPECT_EQ(moved[0], "ax");
  EXPECT_TRUE(copy.IsEmpty());
  list = moved;
  list = *&list;
  EXPECT_EQ(list[0], "ax");
  list.Swap(copy);
  EXPECT_TRUE(list.IsEmpty());
  EXPECT_EQ(copy.GetCount(), 2);
}

TEST_F(MListTest, ClearDropsTheElementsAndKeepsTheMemory) {
  MList<MString> list;
  for (int i = 0; i < 10; ++i) list.Add(Buffer("a"));
  list.Clear();
  EXPECT_TRUE(list.IsEmpty());
  EXPECT_EQ(table.GetBalance(), 1);
  const int64_t reallocated = table.GetReallocated();
  for (int i = 0; i < 10; ++i) list.Add(MString("literal"));
  EXPECT_EQ(table.GetReallocated(), reallocated);
}

TEST_F(MListTest, WithoutMemoryStaysAsItWas) {
  const auto make = [] {
    MList<MString> list;
    for (int i = 0; i < 4; ++i) list.Add("text");
    return list;
  };
  const auto check = [](const MList<MString>& list) {
    EXPECT_EQ(list.GetCount(), 4);
    for (const MString& text : list) EXPECT_EQ(text, "text");
  };
  EXPECT_EQ(FailEachRequest(
                make, [](auto& list) { list.Add("more"); }, check),
            1);
  EXPECT_EQ(FailEachRequest(
                make, [](auto& list) { list.Insert(1, "more"); }, check),
            1);
  EXPECT_EQ(FailEachRequest(
                make, [](auto& list) { MList<MString> copy(list); }, check),
            1);
  EXPECT_EQ(FailEachRequest(
                make, [&](auto& list) { list = make(); }, check),
            3);  // the steps of the new list
}

TEST_F(MListTest, RandomOperationsAgreeWithStandardVectors) {
  TestRandom random(10);
  for (int round = 0; round < 100; ++round) {
    MList<MString> list;
    std::vector<std::string> model;
    for (int step = 0; step < 200; ++step) {
      const std::string value(1, static_cast<char>('a' + random.Below(5)));
      const int32_t index = random.Below(static_cast<int32_t>(model.size()) + 1);
      const auto place = model.begin() + index;
      const int operation = random.Below(8);
      if (operation < 3) {
        list.Add(Buffer(value.c_str()));
        model.push_back(value);
      } else if (operation < 5) {
        list.Insert(index, Buffer(value.c_str()));
        model.insert(place, value);
      } else if (operation < 7 && place != model.end()) {
        list.Remove(index);
        model.erase(place);
      } else {
        const auto found = std::find(model.begin(), model.end(), value);
        ASSERT_EQ(list.RemoveValue(Buffer(value.c_str())), found != model.end());
        if (found != model.end()) model.erase(found);
      }
      ASSERT_EQ(list.GetCount(), static_cast<int32_t>(model.size()));
      ASSERT_TRUE(std::equal(model.begin(), model.end(), list.begin(),
                             [](const std::string& a, const MString& b) { return a == Utf8(b); }));
    }
  }
}

TEST_F(MStaticListTest, HoldsAsManyElementsAsItHasRoomFor) {
  MStaticList<MString, 3> list;
  for (const char* const text : {"a", "b", "c"}) list.Add(Buffer(text));
  EXPECT_RAISES(list.Add(Buffer("d")), "Index out of range.", 0);
  EXPECT_RAISES(list.Insert(0, Buffer("d")), "Index out of range.", 0);
  EXPECT_EQ(list.GetCount(), 3);
  EXPECT_EQ(list[0], "a");
  list.Remove(1);
  list.Insert(0, Buffer("d"));
  EXPECT_EQ(list[0], "d");
  EXPECT_EQ(list[2], "c");
}

TEST_F(MStaticListTest, CopiesItsElements) {
  MStaticList<MString, 3> list;
  list.Add(Buffer("a"));
  MStaticList<MString, 3> copy(list);
  copy.Add(Buffer("b"));
  EXPECT_EQ(list.GetCount(), 1);
  list = copy;
  list = *&list;
  EXPECT_EQ(list.GetCount(), 2);
  EXPECT_EQ(list[1], "b");
  copy.Clear();
  EXPECT_EQ(list.Find(Buffer("b")), 1);
  EXPECT_TRUE(list.RemoveValue(Buffer("a")));
  EXPECT_RAISES(list[1], "Index out of range.", 0);
}

TEST_F(MStaticListTest, NeedsNoMemory) {
  MStaticList<int, 100> list;
  AddNumbers(list, 100);
  EXPECT_EQ(Values(list).size(), 100u);
  EXPECT_EQ(table.GetCalls(), 0);
}

}  // namespace
