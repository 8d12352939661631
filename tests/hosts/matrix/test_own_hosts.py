"""Each plug-in renders through the built bundle of each format; the matrix says so when a bundle is broken."""

import tempfile
import unittest
from pathlib import Path

from matrix import hosts
from place import OK, Failure, Place, expect_sound


class OwnHosts(unittest.TestCase):
    def test_each_plugin_renders_in_each_format(self):
        with Place() as place:
            plugins = place.plugins()
            self.assertEqual(len(plugins), 20)
            for host in (host for host in hosts() if host.package == "sonvelle"):
                self.assertEqual(set(host.run(place, plugins).items()), {(plugin.name, OK) for plugin in plugins}, host.name)


class BrokenBundles(unittest.TestCase):
    def test_no_installed_host_takes_a_broken_bundle_for_a_good_one(self):
        with tempfile.TemporaryDirectory() as folder, Place() as good:
            bundles = Path(folder)
            vst3 = next(good.vst3.glob("Contents/*/Sonvelle.so")).relative_to(good.build)
            for name in ("lv2/Sonvelle.lv2/sonvelle-plugins.so", "clap/Sonvelle.clap", vst3):
                (bundles / name).parent.mkdir(parents=True)
                (bundles / name).write_text("no module")
            for text in good.lv2.glob("*.ttl"):
                (bundles / "lv2/Sonvelle.lv2" / text.name).write_text(text.read_text().replace("doap:name", "doap:nane"))
            plugins = [plugin for plugin in good.plugins() if plugin.name in ("Echolan", "Playbox")]
            with Place(bundles=bundles) as place:
                for host in filter(lambda host: host.program(), hosts()):
                    for name, answer in host.run(place, plugins).items():
                        with self.subTest(host=host.name, plugin=name):
                            self.assertRegex(answer, "^n/a$" if (host.name, name) == ("lv2apply", "Playbox") else "^failed: ")

    def test_silence_and_what_is_not_finite_is_no_sound(self):
        expect_sound([0, 0.5, 0, 0], frames=2)
        for samples in ([0] * 4, [0.5, 0.5], [0.5, float("inf"), 0, 0], [0.5, float("nan"), 0, 0]):
            self.assertRaises(Failure, expect_sound, samples, frames=2)


if __name__ == "__main__":
    unittest.main()
