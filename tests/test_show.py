"""The program from its start to its end: played through, left, aborted, refused, and what it writes."""

import shutil
import struct
import unittest
import zipfile

from showfolder import BLUE, CAPTION, RED, Show, clear_entry, two_colours


class Playing(unittest.TestCase):
    def test_plays_to_its_end(self):
        with Show(seconds=1.0) as show:
            status, output, errors = show.run()
        self.assertEqual((0, ""), (status, errors))
        self.assertEqual("Opening window ['%s'][320x240][Windowed][OpenGL]\nUsing 32 bpp\n" % CAPTION, output)

    def test_plays_in_silence_without_a_sound_device(self):
        with Show(seconds=0.5) as show:
            status, _, errors = show.run(SDL_AUDIODRIVER="nothing")
        self.assertEqual(0, status)
        self.assertEqual(1, errors.count("\n"), errors)

    def test_plays_without_music(self):
        with Show() as show:
            show.configure(show.read("tidewheel.xml")[6:-7].replace('<music file="track.wav"/>', ""))
            self.assertEqual((0, ""), show.run()[::2])

    def test_a_second_window_and_a_second_music_take_the_place_of_the_first(self):
        with Show(seconds=0.5) as show:
            show.configure('<window width="64" height="48" type="opengl"/><music file="track.wav"/>' +
                           show.read("tidewheel.xml")[6:-7])
            status, output, errors = show.run()
        self.assertEqual((0, ""), (status, errors))
        self.assertEqual(2, output.count("Opening window"))

    def test_plays_from_the_zip_alone(self):
        with Show(seconds=0.5) as show:
            with zipfile.ZipFile(show.path / "ourglacierheartcold.sdr", "w", zipfile.ZIP_DEFLATED) as archive:
                for file in (show.path / "data").iterdir():
                    archive.write(file, file.name)
                archive.write(show.path / "tidewheel.xml", "tidewheel.xml")
            shutil.rmtree(show.path / "data")
            (show.path / "tidewheel.xml").unlink()
            self.assertEqual((0, ""), show.run()[::2])
            self.assertIn('<time start="0.00"/>', show.read("tidewheel.xml"))

    def test_escape_leaves(self):
        with Show(seconds=300) as show, show.start() as run:
            run.focus()
            run.wait_for(RED)
            run.keys("Escape")
            self.assertEqual((0, ""), run.end()[::2])

    def test_closing_leaves(self):
        with Show(seconds=300) as show, show.start() as run:
            run.focus()
            run.wait_for(RED)
            run.terminate()
            self.assertEqual((0, ""), run.end()[::2])

    def test_leaving_while_effects_are_set_up_is_an_abort(self):
        for leave in (lambda run: run.keys("Escape"), lambda run: run.terminate()):
            # Pictures that take their time, so that the program can be stopped among them.
            with Show(seconds=300, picture_size=2048) as show, show.start() as run:
                run.focus()
                run.stop()
                leave(run)
                run.go_on()
                self.assertEqual((1, "Error: User aborted!\n"), run.end()[::2])
                self.assertIn('<time start="0.00"/>', show.read("tidewheel.xml"))


class Refusals(unittest.TestCase):
    def refuse(self, text, change, **environment):
        """The program ends with this one line, and has left the configuration alone."""
        with Show() as show:
            change(show)
            path = show.path / "tidewheel.xml"
            before = path.read_bytes() if path.exists() else None
            status, _, errors = show.run(**environment)
            self.assertEqual(1, status)
            self.assertEqual("Error: " + text, errors[:len(text) + 7])
            after = path.read_bytes() if path.exists() else None
        return before, after, errors

    def test_files_that_are_missing_or_wrong(self):
        cases = (
            ("[Tidewheel] Could not load 'tidewheel.xml'\n", lambda s: (s.path / "tidewheel.xml").unlink()),
            ("[Tidewheel] Could not find 'tidewheel.font'!\n", lambda s: (s.path / "data/tidewheel.font").unlink()),
            ("AM::loadImage, File not found (tidewheel_logo.png)\n",
             lambda s: (s.path / "data/tidewheel_logo.png").unlink()),
            ("[Tidewheel] Could not find music in 'track.wav'\n", lambda s: (s.path / "data/track.wav").unlink()),
            ("[Tidewheel] FMOD-ERROR; Unknown file format\n", lambda s: s.write("data/track.wav", "no music")),
            ("[Tidewheel] Could not find the scriptfile 'script.xml'\n",
             lambda s: (s.path / "data/script.xml").unlink()),
            ("(error at line 1, col 14); EOF (when reading tag at 1:7)\n",
             lambda s: s.write("tidewheel.xml", "<demo> <music")),
            ("(error at line 2, col 6); '=' expected! (when reading tag at 1:9)\n",
             lambda s: s.write("data/script.xml", "<script>\n<a b></a></script>")),
        )
        for text, change in cases:
            with self.subTest(text):
                before, after, errors = self.refuse(text, change)
                self.assertEqual("Error: " + text, errors)
                self.assertEqual(before, after)

    def test_windows_that_cannot_be(self):
        def window(attributes, more=""):
            return lambda s: s.configure("<window %s/>%s" % (attributes, more))

        size = "[Tidewheel] The window in 'tidewheel.xml' needs a width and a height from 1 to 16384 "
        cases = (
            (size + "(0x0)\n", window('type="opengl"'), {}),
            (size + "(320x-1)\n", window('width="320" height="-1" type="opengl"'), {}),
            ("[Tidewheel] There is no window tag in 'tidewheel.xml'\n", lambda s: s.configure(""), {}),
            ("[Tidewheel] The window in 'tidewheel.xml' is not of the type 'opengl'\n",
             window('width="320" height="240" type="software"'), {}),
            ("[Tidewheel] The root tag of 'tidewheel.xml' is not 'demo'\n",
             lambda s: s.write("tidewheel.xml", "<show></show>"), {}),
            ("[Tidewheel] Frames can be dumped only from a window of even height (241)\n",
             window('width="320" height="241" type="opengl"', '<videodump name="a.png" fps="25"/>'), {}),
            ("Could not find something that could write to 'a.jpg'\n",
             window('width="320" height="240" type="opengl"', '<videodump name="a.jpg" fps="25"/>'), {}),
            ("Could not set video mode '", lambda s: None, {"SDL_VIDEODRIVER": "dummy"}),
            ("Video initialization failed: ", lambda s: None, {"SDL_VIDEODRIVER": "nothing"}),
        )
        for text, change, environment in cases:
            with self.subTest(text):
                self.refuse(text, change, **environment)

    def test_a_failure_while_playing_keeps_the_settings(self):
        script = "<script>%s</script>" % clear_entry(0, 10, "12")
        with Show(script) as show:
            status, _, errors = show.run()
            self.assertEqual(1, status)
            self.assertRegex(errors, "^Error: .*basic_string.*\n$")
            self.assertIn('<time start="0.00"/>', show.read("tidewheel.xml"))


class Configuration(unittest.TestCase):
    def test_is_rewritten_byte_for_byte(self):
        with Show(seconds=0.5) as show:
            show.write("tidewheel.xml", "<?xml version='1.0'?>\n<!-- lost --><demo><!-- kept -->\n  <archive file='none/'/>"
                       "<window caption='a' width='320' height='240' type='opengl'></window>\n"
                       "<music mute='no' file='track.wav'/><script file='script.xml'/><hud mini='on'/>"
                       "<mine x='1'><y/></mine></demo> lost")
            self.assertEqual((0, ""), show.run()[::2])
            self.assertEqual(
                '<?xml version="1.0"?>\n\n<demo>\n\t<time start="0.00"/>\n\t<!-- kept -->\n\t<archive file="none/"/>\n'
                '\t<window caption="a" width="320" height="240" type="opengl" mode="windowed"/>\n'
                '\t<music mute="off" file="track.wav"/>\n\t<script file="script.xml"/>\n\t<hud mini="on"/>\n'
                '\t<mine x="1">\n\t\t<y/>\n\t</mine>\n</demo>\n', show.read("tidewheel.xml"))


def single(value):
    return struct.unpack("f", struct.pack("f", value))[0]


class Dumping(unittest.TestCase):
    def dump(self, fps, base, skip, change, end, start=0.0):
        """Dumps a show of two colours, and compares every frame with the colour of its moment."""
        settings = ('<time start="%g"/><videodump name="frame.png" fps="%d" fpsbase="%d" frameskip="%d"/>'
                    % (start, fps, base, skip))
        with Show(two_colours(change, end), width=64, height=48, settings=settings) as show:
            self.assertEqual((0, ""), show.run()[::2])

            # Every drawn frame lies one single-precision step behind the last; the one past the end is the last.
            step, now, drawn = single(single(base / fps) / skip), start, 0
            expected = []
            while now <= end:
                now = single(now + step)
                if drawn % skip == 0:
                    expected.append(now)
                drawn += 1
            names = sorted(path.name for path in (show.path / "screenshots").iterdir())
            self.assertEqual(["frame.%010d.png" % i for i in range(len(expected))], names)
            for name, moment in zip(names, expected):
                picture = show.picture(name)
                self.assertEqual((64, 48), (picture.width, picture.height))
                if moment < end:
                    colour = RED if moment < change else BLUE
                    for corner in ((0, 0), (63, 0), (0, 47), (63, 47)):
                        self.assertEqual(colour, picture.at(*corner), (name, moment))

    def test_writes_every_frame_with_its_colour(self):
        self.dump(fps=10, base=1, skip=1, change=0.55, end=1.0)

    def test_skips_frames_and_takes_broken_rates(self):
        self.dump(fps=30000, base=1001, skip=3, change=20.25, end=20.5, start=20.0)


if __name__ == "__main__":
    unittest.main()
