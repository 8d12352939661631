// The layout of the records that host and plug-in share. It is binary interface: an assertion that fails here
// is a mistake in the record, never in this file. Compiled in every tree, and once more for 32 bits.

#include <cstddef>

#include "plugin/MHostInterface.h"

namespace {

constexpr bool kIs32 = sizeof(void*) == 4;

#define EXPECT_AT(record, field, on32, on64)                          \
  static_assert(offsetof(record, field) == (kIs32 ? (on32) : (on64)), \
                #record "::" #field " lies at another place")
#define EXPECT_SIZE(type, on32, on64) \
  static_assert(sizeof(type) == (kIs32 ? (on32) : (on64)), #type " has another size")
#define EXPECT_WIDTH(record, field, width) \
  static_assert(sizeof(record::field) == (width), #record "::" #field " has another width")

EXPECT_SIZE(MWord, 4, 8);
EXPECT_SIZE(MString, 12, 16);

EXPECT_SIZE(MServiceArguments, 32, 64);
EXPECT_SIZE(MServiceArguments::Slot, 8, 16);
EXPECT_AT(MServiceArguments, slot, 0, 0);
EXPECT_AT(MServiceArguments, slot[0].kind, 0, 0);
EXPECT_AT(MServiceArguments, slot[0].value, 4, 8);
EXPECT_AT(MServiceArguments, slot[1].kind, 8, 16);
EXPECT_AT(MServiceArguments, slot[1].value, 12, 24);
EXPECT_AT(MServiceArguments, slot[2].kind, 16, 32);
EXPECT_AT(MServiceArguments, slot[2].value, 20, 40);
EXPECT_AT(MServiceArguments, slot[3].kind, 24, 48);
EXPECT_AT(MServiceArguments, slot[3].value, 28, 56);
EXPECT_WIDTH(MServiceArguments::Slot, kind, 4);

EXPECT_SIZE(MPluginPublicBlock, 20, 40);
EXPECT_AT(MPluginPublicBlock, hostFlag0, 0, 0);
EXPECT_AT(MPluginPublicBlock, hostFlag1, 1, 1);
EXPECT_AT(MPluginPublicBlock, pluginFlag, 2, 2);
EXPECT_AT(MPluginPublicBlock, parameters, 4, 8);
EXPECT_AT(MPluginPublicBlock, parameterCount, 8, 16);
EXPECT_AT(MPluginPublicBlock, editors, 12, 24);
EXPECT_AT(MPluginPublicBlock, editorCount, 16, 32);
EXPECT_WIDTH(MPluginPublicBlock, hostFlag0, 1);
EXPECT_WIDTH(MPluginPublicBlock, hostFlag1, 1);
EXPECT_WIDTH(MPluginPublicBlock, pluginFlag, 1);
EXPECT_WIDTH(MPluginPublicBlock, parameterCount, 4);
EXPECT_WIDTH(MPluginPublicBlock, editorCount, 4);

EXPECT_SIZE(MPluginEditorRow, 24, 40);
EXPECT_AT(MPluginEditorRow, kind, 0, 0);
EXPECT_AT(MPluginEditorRow, name, 4, 8);
EXPECT_AT(MPluginEditorRow, available, 16, 24);
EXPECT_AT(MPluginEditorRow, editor, 20, 32);
EXPECT_WIDTH(MPluginEditorRow, kind, 4);
EXPECT_WIDTH(MPluginEditorRow, available, 4);

EXPECT_SIZE(MPluginParameter, 104, 136);
static_assert(alignof(MPluginParameter) == 8, "doubles are shared whole only where they are aligned");
EXPECT_AT(MPluginParameter, kind, 0, 0);
EXPECT_AT(MPluginParameter, name, 4, 8);
EXPECT_AT(MPluginParameter, key, 16, 24);
EXPECT_AT(MPluginParameter, help, 28, 40);
EXPECT_AT(MPluginParameter, reserved, 40, 56);
EXPECT_AT(MPluginParameter, formatter, 44, 64);
EXPECT_AT(MPluginParameter, unit, 48, 72);
EXPECT_AT(MPluginParameter, automatable, 60, 88);
EXPECT_AT(MPluginParameter, changed, 96, 128);
EXPECT_WIDTH(MPluginParameter, kind, 4);
EXPECT_WIDTH(MPluginParameter, automatable, 4);
EXPECT_WIDTH(MPluginParameter, changed, 4);

EXPECT_AT(MPluginParameter, real.minimum, 64, 96);
EXPECT_AT(MPluginParameter, real.maximum, 72, 104);
EXPECT_AT(MPluginParameter, real.defaultValue, 80, 112);
EXPECT_AT(MPluginParameter, real.value, 88, 120);
EXPECT_WIDTH(MPluginParameter::Real, value, 8);

EXPECT_AT(MPluginParameter, integer.minimum, 64, 96);
EXPECT_AT(MPluginParameter, integer.maximum, 68, 100);
EXPECT_AT(MPluginParameter, integer.defaultValue, 72, 104);
EXPECT_AT(MPluginParameter, integer.value, 76, 108);
EXPECT_WIDTH(MPluginParameter::Integer, value, 4);

EXPECT_AT(MPluginParameter, enumeration.choices, 64, 96);
EXPECT_AT(MPluginParameter, enumeration.count, 68, 104);
EXPECT_AT(MPluginParameter, enumeration.defaultValue, 72, 108);
EXPECT_AT(MPluginParameter, enumeration.value, 76, 112);
EXPECT_WIDTH(MPluginParameter::Enumeration, value, 4);

EXPECT_AT(MPluginParameter, onOff.defaultValue, 64, 96);
EXPECT_AT(MPluginParameter, onOff.value, 68, 100);
EXPECT_WIDTH(MPluginParameter::Switch, value, 4);

EXPECT_AT(MPluginParameter, panel.zero, 64, 96);
EXPECT_AT(MPluginParameter, panel.open, 68, 104);

EXPECT_SIZE(MLibraryFunctions, 20, 40);
EXPECT_SIZE(MLibraryRecord, 20, 32);
EXPECT_AT(MLibraryRecord, functions, 0, 0);
EXPECT_AT(MLibraryRecord, lock, 4, 8);
EXPECT_AT(MLibraryRecord, name, 8, 16);

EXPECT_SIZE(MNamedService, 8, 16);
EXPECT_AT(MNamedService, name, 0, 0);
EXPECT_AT(MNamedService, function, 4, 8);

// Hosts read a module in place. It has a base with virtual operations: gcc and clang lay it out all the same.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
constexpr std::size_t kResourcesEnd = (kIs32 ? 28 : 40) + sizeof(MResourceLibrary);
EXPECT_AT(MModule, name, 4, 8);
EXPECT_AT(MModule, title, 16, 24);
EXPECT_AT(MModule, resources, 28, 40);
EXPECT_AT(MModule, globalData, kResourcesEnd, kResourcesEnd);
EXPECT_AT(MModule, reserved, kResourcesEnd + 16, kResourcesEnd + 24);
EXPECT_AT(MModule, services, kResourcesEnd + 20, kResourcesEnd + 32);
EXPECT_AT(MModule, serviceCount, kResourcesEnd + 20 + 64 * 8, kResourcesEnd + 32 + 64 * 16);
EXPECT_WIDTH(MModule, reserved, 4);
EXPECT_WIDTH(MModule, serviceCount, 4);
#pragma GCC diagnostic pop

EXPECT_SIZE(MStreamRequest, 56, 56);
EXPECT_AT(MStreamRequest, delay, 0, 0);
EXPECT_AT(MStreamRequest, reserved, 4, 4);
EXPECT_AT(MStreamRequest, volume, 32, 32);
EXPECT_AT(MStreamRequest, ratio, 40, 40);
EXPECT_AT(MStreamRequest, result, 48, 48);
EXPECT_WIDTH(MStreamRequest, delay, 4);
EXPECT_WIDTH(MStreamRequest, reserved, 28);

EXPECT_SIZE(MCollectedFiles, 4 + 256 * 12, 8 + 256 * 16);
EXPECT_AT(MCollectedFiles, count, 0, 0);
EXPECT_AT(MCollectedFiles, path, 4, 8);
EXPECT_WIDTH(MCollectedFiles, count, 4);

}  // namespace
