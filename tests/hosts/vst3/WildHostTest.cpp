// What no host should do, and some do.

#include <cmath>
#include <cstring>

#include "tests/common/TestRandom.h"
#include "tests/hosts/vst3/AllPlugins.h"

namespace {

using host::Changes;
using host::Events;
using host::HostedPlugin;
using host::Planes;

constexpr double kWildValues[] = {NAN, INFINITY, -INFINITY, -1, -0.0, 5e-324, 0.5, 1, 2, 1e300};
constexpr int32_t kWildNumbers[] = {INT32_MIN, -32768, -1, 0, 1, 15, 16, 60, 127, 128, INT32_MAX};
constexpr int32_t kFrames = 128;

template <typename Values>
auto& Choose(Values& values, TestRandom& random) {
  return values[static_cast<std::size_t>(random.Below(static_cast<int32_t>(std::size(values))))];
}

class Vst3Wild : public testing::TestWithParam<std::string> {
 protected:
  void Process() {
    Changes changes;
    const std::vector<v3_param_info> list = plugin_.GetParameters();
    for (int32_t i = 0; i < 30; ++i) {
      const v3_param_info& info = Choose(list, random_);
      std::vector<host::Point> points;
      for (int32_t k = random_.Below(4); k > 0; --k)
        points.push_back(
            {k == 1 ? Choose(kWildNumbers, random_) : random_.Integer(0, 200), Choose(kWildValues, random_)});
      changes.Add(i % 10 == 9 ? v3_param_id(i) : info.param_id, points);
    }
    Events events;
    for (int32_t i = 0; i < 20; ++i) {
      v3_event& event = events.Add(Choose(kWildNumbers, random_), static_cast<uint16_t>(random_.Below(3)));
      event.bus_index = i % 5 == 4 ? Choose(kWildNumbers, random_) : 0;
      event.note_on = {static_cast<int16_t>(Choose(kWildNumbers, random_)),
                       static_cast<int16_t>(Choose(kWildNumbers, random_)),
                       0,
                       static_cast<float>(std::clamp(Choose(kWildValues, random_), -3e38, 3e38)),
                       0,
                       Choose(kWildNumbers, random_)};
    }
    Planes samples = host::MakeNoise(2, kFrames);
    plugin_.Process(samples, 0, kFrames, &changes, &events);
    for (const std::vector<float>& plane : samples)
      for (const float sample : plane) ASSERT_TRUE(std::isfinite(sample));
  }

  TestRandom random_;
  HostedPlugin plugin_{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Plugins, Vst3Wild, testing::ValuesIn(host::GetAll()), host::NameTest);

TEST_P(Vst3Wild, ChangesDoNoHarm) {
  for (const int32_t block : {kFrames, 7}) {
    plugin_.Start({2, 48000, block});
    for (int32_t i = 0; i < 30; ++i) {
      Process();
      for (const v3_param_info& info : plugin_.GetParameters()) {
        const double value = plugin_.Get(info.param_id);
        ASSERT_TRUE(value >= 0 && value <= 1) << host::ToText(info.title);
        if (i % 7 == 0) plugin_.Set(info.param_id, Choose(kWildValues, random_));
      }
    }
    plugin_.Stop();
  }
  const std::string state = plugin_.SaveState();
  EXPECT_EQ(plugin_.LoadState(state), V3_OK);
  EXPECT_EQ(plugin_.SaveState(), state);
}

TEST_P(Vst3Wild, TextsOfAnyNumberAreThoseOfTheRange) {
  const v3_edit_controller& table = *v3_cpp_obj(plugin_.controller);
  for (const v3_param_info& info : plugin_.GetParameters()) {
    EXPECT_EQ(plugin_.GetText(info.param_id, -1e300), plugin_.GetText(info.param_id, 0));
    EXPECT_EQ(plugin_.GetText(info.param_id, INFINITY), plugin_.GetText(info.param_id, 1));
    EXPECT_EQ(plugin_.ToNormalized(info.param_id, 1e300), 1);
    EXPECT_EQ(plugin_.ToNormalized(info.param_id, -1e300), 0);
    EXPECT_EQ(plugin_.ToNormalized(info.param_id, NAN), 0);
    EXPECT_FALSE(std::isnan(table.normalised_parameter_to_plain(plugin_.controller, info.param_id, NAN)));
    v3_str_128 full;
    std::fill_n(full, 128, int16_t{'9'});  // without an end
    double value = 0.25;
    if (table.get_parameter_value_for_string(plugin_.controller, info.param_id, full, &value) != V3_OK) {
      EXPECT_EQ(value, 0.25);
    }
    EXPECT_TRUE(value >= 0 && value <= 1);
  }
}

TEST_P(Vst3Wild, AnyOrderOfCallsDoesNoHarm) {
  const v3_component& component = *v3_cpp_obj(plugin_.component);
  const v3_audio_processor& processor = *v3_cpp_obj(plugin_.processor);
  const std::string state = plugin_.SaveState();
  for (int32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(processor.set_processing(plugin_.processor, true), V3_OK);
    Process();
    EXPECT_EQ(component.set_active(plugin_.component, true), V3_OK);  // without a set-up
    EXPECT_EQ(component.set_active(plugin_.component, true), V3_OK);
    EXPECT_EQ(plugin_.LoadState(state, 1), V3_OK);
    Process();
    EXPECT_EQ(v3_cpp_obj_terminate(plugin_.component), V3_OK);  // active
    EXPECT_EQ(v3_cpp_obj_terminate(plugin_.controller), V3_OK);
    Process();
    EXPECT_EQ(component.set_active(plugin_.component, false), V3_OK);
    EXPECT_EQ(processor.set_processing(plugin_.processor, false), V3_OK);
    EXPECT_EQ(v3_cpp_obj_initialize(plugin_.controller, nullptr), V3_OK);
  }
  EXPECT_EQ(plugin_.LoadState(state), V3_OK);
  EXPECT_EQ(plugin_.SaveState(), state);
}

TEST_P(Vst3Wild, StatesWithWrongBytesDoNoHarm) {
  plugin_.Start({2, 8000, kFrames});
  Planes samples = host::MakeNoise(2, kFrames);
  for (int32_t i = 0; i < 100; ++i) {
    std::string text = plugin_.SaveState();
    for (int32_t k = 0; k < 3; ++k) Choose(text, random_) = static_cast<char>(random_.Below(256));
    plugin_.LoadState(text);
    plugin_.Process(samples, 0, kFrames);
    for (const v3_param_info& info : plugin_.GetParameters()) {
      const double value = plugin_.Get(info.param_id);
      ASSERT_TRUE(value >= 0 && value <= 1) << text;
    }
  }
}

}  // namespace
