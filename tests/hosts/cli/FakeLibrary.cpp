// A library with one plug-in, the fake one under the name of another, to see from outside what the command
// asks of it. SONVELLE_FAKE_NOTES names a file for its notes; SONVELLE_FAKE_RAISES a service that raises;
// with SONVELLE_FAKE_SPEAKS its notes go to the standard streams as well.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "tests/hosts/FakePlugin.h"

extern "C" M_VISIBLE MWord M_CALL EcholanAudioEffectPluginInterface(void* instance, int32_t service,
                                                                    MServiceArguments* arguments) {
  if (!instance) {
    FakePlugin::note = [](const std::string& text) {
      if (const char* const path = std::getenv("SONVELLE_FAKE_NOTES"))
        std::ofstream(path, std::ios::app) << text << "\n";
      if (std::getenv("SONVELLE_FAKE_SPEAKS")) {
        dprintf(STDOUT_FILENO, "%s\n", text.c_str());
        dprintf(STDERR_FILENO, "%s\n", text.c_str());
      }
    };
    if (const char* const number = std::getenv("SONVELLE_FAKE_RAISES"))
      FakePlugin::raisingService = std::atoi(number);
  }
  return FakePlugin::EntryPoint(instance, service, arguments);
}
