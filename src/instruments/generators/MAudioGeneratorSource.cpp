#include "instruments/generators/MAudioGeneratorSource.h"

#include <algorithm>
#include <cmath>

#include "core/MXMLNumber.h"
#include "dsp/MFilter.h"

double MAudioGeneratorSource::GetLength(bool inSeconds) const {
  const double seconds = std::isfinite(lengthSeconds) ? lengthSeconds : kDefaultSeconds;
  return inSeconds ? seconds : std::trunc(std::clamp(GetRate() * seconds, 0.0, kEndless));
}

void MAudioGeneratorSource::Start(Sound& sound, double gain) const {
  sound.remaining = static_cast<int32_t>(GetLength(false));
  sound.gain = MLimitToFloat(gain);
}

bool MAudioGeneratorSource::Compute(MGeneratorState& state, MAudioBuffer& buffer) {
  auto& sound = static_cast<Sound&>(state);
  const int32_t made = std::min(sound.remaining, buffer.GetLength());
  if (float* const first = buffer.GetChannel(0)) {
    Make(sound, first, made);
    std::fill(first + made, first + buffer.GetLength(), 0.0f);
    for (int32_t c = 1; c < buffer.GetChannelCount(); ++c)
      std::copy_n(first, buffer.GetLength(), buffer.GetChannel(c));
  }
  sound.remaining -= made;
  return sound.remaining < 1;
}

void MAudioGeneratorSource::Save(MXMLItem& item) const {
  item.SetAttribute("length", MString::FromDouble(lengthSeconds, 4));
}

void MAudioGeneratorSource::Load(const MXMLItem& item) {
  lengthSeconds = MReadNumber(item, "length", kDefaultSeconds);
}
