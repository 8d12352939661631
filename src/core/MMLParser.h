#pragma once
#include "core/MObject.h"
#include "core/MXMLAttribute.h"
#include "core/MXMLScanner.h"

// The event parser for marked-up text: it knows the syntax and calls OnElement and OnText in the order of the
// text. Memory does not grow with the length or depth of the text, only with its longest tag or run of text.
//
// Elements are <name attribute="value">text</name> and <name/>. Entities in text and values are resolved
// (MXMLEntities.h). <!-- --> and <? ?> are skipped, <![CDATA[ ]]> is text without entities. The encoding is
// UTF-8, or UTF-16 behind its header; the "encoding" of a head <?xml ?> switches to another one.
//
// A syntax error raises an MException with a message that begins with "Invalid file contents. ", the code
// kTransferFailed and the place as its source, "line 3, column 14". A lenient parser, for mark-up within
// texts, ends the parse silently instead, knows no head, and takes values without quotes, which end at a
// blank, ">" or
// "/>".
//
// Instantiated in MMLParser.cpp.
template <typename Attribute, typename Attributes>
class MMLParser : public MObject {
 public:
  ~MMLParser() noexcept override = default;

  // An element begins or, with `closing`, ends. The attributes stand as in the text, of a closing element
  // there are none; they may be moved away. True stops the parser.
  virtual bool OnElement(const MString& name, Attributes& attributes, bool closing) = 0;
  // A run of text, never empty; blanks are kept. True stops the parser.
  virtual bool OnText(const MString& text) = 0;

  // Parses up to the end or to where an operation stops it. The stream may have been read beyond that.
  void Parse(MStream& stream);
  // The same for a text in memory; a head's encoding has no effect.
  void ParseText(const MString& text);

  // Where the last parse ended or failed.
  const MXMLPosition& GetPosition() const noexcept { return position_; }

 protected:
  explicit MMLParser(bool lenient = false) noexcept : isLenient_(lenient) {}

  static constexpr char kTextOutside[] = "Text outside of any element.";
  // While it is set text is the syntax error `kTextOutside`, at its first letter; and a million blanks in a
  // row end the parse.
  bool isOutside_ = false;

  // For the operations: a syntax error at the start of the tag or text that they were called for.
  [[noreturn]] void Fail(const char* message) const { FailAt(message, scanner_->GetMark()); }

 private:
  struct SilentEnd {};

  void Run(MXMLScanner& scanner);
  bool ReadText();
  bool SkipOutside();
  bool ReadTag();
  bool ReadSpecial();
  bool ReadCharacterData();
  bool ReadInstruction();
  bool ReadClosing();
  bool ReadOpening();
  bool ReadAttributes();
  bool ReadAttribute();
  MString ReadQuoted();
  bool ReadUnquoted(MString& value);
  MString TextOf(std::u16string_view units);
  [[noreturn]] void FailHere(const char* message) const { FailAt(message, scanner_->GetPosition()); }
  [[noreturn]] void FailAt(const char* message, const MXMLPosition& position) const;

  bool isLenient_;
  bool maySwitch_ = false;          // a head can still come
  MXMLScanner* scanner_ = nullptr;  // during a parse
  MXMLTextCache* names_ = nullptr;
  MXMLTextCache* values_ = nullptr;
  Attributes attributes_;
  MXMLPosition position_;
};

extern template class MMLParser<MAttribute, MList<MAttribute>>;
