#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "plugin/MHostInterface.h"
#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"

namespace {

static_assert(!std::is_copy_constructible_v<MServiceArguments>);
static_assert(!std::is_copy_assignable_v<MServiceArguments>);

// Writes its letter into a text when it is destroyed, and can throw there.
class Noted : public MObject {
 public:
  Noted(std::string& log, char letter, bool throws = false) : log_(log), letter_(letter), throws_(throws) {}
  ~Noted() noexcept(false) override {
    log_ += letter_;
    if (throws_) throw MException(MString::FromNarrow(&letter_, 1));
  }

 private:
  std::string& log_;
  char letter_;
  bool throws_;
};

TEST(MServiceArguments, IsFourEmptySlotsAtFirst) {
  const MServiceArguments arguments;
  for (const auto& slot : arguments.slot) {
    EXPECT_EQ(slot.kind, MServiceArguments::kEmpty);
    EXPECT_EQ(slot.value, 0);
  }
}

TEST(MServiceArguments, FillsAllFourSlotsWithPlainValues) {
  const MServiceArguments one(-1);
  EXPECT_EQ(one.slot[0].value, -1);
  const MServiceArguments arguments(INTPTR_MAX, INTPTR_MIN, 3, MAsWord(&one));
  for (const auto& slot : arguments.slot) EXPECT_EQ(slot.kind, MServiceArguments::kPlain);
  EXPECT_EQ(arguments.slot[0].value, INTPTR_MAX);
  EXPECT_EQ(arguments.slot[1].value, INTPTR_MIN);
  EXPECT_EQ(arguments.slot[2].value, 3);
  EXPECT_EQ(MAsAddress<const MServiceArguments>(arguments.slot[3].value), &one);
}

TEST(MServiceArguments, SlotsAreSetAndCleared) {
  MServiceArguments arguments;
  arguments.Set(3, -7);
  EXPECT_EQ(arguments.slot[3].kind, MServiceArguments::kPlain);
  EXPECT_EQ(arguments.slot[3].value, -7);
  arguments.Clear(3);
  EXPECT_EQ(arguments.slot[3].kind, MServiceArguments::kEmpty);
  EXPECT_EQ(arguments.slot[3].value, 0);
}

TEST(MServiceArguments, PlainAddressIsNotDestroyed) {
  std::string log;
  Noted object(log, 'a');
  {
    MServiceArguments arguments(MAsWord(&object));
    arguments.Set(0, MAsWord(&object));
  }
  EXPECT_EQ(log, "");
}

TEST(MServiceArguments, OverwrittenObjectIsDestroyedOnce) {
  const CountingFunctions table;
  std::string log;
  {
    MServiceArguments arguments;
    arguments.SetObject(0, new Noted(log, 'a'));
    arguments.SetObject(0, new Noted(log, 'b'));
    EXPECT_EQ(log, "a");
    arguments.Set(0, 5);
    EXPECT_EQ(log, "ab");
    EXPECT_EQ(arguments.slot[0].value, 5);
    arguments.SetObject(1, new Noted(log, 'c'));
    arguments.Clear(1);
    EXPECT_EQ(log, "abc");
  }
  EXPECT_EQ(log, "abc");
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MServiceArguments, DestroysItsObjectsFromTheLastSlotToTheFirst) {
  const CountingFunctions table;
  std::string log;
  {
    MServiceArguments arguments;
    for (int32_t i = 0; i < 4; ++i) arguments.SetObject(i, new Noted(log, static_cast<char>('0' + i)));
    EXPECT_EQ(log, "");
  }
  EXPECT_EQ(log, "3210");
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MServiceArguments, SlotIsEmptyWhileItsObjectIsDestroyed) {
  class Witness : public MObject {
   public:
    Witness(const MServiceArguments& arguments, std::string& log) : arguments_(arguments), log_(log) {}
    ~Witness() override {
      for (const auto& slot : arguments_.slot) log_ += static_cast<char>('0' + slot.kind);
      log_ += ' ';
    }

   private:
    const MServiceArguments& arguments_;
    std::string& log_;
  };
  std::string log;
  {
    MServiceArguments arguments(1, 2, 3, 4);
    arguments.SetObject(1, new Witness(arguments, log));
    arguments.SetObject(3, new Witness(arguments, log));
  }
  EXPECT_EQ(log, "1210 1000 ");
}

TEST(MServiceArguments, NullObjectIsDestroyedWithoutHarm) {
  MServiceArguments arguments;
  arguments.SetObject(2, nullptr);
  EXPECT_EQ(arguments.slot[2].kind, MServiceArguments::kObject);
  arguments.SetObject(2, nullptr);
}

TEST(MServiceArguments, SlotOutsideOfTheRecordIsRefusedAndTheObjectStaysTheCallers) {
  MServiceArguments arguments;
  std::string log;
  Noted object(log, 'a');
  for (const int32_t index : {-1, 4, INT32_MIN, INT32_MAX}) {
    EXPECT_RAISES(arguments.Set(index, 1), "Index out of range.", 0);
    EXPECT_RAISES(arguments.SetObject(index, &object), "Index out of range.", 0);
    EXPECT_RAISES(arguments.Clear(index), "Index out of range.", 0);
  }
  EXPECT_EQ(log, "");
}

TEST(MServiceArguments, FailureOfAnOverwrittenObjectPassesOnAndTheNewValueStands) {
  const CountingFunctions table;
  std::string log;
  {
    MServiceArguments arguments;
    arguments.SetObject(0, new Noted(log, 'a', true));
    EXPECT_RAISES(arguments.Set(0, 9), "a", 0);
    EXPECT_EQ(arguments.slot[0].value, 9);
    arguments.SetObject(1, new Noted(log, 'b', true));
    EXPECT_RAISES(arguments.SetObject(1, new Noted(log, 'c')), "b", 0);
    EXPECT_EQ(log, "ab");
  }
  EXPECT_EQ(log, "abc");
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MServiceArguments, FailureOfOneObjectDoesNotKeepTheOthersAlive) {
  const CountingFunctions table;
  std::string log;
  const auto destroy = [&log] {
    MServiceArguments arguments;
    for (int32_t i = 0; i < 4; ++i)
      arguments.SetObject(i, new Noted(log, static_cast<char>('0' + i), i == 1 || i == 2));
  };
  EXPECT_RAISES(destroy(), "2", 0);  // the first one to fail
  EXPECT_EQ(log, "3210");
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MServiceArguments, FailureOfAnObjectDoesNotReplaceTheFailureThatIsUnderWay) {
  const CountingFunctions table;
  std::string log;
  const auto fail = [&log] {
    MServiceArguments arguments;
    arguments.SetObject(0, new Noted(log, 'a'));
    arguments.SetObject(1, new Noted(log, 'b', true));
    throw MException("the first failure");
  };
  EXPECT_RAISES(fail(), "the first failure", 0);
  EXPECT_EQ(log, "ba");
  EXPECT_EQ(table.GetBalance(), 0);
}

}  // namespace
