#include "hosts/cli/Words.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>

namespace cli {

namespace {

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

// Levenshtein's distance: letters to insert, drop or replace.
std::size_t Distance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t replaced = diagonal + (Lower(from[i]) == Lower(to[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

// Letters as a terminal counts them: bytes of UTF-8 that begin one.
std::size_t Width(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

std::optional<double> ParseNumber(std::string_view text) noexcept {
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::string NumberText(double value) {
  const double magnitude = std::abs(value);
  const bool isPlain = magnitude == 0 || (magnitude >= 1e-4 && magnitude < 1e15);
  char text[32];
  const auto [end, error] = std::to_chars(text, text + sizeof text, value,
                                          isPlain ? std::chars_format::fixed : std::chars_format::scientific);
  return error == std::errc() ? std::string(text, end) : std::string();
}

std::string ToLower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), Lower);
  return text;
}

std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; }, '?');
  return text;
}

std::string_view NearestName(std::span<const std::string_view> names, std::string_view name) {
  return *std::min_element(names.begin(), names.end(), [name](std::string_view a, std::string_view b) {
    return Distance(name, a) < Distance(name, b);
  });
}

std::vector<std::string> Columns(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Width(row[i]));
  }
  std::vector<std::string> lines;
  for (const auto& row : rows) {
    std::string& line = lines.emplace_back();
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += row[i];
      if (i + 1 < row.size()) line.append(widths[i] + 2 - Width(row[i]), ' ');
    }
  }
  return lines;
}

}  // namespace cli
