"""y3d view, under a display of its own: pictures of a small scene, and a window that follows its file.

    view_test.py Y3D
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time
import unittest

Y3D = pathlib.Path(sys.argv[1]).resolve()
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "blender/io_export_y3d"))
import y3dfile


def scene(color, camera=True):
    """A square of one colour, twenty long and lit by nothing, in the left half of what a camera above it sees."""
    material = y3dfile.Material("paint")
    material.shadeless, material.diffuse = True, color
    square = y3dfile.Submesh("paint", [-20, 0, -10, -20, 0, 10, 0, 0, 10, 0, 0, -10], [0, 1, 0] * 4, [], [0, 1, 2, 0, 2, 3])
    node = y3dfile.Node(y3dfile.MESH_INSTANCE, "carpet")
    node.mesh = "square"
    nodes = [node]
    if camera:
        nodes.insert(0, y3dfile.Node(y3dfile.CAMERA, "above"))
        nodes[0].position, nodes[0].fov = y3dfile.still(0, 5, 0), y3dfile.still(1)
    return y3dfile.scene_file("Scene", [y3dfile.Mesh("square", [square])], [material], {}, nodes)


def pixel(picture, x, y):
    return tuple(subprocess.check_output(["ffmpeg", "-v", "error", "-i", picture, "-vf", "crop=1:1:%d:%d:exact=1" % (x, y),
                                          "-f", "rawvideo", "-pix_fmt", "rgb24", "-"]))


class View(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="y3d-view-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.file = self.folder / "scene.y3d"
        self.file.write_bytes(scene((1, 0, 0, 1)))
        self.picture = self.folder / "out.png"

    def view(self, *arguments, **settings):
        return subprocess.run([Y3D, "view", self.file, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              text=True, timeout=60, **settings)

    def test_draws_what_the_camera_sees(self):
        done = self.view("--screenshot", self.picture, "--size", "200x100")
        self.assertEqual((0, ""), (done.returncode, done.stderr))
        self.assertEqual((255, 0, 0), pixel(self.picture, 90, 50))
        self.assertEqual((41, 43, 48), pixel(self.picture, 110, 50))

    def test_a_scene_without_camera_or_light_is_seen_from_all_round(self):
        self.file.write_bytes(scene((0, 1, 0, 1), camera=False))
        self.assertEqual(0, self.view("--screenshot", self.picture, "--size", "50x40", "--turntable", "3").returncode)
        for x, y, colour in ((25, 20, (0, 255, 0)), (75, 20, (0, 255, 0)), (25, 60, (0, 255, 0)), (75, 60, (41, 43, 48))):
            self.assertEqual(colour, pixel(self.picture, x, y))

    def test_says_what_cannot_be_done(self):
        for arguments, trouble in ((["--camera", "below"], "no camera 'below'"), (["--size", "5"], "no size such as"),
                                   (["--time", "now"], "no number"), (["--screenshot", "out.jpg"], ".png"),
                                   (["--scene", "Other"], "no scene 'Other'"), (["--turntable", "3"], "--screenshot")):
            done = self.view("--screenshot", self.picture, *arguments) if trouble != "--screenshot" else self.view(*arguments)
            self.assertEqual((2, 1), (done.returncode, done.stderr.count("\n")), done.stderr)
            self.assertIn(trouble, done.stderr)
        bare = {name: value for name, value in os.environ.items() if "DISPLAY" not in name}
        self.assertIn("no display", self.view(env=bare).stderr)

    def test_the_window_follows_its_file(self):
        window = subprocess.Popen([Y3D, "view", self.file], stderr=subprocess.PIPE, text=True)
        self.addCleanup(window.kill)

        def wait_for(pattern):
            for _ in range(100):
                title = subprocess.run(["xdotool", "search", "--name", "scene.y3d", "getwindowname"],
                                       stdout=subprocess.PIPE, text=True).stdout
                if re.search(pattern, title):
                    return
                time.sleep(0.1)
            self.fail("no %s in %s" % (pattern, title))

        wait_for("camera 'above'.*2 triangles")
        self.file.write_bytes(b"half a file")
        wait_for("camera 'above'.*NOT RELOADED")
        self.file.write_bytes(scene((0, 0, 1, 1), camera=False))
        wait_for("free camera .the scene has none. - no light.*2 triangles")
        subprocess.run(["xdotool", "search", "--name", "scene.y3d", "windowfocus", "windowsize", "300", "200"], check=True)
        time.sleep(0.5)
        subprocess.run(["xdotool", "key", "Escape"], check=True)
        self.assertEqual(0, window.wait(timeout=20))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
