"""bin/timeline where it hears, draws and renders: beats on music made here and on the show's, the sheet in a browser,
and why on the show. What needs the show's data (SHOW_DATA) or Chromium is skipped without it, and says so."""

import array
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import wave

PROGRAM = os.path.abspath(sys.argv.pop(1))
SHOW_DATA = os.environ.get("SHOW_DATA", "")
BROWSER = shutil.which("chromium")
needs_show = unittest.skipUnless(SHOW_DATA, "the show's data was not made")

SCRIPT = """<script>
    <!-- opening: all of it -->
    <effect name="clear" start="0" end="16"/>
    <!-- timeline: allow gap -->
    <effect name="sun" start="4" end="12">
        <trigger start="2" name="a&lt;b" value="x" repeat="2" delay="1"/>
        <spline name="alpha" type="square"><key time="0" value="1"/><key time="4" value="5"/></spline>
    </effect>
    <effect name="cubes" start="1" end="2" state="off"/>
</script>
"""

# What a hand does on the page; what comes of it is read from the dumped document.
HAND = """<script>
const found = [];
try {
  const rowsBox = () => document.querySelector(".rows").getBoundingClientRect();
  const mark = document.querySelector('[data-line="5"] .trigger').getBoundingClientRect();
  found.push(Math.round((mark.left + mark.width / 2 - rowsBox().left) / rowsBox().width * data.seconds * 100) / 100);
  const bar = document.querySelector('[data-line="5"] .bar').getBoundingClientRect();
  found.push(Math.round((bar.left - rowsBox().left) / rowsBox().width * data.seconds * 100) / 100);
  const at = (t) => ({ clientX: rowsBox().left + t * scale, clientY: bar.top + 20, bubbles: true });
  rows.dispatchEvent(new MouseEvent("mousemove", at(7.5)));
  found.push(tip.textContent.includes("alpha 1"));
  rows.dispatchEvent(new MouseEvent("mousemove", at(8.5)));
  found.push(tip.textContent.includes("alpha 5"));
  rows.dispatchEvent(new MouseEvent("click", at(9.5)));
  found.push(lines.hidden, lines.querySelectorAll("b").length);
  const before = scale;
  document.dispatchEvent(new KeyboardEvent("keydown", { key: "+" }));
  found.push(Math.round(scale / before * 100) / 100);
  const again = document.querySelector('[data-line="5"] .trigger').getBoundingClientRect();
  found.push(Math.abs(again.width - mark.width) < 0.5);
  scroll.dispatchEvent(new WheelEvent("wheel", { deltaY: 100, ctrlKey: true, clientX: 500, cancelable: true }));
  found.push(scale < before * 1.25);
} catch (error) { found.push(String(error)); }
document.title = "FOUND " + JSON.stringify(found);
</script></body>"""


class TimelineShow(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "show.xml").write_text(SCRIPT)

    def run_it(self, *words, status=0):
        done = subprocess.run([PROGRAM, *words], capture_output=True, text=True, cwd=self.folder, timeout=300)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def beat(self, bpm, offset, seconds):
        """Short bursts on every beat, loud ones on the first of a bar."""
        rate = 22050
        samples = array.array("h", bytes(2 * rate * seconds))
        for n in range(int((seconds - offset) * bpm / 60.0)):
            begin = round((offset + n * 60.0 / bpm) * rate)
            for i in range(min(rate // 20, len(samples) - begin)):
                level = (24000 if n % 4 == 0 else 9000) * (1.0 - i / (rate / 20))
                samples[begin + i] = int(level if i // (40 if n % 4 == 0 else 12) % 2 else -level)
        with wave.open(str(self.folder / "beat.wav"), "wb") as file:
            file.setparams((1, 2, rate, len(samples), "NONE", ""))
            file.writeframes(samples.tobytes())

    def test_beats_of_music_made_here(self):
        for bpm, offset in ((97.3, 0.231), (140.0, 0.05)):
            self.beat(bpm, offset, 24)
            found = json.loads(self.run_it("beats", "beat.wav", "--json", "-o", "beats.json").stdout)
            self.assertAlmostEqual(found["bpm"], bpm, delta=0.05)
            self.assertAlmostEqual(found["beats"][0], offset, delta=0.005)
            self.assertAlmostEqual(found["bars"][0], offset, delta=0.005)
        self.run_it("snap", "show.xml", "--beats", "beats.json", "--within", "1", "-o", "out.xml")
        tags = self.run_it("beats", "beat.wav", "--bpm", "140", "--triggers", "go", "1", "--every", "4", "--to", "4").stdout
        self.assertEqual(re.findall(r'start="([\d.]+)" name="go" value="1"', tags), ["0.05", "1.7643", "3.4786"])
        (self.folder / "bad.ogg").write_text("no music")
        self.assertRegex(self.run_it("beats", "bad.ogg", status=2).stderr, r"^timeline: bad.ogg is no music\n$")

    @needs_show
    def test_beats_of_the_show(self):
        found = json.loads(self.run_it("beats", SHOW_DATA + "/glacier.ogg", "--json").stdout)
        self.assertEqual(found["bpm"], 120.0)
        self.assertAlmostEqual(found["offset"], 0.0, delta=0.005)
        self.assertAlmostEqual(found["bars"][30], 60.0, delta=0.005)

    @unittest.skipUnless(BROWSER, "chromium is not installed")
    def test_sheet_in_a_browser(self):
        self.beat(120, 0.5, 16)
        self.run_it("sheet", "sheet.html", "show.xml", "--music", "beat.wav", "--svg", "sheet.svg")
        page = (self.folder / "sheet.html").read_text()
        self.assertNotRegex(page.replace("http://www.w3.org/2000/svg", ""), r"https?://")
        self.assertIn('class="section">opening</text>', page)
        (self.folder / "hand.html").write_text(page.replace("</body>", HAND))
        done = subprocess.run(
            [BROWSER, "--headless", "--no-sandbox", "--disable-gpu", "--enable-logging=stderr", "--window-size=1000,700",
             f"--user-data-dir={self.folder}/profile", "--dump-dom", "hand.html"],
            capture_output=True, text=True, cwd=self.folder, timeout=300)
        self.assertNotIn("CONSOLE", done.stderr)
        found = json.loads(re.search(r"<title>FOUND (.*?)</title>", done.stdout).group(1))
        self.assertEqual(found, [6, 4, True, True, False, 4, 1.25, True, True])

    @needs_show
    def test_why_on_the_show(self):
        (self.folder / "data").symlink_to(SHOW_DATA)
        shutil.copy(SHOW_DATA + "/tidewheel.xml", self.folder)
        script = ('<script><effect name="clear" start="0" end="9"/><effect name="clear" start="1" end="9">'
                  '<trigger start="0" name="color" value="255000000"/></effect>'
                  '<effect name="sun" start="2" end="9" state="off"/></script>')
        (self.folder / "two.xml").write_text(script)
        two = ("-f", "two.xml", "--size", "64", "48")
        found = json.loads(self.run_it("why", "3", *two, "--json").stdout)
        self.assertEqual(found["pixels"], 64 * 48)
        self.assertEqual([entry["pixels"] for entry in found["entries"]], [0, 64 * 48])
        self.assertIn("switched off", self.run_it("why", "3", *two, "--exact").stdout)
        costs = json.loads(self.run_it("why", *two, "--profile", "--from", "2", "--to", "5", "--json").stdout)
        self.assertEqual([list(entry["milliseconds"]) for entry in costs["entries"]], [["2", "3", "4"]] * 2)
        # Ctrl+C leaves nothing behind.
        place = self.folder / "temporary"
        place.mkdir()
        run = subprocess.Popen([PROGRAM, "why", *two, "--profile"], cwd=self.folder, start_new_session=True,
                               env={**os.environ, "TMPDIR": str(place)})
        while not any(place.glob("*/renderer.log")):
            self.assertIsNone(run.poll())
            time.sleep(0.05)
        os.killpg(run.pid, signal.SIGINT)
        self.assertEqual((-signal.SIGINT, []), (run.wait(60), list(place.iterdir())))


if __name__ == "__main__":
    unittest.main()
