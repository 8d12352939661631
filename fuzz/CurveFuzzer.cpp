// The bytes are an XML file with the item of a signal generator. Whatever its curve is, it loads, is built
// and read without a bad access and with finite values, and is saved with all its points. Then the curve is
// read at places and steps that come from the bytes themselves.

#include <cstring>

#include "dsp/MSignalGenerator.h"
#include "tests/core/StreamDoubles.h"

namespace {

void Load(MSignalGenerator& generator, const std::string& text) {
  MXMLItem item;
  ForwardStream stream(text);
  try {
    item.Load(stream);
  } catch (const MException&) {
    // What was read up to there is a curve as well.
  }
  generator.Load(item);
}

void ReadAnywhere(MEnvelopeComputer& computer, const uint8_t* bytes, std::size_t size) {
  float floats[64];
  double doubles[64];
  for (double numbers[2]; size >= sizeof numbers; bytes += 8, size -= 8) {
    std::memcpy(numbers, bytes, sizeof numbers);
    if (bytes[0] % 2) computer.Seek(numbers[0]);
    computer.FillFloat(floats, numbers[0], numbers[1], bytes[1] % 65);
    computer.FillDouble(doubles, numbers[1], 1e-3, bytes[2] % 65);
    computer.GetValue(numbers[0]);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, std::size_t size) {
  static MSignalGenerator generator;
  Load(generator, std::string(reinterpret_cast<const char*>(input), size));
  for (int32_t i = 0; i <= MWaveShapes::kLength; ++i)
    if (!(std::abs(generator.GetTable()[i]) <= 1.000001f)) __builtin_trap();

  MXMLItem item("shape");
  generator.Save(item);
  MEnvelopeData saved;
  saved.Load(item.SubItem("Envelope"));
  if (saved.GetCount() != generator.GetCurve().GetCount()) __builtin_trap();

  MEnvelopeComputer computer;
  computer.Build(generator.GetCurve());
  for (int32_t i = 0; i <= 100; ++i)
    if (!std::isfinite(computer.GetValue(i * 0.01))) __builtin_trap();
  ReadAnywhere(computer, input, size);
  return 0;
}
