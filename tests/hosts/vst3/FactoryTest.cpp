// The factory: what classes there are, and that their ids are for ever.

#include <fstream>

#include "tests/hosts/vst3/AllPlugins.h"

namespace {

using host::HostedPlugin;
using host::ToText;

class Vst3Factory : public testing::Test {
 protected:
  ~Vst3Factory() override { v3_cpp_obj_unref(factory_); }

  template <class Interface>
  Interface** Query(const uint8_t* id) {
    Interface** found = nullptr;
    v3_cpp_obj_query_interface(factory_, id, &found);
    if (found) v3_cpp_obj_unref(found);
    return found;
  }

  v3_plugin_factory** factory_ = static_cast<v3_plugin_factory**>(const_cast<void*>(GetPluginFactory()));
  v3_plugin_factory_2** factory2_ = Query<v3_plugin_factory_2>(v3_plugin_factory_2_iid);
  v3_plugin_factory_3** factory3_ = Query<v3_plugin_factory_3>(v3_plugin_factory_3_iid);
};

std::string ToHex(const uint8_t* id) {
  std::string text;
  for (int32_t i = 0; i < 16; ++i) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", id[i]);
    text += digits;
  }
  return text;
}

TEST_F(Vst3Factory, KeepsTheIdsAndCategoriesOfAllPluginsForEver) {
  std::string table = "# plug-in\tclass id\tsubcategories\n";
  for (int32_t i = 0; i < v3_cpp_obj(factory_)->num_classes(factory_); ++i) {
    v3_class_info_2 info = {};
    ASSERT_EQ(v3_cpp_obj(factory2_)->get_class_info_2(factory2_, i, &info), V3_OK);
    table += std::string(info.name) + "\t" + ToHex(info.class_id) + "\t" + info.sub_categories + "\n";
  }
  std::ifstream golden(SONVELLE_VST3_IDS);
  EXPECT_EQ(table, std::string(std::istreambuf_iterator<char>(golden), {}));
}

TEST_F(Vst3Factory, SaysTheSameInEachOfItsVersions) {
  ASSERT_EQ(v3_cpp_obj(factory_)->num_classes(factory_), 20);
  for (int32_t i = 0; i < 20; ++i) {
    v3_class_info one = {};
    v3_class_info_2 two = {};
    v3_class_info_3 three = {};
    ASSERT_EQ(v3_cpp_obj(factory_)->get_class_info(factory_, i, &one), V3_OK);
    ASSERT_EQ(v3_cpp_obj(factory2_)->get_class_info_2(factory2_, i, &two), V3_OK);
    ASSERT_EQ(v3_cpp_obj(factory3_)->get_class_info_utf16(factory3_, i, &three), V3_OK);
    EXPECT_TRUE(v3_tuid_match(one.class_id, two.class_id));
    EXPECT_TRUE(v3_tuid_match(one.class_id, three.class_id));
    EXPECT_STREQ(one.category, "Audio Module Class");
    EXPECT_STREQ(three.category, "Audio Module Class");
    EXPECT_EQ(one.cardinality, 0x7FFFFFFF);
    EXPECT_STREQ(one.name, host::kAll[i]);
    EXPECT_STREQ(two.name, one.name);
    EXPECT_EQ(ToText(three.name), one.name);
    EXPECT_STREQ(two.vendor, "Sonvelle");
    EXPECT_EQ(ToText(three.vendor), two.vendor);
    EXPECT_STREQ(two.version, SONVELLE_VERSION);
    EXPECT_EQ(ToText(three.version), two.version);
    EXPECT_STREQ(three.sub_categories, two.sub_categories);
    EXPECT_EQ(std::string(two.sub_categories).starts_with("Fx"), !HostedPlugin(one.name).IsInstrument());
    EXPECT_TRUE(std::string(two.sdk_version).starts_with("VST 3"));
  }
}

TEST_F(Vst3Factory, TellsOfItsMaker) {
  v3_factory_info info = {};
  ASSERT_EQ(v3_cpp_obj(factory_)->get_factory_info(factory_, &info), V3_OK);
  EXPECT_STREQ(info.vendor, "Sonvelle");
  EXPECT_EQ(info.flags, 0x10);
  EXPECT_EQ(v3_cpp_obj(factory3_)->set_host_context(factory3_, nullptr), V3_OK);
}

TEST_F(Vst3Factory, RefusesWhatItDoesNotKnow) {
  v3_class_info info = {};
  EXPECT_EQ(v3_cpp_obj(factory_)->get_factory_info(factory_, nullptr), V3_INVALID_ARG);
  EXPECT_EQ(v3_cpp_obj(factory_)->get_class_info(factory_, 0, nullptr), V3_INVALID_ARG);
  EXPECT_EQ(v3_cpp_obj(factory_)->get_class_info(factory_, -1, &info), V3_INVALID_ARG);
  EXPECT_EQ(v3_cpp_obj(factory_)->get_class_info(factory_, 20, &info), V3_INVALID_ARG);
  EXPECT_EQ(v3_cpp_obj(factory2_)->get_class_info_2(factory2_, 20, nullptr), V3_INVALID_ARG);
  EXPECT_EQ(v3_cpp_obj(factory3_)->get_class_info_utf16(factory3_, 0, nullptr), V3_INVALID_ARG);

  ASSERT_EQ(v3_cpp_obj(factory_)->get_class_info(factory_, 0, &info), V3_OK);
  const auto create = v3_cpp_obj(factory_)->create_instance;
  void* object = this;
  EXPECT_NE(create(factory_, v3_component_iid, v3_component_iid, &object), V3_OK);
  EXPECT_EQ(object, nullptr);
  object = this;
  EXPECT_EQ(create(factory_, info.class_id, v3_plugin_factory_iid, &object), V3_NO_INTERFACE);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(create(factory_, nullptr, v3_component_iid, &object), V3_INVALID_ARG);
  EXPECT_EQ(create(factory_, info.class_id, nullptr, &object), V3_INVALID_ARG);
  EXPECT_EQ(create(factory_, info.class_id, v3_component_iid, nullptr), V3_INVALID_ARG);
}

TEST_F(Vst3Factory, IsOneObjectThatCountsItsReferences) {
  const uint32_t before = v3_cpp_obj_ref(factory_);
  EXPECT_EQ(GetPluginFactory(), factory_);
  EXPECT_EQ(v3_cpp_obj_unref(factory_), before);
  EXPECT_EQ(v3_cpp_obj_unref(factory_), before - 1);
  EXPECT_EQ(static_cast<void*>(Query<v3_funknown>(v3_funknown_iid)), factory_);
  EXPECT_EQ(Query<v3_component>(v3_component_iid), nullptr);
  v3_component** object = nullptr;
  EXPECT_EQ(v3_cpp_obj_query_interface(factory_, nullptr, &object), V3_INVALID_ARG);
  EXPECT_EQ(v3_cpp_obj_query_interface(factory_, v3_funknown_iid, static_cast<v3_component***>(nullptr)),
            V3_INVALID_ARG);
}

}  // namespace
