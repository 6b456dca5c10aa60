#!/usr/bin/env python3
"""Measures a piece of music by section: loudness, true peak, width, energy in bands, jumps, offset, and how it ends.

    scripts/measure_music.py build/release/show/glacier.ogg
    scripts/measure_music.py NEW.ogg OLD.ogg        the figures of the old one under those of the new

The sections are those that the music program prints with --grid; it is looked for under build/, or named by --music.
LUFS is integrated (EBU R128); peak is the true peak in dB; side is the level of the side signal below the middle's, in
dB; the bands, in hertz, are levels in dB of full scale; jump is the largest step between two samples, dc the offset.
"""

import argparse
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BANDS = {"-120": (None, 120), "-500": (120, 500), "-2500": (500, 2500), "-6000": (2500, 6000), "6000-": (6000, None)}
COLUMNS = {"LUFS": "6.1f", "peak": "6.1f", "side": "6.1f", **dict.fromkeys(BANDS, "7.1f"), "jump": "6.2f", "dc": "8.5f"}


def sections(program):
    """[(name, first second, last second)] as the music program has them, and the piece as a whole."""
    grid = subprocess.run([program, "--grid"], check=True, capture_output=True, text=True).stdout
    length = float(re.search(r"([\d.]+) seconds", grid)[1])
    found = [(name, float(start)) for start, name in re.findall(r"bar +\d+ +([\d.]+) s +(\S+)", grid)]
    ends = [start for _, start in found[1:]] + [length]
    return [(name, start, end) for (name, start), end in zip(found, ends)] + [("whole", 0.0, length)]


def find_program():
    """The music program of a build of this tree."""
    program = next(iter(sorted(ROOT.glob("build/*/show/music/music"))), None)
    if not program:
        sys.exit("Error: no music program under build/; build the target music, or name one with --music")
    return program


def ffmpeg_log(file, start, end, graph):
    return subprocess.run(["ffmpeg", "-hide_banner", "-nostats", "-ss", str(start), "-t", str(end - start), "-i", file,
                           "-filter_complex", graph, "-f", "null", "-"],
                          check=True, capture_output=True, text=True).stderr


def statistics(log):
    """{(filter, channel): {what: number}} of all astats filters; channel "all" is both together."""
    found, channel = {}, {}
    for name, what, value in re.findall(r"\[astats@(\w+) @ \w+\] ([\w ]+):? *(\S*)", log):
        if what in ("Channel", "Overall"):
            channel[name] = value or "all"
        found.setdefault((name, channel[name]), {})[what] = value
    return {key: {what: float(value) for what, value in values.items() if re.fullmatch(r"-?([\d.]+|inf|nan)", value)}
            for key, values in found.items()}


def measure(file, start, end):
    """{column: figure} of one stretch of a file."""
    graph = [f"ebur128=peak=true,asplit={2 + len(BANDS)}[plain][width]" + "".join(f"[b{i}]" for i in range(len(BANDS))),
             "[plain]astats@plain", "[width]pan=stereo|c0=0.5*c0+0.5*c1|c1=0.5*c0-0.5*c1,astats@width,anullsink"]
    for i, (low, high) in enumerate(BANDS.values()):  # each edge is two filters of the second order
        edges = [f"highpass=f={low}"] * 2 * bool(low) + [f"lowpass=f={high}"] * 2 * bool(high)
        graph.append(f"[b{i}]{','.join(edges)},astats@band{i},anullsink")
    log = ffmpeg_log(file, start, end, ";".join(graph))
    stats = statistics(log)
    plain = stats["plain", "all"]
    return {"LUFS": float(re.findall(r"I: +(\S+) LUFS", log)[-1]),
            "peak": float(re.findall(r"Peak: +(\S+) dBFS", log)[-1]),
            "side": stats["width", "2"]["RMS level dB"] - stats["width", "1"]["RMS level dB"],
            **{name: stats[f"band{i}", "all"]["RMS level dB"] for i, name in enumerate(BANDS)},
            "rms": plain["RMS level dB"],
            "jump": plain["Max difference"],
            "dc": max((stats["plain", side]["DC offset"] for side in "12"), key=abs)}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("files", type=pathlib.Path, nargs="+", metavar="FILE")
    parser.add_argument("--music", type=pathlib.Path, help="the music program that knows the sections")
    options = parser.parse_args()
    program = options.music or find_program()
    missing = [str(file) for file in options.files if not file.is_file()]
    if missing:
        sys.exit("Error: no file " + ", ".join(missing))

    width = max(len(str(file)) for file in options.files) if len(options.files) > 1 else 0
    heads = [f"{name:>{spec[0]}}" for name, spec in COLUMNS.items()]
    print(f"{'section':<9} {'seconds':<9}{'':{width}} " + " ".join(heads))
    for name, start, end in sections(program):
        for file in options.files:
            figures = measure(file, start, end)
            print(f"{name:<9} {f'{start:.0f}-{end:.0f}':<9}{str(file) if width else '':{width}} "
                  + " ".join(f"{figures[column]:{spec}}" for column, spec in COLUMNS.items()), flush=True)
    for file in options.files:
        last = statistics(ffmpeg_log(file, end - 0.02, end, "astats@end"))["end", "all"]["Peak level dB"]
        print(f"{file}: the last 20 ms reach {last:.1f} dB")


if __name__ == "__main__":
    main()
