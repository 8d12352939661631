#pragma once
#include "core/MStream.h"
#include "hosts/cli/OutputFile.h"

namespace cli {

// An output file for the library's writers. Raises Failure with kOutput as soon as a write has failed.
class OutputStream final : public MStream {
 public:
  // The file outlives the stream.
  explicit OutputStream(OutputFile& file) noexcept : file_(file) {}

  void Write(const void* bytes, int32_t count) override {
    file_.Write(bytes, count);
    file_.ThrowIfFailed();
  }
  int64_t GetPosition() override { return file_.Seek(0, SEEK_CUR); }

 private:
  OutputFile& file_;
};

}  // namespace cli
