#include "core/MXMLItem.h"

#include <functional>

#include "core/MFormat.h"
#include "core/MTranslate.h"

namespace {

// Document order decides between attributes of the same name.
bool StandsBefore(const MAttribute* left, const MAttribute* right) {
  const int32_t order = left->name.Compare(right->name);
  return order != 0 ? order < 0 : std::less<>()(left, right);
}

// An empty object that is never destroyed: what is destroyed at the end would be registered while the library
// is loaded.
template <typename T>
const T& GetEmpty() noexcept {
  alignas(T) static unsigned char place[sizeof(T)];
  static const T* const empty = new (place) T;
  return *empty;
}

}  // namespace

const MString& MXMLItem::NoText() noexcept {
  return GetEmpty<MString>();
}

const MList<MXMLItem*>& MXMLItem::NoChildren() noexcept {
  return GetEmpty<MList<MXMLItem*>>();
}

MXMLItem::~MXMLItem() {
  Clear();
}

MXMLItem* MXMLItem::GetSibling(int32_t index) const noexcept {
  if (!owner_) return nullptr;
  const MList<MXMLItem*>& siblings = owner_->GetChildren();
  return index < 0 || index >= siblings.GetCount() ? nullptr : siblings.begin()[index];
}

void MXMLItem::SetText(const MString& text) {
  if (text_ || !text.IsEmpty()) Made(text_).text = text;
}

void MXMLItem::AppendText(const MString& added) {
  MString& text = Made(text_).text;
  if (text.IsEmpty()) {
    text = added;
    return;
  }
  const int64_t length = int64_t{text.GetLength()} + added.GetLength() + 2;
  if (length > MString::kWhole) MThrowOutOfMemory();
  text.Reserve(static_cast<int32_t>(length));
  text.Append(u'\n');
  text.Append(added);
}

// The index of the attribute, or of the place where it belongs.
int32_t MXMLItem::FindAttribute(const MString& name, bool& isFound) const noexcept {
  const MList<MAttribute>& attributes = GetAttributes();
  const MAttribute* const found =
      std::lower_bound(attributes.begin(), attributes.end(), name,
                       [](const MAttribute& a, const MString& b) { return a.name.Compare(b) < 0; });
  isFound = found != attributes.end() && found->name.Compare(name) == 0;
  return static_cast<int32_t>(found - attributes.begin());
}

void MXMLItem::SetAttribute(const MString& name, const MString& value) {
  bool isFound;
  const int32_t index = FindAttribute(name, isFound);
  if (isFound) {
    attributes_.list[index].value = value;
  } else {
    attributes_.list.Insert(index, {name, value});
    if (attributes_.found >= index) ++attributes_.found;
  }
}

MString MXMLItem::GetAttribute(const MString& name, const MString& fallback) const {
  bool isFound;
  const int32_t index = FindAttribute(name, isFound);
  return isFound ? attributes_.list[index].value : fallback;
}

MString MXMLItem::GetRequiredAttribute(const MString& name) const {
  bool isFound;
  const int32_t index = FindAttribute(name, isFound);
  if (!isFound)
    throw MException(Format(Translate("Could not find required attribute ({0}).")).Arg(name).Text());
  return attributes_.list[index].value;
}

bool MXMLItem::HasAttribute(const MString& name) const noexcept {
  bool isFound;
  const int32_t index = FindAttribute(name, isFound);
  attributes_.found = isFound ? index : -1;
  return isFound;
}

const MString& MXMLItem::CachedAttribute() const {
  if (attributes_.found < 0)
    throw MException(
        "There is no attribute in the cache. Previous call to HasAttribute probably did not succeed.");
  return attributes_.list[attributes_.found].value;
}

bool MXMLItem::RemoveAttribute(const MString& name) {
  bool isFound;
  const int32_t index = FindAttribute(name, isFound);
  if (!isFound) return false;
  attributes_.found = -1;
  attributes_.list.Remove(index);
  return true;
}

// Moves attributes in document order into an item that has none. Of equal names the first name and the last
// value stay.
void MXMLItem::TakeAttributes(MList<MAttribute>& attributes) {
  if (attributes.IsEmpty()) return;
  // Not one by one to their places, which would take a time quadratic in their number.
  const auto isNotBefore = [](const MAttribute& a, const MAttribute& b) {
    return a.name.Compare(b.name) >= 0;
  };
  MList<MAttribute>& list = attributes_.list;
  list.Reserve(attributes.GetCount());
  if (std::adjacent_find(attributes.begin(), attributes.end(), isNotBefore) == attributes.end()) {
    for (MAttribute& attribute : attributes) list.Add(std::move(attribute));
    return;
  }
  MList<MAttribute*> sorted;
  sorted.Reserve(attributes.GetCount());
  for (MAttribute& attribute : attributes) sorted.Add(&attribute);
  std::sort(sorted.begin(), sorted.end(), StandsBefore);
  for (MAttribute* const attribute : sorted) {
    MAttribute* const last = list.IsEmpty() ? nullptr : list.end() - 1;
    if (last && last->name.Compare(attribute->name) == 0)
      last->value = std::move(attribute->value);
    else
      list.Add(std::move(*attribute));
  }
}

// The index of the first child of that name, or -1.
int32_t MXMLItem::FindSubItem(const MString& name) const noexcept {
  const MList<MXMLItem*>& children = GetChildren();
  for (const MXMLItem* const child : children)
    if (child->name_.Compare(name) == 0) return child->index_;
  return -1;
}

bool MXMLItem::HasSubItem(const MString& name) const noexcept {
  const int32_t index = FindSubItem(name);
  if (children_) children_->found = index;
  return index >= 0;
}

MXMLItem& MXMLItem::CachedSubItem() const {
  if (!children_ || children_->found < 0)
    throw MException(
        "There is no subitem in the cache. Previous call to HasSubItem probably did not succeed.");
  return *children_->list[children_->found];
}

MXMLItem& MXMLItem::SubItem(const MString& name) {
  const int32_t found = FindSubItem(name);
  return found >= 0 ? *children_->list[found] : AddSubItem(name);
}

MXMLItem& MXMLItem::AddSubItem(const MString& name) {
  MList<MXMLItem*>& children = Made(children_).list;
  std::unique_ptr<MXMLItem> item(new MXMLItem(name));
  item->owner_ = this;
  item->index_ = children.GetCount();
  item->depth_ = depth_ + 1;
  children.Add(item.get());
  return *item.release();
}

void MXMLItem::RemoveSubItem(MXMLItem& item) {
  if (item.owner_ != this) MThrowIndexOutOfRange();
  MList<MXMLItem*>& children = children_->list;
  children_->found = -1;
  children.Remove(item.index_);
  for (int32_t i = item.index_; i < children.GetCount(); ++i) children[i]->index_ = i;
  delete &item;
}

void MXMLItem::Clear() noexcept {
  DestroyChildren();
  children_.reset();
  attributes_ = {};
  text_.reset();
  name_.Clear();
}

// From the leaves on, along the links instead of by recursion.
void MXMLItem::DestroyChildren() noexcept {
  MXMLItem* item = this;
  for (;;) {
    if (!item->GetChildren().IsEmpty()) {
      item = item->GetChildren().end()[-1];
    } else if (item != this) {
      MXMLItem* const owner = item->owner_;
      owner->children_->list.Remove(item->index_);
      delete item;
      item = owner;
    } else {
      return;
    }
  }
}
