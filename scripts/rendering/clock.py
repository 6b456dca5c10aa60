"""The clock of the dump: where each frame lies in the music.

The program's clock starts at the configured start and takes one step before the first frame, and it is a running sum
in single precision, which drifts at most rates. So the clock is computed here with the same arithmetic, and each frame
of a video carries its true time.
"""

import struct


def single(value):
    """The nearest single-precision number."""
    return struct.unpack("f", struct.pack("f", value))[0]


def frame_times(start, stop, fps, frameskip):
    """The show time of every dumped frame, from the same single-precision sum that the program runs."""
    step = (1.0 / fps) / frameskip
    now = single(start)
    times = []
    rendered = 0
    while True:
        now = single(now + step)
        if now > stop:
            return times
        if rendered % frameskip == 0:
            times.append(now)
        rendered += 1


def time_expression(times, origin):
    """An ffmpeg expression in N that gives each frame's time from `origin`: a polyline through the frames, split at its
    worst point (Douglas-Peucker) until it is exact to a fifth of a millisecond. A few pieces do, since the sum drifts
    evenly as long as its exponent stays the same."""
    if len(times) < 2:
        return f"{times[0] - origin:.9f}"
    corners = {0, len(times) - 1}
    stretches = [(0, len(times) - 1)]
    while stretches:
        first, last = stretches.pop()
        slope = (times[last] - times[first]) / (last - first)
        worst = max(range(first, last + 1), key=lambda n: abs(times[first] + slope * (n - first) - times[n]))
        if abs(times[first] + slope * (worst - first) - times[worst]) > 2e-4:
            corners.add(worst)
            stretches += [(first, worst), (worst, last)]
    corners = sorted(corners)
    expression = ""
    for first, last in zip(corners, corners[1:]):
        slope = (times[last] - times[first]) / (last - first)
        line = f"{times[first] - origin:.9f}+(N-{first})*{slope:.12f}"
        expression = f"if(gte(N,{first}),{line},{expression})" if expression else line
    return expression
