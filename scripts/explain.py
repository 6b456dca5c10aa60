#!/usr/bin/env python3
"""Runs the program of a show, and says which file it was where the program ends with an error that names none.

    explain.py FOLDER PROGRAM...     FOLDER is the root of the show; the status is that of the program
"""

import json
import re
import signal
import struct
import subprocess
import sys
import threading
import time

from showroot import BIN, CONFIGURATION, TREE, ShowRoot, tool

# What the error says, and the codes of the findings that can be behind it.
CAUSES = (
    (r"\(error at line \d+, col \d+\)|^EOF|^Xml|Root tag", ("syntax",)),
    (r"\[AM::|jpeglib|No decoder found|ImageObject", ("bad-picture",)),
    (r"basic_string|std::|vector", ("bad-value",)),
    (r"y3d|Y3D|chunk|Mesh|mesh|material|scene", ("missing-file", "bad-value", "root")),
)
NO_LENGTH = ("root", "no-keys", "no-end")    # with these a show is over as it begins, with no word
AT_ONCE = 10.0                              # seconds, on a slow machine
MENTIONED = re.compile(r"'([^']+\.\w+)'|\(([^()]+\.\w+)\)|for (\S+\.\w+)$")    # a file that the error does name
TRUE_COLOUR = ((8, 2), (8, 6))                                                # what a PNG may be: depth, type


def has_tool():
    return (BIN / "timeline").exists()


def findings(show):
    """What is wrong with a show, as `timeline check` finds it. Who only plays has not built that yet."""
    if not has_tool():
        subprocess.run(["bash", "-c", '. scripts/setup.sh; build_tools "to find the cause" timeline'], cwd=TREE,
                       check=False, stdout=sys.stderr, stderr=subprocess.DEVNULL)
    try:
        status, output, _ = tool("timeline", "check", "--show", show.folder, "--json", *show.effect_table())
        found = json.loads(output) if status in (0, 1) else []
    except (OSError, ValueError):
        return []
    return [each for each in found if each["severity"] == "error"]


def pictures(show):
    """PNG files of the show that are of a kind that is refused; whether an effect asks for them or a scene."""
    for path in sorted(show.data.rglob("*.png")) + sorted(show.folder.glob("*.png")):
        head = path.open("rb").read(26)
        if not head.startswith(b"\x89PNG\r\n\x1a\n") or len(head) < 26:
            yield "%s: this is no PNG file" % show.label(path)
        elif struct.unpack(">BB", head[24:26]) not in TRUE_COLOUR:
            yield "%s: this PNG is of another kind than 8-bit RGB or RGBA" % show.label(path)


def users(show, name):
    """The files of the show in which the name of another one stands."""
    for path in sorted(show.data.rglob("*")):
        if path.suffix in (".y3d", ".xml") and path.is_file() and name.encode() in path.read_bytes():
            line = path.read_bytes().split(name.encode())[0].count(b"\n") + 1 if path.suffix == ".xml" else 0
            yield "%s%s: '%s' is asked for here" % (show.label(path), ":%d" % line if line else "", name)


def missing_node(show, table):
    """The scene in which `meta` looks for its node, and the entry that asks for it."""
    player = re.search(r'name="podium"\s+reads="([^"]+)"', table)
    description = player and show.read(player[1])
    scene = description and re.search(rb"""filename\s*=\s*["']([^"']+)""", description)
    if scene:
        yield "'%s' (%s) is the scene that has no such node" % (scene[1].decode(errors="replace"), player[1])
    for name, _ in show.values("script", "file"):
        path = show.path(name)
        for number, line in enumerate(path.read_text(errors="replace").split("\n") if path else [], 1):
            if re.search(r"""<effect\b[^>]*\bname\s*=\s*["']meta["']""", line):
                yield "%s:%d: this entry needs it" % (show.label(path), number)
                return


def line_of(show, finding):
    # A picture's finding stands in the configuration, which has no part in it.
    place = "" if finding["code"] == "bad-picture" else "%s:%d: " % (show.label(finding["file"]), finding["line"])
    return place + finding["text"].replace("%s/" % show.folder, "")


def over_at_once(folder, seconds):
    """Lines that say why a show that ran for so long, without an error, has no end that is worth the name."""
    show = ShowRoot(folder)
    found = findings(show) if seconds < AT_ONCE and has_tool() else []
    return [line_of(show, each) for each in found if each["code"] in NO_LENGTH]


def explain(folder, error):
    """Lines that name the file, the line and the entry behind an error of the program; none if nothing is found."""
    show = ShowRoot(folder)
    error = error.strip()
    if "FMOD-ERROR" in error:
        where = show.label(show.path(CONFIGURATION) or CONFIGURATION)
        return ["%s:%d: the music is '%s'%s" % (where, line, name, " (%s)" % show.label(show.path(name))
                                                 if show.path(name) else "")
                for name, line in show.values("music", "file")[-1:]]
    if "Font not" in error:
        return ["%s is no font of the HUD" % show.label(path) for path in [show.path("tidewheel.font")] if path]
    if "was not found in scene" in error:
        table = show.folder / "effects.xml"
        return list(missing_node(show, (table if table.is_file() else TREE / "demo/effects.xml").read_text()))
    found = findings(show)
    codes = next((codes for pattern, codes in CAUSES if re.search(pattern, error)), None)
    mentioned = MENTIONED.search(error)
    if name := mentioned and next(filter(None, mentioned.groups())):
        chosen = [each for each in found if "'%s'" % name in each["text"]]
        if not chosen:
            return list(users(show, name))
    else:
        chosen = [each for each in found if codes is None or each["code"] in codes]
    if place := re.search(r"error at line (\d+)", error):
        # The same line first, in case that several files are broken.
        chosen.sort(key=lambda each: "(%s," % place[0] not in each["text"])
    if not chosen and codes == ("bad-picture",):
        return list(pictures(show))
    return [line_of(show, each) for each in chosen]


class Errors(threading.Thread):
    """Hands on what a program writes to its error stream, and keeps the end of it."""

    def __init__(self, stream):
        super().__init__(daemon=True)
        self.stream, self.kept = stream, b""
        self.start()

    def run(self):
        for line in self.stream:
            sys.stderr.buffer.write(line)
            sys.stderr.buffer.flush()
            self.kept = (self.kept + line)[-10000:]

    def error(self):
        """The text of the program's last error, once the stream has ended; empty if there was none."""
        self.join()
        return self.kept.decode("utf-8", "replace").rpartition("Error: ")[2] if b"Error: " in self.kept else ""


def main(arguments):
    folder, program = arguments[0], arguments[1:]
    process = subprocess.Popen(program, stderr=subprocess.PIPE)
    # The program ends in order when it is told to; Ctrl+C reaches it by itself.
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda number, _: process.send_signal(number))
    errors = Errors(process.stderr)
    started = time.monotonic()
    status = process.wait()
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    error = errors.error()
    for line in explain(folder, error) if error else over_at_once(folder, time.monotonic() - started):
        print("    " + line, file=sys.stderr)
    return status if status >= 0 else 128 - status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
