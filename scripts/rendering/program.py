"""The show's renderer at work, in a private show folder and on a display of some kind."""

import math
import os
import selectors
import shutil
import subprocess
import sys
import time

from . import RenderError


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
