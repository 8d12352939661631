#include "hosts/cli/Arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "hosts/cli/Failure.h"
#include "hosts/cli/ManPage.h"
#include "hosts/cli/Words.h"

namespace cli {

namespace {

// The command line and where its words go.
struct Parser {
  Parser();
  Arguments Parse(int argc, char** argv);
  std::string GetHelp(const std::string& command);
  std::string GetManPage();

 private:
  std::vector<std::string_view> GetCommands() const;
  void RequireCommand(const std::string& name) const;
  void AddList();
  void AddParams();
  void AddRender();
  void AddNotes(CLI::App& render);
  void AddState();
  void AddInfo();
  void AddMultisample();
  void AddSubsamples();
  void AddRegister();
  void AddHelp();
  Arguments GetResult();

  CLI::App app_{"Lists the audio plug-ins of Sonvelle and renders sound files with them.", "sonvelle"};
  ListArguments list_;
  ParamsArguments params_;
  RenderArguments render_;
  StateArguments state_;
  InfoArguments info_;
  MultisampleArguments multisample_;
  SubsamplesArguments subsamples_;
  std::string block_ = "512";
  std::string tail_ = "0";
  std::vector<std::string> notes_;
  std::string rate_;
  std::string channels_;
  std::string helpCommand_;
  bool helpAsManPage_ = false;
};

constexpr char kDashes[] = "File names that begin with \"-\" stand behind \"--\".";

std::string ExitCodes() {
  std::string text;
  for (std::size_t i = 0; i < std::size(kExitTexts); ++i)
    text += (i == 0 ? "Exit codes: " : ", ") + std::to_string(i) + " " + kExitTexts[i];
  return text + ".";
}

// A positional word that has a type is shown as that: "[IN] OUT.wav".
class TypeFormatter : public CLI::Formatter {
 public:
  std::string make_option_usage(const CLI::Option* option) const override {
    return IsType(option, true) ? option->get_type_name() : Formatter::make_option_usage(option);
  }
  std::string make_option_name(const CLI::Option* option, bool isPositional) const override {
    return IsType(option, isPositional) ? option->get_type_name()
                                        : Formatter::make_option_name(option, isPositional);
  }
  std::string make_option_opts(const CLI::Option* option) const override {
    return IsType(option, option->get_positional()) ? "" : Formatter::make_option_opts(option);
  }

 private:
  static bool IsType(const CLI::Option* option, bool isPositional) {
    return isPositional && !option->get_type_name().empty();
  }
};

CLI::Option* AddName(CLI::App& command, const char* name, std::string& target, const char* description) {
  return command.add_option(name, target, description)->required()->type_name("");
}

// What a plug-in is to begin with.
void AddValues(CLI::App& command, std::optional<std::string>& state, std::vector<std::string>& settings) {
  command
      .add_option("--state", state,
                  "Load a state as \"sonvelle state\" prints it. What it does not tell gets its default.")
      ->type_name("FILE");
  command
      .add_option(
          "--set", settings,
          "Set a parameter, behind the state. A number alone is in the units of \"sonvelle params\": "
          "log10 of hertz for frequencies, square roots for thresholds, an index for lists, 0 or 1 for "
          "switches. A text is what the parameter shows, such as \"440 Hz\", \"-6 dB\", \"120 ms\", "
          "\"50%\", \"on\" or a choice of a list. Repeat it for more parameters.")
      ->expected(1)
      ->allow_extra_args(false)
      ->take_all()
      ->type_name("KEY=VALUE");
}

// The sound of an instrument that plays a file.
void AddSample(CLI::App& command, std::optional<std::string>& sample) {
  command
      .add_option("--sample", sample,
                  "Let an instrument import a sound file (WAV, MPEG audio, ZSD), which is copied below the "
                  "folder of samples unless it lies there.")
      ->type_name("FILE");
}

Parser::Parser() {
  app_.set_help_flag("-h,--help", "Print this help.");
  app_.set_version_flag("--version", "sonvelle " SONVELLE_VERSION, "Print the version.");
  app_.formatter(std::make_shared<TypeFormatter>());
  app_.get_formatter()->label("REQUIRED", "");
  app_.get_formatter()->label("SUBCOMMAND", "COMMAND");
  app_.get_formatter()->column_width(24);
  app_.require_subcommand(0, 1);
  AddList();
  AddParams();
  AddRender();
  AddState();
  AddInfo();
  AddMultisample();
  AddSubsamples();
  AddRegister();
  AddHelp();
  for (CLI::App* const command : app_.get_subcommands(nullptr)) command->group("Commands");
}

void Parser::AddList() {
  CLI::App& list = *app_.add_subcommand("list", "List the plug-ins: name, kind, what they do.");
  list.add_flag("--json", list_.json, "Print JSON: name, kind, summary.");
}

void Parser::AddParams() {
  CLI::App& params = *app_.add_subcommand(
      "params", "List the parameters of a plug-in: key, name, kind, range, default, its display text, help.");
  AddName(params, "NAME", params_.plugin, "Plug-in, by its exact name in \"sonvelle list\".");
  params.add_flag("--json", params_.json,
                  "Print JSON: key, name, kind, range, rangeText, default, text, help, choices.");
}

void Parser::AddRender() {
  CLI::App& render = *app_.add_subcommand(
      "render",
      "Send a sound file through an effect, or play an instrument, into a 32-bit float WAV file. An effect's "
      "output has the channels and the rate of its input.");
  AddName(render, "NAME", render_.plugin, "Plug-in, by its exact name in \"sonvelle list\".");
  render
      .add_option("FILES", render_.files,
                  "Of an effect the sound file to read, of any format that libsndfile knows, and the file to "
                  "write; of an instrument the file to write. It is complete or not there.")
      ->required()
      ->expected(1, 2)
      ->type_name("[IN] OUT.wav");
  AddValues(render, render_.state, render_.settings);
  render
      .add_option("--block", block_,
                  "Frames that the plug-in gets at a time, 1 to " + std::to_string(kMaximumBlockFrames) +
                      ". Default: 512.")
      ->type_name("FRAMES");
  render
      .add_option("--tail", tail_,
                  "What to render behind the input's or the last note's end: seconds, 0 to " +
                      NumberText(kMaximumTailSeconds) + ", or \"auto\": until the effect is silent, " +
                      std::to_string(kMaximumAutomaticTailSeconds) + " seconds at most. Default: 0.")
      ->type_name("SECONDS|auto");
  AddNotes(render);
  render.footer(std::string(kDashes) + "\n" + ExitCodes());
}

void Parser::AddNotes(CLI::App& render) {
  AddSample(render, render_.sample);
  render
      .add_option(
          "--note", notes_,
          "Let an instrument play a note: key (60 is the sound's own pitch), linear volume, start and "
          "length in seconds. Repeat it for more notes. Prints JSON: made, and ended, the frame "
          "behind the block in which the sound ended by itself.")
      ->expected(1)
      ->allow_extra_args(false)
      ->take_all()
      ->type_name("KEY:VEL:START:LEN");
  render
      .add_option(
          "--midi", render_.midi,
          "Let an instrument play a MIDI file, with all its channels and the sustain pedal; the volume is "
          "the velocity / 127. Prints the same JSON.")
      ->type_name("FILE.mid");
  render.add_flag("--one-shot", render_.isOneShot, "Let the notes of the MIDI file ring out.");
  render
      .add_option("--rate", rate_,
                  "Sample rate of an instrument's output in hertz, 1 to " +
                      std::to_string(kMaximumSampleRate) + ". Default: 44100.")
      ->type_name("HERTZ");
  render
      .add_option(
          "--channels", channels_,
          "Channels of an instrument's output, 1 to " + std::to_string(kMaximumChannels) + ". Default: 2.")
      ->type_name("COUNT");
}

void Parser::AddState() {
  CLI::App& state = *app_.add_subcommand("state", "Print the state that a plug-in would save, as XML.");
  AddName(state, "NAME", state_.plugin, "Plug-in, by its exact name in \"sonvelle list\".");
  AddValues(state, state_.state, state_.settings);
  AddSample(state, state_.sample);
  state.footer(
      "The root \"state\" has the attribute \"plugin\", the plug-in's name. \"--state\" refuses a state of "
      "another plug-in.");
}

void Parser::AddInfo() {
  CLI::App& info = *app_.add_subcommand("info", "Print what a file holds, as JSON.");
  AddName(info, "FILE", info_.file,
          "Sample (.wav, .mp3, all else ZSD): channels, rate, length, bits, peak. Multisample "
          "(.qxMultiSample): rate, number of takes and of layers, length of the longest take, tracks. "
          "Subsample library (.qxSubSampleLib): rate, and for each band its place in the spectrum and how "
          "many sounds it has. Resource library (.mrf): the id and the size of each item.");
  info.footer(kDashes);
}

void Parser::AddMultisample() {
  CLI::App& make = *app_.add_subcommand(
      "make-multisample", "Make a multisample (.qxMultiSample) of recordings, as loud as they are.");
  make.add_option(
          "SOURCE", multisample_.source,
          "Folder of sound files, or an SFZ file whose velocity ranges become the layers. A name's words "
          "tell the take (\"2\", \"rr2\", \"take2\"), the layer (\"v3\", \"vel3\", \"layer3\") and, "
          "behind the last of these, the track: kick_v3_2_oh.wav is track \"oh\". Without layers in the "
          "names, takes within 1.5 dB of each other are one.")
      ->required()
      ->type_name("FOLDER|FILE.sfz");
  make.add_option("OUT", multisample_.output, "File to write. It is complete or not there.")
      ->required()
      ->type_name("OUT.qxMultiSample");
  make.add_option("--compress", multisample_.compression, "How to store the samples. Default: none.")
      ->check(CLI::IsMember({"none", "zlib", "bzip2"}).description(""))
      ->type_name("none|zlib|bzip2");
  make.footer(kDashes);
}

void Parser::AddSubsamples() {
  CLI::App& make = *app_.add_subcommand(
      "make-subsamples", "Make a subsample library (.qxSubSampleLib) of the spectra of recordings.");
  make.add_option("FILES", subsamples_.sources,
                  "Sound files, or folders of them, with one sample rate from 22050 to 192000 hertz, and the "
                  "file to write, which is complete or not there. Each recording is one sound of every band, "
                  "the dark ones first.")
      ->required()
      ->expected(2, CLI::detail::expected_max_vector_size)
      ->type_name("FOLDER|WAV... OUT.qxSubSampleLib");
  make.footer(kDashes);
}

void Parser::AddRegister() {
  app_.add_subcommand(
      "register",
      "Write the plug-ins to the registry, where hosts find them, and print the registry's files. Where the "
      "library has no settings yet, let it use the content that is installed with it.");
}

void Parser::AddHelp() {
  CLI::App& help = *app_.add_subcommand("help", "Print the help of a command, or this one.");
  help.add_option("COMMAND", helpCommand_, "Command to explain.")->type_name("");
  help.add_flag("--man", helpAsManPage_, "Print the manual page, which explains all commands.");
}

std::vector<std::string_view> Parser::GetCommands() const {
  std::vector<std::string_view> names;
  for (const CLI::App* command : app_.get_subcommands(nullptr)) names.push_back(command->get_name());
  return names;
}

void Parser::RequireCommand(const std::string& name) const {
  const std::vector<std::string_view> names = GetCommands();
  if (std::find(names.begin(), names.end(), name) != names.end()) return;
  throw Failure(ExitCode::kUsage, "there is no command \"" + name + "\", did you mean " +
                                      std::string(NearestName(names, name)) + "? (see: sonvelle help)");
}

std::string Parser::GetHelp(const std::string& command) {
  if (command.empty()) return app_.help();
  RequireCommand(command);
  return app_.get_subcommand(command)->help("sonvelle");
}

CommandHelp DescribeCommand(const CLI::App& command) {
  CommandHelp help{command.get_name(), command.get_description(), command.get_footer(), {}};
  for (const CLI::Option* const option : command.get_options()) {
    if (option->check_name("--help")) continue;
    CommandHelp::Word word{option->get_name(), option->get_type_name(), option->get_description()};
    word.isOption = !option->get_positional();
    if (!word.isOption && !word.type.empty()) word.name = std::exchange(word.type, "");
    word.isRequired = option->get_required();
    word.isRepeated = option->get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    help.words.push_back(std::move(word));
  }
  return help;
}

std::string Parser::GetManPage() {
  std::vector<CommandHelp> commands;
  for (const CLI::App* const command : app_.get_subcommands(nullptr))
    commands.push_back(DescribeCommand(*command));
  return MakeManPage(app_.get_description(), commands);
}

int32_t ParseCount(const char* option, const std::string& text, int32_t most) {
  const std::optional<double> count = ParseNumber(text);
  if (!count || *count != std::floor(*count) || *count < 1 || *count > most)
    throw Failure(ExitCode::kUsage, std::string(option) + ": \"" + text +
                                        "\" is not a whole number from 1 to " + std::to_string(most));
  return static_cast<int32_t>(*count);
}

NoteRequest ParseNote(const std::string& text) {
  std::vector<double> numbers;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find(':', begin), text.size());
    const std::optional<double> number = ParseNumber(std::string_view(text).substr(begin, end - begin));
    if (!number) break;
    numbers.push_back(*number);
    begin = end + 1;
  }
  const auto colons = static_cast<std::size_t>(std::count(text.begin(), text.end(), ':'));
  if (numbers.size() != 4 || colons != 3)
    throw Failure(ExitCode::kUsage, "--note: \"" + text + "\" is not KEY:VEL:START:LEN, four numbers");
  const double key = numbers[0], start = numbers[2], length = numbers[3];
  if (key != std::floor(key) || std::abs(key) > kMaximumKey)
    throw Failure(ExitCode::kUsage, "--note: the key of \"" + text + "\" is not a whole number from " +
                                        std::to_string(-kMaximumKey) + " to " + std::to_string(kMaximumKey));
  if (!(start >= 0 && start <= kMaximumNoteSeconds && length >= 0 && length <= kMaximumNoteSeconds))
    throw Failure(ExitCode::kUsage, "--note: start and length of \"" + text + "\" are not from 0 to " +
                                        NumberText(kMaximumNoteSeconds) + " seconds");
  return {static_cast<int32_t>(key), numbers[1], start, length};
}

std::optional<double> ParseTail(const std::string& text) {
  if (text == "auto") return std::nullopt;
  const std::optional<double> seconds = ParseNumber(text);
  if (!seconds || *seconds < 0 || *seconds > kMaximumTailSeconds)
    throw Failure(ExitCode::kUsage, "--tail: \"" + text + "\" is neither \"auto\" nor a number from 0 to " +
                                        NumberText(kMaximumTailSeconds));
  return seconds;
}

Arguments Parser::GetResult() {
  if (app_.got_subcommand("list")) return list_;
  if (app_.got_subcommand("params")) return params_;
  if (app_.got_subcommand("state")) return state_;
  if (app_.got_subcommand("info")) return info_;
  if (app_.got_subcommand("register")) return RegisterArguments();
  if (app_.got_subcommand("make-multisample")) return multisample_;
  if (app_.got_subcommand("make-subsamples")) {
    subsamples_.output = subsamples_.sources.back();
    subsamples_.sources.pop_back();
    return subsamples_;
  }
  if (app_.got_subcommand("help")) {
    Parser fresh;
    return PrintArguments{helpAsManPage_ ? fresh.GetManPage() : fresh.GetHelp(helpCommand_)};
  }
  render_.blockFrames = ParseCount("--block", block_, kMaximumBlockFrames);
  render_.tailSeconds = ParseTail(tail_);
  for (const std::string& note : notes_) render_.notes.push_back(ParseNote(note));
  if (!rate_.empty()) render_.sampleRate = ParseCount("--rate", rate_, kMaximumSampleRate);
  if (!channels_.empty()) render_.channels = ParseCount("--channels", channels_, kMaximumChannels);
  return render_;
}

Arguments Parser::Parse(int argc, char** argv) {
  const std::string first = argc > 1 ? argv[1] : "";
  if (!first.starts_with('-')) RequireCommand(first);
  try {
    app_.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return PrintArguments{app_.help()};
  } catch (const CLI::CallForVersion& version) {
    return PrintArguments{std::string(version.what()) + "\n"};
  } catch (const CLI::ParseError& error) {
    const auto commands = app_.get_subcommands();
    const std::string help = commands.empty() ? "" : " " + commands.front()->get_name();
    throw Failure(ExitCode::kUsage, std::string(error.what()) + " (see: sonvelle help" + help + ")");
  }
  if (app_.get_subcommands().empty())
    throw Failure(ExitCode::kUsage, "no command is given (see: sonvelle help)");
  return GetResult();
}

}  // namespace

Arguments ParseArguments(int argc, char** argv) {
  return Parser().Parse(argc, argv);
}

std::string GetUsage() {
  return Parser().GetHelp({});
}

}  // namespace cli
