#include "core/MXMLWriter.h"

#include <algorithm>

#include "core/MXMLEntities.h"
#include "core/MXMLScanner.h"

namespace {

// Which ASCII characters need a look, in a name or in a value; all others do as well.
struct Suspects {
  bool inName[128] = {};
  bool inValue[128] = {};
};
constexpr Suspects MakeSuspects() {
  Suspects suspects;
  for (int32_t c = 0; c < 128; ++c) suspects.inName[c] = MXMLScanner::EndsName(c) || c == '?';
  for (const char c : {'&', '<', '>', '\'', '"', '\n', '\0'}) suspects.inValue[static_cast<int>(c)] = true;
  return suspects;
}
constexpr Suspects kSuspects = MakeSuspects();

bool IsSuspect(const MString& text, const bool (&table)[128]) {
  return text.Visit([&table](const auto* units, int32_t length) {
    return std::any_of(units, units + length, [&table](auto unit) {
      const MChar wide = MString::Widen(unit);
      return wide >= 128 || table[wide];
    });
  });
}

// Puts a text there as ASCII and moves `out` behind it; false if it has a suspect.
bool PutPlain(uint8_t*& out, const MString& text, const bool (&table)[128]) {
  return text.Visit([&](const auto* units, int32_t length) {
    bool isSuspect = false;
    for (int32_t i = 0; i < length; ++i) {
      const MChar unit = MString::Widen(units[i]);
      isSuspect |= unit >= 128 || table[unit & 127];
      out[i] = static_cast<uint8_t>(unit);
    }
    out += length;
    return !isSuspect;
  });
}

// Units of the character at `index`: 2 for a surrogate pair.
int32_t CharacterLength(const MString& text, int32_t index) {
  return (text.At(index) & 0xFC00) == 0xD800 && (text.At(index + 1) & 0xFC00) == 0xDC00 ? 2 : 1;
}

uint32_t CodePointAt(const MString& text, int32_t index, int32_t length) {
  if (length == 1) return text.At(index);
  return 0x10000 + ((text.At(index) & 0x3FFu) << 10 | (text.At(index + 1) & 0x3FFu));
}

}  // namespace

void MXMLWriter::WriteHead(const MString& encoding) {
  // A name that was only found because it is like the codec's own could not be found again.
  const bool isPlain = !IsSuspect(encoding, kSuspects.inValue);
  writer_.WriteText("<?xml version=\"1.0\" encoding=\"");
  writer_.WriteText(isPlain ? encoding : writer_.GetCodec().GetName());
  writer_.WriteText("\"?>");
}

void MXMLWriter::WriteTree(const MXMLItem& root) {
  const MXMLItem* item = &root;
  int32_t level = 0;
  for (;;) {
    BeginElement(*item, level);
    if (!item->GetChildren().IsEmpty()) {
      item = item->GetChildren()[0];
      ++level;
      continue;
    }
    const MXMLItem* next = nullptr;
    while (item != &root && !(next = item->GetNext())) {
      item = item->GetOwner();
      EndElement(*item, --level);
    }
    if (item == &root) break;
    item = next;
  }
  if (!isCompact_) writer_.WriteText("\n");
}

// The start of an element and its text; all of it when there are no children.
void MXMLWriter::BeginElement(const MXMLItem& item, int32_t level) {
  BeginLine(level);
  writer_.WriteText("<");
  WriteName(item.GetName(), true);
  for (const MAttribute& attribute : item.GetAttributes()) WriteAttribute(attribute);
  const bool isLeaf = item.GetChildren().IsEmpty();
  if (isLeaf && item.GetText().IsEmpty()) {
    writer_.WriteText("/>");
    return;
  }
  writer_.WriteText(">");
  WriteValue(item.GetText());
  if (!isLeaf) return;
  writer_.WriteText("</");
  WriteName(item.GetName(), true);
  writer_.WriteText(">");
}

void MXMLWriter::EndElement(const MXMLItem& item, int32_t level) {
  BeginLine(level);
  writer_.WriteText("</");
  WriteName(item.GetName(), true);
  writer_.WriteText(">");
}

void MXMLWriter::BeginLine(int32_t level) {
  if (isCompact_) return;
  static constexpr char kBlanks[] = "                                                                ";
  static_assert(sizeof kBlanks == 2 * kDeepestIndent + 1);
  writer_.WriteText("\n");
  writer_.WriteText(MString::Literal(kBlanks + 2 * (kDeepestIndent - std::min(level, kDeepestIndent))));
}

void MXMLWriter::WriteAttribute(const MAttribute& attribute) {
  if (WritePlainAttribute(attribute)) return;
  writer_.WriteText(" ");
  WriteName(attribute.name, false);
  writer_.WriteText("=\"");
  WriteValue(attribute.value);
  writer_.WriteText("\"");
}

// Nearly all attributes are short and without anything special: they are put into the buffer at one go.
// False, and nothing is written, for all others.
bool MXMLWriter::WritePlainAttribute(const MAttribute& attribute) {
  if (isWide_ || attribute.name.IsEmpty()) return false;
  uint8_t* const room =
      writer_.MakeRoom(int64_t{attribute.name.GetLength()} + attribute.value.GetLength() + 4);
  if (!room) return false;
  uint8_t* out = room;
  *out++ = ' ';
  if (!PutPlain(out, attribute.name, kSuspects.inName)) return false;
  *out++ = '=';
  *out++ = '"';
  if (!PutPlain(out, attribute.value, kSuspects.inValue)) return false;
  *out++ = '"';
  writer_.Advance(static_cast<int32_t>(out - room));
  return true;
}

void MXMLWriter::WriteName(const MString& name, bool isElement) {
  const bool isReadable = !name.IsEmpty() && !IsSuspect(name, kSuspects.inName);
  writer_.WriteText(isReadable ? name : ReadableName(name, isElement));
}

void MXMLWriter::WriteValue(const MString& value) {
  writer_.WriteText(IsSuspect(value, kSuspects.inValue) ? EscapedValue(value) : value);
}

MString MXMLWriter::ReadableName(const MString& name, bool isElement) const {
  MString readable;
  for (int32_t i = 0, count; i < name.GetLength(); i += count) {
    count = CharacterLength(name, i);
    const MChar unit = name.At(i);
    const bool isInstruction = isElement && i == 0 && unit == u'?';
    const bool isRead = !MXMLScanner::EndsName(unit) && !isInstruction;
    const MString character = name.Substring(i, count);
    if (isRead && (unit < 128 || Carries(character)))
      readable.Append(character);
    else
      readable.Append(u'_');
  }
  return readable.IsEmpty() ? MString("_") : readable;
}

MString MXMLWriter::EscapedValue(const MString& value) const {
  const bool isCarried = Carries(value);
  MString escaped;
  for (int32_t i = 0, count; i < value.GetLength(); i += count) {
    count = CharacterLength(value, i);
    const MChar unit = value.At(i);
    if (unit < 128 ? MXMLAppendEntity(escaped, unit) : false) continue;
    if (unit < 128 || isCarried || Carries(value.Substring(i, count))) {
      escaped.Append(unit);
      if (count == 2) escaped.Append(value.At(i + 1));
    } else {
      MXMLAppendNumber(escaped, CodePointAt(value, i, count));
    }
  }
  return escaped;
}

// True if the encoding brings the text back as it is.
bool MXMLWriter::Carries(const MString& text) const {
  const MEncoding::Codec& codec = writer_.GetCodec();
  const MBytes bytes = codec.Encode(text, false);
  return codec.Decode(bytes.GetData(), bytes.GetSize()) == text;
}
