"""What ./new makes: a show that plays, with a scene, an effect of its own and a click track on the beat."""

import array
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
import wave

ROOT = pathlib.Path(__file__).resolve().parent.parent
SHOW = pathlib.Path(os.environ["NEW_SHOW"])
PROGRAM = pathlib.Path(os.environ["NEW_PROGRAM"])
WIDTH, HEIGHT = 800, 600

SCRIPT = """<script>
<effect name="clear" start="0" end="9"><trigger start="0" name="color" value="000000255"/></effect>
<effect name="scene" start="0" end="2"/>
<effect name="rings" start="2" end="9"><spline name="count" type="none"><key time="0" value="2"/></spline></effect>
</script>"""


class NewShow(unittest.TestCase):
    def test_its_roster_draws(self):
        with tempfile.TemporaryDirectory(prefix="newshow-") as name:
            root = pathlib.Path(name)
            for folder in ("bin", "screenshots"):
                (root / folder).mkdir()
            (root / "data").symlink_to(SHOW / "data")
            (root / "script.xml").write_text(SCRIPT)
            settings = (SHOW / "data/tidewheel.xml").read_text()
            (root / "tidewheel.xml").write_text(settings.replace(
                "</demo>", '<videodump name="raw:0:3:9" fps="1"/></demo>'))
            with open(root / "frames", "wb") as frames:
                os.dup2(frames.fileno(), 9)
                done = subprocess.run([str(PROGRAM) + "-render"], cwd=root / "bin", pass_fds=[9], stderr=subprocess.PIPE,
                                      text=True, timeout=120)
                os.close(9)
            self.assertEqual(0, done.returncode, done.stderr)
            pixels = (root / "frames").read_bytes()
        self.assertEqual(3 * 4 * WIDTH * HEIGHT, len(pixels))

        def pixel(frame, x, y):
            start = 4 * ((frame * HEIGHT + y) * WIDTH + x)
            return pixels[start:start + 3]

        blue = bytes([255, 0, 0])
        self.assertEqual(blue, pixel(0, 10, 10))
        self.assertNotEqual(blue, pixel(0, WIDTH // 2, HEIGHT // 2))    # the cube
        self.assertEqual(blue, pixel(2, WIDTH // 2, HEIGHT // 2))
        self.assertNotEqual(blue, pixel(2, WIDTH // 2, 146))           # the inner ring

    def test_its_script_is_fine_by_its_own_table_of_effects(self):
        with tempfile.TemporaryDirectory(prefix="newshow-") as name:
            root = pathlib.Path(name) / "show"
            shutil.copytree(SHOW, root)
            (root / "data/script.xml").write_text(SCRIPT.replace("count", "cuont").replace("none", "linear"))
            done = subprocess.run([os.environ["TIMELINE"], "check", "--show", root], stdout=subprocess.PIPE,
                                  text=True)
        self.assertRegex(done.stdout, r"\A[^\n]*script.xml:4: [^\n]*'cuont'[^\n]*\n\Z")

    def test_the_click_is_on_the_beat(self):
        with wave.open(str(SHOW / "data/click.wav")) as file:
            samples, rate = array.array("h", file.readframes(file.getnframes())), file.getframerate()
        self.assertEqual(120 * rate, len(samples))
        for beat in range(0, 240, 17):
            start = beat * rate // 2
            self.assertLess(max(map(abs, samples[max(start - 200, 0):start] or [0])), 50)
            self.assertGreater(max(samples[start:start + 200]), 10000)

    def test_says_what_it_cannot_make(self):
        for name, trouble in ((SHOW, "is there already"), (SHOW / "7th", "no name for a show"),
                              (SHOW / "README.md/inside", "Not a directory")):
            done = subprocess.run([sys.executable, "-B", ROOT / "scripts/newshow.py", name], stderr=subprocess.PIPE, text=True)
            self.assertEqual((1, 1), (done.returncode, done.stderr.count("\n")), done.stderr)
            self.assertIn(trouble, done.stderr)


if __name__ == "__main__":
    unittest.main()
