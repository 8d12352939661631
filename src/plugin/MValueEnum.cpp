#include "plugin/MValueEnum.h"

#include <algorithm>
#include <cmath>

int32_t MValueChoice::GetLast() const noexcept {
  return std::max(static_cast<int32_t>(names_.size()) - 1, 0);
}

int32_t MValueChoice::Limit(int64_t number) const noexcept {
  return static_cast<int32_t>(std::clamp<int64_t>(number, 0, GetLast()));
}

MString MValueChoice::NameOf(int32_t number) const {
  const bool isListed = number >= 0 && static_cast<std::size_t>(number) < names_.size();
  const MString name = MString::Literal(isListed ? names_[static_cast<std::size_t>(number)] : "");
  return name.IsEmpty() ? MString::FromInteger(number) : name;
}

int32_t MValueChoice::Find(const MString& name) const {
  for (int32_t i = 0; i <= GetLast(); ++i)
    if (NameOf(i).Compare(name) == 0) return i;
  return 0;
}

void MValueChoice::Store(int32_t number) noexcept {
  StoreNumber(number);
  changed_ = true;
}

bool MValueChoice::Write(int32_t number) {
  const int32_t before = LoadNumber();
  Store(number);
  Validate();
  return LoadNumber() != before;
}

void MValueChoice::FromText(const MString& text) {
  Store(Find(text));
}

bool MValueChoice::Reset() {
  return Write(default_);
}

bool MValueChoice::Save(MXMLItem& item) const {
  item.SetAttribute(GetKey(), NameOf(LoadNumber()));
  return true;
}

void MValueChoice::Load(const MXMLItem& item) {
  if (item.HasAttribute(GetKey()))
    Write(Find(item.CachedAttribute()));
  else
    Reset();
}

void MValueChoice::LoadFromXml(const MXMLItem& item) {
  const bool hasDefault = item.HasAttribute("default");
  if (hasDefault) {
    default_ = Find(item.CachedAttribute());
    Store(default_);
  }
  if (item.HasAttribute("value")) {
    Store(Find(item.CachedAttribute()));
    if (!hasDefault) default_ = LoadNumber();
  }
  Validate();
}

void MValueChoice::ShowAny(MString& text, int32_t number) const {
  const MValueFunctions& functions = GetFunctions();
  if (functions.display)
    functions.display(functions.context, text, number);
  else
    text = NameOf(number);
}

void MValueChoice::GetText(MString& text) const {
  ShowAny(text, LoadNumber());
}

void MValueChoice::FormatValue(MString& text) const {
  text = NameOf(LoadNumber());
}

MString MValueChoice::FormatAt(double position) const {
  MString text;
  ShowAny(text, std::isfinite(position) ? At(position) : LoadNumber());
  return text;
}

bool MValueChoice::SetText(const MString& text) {
  const MValueFunctions& functions = GetFunctions();
  if (!functions.parse) return ParseValue(text);
  double number = 0;
  if (!functions.parse(functions.context, text, number) || !std::isfinite(number)) return false;
  return Write(static_cast<int32_t>(std::lround(std::clamp<double>(number, 0, GetLast()))));
}

bool MValueChoice::ParseValue(const MString& text) {
  return Write(Find(text));
}

void MValueChoice::Validate() {
  const int32_t number = LoadNumber();
  const int32_t limited = Limit(number);
  if (limited != number) Store(limited);
}

bool MValueChoice::StepBy(int32_t count, int32_t) {
  return StepSmall(count);
}

bool MValueChoice::StepSmall(int32_t count) {
  return Write(Limit(int64_t{LoadNumber()} + count));
}

double MValueChoice::GetPosition() const {
  return GetLast() > 0 ? static_cast<double>(Limit(LoadNumber())) / GetLast() : 0;
}

int32_t MValueChoice::At(double position) const noexcept {
  return static_cast<int32_t>(std::lround(std::clamp(position, 0.0, 1.0) * GetLast()));
}

bool MValueChoice::SetPosition(double position) {
  return std::isfinite(position) && Write(At(position));
}

int32_t MValueChoice::GetIndexCount() const {
  return static_cast<int32_t>(names_.size());
}

void MValueChoice::GetIndexText(ShortText& text, int32_t index) const {
  Shorten(text, NameOf(index));
}

bool MValueChoice::SetIndex(int32_t index) {
  const int32_t before = LoadNumber();
  Store(index);
  return index != before;
}

void MValueChoice::GetRawText(MString& text) const {
  text = NameOf(LoadNumber());
}
