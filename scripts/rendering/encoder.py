"""ffmpeg, which makes a video of raw frames and the music."""

import json
import subprocess

from . import RenderError
from .clock import single, time_expression

VIDEO_FORMATS = {".mp4": "mp4", ".mkv": "matroska"}


def ffmpeg(*arguments, **more):
    """Starts ffmpeg, out of reach of the terminal's Ctrl+C."""
    return subprocess.Popen(["ffmpeg", "-hide_banner", "-loglevel", "error", "-y", *map(str, arguments)],
                            start_new_session=True, **more)


def scaling(size, bars):
    """Filters that scale to a size, with black bars where the shapes differ or without."""
    width, height = size
    if not bars:
        return [f"scale={width}:{height}:flags=lanczos"]
    return [f"scale={width}:{height}:flags=lanczos:force_original_aspect_ratio=decrease:force_divisible_by=2",
            f"pad={width}:{height}:-1:-1:color=black", "setsar=1"]


class Encoder:
    """ffmpeg, which reads raw frames from a pipe. It writes beside the place of the video; `close` gives what is to go
    there. `hashed` is the sum over the frames' colours, if it was asked for."""

    def __init__(self, plan, temporary, kept):
        options, times, preset = plan.options, plan.times, plan.preset
        self.plan = plan
        self.part = self.between = None
        self.hashed = ""
        self.origin = single(options.start)
        self.rate = f"{options.fps_numerator}/{options.fps_denominator}"
        command = ["-f", "rawvideo", "-pixel_format", "bgra", "-video_size", f"{plan.width}x{plan.height}",
                   "-framerate", self.rate, "-i", "pipe:0"]
        if plan.output:
            self.part = plan.output.with_name(plan.output.name + ".part")
            self.music = plan.show.save_music(temporary)
            self.kind = VIDEO_FORMATS[plan.output.suffix.lower()]
            filters = [f"settb=1/90000,setpts='round(({time_expression(times, self.origin)})/TB)'"]
            if preset.bitrate:
                # Two passes need the frames twice, so they lie lossless in between.
                self.between = plan.output.with_name(plan.output.name + ".frames.part")
                command += ["-vf", filters[0], "-c:v", "ffv1", "-level", "3", "-pix_fmt", "bgr0", "-fps_mode", "vfr",
                            "-enc_time_base", "1/90000", "-f", "nut", self.between]
            else:
                if self.music:
                    command += ["-ss", f"{self.origin:.6f}", "-i", self.music]
                if options.scale:
                    filters += scaling(options.scale, False)
                command += ["-map", "0:v", "-vf", ",".join(filters), *preset.video.split(), "-fps_mode", "vfr",
                            "-enc_time_base", "1/90000", "-video_track_timescale", "90000", *self._rest()]
                if self.kind == "mp4":
                    # Each frame gets its length besides its time: players leave out a last frame that has none.
                    length = f"duration=round({1 / options.fps:.9f}/TB)"
                    command[-1:-1] = ["-bsf:v", f"setts=pts=PTS:dts=DTS:{length}"]
        if kept:
            command += ["-map", "0:v", "-fps_mode", "passthrough", "-pix_fmt", "rgba", "-start_number", "0",
                        kept / "frame.%010d.png"]
        if options.hash:
            command += ["-map", "0:v", "-fps_mode", "passthrough", "-pix_fmt", "rgb24", "-c:v", "rawvideo",
                        "-f", "hash", "-hash", "sha256", temporary / "hash"]
        self.hash_file = temporary / "hash"
        self.process = ffmpeg(*command, stdin=subprocess.PIPE)
        self.pipe = self.process.stdin.fileno()

    def _rest(self):
        """The sound, as long as the pictures: padded where the music is over before, cut where rendering is stopped;
        and the file."""
        plan = self.plan
        sound = []
        if self.music:
            length = plan.times[-1] - self.origin + 1 / plan.options.fps
            sound = ["-map", "1:a", *plan.preset.audio.split(), "-af", "apad", "-shortest", "-t", f"{length:.6f}"]
        flags = ["-movflags", "+faststart"] if self.kind == "mp4" else []
        return [*sound, *flags, "-metadata", f"comment={plan.mark()}", "-f", self.kind, self.part]

    def _two_passes(self):
        plan, log = self.plan, self.hash_file.with_name("passes")
        size = plan.options.scale or plan.preset.size
        bitrate = int(plan.preset.bitrate * size[0] * size[1] / (plan.preset.size[0] * plan.preset.size[1]))
        video = ["-vf", ",".join(scaling(size, True)), "-fps_mode", "cfr", "-r", self.rate, *plan.preset.video.split(),
                 "-b:v", bitrate, "-maxrate", 2 * bitrate, "-bufsize", 2 * bitrate, "-passlogfile", log]
        sound = ["-ss", f"{self.origin:.6f}", "-i", self.music] if self.music else []
        for words in (["-map", "0:v", *video, "-pass", 1, "-f", "null", "-"],
                      ["-map", "0:v", *video, "-pass", 2, *self._rest()]):
            self.process = ffmpeg("-i", self.between, *sound, *words, stdin=subprocess.DEVNULL)
            if self.process.wait() != 0:
                raise RenderError("ffmpeg could not write the video; its message stands above")

    def close(self):
        """Ends the video in order, and gives the path of the whole file."""
        if self.process.wait() != 0:
            raise RenderError("ffmpeg could not write the video; its message stands above")
        if self.between:
            self._two_passes()
        if self.hash_file.exists():
            self.hashed = self.hash_file.read_text().strip()
        return self.part

    def drop(self):
        """Ends ffmpeg without a video."""
        self.process.kill()
        self.process.wait()
        if self.process.stdin:
            self.process.stdin.close()
        for path in (self.part, self.between):
            if path:
                path.unlink(missing_ok=True)


def finished_video(plan):
    """Is there a video already that this plan would make, with all of its frames?"""
    if not plan.output.is_file():
        return False
    probe = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v", "-count_packets", "-show_entries",
                            "stream=nb_read_packets:format_tags=comment", "-of", "json", str(plan.output)],
                           stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    try:
        found = json.loads(probe.stdout)
        marks = [value for key, value in found["format"]["tags"].items() if key.lower() == "comment"]
        return marks == [plan.mark()] and int(found["streams"][0]["nb_read_packets"]) == len(plan.times)
    except (ValueError, KeyError, IndexError):
        return False
