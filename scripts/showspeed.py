#!/usr/bin/env python3
"""Prints how many frames a second the show makes on this machine, for each ten seconds of it.

The show runs in its dump mode, where every frame is drawn however long it takes; a frame is written only once a second
of the show, so that the files' times tell how long the frames between took to draw. Writing one picture of
twenty-five is counted in.
"""

import os
import signal
import subprocess
import sys
import tempfile
import threading
from pathlib import Path

import render

FRAMES_A_SECOND = 25


def main():
    show = render.Show()
    options = render.parse(["unused", "--fps", "1", "--frameskip", str(FRAMES_A_SECOND)])
    times = render.frame_times(0.0, show.end, options.fps, options.frameskip)
    interrupted = threading.Event()
    signal.signal(signal.SIGINT, lambda *_: interrupted.set())
    with tempfile.TemporaryDirectory(prefix="showspeed-") as temporary:
        folder = Path(temporary)
        frames = folder / "frames"
        frames.mkdir()
        render.make_show_folder(show, folder, frames, options, *show.size())
        done = render.dump(folder, frames, times, interrupted)
        stamps = [os.stat(frames / render.frame_name(index)).st_mtime for index in range(done)]
    print("seconds of the show    frames a second    milliseconds a frame")
    for first in range(0, len(stamps) - 1, 10):
        last = min(first + 10, len(stamps) - 1)
        seconds = stamps[last] - stamps[first]
        drawn = (last - first) * FRAMES_A_SECOND
        print(f"{times[first]:7.0f} to {times[last]:4.0f} {drawn / max(seconds, 1e-9):18.1f} {1000 * seconds / drawn:20.2f}")


if __name__ == "__main__":
    try:
        main()
    except (render.RenderError, subprocess.SubprocessError) as error:
        sys.exit(f"Error: {error}")
