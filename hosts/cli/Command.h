#pragma once

namespace cli {

// The command `sonvelle` with the arguments of main; returns its exit code.
int RunCommand(int argc, char** argv) noexcept;

}  // namespace cli
