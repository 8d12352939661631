// What is left when there is no memory: the text as it was, and nothing leaks.

#include <functional>

#include "tests/core/Balanced.h"
#include "tests/core/MStringRecord.h"

namespace {

using MStringFailure = Balanced;

using Operation = std::function<void(MString&)>;

// Runs the operation with each request for memory failing, on literal, own and shared text.
void ExpectTextSurvives(const char* name, const Operation& operation) {
  const MString shared = Buffer("0123456789");
  const std::function<MString()> sources[] = {[] { return MString("0123456789"); },
                                              [] { return Buffer("0123456789"); }, [&] { return shared; }};
  for (const auto& make : sources) {
    const int requests = FailEachRequest(make, operation, [&](const MString& text) {
      EXPECT_EQ(text, "0123456789") << name;
      EXPECT_EQ(text.IsLiteral(), make().IsLiteral()) << name;
      if (text.GetData() == shared.GetData()) {
        EXPECT_EQ(ReferencesOf(shared), 2) << name;
      }
    });
    EXPECT_GT(requests, 0) << name << " needs no memory";
  }
  EXPECT_EQ(ReferencesOf(shared), 1) << name;
}

TEST_F(MStringFailure, OperationsThatWriteLeaveTheTextAsItWas) {
  const std::pair<const char*, Operation> operations[] = {
      {"reserve", [](MString& text) { text.Reserve(100); }},
      {"append text", [](MString& text) { text.Append(MString("01234567890123456789")); }},
      {"append itself", [](MString& text) { text.Append(text); }},
      {"append narrow", [](MString& text) { text.Append("01234567890123456789"); }},
      {"append counted narrow", [](MString& text) { text.AppendNarrow("01234567890123456789", 20); }},
      {"append units", [](MString& text) { text.AppendUnits(u"01234567890123456789", 20); }},
      {"append repeated", [](MString& text) { text.AppendRepeated(u'x', 20); }},
      {"insert text", [](MString& text) { text.Insert(3, Buffer("01234567890123456789")); }},
      {"insert itself", [](MString& text) { text.Insert(3, text); }},
      {"insert units", [](MString& text) { text.InsertUnits(3, u"01234567890123456789", 20); }},
      {"insert narrow", [](MString& text) { text.InsertNarrow(3, "01234567890123456789", 20); }},
  };
  for (const auto& [name, operation] : operations) ExpectTextSurvives(name, operation);
}

TEST_F(MStringFailure, SingleUnitsLeaveAFullBlockAsItWas) {
  const auto full = [] { return Buffer("01234567890"); };  // eleven units and the terminator fill 32 bytes
  const auto unchanged = [](const MString& text) { EXPECT_EQ(text, "01234567890"); };
  EXPECT_EQ(FailEachRequest(
                full, [](MString& text) { text.Append(u'x'); }, unchanged),
            1);
  EXPECT_EQ(FailEachRequest(
                full, [](MString& text) { text.Insert(0, u'x'); }, unchanged),
            1);
}

TEST_F(MStringFailure, OperationsThatMakeATextLeaveNothingBehind) {
  const std::pair<const char*, std::function<MString(const MString&)>> operations[] = {
      {"from narrow", [](const MString&) { return MString::FromNarrow("abc"); }},
      {"from counted narrow", [](const MString&) { return MString::FromNarrow("abc", 2); }},
      {"from wide", [](const MString&) { return MString(u"abc"); }},
      {"from a unit", [](const MString&) { return MString(u'a'); }},
      {"substring", [](const MString& text) { return text.Substring(2, 3); }},
      {"from integer", [](const MString&) { return MString::FromInteger(-5, 10, 4, u'0'); }},
      {"from unsigned", [](const MString&) { return MString::FromUnsigned(5); }},
      {"from double", [](const MString&) { return MString::FromDouble(0.5, 4); }},
      {"printf", [](const MString&) { return MString::Printf("%d", 5); }},
  };
  for (const auto& [name, operation] : operations) {
    const MString source = Buffer("0123456789");
    const int requests =
        FailEachRequest([] { return MString("before"); }, [&](MString& text) { text = operation(source); },
                        [](const MString& text) { EXPECT_EQ(text, "before"); });
    EXPECT_EQ(requests, 1) << name;
    EXPECT_EQ(source, "0123456789");
  }
}

TEST_F(MStringFailure, TheTextOfTheOperatingSystemsErrorLeavesNothingBehind) {
  FailEachRequest([] { return 0; }, [](int) { OSErrorText(); }, [](int) {});
}

TEST_F(MStringFailure, ReadingALongNumberLeavesNothingBehind) {
  MString text("1.5");
  text.AppendRepeated(u' ', 1000);
  const int requests = FailEachRequest([] { return 0.0; }, [&](double& value) { value = text.ToDouble(); },
                                       [](double value) { EXPECT_EQ(value, 0); });
  EXPECT_GT(requests, 0);
  EXPECT_EQ(text.ToDouble(), 1.5);
}

}  // namespace
