#pragma once
// Collects what guards report, on any thread. One at a time.

#include <mutex>
#include <string>
#include <vector>

#include "core/MGuard.h"
#include "tests/common/Texts.h"

class ReportedTexts {
 public:
  ReportedTexts() {
    texts.clear();
    MSetFatalHook([](const MString& text) {
      const std::lock_guard held(mutex);
      texts.push_back(Utf8(text));
    });
  }
  ReportedTexts(const ReportedTexts&) = delete;
  ReportedTexts& operator=(const ReportedTexts&) = delete;
  ~ReportedTexts() { MSetFatalHook(nullptr); }

  static void Clear() {
    const std::lock_guard held(mutex);
    texts.clear();
  }
  static std::vector<std::string> Get() {
    const std::lock_guard held(mutex);
    return texts;
  }

 private:
  static inline std::mutex mutex;
  static inline std::vector<std::string> texts;
};
