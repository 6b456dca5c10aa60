"""A show in a temporary folder, for tests that run the real program: its data, the program and its window.

The folder is laid out like the root of the repository: bin/ is the working directory of the program, the configuration
and the script lie beside it, and screenshots/ takes what it writes. All data are made here, small and plain.
"""

import base64
import ctypes
import ctypes.util
import math
import os
import pathlib
import shutil
import signal
import struct
import subprocess
import tempfile
import time
import wave
import zlib

PROGRAM = os.environ["SHOW_PROGRAM"]
CAPTION = "show under test"

# Time for anything that should happen soon, on a machine that does other things too.
PATIENCE = 60.0

# A brown JPEG of 8 by 8 pixels.
JPEG = base64.b64decode(
    "/9j/4AAQSkZJRgABAQAAAQABAAD/2wBDABALDA4MChAODQ4SERATGCgaGBYWGDEjJR0oOjM9PDkzODdASFxOQERXRTc4UG1RV19iZ2hnPk1x"
    "eXBkeFxlZ2P/2wBDARESEhgVGC8aGi9jQjhCY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2NjY2P/wAAR"
    "CAAIAAgDASIAAhEBAxEB/8QAFQABAQAAAAAAAAAAAAAAAAAAAAT/xAAUEAEAAAAAAAAAAAAAAAAAAAAA/8QAFAEBAAAAAAAAAAAAAAAAAAAA"
    "BP/EABQRAQAAAAAAAAAAAAAAAAAAAAD/2gAMAwEAAhEDEQA/AIgBSX//2Q==")


def png(width, height, rgba):
    """A PNG of one colour."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    rows = (b"\0" + bytes(rgba) * width) * height
    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 1)) +
            chunk(b"IEND", b""))


class Picture:
    """A PNG file of 8 bits a channel, decoded."""

    def __init__(self, path):
        data = pathlib.Path(path).read_bytes()
        assert data[:8] == b"\x89PNG\r\n\x1a\n", path
        position, packed = 8, b""
        while position < len(data):
            length, kind = struct.unpack(">I4s", data[position:position + 8])
            body = data[position + 8:position + 8 + length]
            if kind == b"IHDR":
                self.width, self.height, depth, colour = struct.unpack(">IIBB", body[:10])
                assert depth == 8 and colour in (2, 6), (depth, colour)
                self.channels = 3 if colour == 2 else 4
            elif kind == b"IDAT":
                packed += body
            position += 12 + length
        self._unfilter(zlib.decompress(packed))

    def _unfilter(self, raw):
        size, step = self.width * self.channels, self.channels
        above = bytearray(size)
        self.rows = []
        for y in range(self.height):
            kind, row = raw[y * (size + 1)], bytearray(raw[y * (size + 1) + 1:(y + 1) * (size + 1)])
            for i in range(size):
                left, up, corner = (row[i - step], above[i], above[i - step]) if i >= step else (0, above[i], 0)
                if kind == 1:
                    row[i] = (row[i] + left) & 255
                elif kind == 2:
                    row[i] = (row[i] + up) & 255
                elif kind == 3:
                    row[i] = (row[i] + (left + up) // 2) & 255
                elif kind == 4:
                    p = left + up - corner
                    near = min((abs(p - left), 0, left), (abs(p - up), 1, up), (abs(p - corner), 2, corner))
                    row[i] = (row[i] + near[2]) & 255
            self.rows.append(row)
            above = row

    def at(self, x, y):
        return tuple(self.rows[y][x * self.channels:x * self.channels + 3])


def tone(path, seconds):
    """A quiet tone, mono, as a WAV file."""
    rate = 11025
    samples = [int(2000 * math.sin(i * 0.2)) for i in range(int(rate * seconds))]
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(rate)
        file.writeframes(struct.pack("<%dh" % len(samples), *samples))


def empty_scene():
    """A scene file with one scene that holds nothing."""
    def chunk(kind, data):
        return struct.pack("<HI", kind, len(data)) + data
    return b"Y3DF\0\4" + chunk(0x1000, chunk(0x5000, chunk(0xF010, b"Scene\0")))


def clear_entry(start, end, colour):
    """A part of the timeline in which the screen has one colour, written as nine digits."""
    return ('<effect name="clear" start="%g" end="%g"><trigger start="0" name="color" value="%s"/></effect>'
            % (start, end, colour))


RED, GREEN, BLUE = (255, 0, 0), (0, 255, 0), (0, 0, 255)


def digits(colour):
    return "%03d%03d%03d" % colour


def two_colours(change, end):
    """A script that is red up to `change` seconds and blue from there to its end."""
    return "<script>%s%s</script>" % (clear_entry(0, change, digits(RED)), clear_entry(change, end, digits(BLUE)))


class Show:
    """The folder of a show, with everything that the effects of the program ask for."""

    def __init__(self, script=None, seconds=2.0, width=320, height=240, picture_size=16, settings="", window=None):
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="show-"))
        for folder in ("bin", "data", "screenshots"):
            (self.path / folder).mkdir()

        # A letter cell of 8 by 12 with some ink, 256 times.
        (self.path / "data/tidewheel.font").write_bytes(b"SBF!\x08\x0c" + bytes([0, 0x7C, 0x44, 0x7C] * 3) * 256)
        (self.path / "data/tidewheel_logo.png").write_bytes(png(64, 24, (200, 200, 255, 255)))
        picture = png(picture_size, picture_size, (255, 255, 255, 128))
        for name in ("env", "font", "greets", "overlay", "sandrift", "sandrift_ghost", "scenese", "sun"):
            (self.path / "data" / (name + ".png")).write_bytes(picture)
        (self.path / "data/ballbg.jpg").write_bytes(JPEG)
        (self.path / "data/empty.y3d").write_bytes(empty_scene())
        for name in ("avgrund.xml", "katedral.xml"):
            self.write("data/" + name, '<scenes><scene filename="empty.y3d" texturepath="" name="Scene"/></scenes>')
        tone(self.path / "data/track.wav", seconds)

        self.write("data/script.xml", script or two_colours(seconds / 2, seconds))
        if window is None:
            window = ('<window caption="%s" width="%d" height="%d" mode="windowed" type="opengl"/>'
                      % (CAPTION, width, height))
        self.configure(window + '<music file="track.wav"/><script file="script.xml"/>' + settings)

    def configure(self, tags):
        self.write("tidewheel.xml", "<demo>%s</demo>" % tags)

    def write(self, name, text):
        (self.path / name).write_text(text)

    def read(self, name):
        return (self.path / name).read_text()

    def picture(self, name):
        return Picture(self.path / "screenshots" / name)

    def screenshot(self, run):
        """Presses S, and gives the picture once it is written in full."""
        path = self.path / "screenshots/screenshot.png"
        path.unlink(missing_ok=True)
        run.keys("s")
        limit = time.monotonic() + PATIENCE
        while not path.exists() or b"IEND" not in path.read_bytes()[-12:]:
            if time.monotonic() > limit:
                raise AssertionError("no screenshot was written")
            time.sleep(0.02)
        return Picture(path)

    def start(self, **environment):
        return Run(self, environment)

    def run(self, **environment):
        """Runs the program to its end, and gives its status and both outputs."""
        with self.start(**environment) as run:
            return run.end()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.path)


class Run:
    """The program while it runs. Keys go to it as from a keyboard."""

    def __init__(self, show, environment):
        self.process = subprocess.Popen([PROGRAM], cwd=show.path / "bin", text=True, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, env={**os.environ, **environment})

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
            self.process.communicate()

    def end(self):
        """Waits for the end of the program, and gives its status and both outputs."""
        output, errors = self.process.communicate(timeout=PATIENCE)
        return self.process.returncode, output, errors

    def focus(self):
        """Waits for the window and gives it the keyboard."""
        # A window that is just coming or going makes xdotool fail.
        limit = time.monotonic() + PATIENCE
        while True:
            found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^%s$" % CAPTION,
                                    "windowfocus", "--sync", "getwindowgeometry", "--shell"], text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
            if found.returncode == 0 and "HEIGHT" in found.stdout:
                break
            if time.monotonic() > limit:
                raise AssertionError("no window came up")
            time.sleep(0.05)
        values = dict(line.split("=") for line in found.stdout.split())
        self.middle = [int(values[p]) + int(values[s]) // 2 for p, s in (("X", "WIDTH"), ("Y", "HEIGHT"))]

    def colour(self):
        """What the screen shows in the middle of the window."""
        return SCREEN.at(*self.middle)

    def wait_for(self, colour):
        """Waits until the middle of the window has this colour."""
        limit = time.monotonic() + PATIENCE
        while self.colour() != colour:
            if time.monotonic() > limit:
                raise AssertionError("the window shows %s and not %s" % (self.colour(), colour))
            time.sleep(0.02)

    def keys(self, *names):
        """Presses keys, each with time for the program to take it."""
        for name in names:
            subprocess.run(["xdotool", "key", name], check=True)
            time.sleep(0.3)

    def hold(self, name, seconds):
        """Holds a key down."""
        subprocess.run(["xdotool", "keydown", name], check=True)
        time.sleep(seconds)
        subprocess.run(["xdotool", "keyup", name], check=True)

    def stop(self):
        self.process.send_signal(signal.SIGSTOP)

    def go_on(self):
        self.process.send_signal(signal.SIGCONT)

    def terminate(self):
        self.process.send_signal(signal.SIGTERM)


class Screen:
    """The pixels on the screen, whoever drew them."""

    def __init__(self):
        self.xlib = ctypes.CDLL(ctypes.util.find_library("X11") or "libX11.so.6")
        for name, result in (("XOpenDisplay", ctypes.c_void_p), ("XDefaultRootWindow", ctypes.c_ulong),
                             ("XGetImage", ctypes.c_void_p), ("XGetPixel", ctypes.c_ulong)):
            getattr(self.xlib, name).restype = result
        self.display = ctypes.c_void_p(self.xlib.XOpenDisplay(None))
        self.root = ctypes.c_ulong(self.xlib.XDefaultRootWindow(self.display))

    def at(self, x, y):
        every_plane, z_pixmap = ctypes.c_ulong(0xFFFFFF), 2
        image = ctypes.c_void_p(self.xlib.XGetImage(self.display, self.root, x, y, 1, 1, every_plane, z_pixmap))
        value = self.xlib.XGetPixel(image, 0, 0)
        self.xlib.XDestroyImage(image)
        return (value >> 16 & 255, value >> 8 & 255, value & 255)


SCREEN = Screen()
