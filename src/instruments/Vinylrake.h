#pragma once
#include "instruments/MSamplePlugin.h"

// Scratching: a note reads one sample file along a drawn curve of places, forwards and backwards, for
//   length = truncate(output rate x length) / ratio
// steps of time, each of which is `ratio` long: the ratio acts twice, so a note at ratio 2 lasts a quarter
// and passes the sample four times as fast. Both curves, of volume and of places, run over the length; a
// volume that ends at zero early cuts it, and then the places run over what is left. Values between samples
// are cubic. Places behind the sample's end stay there, those in front of it are silent.
class VinylrakeAudioStreamPlugin final : public MSamplePlugin {
 public:
  VinylrakeAudioStreamPlugin();

  bool SaveState(MXMLItem& item) override;
  bool LoadState(MXMLItem& item) override;

  // For editors and tests, which hold the lock. [any]
  MEnvelopeData& GetScratch() noexcept { return scratch_; }

 protected:
  MAudioStream* NewStream(const MStreamRequest& request) override;
  int32_t Render(MAudioStream& stream, float** out, int32_t first, int32_t samples) override;
  void FreeStream(MAudioStream* stream) override;

 private:
  enum { kLength, kRowCount };
  MPluginParameter rows_[kRowCount];
  MEnvelopeData scratch_;  // x: time, y: place, both of 0..1
};
