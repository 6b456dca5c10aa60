"""What ./bench --compare says about two runs."""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parent.parent / "scripts/bench.py"
PEER = 100.0
# Stands for a benchmark: it writes the results of one, with the time of a row from beside it.
PROGRAM = """#!/usr/bin/env python3
import json, pathlib, sys
out = next(word.split("=")[1] for word in sys.argv if word.startswith("--benchmark_out="))
rows = json.loads(pathlib.Path(__file__).with_name("rows").read_text())
json.dump({"benchmarks": [{"name": name, "cpu_time": time, "real_time": 1e9, "time_unit": "us"}
                          for name, time in rows.items()]}, open(out, "w"))
"""


class Comparing(unittest.TestCase):
    def bench(self, folder, ours, peer, *options):
        (folder / "rows").write_text(json.dumps({"parseOurs": ours, "parseTinyxml2": peer}))
        return subprocess.run([sys.executable, SCRIPT, *options, folder / "xml_bench"], capture_output=True, text=True,
                              check=False)

    def test_tells_what_got_slower_by_ratio(self):
        with tempfile.TemporaryDirectory() as temporary:
            folder = pathlib.Path(temporary)
            (folder / "xml_bench").write_text(PROGRAM)
            (folder / "xml_bench").chmod(0o755)
            saved = folder / "saved"
            first = self.bench(folder, 0.8 * PEER, PEER, "--save", saved)
            self.assertIn("| xml: parseOurs | 80 us | parseTinyxml2 | 100 us | 0.80 | 1 |", first.stdout)
            for ours, peer, said, status in ((8.0, 10.0, "No ratio has changed", 0), (80.0, 50.0, "slower, 0.80", 1),
                                             (80.0, 400.0, "faster, 0.80 before, 0.20 now", 0)):
                with self.subTest(ours=ours, peer=peer):
                    again = self.bench(folder, ours, peer, "--compare", saved)
                    self.assertIn(said, again.stdout)
                    self.assertEqual(status, again.returncode)
            saved.write_text("[]")
            self.assertIn("is no saved run", self.bench(folder, 1.0, 1.0, "--compare", saved).stderr)


if __name__ == "__main__":
    unittest.main()
