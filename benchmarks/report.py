#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The libnubis_lite authors
# SPDX-License-Identifier: Apache-2.0
"""Reads the rows of the benchmarks (a line of JSON each) from standard input, prints them as a table, and writes the
same as a page with plots: report.py FOLDER. The exit status is 0 whatever the figures are."""

import json
import pathlib
import sys
from xml.sax.saxutils import escape

ROW_HEIGHT = 26
WIDTH = 760
LABEL_WIDTH = 360
STYLE = """body{font:14px sans-serif;margin:2em;max-width:70em}table{border-collapse:collapse}
td,th{padding:.25em .7em;border-bottom:1px solid #ddd;text-align:left}td.n{text-align:right}
.no{color:#b00020;font-weight:bold}"""


def is_met(row):
    return row["value"] >= row["goal"] if row["atLeast"] else row["value"] <= row["goal"]


def has_floor(row):
    return row["floorName"] != "-"


def number(value):
    return f"{value:,.0f}" if abs(value) >= 1000 else f"{value:.3g}"


def cells(row):
    """Name, ratio, goal, verdict, what was measured, what it is held against."""
    goal = (">= " if row["atLeast"] else "<= ") + f"{row['goal']:g}"
    floor = f"{number(row['floor'])} {row['unit']} ({row['floorName']})" if has_floor(row) else ""
    measured = f"{number(row['measured'])} {row['unit']}"
    return [row["name"], f"{row['value']:.2f}", goal, "met" if is_met(row) else "NOT MET", measured, floor]


def print_table(rows):
    table = [["row", "ratio", "goal", "", "measured", "floor"]] + [cells(row) for row in rows]
    widths = [max(len(line[i]) for line in table) for i in range(len(table[0]))]
    for line in table:
        print("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip())


def plot_of_ratios(rows):
    """Each row's rounds as dots on one scale, where 1 is the row's goal."""

    def place(row, value):
        share = value / row["goal"] if row["goal"] else value
        return LABEL_WIDTH + min(share, 2.0) / 2.0 * (WIDTH - LABEL_WIDTH - 20)

    height = ROW_HEIGHT * len(rows) + 30
    goal_x = LABEL_WIDTH + (WIDTH - LABEL_WIDTH - 20) / 2
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" font-family="sans-serif" font-size="12">',
        f'<line x1="{goal_x:.1f}" y1="0" x2="{goal_x:.1f}" y2="{height - 24}" stroke="#888" stroke-dasharray="4 3"/>',
        f'<text x="{goal_x:.1f}" y="{height - 8}" text-anchor="middle" fill="#555">goal</text>',
    ]
    for index, row in enumerate(rows):
        y = ROW_HEIGHT * index + ROW_HEIGHT / 2
        colour = "#1b7f3b" if is_met(row) else "#b00020"
        parts.append(f'<text x="{LABEL_WIDTH - 8}" y="{y + 4:.1f}" text-anchor="end">{escape(row["id"])}'
                     f' {row["value"]:.2f}{" (at least)" if row["atLeast"] else ""}</text>')
        for measured, floor in row["rounds"]:
            parts.append(f'<circle cx="{place(row, measured / floor):.1f}" cy="{y:.1f}" r="3" fill="{colour}" '
                         'fill-opacity="0.25"/>')
        parts.append(f'<circle cx="{place(row, row["value"]):.1f}" cy="{y:.1f}" r="5" fill="{colour}"/>')
    return "\n".join(parts + ["</svg>"]) + "\n"


def plot_of_rounds(row):
    """Measured and floor of each round of one row."""
    width, height, left, bottom = 360, 130, 10, 20
    most = max(max(pair) for pair in row["rounds"]) or 1
    step = (width - 2 * left) / max(len(row["rounds"]) - 1, 1)

    def line(which, colour):
        points = " ".join(f"{left + i * step:.1f},{(height - bottom) * (1 - pair[which] / most * 0.9):.1f}"
                          for i, pair in enumerate(row["rounds"]))
        return f'<polyline points="{points}" fill="none" stroke="{colour}" stroke-width="2"/>'

    lines = [line(0, "#1f5fa8")] + ([line(1, "#999")] if has_floor(row) else [])
    caption = f"{row['measuredName']}: blue" + (f"; {row['floorName']}: grey" if has_floor(row) else "")
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" font-family="sans-serif" '
            f'font-size="11">' + "".join(lines) +
            f'<text x="{left}" y="{height - 4}" fill="#555">{escape(caption)}, 0 to {number(most)} '
            f"{escape(row['unit'])}</text></svg>\n")


def page(rows):
    head = "".join(f"<th>{title}</th>" for title in ["row", "ratio", "goal", "", "measured", "floor"])
    body = ""
    for row in rows:
        texts = [escape(cell) for cell in cells(row)]
        verdict = f'<td class="{"" if is_met(row) else "no"}">{texts[3]}</td>'
        body += (f'<tr><td>{texts[0]}</td><td class="n">{texts[1]}</td><td>{texts[2]}</td>{verdict}'
                 f"<td>{texts[4]}</td><td>{texts[5]}</td></tr>\n")
    plots = "".join(f"<h3>{escape(row['name'])}</h3>\n{plot_of_rounds(row)}" for row in rows)
    return (f'<!doctype html><html lang="en"><head><meta charset="utf-8"><title>Benchmarks</title><style>{STYLE}</style>'
            f"</head><body><h1>Benchmarks</h1><p>What the rows mean: docs/performance.md.</p><table><tr>{head}</tr>\n"
            f"{body}</table><h2>Against the goals</h2>\n{plot_of_ratios(rows)}<h2>Round by round</h2>\n{plots}</body></html>\n")


def main():
    folder = pathlib.Path(sys.argv[1])
    rows = [json.loads(line) for line in sys.stdin if line.strip()]
    if not rows:
        sys.exit("report: no rows")
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "ratios.svg").write_text(plot_of_ratios(rows), encoding="utf-8")
    (folder / "report.html").write_text(page(rows), encoding="utf-8")
    (folder / "rows.jsonl").write_text("".join(json.dumps(row) + "\n" for row in rows), encoding="utf-8")
    print_table(rows)
    print(f"report: {folder / 'report.html'}")


if __name__ == "__main__":
    main()
