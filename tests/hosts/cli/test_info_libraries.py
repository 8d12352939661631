"""What `info` tells of multisamples and subsample libraries."""

import json
import unittest

from command_case import FILE, CommandCase
from libraries import large_file, subsample_file

INDEX = """<m samplerate="48000"><track name="Oh\u00d6" volume="0.5" pan="-1"/><track name="close"/>
<sample length="5" rms="0.1" maxrmsindex="0" group="1"/><sample length="9" rms="0.2" maxrmsindex="0" group="1"/>
<sample length="7" rms="0.4" maxrmsindex="0" group="2"/></m>""".encode()
SHORT = "Could not read required data from stream."


class Multisamples(CommandCase):
    def test_are_described_whatever_is_compressed(self):
        expected = {"kind": "multisample", "rate": 48000, "takes": 3, "layers": 2, "length": 9, "tracks": [
            {"name": "Oh\u00d6", "volume": 0.5, "pan": -1.0}, {"name": "close", "volume": 1.0, "pan": 0.0}]}
        for flags in (0, 1, 2, 6):
            for name in ("a.qxMultiSample", "b.QXMULTISAMPLE", "c d.x.qxmultisample"):
                self.write(name, large_file(INDEX, b"", flags))
                got = json.loads(self.succeed("info", name))
                self.assertEqual(got, expected)
                self.assertEqual(list(got), list(expected))

    def test_that_are_damaged_give_code_1_and_the_exact_message(self):
        good = large_file(INDEX)
        for data, last in (
            (b"", SHORT), (b"x" * 100, "Invalid large resource library format."), (large_file(b"<m/>"), "Empty multisample."),
            (good.replace(b"48000", b"48001"), "Resource library file is corrupt."),
        ):
            self.write("a.qxMultiSample", data)
            self.fail_with(FILE, "info", "a.qxMultiSample",
                           says=("a.qxMultiSample: it cannot be read as a multisample",), last=last)

    def test_that_are_not_there_are_told(self):
        for name in ("missing.qxMultiSample", "missing.qxSubSampleLib"):
            self.fail_with(FILE, "info", name, says=(name,), last=f'File "{name}" could not be open. Make sure it exists.')


class Subsamples(CommandCase):
    def test_are_described(self):
        bands = [(100 * i, 50 + i, ((1, 4096, 1, 0),) * i) for i in range(10)]
        self.write("a.qxSubSampleLib", subsample_file(22050, bands))
        got = json.loads(self.succeed("info", "a.qxSubSampleLib"))
        self.assertEqual(got, {"kind": "subsamples", "rate": 22050, "bands": [
            {"first": 100 * i, "bins": 50 + i, "count": i} for i in range(10)]})
        self.assertEqual((list(got), list(got["bands"][0])), (["kind", "rate", "bands"], ["first", "bins", "count"]))

    def test_that_are_damaged_give_code_1_the_place_and_the_exact_message(self):
        good = subsample_file()
        fields = "Invalid file contents. Subsample library contains invalid fields."
        for data, place, last in (
            (subsample_file(22049), "byte 0", fields), (subsample_file(bands=((0, 0, ()),) * 10), "byte 76", fields),
            (subsample_file(bands=((0, 1, ((1, 1, 9, 0),)),) * 10), "byte 96",
             "Invalid file contents. Subsample library contains invalid data."),
            (good[:-1], "", SHORT), (b"", "", SHORT),
        ):
            self.write("a.qxSubSampleLib", data)
            self.fail_with(FILE, "info", "a.qxSubSampleLib", last=last,
                           says=("a.qxSubSampleLib", place, "it cannot be read as a subsample library"))


if __name__ == "__main__":
    unittest.main()
