// The bytes are an XML file: reading it raises or gives a tree, whichever way the stream is cut, and what is
// written of that tree, in any encoding, reads as the same tree. Then they are mark-up for a lenient parser.

#include "core/MXMLItem.h"
#include "core/MXMLParser.h"
#include "tests/core/Encodings.h"

namespace {

using Parser = MMLParser<MAttribute, MList<MAttribute>>;

class Lenient final : public Parser {
 public:
  Lenient() : Parser(true) {}
  bool OnElement(const MString&, MList<MAttribute>&, bool) override { return false; }
  bool OnText(const MString& text) override {
    if (text.IsEmpty()) __builtin_trap();
    return false;
  }
};

void Load(MXMLItem& item, MStream&& stream) {
  try {
    item.Load(stream);
  } catch (const MException&) {
  }
}

std::string Save(const MXMLItem& item, bool compact, const MString& encoding) {
  BareStream stream;
  item.Save(stream, compact, encoding);
  return stream.written;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, std::size_t size) {
  static const std::vector<MString> kNames = CodecNames();
  if (size < 2) return 0;
  TestRandom random(input[0]);
  const MString encoding = kNames[input[1] % kNames.size()];
  const std::string bytes(reinterpret_cast<const char*>(input) + 2, size - 2);

  MXMLItem item, cut, written;
  Load(item, ForwardStream(bytes));
  Load(cut, TricklingStream(bytes, random));
  const std::string compact = Save(item, true, "utf-8");
  if (Save(cut, true, "utf-8") != compact) __builtin_trap();
  // Written once more, since the first time changes names that the encoding does not have.
  ForwardStream first(Save(item, false, encoding));
  written.Load(first);
  ForwardStream second(Save(written, true, encoding));
  item.Load(second);
  if (Save(item, true, encoding) != Save(written, true, encoding)) __builtin_trap();

  ForwardStream markup(bytes);
  Lenient().Parse(markup);
  return 0;
}
