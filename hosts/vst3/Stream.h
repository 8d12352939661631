#pragma once
#include <travesty/base.h>
#include <travesty/bstream.h>

#include <optional>
#include <string>

namespace vst3 {

// All that is left in a stream of the host, which may give it in any portions; none if that fails.
std::optional<std::string> ReadAll(v3_bstream** stream);
// Whether all of the text was taken, in whatever portions.
bool WriteAll(v3_bstream** stream, std::string_view text);

}  // namespace vst3
