// States, and the files that they name.

#include <cstdlib>
#include <thread>

#include "tests/hosts/lv2/Lv2Test.h"

namespace {

// The state:mapPath and state:freePath of a host that keeps files in a folder of its own.
class PathMap {
 public:
  explicit PathMap(std::string folder) : folder_(std::move(folder)) {}
  const LV2_Feature* const* GetFeatures() const { return features_; }
  const LV2_Feature* const* GetFeaturesWithoutFree() const { return features_ + 1; }
  int open = 0;  // paths that have not been given back

 private:
  static char* Make(void* self, const std::string& path) {
    ++static_cast<PathMap*>(self)->open;
    return strdup(path.c_str());
  }
  std::string folder_;
  LV2_State_Map_Path map_{this,
                          [](void* self, const char* path) {
                            return Make(self,
                                        "song/" + std::string(path).substr(std::string(path).rfind('/') + 1));
                          },
                          [](void* self, const char* path) {
                            return Make(self, static_cast<PathMap*>(self)->folder_ + "/" + path);
                          }};
  LV2_State_Free_Path free_{this, [](void* self, char* path) {
                              --static_cast<PathMap*>(self)->open;
                              std::free(path);
                            }};
  LV2_Feature freeFeature_{LV2_STATE__freePath, &free_}, mapFeature_{LV2_STATE__mapPath, &map_};
  const LV2_Feature* features_[3] = {&freeFeature_, &mapFeature_, nullptr};
};

class Lv2States : public Lv2Test {
 protected:
  static std::string StepState() {
    return "<state plugin=\"Playbox\" subpath=\"Drums\" filename=\"Step.wav\" CustomSamplePath=\"0\"/>";
  }
  void WriteStep(float level = 0.5f, const std::string& name = "Samples/Drums/Step.wav") const {
    content_.WriteSample(name, {std::vector<float>(480, level)}, 48000);
  }
  static SavedState::Value& GetFile(Lv2Host& host, SavedState& state) {
    return state.values[host.GetNumbers().Get("https://sonvelle.example/plugins/Playbox#sample")];
  }
  static float Play(Lv2Host& host) {
    host.AddMidi(0, {0x90, 60, 127});
    host.Run(64);
    return host.outLeft[63];
  }
};

TEST_F(Lv2States, ComeBackInAllPlugins) {
  for (const bridge::PluginType& type : builtin::GetPlugins()) {
    std::ifstream file(SONVELLE_GOLDEN_STATES "/" + std::string(type.name) + ".xml");
    const std::string golden{std::istreambuf_iterator<char>(file), {}};
    const auto first = Make(type.name), second = Make(type.name);
    EXPECT_EQ(first->Restore(first->MakeState(golden)), LV2_STATE_SUCCESS) << type.name;
    SavedState saved;
    EXPECT_EQ(first->Save(saved), LV2_STATE_SUCCESS);
    EXPECT_EQ(second->Restore(saved), LV2_STATE_SUCCESS);
    EXPECT_EQ(GetText(*first), GetText(*second));
  }
}

TEST_F(Lv2States, AnExactValueStaysWhilePortsAreItsFloat) {
  const auto host = Make("Echolan");
  host->Restore(host->MakeState("<state parameterdelay=\"0.12345678901\" parameterfeedback=\"0.3\"/>"));
  host->Control("delay") = 123.45678901f;
  host->Control("feedback") = 0.3f;
  host->Run(64);
  EXPECT_EQ(GetAttribute(*host, "parameterdelay"), "0.12345678901");
  host->Control("delay") = 100;
  host->Run(64);
  EXPECT_EQ(GetAttribute(*host, "parameterdelay"), "0.1000");
  host->Control("delay") = 123.45678901f;
  host->Run(64);
  EXPECT_EQ(GetAttribute(*host, "parameterdelay"), "0.12345678901");
}

TEST_F(Lv2States, PortsThatSayOtherwiseHold) {
  const auto host = Make("Echolan");
  host->Run(64);
  host->Restore(
      host->MakeState("<state parameterdelay=\"0.2\" parameterfeedback=\"0.3\" hostBypass=\"1\"/>"));
  EXPECT_EQ(GetAttribute(*host, "parameterdelay"), "0.2000");
  host->Run(64);
  EXPECT_EQ(GetAttribute(*host, "parameterdelay"), "0.1000");
  EXPECT_EQ(GetAttribute(*host, "parameterfeedback"), "0.4000");
  EXPECT_EQ(GetAttribute(*host, "hostBypass"), "0");
}

TEST_F(Lv2States, WithoutTextAreThoseOfANewPlugin) {
  const auto host = Make("Tonebench"), fresh = Make("Tonebench");
  host->Restore(host->MakeState("<state band0=\"1\" plugin=\"Tonebench\"/>"));
  EXPECT_EQ(host->Restore(SavedState()), LV2_STATE_SUCCESS);
  EXPECT_EQ(GetText(*host), GetText(*fresh));
}

TEST_F(Lv2States, ThatAreBrokenChangeNothing) {
  const auto host = Make("Echolan");
  host->Control("delay") = 200;
  host->Run(64);
  const std::string before = GetText(*host);
  for (const char* const text :
       {"", "<state", "<state plugin=\"Clampet\" parameterdelay=\"0.3\"/>", "no text"})
    EXPECT_NE(host->Restore(host->MakeState(text)), LV2_STATE_SUCCESS) << text;
  SavedState state = host->MakeState("<state parameterdelay=\"0.3\"/>");
  state.values.begin()->second.type = 9999;
  EXPECT_EQ(host->Restore(state), LV2_STATE_ERR_BAD_TYPE);
  EXPECT_EQ(GetText(*host), before);
}

TEST_F(Lv2States, FilesAreMappedByTheHost) {
  WriteStep();
  PathMap map("/nowhere");
  const auto host = Make("Playbox");
  host->Restore(host->MakeState(StepState()));
  for (const auto* const features : {map.GetFeatures(), map.GetFeaturesWithoutFree()}) {
    SavedState saved;
    EXPECT_EQ(host->Save(saved, features), LV2_STATE_SUCCESS);
    EXPECT_STREQ(GetFile(*host, saved).bytes.c_str(), "song/Step.wav");
    EXPECT_EQ(GetFile(*host, saved).type, host->GetNumbers().Get(LV2_ATOM__Path));
    EXPECT_EQ(GetFile(*host, saved).flags, uint32_t{LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE});
  }
  EXPECT_EQ(map.open, 1);
}

TEST_F(Lv2States, TheFileOfTheHostIsPlayedWhereItIsAnother) {
  WriteStep(0.25f);
  PathMap map(content_.GetFolder().GetPath().string());
  const auto host = Make("Playbox");
  host->Restore(host->MakeState(StepState()));
  SavedState saved;
  host->Save(saved, map.GetFeatures());
  WriteStep(0.75f, "song/Step.wav");
  EXPECT_EQ(host->Restore(saved, map.GetFeatures()), LV2_STATE_SUCCESS);
  EXPECT_EQ(Play(*host), 0.75f);
  EXPECT_EQ(GetAttribute(*host, "subpath"), "Imported" + content_.Path("song"));
  EXPECT_EQ(map.open, 0);
}

TEST_F(Lv2States, AFileOfTheSameBytesIsNotCopied) {
  WriteStep();
  WriteStep(0.5f, "song/Step.wav");
  PathMap map(content_.GetFolder().GetPath().string());
  const auto host = Make("Playbox");
  host->Restore(host->MakeState(StepState()));
  SavedState saved;
  host->Save(saved, map.GetFeatures());
  EXPECT_EQ(host->Restore(saved, map.GetFeatures()), LV2_STATE_SUCCESS);
  EXPECT_EQ(GetAttribute(*host, "subpath"), "Drums");
  EXPECT_FALSE(content_.Has("Samples/Imported"));
}

TEST_F(Lv2States, AMissingFileKeepsItsName) {
  PathMap map(content_.GetFolder().GetPath().string());
  const auto host = Make("Playbox");
  SavedState state = host->MakeState(StepState());
  GetFile(*host, state) = {"song/Step.wav", host->GetNumbers().Get(LV2_ATOM__Path), 0};
  EXPECT_EQ(host->Restore(state, map.GetFeatures()), LV2_STATE_SUCCESS);
  SavedState saved;
  EXPECT_EQ(host->Save(saved, map.GetFeatures()), LV2_STATE_SUCCESS);
  EXPECT_EQ(GetFile(*host, saved).bytes, "");
  EXPECT_EQ(GetAttribute(*host, "filename"), "Step.wav");
  EXPECT_EQ(GetAttribute(*host, "subpath"), "Drums");
}

TEST_F(Lv2States, MayBeSavedAndRestoredWhileBlocksRun) {
  WriteStep();
  for (const char* const name : {"Echolan", "Playbox"}) {
    const auto host = Make(name);
    host->Activate();
    std::thread other([&] {
      for (int i = 0; i < 50; ++i) {
        SavedState saved;
        EXPECT_EQ(host->Save(saved), LV2_STATE_SUCCESS);
        EXPECT_EQ(host->Restore(saved), LV2_STATE_SUCCESS);
      }
    });
    for (int i = 0; i < 200; ++i) {
      if (i % 20 == 0 && std::string_view(name) == "Playbox") host->AddMidi(3, {0x90, 60, 100});
      if (host->HasControl("delay")) host->Control("delay") = static_cast<float>(i % 100);
      host->Run(128);
    }
    other.join();
    for (const float sample : host->outLeft) EXPECT_TRUE(std::isfinite(sample));
  }
}

}  // namespace
