#include "hosts/bridge/PluginLibrary.h"

#include "core/MPath.h"
#include "core/MSystemPath.h"
#include "hosts/bridge/Parameters.h"

namespace bridge {

MWord PluginLibrary::Invoke(const char* name, MServiceArguments& arguments) const {
  return MInvokeService(module_, name, &arguments);
}

std::vector<std::string> PluginLibrary::Register() const {
  if (!module_) throw LibraryError(file_.string() + ": the library has no services");
  if (ToUtf8(FromUtf8(file_.native())) != file_.native())
    throw LibraryError(file_.string() + ": the registry cannot hold this path, which is no UTF-8");
  MServiceArguments arguments(MAsWord(file_.c_str()));
  Invoke("MRegisterAllPlugins", arguments);
  std::vector<std::string> files;
  for (const char* const name : {"MAudioEffects.mps", "MAudioStreams.mps"})
    files.push_back(ToUtf8(JoinPath(GetSystemPath(MSystemPath::kData), MString::Literal(name))));
  return files;
}

}  // namespace bridge
