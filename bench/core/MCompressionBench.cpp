// A megabyte through each filter, beside the bare library: in one call over the whole, and, for
// decompressing, where it makes a difference, fed 4096 bytes at a time as a filter must. Items are plain
// bytes.

#include <bzlib.h>
#include <zlib.h>

#include <random>
#include <string>
#include <vector>

#include "bench/Calibrated.h"
#include "core/MBZIPStream.h"
#include "core/MMemoryStream.h"
#include "core/MZLibStream.h"

namespace {

constexpr uint32_t kSize = 1 << 20;

// What resource files are: a state's text, then samples of 16 bits.
const std::string& Plain() {
  static const std::string plain = [] {
    std::mt19937 random(1);
    std::string bytes;
    while (bytes.size() < kSize / 2)
      bytes +=
          " parameter" + std::to_string(random() % 40) + "=\"0." + std::to_string(random() % 10000) + "\"";
    double value = 0;
    for (double speed = 0; bytes.size() < kSize;) {
      speed = 0.99 * speed - 0.002 * value + static_cast<double>(random() % 201) - 100;
      value += speed;
      const auto sample = static_cast<int16_t>(value / 4);
      bytes.append(reinterpret_cast<const char*>(&sample), 2);
    }
    bytes.resize(kSize);
    return bytes;
  }();
  return plain;
}

template <typename Stream>
void Compress(MMemoryStream& target) {
  Stream stream(&target, true);
  stream.Write(Plain().data(), kSize);
  stream.Finish();
}

template <typename Stream>
void StreamCompress(benchmark::State& state) {
  Plain();
  Calibrate(state);
  for (auto _ : state) {
    MMemoryStream target;
    Compress<Stream>(target);
    benchmark::DoNotOptimize(target.GetData());
  }
  state.SetItemsProcessed(state.iterations() * kSize);
}
BENCHMARK(StreamCompress<MZLibStream>)->Name("ZLibCompress");
BENCHMARK(StreamCompress<MBZIPStream>)->Name("BZIPCompress");

template <typename Stream>
void StreamDecompress(benchmark::State& state) {
  MMemoryStream compressed;
  Compress<Stream>(compressed);
  std::vector<uint8_t> plain(kSize);
  Calibrate(state);
  for (auto _ : state) {
    compressed.Seek(0, MSeekOrigin::kStart);
    Stream stream(&compressed, false);
    if (stream.Read(plain.data(), kSize) < int32_t{kSize}) state.SkipWithError("short");
    benchmark::DoNotOptimize(plain.data());
  }
  state.SetItemsProcessed(state.iterations() * kSize);
}
BENCHMARK(StreamDecompress<MZLibStream>)->Name("ZLibDecompress");
BENCHMARK(StreamDecompress<MBZIPStream>)->Name("BZIPDecompress");

void ZLibCompressBare(benchmark::State& state) {
  std::vector<uint8_t> target(compressBound(kSize));
  const auto* const plain = reinterpret_cast<const Bytef*>(Plain().data());
  Calibrate(state);
  for (auto _ : state) {
    uLongf size = target.size();
    if (compress2(target.data(), &size, plain, kSize, 9) != Z_OK) state.SkipWithError("zlib failed");
    benchmark::DoNotOptimize(target.data());
  }
  state.SetItemsProcessed(state.iterations() * kSize);
}
BENCHMARK(ZLibCompressBare);

void ZLibDecompressBare(benchmark::State& state) {
  MMemoryStream compressed;
  Compress<MZLibStream>(compressed);
  std::vector<uint8_t> plain(kSize);
  Calibrate(state);
  for (auto _ : state) {
    uLongf size = kSize;
    if (uncompress(plain.data(), &size, compressed.GetData(), static_cast<uLong>(compressed.GetSize())) !=
        Z_OK)
      state.SkipWithError("zlib failed");
    benchmark::DoNotOptimize(plain.data());
  }
  state.SetItemsProcessed(state.iterations() * kSize);
}
BENCHMARK(ZLibDecompressBare);

void ZLibDecompressPieces(benchmark::State& state) {
  MMemoryStream compressed;
  Compress<MZLibStream>(compressed);
  std::vector<uint8_t> plain(kSize);
  Calibrate(state);
  for (auto _ : state) {
    uint8_t buffer[4096];
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) state.SkipWithError("zlib failed");
    stream.next_out = plain.data();
    stream.avail_out = kSize;
    compressed.Seek(0, MSeekOrigin::kStart);
    while (stream.avail_out > 0) {
      stream.next_in = buffer;
      stream.avail_in = static_cast<uInt>(compressed.Read(buffer, sizeof buffer));
      if (inflate(&stream, Z_SYNC_FLUSH) < 0) state.SkipWithError("zlib failed");
    }
    inflateEnd(&stream);
    benchmark::DoNotOptimize(plain.data());
  }
  state.SetItemsProcessed(state.iterations() * kSize);
}
BENCHMARK(ZLibDecompressPieces);

void BZIPCompressBare(benchmark::State& state) {
  std::string target(kSize * 2, '\0'), plain = Plain();
  Calibrate(state);
  for (auto _ : state) {
    auto size = static_cast<unsigned>(target.size());
    if (BZ2_bzBuffToBuffCompress(target.data(), &size, plain.data(), kSize, 9, 0, 30) != BZ_OK)
      state.SkipWithError("bzip2 failed");
    benchmark::DoNotOptimize(target.data());
  }
  state.SetItemsProcessed(state.iterations() * kSize);
}
BENCHMARK(BZIPCompressBare);

void BZIPDecompressBare(benchmark::State& state) {
  MMemoryStream compressed;
  Compress<MBZIPStream>(compressed);
  std::string source(reinterpret_cast<const char*>(compressed.GetData()),
                     static_cast<std::size_t>(compressed.GetSize()));
  std::vector<char> plain(kSize);
  Calibrate(state);
  for (auto _ : state) {
    unsigned size = kSize;
    if (BZ2_bzBuffToBuffDecompress(plain.data(), &size, source.data(), static_cast<unsigned>(source.size()),
                                   0, 0) != BZ_OK)
      state.SkipWithError("bzip2 failed");
    benchmark::DoNotOptimize(plain.data());
  }
  state.SetItemsProcessed(state.iterations() * kSize);
}
BENCHMARK(BZIPDecompressBare);

}  // namespace
