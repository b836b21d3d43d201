# SPDX-License-Identifier: Apache-2.0
"""Draws the short chart: twelve bars from the table in docs/benchmarks.md, each the median over the photographs."""
import argparse
import fnmatch
import pathlib
import re
import statistics
from html import escape

# What a bar is called, the cases (stage/size) that it stands for, and the peer.
BARS = (
    ("JPEG, decode", "codec/decode/*4:2:0 q90", "libjpeg-turbo"),
    ("JPEG, encode", "codec/encode/*4:2:0 q90", "libjpeg-turbo"),
    ("JPEG, Huffman decoding", "huffman/decode/[!n]*", "libjpeg-turbo"),
    ("JPEG, Huffman encoding", "huffman/encode/[!n]*", "libjpeg-turbo"),
    ("Progressive JPEG, decode scans", "progressive/decode/*", "libjpeg-turbo"),
    ("Progressive JPEG, encode scans", "progressive/encode/*", "libjpeg-turbo"),
    ("YCbCr to RGB, in cache", "colour/YCbCrToRGB_P3C3/L2", "libjpeg-turbo"),
    ("Lossless JPEG, decode", "lossless/decode predictor 1/*", "FFmpeg"),
    ("JPEG 2000 lossless, decode", "codec/j2k_decode/* lossless", "OpenJPEG"),
    ("JPEG 2000 lossless, encode", "codec/j2k_encode/* lossless", "OpenJPEG"),
    ("JPEG 2000 at 2 bits a pixel, decode", "codec/j2k_decode/* 2 bpp", "OpenJPEG"),
    ("JPEG 2000 at 2 bits a pixel, encode", "codec/j2k_encode/* 2.0 bpp", "OpenJPEG"),
)


def ratios_of(page):
    """(case, peer) to the ratio of times, for every line of the table."""
    ratios = {}
    for line in page.split("\n"):
        cells = [cell.strip() for cell in line.strip("| ").split(" | ")]
        if line.startswith("| ") and len(cells) > 5 and (ratio := re.match(r"[\d.]+", cells[5])):
            ratios[f"{cells[0]}/{cells[1]}", cells[2]] = float(ratio[0])
    return ratios


def bars_of(ratios):
    for title, pattern, peer in BARS:
        values = [ratio for (case, other), ratio in ratios.items() if other == peer and fnmatch.fnmatchcase(case, pattern)]
        if not values:
            raise SystemExit(f"short_chart: the table has no {pattern} beside {peer}")
        yield title, peer, statistics.median(values)


def chart(bars, machine):
    left, width, line, top = 380, 400, 28, 66
    longest = max(ratio for _, _, ratio in bars)
    x = lambda ratio: left + width * ratio / longest
    height = top + line * len(bars) + 10
    colours = {"libjpeg-turbo": "#2f6db5", "FFmpeg": "#7a5ea8", "OpenJPEG": "#2c7f62"}
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 900 {height}" width="900" height="{height}"'
             ' font-family="system-ui, \'DejaVu Sans\', sans-serif" font-size="14" role="img">',
             "<title>Times faster than the peer</title>",
             '<rect width="100%" height="100%" fill="#fff"/>',
             '<text x="20" y="26" font-size="17" font-weight="600" fill="#1c2b41">Times faster than the peer, one thread</text>',
             f'<text x="20" y="48" font-size="13" fill="#44546a">{escape(machine)}</text>']
    for i, (title, peer, ratio) in enumerate(bars):
        y = top + line * i
        parts.append(f'<text x="{left - 10}" y="{y + 16}" text-anchor="end" fill="#1c2b41">{escape(title)}</text>')
        parts.append(f'<rect x="{left}" y="{y + 2}" width="{x(ratio) - left:.1f}" height="20" rx="3" fill="{colours[peer]}"/>')
        parts.append(f'<text x="{x(ratio) + 6:.1f}" y="{y + 17}" fill="#1c2b41">{ratio:.1f}'
                     f'<tspan fill="#44546a" font-size="12" dx="6">{peer}</tspan></text>')
    parts.append(f'<path d="M{x(1):.1f} {top - 4}V{height - 8}" stroke="#1c2b41" stroke-dasharray="3 3"/>')
    return "\n".join(parts + ["</svg>", ""])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("page", type=pathlib.Path, help="docs/benchmarks.md")
    parser.add_argument("chart", type=pathlib.Path, help="SVG file to write")
    options = parser.parse_args()
    page = options.page.read_text()
    machine = page.split("<!-- results: begin -->")[1].strip().split(". ")[0]
    options.chart.write_text(chart(list(bars_of(ratios_of(page))), machine))


if __name__ == "__main__":
    main()
