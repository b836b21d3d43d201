# SPDX-License-Identifier: Apache-2.0
"""Turns the results of qelbench (JSON) into one table, a bar chart (SVG) and the results in docs/benchmarks.md."""
import argparse
import csv
import fnmatch
import json
import pathlib
import sys
from html import escape

LIBRARY = "qeljx"
BUILDS = ("baseline", "avx2", "avx512")
TRAFFIC = ("traffic", "traffic streaming")
BEGIN, END = "<!-- results: begin -->", "<!-- results: end -->"


class Case:
    """One stage on one working set, with all who took part."""

    def __init__(self, record):
        self.name = record["name"].split("/iterations:")[0]
        self.stage, self.size = self.name.rsplit("/", 1)
        self.unit = record.get("label", "")
        self.error = record.get("error_message")
        self.clock = record.get("GHz", 0)
        part = lambda kind: {k[len(kind):]: v for k, v in record.items() if k.startswith(kind)}
        self.ns, self.ratio, self.low, self.high = map(part, ("ns:", "ratio:", "low:", "high:"))
        self.misses, self.samples = part("misses:"), record.get("samples")  # for each decision
        self.bytes, self.psnr = part("bytes:"), part("psnr:")  # of the file that was made

    def peers(self):
        return [name for name in self.ratio if name not in BUILDS + TRAFFIC]

    def limit(self):
        """Part of the machine's traffic limit that the library reaches: the best of the two ways to store counts."""
        return min((self.ratio[name] for name in TRAFFIC if name in self.ratio), default=None)

    def rate(self, name):
        ns = self.ns[name]
        if self.unit == "block":
            return f"{ns * self.clock:.1f} cycles"
        if self.unit == "decision" and self.samples:
            misses = f", {self.misses[name]:.2f} misses" if name in self.misses else ""
            return f"{ns:.2f} ns ({1e3 * self.samples / ns:.0f} Msample/s){misses}"
        if self.unit in ("symbol", "decision"):
            return f"{ns:.2f} ns"
        made = f", {self.bytes[name]:.0f} bytes" if name in self.bytes else ""
        made += f", {self.psnr[name]:.2f} dB" if name in self.psnr else ""
        return (f"{1 / ns:.2f} G/s" if ns < 1 else f"{1e3 / ns:.1f} M/s" if made else f"{1e3 / ns:.0f} M/s") + made

    def slower_builds(self):
        """Builds that took longer than the one below them: (build, the one below, how many times as long). Times by the
        library's in the same round are compared; the middle halves of the rounds are 2 % apart or it is noise."""
        builds = [name for name in BUILDS if name in self.ratio]
        return [(build, below, self.ratio[build] / self.ratio[below]) for below, build in zip(builds, builds[1:])
                if self.low[build] > 1.02 * self.high[below]]

    def builds(self):
        return ", ".join(f"{name} {self.rate(name)}" for name in BUILDS if name in self.ns)


class Row:
    """A line of the table: a case, one of its peers (or none), and what is asked of the pair."""

    HEADS = ("stage", "size", "peer", "peer's", "ours", "ratio (quartiles)", "floor", "goal", "met", "of limit",
             "by build")

    def __init__(self, case, peer, target):
        self.case, self.peer, self.target = case, peer, target

    def value(self):
        if self.target["measure"] == "cycles":
            return self.case.ns[LIBRARY] * self.case.clock
        return self.case.limit() if self.target["measure"] == "limit" else self.case.ratio[self.peer]

    def reaches(self, level):
        wanted = float(self.target[level])
        return self.value() <= wanted if self.target["measure"] == "cycles" else self.value() >= wanted

    def met(self):
        if not self.target:
            return ""
        return "goal" if self.reaches("goal") else "floor" if self.reaches("floor") else "NO"

    def cells(self):
        case, peer = self.case, self.peer
        asked = {"ratio": "{:g}", "cycles": "{:g} cycles", "limit": "{:.0%}"}
        level = lambda name: asked[self.target["measure"]].format(float(self.target[name])) if self.target else ""
        traffic = peer == TRAFFIC[0]
        ratio = f"{case.ratio[peer]:.2f} ({case.low[peer]:.2f}-{case.high[peer]:.2f})" if peer and not traffic else ""
        limit = case.limit()
        fastest = min((name for name in TRAFFIC if name in case.ns), key=case.ns.get) if traffic else peer
        theirs = case.rate(fastest) if fastest else ""
        return (case.stage, case.size, peer, theirs, case.rate(LIBRARY), ratio, level("floor"), level("goal"),
                self.met(), "" if limit is None else f"{limit:.0%}", case.builds())


def target_of(targets, case, peer):
    for target in targets:
        if fnmatch.fnmatchcase(case.name, target["case"]) and target["peer"] == peer:
            return target
    return None


def rows_of(case, targets):
    rows = [Row(case, peer, target_of(targets, case, peer)) for peer in case.peers()]
    limit = target_of(targets, case, TRAFFIC[0])
    if limit or not rows:
        peer = TRAFFIC[0] if case.limit() is not None else ""
        rows.append(Row(case, peer, limit or target_of(targets, case, peer)))
    return rows


def aligned(rows):
    lines = [Row.HEADS] + [row.cells() for row in rows]
    widths = [max(len(line[i]) for line in lines) for i in range(len(Row.HEADS))]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip() for line in lines)


def markdown(rows):
    line = lambda cells: "| " + " | ".join(cells) + " |"
    return "\n".join([line(Row.HEADS), "|---" * len(Row.HEADS) + "|"] + [line(row.cells()) for row in rows])


def chart(rows, machine):
    """Bars: how many times faster than the peer. A short line marks the floor, a long one the goal."""
    left, width, line, top = 400, 460, 22, 56
    longest = max([row.case.high[row.peer] for row in rows] + [2])
    x = lambda ratio: left + width * min(ratio, longest) / longest
    height = top + line * len(rows) + 16
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{left + width + 80}" height="{height}"'
             ' font-family="sans-serif" font-size="12">',
             '<rect width="100%" height="100%" fill="white"/>',
             '<text x="10" y="20" font-size="14">Time of the peer divided by ours, one thread</text>',
             f'<text x="10" y="40" fill="#555">{escape(machine)}</text>']
    for i, row in enumerate(rows):
        case, y = row.case, top + line * i
        ratio, low, high = (part[row.peer] for part in (case.ratio, case.low, case.high))
        colour = {"goal": "#2a7f3f", "floor": "#4f81bd", "NO": "#c0504d", "": "#8c8c8c"}[row.met()]
        name = escape(f"{case.name} / {row.peer}")
        parts.append(f'<text x="{left - 8}" y="{y + 14}" text-anchor="end">{name}</text>')
        parts.append(f'<rect x="{left}" y="{y + 3}" width="{x(ratio) - left:.1f}" height="14" fill="{colour}"/>')
        parts.append(f'<path d="M{x(low):.1f} {y + 10}H{x(high):.1f}" stroke="black"/>')
        parts.append(f'<text x="{x(high) + 5:.1f}" y="{y + 14}">{ratio:.2f}</text>')
        if row.target and row.target["measure"] == "ratio":
            for level, inset in (("floor", 5), ("goal", 1)):
                at = x(float(row.target[level]))
                parts.append(f'<path d="M{at:.1f} {y + inset}V{y + 20 - inset}" stroke="#555"/>')
    parts.append(f'<path d="M{x(1):.1f} {top}V{height - 16}" stroke="black" stroke-dasharray="3 3"/>')
    return "\n".join(parts + ["</svg>", ""])


def in_chart(row):
    return row.peer in row.case.ratio and row.case.size != "L1" and not row.case.size.startswith("memory") \
        and not row.case.name.startswith(("threads/", "support/"))


def slower_builds(cases):
    """The rule that no build is slower than the one below it, and where it is broken."""
    broken = [f"{case.name}: {build} takes {times:.2f} times as long as {below}"
              for case in cases for build, below, times in case.slower_builds()]
    compared = sum(len([name for name in BUILDS if name in case.ratio]) > 1 for case in cases)
    return "\n".join([f"{compared} cases by build, {len(broken)} times a build is slower than the one below it"] + broken)


def put_results(page, text):
    before, rest = page.read_text().split(BEGIN)
    page.write_text(before + BEGIN + "\n" + text + "\n" + END + rest.split(END)[1])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("results", type=pathlib.Path, help="what qelbench wrote")
    parser.add_argument("--chart", type=pathlib.Path, help="SVG file to write")
    parser.add_argument("--page", type=pathlib.Path, help="Markdown page whose results are to be replaced")
    options = parser.parse_args()
    results = json.loads(options.results.read_text())
    with open(pathlib.Path(__file__).with_name("targets.csv"), newline="") as file:
        targets = list(csv.DictReader(file))
    context = results["context"]
    machine = "{processor}, {num_cpus} CPUs, instruction set {build}, {date:.10}".format(**context)
    cases = [Case(record) for record in results["benchmarks"]]
    rows = [row for case in cases if not case.error for row in rows_of(case, targets)]
    short = [row for row in rows if row.met() == "NO"]
    summary = f"{machine}\n{len(rows)} comparisons, {sum(1 for row in rows if row.target)} with a floor, " \
              f"{len(short)} below it"
    print(aligned(rows), summary, slower_builds([case for case in cases if not case.error]), sep="\n\n")
    if options.chart:
        options.chart.write_text(chart([row for row in rows if in_chart(row)], machine))
    if options.page:
        picture = "![Time of the peer divided by ours](benchmarks.svg)"
        put_results(options.page, "\n\n".join([summary.replace("\n", ". ") + ".", picture, markdown(rows)]))
    failed = [case for case in cases if case.error]
    for case in failed:
        print(f"{case.name}: {case.error}", file=sys.stderr)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
