"""Dated copies of a show's script: all of the last hour, then one an hour, then one a day."""

import datetime
import os
import time
from pathlib import Path

HOUR, DAY = 3600, 24 * 3600
STAMP = "%Y-%m-%d_%H-%M-%SZ"


def write_whole(path, data):
    """Writes a file so that it is there in full or as it was before; a link stays a link."""
    path = Path(os.path.realpath(path))
    beside = path.with_name(path.name + ".part")
    try:
        beside.write_bytes(data)
        if path.exists():
            beside.chmod(path.stat().st_mode)
        os.replace(beside, path)
    except OSError:
        beside.unlink(missing_ok=True)
        raise


class History:
    """The copies of one script in a folder, named after the moment in universal time at which they were kept."""

    def __init__(self, folder, script):
        self.folder = folder
        self.stem, self.suffix = os.path.splitext(script)

    def copies(self):
        """(time, path) of each copy, the newest first."""
        found = []
        for path in self.folder.glob(self.stem + ".*" + self.suffix):
            stamp = path.name[len(self.stem) + 1:len(path.name) - len(self.suffix)]
            try:
                moment = datetime.datetime.strptime(stamp, STAMP).replace(tzinfo=datetime.timezone.utc)
            except ValueError:
                continue
            found.append((moment.timestamp(), path))
        return sorted(found, reverse=True)

    def has(self, data):
        return any(path.read_bytes() == data for _, path in self.copies())

    def keep(self, data):
        """Keeps a copy, but not the same one twice in a row. Returns its path."""
        copies = self.copies()
        if copies and copies[0][1].read_bytes() == data:
            return copies[0][1]
        moment = int(time.time())
        # Two in one second: the later one takes the next.
        if copies:
            moment = max(moment, int(copies[0][0]) + 1)
        stamp = datetime.datetime.fromtimestamp(moment, datetime.timezone.utc).strftime(STAMP)
        path = self.folder / ("%s.%s%s" % (self.stem, stamp, self.suffix))
        write_whole(path, data)
        self.thin(moment)
        return path

    def thin(self, now):
        """Of what is older than an hour the last of each hour stays, of what is older than a day the last of each."""
        seen = set()
        for moment, path in self.copies():
            age = now - moment
            if age <= HOUR:
                continue
            slot = ("hour", moment // HOUR) if age <= DAY else ("day", moment // DAY)
            if slot in seen:
                path.unlink(missing_ok=True)
            seen.add(slot)
