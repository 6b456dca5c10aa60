"""The things that are made: pictures in a folder, a video, a still, a contact sheet."""

import os
import shutil
import subprocess
import sys
import time

from . import RenderError
from .encoder import Encoder, ffmpeg
from .program import frame_name, run_renderer

# PNG frames of the show compress to about two thirds of a megabyte at 800 by 600.
BYTES_PER_PIXEL = 1.6
# What a folder of pictures holds until all of them are there: how they are made.
UNFINISHED = ".unfinished"


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


def move(path, plan, stopped):
    """Brings a finished picture to its place from another disk, never half of it."""
    beside = plan.output.with_name(plan.output.name + ".part")
    try:
        shutil.copyfile(path, beside)
        return put(beside, plan, stopped)
    finally:
        beside.unlink(missing_ok=True)


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
