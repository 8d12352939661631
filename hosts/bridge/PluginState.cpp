#include "hosts/bridge/PluginState.h"

#include <charconv>
#include <limits>

#include "core/MException.h"
#include "core/MMemoryStream.h"
#include "core/MXMLItem.h"

namespace bridge {

namespace {

constexpr std::size_t kLongestNumber = 400;  // of a double without an exponent

MString ExactText(double value) {
  char text[kLongestNumber];
  const std::to_chars_result end =
      std::to_chars(text, text + kLongestNumber, value, std::chars_format::fixed);
  return FromUtf8({text, static_cast<std::size_t>(end.ptr - text)});
}

// The parser takes a file that ends too early as it is.
bool IsWhole(std::string_view text) noexcept {
  text = text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
  if (text.ends_with("</state>")) return true;
  const std::size_t last = text.rfind('<');
  return last != text.npos && text.ends_with("/>") && text.substr(last).starts_with("<state");
}

// Gives an attribute that holds the value with four decimals the whole of it.
void MakeExact(MXMLItem& item, const MString& key, double value) {
  if (!item.HasAttribute(key) || item.CachedAttribute().ToDouble() == value) return;
  item.SetAttribute(key, ExactText(value));
}

}  // namespace

void SaveDawState(Plugin& plugin, const PluginType& type, const DawParameters& parameters, MXMLItem& item) {
  plugin.SaveState(item);
  item.SetAttribute("plugin", FromUtf8(type.name));
  for (const DawParameter& parameter : parameters.GetAll()) {
    const MString key = FromUtf8(parameter.key);
    const double value = LoadValue(*parameter.row);
    if (parameter.control != HostControl::kNone) {
      item.SetAttribute(key, ExactText(value));
    } else if (!IsWhole(*parameter.row)) {
      MakeExact(item, FromUtf8("parameter" + parameter.key), value);
      MakeExact(item, key, value);
    }
  }
}

void LoadDawState(Plugin& plugin, const PluginType& type, DawParameters& parameters, MXMLItem& item) {
  if (item.GetName().Compare("state") != 0) throw MException("This is no state of a plug-in.");
  if (item.HasAttribute("plugin") && item.CachedAttribute().Compare(FromUtf8(type.name)) != 0)
    throw MException("The state is one of another plug-in.");
  plugin.LoadState(item);
  for (const DawParameter& parameter : parameters.GetAll()) {
    if (parameter.control == HostControl::kNone || !item.HasAttribute(FromUtf8(parameter.key))) continue;
    parameters.StoreHostValue(parameter, item.CachedAttribute().ToDouble());
  }
}

std::string GetStateText(const MXMLItem& item) {
  MMemoryStream stream;
  item.Save(stream);
  return std::string(reinterpret_cast<const char*>(stream.GetData()),
                     static_cast<std::size_t>(stream.GetSize()));
}

void ReadStateText(std::string_view text, MXMLItem& item) {
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int32_t>::max()))
    throw MException("The state is too large.");
  if (!IsWhole(text)) throw MException("This is no state of a plug-in, or it is cut off.");
  MMemoryStream stream(text.data(), static_cast<int32_t>(text.size()));
  item.Load(stream);
}

}  // namespace bridge
