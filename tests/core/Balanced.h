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
// Every time it must raise "Out of memory."; `check(subject)` then looks whether all is as it was, and once
// the subject is gone its memory must be so too. Returns the number of requests.
template <typename Make, typename Use, typename Check>
int FailEachRequest(Make make, Use use, Check check) {
  for (int request = 0;; ++request) {
    const int64_t balance = CountingFunctions::GetBalance();
    bool isDone = false;
    {
      auto subject = make();
      CountingFunctions::FailAfter(request);
      try {
        use(subject);
        isDone = true;
      } catch (const MException& raised) {
        EXPECT_EQ(raised.message, "Out of memory.");
      }
      CountingFunctions::FailAfter(-1);
      if (!isDone) check(subject);
    }
    EXPECT_EQ(CountingFunctions::GetBalance(), balance) << "request " << request << " leaked";
    if (isDone) return request;
  }
}
