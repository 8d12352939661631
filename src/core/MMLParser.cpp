#include "core/MMLParser.h"

#include <optional>

#include "core/MFormat.h"
#include "core/MMemoryStream.h"
#include "core/MTranslate.h"
#include "core/MXMLEntities.h"

namespace {

constexpr char kUnfinished[] = "Invalid element finishing sequence.";
constexpr char kInvalidAttribute[] = "Invalid character found where attribute expected.";
constexpr int32_t kLongestHead = 1024;
constexpr int64_t kMostBlanks = 1 << 20;  // in one run outside of the root element

constexpr auto kEnd = MXMLScanner::kEnd;

bool EndsName(MChar unit) {
  return MXMLScanner::EndsName(unit);
}

// The encoding that a processing instruction names, if it is a head.
std::optional<MString> EncodingOf(const MString& instruction) {
  std::u16string_view text(instruction.Units(), static_cast<std::size_t>(instruction.GetLength()));
  const auto skipBlanks = [&text] {
    while (!text.empty() && MXMLScanner::IsBlank(text[0])) text.remove_prefix(1);
  };
  constexpr std::u16string_view kHead = u"xml", kName = u"encoding";
  if (!text.starts_with(kHead)) return {};
  text.remove_prefix(kHead.size());
  const std::size_t place = text.find(kName);
  if (!MXMLScanner::IsBlank(text.empty() ? 0 : text[0]) || place == text.npos) return {};
  text.remove_prefix(place + kName.size());
  skipBlanks();
  if (!text.starts_with(u'=')) return {};
  text.remove_prefix(1);
  skipBlanks();
  if (!text.starts_with(u'"') && !text.starts_with(u'\'')) return {};
  const std::size_t end = text.find(text[0], 1);
  if (end == text.npos) return {};
  return MString(text.substr(1, end - 1));
}

bool IsWide(const MEncoding::Codec& codec) {
  return &codec == &MEncoding::UTF16Codec::Get();
}

}  // namespace

template <typename Attribute, typename Attributes>
void MMLParser<Attribute, Attributes>::Parse(MStream& stream) {
  MXMLScanner scanner(stream, MEncoding::UTF8Codec::Get());
  scanner.DetectUTF16();
  maySwitch_ = !isLenient_;
  Run(scanner);
}

template <typename Attribute, typename Attributes>
void MMLParser<Attribute, Attributes>::ParseText(const MString& text) {
  const int32_t size = text.IsLiteral() ? 1 : 2;
  if (text.GetLength() > MString::kWhole / size) MThrowOutOfMemory();
  MMemoryStream stream(text.GetData(), text.GetLength() * size);
  const MEncoding::Codec& ascii = MEncoding::ASCIICodec::Get();
  const MEncoding::Codec& wide = MEncoding::UTF16Codec::Get();
  MXMLScanner scanner(stream, text.IsLiteral() ? ascii : wide);
  maySwitch_ = false;
  Run(scanner);
}

template <typename Attribute, typename Attributes>
void MMLParser<Attribute, Attributes>::Run(MXMLScanner& scanner) {
  MXMLTextCache names, values;
  struct End {
    ~End() {
      parser.position_ = parser.scanner_->GetPosition();
      parser.scanner_ = nullptr;
      parser.attributes_.Clear();
    }
    MMLParser& parser;
  };
  scanner_ = &scanner;
  names_ = &names;
  values_ = &values;
  const End end{*this};
  try {
    while (!ReadText() && scanner_->Peek() != kEnd && !ReadTag()) {
    }
  } catch (const SilentEnd&) {
  }
}

// The Read functions return true when the parse is to stop.
template <typename Attribute, typename Attributes>
bool MMLParser<Attribute, Attributes>::ReadText() {
  if (isOutside_ && SkipOutside()) return true;
  scanner_->Mark();
  const MString text = TextOf(scanner_->ReadUntil([](MChar unit) { return unit == u'<'; }));
  return !text.IsEmpty() && OnText(text);
}

// Nothing is kept of what may not be there: the stream may be a device that never ends.
template <typename Attribute, typename Attributes>
bool MMLParser<Attribute, Attributes>::SkipOutside() {
  if (!scanner_->SkipBlanks(kMostBlanks)) return true;
  scanner_->Mark();
  const int32_t unit = scanner_->Peek();
  if (unit != u'<' && unit != u'&' && unit != kEnd) Fail(kTextOutside);
  return false;
}

template <typename Attribute, typename Attributes>
bool MMLParser<Attribute, Attributes>::ReadTag() {
  scanner_->Mark();
  scanner_->Next();
  switch (scanner_->Peek()) {
    case u'?':
      return ReadInstruction();
    case u'!':
      return ReadSpecial();
    case u'/':
      return ReadClosing();
    default:
      return ReadOpening();
  }
}

template <typename Attribute, typename Attributes>
bool MMLParser<Attribute, Attributes>::ReadSpecial() {
  scanner_->Next();
  switch (scanner_->Next()) {
    case u'-':
      if (!scanner_->ReadThrough(u'-', 2, nullptr)) FailHere(kUnfinished);
      return false;
    case u'[':
      return ReadCharacterData();
    case kEnd:
      FailHere(kUnfinished);
    default:
      Fail("Invalid special element sequence.");
  }
}

template <typename Attribute, typename Attributes>
bool MMLParser<Attribute, Attributes>::ReadCharacterData() {
  for (const char expected : {'C', 'D', 'A', 'T', 'A', '['}) {
    const int32_t unit = scanner_->Next();
    if (unit == kEnd) FailHere(kUnfinished);
    if (unit != expected) Fail("Invalid special element sequence.");
  }
  MString text;
  if (!scanner_->ReadThrough(u']', 2, &text)) FailHere(kUnfinished);
  return !text.IsEmpty() && OnText(text);
}

template <typename Attribute, typename Attributes>
bool MMLParser<Attribute, Attributes>::ReadInstruction() {
  scanner_->Next();
  MString text;
  if (!scanner_->ReadThrough(u'?', 1, &text, kLongestHead)) FailHere(kUnfinished);
  if (!maySwitch_) return false;
  if (const std::optional<MString> encoding = EncodingOf(text)) {
    const MEncoding::Codec& codec = MEncoding::FindCodec(*encoding);
    // A head that was readable as bytes is not in UTF-16, and the reverse, whatever it says.
    if (IsWide(codec) == IsWide(scanner_->GetCodec())) scanner_->SetCodec(codec);
    maySwitch_ = false;
  }
  return false;
}

template <typename Attribute, typename Attributes>
bool MMLParser<Attribute, Attributes>::ReadClosing() {
  scanner_->Next();
  const MString name = scanner_->Keep(scanner_->ReadUntil(EndsName), *names_);
  scanner_->SkipBlanks();
  const int32_t unit = scanner_->Peek();
  if (unit == kEnd) FailHere(kUnfinished);
  if (unit != u'>') FailHere("Invalid closing element syntax.");
  scanner_->Next();
  attributes_.Clear();
  return OnElement(name, attributes_, true);
}

template <typename Attribute, typename Attributes>
bool MMLParser<Attribute, Attributes>::ReadOpening() {
  maySwitch_ = false;
  const MString name = scanner_->Keep(scanner_->ReadUntil(EndsName), *names_);
  if (name.IsEmpty()) FailHere(scanner_->Peek() == kEnd ? kUnfinished : "No element name found.");
  const bool isClosed = ReadAttributes();
  if (OnElement(name, attributes_, false)) return true;
  if (!isClosed) return false;
  attributes_.Clear();
  return OnElement(name, attributes_, true);
}

// True if the element is closed at once.
template <typename Attribute, typename Attributes>
bool MMLParser<Attribute, Attributes>::ReadAttributes() {
  attributes_.Clear();
  bool isSlashRead = false;
  for (;;) {
    if (!isSlashRead) scanner_->SkipBlanks();
    const int32_t unit = scanner_->Peek();
    if (unit == u'>') break;
    if (unit == kEnd || isSlashRead) FailHere(kUnfinished);
    if (unit == u'/') {
      scanner_->Next();
      isSlashRead = true;
    } else if (MXMLScanner::IsDelimiter(unit)) {
      FailHere("Special character found where attribute expected.");
    } else {
      isSlashRead = ReadAttribute();
    }
  }
  scanner_->Next();
  return isSlashRead;
}

// True if the value ended at a "/>" whose "/" has been read.
template <typename Attribute, typename Attributes>
bool MMLParser<Attribute, Attributes>::ReadAttribute() {
  Attribute attribute;
  attribute.name = scanner_->Keep(scanner_->ReadUntil(EndsName), *names_);
  const auto next = [this] {
    scanner_->SkipBlanks();
    if (scanner_->Peek() == kEnd) FailHere(kUnfinished);
    return scanner_->Peek();
  };
  if (next() != u'=') FailHere(kInvalidAttribute);
  scanner_->Next();
  bool isSlashRead = false;
  if (next() == u'"')
    attribute.value = ReadQuoted();
  else if (isLenient_)
    isSlashRead = ReadUnquoted(attribute.value);
  else
    FailHere(kInvalidAttribute);
  attributes_.Add(std::move(attribute));
  return isSlashRead;
}

template <typename Attribute, typename Attributes>
MString MMLParser<Attribute, Attributes>::ReadQuoted() {
  scanner_->Next();
  MString value = TextOf(scanner_->ReadUntil([](MChar unit) { return unit == u'"'; }));
  if (scanner_->Next() == kEnd) FailHere(kUnfinished);
  return value;
}

// True if the value ended at a "/>" whose "/" has been read.
template <typename Attribute, typename Attributes>
bool MMLParser<Attribute, Attributes>::ReadUnquoted(MString& value) {
  MString text;
  bool isSlashRead = false;
  for (;;) {
    const int32_t unit = scanner_->Peek();
    if (unit == kEnd || unit == u'>' || MXMLScanner::IsBlank(unit)) break;
    if (isSlashRead) text.Append(u'/');
    isSlashRead = unit == u'/';
    if (!isSlashRead) text.Append(static_cast<MChar>(unit));
    scanner_->Next();
  }
  if (isSlashRead && scanner_->Peek() != u'>') {
    text.Append(u'/');
    isSlashRead = false;
  }
  if (text.IsEmpty()) FailHere(kInvalidAttribute);
  value = TextOf({text.Units(), static_cast<std::size_t>(text.GetLength())});
  return isSlashRead;
}

// What the scanner has just read, with entities resolved.
template <typename Attribute, typename Attributes>
MString MMLParser<Attribute, Attributes>::TextOf(std::u16string_view units) {
  if (units.find(u'&') == units.npos) return scanner_->Keep(units, *values_);
  bool emptyName = false;
  MString text = MXMLResolveEntities(units, emptyName);
  if (emptyName) FailHere("XML entity cannot have empty name.");
  return text;
}

template <typename Attribute, typename Attributes>
void MMLParser<Attribute, Attributes>::FailAt(const char* message, const MXMLPosition& position) const {
  if (isLenient_) throw SilentEnd();
  MString text = Translate("Invalid file contents. ");
  text.Append(Translate(MString::Literal(message)));
  MException failure(text, MErrorCode::kTransferFailed);
  failure.source = Format(Translate("line {0}, column {1}")).Arg(position.line).Arg(position.column).Text();
  throw failure;
}

template class MMLParser<MAttribute, MList<MAttribute>>;
