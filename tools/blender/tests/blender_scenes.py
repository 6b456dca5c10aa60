"""Runs inside Blender: builds a scene that has each kind of thing, exports it, and writes down what Blender itself
makes of it. Arguments after "--": the folder to write to, the folder of the add-on's package.
"""

import json
import math
import os
import random
import sys

import bpy
from mathutils import Matrix

FOLDER, PACKAGES = sys.argv[sys.argv.index("--") + 1:]
sys.path.insert(0, PACKAGES)
import io_export_y3d

END, RATE, TIMES = 97, 24, 200
random.seed(5)


def empty(name, parent=None, **values):
    ob = bpy.data.objects.new(name, None)
    bpy.context.collection.objects.link(ob)
    ob.parent = parent
    for key, value in values.items():
        setattr(ob, key, value)
    return ob


def animate(owner, path, index, ways, extrapolation="CONSTANT", modifier=None, size=3.0, handles="FREE"):
    """Random keys over the middle of the scene, with the given interpolations in turn and handles that may overlap."""
    owner.animation_data_create()
    if not owner.animation_data.action:
        owner.animation_data.action = bpy.data.actions.new(owner.name)
    fcurve = owner.animation_data.action.fcurves.new(path, index=index)
    frames = sorted(random.sample(range(12, 84), 6))
    for i, frame in enumerate(frames):
        key = fcurve.keyframe_points.insert(frame, random.uniform(-size, size))
        key.interpolation = ways[i % len(ways)]
    for key in fcurve.keyframe_points:
        key.handle_left_type = key.handle_right_type = handles
        if handles == "FREE":
            key.handle_left = key.co.x - random.uniform(2, 25), key.co.y + random.uniform(-size, size)
            key.handle_right = key.co.x + random.uniform(2, 25), key.co.y + random.uniform(-size, size)
    fcurve.extrapolation = extrapolation
    if modifier:
        cycles = fcurve.modifiers.new("CYCLES")
        cycles.mode_before = cycles.mode_after = modifier
    fcurve.update()
    return fcurve


def textured(name, path=None):
    material = bpy.data.materials.new(name)
    material.use_nodes = True
    nodes = material.node_tree.nodes
    picture = nodes.new("ShaderNodeTexImage")
    image = bpy.data.images.new(name + " picture", 4, 2)
    image.pixels = [component for i in range(8) for component in (i / 7, 0.5, 1 - i / 7, 1)]
    if path:
        image.filepath_raw, image.file_format = path, "PNG"
        image.save()
    picture.image = image
    material.node_tree.links.new(nodes["Principled BSDF"].inputs["Base Color"], picture.outputs["Color"])
    return material


def build():
    scene = bpy.context.scene
    for ob in list(bpy.data.objects):
        bpy.data.objects.remove(ob)
    scene.frame_start, scene.frame_end = 1, END
    scene.render.fps = RATE
    scene.render.resolution_x, scene.render.resolution_y = 800, 600

    # Every way of interpolation and extrapolation, alone and mixed.
    bezier, linear, constant = ["BEZIER"], ["LINEAR"], ["CONSTANT"]
    mixed = ["BEZIER", "CONSTANT", "LINEAR", "BEZIER", "LINEAR"]
    cases = [(bezier, "CONSTANT", None), (bezier, "LINEAR", None), (linear, "LINEAR", None), (constant, "LINEAR", None),
             (mixed, "CONSTANT", None), (mixed, "LINEAR", None), (bezier, "CONSTANT", "REPEAT"),
             (mixed, "CONSTANT", "REPEAT_OFFSET"), (linear, "CONSTANT", "REPEAT_OFFSET")]
    for number, (ways, extrapolation, modifier) in enumerate(cases):
        ob = empty("curves %d" % number)
        for axis in range(3):
            animate(ob, "location", axis, ways, extrapolation, modifier)
            animate(ob, "rotation_euler", axis, ways, extrapolation, modifier)
    automatic = empty("automatic handles", rotation_mode="QUATERNION")
    for axis in range(4):
        animate(automatic, "rotation_quaternion", axis, bezier, handles="AUTO_CLAMPED", size=1)
    eased = empty("eased")
    animate(eased, "location", 0, ["BOUNCE"])
    noisy = empty("noisy")
    animate(noisy, "location", 1, bezier, handles="AUTO_CLAMPED").modifiers.new("NOISE").scale = 10

    # Trees: parents that scale unevenly, turned children, offsets between parent and child.
    root = empty("root", location=(1, 2, 3), rotation_euler=(0.3, -0.7, 1.1), scale=(1, 2, 0.5))
    child = empty("child", root, location=(0.5, 0, 1), rotation_euler=(1, 0.2, 0.1), scale=(2, 1, 1))
    animate(child, "rotation_euler", 2, bezier)
    animate(child, "scale", 0, linear, size=1)
    offset = empty("offset", child, location=(1, 0, 0))
    offset.matrix_parent_inverse = Matrix.Translation((0.3, 0.2, 0.1))
    sheared = empty("sheared", offset, rotation_euler=(0.1, 0.2, 0.3))
    sheared.matrix_parent_inverse = Matrix(((1, 0.4, 0, 2), (0, -1.5, 0.2, 0), (0.3, 0, 0.7, 1), (0, 0, 0, 1)))
    other_order = empty("other order", root, rotation_mode="ZYX", rotation_euler=(0.3, 0.5, 0.7))
    moving_order = empty("moving order", rotation_mode="ZXY")
    animate(moving_order, "rotation_euler", 0, bezier, size=1, handles="AUTO_CLAMPED")
    mirrored = empty("mirrored", scale=(-1, 1, 1), rotation_euler=(0.4, 0.5, 0))
    target = empty("target", location=(0, 0, 2))
    animate(target, "location", 0, linear)
    follower = empty("follower", location=(4, 0, 0))
    follower.constraints.new("TRACK_TO").target = target
    driven = empty("driven")
    driven.driver_add("location", 2).driver.expression = "frame / 20"

    # Meshes: two materials and smooth shading, one that shares its mesh, one with a modifier, one without faces.
    bpy.ops.mesh.primitive_uv_sphere_add(segments=8, ring_count=5)
    ball = bpy.context.object
    ball.name = ball.data.name = "ball"
    ball.data.materials.append(textured("first", os.path.join(FOLDER, "a picture.png")))
    ball.data.materials.append(bpy.data.materials.new("second"))
    for polygon in ball.data.polygons:
        polygon.use_smooth = polygon.index % 2 == 0
        polygon.material_index = polygon.center.z > 0
    ball.parent = child
    twin = bpy.data.objects.new("twin", ball.data)
    bpy.context.collection.objects.link(twin)
    twin.material_slots[0].link = "OBJECT"
    twin.material_slots[0].material = textured("packed")
    bpy.ops.mesh.primitive_cube_add(location=(3, 0, 0))
    solid = bpy.context.object
    solid.name = "bevelled"
    solid.modifiers.new("Bevel", "BEVEL")
    solid.scale = -1, 1, 1
    solid.parent = mirrored
    edge = bpy.data.meshes.new("edge")
    edge.from_pydata([(0, 0, 0), (1, 0, 0)], [(0, 1)], [])
    bpy.context.collection.objects.link(bpy.data.objects.new("no faces", edge))

    # Cameras and lights.
    for name, parent in (("second view", None), ("first view", root)):
        camera = bpy.data.objects.new(name, bpy.data.cameras.new(name))
        bpy.context.collection.objects.link(camera)
        camera.parent = parent
        camera.location, camera.rotation_euler, camera.scale = (0, -8, 2), (1.4, 0, 0.2), (2, 2, 2)
    scene.camera = camera
    animate(bpy.data.objects["second view"], "location", 1, bezier)
    lens = animate(camera.data, "lens", -1, linear, size=4)
    for key in lens.keyframe_points:
        key.co.y = key.handle_left[1] = key.handle_right[1] = abs(key.co.y) * 8 + 20
    lens.update()
    lamp = bpy.data.objects.new("lamp", bpy.data.lights.new("lamp", "POINT"))
    bpy.context.collection.objects.link(lamp)
    lamp.parent, lamp.location, lamp.data.energy = child, (0, 1, 0), 250
    animate(lamp.data, "color", 1, bezier, size=1)
    sun = bpy.data.objects.new("sun", bpy.data.lights.new("sun", "SUN"))
    bpy.context.collection.objects.link(sun)
    sun.rotation_euler = 0.5, 0.3, 0


def in_y3d(matrix):
    axes = Matrix(((1, 0, 0, 0), (0, 0, 1, 0), (0, -1, 0, 0), (0, 0, 0, 1)))
    moved = axes @ matrix @ axes.transposed()
    return [moved[row][column] for column in range(4) for row in range(4)]


def expected():
    scene = bpy.context.scene
    times = [(i + 0.37) * (END - 1) / RATE / TIMES * 1.2 - 0.4 for i in range(TIMES)]
    result = {"times": times, "world": {ob.name: [] for ob in bpy.data.objects}, "lens": [], "green": []}
    for time in times:
        frame = time * RATE + scene.frame_start
        whole = math.floor(frame)
        scene.frame_set(whole, subframe=frame - whole)
        for ob in bpy.data.objects:
            matrix = ob.matrix_world
            if ob.type == "CAMERA":
                position, rotation, _ = matrix.decompose()
                matrix = Matrix.LocRotScale(position, rotation, None)
            result["world"][ob.name].append(in_y3d(matrix))
        result["lens"].append(bpy.data.cameras["first view"].lens)
        result["green"].append(bpy.data.lights["lamp"].color[1])
    scene.frame_set(scene.frame_start)
    result["corners"] = {}
    graph = bpy.context.evaluated_depsgraph_get()
    for name in ("ball", "bevelled"):
        mesh = bpy.data.objects[name].evaluated_get(graph).to_mesh()
        mesh.calc_loop_triangles()
        if hasattr(mesh, "calc_normals_split"):
            mesh.calc_normals_split()
            normals = [loop.normal for loop in mesh.loops]
        else:
            normals = [normal.vector for normal in mesh.corner_normals]
        uvs = mesh.uv_layers.active.data
        result["corners"][name] = [
            [triangle.material_index, *mesh.vertices[mesh.loops[corner].vertex_index].co, *normals[corner], *uvs[corner].uv]
            for triangle in mesh.loop_triangles for corner in triangle.loops]
    return result


build()
os.makedirs(os.path.join(FOLDER, "out"), exist_ok=True)
io_export_y3d.register()
path = os.path.join(FOLDER, "out/scene.y3d")
assert bpy.ops.export_scene.y3d(filepath=path, texture_path="pictures", step=0.25) == {"FINISHED"}
told = io_export_y3d.scene.export(path, texture_path="pictures", step=0.25)
try:
    io_export_y3d.scene.export(os.path.join(FOLDER, "missing/scene.y3d"))
    refused = ""
except io_export_y3d.scene.ExportError as error:
    refused = str(error)
with open(os.path.join(FOLDER, "expected.json"), "w") as file:
    json.dump({**expected(), "told": told, "refused": refused}, file)
