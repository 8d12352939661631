#pragma once
// A plug-in behind the numbered services, written without the library's own base classes. It notes what its
// host asks, and has a row of each kind:
//   gain   real         what the input is multiplied with
//   tail   integer      samples that it goes on to sound behind the last one that is not 0
//   mode   enumeration  what comes out: the signal, silence, or no numbers
//   flip   switch       the sign of the output
// Its state is the gain alone. It delays nothing but says so (latency 7), and it raises in whatever service
// it is told to.

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "core/MException.h"
#include "core/MXMLItem.h"
#include "plugin/MHostInterface.h"

class FakePlugin {
 public:
  enum Row { kGain, kTail, kMode, kFlip, kPanel, kRowCount };
  static constexpr int32_t kLatency = 7;
  static constexpr int32_t kNever = -1;

  static inline std::vector<std::string> notes;
  static inline std::function<void(const std::string&)> note = [](const std::string& text) {
    notes.push_back(text);
  };
  static inline int32_t raisingService = kNever;  // raises "It fails." there
  static inline bool flushesDenormals = false;    // what the last block saw

  static MWord M_CALL EntryPoint(void* instance, int32_t service, MServiceArguments* arguments) {
    FakePlugin* const plugin = instance ? static_cast<FakePlugin*>(instance) : nullptr;
    if (service == raisingService) throw MException("It fails.");
    if (!plugin) {
      note("attach");
      FakePlugin* const made = new FakePlugin;
      made->context_ = MAsAddress<void>(arguments->slot[0].value);
      made->callback_ = MAsAddress<MHostCallback>(arguments->slot[1].value);
      return MAsWord(made);
    }
    return plugin->Service(service, arguments->slot[0].value, arguments->slot[1].value,
                           arguments->slot[2].value);
  }

 private:
  FakePlugin() {
    static const char* const choices[] = {"Plain", "Silence", "No numbers"};
    const auto describe = [this](Row row, MParameterKind kind, const char* name, const char* key) {
      rows_[row].kind = kind;
      rows_[row].name = MString::Literal(name);
      rows_[row].key = MString::Literal(key);
    };
    describe(kGain, MParameterKind::kReal, "Gain", "gain");
    rows_[kGain].help = "<name>Gain</name> is a factor < 2.";
    rows_[kGain].formatter = FormatGain;
    rows_[kGain].real = {0, 2, 0.75, 0.75};
    describe(kTail, MParameterKind::kInteger, "Tail", "tail");
    rows_[kTail].integer = {0, 100000000, 0, 0};
    describe(kMode, MParameterKind::kEnumeration, "Mode", "mode");
    rows_[kMode].enumeration = {choices, 3, 0, 0};
    describe(kFlip, MParameterKind::kSwitch, "Flip", "flip");
    rows_[kFlip].onOff = {0, 0};
    describe(kPanel, MParameterKind::kPanel, "Group", "group");
    rows_[kPanel].panel = {0, nullptr};
    block_.parameters = rows_;
    block_.parameterCount = kRowCount;
  }

  static void M_CALL FormatGain(MString& text, double value, const MPluginParameter&) {
    text = MString(u"\u00D7 ");
    text.Append(MString::FromDouble(value, 1));
  }

  MWord Service(int32_t service, MWord a, MWord b, MWord c) {
    const auto number = [](MWord word) { return std::to_string(word).insert(0, 1, ' '); };
    switch (service) {
      case MService::kDestroy:
        note("destroy");
        delete this;
        return 0;
      case MService::kPublicBlock:
        return MAsWord(&block_);
      case MService::kParameterChanged:
        note("changed" + number(a));
        if (callback_) callback_(context_, MHostCode::kParametersChanged, nullptr);
        return 0;
      case MService::kSaveState:
        note("save");
        MAsAddress<MXMLItem>(a)->SetAttribute("gain", MString::FromDouble(rows_[kGain].real.value, 4));
        return 0;
      case MService::kLoadState:
        note("load");
        rows_[kGain].real.value = MAsAddress<MXMLItem>(a)->GetAttribute("gain", "0.75").ToDouble();
        return 0;
      case MService::kStateLoaded:
        note("loaded");
        return 0;
      case MService::kCommand:
        note("command " + std::string(MAsAddress<const char>(a)) + number(b));
        return b;
      case MService::kPrepare:
        note("prepare" + number(a) + number(b));
        channels_ = static_cast<int32_t>(a);
        return 0;
      case MService::kProcess:
        note("process" + number(c));
        Process(MAsAddress<float*>(a), MAsAddress<float*>(b), static_cast<int32_t>(c));
        return 0;
      case MService::kIsSilent:
        return left_ <= 0;
      case MService::kGetLatency:
        return kLatency;
      case MService::kSkip:
        note("skip" + number(a));
        return 0;
      default:
        return -1;
    }
  }

  void Process(float** in, float** out, int32_t samples) {
    volatile double tiny = std::numeric_limits<double>::min();
    flushesDenormals = tiny / 2 == 0;
    const double gain = rows_[kGain].real.value * (rows_[kFlip].onOff.value ? -1 : 1);
    for (int32_t i = 0; i < samples; ++i, --left_)
      for (int32_t c = 0; c < channels_; ++c) {
        const float x = in[c][i];
        if (x != 0) left_ = rows_[kTail].integer.value + 1;
        out[c][i] = rows_[kMode].enumeration.value == 0   ? static_cast<float>(x * gain)
                    : rows_[kMode].enumeration.value == 1 ? 0.0f
                                                          : std::numeric_limits<float>::quiet_NaN();
      }
  }

  MPluginParameter rows_[kRowCount];
  MPluginPublicBlock block_;
  void* context_ = nullptr;
  MHostCallback* callback_ = nullptr;
  int32_t channels_ = 0;
  int64_t left_ = 0;  // samples until it is silent
};
