#pragma once
// An instrument as a host sees it: everything goes through its entry point, the numbered services and the
// rows of its public block.

#include <limits>
#include <string>

#include "core/MXMLItem.h"
#include "tests/common/EffectUnderTest.h"

// All instruments of the library.
inline std::vector<PluginEntry> GetAllInstruments() {
  std::vector<PluginEntry> instruments(kPluginEntries, kPluginEntries + kPluginEntryCount);
  std::erase_if(instruments,
                [](const PluginEntry& entry) { return entry.kind != std::string_view("AudioStream"); });
  return instruments;
}

class StreamUnderTest : private EffectUnderTest {
 public:
  using EffectUnderTest::Call;
  using EffectUnderTest::EffectUnderTest;
  using EffectUnderTest::Get;
  using EffectUnderTest::GetBlock;
  using EffectUnderTest::GetRow;
  using EffectUnderTest::GetRowCount;
  using EffectUnderTest::Set;
  using EffectUnderTest::SetBits;

  MWord Prepare(int32_t channels, int32_t sampleRate) {
    channels_ = channels;
    return Call(MService::kPrepareStreams, channels, sampleRate);
  }
  // The handle of a note, 0 if there is none.
  MWord Create(double volume = 1, double ratio = 1, int32_t delay = 0) {
    MWord handle = 0;
    MStreamRequest request;
    request.delay = delay;
    request.volume = volume;
    request.ratio = ratio;
    request.result = &handle;
    return Call(MService::kCreateStream, MAsWord(&request)) == 0 ? handle : 0;
  }
  MWord Compute(float** out, int32_t samples, MWord& handle) {
    return Call(MService::kComputeStream, MAsWord(out), samples, MAsWord(&handle));
  }
  MWord Close(MWord& handle) { return Call(MService::kCloseStream, MAsWord(&handle)); }

  // The next samples of a note in blocks of these sizes, the last size again and again; without a size as one
  // block. A sample that no block writes is no number, but those in front of the note are silence.
  AudioBlock Pull(MWord& handle, int32_t samples, const std::vector<int32_t>& sizes = {},
                  std::vector<MWord>* results = nullptr) {
    AudioBlock out = AudioBlock::Constant(channels_, samples, NAN);
    std::size_t next = 0;
    for (int32_t done = 0; done < samples;) {
      int32_t size = samples - done;
      if (!sizes.empty()) size = std::min(size, sizes[std::min(next++, sizes.size() - 1)]);
      const MWord result = Compute(out.From(done), size, handle);
      if (results) results->push_back(result);
      for (int32_t c = 0; c < channels_ && result == MStreamResult::kNotStarted; ++c)
        std::fill_n(out[c] + done, size, 0.0f);
      done += size;
    }
    return out;
  }
  // The first samples of a note.
  AudioBlock Play(int32_t samples, const std::vector<int32_t>& sizes = {}, double volume = 1,
                  double ratio = 1, int32_t delay = 0) {
    MWord handle = Create(volume, ratio, delay);
    AudioBlock out = Pull(handle, samples, sizes);
    Close(handle);
    return out;
  }

  std::string Save() {
    MXMLItem item("state");
    Call(MService::kSaveState, MAsWord(&item));
    return GetText(item);
  }
  void Load(MXMLItem& item) {
    Call(MService::kLoadState, MAsWord(&item));
    Call(MService::kStateLoaded);
  }
  void Load(const std::string& text) {
    MXMLItem item;
    Parse(text, item);
    Load(item);
  }

  static void Parse(const std::string& text, MXMLItem& item) {
    MMemoryStream stream(text.data(), static_cast<int32_t>(text.size()));
    item.Load(stream);
  }
  static std::string GetText(const MXMLItem& item) {
    MMemoryStream stream;
    item.Save(stream);
    return std::string(reinterpret_cast<const char*>(stream.GetData()),
                       static_cast<std::size_t>(stream.GetSize()));
  }

 private:
  int32_t channels_ = 0;
};
