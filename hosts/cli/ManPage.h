#pragma once
#include <string>
#include <vector>

namespace cli {

// A command as its help tells it.
struct CommandHelp {
  // A word of the command line.
  struct Word {
    std::string name;  // "--set", "IN"
    std::string type;  // of an option's value, "KEY=VALUE", empty for a flag
    std::string text;
    bool isOption = false;
    bool isRequired = false;
    bool isRepeated = false;
  };

  std::string name;
  std::string summary;
  std::string notes;  // lines
  std::vector<Word> words;
};

// The manual page sonvelle(1), for groff's macros "man".
std::string MakeManPage(const std::string& summary, const std::vector<CommandHelp>& commands);

}  // namespace cli
