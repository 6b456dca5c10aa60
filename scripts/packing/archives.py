"""Archives of which two runs make the same bytes."""

import gzip
import os
import tarfile
import time
import zipfile

from . import TOOLS, output_of


def files_of(folder):
    return sorted(path for path in folder.rglob("*") if path.is_file())


def zip_folder(folder, archive, moment, prefix=""):
    with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as file:
        for path in files_of(folder):
            entry = zipfile.ZipInfo(prefix + path.relative_to(folder).as_posix(), time.gmtime(moment)[:6])
            entry.create_system, entry.compress_type = 3, zipfile.ZIP_DEFLATED
            entry.external_attr = (0o100755 if os.access(path, os.X_OK) else 0o100644) << 16
            file.writestr(entry, path.read_bytes(), compresslevel=9)


def tar_folder(folder, archive, moment, prefix):
    with open(archive, "wb") as raw, gzip.GzipFile("", "wb", 9, raw, mtime=moment) as packed, \
            tarfile.open(fileobj=packed, mode="w") as file:
        for path in files_of(folder):
            entry = tarfile.TarInfo(prefix + path.relative_to(folder).as_posix())
            entry.size, entry.mtime = path.stat().st_size, moment
            entry.mode = 0o755 if os.access(path, os.X_OK) else 0o644
            with open(path, "rb") as content:
                file.addfile(entry, content)


def pack_data(show, names, folder, archive, moment):
    zip_folder(folder / "data", archive, moment)
    output_of(TOOLS / "packcheck", archive, folder / "data", input="".join(name + "\n" for name in names).encode())
