#!/usr/bin/env python3
"""sync.py [SECONDS]: how far sound and picture lie apart at a receiver. Plays flashes with beeps and measures, as ffmpeg
receives them, the time from each flash to its beep; steadily, and with a pause, a seek and a loop on the way."""

import os
import re
import subprocess
import sys
import threading
import time

import road

BRIGHT = 100  # mean luma of a flash
LOUD = -40.0  # dB of a beep


def receive(url, seconds, transport="tcp"):
    """Times of the flashes and of the beeps, in seconds of the received streams."""
    video_in, video_out = os.pipe()
    audio_in, audio_out = os.pipe()
    graph = (f"[0:v]signalstats,metadata=print:key=lavfi.signalstats.YAVG:file=pipe\\\\:{video_out}[v];"
             "[0:a]aresample=48000,asetnsamples=48,astats=metadata=1:reset=1,"
             f"ametadata=print:key=lavfi.astats.Overall.RMS_level:file=pipe\\\\:{audio_out}[a]")
    texts = {}

    def drain(name, descriptor):
        with os.fdopen(descriptor) as file:
            texts[name] = file.read()

    process = subprocess.Popen(["ffmpeg", "-nostdin", "-v", "error", "-rtsp_transport", transport, "-i", url, "-t", str(seconds),
                                "-filter_complex", graph, "-map", "[v]", "-map", "[a]", "-f", "null", "-"],
                               pass_fds=(video_out, audio_out), stderr=subprocess.PIPE)
    os.close(video_out)
    os.close(audio_out)
    threads = [threading.Thread(target=drain, args=pair) for pair in (("video", video_in), ("audio", audio_in))]
    for thread in threads:
        thread.start()
    errors = process.communicate(timeout=seconds + 60)[1].decode()
    for thread in threads:
        thread.join()
    return onsets(texts["video"], BRIGHT), onsets(texts["audio"], LOUD), errors


def onsets(text, threshold):
    times, above = [], True
    for when, value in re.findall(r"pts_time:(\S+)\n\S+=(\S+)", text):
        now = value not in ("-inf", "nan") and float(value) > threshold
        if now and not above:
            times.append(float(when))
        above = now
    return times


def apart(flashes, beeps):
    """From each flash to the nearest beep, in ms; flashes and beeps come once a second."""
    return [min((beep - flash for beep in beeps), key=abs) * 1000 for flash in flashes if beeps]


def measure(name, mount, seconds, commands, options=()):
    with road.Road() as lab:
        player = lab.play("--pattern", "flash", "--size", "640x360", "--rate", "50", "--script", *options, stdin=subprocess.PIPE)
        url = lab.source()["url"] + mount
        time.sleep(1)

        def drive():
            for wait, command in commands:
                time.sleep(wait)
                player.stdin.write((command + "\n").encode())
                player.stdin.flush()

        driver = threading.Thread(target=drive)
        driver.start()
        flashes, beeps, errors = receive(url, seconds)
        driver.join()
        distances = [d for d in apart(flashes, beeps) if abs(d) < 300]
        worst = max(distances, key=abs) if distances else float("nan")
        good = len(distances) >= min(3, seconds // 2) and abs(worst) <= 20
        print(f"{name:8} {mount or '/':5} {len(flashes)} flashes, {len(beeps)} beeps, "
              f"apart {' '.join(f'{d:+.0f}' for d in distances)} ms: {'good' if good else 'BAD'}")
        return good


def main():
    seconds = int(sys.argv[1]) if len(sys.argv) > 1 else 8
    cases = {"steady": [], "pause": [(3, "pause"), (1.3, "play")], "seek": [(3, "seek 20.4"), (2, "seek 3.1")]}
    results = []
    for mount in ("", "/raw"):
        results += [measure(name, mount, seconds, commands) for name, commands in cases.items()]
        results.append(measure("loop", mount, seconds, [], ("--loop", "--in", "2", "--out", "5.3")))
    return 0 if all(results) else 1


sys.exit(main())
