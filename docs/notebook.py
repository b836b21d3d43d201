#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the cells of docs/notebook.md and puts what they print, and their plots, into the page. With --check it runs those
that draw nothing, to see that they work, and changes nothing.
Usage: docs/notebook.py FOLDER-OF-BUILD [--check]     a build with -DQELJX_PYTHON=ON; plots want python3-matplotlib"""
import contextlib
import io
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
CELL = re.compile(r"```python\n(.*?)```(\n\n```text\n(.*?)```)?", re.S)


def run(page, draws):
    """The page with what its cells print."""
    names = {}

    def cell(match):
        source, printed = match[1], io.StringIO()
        if not draws and "plt." in source:
            return match[0]
        if not draws:
            source = re.sub(r"^from matplotlib .*$", "", source, flags=re.M)
        with contextlib.redirect_stdout(printed):
            exec(compile(source, "docs/notebook.md", "exec"), names)
        if bool(printed.getvalue()) != bool(match[2]):
            sys.exit(f"notebook: this cell and a block for what it prints do not go together:\n{source}")
        return match[0] if not match[2] else f"```python\n{match[1]}```\n\n```text\n{printed.getvalue()}```"

    return CELL.sub(cell, page), names


def main():
    build, draws = pathlib.Path(sys.argv[1]).resolve(), "--check" not in sys.argv
    sys.path.insert(0, str(build / "python"))
    path = HERE / "notebook.md"
    before = path.read_text()
    if draws:
        import matplotlib

        matplotlib.use("svg")
        matplotlib.rcParams.update({"svg.hashsalt": "qeljx", "svg.fonttype": "none", "savefig.facecolor": "white",
                                    "savefig.bbox": "tight", "font.size": 11})
        os.environ["SOURCE_DATE_EPOCH"] = "0"
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        os.mkdir("notebook")
        subprocess.run([build / "apps/qelpic_draw", "768", "512", "scene.ppm"], check=True)
        after, names = run(before, draws)
        if draws:
            pathlib.Path("notebook/scene.jpg").write_bytes(names["qeljx"].encode(names["scene"], quality=80))
            for file in pathlib.Path("notebook").iterdir():
                shutil.copy(file, HERE / "notebook")
            path.write_text(after)
        os.chdir(HERE)


if __name__ == "__main__":
    main()
