#include "tests/hosts/clap/TestHost.h"

#include <cstring>
#include <stdexcept>

namespace {

TestHost& From(const clap_host_t* host) {
  return *static_cast<TestHost*>(host->host_data);
}

const clap_host_params_t kParameters = {[](const clap_host_t* host, clap_param_rescan_flags flags) {
                                          if (flags == CLAP_PARAM_RESCAN_VALUES) ++From(host).rescans;
                                        },
                                        nullptr, nullptr};
const clap_host_latency_t kLatency = {[](const clap_host_t* host) { ++From(host).latencies; }};
// The thread of the test is the main thread; any thread may be that of the audio, if one may be.
const clap_host_thread_check_t kThreads = {
    [](const clap_host_t* host) { return std::this_thread::get_id() == From(host).mainThread_; },
    [](const clap_host_t* host) { return From(host).isAudioAnywhere; }};
const sonvelle_clap_host_tail_t kTail = {[](const clap_host_t* host) { ++From(host).tails; }};
const sonvelle_clap_host_preset_load_t kPresets = {
    [](const clap_host_t* host, uint32_t, const char*, const char*, int32_t, const char* message) {
      From(host).errors.push_back(message);
    },
    [](const clap_host_t* host, uint32_t, const char*, const char* name) {
      From(host).presets.push_back(name);
    }};
const sonvelle_clap_host_log_t kLog = {
    [](const clap_host_t* host, int32_t, const char* message) { From(host).errors.push_back(message); }};

const void* FindExtension(const clap_host_t* host, const char* id) {
  if (!From(host).hasExtensions_) return nullptr;
  const std::string_view name = id;
  if (name == CLAP_EXT_PARAMS) return &kParameters;
  if (name == CLAP_EXT_LATENCY) return &kLatency;
  if (name == CLAP_EXT_THREAD_CHECK) return &kThreads;
  if (name == SONVELLE_CLAP_EXT_TAIL) return &kTail;
  if (name == SONVELLE_CLAP_EXT_PRESET_LOAD) return &kPresets;
  return name == SONVELLE_CLAP_EXT_LOG ? &kLog : nullptr;
}

struct Text {
  std::string bytes;
  uint64_t mostAtOnce;
  std::size_t place = 0;
};

int64_t WriteText(const clap_ostream_t* stream, const void* bytes, uint64_t size) {
  Text& text = *static_cast<Text*>(stream->ctx);
  const uint64_t count = std::min(size, text.mostAtOnce);
  text.bytes.append(static_cast<const char*>(bytes), count);
  return static_cast<int64_t>(count);
}

int64_t ReadText(const clap_istream_t* stream, void* bytes, uint64_t size) {
  Text& text = *static_cast<Text*>(stream->ctx);
  const uint64_t count = std::min({size, text.mostAtOnce, uint64_t{text.bytes.size() - text.place}});
  std::memcpy(bytes, text.bytes.data() + text.place, count);
  text.place += count;
  return static_cast<int64_t>(count);
}

const clap_plugin_factory_t& GetFactory() {
  return *static_cast<const clap_plugin_factory_t*>(clap_entry.get_factory(CLAP_PLUGIN_FACTORY_ID));
}

template <typename Event>
Event Make(uint32_t frame, uint16_t type) {
  Event event = {};
  event.header = {sizeof(Event), frame, CLAP_CORE_EVENT_SPACE_ID, type, 0};
  return event;
}

}  // namespace

TestHost::TestHost(bool hasExtensions) : hasExtensions_(hasExtensions) {
  host_ = {CLAP_VERSION_INIT,
           this,
           "Test",
           "Sonvelle",
           "",
           "1",
           FindExtension,
           [](const clap_host_t* host) { ++From(host).restarts; },
           nullptr,
           [](const clap_host_t* host) { ++From(host).callbacks; }};
}

TestEvent SetAt(uint32_t frame, const clap_param_info_t& parameter, double value, bool hasCookie) {
  TestEvent event;
  event.value = Make<clap_event_param_value_t>(frame, CLAP_EVENT_PARAM_VALUE);
  event.value.param_id = parameter.id;
  event.value.cookie = hasCookie ? parameter.cookie : nullptr;
  event.value.note_id = event.value.port_index = event.value.channel = event.value.key = -1;
  event.value.value = value;
  return event;
}

double ChooseValue(const clap_param_info_t& parameter, TestRandom& random) {
  if (parameter.flags & CLAP_PARAM_IS_STEPPED)
    return random.Integer(static_cast<int32_t>(parameter.min_value),
                          static_cast<int32_t>(parameter.max_value));
  return random.Real(parameter.min_value, parameter.max_value);
}

TestEvent NoteAt(uint32_t frame, uint16_t type, int32_t id, int32_t channel, int32_t key, double velocity) {
  TestEvent event;
  event.note = Make<clap_event_note_t>(frame, type);
  event.note.note_id = id;
  event.note.channel = static_cast<int16_t>(channel);
  event.note.key = static_cast<int16_t>(key);
  event.note.velocity = velocity;
  return event;
}

TestEvent MidiAt(uint32_t frame, uint8_t status, uint8_t first, uint8_t second) {
  TestEvent event;
  event.midi = Make<clap_event_midi_t>(frame, CLAP_EVENT_MIDI);
  event.midi.data[0] = status;
  event.midi.data[1] = first;
  event.midi.data[2] = second;
  return event;
}

uint32_t CLAP_ABI EventList::Size(const clap_input_events_t* list) {
  return static_cast<uint32_t>(static_cast<EventList*>(list->ctx)->events_.size());
}

const clap_event_header_t* CLAP_ABI EventList::At(const clap_input_events_t* list, uint32_t index) {
  return &static_cast<EventList*>(list->ctx)->events_.at(index).header;
}

bool CLAP_ABI EventList::Push(const clap_output_events_t* list, const clap_event_header_t* event) {
  EventList& self = *static_cast<EventList*>(list->ctx);
  if (self.refuses_) return false;
  TestEvent kept = {};
  std::memcpy(&kept, event, std::min<std::size_t>(event->size, sizeof kept));
  self.events_.push_back(kept);
  return true;
}

ClapPlugin::ClapPlugin(const std::string& id, TestHost& host) {
  if (!clap_entry.init("")) throw std::runtime_error("the entry does not start");
  plugin_ = GetFactory().create_plugin(&GetFactory(), host.Get(), id.c_str());
  if (!plugin_ || !plugin_->init(plugin_)) throw std::runtime_error(id + " cannot be made");
}

ClapPlugin::~ClapPlugin() {
  plugin_->destroy(plugin_);
  clap_entry.deinit();
}

std::vector<std::string> ClapPlugin::GetIds() {
  std::vector<std::string> ids;
  clap_entry.init("");
  for (uint32_t i = 0; i < GetFactory().get_plugin_count(&GetFactory()); ++i)
    ids.push_back(GetFactory().get_plugin_descriptor(&GetFactory(), i)->id);
  clap_entry.deinit();
  return ids;
}

std::vector<clap_param_info_t> ClapPlugin::GetParameters() const {
  const auto* const extension = Find<clap_plugin_params_t>(CLAP_EXT_PARAMS);
  std::vector<clap_param_info_t> parameters(extension->count(plugin_));
  for (uint32_t i = 0; i < parameters.size(); ++i)
    EXPECT_TRUE(extension->get_info(plugin_, i, &parameters[i]));
  return parameters;
}

clap_param_info_t ClapPlugin::GetParameter(const std::string& name) const {
  for (const clap_param_info_t& parameter : GetParameters())
    if (parameter.name == name) return parameter;
  throw std::runtime_error("there is no parameter " + name);
}

double ClapPlugin::GetValue(const clap_param_info_t& parameter) const {
  double value = NAN;
  EXPECT_TRUE(Find<clap_plugin_params_t>(CLAP_EXT_PARAMS)->get_value(plugin_, parameter.id, &value));
  return value;
}

std::string ClapPlugin::SaveState(uint64_t mostAtOnce) const {
  Text text{{}, mostAtOnce};
  const clap_ostream_t stream = {&text, WriteText};
  EXPECT_TRUE(Find<clap_plugin_state_t>(CLAP_EXT_STATE)->save(plugin_, &stream));
  return text.bytes;
}

bool ClapPlugin::LoadState(const std::string& bytes, uint64_t mostAtOnce) const {
  Text text{bytes, mostAtOnce};
  const clap_istream_t stream = {&text, ReadText};
  return Find<clap_plugin_state_t>(CLAP_EXT_STATE)->load(plugin_, &stream);
}

void ClapPlugin::Flush(std::vector<TestEvent> events) const {
  const EventList list(std::move(events));
  const EventList out;
  Find<clap_plugin_params_t>(CLAP_EXT_PARAMS)->flush(plugin_, list.GetInput(), out.GetOutput());
}

AudioBlock ClapPlugin::Run(AudioBlock signal, const std::vector<TestEvent>& events,
                           const std::vector<int32_t>& sizes) {
  const auto channels = static_cast<uint32_t>(signal.GetChannelCount());
  std::size_t next = 0;
  for (int32_t done = 0; done < signal.GetLength();) {
    int32_t size = signal.GetLength() - done;
    if (!sizes.empty()) size = std::min(size, sizes[std::min(next++, sizes.size() - 1)]);
    EventList list;
    for (TestEvent event : events) {
      const int64_t frame = int64_t{event.header.time} - done;
      if (frame < 0 || frame >= size) continue;
      event.header.time = static_cast<uint32_t>(frame);
      list.events_.push_back(event);
    }
    float** const buffers = signal.From(done);
    const clap_audio_buffer_t in = {buffers, nullptr, channels, 0, 0};
    clap_audio_buffer_t out = in;
    const clap_process_t block = {-1,
                                  static_cast<uint32_t>(size),
                                  nullptr,
                                  &in,
                                  &out,
                                  IsInstrument() ? 0u : 1u,
                                  1,
                                  list.GetInput(),
                                  told_.GetOutput()};
    status_ = plugin_->process(plugin_, &block);
    done += size;
  }
  return signal;
}

INSTANTIATE_TEST_SUITE_P(Plugins, ClapSuite, testing::ValuesIn(ClapPlugin::GetIds()),
                         [](const testing::TestParamInfo<std::string>& id) {
                           return id.param.substr(id.param.rfind('.') + 1);
                         });
