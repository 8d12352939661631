#pragma once
#include "instruments/generators/MAudioGeneratorObject.h"

// An object that alters what another one makes. Its format, name, length, handlers and state are the other
// one's, too. The other one is not owned, and has to outlive it.
class MAudioGeneratorFilter : public MAudioGeneratorObject {
 public:
  MString GetDisplayName() const override { return inner_.GetDisplayName(); }
  void SetFormat(int32_t channels, int32_t sampleRate) override;
  double GetLength(bool inSeconds) const override { return inner_.GetLength(inSeconds); }
  void AddChangeHandler(const Handler& handler) override;
  void AddStructureHandler(const Handler& handler) override;
  void Reset() override { inner_.Reset(); }
  void Save(MXMLItem& item) const override { inner_.Save(item); }
  void Load(const MXMLItem& item) override { inner_.Load(item); }

 protected:
  MAudioGeneratorFilter(const MString& display, const MString& item, MAudioGeneratorObject& inner)
      : MAudioGeneratorObject(display, item), inner_(inner) {}

  MAudioGeneratorObject& inner_;
};
