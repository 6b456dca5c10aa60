"""An author's session: what a save goes through, what is told, and that nothing that was saved is lost."""

import os
import pathlib
import re
import signal
import subprocess
import sys
import threading
import time
import unittest

from showfolder import BLUE, RED, Run, Show, clear_entry, digits, two_colours, wait_until

SCRIPTS = pathlib.Path(__file__).resolve().parent.parent / "scripts"
sys.path.insert(0, str(SCRIPTS))
import explain
import history

# A red entry that is over before a session is, and a comment that a save of the program drops.
SCRIPT = "<script>\n\t<!-- the opening -->\n\t%s\n</script>\n" % clear_entry(0, 2, digits(RED))


class Session(Run):
    """./author with a show, and what it says."""

    def __init__(self, show, *arguments):
        self.process = subprocess.Popen(
            [sys.executable, "-B", SCRIPTS / "author.py", "--show", show.path, "--program", os.environ["SHOW_RENDERER"],
             *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.said = ""
        self.reader = threading.Thread(target=self.read, daemon=True)
        self.reader.start()

    def read(self):
        for line in self.process.stdout:
            self.said += line

    def wait_to_say(self, text, times=1):
        wait_until(lambda: self.said.count(text) >= times, "it never said '%s':\n%s" % (text, self.said))

    def end(self):
        self.process.wait(60)
        self.reader.join()
        self.process.stdout.close()
        return self.process.returncode, self.said

    def __exit__(self, *_):
        self.process.terminate()
        self.end()


def author(show, *arguments):
    return Session(show, *arguments).end()


class Author(unittest.TestCase):
    def test_a_save_is_checked_and_goes_where_it_belongs(self):
        with Show(SCRIPT, settings="<time start='1'/>") as show:
            settings = show.read("tidewheel.xml")
            show.write("script.xml", SCRIPT.replace('end="2"', 'end="3"'))     # in the root: played first
            with Session(show) as session:
                session.focus()
                session.wait_to_say("script.xml and data/script.xml differ")
                time.sleep(4)                                               # the guard: the last entry is over
                self.assertEqual(1, author(show)[0])                        # a second session
                session.keys("Tab", "ctrl+o", "ctrl+s")                     # the entry is switched off
                session.wait_to_say("saved to data/script.xml")
                session.wait_to_say("`clear` 0-3: off")
                session.keys("ctrl+o", "ctrl+s", "Tab", "Escape")
                status, said = session.end()
            self.assertEqual(0, status, said)
            self.assertIn("2 saves", said)
            self.assertIn('<effect name="clear" start="0" end="3">', show.read("data/script.xml"))
            self.assertNotIn("guard", show.read("data/script.xml"))
            self.assertFalse((show.path / "script.xml").exists())
            self.assertEqual(settings, show.read("tidewheel.xml"))
            self.assertEqual(4, author(show, "--history")[1].count("entries"))
            self.assertIn("`clear` 0-3: on", author(show, "--diff", "2")[1])
            author(show, "--restore", "2")
            self.assertIn('state="off"', show.read("data/script.xml"))
            self.assertIn("<!-- the opening -->", show.read("data/script.xml"))

    def test_it_goes_on_where_it_was(self):
        with Show(two_colours(4, 999)) as show:
            with Session(show) as session:
                session.focus()
                session.wait_for(RED)
                session.wait_for(BLUE)
                (show.path / "data/env.png").touch()
                session.wait_to_say("data/env.png has changed")
                author(show, "--restart")
                session.wait_to_say(" from ")
                session.focus()
                session.wait_for(BLUE)
                # A save while nobody looks is taken over by the next session.
                session.process.send_signal(signal.SIGSTOP)
                session.keys("ctrl+s")
                saved = show.path / "history/session/script.xml"
                wait_until(lambda: b"\t\t<trigger" in saved.read_bytes(), "nothing was saved")
                session.keys("Escape")
                session.process.kill()
            with Session(show) as session:
                session.wait_to_say("was not taken over yet")
                session.focus()
                session.wait_for(BLUE)
                session.keys("Escape")
                self.assertIn("1 save;", session.end()[1])

    def test_an_error_gets_its_file_and_line(self):
        for name, text, line in (
                ("data/script.xml", "<script>\n<a b></a></script>", "data/script.xml:2: "),
                ("data/katedral.xml", "<scenes>\n\n<scene", "data/katedral.xml:3: "),
                ("data/sun.png", "no picture", "'sun.png'"),
                ("data/track.wav", "no music", "(data/track.wav)"),
                ("data/script.xml", "<script>\n" + clear_entry(0, 9, "red") + "</script>",
                 "data/script.xml:2: clear 0-9: color 'red'"),
                ("data/script.xml", '<script>\n<effect name="meta" start="0" end="9"/></script>',
                 "'empty.y3d' (katedral.xml)"),
        ):
            with self.subTest(name, text=text), Show() as show:
                show.write(name, text)
                status, said = author(show)
                self.assertEqual(1, status, said)
                self.assertRegex(said, "Error: [^\n]*\n(.*\n)*    [^\n]*" + re.escape(line))

    def test_a_show_that_is_over_at_once_says_why(self):
        with Show() as show:
            show.write("data/script.xml", '<script>\n<effect name="sun" start="0" end="9">\n<spline name="alpha"/></effect></script>')
            status, said = author(show)
            self.assertEqual(1, status, said)
            self.assertIn("over at once: data/script.xml:3: ", said)

    def test_history_is_thinned(self):
        with Show() as show:
            kept = history.History(show.path, "script.xml")
            for minutes in range(0, 4 * 24 * 60, 20):
                stamp = time.strftime(history.STAMP, time.gmtime(1700000000 + 60 * minutes))
                show.write("script.%s.xml" % stamp, str(minutes))
            kept.thin(kept.copies()[0][0])
            ages = [(kept.copies()[0][0] - moment) / 3600 for moment, _ in kept.copies()]
            self.assertEqual(4, sum(age <= 1 for age in ages))
            self.assertAlmostEqual(23, sum(1 < age <= 24 for age in ages), delta=1)
            self.assertAlmostEqual(3, sum(age > 24 for age in ages), delta=1)


if __name__ == "__main__":
    unittest.main()
