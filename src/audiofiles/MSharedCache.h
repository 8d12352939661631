#pragma once
#include "core/MList.h"
#include "core/MLock.h"
#include "core/MObject.h"

// Things that several plug-ins read from the same file, each in memory once for as long as somebody uses it.
// The cache owns them. Two paths are the same if MString::Compare says so and they do not lead to two
// different files. One file may be there in variants, which a number tells apart. All operations may be
// called on any thread.
class MSharedCache {
 public:
  // Makes what is in a file; the caller owns it. May raise, which Acquire passes on.
  using Loader = MObject*(const MString& path, double variant);

  // `unknown` is the message for what is not in the cache.
  explicit MSharedCache(const char* unknown = "Invalid sample to release.") noexcept : unknown_(unknown) {}
  MSharedCache(const MSharedCache&) = delete;
  MSharedCache& operator=(const MSharedCache&) = delete;
  ~MSharedCache();

  // The thing of a path and a variant within 1e-50, one more use of it counted; `load` makes it when it is
  // not there. Reading is done without the lock: other threads do not wait for the disk.
  MObject* Acquire(const MString& path, Loader* load, double variant = 0);
  // Counts one more use of something that is in use. Raises the message for what is not in the cache.
  void Share(const MObject* item);
  // Counts one use less; the last one destroys the thing. Raises the same.
  void Release(const MObject* item);

  int32_t GetCount() const;

 private:
  struct Entry {
    M_LIBRARY_MEMORY

    MString path;
    double variant;
    int32_t uses;
    MObject* item;
  };

  // Both exist, and are not the same file.
  static bool AreDifferentFiles(const MString& left, const MString& right);
  Entry* Find(const MString& path, double variant);
  Entry& Find(const MObject* item);

  const char* unknown_;
  mutable MLock lock_;
  MList<Entry*> entries_;
};
