#pragma once
// Streams for tests of streams, and the bytes they move as std::string.

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "core/MMemoryStream.h"

// Only what every stream must have: keeps what is written, and the size of each write.
class BareStream : public MStream {
 public:
  void Write(const void* bytes, int32_t count) override {
    written.append(static_cast<const char*>(bytes), static_cast<std::size_t>(count));
    writes.push_back(count);
  }

  std::string written;
  std::vector<int32_t> writes;
};

// A forward-only source; keeps the size of each read that was asked for.
class ForwardStream : public BareStream {
 public:
  explicit ForwardStream(std::string bytes) : bytes_(std::move(bytes)) {}
  int32_t Read(void* bytes, int32_t count) override {
    reads.push_back(count);
    const std::size_t found = std::min(static_cast<std::size_t>(count), bytes_.size() - position_);
    std::memcpy(bytes, bytes_.data() + position_, found);
    position_ += found;
    return static_cast<int32_t>(found);
  }
  int64_t GetPosition() override { return static_cast<int64_t>(position_); }
  int64_t GetSize() override { return static_cast<int64_t>(bytes_.size()); }

  std::vector<int32_t> reads;

 private:
  std::string bytes_;
  std::size_t position_ = 0;
};

inline void Put(MStream& stream, const std::string& bytes) {
  stream.Write(bytes.data(), static_cast<int32_t>(bytes.size()));
}

// At most `count` bytes from the position on.
inline std::string Take(MStream& stream, int32_t count) {
  std::string bytes(static_cast<std::size_t>(count), '\0');
  bytes.resize(static_cast<std::size_t>(stream.Read(bytes.data(), count)));
  return bytes;
}

inline std::string All(MMemoryStream& stream) {
  return std::string(reinterpret_cast<const char*>(stream.GetData()),
                     static_cast<std::size_t>(stream.GetSize()));
}

// One line into a buffer of `size` bytes: the text behind the status, "0:text". What lies behind the buffer
// must not be touched.
inline std::string Line(MStream& stream, int32_t size) {
  std::vector<char> buffer(static_cast<std::size_t>(size) + 1, '#');
  const auto status = static_cast<int32_t>(stream.ReadLine(buffer.data(), size));
  const bool intact = buffer.back() == '#';
  return std::to_string(status) + ":" + (size > 0 ? buffer.data() : "") + (intact ? "" : " OVERRUN");
}

// Bytes that differ from place to place.
inline std::string Pattern(std::size_t count) {
  std::string bytes(count, '\0');
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<char>(i * 131 + i / 256);
  return bytes;
}

constexpr auto kBadOrigin = static_cast<MSeekOrigin>(3);
