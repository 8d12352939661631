#include "hosts/cli/Progress.h"

#include <algorithm>
#include <cstdio>

#include "hosts/cli/System.h"

namespace cli {

namespace {

constexpr std::chrono::milliseconds kInterval{100};

// "1:05", "1:00:05".
std::string Duration(double seconds) {
  const auto whole = static_cast<int64_t>(seconds + 0.5);
  char text[32];
  if (whole >= 3600)
    std::snprintf(text, sizeof text, "%lld:%02d:%02d", static_cast<long long>(whole / 3600),
                  static_cast<int>(whole / 60 % 60), static_cast<int>(whole % 60));
  else
    std::snprintf(text, sizeof text, "%d:%02d", static_cast<int>(whole / 60), static_cast<int>(whole % 60));
  return text;
}

}  // namespace

Progress::Progress(std::optional<int64_t> totalFrames, int32_t sampleRate)
    : total_(totalFrames), sampleRate_(sampleRate), isShown_(IsErrorTerminal()) {}

void Progress::Show(int64_t doneFrames) {
  if (!isShown_) return;
  const Clock::time_point now = Clock::now();
  if (now - last_ < kInterval) return;
  last_ = now;
  Replace(MakeText(doneFrames, now));
}

std::string Progress::MakeText(int64_t doneFrames, Clock::time_point now) const {
  if (!total_ || *total_ <= 0) return Duration(static_cast<double>(doneFrames) / sampleRate_) + " rendered";
  const double part = std::min(1.0, static_cast<double>(doneFrames) / static_cast<double>(*total_));
  const double seconds = std::chrono::duration<double>(now - start_).count();
  const std::string percent = std::to_string(static_cast<int>(100 * part)) + " %";
  return part > 0 ? percent + ", " + Duration(seconds * (1 - part) / part) + " left" : percent;
}

void Progress::Replace(const std::string& text) {
  if (shownWidth_ == 0 && text.empty()) return;
  const std::size_t rest = shownWidth_ > text.size() ? shownWidth_ - text.size() : 0;
  const std::string line =
      "\r" + text + std::string(rest, ' ') + (text.empty() ? "\r" : std::string(rest, '\b'));
  std::fwrite(line.data(), 1, line.size(), stderr);
  shownWidth_ = text.size();
}

}  // namespace cli
