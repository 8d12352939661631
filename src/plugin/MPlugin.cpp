#include "plugin/MPlugin.h"

#include <algorithm>
#include <cmath>

MWord MPlugin::GetWord(const MServiceArguments* arguments, int32_t index) noexcept {
  return arguments ? arguments->slot[index].value : 0;
}

int32_t MPlugin::GetNumber(const MServiceArguments* arguments, int32_t index) noexcept {
  return static_cast<int32_t>(std::clamp<MWord>(GetWord(arguments, index), INT32_MIN, INT32_MAX));
}

bool MPlugin::AreAllThere(float** buffers, int32_t channels) noexcept {
  if (channels == 0) return true;
  return buffers && std::find(buffers, buffers + channels, nullptr) == buffers + channels;
}

MWord MPlugin::Service(int32_t service, MServiceArguments* arguments) {
  // Only the services that have arguments look at the record.
  const auto word = [arguments](int32_t index) { return GetWord(arguments, index); };
  switch (service) {
    case MService::kAttach:
      return Attach(MAsAddress<void>(word(0)), MAsAddress<MHostCallback>(word(1)));
    case MService::kDestroy:
      delete this;
      return 0;
    case MService::kPublicBlock:
      return MAsWord(&block_);
    case MService::kDetach:
      Detach();
      return 0;
    case MService::kParameterChanged:
      if (const MWord row = word(0); row >= 0 && row < block_.parameterCount)
        ParameterChanged(static_cast<int32_t>(row));
      Update();
      return 0;
    case MService::kCreateEditor:
      CreateEditor(MAsAddress<MControl>(word(0)));
      return 0;
    case MService::kEditorClosed:
      EditorClosed(word(0));
      return 0;
    case MService::kSaveState:
      return word(0) != 0 && SaveState(*MAsAddress<MXMLItem>(word(0)));
    case MService::kLoadState:
      return word(0) != 0 && LoadState(*MAsAddress<MXMLItem>(word(0)));
    case MService::kStateLoaded:
      StateLoaded();
      return 0;
    case MService::kQuery:
      return Query(word(0));
    case MService::kCommand:
      return word(0) != 0 ? Command(MAsAddress<const char>(word(0)), word(1)) : -1;
    default:
      return -1;
  }
}

MWord MPlugin::Attach(void* hostContext, MHostCallback* hostCallback) {
  hostContext_ = hostContext;
  hostCallback_ = hostCallback;
  return MAsWord(this);
}

void MPlugin::EditorClosed(MWord window) {
  const MLocker locker(lock_);
  const std::span<MPluginEditorRow> rows = {block_.editors, static_cast<std::size_t>(block_.editorCount)};
  const auto named = std::find_if(rows.begin(), rows.end(), [window](const MPluginEditorRow& row) {
    return window != 0 && MLoadShared(*row.editor) == window;
  });
  for (auto row = rows.begin(); row != rows.end(); ++row)
    if (named == rows.end() || row == named) MStoreShared(*row->editor, MWord{0});
}

MWord MPlugin::NotifyHost(int32_t code) {
  if (!hostCallback_) return 0;
  MServiceArguments arguments;
  return hostCallback_(hostContext_, code, &arguments);
}

void AddRealParameter(MPluginParameter& row, const MString& name, const MString& key, const MString& help,
                      double minimum, double maximum, double defaultValue, const MString& unit,
                      MParameterFormatter* formatter) {
  row.kind = MParameterKind::kReal;
  row.name = name;
  row.key = key;
  row.help = help;
  row.unit = unit;
  row.formatter = formatter;
  row.real = {minimum, maximum, defaultValue, defaultValue};
}

void AddSwitchParameter(MPluginParameter& row, const MString& name, const MString& key, const MString& help,
                        bool defaultValue) {
  row.kind = MParameterKind::kSwitch;
  row.name = name;
  row.key = key;
  row.help = help;
  row.onOff = {defaultValue, defaultValue};
}

void AddPanel(MPluginParameter& row, const MString& name) {
  row.kind = MParameterKind::kPanel;
  row.name = name;
  row.panel = {0, nullptr};
}

double MLimitedValue(const MPluginParameter& row, double low, double high) noexcept {
  const double read = MLoadShared(row.real.value);
  const double value = std::isfinite(read) ? read : row.real.defaultValue;
  return value >= low ? std::min(value, high) : low;  // low also for a default that is no number
}
