"""F-curves as curves of Y3D, exact where the format can hold them.

A curve of Y3D has one way of interpolation for all its segments, shortens the two handles of a segment when together
they are longer than it, and knows Blender's constant and linear extrapolation and its endless cycles. So mixed curves
become Bezier curves: a straight segment with its handles on the line, a step with a second key at its end. A segment
whose handles overlap is split, which leaves its shape as it is.
"""

from . import y3dfile

EASINGS = {"CONSTANT": y3dfile.CONSTANT, "LINEAR": y3dfile.LINEAR, "BEZIER": y3dfile.BEZIER}
CYCLES = {"REPEAT": y3dfile.CYCLIC, "REPEAT_OFFSET": y3dfile.CYCLIC_OFFSET}


def extrapolation(fcurve):
    """How the curve goes on outside of its keys, or None where Y3D has no such way."""
    modifiers = [modifier for modifier in fcurve.modifiers if not modifier.mute]
    if not modifiers:
        return y3dfile.STRAIGHT if fcurve.extrapolation == "LINEAR" else y3dfile.HOLD
    cycles = modifiers[0]
    endless = (len(modifiers) == 1 and cycles.type == "CYCLES" and cycles.mode_before == cycles.mode_after
               and cycles.mode_before in CYCLES and not cycles.cycles_before and not cycles.cycles_after
               and not cycles.use_restricted_range and not cycles.use_influence)
    return CYCLES[cycles.mode_before] if endless else None


def corrected(segment):
    """The control points of a segment as Blender evaluates them: no handle reaches beyond the other key."""
    a, out, into, b = segment
    length = b[0] - a[0]

    def shortened(key, handle):
        reach = abs(handle[0] - key[0])
        if reach <= length:
            return handle
        share = length / reach
        return key[0] + share * (handle[0] - key[0]), key[1] + share * (handle[1] - key[1])

    return a, shortened(a, out), shortened(b, into), b


def split(segment):
    """The segments, end to end, of the same shape as this one, whose handles do not overlap in time."""
    a, out, into, b = segment
    if abs(out[0] - a[0]) + abs(b[0] - into[0]) <= (b[0] - a[0]) * (1 + 1e-6):
        return [segment]

    def middle(p, q):
        return (p[0] + q[0]) / 2, (p[1] + q[1]) / 2

    first, inner, last = middle(a, out), middle(out, into), middle(into, b)
    left, right = middle(first, inner), middle(inner, last)
    centre = middle(left, right)
    return split((a, first, left, centre)) + split((centre, right, last, b))


def on_the_line(a, b):
    return (a, (a[0] + (b[0] - a[0]) / 3, a[1] + (b[1] - a[1]) / 3),
            (b[0] - (b[0] - a[0]) / 3, b[1] - (b[1] - a[1]) / 3), b)


def segments(points):
    """The Bezier segments between (key, handle in, handle out, interpolation)s. A step is one of the length 0."""
    result = []
    for (a, _, out, way), (b, into, _, _) in zip(points, points[1:]):
        if way == y3dfile.BEZIER:
            result += split(corrected((a, out, into, b)))
        elif way == y3dfile.LINEAR:
            result.append(on_the_line(a, b))
        else:
            held = (b[0], a[1])
            result += [on_the_line(a, held), (held, held, b, b)]
    return result


def outer_handle(points, end, before):
    """Where the straight line outside of the keys passes: a third of a second away from the first or last key."""
    key, into, out, way = points[end]
    other = points[1 if before else -2][0] if len(points) > 1 else key
    slope = 0.0
    if way == y3dfile.BEZIER:
        handle = into if before else out
        if handle[0] != key[0]:
            return handle
    elif way == y3dfile.LINEAR and other[0] != key[0]:
        slope = (other[1] - key[1]) / (other[0] - key[0])
    reach = -1 / 3 if before else 1 / 3
    return key[0] + reach, key[1] + reach * slope


def convert(fcurve, base, seconds):
    """The curve of Y3D that equals an F-curve, or None where it has to be sampled. `base` is the value of a property
    without a curve, `seconds` turns a frame into a time."""
    if fcurve is None or fcurve.mute or (not fcurve.keyframe_points and not fcurve.sampled_points):
        return y3dfile.Curve(base)
    outside = extrapolation(fcurve)
    keys = fcurve.keyframe_points
    if outside is None or not keys or any(key.interpolation not in EASINGS for key in keys):
        return None

    def point(vector):
        return seconds(vector[0]), vector[1]

    points = [(point(key.co), point(key.handle_left), point(key.handle_right), EASINGS[key.interpolation])
              for key in keys]
    ways = {way for _, _, _, way in (points[:-1] or points)}
    way = ways.pop() if len(ways) == 1 else y3dfile.BEZIER
    if way == y3dfile.CONSTANT and outside == y3dfile.STRAIGHT and points[-1][3] != y3dfile.CONSTANT:
        way = y3dfile.BEZIER    # steps, and behind the last of them a line
    first, last = outer_handle(points, 0, True), outer_handle(points, -1, False)
    if way == y3dfile.BEZIER:
        parts = segments(points)
    else:
        parts = [on_the_line(a[0], b[0]) for a, b in zip(points, points[1:])]
    starts = [points[0][0]] + [part[3] for part in parts]
    incoming = [first] + [part[2] for part in parts]
    outgoing = [part[1] for part in parts] + [last]
    return y3dfile.Curve(base, [i + key + o for i, key, o in zip(incoming, starts, outgoing)], way, outside)


def sampled(times, values, tolerance=1e-5):
    """A curve of straight lines through values at rising times. A sample that lies on the line is left out."""
    scale = tolerance * max(1.0, max(abs(value) for value in values))
    if max(values) - min(values) <= scale:
        return y3dfile.Curve(values[0])
    kept = [0]
    low, high = float("-inf"), float("inf")     # slopes from the last kept sample that pass all samples since
    for i in range(1, len(values)):
        run = times[i] - times[kept[-1]]
        slope = (values[i] - values[kept[-1]]) / run
        if not low <= slope <= high:
            kept.append(i - 1)
            run = times[i] - times[i - 1]
            slope = (values[i] - values[i - 1]) / run
            low, high = float("-inf"), float("inf")
        low, high = max(low, slope - scale / run), min(high, slope + scale / run)
    kept.append(len(values) - 1)
    points = [(times[i], values[i]) for i in kept]
    parts = [on_the_line(a, b) for a, b in zip(points, points[1:])]
    incoming = [points[0]] + [part[2] for part in parts]
    outgoing = [part[1] for part in parts] + [points[-1]]
    keys = [i + key + o for i, key, o in zip(incoming, points, outgoing)]
    return y3dfile.Curve(values[0], keys, y3dfile.LINEAR)
