#include "core/MBZIPStream.h"

#include <bzlib.h>

#include "core/MException.h"

namespace {

// An exception must not pass through the library, which would leave its memory behind.
void* Allocate(void*, int items, int size) noexcept {
  try {
    return MAllocate(static_cast<std::size_t>(items) * static_cast<std::size_t>(size));
  } catch (const MException&) {
    return nullptr;
  }
}

void Release(void*, void* block) noexcept {
  if (block) MRelease(block);
}

// Our side of a step to the library's record and back.
template <typename Work, typename Step>
int Run(Work& work, bz_stream& stream, Step step) {
  stream.next_in = const_cast<char*>(reinterpret_cast<const char*>(work.input));
  stream.avail_in = work.inputCount;
  stream.next_out = reinterpret_cast<char*>(work.output);
  stream.avail_out = work.outputCount;
  const int result = step(&stream);
  work.input = reinterpret_cast<const uint8_t*>(stream.next_in);
  work.inputCount = stream.avail_in;
  work.output = reinterpret_cast<uint8_t*>(stream.next_out);
  work.outputCount = stream.avail_out;
  return result;
}

bz_stream EmptyRecord() noexcept {
  bz_stream stream{};
  stream.bzalloc = Allocate;
  stream.bzfree = Release;
  return stream;
}

}  // namespace

struct MBZIPStream::Compressor final : Work {
  ~Compressor() override { BZ2_bzCompressEnd(&stream); }
  void Compress(bool isLast) override {
    Run(*this, stream, [&](bz_stream* s) { return BZ2_bzCompress(s, isLast ? BZ_FINISH : BZ_RUN); });
  }
  bz_stream stream = EmptyRecord();
};

struct MBZIPStream::Decompressor final : Work {
  ~Decompressor() override { BZ2_bzDecompressEnd(&stream); }
  Result Decompress() override {
    const int result = Run(*this, stream, [](bz_stream* s) { return BZ2_bzDecompress(s); });
    if (result < 0) return Result::kInvalid;
    return result == BZ_STREAM_END ? Result::kEnd : Result::kMore;
  }
  bz_stream stream = EmptyRecord();
};

MBZIPStream::MBZIPStream(MStream* base, bool isCompressing, int32_t quality)
    : MCompressionStream("BZIP2 stream has not been terminated.") {
  Open(base, isCompressing, quality);
}

bool MBZIPStream::IsEnd() {
  return HasEnded();
}

MCompressionStream::Work* MBZIPStream::MakeCompressor(int32_t level) {
  constexpr int kWorkFactor = 30;
  auto* const compressor = new Compressor;
  if (BZ2_bzCompressInit(&compressor->stream, level, 0, kWorkFactor) == BZ_OK) return compressor;
  delete compressor;
  return nullptr;
}

MCompressionStream::Work* MBZIPStream::MakeDecompressor() {
  auto* const decompressor = new Decompressor;
  if (BZ2_bzDecompressInit(&decompressor->stream, 0, 0) == BZ_OK) return decompressor;
  delete decompressor;
  return nullptr;
}
