#!/usr/bin/env python3
"""raw_equals_file.py FILE [SECONDS [FOLDER]]: plays FILE through the module and compares every frame that ffmpeg and GStreamer
receive from the raw mount, byte for byte, with an independent conversion of the file's frames. Different ones go into
FOLDER, as UYVY."""

import os
import sys

import road


def judge(receiver, received, complaints, place_of, total):
    wrong = [index for index, digest in enumerate(received) if digest not in place_of]
    places = [place_of[digest] for digest in received if digest in place_of]
    # The first is the one that the description waited for; those until PLAY are sent to nobody.
    live = places[1:]
    steps = [(b - a) % total for a, b in zip(live, live[1:])]
    missed = sum(step - 1 for step in steps if step > 1)
    repeated = sum(1 for step in steps if step == 0)
    print(f"{receiver}: {len(received)} frames, {len(wrong)} different {wrong[:9] or ''}, {missed} missed, {repeated} repeated")
    if complaints.strip():
        print("  " + complaints.strip().replace("\n", "\n  "))
    return bool(received) and not wrong


def main():
    path = sys.argv[1]
    seconds = float(sys.argv[2]) if len(sys.argv) > 2 else 10
    folder = sys.argv[3] if len(sys.argv) > 3 else None
    video = next(s for s in road.probe(path) if s["codec_type"] == "video")
    lower_first = video.get("field_order") in ("bb", "tb")
    place_of = {}
    for place, rows in enumerate(road.file_pictures(path)):
        if lower_first:  # the host's top line is left out, and two or, of 486, six lines in all
            rows = rows[1:][:480 if len(rows) == 486 else len(rows) - 2]
        place_of.setdefault(road.digest(rows), place)
    total = place + 1
    lines, size = len(rows), sum(len(row) for row in rows)

    def keep(index, digest, data):
        if folder and digest not in place_of:
            with open(os.path.join(folder, f"{os.path.basename(path)}-{index}.uyvy"), "wb") as file:
                file.write(data)

    with road.Road() as lab:
        lab.play(path, "--loop")
        source = lab.source()
        url = source["url"] + "/raw"
        shape = source["format"]
        print(f"{path}: {video['width']}x{video['height']} {video['r_frame_rate']}, {total} frames; announced {shape}")
        good = shape["height"] == lines
        rate = shape["rate"][0] / shape["rate"][1]
        digests, complaints = road.frames_of(road.receive_ffmpeg(url, seconds), size, seconds + 30, keep)
        good = judge("ffmpeg", digests, complaints, place_of, total) and good
        digests, complaints = road.frames_of(road.receive_gstreamer(url, int(seconds * rate)), size, seconds + 30, keep)
        good = judge("GStreamer", digests, complaints, place_of, total) and good
    return 0 if good else 1


sys.exit(main())
