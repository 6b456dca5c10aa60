"""The script of the show, held against the effects that there are and against the music that it is played to."""

import array
import math
import os
import pathlib
import re
import subprocess
import unittest
from xml.etree import ElementTree

ROOT = pathlib.Path(__file__).resolve().parent.parent
MUSIC = pathlib.Path(os.environ["SHOW_DATA"]) / "glacier.ogg"

BEAT = 0.5
BAR = 4 * BEAT
TOLERANCE = 0.02
# The first picture may be on its way already when the music begins.
LEAD = BAR


def off_grid(moment, step):
    """How far a moment lies from the nearest multiple of a step."""
    return abs(moment - round(moment / step) * step)


def known_names():
    """What the manual lists: {effect: {"trigger": {name: its words}, "spline": ...}}; None for a name is any name."""
    effects, current = {}, []
    for line in (ROOT / "docs/effects.md").read_text().splitlines():
        if line.startswith("#"):
            current = line[4:].split(", ") if line.startswith("### ") else []
            effects.update({name: {"trigger": {}, "spline": {}} for name in current})
        row = re.match(r"\| (trigger|spline)[^|]*\| ([^|]*) \| (.*) \|$", line)
        for name in row and (re.findall("`([^`]*)`", row[2]) or [None]) or []:
            for effect in current:
                effects[effect][row[1]][name] = re.findall("`([^`]*)`", row[3])
    return effects


class Script(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.entries = ElementTree.parse(ROOT / "data/glacier.xml").getroot().findall("effect")
        cls.length = float(subprocess.check_output(["ffprobe", "-v", "error", "-show_entries", "format=duration",
                                                    "-of", "default=nk=1:nw=1", MUSIC]))

    def each(self):
        for entry in self.entries:
            yield entry, entry.get("name"), float(entry.get("start")), float(entry.get("end"))

    def test_effects_are_registered_and_all_of_them_play(self):
        registered = set(re.findall(r'addEffect\("(\w+)"', (ROOT / "demo/main.cpp").read_text()))
        self.assertGreater(len(registered), 30)
        self.assertEqual(registered, {name for _, name, _, _ in self.each()})

    def test_triggers_and_splines_are_known(self):
        known = known_names()
        for entry, effect, _, _ in self.each():
            for child in entry:
                kind, name = child.tag, child.get("name")
                with self.subTest("%s at %s" % (effect, entry.get("start")), **{kind: name}):
                    names = known[effect][kind]
                    self.assertTrue(name in names or None in names)
                    if name in ("text", "mode"):
                        self.assertIn(child.get("value"), names[name])
                    if effect == "clear":
                        self.assertRegex(child.get("value"), r"^\d{9}$")

    def test_everything_lies_inside_the_music(self):
        self.assertAlmostEqual(208.0, self.length, delta=TOLERANCE)
        self.assertAlmostEqual(self.length, max(end for *_, end in self.each()), delta=TOLERANCE)
        for entry, effect, start, end in self.each():
            with self.subTest(effect, start=start):
                self.assertLess(start, end)
                self.assertGreaterEqual(start, -LEAD)
                self.assertGreater(end, 0)
                self.assertLessEqual(end, self.length + TOLERANCE)
                for trigger in entry.findall("trigger"):
                    last = (int(trigger.get("repeat", 1)) - 1) * float(trigger.get("delay", 0))
                    self.assertLessEqual(float(trigger.get("start")) + last, end - start)
                for spline in entry.findall("spline"):
                    times = [float(key.get("time")) for key in spline]
                    self.assertEqual(sorted(set(times)), times)
                    self.assertLessEqual(times[-1], end - start)

    def test_cuts_lie_on_beats_and_triggers_on_the_grid(self):
        # Pieces of a section, such as a tile transition, may begin between beats.
        for entry, effect, start, end in self.each():
            with self.subTest(effect, start=start):
                cut = effect in ("flash", "clear", "sorrel", "podium")
                self.assertLessEqual(off_grid(start, BEAT if cut else BEAT / 2), TOLERANCE)
                for trigger in entry.findall("trigger"):
                    for moment in (start + float(trigger.get("start")), float(trigger.get("delay", 0))):
                        self.assertLessEqual(off_grid(moment, BEAT / 4), TOLERANCE)

    def test_what_is_heard_agrees_with_the_grid(self):
        rate = 4000
        window = rate // 50  # a wave of the lowest notes
        samples = array.array("h", subprocess.check_output(
            ["ffmpeg", "-v", "error", "-i", MUSIC, "-af", "lowpass=f=400", "-ac", "1", "-ar", str(rate),
             "-f", "s16le", "-"]))
        energy = [0]
        for sample in samples:
            energy.append(energy[-1] + sample * sample)

        def onset(moment):
            """The steepest rise within a tenth of a second: (decibels, how late in seconds)."""
            rises = []
            for late in range(-rate // 10, rate // 10 + 1, 10):
                i = round(moment * rate) + late
                before, after = energy[i] - energy[i - window], energy[i + window] - energy[i]
                rises.append((10 * math.log10((after + window * 100) / (before + window * 100)), late / rate))
            return max(rises)

        # From bar 8 on something low is struck at the start of each bar; between 52 and 58, and in the fire from 60
        # to 83, but for the break from 68 to 71, the kick sounds on every beat.
        moments = {bar * BAR for bar in range(8, 102)}
        moments.update(beat * BEAT for first, last in ((52, 58), (60, 68), (72, 84))
                       for beat in range(4 * first, 4 * last))
        moments.update(start for _, effect, start, _ in self.each() if effect == "flash" and off_grid(start, BAR) == 0)
        for moment in sorted(moments):
            with self.subTest(second=moment):
                rise, late = onset(moment)
                self.assertGreater(rise, 6)
                self.assertLessEqual(abs(late), TOLERANCE)


if __name__ == "__main__":
    unittest.main()
