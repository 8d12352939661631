"""Multisamples of SFZ files."""

import unittest

from test_multisamples import Multisamples, tone


class Sfz(Multisamples):
    def setUp(self):
        super().setUp()
        for number, level in enumerate((0.1, 0.2, 0.4, 0.8), 1):
            self.take(f"kit/hit {number}.wav", tone(level))

    def sfz(self, text):
        self.write("kit/a.sfz", text.encode())
        return "kit/a.sfz"

    def layers(self, text, err=""):
        made = self.make(self.sfz(text), err=err)
        return [(take["name"].split("/")[-1], take["layer"]) for take in made["takes"]]

    def test_layers_are_ranges_of_velocities(self):
        self.assertEqual(self.layers("""// a kick
            <region> lovel=64 hivel=127 sample=hit 4.wav seq_position=2
            <region> sample=hit 3.wav lovel=64 hivel=127 seq_position=1
            <group> lovel=0 hivel=63 <region> sample=hit 1.wav <region> sample=hit 2.wav pan=5
        """), [("hit 1", 1), ("hit 2", 1), ("hit 3", 2), ("hit 4", 2)])

    def test_opcodes_are_inherited_and_replaced(self):
        self.assertEqual(self.layers("""<global> hivel=30 ampeg_release=1
            <master> lovel=0
            <group> sample=hit 1.wav
            <region>
            <region> sample=hit 2.wav
            <group> lovel=31 hivel=60
            <region> sample=hit 3.wav
            <global> lovel=61
            <region> sample=hit 4.wav
        """), [("hit 1", 1), ("hit 2", 1), ("hit 3", 2), ("hit 4", 3)])

    def test_paths_have_either_slash_and_a_default_in_front(self):
        self.take("kit/deep/x.wav", tone(0.5))
        self.assertEqual(self.layers("<control> default_path=deep\\\n<region> sample=x.wav"), [("x", 1)])
        self.assertEqual(self.layers("<control>\ndefault_path=../kit/\n<global>\n<region>sample=deep\\x.wav\r\n"), [("x", 1)])
        self.assertEqual(self.layers(f"<region> sample={self.path('kit')}/deep/x.wav"), [("x", 1)])

    def test_comments_and_unknown_headers_are_passed_over(self):
        self.assertEqual(self.layers("""/* <region> sample=none.wav
            */<region>/* here */ sample=hit 1.wav // <region> sample=none.wav
            <curve> curve_index=7 v000=0 <effect> sample=none.wav
        """), [("hit 1", 1)])

    def test_tracks_come_from_the_names(self):
        self.take("kit/a 1 oh.wav", tone(0.1))
        self.take("kit/a 1 close.wav", tone(0.2))
        made = self.make(self.sfz("<region> sample=a 1 oh.wav\n<region> sample=a 1 close.wav"))
        self.assertEqual((made["tracks"], len(made["takes"])), (["close", "oh"], 1))

    def test_velocities_count_where_loudness_does_not_rise(self):
        warning = ("sonvelle: warning: out.qxMultiSample: the layers are not louder one by one, so that their order counts "
                   "instead of their loudness\n")
        self.layers("<region> hivel=63 sample=hit 3.wav <region> lovel=64 sample=hit 2.wav", err=warning)
        self.assertEqual([round(float(take.get("rms")), 4) for take in self.samples], [0.4961, 1])

    def test_errors_name_the_file_and_the_line(self):
        for text, *says in (
            ("<global>\n<region>\nsample=none.wav\n", "kit/a.sfz, line 2: kit/none.wav: No such file"),
            ("\n<region> lovel=5", "kit/a.sfz, line 2", "no sample"), ("<region> sample=*sine", "line 1", "kit/*sine"),
            ("<region> sample=hit 1.wav lovel=x", "line 1", "lovel=x is not a velocity"),
            ("<region> sample=hit 1.wav hivel=128", "line 1", "hivel=128"),
            ("<region> sample=hit 1.wav lovel=9 hivel=8", "line 1", "above"),
            ("<region> sample=hit 1.wav hivel=64\n<region> lovel=64 sample=hit 2.wav", "line 2", "overlap"),
            ("<region> sample=hit 1.wav key=36\n<region> key=38 sample=hit 2.wav", "line 2", "another key"),
            ("#include \"b.sfz\"", "line 1", "#include"), ("<region", "line 1", "does not end"),
            ("<region> nonsense", "line 1", "\"nonsense\" is no opcode"), ("stray <region> sample=hit 1.wav", "line 1", "no opcode"),
            ("<region> =x", "line 1", "no opcode"), ("<group> lovel=1", "no region"),
        ):
            with self.subTest(text=text):
                self.refuse("kit/a.sfz", *says, source=self.sfz(text))


if __name__ == "__main__":
    unittest.main()
