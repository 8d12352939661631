// What an instance keeps: states, and the file that an instrument plays.

#include <cstdlib>
#include <filesystem>

#include "core/MException.h"
#include "core/MPath.h"
#include "core/MXMLItem.h"
#include "hosts/bridge/NoClient.h"
#include "hosts/bridge/PluginState.h"
#include "hosts/lv2/Lv2Plugin.h"

namespace lv2 {

namespace {

bool IsFile(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error);
}

// A text that the host has made, which is given back.
std::string TakePath(char* path, const LV2_Feature* const* features) {
  if (!path) return {};
  const std::string text = path;
  const auto* const freePath = FindFeature<LV2_State_Free_Path>(features, LV2_STATE__freePath);
  if (freePath && freePath->free_path)
    freePath->free_path(freePath->handle, path);
  else
    std::free(path);
  return text;
}

std::string_view WithoutEnd(const void* text, std::size_t size) {
  const auto* const begin = static_cast<const char*>(text);
  return {begin, strnlen(begin, size)};
}

// Runs what may raise; its failure is the host's to read.
template <typename Action>
bool Try(const Host& host, const char* what, Action action) noexcept {
  std::string reason = "it failed";
  try {
    action();
    return true;
  } catch (const MException& raised) {
    reason = bridge::ToUtf8(raised.message);
  } catch (const std::exception& raised) {
    reason = raised.what();
  } catch (...) {
  }
  host.Log(std::string(what) + ": " + reason);
  return false;
}

}  // namespace

LV2_State_Status Lv2Plugin::Save(LV2_State_Store_Function store, LV2_State_Handle handle,
                                 const LV2_Feature* const* features) noexcept {
  if (!store) return LV2_STATE_ERR_UNKNOWN;
  if (!host_.HasNumbers()) return LV2_STATE_ERR_NO_FEATURE;
  LV2_State_Status status = LV2_STATE_SUCCESS;
  const auto keep = [&](LV2_URID key, const std::string& text, LV2_URID type, uint32_t flags) {
    const LV2_State_Status stored = store(handle, key, text.c_str(), text.size() + 1, type, flags);
    if (stored != LV2_STATE_SUCCESS) status = stored;
  };
  const Urids& urids = host_.GetUrids();
  const bool isDone = Try(host_, "the state could not be saved", [&] {
    MXMLItem item("state");
    plugin_.SaveState(item);
    keep(urids.stateText, bridge::GetStateText(item), urids.atomString,
         LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE);
    const std::string path = SaveFilePath(item, features);
    if (!path.empty()) keep(urids.file, path, urids.atomPath, LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE);
  });
  return isDone ? status : LV2_STATE_ERR_UNKNOWN;
}

// The host's name of the file that the state names. What is missing has none, so that the state goes on
// naming it in its own way.
std::string Lv2Plugin::SaveFilePath(const MXMLItem& state, const LV2_Feature* const* features) const {
  const auto* const map = FindFeature<LV2_State_Map_Path>(features, LV2_STATE__mapPath);
  if (!kind_ || !map || !map->abstract_path) return {};
  const std::string path = GetStateFile(*kind_, state);
  if (!IsFile(path)) return {};
  return TakePath(map->abstract_path(map->handle, path.c_str()), features);
}

// A state without the text is that of a new plug-in.
LV2_State_Status Lv2Plugin::Restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle,
                                    const LV2_Feature* const* features) noexcept {
  if (!retrieve) return LV2_STATE_ERR_UNKNOWN;
  if (!host_.HasNumbers()) return LV2_STATE_ERR_NO_FEATURE;
  std::size_t size = 0;
  uint32_t type = 0, flags = 0;
  const void* const text = retrieve(handle, host_.GetUrids().stateText, &size, &type, &flags);
  if (text && type != host_.GetUrids().atomString) return LV2_STATE_ERR_BAD_TYPE;
  const bool isDone = Try(host_, "the state could not be restored", [&] {
    const std::lock_guard lock(loadLock_);
    const std::string path = RestoreFilePath(retrieve, handle, features);
    if (text)
      RestoreText(WithoutEnd(text, size), path);
    else
      RestoreDefault();
    KeepValues();
    TellFile();
  });
  return isDone ? LV2_STATE_SUCCESS : LV2_STATE_ERR_UNKNOWN;
}

std::string Lv2Plugin::RestoreFilePath(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle,
                                       const LV2_Feature* const* features) const {
  const auto* const map = FindFeature<LV2_State_Map_Path>(features, LV2_STATE__mapPath);
  if (!kind_ || !map || !map->absolute_path) return {};
  std::size_t size = 0;
  uint32_t type = 0, flags = 0;
  const void* const saved = retrieve(handle, host_.GetUrids().file, &size, &type, &flags);
  if (!saved || type != host_.GetUrids().atomPath) return {};
  return TakePath(map->absolute_path(map->handle, std::string(WithoutEnd(saved, size)).c_str()), features);
}

// The host's file counts where it is there and is not what the state names anyway. One that cannot be copied
// leaves the state's own.
void Lv2Plugin::RestoreText(std::string_view text, const std::string& path) {
  MXMLItem item("state");
  bridge::ReadStateText(text, item);
  if (kind_ && IsFile(path) && !IsSameContent(path, GetStateFile(*kind_, item)))
    Try(host_, path.c_str(), [&] { SetStateFile(*kind_, item, path); });
  plugin_.LoadState(item);
}

void Lv2Plugin::RestoreDefault() {
  bridge::NoClient client;
  bridge::DawPlugin fresh(type_, client);
  plugin_.LoadState(fresh.SaveState());
}

LV2_Worker_Status Lv2Plugin::Work(uint32_t size, const void* message) noexcept {
  const auto* const bytes = static_cast<const char*>(message);
  const bool isFile = bytes && size > 1 && bytes[0] == 'f';
  const bool isDone = Try(host_, "a file could not be loaded", [&] {
    if (isFile && kind_)
      LoadFile(std::string(bytes + 1, size - 1));
    else
      plugin_.DoWork();
  });
  if (!isDone && isFile) file_.Ask();  // it is the old file still
  return isDone ? LV2_WORKER_SUCCESS : LV2_WORKER_ERR_UNKNOWN;
}

void Lv2Plugin::LoadFile(const std::string& path) {
  const std::lock_guard lock(loadLock_);
  if (!IsFile(path)) throw MException(bridge::FromUtf8(path + " is no file."));
  MXMLItem item("state");
  plugin_.SaveState(item);
  SetStateFile(*kind_, item, path);  // raises when the file cannot be copied, before the old one is let go
  if (kind_->isImported) {
    const std::filesystem::path file = GetStateFile(*kind_, item);
    const MString texts[] = {bridge::FromUtf8(file.parent_path().string()),
                             bridge::FromUtf8(file.filename().string())};
    if (plugin_.Command("ImportSample", MAsWord(texts)) != 0)
      host_.Log(path + ": it cannot be loaded as a sample");
  } else {
    plugin_.LoadState(item);
    mustCompare_ = true;
  }
  isStateNew_ = true;
  TellFile();
}

void Lv2Plugin::TellFile() {
  if (!kind_) return;
  MXMLItem item("state");
  plugin_.SaveState(item);
  file_.Put(GetStateFile(*kind_, item));
}

}  // namespace lv2
