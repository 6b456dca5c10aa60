#!/usr/bin/env python3
"""Renders a show offline, with the show's own renderer.

The renderer is the show's program with another place for its frames (tools/render): it hands them raw to ffmpeg, or
compresses them on all cores. It runs in a private show folder: a temporary one that borrows the author's files, so that
settings and screenshots of the author stay as they are.
"""

import shutil
import signal
import subprocess
import sys
import tempfile
import threading
from pathlib import Path

from rendering import TREE, RenderError
from rendering.encoder import finished_video
from rendering.options import parse
from rendering.outputs import make_pictures, make_still
from rendering.plan import FIXED_EFFECTS, FIXED_SIZE, Plan
from rendering.show import find_show


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
