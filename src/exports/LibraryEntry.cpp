#include "plugin/MLibrary.h"

extern "C" M_VISIBLE MModule* M_CALL MLibraryDLLInitialize(MLibraryRecord* record) {
  return MInitializeLibrary(record);
}
