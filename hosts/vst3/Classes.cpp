#include "hosts/vst3/Classes.h"

#include <algorithm>
#include <iterator>

#include "hosts/builtin/BuiltInPlugins.h"

namespace vst3 {

namespace {

// By these words hosts sort their menus.
struct Category {
  std::string_view plugin;
  const char* words;
};

constexpr Category kCategories[] = {
    {"Echolan", "Fx|Delay"},
    {"Clampet", "Fx|Dynamics"},
    {"Slotter", "Fx|Filter"},
    {"Widenor", "Fx|Spatial"},
    {"Tonebench", "Fx|EQ"},
    {"Imprinta", "Fx|Filter"},
    {"Bendform", "Fx|Distortion"},
    {"Pulsetta", "Fx|Modulation"},
    {"Roamplex", "Fx|Modulation|Spatial"},
    {"Bellwarp", "Fx|Modulation"},
    {"Quaverly", "Fx|Modulation"},
    {"Squeezel", "Fx|Dynamics"},
    {"Lumascope", "Fx|Analyzer"},
    {"Swirlo", "Fx|Modulation"},
    {"Slidebench", "Fx|EQ"},
    {"Grainloom", "Instrument|Synth"},
    {"Playbox", "Instrument|Sampler"},
    {"Toneloom4NN", "Instrument|Synth"},
    {"Vinylrake", "Instrument|Sampler"},
    {"Layerbox", "Instrument|Sampler"},
};

const char* GetSubcategories(const bridge::PluginType& type) {
  for (const Category& category : kCategories)
    if (category.plugin == type.name) return category.words;
  return type.kind == bridge::PluginKind::kEffect ? "Fx" : "Instrument";
}

// "Sonvelle" and the 64-bit FNV-1a hash of the name: songs know the plug-in by it
// (tests/golden/vst3_ids.tsv).
void MakeId(std::string_view name, v3_tuid id) {
  constexpr std::string_view kMaker = "Sonvelle";
  uint64_t hash = 14695981039346656037u;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
  for (std::size_t i = 0; i < kMaker.size(); ++i) {
    id[i] = static_cast<uint8_t>(kMaker[i]);
    id[kMaker.size() + i] = static_cast<uint8_t>(hash >> (56 - 8 * i));
  }
}

std::vector<Class> MakeClasses() {
  std::vector<Class> classes;
  for (const bridge::PluginType& type : builtin::GetPlugins()) {
    Class& each = classes.emplace_back(Class{&type, {}, GetSubcategories(type)});
    MakeId(type.name, each.id);
  }
  return classes;
}

}  // namespace

const std::vector<Class>& GetClasses() {
  static const std::vector<Class> classes = MakeClasses();
  return classes;
}

const Class* FindClass(const uint8_t* id) {
  for (const Class& each : GetClasses())
    if (v3_tuid_match(each.id, id)) return &each;
  return nullptr;
}

}  // namespace vst3
