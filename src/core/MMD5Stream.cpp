#include "core/MMD5Stream.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace {

using Chain = std::array<uint32_t, 4>;

// The words of the standard are little-endian.
uint32_t ToLittleEndian(uint32_t word) noexcept {
  if constexpr (std::endian::native == std::endian::little) return word;
  return __builtin_bswap32(word);
}

uint32_t Word(const uint8_t* block, int index) noexcept {
  uint32_t word;
  std::memcpy(&word, block + 4 * index, 4);
  return ToLittleEndian(word);
}

// floor(2^32 * |sin(i + 1)|), i from 0: table T of the standard.
constexpr uint32_t kSines[64] = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391};

constexpr int kShifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
constexpr int kWordSteps[4] = {1, 5, 3, 7};
constexpr int kFirstWords[4] = {0, 1, 5, 0};

// F, G, H and I of the standard. In F and G what depends on the newest value, x, comes last. The two parts of
// G have no bit in common, so that they can be added apart from each other.
template <int kRound>
uint32_t Mix(uint32_t a, uint32_t x, uint32_t y, uint32_t z) noexcept {
  if constexpr (kRound == 0) return a + (z ^ (x & (y ^ z)));
  if constexpr (kRound == 1) return a + (y & ~z) + (x & z);
  if constexpr (kRound == 2) return a + (x ^ (y ^ z));
  return a + (y ^ (x | ~z));
}

// Step i of 64. The four values change places from step to step, which costs nothing once all is unrolled.
template <int i>
[[gnu::always_inline]] inline void Step(Chain& v, const uint8_t* block) noexcept {
  constexpr int kRound = i / 16;
  constexpr int kWord = (kFirstWords[kRound] + i * kWordSteps[kRound]) % 16;
  uint32_t& a = v[(64 - i) % 4];
  const uint32_t b = v[(65 - i) % 4];
  const uint32_t c = v[(66 - i) % 4];
  const uint32_t d = v[(67 - i) % 4];
  a = b + std::rotl(Mix<kRound>(a + Word(block, kWord) + kSines[i], b, c, d), kShifts[kRound][i % 4]);
}

template <int... i>
[[gnu::always_inline]] inline void Steps(Chain& v, const uint8_t* block,
                                         std::integer_sequence<int, i...>) noexcept {
  (Step<i>(v, block), ...);
}

void Transform(Chain& chain, const uint8_t* blocks, uint32_t count) noexcept {
  Chain sum = chain;
  for (; count > 0; --count, blocks += 64) {
    Chain v = sum;
    Steps(v, blocks, std::make_integer_sequence<int, 64>());
    for (std::size_t i = 0; i < 4; ++i) sum[i] += v[i];
  }
  chain = sum;
}

}  // namespace

MMD5Stream::MMD5Stream(uint32_t salt) noexcept : salt_(salt) {
  MMD5Stream::Reset();
}

void MMD5Stream::Write(const void* bytes, int32_t count) {
  if (isFinished_) ThrowNotInitialized();
  if (count > 0) Add(static_cast<const uint8_t*>(bytes), static_cast<uint32_t>(count));
}

void MMD5Stream::Reset() noexcept {
  chain_ = {0x67452301 + 11 * salt_, 0xEFCDAB89 + 71 * salt_, 0x98BADCFE + 37 * salt_,
            0x10325476 + 97 * salt_};
  bits_ = 0;
  isFinished_ = false;
}

void MMD5Stream::Finish() {
  if (isFinished_) return;
  static constexpr uint8_t kPadding[kBlockSize] = {0x80};
  uint8_t length[8];
  for (int i = 0; i < 8; ++i) length[i] = static_cast<uint8_t>(bits_ >> (8 * i));
  const auto buffered = static_cast<uint32_t>(bits_ / 8 % kBlockSize);
  Add(kPadding, (buffered < 56 ? 56 : 120) - buffered);
  Add(length, sizeof length);
  isFinished_ = true;
}

void MMD5Stream::WriteDigest(MStream& target) {
  Chain words;
  std::transform(chain_.begin(), chain_.end(), words.begin(), ToLittleEndian);
  target.Write(words.data(), kDigestSize);
}

void MMD5Stream::Add(const uint8_t* bytes, uint32_t count) noexcept {
  const auto buffered = static_cast<uint32_t>(bits_ / 8 % kBlockSize);
  bits_ += uint64_t{count} * 8;
  if (buffered > 0) {
    const uint32_t chunk = std::min(count, kBlockSize - buffered);
    std::memcpy(block_ + buffered, bytes, chunk);
    if (buffered + chunk < kBlockSize) return;
    Transform(chain_, block_, 1);
    bytes += chunk;
    count -= chunk;
  }
  Transform(chain_, bytes, count / kBlockSize);
  const uint32_t rest = count % kBlockSize;
  if (rest > 0) std::memcpy(block_, bytes + (count - rest), rest);
}
