"""The scanner of a host finds all plug-ins in the built file, with their ports."""

import os
import subprocess
import unittest

SCANNERS = [
    "/usr/lib/x86_64-linux-gnu/qtractor/qtractor_plugin_scan",
    "/usr/lib/aarch64-linux-gnu/qtractor/qtractor_plugin_scan",
    "/usr/lib/qtractor/qtractor_plugin_scan",
]
SCANNER = next((path for path in SCANNERS if os.path.exists(path)), None)


@unittest.skipUnless(SCANNER, "the scanner of qtractor is not installed (Debian package qtractor)")
class Scan(unittest.TestCase):
    def test_all_plugins_are_found_with_their_ports(self):
        result = subprocess.run(
            [SCANNER],
            input=f"CLAP:{os.environ['SONVELLE_CLAP']}\n",
            env=dict(os.environ, QT_QPA_PLATFORM="offscreen"),
            capture_output=True,
            text=True,
            timeout=60,
        )
        self.assertEqual(result.returncode, 0, result.stderr)
        rows = [line.split("|") for line in result.stdout.splitlines()]
        self.assertEqual(len(rows), 20, result.stdout)
        audio = {row[1]: row[2] for row in rows}
        midi = {row[1]: row[3] for row in rows}
        self.assertEqual((audio["Echolan"], midi["Echolan"]), ("2:2", "0:0"))
        self.assertEqual((audio["Toneloom4NN"], midi["Toneloom4NN"]), ("0:2", "1:0"))
        self.assertEqual(sorted(set(audio.values())), ["0:2", "2:2"])


if __name__ == "__main__":
    unittest.main()
