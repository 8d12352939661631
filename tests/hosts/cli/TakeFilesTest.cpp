#include "hosts/cli/TakeFiles.h"

#include <gtest/gtest.h>

using cli::ParseTakeName;

namespace {

struct Name {
  const char* name;
  const char* take;
  const char* track;
  int32_t layer;  // -1: none
};

TEST(TakeNames, TellTakeLayerAndTrack) {
  for (const Name& name : {Name{"kick_v3_2_oh", "kick_v3_2", "oh", 3},
                           {"kick_v3_2", "kick_v3_2", "main", 3},
                           {"kick-Vel12-close left", "kick-Vel12", "close left", 12},
                           {"kick layer1 RR2 oh", "kick layer1 RR2", "oh", 1},
                           {"1", "1", "main", -1},
                           {"snare.take04.room", "snare.take04", "room", -1},
                           {"tom 14 3_oh", "tom 14 3", "oh", -1},
                           {"kick", "kick", "main", -1},
                           {"snare_hard", "snare_hard", "main", -1},
                           {"kick01_oh", "kick01_oh", "main", -1},
                           {"v_2", "v_2", "main", -1},
                           {"a_1__", "a_1", "main", -1},
                           {"x 99999999999", "x 99999999999", "main", -1},
                           {"", "", "main", -1}}) {
    const cli::TakeFile file = ParseTakeName(name.name);
    EXPECT_EQ(file.take, name.take) << name.name;
    EXPECT_EQ(file.track, name.track) << name.name;
    EXPECT_EQ(file.layer.value_or(-1), name.layer) << name.name;
  }
}

}  // namespace
