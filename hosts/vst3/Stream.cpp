#include "hosts/vst3/Stream.h"

#include <algorithm>

namespace vst3 {

namespace {

constexpr std::size_t kPortion = 64 * 1024;
constexpr std::size_t kMostBytes = 256 * 1024 * 1024;  // no state is as long

}  // namespace

// Some hosts give an error at the end instead of no bytes.
std::optional<std::string> ReadAll(v3_bstream** stream) {
  std::string text;
  while (text.size() < kMostBytes) {
    const std::size_t size = text.size();
    text.resize(size + kPortion);
    int32_t read = 0;
    const v3_result result = v3_cpp_obj(stream)->read(stream, &text[size], kPortion, &read);
    const bool isOver = result != V3_OK || read <= 0;
    text.resize(isOver ? size : size + std::min(static_cast<std::size_t>(read), kPortion));
    if (isOver) return text.empty() ? std::nullopt : std::optional(std::move(text));
  }
  return std::nullopt;
}

bool WriteAll(v3_bstream** stream, std::string_view text) {
  std::string portion;  // the interface asks for bytes that may be written
  while (!text.empty()) {
    portion = text.substr(0, kPortion);
    const auto count = static_cast<int32_t>(portion.size());
    int32_t written = count;
    const v3_result result = v3_cpp_obj(stream)->write(stream, portion.data(), count, &written);
    if (result != V3_OK || written <= 0 || written > count) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace vst3
