// The text encodings beside the C library's iconv. Items are bytes of the encoded text.

#include <iconv.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/Calibrated.h"
#include "core/MEncodingReader.h"
#include "core/MEncodingWriter.h"
#include "core/MMemoryStream.h"

namespace {

constexpr std::size_t kSize = 2 << 20;  // too much for a branch predictor to learn by heart

// Words in random order, so that nothing learns where which script begins.
std::string Shuffled(const std::vector<std::string>& words) {
  std::mt19937 random(1);
  std::string text;
  while (text.size() < kSize) text += words[random() % words.size()] + (random() % 12 == 0 ? "\n" : " ");
  return text;
}

const std::string& Ascii() {
  static const std::string text = Shuffled({"a", "filter", "boosts", "one", "band", "and", "leaves", "the",
                                            "others", "as", "they", "are,", "440", "Hz", "at", "-6", "dB."});
  return text;
}

// French, Russian, Chinese, German, numbers and emoji.
const std::string& Mixed() {
  static const std::string text = Shuffled({"R\u00E9glage",
                                            "du",
                                            "d\u00E9lai",
                                            "\u00E0",
                                            "44,1\u00A0kHz,",
                                            "\u00E9galiseur",
                                            "param\u00E9trique.",
                                            "\u043F\u043E\u043B\u043E\u0441\u043E\u0432\u043E\u0439",
                                            "\u0444\u0438\u043B\u044C\u0442\u0440,",
                                            "\u0447\u0430\u0441\u0442\u043E\u0442\u0430",
                                            "\u0441\u0440\u0435\u0437\u0430.",
                                            "\u4F4E\u901A\u6EE4\u6CE2\u5668\u7684",
                                            "\u622A\u6B62\u9891\u7387\u3002",
                                            "\u53CD\u9988\u3002",
                                            "\u5EF6\u8FDF\u65F6\u95F4\uFF0C",
                                            "R\u00FCckkopplung",
                                            "H\u00F6hen",
                                            "-6",
                                            "dB",
                                            "\U0001F39B\U0001F3A7",
                                            "\U0001F3B9"});
  return text;
}

std::u16string Units(const std::string& bytes) {
  const MString text = MEncoding::UTF8Codec::Get().Decode(bytes.data(), static_cast<int32_t>(bytes.size()));
  return std::u16string(text.Units(), static_cast<std::size_t>(text.GetLength()));
}

void CountBytes(benchmark::State& state, std::size_t bytes) {
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(bytes));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}

void DecodeUTF8(benchmark::State& state, const std::string& bytes) {
  Calibrate(state);
  const MEncoding::Codec& codec = MEncoding::UTF8Codec::Get();
  for (auto _ : state) {
    const MString text = codec.Decode(bytes.data(), static_cast<int32_t>(bytes.size()));
    benchmark::DoNotOptimize(text.GetData());
  }
  CountBytes(state, bytes.size());
}
BENCHMARK_CAPTURE(DecodeUTF8, ascii, Ascii())->Name("DecodeUTF8Ascii");
BENCHMARK_CAPTURE(DecodeUTF8, mixed, Mixed())->Name("DecodeUTF8Mixed");

void EncodeUTF8(benchmark::State& state, const std::string& bytes) {
  Calibrate(state);
  const MEncoding::Codec& codec = MEncoding::UTF8Codec::Get();
  const MString text(Units(bytes));
  for (auto _ : state) {
    const MBytes encoded = codec.Encode(text, false);
    benchmark::DoNotOptimize(encoded.GetData());
  }
  CountBytes(state, bytes.size());
}
BENCHMARK_CAPTURE(EncodeUTF8, ascii, Ascii())->Name("EncodeUTF8Ascii");
BENCHMARK_CAPTURE(EncodeUTF8, mixed, Mixed())->Name("EncodeUTF8Mixed");

// The whole text by one call of iconv, into memory of its own as the codecs do.
void Iconv(benchmark::State& state, const char* to, const char* from, std::string source, std::size_t bytes) {
  Calibrate(state);
  const iconv_t converter = iconv_open(to, from);
  for (auto _ : state) {
    const std::size_t room = 2 * source.size();
    const std::unique_ptr<char[]> result(new char[room]);
    char *in = source.data(), *out = result.get();
    std::size_t inLeft = source.size(), outLeft = room;
    if (iconv(converter, &in, &inLeft, &out, &outLeft) != 0) state.SkipWithError("iconv failed");
    benchmark::DoNotOptimize(out);
  }
  iconv_close(converter);
  CountBytes(state, bytes);
}

void DecodeUTF8Iconv(benchmark::State& state, const std::string& bytes) {
  Iconv(state, "UTF-16LE", "UTF-8", bytes, bytes.size());
}
BENCHMARK_CAPTURE(DecodeUTF8Iconv, ascii, Ascii())->Name("DecodeUTF8AsciiIconv");
BENCHMARK_CAPTURE(DecodeUTF8Iconv, mixed, Mixed())->Name("DecodeUTF8MixedIconv");

void EncodeUTF8Iconv(benchmark::State& state, const std::string& bytes) {
  const std::u16string units = Units(bytes);
  Iconv(state, "UTF-8", "UTF-16LE",
        std::string(reinterpret_cast<const char*>(units.data()), 2 * units.size()), bytes.size());
}
BENCHMARK_CAPTURE(EncodeUTF8Iconv, ascii, Ascii())->Name("EncodeUTF8AsciiIconv");
BENCHMARK_CAPTURE(EncodeUTF8Iconv, mixed, Mixed())->Name("EncodeUTF8MixedIconv");

// What a parser of a file gets.
void ReadUnits(benchmark::State& state, const char* name, const std::string& bytes) {
  Calibrate(state);
  const MEncoding::Codec& codec = MEncoding::FindCodec(MString::Literal(name));
  for (auto _ : state) {
    MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
    MEncoding::Reader reader(stream, codec);
    MChar units[1024];
    while (reader.ReadUnits(units, 1024) > 0) benchmark::DoNotOptimize(units);
  }
  CountBytes(state, bytes.size());
}
BENCHMARK_CAPTURE(ReadUnits, utf8, "utf-8", Mixed())->Name("ReadUnitsUTF8Mixed");
BENCHMARK_CAPTURE(ReadUnits, table, "windows-1250", Mixed())->Name("ReadUnitsTable");

void WriteText(benchmark::State& state) {
  Calibrate(state);
  const MEncoding::Codec& codec = MEncoding::UTF8Codec::Get();
  const MString text(u"feedback=\"0.5000\" ");
  for (auto _ : state) {
    MMemoryStream stream;
    MEncoding::Writer writer(stream, codec);
    for (int i = 0; i < 1000; ++i) writer.WriteText(text);
    writer.Flush();
  }
  CountBytes(state, 1000 * static_cast<std::size_t>(text.GetLength()));
}
BENCHMARK(WriteText)->Name("WriteTextUTF8");

}  // namespace
