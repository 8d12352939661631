#include "dsp/MEnvelopePoint.h"

namespace {

struct Keyword {
  MString name;
  MString help;
};

constexpr Keyword kTypes[MEnvelopeType::kCount] = {
    {"Mode 1", "Fastest, minimal curvature freedom."},
    {"Mode 2", "Fast, average curvature freedom."},
    {"Mode 3", "Very slow, very high curvature freedom."},
    {"Free 1", "Normal speed, curvature adjustable in both axes."},
    {"Smooth 1", "Fast, no curvature, provides smooth connection between neighbouring segments."},
};

constexpr Keyword kSmoothings[MEnvelopeSmoothing::kCount] = {
    {"Mode 1", "Slower, but usually gives less unnecessary curving."},
    {"Mode 2", "Faster, but can give unnecessary curving."},
};

template <int32_t N>
const Keyword* At(const Keyword (&table)[N], int32_t index) noexcept {
  return index >= 0 && index < N ? &table[index] : nullptr;
}

template <int32_t N>
int32_t IndexOf(const Keyword (&table)[N], const MString& name) noexcept {
  for (int32_t i = 0; i < N; ++i)
    if (table[i].name == name) return i;
  return 0;
}

}  // namespace

MString MEnvelopeType::GetName(int32_t type) noexcept {
  const Keyword* const found = At(kTypes, type);
  return found ? found->name : MString();
}

MString MEnvelopeType::GetHelp(int32_t type) noexcept {
  const Keyword* const found = At(kTypes, type);
  return found ? found->help : MString();
}

int32_t MEnvelopeType::Find(const MString& name) noexcept {
  return IndexOf(kTypes, name);
}

MString MEnvelopeSmoothing::GetName(int32_t type) noexcept {
  const Keyword* const found = At(kSmoothings, type);
  return found ? found->name : MString();
}

MString MEnvelopeSmoothing::GetHelp(int32_t type) noexcept {
  const Keyword* const found = At(kSmoothings, type);
  return found ? found->help : MString();
}

int32_t MEnvelopeSmoothing::Find(const MString& name) noexcept {
  return IndexOf(kSmoothings, name);
}
