#pragma once
#include "core/MXMLItem.h"

// The registry of plug-ins on the disk, by which hosts learn which plug-ins exist in which library: one XML
// file per kind, in the folder MSystemPath::kData. A file that is missing or cannot be read counts as an
// empty registry.
class MPluginSystem : public MObject {
 public:
  explicit MPluginSystem(const MString& name);

  // Adds a row, or refreshes the one whose name is the same without regard to case, and saves the file at
  // once. The file is replaced as a whole. Raises what MXMLItem::SaveFile does, and the old file
  // stays.
  void Register(const MString& name, const MString& library, const MString& interfaceName,
                const MString& description);

  const MString& GetName() const noexcept { return name_; }
  const MString& GetFile() const noexcept { return file_; }
  // Rows as children "plugin" with "name", "library", "interfacefname" and "description".
  const MXMLItem& GetRoot() const noexcept { return root_; }
  // The plug-ins of the file as it was read, sorted, each name once.
  const MList<MString>& GetNames() const noexcept { return names_; }

 private:
  MXMLItem& FindOrAddRow(const MString& name);

  MString name_;
  MString file_;
  MXMLItem root_;
  MList<MString> names_;
};

class MAudioEffectPluginSystem final : public MPluginSystem {
 public:
  MAudioEffectPluginSystem() : MPluginSystem("MAudioEffects") {}
};

class MAudioStreamPluginSystem final : public MPluginSystem {
 public:
  MAudioStreamPluginSystem() : MPluginSystem("MAudioStreams") {}
};
