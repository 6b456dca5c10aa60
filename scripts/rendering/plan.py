"""What is to be rendered and how, from which everything else follows."""

import hashlib
from collections import namedtuple
from pathlib import Path

from . import RenderError
from .clock import frame_times
from .program import private_configuration
from .show import Show

# Effects that copy the frame, or come back to it, as one of 800 by 600.
FIXED_SIZE, FIXED_EFFECTS = (800, 600), ("ball", "blur", "crash", "pixels", "render2texture")
# How a video is encoded. `size` is filled by a picture of the show's shape, with bars beside it; a `bitrate`, in bits a
# second, is met in two passes.
Preset = namedtuple("Preset", "about video audio fps size bitrate formats")
PRESETS = {
    None: Preset("", "-c:v libx264 -preset medium -crf 16 -pix_fmt yuv420p", "-c:a aac -b:a 256k",
                 None, None, None, (".mp4", ".mkv")),
    "web": Preset("small, plays everywhere", "-c:v libx264 -preset slow -crf 21 -pix_fmt yuv420p",
                  "-c:a aac -b:a 192k", None, None, None, (".mp4", ".mkv")),
    "party": Preset("what competitions take: H.264 main profile in two passes, 1920x1080 (or --scale 1280x720), 60 "
                    "frames a second",
                    "-c:v libx264 -preset slow -profile:v main -pix_fmt yuv420p", "-c:a aac -b:a 320k",
                    (60, 1), (1920, 1080), 20e6, (".mp4",)),
    "archive": Preset("lossless, for a .mkv", "-c:v ffv1 -level 3 -g 1 -slicecrc 1 -pix_fmt bgr0", "-c:a flac",
                      None, None, None, (".mkv",)),
}


class Plan:
    """What is to be made, from which everything else follows."""

    def __init__(self, options, folder):
        self.options = options
        self.preset = PRESETS[options.preset]
        self.show = Show(folder)
        own = (self.show.width, self.show.height)
        self.width, self.height = options.size or (own if min(own) > 0 else FIXED_SIZE)
        step = 1 / options.fps / options.frameskip
        start, end = options.start, options.end
        if options.still is not None:
            start, end = max(options.still - step, 0.0), options.still
        self.clock_start = start if options.fast or options.sheet and not options.exact else 0.0
        # Half a step of grace: the running sum may pass a round number by a hair. Past its end the show draws no more.
        end = self.show.end if end is None else min(end + 0.5 * step, self.show.end)
        times = frame_times(self.clock_start, end, options.fps, options.frameskip)
        # How many frames are drawn ahead and left out, for what lives from frame to frame.
        self.ahead = sum(now <= start + 0.5 * step for now in times) if start > self.clock_start else 0
        if options.still is not None and times:
            self.ahead = max(0, len(times) - 1)
        self.times = times[self.ahead:]
        if not self.times or options.still is not None and options.still > self.show.end:
            raise RenderError(f"there is nothing to render from {start:g} to {end:g} seconds")
        out = options.sheet or options.output
        self.output = Path(out).absolute() if out else None

    def mark(self):
        """A text for a finished video by which it is known again: one for each show and way to render it."""
        what = f"{private_configuration(self, '')} {self.options.scale} {self.preset} {self.ahead} {len(self.times)}"
        return "rendered " + hashlib.sha256(f"{what} {self.show.digest()}".encode()).hexdigest()
