// Tonebench beside a plain model of it in doubles, over random states that are loaded while it runs.
//
// Between two sections a sample is rounded to float. Where it lies in the middle of two floats, another order
// of a sum may round it the other way, and the sections behind may amplify that, up to hundreds of times. How
// much comes of such roundings shows the model itself, run a second time without them.

#include <gtest/gtest.h>

#include "core/MXMLItem.h"
#include "tests/effects/NamedEffect.h"

namespace {

constexpr double kBias = 1.0000000195414814e-25;
constexpr const char* kTypes[] = {"Peak",     "LowShelf", "HighShelf", "LowPass",
                                  "HighPass", "BandPass", "Notch"};

struct Band {
  double log10Hz, gain, q;
  int32_t type;
  bool isEnabled;
};

struct Section {
  double b0, b1, b2, a1, a2;
};

Section Design(const Band& band, double gain, int32_t sampleRate) {
  double frequency = std::pow(10.0, band.log10Hz);
  if (frequency >= 0.5 * sampleRate) frequency = 0.4999 * sampleRate;
  const double A = std::pow(10.0, gain / 40);
  const double w = 2 * 3.14159265358979323846 * frequency / sampleRate;
  const double sn = std::sin(w), cs = std::cos(w);
  const double alpha = sn / (2 * band.q);
  const double ba = 2 * std::sqrt(A) * alpha;
  double b0, b1, b2, a0 = 1 + alpha, a1 = -2 * cs, a2 = 1 - alpha;
  switch (band.type) {
    case 0:
      b0 = 1 + alpha * A, b1 = -2 * cs, b2 = 1 - alpha * A;
      a0 = 1 + alpha / A, a2 = 1 - alpha / A;
      break;
    case 1:
      b0 = A * ((A + 1) - (A - 1) * cs + ba);
      b1 = 2 * A * ((A - 1) - (A + 1) * cs);
      b2 = A * ((A + 1) - (A - 1) * cs - ba);
      a0 = (A + 1) + (A - 1) * cs + ba;
      a1 = -2 * ((A - 1) + (A + 1) * cs);
      a2 = (A + 1) + (A - 1) * cs - ba;
      break;
    case 2:
      b0 = A * ((A + 1) + (A - 1) * cs + ba);
      b1 = -2 * A * ((A - 1) + (A + 1) * cs);
      b2 = A * ((A + 1) + (A - 1) * cs - ba);
      a0 = (A + 1) - (A - 1) * cs + ba;
      a1 = 2 * ((A - 1) - (A + 1) * cs);
      a2 = (A + 1) - (A - 1) * cs - ba;
      break;
    case 3:
      b0 = b2 = (1 - cs) / 2, b1 = 1 - cs;
      break;
    case 4:
      b0 = b2 = (1 + cs) / 2, b1 = -(1 + cs);
      break;
    case 5:
      b0 = alpha, b1 = 0, b2 = -alpha;
      break;
    default:
      b0 = b2 = 1, b1 = -2 * cs;
  }
  return {b0 / a0 + kBias, b1 / a0 + kBias, b2 / a0 + kBias, kBias - a1 / a0, kBias - a2 / a0};
}

class TonebenchModel {
 public:
  std::vector<Band> bands;
  double gainFactor = 1;

  // Also measures what the roundings between the sections make of the output, so far.
  double roundingNoise = 0;

  AudioBlock Process(const AudioBlock& in, int32_t sampleRate) {
    std::vector<Section> sections;
    for (const Band& band : bands)
      if (band.isEnabled) sections.push_back(Design(band, band.gain * gainFactor, sampleRate));
    AudioBlock out = in;
    for (int32_t c = 0; c < std::min(in.GetChannelCount(), 8); ++c) {
      for (int32_t i = 0; i < in.GetLength(); ++i) {
        double rounded = in[c][i], unrounded = rounded;
        for (std::size_t place = 0; place < sections.size(); ++place) {
          rounded = static_cast<float>(Run(sections[place], states_[c][place], rounded));
          unrounded = Run(sections[place], unroundedStates_[c][place], unrounded);
        }
        out[c][i] = static_cast<float>(rounded);
        roundingNoise = std::max(roundingNoise, std::abs(rounded - unrounded));
      }
    }
    return out;
  }

 private:
  struct State {
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
  };
  static double Run(const Section& f, State& s, double x) {
    const double y = f.b0 * x + f.b1 * s.x1 + f.b2 * s.x2 + f.a1 * s.y1 + f.a2 * s.y2;
    s.x2 = s.x1;
    s.x1 = x;
    s.y2 = s.y1;
    s.y1 = y;
    return y;
  }

  State states_[8][6], unroundedStates_[8][6];  // by channel and place, not by band
};

class Scenario {
 public:
  explicit Scenario(TestRandom& random) : random_(random), tonebench_("Tonebench") {
    Load();
    Prepare();
  }

  void Step() {
    if (random_.OneIn(12)) Prepare();
    if (random_.OneIn(4)) Load();
    Process();
  }

 private:
  void Prepare() {
    channels_ = random_.OneIn(3) ? random_.Integer(0, 10) : 2;
    sampleRate_ = random_.OneOf<int32_t>({8000, 22050, 32000, 44100, 48000, 96000, 192000});
    tonebench_.Prepare(channels_, sampleRate_);
  }

  void Load() {
    MXMLItem item("state");
    MXMLItem& graph = item.AddSubItem("graph");
    model_.bands.clear();
    for (int32_t i = 0; i < 6; ++i) {
      const Band band = {random_.Real(1.31, 4.3), random_.OneIn(5) ? 0 : random_.Real(-24, 24),
                         random_.Real(0.05, 20), random_.Below(7), random_.OneIn(2)};
      MXMLItem& point = graph.AddSubItem("point");
      point.SetAttribute("x", MString::FromDouble(band.log10Hz, 14));
      point.SetAttribute("y", MString::FromDouble(band.gain, 14));
      point.SetAttribute("q", MString::FromDouble(band.q, 14));
      point.SetAttribute("enabled", MString::FromInteger(band.isEnabled));
      point.SetAttribute("type", MString::Literal(kTypes[band.type]));
      model_.bands.push_back(band);
    }
    const int32_t halfGain = random_.Below(3);
    if (halfGain < 2) item.SetAttribute("halfgain", MString::FromInteger(halfGain));
    model_.gainFactor = halfGain == 0 ? 1 : 2;
    tonebench_.Call(MService::kLoadState, MAsWord(&item));
  }

  void Process() {
    const int32_t samples = random_.Integer(0, random_.OneOf<int32_t>({0, 10, 300, 3000}));
    AudioBlock in =
        random_.OneIn(5) ? AudioBlock(channels_, samples) : AudioBlock::Noise(channels_, samples, random_);
    const AudioBlock expected = model_.Process(in, sampleRate_);
    AudioBlock out = AudioBlock::Constant(channels_, samples, NAN);
    const bool inPlace = random_.OneIn(2);
    tonebench_.Process(in.From(), inPlace ? in.From() : out.From(), samples);
    peak_ = std::max(peak_, expected.GetPeak());
    ASSERT_LE((inPlace ? in : out).GetDistance(expected), 4 * model_.roundingNoise + 1e-7 * peak_);
    ASSERT_TRUE(in.GuardsHold() && out.GuardsHold());
  }

  TestRandom& random_;
  NamedEffect tonebench_;
  TonebenchModel model_;
  int32_t channels_ = 0;
  int32_t sampleRate_ = 0;
  double peak_ = 0;
};

TEST(Tonebench, AgreesWithAPlainModelInRandomScenarios) {
  TestRandom random;
  for (int32_t scenario = 0; scenario < 60 && !HasFailure(); ++scenario) {
    SCOPED_TRACE("scenario " + std::to_string(scenario));
    Scenario both(random);
    for (int32_t step = 0; step < 30 && !HasFatalFailure(); ++step) both.Step();
  }
}

}  // namespace
