#!/usr/bin/env python3
"""Measures the whole show by section: its light and colours, what falls on the drums, its sound, and what it costs.

    scripts/measure_show.py                                     the show in this tree; some minutes
    scripts/measure_show.py --save FILE                         keeps the figures
    scripts/measure_show.py --compare scripts/first_cut.json    kept figures under those of this run

light   mean luminance of the pictures, 0 to 255
dark    share of pictures with a mean below 16, in percent
colour  the family of hues that rules most seconds, and the share of them in percent; a second in which hardly anything
        has a colour is grey
kick, snare, fill, bell
        notes at which something happens, of all: an entry of the script starts, a trigger fires or a spline has a key
        within 20 ms. Keys amid others of the same value do not count, and notes softer than a third of the voice's
        loudest neither. A fill is a run of toms, and one of its notes is enough
gap     longest stretch without such an event, in seconds
LUFS, peak, side
        as scripts/measure_music.py has them: loudness, true peak, level of the side below the middle's
2.5-6k  level of what lies between 2.5 and 6 kHz below that of all, in dB
cost    processor time of a frame in the slowest second, in milliseconds, all threads of the renderer together

Sections and notes are those of the music program (--music); what happens is what the show's script says.
"""

import argparse
import json
import math
import re
import subprocess
import sys
import tempfile
import threading
from collections import Counter
from pathlib import Path

import measure_music
from rendering import TREE, RenderError
from rendering.encoder import ffmpeg
from rendering.options import parse
from rendering.outputs import Progress
from rendering.plan import Plan
from rendering.program import run_renderer

NEAR = 0.02         # seconds between a note and an event that belongs to it, at most
DARK = 16           # mean luminance
GREY = 0.02         # share of full colour, below which a second is grey
SOFT = 1 / 3        # of a voice's loudest note
FILL_BREAK = 0.3    # seconds between the notes of two fills, at least
EVEN = 0.3          # dB
EVEN_BLOCK = 8      # seconds: four bars
FRAMESKIP = 4       # frames drawn for each picture: trails and sparks look as they do in motion
WIDTH, HEIGHT = 32, 24
FAMILIES = ((75, "warm"), (165, "green"), (260, "blue"), (330, "violet"), (361, "warm"))    # up to a hue in degrees
VOICES = {"kick": "kick", "snare": "snare", "fill": "tom", "bell": "bell"}
COLUMNS = {"light": 5, "dark": 5, "colour": 9, "kick": 7, "snare": 7, "fill": 5, "bell": 5, "gap": 4, "LUFS": 6,
           "peak": 5, "side": 6, "2.5-6k": 6, "cost": 5}


# ---------------------------------------------------------------------------------------------------------------------
# Pictures


def take_pictures(plan):
    """([rgb bytes of each picture, small], [milliseconds of processor time up to it])"""
    costs, pictures = [], []
    scaler = ffmpeg("-f", "rawvideo", "-pixel_format", "bgra", "-video_size", f"{plan.width}x{plan.height}",
                    "-i", "pipe:0", "-vf", f"scale={WIDTH}:{HEIGHT}:flags=area", "-pix_fmt", "rgb24",
                    "-f", "rawvideo", "-", stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def read():
        while picture := scaler.stdout.read(3 * WIDTH * HEIGHT):
            pictures.append(picture)

    reader = threading.Thread(target=read, daemon=True)
    reader.start()
    progress = Progress(plan)
    with tempfile.TemporaryDirectory(prefix="measure-") as temporary:
        pipe = scaler.stdin.fileno()
        run_renderer(plan, Path(temporary), f"raw:0:{len(plan.times)}:{pipe}", threading.Event(), progress.show,
                     [pipe], scaler.stdin.close, costs)
    reader.join()
    return pictures, costs


def look(picture):
    """(mean luminance, Counter of the colour in each family)"""
    luminance, colours = 0, Counter()
    for r, g, b in zip(*[iter(picture)] * 3):
        luminance += 0.299 * r + 0.587 * g + 0.114 * b
        high, low = max(r, g, b), min(r, g, b)
        if high > low:
            sixth = (g - b) / (high - low) % 6 if high == r else \
                (b - r) / (high - low) + 2 if high == g else (r - g) / (high - low) + 4
            colours[next(family for limit, family in FAMILIES if 60 * sixth < limit)] += high - low
    return luminance / (WIDTH * HEIGHT), colours


def ruling(colours, count):
    """The family that rules some pictures."""
    family, amount = max(colours.items(), key=lambda item: item[1], default=("grey", 0))
    return family if sum(colours.values()) > GREY * 255 * WIDTH * HEIGHT * count else "grey"


class Pictures:
    """All pictures of the show."""

    def __init__(self, plan):
        pictures, costs = take_pictures(plan)
        rate = plan.options.fps
        self.times = plan.times
        self.lights = []
        seconds = {}
        for moment, picture in zip(self.times, pictures):
            light, colours = look(picture)
            self.lights.append(light)
            seconds.setdefault(int(moment), []).append(colours)
        self.families = {second: ruling(sum(found, Counter()), len(found)) for second, found in seconds.items()}
        step = round(rate)
        self.costs = {int(self.times[i]): (costs[i + step] - costs[i]) / (step * FRAMESKIP)
                      for i in range(0, len(costs) - step, step)}

    def dark_stretches(self):
        """[[first, last second]] of what is dark for a second or longer."""
        marks = [(0.0, False), *((moment, light < DARK) for moment, light in zip(self.times, self.lights))]
        changes = [now for (_, before), (now, dark) in zip(marks, marks[1:]) if dark != before]
        changes += [self.times[-1]] * (len(changes) % 2)
        return [list(pair) for pair in zip(changes[::2], changes[1::2]) if pair[1] - pair[0] >= 1]

    def figures(self, start, end):
        lights = [light for moment, light in zip(self.times, self.lights) if start <= moment < end]
        families = Counter(family for second, family in self.families.items() if start <= second < end)
        total = sum(families.values())
        return {"light": sum(lights) / len(lights), "dark": 100 * sum(light < DARK for light in lights) / len(lights),
                "families": {family: 100 * count / total for family, count in families.most_common()},
                "cost": max((cost for second, cost in self.costs.items() if start <= second < end), default=math.nan)}


# ---------------------------------------------------------------------------------------------------------------------
# Script and score


def events_of(entries):
    """The times at which something happens, as `timeline print --json` has the entries."""
    for entry in entries:
        if not entry["enabled"]:
            continue
        start, end = entry["start"], entry["end"]
        yield start
        for trigger in entry["triggers"]:
            for i in range(trigger["repeat"]):
                moment = max(start, trigger["time"] + i * trigger["delay"])
                if moment < end:
                    yield moment
        for spline in entry["splines"]:
            keys = [(None, None), *((key["time"], key["value"]) for key in spline["keys"]), (None, None)]
            for (_, before), (moment, value), (_, after) in zip(keys, keys[1:], keys[2:]):
                if start <= moment < end and {before, after} - {None, value}:
                    yield moment
        yield from (moment for moment in events_of(entry["entries"]) if start <= moment < end)


def read_events(show):
    events = {0.0, show.end}
    for script in show.scripts:
        path = next((path for path in (show.folder / script, show.folder / "data" / script) if path.is_file()), None)
        if not path:
            raise RenderError(f"{script} lies neither in {show.folder} nor in its data/")
        said = subprocess.run([show.tool("timeline"), "print", "--json", path], check=True, capture_output=True,
                              text=True)
        events.update(events_of(json.loads(said.stdout)["entries"]))
    return sorted(moment for moment in events if 0 <= moment <= show.end)


def read_hits(program):
    """{column: [the times of one hit's notes]} of what the music strikes."""
    said = subprocess.run([program, "--notes"], check=True, capture_output=True, text=True).stdout
    notes = [line.split(None, 4) for line in said.splitlines()]
    hits = {}
    for column, voice in VOICES.items():
        struck = [(float(start), float(level)) for start, _, level, _, name in notes if name == voice]
        loudest = max((level for _, level in struck), default=0)
        hits[column] = [[start] for start, level in struck if level >= SOFT * loudest]
    fills = []
    for hit in hits["fill"]:
        if fills and hit[0] - fills[-1][-1] < FILL_BREAK:
            fills[-1] += hit
        else:
            fills.append(hit)
    return {**hits, "fill": fills}


class Score:
    """What is struck, and what happens then."""

    def __init__(self, show, program):
        self.events, self.hits = read_events(show), read_hits(program)

    def _happens(self, moment):
        return any(abs(event - moment) <= NEAR for event in self.events)

    def figures(self, start, end):
        found = {}
        for column, hits in self.hits.items():
            own = [any(map(self._happens, hit)) for hit in hits if start <= hit[0] < end]
            found[column] = [sum(own), len(own)]
        marks = [start, *(event for event in self.events if start < event < end), end]
        return {**found, "gap": max(after - before for before, after in zip(marks, marks[1:]))}


# ---------------------------------------------------------------------------------------------------------------------
# Sound


def sound_figures(file, start, end):
    found = measure_music.measure(file, start, end)
    return {**{name: found[name] for name in ("LUFS", "peak", "side")}, "2.5-6k": found["-6000"] - found["rms"]}


def even_stretch(file, length):
    """The longest time, in seconds, in which the loudness of each EVEN_BLOCK seconds is within EVEN dB of one level."""
    log = measure_music.ffmpeg_log(file, 0, length, "ebur128")
    blocks = {}
    for moment, level in re.findall(r" t: *([\d.]+) .*? M: *(-?[\d.]+)", log):
        blocks.setdefault(int((float(moment) - 0.2) // EVEN_BLOCK), []).append(10 ** (float(level) / 10))
    levels = [10 * math.log10(sum(powers) / len(powers)) for _, powers in sorted(blocks.items())]
    return EVEN_BLOCK * max(last - first for first in range(len(levels)) for last in range(first + 1, len(levels) + 1)
                            if max(levels[first:last]) - min(levels[first:last]) <= 2 * EVEN)


# ---------------------------------------------------------------------------------------------------------------------
# The table


def measure(options):
    plan = Plan(parse(["--hash", "--fps", str(options.fps), "--frameskip", str(FRAMESKIP)]), options.show)
    program = options.music
    score = Score(plan.show, program)
    sections = [(name, start, min(end, plan.show.end)) for name, start, end in measure_music.sections(program)]
    with tempfile.TemporaryDirectory(prefix="measure-") as temporary:
        music = plan.show.save_music(Path(temporary))
        sounds = [sound_figures(music, start, end) for _, start, end in sections]
        even = even_stretch(music, plan.show.end)
    pictures = Pictures(plan)
    return {"sections": [{"section": name, "start": start, "end": end, **pictures.figures(start, end),
                          **score.figures(start, end), **sound}
                         for (name, start, end), sound in zip(sections, sounds)],
            "dark": pictures.dark_stretches(), "even": even}


def cell(column, row):
    if column == "colour":
        family, share = next(iter(row["families"].items()))
        return f"{family} {share:.0f}"
    value = row[column]
    if column in VOICES:
        return f"{value[0]}/{value[1]}" if value[1] else "-"
    return "-" if not math.isfinite(value) else f"{value:.0f}" if column in ("light", "dark") else f"{value:.1f}"


def lines(result, old=None, old_name=""):
    yield f"{'section':<9} {'seconds':<8}" + "".join(f" {name:>{width}}" for name, width in COLUMNS.items())
    olds = {(row["section"], row["start"], row["end"]): row for row in old["sections"]} if old else {}
    for row in result["sections"]:
        key = row["section"], row["start"], row["end"]
        seconds = f"{key[1]:.0f}-{key[2]:.0f}"
        for head, figures in ((f"{key[0]:<9} {seconds:<8}", row), (f"  {old_name:<16}", olds.get(key))):
            if figures:
                yield head + "".join(f" {cell(name, figures):>{width}}" for name, width in COLUMNS.items())
    for name, kept in (("", result), *([(old_name + ": ", old)] if old else [])):
        families = ", ".join(f"{family} {share:.0f} %" for family, share in kept["sections"][-1]["families"].items())
        dark = ", ".join(f"{first:.0f}-{last:.0f}" for first, last in kept["dark"])
        yield f"{name}seconds by colour: {families}; dark for a second or longer: {dark or 'never'}; " \
              f"loudness within {EVEN} dB of one level for {kept['even']:.0f} s"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--show", type=Path, default=TREE, metavar="FOLDER", help="another show's folder")
    parser.add_argument("--music", type=Path, metavar="PROGRAM", help="the music program that knows sections and notes")
    parser.add_argument("--fps", type=int, default=5, metavar="N", help="pictures a second that are looked at (5)")
    parser.add_argument("--save", type=Path, metavar="FILE", help="keep the figures")
    parser.add_argument("--compare", type=Path, metavar="FILE", help="kept figures to print beside the new ones")
    options = parser.parse_args()
    if options.save and not options.save.absolute().parent.is_dir():
        parser.error(f"there is no folder for {options.save}")
    try:
        old = json.loads(options.compare.read_text()) if options.compare else None
    except ValueError:
        parser.error(f"{options.compare} holds no figures that were kept")
    options.show = options.show.absolute()
    options.music = options.music or measure_music.find_program()
    result = measure(options)
    if options.save:
        options.save.write_text(json.dumps(result, indent=1) + "\n")
    print("\n".join(lines(result, old, options.compare.stem.replace("_", " ") if old else "")))


if __name__ == "__main__":
    try:
        main()
    except KeyboardInterrupt:
        sys.exit(130)
    except subprocess.CalledProcessError as error:
        sys.exit(f"Error: {error.cmd[0]} ended with status {error.returncode}")
    except OSError as error:
        sys.exit(f"Error: {error.filename or 'file'}: {error.strerror}")
    except (RenderError, ValueError) as error:
        sys.exit(f"Error: {error}")
