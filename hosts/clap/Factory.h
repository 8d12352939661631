#pragma once
#include <clap/plugin-factory.h>

namespace clap {

// The plug-ins of this binary.
extern const clap_plugin_factory_t kFactory;

}  // namespace clap
