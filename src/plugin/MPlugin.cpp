#include "plugin/MPlugin.h"

#include <algorithm>
#include <cmath>

MWord MPlugin::Service(int32_t service, MServiceArguments* arguments) {
  const MWord a = arguments ? arguments->slot[0].value : 0;
  const MWord b = arguments ? arguments->slot[1].value : 0;
  switch (service) {
    case MService::kAttach:
      return Attach(MAsAddress<void>(a), MAsAddress<MHostCallback>(b));
    case MService::kDestroy:
      delete this;
      return 0;
    case MService::kPublicBlock:
      return MAsWord(&block_);
    case MService::kDetach:
      Detach();
      return 0;
    case MService::kParameterChanged:
      if (a >= 0 && a < block_.parameterCount) ParameterChanged(static_cast<int32_t>(a));
      Update();
      return 0;
    case MService::kCreateEditor:
      CreateEditor(MAsAddress<MControl>(a));
      return 0;
    case MService::kEditorClosed:
      EditorClosed(a);
      return 0;
    case MService::kSaveState:
      return a != 0 && SaveState(*MAsAddress<MXMLItem>(a));
    case MService::kLoadState:
      return a != 0 && LoadState(*MAsAddress<MXMLItem>(a));
    case MService::kStateLoaded:
      StateLoaded();
      return 0;
    case MService::kQuery:
      return Query(a);
    case MService::kCommand:
      return a != 0 ? Command(MAsAddress<const char>(a), b) : -1;
    default:
      return -1;
  }
}

MWord MPlugin::Attach(void* hostContext, MHostCallback* hostCallback) {
  hostContext_ = hostContext;
  hostCallback_ = hostCallback;
  return MAsWord(this);
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

double MLimitedValue(const MPluginParameter& row, double low, double high) noexcept {
  const double value = MLoadShared(row.real.value);
  return std::clamp(std::isfinite(value) ? value : row.real.defaultValue, low, high);
}
