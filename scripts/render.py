#!/usr/bin/env python3
"""Renders the show offline, with the program's own frame dump.

The program runs in a private show folder: a temporary one that borrows the author's files, so that settings and
screenshots of the author stay as they are. It dumps numbered PNG files, which stay as they are, go into a video with
the music under it, or into a contact sheet.

Where a frame lies in the music: the program's clock starts at the configured start and takes one step before the
first frame, and it is a running sum in single precision, which drifts at most rates. So the clock is computed here
with the same arithmetic, and each frame of a video carries its true time.
"""

import argparse
import hashlib
import json
import os
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import threading
import time
import zipfile
from pathlib import Path

# RENDER_ROOT renders a show that lies elsewhere: program in its bin/, data in its data/ or packed.
ROOT = Path(os.environ.get("RENDER_ROOT") or Path(__file__).resolve().parent.parent)
PROGRAM = ROOT / "bin" / "ourglacierheartcold"
PACKED = "ourglacierheartcold.sdr"
DISPLAY_CHECK = PROGRAM.with_name("showdisplay")
VIDEO_FORMATS = {".mp4": "mp4", ".mkv": "matroska"}
SHEET_ENDINGS = (".png", ".jpg", ".jpeg")
# Effects that copy the frame, or come back to it, as one of 800 by 600.
FIXED_SIZE, FIXED_EFFECTS = (800, 600), "ball, blur, crash, pixels and render2texture"
# PNG frames of the show compress to about two thirds of a megabyte at 800 by 600.
BYTES_PER_PIXEL = 1.6


class RenderError(Exception):
    """Something that the user is told in one line."""


# ---------------------------------------------------------------------------------------------------------------------
# The show's files


class ShowFiles:
    """Finds files the way the program does: the show's root, data/, the packed data, further archives."""

    def __init__(self, root):
        self.folders = [root, root / "data"]
        self.zips = [root / PACKED]

    def add_archive(self, name):
        """One `archive` tag's name: a path relative to bin/, a folder with a trailing slash or a zip."""
        if name.startswith("zip://"):
            self.zips.append((ROOT / "bin" / name[6:]).resolve())
        elif name.endswith("/"):
            self.folders.append((ROOT / "bin" / name).resolve())

    def read(self, name):
        for folder in self.folders:
            path = folder / name
            if name and path.is_file():
                return path.read_bytes()
        for path in self.zips:
            if path.is_file():
                with zipfile.ZipFile(path) as archive:
                    if name in archive.namelist():
                        return archive.read(name)
        return None

    def digest(self):
        """A sum over everything that a picture or a sound of the show can come from."""
        total = hashlib.sha256(PROGRAM.read_bytes())
        names = set()
        for path in self.zips:
            if path.is_file():
                total.update(path.read_bytes())
                with zipfile.ZipFile(path) as archive:
                    names.update(archive.namelist())
        for folder in self.folders[1:]:
            if folder.is_dir():
                names.update(path.relative_to(folder).as_posix() for path in folder.rglob("*"))
        # Loose files of these names shadow the others; settings are not part of the show.
        for name in sorted(names - {"tidewheel.xml"}):
            for folder in self.folders:
                if (folder / name).is_file():
                    total.update(name.encode() + (folder / name).read_bytes())
        return total.hexdigest()


def tags(text, name):
    """Yields (nesting depth, attributes) of each tag of that name."""
    text = re.sub(r"<!--.*?-->", "", text, flags=re.S)
    depth = 0
    for match in re.finditer(r"<(/?)([\w:.-]+)((?:\s+[\w:.-]+\s*=\s*(?:\"[^\"]*\"|'[^']*'))*)\s*(/?)>", text):
        closing, tag, attributes, closed = match.groups()
        if closing:
            depth -= 1
            continue
        if tag == name:
            pairs = re.findall(r"([\w:.-]+)\s*=\s*(?:\"([^\"]*)\"|'([^']*)')", attributes)
            yield depth, {key: double or single for key, double, single in pairs}
        if not closed:
            depth += 1


def number(text, otherwise=0.0):
    match = re.match(r"\s*[-+]?(\d+\.?\d*|\.\d+)([eE][-+]?\d+)?", text or "")
    return float(match.group()) if match else otherwise


def single(value):
    """The nearest single-precision number."""
    return struct.unpack("f", struct.pack("f", value))[0]


class Show:
    """What the configuration and the script say that matters here."""

    def __init__(self):
        files = ShowFiles(ROOT)
        configuration = files.read("tidewheel.xml")
        if configuration is None:
            raise RenderError("tidewheel.xml was not found in the show's folders")
        self.configuration = configuration.decode("utf-8", "replace")
        for _, attributes in tags(self.configuration, "archive"):
            files.add_archive(attributes.get("file", ""))
        self.files = files
        self.music_name = self._attribute("music", "file")
        self.script_name = self._attribute("script", "file")
        script = files.read(self.script_name)
        if script is None:
            raise RenderError(f"the script '{self.script_name}' was not found")
        self.script = script.decode("utf-8", "replace")
        self.end = max((number(a.get("end")) for depth, a in tags(self.script, "effect") if depth == 1), default=0.0)

    def _attribute(self, tag, name):
        values = [attributes.get(name, "") for _, attributes in tags(self.configuration, tag)]
        return values[-1] if values else ""

    def size(self):
        return tuple(int(number(self._attribute("window", side), otherwise))
                     for side, otherwise in zip(("width", "height"), FIXED_SIZE))


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


def private_configuration(show, options, width, height):
    """A configuration that dumps: the author's names, our window, our start, and a dump tag."""
    music = f'\t<music file="{attribute_text(show.music_name)}" mute="on"/>\n' if show.music_name else ""
    archives = ""
    for _, attributes in tags(show.configuration, "archive"):
        name = attributes.get("file", "")
        scheme, path = ("zip://", name[6:]) if name.startswith("zip://") else ("", name)
        if path:
            full = str((ROOT / "bin" / path).resolve()) + ("/" if path.endswith("/") else "")
            archives += f'\t<archive file="{attribute_text(scheme + full)}"/>\n'
    return (
        "<demo>\n"
        f'\t<time start="{options.start!r}"/>\n'
        '\t<hud mini="off"/>\n'
        f'\t<window caption="render" width="{width}" height="{height}" mode="windowed" type="opengl"/>\n'
        f"{archives}{music}"
        f'\t<script file="{attribute_text(show.script_name)}"/>\n'
        f'\t<videodump name="frame.png" width="{width}" height="{height}" fps="{options.fps_numerator}" '
        f'fpsbase="{options.fps_denominator}" frameskip="{options.frameskip}"/>\n'
        "</demo>\n"
    )


def make_show_folder(show, folder, frames, options, width, height):
    """Lays out bin/, data/, the packed data and screenshots/ as the program expects them, by links."""
    (folder / "bin").mkdir()
    if (ROOT / "data").is_dir():
        (folder / "data").symlink_to(ROOT / "data")
    if (ROOT / PACKED).is_file():
        (folder / PACKED).symlink_to(ROOT / PACKED)
    (folder / "screenshots").symlink_to(frames)
    # Loose files beside the program shadow the rest, so the author's come along; the settings are ours.
    for path in ROOT.iterdir():
        if path.is_file() and path.name not in (PACKED, "tidewheel.xml"):
            (folder / path.name).symlink_to(path)
    (folder / "tidewheel.xml").write_text(private_configuration(show, options, width, height))


# ---------------------------------------------------------------------------------------------------------------------
# Running program and encoder


class Progress:
    """One line that is rewritten on a terminal; elsewhere a line every ten seconds."""

    def __init__(self, total):
        self.total = total
        self.started = time.monotonic()
        self.terminal = sys.stderr.isatty()
        self.shown = 0.0

    def show(self, done, final=False):
        now = time.monotonic()
        if not final and now - self.shown < (0.2 if self.terminal else 10.0):
            return
        self.shown = now
        seconds = max(now - self.started, 1e-3)
        rate = done / seconds
        bar = "#" * int(24 * done / max(self.total, 1))
        line = f"[{bar:<24}] {done} of {self.total} frames"
        if done:
            left = (self.total - done) / rate
            line += f", {rate:.1f} frames/s, {int(left) // 60}:{int(left) % 60:02d} left"
        if self.terminal:
            sys.stderr.write("\r" + line + "\x1b[K" + ("\n" if final else ""))
        else:
            sys.stderr.write(line + "\n")
        sys.stderr.flush()


class Encoder:
    """ffmpeg, fed with finished frames through a pipe. It writes beside the place of the video; `close` gives what is to
    go there."""

    def __init__(self, plan, music):
        options, times = plan.options, plan.times
        self.output = plan.output
        self.part = plan.output.with_name(plan.output.name + ".part")
        origin = single(options.start)
        picture = f"settb=1/90000,setpts='round(({time_expression(times, origin)})/TB)'"
        if options.scale:
            picture += ",scale={}:{}:flags=lanczos".format(*options.scale)
        command = ["ffmpeg", "-hide_banner", "-loglevel", "error", "-y", "-f", "image2pipe", "-c:v", "png",
                   "-framerate", f"{options.fps_numerator}/{options.fps_denominator}", "-i", "pipe:0"]
        if music:
            command += ["-ss", f"{origin:.6f}", "-i", str(music)]
        command += ["-map", "0:v", "-vf", picture,
                    "-c:v", "libx264", "-preset", "medium", "-crf", "16", "-pix_fmt", "yuv420p", "-fps_mode", "vfr",
                    "-enc_time_base", "1/90000", "-video_track_timescale", "90000"]
        if music:
            # As long as the pictures: padded where the music is over before, cut where rendering is interrupted.
            command += ["-map", "1:a", "-c:a", "aac", "-b:a", "256k", "-af", "apad", "-shortest",
                        "-t", f"{times[-1] - origin + 1 / options.fps:.6f}"]
        kind = VIDEO_FORMATS[plan.output.suffix.lower()]
        if kind == "mp4":
            # Each frame gets its length besides its time: players leave out a last frame that has none.
            command += ["-bsf:v", f"setts=pts=PTS:dts=DTS:duration=round({1 / options.fps:.9f}/TB)",
                        "-movflags", "+faststart"]
        command += ["-metadata", f"comment={plan.mark()}", "-f", kind, str(self.part)]
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, start_new_session=True)

    def write(self, data):
        try:
            self.process.stdin.write(data)
        except BrokenPipeError:
            raise RenderError("ffmpeg stopped; its message stands above") from None

    def close(self):
        """Ends the video in order, and gives the path of the whole file."""
        try:
            self.process.stdin.close()
        except BrokenPipeError:
            pass
        if self.process.wait() != 0:
            raise RenderError("ffmpeg could not write the video; its message stands above")
        return self.part

    def drop(self):
        """Ends ffmpeg without a video."""
        self.process.kill()
        try:
            self.process.stdin.close()
        except BrokenPipeError:
            pass
        self.process.wait()
        self.part.unlink(missing_ok=True)


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
    """The user's display, or a virtual one for the length of a `with` where there is none."""

    def __enter__(self):
        self.server = None
        self.environment = dict(os.environ, SDL_AUDIODRIVER="dummy")
        if os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY"):
            check = subprocess.run([DISPLAY_CHECK], capture_output=True, text=True, check=False)
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


def is_finished(path, process, following):
    """A frame is whole once its PNG end mark is there. The file appears before it is filled."""
    if following.exists() or process.poll() is not None:
        return path.exists()
    try:
        with open(path, "rb") as file:
            file.seek(-12, os.SEEK_END)
            return file.read(12)[4:8] == b"IEND"
    except OSError:
        return False


def dump(folder, frames, times, interrupted, encoder=None, keep=True):
    """Runs the program until the wanted frames are there; returns how many there are."""
    with Display() as display, open(folder / "log", "w+", encoding="utf-8", errors="replace") as log:
        process = subprocess.Popen([str(PROGRAM)], cwd=folder / "bin", env=display.environment, start_new_session=True,
                                   stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.STDOUT)
        done = collect(process, frames, times, interrupted, encoder, keep)
        log.seek(0)
        text = log.read()
    if done < len(times) and not interrupted.is_set():
        errors = [line for line in text.splitlines() if line.startswith("Error")] or text.splitlines()[-3:]
        raise RenderError(f"the program stopped after {done} of {len(times)} frames: " + " ".join(errors))
    return done


def collect(process, frames, times, interrupted, encoder, keep):
    """Takes finished frames from the running program until all are there; ends the program."""
    progress = Progress(len(times))
    done = 0
    try:
        while done < len(times) and not interrupted.is_set():
            path = frames / frame_name(done)
            if not is_finished(path, process, frames / frame_name(done + 1)):
                if process.poll() is not None:
                    break
                progress.show(done)
                time.sleep(0.01)
                continue
            if encoder:
                encoder.write(path.read_bytes())
            if not keep:
                path.unlink()
            done += 1
            progress.show(done)
            if shutil.disk_usage(frames).free < 64 << 20:
                raise RenderError(f"the disk that holds {frames} is full; {done} frames were written")
    finally:
        stop(process)
        progress.show(done, final=True)
        # What the program dumped past the last wanted frame.
        extra = len(times) if not interrupted.is_set() else done
        while (frames / frame_name(extra)).exists():
            (frames / frame_name(extra)).unlink()
            extra += 1
    return done


def frame_name(index):
    """The dump's names: the first frame is number 0."""
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
    ending = Path(options.sheet or options.output).suffix
    if options.sheet:
        if ending.lower() not in SHEET_ENDINGS:
            raise RenderError(f"'{options.sheet}': a contact sheet ends in " + " or ".join(SHEET_ENDINGS))
        return make_sheet
    if ending.lower() in VIDEO_FORMATS:
        return make_video
    # A folder's name may have a dot in it, but what looks like a file is hardly meant to be thousands of pictures.
    is_folder = options.output.endswith("/") or Path(options.output).is_dir()
    if not is_folder and re.fullmatch(r"\.(?=.*[A-Za-z])\w{2,5}", ending):
        raise RenderError(f"'{options.output}': a video ends in .mp4 or .mkv, and pictures go into a folder")
    return make_pictures


def parse(arguments):
    parser = argparse.ArgumentParser(
        prog="./render", formatter_class=argparse.RawDescriptionHelpFormatter,
        description="Renders the show offline: every frame, however slow the machine.",
        epilog="examples:\n"
               "  ./render show.mp4                        the whole show as a video with its music\n"
               "  ./render frames --from 30 --to 40        ten seconds as numbered PNG files\n"
               "  ./render show.mkv --fps 60 --frameskip 2 effects run at 120 steps a second\n"
               "  ./render --contact-sheet sheet.png       a picture of the whole show, a frame every two seconds\n\n"
               "Ctrl+C ends the rendering and keeps what was written. README.md tells how long the whole show takes.")
    parser.add_argument("output", metavar="OUT", nargs="?",
                        help="a folder for numbered PNG files, or a video that ends in .mp4 or .mkv")
    parser.add_argument("--from", dest="start", type=seconds, metavar="SECONDS",
                        help="where in the show to begin (0; for a contact sheet 1, between the cuts)")
    parser.add_argument("--to", dest="end", type=seconds, metavar="SECONDS", help="where to end (the show's end)")
    parser.add_argument("--fps", type=ratio, metavar="RATE", help="frames a second: 25, 29.97 or 30000/1001 (30)")
    parser.add_argument("--frameskip", type=int, metavar="N",
                        help="frames drawn for each one written; effects that live from frame to frame run smoother (1)")
    parser.add_argument("--size", type=size(2048), metavar="WxH",
                        help="size of the pictures (the show's own, 800x600); "
                             f"{FIXED_EFFECTS} are made for 800x600 and look displaced at another")
    parser.add_argument("--scale", type=size(8192), metavar="WxH",
                        help="scale a video to this size: the way to a larger one, with all effects in place")
    parser.add_argument("--keep", action="store_true", help="keep the frames of a video too, in OUT.frames")
    parser.add_argument("--keep-finished", action="store_true",
                        help="do nothing where OUT is the finished video of this very show already")
    parser.add_argument("--contact-sheet", dest="sheet", metavar="OUT.png",
                        help="write one picture with a frame every two seconds (every 1/RATE with --fps)")
    options = parser.parse_args(arguments)
    if (options.output is None) == (options.sheet is None):
        parser.error("give either OUT or --contact-sheet OUT.png")
    try:
        options.maker = maker_of(options)
    except RenderError as error:
        parser.error(str(error))
    if options.scale and options.maker is not make_video:
        parser.error("--scale is for videos")
    if options.frameskip is None:
        # A sheet's frames lie far apart; what builds up over frames needs steps in between.
        options.frameskip = 24 if options.sheet and not options.fps else 1
    if not 1 <= options.frameskip <= 1000:
        parser.error("--frameskip must lie between 1 and 1000")
    if options.start is None:
        options.start = 1.0 if options.sheet else 0.0
    options.fps_numerator, options.fps_denominator = options.fps or ((1, 2) if options.sheet else (30, 1))
    options.fps = options.fps_numerator / options.fps_denominator
    return options


# ---------------------------------------------------------------------------------------------------------------------
# What is rendered


class Plan:
    """What is to be made, from which everything else follows."""

    def __init__(self, options):
        if not PROGRAM.is_file():
            raise RenderError(f"{PROGRAM} is not built")
        self.options = options
        self.show = Show()
        self.width, self.height = options.size or self.show.size()
        # Half a step of grace: the running sum may pass a round number by a hair. Past its end the show draws no more.
        grace = 0.5 / options.fps / options.frameskip
        end = self.show.end if options.end is None else min(options.end + grace, self.show.end)
        self.times = frame_times(options.start, end, options.fps, options.frameskip)
        if not self.times:
            raise RenderError(f"there is nothing to render from {options.start} to {end:g} seconds")
        self.output = Path(options.sheet or options.output).absolute()

    def mark(self):
        """A text for a finished video by which it is known again: one for each show and way to render it."""
        settings = private_configuration(self.show, self.options, self.width, self.height)
        what = f"{settings} {self.options.scale} {len(self.times)} {self.show.files.digest()}"
        return "rendered " + hashlib.sha256(what.encode()).hexdigest()


def make_folder(folder):
    try:
        folder.mkdir(parents=True, exist_ok=True)
    except OSError as error:
        raise RenderError(f"{folder} cannot be made: {error.strerror}") from None
    if not os.access(folder, os.W_OK):
        raise RenderError(f"{folder} cannot be written to")
    return folder


def draw(plan, temporary, frames, interrupted, kept, encoder=None):
    """Renders into the folder `frames`, where `kept` pictures lie at a time; returns how many were drawn."""
    for old in frames.glob("frame.??????????.png"):
        old.unlink()
    needed = int(kept * plan.width * plan.height * BYTES_PER_PIXEL) + (128 << 20)
    free = shutil.disk_usage(frames).free
    if free < needed:
        raise RenderError(f"{frames} needs about {needed >> 20} MB, and only {free >> 20} MB are free there")
    make_show_folder(plan.show, temporary, frames, plan.options, plan.width, plan.height)
    return dump(temporary, frames, plan.times, interrupted, encoder, keep=kept >= len(plan.times))


def put(part, plan, stopped):
    """Brings a finished file to its place. One that was stopped takes the place of none: then it is called so."""
    output = plan.output
    if stopped and output.exists():
        output = output.with_name(f"{output.stem}.stopped{output.suffix}")
    part.replace(output)
    return output


def make_pictures(plan, temporary, interrupted):
    done = draw(plan, temporary, make_folder(plan.output), interrupted, len(plan.times))
    return done, plan.output


def make_video(plan, temporary, interrupted):
    make_folder(plan.output.parent)
    keep = plan.options.keep
    frames = make_folder(plan.output.with_name(plan.output.name + ".frames") if keep else temporary / "frames")
    music = None
    data = plan.show.files.read(plan.show.music_name) if plan.show.music_name else None
    if data is not None:
        music = temporary / ("music" + Path(plan.show.music_name).suffix)
        music.write_bytes(data)
    encoder = Encoder(plan, music)
    try:
        done = draw(plan, temporary, frames, interrupted, len(plan.times) if keep else 50, encoder)
        return done, put(encoder.close(), plan, interrupted.is_set()) if done else None
    finally:
        encoder.drop()


def make_sheet(plan, temporary, interrupted):
    """All frames in one picture, ten in a row."""
    make_folder(plan.output.parent)
    frames = make_folder(temporary / "frames")
    done = draw(plan, temporary, frames, interrupted, len(plan.times))
    if not done:
        return done, None
    part = temporary / ("sheet" + plan.output.suffix)
    command = ["ffmpeg", "-hide_banner", "-loglevel", "error", "-y", "-framerate", "1", "-i",
               str(frames / "frame.%010d.png"), "-frames:v", "1", "-update", "1",
               "-vf", f"scale=200:-2:flags=area,tile=10x{(done + 9) // 10}:padding=2:color=black", str(part)]
    if subprocess.run(command, check=False, start_new_session=True).returncode != 0:
        raise RenderError("ffmpeg could not write the contact sheet")
    beside = plan.output.with_name(plan.output.name + ".part")
    try:
        shutil.copyfile(part, beside)
        return done, put(beside, plan, interrupted.is_set())
    finally:
        beside.unlink(missing_ok=True)


def render(options):
    plan = Plan(options)
    if options.maker is not make_pictures and not shutil.which("ffmpeg"):
        raise RenderError("ffmpeg is not installed; give a folder instead, for numbered pictures")
    if options.keep_finished and finished_video(plan):
        print(f"{plan.output} is the finished video of this show already. Remove it to have it rendered anew.")
        return 0
    if (plan.width, plan.height) != FIXED_SIZE:
        print(f"Note: {FIXED_EFFECTS} are made for 800x600 and look displaced at another size. A larger video is made "
              "with --scale.", file=sys.stderr)

    interrupted = threading.Event()
    for number_of_signal in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number_of_signal, lambda *_: interrupted.set())
    with tempfile.TemporaryDirectory(prefix="render-") as temporary:
        done, output = options.maker(plan, Path(temporary), interrupted)

    if interrupted.is_set():
        print(f"Stopped: {output} holds {done} of {len(plan.times)} frames." if done else
              "Stopped before the first frame; nothing was written.")
        return 130
    print(f"{output}: {done} frames, from {plan.times[0]:.3f} to {plan.times[-1]:.3f} seconds of the show.")
    return 0


def build():
    """Installs what is missing and builds the show; gives the status of that."""
    steps = ('set -euo pipefail; . scripts/setup.sh; need_packages "${build_packages[@]}" "${render_packages[@]}"; '
             'build_show')
    return subprocess.run(["bash", "-c", steps], cwd=ROOT, check=False).returncode


def main():
    try:
        options = parse(sys.argv[1:])
        # A show that lies elsewhere is somebody else's to build.
        return (0 if os.environ.get("RENDER_ROOT") else build()) or render(options)
    except KeyboardInterrupt:
        return 130
    except RenderError as error:
        print(f"Error: {error}", file=sys.stderr)
    except OSError as error:
        print(f"Error: {error.filename or 'file'}: {error.strerror}", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())
