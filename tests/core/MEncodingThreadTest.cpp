#include <gtest/gtest.h>

#include <barrier>
#include <thread>

#include "tests/core/Encodings.h"

namespace {

constexpr int kThreads = 8;

// What every thread finds, from the first look-up in the process on.
TEST(MEncodingThreads, TheFirstUseOfTheTablesMayHappenOnManyThreadsAtOnce) {
  std::string high;
  for (int byte = 0x80; byte < 0x100; ++byte) high += static_cast<char>(byte);
  const std::vector<MString> names = CodecNames();
  std::vector<std::vector<std::string>> results(kThreads);
  std::barrier step(kThreads);
  std::vector<std::thread> threads;
  for (std::vector<std::string>& result : results)
    threads.emplace_back([&] {
      step.arrive_and_wait();
      for (std::size_t i = names.size(); i-- > 0;) {
        const MEncoding::Codec& codec = MEncoding::FindCodec(names[i]);
        const MString text = Decode(codec, high);
        step.arrive_and_wait();
        result.push_back(Bytes(codec.Encode(text, true)));
      }
    });
  for (std::thread& thread : threads) thread.join();
  for (const std::vector<std::string>& result : results) EXPECT_EQ(result, results[0]);
  // KOI8-R has a character for every byte.
  EXPECT_EQ(results[0][names.size() - 1 - 3], high + '\0');
}

}  // namespace
