#pragma once
// What the tests of files and folders share.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "core/MList.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/Texts.h"

// A path of the system, or any UTF-8, as a text.
inline MString Text(const std::string& utf8) {
  std::u16string units;
  for (const char16_t unit : std::filesystem::path(utf8).u16string()) units += unit;
  return MString(std::u16string_view(units));
}

inline std::vector<std::string> Names(const MList<MString>& list) {
  std::vector<std::string> names;
  for (const MString& name : list) names.push_back(Utf8(name));
  return names;
}

// A variable of the environment for the length of a test; null unsets it.
class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) {
    if (const char* const before = std::getenv(name)) before_ = before;
    Set(value);
  }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;
  ~Variable() { Set(before_ ? before_->c_str() : nullptr); }

 private:
  void Set(const char* value) const {
    if (value)
      setenv(name_, value, 1);
    else
      unsetenv(name_);
  }

  const char* name_;
  std::optional<std::string> before_;
};

// Permissions mean nothing to root: while this lives the process is an ordinary user, who can reach `folder`
// as its owner.
class OrdinaryUser {
 public:
  explicit OrdinaryUser(const TemporaryFolder& folder) {
    if (geteuid() != 0) return;
    isChanged_ = chown(folder.GetPath().c_str(), kNobody, kNobody) == 0 && seteuid(kNobody) == 0;
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;
  ~OrdinaryUser() {
    if (isChanged_ && seteuid(0) != 0) std::abort();
  }
  static bool IsInForce() { return geteuid() != 0; }

 private:
  static constexpr uid_t kNobody = 65534;
  bool isChanged_ = false;
};
