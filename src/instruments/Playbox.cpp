#include "instruments/Playbox.h"

#include <memory>

#include "core/MAudioBuffer.h"
#include "instruments/MSampleStream.h"

namespace {

struct Note : MSampleStream {
  const MAudioBuffer* sample = nullptr;
};

}  // namespace

PlayboxAudioStreamPlugin::PlayboxAudioStreamPlugin()
    : MSamplePlugin({"filename", "envelope", "PlayboxAudioStreamPlugin::CreateStream",
                     "PlayboxAudioStreamPlugin::LoadState", "PlayboxAudioStreamPlugin::CollectFiles"}) {
  AddSampleDelayParameter(rows_[kDelay]);
  SetParameters(rows_);
  SetPluginFlag();
}

MAudioStream* PlayboxAudioStreamPlugin::NewStream(const MStreamRequest& request) {
  const MLocker locker(lock_);
  const MAudioBuffer* const sample = GetSample();
  if (!sample) return nullptr;
  auto note = std::make_unique<Note>();
  note->SetStart(rows_[kDelay], GetRate());
  note->SetSpeed(sample->sampleRate, request.ratio, GetRate());
  note->volume = request.volume;
  note->length = sample->GetLength();
  note->SetEnvelope(envelope_);
  note->sample = ShareSample();
  return note->sample ? note.release() : nullptr;
}

int32_t PlayboxAudioStreamPlugin::Render(MAudioStream& stream, float** out, int32_t first, int32_t samples) {
  auto& note = static_cast<Note&>(stream);
  return note.Play(*note.sample, out, channels_, first, samples) ? MStreamResult::kEnded
                                                                 : MStreamResult::kSounds;
}

void PlayboxAudioStreamPlugin::FreeStream(MAudioStream* stream) {
  const std::unique_ptr<Note> note(static_cast<Note*>(stream));
  ReleaseSample(note->sample);
}

M_PLUGIN_ENTRY(PlayboxAudioStreamPlugin)
