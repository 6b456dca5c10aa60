"""Models the heart in the ice and saves it as a .blend file; runs inside Blender, y up, about one metre in radius.

    blender --background --python show/scenes/models/heart.py -- heart.blend

and then, from the folder tools/blender, with heart.blend and heart.y3d in folders of your choice:

    blender --background heart.blend --python-expr \
        "import sys; sys.path.insert(0, '.'); import io_export_y3d; print(io_export_y3d.scene.export('heart.y3d'))"

The result lies beside this file, so that building the show needs no Blender.
"""

import math
import random
import sys

import bpy
from mathutils import Matrix, Vector
from mathutils.bvhtree import BVHTree

FACES = 3400         # of the body, triangles
SWELL, STIFFNESS = 1.42, 5.0  # of the balls that melt into it: radius of influence, and how far they keep their shape
VEINS = 7            # that start at the top
VEIN_STEP = 0.105    # between the points of a vein
VEIN_DEPTH = 0.35    # share of its radius that a vein lies in the flesh

# The body: ellipsoids (centre, radii) that melt into each other.
CHAMBERS = [
    ((0.05, -0.30, 0.05), (0.74, 0.92, 0.66)),
    ((0.22, -0.72, 0.12), (0.50, 0.62, 0.46)),
    ((-0.36, -0.06, 0.14), (0.56, 0.74, 0.54)),
    ((0.44, 0.36, -0.08), (0.46, 0.40, 0.44)),
    ((-0.48, 0.42, 0.02), (0.46, 0.44, 0.44)),
]
# The great vessels: polylines of (place, radius), filled with balls.
VESSELS = [
    [((0.00, 0.30, 0.05), 0.34), ((0.02, 0.78, 0.02), 0.29), ((0.10, 1.10, -0.06), 0.27), ((0.34, 1.24, -0.16), 0.26),
     ((0.58, 1.10, -0.26), 0.25), ((0.66, 0.78, -0.32), 0.22)],
    [((-0.06, 0.30, 0.34), 0.30), ((0.02, 0.66, 0.36), 0.27), ((0.22, 0.86, 0.26), 0.24), ((0.52, 0.90, 0.12), 0.20)],
    [((-0.50, 0.46, -0.06), 0.27), ((-0.50, 0.84, -0.10), 0.24), ((-0.56, 1.16, -0.14), 0.22)],
    [((0.12, 1.08, -0.04), 0.18), ((0.06, 1.44, -0.02), 0.15)],
    [((0.36, 1.20, -0.14), 0.17), ((0.40, 1.50, -0.14), 0.14)],
]


def ball(family, centre, radii):
    element = family.elements.new(type="ELLIPSOID")
    element.co = centre
    largest = max(radii)
    # An element's surface lies well inside its radius.
    element.radius = largest * SWELL
    element.size_x, element.size_y, element.size_z = (r / largest for r in radii)
    element.stiffness = STIFFNESS


def material(name):
    made = bpy.data.materials.new(name)
    made.use_nodes = True
    return made


def body():
    family = bpy.data.metaballs.new("flesh")
    family.resolution = 0.075
    family.threshold = 0.4
    for centre, radii in CHAMBERS:
        ball(family, centre, radii)
    for vessel in VESSELS:
        for (start, first), (end, last) in zip(vessel, vessel[1:]):
            for i in range(4):
                share = i / 3
                radius = first + (last - first) * share
                ball(family, Vector(start).lerp(Vector(end), share), (radius * 0.72,) * 3)
    ob = bpy.data.objects.new("flesh", family)
    bpy.context.collection.objects.link(ob)
    bpy.context.view_layer.update()
    mesh = bpy.data.meshes.new_from_object(ob.evaluated_get(bpy.context.evaluated_depsgraph_get()))
    bpy.data.objects.remove(ob)
    heart = bpy.data.objects.new("heart", mesh)
    bpy.context.collection.objects.link(heart)
    triangles = sum(len(polygon.vertices) - 2 for polygon in mesh.polygons)
    decimate = heart.modifiers.new("fewer", "DECIMATE")
    decimate.ratio = min(1.0, FACES / triangles)
    bpy.context.view_layer.update()
    final = bpy.data.meshes.new_from_object(heart.evaluated_get(bpy.context.evaluated_depsgraph_get()))
    heart.modifiers.clear()
    heart.data = final
    for polygon in final.polygons:
        polygon.use_smooth = True
    final.materials.clear()
    final.materials.append(material("heart"))
    return heart


def veins(heart):
    """Tubes that run down over the surface and branch, thinner each time."""
    tree = BVHTree.FromPolygons([v.co for v in heart.data.vertices], [p.vertices for p in heart.data.polygons])
    curve = bpy.data.curves.new("veins", "CURVE")
    curve.dimensions = "3D"
    curve.bevel_depth = 1.0
    curve.bevel_resolution = 0
    curve.resolution_u = 1
    curve.use_fill_caps = False
    chance = random.Random(11)

    def grow(place, way, radius, length, generation):
        points = []
        for i in range(length):
            found, normal, _, _ = tree.find_nearest(place)
            thin = radius * (1.0 - 0.6 * i / length)
            if generation == 0:
                thin *= min(1.0, 0.2 + 0.3 * i)
            points.append((found + normal * thin * (1.0 - 2.0 * VEIN_DEPTH), thin))
            way = way + Vector([chance.uniform(-0.5, 0.5) for _ in range(3)]) + Vector((0, -0.12, 0))
            way = (way - normal * way.dot(normal)).normalized()
            place = found + way * VEIN_STEP
            if generation < 3 and i > 1 and chance.random() < 0.36:
                aside = normal.cross(way) * chance.choice((-1, 1))
                grow(place, (way + 1.1 * aside).normalized(), thin * 0.74, max(4, int(length * 0.6)), generation + 1)
        spline = curve.splines.new("POLY")
        spline.points.add(len(points) - 1)
        for point, (where, thin) in zip(spline.points, points):
            point.co = (*where, 1.0)
            point.radius = thin
        spline.points[-1].radius = 0.004

    for i in range(VEINS):
        angle = 2 * math.pi * i / VEINS + 0.3
        start = Vector((math.cos(angle) * 0.9, 0.5, math.sin(angle) * 0.8))
        grow(start, Vector((0, -1, 0)), 0.062, 15, 0)
    ob = bpy.data.objects.new("curve", curve)
    bpy.context.collection.objects.link(ob)
    bpy.context.view_layer.update()
    mesh = bpy.data.meshes.new_from_object(ob.evaluated_get(bpy.context.evaluated_depsgraph_get()))
    bpy.data.objects.remove(ob)
    for polygon in mesh.polygons:
        polygon.use_smooth = True
    mesh.materials.clear()
    mesh.materials.append(material("vein"))
    tubes = bpy.data.objects.new("veins", mesh)
    bpy.context.collection.objects.link(tubes)
    return tubes


def main():
    bpy.ops.wm.read_factory_settings(use_empty=True)
    heart = body()
    tubes = veins(heart)
    print("heart:", len(heart.data.polygons), "faces; veins:", len(tubes.data.polygons))
    # One object of two materials: the file then holds one mesh of two parts.
    bpy.context.view_layer.objects.active = heart
    for ob in (heart, tubes):
        ob.select_set(True)
    bpy.ops.object.join()
    # Blender's z is up.
    heart.data.transform(Matrix.Rotation(math.pi / 2, 4, "X"))
    heart.data.name = "heart"
    bpy.ops.wm.save_as_mainfile(filepath=sys.argv[sys.argv.index("--") + 1])


main()
