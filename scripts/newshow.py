#!/usr/bin/env python3
"""Makes a new show: a folder with a configuration, a script, a click track, a small scene, and a program of its own.

    newshow.py FOLDER
"""

import math
import re
import shutil
import struct
import sys
import time
import wave
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent
TEMPLATE = TREE / "scripts/newshow"
ASSETS = TREE / "lib/tidewheel/assets"
sys.path.insert(0, str(TREE / "tools/blender/io_export_y3d"))
import y3dfile

RATE, BEAT, BEATS_A_BAR, LENGTH = 22050, 0.5, 4, 120.0     # samples a second; seconds


def click_track(path):
    """A click on every beat; the first of each bar is higher."""
    bar = bytearray()
    for beat in range(BEATS_A_BAR):
        pitch = 1760 if beat == 0 else 880
        for i in range(int(BEAT * RATE)):
            value = math.sin(2 * math.pi * pitch * i / RATE) * math.exp(-i / RATE * 60)
            bar += struct.pack("<h", int(20000 * value))
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(bytes(bar) * int(LENGTH / BEAT / BEATS_A_BAR))


def box(half):
    """The corners, normals and triangles of a cube, a vertex for each corner of each side."""
    positions, normals, indices = [], [], []
    for axis in range(3):
        for side in (-1, 1):
            first = len(positions) // 3
            for u, v in ((-1, -1), (1, -1), (1, 1), (-1, 1)):
                corner = [0, 0, 0]
                corner[axis], corner[(axis + 1) % 3], corner[(axis + 2) % 3] = side * half, u * half, v * half
                positions += corner
                normals += [side if i == axis else 0 for i in range(3)]
            order = (0, 1, 2, 0, 2, 3) if side > 0 else (0, 2, 1, 0, 3, 2)
            indices += [first + i for i in order]
    return positions, normals, indices


def turning(seconds):
    """Euler curves (in Blender's axes) of a turn round the upright axis in so many seconds, over and over."""
    def key(time, angle):
        reach = seconds / 3
        return time - reach, angle - 2 * math.pi / 3, time, angle, time + reach, angle + 2 * math.pi / 3

    return [y3dfile.Curve(0.5), y3dfile.Curve(0.3),
            y3dfile.Curve(0, [key(0, 0), key(seconds, 2 * math.pi)], y3dfile.LINEAR, y3dfile.CYCLIC)]


def scene():
    """A cube that turns in the light of one lamp."""
    material = y3dfile.Material("cube")
    material.diffuse = material.ambient = (0.35, 0.6, 0.8, 1)
    material.specular, material.hardness = (0.6, 0.6, 0.6, 1), 60.0
    positions, normals, indices = box(1)
    mesh = y3dfile.Mesh("cube", [y3dfile.Submesh("cube", positions, normals, [], indices)])
    cube = y3dfile.Node(y3dfile.MESH_INSTANCE, "cube")
    cube.mesh, cube.rotation = "cube", turning(8)
    camera = y3dfile.Node(y3dfile.CAMERA, "camera")
    camera.position, camera.fov = y3dfile.still(0, 1.5, 6), y3dfile.still(0.8)
    camera.rotation = [y3dfile.Curve(math.pi / 2 - 0.25), y3dfile.Curve(0), y3dfile.Curve(0)]
    lamp = y3dfile.Node(y3dfile.LIGHT, "lamp")
    lamp.position, lamp.distance = y3dfile.still(3, 5, 4), y3dfile.still(20)
    return y3dfile.scene_file("Scene", [mesh], [material], {}, [camera, cube, lamp])


def make(folder):
    name = folder.name
    inside = folder.parent == TREE / "shows"
    words = {"@NAME@": name, "@SHOW@": name if inside else str(folder),
             "@YEAR@": time.strftime("%Y"),
             "@ENGINE@": "two folders above" if inside else "in the tree that made this folder"}
    for source in sorted(TEMPLATE.rglob("*")):
        if source.is_dir():
            continue
        target = folder / source.relative_to(TEMPLATE)
        if target.name == "gitignore":
            target = target.with_name(".gitignore")
        target.parent.mkdir(parents=True, exist_ok=True)
        text = source.read_text()
        for word, meaning in words.items():
            text = text.replace(word, meaning)
        target.write_text(text)
    data = folder / "data"
    for asset in ("tidewheel.font", "tidewheel_logo.png"):
        shutil.copyfile(ASSETS / asset, data / asset)
    click_track(data / "click.wav")
    (data / "scene.y3d").write_bytes(scene())
    (data / "scene.xml").write_text('<sorrel>\n\t<scene filename="scene.y3d" texturepath="" name="Scene"/>\n</sorrel>\n')
    (folder / "screenshots").mkdir()
    (folder / "screenshots/.gitkeep").touch()


def main(arguments):
    folder = Path(arguments[0]).absolute()
    if not re.fullmatch(r"[A-Za-z][A-Za-z0-9_-]*", folder.name) or folder.name == "ourglacierheartcold":
        sys.exit(f"Error: '{folder.name}' is no name for a show: letters, digits, - and _, beginning with a letter")
    if folder.exists() and (not folder.is_dir() or any(folder.iterdir())):
        sys.exit(f"Error: {folder} is there already")
    existed = folder.exists()
    try:
        make(folder)
    except OSError as error:
        # Half a show would be in the way of the next try.
        shutil.rmtree(folder, ignore_errors=True)
        if existed:
            folder.mkdir(exist_ok=True)
        sys.exit(f"Error: {error.filename}: {error.strerror}")


if __name__ == "__main__":
    main(sys.argv[1:])
