#!/usr/bin/env python3
"""An author's safe session with a show; ./author --help tells how it is used.

The program runs in a folder of its own, history/session, in which the show's files are links. So the configuration of
the show stays as it is, the guard against the end of the show is only ever in the session's copy of the script, and
what Ctrl+S writes is looked at before it takes the place of the script in data/.
"""

import argparse
import datetime
import fcntl
import json
import os
import re
import select
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from explain import Errors, explain, over_at_once
from history import History, write_whole
from showroot import CONFIGURATION, TREE, ShowRoot, tool

GUARD = "author's guard"        # an entry that is switched off and ends after all others
GUARD_END = 86400               # seconds
LITTLE_DISK = 200 << 20         # bytes
LOOK = 0.2                      # seconds from one look at the session's files to the next
PATIENCE = 3                    # seconds for the program to end when it is told to

NOT_WHOLE = {"syntax", "root", "no-keys"}      # findings of a script that the player cannot read to its end


def say(text):
    print(text, flush=True)


def fail(text):
    sys.exit("Error: " + text)


def guarded(text):
    """A script with the guard as its last entry; unchanged where it has no end."""
    place = text.rfind(b"</script")
    guard = '\t<effect name="%s" state="off" start="0" end="%d"/>\n' % (GUARD, GUARD_END)
    return text if place < 0 else text[:place] + guard.encode() + text[place:]


def with_attribute(text, tag, attribute, value):
    """A configuration in which every `tag` has that value; one is added if there is none."""
    attributes = re.compile(r"""\s%s\s*=\s*(["']).*?\1""" % attribute)

    def change(match):
        return '<%s%s %s="%s"%s>' % (tag, attributes.sub("", match[1]), attribute, value, match[2])

    text, count = re.subn(r"<%s\b([^>]*?)\s*(/?)>" % tag, change, text)
    return text if count else text.replace("<demo>", '<demo>\n\t<%s %s="%s"/>' % (tag, attribute, value), 1)


def stamp_of(path):
    """What changes when a file is written."""
    try:
        status = path.stat()
    except OSError:
        return None
    return status.st_mtime_ns, status.st_size, status.st_ino


def runs_in(process, folder):
    """Whether a process is there and has this working directory."""
    try:
        return os.readlink("/proc/%s/cwd" % process) == str(folder)
    except OSError:
        return False


class Script:
    """The script of a show: the one in data/, and one in the root, which the player would take first."""

    def __init__(self, show):
        self.show = show
        named = show.values("script", "file")
        if len(named) != 1:
            fail("%s names %s, and a session has one" % (CONFIGURATION, "no script" if not named else
                                                         "%d scripts" % len(named)))
        self.name = named[0][0]
        self.home = show.data / self.name       # where it belongs
        self.loose = show.folder / self.name    # where the program would save it
        self.history = History(show.folder / "history", self.name)
        if show.read(self.name) is None:
            fail("the script '%s' is neither in the show's folder nor in data/" % self.name)

    def current(self):
        """What the player would play now."""
        return self.show.read(self.name)

    def put(self, data):
        """Puts a new version where the script belongs. What was there is kept; one in the root goes."""
        for path in (self.home, self.loose):
            if path.is_file() and not self.history.has(path.read_bytes()):
                self.history.keep(path.read_bytes())
        write_whole(self.home, data)
        self.loose.unlink(missing_ok=True)
        self.history.keep(data)


class Session:
    def __init__(self, show, program):
        self.show, self.program = show, program
        self.script = Script(show)
        self.folder = show.folder / "history/session"
        self.saved = self.folder / self.script.name     # what the program reads, and what Ctrl+S writes
        self.given = self.folder / "given.xml"          # what of that is known
        self.position = self.folder / "bin/position"
        self.process = self.errors = None
        self.saves = 0
        self.told = set()                               # findings of the save before
        self.wants_restart = self.wants_end = False

    # What would lose work.

    def open(self):
        """Makes the session's folder and takes it; ends here where what is saved would be lost."""
        for folder in (self.show.folder, self.show.data):
            try:
                tempfile.TemporaryFile(dir=folder).close()
            except OSError as error:
                fail("%s cannot be written (%s): what you save would be lost" % (folder, error.strerror))
        (self.folder / "bin").mkdir(parents=True, exist_ok=True)
        self.lock = open(self.folder / "lock", "a+", encoding="utf-8")
        try:
            fcntl.flock(self.lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            self.lock.seek(0)
            fail("a session with this show is open already (process %s): the two would overwrite each other's saves"
                 % (self.lock.read().split() or ["?"])[0])
        self.lock.seek(0)
        left = (self.lock.read().split() + ["", ""])[1]
        if left and runs_in(left, self.folder / "bin"):
            fail("the program of a session that was killed still runs (process %s): save there and leave it" % left)
        self.note()
        free = shutil.disk_usage(self.folder).free
        if free < LITTLE_DISK:
            say("Warning: only %d MB are free on this disk." % (free >> 20))
        if self.script.loose.is_file() and self.script.home.is_file() \
                and self.script.loose.read_bytes() != self.script.home.read_bytes():
            say("Warning: %s and data/%s differ. The first is played; with your first save it goes to data/, and the "
                "other is kept in the history." % (self.script.name, self.script.name))
        if self.saved.is_file() and self.given.is_file() and self.saved.read_bytes() != self.given.read_bytes():
            say("The last session was cut off, and a save of it was not taken over yet:")
            self.look_at_save()

    def note(self):
        """Writes down who has the session."""
        self.lock.truncate(0)
        self.lock.write("%d %s" % (os.getpid(), self.process.pid if self.process else ""))
        self.lock.flush()

    # The program.

    def link_files(self):
        """Links to all files of the show, but for what the session has of its own."""
        own = {"bin", "history", ".git", "lock", self.given.name, CONFIGURATION, self.script.name}
        self.unlink_files()
        (self.show.folder / "screenshots").mkdir(exist_ok=True)
        for path in self.show.folder.iterdir():
            if path.name not in own:
                (self.folder / path.name).symlink_to(path)

    def unlink_files(self):
        for path in self.folder.iterdir():
            if path.is_symlink():
                path.unlink()

    def last_position(self):
        """Where the show was last, in seconds; 0 if it was behind its end."""
        try:
            position = float(self.position.read_text())
        except (OSError, ValueError):
            return None
        ends = [float(end) for end in re.findall(r"""<effect\b[^>]*\bend\s*=\s*["']([\d.]+)""", self.text())]
        return position if position < max(ends, default=0) else 0.0

    def text(self):
        return self.script.current().decode("utf-8", "replace")

    def configure(self):
        """The session's configuration: the show's, in a window, with the small clock, from the last place on."""
        text = re.sub(r"<videodump\b[^>]*>(\s*</videodump>)?", "", self.show.configuration())
        text = with_attribute(text, "window", "mode", "windowed")
        text = with_attribute(text, "hud", "mini", "on")
        position = self.last_position()
        if position is not None:
            text = with_attribute(text, "time", "start", "%.2f" % position)

        def archive(match):
            scheme, _, path = match[3].rpartition("://")
            whole = os.path.normpath(self.show.folder / "bin" / path) + ("/" if path.endswith("/") else "")
            return match[1] + match[2] + (scheme and scheme + "://") + whole + match[2]

        text = re.sub(r"""(<archive\b[^>]*\bfile\s*=\s*)(["'])(.+?)\2""", archive, text)
        write_whole(self.folder / CONFIGURATION, text.encode())
        return position

    def start(self):
        self.link_files()
        known = self.script.current()
        for path in (self.given, self.saved):
            write_whole(path, guarded(known))
        position = self.configure()
        if not self.position.exists():
            self.position.write_text("")
        self.known, self.seen = known, stamp_of(self.saved)
        self.script.history.keep(known)
        self.data_seen = self.data_files()
        self.position_given = stamp_of(self.position)
        self.started = time.monotonic()
        self.process = subprocess.Popen([self.program], cwd=self.folder / "bin", stderr=subprocess.PIPE,
                                        stdout=subprocess.DEVNULL, start_new_session=True)
        self.errors = Errors(self.process.stderr)
        self.note()
        say("%s runs%s. Ctrl+S in it saves; r and Return here, or %s --restart, starts it again at its place."
            % (self.show.name, " from %.1f s on" % position if position else "", self.show.command("author")))

    def stop(self):
        """Ends the program; one that has the HUD on screen does not end by itself."""
        self.process.terminate()
        try:
            self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()

    # What is saved.

    def check(self, path):
        """What `timeline check` finds in a script; None if it cannot be asked."""
        status, output, error = tool("timeline", "check", "--json", *self.show.effect_table(), path)
        if status not in (0, 1):
            say("    timeline check: " + error.strip())
            return None
        return json.loads(output)

    def tell_findings(self, found):
        """The findings that the save before did not have."""
        words = {(each["severity"], each["text"], each["code"]): each["line"] for each in found}
        for word, line in words.items():
            if word not in self.told:
                say("    data/%s:%d: %s: %s [%s]" % (self.script.name, line, *word))
        if both := len(self.told & set(words)):
            say("    %d finding%s as before" % (both, "" if both == 1 else "s"))
        self.told = set(words)

    def look_at_save(self):
        """Takes over what Ctrl+S has written: checked, without the guard, with its comments."""
        raw = self.saved.read_bytes()
        write_whole(self.given, raw)
        work, before, merged = (self.folder / name for name in ("saved.part.xml", "before.part.xml", "merged.part.xml"))
        try:
            work.write_bytes(raw)
            found = self.check(work)
            broken = [each for each in found or [] if each["code"] in NOT_WHOLE]
            if broken:
                kept = self.script.history.folder / (self.script.name + ".broken")
                write_whole(kept, raw)
                say("%s saved, but it cannot be read back: line %d: %s"
                    % (clock(), broken[0]["line"], broken[0]["text"]))
                say("    data/%s stays as it was; the saved one is %s. Mend it in the HUD and save again."
                    % (self.script.name, self.show.label(kept)))
                return
            if GUARD.encode() in raw:
                status, _, error = tool("timeline", "delete", GUARD, "-f", work, "-i")
                if status:
                    say("    timeline delete: " + error.strip())
            current = self.script.current()
            before.write_bytes(current)
            status, _, error = tool("timeline", "merge-comments", before, work, "-o", merged)
            if status:
                say("    The comments are not carried over: " + error.strip())
                merged.write_bytes(work.read_bytes())
            say("%s saved to data/%s" % (clock(), self.script.name))
            if current != getattr(self, "known", current):
                kept = self.script.history.keep(current)
                say("    Somebody else had changed the script meanwhile. That version is kept: %s"
                    % self.show.label(kept))
            _, difference, _ = tool("timeline", "diff", before, merged)
            for line in difference.splitlines() or ["nothing has changed"]:
                say("    " + line)
            self.tell_findings(self.check(merged) or [])
            self.known = merged.read_bytes()
            self.script.put(self.known)
            self.saves += 1
        except OSError as error:
            say("Error: the saved script could not be put into data/ (%s). It is whole in %s." % (error, self.saved))
        finally:
            for path in (work, before, merged):
                path.unlink(missing_ok=True)

    # What else changes on the disk.

    def data_files(self):
        """The files that the program has read, with what changes when they do."""
        paths = [path for path in self.show.data.rglob("*") if path.is_file() and path.suffix != ".part"]
        paths += [self.show.folder / path.name for path in paths if path.parent == self.show.data]
        return {path: stamp_of(path) for path in (*paths, self.show.packed)}

    def look_at_data(self):
        now = self.data_files()
        for path in sorted(now.keys() | self.data_seen.keys()):
            if now.get(path) == self.data_seen.get(path):
                continue
            if path.name == self.script.name and self.script.current() == self.known:
                continue
            say("%s %s %s. r and Return here, or %s --restart, shows it."
                % (clock(), self.show.label(path), "has changed" if now.get(path) else "is gone",
                   self.show.command("author")))
        self.data_seen = now

    def look(self):
        stamp = stamp_of(self.saved)
        if stamp != self.seen and stamp is not None:
            self.seen = stamp
            self.look_at_save()
        self.look_at_data()

    # The session.

    def listen(self, seconds):
        """Waits, and takes what is typed meanwhile."""
        if not sys.stdin or not sys.stdin.isatty():
            time.sleep(seconds)
        elif select.select([sys.stdin], [], [], seconds)[0] and sys.stdin.readline().strip() == "r":
            self.wants_restart = True

    def run(self):
        """Runs the program until it is left; the status for the shell."""
        signal.signal(signal.SIGUSR1, lambda *_: setattr(self, "wants_restart", True))
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            signal.signal(number, lambda *_: setattr(self, "wants_end", True))
        self.start()
        while True:
            self.listen(LOOK)
            ended = self.process.poll() is not None
            if not ended and (self.wants_end or self.wants_restart):
                self.stop()
                ended = True
            self.look()
            if not ended:
                continue
            if self.wants_restart and not self.wants_end:
                self.wants_restart = False
                self.start()
                continue
            status = self.tell_end()
            if not (status and sys.stdin and sys.stdin.isatty() and self.asks_again()):
                return status

    def tell_end(self):
        """What the program's end was; 1 where that was an error."""
        status = self.process.returncode
        if self.wants_end:
            return 0
        if status == 0:
            lines = over_at_once(self.show.folder, time.monotonic() - self.started)
            for line in lines:
                say("    The show is over at once: " + line)
            return 1 if lines else 0
        if error := self.errors.error():
            for line in explain(self.show.folder, error) or (
                    "No file of the show explains it: it came with a change that was not saved, such as a trigger's",
                    "value that its effect refuses. What was saved is safe."):
                say("    " + line)
        elif status < 0:
            say("The program was ended by signal %d." % -status)
        else:
            say("The program ended with status %d." % status)
        place = self.last_position()
        if place and stamp_of(self.position) != self.position_given:
            say("    That was at %.1f s of the show." % place)
        return 1

    def asks_again(self):
        say("r and Return starts it again; Return alone leaves.")
        while not self.wants_end:
            if select.select([sys.stdin], [], [], LOOK)[0]:
                if sys.stdin.readline().strip() != "r":
                    return False
                self.start()
                return True
        return False

    def close(self):
        if self.saves:
            say("%d save%s; the last one is data/%s%s. %s --history lists the versions." % (
                self.saves, "" if self.saves == 1 else "s", self.script.name, self.under_version_control(),
                self.show.command("author")))
        elif self.script.loose.is_file():
            say("%s lies in the show's folder and is played before the one in data/. Move it there when it is good:\n"
                "    %s" % (self.script.name, shlex.join(["mv", str(self.script.loose), str(self.script.home)])))
        self.unlink_files()
        self.lock.truncate(0)

    def under_version_control(self):
        """Whether git knows of a change, in words."""
        done = subprocess.run(["git", "-C", self.show.folder, "status", "--porcelain", "--", self.script.home],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False) \
            if shutil.which("git") else None
        return ", which is not committed" if done and done.stdout.strip() else ""


def clock():
    return time.strftime("%H:%M:%S")


# The history.

def choose(script, number):
    copies = script.history.copies()
    if not 1 <= number <= len(copies):
        fail("there is no version %d; there are %d" % (number, len(copies)))
    return copies[number - 1][1]


def list_history(script):
    current = script.current()
    for number, (moment, path) in enumerate(script.history.copies(), 1):
        data = path.read_bytes()
        when = datetime.datetime.fromtimestamp(moment).strftime("%Y-%m-%d %H:%M:%S")
        now = "  as it is now" if data == current else ""
        say("%4d  %s  %4d entries%s" % (number, when, data.count(b"<effect"), now))


def show_difference(script, number):
    path = choose(script, number)
    with tempfile.NamedTemporaryFile(suffix=".xml") as now:
        now.write(script.current())
        now.flush()
        status, output, error = tool("timeline", "diff", path, now.name)
    if status > 1:
        fail(error.strip())
    say(output.rstrip() or "nothing has changed since")


def restore(script, number):
    path = choose(script, number)
    data = path.read_bytes()
    script.put(data)
    say("data/%s is %s again; what it was before is in the history too." % (script.name, path.name))


def restart(folder):
    try:
        with open(folder / "history/session/lock", encoding="utf-8") as lock:
            try:
                fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
            except BlockingIOError:
                os.kill(int(lock.read().split()[0]), signal.SIGUSR1)
                return
    except (FileNotFoundError, IndexError, ValueError):
        pass
    fail("there is no session with this show")


def main(arguments):
    parser = argparse.ArgumentParser(prog="author", usage=argparse.SUPPRESS, add_help=False)
    parser.add_argument("--show", type=Path, default=TREE)
    parser.add_argument("--program", type=Path)
    parser.add_argument("--history", action="store_true")
    parser.add_argument("--diff", type=int)
    parser.add_argument("--restore", type=int)
    parser.add_argument("--restart", action="store_true")
    options = parser.parse_args(arguments)
    show = ShowRoot(options.show)
    if options.restart:
        return restart(show.folder)
    try:
        if options.history:
            return list_history(Script(show))
        if options.diff is not None:
            return show_difference(Script(show), options.diff)
        if options.restore is not None:
            return restore(Script(show), options.restore)
        session = Session(show, options.program or show.folder / "bin" / (show.name + "-render"))
        session.open()
        try:
            return session.run()
        finally:
            session.close()
    except OSError as error:
        return fail("%s: %s" % (error.filename or show.folder, error.strerror))


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
