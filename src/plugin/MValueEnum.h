#pragma once
#include <span>

#include "plugin/MValue.h"

// The names of an enumeration's enumerators, from 0 without a gap; an enumerator that cannot be chosen by
// name has an empty one. Specialised by the owner of the enumeration:
//
//   template <>
//   struct MEnumNames<MSomething> {
//     static constexpr const char* kNames[] = {"first", "second"};
//   };
template <typename E>
struct MEnumNames;

// What MValueEnum is for every enumeration. The text is the enumerator's name; names are read in any case,
// and an unknown one is enumerator 0. An enumerator without a name, and a number outside of the table, which
// only SetIndex or the owner of the variable can set, is shown as its number; the number of an enumerator
// without a name is read as well, so that it is not lost when it is saved.
class MValueChoice : public MValue {
 public:
  MValueChoice(const MValueChoice&) = delete;
  MValueChoice& operator=(const MValueChoice&) = delete;

  void FromText(const MString& text) override;
  bool Reset() override;
  bool Save(MXMLItem& item) const override;
  void Load(const MXMLItem& item) override;

  // Reads "default", which is the value too, and "value", which is the default without "default".
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

  // Set by every write; who looks at it clears it.
  bool IsChanged() const noexcept { return changed_; }
  void ClearChanged() noexcept { changed_ = false; }

 protected:
  MValueChoice(std::span<const char* const> names, int32_t initial) noexcept
      : names_(names), default_(initial) {}

  virtual int32_t LoadNumber() const noexcept = 0;
  virtual void StoreNumber(int32_t number) noexcept = 0;

  int32_t GetDefaultNumber() const noexcept { return default_; }
  void SetDefaultNumber(int32_t number) noexcept { default_ = number; }
  bool Write(int32_t number);

 private:
  int32_t GetLast() const noexcept;
  int32_t Limit(int64_t number) const noexcept;
  MString NameOf(int32_t number) const;
  int32_t Find(const MString& name) const;
  int32_t At(double position) const noexcept;
  void ShowAny(MString& text, int32_t number) const;
  void Store(int32_t number) noexcept;

  std::span<const char* const> names_;
  bool changed_ = false;
  int32_t default_;
};

// A choice among the enumerators of E, a 32-bit enumeration with MEnumNames. The value is stored in the
// object or bound to a variable of the owner.
template <typename E>
class MValueEnum final : public MValueChoice {
  static_assert(sizeof(E) == 4);

 public:
  explicit MValueEnum(E initial = E(0))
      : MValueChoice(MEnumNames<E>::kNames, static_cast<int32_t>(initial)), inlineValue_(initial) {
    Validate();
  }
  explicit MValueEnum(MBound<E> bound)
      : MValueChoice(MEnumNames<E>::kNames, static_cast<int32_t>(MLoadShared(*bound.target))),
        target_(bound.target) {
    Validate();
  }

  E GetValue() const noexcept { return MLoadShared(*target_); }
  // Limits to the enumerators.
  bool SetValue(E value) { return Write(static_cast<int32_t>(value)); }
  E GetDefault() const noexcept { return static_cast<E>(GetDefaultNumber()); }
  void SetDefault(E value) noexcept { SetDefaultNumber(static_cast<int32_t>(value)); }

 private:
  int32_t LoadNumber() const noexcept override { return static_cast<int32_t>(MLoadShared(*target_)); }
  void StoreNumber(int32_t number) noexcept override { MStoreShared(*target_, static_cast<E>(number)); }

  E inlineValue_ = E(0);
  E* target_ = &inlineValue_;
};
