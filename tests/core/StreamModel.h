#pragma once
// Random operations for streams, and a plain model of what a stream holds.

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

constexpr uint32_t kSeeds = 40;
constexpr int kSteps = 400;

class Dice {
 public:
  explicit Dice(uint32_t seed) : engine_(seed) {}
  int64_t Between(int64_t low, int64_t high) {
    return low + static_cast<int64_t>(engine_() % static_cast<uint64_t>(high - low + 1));
  }
  // Mostly few, sometimes many, with line ends and zeros among them.
  std::string SomeBytes() {
    std::string bytes(static_cast<std::size_t>(Between(0, 9) == 0 ? Between(0, 9000) : Between(0, 30)), 'x');
    for (char& byte : bytes) byte = "abcdefgh\n\r\0"[Between(0, 10)];
    return bytes;
  }

 private:
  std::mt19937_64 engine_;
};

// Bytes and a position on a vector.
struct Model {
  std::vector<uint8_t> bytes;
  int64_t position = 0;

  int64_t Size() const { return static_cast<int64_t>(bytes.size()); }
  bool CanRead() const { return position >= 0 && position < Size(); }
  void Write(const std::string& data) {
    if (data.empty()) return;
    const auto end = static_cast<std::size_t>(position) + data.size();
    if (bytes.size() < end) bytes.resize(end);
    std::copy(data.begin(), data.end(), bytes.begin() + position);
    position = static_cast<int64_t>(end);
  }
  std::string Read(int64_t count) {
    if (!CanRead()) return "";
    const int64_t end = std::min(position + count, Size());
    const std::string data(bytes.begin() + position, bytes.begin() + end);
    position = end;
    return data;
  }
};

// A text with a zero byte is printed up to it.
inline std::string UpToZero(const std::string& line) {
  return line.c_str();
}
