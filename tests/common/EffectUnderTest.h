#pragma once
// An effect as a host sees it: everything goes through its entry point, the numbered services and the rows of
// its public block.

#include <cstring>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "exports/PluginEntries.h"
#include "tests/common/AudioBlock.h"

// All effects of the library.
inline std::vector<PluginEntry> GetAllEffects() {
  std::vector<PluginEntry> effects(kPluginEntries, kPluginEntries + kPluginEntryCount);
  std::erase_if(effects,
                [](const PluginEntry& entry) { return entry.kind != std::string_view("AudioEffect"); });
  return effects;
}

class EffectUnderTest {
 public:
  explicit EffectUnderTest(const PluginEntry& entry) : entryPoint_(entry.entryPoint) {
    instance_ = MAsAddress<void>(Call(MService::kAttach));
  }
  EffectUnderTest(const EffectUnderTest&) = delete;
  EffectUnderTest& operator=(const EffectUnderTest&) = delete;
  ~EffectUnderTest() { Call(MService::kDestroy); }

  MWord Call(int32_t service, MWord a = 0, MWord b = 0, MWord c = 0) {
    MServiceArguments arguments(a, b, c);
    return entryPoint_(instance_, service, &arguments);
  }
  MWord Prepare(int32_t channels, int32_t sampleRate) {
    channels_ = channels;
    return Call(MService::kPrepare, channels, sampleRate);
  }
  MWord Process(float** in, float** out, int32_t samples) {
    return Call(MService::kProcess, MAsWord(in), MAsWord(out), samples);
  }
  MWord IsSilent() { return Call(MService::kIsSilent); }
  MWord Skip(int32_t samples) { return Call(MService::kSkip, samples); }

  // What comes out for a signal that is handed in as blocks of these sizes, the last size again and again;
  // without a size as one block. A sample that no block writes is no number.
  AudioBlock Answer(AudioBlock signal, const std::vector<int32_t>& sizes = {}) {
    if (signal.GetChannelCount() < channels_) throw std::invalid_argument("fewer channels than prepared");
    AudioBlock out = AudioBlock::Constant(signal.GetChannelCount(), signal.GetLength(), NAN);
    std::size_t next = 0;
    for (int32_t done = 0; done < signal.GetLength();) {
      int32_t size = signal.GetLength() - done;
      if (!sizes.empty()) size = std::min(size, sizes[std::min(next++, sizes.size() - 1)]);
      Process(signal.From(done), out.From(done), size);
      done += size;
    }
    return out;
  }
  // Hands in as many zeros, and says what comes out.
  AudioBlock AnswerToSilence(int32_t channels, int32_t samples) {
    return Answer(AudioBlock(channels, samples), {512});
  }

  MPluginPublicBlock& GetBlock() { return *MAsAddress<MPluginPublicBlock>(Call(MService::kPublicBlock)); }
  int32_t GetRowCount() { return GetBlock().parameterCount; }
  MPluginParameter& GetRow(int32_t index) { return GetBlock().parameters[index]; }

  // The value of a row, 0 for one without.
  double Get(int32_t index) {
    const MPluginParameter& row = GetRow(index);
    switch (row.kind) {
      case MParameterKind::kReal:
        return MLoadShared(row.real.value);
      case MParameterKind::kInteger:
        return MLoadShared(row.integer.value);
      case MParameterKind::kEnumeration:
        return MLoadShared(row.enumeration.value);
      case MParameterKind::kSwitch:
        return MLoadShared(row.onOff.value);
      default:
        return 0;
    }
  }
  // Writes a row's value as a host does, without a look at its range; a number is cut to what the row holds.
  void Set(int32_t index, double value) {
    Write(index, value);
    Call(MService::kParameterChanged, index);
  }
  void Set(const char* key, double value) {
    for (int32_t i = 0; i < GetRowCount(); ++i)
      if (GetRow(i).key == MString::Literal(key)) return Set(i, value);
    throw std::invalid_argument(key);
  }
  // Puts every row somewhere into its range.
  void SetAllAtRandom(TestRandom& random) {
    for (int32_t i = 0; i < GetRowCount(); ++i) {
      const MPluginParameter& row = GetRow(i);
      switch (row.kind) {
        case MParameterKind::kReal:
          Set(i, random.Real(row.real.minimum, row.real.maximum));
          break;
        case MParameterKind::kInteger:
          Set(i, random.Integer(row.integer.minimum, row.integer.maximum));
          break;
        case MParameterKind::kEnumeration:
          Set(i, random.Below(row.enumeration.count));
          break;
        default:
          Set(i, random.Below(2));
      }
    }
  }
  // Puts these bits into a row's value.
  void SetBits(int32_t index, uint64_t bits) {
    double real;
    std::memcpy(&real, &bits, sizeof real);
    const bool isReal = GetRow(index).kind == MParameterKind::kReal;
    Set(index, isReal ? real : static_cast<int32_t>(bits));
  }

 private:
  void Write(int32_t index, double value) {
    MPluginParameter& row = GetRow(index);
    const auto number = static_cast<int32_t>(value >= INT32_MIN && value <= INT32_MAX ? value : INT32_MAX);
    switch (row.kind) {
      case MParameterKind::kReal:
        return MStoreShared(row.real.value, value);
      case MParameterKind::kInteger:
        return MStoreShared(row.integer.value, number);
      case MParameterKind::kEnumeration:
        return MStoreShared(row.enumeration.value, number);
      case MParameterKind::kSwitch:
        return MStoreShared(row.onOff.value, number);
      default:
        return;  // a row without a value
    }
  }

  MPluginEntryPoint* entryPoint_;
  void* instance_ = nullptr;
  int32_t channels_ = 0;
};
