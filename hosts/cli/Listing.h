#pragma once
// Plug-ins and their parameters as text for people and as JSON for scripts.

#include <string>
#include <vector>

#include "hosts/bridge/Plugin.h"
#include "hosts/bridge/PluginTable.h"

class MAudioBuffer;
class MMultiSampleFile;
class MResourceLibrary;
class MSubSampleLibrary;

namespace cli {

struct NoteResult;

std::string ListAsText(const bridge::PluginTable& plugins);
std::string ListAsJson(const bridge::PluginTable& plugins);

// Rows without a value, which only group others in an editor, are left out.
std::string ParametersAsText(const bridge::Plugin& plugin);
std::string ParametersAsJson(const bridge::Plugin& plugin);

// The items in the order of the index, with the sizes that it states.
std::string ResourcesAsJson(const MResourceLibrary& library);

// "peak" is the greatest magnitude of all samples, those that are no number left out; null for infinity.
std::string SampleAsJson(const MAudioBuffer& sample);

// "length" is that of the longest take; null stands for a volume or pan that is no number.
std::string MultisampleAsJson(const MMultiSampleFile& file);

// The bands with their place in the spectrum and how many sounds they have.
std::string SubsamplesAsJson(const MSubSampleLibrary& library);

// What became of notes: made, and ended, null where the sound did not end by itself.
std::string NotesAsJson(const std::vector<NoteResult>& notes);

// "effect" or "instrument"; "real", "integer", "enumeration" or "switch".
const char* KindName(bridge::PluginKind kind) noexcept;
const char* KindName(MParameterKind kind) noexcept;

}  // namespace cli
