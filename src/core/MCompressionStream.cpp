#include "core/MCompressionStream.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "core/MException.h"
#include "core/MGuard.h"
#include "core/MTranslate.h"

namespace {

[[noreturn]] void ThrowInvalidContent() {
  MString text = Translate("Invalid file contents. ");
  text.Append(Translate("Source compressed stream has invalid content."));
  throw MException(text, MErrorCode::kTransferFailed);
}

int32_t LevelOf(int32_t quality) noexcept {
  return (std::clamp(quality, 1, MCompressionStream::kBestQuality) - 1) / 10;
}

}  // namespace

MCompressionStream::Work::~Work() = default;

void MCompressionStream::Work::Compress(bool) {
  MThrowNotImplemented("write to stream");
}

MCompressionStream::Result MCompressionStream::Work::Decompress() {
  MThrowNotImplemented("read from stream");
}

MCompressionStream::MCompressionStream(const MString& unfinishedText) noexcept
    : unfinishedText_(unfinishedText), exceptionsInFlight_(std::uncaught_exceptions()) {}

MCompressionStream::~MCompressionStream() noexcept(false) {
  const bool isUnfinished = Release();
  if (!isUnfinished) return;
  const MString text = Translate(unfinishedText_);
  if (std::uncaught_exceptions() <= exceptionsInFlight_) throw MException(text);
  ReportFatal(text);
}

void MCompressionStream::Open(MStream* base, bool isCompressing, int32_t quality) {
  Close();
  isCompressing_ = isCompressing;
  hasEnded_ = false;
  position_ = 0;
  limit_ = kNoLimit;
  if (!base) return;
  work_ = isCompressing ? MakeCompressor(LevelOf(quality)) : MakeDecompressor();
  if (!work_)
    throw MException(isCompressing ? Translate("Could not initialize deflating.")
                                   : Translate("Could not initialize inflating."));
  base_ = base;
}

void MCompressionStream::Write(const void* bytes, int32_t count) {
  Base();
  if (!isCompressing_) MThrowNotImplemented("write to stream");
  if (!work_) ThrowNotOpen();
  if (count <= 0) return;
  work_->input = static_cast<const uint8_t*>(bytes);
  work_->inputCount = static_cast<uint32_t>(count);
  Compress(false);
  position_ += static_cast<uint64_t>(count);
}

int32_t MCompressionStream::Read(void* bytes, int32_t count) {
  Base();
  if (isCompressing_) MThrowNotImplemented("read from stream");
  if (count <= 0 || hasEnded_) return 0;
  const uint64_t before = position_;
  Decompress(static_cast<uint8_t*>(bytes), static_cast<uint32_t>(count));
  return static_cast<int32_t>(position_ - before);
}

int64_t MCompressionStream::GetPosition() {
  return static_cast<int64_t>(position_);
}

void MCompressionStream::Flush() {
  Base().Flush();
}

bool MCompressionStream::IsValid() {
  return base_ != nullptr;
}

void MCompressionStream::Close() {
  if (Release()) throw MException(Translate(unfinishedText_));
}

void MCompressionStream::Finish() {
  Base();
  if (!isCompressing_ || !work_) return;
  work_->inputCount = 0;
  Compress(true);
  delete std::exchange(work_, nullptr);
}

void MCompressionStream::SetReadLimit(int64_t bytes) noexcept {
  limit_ = static_cast<uint64_t>(std::max<int64_t>(bytes, 0));
}

MStream& MCompressionStream::Base() const {
  if (!base_) ThrowNotOpen();
  return *base_;
}

// Lets go of everything; true if that was an unfinished compressor.
bool MCompressionStream::Release() noexcept {
  base_ = nullptr;
  if (!work_) return false;
  delete std::exchange(work_, nullptr);
  return isCompressing_;
}

// What came out before a failure is lost on its way, so the filter cannot go on behind one.
template <typename Step>
void MCompressionStream::CloseOnFailure(Step step) {
  try {
    step();
  } catch (...) {
    Release();
    throw;
  }
}

void MCompressionStream::Compress(bool isLast) {
  CloseOnFailure([&] {
    do {
      work_->output = output_;
      work_->outputCount = kBufferSize;
      work_->Compress(isLast);
      const auto made = static_cast<int32_t>(kBufferSize - work_->outputCount);
      if (made > 0) base_->Write(output_, made);
    } while (work_->outputCount == 0);
  });
}

void MCompressionStream::Decompress(uint8_t* bytes, uint32_t count) {
  CloseOnFailure([&] {
    Work& work = *work_;
    // Beyond the limit room for one byte is enough to see that there is one.
    const uint64_t allowed = limit_ - std::min(limit_, position_);
    work.output = bytes;
    work.outputCount = allowed < count ? static_cast<uint32_t>(allowed + 1) : count;
    while (work.outputCount > 0 && !hasEnded_) {
      if (work.inputCount == 0) Refill();
      const uint32_t input = work.inputCount;
      const uint32_t output = work.outputCount;
      const Result result = work.Decompress();
      position_ += output - work.outputCount;
      if (result == Result::kInvalid || position_ > limit_) ThrowInvalidContent();
      hasEnded_ = result == Result::kEnd;
      // No library goes on by itself once the base is at its end.
      if (work.inputCount == input && work.outputCount == output) break;
    }
  });
}

void MCompressionStream::Refill() {
  const int32_t found = base_->Read(input_, kBufferSize);
  work_->input = input_;
  work_->inputCount = static_cast<uint32_t>(std::clamp(found, 0, kBufferSize));
}
