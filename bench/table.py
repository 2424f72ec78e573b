#!/usr/bin/env python3
"""Turns the JSON of bench_conversions into a Markdown table and a plot.

usage: table.py RESULTS.json [--svg PLOT.svg] > table.md
"""

import argparse
import json


def candidates(run):
    """name -> (job, milliseconds, how many times faster we are)"""
    found = {}
    for key, value in run.items():
        parts = key.split("|")
        if len(parts) == 3:
            entry = found.setdefault(parts[0], {"job": parts[1]})
            entry[parts[2]] = value
    return found


LIMITS = ("memcpy", "store limit", "streaming limit")


def lines(results):
    for run in results["benchmarks"]:
        found = candidates(run)
        ours = found.pop("quillo")
        limits = {name: found.pop(name)["speed"] for name in LIMITS if name in found}
        name, direction, mode = run["name"].split("/iterations")[0].rsplit("/manual_time")[0], "", ""
        for middle in ("/top-down/", "/bottom-up/"):
            if middle in name:
                name, mode = name.split(middle)
                direction = middle.strip("/")
                break
        peer = min(found.items(), key=lambda item: item[1]["speed"], default=None)
        yield {
            "name": name, "direction": direction, "mode": mode, "ms": ours["ms"], "gbs": run["GB/s"], **limits,
            "peer": f"{peer[0]} ({peer[1]['job']})" if peer else "", "speed": peer[1]["speed"] if peer else None,
        }


def markdown(rows):
    print("| Conversion | Lines | Mode | ms | GB/s | store limit | streaming limit | memcpy | fastest peer | ahead |")
    print("|---|---|---|---:|---:|---:|---:|---:|---|---:|")
    for r in rows:
        ahead = f"{r['speed']:.2f}" if r["speed"] else ""
        print(f"| `{r['name']}` | {r['direction']} | {r['mode']} | {r['ms']:.3f} | {r['gbs']:.1f} | "
              f"{r['store limit']:.2f} | {r['streaming limit']:.2f} | {r['memcpy']:.2f} | {r['peer']} | {ahead} |")


def plot(rows, path):
    """One bar a line: how many times faster than the fastest peer, on a scale that doubles."""
    from math import log2

    rows = [r for r in rows if r["speed"]]
    height, left, octave = 14, 330, 90
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{left + 8 * octave}" height="{(len(rows) + 2) * height}" '
           f'font-family="sans-serif" font-size="10">', '<rect width="100%" height="100%" fill="white"/>']
    for n in range(-1, 7):
        x = left + (n + 1) * octave
        out.append(f'<line x1="{x}" y1="{height}" x2="{x}" y2="{(len(rows) + 1) * height}" '
                   f'stroke="{"black" if n == 0 else "#ccc"}"/><text x="{x}" y="10" text-anchor="middle">{2.0 ** n:g}x</text>')
    for i, r in enumerate(rows):
        y = (i + 1) * height
        end = max(-1.0, min(7.0, log2(r["speed"])))
        x, width = left + octave + min(0, end) * octave, abs(end) * octave
        colour = "#2a7" if r["speed"] >= 1 else "#c52"
        out.append(f'<text x="{left - 6}" y="{y + 10}" text-anchor="end">{r["name"]} {r["direction"]} {r["mode"]}</text>'
                   f'<rect x="{x:.0f}" y="{y + 2}" width="{width:.0f}" height="{height - 4}" fill="{colour}"/>')
    with open(path, "w", encoding="utf-8") as file:
        file.write("\n".join(out) + "\n</svg>\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("results")
    parser.add_argument("--svg")
    given = parser.parse_args()
    with open(given.results, encoding="utf-8") as file:
        rows = list(lines(json.load(file)))
    markdown(rows)
    if given.svg:
        plot(rows, given.svg)


main()
