"""The whole show, dumped twice at one picture a second, with the data that the build made."""

import hashlib
import os
import pathlib
import subprocess
import tempfile
import unittest

PROGRAM = os.environ["SHOW_PROGRAM"]
DATA = pathlib.Path(os.environ["SHOW_DATA"])
SECONDS, WIDTH, HEIGHT = 208, 800, 600

CONFIGURATION = """<demo>
	<window caption="whole show" width="%d" height="%d" mode="windowed" type="opengl"/>
	<music file="glacier.ogg"/>
	<script file="glacier.xml"/>
	<videodump name="frame.png" fps="1" frameskip="2"/>
</demo>
""" % (WIDTH, HEIGHT)

# A picture in which nothing is brighter counts as black, as the ground of most sections does.
BLACK = 40
# The eye of the last section has closed.
BLACK_FROM = 206


class Pass:
    """One run from the first to the last second. Picture i shows second i + 0.5."""

    def __init__(self):
        with tempfile.TemporaryDirectory(prefix="show-") as name:
            folder = pathlib.Path(name)
            for part in ("bin", "screenshots"):
                (folder / part).mkdir()
            (folder / "data").symlink_to(DATA)
            (folder / "tidewheel.xml").write_text(CONFIGURATION)
            # Mesa names each error of OpenGL there and then, also where the program does not ask for it.
            run = subprocess.run([PROGRAM], cwd=folder / "bin", text=True, stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE, env={**os.environ, "MESA_DEBUG": "1"})
            self.status, self.errors = run.returncode, run.stderr
            files = sorted((folder / "screenshots").iterdir())
            self.names = [file.name for file in files]
            self.hashes = [hashlib.sha256(file.read_bytes()).digest() for file in files]
            self.brightest = list(self._brightest(folder / "screenshots"))

    def _brightest(self, folder):
        with subprocess.Popen(["ffmpeg", "-v", "error", "-i", folder / "frame.%010d.png", "-f", "rawvideo", "-pix_fmt",
                               "gray", "-"], stdout=subprocess.PIPE) as decoder:
            while picture := decoder.stdout.read(WIDTH * HEIGHT):
                yield max(picture)


class WholeShow(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.first = Pass()

    def test_plays_to_its_end_without_an_error(self):
        self.assertEqual((0, ""), (self.first.status, self.first.errors))
        # One picture more, for the frame in which the end is noticed.
        self.assertEqual(["frame.%010d.png" % i for i in range(SECONDS + 1)], self.first.names)

    def test_is_never_black_or_frozen(self):
        self.assertEqual(SECONDS + 1, len(self.first.brightest))
        self.assertEqual([], [i for i in range(BLACK_FROM) if self.first.brightest[i] < BLACK])
        # Three pictures span the two seconds of a bar.
        hashes = self.first.hashes
        self.assertEqual([], [i for i in range(BLACK_FROM) if hashes[i] == hashes[i + 1] == hashes[i + 2]])

    def test_shows_the_same_on_every_run(self):
        second = Pass()
        self.assertEqual([], [i for i, pair in enumerate(zip(self.first.hashes, second.hashes)) if pair[0] != pair[1]])
        self.assertEqual(self.first.names, second.names)


if __name__ == "__main__":
    unittest.main()
