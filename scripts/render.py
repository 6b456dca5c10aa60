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
VIDEO_ENDINGS = (".mp4", ".mkv")
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
        return int(number(self._attribute("window", "width"), 800)), int(number(self._attribute("window", "height"), 600))


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


def private_configuration(show, options, width, height, dump_name):
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
        f'\t<videodump name="{dump_name}" width="{width}" height="{height}" fps="{options.fps_numerator}" '
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
    (folder / "tidewheel.xml").write_text(private_configuration(show, options, width, height, "frame.png"))


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
    """ffmpeg, fed with finished frames through a pipe."""

    def __init__(self, output, times, options, music):
        origin = single(options.start)
        rate = f"{options.fps_numerator}/{options.fps_denominator}"
        command = ["ffmpeg", "-hide_banner", "-loglevel", "error", "-y",
                   "-f", "image2pipe", "-c:v", "png", "-framerate", rate, "-i", "pipe:0"]
        if music:
            command += ["-ss", f"{origin:.6f}", "-i", str(music)]
        command += ["-map", "0:v", "-vf", f"settb=1/90000,setpts='round(({time_expression(times, origin)})/TB)'",
                    "-c:v", "libx264", "-preset", "medium", "-crf", "16", "-pix_fmt", "yuv420p", "-fps_mode", "vfr",
                    "-enc_time_base", "1/90000", "-video_track_timescale", "90000"]
        if music:
            # As long as the pictures: padded where the music is over before, cut where rendering is interrupted.
            command += ["-map", "1:a", "-c:a", "aac", "-b:a", "256k", "-af", "apad", "-shortest",
                        "-t", f"{times[-1] - origin + 1 / options.fps:.6f}"]
        if output.suffix == ".mp4":
            command += ["-movflags", "+faststart"]
        self.process = subprocess.Popen(command + [str(output)], stdin=subprocess.PIPE, start_new_session=True)

    def write(self, data):
        try:
            self.process.stdin.write(data)
        except BrokenPipeError:
            raise RenderError("ffmpeg stopped; its message stands above") from None

    def close(self):
        try:
            self.process.stdin.close()
        except BrokenPipeError:
            pass
        if self.process.wait() != 0:
            raise RenderError("ffmpeg could not write the video; its message stands above")


class Display:
    """The user's display, or a virtual one for the length of a `with` where there is none."""

    def __enter__(self):
        self.server = None
        self.environment = dict(os.environ, SDL_AUDIODRIVER="dummy")
        if os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY"):
            return self
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
        self.environment["DISPLAY"] = ":" + number_of_display
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


def dump(folder, frames, first_name, times, encoder, options, interrupted):
    """Runs the program until the wanted frames are there; returns how many there are."""
    with Display() as display, open(folder / "log", "w+", encoding="utf-8", errors="replace") as log:
        process = subprocess.Popen([str(PROGRAM)], cwd=folder / "bin", env=display.environment, start_new_session=True,
                                   stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.STDOUT)
        done = collect(process, frames, first_name, times, encoder, options, interrupted)
        log.seek(0)
        text = log.read()
    if done < len(times) and not interrupted.is_set():
        errors = [line for line in text.splitlines() if line.startswith("Error")] or text.splitlines()[-3:]
        raise RenderError(f"the program stopped after {done} of {len(times)} frames: " + " ".join(errors))
    return done


def collect(process, frames, first_name, times, encoder, options, interrupted):
    """Takes finished frames from the running program until all are there; ends the program."""
    progress = Progress(len(times))
    done = 0
    try:
        while done < len(times) and not interrupted.is_set():
            path = frames / first_name(done)
            if not is_finished(path, process, frames / first_name(done + 1)):
                if process.poll() is not None:
                    break
                progress.show(done)
                time.sleep(0.01)
                continue
            if encoder:
                encoder.write(path.read_bytes())
                if not options.keep:
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
        while (frames / first_name(extra)).exists():
            (frames / first_name(extra)).unlink()
            extra += 1
    return done


def frame_name(index):
    """The dump's names: the first frame is number 0."""
    return f"frame.{index:010d}.png"


# ---------------------------------------------------------------------------------------------------------------------
# Contact sheet


def contact_sheet(frames, count, times, output, columns):
    """Tiles the frames into one picture, in reading order."""
    rows = (count + columns - 1) // columns
    command = ["ffmpeg", "-hide_banner", "-loglevel", "error", "-y", "-framerate", "1", "-i",
               str(frames / "frame.%010d.png"), "-frames:v", "1", "-update", "1",
               "-vf", f"scale=200:-2:flags=area,tile={columns}x{rows}:padding=2:color=black", str(output)]
    if subprocess.run(command, check=False).returncode != 0:
        raise RenderError("ffmpeg could not write the contact sheet")
    step = (times[-1] - times[0]) / max(count - 1, 1)
    print(f"{output}: {count} frames, {columns} in a row, one every {step:.2f} seconds.")


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


def size(text):
    match = re.fullmatch(r"(\d+)x(\d+)", text)
    if not match:
        raise argparse.ArgumentTypeError(f"'{text}' is not a size such as 800x600")
    width, height = int(match.group(1)), int(match.group(2))
    if not (16 <= width <= 2048 and 16 <= height <= 2048 and height % 2 == 0 and width % 2 == 0):
        raise argparse.ArgumentTypeError("width and height must be even and lie between 16 and 2048")
    return width, height


def seconds(text):
    try:
        value = float(text)
    except ValueError:
        value = -1.0
    if not 0.0 <= value < 1e6:
        raise argparse.ArgumentTypeError(f"'{text}' is not a time in seconds")
    return value


def parse(arguments):
    parser = argparse.ArgumentParser(
        prog="./render", formatter_class=argparse.RawDescriptionHelpFormatter,
        description="Renders the show offline: every frame, however slow the machine.",
        epilog="examples:\n"
               "  ./render show.mp4                        the whole show as a video with its music\n"
               "  ./render frames --from 30 --to 40        ten seconds as numbered PNG files\n"
               "  ./render show.mkv --fps 60 --frameskip 2 effects run at 120 steps a second\n"
               "  ./render --contact-sheet sheet.png       a picture of the whole show, a frame every two seconds\n\n"
               "Ctrl+C ends the rendering and keeps what was written.")
    parser.add_argument("output", metavar="OUT", nargs="?", type=Path,
                        help="a folder for numbered PNG files, or a video that ends in .mp4 or .mkv")
    parser.add_argument("--from", dest="start", type=seconds, metavar="SECONDS",
                        help="where in the show to begin (0; for a contact sheet 1, between the cuts)")
    parser.add_argument("--to", dest="end", type=seconds, metavar="SECONDS", help="where to end (the show's end)")
    parser.add_argument("--fps", type=ratio, metavar="RATE", help="frames a second: 25, 29.97 or 30000/1001 (30)")
    parser.add_argument("--frameskip", type=int, metavar="N",
                        help="frames drawn for each one written; effects that live from frame to frame run smoother (1)")
    parser.add_argument("--size", type=size, metavar="WxH", help="size of the pictures (the show's own, 800x600)")
    parser.add_argument("--keep", action="store_true", help="keep the frames of a video too, in OUT.frames")
    parser.add_argument("--contact-sheet", dest="sheet", metavar="OUT.png", type=Path,
                        help="write one picture with a frame every two seconds (every 1/RATE with --fps)")
    options = parser.parse_args(arguments)
    if (options.output is None) == (options.sheet is None):
        parser.error("give either OUT or --contact-sheet OUT.png")
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


def check_room(folder, needed, what):
    free = shutil.disk_usage(folder).free
    if free < needed:
        raise RenderError(f"{what} needs about {needed >> 20} MB, and only {free >> 20} MB are free in {folder}")


def render(options):
    if not PROGRAM.is_file():
        raise RenderError(f"{PROGRAM} is not built")
    show = Show()
    width, height = options.size or show.size()
    # Half a step of grace: the running sum may pass a round number by a hair. Past its end the show draws no more.
    grace = 0.5 / options.fps / options.frameskip
    stop_time = show.end if options.end is None else min(options.end + grace, show.end)
    times = frame_times(options.start, stop_time, options.fps, options.frameskip)
    if not times:
        raise RenderError(f"there is nothing to render from {options.start} to {stop_time:g} seconds")

    output = options.sheet or options.output
    video = options.output is not None and output.suffix.lower() in VIDEO_ENDINGS
    if (video or options.sheet) and not shutil.which("ffmpeg"):
        raise RenderError("ffmpeg is not installed; give a folder instead, for numbered pictures")
    output = output.absolute()
    try:
        (output.parent if video or options.sheet else output).mkdir(parents=True, exist_ok=True)
    except OSError as error:
        raise RenderError(f"{output} cannot be made: {error.strerror}") from None

    interrupted = threading.Event()
    for number_of_signal in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number_of_signal, lambda *_: interrupted.set())

    with tempfile.TemporaryDirectory(prefix="render-") as temporary:
        folder = Path(temporary)
        if video and options.keep:
            frames = output.with_name(output.name + ".frames")
            frames.mkdir(exist_ok=True)
        elif video or options.sheet:
            frames = folder / "frames"
            frames.mkdir()
        else:
            frames = output
        if not os.access(frames, os.W_OK):
            raise RenderError(f"{frames} cannot be written to")
        for old in frames.glob("frame.??????????.png"):
            old.unlink()
        kept = len(times) if not video or options.keep else 50
        check_room(frames, int(kept * width * height * BYTES_PER_PIXEL) + (128 << 20), "the picture folder")
        make_show_folder(show, folder, frames, options, width, height)

        encoder = None
        if video:
            music = None
            data = show.files.read(show.music_name) if show.music_name else None
            if data is not None:
                music = folder / ("music" + Path(show.music_name).suffix)
                music.write_bytes(data)
            encoder = Encoder(output, times, options, music)
        try:
            done = dump(folder, frames, frame_name, times, encoder, options, interrupted)
        finally:
            if encoder:
                encoder.close()
        if options.sheet and done:
            contact_sheet(frames, done, times, output, columns=10)
        elif interrupted.is_set():
            print(f"Stopped: {output} holds {done} of {len(times)} frames.")
        else:
            first, last = times[0], times[done - 1]
            print(f"{output}: {done} frames, from {first:.3f} to {last:.3f} seconds of the show.")
    return 130 if interrupted.is_set() else 0


def main():
    options = parse(sys.argv[1:])
    try:
        return render(options)
    except RenderError as error:
        print(f"Error: {error}", file=sys.stderr)
    except OSError as error:
        print(f"Error: {error.filename or 'file'}: {error.strerror}", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())
