#pragma once
#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "hosts/bridge/NoteEvent.h"
#include "hosts/bridge/Plugin.h"

namespace bridge {

// Plays an instrument by keys: a voice is one of its streams, made at the note's beginning and closed when it
// has ended or its key's release has faded it out. At most kMost voices sound, those that are released
// too; one more takes the place of the quietest of these or, without one, of the others, of equally quiet
// ones of the oldest, which fades out in a few milliseconds.
//
// Notes and controls take effect where the next block begins: split a block at each of them. All of it is
// [audio] but the constructor and Prepare; making and closing a stream allocates in the plug-in.
class Voices {
 public:
  static constexpr int32_t kMost = 64;
  static constexpr int32_t kRootKey = 60;  // sounds at the ratio 1
  static constexpr double kReleaseSeconds = 0.02;

  // The instrument outlives the voices.
  explicit Voices(Plugin& instrument) noexcept : instrument_(instrument) {}
  Voices(const Voices&) = delete;
  Voices& operator=(const Voices&) = delete;
  ~Voices();

  // Prepares the instrument, for blocks of up to `mostFrames`; cuts all voices.
  void Prepare(int32_t channels, int32_t sampleRate, int32_t mostFrames);
  // How long a released voice fades, linearly; 0 and more.
  void SetRelease(double seconds) noexcept { releaseSeconds_ = seconds; }
  // Whether voices ring out that are released from now on.
  void SetOneShot(bool isOneShot) noexcept { isOneShot_ = isOneShot; }
  // Whether a note may wait for what it plays to be read, as it may offline: then the first note of each
  // volume is announced by a stream of its own and begins when everything is read. Not for audio threads.
  void SetPatient(bool isPatient);
  // What the instrument plays has become another. [host]
  void ForgetRead() noexcept { readVolumes_.clear(); }
  // Whether something could not be read.
  bool HasFailed() const noexcept { return hasFailed_; }

  // What the event says; of a note that begins as Press.
  int64_t Play(const NoteEvent& event);
  // Channels are 0 to 15. Begins a note and returns its number, which is not below 0, or -1 when the
  // instrument makes no stream.
  int64_t Press(int32_t channel, int32_t key, double volume);
  // Ends the channel's oldest note of that key that is not released yet.
  void Release(int32_t channel, int32_t key);
  // The same for one note by its number, unless it is over.
  void ReleaseNote(int64_t number);
  // Ends one note in a few milliseconds, also one that rings out or fades.
  void ChokeNote(int64_t number);
  // Whether the note is not over yet.
  bool HasNote(int64_t number) const noexcept;
  // While the pedal is down, released keys sound on.
  void SetPedal(int32_t channel, bool isDown);
  // All keys and the pedal of a channel go up.
  void ReleaseAll(int32_t channel);
  // Ends the notes of a channel in a few milliseconds, also those that ring out or fade.
  void Silence(int32_t channel);
  // Closes all voices at once; all pedals go up.
  void Cut();

  // Overwrites out[c][0] to out[c][frames - 1] with the sum of all voices; at most the frames of Prepare. A
  // channel of a voice that is not finite is silent in that block.
  void Process(float* const* out, int32_t frames);
  // The notes whose stream ended by itself in the last block.
  std::span<const int64_t> GetEnded() const noexcept {
    return {ended_.data(), static_cast<std::size_t>(endedCount_)};
  }
  bool IsSilent() const noexcept;
  // The frames of the last block in front of the place where the last voice that ended in it had ended or
  // faded out.
  int32_t GetSoundEnd() const noexcept { return soundEnd_; }

 private:
  static constexpr int32_t kChannels = 16;
  static constexpr int32_t kLastChannel = kChannels - 1;
  static constexpr int32_t kPlaces = 2 * kMost;  // those that give way fade in places of their own

  enum class State { kFree, kPressed, kHeldByPedal, kRinging, kReleased, kGivingWay };
  struct Voice {
    State state = State::kFree;
    MWord stream = 0;
    int64_t number = 0;
    int32_t channel = 0;
    int32_t key = 0;
    float level = 0;  // greatest magnitude of the last block that it was heard in
    int32_t fadeFrames = 0;
    int32_t fadeLeft = 0;  // of them
  };

  static bool IsSounding(const Voice& voice) noexcept {
    return voice.state == State::kPressed || voice.state == State::kHeldByPedal ||
           voice.state == State::kRinging;
  }
  static bool IsFading(const Voice& voice) noexcept {
    return voice.state == State::kReleased || voice.state == State::kGivingWay;
  }
  // Whether the first is to give way before the second.
  static bool IsLess(const Voice& a, const Voice& b) noexcept;
  static double GetFade(const Voice& voice) noexcept { return double(voice.fadeLeft) / voice.fadeFrames; }
  void FinishLoading(double volume);
  void MakeRoom();
  Voice& FindPlace();
  void LetGo(Voice& voice);
  void Fade(Voice& voice, double seconds);
  void GiveWay(Voice& voice);
  void Close(Voice& voice);
  void Mix(Voice& voice, float* const* out, int32_t frames);
  void Add(Voice& voice, float* const* out, int32_t frames) noexcept;
  static void FadeBlock(const Voice& voice, float* samples, int32_t frames) noexcept;

  Plugin& instrument_;
  int32_t channels_ = 0;
  int32_t sampleRate_ = 1;
  double releaseSeconds_ = kReleaseSeconds;
  bool isOneShot_ = false;
  bool isPatient_ = false;
  bool hasFailed_ = false;
  std::vector<double> readVolumes_;
  int64_t nextNumber_ = 0;
  std::array<bool, kChannels> isPedalDown_ = {};
  std::array<Voice, kPlaces> voices_ = {};
  std::array<int64_t, kPlaces> ended_ = {};
  int32_t endedCount_ = 0;
  int32_t soundEnd_ = 0;
  std::vector<float> samples_;  // one voice's block, channel by channel
  std::vector<float*> block_;
};

}  // namespace bridge
