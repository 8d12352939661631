// Notes, by an instrument that needs no file: a tone of 0.3 s.

#include <gmock/gmock.h>

#include "tests/hosts/clap/TestHost.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int32_t kTone = 14400;  // frames
constexpr int32_t kFade = 960;    // of a release
constexpr int32_t kChoke = 240;

class ClapNotes : public testing::Test {
 protected:
  ClapNotes() {
    EXPECT_TRUE(plugin_.LoadState(R"(<state><envelope1 length="0.3" enabled="1" volume="0.8"/></state>)"));
    EXPECT_TRUE(plugin_.Activate());
  }

  // Runs on, in blocks of 64.
  AudioBlock Run(int32_t frames, const std::vector<TestEvent>& events = {}) {
    return plugin_.Run(AudioBlock(2, frames), events, {64});
  }
  // The notes whose end was told since the last call, by their ids.
  std::vector<int32_t> TakeEnds() {
    std::vector<int32_t> ids;
    for (const TestEvent& event : plugin_.told_.events_) {
      EXPECT_EQ(event.header.type, CLAP_EVENT_NOTE_END);
      EXPECT_LT(event.header.time, 64u);
      ids.push_back(event.note.note_id);
    }
    plugin_.told_.events_.clear();
    return ids;
  }
  static TestEvent On(int32_t id, int32_t key, int32_t channel = 0, uint32_t frame = 0) {
    return NoteAt(frame, CLAP_EVENT_NOTE_ON, id, channel, key);
  }
  static TestEvent Off(int32_t id, int32_t key, int32_t channel) {
    return NoteAt(0, CLAP_EVENT_NOTE_OFF, id, channel, key);
  }

  TestHost host_;
  ClapPlugin plugin_{"com.sonvelle.toneloom4nn", host_};
};

TEST_F(ClapNotes, SoundFromTheirFrameOn) {
  const AudioBlock out = Run(2000, {On(1, 60, 0, 1000)});
  for (int32_t i = 0; i < 1000; ++i) ASSERT_EQ(out[0][i], 0) << i;
  EXPECT_TRUE(std::any_of(out[0] + 1000, out[0] + 1010, [](float each) { return each != 0; }));
}

TEST_F(ClapNotes, SoundAsThoseOfMidi) {
  for (int32_t velocity = 1; velocity < 128; velocity += 7) {
    for (const double given : {velocity / 127.0, double{static_cast<float>(velocity / 127.0)}}) {
      plugin_->reset(plugin_.Get());
      const AudioBlock midi = Run(500, {MidiAt(3, 0x90, 64, static_cast<uint8_t>(velocity))});
      plugin_->reset(plugin_.Get());
      EXPECT_TRUE(Run(500, {NoteAt(3, CLAP_EVENT_NOTE_ON, 1, 0, 64, given)}) == midi) << velocity;
      EXPECT_FALSE(midi.IsZero());
    }
  }
}

TEST_F(ClapNotes, TellTheirEndWhenTheyEndByThemselves) {
  Run(kTone - 64, {On(7, 60)});
  EXPECT_THAT(TakeEnds(), IsEmpty());
  EXPECT_EQ(plugin_.status_, CLAP_PROCESS_CONTINUE);
  Run(128);
  ASSERT_EQ(plugin_.told_.events_.size(), 1u);
  const clap_event_note_t& end = plugin_.told_.events_[0].note;
  EXPECT_TRUE(end.channel == 0 && end.key == 60 && end.port_index == 0);
  EXPECT_THAT(TakeEnds(), ElementsAre(7));
  EXPECT_EQ(plugin_.status_, CLAP_PROCESS_SLEEP);
}

TEST_F(ClapNotes, WithTheVelocityNothingAreNotReleases) {
  Run(64, {On(1, 60)});
  Run(2 * kFade, {NoteAt(0, CLAP_EVENT_NOTE_ON, 2, 0, 60, 0)});
  EXPECT_THAT(TakeEnds(), IsEmpty());
}

TEST_F(ClapNotes, AreReleasedByTheirId) {
  Run(64, {On(1, 60), On(2, 60), On(3, 60)});
  Run(2 * kFade, {Off(2, -1, -1)});
  EXPECT_THAT(TakeEnds(), ElementsAre(2));
  Run(2 * kFade, {Off(3, 60, 0)});
  EXPECT_THAT(TakeEnds(), ElementsAre(3));
  Run(2 * kFade, {Off(1, 61, 0)});  // another key
  EXPECT_THAT(TakeEnds(), IsEmpty());
}

TEST_F(ClapNotes, AreReleasedByTheirKeyOrChannelOrAll) {
  Run(64, {On(1, 60, 0), On(2, 61, 0), On(3, 60, 5), On(4, 62, 5), On(5, 63, 6)});
  Run(2 * kFade, {Off(-1, 60, -1)});
  EXPECT_THAT(TakeEnds(), ElementsAre(1, 3));
  Run(2 * kFade, {Off(-1, -1, 5)});
  EXPECT_THAT(TakeEnds(), ElementsAre(4));
  Run(2 * kFade, {Off(-1, -1, -1)});
  EXPECT_THAT(TakeEnds(), ElementsAre(2, 5));
}

TEST_F(ClapNotes, ChokedEndInFiveMilliseconds) {
  Run(64, {On(1, 60), On(2, 61)});
  Run(kChoke + 63, {NoteAt(0, CLAP_EVENT_NOTE_CHOKE, -1, -1, 61)});
  EXPECT_THAT(TakeEnds(), ElementsAre(2));
  Run(kChoke + 63, {MidiAt(0, 0x90, 70, 100), NoteAt(1, CLAP_EVENT_NOTE_CHOKE, -1, -1, -1)});
  EXPECT_THAT(TakeEnds(), ElementsAre(1));
  EXPECT_EQ(plugin_.status_, CLAP_PROCESS_SLEEP);
}

TEST_F(ClapNotes, OfOneKeyWithoutIdsTellOneEnd) {
  Run(64, {On(-1, 60)});
  Run(kTone - 64, {On(-1, 60)});  // the first one has ended
  EXPECT_THAT(TakeEnds(), IsEmpty());
  Run(128);
  EXPECT_THAT(TakeEnds(), ElementsAre(-1));
}

TEST_F(ClapNotes, OfMidiTellNoEnd) {
  Run(64, {MidiAt(0, 0x90, 60, 100)});
  EXPECT_EQ(plugin_.status_, CLAP_PROCESS_CONTINUE);
  Run(2 * kFade, {MidiAt(0, 0x80, 60, 0)});
  EXPECT_THAT(TakeEnds(), IsEmpty());
  EXPECT_EQ(plugin_.status_, CLAP_PROCESS_SLEEP);
}

TEST_F(ClapNotes, AreHeldByThePedal) {
  Run(64, {MidiAt(0, 0xB0, 64, 127), On(1, 60)});
  Run(2 * kFade, {Off(1, -1, -1)});
  EXPECT_THAT(TakeEnds(), IsEmpty());
  Run(2 * kFade, {MidiAt(0, 0xB0, 64, 0)});
  EXPECT_THAT(TakeEnds(), ElementsAre(1));
}

TEST_F(ClapNotes, OfNoKeyOrChannelOrPortAreNotPlayed) {
  std::vector<TestEvent> events = {On(1, -1),     On(2, 128), On(3, 60, -1),
                                   On(4, 60, 16), On(5, 60),  MidiAt(0, 0x90, 60, 100)};
  events[4].note.port_index = 1;
  events[5].midi.port_index = 1;
  EXPECT_TRUE(Run(500, events).IsZero());
  EXPECT_THAT(TakeEnds(), IsEmpty());
}

TEST_F(ClapNotes, ThatAHostDoesNotWantToHearOfAreForgotten) {
  plugin_.told_.refuses_ = true;
  Run(kTone + 64, {On(1, 60)});
  plugin_.told_.refuses_ = false;
  Run(kTone + 64, {On(2, 60)});
  EXPECT_THAT(TakeEnds(), ElementsAre(2));
}

TEST_F(ClapNotes, ThatAResetCutsTellTheirEndAndThoseBeforeADeactivationDoNot) {
  Run(64, {On(1, 60)});
  plugin_->reset(plugin_.Get());
  EXPECT_TRUE(Run(64).IsZero());
  EXPECT_THAT(TakeEnds(), ElementsAre(1));
  Run(64, {On(2, 60)});
  plugin_.Deactivate();
  plugin_.Activate();
  EXPECT_TRUE(Run(64).IsZero());
  EXPECT_THAT(TakeEnds(), IsEmpty());
}

TEST_F(ClapNotes, InThousandsLoseNothing) {
  for (int32_t i = 0; i < 5000; ++i) Run(64, {On(i, i % 128, i % 16)});
  Run(kTone + 64);
  EXPECT_EQ(TakeEnds().size(), 5000u);
}

TEST_F(ClapNotes, AreNotPlayedByFlush) {
  plugin_.Flush({On(1, 60)});
  EXPECT_TRUE(Run(500).IsZero());
}

TEST_F(ClapNotes, SoundTheSameOffline) {
  const std::vector<TestEvent> events = {On(1, 60), On(2, 67, 0, 777)};
  const AudioBlock live = Run(3000, events);
  plugin_->reset(plugin_.Get());
  const auto* const render = plugin_.Find<sonvelle_clap_plugin_render_t>(SONVELLE_CLAP_EXT_RENDER);
  EXPECT_FALSE(render->has_hard_realtime_requirement(plugin_.Get()));
  EXPECT_FALSE(render->set(plugin_.Get(), 2));
  EXPECT_TRUE(render->set(plugin_.Get(), SONVELLE_CLAP_RENDER_OFFLINE));
  EXPECT_TRUE(Run(3000, events) == live);
  EXPECT_TRUE(render->set(plugin_.Get(), SONVELLE_CLAP_RENDER_REALTIME));
}

}  // namespace
