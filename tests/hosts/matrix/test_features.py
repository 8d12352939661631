"""docs/features.md tells what is, as far as it needs no hosts of others."""

import contextlib
import io
import os
import re
import sys
import tempfile
import unittest
import unittest.mock
from pathlib import Path

from place import ROOT

sys.path.insert(0, str(ROOT / "tools"))
import make_features


class Features(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.copy = Path(folder.name) / "features.md"
        self.text = make_features.DOCUMENT.read_text()

    def check(self, old="", new=""):
        """(exit code, what is printed) over a copy of the document in which `old` has become `new`."""
        self.assertIn(old, self.text)
        self.copy.write_text(self.text.replace(old, new))
        with unittest.mock.patch.object(make_features, "DOCUMENT", self.copy), contextlib.redirect_stdout(io.StringIO()) as out:
            code = make_features.main(["--check", "--build", os.environ["SONVELLE_BUILD"]])
        return code, out.getvalue()

    def test_the_document_tells_what_is(self):
        code, out = self.check()
        self.assertEqual(code, 0, out)

    def test_what_is_told_otherwise_is_found(self):
        code, out = self.check("| Slidebench | effect | 2 | 6144 |", "| Slidebench | effect | 2 | 6143 |")
        self.assertEqual(code, 1)
        self.assertIn("+| Slidebench | effect | 2 | 6144 |", out)
        self.assertEqual(self.check("| LV2 | CLAP | VST3 |", "| LV2 | VST3 |")[0], 1)

    def test_the_results_of_hosts_do_not_count(self):
        self.assertEqual(self.check("| Echolan | ok |", "| Echolan | not tried |")[0], 0)

    def test_all_that_was_tried_is_told_and_nothing_has_failed(self):
        results = make_features.split(self.text)[1]
        self.assertEqual(len(re.findall(r"^\| \w+ \| ok \|", results, re.M)), 20)
        self.assertNotRegex(results, r"\| (failed|not tried|not installed|unknown)")


if __name__ == "__main__":
    unittest.main()
