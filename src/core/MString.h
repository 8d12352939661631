#pragma once
// MString, the text of every subsystem: a value of three words with two modes.
//
// Literal mode points to 8-bit text that is not owned: nothing is allocated, nothing is counted. Characters
// are widened with sign extension when they are read, so literals are plain ASCII. Buffer mode points to
// UTF-16 units in a counted block that copies share until one of them writes. A literal points into the
// binary that holds it: who keeps a text of another library copies it.
//
// Positions count units from 0; reading past the end yields 0. Texts may be copied and dropped on any thread;
// one MString object is written by one thread at a time. Operations that need memory may raise "Out of
// memory." and then leave the text as it was.

#include <string_view>
#include <type_traits>

#include "core/MDataBlock.h"
#include "core/MTypes.h"

class MString {
 public:
  static constexpr int32_t kWhole = 0x7FFFFFFF;  // "to the end", "from the end", "all of it"

  constexpr MString() noexcept : chars_(""), length_(0), flags_(kLiteral) {}

  // Literal mode: keeps the pointer.
  template <std::size_t N>
  constexpr MString(const char (&literal)[N]) noexcept : MString(Literal(literal)) {}
  template <std::size_t N>
  MString(char (&buffer)[N]) = delete;  // no literal: use FromNarrow

  // Literal mode for text that outlives every copy of the string; null is the empty text.
  static constexpr MString Literal(const char* text) noexcept {
    return text ? MString(text, static_cast<int32_t>(std::char_traits<char>::length(text))) : MString();
  }

  // Buffer mode from zero-terminated or counted text; null is the empty text. 8-bit text is widened.
  static MString FromNarrow(const char* text);
  static MString FromNarrow(const char* text, int32_t length);
  explicit MString(const MChar* text);
  explicit MString(std::u16string_view text);
  explicit MString(MChar character);

  MString(const MString& other) noexcept
      : chars_(other.chars_), length_(other.length_), flags_(other.flags_) {
    if (!IsLiteral()) Retain();
  }
  constexpr MString(MString&& other) noexcept
      : chars_(other.chars_), length_(other.length_), flags_(other.flags_) {
    other.chars_ = "";
    other.length_ = 0;
    other.flags_ = kLiteral;
  }
  MString& operator=(const MString& other) noexcept;
  MString& operator=(MString&& other) noexcept;
  constexpr ~MString() {
    if (!IsLiteral()) Release();
  }

  int32_t GetLength() const noexcept { return length_; }
  bool IsEmpty() const noexcept { return length_ <= 0; }
  constexpr bool IsLiteral() const noexcept { return (flags_ & kLiteral) != 0; }
  // The unit at `index`, 0 outside of the text.
  MChar At(int32_t index) const noexcept {
    if (static_cast<uint32_t>(index) >= static_cast<uint32_t>(length_)) return 0;
    return IsLiteral() ? Widen(Narrow()[index]) : Units()[index];
  }
  // The characters themselves: 8-bit in literal mode, 16-bit in buffer mode, zero-terminated in both.
  const void* GetData() const noexcept { return chars_; }
  const char* Narrow() const noexcept { return static_cast<const char*>(chars_); }
  const MChar* Units() const noexcept { return static_cast<const MChar*>(chars_); }

  // A character of either mode as a unit.
  static constexpr MChar Widen(char c) noexcept { return static_cast<MChar>(static_cast<signed char>(c)); }
  static constexpr MChar Widen(MChar c) noexcept { return c; }

  // Calls `use(pointer, length)` with a pointer to 8-bit or to 16-bit characters, for loops over the whole
  // text.
  template <typename F>
  decltype(auto) Visit(F&& use) const {
    return IsLiteral() ? use(Narrow(), length_) : use(Units(), length_);
  }

  void Clear() noexcept { *this = MString(); }

  // Makes the text writable with room for `count` units, terminator included: the one place of copy on write.
  // A literal or shared text becomes a block of its own, cut to count - 1 units.
  void Reserve(int32_t count);

  void Append(const MString& text);
  void Append(const char* text);  // zero-terminated; null adds nothing
  void Append(MChar character) {
    int32_t length = length_;  // kept in a register, since the test of the count orders all reads behind it
    if (!HasRoom(length, 1)) {
      ReserveMore(1);
      length = length_;
    }
    Writable()[length] = character;
    Writable()[length + 1] = 0;
    length_ = length + 1;
  }
  void AppendUnits(const MChar* units, int32_t count);
  void AppendNarrow(const char* text, int32_t count);
  void AppendRepeated(MChar character, int32_t count);
  // Position is limited to the text.
  void Insert(int32_t position, MChar character);
  void Insert(int32_t position, const MString& text);
  void InsertUnits(int32_t position, const MChar* units, int32_t count);
  void InsertNarrow(int32_t position, const char* text, int32_t count);

  // First index at or after `start`, or -1.
  int32_t Find(MChar character, int32_t start = 0) const noexcept;
  // Last index at or before `start`, or -1.
  int32_t FindLast(MChar character, int32_t start = kWhole) const noexcept;
  // At most `count` units from `start`; a negative start gives the empty text; the whole text shares its
  // buffer.
  MString Substring(int32_t start, int32_t count = kWhole) const;

  // Compares without regard to case and diacritics, at most `maximum` units, up to the end of the left text.
  // 0 when equal, else the difference of the first units that differ after folding. The order of every sorted
  // list of names.
  static int32_t Compare(const MString& left, int32_t offset, const MString& right, int32_t otherOffset,
                         int32_t maximum = kWhole) noexcept;
  int32_t Compare(const MString& other) const noexcept { return Compare(*this, 0, other, 0); }

  // The same units, case and diacritics included.
  bool operator==(const MString& other) const noexcept;

  // Blind for ASCII case; looks at two units of a long text. Tables built by it may be stored, so it never
  // changes.
  uint32_t Hash() const noexcept;

  // Reads an optional "-" and digits of `base` from `start`; overflow wraps. `consumed` gets the units read.
  int64_t ToInteger(int32_t base = 10, int32_t* consumed = nullptr, int32_t start = 0) const noexcept;
  // As C's strtod in the "C" locale: leading blanks and trailing garbage are no error; no number is 0.
  double ToDouble() const;

  // Upper-case digits of base 2 to 16, padded on the left to `width` digits (62 at most); the sign stands in
  // front of the padding.
  static MString FromInteger(int64_t value, int32_t base = 10, int32_t width = 0, MChar fill = u' ');
  static MString FromUnsigned(uint64_t value, int32_t base = 10, int32_t width = 0, MChar fill = u' ');
  // Fixed notation with `precision` decimals (0 to 99), never scientific, "C" locale.
  static MString FromDouble(double value, int32_t precision);
  // C's printf in the "C" locale, cut to 8190 characters.
  [[gnu::format(printf, 1, 2)]] static MString Printf(const char* format, ...);

 private:
  static constexpr uint32_t kLiteral = 1;

  struct Head {
    int32_t capacity;  // bytes of the whole block, head included
    int32_t references;
  };

  constexpr MString(const char* literal, int32_t length) noexcept
      : chars_(literal), length_(length), flags_(kLiteral) {}

  MChar* Writable() noexcept { return static_cast<MChar*>(const_cast<void*>(chars_)); }
  Head* GetHead() const noexcept { return reinterpret_cast<Head*>(const_cast<void*>(chars_)) - 1; }
  void Retain() const noexcept {
    std::atomic_ref<int32_t>(GetHead()->references).fetch_add(1, std::memory_order_relaxed);
  }
  void Release() noexcept {
    if (std::atomic_ref<int32_t>(GetHead()->references).fetch_sub(1, std::memory_order_acq_rel) == 1)
      MRelease(GetHead());
  }
  bool IsShared() const noexcept {
    return std::atomic_ref<int32_t>(GetHead()->references).load(std::memory_order_acquire) > 1;
  }
  static MString NewBlock(int32_t count);
  template <typename Unit>
  static MString Make(const Unit* units, std::size_t length);
  // Room for `length` and `count` more units, a terminator and the head in a block of this text alone.
  bool HasRoom(int32_t length, int32_t count) const noexcept {
    return !IsLiteral() && !IsShared() && GetHead()->capacity >= 2 * (int64_t{length} + count + 1) + 8;
  }
  void ReserveMore(int32_t count);
  MString HoldIfOwn(const void* units) const noexcept;
  template <typename Unit>
  void AppendAny(const Unit* units, int32_t count);
  template <typename Unit>
  void InsertAny(int32_t position, const Unit* units, int32_t count);

  const void* chars_;
  int32_t length_;
  uint32_t flags_;
};

static_assert(sizeof(MString) == sizeof(void*) + 8);

// The value of a digit of base 2 to 16 in either case, or -1.
constexpr int32_t MDigitValue(MChar c) noexcept {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  return -1;
}

// The letter without its diacritic, case kept; a unit that has none stays.
MChar FoldDiacritics(MChar unit) noexcept;

// UTF-8 with a terminating zero that the size counts, for interfaces of the operating system.
MBytes EncodeNarrow(const MString& text);

// The text of the operating system's last error.
MString OSErrorText();
