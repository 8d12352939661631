#!/usr/bin/env python3
"""new_effect.py NAME SUMMARY [ROOT]: writes the skeleton of an effect, for instance new_effect.py Squeezel "compressor".

New: src/effects/NAME.h and NAME.cpp, tests/effects/NAMETest.cpp, tests/golden/states/NAME.xml. Changed: one row each in
src/exports/plugins.def, src/effects/CMakeLists.txt, tests/effects/CMakeLists.txt, tests/golden/parameters.tsv and
CHANGELOG.md. They build, and the test and the suite of all effects pass. When the parameters change, the suite prints what
the golden files are to be.
"""

import re
import shutil
import subprocess
import sys

import checklib

HEADER = """\
#pragma once
#include "plugin/MAudioEffectPlugin.h"

// {Summary}: every sample is multiplied by a constant,
//   y[i] = g x[i],  g = level^2.
//
// The parameter is read once a block, without smoothing. All channels are served, nothing is kept between blocks. A sample that
// is not finite counts as 0.
class {Name}AudioEffectPlugin final : public MAudioEffectPlugin {{
 public:
  {Name}AudioEffectPlugin();

  void Process(float** in, float** out, int32_t samples) override;  // [audio]

 private:
  enum {{ kLevel, kRowCount }};
  MPluginParameter rows_[kRowCount];
}};
"""

SOURCE = """\
#include "effects/{Name}.h"

#include "dsp/MFilter.h"

{Name}AudioEffectPlugin::{Name}AudioEffectPlugin() {{
  AddRealParameter(rows_[kLevel], "Level", "level",
                   "<name>Level</name> determines how much of the signal is passed on.", 0.0, 1.0, 0.5);
  SetParameters(rows_);
}}

void {Name}AudioEffectPlugin::Process(float** in, float** out, int32_t samples) {{
  const double level = MLimitedValue(rows_[kLevel], 0, 1);
  const double gain = level * level;
  for (int32_t c = 0; c < channels_; ++c)
    for (int32_t i = 0; i < samples; ++i) out[c][i] = static_cast<float>(MCleanSample(in[c][i]) * gain);
}}

M_PLUGIN_ENTRY({Name}AudioEffectPlugin)
"""

TEST = """\
#include <gtest/gtest.h>

#include "tests/common/EffectUnderTest.h"

extern "C" MPluginEntryPoint {Name}AudioEffectPluginInterface;

namespace {{

TEST({Name}, SquaresTheLevel) {{
  EffectUnderTest effect({{"{Name}", "AudioEffect", {Name}AudioEffectPluginInterface}});
  effect.Set("level", 0.5);
  effect.Prepare(2, 48000);
  const AudioBlock out = effect.Answer(AudioBlock::Constant(2, 100, 1), {{64}});
  EXPECT_EQ(out[0][0], 0.25f);
  EXPECT_EQ(out[1][99], 0.25f);
}}

}}  // namespace
"""

STATE = """\
<?xml version="1.0" encoding="utf-8"?>
<state parameterlevel="0.5000"/>
"""
PARAMETERS = "{Name}\t0\treal\tlevel\tLevel\t0\t1\t0.5\n"

FILES = {
    "src/effects/{Name}.h": HEADER,
    "src/effects/{Name}.cpp": SOURCE,
    "tests/effects/{Name}Test.cpp": TEST,
    "tests/golden/states/{Name}.xml": STATE,
}


def with_source(text, name):
    """A CMakeLists.txt with one more source in its first list, which is sorted."""
    lines = text.splitlines()
    listed = [index for index, line in enumerate(lines) if re.fullmatch(r"  \w+\.cpp", line)]
    later = [index for index in listed if lines[index] > "  " + name]
    lines.insert(later[0] if later else listed[-1] + 1, "  " + name)
    return "\n".join(lines) + "\n"


def with_change(text, line):
    """The changelog with one more line at the end of what is added and unreleased."""
    added = re.search(r"^## Unreleased\n(?:(?!## ).*\n)*?### Added\n\n", text, re.M)
    if not added:
        sys.exit('CHANGELOG.md has no "### Added" below "## Unreleased"')
    end = re.compile(r"\n\n(?=#)|\n*\Z").search(text, added.end()).start()
    return text[:end] + "\n" + line + text[end:]


def write(root, texts):
    """Writes the files, and formats those of C++."""
    for path, text in texts.items():
        (root / path).parent.mkdir(parents=True, exist_ok=True)
        (root / path).write_text(text, encoding="utf-8")
    formatter = shutil.which("clang-format-14") or shutil.which("clang-format")
    sources = [path for path in texts if path.endswith((".h", ".cpp"))]
    if formatter:
        subprocess.run([formatter, "-i", "--style=file", *sources], cwd=root, check=True)


def main(arguments):
    if len(arguments) not in (2, 3):
        sys.exit("usage: new_effect.py NAME SUMMARY [ROOT]")
    name, summary = arguments[:2]
    root = checklib.repository_root(arguments[2:])
    if not re.fullmatch(r"[A-Z][A-Za-z0-9]+", name):
        sys.exit(f"{name}: a name begins with a capital and has letters and digits only, for instance Squeezel")
    if not re.fullmatch(r'[^"\\\n]+', summary):
        sys.exit("the summary is one line without quotes")
    names = {"Name": name, "Summary": summary[0].upper() + summary[1:]}
    written = {path.format(**names): text.format(**names) for path, text in FILES.items()}
    taken = [path for path in written if (root / path).exists()]
    if taken:
        sys.exit(f"{taken[0]} exists already")

    row = f'M_PLUGIN({name}, AudioEffect, "{summary}")\n'
    edits = {
        "src/exports/plugins.def": lambda text: text.rstrip("\n") + "\n" + row,
        "src/effects/CMakeLists.txt": lambda text: with_source(text, f"{name}.cpp"),
        "tests/effects/CMakeLists.txt": lambda text: with_source(text, f"{name}Test.cpp"),
        "tests/golden/parameters.tsv": lambda text: text.rstrip("\n") + "\n" + PARAMETERS.format(**names),
        "CHANGELOG.md": lambda text: with_change(text, f"- {name}: {summary}."),
    }
    changed = {path: edit(checklib.read(root, path)) for path, edit in edits.items()}
    write(root, {**written, **changed})
    for path in written:
        print(f"new      {path}")
    for path in changed:
        print(f"changed  {path}")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
