#!/usr/bin/env python3
"""Packs a built show for a competition, for a machine that has its libraries, or as a Debian package.

    package.py ROOT NAME OUT [--deb] [--script root|data] [--at T,T,...]

ROOT is the show's folder and NAME its program; OUT a file, or with a slash at its end the folder for one of the usual
name. ./package, which calls this, has built everything before.

The data that is packed is gathered in a folder first and judged there, packed, and read back through the program's own
archive layer. Then the program is started from what was packed, and what it draws is looked at.
"""

import argparse
import collections
import gzip
import hashlib
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tarfile
import tempfile
import textwrap
import time
import xml.etree.ElementTree as ElementTree
import zipfile
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent
TEMPLATES = TREE / "scripts/package"
BUILD = TREE / "build/release"
# PACKAGE_TOOLS names another folder with the programs that are asked.
TOOLS = Path(os.environ.get("PACKAGE_TOOLS") or TREE / "bin")
OWN_SHOW = "ourglacierheartcold"

CONFIGURATION = "tidewheel.xml"
HUD_FILES = ("tidewheel.font", "tidewheel_logo.png")

# What about.json can tell of a show, and what holds where it does not.
ABOUT = {"title": "", "group": "", "authors": "", "type": "demo", "year": "", "party": "",
         "summary": "Real-time demo in OpenGL", "homepage": "", "contact": "", "version": "1.0",
         "description": "An audiovisual show, drawn in real time in step with its music."}

# What a desktop has: the C and C++ run-times, X, OpenGL. Of the libraries of X those that all others need.
PLAIN = re.compile(r"(linux-vdso|ld-linux.*|libc|libm|libdl|libpthread|librt|libstdc\+\+|libgcc_s|libGL|libGLX|"
                   r"libGLdispatch|libX11|libX11-xcb|libXext|libXau|libXdmcp|libxcb.*|libbsd|libmd)\.so\b.*")
# What belongs to the machine's sound and terminal: its own are used where it has them, since they fit its services.
MACHINE = re.compile(r"(libasound|libpulse|libpulse-simple|libcaca)\.so\b.*")
# SDL 1.2 over SDL 2 opens the other by name.
SDL, SDL2 = "libSDL-1.2.so.0", "libSDL2-2.0.so.0"
# Not every desktop has the one that GLU is linked with, but it has all functions of it in the other.
CORE_GL, GL = "libOpenGL.so.0", "libGL.so.1"

RATE, WARM_UP = 30, 15      # a look is the picture after so many frames, for what builds up from frame to frame
PATIENCE = 300.0            # seconds for one look, on a slow machine
ONE_COLOUR = 0.999          # of the pixels
DISPLAY_SIZE = "2048x1536x24"


class PackageError(Exception):
    """Something that the user is told in one line."""


def output_of(*command, status=(0,), **options):
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False,
                          **options)
    if done.returncode not in status:
        text = done.stderr.decode(errors="replace").strip().splitlines()
        first = next((line for line in text if "Error" in line), text[-1] if text else f"{command[0]} failed")
        raise PackageError(first.removeprefix("Error: "))
    return done.stdout


# ---------------------------------------------------------------------------------------------------------------------
# The show: its words, its roster, the files that it reaches


class Show:
    def __init__(self, root, name, script_choice):
        self.root, self.name = root, name
        self.own = root == TREE
        self.draws = True       # whether the script has an entry that does
        # What authors write comes first; what the build makes of it, the tree's own show alone has.
        self.folders = [root / "data"] + ([BUILD / "show"] if self.own else [])
        self.chosen = {}
        text = self.path(CONFIGURATION).read_text(errors="replace")
        self.configuration = re.sub(r"<!--.*?-->", "", text, flags=re.S)
        if self.values("archive", "file"):
            raise PackageError(f"{self.path(CONFIGURATION)} names an archive of its own, which would not be packed")
        self.scripts, self.music = self.values("script", "file"), self.values("music", "file")
        for script in self.scripts:
            self.choose(script, script_choice)
        self.about = {**ABOUT, "title": name}
        about = self.page("about.json")
        if about:
            try:
                words = json.loads(about.read_text())
                self.about.update({key: str(value) for key, value in words.items() if value})
            except (ValueError, AttributeError) as error:
                raise PackageError(f"{about}: {error}") from None

    def values(self, tag, attribute):
        return re.findall(rf'<{tag}\b[^>]*?\b{attribute}="([^"]*)"', self.configuration)

    def size(self):
        """Width and height of the window."""
        return [int(self.values("window", side)[-1]) for side in ("width", "height")]

    def page(self, name):
        """A file about the show, which the tree's own keeps in show/; none if it has none."""
        path = (self.root / "show" if self.own else self.root) / name
        return path if path.is_file() else None

    def licence(self):
        return TREE / "LICENSE" if self.own else self.page("LICENSE")

    def gaps(self, deb):
        """What the author has not said yet, in words; most of it is nobody's business but the author's."""
        words = [] if self.about["group"] or self.about["authors"] else ['who made it ("group" or "authors")']
        if deb and not self.about["contact"]:
            words.append('whom to write to ("contact")')
        place = self.root / "show" if self.own else self.root
        found = [] if self.draws else ["the script has no entry that draws: the picture is of one colour"]
        found += [f"{place / 'about.json'} does not tell " + " and ".join(words)] if words else []
        if not self.licence():
            found.append(f"{place / 'LICENSE'} is missing: what others may do with it")
        return found

    def path(self, name):
        for path in [self.chosen.get(name)] + [folder / name for folder in self.folders]:
            if path and path.is_file():
                return path
        raise PackageError(f"'{name}' is in none of the show's folders ({self.folders[0]})")

    def choose(self, script, choice):
        """Which of two scripts of one name is packed: the program reads and saves the one in the root."""
        saved, kept = self.root / script, self.root / "data" / script
        if not saved.is_file() or (kept.is_file() and saved.read_bytes() == kept.read_bytes()):
            return
        if kept.is_file() and not choice:
            raise PackageError(f"{saved} and {kept} differ; --script root or --script data chooses one")
        if choice != "data" or not kept.is_file():
            self.chosen[script] = saved

    def roster(self):
        """The names that main.cpp registers, each with the class and the file that its object is given."""
        text = re.sub(r"//[^\n]*|/\*.*?\*/", "", (self.main_file()).read_text(errors="replace"), flags=re.S)
        objects = {name: (kind, file) for kind, name, file
                   in re.findall(r'^\s*(\w+)\s+(\w+)\s*(?:[({]\s*"([^"]*)"\s*[)}])?\s*;', text, flags=re.M)}
        found = {name: objects.get(thing, (thing, "")) for name, thing
                 in re.findall(r'addEffect\(\s*"([^"]*)"\s*,\s*&\s*(\w+)', text)}
        loading = re.findall(r"mLoadingEffect\s*=\s*&\s*(\w+)", text)
        return found, {objects.get(thing, (thing, ""))[0] for thing in loading}

    def main_file(self):
        return self.root / ("demo/main.cpp" if self.own else "main.cpp")

    def table(self):
        """The table of effects for this show's roster, and whether the show has effects that no table tells of."""
        whole = ElementTree.parse(TREE / "demo/effects.xml").getroot()
        known = {effect.get("class"): effect for effect in whole}
        found, loading = self.roster()
        table = ElementTree.Element("effects")
        for name, (kind, file) in found.items():
            effect = ElementTree.SubElement(table, "effect", known[kind].attrib if kind in known else {
                "class": kind, "shows": "its own", "draws": "yes", "clears": "no", "seek": "other"})
            ElementTree.SubElement(effect, "name", {"name": name, **({"reads": file} if file else {})})
            effect.extend([tag for tag in known[kind] if tag.tag != "name"] if kind in known else [
                ElementTree.Element("trigger", {"name": "*", "kind": "none", "kept": "yes", "does": "its own"}),
                ElementTree.Element("spline", {"name": "*", "does": "its own"})])
        kinds = {kind for kind, _ in found.values()} | loading
        return table, kinds - set(known) - {"Loading"}

    def files(self, table, own_effects):
        """The names of all files that the program can ask for."""
        names = {CONFIGURATION, *HUD_FILES, *self.scripts, *self.music}
        names.update(tag.get("name") for tag in table.iter("file"))
        descriptions = {tag.get("reads") for tag in table.iter("name")} - {None}
        for description in descriptions:
            names.update(self.scene_files(description))
        if own_effects:
            folder = self.root / "data"
            names.update(path.relative_to(folder).as_posix() for path in folder.rglob("*") if path.is_file()
                         and not any(part.startswith(".") for part in path.relative_to(folder).parts)
                         and not path.name.endswith(("~", ".bak", ".blend", ".blend1")))
        return sorted(names)

    def scene_files(self, description):
        """A scene description, its Y3D file and the pictures on its meshes."""
        text = re.sub(r"<!--.*?-->", "", self.path(description).read_text(errors="replace"), flags=re.S)
        tag = re.search(r"<scene\b[^>]*>", text)
        words = dict(re.findall(r'(\w+)="([^"]*)"', tag.group())) if tag else {}
        scene = words.get("filename", "")
        folder = words.get("texturepath", "")
        folder += "/" if folder and not folder.endswith("/") else ""
        info = json.loads(output_of(TOOLS / "y3d", "info", "--json", self.path(scene))) if scene else {}
        return {description, scene, *(folder + image["file"] for image in info.get("images", []))} - {""}


def gather(show, folder):
    """Copies what is to be packed into `folder`, judges it there, and gives the names."""
    table, own_effects = show.table()
    names = show.files(table, own_effects)
    for name in names:
        target = folder / "data" / name
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(show.path(name), target)
    (folder / "effects.xml").write_text(ElementTree.tostring(table, encoding="unicode"))
    found = json.loads(output_of(TOOLS / "timeline", "check", "--json", "--show", folder, "--effects",
                                 folder / "effects.xml", status=(0, 1)))
    errors = [finding for finding in found if finding["severity"] == "error"]
    if errors:
        first = errors[0]
        name = first["file"].removeprefix(f"{folder}/data/")
        more = f", and {len(errors) - 1} more" if len(errors) > 1 else ""
        raise PackageError(f"{show.path(name) if name in names else name}:{first['line']}: {first['text']}{more}; "
                           "nothing is packed")
    if found:
        more = f", and {len(found) - 1} more" if len(found) > 1 else ""
        print(f"Note: timeline check warns: {found[0]['text']}{more}")
    return names


# ---------------------------------------------------------------------------------------------------------------------
# Archives of which two runs make the same bytes


def files_of(folder):
    return sorted(path for path in folder.rglob("*") if path.is_file())


def zip_folder(folder, archive, moment, prefix=""):
    with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as file:
        for path in files_of(folder):
            entry = zipfile.ZipInfo(prefix + path.relative_to(folder).as_posix(), time.gmtime(moment)[:6])
            entry.create_system, entry.compress_type = 3, zipfile.ZIP_DEFLATED
            entry.external_attr = (0o100755 if os.access(path, os.X_OK) else 0o100644) << 16
            file.writestr(entry, path.read_bytes(), compresslevel=9)


def tar_folder(folder, archive, moment, prefix):
    with open(archive, "wb") as raw, gzip.GzipFile("", "wb", 9, raw, mtime=moment) as packed, \
            tarfile.open(fileobj=packed, mode="w") as file:
        for path in files_of(folder):
            entry = tarfile.TarInfo(prefix + path.relative_to(folder).as_posix())
            entry.size, entry.mtime = path.stat().st_size, moment
            entry.mode = 0o755 if os.access(path, os.X_OK) else 0o644
            with open(path, "rb") as content:
                file.addfile(entry, content)


def pack_data(show, names, folder, archive, moment):
    zip_folder(folder / "data", archive, moment)
    output_of(TOOLS / "packcheck", archive, folder / "data", input="".join(name + "\n" for name in names).encode())


# ---------------------------------------------------------------------------------------------------------------------
# Libraries and licences


def libraries_of(program):
    """The paths of all libraries that a program is loaded with, by their names."""
    found = {}
    for line in output_of("ldd", program).decode().splitlines():
        match = re.match(r"\s*(\S+) => (/\S+)", line)
        if match:
            found[match.group(1)] = Path(match.group(2))
        elif "not found" in line:
            raise PackageError(f"{program.name} lacks a library here:{line}")
    return found


def needed_by(path):
    return output_of("patchelf", "--print-needed", path).decode().split()


def add_libraries(stage):
    """Puts the libraries that a plain desktop lacks beside the program. Gives the paths that they came from."""
    programs = sorted((stage / "bin").iterdir())
    paths = {}
    for program in programs:
        paths.update(libraries_of(program))
    # The layer over SDL 2 has no need of it that could be read.
    if SDL2.encode() in paths[SDL].read_bytes():
        paths[SDL2] = paths[SDL].with_name(SDL2)
        paths.update(libraries_of(paths[SDL2]))

    def reach(names, stop):
        done = set()
        while names:
            name = names.pop()
            if name == CORE_GL or name in done or name not in paths or PLAIN.fullmatch(name) or stop.fullmatch(name):
                continue
            done.add(name)
            names += needed_by(paths[name])
        return done

    roots = [name for program in programs for name in needed_by(program)] + [SDL2]
    beside = reach(list(roots), MACHINE)
    fallback = reach(list(roots), re.compile("(?!)")) - beside
    for names, folder in ((beside, stage / "lib"), (fallback, stage / "lib/fallback")):
        folder.mkdir(parents=True, exist_ok=True)
        for name in sorted(names):
            shutil.copyfile(paths[name].resolve(), folder / name)
            output_of("strip", "--strip-unneeded", folder / name)
            if CORE_GL in needed_by(folder / name):
                output_of("patchelf", "--replace-needed", CORE_GL, GL, folder / name)
            # The machine's own ones lean on those beside the program.
            path = "$ORIGIN" if folder.name == "lib" else "$ORIGIN:$ORIGIN/.."
            output_of("patchelf", "--set-rpath", path, folder / name)
    for program in programs:
        output_of("patchelf", "--set-rpath", "$ORIGIN/../lib", program)
    # Each is found inside, so that none is taken from this machine that another lacks.
    for file in programs + sorted((stage / "lib").rglob("*.so*")):
        lines = output_of("ldd", file, env={**os.environ, "LD_LIBRARY_PATH": str(stage / "lib/fallback")}).decode()
        for words in map(str.split, lines.splitlines()):
            if not PLAIN.fullmatch(Path(words[0]).name) and not (len(words) > 2 and words[2].startswith(str(stage))):
                raise PackageError(f"{file.name} takes {words[0]} from outside of what is packed")
    return sorted(paths[name] for name in beside | fallback)


def package_of(path):
    """The Debian package that a file came from."""
    real = str(path.resolve())
    for name in (real, real.removeprefix("/usr"), str(path)):
        done = subprocess.run(["dpkg-query", "-S", name], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                              check=False)
        if done.returncode == 0:
            return done.stdout.split(":")[0]
    raise PackageError(f"{path} came from no package, so its licence is not known")


def add_licences(stage, libraries, show):
    folder = stage / "licences"
    folder.mkdir()
    packages = {package_of(path) for path in libraries}
    if show.own:
        packages.add("fonts-jura")      # letters of it are in the pictures
    lines, common = [], set()
    for package in sorted(packages):
        text = Path(f"/usr/share/doc/{package}/copyright").read_bytes()
        (folder / f"{package}.txt").write_bytes(text)
        common.update(re.findall(rb"/usr/share/common-licenses/([\w.+-]*\w)", text))
        facts = output_of("dpkg-query", "-W", "-f", "${Package} ${Version}, source ${source:Package} "
                          "${source:Version}\n", package).decode()
        lines.append(facts.splitlines()[0])
    for name in sorted(common):
        path = Path("/usr/share/common-licenses") / name.decode()
        if path.is_file():
            shutil.copyfile(path, folder / f"{name.decode()}.txt")
    (folder / "PACKAGES.txt").write_text(
        "These packages of Debian are what is in lib/ and in the pictures; their sources lie at deb.debian.org under\n"
        "the names and versions below. lib/ can be replaced file by file.\n\n" + "\n".join(lines) + "\n")


# ---------------------------------------------------------------------------------------------------------------------
# Texts


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


# ---------------------------------------------------------------------------------------------------------------------
# Looks at the running show


class Display:
    """A virtual display."""

    def __enter__(self):
        reader, writer = os.pipe()
        self.process = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", DISPLAY_SIZE, "-noreset",
                                         "-nolisten", "tcp"], pass_fds=[writer], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as answer:
            self.name = ":" + answer.readline().strip()
        if self.name == ":":
            raise PackageError("Xvfb gave no display")
        return self.name

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()


def look(release, start, second, display, size):
    """Starts the show in the folder `release` a little before a second of it, and gives the picture there. It runs with
    an environment, a home and a working folder of its own, all empty."""
    configuration = release / CONFIGURATION
    text = re.sub(r"<(time|videodump)\b[^>]*/>", "", configuration.read_text(errors="replace"))
    begin = max(second - WARM_UP / RATE, 0.0)
    dump = f'<videodump name="look.png" width="{size[0]}" height="{size[1]}" fps="{RATE}"/>'
    configuration.write_text(text.replace("</demo>", f'<time start="{begin:.3f}"/>{dump}</demo>'))
    wanted = release / "screenshots" / f"look.{WARM_UP - 1:010d}.png"
    with tempfile.TemporaryDirectory(prefix="empty-") as empty, open(Path(empty) / "said", "w+b") as said:
        process = subprocess.Popen([start], cwd=empty, stdout=said, stderr=said, env={
            "DISPLAY": display, "HOME": empty, "PATH": "/usr/bin:/bin", "SDL_AUDIODRIVER": "dummy"})
        limit = time.monotonic() + PATIENCE
        try:
            while not (wanted.is_file() and b"IEND" in wanted.read_bytes()[-12:]):
                if process.poll() is not None or time.monotonic() > limit:
                    said.seek(0)
                    lines = said.read().decode(errors="replace").strip().splitlines() or ["nothing was said"]
                    raise PackageError(f"what was packed does not play at {second:g} s: {lines[-1]}")
                time.sleep(0.05)
        finally:
            if process.poll() is None:
                process.send_signal(signal.SIGTERM)
                try:
                    process.wait(30)
                except subprocess.TimeoutExpired:
                    process.kill()
                    process.wait()
    return wanted.read_bytes()


def share_of_one_colour(picture):
    pixels = output_of("ffmpeg", "-v", "error", "-i", "-", "-f", "rawvideo", "-pix_fmt", "rgb24", "-", input=picture)
    counts = collections.Counter(zip(pixels[0::3], pixels[1::3], pixels[2::3]))
    return counts.most_common(1)[0][1] / max(sum(counts.values()), 1)


def take_pictures(show, stage, moments):
    """Pictures of the show at these moments, as it runs from a copy of `stage`."""
    size = show.size()
    pictures = {}
    with Display() as display, tempfile.TemporaryDirectory(prefix="look-") as folder:
        for moment in moments:
            release = Path(folder) / f"at {moment:g}"
            shutil.copytree(stage, release)
            (release / "screenshots").mkdir(exist_ok=True)
            pictures[moment] = look(release, release / "start", moment, display, size)
    seen = {moment: picture for moment, picture in pictures.items() if share_of_one_colour(picture) < ONE_COLOUR}
    if not seen and not show.draws:
        return dict(list(pictures.items())[:1])
    if not seen:
        raise PackageError("the picture is of one colour at " + ", ".join(f"{moment:g}" for moment in pictures) +
                           " s: there is nothing to be seen; --at chooses other moments")
    return seen


def unpack(archive, folder):
    """As an ordinary tool unpacks it, with the rights of files."""
    if archive.name.endswith(".tar.gz.part"):
        with tarfile.open(archive, "r:gz") as file:
            file.extractall(folder)
        return
    with zipfile.ZipFile(archive) as file:
        for entry in file.infolist():
            Path(file.extract(entry, folder)).chmod(entry.external_attr >> 16 & 0o777)


def refuse_build_paths(folder, show):
    """Nothing of what is handed in tells where it was built."""
    paths = {os.fsencode(path) + b"/" for path in (TREE, show.root, Path.home()) if str(path) != "/"}
    for path in files_of(folder):
        content = path.read_bytes()
        for place in paths:
            if place in content:
                raise PackageError(f"{path.relative_to(folder)} holds a path of this machine ({os.fsdecode(place)})")


# ---------------------------------------------------------------------------------------------------------------------
# What is made


def make_archive(show, score, names, work, out, moment, moments):
    portable = out.name.endswith(".zip")
    stage = work / "stage"
    (stage / "bin").mkdir(parents=True)
    for program in (show.root / "bin" / show.name, TOOLS / "showdisplay"):
        output_of("strip", "-o", stage / "bin" / program.name, program)
    shutil.copyfile(work / "show.sdr", stage / f"{show.name}.sdr")
    shutil.copyfile(work / "data" / CONFIGURATION, stage / CONFIGURATION)
    if portable:
        add_licences(stage, add_libraries(stage), show)
    write_texts(stage, show, words_of(show, score, names, libraries_text(stage, portable)))
    refuse_build_paths(stage, show)
    refuse_build_paths(work / "data", show)
    pictures = take_pictures(show, stage, moments)
    (stage / "screenshots").mkdir()
    for number, picture in enumerate(pictures.values(), 1):
        (stage / "screenshots" / f"{show.name}-{number}.png").write_bytes(picture)

    part = out.with_name(out.name + ".part")
    try:
        (zip_folder if portable else tar_folder)(stage, part, moment, show.name + "/")
        with tempfile.TemporaryDirectory(prefix="release-") as folder:
            unpack(part, folder)
            release = Path(folder) / show.name
            first = next(iter(pictures))
            if take_pictures(show, release, [first])[first] != pictures[first]:
                raise PackageError(f"the packed show draws another picture at {first:g} s than before it was packed")
        part.replace(out)
    finally:
        part.unlink(missing_ok=True)
    return len(pictures)


def make_deb(show, score, names, work, out, moment, moments):
    stage = work / "stage"
    output_of("cmake", "--install", BUILD, "--component", show.name, "--prefix", "/usr", "--strip",
              env={**os.environ, "DESTDIR": str(stage)})
    shutil.copyfile(work / "show.sdr", stage / "usr/share" / show.name / f"{show.name}.sdr")
    output_of("strip", stage / "usr/lib" / show.name / "showdisplay")
    about = show.about
    documents = stage / "usr/share/doc" / show.name
    documents.mkdir(parents=True, exist_ok=True)
    shutil.copyfile(show.licence() or TREE / "LICENSE", documents / "copyright")
    if not show.own:
        shutil.copyfile(TREE / "LICENSE", documents / "player.txt")
    # An address in .invalid is none, and says so.
    contact = about["contact"] or f"The authors of {show.name} <{show.name}@show.invalid>"
    date = time.strftime("%a, %d %b %Y %H:%M:%S +0000", time.gmtime(moment))
    changes = f"{show.name} ({about['version']}) unstable; urgency=medium\n\n  * The show.\n\n -- {contact}  {date}\n"
    (documents / "changelog.gz").write_bytes(gzip.compress(changes.encode(), 9, mtime=0))
    refuse_build_paths(stage, show)
    machine = output_of("dpkg", "--print-architecture").decode().strip()
    for path in sorted(stage.rglob("*")):
        path.chmod(0o755 if path.is_dir() or path.stat().st_mode & 0o100 else 0o644)
        os.utime(path, (moment, moment))

    def quoted(text):
        return "[==[" + text + "]==]"

    description = textwrap.fill(about["description"].strip(), 76)
    settings = {
        "GENERATOR": "DEB", "PACKAGE_NAME": show.name, "PACKAGE_VERSION": about["version"],
        "PACKAGE_FILE_NAME": "release", "PACKAGE_DIRECTORY": work / "cpack", "INSTALLED_DIRECTORIES": f"{stage};/",
        "PACKAGING_INSTALL_PREFIX": "/", "DEBIAN_PACKAGE_NAME": show.name.lower(), "DEBIAN_PACKAGE_MAINTAINER": contact,
        "DEBIAN_PACKAGE_ARCHITECTURE": machine, "DEBIAN_PACKAGE_SECTION": "graphics",
        "DEBIAN_PACKAGE_PRIORITY": "optional", "DEBIAN_PACKAGE_SHLIBDEPS": "ON",
        "DEBIAN_PACKAGE_DEPENDS": "libgl1-mesa-dri | libgl1", "DEBIAN_COMPRESSION_TYPE": "xz",
        "PACKAGE_DESCRIPTION_SUMMARY": about["summary"], "PACKAGE_DESCRIPTION": description,
        "DEBIAN_PACKAGE_HOMEPAGE": about["homepage"], "STRIP_FILES": "OFF",
        "DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION": "ON"}
    (work / "CPackConfig.cmake").write_text("".join(f"set(CPACK_{key} {quoted(str(value))})\n"
                                                    for key, value in settings.items() if str(value)))
    output_of("cpack", "--config", work / "CPackConfig.cmake", cwd=work,
              env={**os.environ, "SOURCE_DATE_EPOCH": str(moment)})
    made, = (work / "cpack").glob("*.deb")

    root = work / "root"
    output_of("dpkg-deb", "-x", made, root)
    judge(show, made, root)
    # What the package installs is looked at where it lies unpacked, through its own launcher.
    state = work / "state"
    size = show.size()
    state_folder = Path(".local/state") / show.name
    with Display() as display:
        for look_at in moments:
            release = state / f"{look_at:g}"
            (release / "screenshots").mkdir(parents=True)
            shutil.copyfile(root / "usr/share" / show.name / CONFIGURATION, release / CONFIGURATION)
            launcher = release / "launcher"
            launcher.write_text(f"#!/bin/sh\nmkdir -p \"$HOME/{state_folder.parent}\"\n"
                                f"ln -s '{release}' \"$HOME/{state_folder}\"\nexec '{root}/usr/bin/{show.name}'\n")
            launcher.chmod(0o755)
            picture = look(release, launcher, look_at, display, size)
            if not show.draws or share_of_one_colour(picture) < ONE_COLOUR:
                break
        else:
            raise PackageError("the picture is of one colour at all moments that were looked at; --at chooses others")
    shutil.copyfile(made, out.with_name(out.name + ".part"))
    out.with_name(out.name + ".part").replace(out)
    return out


def judge(show, package, root):
    """What Debian's own judges find in a package ends it."""
    share = root / "usr/share"
    for words in (["desktop-file-validate", share / f"applications/{show.name}.desktop"],
                  ["appstreamcli", "validate", "--no-net", share / f"metainfo/{show.name}.metainfo.xml"],
                  ["lintian", "--allow-root", "--fail-on", "error", "--no-cfg", package]):
        done = subprocess.run([str(word) for word in words], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, check=False)
        lines = [line.strip() for line in done.stdout.splitlines() if re.match(r"\s*(E:|error)|.*: error:", line)]
        if done.returncode != 0:
            raise PackageError(f"{words[0]}: " + (lines[0] if lines else done.stdout.strip().splitlines()[-1]))


def moment_of_release():
    """The time that files get, in seconds: the same for two runs on one state of the tree."""
    given = os.environ.get("SOURCE_DATE_EPOCH")
    if given and given.isdigit():
        return int(given)
    # Not everybody who has the tree has git.
    done = shutil.which("git") and subprocess.run(["git", "-C", TREE, "log", "-1", "--format=%ct"], stdout=subprocess.PIPE,
                                                  stderr=subprocess.DEVNULL, text=True, check=False)
    return int(done.stdout) if done and done.returncode == 0 and done.stdout.strip() else 1767225600


def seconds_list(text):
    try:
        return sorted({float(word) for word in text.split(",")})
    except ValueError:
        raise argparse.ArgumentTypeError(f"'{text}' is no list of seconds such as 3,20.5") from None


def run(options):
    show = Show(options.root.resolve(), options.name, options.script)
    moment = moment_of_release()
    folder = options.out.endswith("/")
    out = Path(options.out) if not folder or options.deb else Path(options.out) / f"{show.name}.zip"
    if out.is_dir() and not folder:
        raise PackageError(f"{out} is a folder")
    with tempfile.TemporaryDirectory(prefix="package-") as name:
        work = Path(name)
        names = gather(show, work)
        pack_data(show, names, work, work / "show.sdr", moment)
        score = Score(work, show.scripts)
        drawing = {name.get("name") for effect in show.table()[0] if effect.get("draws") == "yes"
                   for name in effect.iter("name")}
        show.draws = any(entry["name"] in drawing for entry in score.entries)
        moments = options.at or score.looks()
        if options.deb:
            if folder:
                machine = output_of("dpkg", "--print-architecture").decode().strip()
                out = out / f"{show.name}_{show.about['version']}_{machine}.deb"
            make_deb(show, score, names, work, out, moment, moments)
            how = f"apt install {out}, then {show.name}"
        else:
            count = make_archive(show, score, names, work, out, moment, moments)
            looked = "A picture of it was" if count == 1 else f"{count} pictures of it were"
            how = f"{looked} looked at; unpack it and run {show.name}/start"
    size = out.stat().st_size / 1e6
    print(f"{out}: {size:.1f} MB, {len(names)} files of data, sha256 "
          f"{hashlib.sha256(out.read_bytes()).hexdigest()[:16]}...\n{how}")
    for gap in show.gaps(options.deb):
        print(f"Note: {gap}")


def main():
    parser = argparse.ArgumentParser(prog="./package")
    parser.add_argument("root", type=Path)
    parser.add_argument("name")
    parser.add_argument("out")
    parser.add_argument("--deb", action="store_true")
    parser.add_argument("--script", choices=("root", "data"))
    parser.add_argument("--at", type=seconds_list)
    try:
        run(parser.parse_args())
        return 0
    except KeyboardInterrupt:
        return 130
    except PackageError as error:
        print(f"Error: {error}", file=sys.stderr)
    except OSError as error:
        print(f"Error: {error.filename or 'file'}: {error.strerror}", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())
