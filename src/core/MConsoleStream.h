#pragma once
#include "core/MFileStream.h"

// Standard input and standard output of the process as one stream. They are only used, never closed: Close
// and the destructor let go of them. Bytes mix with those of printf in the order of the calls. Position, size
// and end are those of standard input where that is a file.
class MConsoleStream : public MFileStream {
 public:
  MConsoleStream() noexcept;
  ~MConsoleStream() noexcept override;

  // The rest of a line, as far as the buffer holds it, cut at the first carriage return or line feed. The
  // status is kLine, or kNone at the end of the input; a buffer below 1 byte is left alone and gives kFull.
  MLineStatus ReadLine(char* text, int32_t size) override;
  // The whole text as UTF-8.
  void WriteText(const MString& text) override;
  void Close() override;

 private:
  void LetGo() noexcept;
};
