"""What is made: an archive, or a Debian package."""

import gzip
import os
import re
import shutil
import subprocess
import tempfile
import textwrap
import time
from pathlib import Path

from . import TOOLS, TREE, PackageError, output_of
from .archives import tar_folder, zip_folder
from .libraries import add_libraries, add_licences
from .looks import ONE_COLOUR, Display, look, refuse_build_paths, share_of_one_colour, take_pictures, unpack
from .show import BUILD, CONFIGURATION
from .texts import libraries_text, words_of, write_texts


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
