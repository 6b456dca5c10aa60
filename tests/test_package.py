"""What ./package makes of a small show: it plays, holds what is needed alone, and is the same twice; and what it refuses."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
SHOW = pathlib.Path(os.environ["NEW_SHOW"])
PROGRAM = pathlib.Path(os.environ["NEW_PROGRAM"])

SCRIPT = """<script>
<effect name="clear" start="0" end="9"><trigger start="0" name="color" value="000000255"/></effect>
<effect name="scene" start="0" end="9"/>
</script>"""


class Package(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="package-test-")
        self.addCleanup(place.cleanup)
        self.show = pathlib.Path(place.name) / "a show" / SHOW.name
        shutil.copytree(SHOW, self.show)
        (self.show / "bin").mkdir(exist_ok=True)
        shutil.copy(PROGRAM, self.show / "bin" / SHOW.name)
        (self.show / "data/script.xml").write_text(SCRIPT)
        (self.show / "data/.leftover").write_text("not for others")

    def package(self, name, *options):
        done = subprocess.run([sys.executable, "-B", ROOT / "scripts/package.py", self.show, SHOW.name, self.show / name,
                               *options], stderr=subprocess.PIPE, stdout=subprocess.PIPE, text=True, check=False)
        return done.returncode, done.stderr

    def test_a_release_is_whole_and_the_same_twice(self):
        for name in ("one.zip", "two.zip"):
            self.assertEqual((0, ""), self.package(name, "--at", "4"))
        self.assertEqual((self.show / "one.zip").read_bytes(), (self.show / "two.zip").read_bytes())
        with zipfile.ZipFile(self.show / "one.zip") as file:
            names = {name.split("/", 1)[1] for name in file.namelist()}
            self.assertLessEqual({"start", "file_id.diz", f"{SHOW.name}.nfo", f"screenshots/{SHOW.name}-1.png",
                                  "lib/libSDL-1.2.so.0", "lib/libGLU.so.1", "licences/PACKAGES.txt"}, names)
            self.assertFalse([name for name in names if re.search(r"libc\.so|libGL\.so|libOpenGL", name)])
            self.assertTrue(file.getinfo(f"{SHOW.name}/start").external_attr >> 16 & 0o111)
            with zipfile.ZipFile(file.open(f"{SHOW.name}/{SHOW.name}.sdr")) as data:
                self.assertIn("scene.y3d", data.namelist())
                self.assertNotIn(".leftover", data.namelist())

    def refused(self, trouble, *options):
        status, errors = self.package("out.zip", *options)
        self.assertEqual((1, 1), (status, errors.count("\n")), errors)
        self.assertIn(trouble, errors)
        self.assertFalse((self.show / "out.zip").exists())

    def test_what_is_refused(self):
        (self.show / "script.xml").write_text(SCRIPT.replace("000000255", "255000000"))
        self.refused("--script root or --script data")
        (self.show / "script.xml").write_text(SCRIPT.replace('end="9"/>', 'end="9">'))
        self.refused("script.xml:4: ", "--script", "root")
        (self.show / "script.xml").write_text(SCRIPT.replace("</script>", '<effect name="clear" start="0" end="9"/></script>'))
        self.refused("of one colour", "--script", "root", "--at", "4")
        (self.show / "data/scene.y3d").unlink()
        self.refused("'scene.y3d' is in none", "--script", "data")


if __name__ == "__main__":
    unittest.main()
