#include "plugin/MModulationPlugin.h"

#include "plugin/MLimitedRows.h"
#include "plugin/MParameterFormatters.h"

void MSaveWave(const MSignalGenerator& wave, MXMLItem& state, const MString& name) {
  if (state.HasSubItem(name)) state.RemoveSubItem(state.CachedSubItem());
  wave.Save(state.AddSubItem(name));
}

void MLoadWave(MSignalGenerator& wave, const MXMLItem& state, const MString& name) {
  const MXMLItem none;
  wave.Load(state.HasSubItem(name) ? state.CachedSubItem() : none);
}

void MShapeWave(MSignalGenerator& wave, double shape) noexcept {
  if (shape == wave.GetShape()) return;
  wave.SetShape(shape);
  wave.Rebuild();
}

MModulationPlugin::MModulationPlugin() {
  editors_[0].name = "Shape";
  editors_[0].editor = &shapeEditor_;
  SetEditors(editors_);
}

void MModulationPlugin::AddRateParameter(MPluginParameter& row, double minimum, double maximum,
                                         double defaultValue) {
  AddRealParameter(row, "Rate", "rate",
                   "<name>Rate</name> defines the speed of the modulation: how often the shape repeats in a "
                   "second.",
                   std::log10(minimum), std::log10(maximum), std::log10(defaultValue), MString(),
                   MShowFrequencyLog10);
  rate_ = &row;
}

void MModulationPlugin::AddShapeParameter(MPluginParameter& row) {
  AddRealParameter(row, "Shape", "Shape",
                   "<name>Shape</name> defines the shape of the modulation. Values between two shapes morph "
                   "one into the other.",
                   0.0, MWaveShapes::kCount - 1, MWaveShapes::kSine);
  shape_ = &row;
}

void MModulationPlugin::Update() {
  const MLocker locker(lock_);
  if (sampleRate_ < 1) return;
  MStoreShared(step_, MLimitedFrequency(*rate_) / sampleRate_);
  MShapeWave(wave_, MLimitedValue(*shape_, 0, MWaveShapes::kCount - 1));
}

bool MModulationPlugin::SaveState(MXMLItem& item) {
  const MLocker locker(lock_);
  MSaveWave(wave_, item, "shape");
  return MAudioEffectPlugin::SaveState(item);
}

bool MModulationPlugin::LoadState(MXMLItem& item) {
  const MLocker locker(lock_);
  MLoadWave(wave_, item, "shape");
  if (!item.HasAttribute("parameterShape") && item.HasSubItem("shape")) {
    const MXMLItem& wave = item.CachedSubItem();
    if (wave.HasAttribute("value")) item.SetAttribute("parameterShape", wave.CachedAttribute());
  }
  return MAudioEffectPlugin::LoadState(item);
}
