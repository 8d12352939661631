#pragma once
// The start and the end of the library.

#include "plugin/MModule.h"

// The block of resources that is built into the library: its address and that of its size, null for none.
struct MBuiltInBlock {
  const uint8_t* bytes;
  const int32_t* size;
};

// The blocks that a start loads: the first one into the module's `resources`, the second is its `globalData`.
// Tests put others in their place.
extern MBuiltInBlock MGlobalResources;
extern MBuiltInBlock MGlobalData;

// What the exported MLibraryDLLInitialize does. Without a record or its table it does nothing and gives null.
MModule* MInitializeLibrary(MLibraryRecord* record);

// Makes the module, loads its resources and initialises it, with the allocator that is in force. Null when it
// could not be made. The record, if there is one, gives it its first name.
MModule* MStartLibrary(const MLibraryRecord* record = nullptr);

// Stores a new SonvelleDLL in MModule::instance, to be destroyed when the library is unloaded or the process
// ends.
void MCreateModuleInstance();

// Loads the built-in blocks into the module.
void MLoadGlobalResources();

// Stops all threads of the library, then destroys the module.
void MDestroyModuleInstance();
