#include "hosts/cli/RenderCommand.h"

#include <bit>
#include <cmath>
#include <cstdio>

#include "hosts/cli/EffectRender.h"
#include "hosts/cli/Failure.h"
#include "hosts/cli/Progress.h"
#include "hosts/cli/Settings.h"
#include "hosts/cli/State.h"
#include "hosts/cli/System.h"
#include "hosts/cli/Words.h"

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
  std::string text;
  char decibels[32];
  std::snprintf(decibels, sizeof decibels, "%+.1f dB", 20 * std::log10(static_cast<double>(peak)));
  if (!std::isfinite(peak))
    text = "the output contains values that are not finite";
  else if (peak > 1)
    text = "the output exceeds full scale, its peak is at " + std::string(decibels);
  else if (peak == 0 && levels.input != 0)
    text = "the output is nothing but silence, but the input is not";
  else
    return;
  std::fputs(("sonvelle: warning: " + OneLine(path) + ": " + text + "\n").c_str(), stderr);
}

std::optional<int64_t> Add(std::optional<int64_t> frames, int64_t more) {
  return frames ? std::optional(*frames + more) : std::nullopt;
}

// `state` is null for none.
EffectRender::Levels RenderFile(bridge::Plugin& effect, MXMLItem* state, const std::vector<Setting>& settings,
                                const RenderArguments& arguments) {
  AudioReader reader(arguments.input);
  const EffectRender::Format format = MakeFormat(reader.GetFormat(), arguments);
  OutputFile output(arguments.output);
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

}  // namespace

void Render(const bridge::PluginType& type, const RenderArguments& arguments) {
  if (type.kind != bridge::PluginKind::kEffect)
    throw Failure(ExitCode::kUsage, arguments.effect + " is no effect");
  for (const std::string& source : {arguments.input, arguments.state.value_or("")})
    if (IsSameFile(source, arguments.output))
      throw Failure(ExitCode::kUsage, source + " and " + arguments.output + " are the same file");
  bridge::Plugin effect(type.entryPoint);
  const std::vector<Setting> settings = ReadSettings(effect, arguments.effect, arguments.settings);
  MXMLItem state;
  if (arguments.state) ReadState(*arguments.state, arguments.effect, state);
  WarnOf(RenderFile(effect, arguments.state ? &state : nullptr, settings, arguments), arguments.output);
}

}  // namespace cli
