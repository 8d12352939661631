#include <cstring>

#include "core/MConsoleStream.h"
#include "core/MEncoding.h"

MConsoleStream::MConsoleStream() noexcept : MFileStream("console", stdin, stdout) {}

MConsoleStream::~MConsoleStream() noexcept {
  LetGo();
}

MLineStatus MConsoleStream::ReadLine(char* text, int32_t size) {
  RequireOpen();
  if (size < 1) return MLineStatus::kFull;
  if (!std::fgets(text, size, input_)) {
    *text = 0;
    if (!std::feof(input_)) ThrowReadError();
    return MLineStatus::kNone;
  }
  text[std::strcspn(text, "\r\n")] = 0;
  return MLineStatus::kLine;
}

// Never by the wide functions of the C library: one such call makes it refuse bytes on the same output.
void MConsoleStream::WriteText(const MString& text) {
  const MBytes bytes = MEncoding::UTF8Codec::Get().Encode(text, false);
  Write(bytes.GetData(), bytes.GetSize());
}

void MConsoleStream::Close() {
  LetGo();
  MFileStream::Close();
}

void MConsoleStream::LetGo() noexcept {
  if (input_ == stdin) input_ = nullptr;
  if (output_ == stdout) output_ = nullptr;
}
