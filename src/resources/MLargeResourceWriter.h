#pragma once
#include <memory>

#include "core/MStream.h"

class MCompressionStream;
class MXMLItem;

// Writes a large resource file, in the form that MLargeResourceFile.h tells of: item after item, then the
// index, which says where they lie.
//
//   MLargeResourceWriter writer(file, MLargeResourceWriter::Compression::kZLib);
//   writer.BeginItem().Write(bytes, count);
//   const MLargeResourceWriter::Place place = writer.EndItem();
//   writer.Finish(index);
//
// What the stream and its filters raise passes through; the file is worth nothing then.
class MLargeResourceWriter final {
 public:
  enum class Compression { kNone, kZLib, kBZIP };

  // Where an item lies and how many plain bytes it has, as MLargeResourceFile::OpenItem wants them.
  struct Place {
    int64_t start = 0;
    int64_t size = 0;
  };

  M_LIBRARY_MEMORY

  // Writes to a stream that tells its position and stands at its beginning. It outlives the writer. Items,
  // each by itself, and the index are compressed or not.
  MLargeResourceWriter(MStream& target, Compression compression) noexcept;
  ~MLargeResourceWriter();

  // The stream for the bytes of the next item, until EndItem.
  MStream& BeginItem();
  Place EndItem();

  // Completes the file. Raises "Invalid large resource library format." (kTransferFailed) for an index that
  // is too long for a reader.
  void Finish(const MXMLItem& index);

 private:
  std::unique_ptr<MCompressionStream> MakeFilter(MStream& target) const;

  MStream& target_;
  const Compression compression_;
  Place item_;
  std::unique_ptr<MCompressionStream> filter_;  // of the item, none where items are plain
};
