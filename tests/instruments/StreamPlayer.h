#pragma once
// An instrument as a host plays it: by the numbered services.

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "core/MXMLItem.h"
#include "plugin/MHostInterface.h"

template <typename Plugin>
class StreamPlayer {
 public:
  explicit StreamPlayer(int32_t channels = 2, int32_t rate = 44100) : channels_(channels) {
    Call(MService::kPrepareStreams, channels, rate);
  }

  Plugin& GetPlugin() { return *plugin_; }
  MWord Call(int32_t service, MWord a = 0, MWord b = 0, MWord c = 0) {
    MServiceArguments arguments(a, b, c);
    return plugin_->Service(service, &arguments);
  }
  void Set(int32_t row, double value) {
    auto* const block = MAsAddress<MPluginPublicBlock>(Call(MService::kPublicBlock));
    MStoreShared(block->parameters[row].real.value, value);
    Call(MService::kParameterChanged, row);
  }
  bool Import(const MString& folder, const MString& name) {
    const MString texts[] = {folder, name};
    return Call(MService::kCommand, MAsWord("ImportSample"), MAsWord(texts)) == 0;
  }
  // A new state, which lives as long as the player.
  MXMLItem& Save() {
    states_.push_back(std::make_unique<MXMLItem>("state"));
    Call(MService::kSaveState, MAsWord(states_.back().get()));
    return *states_.back();
  }
  void Load(MXMLItem& item) { Call(MService::kLoadState, MAsWord(&item)); }

  // A handle, 0 without a stream.
  MWord Create(double volume = 1, double ratio = 1, int32_t delay = 0) {
    MWord handle = 0;
    MStreamRequest request;
    request.volume = volume;
    request.ratio = ratio;
    request.delay = delay;
    request.result = &handle;
    return Call(MService::kCreateStream, MAsWord(&request)) == 0 ? handle : 0;
  }
  void Close(MWord& handle) { Call(MService::kCloseStream, MAsWord(&handle)); }

  using Block = std::vector<std::vector<float>>;

  // The next samples, in blocks of these sizes, the last size again and again; blocks in front of the note
  // are silence. A sample that a sounding block does not write is no number. GetResult is that of the last
  // block.
  Block Compute(MWord& handle, int32_t samples, const std::vector<int32_t>& sizes = {512}) {
    Block block(static_cast<std::size_t>(channels_),
                std::vector<float>(static_cast<std::size_t>(samples), NAN));
    std::size_t next = 0;
    for (int32_t done = 0; done < samples;) {
      const int32_t size = std::min(samples - done, sizes[std::min(next++, sizes.size() - 1)]);
      std::vector<float*> out;
      for (std::vector<float>& channel : block) out.push_back(channel.data() + done);
      result_ = Call(MService::kComputeStream, MAsWord(out.data()), size, MAsWord(&handle));
      if (result_ == MStreamResult::kNotStarted)
        for (float* const channel : out) std::fill_n(channel, size, 0.0f);
      done += size;
    }
    return block;
  }
  MWord GetResult() const { return result_; }

  // A whole note.
  Block Play(int32_t samples, double volume = 1, double ratio = 1, int32_t delay = 0,
             const std::vector<int32_t>& sizes = {512}) {
    MWord handle = Create(volume, ratio, delay);
    Block block = Compute(handle, samples, sizes);
    Close(handle);
    return block;
  }

 private:
  int32_t channels_;
  MWord result_ = -1;
  std::vector<std::unique_ptr<MXMLItem>> states_;
  std::unique_ptr<Plugin> plugin_ = std::make_unique<Plugin>();
};
