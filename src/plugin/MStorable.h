#pragma once
#include "core/MObject.h"
#include "core/MXMLItem.h"

// An object that saves to one attribute of an XML item, and loads from it.
class MStorable : public MObject {
 public:
  virtual void ToText(MString& text) const { text.Clear(); }
  virtual void FromText([[maybe_unused]] const MString& text) {}
  // Returns whether the value has changed.
  virtual bool Reset() { return false; }
  // Sets the attribute named by the key; returns true.
  virtual bool Save(MXMLItem& item) const;
  // Without the attribute it resets.
  virtual void Load(const MXMLItem& item);

  const MString& GetKey() const noexcept { return key_; }
  void SetKey(const MString& key) noexcept { key_ = key; }

 private:
  MString key_ = "value";
};
