"""The program from its start to its end: what it prints, and the frames that it dumps."""

import struct
import unittest

from showfolder import BLUE, CAPTION, RED, Show, two_colours


class Playing(unittest.TestCase):
    def test_plays_to_its_end(self):
        with Show(seconds=1.0) as show:
            status, output, errors = show.run()
        self.assertEqual((0, ""), (status, errors))
        self.assertEqual("Opening window ['%s'][320x240][Windowed][OpenGL]\nUsing 32 bpp\n" % CAPTION, output)


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
