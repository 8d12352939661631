#include "core/MXMLParser.h"

#include "core/MXMLItem.h"

bool MXMLParser::OnElement(const MString& name, MList<MAttribute>& attributes, bool closing) {
  if (closing) {
    if (!current_ || current_->GetName().Compare(name) != 0) Fail("Invalid closing element name.");
    if (current_ == &root_) return true;
    current_ = current_->GetOwner();
    return false;
  }
  if (current_) {
    current_ = &current_->AddSubItem(name);
  } else {
    current_ = &root_;
    isOutside_ = false;
    root_.SetName(name);
  }
  current_->TakeAttributes(attributes);
  return false;
}

bool MXMLParser::OnText(const MString& text) {
  int32_t begin = 0, end = text.GetLength();
  while (begin < end && MXMLScanner::IsBlank(text.At(begin))) ++begin;
  while (begin < end && MXMLScanner::IsBlank(text.At(end - 1))) --end;
  if (begin == end) return false;
  if (!current_) Fail(kTextOutside);
  current_->AppendText(text.Substring(begin, end - begin));
  return false;
}
