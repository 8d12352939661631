#pragma once
#include <cstdint>
#include <filesystem>
#include <string>

namespace cli {

// A file that is complete under its name or not there.
//
// What is written goes to a file of another name in the same folder, which takes the name with Commit. A file
// that had the name before stays as it is until then, and hands on its permissions; of a link the file behind
// it is replaced. Without Commit, and when the process is ended by a signal that it can catch, nothing is
// left. A name that leads to a device, a pipe or an open descriptor (/dev/stdout) cannot be replaced: Commit
// copies the whole there, in one go, from a file without a name in the folder for temporary files.
//
// One at a time. Everything that fails raises Failure with kOutput, except that Write keeps its failure for
// ThrowIfFailed.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  const std::string& GetPath() const noexcept { return path_; }

  // At the current position, which moves on. Write takes all or, having failed, less.
  int64_t Write(const void* bytes, int64_t count) noexcept;
  int64_t Read(void* bytes, int64_t count) noexcept;
  // As lseek: the new position, or -1.
  int64_t Seek(int64_t offset, int whence) noexcept;
  int64_t GetSize() const noexcept;

  void ThrowIfFailed() const;
  void Commit();

 private:
  void OpenBeside(const std::filesystem::path& target);
  void OpenNameless();
  void CopyToDevice();
  [[noreturn]] void Throw(int error) const;

  std::string path_;              // as the user wrote it
  std::filesystem::path target_;  // what Commit replaces, empty when there is a device
  std::string temporary_;         // where the bytes are until then, empty when that has no name
  int file_ = -1;
  int device_ = -1;
  int error_ = 0;  // of the first write that failed
};

}  // namespace cli
