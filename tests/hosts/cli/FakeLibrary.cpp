// A library with two plug-ins, fake ones under the names of others, to see from outside what the command asks
// of them. SONVELLE_FAKE_NOTES names a file for their notes; SONVELLE_FAKE_RAISES a service that raises; with
// SONVELLE_FAKE_SPEAKS the notes go to the standard streams as well. SONVELLE_FAKE_LENGTH, _LATENCY and
// _LOADING are the instrument's.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "tests/hosts/FakeInstrument.h"
#include "tests/hosts/FakePlugin.h"

namespace {

void Note(const std::string& text) {
  if (const char* const path = std::getenv("SONVELLE_FAKE_NOTES"))
    std::ofstream(path, std::ios::app) << text << "\n";
  if (std::getenv("SONVELLE_FAKE_SPEAKS")) {
    dprintf(STDOUT_FILENO, "%s\n", text.c_str());
    dprintf(STDERR_FILENO, "%s\n", text.c_str());
  }
}

void ReadNumber(const char* name, int32_t& number) {
  if (const char* const text = std::getenv(name)) number = std::atoi(text);
}

}  // namespace

extern "C" M_VISIBLE MWord M_CALL EcholanAudioEffectPluginInterface(void* instance, int32_t service,
                                                                    MServiceArguments* arguments) {
  if (!instance) {
    FakePlugin::note = Note;
    ReadNumber("SONVELLE_FAKE_RAISES", FakePlugin::raisingService);
  }
  return FakePlugin::EntryPoint(instance, service, arguments);
}

extern "C" M_VISIBLE MWord M_CALL PlayboxAudioStreamPluginInterface(void* instance, int32_t service,
                                                                    MServiceArguments* arguments) {
  if (!instance) {
    FakeInstrument::note = Note;
    ReadNumber("SONVELLE_FAKE_LENGTH", FakeInstrument::length);
    ReadNumber("SONVELLE_FAKE_LATENCY", FakeInstrument::latency);
    ReadNumber("SONVELLE_FAKE_LOADING", FakeInstrument::loadingResult);
  }
  return FakeInstrument::EntryPoint(instance, service, arguments);
}
