#include "core/MTranslate.h"

#include <memory>
#include <vector>

#include "tests/core/Balanced.h"

namespace {

using MTranslateTest = Balanced;

// A table in force for its lifetime.
class TableInForce {
 public:
  TableInForce() : before_(MSetTranslationTable(&table)) {}
  TableInForce(const TableInForce&) = delete;
  TableInForce& operator=(const TableInForce&) = delete;
  ~TableInForce() { EXPECT_EQ(MSetTranslationTable(before_), &table); }

  MTranslationTable table;

 private:
  MTranslationTable* before_;
};

TEST_F(MTranslateTest, WithoutATableGivesTheTextItself) {
  const MString text("Out of memory.");
  EXPECT_EQ(Translate(text).GetData(), text.GetData());
  EXPECT_EQ(Translate(text, "section").GetData(), text.GetData());
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST_F(MTranslateTest, GivesTheTranslationOfTextAndSection) {
  TableInForce translations;
  translations.table.Set("Open", "", "Otevrit");
  translations.table.Set("Open", "door", "Otevreno");
  EXPECT_EQ(Translate("Open"), "Otevrit");
  EXPECT_EQ(Translate(Buffer("Open"), Buffer("door")), "Otevreno");
}

TEST_F(MTranslateTest, GivesTheTextItselfForAMiss) {
  TableInForce translations;
  translations.table.Set("Open", "door", "Otevreno");
  const MString text("Open"), other("Opens");
  EXPECT_EQ(Translate(text).GetData(), text.GetData());
  EXPECT_EQ(Translate(text, "window").GetData(), text.GetData());
  EXPECT_EQ(Translate(other, "door").GetData(), other.GetData());
}

TEST_F(MTranslateTest, FindsKeysWithoutRegardToCase) {
  TableInForce translations;
  translations.table.Set("Open", "Door", "Otevreno");
  EXPECT_EQ(Translate("OPEN", "door"), "Otevreno");
}

TEST_F(MTranslateTest, SettingAgainReplaces) {
  TableInForce translations;
  translations.table.Set("Open", "", "one");
  translations.table.Set("open", "", "two");
  EXPECT_EQ(Translate("Open"), "two");
}

TEST_F(MTranslateTest, KeepsEntriesApartThatShareABucket) {
  // All of these begin alike, have 16 characters, and so one hash; in the first order or the last one.
  TableInForce translations;
  std::vector<MString> keys;
  for (int i = 0; i < 200; ++i) keys.push_back(MString::Printf("xxxxxxxxxxxx%04d", i * 7919 % 1000));
  for (const MString& key : keys) {
    ASSERT_EQ(key.Hash(), keys[0].Hash());
    translations.table.Set(key, "s", key.Substring(12));
  }
  for (const MString& key : keys) EXPECT_EQ(Translate(key, "s"), key.Substring(12));
  EXPECT_EQ(Translate("xxxxxxxxxxxxyyyy", "s"), "xxxxxxxxxxxxyyyy");
}

TEST_F(MTranslateTest, KeepsSectionsApartThatShareABucket) {
  TableInForce translations;
  translations.table.Set("Open", "section of a door", "Otevreno");
  for (const MString& section : {MString("section of a cask"), MString("section of a gate")}) {
    ASSERT_EQ(section.Hash() & 255, MString("section of a door").Hash() & 255);
    EXPECT_EQ(Translate("Open", section), "Open");
  }
}

// How many entries lie in a bucket: the table holds its virtual operations and then 256 lists.
int32_t CountInBucket(const MTranslationTable& translations, uint32_t bucket) {
  using List = MList<MTranslationEntry>;
  static_assert(sizeof(MTranslationTable) == sizeof(void*) + 256 * sizeof(List));
  const char* const lists = reinterpret_cast<const char*>(&translations) + sizeof(void*);
  return reinterpret_cast<const List*>(lists)[bucket].GetCount();
}

TEST_F(MTranslateTest, TheBucketIsTheLowByteOfBothHashesJoined) {
  const auto translations = std::make_unique<MTranslationTable>();
  for (const char* const text : {"", "a", "Out of memory.", "Index out of range.", "\xFF"}) {
    for (const char* const section : {"", "b", "a longer name of a section"}) {
      const MString key = MString::Literal(text), name = MString::Literal(section);
      const uint32_t bucket = (key.Hash() ^ name.Hash()) & 255;
      const int32_t before = CountInBucket(*translations, bucket);
      translations->Set(key, name, "x");
      EXPECT_EQ(CountInBucket(*translations, bucket), before + 1) << text << ", " << section;
    }
  }
}

TEST_F(MTranslateTest, TheHashesOfBothKeysChooseTheBucketTogether) {
  // Hash("a") ^ Hash("b") is Hash("b") ^ Hash("a"): one bucket, two entries.
  TableInForce translations;
  translations.table.Set("a", "b", "first");
  translations.table.Set("b", "a", "second");
  EXPECT_EQ(Translate("a", "b"), "first");
  EXPECT_EQ(Translate("b", "a"), "second");
  EXPECT_EQ(Translate("a", "a"), "a");
}

TEST_F(MTranslateTest, AnEntryWithoutMemoryLeavesTheTableAsItWas) {
  const int requests = FailEachRequest(
      [] {
        auto translations = std::make_unique<MTranslationTable>();
        translations->Set("xxxxxxxxxxxxxxx0", "", "zero");
        return translations;
      },
      [](auto& translations) { translations->Set("xxxxxxxxxxxxxxx1", "", "one"); },
      [](auto& translations) {
        EXPECT_EQ(translations->Find("xxxxxxxxxxxxxxx0", ""), "zero");
        EXPECT_EQ(translations->Find("xxxxxxxxxxxxxxx1", ""), "xxxxxxxxxxxxxxx1");
      });
  EXPECT_EQ(requests, 1);
}

}  // namespace
