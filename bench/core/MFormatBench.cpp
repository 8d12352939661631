// MFormat beside snprintf: a message with a text, a padded integer and a double; a long one with eight texts
// and eight integers.

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

// 300 characters.
void FormatLongMessage(benchmark::State& state) {
  Calibrate(state);
  int i = 0;
  for (auto _ : state) {
    ++i;
    MFormat format = Format(
        "Reading \"{0}\" at byte {1}: module \"{2}\" of size {3} holds \"{4}\" {5} times, \"{6}\" in row "
        "{7}; "
        "parameter \"{8}\" was {9}, \"{10}\" was {11}, the preset \"{12}\" has {13} points and \"{14}\" has "
        "{15} "
        "of them, so that nothing of what is there fits the plug-in any longer.");
    for (int k = 0; k < 8; ++k) format.Arg("voice.wav").Arg(i * (k + 1));
    const MString text = format.Text();
    benchmark::DoNotOptimize(text.GetData());
  }
}
BENCHMARK(FormatLongMessage);

void FormatLongMessagePrintf(benchmark::State& state) {
  Calibrate(state);
  int i = 0;
  for (auto _ : state) {
    char text[512];
    ++i;
    const char* const name = "voice.wav";
    std::snprintf(
        text, sizeof text,
        "Reading \"%s\" at byte %d: module \"%s\" of size %d holds \"%s\" %d times, \"%s\" in row %d; "
        "parameter \"%s\" was %d, \"%s\" was %d, the preset \"%s\" has %d points and \"%s\" has %d "
        "of them, so that nothing of what is there fits the plug-in any longer.",
        name, i, name, i * 2, name, i * 3, name, i * 4, name, i * 5, name, i * 6, name, i * 7, name, i * 8);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(FormatLongMessagePrintf);

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
