"""The Blender add-on against Blender itself: a scene is built, exported and read with the player's own reader, and every
movement, vertex and material is held against what Blender evaluates.

    test_export.py SAMPLE_SCENE Y3D PACKAGES     our reader, the command y3d, the folder with the add-on's package
"""

import json
import math
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

SAMPLE, Y3D, PACKAGES = sys.argv[1:4]
HERE = pathlib.Path(__file__).resolve().parent


class Export(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="y3d-blender-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        blender = ["blender", "--background", "--factory-startup", "--python-exit-code", "3",
                   "--python", HERE / "blender_scenes.py", "--", cls.folder, PACKAGES]
        done = subprocess.run(blender, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        assert done.returncode == 0, done.stdout
        cls.expected = json.loads((cls.folder / "expected.json").read_text())
        cls.file = cls.folder / "out/scene.y3d"
        times = ["%.9g" % time for time in cls.expected["times"]]
        cls.scene = json.loads(subprocess.check_output([SAMPLE, cls.file, *times]))
        cls.nodes = {node["name"]: node for node in cls.scene["nodes"]}

    def test_everything_moves_as_in_blender(self):
        sampled = [text.split("'")[1] for text in self.expected["told"] if "sampled" in text]
        self.assertEqual({"eased", "noisy", "moving order", "follower", "driven", "first view"}, set(sampled))
        for name, matrices in self.expected["world"].items():
            if name == "sun":
                continue
            # Samples are straight lines between quarters of a frame, over the scene's own length.
            tolerance = 0.03 if name in sampled else 3e-4
            for time, wanted, found in zip(self.expected["times"], matrices, self.nodes[name]["world"]):
                if name in sampled and not 0 <= time <= 4:
                    continue
                if self.nodes[name]["type"] == 0x5140:
                    wanted, found = wanted[12:15], found[12:15]
                size = max(1, *map(abs, wanted))
                fault = max(abs(a - b) for a, b in zip(wanted, found)) / size
                self.assertLess(fault, tolerance, "%s at %g: %s, %s" % (name, time, wanted, found))

    def test_the_tree_is_blenders(self):
        def above(name):
            parent = self.nodes[name]["parent"]
            while "." in parent:
                parent = self.nodes[parent]["parent"]
            return parent

        for name, parent in (("child", "root"), ("ball", "child"), ("sheared", "offset"), ("lamp", "child"),
                             ("first view", ""), ("no faces", "")):
            self.assertEqual(parent, above(name), name)
        self.assertEqual("first view", self.scene["nodes"][0]["name"])

    def test_views_and_lights(self):
        first = self.nodes["first view"]
        for time, lens, fov, green in zip(self.expected["times"], self.expected["lens"], first["fov"],
                                          self.expected["green"]):
            if 0 <= time <= 4:
                self.assertAlmostEqual(2 * math.atan(36 / 2 / lens * 0.75), fov, delta=5e-3)
        for green, color in zip(self.expected["green"], self.nodes["lamp"]["color"]):
            self.assertAlmostEqual(green, max(0, color[1]), delta=1e-4)     # Blender limits what a curve gives
        # A sun shines down its own axis, from far away.
        axis, place = self.expected["world"]["sun"][0][4:7], self.scene["nodes"]
        shining = next(node for node in place if node["name"] == "sun" and node["type"] == 0x5140)["world"][0][12:15]
        for a, b in zip(axis, shining):
            self.assertAlmostEqual(1000 * a, b, delta=0.1)

    def test_meshes_have_blenders_corners(self):
        for name, slots in (("ball", ["first", "second"]), ("bevelled", ["default"])):
            found = []
            mesh = self.scene["meshes"][self.nodes[name]["mesh"]]
            self.assertEqual(slots, [part["material"] for part in mesh])
            for slot, part in enumerate(mesh):
                self.assertLess(len(part["positions"]), len(part["indices"]), "vertices are shared")
                for index in part["indices"]:
                    (x, y, z), (nx, ny, nz), (u, v, _) = (part[key][index] for key in ("positions", "normals", "uvs"))
                    found.append([slot, x, -z, y, nx, -nz, ny, u, 1 - v])
            wanted = sorted(self.expected["corners"][name], key=lambda corner: corner[0])
            self.assertEqual(len(wanted), len(found))
            for a, b in zip(wanted, found):
                self.assertLess(max(abs(p - q) for p, q in zip(a, b)), 1e-5)
        self.assertEqual(self.nodes["ball"]["mesh"], self.nodes["twin"]["mesh"])
        self.assertEqual("packed", self.nodes["twin"]["override"])

    def test_the_player_takes_it(self):
        checked = subprocess.run([Y3D, "check", self.file], stdout=subprocess.PIPE, text=True)
        self.assertNotEqual(2, checked.returncode, checked.stdout)
        pictures = self.folder / "out/pictures"
        self.assertEqual((self.folder / "a picture.png").read_bytes(), (pictures / "a_picture.png").read_bytes())
        self.assertTrue((pictures / "packed_picture.png").exists())
        self.assertIn('filename="scene.y3d" texturepath="pictures"', (self.folder / "out/scene.xml").read_text())
        self.assertIn("no such folder", self.expected["refused"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
