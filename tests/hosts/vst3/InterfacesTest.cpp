// The object behind the interfaces: identity, references, and what it does not take.

#include <cmath>
#include <memory>

#include "tests/hosts/vst3/AllPlugins.h"

namespace {

using host::HostedPlugin;

class Vst3Interfaces : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Plugins, Vst3Interfaces, testing::ValuesIn(host::GetAll()), host::NameTest);

constexpr const v3_tuid* kIds[] = {&v3_funknown_iid,        &v3_plugin_base_iid,
                                   &v3_component_iid,       &v3_audio_processor_iid,
                                   &v3_edit_controller_iid, &v3_unit_information_iid,
                                   &v3_midi_mapping_iid,    &v3_process_context_requirements_iid};

TEST_P(Vst3Interfaces, AreOfOneObjectWhicheverIsAsked) {
  const HostedPlugin plugin(GetParam());
  void* const unknown = plugin.Query<v3_funknown>(v3_funknown_iid);
  for (const v3_tuid* const id : kIds) {
    v3_funknown** const face = plugin.Query<v3_funknown>(*id);
    EXPECT_EQ(face != nullptr, id != &v3_midi_mapping_iid || plugin.IsInstrument());
    if (!face) continue;
    for (const v3_tuid* const other : kIds) {
      void** found = nullptr;
      const v3_result result = (*face)->query_interface(face, *other, reinterpret_cast<void**>(&found));
      EXPECT_EQ(found, static_cast<void*>(plugin.Query<v3_funknown>(*other)));
      EXPECT_EQ(result, found ? V3_OK : V3_NO_INTERFACE);
      if (found) (*face)->unref(face);
    }
    void* back = nullptr;
    (*face)->query_interface(face, v3_funknown_iid, &back);
    EXPECT_EQ(back, unknown);
    (*face)->unref(face);
  }
}

TEST_P(Vst3Interfaces, CountOneReferenceTogether) {
  const HostedPlugin plugin(GetParam());
  EXPECT_EQ(v3_cpp_obj_ref(plugin.component), 2u);
  EXPECT_EQ(v3_cpp_obj_ref(plugin.controller), 3u);
  EXPECT_EQ(v3_cpp_obj_unref(plugin.processor), 2u);
  EXPECT_EQ(v3_cpp_obj_unref(plugin.component), 1u);
}

TEST_P(Vst3Interfaces, GiveBackTheReferencesOfTheHost) {
  host::Handler first, second;
  host::Unknown* const unknown = &first;
  EXPECT_EQ(unknown->references, 1u);
  {
    HostedPlugin plugin(GetParam());
    const auto set = v3_cpp_obj(plugin.controller)->set_component_handler;
    EXPECT_EQ(set(plugin.controller, first.Get()), V3_OK);
    EXPECT_EQ(set(plugin.controller, first.Get()), V3_OK);
    EXPECT_EQ(first.references, 2u);
    EXPECT_EQ(plugin.handler.references, 1u);
    EXPECT_EQ(set(plugin.controller, second.Get()), V3_OK);
    EXPECT_EQ(first.references, 1u);
    EXPECT_EQ(set(plugin.controller, nullptr), V3_OK);
    EXPECT_EQ(second.references, 1u);
    auto** const context = reinterpret_cast<v3_funknown**>(first.Get());
    v3_cpp_obj_terminate(plugin.component);
    EXPECT_EQ(v3_cpp_obj_initialize(plugin.component, context), V3_OK);
    EXPECT_EQ(v3_cpp_obj_initialize(plugin.component, context), V3_FALSE);
    EXPECT_EQ(first.references, 2u);
  }
  EXPECT_EQ(first.references, 1u);
}

TEST_P(Vst3Interfaces, TakeNoNullAndNoForeignNumber) {
  HostedPlugin plugin(GetParam());
  const v3_component& component = *v3_cpp_obj(plugin.component);
  const v3_audio_processor& processor = *v3_cpp_obj(plugin.processor);
  const v3_edit_controller& controller = *v3_cpp_obj(plugin.controller);
  v3_bus_info bus;
  v3_speaker_arrangement arrangement;
  v3_param_info info;
  v3_str_128 text = {};
  double value = 0;
  v3_tuid id = {};
  EXPECT_EQ(component.get_controller_class_id(plugin.component, id), V3_NOT_IMPLEMENTED);
  EXPECT_EQ(component.get_bus_count(plugin.component, 2, V3_INPUT), 0);
  EXPECT_EQ(component.get_bus_count(plugin.component, V3_AUDIO, 2), 0);
  EXPECT_EQ(component.get_bus_info(plugin.component, V3_AUDIO, V3_OUTPUT, 0, nullptr), V3_INVALID_ARG);
  EXPECT_EQ(component.get_bus_info(plugin.component, V3_AUDIO, V3_OUTPUT, 1, &bus), V3_INVALID_ARG);
  EXPECT_EQ(component.get_bus_info(plugin.component, V3_AUDIO, V3_OUTPUT, -1, &bus), V3_INVALID_ARG);
  EXPECT_EQ(component.activate_bus(plugin.component, -1, V3_OUTPUT, 0, true), V3_INVALID_ARG);
  EXPECT_EQ(component.set_state(plugin.component, nullptr), V3_INVALID_ARG);
  EXPECT_EQ(component.get_state(plugin.component, nullptr), V3_INVALID_ARG);
  EXPECT_EQ(processor.set_bus_arrangements(plugin.processor, nullptr, 1, nullptr, 1), V3_FALSE);
  EXPECT_EQ(processor.get_bus_arrangement(plugin.processor, V3_OUTPUT, 0, nullptr), V3_INVALID_ARG);
  EXPECT_EQ(processor.get_bus_arrangement(plugin.processor, V3_OUTPUT, 1, &arrangement), V3_INVALID_ARG);
  EXPECT_EQ(processor.setup_processing(plugin.processor, nullptr), V3_INVALID_ARG);
  EXPECT_EQ(processor.process(plugin.processor, nullptr), V3_INVALID_ARG);
  EXPECT_EQ(controller.get_parameter_info(plugin.controller, -1, &info), V3_INVALID_ARG);
  EXPECT_EQ(controller.get_parameter_info(plugin.controller, 1000, &info), V3_INVALID_ARG);
  EXPECT_EQ(controller.get_parameter_info(plugin.controller, 0, nullptr), V3_INVALID_ARG);
  EXPECT_EQ(controller.get_parameter_string_for_value(plugin.controller, 1, 0, text), V3_INVALID_ARG);
  EXPECT_EQ(controller.get_parameter_value_for_string(plugin.controller, 1, text, &value), V3_INVALID_ARG);
  EXPECT_EQ(controller.set_parameter_normalised(plugin.controller, 1, 0), V3_INVALID_ARG);
  EXPECT_EQ(controller.get_parameter_normalised(plugin.controller, 1), 0);
  for (const v3_param_info& each : plugin.GetParameters()) {
    const v3_param_id number = each.param_id;
    const double before = plugin.Get(number);
    EXPECT_EQ(controller.get_parameter_string_for_value(plugin.controller, number, 0, nullptr),
              V3_INVALID_ARG);
    EXPECT_EQ(controller.get_parameter_value_for_string(plugin.controller, number, nullptr, &value),
              V3_INVALID_ARG);
    EXPECT_EQ(controller.set_parameter_normalised(plugin.controller, number, NAN), V3_INVALID_ARG);
    EXPECT_EQ(plugin.Get(number), before);
  }
  EXPECT_EQ(controller.create_view(plugin.controller, "editor"), nullptr);
  EXPECT_EQ(controller.create_view(plugin.controller, nullptr), nullptr);
  EXPECT_EQ(controller.set_component_state(plugin.controller, nullptr), V3_OK);
}

TEST_P(Vst3Interfaces, OpenAndCloseTwentyTimes) {
  std::vector<std::unique_ptr<HostedPlugin>> open;
  for (int32_t i = 0; i < 20; ++i) {
    open.push_back(std::make_unique<HostedPlugin>(GetParam()));
    open.back()->Start({1 + i % 8, 44100.0 + i, 64 + i, i % 2 == 1});
    host::Planes samples = host::MakeNoise(1 + i % 8, 64);
    open.back()->Process(samples, 0, 64);
    if (i % 3 == 2) open.erase(open.begin());
  }
}

TEST_P(Vst3Interfaces, NeedNothingOfTheTransport) {
  const HostedPlugin plugin(GetParam());
  auto** const requirements =
      plugin.Query<v3_process_context_requirements>(v3_process_context_requirements_iid);
  EXPECT_EQ(v3_cpp_obj(requirements)->get_process_context_requirements(requirements), 0u);
}

}  // namespace
