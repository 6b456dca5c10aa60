"""The parts of ./package."""

import os
import subprocess
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent.parent
# PACKAGE_TOOLS names another folder with the programs that are asked.
TOOLS = Path(os.environ.get("PACKAGE_TOOLS") or TREE / "bin")


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
