#pragma once
#include "plugin/MValue.h"

// A number of a range. T is the type of the value, S that of its steps. The value is stored in the object or
// bound to a variable of the owner.
//
// A range whose ends are equal has position 0; of an inverted one the minimum wins. Where a real number
// becomes an integer it is rounded to the nearest one, and no arithmetic wraps: what lies beyond a type's
// range becomes its end.
template <typename T, typename S>
class MValueNumber : public MValue {
 public:
  // The value is limited to the range; the default is the initial value as given. The step is a thousandth of
  // the range, or 1 if there is none, the large step ten times that.
  explicit MValueNumber(T initial = T(0), T minimum = T(0), T maximum = kDefaultMaximum)
      : MValueNumber(nullptr, initial, minimum, maximum) {}
  MValueNumber(MBound<T> bound, T minimum, T maximum)
      : MValueNumber(bound.target, MLoadShared(*bound.target), minimum, maximum) {}
  MValueNumber(const MValueNumber&) = delete;
  MValueNumber& operator=(const MValueNumber&) = delete;

  void FromText(const MString& text) override;
  bool Reset() override;
  bool Save(MXMLItem& item) const override;
  void Load(const MXMLItem& item) override;

  // Reads "mmin", "mmax", "default", "value", "inc", "maxinc", "format", in this order, each optional.
  // "default" is the value too; without it "value" is the default. Without "maxinc" the large step is at
  // least the small one. What is no finite number, or no format, counts as absent.
  void LoadFromXml(const MXMLItem& item) override;
  void GetText(MString& text) const override;
  void FormatValue(MString& text) const override;
  MString FormatAt(double position) const override;
  bool SetText(const MString& text) override;
  bool ParseValue(const MString& text) override;
  void Validate() override;
  bool StepBy(int32_t count, int32_t zoom) override;
  bool StepSmall(int32_t count) override;
  double GetPosition() const override;
  bool SetPosition(double position) override;
  int32_t GetIndexCount() const override;
  void GetIndexText(ShortText& text, int32_t index) const override;
  bool SetIndex(int32_t index) override;
  void GetRawText(MString& text) const override;

  T GetValue() const noexcept { return MLoadShared(*target_); }
  // Limits to the range.
  bool SetValue(T value);

  // Set by every write; who looks at it clears it.
  bool IsChanged() const noexcept { return changed_; }
  void ClearChanged() noexcept { changed_ = false; }

  T GetMinimum() const noexcept { return minimum_; }
  T GetMaximum() const noexcept { return maximum_; }
  void SetRange(T minimum, T maximum);  // limits the value
  S GetStep() const noexcept { return step_; }
  S GetMaxStep() const noexcept { return maxStep_; }
  void SetSteps(S step, S maxStep) noexcept { step_ = step, maxStep_ = maxStep; }
  T GetDefault() const noexcept { return default_; }
  void SetDefault(T value) noexcept { default_ = value; }
  const MString& GetFormat() const noexcept { return format_; }
  // Ignores a format that MFormat does not accept.
  void SetFormat(const MString& format);

 protected:
  // The number's text and its reverse, by default in the format; and the number that the range allows for it.
  virtual void Show(MString& text, T value) const;
  virtual bool Read(const MString& text, T& value) const;
  virtual T Limit(T value) const noexcept;

 private:
  static constexpr T kDefaultMaximum = T(std::is_integral_v<T> ? 100 : 1);

  MValueNumber(T* target, T initial, T minimum, T maximum);

  void ShowAny(MString& text, T value) const;
  T At(double position) const noexcept;
  double IndexValue(int32_t index) const noexcept;
  void Store(T value) noexcept;
  bool Write(T value);
  bool Step(S width, int32_t count);

  alignas(std::atomic_ref<T>::required_alignment) T inlineValue_;
  T* target_;
  bool changed_ = false;
  T minimum_;
  T maximum_;
  S step_;
  S maxStep_;
  T default_;
  MString format_ = "{0}";
};

extern template class MValueNumber<double, double>;
extern template class MValueNumber<float, double>;
extern template class MValueNumber<int32_t, int32_t>;
extern template class MValueNumber<int16_t, int32_t>;
extern template class MValueNumber<int64_t, int64_t>;

using MValueDouble = MValueNumber<double, double>;
using MValueFloat = MValueNumber<float, double>;
using MValueInt32 = MValueNumber<int32_t, int32_t>;
using MValueInt16 = MValueNumber<int16_t, int32_t>;
using MValueInt64 = MValueNumber<int64_t, int64_t>;
