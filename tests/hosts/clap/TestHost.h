#pragma once
// A host of CLAP plug-ins for tests: it counts what a plug-in asks for, and plays what a test puts into it.

#include <clap/entry.h>
#include <clap/ext/audio-ports.h>
#include <clap/ext/latency.h>
#include <clap/ext/note-ports.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/ext/thread-check.h>
#include <clap/plugin-factory.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "hosts/clap/extensions.h"
#include "tests/common/AudioBlock.h"

// What the plug-in asked its host for.
class TestHost {
 public:
  explicit TestHost(bool hasExtensions = true);
  TestHost(const TestHost&) = delete;
  TestHost& operator=(const TestHost&) = delete;

  const clap_host_t* Get() const { return &host_; }

  clap_host_t host_ = {};
  const bool hasExtensions_;
  const std::thread::id mainThread_ = std::this_thread::get_id();
  bool isAudioAnywhere = true;
  std::atomic<int32_t> callbacks = 0, restarts = 0;
  std::atomic<int32_t> rescans = 0, latencies = 0, tails = 0;
  std::vector<std::string> presets, errors;
};

// A value of the parameter at random.
double ChooseValue(const clap_param_info_t& parameter, TestRandom& random);

// An event of any kind, at a frame of a whole run.
union TestEvent {
  clap_event_header_t header;
  clap_event_param_value_t value;
  clap_event_note_t note;
  clap_event_midi_t midi;
};
TestEvent SetAt(uint32_t frame, const clap_param_info_t& parameter, double value, bool hasCookie = true);
TestEvent NoteAt(uint32_t frame, uint16_t type, int32_t id, int32_t channel, int32_t key,
                 double velocity = 1);
TestEvent MidiAt(uint32_t frame, uint8_t status, uint8_t first, uint8_t second);

// A list of events as CLAP hands it in, and one that it fills.
class EventList {
 public:
  EventList() = default;
  explicit EventList(std::vector<TestEvent> events) : events_(std::move(events)) {}
  EventList(const EventList&) = delete;
  EventList& operator=(const EventList&) = delete;

  const clap_input_events_t* GetInput() const { return &input_; }
  const clap_output_events_t* GetOutput() const { return &output_; }

  std::vector<TestEvent> events_;
  bool refuses_ = false;

 private:
  clap_input_events_t input_ = {this, Size, At};
  clap_output_events_t output_ = {this, Push};

  static uint32_t CLAP_ABI Size(const clap_input_events_t* list);
  static const clap_event_header_t* CLAP_ABI At(const clap_input_events_t* list, uint32_t index);
  static bool CLAP_ABI Push(const clap_output_events_t* list, const clap_event_header_t* event);
};

// A started entry, and one plug-in out of it.
class ClapPlugin {
 public:
  ClapPlugin(const std::string& id, TestHost& host);
  ClapPlugin(const ClapPlugin&) = delete;
  ClapPlugin& operator=(const ClapPlugin&) = delete;
  ~ClapPlugin();

  static std::vector<std::string> GetIds();

  const clap_plugin_t* Get() const { return plugin_; }
  const clap_plugin_t* operator->() const { return plugin_; }
  template <typename Extension>
  const Extension* Find(const char* id) const {
    return static_cast<const Extension*>(plugin_->get_extension(plugin_, id));
  }
  bool IsInstrument() const { return Find<void>(CLAP_EXT_NOTE_PORTS) != nullptr; }

  std::vector<clap_param_info_t> GetParameters() const;
  clap_param_info_t GetParameter(const std::string& name) const;
  double GetValue(const clap_param_info_t& parameter) const;
  std::string SaveState(uint64_t mostAtOnce = 1 << 20) const;
  bool LoadState(const std::string& text, uint64_t mostAtOnce = 1 << 20) const;
  void Flush(std::vector<TestEvent> events) const;

  bool Activate(double rate = 48000, uint32_t mostFrames = 8192) const {
    return plugin_->activate(plugin_, rate, 1, mostFrames) && plugin_->start_processing(plugin_);
  }
  void Deactivate() const {
    plugin_->stop_processing(plugin_);
    plugin_->deactivate(plugin_);
  }
  // Blocks of these sizes, the last one again and again, without a size one block; in place.
  AudioBlock Run(AudioBlock signal, const std::vector<TestEvent>& events = {},
                 const std::vector<int32_t>& sizes = {});

  EventList told_;  // by the plug-in, with the frames of their blocks
  clap_process_status status_ = CLAP_PROCESS_ERROR;

 private:
  const clap_plugin_t* plugin_ = nullptr;
};

// A test for each plug-in.
class ClapSuite : public testing::TestWithParam<std::string> {
 protected:
  TestHost host_;
  ClapPlugin plugin_{GetParam(), host_};
};
