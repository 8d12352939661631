#pragma once
// What surrounds a process, changed for the length of a test.

#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "tests/common/TemporaryFolder.h"

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
