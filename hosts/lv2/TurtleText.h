#pragma once
#include <string>
#include <string_view>

namespace lv2 {

// The lines that name the prefixes of what the bundle says.
extern const char kPrefixes[];

// A text in quotation marks, on one line.
std::string Quote(std::string_view text);
// As few digits as give this float again.
std::string FloatText(float value);
// A whole number without a point.
std::string WholeText(float value);
// <URI>, or <URI#part>.
std::string Reference(std::string_view uri, std::string_view part = {});

}  // namespace lv2
