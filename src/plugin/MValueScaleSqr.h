#pragma once
#include <cmath>

#include "plugin/MValue.h"

// Makes the control of another value move in a square law: the position is the square root of the inner one.
// Everything else is the inner value's, its key and its bound functions too. Owns nothing; the inner value
// outlives it.
class MValueScaleSqr final : public MValue {
 public:
  explicit MValueScaleSqr(MValue& inner) noexcept : inner_(inner) {}

  void ToText(MString& text) const override { inner_.ToText(text); }
  void FromText(const MString& text) override { inner_.FromText(text); }
  bool Reset() override { return inner_.Reset(); }
  bool Save(MXMLItem& item) const override { return inner_.Save(item); }
  void Load(const MXMLItem& item) override { inner_.Load(item); }
  void LoadFromXml(const MXMLItem& item) override { inner_.LoadFromXml(item); }
  void GetText(MString& text) const override { inner_.GetText(text); }
  void FormatValue(MString& text) const override { inner_.FormatValue(text); }
  void GetShortText(ShortText& text) const override { inner_.GetShortText(text); }
  MString FormatAt(double position) const override { return inner_.FormatAt(Square(position)); }
  bool SetText(const MString& text) override { return inner_.SetText(text); }
  bool ParseValue(const MString& text) override { return inner_.ParseValue(text); }
  void Validate() override { inner_.Validate(); }
  bool StepBy(int32_t count, int32_t zoom) override { return inner_.StepBy(count, zoom); }
  bool StepSmall(int32_t count) override { return inner_.StepSmall(count); }
  double GetPosition() const override { return std::sqrt(inner_.GetPosition()); }
  bool SetPosition(double position) override { return inner_.SetPosition(Square(position)); }
  int32_t GetIndexCount() const override { return inner_.GetIndexCount(); }
  void GetIndexText(ShortText& text, int32_t index) const override { inner_.GetIndexText(text, index); }
  uint32_t GetFlags() const override { return inner_.GetFlags(); }
  bool SetIndex(int32_t index) override { return inner_.SetIndex(index); }
  void GetRawText(MString& text) const override { inner_.GetRawText(text); }

 private:
  // Below 0 it is 0: a knob that is dragged below its end stays there.
  static double Square(double position) noexcept { return position < 0 ? 0 : position * position; }

  MValue& inner_;
};
