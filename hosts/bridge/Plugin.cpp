#include "hosts/bridge/Plugin.h"

#include <utility>

#include "core/MException.h"
#include "core/MFlushDenormals.h"

namespace bridge {

Plugin::Plugin(MPluginEntryPoint* entryPoint, MHostCallback* callback, void* context)
    : entryPoint_(entryPoint), instance_(nullptr), block_(nullptr) {
  instance_ = MAsAddress<void>(Call(MService::kAttach, MAsWord(context), reinterpret_cast<MWord>(callback)));
  if (!instance_) throw MException("The plug-in could not be made.");
  try {
    block_ = MAsAddress<MPluginPublicBlock>(Call(MService::kPublicBlock));
  } catch (...) {
    Destroy();
    throw;
  }
}

Plugin::Plugin(Plugin&& other) noexcept
    : entryPoint_(other.entryPoint_),
      instance_(std::exchange(other.instance_, nullptr)),
      block_(std::exchange(other.block_, nullptr)) {}

Plugin& Plugin::operator=(Plugin&& other) noexcept {
  if (this != &other) {
    Destroy();
    entryPoint_ = other.entryPoint_;
    instance_ = std::exchange(other.instance_, nullptr);
    block_ = std::exchange(other.block_, nullptr);
  }
  return *this;
}

Plugin::~Plugin() {
  Destroy();
}

std::span<const MPluginParameter> Plugin::GetParameters() const noexcept {
  if (!block_ || !block_->parameters || block_->parameterCount < 1) return {};
  return {block_->parameters, static_cast<std::size_t>(block_->parameterCount)};
}

int32_t Plugin::FindParameter(std::string_view key) const {
  const auto rows = GetParameters();
  for (std::size_t i = 0; i < rows.size(); ++i)
    if (ToUtf8(rows[i].key) == key) return static_cast<int32_t>(i);
  return -1;
}

void Plugin::SetValue(int32_t index, double value) {
  StoreValue(index, value);
  TellChanged(index);
}

void Plugin::StoreValue(int32_t index, double value) noexcept {
  bridge::StoreValue(block_->parameters[index], value);
}

void Plugin::SaveState(MXMLItem& item) {
  Call(MService::kSaveState, MAsWord(&item));
}

void Plugin::LoadState(MXMLItem& item) {
  Call(MService::kLoadState, MAsWord(&item));
  Call(MService::kStateLoaded);
}

MWord Plugin::Command(const char* name, MWord argument) {
  return Call(MService::kCommand, MAsWord(name), argument);
}

void Plugin::Prepare(int32_t channels, int32_t sampleRate) {
  Call(MService::kPrepare, channels, sampleRate);
}

void Plugin::Process(const float* const* in, float* const* out, int32_t samples) {
  const MFlushDenormals flush;
  Call(MService::kProcess, MAsWord(in), MAsWord(out), samples);
}

void Plugin::Skip(int32_t samples) {
  const MFlushDenormals flush;
  Call(MService::kSkip, samples);
}

void Plugin::PrepareStreams(int32_t channels, int32_t sampleRate) {
  Call(MService::kPrepareStreams, channels, sampleRate);
}

MWord Plugin::CreateStream(int32_t delay, double volume, double ratio) {
  MWord stream = 0;
  MStreamRequest request;
  request.delay = delay;
  request.volume = volume;
  request.ratio = ratio;
  request.result = &stream;
  return Call(MService::kCreateStream, MAsWord(&request)) == 0 ? stream : 0;
}

int32_t Plugin::ComputeStream(MWord& stream, float* const* out, int32_t samples) {
  const MFlushDenormals flush;
  return static_cast<int32_t>(Call(MService::kComputeStream, MAsWord(out), samples, MAsWord(&stream)));
}

void Plugin::CloseStream(MWord& stream) {
  Call(MService::kCloseStream, MAsWord(&stream));
}

MWord Plugin::Call(int32_t service, MWord a, MWord b, MWord c) {
  MServiceArguments arguments(a, b, c);
  return entryPoint_(instance_, service, &arguments);
}

void Plugin::Destroy() noexcept {
  if (!instance_) return;
  try {
    Call(MService::kDestroy);
  } catch (const MException&) {
    // Nobody is left who could use the instance.
  }
  instance_ = nullptr;
}

}  // namespace bridge
