#pragma once
// The fixture of tests on a counting table: at the end of each one all memory has come back.

#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"

class Balanced : public testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(table.GetBalance(), 0) << "blocks leaked";
    EXPECT_EQ(table.GetHookCalls(), 0) << "the reserved hooks are never called";
  }

  CountingFunctions table;
};

// Lets each request for memory that `use(subject)` makes fail in turn, on a subject that `make` builds anew.
// Every time it must raise "Out of memory."; `check(subject)` then looks whether all is as it was. Returns
// the number of requests.
template <typename Make, typename Use, typename Check>
int FailEachRequest(Make make, Use use, Check check) {
  for (int request = 0;; ++request) {
    auto subject = make();
    const int64_t balance = CountingFunctions::GetBalance();
    CountingFunctions::FailAfter(request);
    try {
      use(subject);
      CountingFunctions::FailAfter(-1);
      return request;
    } catch (const MException& raised) {
      CountingFunctions::FailAfter(-1);
      EXPECT_EQ(raised.message, "Out of memory.");
    }
    EXPECT_EQ(CountingFunctions::GetBalance(), balance) << "request " << request << " leaked";
    check(subject);
  }
}
