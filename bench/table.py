#!/usr/bin/env python3
"""Turns the JSON of bench_conversions, of one run or of several with other rows each, into what was reached of the
goals, a Markdown table and a plot.

usage: table.py RESULTS.json... [--svg PLOT.svg] > table.md
"""

import argparse
import json

import goals


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
        peers = sorted((p["speed"], f"{peer} ({p['job']})", p["job"]) for peer, p in found.items())
        line = {"name": name, "direction": direction, "mode": mode, "ms": ours["ms"], "gbs": run["GB/s"]}
        line |= {name: (name, speed) for name, speed in limits.items()}
        if peers:
            line[goals.PEER] = peers[0][1], peers[0][0]
        if same := [p for p in peers if p[2] != "less"]:
            line[goals.SAME_WORK] = same[0][1], same[0][0]
        yield line


def summary(rows):
    """How many conversions are ahead of every peer and at their goal, and which lines are not."""
    names = list(dict.fromkeys(r["name"] for r in rows))
    with_peer = {r["name"] for r in rows if goals.PEER in r}
    behind = {r["name"] for r in rows if goals.PEER in r and not goals.met(1.0, r[goals.PEER][1])}
    behind_same = {r["name"] for r in rows if goals.SAME_WORK in r and not goals.met(1.0, r[goals.SAME_WORK][1])}
    asked = [(r, *goal) for r in rows for goal in goals.judged(r)]
    missed = [goal for goal in asked if not goals.met(*goal[2:])]
    print(f"{len(names)} conversions, {len(with_peer)} of them with a peer: {len(with_peer - behind)} are ahead of every peer or "
          f"level with it in every mode, {len(with_peer - behind_same)} of every peer that does the same work. "
          f"{len(asked) - len(missed)} of {len(asked)} goals are met, and by "
          f"{len(names) - len({r['name'] for r, *_ in missed})} conversions all of theirs.\n")
    print("| Missed | Lines | Mode | against | goal | reached |\n|---|---|---|---|---:|---:|")
    for r, against, goal, reached in missed:
        print(f"| `{r['name']}` | {r['direction']} | {r['mode']} | {against} | {goal:.2f} | {reached:.2f} |")
    print()


def markdown(rows):
    print("| Conversion | Lines | Mode | ms | GB/s | store limit | streaming limit | memcpy | fastest peer | ahead |")
    print("|---|---|---|---:|---:|---:|---:|---:|---|---:|")
    for r in rows:
        limits = " | ".join(f"{r[name][1]:.2f}" for name in ("store limit", "streaming limit", "memcpy"))
        peer = f"{r[goals.PEER][0]} | {r[goals.PEER][1]:.2f}" if goals.PEER in r else " | "
        print(f"| `{r['name']}` | {r['direction']} | {r['mode']} | {r['ms']:.3f} | {r['gbs']:.1f} | {limits} | {peer} |")


def plot(rows, path):
    """One bar a line from cold memory at 1080p: how many times faster than the fastest peer, on a scale that doubles."""
    from math import log2

    rows = [r for r in rows if goals.PEER in r and r["mode"] == "1080/cold"]
    height, left, octave = 14, 330, 90
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{left + 8 * octave}" height="{(len(rows) + 2) * height}" '
           f'font-family="sans-serif" font-size="10">', '<rect width="100%" height="100%" fill="white"/>']
    for n in range(-1, 7):
        x = left + (n + 1) * octave
        out.append(f'<line x1="{x}" y1="{height}" x2="{x}" y2="{(len(rows) + 1) * height}" '
                   f'stroke="{"black" if n == 0 else "#ccc"}"/><text x="{x}" y="10" text-anchor="middle">{2.0 ** n:g}x</text>')
    for i, r in enumerate(rows):
        y, speed = (i + 1) * height, r[goals.PEER][1]
        end = max(-1.0, min(7.0, log2(speed)))
        x, width = left + octave + min(0, end) * octave, abs(end) * octave
        colour = "#2a7" if speed >= 1 else "#c52"
        out.append(f'<text x="{left - 6}" y="{y + 10}" text-anchor="end">{r["name"]} {r["direction"]}</text>'
                   f'<rect x="{x:.0f}" y="{y + 2}" width="{width:.0f}" height="{height - 4}" fill="{colour}"/>')
    with open(path, "w", encoding="utf-8") as file:
        file.write("\n".join(out) + "\n</svg>\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("results", nargs="+")
    parser.add_argument("--svg")
    given = parser.parse_args()
    # A line that was measured again stands where it was.
    found = {}
    for name in given.results:
        with open(name, encoding="utf-8") as file:
            found.update({(r["name"], r["direction"], r["mode"]): r for r in lines(json.load(file))})
    rows = list(found.values())
    summary(rows)
    markdown(rows)
    if given.svg:
        plot(rows, given.svg)


main()
