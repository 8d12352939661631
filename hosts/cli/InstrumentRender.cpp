#include "hosts/cli/InstrumentRender.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace cli {

namespace {

constexpr double kLongestRingSeconds = 600;  // behind the last event of a piece

std::vector<float*> Planes(std::vector<float>& samples, std::size_t channels) {
  std::vector<float*> planes(channels);
  for (std::size_t c = 0; c < channels; ++c) planes[c] = samples.data() + c * (samples.size() / channels);
  return planes;
}

}  // namespace

struct InstrumentRender::Stream {
  MWord handle;
  int64_t end;  // frame behind the note
};

InstrumentRender::InstrumentRender(bridge::Plugin& instrument, const Format& format)
    : instrument_(instrument),
      format_(format),
      mix_(static_cast<std::size_t>(format.blockFrames) * static_cast<std::size_t>(format.audio.channels)),
      samples_(mix_.size()),
      interleaved_(mix_.size()),
      mixChannels_(Planes(mix_, static_cast<std::size_t>(format.audio.channels))),
      sampleChannels_(Planes(samples_, static_cast<std::size_t>(format.audio.channels))) {}

int64_t InstrumentRender::FramesOf(double seconds) const {
  return std::llround(seconds * format_.audio.sampleRate);
}

int64_t InstrumentRender::GetLength(const std::vector<NoteRequest>& notes) const {
  int64_t length = 0;
  for (const NoteRequest& note : notes)
    length = std::max(length, FramesOf(note.startSeconds) + FramesOf(note.lengthSeconds));
  return length + format_.tailFrames;
}

// Instruments that have nothing to load do not know the command.
void InstrumentRender::FinishLoading() {
  instrument_.Command("FinishLoading");
}

std::vector<NoteResult> InstrumentRender::RenderNotes(const std::vector<NoteRequest>& notes,
                                                      const Sink& sink) {
  instrument_.PrepareStreams(format_.audio.channels, format_.audio.sampleRate);
  std::vector<NoteResult> results(notes.size());
  std::vector<Stream> streams(notes.size());
  for (std::size_t i = 0; i < notes.size(); ++i) {
    const int64_t start = FramesOf(notes[i].startSeconds);
    const double ratio = std::exp2((notes[i].key - bridge::Voices::kRootKey) / 12.0);
    streams[i] = {instrument_.CreateStream(static_cast<int32_t>(start), notes[i].volume, ratio),
                  start + FramesOf(notes[i].lengthSeconds)};
    results[i].isMade = streams[i].handle != 0;
  }
  FinishLoading();
  const int64_t length = GetLength(notes);
  for (int64_t position = 0; position < length; position += format_.blockFrames) {
    const auto frames = static_cast<int32_t>(std::min<int64_t>(format_.blockFrames, length - position));
    std::fill(mix_.begin(), mix_.end(), 0.0f);
    for (std::size_t i = 0; i < streams.size(); ++i) AddStream(streams[i], results[i], position, frames);
    Write(frames, sink);
  }
  for (Stream& stream : streams) instrument_.CloseStream(stream.handle);
  return results;
}

void InstrumentRender::AddStream(Stream& stream, NoteResult& result, int64_t position, int32_t frames) {
  if (stream.handle == 0) return;
  if (position >= stream.end) return instrument_.CloseStream(stream.handle);
  const int32_t outcome = instrument_.ComputeStream(stream.handle, sampleChannels_.data(), frames);
  if (outcome == MStreamResult::kNotStarted) return;
  const auto kept = static_cast<std::ptrdiff_t>(std::min<int64_t>(frames, stream.end - position));
  for (std::size_t c = 0; c < mixChannels_.size(); ++c)
    std::transform(mixChannels_[c], mixChannels_[c] + kept, sampleChannels_[c], mixChannels_[c],
                   std::plus<>());
  if (outcome != MStreamResult::kEnded) return;
  result.ended = position + frames;
  instrument_.CloseStream(stream.handle);
}

// Has an instrument with layers read those that the piece uses: one request per velocity.
void InstrumentRender::RequestLayers(const std::vector<MidiEvent>& events) {
  if (instrument_.Command("FinishLoading") == -1) return;
  std::set<double> volumes;
  for (const MidiEvent& event : events)
    if (event.kind == MidiEvent::Kind::kPress) volumes.insert(event.volume);
  for (const double volume : volumes) {
    MWord stream = instrument_.CreateStream(0, volume, 1);
    instrument_.CloseStream(stream);
  }
  FinishLoading();
}

// `noteOfNumber` says which of the results a note of the voices is.
void InstrumentRender::Play(bridge::Voices& voices, const MidiEvent& event, std::vector<NoteResult>& results,
                            std::vector<std::size_t>& noteOfNumber) const {
  switch (event.kind) {
    case MidiEvent::Kind::kPress:
      results.emplace_back();
      results.back().isMade = voices.Press(event.channel, event.key, event.volume) >= 0;
      if (results.back().isMade) noteOfNumber.push_back(results.size() - 1);
      return;
    case MidiEvent::Kind::kRelease:
      return voices.Release(event.channel, event.key);
    case MidiEvent::Kind::kPedal:
      return voices.SetPedal(event.channel, event.isDown);
    case MidiEvent::Kind::kReleaseAll:
      return voices.ReleaseAll(event.channel);
  }
}

std::vector<NoteResult> InstrumentRender::RenderMidi(const std::vector<MidiEvent>& events, bool isOneShot,
                                                     const Sink& sink) {
  bridge::Voices voices(instrument_);
  voices.Prepare(format_.audio.channels, format_.audio.sampleRate, format_.blockFrames);
  voices.SetOneShot(isOneShot);
  RequestLayers(events);
  std::vector<NoteResult> results;
  std::vector<std::size_t> noteOfNumber;
  std::size_t next = 0;
  const int64_t most = (events.empty() ? 0 : FramesOf(events.back().seconds)) + FramesOf(kLongestRingSeconds);
  int64_t position = 0;
  while (next < events.size() || !voices.IsSilent()) {
    if (position >= most) voices.Cut();
    int32_t done = 0;
    while (done < format_.blockFrames) {
      for (; next < events.size() && FramesOf(events[next].seconds) <= position + done; ++next)
        Play(voices, events[next], results, noteOfNumber);
      if (next == events.size() && voices.IsSilent()) break;
      const int64_t until =
          next < events.size() ? FramesOf(events[next].seconds) - position : format_.blockFrames;
      const auto run = static_cast<int32_t>(std::min<int64_t>(until, format_.blockFrames)) - done;
      for (std::size_t c = 0; c < mixChannels_.size(); ++c) sampleChannels_[c] = mixChannels_[c] + done;
      voices.Process(sampleChannels_.data(), run);
      done += run;
      for (const int64_t number : voices.GetEnded())
        results[noteOfNumber[static_cast<std::size_t>(number)]].ended = position + done;
      if (next == events.size() && voices.IsSilent()) done -= run - voices.GetSoundEnd();
    }
    Write(done, sink);
    position += done;
  }
  WriteSilence(format_.tailFrames, sink);
  return results;
}

void InstrumentRender::Write(int32_t frames, const Sink& sink) {
  const std::size_t channels = mixChannels_.size();
  for (std::size_t c = 0; c < channels; ++c)
    for (std::size_t i = 0; i < static_cast<std::size_t>(frames); ++i) {
      const float sample = mixChannels_[c][i];
      interleaved_[i * channels + c] = sample;
      const float magnitude =
          std::isfinite(sample) ? std::abs(sample) : std::numeric_limits<float>::infinity();
      peak_ = std::max(peak_, magnitude);
    }
  if (frames > 0) sink(interleaved_.data(), frames);
}

void InstrumentRender::WriteSilence(int64_t frames, const Sink& sink) {
  std::fill(mix_.begin(), mix_.end(), 0.0f);
  for (; frames > 0; frames -= format_.blockFrames)
    Write(static_cast<int32_t>(std::min<int64_t>(frames, format_.blockFrames)), sink);
}

}  // namespace cli
