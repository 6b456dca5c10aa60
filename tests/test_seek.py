"""The show from a start in its middle beside the show played up to there: both show the same at the same second.

That holds wherever all that is seen follows from the script and the second. It cannot where an effect keeps something
of the frames before (ball, blur, crash, fire, infinity, lighting, meta, particles, and scenese within a jump) or draws
by chance in each frame (cubes, hypno, lines, static, sun), so none of these is seen at the places below.
"""

import operator
import os
import pathlib
import sys
import tempfile
import threading
import unittest
from concurrent.futures import ThreadPoolExecutor

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "scripts"))
from rendering.options import parse
from rendering.plan import Plan
from rendering.program import run_renderer

RENDERER = pathlib.Path(os.environ["SHOW_PROGRAM"] + "-render")
RATE, WIDTH, HEIGHT = 2, 160, 120       # every place lies on a frame
PLACES = {
    18.5: "the flight and the logo, as it is after its trigger",
    40.0: "the banner, at rest between two jumps",
    81.0: "the hall outside of the closing eye, under a sheet of ember",
    107.0: "the landscape, from all its tiles",
    129.0: "dots",
    134.5: "the hall within the arms, on a ground that flares",
    138.5: "a heartbeat within the arms",
    193.5: "ice within the eye",
    199.0: "the title, and a heartbeat over the heart",
    203.0: "the last heartbeat in the eye",
}


class Seek(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="seek-")
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        (self.root / "bin").mkdir()
        (self.root / "bin" / RENDERER.name).symlink_to(RENDERER)
        (self.root / "data").symlink_to(os.environ["SHOW_DATA"])
        (self.root / "tidewheel.xml").write_bytes((self.root / "data/tidewheel.xml").read_bytes())

    def pictures(self, start, end):
        """{second: pixels} of a run that begins at `start`."""
        size = WIDTH * HEIGHT * 4
        plan = Plan(parse(["--hash", "--fast", "--from", str(start), "--to", str(end), "--fps", str(RATE),
                           "--size", f"{WIDTH}x{HEIGHT}"]), self.root)
        with tempfile.TemporaryDirectory(prefix="seek-") as folder, tempfile.TemporaryFile() as file:
            run_renderer(plan, pathlib.Path(folder), f"raw:0:{len(plan.times)}:{file.fileno()}", threading.Event(),
                         lambda *_: None, [file.fileno()])
            file.seek(0)
            return {moment: file.read(size) for moment in plan.times}

    def test_a_start_in_the_middle_shows_what_the_whole_shows(self):
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            whole = pool.submit(self.pictures, 0.0, max(PLACES))
            parts = {moment: pool.submit(self.pictures, moment - 1 / RATE, moment) for moment in PLACES}
        for moment, what in PLACES.items():
            with self.subTest(what, second=moment):
                expected, found = (list(zip(*[iter(run.result()[moment])] * 4)) for run in (whole, parts[moment]))
                self.assertGreater(len(set(found)), 1, "nothing is seen")
                self.assertEqual(0, sum(map(operator.ne, expected, found)), "pixels differ")


if __name__ == "__main__":
    unittest.main()
