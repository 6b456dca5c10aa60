#!/usr/bin/env python3
"""Prints how many frames a second the show makes on this machine, for each ten seconds of it.

The show runs in its dump mode, where every frame is drawn however long it takes; one frame a second
of the show is read back and thrown away, which tells how long those between took to draw.
"""

import os
import signal
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

from rendering import TREE, RenderError
from rendering.options import parse
from rendering.plan import Plan
from rendering.program import run_renderer

FRAMES_A_SECOND = 25


def main():
    plan = Plan(parse(["--hash", "--fps", "1", "--frameskip", str(FRAMES_A_SECOND)]), TREE)
    times = plan.times
    interrupted = threading.Event()
    signal.signal(signal.SIGINT, lambda *_: interrupted.set())
    stamps = []

    def told(_, done):
        stamps.extend([time.monotonic()] * (done - len(stamps)))

    with tempfile.TemporaryDirectory(prefix="showspeed-") as temporary, open(os.devnull, "wb") as nowhere:
        where = f"raw:0:{len(times)}:{nowhere.fileno()}"
        run_renderer(plan, Path(temporary), where, interrupted, told, [nowhere.fileno()])
    print("seconds of the show    frames a second    milliseconds a frame")
    for first in range(0, len(stamps) - 1, 10):
        last = min(first + 10, len(stamps) - 1)
        seconds = stamps[last] - stamps[first]
        drawn = (last - first) * FRAMES_A_SECOND
        print(f"{times[first]:7.0f} to {times[last]:4.0f} {drawn / max(seconds, 1e-9):18.1f} {1000 * seconds / drawn:20.2f}")


if __name__ == "__main__":
    try:
        main()
    except (RenderError, subprocess.SubprocessError) as error:
        sys.exit(f"Error: {error}")
