#include <sys/stat.h>
#include <unistd.h>

#include <iterator>

#include "core/MException.h"
#include "core/MFileStream.h"
#include "core/MFormat.h"
#include "core/MPath.h"
#include "core/MTranslate.h"

namespace {

// Mode of fopen for a set of flags, null for none; "e" closes the file in child processes.
const char* OpenMode(uint32_t flags) noexcept {
  if (flags & MFileStream::kWrite) return flags & MFileStream::kCreate ? "w+be" : "r+be";
  return flags & MFileStream::kRead ? "rbe" : nullptr;
}

// Null on failure. Folders are refused here, since they open for reading.
std::FILE* OpenFile(const MBytes& path, const char* mode) noexcept {
  if (path.GetSize() == 0 || !mode) return nullptr;
  std::FILE* const file = std::fopen(path.GetText(), mode);
  struct stat info;
  if (file && (fstat(fileno(file), &info) != 0 || S_ISDIR(info.st_mode))) {
    std::fclose(file);
    return nullptr;
  }
  return file;
}

// The size by way of the file's end, with the position restored; -1 when the file cannot be sought.
int64_t MeasureSize(std::FILE* file) noexcept {
  const off_t position = ftello(file);
  if (position < 0 || fseeko(file, 0, SEEK_END) != 0) return -1;
  const off_t size = ftello(file);
  return fseeko(file, position, SEEK_SET) == 0 ? size : -1;
}

[[noreturn]] void ThrowSeekError() {
  throw MException(Translate("Could not perform file seek."), MErrorCode::kTransferFailed);
}

}  // namespace

MFileStream::MFileStream() = default;

MFileStream::MFileStream(const MString& path, uint32_t flags) {
  Open(path, flags);
}

MFileStream::MFileStream(const MString& name, std::FILE* input, std::FILE* output) noexcept
    : input_(input), output_(output), path_(name) {}

MFileStream::~MFileStream() noexcept {
  CloseFiles();
}

void MFileStream::Open(const MString& path, uint32_t flags) {
  const MString wanted = path.IsEmpty() ? path_ : path;
  const MBytes encoded = MEncodePath(wanted);  // may raise, with everything as it was
  Close();
  path_ = wanted;
  std::FILE* const file = path_.IsEmpty() ? nullptr : OpenFile(encoded, OpenMode(flags));
  if (!file) ThrowNotOpened(flags);
  input_ = output_ = file;
  last_ = Transfer::kNone;
  const int64_t size = MeasureSize(file);
  sizeWhenOpened_ = size < 0 ? 0 : size;  // pipes and terminals have none
}

void MFileStream::Write(const void* bytes, int32_t count) {
  Prepare(Transfer::kWrite);
  if (count <= 0) return;
  const auto wanted = static_cast<std::size_t>(count);
  if (std::fwrite(bytes, 1, wanted, output_) < wanted) ThrowWriteError();
}

int32_t MFileStream::Read(void* bytes, int32_t count) {
  Prepare(Transfer::kRead);
  if (count <= 0) return 0;
  const auto wanted = static_cast<std::size_t>(count);
  const std::size_t found = std::fread(bytes, 1, wanted, input_);
  if (found < wanted) {
    const bool failed = std::ferror(input_) && !std::feof(input_);
    std::clearerr(input_);  // else a file that grows would stay at its end
    if (failed) ThrowReadError();
  }
  return static_cast<int32_t>(found);
}

void MFileStream::Seek(int64_t offset, MSeekOrigin origin) {
  RequireOpen();
  constexpr int kOrigins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  const auto index = static_cast<uint32_t>(origin);
  if (index >= std::size(kOrigins)) ThrowInvalidOrigin();
  FlushWritten();
  if (fseeko(input_, offset, kOrigins[index]) != 0) ThrowSeekError();
}

int64_t MFileStream::GetPosition() {
  RequireOpen();
  const int64_t position = ftello(input_);
  if (position < 0) ThrowSeekError();
  return position;
}

void MFileStream::Flush() {
  RequireOpen();
  if (std::fflush(output_) != 0) ThrowWriteError();
}

bool MFileStream::IsEnd() {
  return GetPosition() >= sizeWhenOpened_;
}

void MFileStream::Truncate() {
  Flush();  // drops what has been read ahead, too
  if (ftruncate(fileno(output_), GetPosition()) != 0) ThrowWriteError();
}

int64_t MFileStream::GetSize() {
  RequireOpen();
  FlushWritten();
  const int64_t size = MeasureSize(input_);
  if (size < 0) ThrowSeekError();
  return size;
}

bool MFileStream::IsValid() {
  return input_ || output_;
}

void MFileStream::Close() {
  if (!CloseFiles()) ThrowWriteError();
}

void MFileStream::RequireOpen() const {
  if (!input_ && !output_) ThrowNotOpen();
}

void MFileStream::ThrowReadError() const {
  throw MException(Format(Translate("Error reading from file \"{0}\".")).Arg(path_).Text(),
                   MErrorCode::kTransferFailed);
}

void MFileStream::Prepare(Transfer transfer) {
  RequireOpen();
  const bool changes = last_ != transfer && last_ != Transfer::kNone;
  if (changes && input_ == output_) MFileStream::Seek(0, MSeekOrigin::kCurrent);
  last_ = transfer;
}

// A seek would write the buffer as well, but report a full disk as a failed seek.
void MFileStream::FlushWritten() {
  if (last_ == Transfer::kWrite) Flush();
}

bool MFileStream::CloseFiles() noexcept {
  std::FILE* const input = input_;
  std::FILE* const output = output_;
  input_ = output_ = nullptr;
  last_ = Transfer::kNone;
  const bool closed = !input || std::fclose(input) == 0;
  return (!output || output == input || std::fclose(output) == 0) && closed;
}

void MFileStream::ThrowNotOpened(uint32_t flags) const {
  if (flags & kCreate) ThrowNotCreated(path_);
  throw MException(
      Format(Translate("File \"{0}\" could not be open. Make sure it exists.")).Arg(path_).Text(),
      MErrorCode::kNotOpened);
}

void MFileStream::ThrowNotCreated(const MString& path) {
  const MString text = Translate(
      "File \"{0}\" could not be created. Make sure there is no write-protected file already existing.");
  throw MException(Format(text).Arg(path).Text(), MErrorCode::kNotOpened);
}

void MFileStream::ThrowWriteError() const {
  throw MException(Format(Translate("Error writing to file \"{0}\". Probably disk full.")).Arg(path_).Text(),
                   MErrorCode::kTransferFailed);
}
