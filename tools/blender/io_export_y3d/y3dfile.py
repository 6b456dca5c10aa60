"""The bytes of a Y3D file: the objects that a file holds, and how each of them is written.

A file is a header of six bytes and a tree of chunks: a 16-bit identifier, a 32-bit length unless the low four bits of
the identifier stand for a type of fixed size, and the payload. All numbers are little-endian. Space is y up, angles are
radians, times are seconds.
"""

import array
import struct
import sys

MAIN = 0x1000
MESH = 0x2000
SUBMESH = 0x2200
IMAGE = 0x4000
SCENE = 0x5000
CAMERA = 0x5110
MESH_INSTANCE = 0x5120
DUMMY = 0x5130
LIGHT = 0x5140
LIGHT_DISTANCE = 0x5150
LIGHT_FLAG = 0x5151
LIGHT_ENERGY = 0x5160
MATERIAL = 0x6000
ATTRIBUTE = 0x6100
SHADELESS = 0x6101
DEFAULT_ON = 0x6111
TEXTURE = 0x7000
TEXTURE_VALUE = 0x7001
POSITIONS = 0xFF00
UVWS = 0xFF10
INDICES = 0xFF30
NORMALS = 0xFF50
MATERIAL_REFERENCE = 0xFF80
FLOAT = 0xF004
VECTOR = 0xF006
COLOR = 0xF007
NAME = 0xF010
BOX = 0xF020
FILE_NAME = 0xF020
IMAGE_NAME = 0xF030
MESH_NAME = 0xF040
MATERIAL_NAME = 0xF050
POSITION = 0xFA00
ROTATION = 0xFA10
SCALE = 0xFA20
LIGHT_COLOR = 0xFA30
FOV = 0xFA40
CURVES = (0xFB00, 0xFB10, 0xFB20, 0xFB30)

# Payload sizes of the types that the low four bits of an identifier name; such chunks have no length on disk.
FIXED_SIZES = {1: 1, 2: 2, 3: 4, 4: 4, 5: 8, 6: 12, 7: 16}

CONSTANT, LINEAR, BEZIER = range(3)
HOLD, STRAIGHT, CYCLIC, CYCLIC_OFFSET = range(4)

# The reader follows a tree no deeper than this, counted from the main chunk.
MAX_LEVELS = 1000


def chunk(identifier, payload):
    """One chunk. An empty payload leaves no trace."""
    if identifier & 15 in FIXED_SIZES:
        assert len(payload) == FIXED_SIZES[identifier & 15]
        return struct.pack("<H", identifier) + payload
    return struct.pack("<HI", identifier, len(payload)) + payload if payload else b""


def text(identifier, value):
    return chunk(identifier, value.encode("utf-8") + b"\0")


def floats(identifier, values):
    packed = array.array("f", values)
    if sys.byteorder == "big":
        packed.byteswap()
    return chunk(identifier, packed.tobytes())


class Curve:
    """One animated number. `keys` are (in time, in value, time, value, out time, out value), in ascending time."""

    def __init__(self, base=0.0, keys=(), interpolation=BEZIER, extrapolation=HOLD):
        self.base = base
        self.keys = list(keys)
        self.interpolation = interpolation
        self.extrapolation = extrapolation

    def negated(self):
        keys = [(a, 0 - b, c, 0 - d, e, 0 - f) for a, b, c, d, e, f in self.keys]
        return Curve(0 - self.base, keys, self.interpolation, self.extrapolation)

    def moved(self, distance):
        keys = [(a, b + distance, c, d + distance, e, f + distance) for a, b, c, d, e, f in self.keys]
        return Curve(self.base + distance, keys, self.interpolation, self.extrapolation)

    def is_still(self):
        return all(key[1] == key[3] == key[5] == self.keys[0][3] for key in self.keys)

    def value(self):
        """What a still curve gives at all times."""
        return self.keys[0][3] if self.keys else self.base

    def write(self, identifier):
        if not self.keys:
            return b""
        numbers = [number for key in self.keys for number in key]
        head = struct.pack("<BB", self.interpolation, self.extrapolation)
        return chunk(identifier, head + struct.pack("<%df" % len(numbers), *numbers))


def track(identifier, curves):
    """The chunk of a track of one to four curves. Three curves under ROTATION are Euler angles, four a quaternion."""
    base = {1: FLOAT, 3: VECTOR, 4: COLOR}[len(curves)]
    first = 0 if len(curves) == 4 else 1
    payload = b"".join(curve.write(CURVES[first + i]) for i, curve in enumerate(curves))
    return chunk(identifier, payload + floats(base, [curve.base for curve in curves]))


def still(*values):
    return [Curve(value) for value in values]


class Node:
    """A node of the scene's tree: position and scale of three curves, rotation of three (Euler, in Blender's axes) or
    of four (quaternion, w first)."""

    def __init__(self, kind, name):
        self.kind = kind
        self.name = name
        self.position = still(0, 0, 0)
        self.rotation = still(1, 0, 0, 0)
        self.scale = still(1, 1, 1)
        self.children = []
        self.mesh = None            # MESH_INSTANCE: the mesh's name
        self.references = {}        # MESH_INSTANCE: submesh index to the name of another material
        self.fov = still(0)         # CAMERA
        self.color = still(1, 1, 1, 1)  # LIGHT, as are the next two
        self.energy = still(0)
        self.distance = still(0)

    def write(self):
        payload = b""
        if self.kind == CAMERA:
            payload += track(FOV, self.fov)
        elif self.kind == MESH_INSTANCE:
            payload += text(MESH_NAME, self.mesh)
            for index, name in sorted(self.references.items()):
                payload += chunk(MATERIAL_REFERENCE, struct.pack("<i", index) + name.encode("utf-8") + b"\0")
        elif self.kind == LIGHT:
            payload += track(LIGHT_COLOR, self.color) + track(LIGHT_ENERGY, self.energy)
            payload += track(LIGHT_DISTANCE, self.distance) + chunk(LIGHT_FLAG, b"\0")
        payload += text(NAME, self.name)
        payload += track(POSITION, self.position) + track(ROTATION, self.rotation) + track(SCALE, self.scale)
        return chunk(self.kind, payload + b"".join(child.write() for child in self.children))


class Submesh:
    """Triangles of one material. `positions`, `normals` and `uvs` are flat lists of three numbers a vertex; `uvs` may
    be empty. `indices` has three vertices a triangle, counter-clockwise seen from outside."""

    def __init__(self, material, positions, normals, uvs, indices):
        self.material = material
        self.positions = positions
        self.normals = normals
        self.uvs = uvs
        self.indices = indices

    def box(self):
        corners = [self.positions[axis::3] for axis in range(3)]
        return [min(values) for values in corners] + [max(values) for values in corners]

    def write(self):
        payload = text(MATERIAL_NAME, self.material) + floats(BOX, self.box())
        payload += chunk(INDICES, struct.pack("<%dI" % len(self.indices), *self.indices))
        payload += floats(POSITIONS, self.positions) + floats(NORMALS, self.normals) + floats(UVWS, self.uvs)
        return chunk(SUBMESH, payload)


class Mesh:
    def __init__(self, name, submeshes):
        self.name = name
        self.submeshes = submeshes

    def write(self):
        boxes = [submesh.box() for submesh in self.submeshes]
        box = [min(b[i] for b in boxes) for i in range(3)] + [max(b[i] for b in boxes) for i in range(3, 6)]
        payload = text(NAME, self.name) + floats(BOX, box)
        return chunk(MESH, payload + b"".join(submesh.write() for submesh in self.submeshes))


class Material:
    """Colours are red, green, blue, alpha. `image` is the name of an Image, or None."""

    def __init__(self, name):
        self.name = name
        self.shadeless = False
        self.diffuse = (0.8, 0.8, 0.8, 1)
        self.ambient = (0.8, 0.8, 0.8, 1)
        self.specular = (0, 0, 0, 1)
        self.emissive = (0, 0, 0, 1)
        self.hardness = 0.0         # twice the exponent of the highlight, 0 to 254
        self.image = None

    def write(self):
        payload = text(NAME, self.name) + chunk(SHADELESS, bytes([self.shadeless])) + chunk(DEFAULT_ON, b"\1")
        for name, color in (("diffuse", self.diffuse), ("ambient", self.ambient), ("specular", self.specular),
                            ("emissive", self.emissive), ("hardness", (self.hardness, 0, 0, 0))):
            attribute = text(NAME, name) + floats(COLOR, color)
            if name == "diffuse" and self.image:
                attribute += chunk(TEXTURE, text(NAME, self.image) + text(IMAGE_NAME, self.image)
                                   + chunk(TEXTURE_VALUE, b"\0"))
            payload += chunk(ATTRIBUTE, attribute)
        return chunk(MATERIAL, payload)


def scene_file(name, meshes, materials, images, nodes):
    """The bytes of a whole file. `images` maps names to file names."""
    payload = b"".join(mesh.write() for mesh in meshes) + b"".join(material.write() for material in materials)
    for image, file_name in images.items():
        payload += chunk(IMAGE, text(NAME, image) + text(FILE_NAME, file_name))
    payload += chunk(SCENE, text(NAME, name) + b"".join(node.write() for node in nodes))
    return b"Y3DF" + bytes([0, 4]) + chunk(MAIN, payload)
