#pragma once
#include <cstdio>

#include "core/MStream.h"

// A stream on a file, buffered by the C library alone. Every service but Open, Close and IsValid raises "File
// stream is not initialized." (kStreamClosed) on a closed one. Failures are "Error writing to file "{0}".
// Probably disk full.", "Error reading from file "{0}"." and "Could not perform file seek.", all
// kTransferFailed. Since the C library buffers, a write error may come with a later Read, Seek, GetSize,
// Flush, Truncate or Close.
class MFileStream : public MStream {
 public:
  // Flags of Open, a set of bits. Without kRead and kWrite the open fails.
  static constexpr uint32_t kRead = 1;    // an existing file
  static constexpr uint32_t kWrite = 2;   // an existing file, for reading too
  static constexpr uint32_t kCreate = 4;  // with kWrite: creates or empties the file

  MFileStream();
  MFileStream(const MString& path, uint32_t flags);
  ~MFileStream() noexcept override;  // closes; what Close would raise is lost here

  // Closes what is open and opens `path`; an empty path reopens the last one. A failure (kNotOpened) leaves
  // the stream closed and keeps the path. Folders are refused. The file is closed in child processes.
  void Open(const MString& path, uint32_t flags);
  const MString& GetPath() const noexcept { return path_; }

  void Write(const void* bytes, int32_t count) override;
  int32_t Read(void* bytes, int32_t count) override;
  void Seek(int64_t offset, MSeekOrigin origin) override;
  int64_t GetPosition() override;
  // Raises the write error for what could not be written.
  void Flush() override;
  // Compares with the size that the file had when it was opened.
  bool IsEnd() override;
  void Truncate() override;
  int64_t GetSize() override;  // of the file as it is now
  bool IsValid() override;     // open

  // A closed stream stays closed. What could not be written raises the write error; the stream is closed then
  // as well.
  virtual void Close();

  // Raises "File "{0}" could not be created. Make sure there is no write-protected file already existing."
  // (kNotOpened).
  [[noreturn]] static void ThrowNotCreated(const MString& path);

 protected:
  // A stream on files that are open already, which Close and the destructor would close; `name` stands in
  // messages.
  MFileStream(const MString& name, std::FILE* input, std::FILE* output) noexcept;
  // Both are null when closed, and the same for an ordinary file.
  std::FILE* input_ = nullptr;
  std::FILE* output_ = nullptr;

  void RequireOpen() const;
  [[noreturn]] void ThrowReadError() const;
  [[noreturn]] void ThrowWriteError() const;
  // Closes without a failure; false if something could not be written.
  bool CloseFiles() noexcept;

 private:
  enum class Transfer { kNone, kRead, kWrite };

  void Prepare(Transfer transfer);
  void FlushWritten();
  [[noreturn]] void ThrowNotOpened(uint32_t flags) const;

  MString path_;
  int64_t sizeWhenOpened_ = 0;
  Transfer last_ = Transfer::kNone;  // the C library wants a seek between reading and writing
};
