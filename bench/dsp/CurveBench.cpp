// Reading curves, per sample, in blocks of 256 within one segment of each kind; and building one of them.

#include <vector>

#include "bench/Calibrated.h"
#include "dsp/MEnvelopeComputer.h"

namespace {

constexpr int32_t kBlock = 256;

MEnvelopeData Segment(int32_t type, double tension, double tensionX) {
  MEnvelopeData data;
  for (int32_t i = 0; i < 3; ++i) {
    MEnvelopePoint point;
    point.x = i == 0 ? 0 : i + 8;  // the second segment gives a smooth first one a slope
    point.y = i % 2;
    point.type = type;
    point.tension = tension;
    point.tensionX = tensionX;
    data.Add(point);
  }
  data.xMaximum = 10;
  return data;
}

template <typename Out>
void Fill(benchmark::State& state, int32_t type, double tension, double tensionX) {
  MEnvelopeComputer computer;
  computer.Build(Segment(type, tension, tensionX));
  std::vector<Out> output(kBlock);
  Calibrate(state);
  for (auto _ : state) {
    computer.Seek(0.5);
    if constexpr (sizeof(Out) == sizeof(float))
      computer.FillFloat(output.data(), 0.5, 0.01, kBlock);
    else
      computer.FillDouble(output.data(), 0.5, 0.01, kBlock);
    benchmark::DoNotOptimize(output.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kBlock);
}

void CurveFill(benchmark::State& state, int32_t type, double tension, double tensionX) {
  Fill<float>(state, type, tension, tensionX);
}
void CurveFillDouble(benchmark::State& state, int32_t type, double tension, double tensionX) {
  Fill<double>(state, type, tension, tensionX);
}

using namespace MEnvelopeType;
BENCHMARK_CAPTURE(CurveFill, line, kMode1, 0.0, 0.0)->Name("CurveFillLine");
BENCHMARK_CAPTURE(CurveFill, mode1, kMode1, 0.5, 0.0)->Name("CurveFillMode1");
BENCHMARK_CAPTURE(CurveFill, mode2, kMode2, 0.5, 0.0)->Name("CurveFillMode2");
BENCHMARK_CAPTURE(CurveFill, mode3, kMode3, 0.5, 0.0)->Name("CurveFillMode3");
BENCHMARK_CAPTURE(CurveFill, free1, kFree1, 0.5, 0.5)->Name("CurveFillFree1");
BENCHMARK_CAPTURE(CurveFill, smooth1, kSmooth1, 0.0, 0.0)->Name("CurveFillSmooth1");
BENCHMARK_CAPTURE(CurveFillDouble, mode2, kMode2, 0.5, 0.0)->Name("CurveFillDoubleMode2");

// One call per sample, as in a transfer curve or a frequency.
void CurveValue(benchmark::State& state) {
  MEnvelopeComputer computer;
  computer.Build(Segment(kMode2, 0.5, 0));
  Calibrate(state);
  for (auto _ : state) {
    computer.Seek(0.5);
    double sum = 0;
    for (int32_t i = 0; i < kBlock; ++i) sum += computer.GetValue(0.5 + i * 0.01);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kBlock);
}
BENCHMARK(CurveValue);

// Per point, corners included.
void CurveBuild(benchmark::State& state) {
  MEnvelopeData data;
  for (int32_t i = 0; i < 32; ++i) {
    MEnvelopePoint& point = data.Add(i / 31.0, i % 3 * 0.5);
    point.type = i % kCount;
    point.tension = 0.5;
    point.smooth1 = i % 2 * 0.5;
  }
  MEnvelopeComputer computer;
  Calibrate(state);
  for (auto _ : state) {
    computer.Build(data);
    benchmark::DoNotOptimize(computer.GetItemCount());
  }
  state.SetItemsProcessed(state.iterations() * data.GetCount());
}
BENCHMARK(CurveBuild);

}  // namespace
