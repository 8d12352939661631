#include "hosts/cli/Print.h"

#include <cerrno>
#include <cstdio>

#include "hosts/cli/Failure.h"
#include "hosts/cli/System.h"

namespace cli {

void Print(const std::string& text) {
  errno = 0;
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
    throw Failure(ExitCode::kOutput, "standard output: " + ErrorText(errno));
}

}  // namespace cli
