"""Evaluated meshes as those of Y3D: triangles of one material each, a vertex for each normal and texture coordinate."""

import array

from . import y3dfile

WITH_GEOMETRY = ("MESH", "CURVE", "SURFACE", "META", "FONT")
DEFAULT_MATERIAL = "default"


def corner_normals(mesh):
    """Three numbers for each corner of the mesh, as it is shaded."""
    normals = array.array("f", bytes(12 * len(mesh.loops)))
    if hasattr(mesh, "calc_normals_split"):
        mesh.calc_normals_split()
        mesh.loops.foreach_get("normal", normals)
    else:
        mesh.corner_normals.foreach_get("vector", normals)
    return normals


def gather(mesh):
    """The submeshes of a Blender mesh as (material slot, positions, normals, uvs, indices), in order of the slots."""
    mesh.calc_loop_triangles()
    triangles = mesh.loop_triangles
    corners = array.array("i", bytes(12 * len(triangles)))
    slots = array.array("i", bytes(4 * len(triangles)))
    triangles.foreach_get("loops", corners)
    triangles.foreach_get("material_index", slots)
    vertices = array.array("i", bytes(4 * len(mesh.loops)))
    mesh.loops.foreach_get("vertex_index", vertices)
    places = array.array("f", bytes(12 * len(mesh.vertices)))
    mesh.vertices.foreach_get("co", places)
    normals = corner_normals(mesh)
    coordinates = None
    if mesh.uv_layers.active:
        coordinates = array.array("f", bytes(8 * len(mesh.loops)))
        mesh.uv_layers.active.data.foreach_get("uv", coordinates)

    parts = {}
    for triangle, slot in enumerate(slots):
        known, positions, out_normals, uvs, indices = parts.setdefault(slot, ({}, [], [], [], []))
        for corner in corners[3 * triangle:3 * triangle + 3]:
            vertex = vertices[corner]
            normal = tuple(normals[3 * corner:3 * corner + 3])
            uv = tuple(coordinates[2 * corner:2 * corner + 2]) if coordinates else None
            key = (vertex, normal, uv)
            index = known.get(key)
            if index is None:
                index = known[key] = len(known)
                x, y, z = places[3 * vertex:3 * vertex + 3]
                positions += (x, z, -y)
                out_normals += (normal[0], normal[2], -normal[1])
                if uv:
                    uvs += (uv[0], 1 - uv[1], 0)
            indices.append(index)
    return [(slot,) + parts[slot][1:] for slot in sorted(parts)]


class Meshes:
    """The meshes of an export. Objects that share a mesh without modifiers share it in the file too."""

    def __init__(self, depsgraph):
        self.depsgraph = depsgraph
        self.list = []
        self.shared = {}        # Blender mesh to (mesh, slots)
        self.names = set()

    def unique(self, name):
        result, count = name, 1
        while result in self.names:
            count += 1
            result = "%s.%03d" % (name, count)
        self.names.add(result)
        return result

    def add(self, ob, material_name):
        """The mesh of an object and the material slot of each of its submeshes, or None where it has no faces.
        `material_name(object, slot)` names a slot's material."""
        own = ob.type != "MESH" or any(modifier.show_render for modifier in ob.modifiers) or ob.data.shape_keys
        if not own and ob.data in self.shared:
            return self.shared[ob.data]
        evaluated = ob.evaluated_get(self.depsgraph)
        mesh = evaluated.to_mesh()
        try:
            parts = gather(mesh) if mesh else []
        finally:
            evaluated.to_mesh_clear()
        result = None
        if parts:
            name = self.unique(ob.name if own and ob.data.users > 1 else ob.data.name)
            submeshes = [y3dfile.Submesh(material_name(ob, slot), *lists) for slot, *lists in parts]
            result = y3dfile.Mesh(name, submeshes), [part[0] for part in parts]
            self.list.append(result[0])
        if not own:
            self.shared[ob.data] = result
        return result
