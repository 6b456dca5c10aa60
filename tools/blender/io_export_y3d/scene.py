"""A Blender scene as a Y3D file: which objects go in, and what becomes of each."""

import math
import os

import bpy
from mathutils import Matrix

from . import curves, materials, meshes, transforms, y3dfile

SUN_HEIGHT = 1000.0         # how far a sun's light stands away
SUN_DISTANCE = 1e6          # and the distance at which it is half as bright: never
MAX_DEPTH = 300             # objects below each other, each of which may become four nodes
NO_CONVERSION = {"LATTICE", "SPEAKER", "LIGHT_PROBE", "VOLUME", "GPENCIL", "GREASEPENCIL", "POINTCLOUD", "CURVES"}


class ExportError(Exception):
    """Nothing was written; the text says why."""


class Options:
    """What to export and how; the operator's properties have the same names."""

    selection = False       # only selected objects
    step = 1.0              # frames between samples
    texture_path = ""       # folder of the pictures, below the file's own
    description = True      # write a scene description beside the file


class Export:
    def __init__(self, context, path, options):
        self.context = context
        self.scene = context.scene
        self.path = path
        self.options = options
        self.told = []
        self.rate = self.scene.render.fps / self.scene.render.fps_base
        folder = os.path.join(os.path.dirname(os.path.abspath(path)), options.texture_path)
        self.pictures = materials.Pictures(folder, self.tell)
        self.materials = {}
        self.samples = {}       # object to its matrices in the world, at self.times
        self.frames = []

    def tell(self, text):
        """Something that the file cannot hold, for the user."""
        if text not in self.told:
            self.told.append(text)

    def seconds(self, frame):
        """The scene's first frame is the time 0."""
        return (frame - self.scene.frame_start) / self.rate

    def run(self):
        if self.options.step <= 0:
            raise ExportError("The sampling step must be more than 0.")
        if not os.path.isdir(os.path.dirname(os.path.abspath(self.path))):
            raise ExportError("%s: There is no such folder." % os.path.dirname(self.path))
        before = self.scene.frame_current, self.scene.frame_subframe
        self.scene.frame_set(self.scene.frame_start)
        try:
            content = self.collect()
        finally:
            self.scene.frame_set(before[0], subframe=before[1])
        self.write(content)

    def write(self, content):
        try:
            write_whole(self.path, content)
            if self.options.description:
                stem = os.path.splitext(self.path)[0]
                line = '<scene filename="%s" texturepath="%s" name="%s"/>' % (
                    os.path.basename(self.path), self.options.texture_path, self.scene.name)
                write_whole(stem + ".xml", ("<sorrel>\n    %s\n</sorrel>\n" % line).encode("utf-8"))
        except OSError as error:
            raise ExportError("%s: %s" % (error.filename or self.path, error.strerror)) from error

    def collect(self):
        view_layer = self.context.view_layer
        self.depsgraph = self.context.evaluated_depsgraph_get()
        objects = [ob for ob in view_layer.objects if not ob.hide_render
                   and (not self.options.selection or ob.select_get(view_layer=view_layer))]
        # What is below something that stays out hangs from the nearest object that goes in.
        self.included = set(objects)
        self.meshes = meshes.Meshes(self.depsgraph)
        self.children = {}
        for ob in objects:
            self.children.setdefault(self.parent_of(ob), []).append(ob)
        self.sample([ob for ob in objects if self.must_sample(ob)])

        cameras = [ob for ob in objects if ob.type == "CAMERA"]
        cameras.sort(key=lambda ob: ob != self.scene.camera)     # the first one in the file is the view
        nodes = [node for node in map(self.camera, cameras) if node]
        for ob in self.children.get(None, []):
            nodes += self.tree(ob, 0)
        if not cameras:
            self.tell("the scene has no camera, so the player shows nothing of it")
        if any(marker.camera for marker in self.scene.timeline_markers):
            self.tell("cameras bound to markers: the first camera is the view throughout")
        return y3dfile.scene_file(self.scene.name, self.meshes.list, list(self.materials.values()),
                                  self.pictures.names, nodes)

    def parent_of(self, ob):
        parent = ob.parent
        while parent is not None and parent not in self.included:
            parent = parent.parent
        return parent

    def must_sample(self, ob):
        """Objects whose matrices have to be sampled; tells the user why."""
        if ob.type == "CAMERA" and ob.parent:
            self.tell("camera '%s' has a parent: its movement is sampled, and it goes to the top of the tree" % ob.name)
            return True
        why = transforms.why_sampled(ob)
        if why is None and transforms.from_curves(ob, self.seconds) is None:
            why = "an easing or a modifier that Y3D has not"
        if why is None and ob.parent != self.parent_of(ob):
            why = "a parent that is not exported"
        if why:
            self.tell("'%s' is sampled: %s" % (ob.name, why))
        return why is not None

    def sample(self, objects):
        """Fills `samples` for the objects and their parents over the frames of the scene."""
        wanted = {related for ob in objects for related in (ob, self.parent_of(ob)) if related}
        if not wanted:
            return
        frame, end = float(self.scene.frame_start), self.scene.frame_end
        while frame < end:
            self.frames.append(frame)
            frame += self.options.step
        self.frames.append(float(end))
        self.samples = {ob: [] for ob in wanted}
        for frame in self.frames:
            whole = math.floor(frame)
            self.scene.frame_set(whole, subframe=frame - whole)
            for ob, matrices in self.samples.items():
                matrices.append(ob.matrix_world.copy())
        self.scene.frame_set(self.scene.frame_start)

    def sampled_tracks(self, ob, parent):
        matrices = self.samples[ob]
        if parent is not None:
            try:
                matrices = [outer.inverted() @ inner for outer, inner in zip(self.samples[parent], matrices)]
            except ValueError:
                self.tell("'%s': its parent is scaled to nothing" % ob.name)
                matrices = [Matrix.Identity(4)] * len(matrices)
        tracks, fault = transforms.from_samples([self.seconds(frame) for frame in self.frames], matrices)
        if fault > 1e-3:
            self.tell("'%s' is sheared while it moves, which is left out" % ob.name)
        return tracks

    def transform(self, ob, kind):
        """The nodes of an object, outermost first; the last one is of the given kind."""
        if ob in self.samples and self.must_sample(ob):
            return transforms.chain(ob.name, kind, self.sampled_tracks(ob, self.parent_of(ob)))
        tracks = transforms.from_curves(ob, self.seconds)
        above = []
        if ob.parent:
            offset = ob.matrix_parent_inverse
            if transforms.is_near(offset.to_3x3(), Matrix.Identity(3)):
                distance = transforms.place(offset.translation)
                tracks[0][:] = [curve.moved(by) for curve, by in zip(tracks[0], distance)]
            else:
                above = transforms.chain_of(offset, ob.name + ".parent")
        return above + transforms.chain(ob.name, kind, tracks)

    def tree(self, ob, depth):
        """The node of an object with everything below it, as a list of at most one."""
        if depth > MAX_DEPTH:
            raise ExportError("'%s' lies more than %d objects deep." % (ob.name, MAX_DEPTH))
        below = [node for child in self.children.get(ob, []) for node in self.tree(child, depth + 1)]
        if ob.type == "CAMERA":
            if not below:
                return []
            nodes = self.transform(ob, y3dfile.DUMMY)
        elif ob.type == "LIGHT":
            nodes = self.transform(ob, y3dfile.DUMMY)
            below.insert(0, self.light(ob))
            if len(below) == 1 and ob.data.type != "SUN":
                nodes = self.bare_light(nodes, below.pop())
        elif ob.type in meshes.WITH_GEOMETRY:
            nodes = self.mesh_instance(ob)
        else:
            if ob.type in NO_CONVERSION:
                self.tell("'%s' is of the type '%s', which is left out" % (ob.name, ob.type))
            elif ob.type == "ARMATURE":
                self.tell("armature '%s': bones move nothing in the player; meshes stand as in the first frame" % ob.name)
            elif ob.instance_type != "NONE":
                self.tell("'%s': the instances that it makes are left out" % ob.name)
            nodes = self.transform(ob, y3dfile.DUMMY)
        for outer, inner in zip(nodes, nodes[1:]):
            outer.children.append(inner)
        nodes[-1].children += below
        return nodes[:1]

    def mesh_instance(self, ob):
        if ob.type == "MESH" and ob.data.shape_keys and ob.data.shape_keys.animation_data:
            self.tell("'%s': its shape keys stand still" % ob.name)
        found = self.meshes.add(ob, self.material_name)
        if not found:
            self.tell("'%s' has no faces; only its place in the tree is kept" % ob.name)
            return self.transform(ob, y3dfile.DUMMY)
        mesh, slots = found
        nodes = self.transform(ob, y3dfile.MESH_INSTANCE)
        nodes[-1].mesh = mesh.name
        for index, slot in enumerate(slots):
            name = self.material_name(ob, slot)
            if name != mesh.submeshes[index].material:
                nodes[-1].references[index] = name
        return nodes

    def material_name(self, ob, slot):
        """The name of the material in an object's slot, which goes into the file."""
        material = ob.material_slots[slot].material if slot < len(ob.material_slots) else None
        name = material.name if material else meshes.DEFAULT_MATERIAL
        if name not in self.materials:
            self.materials[name] = (materials.convert(material, self.pictures, self.tell) if material
                                    else y3dfile.Material(name))
        return name

    def camera(self, ob):
        """A camera at the top of the tree, or None where it is of a kind that Y3D has not."""
        if ob.data.type != "PERSP":
            self.tell("camera '%s' is not one with perspective; left out" % ob.name)
            return None
        node = y3dfile.Node(y3dfile.CAMERA, ob.name)
        tracks = (self.sampled_tracks(ob, None) if ob in self.samples and self.must_sample(ob)
                  else transforms.from_curves(ob, self.seconds))
        node.position, node.rotation = tracks[:2]
        node.fov = [self.of_data(ob.data, lambda: self.field_of_view(ob.data))]
        size = self.frame_size()
        if abs(size[0] / size[1] - 4 / 3) > 0.01:
            self.tell("the player's picture is 4 to 3: the view of '%s' keeps its height" % ob.name)
        return node

    def frame_size(self):
        render = self.scene.render
        return render.resolution_x * render.pixel_aspect_x, render.resolution_y * render.pixel_aspect_y

    def field_of_view(self, camera):
        """The full vertical angle."""
        width, height = self.frame_size()
        if camera.sensor_fit == "VERTICAL":
            return 2 * math.atan(camera.sensor_height / (2 * camera.lens))
        half = camera.sensor_width / (2 * camera.lens)
        if camera.sensor_fit == "HORIZONTAL" or width >= height:
            half *= height / width
        return 2 * math.atan(half)

    def of_data(self, data, value):
        """The curve of a number that follows from an animated datablock; sampled if that has curves or drivers."""
        animation = data.animation_data
        if not animation or not (transforms.action_curves(data) or animation.drivers or transforms.uses_strips(data)):
            return y3dfile.Curve(value())
        values, times = [], []
        frame, end = float(self.scene.frame_start), self.scene.frame_end
        while frame <= end:
            whole = math.floor(frame)
            self.scene.frame_set(whole, subframe=frame - whole)
            values.append(value())
            times.append(self.seconds(frame))
            frame += self.options.step
        self.scene.frame_set(self.scene.frame_start)
        return curves.sampled(times, values)

    def light(self, ob):
        """The light of an object, at its own place."""
        light = ob.data
        node = y3dfile.Node(y3dfile.LIGHT, ob.name)
        if light.type == "SUN":
            self.tell("sun '%s' becomes a point light far away" % ob.name)
            node.position = y3dfile.still(0, SUN_HEIGHT, 0)
            node.distance = y3dfile.still(SUN_DISTANCE)
            # A sun of pi watts a square metre lights a white surface fully.
            node.color = [self.of_data(light, lambda i=i: light.color[i] * light.energy / math.pi) for i in range(3)]
            node.color += y3dfile.still(1)
        else:
            if light.type != "POINT":
                self.tell("light '%s' of the type '%s' shines in all directions" % (ob.name, light.type))
            found = transforms.action_curves(light)
            node.color = [curves.convert(found.get(("color", i)), light.color[i], self.seconds)
                          or self.of_data(light, lambda i=i: light.color[i]) for i in range(3)] + y3dfile.still(1)
            # Where a lamp of so many watts would light a white surface fully; the player has half of its colour there.
            node.distance = [self.of_data(light, lambda: max(math.sqrt(max(light.energy, 0)) / (2 * math.pi), 1e-3))]
        node.energy = [curves.convert(transforms.action_curves(light).get(("energy", 0)), light.energy, self.seconds)
                       or self.of_data(light, lambda: light.energy)]
        return node

    @staticmethod
    def bare_light(nodes, light):
        """A light without children stands in the tree itself, in place of the last of its nodes."""
        light.position, light.rotation, light.scale = nodes[-1].position, nodes[-1].rotation, nodes[-1].scale
        return nodes[:-1] + [light]


def write_whole(path, content):
    """Writes a file beside its place first, so that what was there stays if the new one cannot be completed."""
    beside = path + ".part"
    try:
        with open(beside, "wb") as file:
            file.write(content)
        os.replace(beside, path)
    except OSError:
        if os.path.exists(beside):
            os.remove(beside)
        raise


def export(path, context=None, **settings):
    """Writes the context's scene to `path`, and returns what could not be kept, a line each. Raises ExportError."""
    options = Options()
    for name, value in settings.items():
        if not hasattr(Options, name):
            raise ExportError("There is no option '%s'." % name)
        setattr(options, name, value)
    work = Export(context or bpy.context, path, options)
    try:
        work.run()
    except OSError as error:
        raise ExportError("%s: %s" % (error.filename or path, error.strerror)) from error
    return work.told
