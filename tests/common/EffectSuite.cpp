#include "tests/common/EffectSuite.h"

namespace {

struct AllowanceRow {
  std::string effect;
  Allowance allowance;
  const char* reason;
};

// An effect that needs an allowance gets a row here.
const std::vector<AllowanceRow> kAllowances = {
    {"Bellwarp", Allowance::kBlocksChangeRounding, "the phases are wrapped once a block"},
    {"Bendform", Allowance::kLocks, "the curve is rebuilt while blocks pass"},
    {"Bendform", Allowance::kPassesNoNumber, "a sample that is not finite is on no curve"},
    {"Clampet", Allowance::kPassesNoNumber, "a sample that is no number is on no curve"},
    {"Imprinta", Allowance::kBlocksAreHeard,
     "a repair is as long as half a block, and channels share a place"},
    {"Imprinta", Allowance::kLocks, "the taps are changed while blocks pass"},
    {"Lumascope", Allowance::kPassesNoNumber, "the output is the input"},
    {"Pulsetta", Allowance::kBlocksChangeRounding, "the phases are wrapped once a block"},
    {"Pulsetta", Allowance::kLocks, "the wave is rebuilt while blocks pass"},
    {"Quaverly", Allowance::kBlocksAreHeard, "a repair is as long as half a block"},
    {"Quaverly", Allowance::kLocks, "the wave is rebuilt while blocks pass"},
    {"Roamplex", Allowance::kBlocksChangeRounding, "the phase is wrapped once a block"},
    {"Squeezel", Allowance::kLocks, "the curve is rebuilt while blocks pass"},
    {"Squeezel", Allowance::kNeedsMarks, "older states hold half of the gain, and a slope"},
    {"Swirlo", Allowance::kBlocksAreHeard, "a repair is as long as half a block"},
};

}  // namespace

bool EffectSuite::IsAllowed(Allowance allowance) const {
  return std::any_of(kAllowances.begin(), kAllowances.end(), [&](const AllowanceRow& row) {
    return row.effect == GetParam().name && row.allowance == allowance;
  });
}

INSTANTIATE_TEST_SUITE_P(Effects, EffectSuite, testing::ValuesIn(GetAllEffects()), NameOfEffect);
