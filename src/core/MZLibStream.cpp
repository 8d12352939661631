#include "core/MZLibStream.h"

#include <zlib.h>

#include "core/MException.h"

namespace {

// An exception must not pass through the library, which would leave its memory behind.
voidpf Allocate(voidpf, uInt items, uInt size) noexcept {
  try {
    return MAllocate(std::size_t{items} * size);
  } catch (const MException&) {
    return nullptr;
  }
}

void Release(voidpf, voidpf block) noexcept {
  MRelease(block);
}

// Our side of a step to the library's record and back.
template <typename Work, typename Step>
int Run(Work& work, z_stream& stream, Step step) {
  stream.next_in = const_cast<Bytef*>(work.input);
  stream.avail_in = work.inputCount;
  stream.next_out = work.output;
  stream.avail_out = work.outputCount;
  const int result = step(&stream);
  work.input = stream.next_in;
  work.inputCount = stream.avail_in;
  work.output = stream.next_out;
  work.outputCount = stream.avail_out;
  return result;
}

z_stream EmptyRecord() noexcept {
  z_stream stream{};
  stream.zalloc = Allocate;
  stream.zfree = Release;
  return stream;
}

}  // namespace

struct MZLibStream::Deflater final : Work {
  ~Deflater() override { deflateEnd(&stream); }
  void Compress(bool isLast) override {
    Run(*this, stream, [&](z_stream* s) { return deflate(s, isLast ? Z_FINISH : Z_NO_FLUSH); });
  }
  z_stream stream = EmptyRecord();
};

struct MZLibStream::Inflater final : Work {
  ~Inflater() override { inflateEnd(&stream); }
  Result Decompress() override {
    switch (Run(*this, stream, [](z_stream* s) { return inflate(s, Z_SYNC_FLUSH); })) {
      case Z_STREAM_END:
        return Result::kEnd;
      case Z_MEM_ERROR:
      case Z_DATA_ERROR:
      case Z_NEED_DICT:
        return Result::kInvalid;
      default:
        return Result::kMore;
    }
  }
  z_stream stream = EmptyRecord();
};

MZLibStream::MZLibStream(MStream* base, bool isCompressing, int32_t quality)
    : MCompressionStream("ZLIB stream has not been terminated.") {
  Open(base, isCompressing, quality);
}

bool MZLibStream::IsEnd() {
  return Base().IsEnd();
}

MCompressionStream::Work* MZLibStream::MakeCompressor(int32_t level) {
  auto* const deflater = new Deflater;
  if (deflateInit(&deflater->stream, level) == Z_OK) return deflater;
  delete deflater;
  return nullptr;
}

MCompressionStream::Work* MZLibStream::MakeDecompressor() {
  auto* const inflater = new Inflater;
  if (inflateInit(&inflater->stream) == Z_OK) return inflater;
  delete inflater;
  return nullptr;
}
