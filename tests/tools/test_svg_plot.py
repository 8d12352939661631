import sys
from xml.etree import ElementTree

from tree_case import TOOLS, TreeCase

sys.path.insert(0, str(TOOLS))
import svg_plot  # noqa: E402
from svg_plot import Axis, Curve  # noqa: E402

SVG = "{http://www.w3.org/2000/svg}"
SECONDS = Axis("time in s", 0, 2, [0, 1, 2])
DECIBELS = Axis("gain in dB", -12, 12, [-12, 0, 12])


def draw(*curves):
    return svg_plot.plot("A <title>", SECONDS, DECIBELS, curves)


class SvgPlot(TreeCase):
    def path(self, text, number=0):
        root = ElementTree.fromstring(text)
        return [path.get("d") for path in root.iter(SVG + "path") if f"c{number}" in path.get("class", "").split()]

    def test_a_picture_is_well_formed_and_has_its_title_axes_units_and_grid(self):
        text = draw(Curve("a & b", [(0, 0), (1, 6)]))
        root = ElementTree.fromstring(text)
        self.assertEqual(root.find(SVG + "title").text, "A <title>")
        words = [element.text for element in root.iter(SVG + "text")]
        for word in ("time in s", "gain in dB", "\u221212", "12", "2", "a & b"):
            self.assertIn(word, words)
        self.assertEqual(sum(path.get("class") == "grid" for path in root.iter(SVG + "path")), 6)

    def test_the_same_curves_give_the_same_bytes(self):
        curve = Curve("a", [(i / 50, -i / 9) for i in range(100)])
        self.assertEqual(draw(curve), draw(curve))

    def test_there_are_colours_for_light_and_for_dark_ground(self):
        text = draw(Curve("a", [(0, 0)]))
        light, dark = text.split("prefers-color-scheme:dark")
        self.assertIn(".card{fill:#ffffff}", light)
        self.assertIn(".card{fill:#16191d}", dark)

    def test_the_corners_of_the_field_are_the_ends_of_the_axes(self):
        (curve, _) = self.path(draw(Curve("a", [(0, -12), (2, 12)])))
        self.assertEqual(curve, f"M{svg_plot.LEFT:.1f} {svg_plot.BOTTOM:.1f}L{svg_plot.RIGHT:.1f} {svg_plot.TOP:.1f}")

    def test_a_logarithmic_axis_has_equal_steps_for_equal_factors(self):
        axis = svg_plot.frequency_axis(20, 20000)
        self.assertAlmostEqual(axis.part(200), 1 / 3)
        self.assertAlmostEqual(axis.part(2000), 2 / 3)
        self.assertEqual(svg_plot.frequency_axis(200).ticks[0], (200, "200"))

    def test_what_leaves_the_field_ends_just_outside_of_it(self):
        (curve, _) = self.path(draw(Curve("a", [(0, -1e9), (1, 1e9)])))
        self.assertEqual(curve, f"M62.0 {svg_plot.BOTTOM + 8:.1f}L343.0 {svg_plot.TOP - 8:.1f}")

    def test_stems_stand_on_the_field(self):
        (curve, _) = self.path(draw(Curve("a", [(1, 0)], stems=True)))
        self.assertEqual(curve, f"M343.0 {svg_plot.BOTTOM}V173.0")

    def test_two_pictures_are_the_same_up_to_a_fifth_of_a_pixel(self):
        text = draw(Curve("a", [(0, 0), (1, 6)]))
        self.assertFalse(svg_plot.differs(text, text.replace("343.0", "343.2")))
        self.assertTrue(svg_plot.differs(text, text.replace("343.0", "343.3")))
        self.assertTrue(svg_plot.differs(text, text.replace("time", "Time")))
        self.assertTrue(svg_plot.differs(text, draw(Curve("a", [(0, 0), (1, 6), (2, 6)]))))
