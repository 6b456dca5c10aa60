"""Blender's materials and pictures as those of Y3D.

From a Principled shader: the colour under light is the base colour less its metallic share. The highlight follows the
Blinn-Phong model: with a = roughness squared, its exponent is n = 2 / a^2 - 2, of which Y3D's hardness is the double
(254 at most), and its colour is the reflectance at normal incidence times (n + 8) / 8, 1 at most. Colours go from
Blender's linear values to those of the screen.
"""

import os
import shutil
import struct
import zlib

from . import y3dfile


def screen(value):
    """A linear value as the screen shows it (sRGB), limited to 0 to 1."""
    value = min(max(value, 0.0), 1.0)
    return 12.92 * value if value <= 0.0031308 else 1.055 * value ** (1 / 2.4) - 0.055


def screen_color(color, factor=1.0):
    return tuple(screen(channel * factor) for channel in color[:3]) + (1.0,)


def socket(node, *names):
    return next((node.inputs[name] for name in names if name in node.inputs), None)


def number(node, *names, default=0.0):
    found = socket(node, *names)
    return default if found is None else found.default_value


def source(found):
    """The node that a socket takes its value from, behind reroutes, or None."""
    while found is not None and found.is_linked:
        node = found.links[0].from_node
        if node.type != "REROUTE":
            return node
        found = node.inputs[0]
    return None


class Pictures:
    """The pictures of an export: each Blender image is written once, beside the file, as PNG or JPEG."""

    def __init__(self, folder, tell):
        self.folder = folder
        self.tell = tell
        self.names = {}     # Blender's image name to file name
        self.taken = set()

    def add(self, image):
        """Writes the image and returns its name, or None where there is nothing to write."""
        if image.name in self.names:
            return image.name
        if not image.has_data and not image.pixels:
            self.tell("picture '%s' has no data; left out" % image.name)
            return None
        path = os.path.realpath(image.filepath_from_user()) if image.filepath else ""
        ending = os.path.splitext(path)[1].lower()
        kept = ending in (".png", ".jpg", ".jpeg") and is_plain(path, ending) and not image.is_dirty
        stem = os.path.splitext(os.path.basename(path))[0] if path else image.name
        stem = "".join(letter if letter.isalnum() or letter in "-_." else "_" for letter in stem) or "picture"
        name, count = stem, 1
        while name.lower() in self.taken:
            count += 1
            name = "%s-%d" % (stem, count)
        self.taken.add(name.lower())
        file_name = name + (".png" if not kept or ending == ".png" else ".jpg")
        target = os.path.join(self.folder, file_name)
        os.makedirs(self.folder, exist_ok=True)
        if not kept:
            write_png(image, target)
        elif os.path.realpath(target) != path:
            shutil.copyfile(path, target)
        self.names[image.name] = file_name
        return image.name


def is_plain(path, ending):
    """Is this file one that the player reads as it is: any JPEG, or a PNG of 8 bits a channel, RGB or RGBA?"""
    try:
        with open(path, "rb") as file:
            head = file.read(26)
    except OSError:
        return False
    if ending != ".png":
        return head[:2] == b"\xff\xd8"
    return head[:8] == b"\x89PNG\r\n\x1a\n" and len(head) == 26 and head[24] == 8 and head[25] in (2, 6)


def write_png(image, target):
    """Writes an image's pixels, which Blender keeps bottom row first, as an RGBA PNG of 8 bits."""
    width, height = image.size
    values = [0.0] * (width * height * image.channels)
    image.pixels.foreach_get(values)
    channels = image.channels
    linear = image.is_float
    rows = []
    for y in range(height - 1, -1, -1):
        row = bytearray(b"\0")
        for start in range(y * width * channels, (y + 1) * width * channels, channels):
            pixel = values[start:start + channels]
            color = (pixel * 3)[:3] if channels < 3 else pixel[:3]
            if linear:
                color = [screen(value) for value in color]
            alpha = pixel[3] if channels == 4 else 1.0
            row += bytes(min(255, max(0, int(value * 255 + 0.5))) for value in (*color, alpha))
        rows.append(bytes(row))

    def part(name, payload):
        return struct.pack(">I", len(payload)) + name + payload + struct.pack(">I", zlib.crc32(name + payload))

    with open(target, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" + part(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0))
                   + part(b"IDAT", zlib.compress(b"".join(rows))) + part(b"IEND", b""))


def surface(material):
    """The shader node of a material's surface, or None."""
    if not material.use_nodes or not material.node_tree:
        return None
    outputs = [node for node in material.node_tree.nodes if node.type == "OUTPUT_MATERIAL" and node.is_active_output]
    return source(outputs[0].inputs["Surface"]) if outputs else None


def take_picture(result, color, material, pictures, tell):
    """Takes the picture or the colour of a colour socket into `diffuse`."""
    node = source(color)
    if node is not None and node.type == "TEX_IMAGE" and node.image:
        result.image = pictures.add(node.image)
        result.diffuse = (1, 1, 1, 1)
        return
    if node is not None:
        tell("material '%s': its colour comes from a node that is no picture; its own colour is used" % material.name)
    result.diffuse = screen_color(color.default_value)


def convert(material, pictures, tell):
    """The Y3D material of a Blender material."""
    result = y3dfile.Material(material.name)
    node = surface(material)
    if node is None:
        result.diffuse = screen_color(material.diffuse_color)
    elif node.type in ("EMISSION", "BACKGROUND"):
        result.shadeless = True
        take_picture(result, node.inputs["Color"], material, pictures, tell)
        if not result.image:
            result.diffuse = screen_color(node.inputs["Color"].default_value, node.inputs["Strength"].default_value)
    elif node.type == "BSDF_DIFFUSE":
        take_picture(result, node.inputs["Color"], material, pictures, tell)
    elif node.type == "BSDF_PRINCIPLED":
        principled(result, node, material, pictures, tell)
    else:
        tell("material '%s': the shader '%s' is not one of Y3D's; a plain colour is used" % (material.name, node.name))
        result.diffuse = screen_color(material.diffuse_color)
    result.ambient = result.diffuse
    return result


def principled(result, node, material, pictures, tell):
    color = socket(node, "Base Color")
    take_picture(result, color, material, pictures, tell)
    base = (1, 1, 1) if result.image else tuple(color.default_value)[:3]
    metallic = number(node, "Metallic")
    if not result.image:
        result.diffuse = screen_color(base, 1 - metallic)
    alpha = max(number(node, "Roughness", default=0.5), 0.05) ** 2
    exponent = 2 / alpha ** 2 - 2
    result.hardness = min(254.0, 2 * exponent)
    dielectric = 0.08 * number(node, "Specular", "Specular IOR Level", default=0.5)
    reflected = [dielectric + (channel - dielectric) * metallic for channel in base]
    exponent = result.hardness / 2
    result.specular = tuple(min(1.0, value * (exponent + 8) / 8) for value in reflected) + (1.0,)
    emission = socket(node, "Emission Color", "Emission")
    if emission is not None:
        result.emissive = screen_color(emission.default_value, number(node, "Emission Strength", default=1.0))
        if emission.is_linked:
            result.emissive = (0, 0, 0, 1)
            tell("material '%s': a picture of its own light is left out" % material.name)
    opacity = socket(node, "Alpha")
    if opacity is not None and (opacity.is_linked or opacity.default_value < 1):
        tell("material '%s': transparency is left out" % material.name)
