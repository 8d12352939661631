#include "core/MXMLItem.h"

#include <cstring>
#include <map>
#include <vector>

#include "core/MEncoding.h"
#include "core/MMemoryStream.h"
#include "core/MXMLItemIterator.h"
#include "tests/common/TestRandom.h"
#include "tests/core/Balanced.h"
#include "tests/core/XMLTexts.h"

namespace {

class MXMLItemTest : public Balanced {};

constexpr char kNoAttribute[] =
    "There is no attribute in the cache. Previous call to HasAttribute probably did not succeed.";
constexpr char kNoSubItem[] =
    "There is no subitem in the cache. Previous call to HasSubItem probably did not succeed.";

std::string Names(const MXMLItem& item) {
  std::string names;
  for (const MAttribute& attribute : item.GetAttributes()) names += Utf8(attribute.name) + " ";
  return names;
}

TEST_F(MXMLItemTest, AFreshItemIsARootWithoutAnything) {
  const MXMLItem item;
  EXPECT_EQ(item.GetOwner(), nullptr);
  EXPECT_EQ(item.GetNext(), nullptr);
  EXPECT_EQ(item.GetPrevious(), nullptr);
  EXPECT_EQ(item.GetDepth(), 0);
  EXPECT_TRUE(item.GetChildren().IsEmpty());
  EXPECT_TRUE(item.GetAttributes().IsEmpty());
  EXPECT_EQ(item.GetName(), "");
  EXPECT_EQ(item.GetText(), "");
}

TEST_F(MXMLItemTest, AttributesAreSortedAsTheyAreSet) {
  MXMLItem item("a");
  for (const char* name : {"gain", "Feedback", "\xC3\xA9t\xC3\xA9", "delay", "mix"})
    item.SetAttribute(MEncoding::UTF8Codec::Get().Decode(name, static_cast<int32_t>(std::strlen(name))), "1");
  EXPECT_EQ(Names(item), "delay \xC3\xA9t\xC3\xA9 Feedback gain mix ");
}

TEST_F(MXMLItemTest, SettingAnAttributeAgainReplacesItsValueAndKeepsItsName) {
  MXMLItem item("a");
  item.SetAttribute("Gain", "1");
  item.SetAttribute("gAIN", "2");
  EXPECT_EQ(Names(item), "Gain ");
  EXPECT_EQ(item.GetAttribute("gain"), "2");
}

TEST_F(MXMLItemTest, AttributesAreFoundWithoutRegardToCaseAndAccents) {
  MXMLItem item("a");
  item.SetAttribute("name", "x");
  item.SetAttribute(MString(u"caf\u00E9"), "y");
  EXPECT_TRUE(item.HasAttribute("NAME"));
  EXPECT_EQ(item.CachedAttribute(), "x");
  EXPECT_EQ(item.GetAttribute("cafe"), "y");
  EXPECT_EQ(item.GetAttribute(MString(u"C\u00C0FE")), "y");
}

TEST_F(MXMLItemTest, ASetOfManyNamesBehavesLikeAMap) {
  TestRandom random;
  MXMLItem item("a");
  std::map<std::string, std::string> model;
  for (int i = 0; i < 3000; ++i) {
    const std::string name = "n" + std::to_string(random.Below(300));
    const std::string value = std::to_string(i);
    if (random.OneIn(4)) {
      ASSERT_EQ(item.RemoveAttribute(Buffer(name.c_str())), model.erase(name) == 1);
    } else {
      item.SetAttribute(Buffer(name.c_str()), Buffer(value.c_str()));
      model[name] = value;
    }
  }
  ASSERT_EQ(item.GetAttributes().GetCount(), static_cast<int32_t>(model.size()));
  for (const auto& [name, value] : model) {
    EXPECT_EQ(Utf8(item.GetAttribute(Buffer(name.c_str()))), value);
    EXPECT_EQ(Utf8(item.GetRequiredAttribute(Buffer(name.c_str()))), value);
  }
}

TEST_F(MXMLItemTest, AMissingAttributeGivesTheDefaultOrRaises) {
  MXMLItem item("a");
  item.SetAttribute("b", "");
  EXPECT_EQ(item.GetAttribute("c"), "");
  EXPECT_EQ(item.GetAttribute("c", "0.5"), "0.5");
  EXPECT_EQ(item.GetAttribute("b", "0.5"), "");
  EXPECT_EQ(item.GetRequiredAttribute("b"), "");
  EXPECT_RAISES(item.GetRequiredAttribute("c"), "Could not find required attribute (c).", 0);
}

TEST_F(MXMLItemTest, TheCacheOfAttributesHoldsWhatTheLastSearchFound) {
  MXMLItem item("a");
  item.SetAttribute("b", "1");
  EXPECT_RAISES(item.CachedAttribute(), kNoAttribute, 0);
  EXPECT_TRUE(item.HasAttribute("b"));
  item.SetAttribute("b", "2");
  item.SetAttribute("a", "0");
  item.SetAttribute("c", "3");
  EXPECT_EQ(item.CachedAttribute(), "2");
  EXPECT_FALSE(item.HasAttribute("d"));
  EXPECT_RAISES(item.CachedAttribute(), kNoAttribute, 0);
}

TEST_F(MXMLItemTest, TheCachesAreEmptiedByRemovalAndLoading) {
  MXMLItem item("a");
  const auto fill = [&item] {
    item.SetAttribute("b", "1");
    item.AddSubItem("s");
    return item.HasAttribute("b") && item.HasSubItem("s");
  };
  ASSERT_TRUE(fill());
  EXPECT_TRUE(item.RemoveAttribute("B"));
  EXPECT_FALSE(item.RemoveAttribute("B"));
  EXPECT_RAISES(item.CachedAttribute(), kNoAttribute, 0);
  item.RemoveSubItem(item.CachedSubItem());
  EXPECT_RAISES(item.CachedSubItem(), kNoSubItem, 0);
  ASSERT_TRUE(fill());
  LoadText(item, "<r/>");
  EXPECT_RAISES(item.CachedAttribute(), kNoAttribute, 0);
  EXPECT_RAISES(item.CachedSubItem(), kNoSubItem, 0);
  ASSERT_TRUE(fill());
  item.Clear();
  EXPECT_RAISES(item.CachedAttribute(), kNoAttribute, 0);
  EXPECT_RAISES(item.CachedSubItem(), kNoSubItem, 0);
}

TEST_F(MXMLItemTest, ASubItemIsMadeOnceAndAddedAlways) {
  MXMLItem item("a");
  MXMLItem& first = item.SubItem("graph");
  EXPECT_EQ(&item.SubItem("GRAPH"), &first);
  MXMLItem& second = item.AddSubItem("graph");
  EXPECT_NE(&second, &first);
  EXPECT_EQ(&item.SubItem("graph"), &first);
  EXPECT_EQ(item.GetChildren().GetCount(), 2);
  EXPECT_TRUE(item.HasSubItem("Graph"));
  EXPECT_EQ(&item.CachedSubItem(), &first);
  EXPECT_FALSE(item.HasSubItem("points"));
  EXPECT_RAISES(item.CachedSubItem(), kNoSubItem, 0);
}

TEST_F(MXMLItemTest, ChildrenKnowTheirOwnerSiblingsAndDepth) {
  MXMLItem root("a");
  MXMLItem& b = root.AddSubItem("b");
  MXMLItem& c = root.AddSubItem("c");
  MXMLItem& d = root.AddSubItem("d");
  MXMLItem& e = c.AddSubItem("e");
  EXPECT_EQ(b.GetPrevious(), nullptr);
  EXPECT_EQ(b.GetNext(), &c);
  EXPECT_EQ(c.GetPrevious(), &b);
  EXPECT_EQ(c.GetNext(), &d);
  EXPECT_EQ(d.GetNext(), nullptr);
  EXPECT_EQ(e.GetOwner(), &c);
  EXPECT_EQ(e.GetDepth(), 2);
  root.RemoveSubItem(c);
  EXPECT_EQ(b.GetNext(), &d);
  EXPECT_EQ(d.GetPrevious(), &b);
  MXMLItem other;
  EXPECT_RAISES(root.RemoveSubItem(other), "Index out of range.", 0);
}

TEST_F(MXMLItemTest, RandomChildrenThatComeAndGoKeepTheirSiblings) {
  TestRandom random;
  MXMLItem item("a");
  std::vector<MXMLItem*> model;
  for (int i = 0; i < 500; ++i) {
    if (model.empty() || random.OneIn(2)) {
      model.push_back(&item.AddSubItem(MString::FromInteger(i)));
    } else {
      const auto gone = model.begin() + random.Below(static_cast<int32_t>(model.size()));
      EXPECT_TRUE(item.HasSubItem((*gone)->GetName()));
      EXPECT_EQ(&item.CachedSubItem(), *gone);
      item.RemoveSubItem(**gone);
      model.erase(gone);
    }
    ASSERT_EQ(item.GetChildren().GetCount(), static_cast<int32_t>(model.size()));
    for (std::size_t k = 0; k < model.size(); ++k) {
      ASSERT_EQ(item.GetChildren()[static_cast<int32_t>(k)], model[k]);
      ASSERT_EQ(model[k]->GetPrevious(), k == 0 ? nullptr : model[k - 1]);
      ASSERT_EQ(model[k]->GetNext(), k + 1 == model.size() ? nullptr : model[k + 1]);
    }
  }
}

TEST_F(MXMLItemTest, AnIteratorGivesTheChildrenOfANameFromTheFirstOn) {
  MXMLItem item;
  LoadText(item, "<a><p/><q/><P/><pq/></a>");
  MXMLItemIterator i(item, "p");
  EXPECT_RAISES(i.Current(), "XML item iterator has not been initialized.", 0);
  EXPECT_EQ(i.Next(), item.GetChildren()[0]);
  EXPECT_EQ(i.Current(), item.GetChildren()[0]);
  EXPECT_EQ(i.Next(), item.GetChildren()[2]);
  EXPECT_EQ(i.Next(), nullptr);
  EXPECT_EQ(i.Current(), nullptr);
  EXPECT_EQ(i.Next(), nullptr);
  EXPECT_EQ(MXMLItemIterator(item, "x").Next(), nullptr);
}

TEST_F(MXMLItemTest, APrefixIteratorGivesTheChildrenWhoseNamesBeginAlike) {
  MXMLItem item;
  LoadText(item, "<a><point1/><poin/><POINT2/><q/><point/></a>");
  MXMLItemPrefixIterator i(item, "point");
  EXPECT_RAISES(i.Current(), "XML item prefix iterator has not been initialized.", 0);
  for (const int child : {0, 2, 4}) EXPECT_EQ(i.Next(), item.GetChildren()[child]);
  EXPECT_EQ(i.Next(), nullptr);
  MXMLItemPrefixIterator all(item, "");
  for (const int child : {0, 1, 2, 3, 4}) EXPECT_EQ(all.Next(), item.GetChildren()[child]);
  EXPECT_EQ(all.Next(), nullptr);
}

TEST_F(MXMLItemTest, TextIsAddedBehindALineFeed) {
  MXMLItem item("a");
  item.AppendText("x");
  item.AppendText("y");
  EXPECT_EQ(item.GetText(), "x\ny");
}

TEST_F(MXMLItemTest, ReadingAttributesAllocatesNothing) {
  MXMLItem item("a");
  for (int i = 0; i < 20; ++i) item.SetAttribute(MString::FromInteger(i), "0.4000");
  const int64_t calls = table.GetCalls();
  MString value;
  EXPECT_TRUE(item.HasAttribute("13"));
  value = item.CachedAttribute();
  value = item.GetAttribute("7", "1");
  value = item.GetAttribute("seven", "1");
  value = item.GetRequiredAttribute("19");
  EXPECT_EQ(table.GetCalls(), calls);
}

TEST_F(MXMLItemTest, BytesAreStoredAsDigitsAndComeBackAtTheTargetsPosition) {
  const std::string bytes = Pattern(1000);
  MMemoryStream source;
  Put(source, bytes);
  MXMLItem item("a");
  item.StoreBinary(source);
  EXPECT_EQ(item.GetText().GetLength(), 2000);
  EXPECT_EQ(Utf8(item.GetText().Substring(0, 8)), "00830689");
  MMemoryStream target;
  Put(target, "head");
  item.LoadBinary(target);
  EXPECT_EQ(target.GetPosition(), 4);
  EXPECT_EQ(All(target), "head" + bytes);
}

TEST_F(MXMLItemTest, BytesSurviveAFile) {
  const std::string bytes = Pattern(5000);
  MMemoryStream source, target;
  Put(source, bytes);
  MXMLItem item("a"), read;
  item.StoreBinary(source);
  LoadText(read, SaveText(item, false));
  read.LoadBinary(target);
  EXPECT_EQ(All(target), bytes);
}

TEST_F(MXMLItemTest, TextThatHoldsOtherThanDigitsRaisesAndWritesNothing) {
  MMemoryStream target;
  for (const MString& text :
       {MString("0011zz"), MString("00 11"), MString(u"00\u0130\u0130"), MString("-1")}) {
    MXMLItem item("a");
    item.SetText(text);
    EXPECT_RAISES(item.LoadBinary(target), "Could not read required data from stream.", 256);
    EXPECT_EQ(target.GetSize(), 0);
  }
  MXMLItem item("a");
  item.SetText("00ff1");
  item.LoadBinary(target);
  EXPECT_EQ(All(target), std::string("\0\xFF", 2));
  item.SetText("");
  item.LoadBinary(target);
  EXPECT_EQ(target.GetSize(), 2);
}

}  // namespace
