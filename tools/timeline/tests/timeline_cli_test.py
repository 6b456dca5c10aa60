"""bin/timeline as a user runs it: statuses, where edits go, and what help, completion and manual have in common."""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM = sys.argv.pop(1)
SCRIPT = '<script>\n\t<effect name="clear" start="0" end="9"/>\n\t<effect name="sun" start="1" end="2"/>\n</script>\n'


class Timeline(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "data").mkdir()
        self.script = self.folder / "data/show.xml"
        self.script.write_text(SCRIPT)
        (self.folder / "tidewheel.xml").write_text('<demo><script file="show.xml"/></demo>')

    def run_it(self, *words, status=0, **more):
        done = subprocess.run([PROGRAM, *words], capture_output=True, text=True, cwd=self.folder, timeout=60, **more)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def test_takes_the_show_of_the_folder_and_writes_back(self):
        self.run_it("set", "sun@1/start", "-0.5", "-i")
        self.assertEqual(self.script.read_text(), SCRIPT.replace('start="1"', 'start="-0.5"'))
        self.run_it("shift", "--from", "-1", "--by", "-2.5", "--show", ".", "-o", "out.xml")
        self.assertIn('<effect name="sun" start="-3" end="-0.5"/>', (self.folder / "out.xml").read_text())
        done = self.run_it("delete", "sun", "-f", "-", "-o", "-", input=SCRIPT)
        self.assertEqual(done.stdout, SCRIPT.replace('\t<effect name="sun" start="1" end="2"/>\n', ""))

    def test_statuses(self):
        changed = SCRIPT.replace('end="2"', 'end="3"')
        self.assertEqual(self.run_it("diff", "data/show.xml", "-", input=SCRIPT).stdout, "")
        told = self.run_it("diff", "data/show.xml", "-", input=changed, status=1).stdout
        self.assertEqual(told, "`sun` 1-2: end 2 to 3\n")
        found = json.loads(self.run_it("check", "--json", "-", input=SCRIPT, status=1).stdout)
        self.assertEqual([finding["code"] for finding in found], ["gap", "gap"])
        refused = (["print", "none.xml"], ["delete", "moon", "-i"], ["enable", "sun"], ["snap", "-i"], ["dance"], [])
        for words in refused:
            done = self.run_it(*words, status=2)
            self.assertRegex(done.stderr, r"^timeline: .*\n(Try .*\n)?$", words)
            self.assertIn("dance" if "dance" in words else "", done.stderr)
        self.assertEqual(self.script.read_text(), SCRIPT)

    def test_help_completion_and_manual_know_the_same_commands(self):
        shown = self.run_it("--help").stdout
        manual = self.run_it("man").stdout
        names = [line.split()[0] for line in shown.split("Commands:\n")[1].split("\n\n")[0].splitlines()]
        self.assertGreater(len(names), 15)
        ask = "\nCOMP_CWORD=1; COMP_WORDS=(timeline ''); _timeline; echo ${COMPREPLY[@]}"
        shell = ["bash", "-c", self.run_it("completion").stdout + ask]
        completed = subprocess.run(shell, capture_output=True, text=True, check=True).stdout.split()
        self.assertEqual(completed, [*names, "--help"])
        for name in names:
            self.assertIn("\n.SS " + name.replace("-", "\\-") + "\n", manual)
            self.run_it(name, "--help")


if __name__ == "__main__":
    unittest.main()
