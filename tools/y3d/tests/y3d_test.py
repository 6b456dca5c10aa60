#!/usr/bin/env python3
"""Runs bin/y3d (first argument) on files made here, and looks at outputs and exit statuses."""

import json
import os
import re
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

TOOL = sys.argv.pop(1)


def chunk(identifier, *payload):
    data = b"".join(payload)
    has_length = identifier & 15 == 0 or identifier & 15 > 7
    return struct.pack("<H", identifier) + (struct.pack("<I", len(data)) if has_length else b"") + data


def name(text, identifier=0xF010):
    return chunk(identifier, text if isinstance(text, bytes) else text.encode(), b"\0")


def floats(*values):
    return struct.pack("<%df" % len(values), *values)


def scene_file(*children):
    return b"Y3DF\0\4" + chunk(0x1000, *children)


BOX = chunk(0xF020, floats(0, 0, 0, 1, 1, 0))
CORNERS = floats(0, 0, 0, 1, 0, 0, 0, 1, 0)
INDICES = chunk(0xFF30, struct.pack("<3I", 0, 1, 2))
POSITIONS = chunk(0xFF00, CORNERS)
GEOMETRY = BOX + INDICES + POSITIONS
TRACKS = chunk(0xFA00, chunk(0xF006, floats(0, 0, 0))) + chunk(0xFA10, chunk(0xF007, floats(1, 0, 0, 0))) + \
    chunk(0xFA20, chunk(0xF006, floats(1, 1, 1)))
COMMON = name("n") + TRACKS


def submesh(*chunks, material="mat"):
    return chunk(0x2200, name(material, 0xF050), *chunks)


def mesh(*chunks):
    return chunk(0x2000, name("tri"), *chunks)


def material(*attributes):
    return chunk(0x6000, name("mat"), chunk(0x6101, b"\1"), chunk(0x6111, b"\1"), *attributes)


def attribute(text, *textures, color=(1, 1, 1, 1)):
    return chunk(0x6100, name(text), chunk(0xF007, floats(*color)), *textures)


def texture(image):
    return chunk(0x7000, name("tex"), name(image, 0xF030), chunk(0x7001, b"\0"))


def instance(*chunks, of="tri"):
    return chunk(0x5120, name(of, 0xF040), *chunks)


IMAGE = chunk(0x4000, name("img"), name("a.png", 0xF020))
CAMERA = chunk(0x5110, chunk(0xFA40, chunk(0xF004, floats(1))), name("eye"), TRACKS)
MESH = mesh(BOX, submesh(GEOMETRY))
MATERIAL = material(attribute("diffuse", texture("img")))
INSTANCE = instance(name("obj"), TRACKS)


def light(*chunks, distance=20, curve=b""):
    return chunk(0x5140, chunk(0xFA30, chunk(0xF007, floats(1, 1, 1, 1))), chunk(0x5160, chunk(0xF004, floats(1))),
                 chunk(0x5150, curve, chunk(0xF004, floats(distance))), chunk(0x5151, b"\0"), COMMON, *chunks)


def scene(*nodes, text="Scene"):
    return chunk(0x5000, name(text), *nodes)


NORMALS = chunk(0xFF50, floats(0, 0, 1) * 3)
LIT = chunk(0x6000, name("mat"), chunk(0x6101, b"\0"), attribute("diffuse", texture("img")))


def picture(color_type, depth, pixel):
    def part(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    palette = part(b"PLTE", b"abc") if color_type == 3 else b""
    return b"\x89PNG\r\n\x1a\n" + part(b"IHDR", struct.pack(">IIBBBBB", 1, 1, depth, color_type, 0, 0, 0)) + palette + \
        part(b"IDAT", zlib.compress(b"\0" + pixel)) + part(b"IEND", b"")


def curve(*keys):
    return chunk(0xFB10, b"\2\0", *[floats(*key) for key in keys])


def good(mesh_chunk=MESH, material_chunk=MATERIAL, nodes=(INSTANCE,), more=b""):
    return scene_file(mesh_chunk, material_chunk, IMAGE, scene(*nodes, CAMERA), more)


CURVE = chunk(0xFB20, b"\2\3", floats(0, 0, 1, 0, 2, 0, 3, 1, 4, 1, 5, 1))
MOVING = chunk(0x5130, name("rise"), chunk(0xFA00, CURVE, chunk(0xF006, floats(1, 2, 3))), TRACKS[20:], INSTANCE)
ARMATURE = chunk(0x5180, name("bones"), chunk(0x5190, name("root"), chunk(0x5190, name("tip"))))


class Tool(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = os.path.join(folder.name, "scene.y3d")
        self.folder = folder.name

    def run_tool(self, *arguments, data=b""):
        result = subprocess.run([TOOL, *arguments], input=data, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        return result.returncode, result.stdout, result.stderr.decode()

    def save(self, data):
        with open(self.path, "wb") as stream:
            stream.write(data)
        return self.path

    def test_command_line(self):
        for arguments, trouble in [
                ((), "Usage: y3d COMMAND"),
                (("fly",), "y3d: unknown command 'fly'\n"),
                (("info",), "y3d: expected: y3d info [--json] FILE\n"),
                (("copy", "-"), "y3d: expected: y3d copy IN OUT\n"),
                (("info", "--xml", "-"), "y3d: info: unknown option '--xml'\n"),
                (("info", "--json=3", "-"), "y3d: --json takes no value\n"),
                (("check", "-x", "-"), "y3d: check: unknown option '-x'\n"),
                (("info", "--", "--json"), "y3d: --json: No such file or directory\n"),
                (("info", self.folder), "y3d: %s: Is a directory\n" % self.folder)]:
            status, output, errors = self.run_tool(*arguments)
            self.assertEqual((status, output), (2, b""), arguments)
            self.assertTrue(errors.startswith(trouble), errors)
        for arguments in [("--help",), ("info", "--help"), ("check", "-h"), ("copy", "a", "--help")]:
            status, output, errors = self.run_tool(*arguments)
            self.assertEqual((status, errors), (0, ""))
            self.assertTrue(output.startswith(b"Usage: y3d "), output)

    def test_refuses_other_files(self):
        for command in (("info", "-"), ("check", "-"), ("copy", "-", self.path)):
            status, output, errors = self.run_tool(*command, data=b"Y3DF\0\3")
            self.assertEqual((status, output, errors), (
                2, b"", "y3d: standard input: Manager-file is of wrong version (0:3 of format Y3DF)\n"))
        self.assertFalse(os.path.exists(self.path))

    def test_info_for_a_person(self):
        data = good(mesh(BOX, submesh(GEOMETRY, chunk(0xFF50, CORNERS), chunk(0xFF10, CORNERS))), nodes=(MOVING, ARMATURE))
        status, output, errors = self.run_tool("info", self.save(data))
        self.assertEqual((status, errors), (0, ""))
        self.assertEqual(output.decode().replace(self.path, "FILE"), """\
FILE: %d bytes, 1 mesh, 1 material, 1 image, 1 scene
mesh 'tri': 1 submesh, 3 vertices, 1 triangle, box (0, 0, 0) to (1, 1, 0)
  submesh 0: material 'mat', 3 vertices, 3 indices, normals, 1 texture channel, box (0, 0, 0) to (1, 1, 0)
material 'mat': shadeless
  'diffuse': (1, 1, 1, 1)
    texture 'tex': image 'img'
image 'img': file 'a.png'
scene 'Scene': 4 nodes
  dummy 'rise'
    position: (1, 2, 3)
      y: 2 keys from 1 to 4 s, bezier, outside cyclic with offset
    rotation: (1, 0, 0, 0)
    scale: (1, 1, 1)
    mesh instance 'obj': mesh 'tri'
      position: (0, 0, 0)
      rotation: (1, 0, 0, 0)
      scale: (1, 1, 1)
  armature 'bones': 2 bones
    position: (0, 0, 0)
    rotation: (1, 0, 0, 0)
    scale: (0, 0, 0)
  camera 'eye'
    position: (0, 0, 0)
    rotation: (1, 0, 0, 0)
    scale: (1, 1, 1)
    fov: 1
""" % len(data))

    def test_info_for_a_program(self):
        odd = chunk(0x4000, name(b"\xC3\xA4\xFF\"\x1B"), name("b.png", 0xF020))
        wild = chunk(0x5130, name("wild"), chunk(0xFA00, chunk(0xF006, floats(float("nan"), float("inf"), 2))))
        status, output, errors = self.run_tool("info", "--json", "-", data=good(nodes=(MOVING, wild), more=odd))
        self.assertEqual((status, errors), (0, ""))
        info = json.loads(output)
        self.assertEqual(info["file"], "standard input")
        self.assertEqual(info["meshes"][0]["submeshes"][0]["indices"], 3)
        self.assertEqual(info["meshes"][0]["box"], {"min": [0, 0, 0], "max": [1, 1, 0]})
        self.assertEqual(info["materials"][0]["attributes"][0]["textures"], [{"name": "tex", "image": "img", "value": 0}])
        self.assertEqual(info["images"][1]["name"], "\xe4\xff\"\x1b")
        rise, unknown, eye = info["scenes"][0]["children"]
        self.assertEqual(rise["position"], {"base": [1, 2, 3], "curves": [
            {"component": "y", "keys": 2, "from": 1, "to": 4, "interpolation": "bezier",
             "extrapolation": "cyclic with offset"}]})
        self.assertEqual((rise["static"], eye["static"]), (False, True))
        self.assertEqual(rise["children"][0]["mesh"], "tri")
        self.assertEqual(unknown["position"]["base"], [None, None, 2])

    def test_check(self):
        second = name("other") + BOX
        for data, status, findings in [
                (good(), 0, []),
                (good(mesh(submesh(GEOMETRY))), 2, ["error: mesh 'tri': has no bounding box"]),
                (good(mesh(BOX)), 2, ["error: mesh 'tri': has no submesh"]),
                (good(mesh(BOX, submesh(BOX))), 2,
                 ["error: submesh 0 of mesh 'tri': is empty: it has no vertices",
                  "error: submesh 0 of mesh 'tri': is empty: it has no indices"]),
                (good(mesh(BOX, submesh(INDICES, POSITIONS))), 2, ["error: submesh 0 of mesh 'tri': has no bounding box"]),
                (good(mesh(BOX, submesh(GEOMETRY, *[chunk(0xFF10, CORNERS)] * 3))), 2,
                 ["error: submesh 0 of mesh 'tri': has a second texture channel",
                  "warning: submesh 0 of mesh 'tri': has texture channels behind the second, which are ignored"]),
                (good(mesh(BOX, submesh(GEOMETRY, chunk(0xFF20, floats(1, 1, 1, 1))))), 2,
                 ["error: submesh 0 of mesh 'tri': has vertex colours"]),
                (good(mesh(BOX, submesh(GEOMETRY, chunk(0xFF50, CORNERS[12:]), chunk(0xFF10, CORNERS[24:])))), 2,
                 ["error: submesh 0 of mesh 'tri': has 2 normals for 3 vertices",
                  "error: submesh 0 of mesh 'tri': has 1 texture coordinate for 3 vertices"]),
                (good(mesh(BOX, submesh(BOX, POSITIONS, chunk(0xFF30, struct.pack("<4I", 0, 1, 2, 3))))), 2,
                 ["error: submesh 0 of mesh 'tri': has 1 index without a vertex",
                  "warning: submesh 0 of mesh 'tri': has indices that make no whole triangle"]),
                (good(more=chunk(0x2000, second)), 1,
                 ["warning: mesh 'other': is shown by no scene", "warning: mesh 'other': has no submesh"]),
                (good(nodes=(instance(COMMON, of="box"),)), 2,
                 ["error: mesh instance 'n': has the unknown mesh 'box'", "warning: mesh 'tri': is shown by no scene"]),
                (good(nodes=(instance(chunk(0xFF80, b"\0\0\0\0gold\0"), chunk(0xFF80, b"\1\0\0\0mat\0"), COMMON),)), 2,
                 ["error: mesh instance 'n': has the unknown material 'gold' for submesh 0",
                  "warning: mesh instance 'n': names a material for submesh 1, which the mesh does not have"]),
                (good(mesh(BOX, submesh(GEOMETRY, material=""))), 2,
                 ["error: mesh instance 'obj': has no material for submesh 0"]),
                (good(material_chunk=material(attribute("diffuse", texture("sky"), texture("img")),
                                              attribute("gloss"), attribute("specular", texture("img")),
                                              attribute("hardness", color=(300, 0, 0, 0)))), 2,
                 ["error: material 'mat': texture 'tex' of 'diffuse' has the unknown image 'sky'",
                  "warning: material 'mat': texture 'tex' of 'diffuse' is ignored",
                  "warning: material 'mat': attribute 'gloss' is ignored",
                  "warning: material 'mat': texture 'tex' of 'specular' is ignored",
                  "warning: material 'mat': hardness 300 is brought between 0 and 254"]),
                (good(nodes=(chunk(0x5130, COMMON, INSTANCE, CAMERA), light(INSTANCE, distance=0), ARMATURE)), 1,
                 ["warning: camera 'eye': lies below a node and is ignored; only cameras directly in the scene are used",
                  "warning: light 'n': has a distance of 0",
                  "warning: light 'n': has 1 node below it that the player does not come to",
                  "warning: armature 'bones': is ignored with everything below it"]),
                (scene_file(scene(*[light()] * 9)), 1,
                 ["warning: scene 'Scene': has no camera that is used, so nothing of it is drawn",
                  "warning: scene 'Scene': has 9 lights; only the first 8 shine"]),
                (good(nodes=(INSTANCE, chunk(0x5130, name("flat"), chunk(0xFA10, chunk(0xFB00, b"\3\4", floats(
                    *[float("inf")] * 2, 5, 0, 0, 0, 0, 0, 4, 0, 0, 0)), chunk(0xF007, floats(1, 0, 0, 0)))))), 1,
                 ["warning: dummy 'flat': rotation w has an unknown interpolation; it is taken as constant",
                  "warning: dummy 'flat': rotation w has an unknown extrapolation; its last value holds outside the keys",
                  "warning: dummy 'flat': rotation w has values that are no numbers",
                  "warning: dummy 'flat': rotation w has keys that are not in the order of time",
                  "warning: dummy 'flat': has a scale of 0"]),
                (good(mesh(BOX, submesh(BOX, INDICES, chunk(0xFF00, floats(0, 0, 0, 1, 0, 0, 0, float("nan"), 0))))), 1,
                 ["warning: submesh 0 of mesh 'tri': has values that are no numbers"]),
                (good(mesh(BOX, submesh(BOX, INDICES, chunk(0xFF00, floats(0, 0, 0, 1, 0, 0, 0, 1.1, 0))))), 1,
                 ["warning: submesh 0 of mesh 'tri': has a bounding box that does not hold its vertices"]),
                (good(mesh(chunk(0xF020, floats(0, 0, 0, 1, .5, 0)), submesh(GEOMETRY))), 1,
                 ["warning: mesh 'tri': has a bounding box that does not hold its submeshes"]),
                (good(mesh(BOX, submesh(
                    BOX, POSITIONS, NORMALS, chunk(0xFF30, struct.pack("<12I", *[0, 2, 1] * 4))))), 1,
                 ["warning: submesh 0 of mesh 'tri': has triangles that mostly face inward"]),
                (good(mesh(chunk(0xF020, floats(0, 0, 0, 1, 1, 1)), submesh(
                    chunk(0xF020, floats(0, 0, 0, 1, 1, 1)), chunk(0xFF00, CORNERS, floats(0, 0, 1)),
                    chunk(0xFF30, struct.pack("<12I", 0, 1, 2, 0, 3, 1, 1, 3, 2, 2, 3, 0))))), 1,
                 ["warning: submesh 0 of mesh 'tri': has triangles that mostly face inward"]),
                (good(material_chunk=LIT), 1,
                 ["warning: submesh 0 of mesh 'tri': has no normals, which the light of material 'mat' needs",
                  "warning: scene 'Scene': has no light, and materials that need one"]),
                (good(nodes=(INSTANCE, light(curve=curve((0, 1, 1, 1, 2, -9), (2, 1, 3, 1, 4, 1))))), 2,
                 ["error: light 'n': has a distance below 0 at 1.125 s"]),
                (scene_file(MESH, MATERIAL, chunk(0x4000, name("img"), name("a.TGA", 0xF020)),
                            scene(INSTANCE, CAMERA)), 2,
                 ["error: image 'img': 'a.TGA' is neither a .png nor a .jpg file"]),
                (good(more=IMAGE + scene(CAMERA)), 1,
                 ["warning: image 'img': comes more than once; only the last one is found",
                  "warning: scene 'Scene': is never found; the first one of that name is"]),
                (scene_file(IMAGE), 2, ["error: file: there is no scene in it"]),
                (scene_file(scene(CAMERA), chunk(0x9000, b"abc"),
                            chunk(0x4000, name("img"), name("img"), b"\0\0\0", name("a.png", 0xF020))) + b"!", 1,
                 ["warning: file: chunk 0x9000 at 122 in main chunk is unknown there and skipped",
                  "warning: file: chunk 0xF010 at 147 in image 'img' comes again",
                  "warning: file: 15 bytes at 157 in image 'img' belong to no chunk",
                  "warning: file: 1 byte at 172 lie behind the main chunk"]),
                (scene_file(scene(CAMERA), mesh(chunk(0xF020, b"1234"), submesh(chunk(0xFF00, CORNERS + b"?"))))[:-1], 1,
                 ["warning: mesh 'tri': is shown by no scene",
                  "warning: submesh 0 of mesh 'tri': is empty: it has no indices",
                  "warning: submesh 0 of mesh 'tri': has no bounding box",
                  "warning: file: chunk 0x1000 at 6 claims 195 bytes where 194 are left",
                  "warning: file: chunk 0x2000 at 122 claims 79 bytes where 78 are left",
                  "warning: file: chunk 0xF020 at 138 in mesh 'tri' is 20 bytes short",
                  "warning: file: chunk 0x2200 at 148 claims 53 bytes where 52 are left",
                  "warning: file: chunk 0xFF00 at 164 claims 37 bytes where 36 are left"]),
                (scene_file(scene(CAMERA, chunk(0x5130, COMMON, chunk(0xFA00, chunk(0xFB00, b"\0\0"))))), 1,
                 ["warning: file: chunk 0xFA00 at 200 in dummy 'n' comes again",
                  "warning: file: chunk 0xFB00 at 206 in position track of dummy 'n' is unknown there and skipped"])]:
            with self.subTest(findings=findings):
                found, output, errors = self.run_tool("check", self.save(data))
                self.assertEqual(errors, "")
                lines = output.decode().splitlines()
                self.assertEqual(lines[:-1], findings)
                self.assertEqual(found, status)
                numbers = [sum(line.startswith(kind) for line in findings) for kind in ("error", "warning")]
                found, output, errors = self.run_tool("check", "--json", "-", data=data)
                report = json.loads(output)
                self.assertEqual([report["errors"], report["warnings"]], numbers)
                self.assertEqual([": ".join((f["severity"], f["object"], f["reason"])) for f in report["findings"]], findings)

    def test_check_reads_pictures_of_several_files(self):
        for data, trouble in [(None, "is not in"), (picture(2, 8, b"abc"), ""), (b"GIF89a", "cannot be read"),
                              (picture(3, 8, b"\0"), "cannot be read"), (picture(2, 16, b"abcdef"), "cannot be read")]:
            if data:
                with open(os.path.join(self.folder, "a.png"), "wb") as stream:
                    stream.write(data)
            path = self.save(good())
            status, output, _ = self.run_tool("check", "--pictures", self.folder, path, path)
            lines = output.decode().splitlines()
            self.assertEqual((status, len(lines)), (2, 4) if trouble else (0, 2), lines)
            self.assertIn("'a.png' " + trouble if trouble else "fine", lines[0])
        _, output, _ = self.run_tool("check", "--json", path, path)
        self.assertEqual([report["errors"] for report in json.loads(output)], [0, 0])

    def test_export_and_import(self):
        model, back = os.path.join(self.folder, "model.glb"), os.path.join(self.folder, "back.y3d")
        with open(os.path.join(self.folder, "a.png"), "wb") as stream:
            stream.write(picture(2, 8, b"abc"))
        self.save(good(nodes=(MOVING, light(), ARMATURE)))
        status, output, errors = self.run_tool("export", "--length", "6", self.path, model)
        self.assertEqual((status, output.decode().splitlines(), errors), (
            0, ["note: dummy 'rise': its translation goes on for ever; it ends at 6 s",
                "note: armature 'bones' is left out, as the player does"], ""))
        status, output, errors = self.run_tool("import", "--texture-path", "pictures", "--scale", "2", model, back)
        self.assertEqual((status, output.decode(), errors), (0, back + ": fine\n", ""))
        with open(os.path.join(self.folder, "back.xml")) as stream:
            self.assertIn('filename="back.y3d" texturepath="pictures" name="Scene"', stream.read())
        with open(os.path.join(self.folder, "pictures", "a.png"), "rb") as stream:
            self.assertEqual(stream.read(), picture(2, 8, b"abc"))
        info = json.loads(self.run_tool("info", "--json", back)[1])
        self.assertEqual(info["meshes"][0]["box"]["max"], [2, 2, 0])
        self.assertEqual([node["name"] for node in info["scenes"][0]["children"]], ["rise", "n", "eye"])
        self.assertEqual(info["scenes"][0]["children"][1]["distance"]["base"], [40])

        for arguments, trouble in [
                (("import", "--fps", "x", model, back), "y3d: --fps takes a number from 0.1 to 1000\n"),
                (("import", model, os.path.join(self.folder, ".", "model.glb")),
                 "y3d: %s: import does not write over the file that it reads\n" % model),
                (("import", self.path, back), "y3d: %s: is no glTF file\n" % self.path),
                (("import", model, self.folder + "/no/x.y3d"),
                 "y3d: %s/no/x.y3d: No such file or directory\n" % self.folder),
                (("import", "--scene", "4", model, back), "y3d: %s: has no scene 4\n" % model),
                (("export", self.path, self.folder), "y3d: %s: cannot be written\n" % self.folder)]:
            self.assertEqual(self.run_tool(*arguments), (2, b"", trouble))

    def test_check_counts_what_it_does_not_tell(self):
        status, output, _ = self.run_tool("check", "-", data=good(mesh(BOX, *[submesh(GEOMETRY, material="gold")] * 1500)))
        self.assertEqual(status, 2)
        lines = output.decode().splitlines()
        self.assertEqual((len(lines), lines[-2], lines[-1]), (
            1002, "500 more are left out", "standard input: 1500 errors, 0 warnings"))
        _, _, errors = self.run_tool("copy", "-", "-", data=good(more=chunk(0x9000) * 1500))
        self.assertEqual((len(errors.splitlines()), errors.splitlines()[-1]), (1001, "y3d: 500 more of such lines are left out"))
        whole = [light(), CAMERA, instance(name(""), TRACKS), chunk(0x5130, name("")), ARMATURE] * 2000
        for empty in (0, 100000):
            data = scene_file(scene(*whole, *[chunk(0x5130)] * empty))
            numbers = [re.search(line, self.run_tool(command, "-", data=data)[1].decode())
                       for command, line in (("info", r"(\d+) nodes"), ("check", r"(\d+) nodes and bones left out"))]
            self.assertIs(numbers[1] is None, empty == 0)
            self.assertEqual(sum(int(number[1]) for number in numbers if number), len(whole) + empty)

    def test_copy(self):
        data = good(nodes=(MOVING, light()))
        copied = os.path.join(self.folder, "copy.y3d")
        self.assertEqual(self.run_tool("copy", self.save(data), copied), (0, b"", ""))
        with open(copied, "rb") as stream:
            self.assertEqual(stream.read(), data)
        self.assertEqual(self.run_tool("copy", "-", "-", data=data), (0, data, ""))
        self.assertEqual(self.run_tool("copy", "-", "-", data=good(nodes=(INSTANCE, ARMATURE), more=chunk(0x9000, b"a"))), (
            0, good(), "y3d: chunk 0x9000 at %d in main chunk is unknown there and skipped\n" % (len(good()) + len(ARMATURE)) +
            "y3d: armature 'bones' is not written, nor what lies below it\n"))
        status, output, errors = self.run_tool("copy", "-", os.path.join(self.folder, "no", "where"), data=data)
        self.assertEqual((status, output), (2, b""))
        self.assertIn("No such file or directory", errors)
        self.assertEqual(self.run_tool("copy", "-", "-", data=scene_file())[0::2], (2, "y3d: -: there is nothing to write\n"))

    def test_optimize(self):
        corners = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 0, 0), (1, 1, 0), (0, 2, 0), (9, 9, 9)]
        quad = mesh(BOX, submesh(chunk(0xFF30, struct.pack("<9I", 0, 1, 2, 3, 4, 5, 5, 5, 5)),
                                 chunk(0xFF00, *[floats(*corner) for corner in corners])))
        prepared = os.path.join(self.folder, "prepared.y3d")
        status, output, errors = self.run_tool("optimize", self.save(good(quad)), prepared)
        self.assertEqual((status, errors), (0, ""))
        self.assertEqual(output.decode().split("\n")[1].split(), "'tri' 7 -> 4 3 -> 2 2.000 -> 2.000".split())
        with open(prepared, "rb") as stream:
            data = stream.read()
        self.assertIn(floats(0, 0, 0, 1, 2, 0), data)
        self.assertNotIn(floats(9, 9, 9), data)
        self.assertEqual(self.run_tool("check", prepared)[0], 0)

        _, output, errors = self.run_tool("optimize", "--cache", "0", "-", "-", data=good(quad))
        self.assertIn(chunk(0xFF30, struct.pack("<9I", 0, 1, 2, 0, 2, 3, 3, 3, 3)), output)
        self.assertIn("7 ->        4", errors)

        for part, trouble in [
                (chunk(0xFF20, floats(*[1] * 12)), "vertex colours"),
                (chunk(0xFF10, CORNERS) * 3, "more than two texture channels"),
                (chunk(0x2300, name("hip")), "bone groups"),
                (chunk(0xFF50, floats(0, 0, 1)), "not one normal for each vertex"),
                (chunk(0xFF30, struct.pack("<3I", 0, 1, 3)), "3 vertices and the index 3"),
                (chunk(0xFF30, struct.pack("<2I", 0, 1)), "indices that are no whole triangles")]:
            odd = scene_file(mesh(BOX, submesh(GEOMETRY), submesh(GEOMETRY, part)))
            expected = self.run_tool("copy", "-", "-", data=odd)[1]
            status, output, errors = self.run_tool("optimize", "-", "-", data=odd)
            self.assertEqual((status, output), (1, expected), trouble)
            self.assertIn("y3d: mesh 'tri' is left as it is: submesh 1 has " + trouble, errors)

        for size in ("-1", "x", "65536"):
            self.assertEqual(self.run_tool("optimize", "--cache=" + size, "-", "-"), (
                2, b"", "y3d: --cache takes a number from 0 to 65535\n"))

    def test_strips(self):
        quad = mesh(submesh(chunk(0xFF30, struct.pack("<6I", 0, 1, 2, 0, 2, 3)), chunk(0xFF00, CORNERS, floats(5, 5, 5))),
                    submesh(GEOMETRY, chunk(0xFF30, struct.pack("<3I", 0, 1, 7))))
        self.assertEqual(self.run_tool("strips", "-", data=scene_file(quad)), (
            1, b"mesh 'tri', submesh 0: 2 triangles in 1 strip, longest 2, stitched 5 indices\n",
            "y3d: mesh 'tri', submesh 1 has 3 vertices and the index 7\n"))

    def test_any_input(self):
        data = good(nodes=(MOVING, light(), ARMATURE))
        deep = b""
        for level in range(2000):
            deep = chunk(0x5130, deep)
        inputs = [data[:length] for length in range(0, len(data), 61)] + [
            data[:place] + bytes([data[place] ^ 0xFF]) + data[place + 1:] for place in range(6, len(data), 61)] + [
                scene_file(scene(deep))]
        for damaged in inputs:
            for command in (("info", "-"), ("info", "--json", "-"), ("check", "-"), ("copy", "-", "/dev/null"),
                            ("optimize", "-", "/dev/null"), ("strips", "-")):
                status, output, errors = self.run_tool(*command, data=damaged)
                self.assertIn(status, (0, 1, 2), errors)
                self.assertNotIn("Sanitizer", errors)


if __name__ == "__main__":
    unittest.main()
