#include "hosts/clap/Factory.h"

#include <algorithm>
#include <deque>
#include <memory>

#include "hosts/builtin/BuiltInPlugins.h"
#include "hosts/clap/Call.h"

namespace clap {

namespace {

constexpr const char* kVendor = "Sonvelle";

// What a plug-in is, for the menus of hosts. A word that CLAP does not have stands behind our name.
struct FeatureRow {
  std::string_view plugin;
  const char* words[2];
};

constexpr FeatureRow kFeatures[] = {
    {"Echolan", {CLAP_PLUGIN_FEATURE_DELAY}},
    {"Clampet", {CLAP_PLUGIN_FEATURE_LIMITER}},
    {"Slotter", {CLAP_PLUGIN_FEATURE_FILTER}},
    {"Widenor", {CLAP_PLUGIN_FEATURE_UTILITY, "sonvelle:stereo-expander"}},
    {"Tonebench", {CLAP_PLUGIN_FEATURE_EQUALIZER}},
    {"Imprinta", {CLAP_PLUGIN_FEATURE_REVERB, "sonvelle:convolver"}},
    {"Bendform", {CLAP_PLUGIN_FEATURE_DISTORTION}},
    {"Pulsetta", {CLAP_PLUGIN_FEATURE_TREMOLO}},
    {"Roamplex", {CLAP_PLUGIN_FEATURE_UTILITY, "sonvelle:autopan"}},
    {"Bellwarp", {CLAP_PLUGIN_FEATURE_DISTORTION, "sonvelle:ring-modulator"}},
    {"Quaverly", {CLAP_PLUGIN_FEATURE_CHORUS, "sonvelle:vibrato"}},
    {"Squeezel", {CLAP_PLUGIN_FEATURE_COMPRESSOR}},
    {"Lumascope", {CLAP_PLUGIN_FEATURE_ANALYZER}},
    {"Swirlo", {CLAP_PLUGIN_FEATURE_PHASER}},
    {"Slidebench", {CLAP_PLUGIN_FEATURE_EQUALIZER}},
    {"Grainloom", {CLAP_PLUGIN_FEATURE_SYNTHESIZER}},
    {"Playbox", {CLAP_PLUGIN_FEATURE_SAMPLER}},
    {"Toneloom4NN", {CLAP_PLUGIN_FEATURE_SYNTHESIZER}},
    {"Vinylrake", {CLAP_PLUGIN_FEATURE_SAMPLER}},
    {"Layerbox", {CLAP_PLUGIN_FEATURE_SAMPLER, CLAP_PLUGIN_FEATURE_DRUM}},
};

// A plug-in's descriptor and what it points to.
class Description {
 public:
  explicit Description(const bridge::PluginType& type)
      : type_(type), id_("com.sonvelle."), name_(type.name), summary_(type.summary) {
    for (const char c : name_) id_ += static_cast<char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
    features_.push_back(type.kind == bridge::PluginKind::kInstrument ? CLAP_PLUGIN_FEATURE_INSTRUMENT
                                                                     : CLAP_PLUGIN_FEATURE_AUDIO_EFFECT);
    for (const FeatureRow& row : kFeatures)
      for (const char* const word : row.words)
        if (row.plugin == type.name && word) features_.push_back(word);
    features_.insert(features_.end(), {CLAP_PLUGIN_FEATURE_STEREO, CLAP_PLUGIN_FEATURE_MONO, nullptr});
    descriptor_ = {CLAP_VERSION, id_.c_str(), name_.c_str(),    kVendor,          "",
                   "",           "",          SONVELLE_VERSION, summary_.c_str(), features_.data()};
  }
  Description(const Description&) = delete;
  Description& operator=(const Description&) = delete;

  const bridge::PluginType& GetType() const noexcept { return type_; }
  const clap_plugin_descriptor_t& Get() const noexcept { return descriptor_; }

 private:
  const bridge::PluginType& type_;
  std::string id_, name_, summary_;
  std::vector<const char*> features_;
  clap_plugin_descriptor_t descriptor_ = {};
};

const std::deque<Description>& GetDescriptions() {
  static const std::deque<Description> descriptions = [] {
    std::deque<Description> made;
    for (const bridge::PluginType& type : builtin::GetPlugins()) made.emplace_back(type);
    return made;
  }();
  return descriptions;
}

uint32_t CLAP_ABI GetCount(const clap_plugin_factory_t*) try {
  return static_cast<uint32_t>(GetDescriptions().size());
} catch (...) {
  return 0;
}

const clap_plugin_descriptor_t* CLAP_ABI GetDescriptor(const clap_plugin_factory_t*, uint32_t index) try {
  const std::deque<Description>& all = GetDescriptions();
  return index < all.size() ? &all[index].Get() : nullptr;
} catch (...) {
  return nullptr;
}

const clap_plugin_t* CLAP_ABI Create(const clap_plugin_factory_t*, const clap_host_t* host, const char* id) {
  if (!host || !id) return nullptr;
  try {
    for (const Description& description : GetDescriptions())
      if (description.Get().id == std::string_view(id))
        return &std::make_unique<Instance>(description.GetType(), description.Get(), host)
                    .release()
                    ->GetHandle();
  } catch (const MException& raised) {
    Host(host).Log(bridge::ToUtf8(raised.message).c_str());
  } catch (...) {
    Host(host).Log("The plug-in could not be made.");
  }
  return nullptr;
}

}  // namespace

const clap_plugin_factory_t kFactory = {GetCount, GetDescriptor, Create};

}  // namespace clap
