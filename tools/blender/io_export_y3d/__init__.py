"""Writes scenes as Y3D files: File > Export > Y3D (.y3d).

Without a window:
    blender --background FILE.blend --python-expr "import bpy; bpy.ops.export_scene.y3d(filepath='FILE.y3d')"
with the add-on enabled, or from a script that finds this package: `io_export_y3d.scene.export('FILE.y3d')`.
"""

bl_info = {
    "name": "Y3D scenes",
    "description": "Export meshes, materials, cameras, lights and their animation as a Y3D file",
    "author": "the authors of our glacier heart cold",
    "version": (1, 0, 0),
    "blender": (3, 4, 0),
    "location": "File > Export > Y3D (.y3d)",
    "category": "Import-Export",
}

import bpy
from bpy.props import BoolProperty, FloatProperty, StringProperty
from bpy_extras.io_utils import ExportHelper

from . import scene


class EXPORT_SCENE_OT_y3d(bpy.types.Operator, ExportHelper):
    """Write the scene, or what is selected, as a Y3D file"""

    bl_idname = "export_scene.y3d"
    bl_label = "Export Y3D"
    filename_ext = ".y3d"

    filter_glob: StringProperty(default="*.y3d", options={"HIDDEN"})
    selection: BoolProperty(name="Selection only", default=False, description="Leave out what is not selected")
    texture_path: StringProperty(
        name="Pictures", default="", description="Folder for the pictures, below the one that the file lies in")
    step: FloatProperty(
        name="Sampling step", default=1.0, min=0.01, soft_max=10,
        description="Frames between samples of movement that the format cannot hold as curves")
    description: BoolProperty(
        name="Scene description", default=True, description="Write the XML file beside, which the player starts from")

    def execute(self, context):
        settings = {name: getattr(self, name) for name in ("selection", "texture_path", "step", "description")}
        try:
            told = scene.export(self.filepath, context, **settings)
        except scene.ExportError as error:
            self.report({"ERROR"}, str(error))
            return {"CANCELLED"}
        for text in told:
            self.report({"WARNING"}, text)
        self.report({"INFO"}, "Wrote %s" % self.filepath)
        return {"FINISHED"}


def menu(self, _context):
    self.layout.operator(EXPORT_SCENE_OT_y3d.bl_idname, text="Y3D (.y3d)")


def register():
    bpy.utils.register_class(EXPORT_SCENE_OT_y3d)
    bpy.types.TOPBAR_MT_file_export.append(menu)


def unregister():
    bpy.types.TOPBAR_MT_file_export.remove(menu)
    bpy.utils.unregister_class(EXPORT_SCENE_OT_y3d)
