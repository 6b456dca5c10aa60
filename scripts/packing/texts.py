"""The pages that go with a release, filled in from what is known of the show."""

import json
import os
import re
import shutil

from . import TOOLS, TREE, output_of
from .libraries import libraries_of, needed_by, package_of

TEMPLATES = TREE / "scripts/packing/templates"


def clock(seconds):
    return f"{int(seconds) // 60}:{int(seconds) % 60:02d}"


def all_entries(entries):
    for entry in entries:
        yield entry
        yield from all_entries(entry["entries"])


class Score:
    """What the script says that is told or looked at."""

    def __init__(self, folder, scripts):
        read = [json.loads(output_of(TOOLS / "timeline", "print", "--json", folder / "data" / script))
                for script in scripts]
        self.end = max(score["end"] for score in read)
        self.entries = [entry for score in read for entry in all_entries(score["entries"]) if entry["enabled"]]

    def looks(self):
        """Three moments in the middle of an entry each, as near as can be to the quarters of what has entries."""
        spans = [(entry["start"], min(entry["end"], self.end)) for entry in self.entries
                 if entry["end"] > entry["start"]]
        middles = sorted({round((start + end) / 2, 2) for start, end in spans})
        last = min(self.end, max(start for start, _ in spans) * 4 / 3 + 4)
        return sorted({min(middles, key=lambda middle: abs(middle - last * part)) for part in (0.25, 0.5, 0.75)})


def libraries_text(stage, portable):
    """Where the libraries come from: from beside the program, or from packages of this system's names."""
    if portable:
        return "all further libraries lie beside it."
    program = next(path for path in (stage / "bin").iterdir() if path.name != "showdisplay")
    paths = libraries_of(program)
    packages = sorted({package_of(paths[name]) for name in needed_by(program)})
    return "and these packages of Debian: " + " ".join(packages)


def words_of(show, score, names, libraries):
    about = show.about
    libc = output_of("ldd", "--version").decode().splitlines()[0].split()[-1]
    machine = os.uname().machine
    presented = " at ".join(word for word in (about["type"], about["party"]) if word)
    return {
        **{key.upper(): value for key, value in about.items()}, "NAME": show.name, "PRESENTED": presented,
        "BY": f"by {about['group'] or about['authors']}" if about["group"] or about["authors"] else "",
        "LENGTH": clock(score.end), "WINDOW": "{}x{}".format(*show.size()), "ENTRIES": str(len(score.entries)),
        "EFFECTS": str(len({entry["name"] for entry in score.entries})), "FILES": str(len(names)),
        "LIBRARIES": libraries, "MACHINE": f"Linux on {machine} with glibc {libc} or later, X and OpenGL"}


def fill(text, words):
    """Puts the words in; a line of which nothing is left but blanks goes."""
    lines = []
    for line in text.splitlines():
        filled = re.sub(r"@([A-Z_]+)@", lambda match: words.get(match.group(1), match.group()), line).rstrip()
        if filled.strip() or not line.strip():
            lines.append(filled)
    return "\n".join(lines) + "\n"


def write_texts(stage, show, words):
    for template, name in (("info.txt", f"{show.name}.nfo"), ("file_id.diz", "file_id.diz"), ("start", "start")):
        text = (show.page(template) or TEMPLATES / template).read_text()
        (stage / name).write_text(fill(text, words) if template != "start" else text.replace("@NAME@", show.name))
    (stage / "start").chmod(0o755)
    if show.licence():
        shutil.copyfile(show.licence(), stage / "LICENSE")
    if not show.own:
        (stage / "licences").mkdir(exist_ok=True)
        shutil.copyfile(TREE / "LICENSE", stage / "licences/player.txt")
