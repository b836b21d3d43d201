# SPDX-License-Identifier: Apache-2.0
"""JPEG 2000 pictures of many megapixels for qeljx.archive: cut into rows of tiles, each a task, so that no worker holds
all of one."""
import collections
import hashlib
import mmap
import os
from typing import Iterable, Iterator, NamedTuple, Optional

import qeljx
from qeljx import _qeljx
from qeljx.manifest import part_of, store

TILE = 1024  # both sides
_STARTS = (b"\0\0\0\x0cjP  ", b"\xff\x4f\xff\x51")
_CHUNK = 1 << 20


class Split(NamedTuple):
    """What a task leaves to others: parts, (function, arguments), and what joins them, called with their results too."""

    parts: list
    join: tuple


class Calls:
    """Calls of a run, (file, function, arguments); before the next of them the parts of files that have been split."""

    def __init__(self, calls: Iterable):
        self.calls, self.parts = iter(calls), collections.deque()

    def __iter__(self) -> Iterator:
        return self

    def __next__(self) -> tuple:
        if self.parts:
            return self.parts.popleft()
        file, function, arguments = next(self.calls)
        return (file, None, None), function, arguments

    def finished(self, key: tuple, result: dict) -> Optional[dict]:
        """What has become of the file; None while there is more to do for it."""
        file, whole, index = key
        if "split" in result:
            whole = _Whole(result["split"])
            self.parts.extend(((file, whole, i), *part) for i, part in enumerate(whole.split.parts))
            return None
        if index is None:
            return result
        whole.results[index] = result
        if "error" in result:
            self._drop(whole)
        if len(whole.results) == len(whole.split.parts) - whole.dropped:
            function, arguments = whole.split.join
            results = [whole.results[i] for i in sorted(whole.results)]
            self.parts.appendleft(((file, whole, None), function, (*arguments, results)))
        return None

    def _drop(self, whole: "_Whole") -> None:
        left = [part for part in self.parts if part[0][1] is not whole]
        whole.dropped += len(self.parts) - len(left)
        self.parts = collections.deque(left)


class _Whole:
    def __init__(self, split: Split):
        self.split, self.results, self.dropped = split, {}, 0


def headers(path: str, pixels: Optional[float]) -> Optional[dict]:
    """What the file says of itself if it is JPEG 2000 of more pixels; with None no file is."""
    if pixels is None:
        return None
    with open(path, "rb") as file:
        if not file.read(12).startswith(_STARTS):
            return None
    about = qeljx.info(_mapped(path))
    return about if about["width"] * about["height"] > pixels else None


def _mapped(path: str) -> mmap.mmap:
    with open(path, "rb") as file:
        return mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)


def _message(error: BaseException) -> str:
    return str(error) or type(error).__name__


def _chunks(path: str) -> Iterator[bytes]:
    with open(path, "rb") as file:
        while chunk := file.read(_CHUNK):
            yield chunk


def digest(path: str) -> str:
    made = hashlib.sha256()
    for chunk in _chunks(path):
        made.update(chunk)
    return made.hexdigest()


def _joined(results: list[dict]) -> dict:
    """What holds for all parts together."""
    return {"damaged": any(result["damaged"] for result in results),
            "warnings": list(dict.fromkeys(line for result in results for line in result["warnings"]))}


def transcoding(source: str, output: str, format: str, options: dict, strips: bool, about: dict) -> Split:
    size = about["width"], about["height"]
    rows = -(-size[1] // TILE)
    parts = [(transcode_row, (source, output, format, options, size, row)) for row in range(rows)]
    metadata = None if strips else about["metadata"]
    return Split([(source_digest, (source,)), *parts], (join_rows, (output, format, options, size, metadata)))


def _tile_rows(size, form, format, options, metadata=None):
    return _qeljx.TileRows(*size, *form, TILE, options.get("quality"), options.get("lossless", False), format == "jp2",
                           metadata)


def source_digest(source: str, threads: int = 0) -> dict:
    try:
        return {"source_sha256": digest(source)}
    except OSError as error:
        return {"error": _message(error)}


def transcode_row(source: str, output: str, format: str, options: dict, size: tuple, row: int, threads: int = 0) -> dict:
    """The tiles of a row, in a hidden file beside the output."""
    if threads:
        qeljx.set_threads(threads)
    piece = part_of(output)
    try:
        picture = qeljx.decode(_mapped(source), region=(0, row * TILE, size[0], TILE))
        form = picture.array.shape[2] if picture.array.ndim == 3 else 1, picture.precision
        coded = _tile_rows(size, form, format, options).encode(row, picture.array)
        os.makedirs(os.path.dirname(output), exist_ok=True)
        with open(piece, "xb") as file:
            file.write(coded)
    except (OSError, ValueError, RuntimeError, MemoryError) as error:
        _remove(piece)
        return {"error": _message(error)}
    return {"piece": piece, "bytes": len(coded), "form": form, "warnings": list(picture.warnings),
            "damaged": picture.is_damaged}


def _remove(piece: str) -> None:
    try:
        os.remove(piece)
    except FileNotFoundError:
        pass


def join_rows(output: str, format: str, options: dict, size: tuple, metadata, results: list, threads: int = 0) -> dict:
    """The file of all rows, and what the manifest keeps of it."""
    rows = [result for result in results if "piece" in result]
    try:
        for result in results:
            if "error" in result:
                return result
        if len({row["form"] for row in rows}) != 1:
            return {"error": "its rows are of different kinds"}
        tiles = _tile_rows(size, rows[0]["form"], format, options, metadata)
        made, length = hashlib.sha256(), 0

        def contents():
            yield tiles.header(sum(row["bytes"] for row in rows))
            for row in rows:
                yield from _chunks(row["piece"])
            yield tiles.end()

        def counted():
            nonlocal length
            for chunk in contents():
                made.update(chunk)
                length += len(chunk)
                yield chunk

        store(output, counted())
    except (OSError, ValueError, MemoryError) as error:
        return {"error": _message(error)}
    finally:
        for row in rows:
            _remove(row["piece"])
    joined = _joined(rows)
    return {"source_sha256": results[0]["source_sha256"], "sha256": made.hexdigest(), "bytes": length,
            "pixels": size[0] * size[1], "warnings": joined["warnings"] + tiles.left_out, "damaged": joined["damaged"]}


def checking(output: str, about: dict) -> Split:
    width, height = about["width"], about["height"]
    tile = about["tile_size"][1]
    step = tile * max(1, TILE // tile) if tile <= 4 * TILE else TILE
    parts = [(check_rows, (output, (0, y, width, step))) for y in range(0, height, step)]
    return Split(parts, (join_checks, (os.path.getsize(output), width * height)))


def check_rows(output: str, region: tuple, threads: int = 0) -> dict:
    if threads:
        qeljx.set_threads(threads)
    try:
        picture = qeljx.decode(_mapped(output), region=region)
    except (OSError, ValueError, MemoryError) as error:
        return {"error": _message(error)}
    return {"warnings": list(picture.warnings), "damaged": picture.is_damaged}


def join_checks(length: int, pixels: int, results: list, threads: int = 0) -> dict:
    for result in results:
        if "error" in result:
            return result
    return {"bytes": length, "pixels": pixels, **_joined(results)}
