#include "plugin/SonvelleDLL.h"

#include "core/MGuard.h"
#include "dsp/MWaveShapes.h"
#include "plugin/MLibrary.h"
#include "plugin/MPluginSystem.h"
#include "plugin/SonvelleConfiguration.h"

namespace {

struct RegistryRow {
  MString name;
  MString interfaceName;
  MString description;
};

constexpr RegistryRow kStreams[] = {
    {"Playbox", "PlayboxAudioStreamPluginInterface", "Tessaron standard sampler plugin."},
    {"Layerbox", "LayerboxAudioStreamPluginInterface", "Tessaron multisampler plugin."},
    {"Grainloom", "GrainloomAudioStreamPluginInterface", "Tessaron subsample synthesizer."},
    {"Vinylrake", "VinylrakeAudioStreamPluginInterface", "Tessaron scratching plugin."},
    {"Toneloom 4NN", "Toneloom4NNAudioStreamPluginInterface",
     "Tessaron standard synthesizer plugin containing 4 oscillators and 2 noise generators."},
};

constexpr RegistryRow kEffects[] = {
    {"Pulsetta", "PulsettaAudioEffectPluginInterface", "Tessaron tremolo effect plugin."},
    {"Echolan", "EcholanAudioEffectPluginInterface", "Tessaron delay effect plugin."},
    {"Tonebench", "TonebenchAudioEffectPluginInterface", "Tessaron equalizer effect plugin."},
    {"Slotter", "SlotterAudioEffectPluginInterface", "Tessaron band pass plugin."},
    {"Roamplex", "RoamplexAudioEffectPluginInterface", "Tessaron autopan effect plugin."},
    {"Swirlo", "SwirloAudioEffectPluginInterface", "Tessaron phaser effect plugin."},
    {"Quaverly", "QuaverlyAudioEffectPluginInterface", "Tessaron vibrato effect plugin."},
    {"Bendform", "BendformAudioEffectPluginInterface", "Tessaron wave shaper effect plugin."},
    {"Widenor", "WidenorAudioEffectPluginInterface", "Tessaron stereo expander effect plugin."},
    {"Bellwarp", "BellwarpAudioEffectPluginInterface", "Tessaron ring modulator effect plugin."},
    {"Squeezel", "SqueezelAudioEffectPluginInterface", "Tessaron compressor effect plugin."},
    {"Imprinta", "ImprintaAudioEffectPluginInterface", "Tessaron convolver effect plugin."},
    {"Clampet", "ClampetAudioEffectPluginInterface", "Tessaron limiter effect plugin."},
    {"Lumascope", "LumascopeAudioEffectPluginInterface", "Tessaron audio analyzer plugin."},
};

void PrepareWaveShapes() {
  MWaveShapes::GetTable(0);
}

}  // namespace

constinit SonvelleParts SonvelleDLL::parts = {&PrepareWaveShapes, &SonvelleConfiguration::Create,
                                              &SonvelleConfiguration::Destroy};

SonvelleDLL::~SonvelleDLL() {
  if (parts.destroyConfiguration) parts.destroyConfiguration();
}

void SonvelleDLL::Initialize() {
  MWindowsModule::Initialize();
  MRunGuarded("MModule::Initialize", [this] {
    title = "Tessaron Pavrek S";
    if (parts.prepareWaveShapes) parts.prepareWaveShapes();
    if (parts.createConfiguration) parts.createConfiguration();
  });
}

void SonvelleDLL::RegisterAllPlugins(const MString& library) {
  if (!MModule::instance) MStartLibrary();
  MAudioEffectPluginSystem effects;
  MAudioStreamPluginSystem streams;
  for (const RegistryRow& row : kStreams)
    streams.Register(row.name, library, row.interfaceName, row.description);
  for (const RegistryRow& row : kEffects)
    effects.Register(row.name, library, row.interfaceName, row.description);
}
