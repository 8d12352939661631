#pragma once
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace cli {

// One line on standard error with what is done and the time that remains, when that is a terminal; else
// nothing. At most ten updates a second; the line is erased with the object.
class Progress {
 public:
  // `totalFrames`: how many there will be, none if nobody knows.
  Progress(std::optional<int64_t> totalFrames, int32_t sampleRate);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { Replace(""); }

  void Show(int64_t doneFrames);

 private:
  using Clock = std::chrono::steady_clock;

  std::string MakeText(int64_t doneFrames, Clock::time_point now) const;
  void Replace(const std::string& text);

  std::optional<int64_t> total_;
  int32_t sampleRate_;
  bool isShown_;
  std::size_t shownWidth_ = 0;
  Clock::time_point start_ = Clock::now();
  Clock::time_point last_ = start_;
};

}  // namespace cli
