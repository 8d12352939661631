#pragma once
#include "plugin/MStorable.h"

// Text functions that replace a value's own; the number is the value, of a choice its index. `parse` returns
// false for a text that it does not read. Both may raise nothing.
struct MValueFunctions {
  void (*display)(const void* context, MString& text, double value) = nullptr;
  bool (*parse)(const void* context, const MString& text, double& value) = nullptr;
  const void* context = nullptr;  // outlives the value
};

// Where a value lives that is bound to a variable of its owner: MValuePercents depth(MBind(row.real.value),
// 0, 1). The variable outlives the value, is aligned as its type asks, and is read and written whole, so that
// the audio thread may read it at any time.
template <typename T>
struct MBound {
  T* target;
};
template <typename T>
inline MBound<T> MBind(T& variable) noexcept {
  return {&variable};
}

// A number or a choice with a range and a text form: what a control edits without knowing of units. Positions
// are 0 to 1. Operations that return bool return whether the value has changed. A text or a number that
// cannot be taken (no number, or not a finite one) leaves the value as it was. Nothing is raised but "Out of
// memory.".
class MValue : public MStorable {
 public:
  // For labels of hosts: eight characters and a zero; what is not ASCII becomes "?".
  using ShortText = char[9];

  void ToText(MString& text) const override { GetText(text); }
  virtual void LoadFromXml(const MXMLItem& item) = 0;
  // The display function's text if one is bound, otherwise FormatValue.
  virtual void GetText(MString& text) const = 0;
  virtual void FormatValue(MString& text) const = 0;
  virtual void GetShortText(ShortText& text) const;
  // The text that the value would have at a position.
  virtual MString FormatAt(double position) const = 0;
  // By the bound parser, otherwise ParseValue; then Validate.
  virtual bool SetText(const MString& text) = 0;
  virtual bool ParseValue(const MString& text) = 0;
  // Limits the value to the range.
  virtual void Validate() = 0;
  // `count` times the smaller of step x 2^zoom and the large step.
  virtual bool StepBy(int32_t count, int32_t zoom) = 0;
  virtual bool StepSmall(int32_t count) = 0;
  virtual double GetPosition() const = 0;
  virtual bool SetPosition(double position) = 0;
  // The whole numbers of the range, or the choices, as a list. SetIndex does not limit.
  virtual int32_t GetIndexCount() const = 0;
  virtual void GetIndexText(ShortText& text, int32_t index) const = 0;
  virtual uint32_t GetFlags() const { return 0; }
  virtual bool SetIndex(int32_t index) = 0;
  virtual void GetRawText(MString& text) const = 0;

  // Sets a text without limiting to the range.
  void FromRawText(const MString& text) { FromText(text); }

  const MValueFunctions& GetFunctions() const noexcept { return functions_; }
  void SetFunctions(const MValueFunctions& functions) noexcept { functions_ = functions; }

 protected:
  static void Shorten(ShortText& buffer, const MString& text) noexcept;

 private:
  MValueFunctions functions_;
};
