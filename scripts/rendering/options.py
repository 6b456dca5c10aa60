"""The command line of ./render."""

import argparse
import re
from pathlib import Path

from . import RenderError
from .encoder import VIDEO_FORMATS
from .outputs import make_pictures, make_sheet, make_still, make_video
from .plan import FIXED_EFFECTS, PRESETS

PICTURE_ENDINGS = (".png", ".jpg", ".jpeg", ".tga", ".bmp", ".gif")
SHEET_ENDINGS = (".png", ".jpg", ".jpeg")


def ratio(text):
    """A frame rate: 25, 29.97 or 30000/1001."""
    match = re.fullmatch(r"(\d+)(?:/(\d+))?", text)
    if match:
        numerator, denominator = int(match.group(1)), int(match.group(2) or 1)
    else:
        try:
            numerator, denominator = round(float(text) * 1000), 1000
        except ValueError:
            raise argparse.ArgumentTypeError(f"'{text}' is not a frame rate") from None
    if not (numerator > 0 and denominator > 0 and 0.01 <= numerator / denominator <= 1000):
        raise argparse.ArgumentTypeError(f"'{text}' is not a usable frame rate")
    return numerator, denominator


def size(largest):
    """Makes a reader of sizes up to `largest`. Video takes even ones alone."""
    def read(text):
        match = re.fullmatch(r"(\d+)x(\d+)", text)
        if not match:
            raise argparse.ArgumentTypeError(f"'{text}' is not a size such as 800x600")
        pair = int(match.group(1)), int(match.group(2))
        if not all(16 <= side <= largest and side % 2 == 0 for side in pair):
            raise argparse.ArgumentTypeError(f"width and height must be even and lie between 16 and {largest}")
        return pair
    return read


def seconds(text):
    try:
        value = float(text)
    except ValueError:
        value = -1.0
    if not 0.0 <= value < 1e6:
        raise argparse.ArgumentTypeError(f"'{text}' is not a time in seconds")
    return value


def maker_of(options):
    """Which kind of thing is to be made goes by the ending of its name."""
    if options.sheet:
        if Path(options.sheet).suffix.lower() not in SHEET_ENDINGS:
            raise RenderError(f"'{options.sheet}': a contact sheet ends in " + " or ".join(SHEET_ENDINGS))
        return make_sheet
    if options.output is None:
        return make_video # only its checksum
    ending = Path(options.output).suffix
    if options.still is not None:
        if ending.lower() not in ("", ".png"):
            raise RenderError(f"'{options.output}': a still ends in .png")
        options.output = str(Path(options.output).with_suffix(".png"))
        return make_still
    if ending.lower() in VIDEO_FORMATS:
        return make_video
    # A folder's name may have a dot in it, but what looks like a file is hardly meant to be thousands of pictures.
    is_folder = options.output.endswith("/") or Path(options.output).is_dir()
    if not is_folder and ending.lower() in PICTURE_ENDINGS:
        raise RenderError(f"'{options.output}': one picture takes --still SECONDS, many take the name of a folder")
    if not is_folder and re.fullmatch(r"\.(?=.*[A-Za-z])\w{2,5}", ending):
        raise RenderError(f"'{options.output}': a video ends in .mp4 or .mkv, and pictures go into a folder")
    return make_pictures


def command_line():
    parser = argparse.ArgumentParser(
        prog="./render", formatter_class=argparse.RawDescriptionHelpFormatter,
        usage="./render [NAME] [OPTIONS] OUT",
        description="Renders a show offline: every frame, however slow the machine.",
        epilog="examples:\n"
               "  ./render show.mp4                        the whole show as a video with its music\n"
               "  ./render first first.mp4 --preset web    the show of shows/first, for a web page\n"
               "  ./render frames --from 30 --to 40        ten seconds as numbered PNG files\n"
               "  ./render star.png --still 138 --fast     one picture\n"
               "  ./render show.mkv --fps 60 --frameskip 2 effects run at 120 steps a second\n"
               "  ./render --contact-sheet sheet.png       a picture of the whole show, a frame every two seconds\n\n"
               "Ctrl+C ends the rendering and keeps what was written. README.md tells how long the whole show takes.")
    parser.add_argument("names", metavar="[NAME] OUT", nargs="*",
                        help="NAME: a show in shows/, or a path with a slash in it (the show of this tree). "
                             "OUT: a folder for numbered PNG files, or a video that ends in .mp4 or .mkv")
    parser.add_argument("--show", metavar="FOLDER",
                        help="a show as it lies there, with its program in bin/; nothing is built")
    parser.add_argument("--from", dest="start", type=seconds, metavar="SECONDS",
                        help="where in the show to begin (0; for a contact sheet 1, between the cuts)")
    parser.add_argument("--to", dest="end", type=seconds, metavar="SECONDS", help="where to end (the show's end)")
    way = parser.add_mutually_exclusive_group()
    way.add_argument("--exact", action="store_true",
                     help="run the show up to --from first, so that what lives from frame to frame is as in the whole "
                          "show (the default, but for contact sheets)")
    way.add_argument("--fast", action="store_true", help="begin at --from at once")
    parser.add_argument("--still", type=seconds, metavar="SECONDS",
                        help="write the one picture of that second to OUT.png")
    parser.add_argument("--contact-sheet", dest="sheet", metavar="OUT.png",
                        help="write one picture with a frame every two seconds (every 1/RATE with --fps)")
    parser.add_argument("--preset", choices=[name for name in PRESETS if name],
                        help="; ".join(f"{name}: {preset.about}" for name, preset in PRESETS.items() if name))
    parser.add_argument("--fps", type=ratio, metavar="RATE", help="frames a second: 25, 29.97 or 30000/1001 (30)")
    parser.add_argument("--frameskip", type=int, metavar="N",
                        help="frames drawn for each one written, so that what lives from frame to frame runs smoother (1)")
    parser.add_argument("--size", type=size(2048), metavar="WxH",
                        help="size of the pictures (the show's own, 800x600); "
                             f"{', '.join(FIXED_EFFECTS)} are made for 800x600 and look displaced at another")
    parser.add_argument("--scale", type=size(8192), metavar="WxH",
                        help="scale a video to this size: the way to a larger one, with all effects in place")
    parser.add_argument("--keep", action="store_true", help="keep the frames of a video too, in OUT.frames")
    parser.add_argument("--keep-finished", action="store_true",
                        help="do nothing where OUT is the finished video of this very show already")
    parser.add_argument("--resume", action="store_true",
                        help="go on with numbered pictures where an earlier rendering was stopped: what is there stays")
    parser.add_argument("--hash", action="store_true",
                        help="print a checksum of all frames' colours, the same for two runs on a machine; needs no OUT")
    return parser


def parse(arguments):
    parser = command_line()
    # Names may stand on both sides of options.
    options = parser.parse_intermixed_args(arguments)
    # With a place for the output of its own, what is left is the show.
    most = 1 if options.sheet else 2
    if len(options.names) > most:
        parser.error(f"'{options.names[most]}' is one name too many")
    options.output = options.names.pop() if options.names and not options.sheet else None
    options.name = options.names[0] if options.names else None
    if options.output is None and not options.sheet and not options.hash:
        parser.error("give OUT or --contact-sheet OUT.png")
    if options.name and options.show:
        parser.error("give either NAME or --show FOLDER")
    if options.still is not None and (options.sheet or not options.output):
        parser.error("--still needs OUT, and nothing else to be made")
    preset = PRESETS[options.preset]
    try:
        options.maker = maker_of(options)
    except RenderError as error:
        parser.error(str(error))
    is_video = options.maker is make_video and options.output
    if not is_video and (options.scale or options.preset or options.keep):
        parser.error("--scale, --preset and --keep are for videos")
    if is_video and Path(options.output).suffix.lower() not in preset.formats:
        parser.error(f"--preset {options.preset} is for " + " and ".join(preset.formats))
    if options.resume and options.maker is not make_pictures:
        parser.error("--resume is for numbered pictures")
    if options.hash and options.maker not in (make_video, make_pictures):
        parser.error("--hash is for videos and numbered pictures")
    if options.frameskip is None:
        # A sheet's frames lie far apart; what builds up over frames needs steps in between.
        options.frameskip = 24 if options.sheet and not options.fps else 1
    if not 1 <= options.frameskip <= 1000:
        parser.error("--frameskip must lie between 1 and 1000")
    if options.start is None:
        options.start = 1.0 if options.sheet else 0.0
    options.fps_numerator, options.fps_denominator = options.fps or preset.fps or ((1, 2) if options.sheet else (30, 1))
    options.fps = options.fps_numerator / options.fps_denominator
    return options
