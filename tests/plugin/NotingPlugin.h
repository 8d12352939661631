#pragma once
// A plug-in that notes which of its operations are called, with which arguments.

#include <string>

#include "plugin/MPlugin.h"

class NotingPlugin : public MPlugin {
 public:
  NotingPlugin() {
    for (int32_t i = 0; i < 2; ++i) AddRealParameter(rows[i], "Row", "row", "", 0, 1, 0.5);
    SetParameters(rows);
  }
  ~NotingPlugin() override {
    if (afterlife) *afterlife += "destroyed ";
  }

  void Detach() override { Note("Detach"); }
  void ParameterChanged(int32_t index) override { Note("ParameterChanged", index); }
  void Update() override { Note("Update"); }
  void CreateEditor(MControl* parent) override { Note("CreateEditor", MAsWord(parent)); }
  void EditorClosed(MWord window) override { Note("EditorClosed", window); }
  bool SaveState(MXMLItem& item) override { return Note("SaveState", MAsWord(&item)), answer != 0; }
  bool LoadState(MXMLItem& item) override { return Note("LoadState", MAsWord(&item)), answer != 0; }
  void StateLoaded() override { Note("StateLoaded"); }
  MWord Query(MWord argument) override { return Note("Query", argument), answer; }
  MWord Command(const char* name, MWord argument) override { return Note(name, argument), answer; }

  using MPlugin::NotifyHost;
  using MPlugin::NotifyLayoutChanged;
  using MPlugin::NotifyParametersChanged;

  // The service with these words, and what was called in it.
  std::string Calls(int32_t service, MWord a = 0, MWord b = 0) {
    MServiceArguments arguments(a, b);
    log.clear();
    result = Service(service, &arguments);
    return log;
  }

  MPluginParameter rows[2];
  MWord answer = 0;
  MWord result = 0;  // of the last Calls
  std::string log;
  std::string* afterlife = nullptr;  // notes the end

 private:
  void Note(const char* operation) { log += std::string(operation) + " "; }
  void Note(const char* operation, MWord argument) {
    log += std::string(operation) + "(" + std::to_string(argument) + ") ";
  }
};
