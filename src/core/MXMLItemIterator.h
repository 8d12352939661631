#pragma once
#include "core/MXMLItem.h"

// A walk over the children of an item whose names match a filter. Children that are added on the way are seen
// as well; when one is removed the walk may pass over another.
class MXMLItemWalk {
 public:
  // The next child that matches, null at the end. The first call gives the first one.
  MXMLItem* Next() noexcept;
  // What the last Next gave. Before the first one it raises "XML item iterator has not been initialized." or
  // "XML item prefix iterator has not been initialized."
  MXMLItem* Current() const;

 protected:
  MXMLItemWalk(const MXMLItem& item, const MString& filter, int32_t compared, const char* message) noexcept
      : item_(item), filter_(filter), compared_(compared), message_(message) {}
  ~MXMLItemWalk() = default;

 private:
  const MXMLItem& item_;
  MString filter_;
  int32_t compared_;  // units of the name that must match
  const char* message_;
  int32_t position_ = -1;
};

// Children of one name.
class MXMLItemIterator final : public MXMLItemWalk {
 public:
  MXMLItemIterator(const MXMLItem& item, const MString& name) noexcept;
};

// Children whose names begin alike; an empty prefix is all children.
class MXMLItemPrefixIterator final : public MXMLItemWalk {
 public:
  MXMLItemPrefixIterator(const MXMLItem& item, const MString& prefix) noexcept;
};
