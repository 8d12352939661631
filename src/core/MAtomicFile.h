#pragma once
#include <string>

#include "core/MFileStream.h"

// A file that is written as a whole or not at all. The stream writes to a new file beside the target (its
// name, "~" and a number), and Commit puts that in the target's place. Until then, whatever happens - a
// failure, a full disk, the end of the process - the old file is there with its old content.
//
//   MAtomicFile file(path);
//   item.Save(file);
//   file.Commit();
//
// Where the path is a link, what it leads to is replaced. The new file has the permissions of the old one,
// and its owner and group as far as the system allows. A device or a pipe is written directly, and so is a
// file that may be written in a folder where none may be made.
//
// Messages name the path as it was given. A target that exists and must not be written "could not be
// created".
class MAtomicFile final : public MFileStream {
 public:
  // Raises "File "{0}" could not be created. ..." (kNotOpened) and then has touched nothing.
  explicit MAtomicFile(const MString& path);
  ~MAtomicFile() noexcept override;  // without Commit drops what was written

  // Brings what was written to the disk, closes the stream and puts the file in place. A failure raises what
  // a write or the opening would, drops what was written and leaves the old file.
  void Commit();
  // Drops what was written.
  void Close() override;

 private:
  // A name of the operating system.
  using Name = std::basic_string<char, std::char_traits<char>, MAllocator<char>>;

  MAtomicFile(const MString& path, std::FILE* none) noexcept : MFileStream(path, none, none) {}
  using MFileStream::Open;

  void OpenDirectly();
  bool OpenFolder(const char* path);
  std::FILE* MakeTemporary(bool isPrivate);
  void Put();
  void Discard() noexcept;

  int folder_ = -1;  // descriptor of the target's folder, -1 when the target is written directly
  Name target_;      // in the folder, links resolved
  Name temporary_;   // the new file in the folder, empty when there is none
};
