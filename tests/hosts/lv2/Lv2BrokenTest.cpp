// Messages and states that are not as they should be.

#include <algorithm>

#include "tests/hosts/lv2/Lv2Test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kSample[] = "https://sonvelle.example/plugins/Playbox#sample";

class Lv2Broken : public Lv2Test {
 protected:
  Lv2Broken() {
    content_.WriteSample("Samples/Drums/Step.wav", {std::vector<float>(480, 0.5f)}, 48000);
    host_ = Make("Playbox", {.work = Work::kNone});
    EXPECT_EQ(host_->Restore(host_->MakeState(kState)), LV2_STATE_SUCCESS);
    host_->Run(64);
  }
  void ExpectOldFile() {
    EXPECT_EQ(GetAttribute(*host_, "filename"), "Step.wav");
    EXPECT_EQ(GetAttribute(*host_, "subpath"), "Drums");
    host_->AddMidi(0, {0x90, 60, 127});
    host_->Run(64);
    EXPECT_EQ(host_->outLeft[63], 0.5f);
    host_->Run(4096);  // to the end of the sample
  }
  SavedState::Value& GetFile(SavedState& state) { return state.values[host_->GetNumbers().Get(kSample)]; }

  static constexpr char kState[] =
      "<state plugin=\"Playbox\" subpath=\"Drums\" filename=\"Step.wav\" CustomSamplePath=\"0\"/>";
  std::unique_ptr<Lv2Host> host_;
};

TEST_F(Lv2Broken, MessagesWithoutAPathAreAnsweredWithTheFileThatIsPlayed) {
  for (const bool isNumber : {true, false}) {
    host_->AddSetOfNoPath(kSample, isNumber);
    host_->Run(64);
    EXPECT_THAT(host_->GetToldPaths(), ElementsAre(content_.Path("Samples/Drums/Step.wav")));
    ExpectOldFile();
  }
}

// Whether the event, its object or the path in it ends too early, or goes on behind the buffer.
TEST_F(Lv2Broken, MessagesWhoseSizesAreWrongLoadNothing) {
  content_.WriteSample("Samples/New.wav", {{1, 1}});
  const std::string path = content_.Path("Samples/New.wav");
  for (const uint32_t cut : {1u, 8u, 15u, 16u, 24u, 32u, 40u, 48u, 1000000u})
    for (const bool isLonger : {false, true}) {
      host_->AddSet(kSample, path);
      auto* const event = reinterpret_cast<LV2_Atom_Event*>(&host_->GetEvents()->body + 1);
      event->body.size =
          isLonger ? event->body.size + cut + 8 : event->body.size - std::min(cut + 8, event->body.size);
      host_->Run(64);
      ExpectOldFile();
    }
  for (const uint32_t size : {~0u, 100000u, 5u}) {
    host_->AddSet(kSample, path);
    auto* const text =
        std::search(reinterpret_cast<char*>(host_->GetEvents()),
                    reinterpret_cast<char*>(host_->GetEvents()) + 4096, path.begin(), path.end());
    reinterpret_cast<LV2_Atom*>(text)[-1].size = size;
    host_->Run(64);
    ExpectOldFile();
  }
}

TEST_F(Lv2Broken, FilesOfStatesThatAreNoPathsAreThoseOfTheText) {
  LV2_State_Map_Path map = {nullptr, nullptr, nullptr};
  const LV2_Feature feature = {LV2_STATE__mapPath, &map};
  const LV2_Feature* const withoutFunctions[] = {&feature, nullptr};
  LV2_State_Map_Path null = {nullptr, [](void*, const char*) -> char* { return nullptr; },
                             [](void*, const char*) -> char* { return nullptr; }};
  const LV2_Feature nulls = {LV2_STATE__mapPath, &null};
  const LV2_Feature* const withNulls[] = {&nulls, nullptr};
  LV2_State_Map_Path same = {nullptr, [](void*, const char* path) { return strdup(path); },
                             [](void*, const char* path) { return strdup(path); }};
  const LV2_Feature sames = {LV2_STATE__mapPath, &same};
  const LV2_Feature* const withSame[] = {&sames, nullptr};

  content_.WriteSample("elsewhere/Far.wav", {{1, 1}});
  const std::string far = content_.Path("elsewhere/Far.wav");
  const LV2_URID path = host_->GetNumbers().Get(LV2_ATOM__Path),
                 number = host_->GetNumbers().Get(LV2_ATOM__Int);
  for (const LV2_Feature* const* const features : {withoutFunctions, withNulls, withSame})
    for (const SavedState::Value& value :
         {SavedState::Value{far, number, 0}, SavedState::Value{"", path, 0},
          SavedState::Value{"elsewhere", path, 0}, SavedState::Value{std::string(100000, '/'), path, 0}}) {
      SavedState state = host_->MakeState(kState);
      GetFile(state) = value;
      EXPECT_EQ(host_->Restore(state, features), LV2_STATE_SUCCESS);
      SavedState saved;
      EXPECT_EQ(host_->Save(saved, features), LV2_STATE_SUCCESS);
      ExpectOldFile();
    }
  SavedState state = host_->MakeState(kState);
  GetFile(state) = {far, path, 0};
  EXPECT_EQ(host_->Restore(state, withSame), LV2_STATE_SUCCESS) << "a path without its end";
  EXPECT_EQ(GetAttribute(*host_, "filename"), "Far.wav");
}

TEST_F(Lv2Broken, TextsOfStatesMayLackTheirEnd) {
  SavedState state = host_->MakeState(kState);
  state.values.begin()->second.bytes += std::string(3, '\0') + "<";
  EXPECT_EQ(host_->Restore(state), LV2_STATE_SUCCESS);
  ExpectOldFile();
  const auto& descriptor = GetDescriptor("Playbox");
  const auto& states =
      *static_cast<const LV2_State_Interface*>(descriptor.extension_data(LV2_STATE__interface));
  EXPECT_NE(states.restore(host_->GetHandle(), nullptr, nullptr, 0, nullptr), LV2_STATE_SUCCESS);
  EXPECT_NE(states.save(host_->GetHandle(), nullptr, nullptr, 0, nullptr), LV2_STATE_SUCCESS);
  EXPECT_NE(states.restore(nullptr, nullptr, nullptr, 0, nullptr), LV2_STATE_SUCCESS);
  ExpectOldFile();
}

}  // namespace
