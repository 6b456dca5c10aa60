"""Rendering the show to pictures, to a video and to a contact sheet, as an author does from the command line."""

import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

RENDER = pathlib.Path(__file__).resolve().parent.parent / "scripts/render.py"
PATIENCE = 300.0
FEW = ("--from", "30", "--to", "31", "--fps", "10")


def names(count):
    return ["frame.%010d.png" % i for i in range(count)]


class Rendering(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="render-")
        self.addCleanup(temporary.cleanup)
        self.path = pathlib.Path(temporary.name)
        self.root = self.path / "root"
        (self.root / "bin").mkdir(parents=True)
        (self.root / "bin/ourglacierheartcold").symlink_to(os.environ["SHOW_PROGRAM"])
        (self.root / "data").symlink_to(os.environ["SHOW_DATA"])
        (self.root / "tidewheel.xml").write_bytes((self.root / "data/tidewheel.xml").read_bytes())

    def command(self, *arguments):
        return {"args": [sys.executable, RENDER, *arguments], "cwd": self.path, "text": True,
                "stdout": subprocess.PIPE, "stderr": subprocess.PIPE,
                "env": {**os.environ, "RENDER_ROOT": str(self.root)}}

    def render(self, *arguments, status=0):
        """Renders, and gives what is said; the show of the author stays as it is."""
        def listing():
            return {path: path.lstat().st_mtime_ns for path in self.root.rglob("*")}

        before = listing()
        run = subprocess.run(**self.command(*arguments), timeout=PATIENCE)
        self.assertEqual(status, run.returncode, run.stderr)
        self.assertEqual(before, listing())
        return run.stdout if status == 0 else run.stderr

    def written(self, folder):
        return sorted(path.name for path in (self.path / folder).iterdir())

    def test_numbered_pictures_in_a_new_folder(self):
        self.render("new/frames", *FEW)
        self.assertEqual(names(10), self.written("new/frames"))
        # Another rendering takes the place of this one.
        self.render("new/frames", *FEW[:-1], "3", "--frameskip", "2", "--size", "160x120")
        self.assertEqual(names(3), self.written("new/frames"))
        for name in names(3):
            data = (self.path / "new/frames" / name).read_bytes()
            self.assertEqual((160, 120), (int.from_bytes(data[16:20], "big"), int.from_bytes(data[20:24], "big")))
            self.assertEqual(b"IEND", data[-8:-4])

    def test_a_video_with_its_music(self):
        for name in ("a/show.mp4", "show.mkv"):
            with self.subTest(name):
                self.render(name, *FEW, "--size", "320x240", "--keep")
                probe = json.loads(subprocess.check_output(
                    ["ffprobe", "-v", "error", "-count_frames", "-show_streams", "-show_format", "-of", "json",
                     self.path / name]))
                picture, sound = probe["streams"]
                self.assertEqual(("video", 320, 240, "10"), tuple(picture[key] for key in (
                    "codec_type", "width", "height", "nb_read_frames")))
                self.assertEqual("audio", sound["codec_type"])
                self.assertAlmostEqual(1.1, float(probe["format"]["duration"]), delta=0.15)
                self.assertEqual(names(10), self.written(name + ".frames"))

    def test_a_contact_sheet(self):
        self.assertIn("8 frames", self.render("--contact-sheet", "sheets/sheet.png", "--from", "200", "--fps", "1"))
        data = (self.path / "sheets/sheet.png").read_bytes()
        # Ten in a row, 200 wide with gaps of 2.
        self.assertEqual((2018, 150), (int.from_bytes(data[16:20], "big"), int.from_bytes(data[20:24], "big")))

    def test_stopping_keeps_whole_pictures(self):
        with subprocess.Popen(**self.command("frames")) as run:
            limit = time.monotonic() + PATIENCE
            while not (self.path / "frames" / names(4)[-1]).exists():
                self.assertLess(time.monotonic(), limit)
                self.assertIsNone(run.poll())
                time.sleep(0.05)
            run.send_signal(signal.SIGINT)
            output, errors = run.communicate(timeout=PATIENCE)
        self.assertEqual(130, run.returncode, errors)
        written = self.written("frames")
        self.assertEqual(names(len(written)), written)
        self.assertIn("holds %d of" % len(written), output)
        for name in written:
            self.assertEqual(b"IEND", (self.path / "frames" / name).read_bytes()[-8:-4])

    def test_says_what_it_does_and_what_it_cannot_do(self):
        self.assertIn("--contact-sheet", self.render("--help"))
        for arguments in ((), ("a", "b"), ("a", "--contact-sheet", "b.png"), ("a", "--fps", "0"), ("a", "--fps", "x"),
                          ("a", "--from", "-1"), ("a", "--to", "nan"), ("a", "--size", "801x600"),
                          ("a", "--size", "9x9"), ("a", "--frameskip", "0"), ("a", "--unknown")):
            with self.subTest(arguments=arguments):
                self.assertIn("usage: ./render", self.render(*arguments, status=2))
        self.assertIn("nothing to render", self.render("a", "--from", "300", status=1))
        (self.path / "file").write_text("")
        self.assertIn("Error: ", self.render("file/frames", *FEW, status=1))
        self.assertEqual(["file", "root"], self.written("."))
        (self.root / "data").unlink()
        self.assertEqual("Error: the script 'glacier.xml' was not found\n", self.render("a", *FEW, status=1))


if __name__ == "__main__":
    unittest.main()
