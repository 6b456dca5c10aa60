#!/usr/bin/env python3
"""Makes the pictures of the documents, docs/pictures, again from the show as it is built.

    scripts/pictures.py [--show FOLDER] [KIND...]     effects, sheet, stills, hud; all where none is named

The thumbnails of the effects come from one rendering: a script in which each has seconds of its own.
"""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent
PICTURES = TREE / "docs/pictures"
RENDER = [sys.executable, "-B", TREE / "scripts/render.py", "--show"]
STILLS = (25, 77, 84, 131, 154, 175)                    # seconds of the show
STRIP = (25, 58, 77, 84, 115, 131, 154, 175)
CUBES_ROW = 13                                          # of the entry that the HUD is shown with, from the top
STEP = 0.1                                              # seconds between frames that are drawn for the thumbnails
SLOT = 20 * STEP                                        # for each effect up to its picture
PERIOD = 2 * SLOT                                       # from picture to picture: what fades has as long to go on


def entry(name, triggers=(), splines=(), length=SLOT):
    """An entry of a slot: triggers that fire at once, as (name, value) or (name, value, time), and constant splines."""
    return name, triggers, splines, length


GROUND = entry("clear", [("color", "001003012")])
ICE = [GROUND, entry("sorrel", splines=[("y", 0)]), entry("overlay", splines=[("alpha", 0)])]
HALL = [GROUND, entry("podium", splines=[("y", 0)])]


def greeting(name, text, colour, y):
    return entry(name, [("text", text), ("size", "0.075"), *zip("rgb", colour)],
                 [("alpha", 10), ("posx", -5), ("posy", y)])


def masked(name, mode):
    """The ice, a disc as a mask, and the picture that is let through."""
    return [GROUND, entry("stencil"), entry("circle", length=1.8 * SLOT), entry(name, [("mode", mode)]), *ICE[1:]]


# What is drawn to show each effect.
EFFECTS = {
    "clear": [entry("clear", [("color", "036115148")])],
    "blur": [*HALL, entry("overlay", splines=[("alpha", 0)]),
             entry("blur", [("amount", "0.8"), ("step", "0.12"), ("lowstep", "0.12")])],
    "twister": [entry("clear", [("color", "036115148")]), entry("twister", splines=[("speed", 12)])],
    "particles": [GROUND, entry("particles", [("expand", "1.2", 1), ("enlarge", "0.8", 1)])],
    "static": [*ICE, entry("static", [("size", "1.5"), ("falloffspeed", "1"), ("falloff", "", 1.5)])],
    "lines": [*ICE, entry("lines", [("count", "90")], [("alpha", 9)])],
    "greetings": [*ICE, greeting("greetings", "analogue harvest", ("0.92", "0.98", "1"), 1)],
    "greetings2": [*ICE, greeting("greetings2", "moonferric", ("1", "0.6", "0.4"), -3)],
    "render2texture": [*ICE, entry("render2texture")],
    "crash": [*ICE, entry("render2texture"), GROUND, entry("crash", [("speed", "0.42"), ("crash", "")])],
    "ball": [GROUND, entry("ball", [("speed", "1400"), ("layers", "18"), ("count", "26"), ("move", "", 1)],
                           [("alphastep", 5), ("step", 5), ("size", 13)])],
    "sorrel": ICE,
    "pixels": [GROUND, entry("boolean"), entry("pixels")],
    "stencil": [*ICE, entry("stencil"), entry("circle", length=1.8 * SLOT)],
    "stencilop1": masked("stencilop1", "include"),
    "stencilop2": masked("stencilop2", "exclude"),
    "stencilop3": masked("stencilop3", "normal"),
    "circle": [*ICE, entry("circle", length=1.8 * SLOT)],
    "podium": HALL,
    "boolean": [GROUND, entry("boolean")],
    "flash": [*ICE, entry("flash", [("r", "1"), ("g", "0.5"), ("b", "0.2")], length=1.8 * SLOT)],
    "sun": [GROUND, entry("sun", splines=[("alpha", 9), ("width", 4), ("base", 9), ("cone", 4)])],
    "scenese": [*ICE, entry("scenese", [("jumpheight", "0")], [("alpha", 20), ("offset", 0), ("zoom", 0)], 1.8 * SLOT)],
    "cubes": [GROUND, entry("cubes", [("split", "", 0.4), ("split", "", 0.8), ("split", "", 1.2)],
                            [("alpha", 9), ("explode", 16), ("zoom", 0), ("bounce", 0)])],
    "fire": [entry("clear", [("color", "255106039")]), entry("fire", splines=[("intensity", 90), ("size", 30)])],
    "overlay": [*ICE, entry("overlay", splines=[("alpha", 100)])],
    "infinity": [GROUND, entry("infinity")],
    "lighting": [GROUND, entry("lighting", splines=[("alpha", 110), ("mod", 100)])],
    "preball": [GROUND, entry("preball", length=1.9 * SLOT)],
    "blood": [*ICE, entry("blood", length=1.9 * SLOT)],
    "sandrift": [GROUND, entry("sandrift", [("change", "")], [("alpha", 10)])],
}
FROM_THE_SHOW = {"hypno": 13.4, "meta": 101}            # the second that shows it
SMALL = {"boolean": "crop=72:54:0:537"}                 # what draws into a corner only


def script():
    """All effects, one after the other: the frame at PERIOD * index + STEP shows the one of that index."""
    text = "<script>\n"
    for index, entries in enumerate(EFFECTS.values()):
        start = PERIOD * index - SLOT + 1.5 * STEP
        for name, triggers, splines, length in entries:
            text += f'\t<effect name="{name}" start="{start:.2f}" end="{start + length:.2f}">\n'
            for trigger, value, *at in triggers:
                text += f'\t\t<trigger start="{at[0] if at else 0}" name="{trigger}" value="{value}"/>\n'
            for spline, value in splines:
                text += f'\t\t<spline name="{spline}" type="linear"><key time="0" value="{value}"/></spline>\n'
            text += "\t</effect>\n"
    return text + "</script>\n"


def ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-v", "error", "-y", *map(str, arguments)], check=True)


def render(folder, *arguments):
    subprocess.run([*RENDER, folder, *map(str, arguments)], check=True)


def show_folder(folder, show):
    """A show of its own in a folder: the built program and data, and room for a script."""
    for name in ("bin", "screenshots"):
        (folder / name).mkdir(parents=True)
    for path in (show / "bin").iterdir():
        (folder / "bin" / path.name).symlink_to(path.resolve())
    for name in ("data", "ourglacierheartcold.sdr"):
        if (show / name).exists():
            (folder / name).symlink_to((show / name).resolve())
    shutil.copyfile(show / "data/tidewheel.xml", folder / "tidewheel.xml")
    return folder


def effects(temporary, show):
    folder = show_folder(temporary / "show", show)
    (folder / "glacier.xml").write_text(script())
    frames = temporary / "frames"
    render(folder, frames, "--fps", f"1/{PERIOD:g}", "--frameskip", round(PERIOD / STEP))
    for index, name in enumerate(EFFECTS):
        crop = SMALL[name] + "," if name in SMALL else ""
        ffmpeg("-i", frames / f"frame.{index:010d}.png", "-vf", crop + "scale=160:120:flags=area", "-q:v", 3,
               PICTURES / "effects" / f"{name}.jpg")
    for name, second in FROM_THE_SHOW.items():
        render(show, temporary / name, "--still", second, "--fast")
        ffmpeg("-i", temporary / f"{name}.png", "-vf", "scale=160:120:flags=area", "-q:v", 3,
               PICTURES / "effects" / f"{name}.jpg")


def sheet(temporary, show):
    render(show, "--contact-sheet", temporary / "sheet.png")
    ffmpeg("-i", temporary / "sheet.png", "-vf", "scale=1400:-2:flags=area", "-q:v", 4, PICTURES / "contact_sheet.jpg")


def stills(temporary, show):
    for second in sorted({*STILLS, *STRIP}):
        # What builds up over frames has the second before to do so.
        render(show, temporary / str(second), "--fast", "--from", second - 1, "--to", second + 0.1, "--fps", "1",
               "--frameskip", "15")
        frame = temporary / str(second) / "frame.0000000001.png"
        frame.rename(temporary / f"{second}.png")
        if second in STILLS:
            ffmpeg("-i", temporary / f"{second}.png", "-vf", "scale=560:420:flags=area", "-q:v", 3,
                   PICTURES / f"still-{second}.jpg")
    inputs = [word for second in STRIP for word in ("-i", temporary / f"{second}.png")]
    parts = "".join(f"[{i}]scale=150:112:flags=area,crop=150:112[p{i}];" for i in range(len(STRIP)))
    joined = "".join(f"[p{i}]" for i in range(len(STRIP)))
    ffmpeg(*inputs, "-filter_complex", f"{parts}{joined}hstack={len(STRIP)}", "-q:v", 3, PICTURES / "strip.jpg")


def hud(temporary, show):
    """The HUD over the running show, and with the editor's curve open. Needs xdotool; runs under a display of its own."""
    folder = show_folder(temporary / "hud", show)
    text = (folder / "tidewheel.xml").read_text().replace('start="0.00"', 'start="58.00"').replace('mute="off"',
                                                                                                   'mute="on"')
    (folder / "tidewheel.xml").write_text(text)
    environment = dict(os.environ, SDL_AUDIODRIVER="dummy")
    program = subprocess.Popen(["./ourglacierheartcold"], cwd=folder / "bin", env=environment,
                               stdout=subprocess.DEVNULL)

    def keys(*names):
        for name in names:
            subprocess.run(["xdotool", "key", name], check=True)
            time.sleep(0.7)

    def shoot(name):
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "x11grab", "-draw_mouse", "0", "-video_size", "800x600", "-i",
                        f"{environment['DISPLAY']}+{corner}", "-frames:v", "1", PICTURES / name], check=True)

    try:
        window = subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name", "our glacier"], check=True,
                                capture_output=True, text=True).stdout.split()[0]
        time.sleep(15) # until it has loaded
        place = subprocess.run(["xdotool", "getwindowgeometry", "--shell", window], check=True, capture_output=True,
                               text=True).stdout
        values = dict(line.split("=") for line in place.split())
        corner = f"{values['X']},{values['Y']}"
        subprocess.run(["xdotool", "windowfocus", window], check=False)
        keys("space", "Tab", *["Down"] * CUBES_ROW)
        shoot("hud-browse.png")
        # Its first rows are a trigger and the curves of opacity and distance; of the latter the third key is picked.
        keys("Right", "Down", "Down", "Down", "Return", "Right", "Right")
        shoot("hud-edit.png")
    finally:
        program.terminate()
        program.wait()


KINDS = {kind.__name__: kind for kind in (effects, sheet, stills, hud)}


def main():
    parser = argparse.ArgumentParser(description="Makes docs/pictures again.")
    parser.add_argument("--show", type=Path, default=TREE, metavar="FOLDER", help="the show's root (this tree)")
    parser.add_argument("kinds", nargs="*", metavar="KIND", help=", ".join(KINDS))
    options = parser.parse_args()
    show, wanted = options.show.absolute(), options.kinds or list(KINDS)
    if not KINDS.keys() >= set(wanted):
        parser.error("the kinds are " + ", ".join(KINDS))
    if "hud" in wanted and not os.environ.get("DISPLAY"):
        sys.exit("Error: the HUD needs a display: xvfb-run -a -s '-screen 0 1024x768x24 -noreset' scripts/pictures.py")
    for kind in wanted:
        with tempfile.TemporaryDirectory(prefix="pictures-") as temporary:
            KINDS[kind](Path(temporary), show)


if __name__ == "__main__":
    main()
