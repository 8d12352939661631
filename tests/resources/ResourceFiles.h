#pragma once
// Resource libraries of both forms, byte by byte, for tests of reading them.

#include "core/MBZIPStream.h"
#include "core/MFileStream.h"
#include "core/MMD5Stream.h"
#include "core/MZLibStream.h"
#include "resources/MLargeResourceFile.h"
#include "resources/MResourceLibrary.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/core/StreamDoubles.h"

constexpr char kShort[] = "Could not read required data from stream.";
constexpr char kInvalidContents[] = "Invalid file contents. Source compressed stream has invalid content.";

// The lowest bytes of a number, the lowest first.
inline std::string LittleEndian(uint64_t value, int bytes) {
  std::string text;
  for (; bytes > 0; --bytes, value >>= 8) text += static_cast<char>(value & 0xFF);
  return text;
}

template <typename Stream>
std::string Packed(const std::string& bytes) {
  BareStream target;
  Stream filter(&target, true);
  Put(filter, bytes);
  filter.Finish();
  return target.written;
}

// Compressed as a large file with these flags does.
inline std::string PackedAs(uint32_t flags, const std::string& bytes) {
  return flags & MLargeResourceFile::kBZIP ? Packed<MBZIPStream>(bytes) : Packed<MZLibStream>(bytes);
}

inline std::string Row(const std::string& id, const std::string& offset, const std::string& size,
                       const std::string& more = "") {
  return "<resourceX id=\"" + id + "\" offset=\"" + offset + "\" size=\"" + size + "\" " + more + "/>";
}
inline std::string Row(const std::string& id, std::size_t offset, std::size_t size,
                       const std::string& more = "") {
  return Row(id, std::to_string(offset), std::to_string(size), more);
}

inline std::string Index(const std::string& rows) {
  return "<resources><resources>" + rows + "</resources></resources>";
}

inline std::string SmallFile(const std::string& index, const std::string& items) {
  return LittleEndian(0, 4) + LittleEndian(index.size(), 4) + LittleEndian(items.size(), 4) + index + items;
}

inline std::string Digest(const std::string& text) {
  MMD5Stream hash;
  Put(hash, text);
  hash.Finish();
  BareStream digest;
  hash.WriteDigest(digest);
  return digest.written;
}

inline std::string Tail(const std::string& index, uint64_t indexLength, uint32_t flags) {
  return Digest(index) + LittleEndian(indexLength, 8) + LittleEndian(flags, 4);
}

// The items are taken as they are; the index is compressed when the flags say so.
inline std::string LargeFile(const std::string& index, const std::string& items, uint32_t flags = 0) {
  const std::string stored = flags & MLargeResourceFile::kIndexCompressed ? PackedAs(flags, index) : index;
  return items + stored + Tail(index, stored.size(), flags);
}

inline void LoadBytes(MResourceLibrary& library, const std::string& bytes) {
  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  library.Load(stream);
}

inline std::string Found(MResourceLibrary& library, const char* id) {
  MMemoryStream& stream = library.Find(MString::FromNarrow(id));
  return Take(stream, static_cast<int32_t>(stream.GetSize()));
}

// A library in a file of its own.
struct LibraryFile {
  explicit LibraryFile(const std::string& bytes) { Write(bytes); }
  void Write(const std::string& bytes) { path = folder.WriteFile("library.mrf", bytes); }
  void LoadInto(MResourceLibrary& library) const { library.LoadFile(MString::FromNarrow(path.c_str())); }

  TemporaryFolder folder;
  std::string path;
};
