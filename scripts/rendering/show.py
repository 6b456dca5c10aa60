"""The show that is rendered, as our own library reads it."""

import hashlib
import json
import os
import re
import subprocess
from pathlib import Path

from . import TREE, RenderError

RENDERER = "-render"


def find_show(name):
    """The folder of the show that is called so: a path, or one of those in shows/."""
    folder = Path(name).absolute() if "/" in name else TREE / "shows" / name
    if not folder.is_dir():
        raise RenderError(f"there is no show {folder}; ./new makes one")
    return folder


def find_renderer(folder):
    """The show's renderer, in its bin/: the one of the folder's name, or the only one."""
    found = sorted((folder / "bin").glob("*" + RENDERER))
    named = [path for path in found if path.name == folder.name + RENDERER]
    if len(named or found) != 1:
        raise RenderError(f"{folder / 'bin'} holds no renderer of the show" if not found else
                          f"{folder / 'bin'} holds several renderers")
    return (named or found)[0]


class Show:
    """A show and what its configuration and its script say that matters here, as our own library reads them."""

    def __init__(self, folder):
        self.folder = folder
        self.renderer = find_renderer(folder)
        self.packed = self.renderer.name[:-len(RENDERER)] + ".sdr"
        facts = json.loads(self._facts())
        self.width, self.height = facts["width"], facts["height"]
        self.end, self.music, self.scripts = facts["end"], facts["music"], facts["scripts"]
        self.effects = facts["effects"]
        # A relative name starts in bin/, where the program runs.
        self.archives = []
        for archive in facts["archives"]:
            scheme, path = re.fullmatch(r"(\w+://)?(.*)", archive, re.S).groups("")
            self.archives.append((scheme, os.path.join(folder, "bin", path)))

    def tool(self, name):
        """A tool of ours: beside the program, or in the tree's bin/."""
        beside = self.renderer.resolve().with_name(name)
        return beside if beside.exists() else TREE / "bin" / name

    def _facts(self, *options):
        try:
            asked = subprocess.run([self.tool("timeline"), "facts", "--show", self.folder, *options],
                                   capture_output=True, text=True, check=False)
        except FileNotFoundError:
            raise RenderError("bin/timeline is not built; it reads the show's script") from None
        if asked.returncode != 0:
            raise RenderError(asked.stderr.strip().replace("timeline: ", "", 1))
        return asked.stdout

    def save_music(self, folder):
        """Puts the music into a folder as a file; None where there is none."""
        if not self.music:
            return None
        path = folder / ("music" + Path(self.music).suffix)
        self._facts("--save-music", path)
        return path if path.exists() else None

    def digest(self):
        """A sum over everything that a picture or a sound of the show can come from. Settings are no part of it."""
        files = [self.renderer, self.folder / self.packed, *self.folder.iterdir()]
        for place in [self.folder / "data", *(Path(path) for _, path in self.archives)]:
            files += place.rglob("*") if place.is_dir() else [place]
        total = hashlib.sha256()
        for path in sorted({path for path in files if path.is_file()}):
            if path.parent == self.folder and path.suffix in (".mp4", ".mkv", ".part") or path.name == "tidewheel.xml":
                continue
            total.update(str(path).encode())
            with open(path, "rb") as file:
                for block in iter(lambda: file.read(1 << 20), b""):
                    total.update(block)
        return total.hexdigest()
