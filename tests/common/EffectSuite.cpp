#include "tests/common/EffectSuite.h"

namespace {

struct AllowanceRow {
  std::string effect;
  Allowance allowance;
  const char* reason;
};

// An effect that needs an allowance gets a row here. None does so far.
const std::vector<AllowanceRow> kAllowances = {};

}  // namespace

bool EffectSuite::IsAllowed(Allowance allowance) const {
  return std::any_of(kAllowances.begin(), kAllowances.end(), [&](const AllowanceRow& row) {
    return row.effect == GetParam().name && row.allowance == allowance;
  });
}

INSTANTIATE_TEST_SUITE_P(Effects, EffectSuite, testing::ValuesIn(GetAllEffects()), NameOfEffect);
