#include <algorithm>
#include <limits>

#include "core/MXMLItem.h"
#include "plugin/MPlugin.h"

namespace {

constexpr int32_t kDecimals = 4;

bool IsStored(const MPluginParameter& row) noexcept {
  if (row.kind == MParameterKind::kPanel) return row.panel.open != nullptr;
  return row.kind >= MParameterKind::kReal && row.kind <= MParameterKind::kSwitch;
}

// The attribute of a row.
MString AttributeName(const MPluginParameter& row) {
  MString name("parameter");
  name.Append(row.key);
  return name;
}

MString ValueText(const MPluginParameter& row) {
  switch (row.kind) {
    case MParameterKind::kReal:
      return MString::FromDouble(MLoadShared(row.real.value), kDecimals);
    case MParameterKind::kInteger:
      return MString::FromInteger(MLoadShared(row.integer.value));
    case MParameterKind::kEnumeration:
      return MString::FromInteger(MLoadShared(row.enumeration.value));
    case MParameterKind::kSwitch:
      return MString::FromInteger(MLoadShared(row.onOff.value));
    default:
      return MString::FromInteger(MLoadShared(*row.panel.open));
  }
}

// What an absent attribute counts as. A panel has no default: it is closed.
MString DefaultText(const MPluginParameter& row) {
  switch (row.kind) {
    case MParameterKind::kReal:
      return MString::FromDouble(row.real.defaultValue, kDecimals);
    case MParameterKind::kInteger:
      return MString::FromInteger(row.integer.defaultValue);
    case MParameterKind::kEnumeration:
      return MString::FromInteger(row.enumeration.defaultValue);
    case MParameterKind::kSwitch:
      return MString::FromInteger(row.onOff.defaultValue);
    default:
      return MString("0");
  }
}

// The number of a text within what the type holds.
template <typename T>
T WholeNumber(const MString& text) noexcept {
  return static_cast<T>(
      std::clamp<int64_t>(text.ToInteger(), std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}

void SetValue(MPluginParameter& row, const MString& text) {
  switch (row.kind) {
    case MParameterKind::kReal:
      return MStoreShared(row.real.value, text.ToDouble());
    case MParameterKind::kInteger:
      return MStoreShared(row.integer.value, WholeNumber<int32_t>(text));
    case MParameterKind::kEnumeration:
      return MStoreShared(row.enumeration.value, WholeNumber<int32_t>(text));
    case MParameterKind::kSwitch:
      return MStoreShared(row.onOff.value, WholeNumber<int32_t>(text));
    default:
      return MStoreShared(*row.panel.open, WholeNumber<int8_t>(text));
  }
}

}  // namespace

bool MPlugin::SaveState(MXMLItem& item) {
  for (const MPluginParameter& row : GetParameters())
    if (IsStored(row)) item.SetAttribute(AttributeName(row), ValueText(row));
  return false;
}

bool MPlugin::LoadState(MXMLItem& item) {
  for (MPluginParameter& row : GetParameters())
    if (IsStored(row)) SetValue(row, item.GetAttribute(AttributeName(row), DefaultText(row)));
  Update();
  return false;
}
