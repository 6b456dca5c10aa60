"""Rendering the show to pictures, to a video and to a contact sheet, as an author does from the command line."""

import json
import os
import pathlib
import signal
import struct
import subprocess
import sys
import tempfile
import unittest

from showfolder import Picture, clear_entry, wait_until

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "scripts"))
from rendering.options import parse

RENDER = pathlib.Path(__file__).resolve().parent.parent / "scripts/render.py"
PROGRAM = pathlib.Path(os.environ["SHOW_PROGRAM"])
PATIENCE = 300.0
FEW = ("--fast", "--from", "30", "--to", "31", "--fps", "10")


def names(count):
    return ["frame.%010d.png" % i for i in range(count)]


def size_of(path):
    """The size of a whole PNG file."""
    data = path.read_bytes()
    assert data[-8:-4] == b"IEND", path
    return struct.unpack(">II", data[16:24])


class Rendering(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="render-")
        self.addCleanup(temporary.cleanup)
        self.path = pathlib.Path(temporary.name)
        self.root = self.path / "root"
        (self.root / "bin").mkdir(parents=True)
        renderer = PROGRAM.with_name(PROGRAM.name + "-render")
        (self.root / "bin" / renderer.name).symlink_to(renderer)
        (self.root / "data").symlink_to(os.environ["SHOW_DATA"])
        (self.root / "tidewheel.xml").write_bytes((self.root / "data/tidewheel.xml").read_bytes())

    def start(self, *arguments, **environment):
        return subprocess.Popen([sys.executable, RENDER, "--show", self.root, *arguments], cwd=self.path, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, env={**os.environ, **environment})

    def render(self, *arguments, status=0, **environment):
        """Renders, and gives what is said; the show of the author stays as it is."""
        def listing():
            return {path: path.lstat().st_mtime_ns for path in self.root.rglob("*")}

        before = listing()
        with self.start(*arguments, **environment) as run:
            output, errors = run.communicate(timeout=PATIENCE)
        self.assertEqual(status, run.returncode, errors)
        self.assertEqual(before, listing())
        return output if status == 0 else errors

    def stop(self, *arguments, after, **environment):
        """Renders until the file `after` is there, then presses Ctrl+C; gives what is said."""
        with self.start(*arguments, **environment) as run:
            wait_until((self.path / after).exists, "%s never came" % after)
            run.send_signal(signal.SIGINT)
            output, errors = run.communicate(timeout=PATIENCE)
        self.assertEqual(130, run.returncode, errors)
        return output

    def written(self, folder):
        return sorted(path.name for path in (self.path / folder).iterdir())

    def test_numbered_pictures_in_a_new_folder(self):
        self.render("new/frames", *FEW)
        self.assertEqual(names(10), self.written("new/frames"))
        # Another rendering takes the place of this one, on a display of its own where there is none.
        self.render("new/frames", *FEW[:-1], "3", "--frameskip", "2", "--size", "160x120", DISPLAY=":9999")
        self.assertEqual(names(3), self.written("new/frames"))
        self.assertEqual({(160, 120)}, {size_of(self.path / "new/frames" / name) for name in names(3)})

    def test_pixels_are_the_programs_own(self):
        folder = self.path / "program"
        (folder / "bin").mkdir(parents=True)
        (folder / "screenshots").mkdir()
        (folder / "data").symlink_to(self.root / "data")
        text = (self.root / "tidewheel.xml").read_text().replace('start="0.00"', 'start="30"').replace(
            "</demo>", '<videodump name="frame.png" fps="10" frameskip="1"/></demo>')
        (folder / "tidewheel.xml").write_text(text)
        with subprocess.Popen([PROGRAM], cwd=folder / "bin", stdout=subprocess.DEVNULL) as run:
            wait_until((folder / "screenshots" / names(4)[3]).exists, "no frames")
            run.terminate()
        self.render("frames", *FEW)
        self.render("show.mp4", *FEW, "--keep")
        for name in names(3):
            own = Picture(folder / "screenshots" / name).pixels
            self.assertEqual(own, Picture(self.path / "frames" / name).pixels)
            self.assertEqual(own, Picture(self.path / "show.mp4.frames" / name).pixels)

    def test_a_part_is_as_in_the_whole(self):
        """Its frames, by their checksum; --fast begins without what was ahead of them."""
        self.render("whole", "--to", "3", "--fps", "10")
        self.render("part", "--from", "2", "--to", "3", "--fps", "10")
        self.render("still", "--still", "3", "--fps", "10")
        whole, part = self.written("whole"), self.written("part")
        for theirs, ours in (("part/" + part[-1], "whole/" + whole[-1]), ("part/" + part[0], "whole/" + whole[20]),
                             ("still.png", "whole/" + whole[-1])):
            self.assertEqual((self.path / theirs).read_bytes(), (self.path / ours).read_bytes())

    def test_checksums_and_going_on(self):
        hashed = [self.render(*out, *FEW, "--hash").splitlines()[0] for out in ((), ("frames",), ("show.mkv",))]
        self.assertEqual({hashed[0]}, set(hashed))
        self.assertRegex(hashed[0], "^SHA256=[0-9a-f]{64}$")
        self.assertIn("stopped", self.render("frames", *FEW, "--resume", status=1))
        self.stop("half", *FEW[:3], after="half/" + names(4)[-1])
        first = (self.path / "half" / names(1)[0]).stat().st_mtime_ns
        self.assertIn("these options", self.render("half", "--resume", status=1))
        there = len(self.written("half"))
        self.stop("half", *FEW[:3], "--resume", after="half/" + names(there + 3)[-1])
        self.assertEqual(first, (self.path / "half" / names(1)[0]).stat().st_mtime_ns)

    def test_presets(self):
        def streams(name):
            return json.loads(subprocess.check_output(
                ["ffprobe", "-v", "error", "-show_streams", "-of", "json", self.path / name]))["streams"]

        self.render("party.mp4", *FEW, "--preset", "party", "--scale", "1280x720")
        picture, sound = streams("party.mp4")
        self.assertEqual(("h264", "Main", 1280, 720, "10/1", "1:1", "aac"), (*(picture[key] for key in (
            "codec_name", "profile", "width", "height", "r_frame_rate", "sample_aspect_ratio")), sound["codec_name"]))
        hashed = self.render("archive.mkv", *FEW, "--preset", "archive", "--hash")
        again = subprocess.check_output(["ffmpeg", "-v", "error", "-i", self.path / "archive.mkv", "-map", "0:v",
                                         "-pix_fmt", "rgb24", "-fps_mode", "passthrough", "-c:v", "rawvideo", "-f",
                                         "hash", "-"], text=True)
        self.assertIn(again, hashed)

    def test_a_video_with_its_music(self):
        for name in ("a/show.mp4", "show.mkv"):
            with self.subTest(name):
                self.render(name, *FEW, "--size", "320x240", "--scale", "640x480", "--keep")
                probe = json.loads(subprocess.check_output(
                    ["ffprobe", "-v", "error", "-count_frames", "-show_streams", "-show_format", "-of", "json",
                     self.path / name]))
                picture, sound = probe["streams"]
                self.assertEqual(("video", 640, 480, "10"), tuple(picture[key] for key in (
                    "codec_type", "width", "height", "nb_read_frames")))
                self.assertEqual("audio", sound["codec_type"])
                self.assertAlmostEqual(1.1, float(probe["format"]["duration"]), delta=0.15)
                self.assertEqual(names(10), self.written(name + ".frames"))

    def test_a_finished_video_is_not_lost(self):
        self.render("show.mp4", *FEW)
        finished = (self.path / "show.mp4").read_bytes()
        self.assertIn("already", self.render("show.mp4", *FEW, "--keep-finished"))
        said = self.stop("show.mp4", "--keep", after="show.mp4.frames/" + names(9)[-1])
        self.assertRegex(said, "show.stopped.mp4 holds [0-9]+ of 6239 frames")
        # The first cause is told, not what follows from it.
        (self.root / "glacier.xml").write_text("<script>%s</script>" % clear_entry(0, 10, "12"))
        self.assertIn("after 0 of 299 frames: Error: basic_string", self.render("show.mp4", status=1))
        self.assertIn("after 0 of 299 frames: Error: basic_string", self.render("new.mp4", status=1))
        self.assertEqual(["root", "show.mp4", "show.mp4.frames", "show.stopped.mp4"], self.written("."))
        self.assertEqual(finished, (self.path / "show.mp4").read_bytes())

    def test_a_contact_sheet(self):
        self.assertIn("8 frames", self.render("--contact-sheet", "sheets/sheet.png", "--from", "200", "--fps", "1"))
        # Ten in a row, 200 wide with gaps of 2.
        self.assertEqual((2018, 150), size_of(self.path / "sheets/sheet.png"))

    def test_stopping_keeps_whole_pictures_and_leaves_nothing_else(self):
        (self.path / "temporary").mkdir()
        said = self.stop("frames", after="frames/" + names(4)[-1], TMPDIR=str(self.path / "temporary"))
        written = self.written("frames")
        self.assertIn(".unfinished", written)
        written.remove(".unfinished")
        self.assertIn("holds %d of" % len(written), said)
        self.assertEqual({(800, 600)}, {size_of(self.path / "frames" / name) for name in written})
        self.assertEqual([], self.written("temporary"))

    def test_names_stand_on_both_sides_of_options(self):
        options = parse(["first", "--still", "12", "look"])
        self.assertEqual(("first", "look.png"), (options.name, options.output))

    def test_says_what_it_does_and_what_it_cannot_do(self):
        self.assertIn("--contact-sheet", self.render("--help"))
        self.assertIn("'c' is one name too many", self.render("a", "--fps", "9", "b", "c", status=2))
        for arguments in ((), ("a", "--contact-sheet", "b.png"), ("a.png",), ("a", "--preset", "web"),
                          ("a.mp4", "--preset", "archive"), ("a.mp4", "--resume"), ("--still", "1"), ("a", "--fps", "0"), ("a", "--fps", "x"),
                          ("a", "--from", "-1"), ("a", "--to", "nan"), ("a", "--size", "801x600"),
                          ("a", "--size", "9x9"), ("a", "--frameskip", "0"), ("a", "--unknown"),
                          ("show.avi",), ("a", "--scale", "80x60"), ("--contact-sheet", "b"), ("a.jpg", "--still", "1")):
            with self.subTest(arguments=arguments):
                self.assertIn("usage: ./render", self.render(*arguments, status=2))
        self.assertIn("nothing to render", self.render("a", "--from", "300", status=1))
        (self.path / "file").write_text("")
        self.assertIn("Error: ", self.render("file/frames", *FEW, status=1))
        self.assertEqual(["file", "root"], self.written("."))
        (self.root / "data").unlink()
        self.assertIn("Error: 'glacier.xml' is in no archive of the show", self.render("a", *FEW, status=1))


if __name__ == "__main__":
    unittest.main()
