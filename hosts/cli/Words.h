#pragma once
// Numbers and names as the user types and reads them.

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

// A decimal number, whatever the locale: "0.5", "-3", "+1e-3". Anything else, blanks and further text too,
// and what is not finite, is none.
std::optional<double> ParseNumber(std::string_view text) noexcept;

// The shortest text that gives this number again: "0.8". Without an exponent within 0.0001 to 1e15.
std::string NumberText(double value);

// The name with the fewest letters to change, case aside; `names` is not empty.
std::string_view NearestName(std::span<const std::string_view> names, std::string_view name);

// The text with small letters for A to Z.
std::string ToLower(std::string text);

// The text with "?" for each control character: names of files may hold anything.
std::string OneLine(std::string text);

// One line per row, with its texts in columns of equal width, two blanks between them.
std::vector<std::string> Columns(const std::vector<std::vector<std::string>>& rows);

}  // namespace cli
