#include "core/MXMLItemIterator.h"

#include "core/MTranslate.h"

MXMLItem* MXMLItemWalk::Next() noexcept {
  const MList<MXMLItem*>& children = item_.GetChildren();
  while (position_ < children.GetCount()) {
    if (++position_ == children.GetCount()) break;
    MXMLItem* const child = children.begin()[position_];
    if (MString::Compare(child->GetName(), 0, filter_, 0, compared_) == 0) return child;
  }
  return nullptr;
}

MXMLItem* MXMLItemWalk::Current() const {
  if (position_ < 0) throw MException(Translate(MString::Literal(message_)));
  const MList<MXMLItem*>& children = item_.GetChildren();
  return position_ < children.GetCount() ? children.begin()[position_] : nullptr;
}

MXMLItemIterator::MXMLItemIterator(const MXMLItem& item, const MString& name) noexcept
    : MXMLItemWalk(item, name, MString::kWhole, "XML item iterator has not been initialized.") {}

MXMLItemPrefixIterator::MXMLItemPrefixIterator(const MXMLItem& item, const MString& prefix) noexcept
    : MXMLItemWalk(item, prefix, prefix.GetLength(), "XML item prefix iterator has not been initialized.") {}
