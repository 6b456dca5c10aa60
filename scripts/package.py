#!/usr/bin/env python3
"""Packs a built show for a competition, for a machine that has its libraries, or as a Debian package.

    package.py ROOT NAME OUT [--deb] [--script root|data] [--at T,T,...]

ROOT is the show's folder and NAME its program; OUT a file, or with a slash at its end the folder for one of the usual
name. ./package, which calls this, has built everything before.

The data that is packed is gathered in a folder first and judged there, packed, and read back through the program's own
archive layer. Then the program is started from what was packed, and what it draws is looked at.
"""

import argparse
import hashlib
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from packing import TREE, PackageError, output_of
from packing.archives import pack_data
from packing.products import make_archive, make_deb
from packing.show import Show, gather
from packing.texts import Score


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
