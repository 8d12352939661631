#pragma once
// A small host of one LV2 plug-in, whose ports are known by their symbols.

#include <lv2/atom/forge.h>
#include <lv2/atom/util.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/core/lv2.h>
#include <lv2/midi/midi.h>
#include <lv2/options/options.h>
#include <lv2/patch/patch.h>
#include <lv2/state/state.h>
#include <lv2/worker/worker.h>

#include <cstring>
#include <deque>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "hosts/lv2/PortScale.h"
#include "hosts/lv2/Ports.h"
#include "hosts/lv2/Uris.h"

// What numbers are given to URIs.
class UriNumbers {
 public:
  LV2_URID Get(const std::string& uri) {
    return numbers_.try_emplace(uri, static_cast<LV2_URID>(numbers_.size() + 1)).first->second;
  }
  LV2_URID_Map* GetMap() { return &map_; }

 private:
  std::map<std::string, LV2_URID> numbers_;
  LV2_URID_Map map_{this,
                    [](void* self, const char* uri) { return static_cast<UriNumbers*>(self)->Get(uri); }};
};

// Properties of a state.
struct SavedState {
  struct Value {
    std::string bytes;
    LV2_URID type = 0;
    uint32_t flags = 0;
  };
  std::map<LV2_URID, Value> values;
};

enum class Work { kNone, kLater, kAtOnce, kRefused };

struct HostOptions {
  double rate = 48000;
  int32_t mostFrames = 4096;  // 0: the plug-in is not told
  Work work = Work::kLater;
};

class Lv2Host {
 public:
  static constexpr std::size_t kRoom = 16384;  // frames of a buffer

  Lv2Host(const LV2_Descriptor& descriptor, const bridge::PluginType& type,
          std::span<const bridge::DawParameter> parameters, HostOptions options = {})
      : options_(options), ports_(lv2::MakePorts(type, parameters)), descriptor_(descriptor) {
    Instantiate();
    for (std::size_t i = 0; i < ports_.size(); ++i) ConnectPort(i, parameters);
  }
  Lv2Host(const Lv2Host&) = delete;
  Lv2Host& operator=(const Lv2Host&) = delete;
  ~Lv2Host() {
    if (isActive_) descriptor_.deactivate(handle_);
    descriptor_.cleanup(handle_);
  }

  LV2_Handle GetHandle() const { return handle_; }
  UriNumbers& GetNumbers() { return numbers_; }
  const std::vector<lv2::Port>& GetPorts() const { return ports_; }
  float& Control(const std::string& symbol) { return values_.at(symbol); }
  bool HasControl(const std::string& symbol) const { return values_.contains(symbol); }
  void Connect(const std::string& symbol, void* data) {
    for (uint32_t i = 0; i < ports_.size(); ++i)
      if (ports_[i].symbol == symbol) return descriptor_.connect_port(handle_, i, data);
    throw std::out_of_range(symbol);
  }

  void Activate() {
    descriptor_.activate(handle_);
    isActive_ = true;
  }
  // Plays the events that were added, in blocks of those frames.
  void Run(uint32_t frames) {
    if (!isActive_) Activate();
    eventsOut_[0] = 0;
    auto* const out = reinterpret_cast<LV2_Atom_Sequence*>(eventsOut_.data());
    out->atom.size = static_cast<uint32_t>(eventsOut_.size() * 8 - sizeof(LV2_Atom));
    FinishEvents();
    descriptor_.run(handle_, frames);
    StartEvents();
  }

  // Events of the next block.
  void AddMidi(int64_t frame, std::vector<uint8_t> bytes) {
    lv2_atom_forge_frame_time(&forge_, frame);
    lv2_atom_forge_atom(&forge_, static_cast<uint32_t>(bytes.size()), numbers_.Get(LV2_MIDI__MidiEvent));
    if (!bytes.empty()) lv2_atom_forge_write(&forge_, bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
  void AddSet(const std::string& property, const std::string& path) {
    AddPatch(LV2_PATCH__Set, property, [&] {
      lv2_atom_forge_key(&forge_, numbers_.Get(LV2_PATCH__value));
      lv2_atom_forge_path(&forge_, path.c_str(), static_cast<uint32_t>(path.size()));
    });
  }
  // A message without a path: with a number in its place, or with nothing.
  void AddSetOfNoPath(const std::string& property, bool isNumber) {
    AddPatch(LV2_PATCH__Set, property, [&] {
      if (!isNumber) return;
      lv2_atom_forge_key(&forge_, numbers_.Get(LV2_PATCH__value));
      lv2_atom_forge_int(&forge_, 7);
    });
  }
  void AddGet(const std::string& property) {
    AddPatch(LV2_PATCH__Get, property, [] {});
  }
  // The buffer of the events, for tests that break it.
  LV2_Atom_Sequence* GetEvents() { return reinterpret_cast<LV2_Atom_Sequence*>(eventsIn_.data()); }

  // The paths that the last block told of, and its messages of a type.
  std::vector<std::string> GetToldPaths() {
    std::vector<std::string> paths;
    ForMessages([&](const LV2_Atom_Object* message) {
      const LV2_Atom* value = nullptr;
      lv2_atom_object_get(message, numbers_.Get(LV2_PATCH__value), &value, 0);
      if (value) paths.emplace_back(reinterpret_cast<const char*>(value + 1));
    });
    return paths;
  }
  int CountMessages(const std::string& type) {
    int count = 0;
    ForMessages([&](const LV2_Atom_Object* message) { count += message->body.otype == numbers_.Get(type); });
    return count;
  }

  // Does what the worker has been asked for; the number of messages.
  int DoWork() {
    int count = 0;
    for (; !work_.empty(); work_.pop_front(), ++count) CallWorker(work_.front());
    return count;
  }

  LV2_State_Status Save(SavedState& state, const LV2_Feature* const* features = nullptr) {
    const auto store = [](LV2_State_Handle handle, uint32_t key, const void* value, size_t size,
                          uint32_t type, uint32_t flags) {
      static_cast<SavedState*>(handle)->values[key] = {std::string(static_cast<const char*>(value), size),
                                                       type, flags};
      return LV2_STATE_SUCCESS;
    };
    return GetStateInterface().save(handle_, store, &state, LV2_STATE_IS_POD, features);
  }
  LV2_State_Status Restore(const SavedState& state, const LV2_Feature* const* features = nullptr) {
    const auto retrieve = [](LV2_State_Handle handle, uint32_t key, size_t* size, uint32_t* type,
                             uint32_t* flags) -> const void* {
      const auto& values = static_cast<const SavedState*>(handle)->values;
      const auto found = values.find(key);
      if (found == values.end()) return nullptr;
      *size = found->second.bytes.size();
      *type = found->second.type;
      *flags = found->second.flags;
      return found->second.bytes.data();
    };
    return GetStateInterface().restore(handle_, retrieve, const_cast<SavedState*>(&state), 0, features);
  }
  // A state of this text alone.
  SavedState MakeState(const std::string& text) {
    SavedState state;
    state.values[numbers_.Get(lv2::kStateUri)] = {text, numbers_.Get(LV2_ATOM__String), 0};
    return state;
  }

  std::vector<float> inLeft = std::vector<float>(kRoom), inRight = inLeft;
  std::vector<float> outLeft = inLeft, outRight = inLeft;

 private:
  void Instantiate() {
    const LV2_Options_Option options[] = {
        {LV2_OPTIONS_INSTANCE, 0, numbers_.Get(LV2_BUF_SIZE__maxBlockLength), sizeof(int32_t),
         numbers_.Get(LV2_ATOM__Int), &options_.mostFrames},
        {LV2_OPTIONS_INSTANCE, 0, 0, 0, 0, nullptr}};
    const LV2_Feature map = {LV2_URID__map, numbers_.GetMap()}, worker = {LV2_WORKER__schedule, &schedule_},
                      told = {LV2_OPTIONS__options, const_cast<LV2_Options_Option*>(options)};
    std::vector<const LV2_Feature*> features = {&map};
    if (options_.work != Work::kNone) features.push_back(&worker);
    if (options_.mostFrames > 0) features.push_back(&told);
    features.push_back(nullptr);
    handle_ = descriptor_.instantiate(&descriptor_, options_.rate, "/nowhere", features.data());
    if (!handle_) throw std::runtime_error("no instance");
    lv2_atom_forge_init(&forge_, numbers_.GetMap());
    StartEvents();
  }

  void ConnectPort(std::size_t index, std::span<const bridge::DawParameter> parameters) {
    const lv2::Port& port = ports_[index];
    const auto place = static_cast<std::size_t>(port.place);
    void* data = nullptr;
    if (port.role == lv2::PortRole::kEventsIn) data = eventsIn_.data();
    if (port.role == lv2::PortRole::kEventsOut) data = eventsOut_.data();
    if (port.role == lv2::PortRole::kIn) data = (place == 0 ? inLeft : inRight).data();
    if (port.role == lv2::PortRole::kOut) data = (place == 0 ? outLeft : outRight).data();
    if (!data) {
      float& value = values_[port.symbol];
      if (port.role == lv2::PortRole::kControl)
        value =
            lv2::PortScale(parameters[place]).ToPort(bridge::GetRange(*parameters[place].row).defaultValue);
      data = &value;
    }
    descriptor_.connect_port(handle_, static_cast<uint32_t>(index), data);
  }

  template <typename Look>
  void ForMessages(Look look) {
    const auto* const sequence = reinterpret_cast<const LV2_Atom_Sequence*>(eventsOut_.data());
    LV2_ATOM_SEQUENCE_FOREACH(sequence, event) look(reinterpret_cast<const LV2_Atom_Object*>(&event->body));
  }
  template <typename More>
  void AddPatch(const char* type, const std::string& property, More more) {
    LV2_Atom_Forge_Frame object;
    lv2_atom_forge_frame_time(&forge_, 0);
    lv2_atom_forge_object(&forge_, &object, 0, numbers_.Get(type));
    lv2_atom_forge_key(&forge_, numbers_.Get(LV2_PATCH__property));
    lv2_atom_forge_urid(&forge_, numbers_.Get(property));
    more();
    lv2_atom_forge_pop(&forge_, &object);
  }
  void StartEvents() {
    lv2_atom_forge_set_buffer(&forge_, reinterpret_cast<uint8_t*>(eventsIn_.data()), eventsIn_.size() * 8);
    lv2_atom_forge_sequence_head(&forge_, &sequence_, 0);
    isOpen_ = true;
  }
  void FinishEvents() {
    if (isOpen_) lv2_atom_forge_pop(&forge_, &sequence_);
    isOpen_ = false;
  }

  LV2_Worker_Status Ask(uint32_t size, const void* message) {
    if (options_.work == Work::kRefused) return LV2_WORKER_ERR_NO_SPACE;
    const std::string text(static_cast<const char*>(message), size);
    if (options_.work == Work::kAtOnce)
      CallWorker(text);
    else
      work_.push_back(text);
    return LV2_WORKER_SUCCESS;
  }
  void CallWorker(const std::string& message) {
    const auto* const worker =
        static_cast<const LV2_Worker_Interface*>(descriptor_.extension_data(LV2_WORKER__interface));
    worker->work(handle_, nullptr, nullptr, static_cast<uint32_t>(message.size()), message.data());
  }
  const LV2_State_Interface& GetStateInterface() const {
    return *static_cast<const LV2_State_Interface*>(descriptor_.extension_data(LV2_STATE__interface));
  }

  const HostOptions options_;
  const std::vector<lv2::Port> ports_;
  const LV2_Descriptor& descriptor_;
  UriNumbers numbers_;
  LV2_Worker_Schedule schedule_{this,
                                [](LV2_Worker_Schedule_Handle self, uint32_t size, const void* message) {
                                  return static_cast<Lv2Host*>(self)->Ask(size, message);
                                }};
  LV2_Handle handle_ = nullptr;
  bool isActive_ = false;
  std::map<std::string, float> values_;
  std::vector<uint64_t> eventsIn_ = std::vector<uint64_t>(4096), eventsOut_ = eventsIn_;
  LV2_Atom_Forge forge_;
  LV2_Atom_Forge_Frame sequence_;
  bool isOpen_ = false;
  std::deque<std::string> work_;
};
