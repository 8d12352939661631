#pragma once
#include <clap/ext/params.h>

#include <string_view>

#include "hosts/bridge/DawParameters.h"

namespace clap {

// The functions of the extension "clap.params".
extern const clap_plugin_params_t kParameters;

// The value in table units that a host means: one that keeps values as floats means the decimal number behind
// it, and whole values are cut. It may lie outside of the range. [any]
double ReadValue(const bridge::DawParameter& parameter, double value) noexcept;

// Copies a text and its end; characters that do not fit as a whole stay away. [any]
void CopyText(char* to, std::size_t size, std::string_view text) noexcept;

}  // namespace clap
