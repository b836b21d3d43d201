# SPDX-License-Identifier: Apache-2.0
"""Folders of pictures transcoded: what becomes of each file, going on where a run ended, and workers that are killed."""
import os
import signal
import subprocess
import sys
import time

import numpy as np
import pytest
import qeljx
from qeljx import archive


def drawn(seed, height=60, width=80):
    return np.random.default_rng(seed).integers(0, 256, (height // 4, width // 4, 3), np.uint8).repeat(4, 0).repeat(4, 1)


def fill(folder, count, size=(60, 80)):
    folder.mkdir(parents=True)
    for i in range(count):
        (folder / f"{i:03}.jpg").write_bytes(qeljx.encode(drawn(i, *size)))


def contents(folder):
    """All files below but the manifest, by name."""
    return {str(path.relative_to(folder)): path.read_bytes() for path in folder.rglob("*")
            if path.is_file() and path.name != archive.MANIFEST}


def test_what_becomes_of_each_file(tmp_path, capsys):
    source, dest = tmp_path / "in", tmp_path / "out"
    fill(source / "deep" / "er", 2)
    picture = drawn(9)
    (source / "same.jpg").write_bytes(qeljx.encode(picture))
    (source / "same.jp2").write_bytes(qeljx.encode(picture, "jp2"))
    (source / "deep.j2k").write_bytes(qeljx.encode(picture[:, :, 0].astype(np.uint16) * 16, "j2k", precision=12))
    (source / "half.jpg").write_bytes((source / "same.jpg").read_bytes()[:3000])
    (source / "broken.png").write_bytes(b"no picture")
    (source / "notes.txt").write_text("no picture either")
    run = [str(source), str(dest), "--to", "jpeg", "--quality", "70", "--workers", "0"]
    assert archive.main(run) == 3
    said = capsys.readouterr()
    assert "broken.png: not a picture" in said.err and "half.jpg: damaged" in said.err
    assert said.out.startswith("7 files") and "(1 damaged, 1 failed)" in said.out
    names = {"deep/er/000.jpg", "deep/er/001.jpg", "same.jpg.jpg", "same.jp2.jpg", "deep.jpg", "half.jpg", "SHA256SUMS"}
    assert set(contents(dest)) == names
    decoded = qeljx.decode(source / "same.jp2").array
    assert (dest / "same.jp2.jpg").read_bytes() == qeljx.encode(decoded, quality=70)
    grey = qeljx.decode(source / "deep.j2k").array
    assert np.abs(qeljx.decode(dest / "deep.jpg").array - grey / 4095 * 255).mean() < 8
    subprocess.run(["sha256sum", "--check", "--quiet", "SHA256SUMS"], cwd=dest, check=True)

    # Again: only what failed, what has changed, and what is gone.
    (source / "broken.png").unlink()
    (source / "same.jpg").write_bytes(qeljx.encode(picture[::-1]))
    (dest / "deep.jpg").unlink()
    assert archive.main(run) == 0
    assert capsys.readouterr().out.startswith("2 files") and set(contents(dest)) == names
    assert (dest / "same.jpg.jpg").read_bytes() == qeljx.encode(qeljx.decode(source / "same.jpg").array, quality=70)
    assert archive.main([*run, "--quality", "80"]) == 3
    assert capsys.readouterr().out.startswith("6 files")


def test_carries_metadata(tmp_path):
    given = qeljx.Metadata(xmp=b"<x/>", density=qeljx.Density(1, 2), comments=("about it",))
    (tmp_path / "in").mkdir()
    (tmp_path / "in" / "a.jpg").write_bytes(qeljx.encode(drawn(1), metadata=given))
    run = [str(tmp_path / "in"), str(tmp_path / "out"), "--to", "jp2", "--workers", "0"]
    for strip, kept, notes in (([], given._replace(density=None), "not in the output: the aspect ratio of pixels"),
                               (["--strip"], qeljx.Metadata(), "")):
        assert archive.main([*run, *strip]) == 0
        assert qeljx.decode(tmp_path / "out" / "a.jp2").metadata == kept
        manifest = archive.Manifest(str(tmp_path / "out" / archive.MANIFEST))
        assert [row["notes"] for row in manifest.outputs()] == [notes]
        manifest.close()


def test_splits_large_pictures(tmp_path, capsys):
    pytest.importorskip("distributed")
    source = tmp_path / "in"
    source.mkdir()
    picture = drawn(3, 2100, 160)
    given = qeljx.Metadata(xmp=b"<x/>", density=qeljx.Density(1, 2), comments=("about it",))
    large = qeljx.encode(picture, "jp2", lossless=True, metadata=given._replace(density=None))
    (source / "large.jp2").write_bytes(large)
    (source / "deep.j2k").write_bytes(qeljx.encode(picture[:, :, 0].astype(np.uint16) * 16, "j2k", precision=12,
                                                   tile=(100, 400)))
    (source / "photo.jpg").write_bytes(qeljx.encode(picture))

    def run(dest, *options, workers="0"):
        return archive.main([str(source), str(dest), "--large", "0.2", "--workers", workers, *options])

    for workers, options, chosen in (("0", {"quality": 80}, ["--quality", "80"]),
                                     ("2", {"lossless": True}, ["--lossless"])):
        dest = tmp_path / workers
        assert run(dest, "--to", "jp2", *chosen, workers=workers) == 0
        made = contents(dest)
        for name, tile in (("large.jp2", (1024, 1024)), ("deep.j2k", (1024, 1024)), ("photo.jpg", None)):
            whole = qeljx.decode(source / name)
            assert made[name[:-3] + "jp2"] == qeljx.encode(
                whole.array, "jp2", tile=tile, precision=whole.precision, metadata=whole.metadata, **options)
        assert set(made) == {"large.jp2", "deep.jp2", "photo.jp2", "SHA256SUMS"}
        subprocess.run(["sha256sum", "--check", "--quiet", "SHA256SUMS"], cwd=dest, check=True)
        assert run(dest, "--verify", workers=workers) == 0
        capsys.readouterr()

    # What is cut short is told, and nothing of it stays behind.
    (source / "large.jp2").write_bytes(large[: len(large) // 2])
    (source / "deep.j2k").unlink()
    assert run(tmp_path / "0", "--to", "jp2", "--quality", "80") == 3
    assert "large.jp2: damaged" in capsys.readouterr().err
    broken = large.index(b"\xff\x52") + 9
    (source / "large.jp2").write_bytes(large[:broken] + b"\xff" * 3 + large[broken + 3 :])
    assert run(tmp_path / "1", "--to", "jp2") == 3
    assert "large.jp2: " in capsys.readouterr().err and set(contents(tmp_path / "1")) == {"photo.jp2", "SHA256SUMS"}


def test_errors_of_parts(tmp_path):
    """The parts that have not begun are dropped, and what joins them still clears up."""
    from qeljx.large import Calls, Split

    def join(name, results):
        return {"joined": name, "results": results}

    parts = [(dict, ({"number": i} if i != 1 else {"error": "no"},)) for i in range(5)]
    calls = Calls([("a", dict, ({"split": Split(parts, (join, ("of a",)))},)), ("b", dict, ({"plain": 1},))])
    done = {key[0]: result for key, part in archive.in_this_process(calls) if (result := calls.finished(key, part))}
    assert done == {"a": {"joined": "of a", "results": [{"number": 0}, {"error": "no"}]}, "b": {"plain": 1}}


def test_verifies(tmp_path, capsys):
    source, dest = tmp_path / "in", tmp_path / "out"
    fill(source, 4)
    archive.main([str(source), str(dest), "--to", "jp2", "--lossless", "--workers", "0"])
    verify = [str(source), str(dest), "--verify", "--workers", "0"]
    assert archive.main(verify) == 0
    changed = bytearray((dest / "002.jp2").read_bytes())
    changed[len(changed) // 2] ^= 1
    (dest / "002.jp2").write_bytes(changed)
    (dest / "001.jp2").unlink()
    (source / "new.jpg").write_bytes((source / "000.jpg").read_bytes())
    capsys.readouterr()
    assert archive.main(verify) == 3
    said = capsys.readouterr()
    assert "(3 failed)" in said.out
    for line in ("001.jpg: [Errno 2]", "002.jpg: the checksum", "new.jpg: is not in the archive"):
        assert line in said.err


def test_refuses(tmp_path, capsys):
    fill(tmp_path / "in", 1)
    source, dest = str(tmp_path / "in"), str(tmp_path / "out")
    for wrong in ([dest, source, "--to", "jp2"], [source, source + "/out", "--to", "jp2"], [source, dest, "--verify"]):
        with pytest.raises(SystemExit, match="archive: "):
            archive.main(wrong)
    for wrong, text in (([], "--to FORMAT"), (["--to", "jp2", "--optimize"], "--optimize is not for"),
                        (["--to", "jp2", "--rate", "1", "--lossless"], "exclude each other")):
        with pytest.raises(SystemExit):
            archive.main([source, dest, *wrong])
        assert text in capsys.readouterr().err
    archive.main([source, dest, "--to", "jp2", "--workers", "0"])
    manifest = archive.Manifest(os.path.join(dest, archive.MANIFEST))
    with pytest.raises(SystemExit, match="is another run at work"):
        archive.main([source, dest, "--to", "jp2", "--workers", "0"])
    manifest.close()


def wait_for(what):
    end = time.monotonic() + 60
    while not what():
        assert time.monotonic() < end
        time.sleep(0.01)


def test_killed_runs_and_workers(tmp_path):
    psutil = pytest.importorskip("psutil")
    pytest.importorskip("distributed")
    source, undisturbed, dest = tmp_path / "in", tmp_path / "undisturbed", tmp_path / "out"
    fill(source, 60, (400, 600))
    run = [str(source), "--to", "jp2", "--rate", "2"]
    assert archive.main([*run[:1], str(undisturbed), *run[1:], "--workers", "0"]) == 0

    def start():
        command = [sys.executable, "-m", "qeljx.archive", run[0], str(dest), *run[1:], "--workers", "2"]
        return subprocess.Popen(command, start_new_session=True, stdout=subprocess.PIPE, text=True)

    def done():
        return len(list(dest.glob("*.jp2")))

    # Nobody else may read the manifest as a database meanwhile. When a second commit begins, the first one has ended.
    def recorded():
        manifest = dest / archive.MANIFEST
        return manifest.read_bytes().count(b".jp2") if manifest.exists() else 0

    first = start()
    wait_for(recorded)
    once = recorded()
    wait_for(lambda: recorded() > once and done() >= 10)
    os.killpg(first.pid, signal.SIGKILL)
    first.communicate()
    before = done()
    assert 10 <= before < 60

    second = start()
    wait_for(lambda: done() >= before + 10)
    workers = [child for child in psutil.Process(second.pid).children(recursive=True)
               if "spawn_main" in " ".join(child.cmdline())]
    assert len(workers) == 2
    workers[0].kill()
    assert done() < 60
    said, _ = second.communicate(timeout=100)
    assert second.returncode == 0, said
    assert " done before" in said
    assert contents(dest) == contents(undisturbed)
