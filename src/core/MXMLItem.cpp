#include "core/MXMLItem.h"

#include <functional>
#include <memory>

#include "core/MFormat.h"
#include "core/MTranslate.h"

namespace {

// Document order decides between attributes of the same name.
bool StandsBefore(const MAttribute* left, const MAttribute* right) {
  const int32_t order = left->name.Compare(right->name);
  return order != 0 ? order < 0 : std::less<>()(left, right);
}

}  // namespace

MXMLItem::~MXMLItem() {
  Clear();
}

void MXMLItem::AppendText(const MString& text) {
  if (text_.IsEmpty()) {
    text_ = text;
    return;
  }
  const int64_t length = int64_t{text_.GetLength()} + text.GetLength() + 2;
  if (length > MString::kWhole) MThrowOutOfMemory();
  text_.Reserve(static_cast<int32_t>(length));
  text_.Append(u'\n');
  text_.Append(text);
}

// The index of the attribute, or of the place where it belongs.
int32_t MXMLItem::FindAttribute(const MString& name, bool& isFound) const noexcept {
  const MAttribute* const found =
      std::lower_bound(attributes_.begin(), attributes_.end(), name,
                       [](const MAttribute& a, const MString& b) { return a.name.Compare(b) < 0; });
  isFound = found != attributes_.end() && found->name.Compare(name) == 0;
  return static_cast<int32_t>(found - attributes_.begin());
}

void MXMLItem::SetAttribute(const MString& name, const MString& value) {
  bool isFound;
  const int32_t index = FindAttribute(name, isFound);
  if (isFound) {
    attributes_[index].value = value;
  } else {
    attributes_.Insert(index, {name, value});
    if (attributeCache_ >= index) ++attributeCache_;
  }
}

MString MXMLItem::GetAttribute(const MString& name, const MString& fallback) const {
  bool isFound;
  const int32_t index = FindAttribute(name, isFound);
  return isFound ? attributes_[index].value : fallback;
}

MString MXMLItem::GetRequiredAttribute(const MString& name) const {
  bool isFound;
  const int32_t index = FindAttribute(name, isFound);
  if (!isFound)
    throw MException(Format(Translate("Could not find required attribute ({0}).")).Arg(name).Text());
  return attributes_[index].value;
}

bool MXMLItem::HasAttribute(const MString& name) const noexcept {
  bool isFound;
  const int32_t index = FindAttribute(name, isFound);
  attributeCache_ = isFound ? index : -1;
  return isFound;
}

const MString& MXMLItem::CachedAttribute() const {
  if (attributeCache_ < 0)
    throw MException(
        "There is no attribute in the cache. Previous call to HasAttribute probably did not succeed.");
  return attributes_[attributeCache_].value;
}

bool MXMLItem::RemoveAttribute(const MString& name) {
  bool isFound;
  const int32_t index = FindAttribute(name, isFound);
  if (!isFound) return false;
  attributeCache_ = -1;
  attributes_.Remove(index);
  return true;
}

// Moves attributes in document order into an item that has none. Of equal names the first name and the last
// value stay.
void MXMLItem::TakeAttributes(MList<MAttribute>& attributes) {
  const auto isNotBefore = [](const MAttribute& a, const MAttribute& b) {
    return a.name.Compare(b.name) >= 0;
  };
  if (std::adjacent_find(attributes.begin(), attributes.end(), isNotBefore) == attributes.end()) {
    attributes_.Swap(attributes);
    return;
  }
  // Not one by one to their places, which would take a time quadratic in their number.
  MList<MAttribute*> sorted;
  for (MAttribute& attribute : attributes) sorted.Add(&attribute);
  std::sort(sorted.begin(), sorted.end(), StandsBefore);
  for (MAttribute* const attribute : sorted) {
    MAttribute* const last = attributes_.IsEmpty() ? nullptr : attributes_.end() - 1;
    if (last && last->name.Compare(attribute->name) == 0)
      last->value = std::move(attribute->value);
    else
      attributes_.Add(std::move(*attribute));
  }
}

MXMLItem* MXMLItem::FindSubItem(const MString& name) const noexcept {
  const auto* const found = std::find_if(children_.begin(), children_.end(), [&name](const MXMLItem* item) {
    return item->name_.Compare(name) == 0;
  });
  return found == children_.end() ? nullptr : *found;
}

bool MXMLItem::HasSubItem(const MString& name) const noexcept {
  itemCache_ = FindSubItem(name);
  return itemCache_ != nullptr;
}

MXMLItem& MXMLItem::CachedSubItem() const {
  if (!itemCache_)
    throw MException(
        "There is no subitem in the cache. Previous call to HasSubItem probably did not succeed.");
  return *itemCache_;
}

MXMLItem& MXMLItem::SubItem(const MString& name) {
  MXMLItem* const found = FindSubItem(name);
  return found ? *found : AddSubItem(name);
}

MXMLItem& MXMLItem::AddSubItem(const MString& name) {
  std::unique_ptr<MXMLItem> item(new MXMLItem(name));
  children_.Add(item.get());
  item->owner_ = this;
  item->depth_ = depth_ + 1;
  if (children_.GetCount() > 1) {
    item->previous_ = children_.end()[-2];
    item->previous_->next_ = item.get();
  }
  return *item.release();
}

void MXMLItem::RemoveSubItem(MXMLItem& item) {
  const int32_t index = children_.Find(&item);
  if (index < 0) MThrowIndexOutOfRange();
  itemCache_ = nullptr;
  if (item.previous_) item.previous_->next_ = item.next_;
  if (item.next_) item.next_->previous_ = item.previous_;
  children_.Remove(index);
  delete &item;
}

void MXMLItem::Clear() noexcept {
  attributeCache_ = -1;
  itemCache_ = nullptr;
  attributes_ = MList<MAttribute>();
  DestroyChildren();
  children_ = MList<MXMLItem*>();
  name_.Clear();
  text_.Clear();
}

// From the leaves on, along the links instead of by recursion.
void MXMLItem::DestroyChildren() noexcept {
  MXMLItem* item = this;
  for (;;) {
    if (!item->children_.IsEmpty()) {
      item = item->children_.end()[-1];
    } else if (item != this) {
      MXMLItem* const owner = item->owner_;
      owner->children_.Remove(owner->children_.GetCount() - 1);
      delete item;
      item = owner;
    } else {
      return;
    }
  }
}
