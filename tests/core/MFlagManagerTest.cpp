#include "core/MFlagManager.h"

#include "core/MObject.h"
#include "tests/core/Balanced.h"

namespace {

using MFlagManagerTest = Balanced;

TEST_F(MFlagManagerTest, GivesTheDefaultForANameThatWasNotSet) {
  MFlagManager<8> flags;
  EXPECT_EQ(flags.GetFlag("zoom", 7), 7);
}

TEST_F(MFlagManagerTest, KeepsTheLastValueOfAName) {
  MFlagManager<8> flags;
  flags.SetFlag("zoom", 1);
  flags.SetFlag("grid", -2);
  flags.SetFlag("Zoom", 3);
  EXPECT_EQ(flags.GetFlag("ZOOM", 0), 3);
  EXPECT_EQ(flags.GetFlag(Buffer("grid"), 0), -2);
  EXPECT_EQ(flags.GetFlag("gri", 5), 5);
}

TEST_F(MFlagManagerTest, OneNameTooManyRaisesAndKeepsTheOthers) {
  MFlagManager<8> flags;
  for (int32_t i = 0; i < 8; ++i) flags.SetFlag(MString::FromInteger(i), i);
  EXPECT_RAISES(flags.SetFlag("8", 8), "Index out of range.", 0);
  for (int32_t i = 0; i < 8; ++i) flags.SetFlag(MString::FromInteger(i), i + 10);
  for (int32_t i = 0; i < 8; ++i) EXPECT_EQ(flags.GetFlag(MString::FromInteger(i), -1), i + 10);
  EXPECT_EQ(flags.GetFlag("8", -1), -1);
}

class Graph final : public MObject, public MFlagManager<32> {};

TEST_F(MFlagManagerTest, IsASecondBaseThatNeedsNoMemory) {
  Graph graph;
  graph.SetFlag("grid", 1);
  EXPECT_EQ(Graph(graph).GetFlag("grid", 0), 1);
  EXPECT_EQ(table.GetCalls(), 0);
}

}  // namespace
