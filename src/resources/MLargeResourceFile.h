#pragma once
#include <memory>

#include "core/MStream.h"

class MXMLItem;

// A file with its index behind its items, so that items of any size can be written first: large resource
// libraries and multisamples. It ends with the index, an XML file that may be compressed, the MD5 digest of
// its plain text (16 bytes), its length in the file (8) and the flags (4), in little-endian order. The items
// are all that lies in front of the index.
class MLargeResourceFile final {
 public:
  M_LIBRARY_MEMORY

  // Flags.
  static constexpr uint32_t kItemsCompressed = 1;
  static constexpr uint32_t kIndexCompressed = 2;
  static constexpr uint32_t kBZIP = 4;  // the compressor of both is bzip2, else zlib

  static constexpr int32_t kLongestIndex = 0x200000;       // bytes in the file
  static constexpr int32_t kLongestIndexText = 0x4000000;  // bytes of the plain text
  // Characters "<" and "=" of the plain text, about: a tree takes far more memory than its text, and these
  // bound its elements and attributes. A library of half a million items stays below.
  static constexpr int32_t kMostIndexMarks = 0x200000;

  // Takes over a stream that can seek and tell its size, and reads the index into `root`. Raises
  // "Invalid large resource library format.", also for too many marks, and "Resource library file is
  // corrupt." (kTransferFailed), what reading and decompressing raise, also for an index that is too long,
  // and what MXMLItem::Load raises.
  MLargeResourceFile(std::unique_ptr<MStream> file, MXMLItem& root);

  bool HasCompressedItems() const noexcept { return (flags_ & kItemsCompressed) != 0; }

  // The `size` plain bytes of an item that begins at `offset`: less when the file has less, none outside of
  // the items. One item is read at a time, and before this object goes. Only one that is not compressed can
  // seek.
  std::unique_ptr<MStream> OpenItem(int64_t offset, int64_t size, bool isCompressed) const;

 private:
  std::unique_ptr<MStream> Decompress(MStream& stored, int64_t limit) const;

  std::unique_ptr<MStream> file_;
  uint32_t flags_ = 0;
  int64_t itemsSize_ = 0;
};
