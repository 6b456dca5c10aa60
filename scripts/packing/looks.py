"""Looks at the running show: whether what was packed draws something, and pictures of it."""

import collections
import os
import re
import shutil
import signal
import subprocess
import tarfile
import tempfile
import time
import zipfile
from pathlib import Path

from . import TREE, PackageError, output_of
from .archives import files_of
from .show import CONFIGURATION

RATE, WARM_UP = 30, 15      # a look is the picture after so many frames, for what builds up from frame to frame
PATIENCE = 300.0            # seconds for one look, on a slow machine
ONE_COLOUR = 0.999          # of the pixels
DISPLAY_SIZE = "2048x1536x24"


class Display:
    """A virtual display."""

    def __enter__(self):
        reader, writer = os.pipe()
        self.process = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", DISPLAY_SIZE, "-noreset",
                                         "-nolisten", "tcp"], pass_fds=[writer], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as answer:
            self.name = ":" + answer.readline().strip()
        if self.name == ":":
            raise PackageError("Xvfb gave no display")
        return self.name

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()


def look(release, start, second, display, size):
    """Starts the show in the folder `release` a little before a second of it, and gives the picture there. It runs with
    an environment, a home and a working folder of its own, all empty."""
    configuration = release / CONFIGURATION
    text = re.sub(r"<(time|videodump)\b[^>]*/>", "", configuration.read_text(errors="replace"))
    begin = max(second - WARM_UP / RATE, 0.0)
    dump = f'<videodump name="look.png" width="{size[0]}" height="{size[1]}" fps="{RATE}"/>'
    configuration.write_text(text.replace("</demo>", f'<time start="{begin:.3f}"/>{dump}</demo>'))
    wanted = release / "screenshots" / f"look.{WARM_UP - 1:010d}.png"
    with tempfile.TemporaryDirectory(prefix="empty-") as empty, open(Path(empty) / "said", "w+b") as said:
        process = subprocess.Popen([start], cwd=empty, stdout=said, stderr=said, env={
            "DISPLAY": display, "HOME": empty, "PATH": "/usr/bin:/bin", "SDL_AUDIODRIVER": "dummy"})
        limit = time.monotonic() + PATIENCE
        try:
            while not (wanted.is_file() and b"IEND" in wanted.read_bytes()[-12:]):
                if process.poll() is not None or time.monotonic() > limit:
                    said.seek(0)
                    lines = said.read().decode(errors="replace").strip().splitlines() or ["nothing was said"]
                    raise PackageError(f"what was packed does not play at {second:g} s: {lines[-1]}")
                time.sleep(0.05)
        finally:
            if process.poll() is None:
                process.send_signal(signal.SIGTERM)
                try:
                    process.wait(30)
                except subprocess.TimeoutExpired:
                    process.kill()
                    process.wait()
    return wanted.read_bytes()


def share_of_one_colour(picture):
    pixels = output_of("ffmpeg", "-v", "error", "-i", "-", "-f", "rawvideo", "-pix_fmt", "rgb24", "-", input=picture)
    counts = collections.Counter(zip(pixels[0::3], pixels[1::3], pixels[2::3]))
    return counts.most_common(1)[0][1] / max(sum(counts.values()), 1)


def take_pictures(show, stage, moments):
    """Pictures of the show at these moments, as it runs from a copy of `stage`."""
    size = show.size()
    pictures = {}
    with Display() as display, tempfile.TemporaryDirectory(prefix="look-") as folder:
        for moment in moments:
            release = Path(folder) / f"at {moment:g}"
            shutil.copytree(stage, release)
            (release / "screenshots").mkdir(exist_ok=True)
            pictures[moment] = look(release, release / "start", moment, display, size)
    seen = {moment: picture for moment, picture in pictures.items() if share_of_one_colour(picture) < ONE_COLOUR}
    if not seen and not show.draws:
        return dict(list(pictures.items())[:1])
    if not seen:
        raise PackageError("the picture is of one colour at " + ", ".join(f"{moment:g}" for moment in pictures) +
                           " s: there is nothing to be seen; --at chooses other moments")
    return seen


def unpack(archive, folder):
    """As an ordinary tool unpacks it, with the rights of files."""
    if archive.name.endswith(".tar.gz.part"):
        with tarfile.open(archive, "r:gz") as file:
            file.extractall(folder)
        return
    with zipfile.ZipFile(archive) as file:
        for entry in file.infolist():
            Path(file.extract(entry, folder)).chmod(entry.external_attr >> 16 & 0o777)


def refuse_build_paths(folder, show):
    """Nothing of what is handed in tells where it was built."""
    paths = {os.fsencode(path) + b"/" for path in (TREE, show.root, Path.home()) if str(path) != "/"}
    for path in files_of(folder):
        content = path.read_bytes()
        for place in paths:
            if place in content:
                raise PackageError(f"{path.relative_to(folder)} holds a path of this machine ({os.fsdecode(place)})")
