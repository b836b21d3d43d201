# SPDX-License-Identifier: Apache-2.0
"""A folder of pictures transcoded to JPEG or JPEG 2000 on many processes or machines, with Dask.

    python3 -m qeljx.archive SOURCE DEST --to jp2 --rate 2
    python3 -m qeljx.archive SOURCE DEST --verify

Each file is one task, or each row of tiles of a large JPEG 2000 picture. DEST/manifest.sqlite says what has been done,
so that the same command goes on where an earlier one ended; DEST/SHA256SUMS is for sha256sum -c. A file appears under
its name when it is whole."""
import argparse
import hashlib
import itertools
import json
import os
import re
import signal
import sqlite3
import sys
import time
from typing import Optional

import qeljx
from qeljx import large
from qeljx.manifest import MANIFEST, Manifest, jobs_in, remove_parts, store, write_sums


def _in_8_bits(picture: qeljx.Decoded):
    largest = 2**picture.precision - 1
    return ((picture.array.astype("uint32") * 510 + largest) // (2 * largest)).astype("uint8")


def _message(error: BaseException) -> str:
    return str(error) or type(error).__name__


def transcode(source: str, output: str, format: str, options: dict, strips: bool = False, pixels: Optional[float] = None,
              threads: int = 0) -> dict:
    """The task: what the manifest keeps of a file, or its error, or how a JPEG 2000 picture of more pixels is split.

    strips: leaves metadata behind. threads: of the codec, 0 for as many as there are."""
    if threads:
        qeljx.set_threads(threads)
    try:
        if about := large.headers(source, pixels):
            return {"split": large.transcoding(source, output, format, options, strips, about)}
        with open(source, "rb") as file:
            data = file.read()
        picture = qeljx.decode(data)
        array, precision, warnings = picture.array, picture.precision, list(picture.warnings)
        if format in ("jpeg", "jpg") and precision != 8 and not options.get("lossless"):
            array, precision = _in_8_bits(picture), 8
            warnings.append(f"samples of {picture.precision} bits are rounded to 8")
        metadata = None if strips else picture.metadata
        coded, left_out = qeljx._encode(array, format, precision=precision, metadata=metadata, **options)
        warnings += left_out
        os.makedirs(os.path.dirname(output), exist_ok=True)
        store(output, [coded])
    except (OSError, ValueError, RuntimeError, MemoryError) as error:
        return {"error": _message(error)}
    return {
        "source_sha256": hashlib.sha256(data).hexdigest(),
        "sha256": hashlib.sha256(coded).hexdigest(),
        "bytes": len(coded),
        "pixels": array.shape[0] * array.shape[1],
        "warnings": warnings,
        "damaged": picture.is_damaged,
    }


def check(output: str, sha256: str, pixels: Optional[float] = None, threads: int = 0) -> dict:
    """The task of --verify: the file has the checksum of the manifest, and a picture can be decoded from it. One of more
    pixels is split."""
    if threads:
        qeljx.set_threads(threads)
    try:
        if large.digest(output) != sha256:
            return {"error": "the checksum is not that of the manifest"}
        if about := large.headers(output, pixels):
            return {"split": large.checking(output, about)}
        with open(output, "rb") as file:
            data = file.read()
        picture = qeljx.decode(data)
    except (OSError, ValueError, MemoryError) as error:
        return {"error": _message(error)}
    return {"bytes": len(data), "pixels": picture.array.shape[0] * picture.array.shape[1], "damaged": picture.is_damaged,
            "warnings": list(picture.warnings)}


class Report:
    """Files, bytes and pixels so far; a line that is kept up to date where standard error is a terminal."""

    def __init__(self, total: int, quiet: bool):
        self.total, self.done, self.failed, self.damaged, self.bytes, self.pixels = total, 0, 0, 0, 0, 0
        self.start, self.shown = time.monotonic(), 0.0
        self.is_shown = sys.stderr.isatty() and not quiet

    def add(self, name: str, result: dict) -> None:
        self.done += 1
        self.bytes += result.get("bytes", 0)
        self.pixels += result.get("pixels", 0)
        if "error" in result:
            self.failed += 1
            self.say(f"{name}: {result['error']}")
        elif result["damaged"]:
            self.damaged += 1
            self.say(f"{name}: damaged: {'; '.join(result['warnings'])}")
        if self.is_shown and time.monotonic() - self.shown > 0.2:
            self.show()

    def say(self, line: str) -> None:
        print(("\r\033[K" if self.is_shown else "") + line, file=sys.stderr)

    def show(self) -> None:
        self.shown = time.monotonic()
        seconds = max(self.shown - self.start, 1e-3)
        left = int(seconds / max(self.done, 1) * (self.total - self.done))
        full = 30 * self.done // max(self.total, 1)
        print(f"\r\033[K[{'#' * full}{' ' * (30 - full)}] {self.done} of {self.total} files, "
              f"{self.done / seconds:.1f} a second, {left // 60}:{left % 60:02} left", end="", file=sys.stderr, flush=True)

    def summary(self, already: int) -> str:
        if self.is_shown:
            print("\r\033[K", end="", file=sys.stderr)
        seconds = max(time.monotonic() - self.start, 1e-3)
        extras = [f"{count} {what}" for count, what in
                  ((already, "done before"), (self.damaged, "damaged"), (self.failed, "failed")) if count]
        return (f"{self.done} files in {seconds:.1f} s ({', '.join(extras)}): " if extras else
                f"{self.done} files in {seconds:.1f} s: ") + (
            f"{self.done / seconds:.1f} files, {self.pixels / seconds / 1e6:.1f} megapixels a second, {self.bytes} bytes")


def in_this_process(calls):
    """The result of function(*arguments) for each (key, function, arguments)."""
    for key, function, arguments in calls:
        yield key, function(*arguments)


def on_cluster(client, calls):
    """The same on the workers of a Dask cluster, as they come; only some more calls than there are workers wait.

    A call whose worker dies is given to another one; a call that kills several workers is an error."""
    from distributed import as_completed

    calls = iter(calls)
    keys = {}
    futures = as_completed()
    most = max(8, 4 * sum(client.nthreads().values()))

    def submit():
        for key, function, arguments in itertools.islice(calls, most - len(keys)):
            future = client.submit(function, *arguments, 1, pure=False)
            keys[future.key] = key
            futures.add(future)

    submit()
    for future in futures:
        try:
            result = future.result()
        except Exception as error:
            result = {"error": f"{type(error).__name__}: {_message(error)}"}
        yield keys.pop(future.key), result
        submit()


def cluster(options: argparse.Namespace):
    """A Dask client, of the scheduler that is named or of processes on this machine."""
    try:
        import distributed
    except ImportError:
        raise SystemExit("archive: this needs Dask (python3-distributed); --workers 0 does without")
    if options.scheduler:
        try:
            return distributed.Client(options.scheduler)
        except OSError as error:
            raise SystemExit(f"archive: {options.scheduler}: {error}")
    # Ctrl-C is for this process, which ends the others.
    interrupted = signal.signal(signal.SIGINT, signal.SIG_IGN)
    workers = distributed.LocalCluster(n_workers=options.workers, threads_per_worker=1, dashboard_address=None,
                                       silence_logs=40)
    signal.signal(signal.SIGINT, interrupted)
    return distributed.Client(workers)


def parser() -> argparse.ArgumentParser:
    made = argparse.ArgumentParser(
        prog="python3 -m qeljx.archive", formatter_class=argparse.RawDescriptionHelpFormatter,
        usage="%(prog)s SOURCE DEST --to FORMAT [options]\n       %(prog)s SOURCE DEST --verify [options]",
        description="Transcodes all pictures below the folder SOURCE to files below DEST, on all processors of this\n"
        "machine or on a Dask cluster. Run it again to go on where it ended.",
        epilog="exit status:\n  0  all files are done\n  1  nothing could be done\n"
        "  3  some files failed or are damaged: each has a line on standard error\n\n"
        "examples:\n  python3 -m qeljx.archive scans archive --to jp2 --lossless\n"
        "  python3 -m qeljx.archive scans web --to jpeg --quality 80 --progressive\n"
        "  python3 -m qeljx.archive scans archive --verify\n"
        "  python3 -m qeljx.archive /net/scans /net/archive --to jp2 --rate 2 --scheduler tcp://head:8786\n\n"
        "Every worker of a cluster needs this module, and the two folders under the same names.\n"
        "SOURCE is never changed.")
    made.add_argument("source", metavar="SOURCE", help="folder of pictures")
    made.add_argument("dest", metavar="DEST", help="folder for the results; made where it is missing")
    made.add_argument("--to", choices=("jp2", "j2k", "jpeg", "jpg"), metavar="FORMAT", help="jp2, j2k or jpeg")
    made.add_argument("--verify", action="store_true", help="compare DEST with its manifest, and decode every file")
    coding = made.add_argument_group("coding")
    coding.add_argument("--quality", type=int, metavar="N", help="1 to 100; 90 if nothing is said")
    coding.add_argument("--rate", type=float, metavar="BPP", help="bits per pixel (JPEG 2000)")
    coding.add_argument("--psnr", type=float, metavar="DB", help="peak signal-to-noise ratio (JPEG 2000)")
    coding.add_argument("--layers", type=int, metavar="N", help="quality layers (JPEG 2000)")
    coding.add_argument("--lossless", action="store_true", default=None, help="keep every sample")
    coding.add_argument("--sampling", metavar="NAME", help="of chroma: 444, 422, 440 or 420 (JPEG)")
    coding.add_argument("--progressive", action="store_true", default=None, help="several scans (JPEG)")
    coding.add_argument("--optimize", action="store_true", default=None, help="Huffman tables for each file (JPEG)")
    coding.add_argument("--strip", action="store_true", help="leave colour profiles, EXIF and other metadata out")
    work = made.add_argument_group("work")
    work.add_argument("--scheduler", metavar="ADDRESS", help="of a Dask cluster, as in tcp://head:8786")
    work.add_argument("--workers", type=int, default=os.cpu_count(), metavar="N",
                      help="processes on this machine (%(default)s); 0: this one alone, without Dask")
    work.add_argument("--large", type=float, default=100, metavar="MP",
                      help="JPEG 2000 pictures of more megapixels (%(default)s) are split: decoded and, without --rate,\n"
                      "--psnr and --layers, coded in rows of tiles, each a task")
    work.add_argument("--quiet", action="store_true", help="no progress bar")
    return made


_CODING = ("quality", "rate", "psnr", "layers", "lossless", "sampling", "progressive", "optimize")


def _settings(options: argparse.Namespace, usage: argparse.ArgumentParser) -> dict:
    """The options of encode; ends the program if it would not take them."""
    import numpy

    chosen = {name: getattr(options, name) for name in _CODING if getattr(options, name) is not None}
    try:
        qeljx.encode(numpy.zeros((512, 512, 3), numpy.uint8), options.to, **chosen)
    except (TypeError, ValueError) as error:
        unknown = re.search(r"unexpected keyword argument '(\w+)'", str(error))
        usage.error(f"--{unknown[1]} is not for --to {options.to}" if unknown else str(error))
    return chosen


def run(options: argparse.Namespace, manifest: Manifest, settings: dict, client) -> tuple[Report, int]:
    """Transcodes or verifies; returns the report and how many files had been done before."""
    pixels = options.large * 1e6
    if not options.verify and (options.to not in ("jp2", "j2k") or {"rate", "psnr", "layers"} & set(settings)):
        pixels = None
    others = {"strip": options.strip or None, "large": pixels}
    shown = {name: value for name, value in {"to": options.to, **settings, **others}.items() if value is not None}
    shown = json.dumps(shown, sort_keys=True)
    already = 0

    def fail(name, error):
        report.total += 1
        report.add(name, {"error": error})

    def transcoding():
        nonlocal already
        for job in jobs_in(options.source, options.to, fail):
            if manifest.has(job, shown, options.dest):
                already += 1
                report.total -= 1
                continue
            paths = os.path.join(options.source, job.source), os.path.join(options.dest, job.output)
            yield job, transcode, (*paths, options.to, settings, options.strip, pixels)

    def verifying():
        for job in jobs_in(options.source, "", fail):
            row = manifest.find(job)
            if row is None:
                report.add(job.source, {"error": "is not in the archive, or has changed since"})
                continue
            yield job, check, (os.path.join(options.dest, row["output"]), row["sha256"], pixels)

    report = Report(sum(1 for _ in jobs_in(options.source, "")), options.quiet)
    calls = large.Calls(verifying() if options.verify else transcoding())
    for key, part in on_cluster(client, calls) if client else in_this_process(calls):
        job, result = key[0], calls.finished(key, part)
        if result is None:
            continue
        if not options.verify:
            manifest.add(job, result, shown)
        report.add(job.source, result)
    return report, already


def main(arguments: Optional[list[str]] = None) -> int:
    usage = parser()
    options = usage.parse_args(arguments)
    if not options.verify and not options.to:
        usage.error("--to FORMAT or --verify is wanted")
    settings = {} if options.verify else _settings(options, usage)
    options.source, options.dest = os.path.realpath(options.source), os.path.realpath(options.dest)
    if not os.path.isdir(options.source):
        raise SystemExit(f"archive: {options.source} is no folder")
    if os.path.commonpath((options.source, options.dest)) in (options.source, options.dest):
        raise SystemExit("archive: one of SOURCE and DEST lies within the other")
    if options.verify and not os.path.exists(os.path.join(options.dest, MANIFEST)):
        raise SystemExit(f"archive: {options.dest} has no {MANIFEST}")
    client = cluster(options) if options.scheduler or options.workers else None
    try:
        os.makedirs(options.dest, exist_ok=True)
        manifest = Manifest(os.path.join(options.dest, MANIFEST))
    except (OSError, sqlite3.Error) as error:
        raise SystemExit(f"archive: {options.dest}: {_message(error)}; is another run at work there?")
    try:
        remove_parts(options.dest)
        report, already = run(options, manifest, settings, client)
        remove_parts(options.dest)
        if not options.verify:
            write_sums(manifest, options.dest)
    finally:
        manifest.close()
        if client:
            client.close()
            if client.cluster:
                client.cluster.close()
    print(report.summary(already))
    return 3 if report.failed or report.damaged else 0


if __name__ == "__main__":
    # Workers find the functions under this name.
    from qeljx.archive import main as main_of_module

    try:
        sys.exit(main_of_module())
    except KeyboardInterrupt:
        print("archive: interrupted; the same command goes on from here", file=sys.stderr)
        sys.exit(130)
