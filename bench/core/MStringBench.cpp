// MString beside std::u16string, and its comparison beside a plain loop that folds the same way.

#include "core/MString.h"

#include <functional>
#include <string>

#include "bench/Calibrated.h"

namespace {

constexpr char16_t kWords[] = u"The quick brown fox jumps over the lazy dog and runs away";
constexpr int kAppends = 64;

void StringAppend(benchmark::State& state) {
  Calibrate(state);
  const MString word(kWords);
  for (auto _ : state) {
    MString text;
    for (int i = 0; i < kAppends; ++i) text.Append(word);
    benchmark::DoNotOptimize(text.GetData());
  }
}
BENCHMARK(StringAppend);

void StringAppendStd(benchmark::State& state) {
  Calibrate(state);
  const std::u16string word(kWords);
  for (auto _ : state) {
    std::u16string text;
    for (int i = 0; i < kAppends; ++i) text.append(word);
    benchmark::DoNotOptimize(text.data());
  }
}
BENCHMARK(StringAppendStd);

void StringAppendUnit(benchmark::State& state) {
  Calibrate(state);
  for (auto _ : state) {
    MString text;
    for (int i = 0; i < 1000; ++i) text.Append(static_cast<MChar>('a' + i % 26));
    benchmark::DoNotOptimize(text.GetData());
  }
}
BENCHMARK(StringAppendUnit);

void StringAppendUnitStd(benchmark::State& state) {
  Calibrate(state);
  for (auto _ : state) {
    std::u16string text;
    for (int i = 0; i < 1000; ++i) text.push_back(static_cast<char16_t>('a' + i % 26));
    benchmark::DoNotOptimize(text.data());
  }
}
BENCHMARK(StringAppendUnitStd);

void StringCopy(benchmark::State& state) {
  Calibrate(state);
  const MString text(kWords);
  for (auto _ : state) {
    MString copy(text);
    benchmark::DoNotOptimize(copy.GetData());
  }
}
BENCHMARK(StringCopy);

void StringCopyStd(benchmark::State& state) {
  Calibrate(state);
  const std::u16string text(kWords);
  for (auto _ : state) {
    std::u16string copy(text);
    benchmark::DoNotOptimize(copy.data());
  }
}
BENCHMARK(StringCopyStd);

void StringHash(benchmark::State& state) {
  Calibrate(state);
  const MString text(kWords);
  for (auto _ : state) benchmark::DoNotOptimize(text.Hash());
}
BENCHMARK(StringHash);

void StringHashStd(benchmark::State& state) {
  Calibrate(state);
  const std::u16string text(kWords);
  for (auto _ : state) benchmark::DoNotOptimize(std::hash<std::u16string>()(text));
}
BENCHMARK(StringHashStd);

char16_t Fold(char16_t c) {
  if (c >= 192) c = FoldDiacritics(c);
  return c >= 'A' && c <= 'Z' ? static_cast<char16_t>(c + 32) : c;
}

int PlainCompare(const char16_t* a, const char16_t* b) {
  for (;; ++a, ++b) {
    const int difference = Fold(*a) - Fold(*b);
    if (difference != 0 || *a == 0) return difference;
  }
}

// Equal texts, the longest way: once ASCII that differs in case, once with a diacritic in every second place.
constexpr char16_t kUpper[] = u"THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG AND RUNS AWAY";
constexpr char16_t kAccented[] =
    u"T\u00E9\u00C7\u0159\u017E\u00E1\u010D\u00FDn\u011Bc\u014Fx\u00E0\u0118\u0105";
constexpr char16_t kPlain[] = u"TECRZACYNECOXAEA";

void StringCompare(benchmark::State& state, const char16_t* left, const char16_t* right) {
  Calibrate(state);
  const MString a(left), b(right);
  if (a.Compare(b) != 0) state.SkipWithError("texts differ");
  for (auto _ : state) {
    benchmark::DoNotOptimize(&a);
    benchmark::ClobberMemory();
    benchmark::DoNotOptimize(a.Compare(b));
  }
}
BENCHMARK_CAPTURE(StringCompare, ascii, kWords, kUpper)->Name("StringCompare");
BENCHMARK_CAPTURE(StringCompare, accents, kAccented, kPlain)->Name("StringCompareAccents");

void StringComparePlain(benchmark::State& state, const char16_t* left, const char16_t* right) {
  Calibrate(state);
  const std::u16string a(left), b(right);
  if (PlainCompare(left, right) != 0) state.SkipWithError("texts differ");
  for (auto _ : state) {
    benchmark::DoNotOptimize(&a);
    benchmark::ClobberMemory();
    benchmark::DoNotOptimize(PlainCompare(a.data(), b.data()));
  }
}
BENCHMARK_CAPTURE(StringComparePlain, ascii, kWords, kUpper)->Name("StringComparePlain");
BENCHMARK_CAPTURE(StringComparePlain, accents, kAccented, kPlain)->Name("StringCompareAccentsPlain");

}  // namespace
