"""What measure_show counts, on scripts and scores small enough to count by hand."""

import pathlib
import sys
import tempfile
import unittest
from unittest import mock

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "scripts"))
import measure_show


def entry(start, end, triggers=(), keys=(), inner=(), enabled=True):
    return {"enabled": enabled, "start": start, "end": end, "entries": inner,
            "triggers": [{"time": time, "repeat": repeat, "delay": delay} for time, repeat, delay in triggers],
            "splines": [{"keys": [{"time": time, "value": value} for time, value in keys]}]}


class Counting(unittest.TestCase):
    def events(self, *entries):
        return sorted(measure_show.events_of(entries))

    def test_what_happens(self):
        self.assertEqual([1, 2, 2.5, 3, 3.5], self.events(entry(1, 4, triggers=[(2, 9, 0.5), (3, 0, 1)])))
        self.assertEqual([1, 1, 2, 4], self.events(entry(1, 5, keys=[(1, 0), (2, 5), (3, 5), (4, 5), (5, 6)])))
        self.assertEqual([1], self.events(entry(1, 5, keys=[(2, 7), (4, 7)]), entry(2, 3, enabled=False)))
        self.assertEqual([1, 2], self.events(entry(1, 5, inner=[entry(2, 9), entry(6, 9)])))

    def test_what_is_struck_and_answered(self):
        with tempfile.TemporaryDirectory() as folder:
            program = pathlib.Path(folder) / "music"
            notes = [(0, 1.0, "kick"), (1, 0.2, "kick"), (2, 0.5, "kick"), (1, 1, "open hat"),
                     *((5 + i / 8, 1, "tom") for i in range(8)), *((9 + i / 8, 1, "tom") for i in range(4))]
            lines = "\n".join(f"{start} 0 {level} 0 {voice}" for start, level, voice in notes)
            program.write_text(f"#!/bin/sh\ncat <<END\n{lines}\nEND\n")
            program.chmod(0o755)
            with mock.patch.object(measure_show, "read_events", lambda _: [0.02, 2.03, 5.51]):
                found = measure_show.Score(None, program).figures(0, 10)
        self.assertEqual(([1, 2], [0, 0], [1, 2]), (found["kick"], found["snare"], found["fill"]))
        self.assertAlmostEqual(10 - 5.51, found["gap"])

    def test_colours(self):
        def ruling(*pixel):
            picture = bytes(pixel) * (measure_show.WIDTH * measure_show.HEIGHT)
            return measure_show.ruling(measure_show.look(picture)[1], 1)

        self.assertEqual(["warm", "warm", "green", "blue", "blue", "violet", "grey"],
                         [ruling(*pixel) for pixel in ((200, 60, 10), (200, 0, 60), (10, 90, 20), (20, 40, 90),
                                                       (0, 90, 99), (90, 0, 99), (90, 90, 92))])


if __name__ == "__main__":
    unittest.main()
