"""What goes wrong from outside: how the program ends, what the user reads, and what lies on the disk afterwards."""

import contextlib
import os
import shutil
import signal
import subprocess
import unittest

from showfolder import RED, Show, clear_entry, two_colours

WINDOW = "[Tidewheel] The window in 'tidewheel.xml' "
SIZES = WINDOW + "needs a width and a height from 1 to 16384 "


def remove(name):
    return lambda show: (show.path / name).unlink()


def write(name, text):
    return lambda show: show.write(name, text)


def window(attributes, more=""):
    return lambda show: show.configure("<window %s/>%s" % (attributes, more))


def change_zip(change):
    def pack_and_change(show):
        show.pack()
        show.zip.write_bytes(change(show.zip.read_bytes()))
    return pack_and_change


def damage_font(data):
    place = data.index(b"tidewheel.font") + 30
    return data[:place] + bytes([data[place] ^ 255]) + data[place + 1:]


def cut_music(show):
    path = show.path / "data/track.wav"
    path.write_bytes(path.read_bytes()[:9000])


def deny(show):
    for path in (show.path, *show.path.rglob("*")):
        path.chmod(path.stat().st_mode & 0o555)


# What the program finds at its start: what it is; how it is brought about; the status and all that is read; what is
# saved. The rest of the disk stays as it was.
AT_THE_START = (
    ("no configuration", remove("tidewheel.xml"), 1, "[Tidewheel] Could not load 'tidewheel.xml'"),
    ("broken configuration", write("tidewheel.xml", "<demo> <music"), 1,
     "(error at line 1, col 14); EOF (when reading tag at 1:7)"),
    ("another root", write("tidewheel.xml", "<show></show>"), 1,
     "[Tidewheel] The root tag of 'tidewheel.xml' is not 'demo'"),
    ("no music", lambda show: show.configure(show.tags.replace("music", "muse")), 0, None, "tidewheel.xml"),
    ("two windows", lambda show: show.configure('<window width="64" height="48" type="opengl"/>' + show.tags), 0, None,
     "tidewheel.xml"),
    ("data in the zip alone", Show.pack, 0, None, "tidewheel.xml"),
    ("no window", lambda show: show.configure(""), 1, "[Tidewheel] There is no window tag in 'tidewheel.xml'",
     "tidewheel.xml"),
    ("no size", window('type="opengl"'), 1, SIZES + "(0x0)"),
    ("negative size", window('width="320" height="-1" type="opengl"'), 1, SIZES + "(320x-1)"),
    ("no OpenGL", window('width="320" height="240" type="software"'), 1, WINDOW + "is not of the type 'opengl'",
     "tidewheel.xml"),
    ("dump of odd height", window('width="320" height="241" type="opengl"', '<videodump name="a.png" fps="25"/>'), 1,
     "[Tidewheel] Frames can be dumped only from a window of even height (241)", "tidewheel.xml"),
    ("dump as JPEG", window('width="320" height="240" type="opengl"', '<videodump name="a.jpg" fps="25"/>'), 1,
     "Could not find something that could write to 'a.jpg'"),
    ("no font", remove("data/tidewheel.font"), 1, "[Tidewheel] Could not find 'tidewheel.font'!"),
    ("no logo", remove("data/tidewheel_logo.png"), 1, "AM::loadImage, File not found (tidewheel_logo.png)"),
    ("no music file", remove("data/track.wav"), 1, "[Tidewheel] Could not find music in 'track.wav'"),
    ("noise for music", write("data/track.wav", "no music"), 1, "[Tidewheel] FMOD-ERROR; Unknown file format"),
    ("music cut short", cut_music, 0, None, "tidewheel.xml"),
    ("no script", remove("data/script.xml"), 1, "[Tidewheel] Could not find the scriptfile 'script.xml'"),
    ("broken script", write("data/script.xml", "<script>\n<a b></a></script>"), 1,
     "(error at line 2, col 6); '=' expected! (when reading tag at 1:9)"),
    ("zip cut short", change_zip(lambda data: data[:-100]), 1, "[Tidewheel] Could not find 'tidewheel.font'!"),
    ("zip with a wrong sum", change_zip(damage_font), 1, "[Tidewheel] Could not find 'tidewheel.font'!"),
)


LONG = two_colours(200, 300)
RESTRAINED = ("setpriv", "--bounding-set=-dac_override") if os.geteuid() == 0 else ("env",)
READ_ONLY = ("unshare", "--map-root-user", "--mount", "sh", "-c",
             'mount --bind .. .. && mount -o remount,bind,ro .. && cd "$PWD" && exec "$0"')
FULL_DISK = ("prlimit", "--fsize=0")
NO_READER = ("bash", "-c", 'exec "$0" > >(true)')
SMALL_DISK, PACKED = "small disk", "packed"
WHOLE = ("tidewheel.xml",)


def lose_data(show):
    shutil.rmtree(show.path / "data")


def fill_disk(show):
    with contextlib.suppress(OSError), open(show.path / "filler", "wb", buffering=0) as filler:
        while filler.write(bytes(512)):
            pass


# What happens while the program plays: what it is; what the program is run under, or where it lies; what is changed
# under it; the keys pressed, or the signal that ends it; the status and what is read; what is saved. The rest of the
# disk stays as it was.
WHILE_IT_PLAYS = (
    ("terminated", (), None, (), signal.SIGTERM, 0, None, WHOLE),
    ("interrupted", (), None, (), signal.SIGINT, 0, None, WHOLE),
    ("terminal closed", (), None, (), signal.SIGHUP, -signal.SIGHUP, None, ()),
    ("killed", (), None, (), signal.SIGKILL, -signal.SIGKILL, None, ()),
    ("configuration gone", (), remove("tidewheel.xml"), (), signal.SIGTERM, 1,
     "[Tidewheel] Could not load 'tidewheel.xml'", ()),
    ("configuration broken", (), write("tidewheel.xml", "<demo"), (), signal.SIGTERM, 1,
     "(error at line 1, col 6); EOF (when reading tag at 1:1)", ()),
    ("data gone", (), lose_data, ("ctrl+s", "Escape"), None, 0, None, ("script.xml", *WHOLE)),
    ("zip cut short", PACKED, lambda show: os.truncate(show.zip, 0), ("ctrl+s", "Escape"), None, 0, None,
     ("script.xml", *WHOLE)),
    ("disk full", FULL_DISK, None, ("s", "ctrl+s", "Escape"), None, 0, None, ()),
    ("disk full, a real one", SMALL_DISK, fill_disk, ("s", "ctrl+s", "Escape"), None, 0, None, ()),
    ("read-only root", READ_ONLY, None, ("s", "ctrl+s", "Escape"), None, 0, None, ()),
    ("output that nobody reads", NO_READER, None, (), signal.SIGTERM, 0, None, WHOLE),
    ("folder write-protected", RESTRAINED, deny, ("s", "ctrl+s", "Escape"), None, 0, None, ()),
)


# What happens while the program sets up its effects, from a zip: what it is; what is changed under it, or ends it; the
# error. The status is 1, the configuration is saved, and the rest of the disk stays as it was.
ABORTED = "User aborted!"
WHILE_IT_SETS_UP = (
    ("Escape", lambda show, run: run.keys("Escape"), ABORTED),
    ("terminated", lambda show, run: run.send(signal.SIGTERM), ABORTED),
    ("window closed", lambda show, run: run.close_window(), ABORTED),
    ("zip cut short", lambda show, run: os.truncate(show.zip, 4096), r"[^\n]*\b\w+\.(png|jpg|xml)\b[^\n]*"),
)


class Faults(unittest.TestCase):
    def listing(self, show):
        return {str(path.relative_to(show.path)): path.read_bytes() for path in show.path.rglob("*") if path.is_file()}

    def compare(self, before, show, saved=()):
        """Nothing is lost and nothing left behind; what was `saved` is there in full."""
        after = self.listing(show)
        for name in saved:
            self.assertRegex(after.pop(name).decode(), r"\A<(\w+)>\n(.*\n)*</\1>\n\Z", name)
            before.pop(name, None)
        self.assertEqual(before.keys(), after.keys())
        self.assertEqual([], [name for name in before if before[name] != after[name]])

    def test_at_the_start(self):
        for name, bring_about, status, text, *saved in AT_THE_START:
            with self.subTest(name), Show(seconds=0.5) as show:
                bring_about(show)
                before = self.listing(show)
                ended, _, errors = show.run()
                self.assertEqual((status, text and "Error: %s\n" % text or ""), (ended, errors))
                self.compare(before, show, saved)

    def test_what_the_machine_lacks(self):
        for environment, status, text in (
                ({"SDL_VIDEODRIVER": "dummy"}, 1, "Error: Could not set video mode '[^\n]*"),
                ({"SDL_VIDEODRIVER": "x11", "DISPLAY": ":9999"}, 1, "Error: Video initialization failed: [^\n]*"),
                ({"SDL_AUDIODRIVER": "nothing"}, 0, "No sound device [^\n]*, playing in silence"),
                ({"SDL_AUDIODRIVER": "alsa", "ALSA_CONFIG_PATH": "/dev/null"}, 0,
                 "No sound device [^\n]*, playing in silence")):
            with self.subTest(**environment), Show(seconds=0.5) as show:
                before = self.listing(show)
                ended, _, errors = show.run(**environment)
                self.assertEqual(status, ended)
                self.assertRegex(errors, "\\A%s\\s*\\Z" % text)
                self.compare(before, show, [] if status else ["tidewheel.xml"])

    def test_while_it_plays(self):
        for name, under, change, keys, end, status, text, saved in WHILE_IT_PLAYS:
            with self.subTest(name), Show(LONG, disk="1m" if under == SMALL_DISK else None) as show:
                if under == READ_ONLY and subprocess.run([*READ_ONLY, "true"], cwd=show.path / "bin",
                                                         stderr=subprocess.DEVNULL).returncode:
                    self.skipTest("mounting is not allowed here")
                if under == PACKED:
                    show.pack()
                show.write("script.xml", LONG)
                with show.start(*([] if isinstance(under, str) else under)) as run:
                    run.focus()
                    run.wait_for(RED)
                    if change:
                        change(show)
                    before = self.listing(show)
                    run.keys(*keys)
                    if end:
                        run.send(end)
                    ended, _, errors = run.end()
                self.assertEqual((status, text and "Error: %s\n" % text or ""), (ended, errors))
                self.compare(before, show, saved)

    def test_what_another_writes_while_it_plays_stays(self):
        with Show(LONG) as show, show.start() as run:
            run.focus()
            run.wait_for(RED)
            show.configure(show.tags + "<mine/>")
            run.send(signal.SIGTERM)
            self.assertEqual((0, ""), run.end()[::2])
            self.assertIn("<mine/>", show.read("tidewheel.xml"))

    def test_two_programs_in_one_folder(self):
        with Show(seconds=1) as show:
            before = self.listing(show)
            with show.start() as first, show.start() as second:
                for run in (first, second):
                    self.assertEqual((0, ""), run.end()[::2])
            self.compare(before, show, ["tidewheel.xml"])

    def test_while_it_sets_up(self):
        for name, change, text in WHILE_IT_SETS_UP:
            # Pictures that take their time, so that the program can be stopped among them.
            with self.subTest(name), Show(LONG, picture_size=2048) as show:
                for loose in ("track.wav", "script.xml"):
                    shutil.copy(show.path / "data" / loose, show.path)
                show.pack()
                with show.start() as run:
                    run.focus()
                    run.send(signal.SIGSTOP)
                    change(show, run)
                    before = self.listing(show)
                    run.send(signal.SIGCONT)
                    ended, _, errors = run.end()
                self.assertEqual(1, ended)
                self.assertRegex(errors, "\\AError: %s\n\\Z" % text)
                self.compare(before, show, ["tidewheel.xml"])

    def test_a_failure_of_an_effect_keeps_the_settings(self):
        with Show("<script>%s</script>" % clear_entry(0, 10, "12")) as show:
            before = self.listing(show)
            status, _, errors = show.run()
            self.assertEqual(1, status)
            self.assertRegex(errors, "^Error: .*basic_string.*\n$")
            self.compare(before, show, ["tidewheel.xml"])


if __name__ == "__main__":
    unittest.main()
