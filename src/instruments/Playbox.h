#pragma once
#include "instruments/MSamplePlugin.h"

// Sampler: a note plays one sample file at
//   speed = sample's rate x ratio / output rate,
// from place -(delay x output rate) on, which lies in front of the sample for a delay and behind its
// beginning for a negative one. The volume envelope runs over the sample, not over the note's time: at twice
// the speed it takes half the time. A curve that ends at zero early ends the note there. Edits of the curve
// and another sample reach later notes only.
class PlayboxAudioStreamPlugin final : public MSamplePlugin {
 public:
  PlayboxAudioStreamPlugin();

 protected:
  MAudioStream* NewStream(const MStreamRequest& request) override;
  int32_t Render(MAudioStream& stream, float** out, int32_t first, int32_t samples) override;
  void FreeStream(MAudioStream* stream) override;

 private:
  enum { kDelay, kRowCount };
  MPluginParameter rows_[kRowCount];
};
