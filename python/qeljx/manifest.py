# SPDX-License-Identifier: Apache-2.0
"""What qeljx.archive keeps on disk: the manifest of what has been done, and files that appear when they are whole."""
import collections
import os
import re
import sqlite3
import time
import uuid
from typing import Callable, Iterable, Iterator, NamedTuple, Optional

PICTURES = (".jpg", ".jpeg", ".jpe", ".jp2", ".j2k", ".j2c", ".jpc", ".png", ".pgm", ".ppm", ".pnm", ".pam", ".pgx")
MANIFEST, SUMS = "manifest.sqlite", "SHA256SUMS"
_PART = re.compile(r"\..*\.[0-9a-f]{32}\.part")


class Job(NamedTuple):
    """A file to be transcoded: names below the two folders, and what tells whether it has changed since."""

    source: str
    output: str
    bytes: int
    mtime: int  # nanoseconds


def part_of(path: str) -> str:
    """A hidden name beside the file, for what is on its way into it."""
    folder, name = os.path.split(path)
    return os.path.join(folder, f".{name}.{uuid.uuid4().hex}.part")


def store(path: str, chunks: Iterable[bytes]) -> None:
    """Writes a file that is there whole or not at all."""
    part = part_of(path)
    try:
        with open(part, "xb") as file:
            for chunk in chunks:
                file.write(chunk)
            file.flush()
            os.fsync(file.fileno())
        os.replace(part, path)
    except BaseException:
        if os.path.exists(part):
            os.remove(part)
        raise


class Manifest:
    """What has been done, by source file. Only one run at a time can open it."""

    def __init__(self, path: str):
        self.database = sqlite3.connect(path, timeout=1)
        self.database.row_factory = sqlite3.Row
        self.database.execute("PRAGMA locking_mode=EXCLUSIVE")
        self.database.execute(
            "CREATE TABLE IF NOT EXISTS files (source TEXT PRIMARY KEY, source_bytes INTEGER, source_mtime INTEGER,"
            " source_sha256 TEXT, output TEXT, bytes INTEGER, sha256 TEXT, settings TEXT, damaged INTEGER, notes TEXT)"
        )
        self.database.execute("BEGIN EXCLUSIVE")
        self.committed = time.monotonic()

    def find(self, job: Job) -> Optional[sqlite3.Row]:
        """What has been made of the file as it is now."""
        return self.database.execute(
            "SELECT * FROM files WHERE source = ? AND source_bytes = ? AND source_mtime = ? AND sha256 IS NOT NULL",
            (job.source, job.bytes, job.mtime)).fetchone()

    def has(self, job: Job, settings: str, dest: str) -> bool:
        """Whether the file has been transcoded so, and is still there."""
        row = self.find(job)
        if row is None or row["settings"] != settings or row["output"] != job.output:
            return False
        try:
            return os.path.getsize(os.path.join(dest, job.output)) == row["bytes"]
        except OSError:
            return False

    def add(self, job: Job, result: dict, settings: str) -> None:
        notes = [result["error"]] if "error" in result else result["warnings"]
        values = (job.source, job.bytes, job.mtime, result.get("source_sha256"), job.output, result.get("bytes"),
                  result.get("sha256"), settings, result.get("damaged"), "\n".join(notes))
        self.database.execute(f"INSERT OR REPLACE INTO files VALUES ({', '.join('?' * len(values))})", values)
        if time.monotonic() - self.committed > 0.2:
            self.commit()

    def commit(self) -> None:
        self.database.commit()
        self.database.execute("BEGIN EXCLUSIVE")
        self.committed = time.monotonic()

    def outputs(self) -> Iterator[sqlite3.Row]:
        return self.database.execute("SELECT * FROM files WHERE sha256 IS NOT NULL ORDER BY output")

    def close(self) -> None:
        self.database.commit()
        self.database.close()


def jobs_in(source: str, format: str, fail: Callable[[str, str], None] = lambda name, error: None) -> Iterator[Job]:
    """The pictures below a folder; fail(name, error) for what cannot be read.

    Those that would get the same name keep their extension before the new one."""
    suffix = "." + {"jpeg": "jpg"}.get(format, format)
    for folder, folders, names in os.walk(source, onerror=lambda error: fail(error.filename, error.strerror)):
        folders.sort()
        pictures = sorted(name for name in names if name.lower().endswith(PICTURES) and not name.startswith("."))
        stems = collections.Counter(os.path.splitext(name)[0] for name in pictures)
        below, taken = os.path.relpath(folder, source), set()
        for name in pictures:
            file, stem = os.path.normpath(os.path.join(below, name)), os.path.splitext(name)[0]
            output = (stem if stems[stem] == 1 else name) + suffix
            try:
                file.encode()
                about = os.stat(os.path.join(folder, name))
            except UnicodeEncodeError:
                fail(file, "the name is not UTF-8")
            except OSError as error:
                fail(file, error.strerror)
            else:
                if output in taken:
                    fail(file, f"another file becomes {output}")
                    continue
                taken.add(output)
                yield Job(file, os.path.normpath(os.path.join(below, output)), about.st_size, about.st_mtime_ns)


def remove_parts(dest: str) -> None:
    """What killed workers have left."""
    for folder, _, names in os.walk(dest):
        for name in filter(_PART.fullmatch, names):
            os.remove(os.path.join(folder, name))


def write_sums(manifest: Manifest, dest: str) -> None:
    lines = [f"{row['sha256']}  {row['output']}\n" for row in manifest.outputs() if "\n" not in row["output"]]
    store(os.path.join(dest, SUMS), ["".join(lines).encode()])
