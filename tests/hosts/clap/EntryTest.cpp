#include <set>

#include "tests/hosts/clap/TestHost.h"

namespace {

const clap_plugin_factory_t* GetFactory() {
  return static_cast<const clap_plugin_factory_t*>(clap_entry.get_factory(CLAP_PLUGIN_FACTORY_ID));
}

class ClapEntry : public testing::Test {
 protected:
  ClapEntry() { EXPECT_TRUE(clap_entry.init("")); }
  ~ClapEntry() override { clap_entry.deinit(); }
};

TEST_F(ClapEntry, HasTheFactoryOfPluginsAlone) {
  EXPECT_NE(GetFactory(), nullptr);
  EXPECT_EQ(clap_entry.get_factory("clap.unknown-factory"), nullptr);
  EXPECT_EQ(clap_entry.get_factory(nullptr), nullptr);
}

TEST_F(ClapEntry, CountsItsStartsAndEnds) {
  EXPECT_TRUE(clap_entry.init(nullptr));
  clap_entry.deinit();
  EXPECT_NE(GetFactory(), nullptr);
  clap_entry.deinit();
  EXPECT_EQ(GetFactory(), nullptr);
  clap_entry.deinit();
  EXPECT_TRUE(clap_entry.init(""));
  EXPECT_NE(GetFactory(), nullptr);
}

TEST_F(ClapEntry, DescribesTwentyPlugins) {
  const clap_plugin_factory_t* const factory = GetFactory();
  ASSERT_EQ(factory->get_plugin_count(factory), 20u);
  EXPECT_EQ(factory->get_plugin_descriptor(factory, 20), nullptr);
  std::set<std::string> ids;
  for (uint32_t i = 0; i < 20; ++i) {
    const clap_plugin_descriptor_t& each = *factory->get_plugin_descriptor(factory, i);
    ids.insert(each.id);
    EXPECT_EQ(std::string(each.vendor), "Sonvelle");
    EXPECT_TRUE(clap_version_is_compatible(each.clap_version));
    for (const char* const text : {each.name, each.version, each.description}) EXPECT_NE(text[0], 0);
    for (const char* const text : {each.url, each.manual_url, each.support_url}) EXPECT_NE(text, nullptr);
    std::set<std::string> words;
    for (const char* const* word = each.features; *word; ++word) words.insert(*word);
    EXPECT_EQ(words.count("audio-effect") + words.count("instrument"), 1u) << each.id;
    EXPECT_TRUE(words.count("stereo") && words.count("mono")) << each.id;
    EXPECT_GE(words.size(), 4u) << each.id << " is of no kind";
  }
  EXPECT_EQ(ids.size(), 20u);
  EXPECT_EQ(ids.count("com.sonvelle.toneloom4nn"), 1u);
}

TEST_F(ClapEntry, MakesNothingForUnknownIdsAndWithoutAHost) {
  const clap_plugin_factory_t* const factory = GetFactory();
  const TestHost host;
  EXPECT_EQ(factory->create_plugin(factory, host.Get(), "com.sonvelle.unknown"), nullptr);
  EXPECT_EQ(factory->create_plugin(factory, host.Get(), nullptr), nullptr);
  EXPECT_EQ(factory->create_plugin(factory, nullptr, "com.sonvelle.echolan"), nullptr);
}

TEST_P(ClapSuite, TwentyInstancesAreOpenedAndClosed) {
  std::vector<std::unique_ptr<ClapPlugin>> instances;
  for (int32_t i = 0; i < 20; ++i) {
    instances.push_back(std::make_unique<ClapPlugin>(GetParam(), host_));
    instances.back()->Activate(48000, 64);
    instances.back()->Run(AudioBlock(2, 64));
    if (i % 2 == 0) instances.back()->Deactivate();  // others are destroyed as they are
  }
}

TEST_P(ClapSuite, UnknownExtensionsAreNull) {
  EXPECT_EQ(plugin_->get_extension(plugin_.Get(), "com.sonvelle.unknown"), nullptr);
  EXPECT_EQ(plugin_->get_extension(plugin_.Get(), ""), nullptr);
  EXPECT_EQ(plugin_->get_extension(plugin_.Get(), nullptr), nullptr);
}

TEST_P(ClapSuite, NothingIsNeededOfTheHost) {
  clap_host_t bare = {};
  bare.clap_version = CLAP_VERSION;
  const clap_plugin_t* const plugin = GetFactory()->create_plugin(GetFactory(), &bare, GetParam().c_str());
  const auto* const parameters =
      static_cast<const clap_plugin_params_t*>(plugin->get_extension(plugin, CLAP_EXT_PARAMS));
  const clap_process_t block = {};
  EXPECT_GT(parameters->count(plugin), 0u);
  EXPECT_EQ(plugin->process(plugin, &block), CLAP_PROCESS_ERROR);  // before init
  parameters->flush(plugin, nullptr, nullptr);
  plugin->reset(plugin);
  plugin->on_main_thread(plugin);
  plugin->deactivate(plugin);
  EXPECT_FALSE(plugin->start_processing(plugin));
  EXPECT_TRUE(plugin->init(plugin));
  EXPECT_TRUE(plugin->activate(plugin, 44100, 1, 64));
  EXPECT_EQ(plugin->process(plugin, nullptr), CLAP_PROCESS_ERROR);
  EXPECT_EQ(plugin->process(plugin, &block), CLAP_PROCESS_ERROR);
  plugin->on_main_thread(plugin);
  plugin->deactivate(plugin);
  EXPECT_EQ(plugin->process(plugin, &block), CLAP_PROCESS_ERROR);
  plugin->destroy(plugin);
}

TEST(ClapPlugins, FunctionsWithoutAPluginDoNothing) {
  TestHost host;
  const ClapPlugin plugin("com.sonvelle.echolan", host);
  EXPECT_FALSE(plugin->init(nullptr));
  EXPECT_FALSE(plugin->activate(nullptr, 48000, 1, 64));
  EXPECT_EQ(plugin->get_extension(nullptr, CLAP_EXT_PARAMS), nullptr);
  EXPECT_EQ(plugin.Find<clap_plugin_params_t>(CLAP_EXT_PARAMS)->count(nullptr), 0u);
  plugin->destroy(nullptr);
}

}  // namespace
