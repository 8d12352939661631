#pragma once
// What the command asks of the operating system.

#include <filesystem>
#include <string>

namespace cli {

// To be called first. A standard stream that is closed stays unusable, but no file that is opened later gets
// its number. A write to a closed pipe or beyond the limit of file sizes becomes an error.
void PrepareProcess() noexcept;

// The folder that the program lies in, links followed.
std::filesystem::path GetProgramFolder();

bool IsErrorTerminal() noexcept;

// Why a file cannot be read as far as its folder tells, or nothing.
std::string WhyUnreadable(const std::string& path);

// The two names lead to one file, also through links, that cannot be read while it is written.
bool IsSameFile(const std::string& path, const std::string& other) noexcept;

// The text of an error number.
std::string ErrorText(int error);

}  // namespace cli
