#!/usr/bin/env python3
"""Runs benchmarks and prints one table: each row beside its floor or peer of the same run.

    bench.py [--save FILE] [--compare FILE] PROGRAM...

A floor is the least that the work can cost, a peer another library that does the same. Machines and their load differ
from run to run, and a ratio within one run does not: so --compare looks at ratios alone. Its exit status is 1 where one
got worse.
"""

import argparse
import json
import math
import re
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SECONDS = 280                   # for all programs together
LEAST, WARM_UP = "0.05", "0.05" # seconds a benchmark runs at the least, and before it counts
REPETITIONS = 3                 # of which the quickest counts: what else the machine does only makes them slower
WORSE = 1.15                    # a ratio grown by more than this is worse: less is noise

# Row, what stands beside it (the sum of several), and the ratio that is aimed at. A row is a program without _bench, and
# the name of a benchmark.
PAIRS = [
    ("xml: parseOurs", ["xml: parseTinyxml2"], 1.0),
    ("xml: parseOurs", ["xml: parseFloor"], 1.3),
    ("xml: writeOurs", ["xml: writeTinyxml2"], 1.0),
    ("am: decodeWithCodec/png", ["am: decodeWithPng"], 1.1),
    ("am: decodeWithCodec/jpeg", ["am: decodeWithJpeg"], 1.1),
    ("am: encodeWithCodec", ["am: encodeWithPng"], 1.1),
    ("chunklib: readChunks/1048576", ["chunklib: copyBytes/1048576"], 1.5),
    ("chunklib: writeChunks/1048576", ["chunklib: copyBytes/1048576"], 2.0),
    ("y3d: Y3D: load 100 MB of meshes", ["y3d: memcpy of the same bytes to memory in use"], 1.3),
    ("y3d: Y3D: write 100 MB of meshes", ["y3d: memcpy of the same bytes to memory in use"], 2.0),
    ("nvtristrip: ordering/grid/80000", ["nvtristrip: meshoptimizer/grid/80000"], None),
    ("nvtristrip: ordering/torus/80000", ["nvtristrip: meshoptimizer/torus/80000"], None),
    ("nvtristrip: ordering/soup/80000", ["nvtristrip: meshoptimizer/soup/80000"], None),
    ("dump: dump/frame", ["dump: dump/floor/glReadPixels", "dump: dump/floor/libpng"], 1.1),
    ("script: loadScript", ["script: parseScript"], 1.5),
    ("script: saveScript", ["script: writeScript"], 1.5),
    ("fennel: keyframingStill", ["fennel: keyframingStillFloor"], 2.0),
    ("fennel: drawing", ["fennel: drawingFloor"], 2.0),
    ("gltf: BM_GltfImport", ["gltf: BM_GltfParseByTinygltf"], None),
    ("start: start", ["start: start, floor"], 1.2),
]
NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def times_in(result, program):
    """The times in Google Benchmark's JSON, in nanoseconds by row."""
    times = {}
    for found in result["benchmarks"]:
        if found.get("run_type") == "aggregate" or found.get("error_occurred"):
            continue
        name = re.sub(r"/(iterations:\d+|min_time:[\d.]+)", "", found["name"])
        own = re.sub(r"/(real_time|manual_time)$", "", name)
        kind = "cpu_time" if own == name else "real_time"
        row = f"{program}: {own}"
        times[row] = min(times.get(row, math.inf), found[kind] * NANOSECONDS[found["time_unit"]])
    return times


def run(programs):
    """Runs the programs one after the other; gives the times and what could not be had."""
    times, missing = {}, []
    deadline = time.monotonic() + SECONDS
    with tempfile.TemporaryDirectory(prefix="bench-") as temporary:
        for program in programs:
            name = program.name.removesuffix("_bench")
            print(f"{name} ...", file=sys.stderr, flush=True)
            out = Path(temporary) / "result.json"
            # Under a display of its own: some draw. -noreset, since it would reset when SDL's first connection closes.
            command = ["xvfb-run", "-a", "-s", "-screen 0 1024x768x24 -noreset", program,
                       f"--benchmark_min_time={LEAST}", f"--benchmark_min_warmup_time={WARM_UP}",
                       f"--benchmark_repetitions={REPETITIONS}", "--benchmark_enable_random_interleaving",
                       f"--benchmark_out={out}", "--benchmark_out_format=json"]
            try:
                done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
                                      timeout=max(deadline - time.monotonic(), 0.1), check=False)
                if done.returncode != 0:
                    missing.append(f"{name} ended with an error: {done.stderr.strip()[-200:]}")
                times.update(times_in(json.loads(out.read_text()), name))
            except subprocess.TimeoutExpired:
                missing.append(f"{name} had no time left")
            except (OSError, ValueError) as error:
                missing.append(f"{name} gave no result ({error})")
            out.unlink(missing_ok=True)
    return times, missing


def readable(nanoseconds):
    for unit, size in (("ns", 1.0), ("us", 1e3), ("ms", 1e6)):
        if nanoseconds < 1000 * size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds / 1e9:.3g} s"


def ratios(times):
    return {f"{row} / {' + '.join(floors)}": times[row] / sum(times[floor] for floor in floors)
            for row, floors, _ in PAIRS if row in times and all(floor in times for floor in floors)}


def natural(row):
    """A key by which numbers sort as numbers."""
    return [(int(part), "") if part.isdigit() else (0, part) for part in re.split(r"(\d+)", row)]


def table(times):
    """The lines of a table: first the pairs, then what stands alone."""
    lines = [("row", "this run", "floor or peer in this run", "time", "ratio", "aim"), ("---",) * 6]
    used = set()
    for row, floors, aim in PAIRS:
        if row not in times or any(floor not in times for floor in floors):
            continue
        used.update([row, *floors])
        floor = sum(times[name] for name in floors)
        ratio = times[row] / floor
        aimed = "" if aim is None else f"{aim:g}" + ("" if ratio <= aim else " (missed)")
        lines.append((row, readable(times[row]), " + ".join(name.split(": ", 1)[1] for name in floors),
                      readable(floor), f"{ratio:.2f}", aimed))
    lines += [(row, readable(times[row]), "", "", "", "") for row in sorted(times, key=natural) if row not in used]
    return ["| " + " | ".join(cells) + " |" for cells in lines]


def compare(before, now):
    """Lines about the ratios that changed, and whether one got worse."""
    lines, worse = [], False
    for name in sorted(before.keys() | now.keys()):
        if name not in before or name not in now:
            lines.append(f"{name}: only in {'this run' if name in now else 'the saved run'}")
            continue
        change = now[name] / before[name]
        if change > WORSE or change < 1 / WORSE:
            worse = worse or change > WORSE
            lines.append(f"{name}: {'slower' if change > 1 else 'faster'}, {before[name]:.2f} before, {now[name]:.2f} now")
    return lines or ["No ratio has changed by more than noise."], worse


def main():
    parser = argparse.ArgumentParser(prog="./bench")
    parser.add_argument("--save", metavar="FILE", type=Path)
    parser.add_argument("--compare", metavar="FILE", type=Path)
    parser.add_argument("programs", nargs="+", type=Path)
    options = parser.parse_args()
    try:
        before = json.loads(options.compare.read_text())["ratios"] if options.compare else None
    except (OSError, ValueError, KeyError, TypeError) as error:
        sys.exit(f"Error: {options.compare} is no saved run ({error})")
    times, missing = run(options.programs)
    print("\n".join(table(times) + missing))
    ran = {row.split(": ")[0] for row in times}
    for row, floors, _ in PAIRS:
        for name in [row, *floors]:
            if name.split(": ")[0] in ran and name not in times:
                print(f"No benchmark is called '{name}'.")
    if options.save:
        options.save.write_text(json.dumps({"ratios": ratios(times), "nanoseconds": times}, indent=1) + "\n")
    worse = False
    if before is not None:
        lines, worse = compare(before, ratios(times))
        print("\n".join(lines))
    return 1 if worse or missing else 0


if __name__ == "__main__":
    sys.exit(main())
