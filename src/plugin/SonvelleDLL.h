#pragma once
#include "plugin/MWindowsModule.h"

// What the library makes at its start and destroys at its end, beside the module itself. The owners'
// functions stand here by default; tests put stand-ins in their place. Null ones do nothing.
struct SonvelleParts {
  void (*prepareWaveShapes)();
  void (*createConfiguration)();
  void (*destroyConfiguration)();  // saves it
};

// The module of this library.
class SonvelleDLL final : public MWindowsModule {
 public:
  ~SonvelleDLL() override;

  void Initialize() override;
  // Writes the 19 rows of the two registries, starting the library first if nobody has. Raises when a file
  // cannot be written. Slidebench has no row: a host asks for it by its export.
  void RegisterAllPlugins(const MString& library) override;

  static SonvelleParts parts;
};
