"""Hosts of others run the plug-ins. Which of them is the name of the test."""

import re
import unittest

from matrix import hosts
from place import NOT_APPLICABLE, OK, Place


class FewPlugins(unittest.TestCase):
    def test_an_effect_and_an_instrument_run_in_a_session_of_jalv(self):
        run_host(self, next(host for host in hosts() if host.name == "jalv"), ("Echolan", "Playbox"))


class AllPlugins(unittest.TestCase):
    """Filled below: one test for each host."""


def run_host(test, host, names=None):
    if not host.program():
        test.skipTest(f"{host.name} is not installed (Debian package {host.package})")
    with Place() as place:
        plugins = [plugin for plugin in place.plugins() if names is None or plugin.name in names]
        answers = host.run(place, plugins)
    test.assertEqual(len(answers), len(names or range(20)))
    test.assertEqual({name: answer for name, answer in answers.items() if answer not in (OK, NOT_APPLICABLE)}, {})


def add_test(host):
    words = re.sub("[^A-Za-z0-9]+", "_", host.name)
    setattr(AllPlugins, f"test_every_plugin_runs_in_{words}", lambda self: run_host(self, host))


for each in hosts():
    if each.package != "sonvelle":
        add_test(each)

if __name__ == "__main__":
    unittest.main()
