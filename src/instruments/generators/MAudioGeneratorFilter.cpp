#include "instruments/generators/MAudioGeneratorFilter.h"

void MAudioGeneratorFilter::SetFormat(int32_t channels, int32_t sampleRate) {
  MAudioGeneratorObject::SetFormat(channels, sampleRate);
  inner_.SetFormat(channels, sampleRate);
}

void MAudioGeneratorFilter::AddChangeHandler(const Handler& handler) {
  MAudioGeneratorObject::AddChangeHandler(handler);
  inner_.AddChangeHandler(handler);
}

void MAudioGeneratorFilter::AddStructureHandler(const Handler& handler) {
  MAudioGeneratorObject::AddStructureHandler(handler);
  inner_.AddStructureHandler(handler);
}
