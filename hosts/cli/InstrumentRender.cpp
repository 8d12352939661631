#include "hosts/cli/InstrumentRender.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/MException.h"
#include "hosts/cli/Warnings.h"

namespace cli {

namespace {

constexpr double kLongestRingSeconds = 600;  // behind the last event of a piece
constexpr const char* kUnreadable = "some recordings of the instrument cannot be read";

std::vector<float*> Planes(std::vector<float>& samples, std::size_t channels) {
  std::vector<float*> planes(channels);
  for (std::size_t c = 0; c < channels; ++c) planes[c] = samples.data() + c * (samples.size() / channels);
  return planes;
}

}  // namespace

// A piece that is being played.
struct InstrumentRender::Piece {
  Piece(bridge::Plugin& instrument, const std::vector<MidiEvent>& all) : voices(instrument), events(all) {
    while (playEnd > 0 && events[playEnd - 1].kind != MidiEvent::Kind::kPress) --playEnd;
  }
  bool IsOver() const noexcept { return next >= playEnd && voices.IsSilent(); }
  void Play(const MidiEvent& event);

  bridge::Voices voices;
  const std::vector<MidiEvent>& events;
  std::size_t next = 0;
  std::size_t playEnd = events.size();  // behind the last note
  std::vector<NoteResult> results;
  std::vector<std::size_t> noteOfNumber;  // which of the results a note of the voices is
};

InstrumentRender::InstrumentRender(bridge::Plugin& instrument, const Format& format)
    : instrument_(instrument),
      format_(format),
      mix_(static_cast<std::size_t>(format.blockFrames) * static_cast<std::size_t>(format.audio.channels)),
      samples_(mix_.size()),
      interleaved_(mix_.size()),
      mixChannels_(Planes(mix_, static_cast<std::size_t>(format.audio.channels))),
      sampleChannels_(Planes(samples_, static_cast<std::size_t>(format.audio.channels))) {}

InstrumentRender::~InstrumentRender() {
  for (Stream& stream : streams_) try {
      instrument_.CloseStream(stream.handle);
    } catch (const MException&) {
      // What the render raised, if anything, is what counts.
    }
}

int64_t InstrumentRender::FramesOf(double seconds) const {
  return std::llround(seconds * format_.audio.sampleRate);
}

int64_t InstrumentRender::GetLength(const std::vector<NoteRequest>& notes) const {
  int64_t length = 0;
  for (const NoteRequest& note : notes)
    length = std::max(length, FramesOf(note.startSeconds) + FramesOf(note.lengthSeconds));
  return length + format_.tailFrames;
}

int64_t InstrumentRender::GetLastEnd(const std::vector<MidiEvent>& events) const {
  return (events.empty() ? 0 : FramesOf(events.back().seconds)) + FramesOf(kLongestRingSeconds);
}

int64_t InstrumentRender::GetMostFrames(const std::vector<MidiEvent>& events) const {
  return GetLastEnd(events) + format_.blockFrames + format_.tailFrames;
}

// Instruments that have nothing to load do not know the command.
void InstrumentRender::FinishLoading() {
  if (instrument_.Command("FinishLoading") == 1) Warn(kUnreadable);
}

std::vector<NoteResult> InstrumentRender::RenderNotes(const std::vector<NoteRequest>& notes,
                                                      const Sink& sink) {
  instrument_.PrepareStreams(format_.audio.channels, format_.audio.sampleRate);
  std::vector<NoteResult> results(notes.size());
  streams_.resize(notes.size());
  for (std::size_t i = 0; i < notes.size(); ++i) {
    const int64_t start = FramesOf(notes[i].startSeconds);
    const double ratio = std::exp2((notes[i].key - bridge::Voices::kRootKey) / 12.0);
    streams_[i] = {instrument_.CreateStream(static_cast<int32_t>(start), notes[i].volume, ratio),
                   start + FramesOf(notes[i].lengthSeconds)};
    results[i].isMade = streams_[i].handle != 0;
  }
  FinishLoading();
  const int64_t length = GetLength(notes);
  for (int64_t position = 0; position < length; position += format_.blockFrames) {
    const auto frames = static_cast<int32_t>(std::min<int64_t>(format_.blockFrames, length - position));
    std::fill(mix_.begin(), mix_.end(), 0.0f);
    for (std::size_t i = 0; i < streams_.size(); ++i) AddStream(streams_[i], results[i], position, frames);
    Write(frames, sink);
  }
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

void InstrumentRender::Piece::Play(const MidiEvent& event) {
  const int64_t number = voices.Play(event);
  if (event.kind != MidiEvent::Kind::kPress) return;
  results.emplace_back();
  results.back().isMade = number >= 0;
  if (number >= 0) noteOfNumber.push_back(results.size() - 1);
}

std::vector<NoteResult> InstrumentRender::RenderMidi(const std::vector<MidiEvent>& events, bool isOneShot,
                                                     const Sink& sink) {
  Piece piece(instrument_, events);
  piece.voices.Prepare(format_.audio.channels, format_.audio.sampleRate, format_.blockFrames);
  piece.voices.SetOneShot(isOneShot);
  piece.voices.SetPatient(true);
  const int64_t end = GetLastEnd(events);
  for (int64_t position = 0; !piece.IsOver() && position < end;) {
    const int32_t frames = MixBlock(piece, position);
    Write(frames, sink);
    position += frames;
  }
  WriteSilence(format_.tailFrames, sink);
  if (piece.voices.HasFailed()) Warn(kUnreadable);
  return piece.results;
}

// A block is split where something happens in the piece, and ends with the piece. Returns its frames.
int32_t InstrumentRender::MixBlock(Piece& piece, int64_t position) {
  int32_t done = 0;
  while (done < format_.blockFrames) {
    for (; piece.next < piece.events.size(); ++piece.next) {
      if (FramesOf(piece.events[piece.next].seconds) > position + done) break;
      piece.Play(piece.events[piece.next]);
    }
    if (piece.IsOver()) break;
    int64_t end = format_.blockFrames;
    if (piece.next < piece.events.size())
      end = std::min(end, FramesOf(piece.events[piece.next].seconds) - position);
    const int32_t frames = static_cast<int32_t>(end) - done;
    for (std::size_t c = 0; c < mixChannels_.size(); ++c) sampleChannels_[c] = mixChannels_[c] + done;
    piece.voices.Process(sampleChannels_.data(), frames);
    done += frames;
    for (const int64_t number : piece.voices.GetEnded())
      piece.results[piece.noteOfNumber[static_cast<std::size_t>(number)]].ended = position + done;
    if (piece.IsOver()) return done - frames + piece.voices.GetSoundEnd();
  }
  return done;
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
