"""How objects stand and move: Blender's transforms as chains of Y3D nodes.

Y3D is y up, Blender z up: a place (x, y, z) becomes (x, z, -y). Euler angles stay as they are, since the player turns
them itself. A node of Y3D scales after its rotation, Blender before; so an object whose scale is uneven becomes two
nodes, one that moves and turns and one below it that scales. What stands between an object and its parent becomes a
node of its own in the same manner.
"""

import math

from mathutils import Matrix, Quaternion

from . import curves, y3dfile

TOLERANCE = 1e-5


def is_near(a, b, tolerance=TOLERANCE):
    return all(abs(p - q) <= tolerance for row_a, row_b in zip(a, b) for p, q in zip(row_a, row_b))


def place(vector):
    return [vector[0], vector[2], 0 - vector[1]]


def turned(quaternion):
    return [quaternion.w, quaternion.x, quaternion.z, 0 - quaternion.y]


def node(name, position=(0, 0, 0), rotation=Quaternion(), scale=(1, 1, 1)):
    """A still dummy; all in Blender's axes."""
    result = y3dfile.Node(y3dfile.DUMMY, name)
    result.position = y3dfile.still(*place(position))
    result.rotation = y3dfile.still(*turned(rotation))
    result.scale = y3dfile.still(scale[0], scale[2], scale[1])
    return result


def eigenvectors(symmetric):
    """Eigenvalues and, as columns, eigenvectors of a symmetric 3x3 matrix, by Jacobi's rotations."""
    a, v = symmetric.copy(), Matrix.Identity(3)
    for _ in range(30):
        p, q = max(((0, 1), (0, 2), (1, 2)), key=lambda pair: abs(a[pair[0]][pair[1]]))
        if abs(a[p][q]) < 1e-12:
            break
        angle = 0.5 * math.atan2(2 * a[p][q], a[q][q] - a[p][p])
        turn = Matrix.Identity(3)
        turn[p][p] = turn[q][q] = math.cos(angle)
        turn[p][q], turn[q][p] = math.sin(angle), -math.sin(angle)
        a, v = turn.transposed() @ a @ turn, v @ turn
    return [a[i][i] for i in range(3)], v


def chain_of(matrix, name):
    """Still nodes, outermost first, that together are this transform: none for the identity, and two where it scales
    unevenly or shears (its singular values: turned, scaled along the parent's axes, turned)."""
    matrix = matrix.to_4x4()
    if is_near(matrix, Matrix.Identity(4)):
        return []
    linear, position = matrix.to_3x3(), matrix.translation
    squares, axes = eigenvectors(linear.transposed() @ linear)
    if axes.determinant() < 0:
        axes = -axes
    stretch = [math.sqrt(max(square, 0.0)) for square in squares]
    if linear.determinant() < 0:
        stretch[2] = -stretch[2]
    if min(abs(factor) for factor in stretch) < 1e-9:
        # Flat or shrunk to nothing: what can be told apart is told by Blender.
        position, rotation, scale = matrix.decompose()
        return [node(name + ".turn", position, rotation), node(name + ".scale", scale=scale)]
    # linear = turn * diag(stretch) * axes^T; a node is scale * rotation, so the outer one turns and the inner one does
    # the rest. An even stretch needs no inner node.
    if max(stretch) - min(stretch) <= TOLERANCE * max(abs(factor) for factor in stretch):
        return [node(name, position, (linear * (1 / stretch[0])).to_quaternion(), (stretch[0],) * 3)]
    turn = linear @ axes @ Matrix.Diagonal([1 / factor for factor in stretch])
    return [node(name + ".turn", position, turn.to_quaternion()),
            node(name + ".scale", rotation=axes.transposed().to_quaternion(), scale=stretch)]


def action_curves(owner):
    """The F-curves that animate a datablock, by (data path, index)."""
    animation = owner.animation_data
    if not animation or not animation.action:
        return {}
    action = animation.action
    found = getattr(action, "fcurves", None)
    if found is None or (not len(found) and getattr(action, "layers", None)):
        found = [fcurve for layer in action.layers for strip in layer.strips for bag in strip.channelbags
                 if bag.slot == animation.action_slot for fcurve in bag.fcurves]
    return {(fcurve.data_path, fcurve.array_index): fcurve for fcurve in found}


def has_drivers(owner, paths):
    animation = owner.animation_data
    return bool(animation) and any(driver.data_path in paths for driver in animation.drivers)


def uses_strips(owner):
    animation = owner.animation_data
    return bool(animation) and animation.use_nla and any(track.strips and not track.mute for track in animation.nla_tracks)


TRANSFORM_PATHS = ("location", "rotation_euler", "rotation_quaternion", "rotation_axis_angle", "scale",
                   "delta_location", "delta_rotation_euler", "delta_rotation_quaternion", "delta_scale")


def why_sampled(ob):
    """Why an object's movement cannot be taken from its F-curves, or None."""
    if any(not constraint.mute and constraint.influence > 0 for constraint in ob.constraints):
        return "constraints"
    if has_drivers(ob, TRANSFORM_PATHS):
        return "drivers"
    if uses_strips(ob):
        return "strips of the non-linear animation"
    if ob.parent and ob.parent_type != "OBJECT":
        return "a parent of the kind '%s'" % ob.parent_type
    if ob.rigid_body and ob.rigid_body.type == "ACTIVE":
        return "physics"
    animated = {path for path, _ in action_curves(ob)}
    if animated & set(TRANSFORM_PATHS[5:]) or not is_near([ob.delta_location, ob.delta_rotation_euler],
                                                          [(0, 0, 0), (0, 0, 0)]) \
            or not is_near([ob.delta_scale], [(1, 1, 1)]):
        return "delta transforms"
    if ob.rotation_mode not in ("XYZ", "QUATERNION") and animated & {"rotation_euler", "rotation_axis_angle"}:
        return "rotation in the order '%s'" % ob.rotation_mode
    return None


def from_curves(ob, seconds):
    """Position, rotation and scale curves of an object, in Y3D's axes, or None where a curve has to be sampled."""
    fcurves = action_curves(ob)

    def all_of(path, values):
        return [curves.convert(fcurves.get((path, index)), value, seconds) for index, value in enumerate(values)]

    x, y, z = all_of("location", ob.location)
    sx, sy, sz = all_of("scale", ob.scale)
    if ob.rotation_mode == "XYZ":
        rotation = all_of("rotation_euler", ob.rotation_euler)
    elif ob.rotation_mode == "QUATERNION":
        # Without curves Blender turns by the normalised value, as the player does with a base value.
        qw, qx, qy, qz = all_of("rotation_quaternion", ob.rotation_quaternion)
        rotation = [qw, qx, qz, qy and qy.negated()]
    elif ob.rotation_mode == "AXIS_ANGLE":
        angle, *axis = ob.rotation_axis_angle
        rotation = y3dfile.still(*turned(Quaternion(axis, angle)))
    else:
        rotation = y3dfile.still(*turned(ob.rotation_euler.to_quaternion()))
    tracks = [x, z, y and y.negated()], rotation, [sx, sz, sy]
    return None if any(curve is None for track in tracks for curve in track) else tracks


def from_samples(times, matrices):
    """The same of matrices at rising times, and how far they are from what position, rotation and scale can tell."""
    rows, fault, last = [], 0.0, None
    for matrix in matrices:
        position, rotation, scale = matrix.decompose()
        if last is not None and rotation.dot(last) < 0:
            rotation.negate()
        last = rotation
        told = Matrix.LocRotScale(position, rotation, scale)
        size = max(1e-9, max(abs(value) for row in matrix.to_3x3() for value in row))
        fault = max(fault, max(abs(a - b) for r, s in zip(told, matrix) for a, b in zip(r, s)) / size)
        rows.append((place(position), turned(rotation), [scale[0], scale[2], scale[1]]))
    tracks = [[curves.sampled(times, [row[track][axis] for row in rows]) for axis in range(len(rows[0][track]))]
              for track in range(3)]
    return tracks, fault


def is_unturned(rotation):
    return all(curve.is_still() for curve in rotation) and all(
        abs(curve.value()) <= TOLERANCE for curve in rotation[-3:])


def are_even(scale):
    values = [curve.value() for curve in scale]
    return all(curve.is_still() for curve in scale) and max(values) - min(values) <= TOLERANCE * max(map(abs, values))


def chain(name, kind, tracks):
    """The nodes of an object, outermost first. The last one is of the given kind and has the object's name."""
    position, rotation, scale = tracks
    last = y3dfile.Node(kind, name)
    if is_unturned(rotation) or are_even(scale):
        last.position, last.rotation, last.scale = position, rotation, scale
        return [last]
    outer = y3dfile.Node(y3dfile.DUMMY, name + ".turn")
    outer.position, outer.rotation = position, rotation
    last.scale = scale
    return [outer, last]
