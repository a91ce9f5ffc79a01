"""The simulated fleet, where its figures can be told beforehand."""

import contextlib
import io
import json
import pathlib
import sys

import programs

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))
import fleet


class Fleet(programs.TestCase):
    def simulate(self, options):
        path = self.folder / "result.json"
        with contextlib.redirect_stdout(io.StringIO()):
            fleet.main(["--json", str(path), *options.split()])
        return json.loads(path.read_text())

    def test_its_figures_are_those_of_the_gateways_rules(self):
        for options, expected in (
                ("--requests-per-second 50 --gateways 1000", {"half_served": 30, "all_served": 40, "tries_mean": 1,
                                                              "connections_most": 1000, "portal_busy": 1}),
                # The timer runs since the first try's end: five seconds later where nothing refuses.
                ("--outage 100 --outage-kind refused", {"all_served": 20, "tries_mean": 3, "connects": 800}),
                ("--outage 100 --outage-kind silent", {"all_served": 25, "tries_mean": 3, "connects": 800}),
                # One is served at each knock: at 0, at 65 since the others gave up after five seconds, and at 125.
                ("--gateways 3 --connections 1 --kernel-queue 0 --requests-per-second 0.1",
                 {"half_served": 75, "all_served": 135, "tries_mean": 2, "connections_most": 1})):
            with self.subTest(options):
                figures = self.simulate(f"--boot constant:0 {options}")["figures"]
                for name, value in expected.items():
                    self.assertAlmostEqual(figures[name], value, delta=0.15, msg=name)

    def test_a_seed_gives_one_result(self):
        options = "--gateways 400 --requests-per-second 100 --connections 20 --seed "
        one, same, other = (self.simulate(options + seed) for seed in "112")
        self.assertEqual(one, same)
        self.assertNotEqual(one["figures"], other["figures"])
        self.assertEqual(sum(one["by_second"]["served"]), 400)
