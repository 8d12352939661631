#include "hosts/bridge/FirstSettings.h"

#include "core/MFileTools.h"
#include "core/MPath.h"
#include "core/MSystemPath.h"
#include "core/MXMLItem.h"

namespace bridge {

void WriteFirstSettings(const MString& contentFolder) {
  const MString file = JoinPath(GetSystemPath(MSystemPath::kData), "SonvelleConfiguration.cfg");
  if (FileExists(file)) return;
  MXMLItem settings("SonvelleCfg");
  settings.SetAttribute("GlobalPath", contentFolder);
  settings.SaveFile(file);
}

}  // namespace bridge
