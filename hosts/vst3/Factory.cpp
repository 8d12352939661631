#include <travesty/factory.h>

#include <memory>

#include "core/MTypes.h"
#include "hosts/vst3/Classes.h"
#include "hosts/vst3/Instance.h"
#include "hosts/vst3/Text.h"

namespace vst3 {

namespace {

constexpr const char* kVendor = "Sonvelle";
constexpr const char* kUrl = "https://sonvelle.example";
constexpr const char* kCategory = "Audio Module Class";
constexpr const char* kSdkVersion = "VST 3.7.4";
constexpr int32_t kUnicode = 0x10;
constexpr int32_t kManyInstances = 0x7FFFFFFF;

template <std::size_t kSize>
void Write(std::string_view text, char (&out)[kSize]) {
  out[text.copy(out, kSize - 1)] = 0;
}

template <std::size_t kSize>
void Write(std::string_view text, int16_t (&out)[kSize]) {
  WriteText(text, out, kSize);
}

// The one factory of the binary, which is there as long as that.
class Factory {
 public:
  v3_result QueryInterface(const uint8_t* id, void** object) {
    if (!object) return V3_INVALID_ARG;
    *object = nullptr;
    if (!id) return V3_INVALID_ARG;
    for (const uint8_t* const each :
         {v3_funknown_iid, v3_plugin_factory_iid, v3_plugin_factory_2_iid, v3_plugin_factory_3_iid})
      if (v3_tuid_match(each, id)) *object = &face_;
    if (!*object) return V3_NO_INTERFACE;
    Ref();
    return V3_OK;
  }
  uint32_t Ref() { return ++references_; }
  uint32_t Unref() { return --references_; }

  v3_result GetFactoryInfo(v3_factory_info* info) {
    if (!info) return V3_INVALID_ARG;
    *info = {};
    Write(kVendor, info->vendor);
    Write(kUrl, info->url);
    info->flags = kUnicode;
    return V3_OK;
  }
  int32_t GetClassCount() { return static_cast<int32_t>(GetClasses().size()); }
  v3_result GetClassInfo(int32_t index, v3_class_info* info) { return Describe(index, info); }
  v3_result GetClassInfo2(int32_t index, v3_class_info_2* info) { return DescribeFully(index, info); }
  v3_result GetClassInfo3(int32_t index, v3_class_info_3* info) { return DescribeFully(index, info); }
  v3_result SetHostContext(v3_funknown**) { return V3_OK; }

  v3_result CreateInstance(const uint8_t* classId, const uint8_t* interfaceId, void** object) {
    if (!object) return V3_INVALID_ARG;
    *object = nullptr;
    if (!classId || !interfaceId) return V3_INVALID_ARG;
    const Class* const type = FindClass(classId);
    if (!type) return V3_INVALID_ARG;
    auto* const instance = new Instance(*type);
    const v3_result result = instance->QueryInterface(interfaceId, object);
    instance->Unref();
    return result;
  }

  Face* GetFace() noexcept { return &face_; }

 private:
  struct Tables;

  template <class Info>
  v3_result Describe(int32_t index, Info* info) {
    if (!info || index < 0 || index >= GetClassCount()) return V3_INVALID_ARG;
    const Class& type = GetClasses()[static_cast<std::size_t>(index)];
    *info = {};
    std::copy(std::begin(type.id), std::end(type.id), info->class_id);
    info->cardinality = kManyInstances;
    Write(kCategory, info->category);
    Write(type.type->name, info->name);
    return V3_OK;
  }
  template <class Info>
  v3_result DescribeFully(int32_t index, Info* info) {
    const v3_result result = Describe(index, info);
    if (result != V3_OK) return result;
    Write(GetClasses()[static_cast<std::size_t>(index)].subcategories, info->sub_categories);
    Write(kVendor, info->vendor);
    Write(SONVELLE_VERSION, info->version);
    Write(kSdkVersion, info->sdk_version);
    return V3_OK;
  }

  static const v3_plugin_factory_cpp kTable;
  Face face_ = {&kTable, this};
  std::atomic<uint32_t> references_ = 0;
};

constinit const v3_plugin_factory_cpp Factory::kTable = {
    {kCall<&Factory::QueryInterface>, kCall<&Factory::Ref>, kCall<&Factory::Unref>},
    {kCall<&Factory::GetFactoryInfo>, kCall<&Factory::GetClassCount>, kCall<&Factory::GetClassInfo>,
     kCall<&Factory::CreateInstance>},
    {kCall<&Factory::GetClassInfo2>},
    {kCall<&Factory::GetClassInfo3>, kCall<&Factory::SetHostContext>}};

}  // namespace

}  // namespace vst3

// What a host finds in the binary.
extern "C" {

M_VISIBLE const void* GetPluginFactory() {
  static vst3::Factory factory;
  factory.Ref();
  return factory.GetFace();
}

M_VISIBLE bool ModuleEntry(void*) {
  return true;
}

M_VISIBLE bool ModuleExit() {
  return true;
}
}
