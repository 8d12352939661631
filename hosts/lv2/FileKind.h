#pragma once
// The file that an instrument plays, as its states name it: a folder below a root of the content, and a name.

#include <string>

#include "hosts/bridge/PluginTable.h"
#include "plugin/SonvelleConfiguration.h"

namespace lv2 {

struct FileKind {
  std::string_view plugin;
  const char* property;   // what stands behind "#" in the URI of the writable property
  const char* label;      // of the property
  const char* attribute;  // of the file's name in a state; its folder is in "subpath"
  MString SonvelleConfiguration::*root;
  bool isImported;  // by the command "ImportSample"
};

// Null for a plug-in that plays no file.
const FileKind* FindFileKind(const bridge::PluginType& type) noexcept;

// The absolute path of the file that a state names, UTF-8; empty if it names none.
std::string GetStateFile(const FileKind& kind, const MXMLItem& state);

// Lets a state name another file, by its absolute path. One that lies outside of the root is copied below it,
// to "Imported" and the folder that it lies in, as the command "ImportSample" does. Raises MException, with
// the state as it was.
void SetStateFile(const FileKind& kind, MXMLItem& state, const std::string& path);

// Whether two paths lead to files of the same bytes.
bool IsSameContent(const std::string& first, const std::string& second);

}  // namespace lv2
