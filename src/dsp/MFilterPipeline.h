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
//
// A run of frames is Start, Go from turn kFill - 1 up to the turn before the last frame, and Finish. Between
// these calls another port may take over, and sections may be changed.
template <int kCount, typename Section>
class Pipeline {
 public:
  static constexpr int kFill = 2 * kCount;  // frames that are on their way

  M_PIPELINE explicit Pipeline(Section (&sections)[kCount]) : sections_(sections) {}

  template <typename Port>
  M_PIPELINE void Run(const Port& port, int32_t frames) {
    if (frames < kFill) {
      for (int32_t i = 0; i < frames; ++i) Through<0, kCount>(port, port.Load(i), i);
      return;
    }
    Start(port);
    Go(port, kFill - 1, frames - 1);
    Finish(port, frames - 1);
  }
  // Loads the first kFill frames.
  template <typename Port>
  M_PIPELINE void Start(const Port& port) {
    Fill<kFill - 1>(port);
  }
  // Turns `i` to `end` - 1; turn i loads frame i + 1.
  template <typename Port>
  M_PIPELINE void Go(const Port& port, int32_t i, int32_t end) {
    for (; i < end - 1; i += 2) {
      Turn<kCount - 1>(port, i);
      Turn<kCount - 1>(port, i + 1);
    }
    if (i < end) Turn<kCount - 1>(port, i);
  }
  // One turn, for a few that stand alone.
  template <typename Port>
  M_PIPELINE void GoOnce(const Port& port, int32_t i) {
    Turn<kCount - 1>(port, i);
  }
  // Takes all frames that are on their way, of which `newest` is the last.
  template <typename Port>
  M_PIPELINE void Finish(const Port& port, int32_t newest) {
    Drain<kFill - 1>(port, newest);
  }

 private:
  using Value = typename Section::Value;

  // One frame through the sections kFrom to kEnd - 1.
  template <int kFrom, int kEnd, typename Port>
  M_PIPELINE Value Through(const Port& port, Value x, int32_t frame) {
    if constexpr (kFrom < kEnd)
      return Through<kFrom + 1, kEnd>(port, port.template Take<kFrom>(sections_[kFrom].Step(x), frame),
                                      frame);
    else
      return x;
  }
  // The frame that stands kBehind frames behind the newest one is an input of section kBehind/2, or its
  // output.
  template <int kBehind, typename Port>
  M_PIPELINE void Fill(const Port& port) {
    constexpr int kSection = kBehind / 2;
    constexpr int kFrame = kFill - 1 - kBehind;
    const Value x = Through<0, kSection>(port, port.Load(kFrame), kFrame);
    if constexpr (kBehind % 2 == 0)
      inputs_[kSection] = x;
    else
      outputs_[kSection] = sections_[kSection].Step(x);
    if constexpr (kBehind > 0) Fill<kBehind - 1>(port);
  }
  template <int kSection, typename Port>
  M_PIPELINE void Turn(const Port& port, int32_t i) {
    const Value y = sections_[kSection].Step(inputs_[kSection]);
    const Value next = port.template Take<kSection>(outputs_[kSection], i - 1 - 2 * kSection);
    if constexpr (kSection < kCount - 1) inputs_[kSection + 1] = next;
    outputs_[kSection] = y;
    if constexpr (kSection > 0)
      Turn<kSection - 1>(port, i);
    else
      inputs_[0] = port.Load(i + 1);
  }
  template <int kBehind, typename Port>
  M_PIPELINE void Drain(const Port& port, int32_t newest) {
    constexpr int kSection = kBehind / 2;
    const int32_t frame = newest - kBehind;
    if constexpr (kBehind % 2 == 0)
      Through<kSection, kCount>(port, inputs_[kSection], frame);
    else
      Through<kSection + 1, kCount>(port, port.template Take<kSection>(outputs_[kSection], frame), frame);
    if constexpr (kBehind > 0) Drain<kBehind - 1>(port, newest);
  }

  Section (&sections_)[kCount];
  Value inputs_[kCount];
  Value outputs_[kCount];
};

}  // namespace
