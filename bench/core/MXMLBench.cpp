// States of plug-ins as XML, beside expat and pugixml. Items are bytes of the document.

#include <expat.h>

#include <pugixml.hpp>
#include <random>
#include <string>

#include "bench/Calibrated.h"
#include "core/MMemoryStream.h"
#include "core/MXMLItem.h"

namespace {

constexpr std::size_t kSize = 10'000'000;

std::string Number(std::mt19937& random) {
  const std::string digits = std::to_string(10000 + random() % 10000);
  return "0." + digits.substr(1);
}

void AddParameters(std::string& text, std::mt19937& random, int count) {
  static const char* const kKeys[] = {"attack",   "bandwidth", "cutoff",      "delay",    "depth", "drive",
                                      "feedback", "gain",      "highcut",     "lowcut",   "mix",   "panorama",
                                      "ratio",    "release",   "stereowidth", "threshold"};
  for (int i = 0; i < count; ++i)
    text += std::string(" parameter") + kKeys[i] + "=\"" + Number(random) + "\"";
}

// States as a host keeps them: parameters, two modules with their own, and a graph with points.
const std::string& Document() {
  static const std::string document = [] {
    std::mt19937 random(1);
    std::string text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<states>\n";
    while (text.size() < kSize) {
      text += "  <state name=\"Preset " + std::to_string(random() % 1000) + "\"";
      AddParameters(text, random, 15);
      text += ">\n";
      for (int module = 0; module < 2; ++module) {
        text += "    <module";
        AddParameters(text, random, 14);
        text += "/>\n";
      }
      text += "    <graph>\n";
      for (int point = 0; point < 8; ++point)
        text +=
            "      <point curvature=\"0.0000\" x=\"" + Number(random) + "\" y=\"" + Number(random) + "\"/>\n";
      text += "    </graph>\n  </state>\n";
    }
    return text + "</states>\n";
  }();
  return document;
}

void CountBytes(benchmark::State& state, std::size_t bytes) {
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(bytes));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}

void Load(MXMLItem& item) {
  MMemoryStream stream(Document().data(), static_cast<int32_t>(Document().size()));
  item.Load(stream);
}

void XMLRead(benchmark::State& state) {
  Document();
  Calibrate(state);
  for (auto _ : state) {
    MXMLItem item;
    Load(item);
    benchmark::DoNotOptimize(item.GetChildren().begin());
  }
  CountBytes(state, Document().size());
}
BENCHMARK(XMLRead);

// Tells its tags alone, into nothing.
void XMLReadExpat(benchmark::State& state) {
  Document();
  Calibrate(state);
  for (auto _ : state) {
    const XML_Parser parser = XML_ParserCreate("UTF-8");
    int64_t elements = 0;
    XML_SetUserData(parser, &elements);
    XML_SetElementHandler(
        parser, [](void* data, const char*, const char**) { ++*static_cast<int64_t*>(data); },
        [](void*, const char*) {});
    XML_SetCharacterDataHandler(parser, [](void*, const char*, int) {});
    if (XML_Parse(parser, Document().data(), static_cast<int>(Document().size()), 1) != XML_STATUS_OK)
      state.SkipWithError("expat failed");
    benchmark::DoNotOptimize(elements);
    XML_ParserFree(parser);
  }
  CountBytes(state, Document().size());
}
BENCHMARK(XMLReadExpat);

// Into a tree of 8-bit texts that point into its own copy of the document.
void XMLReadPugixml(benchmark::State& state) {
  Document();
  Calibrate(state);
  for (auto _ : state) {
    pugi::xml_document document;
    if (!document.load_buffer(Document().data(), Document().size())) state.SkipWithError("pugixml failed");
    benchmark::DoNotOptimize(document.first_child());
  }
  CountBytes(state, Document().size());
}
BENCHMARK(XMLReadPugixml);

void XMLWrite(benchmark::State& state) {
  MXMLItem item;
  Load(item);
  Calibrate(state);
  int64_t bytes = 0;
  for (auto _ : state) {
    MMemoryStream stream;
    item.Save(stream);
    bytes = stream.GetSize();
  }
  CountBytes(state, static_cast<std::size_t>(bytes));
}
BENCHMARK(XMLWrite);

void XMLWritePugixml(benchmark::State& state) {
  class Writer : public pugi::xml_writer {
   public:
    void write(const void* data, std::size_t size) override {
      stream.Write(data, static_cast<int32_t>(size));
    }
    MMemoryStream stream;
  };
  pugi::xml_document document;
  document.load_buffer(Document().data(), Document().size());
  Calibrate(state);
  int64_t bytes = 0;
  for (auto _ : state) {
    Writer writer;
    document.save(writer, "  ");
    bytes = writer.stream.GetSize();
  }
  CountBytes(state, static_cast<std::size_t>(bytes));
}
BENCHMARK(XMLWritePugixml);

// One of 16 attributes by its name.
void XMLAttribute(benchmark::State& state) {
  MXMLItem item;
  Load(item);
  const MXMLItem& preset = *item.GetChildren()[0];
  const MString names[] = {"parametergain", "parameterattack", "parameterstereowidth", "parametermix"};
  Calibrate(state);
  for (auto _ : state)
    for (const MString& name : names) benchmark::DoNotOptimize(preset.HasAttribute(name));
  state.SetItemsProcessed(state.iterations() * 4);
}
BENCHMARK(XMLAttribute);

// The same by walking along them, as pugixml does.
void XMLAttributePugixml(benchmark::State& state) {
  pugi::xml_document document;
  document.load_buffer(Document().data(), Document().size());
  const pugi::xml_node preset = document.first_child().first_child();
  const char* const names[] = {"parametergain", "parameterattack", "parameterstereowidth", "parametermix"};
  Calibrate(state);
  for (auto _ : state)
    for (const char* name : names) benchmark::DoNotOptimize(preset.attribute(name));
  state.SetItemsProcessed(state.iterations() * 4);
}
BENCHMARK(XMLAttributePugixml);

}  // namespace
