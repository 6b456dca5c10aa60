"""The folder of a show as the scripts at the root see it: its configuration, its script, where its files lie."""

import io
import os
import re
import shlex
import subprocess
import zipfile
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent
BIN = Path(os.environ.get("TIDEWHEEL_BIN", TREE / "bin"))       # a test runs the tools of its own build
CONFIGURATION = "tidewheel.xml"
OWN_NAME = "ourglacierheartcold"    # of the show that lies in the root of the tree


def tool(name, *arguments):
    """Runs one of our tools; its status, and what it says."""
    done = subprocess.run([BIN / name, *map(str, arguments)], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, text=True, errors="replace", check=False)
    return done.returncode, done.stdout, done.stderr


class ShowRoot:
    """A show's folder. Files are looked up as the program does: in the root, in data/, in the packed show."""

    def __init__(self, folder):
        self.folder = Path(folder).resolve()
        self.name = OWN_NAME if self.folder == TREE else self.folder.name
        self.data = self.folder / "data"
        self.packed = self.folder / (self.name + ".sdr")

    def command(self, word):
        """How a command at the root of the tree is called for this show."""
        words = [] if self.folder == TREE else [self.name if self.folder.parent == TREE / "shows" else str(self.folder)]
        return shlex.join(["./" + word, *words])

    def path(self, name):
        """Where a file of the show lies as a file of its own; None if it does not."""
        return next((path for path in (self.folder / name, self.data / name) if path.is_file()), None)

    def read(self, name):
        """The bytes of a file; None if it is nowhere."""
        if path := self.path(name):
            return path.read_bytes()
        try:
            with zipfile.ZipFile(io.BytesIO(self.packed.read_bytes())) as archive:
                return archive.read(name)
        except (OSError, KeyError, zipfile.BadZipFile):
            return None

    def label(self, path):
        """A path as a reader of messages finds it."""
        path = Path(path)
        return str(path.relative_to(self.folder)) if path.is_relative_to(self.folder) else str(path)

    def configuration(self):
        """The text of the configuration; empty if there is none."""
        return (self.read(CONFIGURATION) or b"").decode("utf-8", "replace")

    def values(self, tag, attribute):
        """The values of an attribute in all tags of that name in the configuration, each with its line."""
        # Comments go, and their lines stay.
        text = re.sub(r"<!--.*?-->", lambda found: "\n" * found[0].count("\n"), self.configuration(), flags=re.S)
        found = []
        for match in re.finditer(r"<%s\b([^>]*)>" % tag, text):
            value = re.search(r"""\b%s\s*=\s*(["'])(.*?)\1""" % attribute, match[1])
            if value:
                found.append((value[2], text.count("\n", 0, match.start()) + 1))
        return found

    def effect_table(self):
        """What `timeline check` is to judge a script of this show by."""
        own = self.folder / "effects.xml"
        return ["--effects", own] if own.is_file() else []
