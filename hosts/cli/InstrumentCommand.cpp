#include "hosts/cli/InstrumentCommand.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "hosts/cli/Failure.h"
#include "hosts/cli/InstrumentRender.h"
#include "hosts/cli/Listing.h"
#include "hosts/cli/Paths.h"
#include "hosts/cli/Print.h"
#include "hosts/cli/Progress.h"
#include "hosts/cli/Settings.h"
#include "hosts/cli/State.h"
#include "hosts/cli/System.h"
#include "hosts/cli/Warnings.h"

namespace cli {

namespace {

constexpr int32_t kDefaultRate = 44100;
constexpr int32_t kDefaultChannels = 2;

void CheckArguments(const RenderArguments& arguments) {
  if (arguments.files.size() != 1)
    throw Failure(ExitCode::kUsage,
                  arguments.plugin + " is an instrument: it wants OUT.wav alone (see: sonvelle help render)");
  if (arguments.notes.empty() != arguments.midi.has_value())
    throw Failure(
        ExitCode::kUsage,
        arguments.plugin + " is an instrument: it wants --note or --midi (see: sonvelle help render)");
  if (arguments.isOneShot && !arguments.midi)
    throw Failure(ExitCode::kUsage, "--one-shot goes with --midi (see: sonvelle help render)");
  for (const auto& source : {arguments.state, arguments.sample, arguments.midi})
    RequireOther(source.value_or(""), arguments.files[0]);
}

void WarnOfMissing(const std::vector<NoteResult>& notes, const std::string& plugin) {
  const auto missing =
      std::count_if(notes.begin(), notes.end(), [](const NoteResult& note) { return !note.isMade; });
  if (missing > 0)
    Warn(plugin + " had no sound for " + std::to_string(missing) + " of " + std::to_string(notes.size()) +
         " notes; its sample may be missing");
}

std::vector<NoteResult> RenderFile(bridge::Plugin& instrument, const std::vector<MidiEvent>& events,
                                   const RenderArguments& arguments) {
  const std::string& path = arguments.files[0];
  const AudioFormat audio = {arguments.channels.value_or(kDefaultChannels),
                             arguments.sampleRate.value_or(kDefaultRate)};
  InstrumentRender render(instrument, {audio, arguments.blockFrames,
                                       std::llround(arguments.tailSeconds.value_or(0) * audio.sampleRate)});
  std::optional<int64_t> length;
  if (!arguments.midi) length = render.GetLength(arguments.notes);
  OutputFile output(path);
  AudioWriter writer(output, audio, length ? length : render.GetMostFrames(events));
  std::vector<NoteResult> results;
  {
    Progress progress(length, audio.sampleRate);
    int64_t done = 0;
    const auto sink = [&](const float* samples, int64_t frames) {
      writer.Write(samples, frames);
      progress.Show(done += frames);
    };
    results = arguments.midi ? render.RenderMidi(events, arguments.isOneShot, sink)
                             : render.RenderNotes(arguments.notes, sink);
  }
  writer.Close();
  output.Commit();
  WarnOfPeak(render.GetPeak(), path);
  return results;
}

}  // namespace

void RequireOther(const std::string& source, const std::string& output) {
  if (IsSameFile(source, output))
    throw Failure(ExitCode::kUsage, source + " and " + output + " are the same file");
}

void ImportSample(bridge::Plugin& plugin, const std::string& name, const std::string& path) {
  std::error_code error;  // the name of no file stays as it is
  const std::filesystem::path file = std::filesystem::absolute(path, error).lexically_normal();
  const MString texts[] = {ToLibraryPath(file.parent_path().string()),
                           ToLibraryPath(file.filename().string())};
  const MWord result = plugin.Command("ImportSample", MAsWord(texts));
  if (result == -1) throw Failure(ExitCode::kUsage, name + " imports no sample");
  if (result != 0) Warn(path + ": it cannot be loaded as a sample");
}

void RenderInstrument(const bridge::PluginType& type, const RenderArguments& arguments) {
  CheckArguments(arguments);
  const std::vector<MidiEvent> events =
      arguments.midi ? ReadMidiFile(*arguments.midi) : std::vector<MidiEvent>();
  bridge::Plugin instrument(type.entryPoint);
  const std::vector<Setting> settings = ReadSettings(instrument, arguments.plugin, arguments.settings);
  if (arguments.state) {
    MXMLItem state;
    ReadState(*arguments.state, arguments.plugin, state);
    instrument.LoadState(state);
  }
  for (const Setting& setting : settings) instrument.SetValue(setting.index, setting.value);
  if (arguments.sample) ImportSample(instrument, arguments.plugin, *arguments.sample);
  const std::vector<NoteResult> results = RenderFile(instrument, events, arguments);
  WarnOfMissing(results, arguments.plugin);
  Print(NotesAsJson(results));
}

}  // namespace cli
