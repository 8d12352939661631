#pragma once
#include "plugin/MModule.h"

class MWindowsConfiguration;

// What the toolkit does for the module below it. The toolkit puts its operations here; null ones do nothing.
struct MWindowingOperations {
  int32_t (*createStyle)(MWindowsConfiguration& configuration, const MString& name) = nullptr;
  void (*registerStyle)(MWindowsConfiguration& configuration, bool isDefault) = nullptr;
  void (*destroy)(MWindowsConfiguration& configuration) = nullptr;
};

// A module with a windowing configuration: the host hands it in by the service "MWindowsConfiguration", and
// the module hands it on to every library that it loads.
class MWindowsModule : public MModule {
 public:
  ~MWindowsModule() override;

  void DLLLoaded(MDLL& dll) override;
  // Adds the services "MWindowsConfiguration", "MWindowsCreateStyle" and "MWindowsRegisterStyle".
  void Initialize() override;
  // Forward to the configuration; 0 and nothing without one.
  virtual int32_t CreateStyle(const MString& styleName);
  virtual void RegisterStyle(bool isDefault);

  static inline MWindowsConfiguration* windowing = nullptr;
  static inline MWindowingOperations operations = {};

  bool ownsWindowing = false;  // the module destroys the configuration with itself
};
