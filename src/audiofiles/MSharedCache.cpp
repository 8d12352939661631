#include "audiofiles/MSharedCache.h"

#include <cmath>
#include <memory>

#include "core/MTranslate.h"

MSharedCache::~MSharedCache() {
  for (Entry* entry : entries_) {
    delete entry->item;
    delete entry;
  }
}

MSharedCache::Entry* MSharedCache::Find(const MString& path, double variant) {
  Entry* alike = nullptr;
  for (Entry* entry : entries_) {
    if (std::abs(entry->variant - variant) >= 1e-50) continue;
    if (entry->path == path) return entry;
    if (!alike && entry->path.Compare(path) == 0 && !AreDifferentFiles(entry->path, path)) alike = entry;
  }
  return alike;
}

MSharedCache::Entry& MSharedCache::Find(const MObject* item) {
  for (Entry* entry : entries_)
    if (entry->item == item) return *entry;
  throw MException(Translate(MString::Literal(unknown_)));
}

MObject* MSharedCache::Acquire(const MString& path, Loader* load, double variant) {
  {
    const MLocker locked(lock_);
    if (Entry* const entry = Find(path, variant)) {
      ++entry->uses;
      return entry->item;
    }
  }
  std::unique_ptr<MObject> loaded(load(path, variant));
  const MLocker locked(lock_);
  if (Entry* const entry = Find(path, variant)) {  // another thread was faster
    ++entry->uses;
    return entry->item;
  }
  std::unique_ptr<Entry> entry(new Entry{path, variant, 1, loaded.get()});
  entries_.Add(entry.get());
  entry.release();
  return loaded.release();
}

void MSharedCache::Share(const MObject* item) {
  const MLocker locked(lock_);
  ++Find(item).uses;
}

void MSharedCache::Release(const MObject* item) {
  std::unique_ptr<Entry> unused;
  std::unique_ptr<MObject> dropped;  // is destroyed without the lock
  const MLocker locked(lock_);
  Entry& entry = Find(item);
  if (--entry.uses > 0) return;
  entries_.RemoveValue(&entry);
  unused.reset(&entry);
  dropped.reset(entry.item);
}

int32_t MSharedCache::GetCount() const {
  const MLocker locked(lock_);
  return entries_.GetCount();
}
