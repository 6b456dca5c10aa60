"""The parts of ./render."""

from pathlib import Path

TREE = Path(__file__).resolve().parent.parent.parent


class RenderError(Exception):
    """Something that the user is told in one line."""
