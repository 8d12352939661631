#pragma once
#include "core/MMemoryStream.h"
#include "core/MXMLItem.h"

class MLargeResourceFile;

// An item of a resource library.
struct MResource {
  M_LIBRARY_MEMORY

  MString id;
  // Place and length as the index states them, in bytes; what is negative there is 0. The size of a
  // compressed item is that of its compressed bytes in the small form, of its plain ones in the large form.
  int64_t offset = 0;
  int64_t size = 0;
  bool isCompressed = false;
  bool isRead = false;   // else MResourceLibrary::Find reads it
  MMemoryStream stream;  // the plain bytes
};

// Named binary items, pictures for instance, behind one index in XML. The root of the index has a child
// "resources" with one element per item, whose name begins with "resource" and whose attributes are "id",
// "offset" (from the first item), "size" and, optionally, "compressed". tools/make_resources.py builds
// libraries.
//
// The small form begins with three 32-bit little-endian words: a version, 0, and the sizes of the index and
// of the items, which follow. It is held in memory; an item that is compressed is so by zlib and is
// decompressed when the library is loaded, all of them to at most 64 MiB. MLargeResourceFile is the large
// form, whose file stays open; its items are read when they are found for the first time. There, an item
// without "compressed" is as the flags say.
//
// An item that reaches beyond the data has the bytes that exist. The index knows no nested folders, and of
// items with the same id only the first is found. A library is used by one thread at a time.
class MResourceLibrary final {
 public:
  M_LIBRARY_MEMORY

  MResourceLibrary() noexcept = default;
  MResourceLibrary(const MResourceLibrary&) = delete;
  MResourceLibrary& operator=(const MResourceLibrary&) = delete;
  ~MResourceLibrary();

  // Reads the small form, from the stream's position on. What was in the library goes. It stays empty when
  // the stream ends too early, without an exception, and when something is raised: the messages of MXMLItem
  // and of decompressing, and "Could not find required attribute ({0})."
  void Load(MStream& stream);
  // Reads a file of either form: it is a small one when its version is 0 and the three words account for its
  // size. Raises the same, what MLargeResourceFile raises, with the path in the exception's source, and that
  // the file cannot be opened; then the library stays as it was.
  void LoadFile(const MString& path);
  void Clear() noexcept;
  // Has neither an index nor data.
  bool IsEmpty() const noexcept;

  // The item's bytes, at position 0: the same stream every time, which belongs to the library and is gone
  // when that is emptied. Ids are compared as MString::Compare does. Raises "Cannot find requested resource
  // ({0})." and what reading from the file raises, after which the item can be tried again.
  MMemoryStream& Find(const MString& id);

  const MXMLItem& GetRoot() const noexcept { return root_; }
  // All items in the order of the index.
  const MList<MResource*>& GetResources() const noexcept { return resources_; }

 private:
  bool ReadSmallForm(MStream& stream);
  void AddResources();
  void DecompressAll();
  void ReadFromFile(MResource& resource) const;

  MXMLItem root_;
  MList<MResource*> resources_;
  MMemoryStream* data_ = nullptr;       // of the small form
  MLargeResourceFile* file_ = nullptr;  // of the large form
  MString path_;
};
