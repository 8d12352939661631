#pragma once
#include <functional>
#include <optional>
#include <vector>

#include "hosts/bridge/Plugin.h"
#include "hosts/bridge/Voices.h"
#include "hosts/cli/Arguments.h"
#include "hosts/cli/AudioFiles.h"
#include "hosts/cli/MidiFile.h"

namespace cli {

// What became of a note.
struct NoteResult {
  bool isMade = false;           // there was a stream
  std::optional<int64_t> ended;  // frame behind the block that reported the stream's end
};

// Renders an instrument into blocks of exactly `blockFrames`, counted from the start; only the last one is
// shorter. The instrument is ready but for its format.
class InstrumentRender {
 public:
  struct Format {
    AudioFormat audio;
    int32_t blockFrames;
    int64_t tailFrames;  // of silence, behind what sounds last
  };
  // Gets what comes out, interleaved.
  using Sink = std::function<void(const float* interleaved, int64_t frames)>;

  InstrumentRender(bridge::Plugin& instrument, const Format& format);
  InstrumentRender(const InstrumentRender&) = delete;
  InstrumentRender& operator=(const InstrumentRender&) = delete;
  ~InstrumentRender();

  // Frames that RenderNotes will give.
  int64_t GetLength(const std::vector<NoteRequest>& notes) const;
  // Requests all notes, waits for what the instrument has to load, and sums their streams. Each is cut where
  // its length ends.
  std::vector<NoteResult> RenderNotes(const std::vector<NoteRequest>& notes, const Sink& sink);
  // Frames that RenderMidi will give at most.
  int64_t GetMostFrames(const std::vector<MidiEvent>& events) const;
  // Plays a piece by voices until the last of them has ended or faded out. What still sounds ten minutes
  // behind the last event is cut. With `isOneShot` notes ring out.
  std::vector<NoteResult> RenderMidi(const std::vector<MidiEvent>& events, bool isOneShot, const Sink& sink);

  // The greatest magnitude that came out; infinite where something was not finite.
  float GetPeak() const noexcept { return peak_; }

 private:
  struct Stream {
    MWord handle;
    int64_t end;  // frame behind the note
  };
  struct Piece;

  int64_t FramesOf(double seconds) const;
  int64_t GetLastEnd(const std::vector<MidiEvent>& events) const;
  void FinishLoading();
  void AddStream(Stream& stream, NoteResult& result, int64_t position, int32_t frames);
  int32_t MixBlock(Piece& piece, int64_t position);
  void Write(int32_t frames, const Sink& sink);
  void WriteSilence(int64_t frames, const Sink& sink);

  bridge::Plugin& instrument_;
  const Format format_;
  std::vector<float> mix_, samples_, interleaved_;  // one block each, channel by channel but for the last
  std::vector<float*> mixChannels_, sampleChannels_;
  std::vector<Stream> streams_;
  float peak_ = 0;
};

}  // namespace cli
