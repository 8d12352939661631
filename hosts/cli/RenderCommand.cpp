#include "hosts/cli/RenderCommand.h"

#include <bit>
#include <cmath>

#include "hosts/cli/EffectRender.h"
#include "hosts/cli/Failure.h"
#include "hosts/cli/InstrumentCommand.h"
#include "hosts/cli/Progress.h"
#include "hosts/cli/Settings.h"
#include "hosts/cli/State.h"
#include "hosts/cli/Warnings.h"

namespace cli {

namespace {

EffectRender::Format MakeFormat(const AudioFormat& audio, const RenderArguments& arguments) {
  EffectRender::Format format = {audio, arguments.blockFrames, std::nullopt,
                                 int64_t{kMaximumAutomaticTailSeconds} * audio.sampleRate};
  if (arguments.tailSeconds) format.tailFrames = std::llround(*arguments.tailSeconds * audio.sampleRate);
  return format;
}

void WarnOf(const EffectRender::Levels& levels, const std::string& path) {
  const float peak = std::bit_cast<float>(levels.output);
  if (peak == 0 && levels.input != 0)
    Warn(path + ": the output is nothing but silence, but the input is not");
  else
    WarnOfPeak(peak, path);
}

std::optional<int64_t> Add(std::optional<int64_t> frames, int64_t more) {
  return frames ? std::optional(*frames + more) : std::nullopt;
}

// `state` is null for none.
EffectRender::Levels RenderFile(bridge::Plugin& effect, MXMLItem* state, const std::vector<Setting>& settings,
                                const RenderArguments& arguments) {
  AudioReader reader(arguments.files[0]);
  const EffectRender::Format format = MakeFormat(reader.GetFormat(), arguments);
  OutputFile output(arguments.files[1]);
  AudioWriter writer(output, format.audio,
                     Add(reader.GetFrames(), format.tailFrames.value_or(format.mostTailFrames)));
  effect.Prepare(format.audio.channels, format.audio.sampleRate);
  if (state) effect.LoadState(*state);
  for (const Setting& setting : settings) effect.SetValue(setting.index, setting.value);
  EffectRender render(effect, format);
  {
    Progress progress(Add(reader.GetFrames(), format.tailFrames.value_or(0)), format.audio.sampleRate);
    int64_t done = 0;
    render.Run([&](float* samples, int64_t frames) { return reader.Read(samples, frames); },
               [&](const float* samples, int64_t frames) {
                 writer.Write(samples, frames);
                 progress.Show(done += frames);
               });
  }
  writer.Close();
  output.Commit();
  return render.GetLevels();
}

void RenderEffect(const bridge::PluginType& type, const RenderArguments& arguments) {
  if (arguments.files.size() != 2)
    throw Failure(ExitCode::kUsage,
                  arguments.plugin + " is an effect: it wants IN and OUT.wav (see: sonvelle help render)");
  if (!arguments.notes.empty() || arguments.midi || arguments.sample || arguments.isOneShot ||
      arguments.sampleRate || arguments.channels)
    throw Failure(ExitCode::kUsage, arguments.plugin +
                                        " is an effect: --note, --midi, --one-shot, --sample, " +
                                        "--rate and --channels are for instruments");
  const std::string& output = arguments.files[1];
  for (const std::string& source : {arguments.files[0], arguments.state.value_or("")})
    RequireOther(source, output);
  bridge::Plugin effect(type.entryPoint);
  const std::vector<Setting> settings = ReadSettings(effect, arguments.plugin, arguments.settings);
  MXMLItem state;
  if (arguments.state) ReadState(*arguments.state, arguments.plugin, state);
  WarnOf(RenderFile(effect, arguments.state ? &state : nullptr, settings, arguments), output);
}

}  // namespace

void Render(const bridge::PluginType& type, const RenderArguments& arguments) {
  if (type.kind == bridge::PluginKind::kEffect)
    RenderEffect(type, arguments);
  else
    RenderInstrument(type, arguments);
}

}  // namespace cli
