#include <cmath>

#include "audiofiles/MMultiSampleFile.h"
#include "audiofiles/MSubSampleLibrary.h"
#include "core/MAudioBuffer.h"
#include "hosts/cli/InstrumentRender.h"
#include "hosts/cli/Json.h"
#include "hosts/cli/Listing.h"
#include "resources/MResourceLibrary.h"

namespace cli {

namespace {

Json Number(const MPluginParameter& row, double value) {
  return bridge::IsWhole(row) ? Json(static_cast<int32_t>(value)) : Json(value);
}

float GetPeak(const MAudioBuffer& sample) {
  float peak = 0;
  for (int32_t c = 0; c < sample.GetChannelCount(); ++c)
    for (int32_t i = 0; i < sample.GetLength(); ++i) {
      const float magnitude = std::abs(sample.GetChannel(c)[i]);
      if (magnitude > peak) peak = magnitude;
    }
  return peak;
}

}  // namespace

std::string ListAsJson(const bridge::PluginTable& plugins) {
  Json list = Json::array();
  for (const bridge::PluginType& type : plugins)
    list.push_back({{"name", type.name}, {"kind", KindName(type.kind)}, {"summary", type.summary}});
  return JsonText(list);
}

std::string ParametersAsJson(const bridge::Plugin& plugin) {
  Json list = Json::array();
  for (const MPluginParameter& row : plugin.GetParameters()) {
    if (!bridge::HasValue(row)) continue;
    const bridge::ParameterRange range = bridge::GetRange(row);
    Json json;
    json["key"] = bridge::ToUtf8(row.key);
    json["name"] = bridge::ToUtf8(row.name);
    json["kind"] = KindName(row.kind);
    json["range"] = Json::array({Number(row, range.minimum), Number(row, range.maximum)});
    json["rangeText"] =
        Json::array({bridge::GetText(row, range.minimum), bridge::GetText(row, range.maximum)});
    json["default"] = Number(row, range.defaultValue);
    json["text"] = bridge::GetText(row, range.defaultValue);
    json["help"] = bridge::ToUtf8(row.help);
    if (row.kind == MParameterKind::kEnumeration)
      json["choices"] =
          std::vector<std::string>(row.enumeration.choices, row.enumeration.choices + row.enumeration.count);
    list.push_back(json);
  }
  return JsonText(list);
}

std::string ResourcesAsJson(const MResourceLibrary& library) {
  Json resources = Json::array();
  for (const MResource* const resource : library.GetResources())
    resources.push_back({{"id", bridge::ToUtf8(resource->id)}, {"size", resource->size}});
  return JsonText({{"kind", "resources"}, {"resources", resources}});
}

std::string SampleAsJson(const MAudioBuffer& sample) {
  return JsonText({{"kind", "sample"},
                   {"channels", sample.GetChannelCount()},
                   {"rate", sample.sampleRate},
                   {"length", sample.GetLength()},
                   {"bits", sample.bitDepth},
                   {"peak", GetPeak(sample)}});
}

std::string MultisampleAsJson(const MMultiSampleFile& file) {
  Json tracks = Json::array();
  for (const MMultiSampleFile::Track& track : file.GetTracks())
    tracks.push_back({{"name", bridge::ToUtf8(track.name)}, {"volume", track.volume}, {"pan", track.pan}});
  return JsonText({{"kind", "multisample"},
                   {"rate", file.GetSampleRate()},
                   {"takes", file.GetTakes().size()},
                   {"layers", file.GetLayers().size()},
                   {"length", file.GetLongest()},
                   {"tracks", tracks}});
}

std::string SubsamplesAsJson(const MSubSampleLibrary& library) {
  Json bands = Json::array();
  for (int32_t b = 0; b < MSubSampleLibrary::kBands; ++b) {
    const MSubSampleLibrary::Band& band = library.GetBand(b);
    bands.push_back({{"first", band.firstBin}, {"bins", band.binCount}, {"count", band.GetCount()}});
  }
  return JsonText({{"kind", "subsamples"}, {"rate", library.GetRate()}, {"bands", bands}});
}

std::string NotesAsJson(const std::vector<NoteResult>& notes) {
  Json list = Json::array();
  for (const NoteResult& note : notes)
    list.push_back({{"made", note.isMade}, {"ended", note.ended ? Json(*note.ended) : Json()}});
  return JsonText({{"notes", list}});
}

}  // namespace cli
