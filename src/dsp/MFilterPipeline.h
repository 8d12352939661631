#pragma once
#include "core/MTypes.h"

// The loop that the kernels of one source share; M_PIPELINE are the attributes of its functions there.
#if !defined(M_PIPELINE)
#define M_PIPELINE __attribute__((always_inline)) inline
#endif

namespace {

// Runs kCount sections in series. A section gives y = Step(x), both of its type Value. A port gives the
// inputs, Load(frame), and takes each section's output, Take<section>(y, frame), which returns what the next
// section gets.
//
// Within a turn of the loop nothing waits for another part: in turn i section k works on frame i - 2k, while
// its output of the turn before is being taken, and the next input is loaded. So the processor has short
// chains only, and many of them at once.
template <int kCount, typename Section, typename Port>
class Pipeline {
 public:
  M_PIPELINE Pipeline(Section (&sections)[kCount], Port& port) : sections_(sections), port_(port) {}

  M_PIPELINE void Run(int32_t frames) {
    if (frames < kFill) {
      for (int32_t i = 0; i < frames; ++i) Through<0, kCount>(port_.Load(i), i);
      return;
    }
    Fill<kFill - 1>();
    int32_t i = kFill - 1;
    for (; i < frames - 2; i += 2) {
      Turn<kCount - 1>(i);
      Turn<kCount - 1>(i + 1);
    }
    if (i < frames - 1) Turn<kCount - 1>(i);
    Drain<kFill - 1>(frames - 1);
  }

 private:
  using Value = typename Section::Value;
  static constexpr int kFill = 2 * kCount;

  // One frame through the sections kFrom to kEnd - 1.
  template <int kFrom, int kEnd>
  M_PIPELINE Value Through(Value x, int32_t frame) {
    if constexpr (kFrom < kEnd)
      return Through<kFrom + 1, kEnd>(port_.template Take<kFrom>(sections_[kFrom].Step(x), frame), frame);
    else
      return x;
  }
  // The frame that stands kBehind frames behind the newest one is an input of section kBehind/2, or its
  // output.
  template <int kBehind>
  M_PIPELINE void Fill() {
    constexpr int kSection = kBehind / 2;
    constexpr int kFrame = kFill - 1 - kBehind;
    const Value x = Through<0, kSection>(port_.Load(kFrame), kFrame);
    if constexpr (kBehind % 2 == 0)
      inputs_[kSection] = x;
    else
      outputs_[kSection] = sections_[kSection].Step(x);
    if constexpr (kBehind > 0) Fill<kBehind - 1>();
  }
  template <int kSection>
  M_PIPELINE void Turn(int32_t i) {
    const Value y = sections_[kSection].Step(inputs_[kSection]);
    const Value next = port_.template Take<kSection>(outputs_[kSection], i - 1 - 2 * kSection);
    if constexpr (kSection < kCount - 1) inputs_[kSection + 1] = next;
    outputs_[kSection] = y;
    if constexpr (kSection > 0)
      Turn<kSection - 1>(i);
    else
      inputs_[0] = port_.Load(i + 1);
  }
  template <int kBehind>
  M_PIPELINE void Drain(int32_t newest) {
    constexpr int kSection = kBehind / 2;
    const int32_t frame = newest - kBehind;
    if constexpr (kBehind % 2 == 0)
      Through<kSection, kCount>(inputs_[kSection], frame);
    else
      Through<kSection + 1, kCount>(port_.template Take<kSection>(outputs_[kSection], frame), frame);
    if constexpr (kBehind > 0) Drain<kBehind - 1>(newest);
  }

  Section (&sections_)[kCount];
  Port& port_;
  Value inputs_[kCount];
  Value outputs_[kCount];
};

}  // namespace
