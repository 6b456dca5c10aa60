"""A show in a temporary folder, for tests that run the real program: its data, the program and its window.

The folder is laid out like the root of the repository: bin/ is the working directory of the program, the configuration
and the script lie beside it, and screenshots/ takes what it writes. All data are made here, small and plain.
"""

import ctypes
import ctypes.util
import functools
import math
import os
import pathlib
import shutil
import struct
import subprocess
import tempfile
import time
import unittest
import wave
import zipfile

PROGRAM = os.environ["SHOW_PROGRAM"]
CAPTION = "show under test"

# Time for anything that should happen soon, on a machine that does other things too.
PATIENCE = 60.0



def wait_until(condition, failure):
    """Waits until `condition` gives something true, and hands that on."""
    limit = time.monotonic() + PATIENCE
    while not (result := condition()):
        if time.monotonic() > limit:
            raise AssertionError(failure)
        time.sleep(0.02)
    return result


def ffmpeg(*arguments):
    return subprocess.run(["ffmpeg", "-v", "error", *map(str, arguments), "-"], check=True,
                          stdout=subprocess.PIPE).stdout


@functools.lru_cache
def one_colour(codec, width, height, colour):
    """An image file of one colour."""
    return ffmpeg("-f", "lavfi", "-i", "color=%s:size=%dx%d,format=%s" % (
        colour, width, height, {"png": "rgba", "mjpeg": "yuvj420p"}[codec]),
        "-frames:v", 1, "-c:v", codec, "-f", "image2pipe")


class Picture:
    """A PNG file, decoded."""

    def __init__(self, path):
        self.width, self.height = struct.unpack(">II", path.read_bytes()[16:24])
        self.pixels = ffmpeg("-i", path, "-f", "rawvideo", "-pix_fmt", "rgb24")

    def at(self, x, y):
        place = 3 * (y * self.width + x)
        return tuple(self.pixels[place:place + 3])


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

    def __init__(self, script=None, seconds=2.0, width=320, height=240, picture_size=16, settings="", window=None,
                 disk=None):
        """`disk` is the size of a disk that the folder gets for itself; where that is not allowed the test is skipped."""
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="show-"))
        self.zip = self.path / "ourglacierheartcold.sdr"
        self.disk = disk
        if disk and subprocess.run(["mount", "-t", "tmpfs", "-o", "size=" + disk, "none", self.path],
                                   stderr=subprocess.DEVNULL).returncode:
            self.path.rmdir()
            raise unittest.SkipTest("mounting is not allowed here")
        for folder in ("bin", "data", "screenshots"):
            (self.path / folder).mkdir()

        # A letter cell of 8 by 12 with some ink, 256 times.
        (self.path / "data/tidewheel.font").write_bytes(b"SBF!\x08\x0c" + bytes([0, 0x7C, 0x44, 0x7C] * 3) * 256)
        (self.path / "data/tidewheel_logo.png").write_bytes(one_colour("png", 64, 24, "0xC8C8FF"))
        picture = one_colour("png", picture_size, picture_size, "white@0.5")
        for name in ("env", "font", "greets", "overlay", "sandrift", "sandrift_ghost", "scenese", "sun"):
            (self.path / "data" / (name + ".png")).write_bytes(picture)
        (self.path / "data/ballbg.jpg").write_bytes(one_colour("mjpeg", 8, 8, "brown"))
        (self.path / "data/empty.y3d").write_bytes(empty_scene())
        for name in ("avgrund.xml", "katedral.xml"):
            self.write("data/" + name, '<scenes><scene filename="empty.y3d" texturepath="" name="Scene"/></scenes>')
        tone(self.path / "data/track.wav", seconds)

        self.write("data/script.xml", script or two_colours(seconds / 2, seconds))
        if window is None:
            window = ('<window caption="%s" width="%d" height="%d" mode="windowed" type="opengl"/>'
                      % (CAPTION, width, height))
        self.configure(window + '<music file="track.wav"/><script file="script.xml"/>' + settings)

    def pack(self):
        """Puts all data into the zip alone."""
        with zipfile.ZipFile(self.zip, "w", zipfile.ZIP_DEFLATED) as archive:
            for file in (self.path / "data").iterdir():
                archive.write(file, file.name)
        shutil.rmtree(self.path / "data")

    def configure(self, tags):
        self.tags = tags
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
        wait_until(lambda: path.exists() and b"IEND" in path.read_bytes()[-12:], "no screenshot was written")
        return Picture(path)

    def start(self, *prefix, **environment):
        """The program, run by the command `prefix` if there is one."""
        return Run(self, prefix, environment)

    def run(self, **environment):
        """Runs the program to its end, and gives its status and both outputs."""
        with self.start(**environment) as run:
            return run.end()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.disk:
            subprocess.run(["umount", "--lazy", self.path], check=True)
        shutil.rmtree(self.path)


class Run:
    """The program while it runs. Keys go to it as from a keyboard."""

    def __init__(self, show, prefix, environment):
        self.process = subprocess.Popen([*prefix, PROGRAM], cwd=show.path / "bin", text=True,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                        env={**os.environ, **environment})

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
        def geometry():
            # A window that is just coming or going makes xdotool fail.
            found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^%s$" % CAPTION,
                                    "windowfocus", "--sync", "getwindowgeometry", "--shell"], text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
            return found.returncode == 0 and "HEIGHT" in found.stdout and found.stdout

        found = wait_until(geometry, "no window came up")
        values = dict(line.split("=") for line in found.split())
        self.window = int(values["WINDOW"])
        self.middle = [int(values[p]) + int(values[s]) // 2 for p, s in (("X", "WIDTH"), ("Y", "HEIGHT"))]

    def colour(self):
        """What the screen shows in the middle of the window."""
        return SCREEN.at(*self.middle)

    def wait_for(self, colour):
        """Waits until the middle of the window has this colour."""
        wait_until(lambda: self.colour() == colour, "the window never became %s" % (colour,))

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

    def close_window(self):
        """As its frame does."""
        SCREEN.send(self.window, "WM_PROTOCOLS", "WM_DELETE_WINDOW")

    def send(self, *signals):
        for each in signals:
            self.process.send_signal(each)


class Screen:
    """The pixels on the screen, whoever drew them."""

    def __init__(self):
        self.xlib = ctypes.CDLL(ctypes.util.find_library("X11") or "libX11.so.6")
        for name, result in (("XOpenDisplay", ctypes.c_void_p), ("XDefaultRootWindow", ctypes.c_ulong),
                             ("XGetImage", ctypes.c_void_p), ("XGetPixel", ctypes.c_ulong),
                             ("XInternAtom", ctypes.c_ulong)):
            getattr(self.xlib, name).restype = result
        self.display = ctypes.c_void_p(self.xlib.XOpenDisplay(None))
        self.root = ctypes.c_ulong(self.xlib.XDefaultRootWindow(self.display))

    def at(self, x, y):
        every_plane, z_pixmap = ctypes.c_ulong(0xFFFFFF), 2
        image = ctypes.c_void_p(self.xlib.XGetImage(self.display, self.root, x, y, 1, 1, every_plane, z_pixmap))
        value = self.xlib.XGetPixel(image, 0, 0)
        self.xlib.XDestroyImage(image)
        return (value >> 16 & 255, value >> 8 & 255, value & 255)

    def send(self, window, kind, message):
        """Sends a message to a window."""
        kind, message = (self.xlib.XInternAtom(self.display, name.encode(), False) for name in (kind, message))
        client_message = 33
        event = struct.pack("iLiPLLi5l96x", client_message, 0, True, 0, window, kind, 32, message, 0, 0, 0, 0)
        self.xlib.XSendEvent(self.display, ctypes.c_ulong(window), False, ctypes.c_long(0), event)
        self.xlib.XFlush(self.display)


SCREEN = Screen()
