#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Draws docs/threads.svg from docs/threads.csv: what each of two threads did, in microseconds of one run."""
import csv
import pathlib

HERE = pathlib.Path(__file__).parent
LEFT, WIDTH, LANE, GAP = 190, 660, 16, 24
COLOURS = ["#4878a8", "#e08a3c", "#6aa56a", "#a06ab0"]


def draw(rows):
    """The lines of the picture, and its height."""
    lines, top = [], 8
    for case in dict.fromkeys(row["case"] for row in rows):
        mine = [row for row in rows if row["case"] == case]
        whole = next(int(row["to_us"]) for row in mine if row["work"] == "all")
        works = [work for work in dict.fromkeys(row["work"] for row in mine) if work != "all"]
        lines.append(f'<text x="0" y="{top + LANE}">{case}</text>')
        lines.append(f'<text x="0" y="{top + 2 * LANE + 2}" class="small">{whole / 1000:.1f} ms</text>')
        lines.append(f'<rect x="{LEFT}" y="{top}" width="{WIDTH}" height="{2 * LANE + 2}" fill="#eee"/>')
        for row in mine:
            if row["work"] == "all":
                continue
            begin, end = (LEFT + WIDTH * int(row[at]) / whole for at in ("from_us", "to_us"))
            y = top + (int(row["thread"]) - 1) * (LANE + 2)
            colour = COLOURS[works.index(row["work"])]
            lines.append(f'<rect x="{begin:.1f}" y="{y}" width="{end - begin:.1f}" height="{LANE}" fill="{colour}"/>')
        top += 2 * LANE + 14
        for i, work in enumerate(works):
            x = LEFT + i * 180
            lines.append(f'<rect x="{x}" y="{top - 6}" width="9" height="9" fill="{COLOURS[i]}"/>')
            lines.append(f'<text x="{x + 14}" y="{top + 2}" class="small">{work}</text>')
        top += GAP
    return lines, top


def main():
    with open(HERE / "threads.csv", encoding="utf-8") as file:
        lines, height = draw(list(csv.DictReader(file)))
    style = "text { font: 13px sans-serif } .small { font-size: 11px; fill: #555 }"
    size = f'width="{LEFT + WIDTH + 10}" height="{height}"'
    svg = [f'<svg xmlns="http://www.w3.org/2000/svg" {size}>', f"<style>{style}</style>",
           '<rect width="100%" height="100%" fill="#fff"/>', *lines, "</svg>"]
    (HERE / "threads.svg").write_text("\n".join(svg) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
