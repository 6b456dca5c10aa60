#!/usr/bin/env python3
"""Renders a show offline, with the show's own renderer.

The renderer is the show's program with another place for its frames (tools/render): it hands them raw to ffmpeg, or
compresses them on all cores. It runs in a private show folder: a temporary one that borrows the author's files, so that
settings and screenshots of the author stay as they are.

Where a frame lies in the music: the program's clock starts at the configured start and takes one step before the
first frame, and it is a running sum in single precision, which drifts at most rates. So the clock is computed here
with the same arithmetic, and each frame of a video carries its true time.
"""

import argparse
import hashlib
import json
import math
import os
import re
import selectors
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import threading
import time
from collections import namedtuple
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent
RENDERER = "-render"
VIDEO_FORMATS = {".mp4": "mp4", ".mkv": "matroska"}
PICTURE_ENDINGS = (".png", ".jpg", ".jpeg", ".tga", ".bmp", ".gif")
SHEET_ENDINGS = (".png", ".jpg", ".jpeg")
# Effects that copy the frame, or come back to it, as one of 800 by 600.
FIXED_SIZE, FIXED_EFFECTS = (800, 600), ("ball", "blur", "crash", "pixels", "render2texture")
# PNG frames of the show compress to about two thirds of a megabyte at 800 by 600.
BYTES_PER_PIXEL = 1.6
# What a folder of pictures holds until all of them are there: how they are made.
UNFINISHED = ".unfinished"

# How a video is encoded. `size` is filled by a picture of the show's shape, with bars beside it; a `bitrate`, in bits a
# second, is met in two passes.
Preset = namedtuple("Preset", "about video audio fps size bitrate formats")
PRESETS = {
    None: Preset("", "-c:v libx264 -preset medium -crf 16 -pix_fmt yuv420p", "-c:a aac -b:a 256k",
                 None, None, None, (".mp4", ".mkv")),
    "web": Preset("small, plays everywhere", "-c:v libx264 -preset slow -crf 21 -pix_fmt yuv420p",
                  "-c:a aac -b:a 192k", None, None, None, (".mp4", ".mkv")),
    "party": Preset("what competitions take: H.264 main profile in two passes, 1920x1080 (or --scale 1280x720), 60 "
                    "frames a second",
                    "-c:v libx264 -preset slow -profile:v main -pix_fmt yuv420p", "-c:a aac -b:a 320k",
                    (60, 1), (1920, 1080), 20e6, (".mp4",)),
    "archive": Preset("lossless, for a .mkv", "-c:v ffv1 -level 3 -g 1 -slicecrc 1 -pix_fmt bgr0", "-c:a flac",
                      None, None, None, (".mkv",)),
}


class RenderError(Exception):
    """Something that the user is told in one line."""


# ---------------------------------------------------------------------------------------------------------------------
# The show


def find_show(name):
    """The folder of the show that is called so: a path, or one of those in shows/."""
    folder = Path(name).absolute() if "/" in name else TREE / "shows" / name
    if not folder.is_dir():
        raise RenderError(f"there is no show {folder}; ./new makes one")
    return folder


def find_renderer(folder):
    """The show's renderer, in its bin/: the one of the folder's name, or the only one."""
    found = sorted((folder / "bin").glob("*" + RENDERER))
    named = [path for path in found if path.name == folder.name + RENDERER]
    if len(named or found) != 1:
        raise RenderError(f"{folder / 'bin'} holds no renderer of the show" if not found else
                          f"{folder / 'bin'} holds several renderers")
    return (named or found)[0]


def single(value):
    """The nearest single-precision number."""
    return struct.unpack("f", struct.pack("f", value))[0]


class Show:
    """A show and what its configuration and its script say that matters here, as our own library reads them."""

    def __init__(self, folder):
        self.folder = folder
        self.renderer = find_renderer(folder)
        self.packed = self.renderer.name[:-len(RENDERER)] + ".sdr"
        facts = json.loads(self._facts())
        self.width, self.height = facts["width"], facts["height"]
        self.end, self.music, self.scripts = facts["end"], facts["music"], facts["scripts"]
        self.effects = facts["effects"]
        # A relative name starts in bin/, where the program runs.
        self.archives = []
        for archive in facts["archives"]:
            scheme, path = re.fullmatch(r"(\w+://)?(.*)", archive, re.S).groups("")
            self.archives.append((scheme, os.path.join(folder, "bin", path)))

    def tool(self, name):
        """A tool of ours: beside the program, or in the tree's bin/."""
        beside = self.renderer.resolve().with_name(name)
        return beside if beside.exists() else TREE / "bin" / name

    def _facts(self, *options):
        try:
            asked = subprocess.run([self.tool("timeline"), "facts", "--show", self.folder, *options],
                                   capture_output=True, text=True, check=False)
        except FileNotFoundError:
            raise RenderError("bin/timeline is not built; it reads the show's script") from None
        if asked.returncode != 0:
            raise RenderError(asked.stderr.strip().replace("timeline: ", "", 1))
        return asked.stdout

    def save_music(self, folder):
        """Puts the music into a folder as a file; None where there is none."""
        if not self.music:
            return None
        path = folder / ("music" + Path(self.music).suffix)
        self._facts("--save-music", path)
        return path if path.exists() else None

    def digest(self):
        """A sum over everything that a picture or a sound of the show can come from. Settings are no part of it."""
        files = [self.renderer, self.folder / self.packed, *self.folder.iterdir()]
        for place in [self.folder / "data", *(Path(path) for _, path in self.archives)]:
            files += place.rglob("*") if place.is_dir() else [place]
        total = hashlib.sha256()
        for path in sorted({path for path in files if path.is_file()}):
            if path.parent == self.folder and path.suffix in (".mp4", ".mkv", ".part") or path.name == "tidewheel.xml":
                continue
            total.update(str(path).encode())
            with open(path, "rb") as file:
                for block in iter(lambda: file.read(1 << 20), b""):
                    total.update(block)
        return total.hexdigest()


# ---------------------------------------------------------------------------------------------------------------------
# The clock of the dump


def frame_times(start, stop, fps, frameskip):
    """The show time of every dumped frame, from the same single-precision sum that the program runs."""
    step = (1.0 / fps) / frameskip
    now = single(start)
    times = []
    rendered = 0
    while True:
        now = single(now + step)
        if now > stop:
            return times
        if rendered % frameskip == 0:
            times.append(now)
        rendered += 1


def time_expression(times, origin):
    """An ffmpeg expression in N that gives each frame's time from `origin`: a polyline through the frames, split at its
    worst point (Douglas-Peucker) until it is exact to a fifth of a millisecond. A few pieces do, since the sum drifts
    evenly as long as its exponent stays the same."""
    if len(times) < 2:
        return f"{times[0] - origin:.9f}"
    corners = {0, len(times) - 1}
    stretches = [(0, len(times) - 1)]
    while stretches:
        first, last = stretches.pop()
        slope = (times[last] - times[first]) / (last - first)
        worst = max(range(first, last + 1), key=lambda n: abs(times[first] + slope * (n - first) - times[n]))
        if abs(times[first] + slope * (worst - first) - times[worst]) > 2e-4:
            corners.add(worst)
            stretches += [(first, worst), (worst, last)]
    corners = sorted(corners)
    expression = ""
    for first, last in zip(corners, corners[1:]):
        slope = (times[last] - times[first]) / (last - first)
        line = f"{times[first] - origin:.9f}+(N-{first})*{slope:.12f}"
        expression = f"if(gte(N,{first}),{line},{expression})" if expression else line
    return expression


# ---------------------------------------------------------------------------------------------------------------------
# The private show folder


def attribute_text(text):
    return text.replace('"', "'")


def private_configuration(plan, output):
    """A configuration that renders: the author's names, our window, our start, and where the frames go."""
    show, options = plan.show, plan.options
    archives = "".join(f'\t<archive file="{attribute_text(scheme + path)}"/>\n' for scheme, path in show.archives)
    music = f'\t<music file="{attribute_text(show.music)}" mute="on"/>\n' if show.music else ""
    scripts = "".join(f'\t<script file="{attribute_text(name)}"/>\n' for name in show.scripts)
    return (
        "<demo>\n"
        f'\t<time start="{plan.clock_start!r}"/>\n'
        '\t<hud mini="off"/>\n'
        f'\t<window caption="render" width="{plan.width}" height="{plan.height}" mode="windowed" type="opengl"/>\n'
        f"{archives}{music}{scripts}"
        f'\t<videodump name="{attribute_text(output)}" fps="{options.fps_numerator}" '
        f'fpsbase="{options.fps_denominator}" frameskip="{options.frameskip}"/>\n'
        "</demo>\n"
    )


def make_show_folder(plan, folder, output):
    """Lays out bin/, data/, the packed data and screenshots/ as the program expects them, by links."""
    root = plan.show.folder
    for name in ("bin", "screenshots"):
        (folder / name).mkdir()
    if (root / "data").is_dir():
        (folder / "data").symlink_to(root / "data")
    # Loose files beside the program shadow the rest, so the author's come along; the settings are ours.
    for path in root.iterdir():
        if path.is_file() and path.name != "tidewheel.xml":
            (folder / path.name).symlink_to(path)
    (folder / "tidewheel.xml").write_text(private_configuration(plan, output))


# ---------------------------------------------------------------------------------------------------------------------
# Running program and encoder


class Progress:
    """One line that is rewritten on a terminal; elsewhere a line every ten seconds."""

    def __init__(self, plan):
        self.total, self.ahead = len(plan.times), plan.ahead
        self.started = time.monotonic()
        self.terminal = sys.stderr.isatty()
        self.shown = 0.0

    def show(self, passed, done, final=False):
        now = time.monotonic()
        if not final and now - self.shown < (0.2 if self.terminal else 10.0):
            return
        self.shown = now
        drawn, total = passed + done, self.ahead + self.total
        bar = "#" * int(24 * drawn / max(total, 1))
        line = f"[{bar:<24}] {done} of {self.total} frames"
        if not done and passed:
            line += f", {passed} of {self.ahead} ahead of them"
        if drawn:
            rate = drawn / max(now - self.started, 1e-3)
            left = int((total - drawn) / rate)
            line += f", {rate:.1f} frames/s, {left // 60}:{left % 60:02d} left"
        if self.terminal:
            sys.stderr.write("\r" + line + "\x1b[K" + ("\n" if final else ""))
        else:
            sys.stderr.write(line + "\n")
        sys.stderr.flush()


def ffmpeg(*arguments, **more):
    """Starts ffmpeg, out of reach of the terminal's Ctrl+C."""
    return subprocess.Popen(["ffmpeg", "-hide_banner", "-loglevel", "error", "-y", *map(str, arguments)],
                            start_new_session=True, **more)


def scaling(size, bars):
    """Filters that scale to a size, with black bars where the shapes differ or without."""
    width, height = size
    if not bars:
        return [f"scale={width}:{height}:flags=lanczos"]
    return [f"scale={width}:{height}:flags=lanczos:force_original_aspect_ratio=decrease:force_divisible_by=2",
            f"pad={width}:{height}:-1:-1:color=black", "setsar=1"]


class Encoder:
    """ffmpeg, which reads raw frames from a pipe. It writes beside the place of the video; `close` gives what is to go
    there. `hashed` is the sum over the frames' colours, if it was asked for."""

    def __init__(self, plan, temporary, kept):
        options, times, preset = plan.options, plan.times, plan.preset
        self.plan = plan
        self.part = self.between = None
        self.hashed = ""
        self.origin = single(options.start)
        self.rate = f"{options.fps_numerator}/{options.fps_denominator}"
        command = ["-f", "rawvideo", "-pixel_format", "bgra", "-video_size", f"{plan.width}x{plan.height}",
                   "-framerate", self.rate, "-i", "pipe:0"]
        if plan.output:
            self.part = plan.output.with_name(plan.output.name + ".part")
            self.music = plan.show.save_music(temporary)
            self.kind = VIDEO_FORMATS[plan.output.suffix.lower()]
            filters = [f"settb=1/90000,setpts='round(({time_expression(times, self.origin)})/TB)'"]
            if preset.bitrate:
                # Two passes need the frames twice, so they lie lossless in between.
                self.between = plan.output.with_name(plan.output.name + ".frames.part")
                command += ["-vf", filters[0], "-c:v", "ffv1", "-level", "3", "-pix_fmt", "bgr0", "-fps_mode", "vfr",
                            "-enc_time_base", "1/90000", "-f", "nut", self.between]
            else:
                if self.music:
                    command += ["-ss", f"{self.origin:.6f}", "-i", self.music]
                if options.scale:
                    filters += scaling(options.scale, False)
                command += ["-map", "0:v", "-vf", ",".join(filters), *preset.video.split(), "-fps_mode", "vfr",
                            "-enc_time_base", "1/90000", "-video_track_timescale", "90000", *self._rest()]
                if self.kind == "mp4":
                    # Each frame gets its length besides its time: players leave out a last frame that has none.
                    length = f"duration=round({1 / options.fps:.9f}/TB)"
                    command[-1:-1] = ["-bsf:v", f"setts=pts=PTS:dts=DTS:{length}"]
        if kept:
            command += ["-map", "0:v", "-fps_mode", "passthrough", "-pix_fmt", "rgba", "-start_number", "0",
                        kept / "frame.%010d.png"]
        if options.hash:
            command += ["-map", "0:v", "-fps_mode", "passthrough", "-pix_fmt", "rgb24", "-c:v", "rawvideo",
                        "-f", "hash", "-hash", "sha256", temporary / "hash"]
        self.hash_file = temporary / "hash"
        self.process = ffmpeg(*command, stdin=subprocess.PIPE)
        self.pipe = self.process.stdin.fileno()

    def _rest(self):
        """The sound, as long as the pictures: padded where the music is over before, cut where rendering is stopped;
        and the file."""
        plan = self.plan
        sound = []
        if self.music:
            length = plan.times[-1] - self.origin + 1 / plan.options.fps
            sound = ["-map", "1:a", *plan.preset.audio.split(), "-af", "apad", "-shortest", "-t", f"{length:.6f}"]
        flags = ["-movflags", "+faststart"] if self.kind == "mp4" else []
        return [*sound, *flags, "-metadata", f"comment={plan.mark()}", "-f", self.kind, self.part]

    def _two_passes(self):
        plan, log = self.plan, self.hash_file.with_name("passes")
        size = plan.options.scale or plan.preset.size
        bitrate = int(plan.preset.bitrate * size[0] * size[1] / (plan.preset.size[0] * plan.preset.size[1]))
        video = ["-vf", ",".join(scaling(size, True)), "-fps_mode", "cfr", "-r", self.rate, *plan.preset.video.split(),
                 "-b:v", bitrate, "-maxrate", 2 * bitrate, "-bufsize", 2 * bitrate, "-passlogfile", log]
        sound = ["-ss", f"{self.origin:.6f}", "-i", self.music] if self.music else []
        for words in (["-map", "0:v", *video, "-pass", 1, "-f", "null", "-"],
                      ["-map", "0:v", *video, "-pass", 2, *self._rest()]):
            self.process = ffmpeg("-i", self.between, *sound, *words, stdin=subprocess.DEVNULL)
            if self.process.wait() != 0:
                raise RenderError("ffmpeg could not write the video; its message stands above")

    def close(self):
        """Ends the video in order, and gives the path of the whole file."""
        if self.process.wait() != 0:
            raise RenderError("ffmpeg could not write the video; its message stands above")
        if self.between:
            self._two_passes()
        if self.hash_file.exists():
            self.hashed = self.hash_file.read_text().strip()
        return self.part

    def drop(self):
        """Ends ffmpeg without a video."""
        self.process.kill()
        self.process.wait()
        if self.process.stdin:
            self.process.stdin.close()
        for path in (self.part, self.between):
            if path:
                path.unlink(missing_ok=True)


def finished_video(plan):
    """Is there a video already that this plan would make, with all of its frames?"""
    if not plan.output.is_file():
        return False
    probe = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v", "-count_packets", "-show_entries",
                            "stream=nb_read_packets:format_tags=comment", "-of", "json", str(plan.output)],
                           stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    try:
        found = json.loads(probe.stdout)
        marks = [value for key, value in found["format"]["tags"].items() if key.lower() == "comment"]
        return marks == [plan.mark()] and int(found["streams"][0]["nb_read_packets"]) == len(plan.times)
    except (ValueError, KeyError, IndexError):
        return False


class Display:
    """The user's display, or a virtual one for the length of a `with` where there is none. `check` tells whether the
    user's can be reached."""

    def __init__(self, check):
        self.check = check

    def __enter__(self):
        self.server = None
        self.environment = dict(os.environ, SDL_AUDIODRIVER="dummy")
        if os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY"):
            check = subprocess.run([self.check], capture_output=True, text=True, check=False)
            if check.returncode == 0:
                self.environment["SDL_VIDEODRIVER"] = check.stdout.strip()
                return self
            print(check.stderr.strip().replace("Error: ", "") + " A virtual one is used.", file=sys.stderr)
        if not shutil.which("Xvfb"):
            raise RenderError("there is no display, and Xvfb is not installed")
        read_end, write_end = os.pipe()
        # -noreset: the display would reset itself when SDL's first connection closes. A session of its own, so that
        # Ctrl+C reaches the program first.
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "2048x2048x24", "-noreset", "-nolisten", "tcp"],
            pass_fds=[write_end], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            start_new_session=True)
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            number_of_display = pipe.readline().strip()
        if not number_of_display:
            self.__exit__()
            raise RenderError("the virtual display Xvfb did not start")
        self.environment.update(DISPLAY=":" + number_of_display, SDL_VIDEODRIVER="x11")
        return self

    def __exit__(self, *_):
        if self.server:
            self.server.terminate()
            self.server.wait()


def stop(process):
    """Ends the program in an orderly way, and for good if that takes too long."""
    if process.poll() is not None:
        return
    process.terminate()
    try:
        process.wait(10)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def run_renderer(plan, temporary, output, interrupted, told, descriptors=(), started=lambda: None, costs=None):
    """Runs the show until `output` has its frames, calling told(frames passed over, frames done); gives how many are
    done. The renderer inherits the descriptors; `started` is called as soon as it has them. `costs` gets, for each frame
    that is done, the milliseconds of processor time that the renderer had taken when it was drawn."""
    make_show_folder(plan, temporary, output)
    passed = done = 0
    said = []
    with Display(plan.show.tool("showdisplay")) as display, open(temporary / "log", "w+", encoding="utf-8") as log, \
            selectors.DefaultSelector() as selector:
        process = subprocess.Popen([plan.show.renderer], cwd=temporary / "bin", env=display.environment,
                                   start_new_session=True, stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.PIPE,
                                   pass_fds=descriptors)
        started()
        try:
            os.set_blocking(process.stderr.fileno(), False)
            selector.register(process.stderr, selectors.EVENT_READ)
            rest = b""
            ended = False
            deadline = math.inf
            while not ended:
                if selector.select(0.1):
                    block = process.stderr.read()
                    ended = block == b""
                    *lines, rest = (rest + (block or b"")).split(b"\n")
                    for line in lines:
                        passed += line.startswith(b"passed ")
                        done += line.startswith(b"frame ")
                        if costs is not None and line.startswith(b"frame "):
                            costs.append(int(line.split()[2]))
                        if not line.startswith((b"passed ", b"frame ")):
                            said.append(line.decode("utf-8", "replace"))
                told(passed, done)
                if interrupted.is_set() and deadline == math.inf:
                    process.terminate()
                    deadline = time.monotonic() + 30
                if time.monotonic() > deadline:
                    process.kill()
        finally:
            stop(process)
            process.stderr.close()
    if done < len(plan.times) and not interrupted.is_set():
        errors = [line for line in said if line.startswith("Error")] or said[-3:]
        raise RenderError(f"the program stopped after {done} of {len(plan.times)} frames: " + " ".join(errors))
    return done


def frame_name(index):
    """The program's own names for dumped frames: the first is number 0."""
    return f"frame.{index:010d}.png"


# ---------------------------------------------------------------------------------------------------------------------
# Command line


def ratio(text):
    """A frame rate: 25, 29.97 or 30000/1001."""
    match = re.fullmatch(r"(\d+)(?:/(\d+))?", text)
    if match:
        numerator, denominator = int(match.group(1)), int(match.group(2) or 1)
    else:
        try:
            numerator, denominator = round(float(text) * 1000), 1000
        except ValueError:
            raise argparse.ArgumentTypeError(f"'{text}' is not a frame rate") from None
    if not (numerator > 0 and denominator > 0 and 0.01 <= numerator / denominator <= 1000):
        raise argparse.ArgumentTypeError(f"'{text}' is not a usable frame rate")
    return numerator, denominator


def size(largest):
    """Makes a reader of sizes up to `largest`. Video takes even ones alone."""
    def read(text):
        match = re.fullmatch(r"(\d+)x(\d+)", text)
        if not match:
            raise argparse.ArgumentTypeError(f"'{text}' is not a size such as 800x600")
        pair = int(match.group(1)), int(match.group(2))
        if not all(16 <= side <= largest and side % 2 == 0 for side in pair):
            raise argparse.ArgumentTypeError(f"width and height must be even and lie between 16 and {largest}")
        return pair
    return read


def seconds(text):
    try:
        value = float(text)
    except ValueError:
        value = -1.0
    if not 0.0 <= value < 1e6:
        raise argparse.ArgumentTypeError(f"'{text}' is not a time in seconds")
    return value


def maker_of(options):
    """Which kind of thing is to be made goes by the ending of its name."""
    if options.sheet:
        if Path(options.sheet).suffix.lower() not in SHEET_ENDINGS:
            raise RenderError(f"'{options.sheet}': a contact sheet ends in " + " or ".join(SHEET_ENDINGS))
        return make_sheet
    if options.output is None:
        return make_video # only its checksum
    ending = Path(options.output).suffix
    if options.still is not None:
        if ending.lower() not in ("", ".png"):
            raise RenderError(f"'{options.output}': a still ends in .png")
        options.output = str(Path(options.output).with_suffix(".png"))
        return make_still
    if ending.lower() in VIDEO_FORMATS:
        return make_video
    # A folder's name may have a dot in it, but what looks like a file is hardly meant to be thousands of pictures.
    is_folder = options.output.endswith("/") or Path(options.output).is_dir()
    if not is_folder and ending.lower() in PICTURE_ENDINGS:
        raise RenderError(f"'{options.output}': one picture takes --still SECONDS, many take the name of a folder")
    if not is_folder and re.fullmatch(r"\.(?=.*[A-Za-z])\w{2,5}", ending):
        raise RenderError(f"'{options.output}': a video ends in .mp4 or .mkv, and pictures go into a folder")
    return make_pictures


def command_line():
    parser = argparse.ArgumentParser(
        prog="./render", formatter_class=argparse.RawDescriptionHelpFormatter,
        usage="./render [NAME] [OPTIONS] OUT",
        description="Renders a show offline: every frame, however slow the machine.",
        epilog="examples:\n"
               "  ./render show.mp4                        the whole show as a video with its music\n"
               "  ./render first first.mp4 --preset web    the show of shows/first, for a web page\n"
               "  ./render frames --from 30 --to 40        ten seconds as numbered PNG files\n"
               "  ./render star.png --still 138 --fast     one picture\n"
               "  ./render show.mkv --fps 60 --frameskip 2 effects run at 120 steps a second\n"
               "  ./render --contact-sheet sheet.png       a picture of the whole show, a frame every two seconds\n\n"
               "Ctrl+C ends the rendering and keeps what was written. README.md tells how long the whole show takes.")
    parser.add_argument("names", metavar="[NAME] OUT", nargs="*",
                        help="NAME: a show in shows/, or a path with a slash in it (the show of this tree). "
                             "OUT: a folder for numbered PNG files, or a video that ends in .mp4 or .mkv")
    parser.add_argument("--show", metavar="FOLDER", help="a show as it lies there, with its program in bin/; nothing is "
                                                         "built")
    parser.add_argument("--from", dest="start", type=seconds, metavar="SECONDS",
                        help="where in the show to begin (0; for a contact sheet 1, between the cuts)")
    parser.add_argument("--to", dest="end", type=seconds, metavar="SECONDS", help="where to end (the show's end)")
    way = parser.add_mutually_exclusive_group()
    way.add_argument("--exact", action="store_true",
                     help="run the show up to --from first, so that what lives from frame to frame is as in the whole "
                          "show (the default, but for contact sheets)")
    way.add_argument("--fast", action="store_true", help="begin at --from at once")
    parser.add_argument("--still", type=seconds, metavar="SECONDS", help="write the one picture of that second to OUT.png")
    parser.add_argument("--contact-sheet", dest="sheet", metavar="OUT.png",
                        help="write one picture with a frame every two seconds (every 1/RATE with --fps)")
    parser.add_argument("--preset", choices=[name for name in PRESETS if name],
                        help="; ".join(f"{name}: {preset.about}" for name, preset in PRESETS.items() if name))
    parser.add_argument("--fps", type=ratio, metavar="RATE", help="frames a second: 25, 29.97 or 30000/1001 (30)")
    parser.add_argument("--frameskip", type=int, metavar="N",
                        help="frames drawn for each one written; effects that live from frame to frame run smoother (1)")
    parser.add_argument("--size", type=size(2048), metavar="WxH",
                        help="size of the pictures (the show's own, 800x600); "
                             f"{', '.join(FIXED_EFFECTS)} are made for 800x600 and look displaced at another")
    parser.add_argument("--scale", type=size(8192), metavar="WxH",
                        help="scale a video to this size: the way to a larger one, with all effects in place")
    parser.add_argument("--keep", action="store_true", help="keep the frames of a video too, in OUT.frames")
    parser.add_argument("--keep-finished", action="store_true",
                        help="do nothing where OUT is the finished video of this very show already")
    parser.add_argument("--resume", action="store_true",
                        help="go on with numbered pictures where an earlier rendering was stopped: what is there stays")
    parser.add_argument("--hash", action="store_true",
                        help="print a checksum of all frames' colours; needs no OUT. Two runs on a machine give the same")
    return parser


def parse(arguments):
    parser = command_line()
    # Names may stand on both sides of options.
    options = parser.parse_intermixed_args(arguments)
    # With a place for the output of its own, what is left is the show.
    most = 1 if options.sheet else 2
    if len(options.names) > most:
        parser.error(f"'{options.names[most]}' is one name too many")
    options.output = options.names.pop() if options.names and not options.sheet else None
    options.name = options.names[0] if options.names else None
    if options.output is None and not options.sheet and not options.hash:
        parser.error("give OUT or --contact-sheet OUT.png")
    if options.name and options.show:
        parser.error("give either NAME or --show FOLDER")
    if options.still is not None and (options.sheet or not options.output):
        parser.error("--still needs OUT, and nothing else to be made")
    preset = PRESETS[options.preset]
    try:
        options.maker = maker_of(options)
    except RenderError as error:
        parser.error(str(error))
    is_video = options.maker is make_video and options.output
    if not is_video and (options.scale or options.preset or options.keep):
        parser.error("--scale, --preset and --keep are for videos")
    if is_video and Path(options.output).suffix.lower() not in preset.formats:
        parser.error(f"--preset {options.preset} is for " + " and ".join(preset.formats))
    if options.resume and options.maker is not make_pictures:
        parser.error("--resume is for numbered pictures")
    if options.hash and options.maker not in (make_video, make_pictures):
        parser.error("--hash is for videos and numbered pictures")
    if options.frameskip is None:
        # A sheet's frames lie far apart; what builds up over frames needs steps in between.
        options.frameskip = 24 if options.sheet and not options.fps else 1
    if not 1 <= options.frameskip <= 1000:
        parser.error("--frameskip must lie between 1 and 1000")
    if options.start is None:
        options.start = 1.0 if options.sheet else 0.0
    options.fps_numerator, options.fps_denominator = options.fps or preset.fps or ((1, 2) if options.sheet else (30, 1))
    options.fps = options.fps_numerator / options.fps_denominator
    return options


# ---------------------------------------------------------------------------------------------------------------------
# What is rendered


class Plan:
    """What is to be made, from which everything else follows."""

    def __init__(self, options, folder):
        self.options = options
        self.preset = PRESETS[options.preset]
        self.show = Show(folder)
        own = (self.show.width, self.show.height)
        self.width, self.height = options.size or (own if min(own) > 0 else FIXED_SIZE)
        step = 1 / options.fps / options.frameskip
        start, end = options.start, options.end
        if options.still is not None:
            start, end = max(options.still - step, 0.0), options.still
        self.clock_start = start if options.fast or options.sheet and not options.exact else 0.0
        # Half a step of grace: the running sum may pass a round number by a hair. Past its end the show draws no more.
        end = self.show.end if end is None else min(end + 0.5 * step, self.show.end)
        times = frame_times(self.clock_start, end, options.fps, options.frameskip)
        # How many frames are drawn ahead and left out, for what lives from frame to frame.
        self.ahead = sum(now <= start + 0.5 * step for now in times) if start > self.clock_start else 0
        if options.still is not None and times:
            self.ahead = max(0, len(times) - 1)
        self.times = times[self.ahead:]
        if not self.times or options.still is not None and options.still > self.show.end:
            raise RenderError(f"there is nothing to render from {start:g} to {end:g} seconds")
        out = options.sheet or options.output
        self.output = Path(out).absolute() if out else None

    def mark(self):
        """A text for a finished video by which it is known again: one for each show and way to render it."""
        what = f"{private_configuration(self, '')} {self.options.scale} {self.preset} {self.ahead} {len(self.times)}"
        return "rendered " + hashlib.sha256(f"{what} {self.show.digest()}".encode()).hexdigest()


def make_folder(folder):
    try:
        folder.mkdir(parents=True, exist_ok=True)
    except OSError as error:
        raise RenderError(f"{folder} cannot be made: {error.strerror}") from None
    if not os.access(folder, os.W_OK):
        raise RenderError(f"{folder} cannot be written to")
    return folder


def check_space(plan, folder, kept):
    """Is there space for so many pictures?"""
    needed = int(kept * plan.width * plan.height * BYTES_PER_PIXEL) + (128 << 20)
    free = shutil.disk_usage(folder).free
    if free < needed:
        raise RenderError(f"{folder} needs about {needed >> 20} MB, and only {free >> 20} MB are free there")


def draw(plan, temporary, interrupted, encoder=None, frames=None):
    """Draws into an encoder or a folder; returns how many frames it took."""
    where = f"raw:{plan.ahead}:{len(plan.times)}:{encoder.pipe}" if encoder else \
        f"png:{plan.ahead}:{len(plan.times)}:{frames}/frame."
    progress = Progress(plan)
    done = 0

    def told(*counts):
        nonlocal done
        done = counts[1]
        progress.show(*counts)

    try:
        # The way to the encoder becomes the renderer's alone: the video ends when the renderer does.
        if encoder:
            return run_renderer(plan, temporary, where, interrupted, told, [encoder.pipe], encoder.process.stdin.close)
        return run_renderer(plan, temporary, where, interrupted, told)
    except RenderError:
        # If it is the encoder that stopped, that is the cause of all else.
        if encoder and encoder.process.wait() != 0:
            raise RenderError("ffmpeg stopped; its message stands above") from None
        raise
    finally:
        progress.show(plan.ahead, done, final=True)


def put(part, plan, stopped):
    """Brings a finished file to its place. One that was stopped takes the place of none: then it is called so."""
    output = plan.output
    if stopped and output.exists():
        output = output.with_name(f"{output.stem}.stopped{output.suffix}")
    part.replace(output)
    return output


def make_pictures(plan, temporary, interrupted):
    folder = make_folder(plan.output)
    unfinished, mark = folder / UNFINISHED, plan.mark()
    if not plan.options.resume:
        for old in folder.glob("frame.??????????.png"):
            old.unlink()
    elif not unfinished.is_file() or unfinished.read_text() != mark:
        raise RenderError(f"{folder} holds no rendering of this show, with these options, that was stopped")
    check_space(plan, folder, len(plan.times))
    unfinished.write_text(mark)
    draw(plan, temporary, interrupted, frames=folder)
    names = [folder / frame_name(index) for index in range(len(plan.times))]
    done = sum(path.exists() for path in names)
    if done == len(names):
        unfinished.unlink()
        if plan.options.hash:
            hashing = ffmpeg("-i", folder / "frame.%010d.png", "-fps_mode", "passthrough", "-pix_fmt", "rgb24", "-c:v",
                             "rawvideo", "-f", "hash", "-hash", "sha256", "-", stdout=subprocess.PIPE, text=True)
            print(hashing.communicate()[0].strip())
    return done, plan.output


def make_video(plan, temporary, interrupted):
    kept = None
    if plan.output:
        make_folder(plan.output.parent)
    if plan.options.keep:
        kept = make_folder(plan.output.with_name(plan.output.name + ".frames"))
        for old in kept.glob("frame.??????????.png"):
            old.unlink()
        check_space(plan, kept, len(plan.times))
    encoder = Encoder(plan, temporary, kept)
    try:
        done = draw(plan, temporary, interrupted, encoder)
        if not done:
            return 0, None
        part = encoder.close()
        if encoder.hashed and not interrupted.is_set():
            print(encoder.hashed)
        return done, put(part, plan, interrupted.is_set()) if part else "The checksum"
    finally:
        encoder.drop()


def make_still(plan, temporary, interrupted):
    make_folder(plan.output.parent)
    if draw(plan, temporary, interrupted, frames=make_folder(temporary / "frames")) == 0:
        return 0, None
    return 1, move(temporary / "frames" / frame_name(0), plan, False)


def make_sheet(plan, temporary, interrupted):
    """All frames in one picture, ten in a row."""
    make_folder(plan.output.parent)
    frames = make_folder(temporary / "frames")
    check_space(plan, frames, len(plan.times))
    draw(plan, temporary, interrupted, frames=frames)
    # Of frames that were stopped, those up to the first that is missing.
    done = next((index for index in range(len(plan.times)) if not (frames / frame_name(index)).exists()),
                len(plan.times))
    if not done:
        return done, None
    part = temporary / ("sheet" + plan.output.suffix)
    rows = (done + 9) // 10
    tiling = ffmpeg("-framerate", "1", "-i", frames / "frame.%010d.png", "-frames:v", "1", "-update", "1",
                    "-vf", f"scale=200:-2:flags=area,tile=10x{rows}:padding=2:color=black", part)
    if tiling.wait() != 0:
        raise RenderError("ffmpeg could not write the contact sheet")
    return done, move(part, plan, interrupted.is_set())


def move(path, plan, stopped):
    """Brings a finished picture to its place from another disk, never half of it."""
    beside = plan.output.with_name(plan.output.name + ".part")
    try:
        shutil.copyfile(path, beside)
        return put(beside, plan, stopped)
    finally:
        beside.unlink(missing_ok=True)


def render(options, folder):
    plan = Plan(options, folder)
    if (options.maker not in (make_pictures, make_still) or options.hash) and not shutil.which("ffmpeg"):
        raise RenderError("ffmpeg is not installed; give a folder instead, for numbered pictures")
    if options.keep_finished and finished_video(plan):
        print(f"{plan.output} is the finished video of this show already. Remove it to have it rendered anew.")
        return 0
    displaced = [name for name in FIXED_EFFECTS if name in plan.show.effects]
    if (plan.width, plan.height) != FIXED_SIZE and displaced:
        print(f"Note: {', '.join(displaced)}: made for 800x600 and displaced at another size. A larger video is made "
              "with --scale.", file=sys.stderr)

    interrupted = threading.Event()
    for number_of_signal in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number_of_signal, lambda *_: interrupted.set())
    with tempfile.TemporaryDirectory(prefix="render-") as temporary:
        done, output = options.maker(plan, Path(temporary), interrupted)

    if interrupted.is_set():
        more = " The same with --resume goes on." if options.maker is make_pictures else ""
        print(f"Stopped: {output} holds {done} of {len(plan.times)} frames.{more}" if done else
              "Stopped before the first frame; nothing was written.")
        return 130
    print(f"{output}: {done} frames, from {plan.times[0]:.3f} to {plan.times[-1]:.3f} seconds of the show.")
    return 0


def build(folder):
    """Installs what is missing and builds the show; gives the status of that."""
    steps = ('set -euo pipefail; . scripts/setup.sh; need_packages "${build_packages[@]}" "${render_packages[@]}"; '
             'find_show "$1" || fail "$1 holds no show: there is no main.cpp."; '
             'build_show timeline "show-$show_name-render"')
    name = "" if folder == TREE else f"{folder}"
    return subprocess.run(["bash", "-c", steps, "bash", name], cwd=TREE, check=False).returncode


def main():
    try:
        options = parse(sys.argv[1:])
        if options.show:
            return render(options, Path(options.show).absolute())
        folder = find_show(options.name) if options.name else TREE
        return build(folder) or render(options, folder)
    except KeyboardInterrupt:
        return 130
    except RenderError as error:
        print(f"Error: {error}", file=sys.stderr)
    except OSError as error:
        print(f"Error: {error.filename or 'file'}: {error.strerror}", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())
