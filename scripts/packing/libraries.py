"""The libraries that go with a program, and their licences."""

import os
import re
import shutil
import subprocess
from pathlib import Path

from . import PackageError, output_of

# What a desktop has: the C and C++ run-times, X, OpenGL. Of the libraries of X those that all others need.
PLAIN = re.compile(r"(linux-vdso|ld-linux.*|libc|libm|libdl|libpthread|librt|libstdc\+\+|libgcc_s|libGL|libGLX|"
                   r"libGLdispatch|libX11|libX11-xcb|libXext|libXau|libXdmcp|libxcb.*|libbsd|libmd)\.so\b.*")
# What belongs to the machine's sound and terminal: its own are used where it has them, since they fit its services.
MACHINE = re.compile(r"(libasound|libpulse|libpulse-simple|libcaca)\.so\b.*")
# SDL 1.2 over SDL 2 opens the other by name.
SDL, SDL2 = "libSDL-1.2.so.0", "libSDL2-2.0.so.0"
# Not every desktop has the one that GLU is linked with, but it has all functions of it in the other.
CORE_GL, GL = "libOpenGL.so.0", "libGL.so.1"


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
