#include "plugin/MPluginSystem.h"

#include "core/MPath.h"
#include "core/MSystemPath.h"
#include "core/MXMLItemIterator.h"

namespace {

MString GetRowName(const MXMLItem& row) {
  return row.GetAttribute("name", "Invalid plugin");
}

void AddSorted(MList<MString>& names, const MString& name) {
  int32_t place = 0;
  while (place < names.GetCount() && names[place].Compare(name) < 0) ++place;
  if (place == names.GetCount() || names[place].Compare(name) != 0) names.Insert(place, name);
}

}  // namespace

MPluginSystem::MPluginSystem(const MString& name) : name_(name) {
  MString fileName = name;
  fileName.Append(".mps");
  file_ = JoinPath(GetSystemPath(MSystemPath::kData), fileName);
  try {
    root_.LoadFile(file_);
  } catch (const MException&) {
    root_.Clear();
    root_.SetName("pluginsystem");
  }
  for (const MXMLItem* row : root_.GetChildren())
    if (row->GetName().Compare("plugin") == 0) AddSorted(names_, GetRowName(*row));
}

MXMLItem& MPluginSystem::FindOrAddRow(const MString& name) {
  for (MXMLItem* row : root_.GetChildren())
    if (row->GetName().Compare("plugin") == 0 && GetRowName(*row).Compare(name) == 0) return *row;
  return root_.AddSubItem("plugin");
}

void MPluginSystem::Register(const MString& name, const MString& library, const MString& interfaceName,
                             const MString& description) {
  MXMLItem& row = FindOrAddRow(name);
  row.SetAttribute("name", name);
  row.SetAttribute("library", library);
  row.SetAttribute("interfacefname", interfaceName);
  row.SetAttribute("description", description);
  root_.SaveFile(file_);
}
