#include "hosts/cli/ManPage.h"

#include <iterator>

#include "hosts/cli/Failure.h"

namespace cli {

namespace {

constexpr const char* kExamples[][2] = {
    {"What there is, and what an effect can be told.", "sonvelle list\nsonvelle params Echolan"},
    {"A voice with echoes that ring out.",
     "sonvelle render Echolan voice.wav echo.wav --set \"delay=250 ms\" --set feedback=0.7 --tail auto"},
    {"The same settings for many files.",
     "sonvelle state Echolan --set feedback=0.7 > echo.xml\n"
     "for file in *.wav; do sonvelle render Echolan \"$file\" \"wet-$file\" --state echo.xml; done"},
    {"Two notes of a sampler, and a piece.",
     "sonvelle render Playbox notes.wav --sample bell.wav --note 60:0.8:0:1 --note 67:0.6:0.5:1\n"
     "sonvelle render Playbox piece.wav --sample bell.wav --midi piece.mid --one-shot"},
    {"The names of a table of parameters, by a program that reads JSON.",
     "sonvelle params Echolan --json | jq -r \".[].key\""},
};

// Text as roff takes it letter by letter.
std::string Escape(const std::string& text) {
  std::string escaped;
  bool isLineStart = true;
  for (const char c : text) {
    if (isLineStart && (c == '.' || c == '\'')) escaped += "\\&";
    isLineStart = c == '\n';
    if (c == '\\')
      escaped += "\\e";
    else if (c == '-')
      escaped += "\\-";
    else if (c == '\'')
      escaped += "\\(aq";
    else if (c == '`')
      escaped += "\\(ga";
    else if (c == '^')
      escaped += "\\(ha";
    else if (c == '~')
      escaped += "\\(ti";
    else
      escaped += c;
  }
  return escaped;
}

std::string Bold(const std::string& text) {
  return "\\fB" + Escape(text) + "\\fR";
}

std::string Italic(const std::string& text) {
  return "\\fI" + Escape(text) + "\\fR";
}

// "--set KEY=VALUE", "IN".
std::string Term(const CommandHelp::Word& word) {
  if (!word.isOption) return Italic(word.name);
  std::string term = Bold(word.name);
  if (!word.type.empty()) term += ' ' + Italic(word.type);
  return term;
}

std::string Synopsis(const CommandHelp& command) {
  std::string line = Bold("sonvelle " + command.name);
  for (const CommandHelp::Word& word : command.words) {
    const std::string term = Term(word);
    line += ' ';
    line += word.isRequired ? term : '[' + term + ']';
    if (word.isRepeated) line += "...";
  }
  return line + "\n";
}

std::string Section(const std::string& title) {
  return ".SH " + title + "\n";
}

std::string Commands(const std::vector<CommandHelp>& commands) {
  std::string text = Section("COMMANDS");
  for (const CommandHelp& command : commands) {
    text +=
        ".SS " + Escape(command.name) + "\n" + Synopsis(command) + ".PP\n" + Escape(command.summary) + "\n";
    for (const CommandHelp::Word& word : command.words)
      text += ".TP\n" + Term(word) + "\n" + Escape(word.text) + "\n";
    if (!command.notes.empty()) text += ".PP\n" + Escape(command.notes) + "\n";
  }
  return text;
}

std::string ExitStatus() {
  std::string text = Section("EXIT STATUS");
  for (std::size_t i = 0; i < std::size(kExitTexts); ++i)
    text += ".TP\n" + Bold(std::to_string(i)) + "\n" + Escape(kExitTexts[i]) + "\n";
  return text +
         ".PP\nAn error is one line on standard error. Where the library gave a message, that is the last "
         "line, letter by letter.\n";
}

std::string Files() {
  return Section("FILES") + ".TP\n" + Escape("$XDG_DATA_HOME/Tessaron/MAudioEffects.mps, MAudioStreams.mps") +
         "\nThe registry, which \\fBregister\\fR writes.\n.TP\n" +
         Escape("$XDG_DATA_HOME/Tessaron/SonvelleConfiguration.cfg") +
         "\nThe settings of the library, written when a command that uses it ends. \"GlobalPath\" is the "
         "folder of the content: Samples, MultiSamples, SubSampleLibraries. Where there are no settings, "
         "\\fBregister\\fR writes the installed folder there, and any other command the current one.\n.PP\n" +
         Escape("XDG_DATA_HOME is ~/.local/share unless it is set.") + "\n";
}

std::string Examples() {
  std::string text;
  for (const auto& [what, command] : kExamples) {
    text += text.empty() ? Section("EXAMPLES") : ".PP\n";
    text += Escape(what) + "\n.PP\n.RS 4\n.nf\n" + Escape(command) + "\n.fi\n.RE\n";
  }
  return text;
}

}  // namespace

std::string MakeManPage(const std::string& summary, const std::vector<CommandHelp>& commands) {
  std::string page = ".\\\" Printed by \"sonvelle help --man\".\n.TH SONVELLE 1 " SONVELLE_VERSION_DATE
                     " \"Sonvelle " SONVELLE_VERSION "\" \"User Commands\"\n";
  page += Section("NAME") + "sonvelle \\- list audio plug\\-ins and render sound files with them\n";
  page += Section("SYNOPSIS");
  for (const CommandHelp& command : commands) page += Synopsis(command) + ".br\n";
  page += Bold("sonvelle --version") + "\n";
  page += Section("DESCRIPTION") + Escape(summary) + "\n";
  page += Commands(commands);
  return page + ExitStatus() + Files() + Examples();
}

}  // namespace cli
