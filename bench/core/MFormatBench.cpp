// MFormat beside snprintf: a message with a text, a padded integer and a double.

#include "core/MFormat.h"

#include <cstdio>

#include "bench/Calibrated.h"

namespace {

void FormatMessage(benchmark::State& state) {
  Calibrate(state);
  int i = 0;
  for (auto _ : state) {
    ++i;
    const MString text = Format("Error {1:04} reading from file \"{0}\" at {2;.2} s.")
                             .Arg("voice.wav")
                             .Arg(i & 1023)
                             .Arg(i * 0.37)
                             .Text();
    benchmark::DoNotOptimize(text.GetData());
  }
}
BENCHMARK(FormatMessage);

void FormatMessagePrintf(benchmark::State& state) {
  Calibrate(state);
  int i = 0;
  for (auto _ : state) {
    char text[256];
    ++i;
    std::snprintf(text, sizeof text, "Error %04d reading from file \"%s\" at %.2f s.", i & 1023, "voice.wav",
                  i * 0.37);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(FormatMessagePrintf);

void FormatValue(benchmark::State& state) {
  Calibrate(state);
  double value = 0;
  for (auto _ : state) {
    const MString text = Format("{0;.1} dB").Arg(value -= 0.01).Text();
    benchmark::DoNotOptimize(text.GetData());
  }
}
BENCHMARK(FormatValue);

void FormatValuePrintf(benchmark::State& state) {
  Calibrate(state);
  double value = 0;
  for (auto _ : state) {
    char text[64];
    std::snprintf(text, sizeof text, "%.1f dB", value -= 0.01);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(FormatValuePrintf);

}  // namespace
