// Random sequences of operations beside std::u16string, on a few texts that share their buffers.

#include <algorithm>
#include <string>

#include "tests/common/TestRandom.h"
#include "tests/core/Balanced.h"
#include "tests/core/MStringRecord.h"

namespace {

using MStringModel = Balanced;

constexpr int kTexts = 4;
constexpr const char* kLiterals[] = {"", "a", "literal", "0123456789abcdefghij", "b\x80\xFFz"};

struct Pair {
  MString text;
  std::u16string model;
};

std::u16string UnitsOf(const char* narrow) {
  std::u16string units;
  for (; *narrow; ++narrow) units += static_cast<MChar>(static_cast<signed char>(*narrow));
  return units;
}

MChar RandomUnit(TestRandom& random) {
  return random.OneIn(4) ? static_cast<MChar>(random.Below(0x10000))
                         : static_cast<MChar>('a' + random.Below(4));
}

std::size_t Limited(int32_t position, const std::u16string& model) {
  return static_cast<std::size_t>(std::clamp(position, 0, static_cast<int32_t>(model.size())));
}

std::u16string ModelSubstring(const std::u16string& model, int32_t start, int32_t count) {
  if (start < 0 || count <= 0 || start >= static_cast<int32_t>(model.size())) return {};
  return model.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(count));
}

int32_t ModelFind(const std::u16string& model, MChar unit, int32_t start) {
  const std::size_t found = model.find(unit, static_cast<std::size_t>(std::max(start, 0)));
  return found == std::u16string::npos ? -1 : static_cast<int32_t>(found);
}

int32_t ModelFindLast(const std::u16string& model, MChar unit, int32_t start) {
  if (start < 0) return -1;
  const std::size_t found = model.rfind(unit, static_cast<std::size_t>(start));
  return found == std::u16string::npos ? -1 : static_cast<int32_t>(found);
}

void AppendSomething(Pair& target, const Pair& source, TestRandom& random) {
  const char* const literal = kLiterals[random.Below(5)];
  const MChar unit = RandomUnit(random);
  const int32_t count = random.Integer(-2, 20);
  switch (random.Below(5)) {
    case 0:
      target.text.Append(source.text);
      target.model += std::u16string(source.model);
      break;
    case 1:
      target.text.Append(literal);
      target.model += UnitsOf(literal);
      break;
    case 2:
      target.text.Append(unit);
      target.model += unit;
      break;
    case 3:
      target.text.AppendRepeated(unit, count);
      target.model.append(static_cast<std::size_t>(std::max(count, 0)), unit);
      break;
    default:
      target.text.AppendUnits(source.model.data(), static_cast<int32_t>(source.model.size()));
      target.model += std::u16string(source.model);
  }
}

void InsertSomething(Pair& target, const Pair& source, TestRandom& random) {
  const int32_t position = random.Integer(-3, static_cast<int32_t>(target.model.size()) + 3);
  const std::size_t place = Limited(position, target.model);
  if (random.OneIn(2)) {
    const MChar unit = RandomUnit(random);
    target.text.Insert(position, unit);
    target.model.insert(place, 1, unit);
  } else {
    target.text.Insert(position, source.text);
    target.model.insert(place, std::u16string(source.model));
  }
}

void ReplaceText(Pair& target, const Pair& source, TestRandom& random) {
  const int32_t length = static_cast<int32_t>(source.model.size());
  const int32_t start = random.Integer(-2, length + 2);
  const int32_t count = random.Integer(-2, length + 2);
  const char* const literal = kLiterals[random.Below(5)];
  switch (random.Below(6)) {
    case 0:
      target = Pair(source);
      break;
    case 1:
      target = {source.text.Substring(start, count), ModelSubstring(source.model, start, count)};
      break;
    case 2:
      target = {MString::Literal(literal), UnitsOf(literal)};
      break;
    case 3:
      target = {MString::FromNarrow(literal), UnitsOf(literal)};
      break;
    case 4:
      target.text.Clear();
      target.model.clear();
      break;
    default:
      target.text.Reserve(random.Integer(length + 1, 3 * length + 1) +
                          static_cast<int32_t>(target.model.size()));
  }
}

void ExpectEqual(const Pair& pair, TestRandom& random) {
  const auto& [text, model] = pair;
  ASSERT_EQ(text.GetLength(), static_cast<int32_t>(model.size()));
  for (int32_t i = 0; i <= text.GetLength(); ++i)
    ASSERT_EQ(text.At(i), i < text.GetLength() ? model[static_cast<std::size_t>(i)] : 0);
  if (!text.IsLiteral()) {
    ASSERT_EQ(text.Units()[text.GetLength()], 0);
    ASSERT_GE(CapacityOf(text), 2 * (text.GetLength() + 1) + 8);
  }
  ASSERT_TRUE(text == MString(model));
  const MChar unit = RandomUnit(random);
  const int32_t start = random.Integer(-3, text.GetLength() + 3);
  ASSERT_EQ(text.Find(unit, start), ModelFind(model, unit, start));
  ASSERT_EQ(text.FindLast(unit, start), ModelFindLast(model, unit, start));
}

TEST_F(MStringModel, RandomOperationsAgreeWithStandardStrings) {
  for (uint32_t seed = 1; seed <= 40; ++seed) {
    SCOPED_TRACE(seed);
    TestRandom random(seed);
    Pair pairs[kTexts];
    for (int step = 0; step < 500; ++step) {
      Pair& target = pairs[random.Below(kTexts)];
      const Pair& source = pairs[random.Below(kTexts)];
      if (target.model.size() + source.model.size() > 2000 || random.OneIn(3))
        ReplaceText(target, source, random);
      else if (random.OneIn(2))
        InsertSomething(target, source, random);
      else
        AppendSomething(target, source, random);
      for (const Pair& pair : pairs) ASSERT_NO_FATAL_FAILURE(ExpectEqual(pair, random));
    }
  }
}

TEST_F(MStringModel, CountsOfSharedBuffersAreTheNumberOfTheirHolders) {
  TestRandom random(7);
  MString texts[8];
  for (int step = 0; step < 2000; ++step) {
    MString& text = texts[random.Below(8)];
    if (random.OneIn(3))
      text = Buffer("shared");
    else
      text = texts[random.Below(8)];
    if (random.OneIn(4)) text.Append(u'x');
    for (const MString& one : texts) {
      if (one.IsLiteral()) continue;
      const auto holders = std::count_if(std::begin(texts), std::end(texts), [&](const MString& other) {
        return other.GetData() == one.GetData();
      });
      ASSERT_EQ(ReferencesOf(one), holders);
    }
  }
}

}  // namespace
