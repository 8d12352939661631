// MD5 beside that of OpenSSL. Items are bytes.

#include <openssl/evp.h>

#include <vector>

#include "bench/Calibrated.h"
#include "core/MMD5Stream.h"

namespace {

constexpr std::size_t kSize = 1 << 20;

std::vector<uint8_t> Bytes() {
  std::vector<uint8_t> bytes(kSize);
  for (std::size_t i = 0; i < kSize; ++i) bytes[i] = static_cast<uint8_t>(i * 131 + i / 256);
  return bytes;
}

void HashMD5(benchmark::State& state) {
  const std::vector<uint8_t> bytes = Bytes();
  Calibrate(state);
  for (auto _ : state) {
    MMD5Stream stream;
    stream.Write(bytes.data(), kSize);
    stream.Finish();
    benchmark::DoNotOptimize(stream);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kSize));
}
BENCHMARK(HashMD5);

void HashMD5OpenSSL(benchmark::State& state) {
  const std::vector<uint8_t> bytes = Bytes();
  uint8_t digest[EVP_MAX_MD_SIZE];
  Calibrate(state);
  for (auto _ : state) {
    if (EVP_Digest(bytes.data(), kSize, digest, nullptr, EVP_md5(), nullptr) != 1)
      state.SkipWithError("OpenSSL failed");
    benchmark::DoNotOptimize(digest);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kSize));
}
BENCHMARK(HashMD5OpenSSL);

}  // namespace
