#!/usr/bin/env python3
"""sync.py [--seconds N] [--short] [CASE...]: how far sound and picture lie apart at a receiver. Plays flashes with beeps and
measures, as ffmpeg and GStreamer receive them, the time from each flash to its beep; steadily, and with a pause, a seek, a
loop, or a program that is held up on the way. Times are the presentation times that the receiver gives to the decoded
streams."""

import argparse
import os
import re
import signal
import subprocess
import sys
import threading
import time

import road

RATE = 50
BRIGHT = 100  # mean luma of a flash, of 255
LOUD = -40.0  # dB of a beep


def by_ffmpeg(url, _, seconds, transport="tcp"):
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
    told = r"pts_time:(\S+)\n\S+=(\S+)"
    return onsets(re.findall(told, texts["video"]), BRIGHT), onsets(re.findall(told, texts["audio"]), LOUD), errors


def by_gstreamer(url, mount, seconds, transport="tcp"):
    """Likewise. Running times: what a sink would show them by."""
    video, audio = road.DECODERS[mount]
    video += " ! videoconvert ! videoanalyse ! fakesink sync=false async=false"
    audio += " ! audioconvert ! level interval=1000000 ! fakesink sync=false async=false"
    result = road.run_gstreamer(seconds, "-m", road.gstreamer_line(url, video, audio, transport))
    text = result.stdout.decode(errors="replace")
    nanoseconds = r"running-time=\(guint64\)(\d+)"
    flashes = re.findall(rf"GstVideoAnalyse, .*?{nanoseconds}.*?luma-average=\(double\)([\d.e+-]+)", text)
    beeps = re.findall(rf"level, .*?{nanoseconds}.*?rms=\(\w+\)< ([^,> ]+)", text)
    return (onsets([(int(when) / 1e9, float(luma) * 255) for when, luma in flashes], BRIGHT),
            onsets([(int(when) / 1e9, level) for when, level in beeps], LOUD), result.stderr.decode(errors="replace"))


def onsets(levels, threshold):
    """Of what rises above the threshold: (when, time of what came before)."""
    times, above, before = [], True, 0
    for when, value in levels:
        now = value not in ("-inf", "nan") and float(value) > threshold
        if now and not above:
            times.append((float(when), before))
        above, before = now, float(when)
    return times


def apart(flashes, beeps):
    """From each flash to the nearest beep, in ms; flashes and beeps come once a second. A flash whose first pictures were
    lost, as on a machine with too much to do, began somewhere in the gap before it, and a beep in there is none apart."""
    result = []
    for flash, before in flashes:
        earliest = min(flash, before + 1 / RATE)
        distances = [max(0, beep - flash) + min(0, beep - earliest) for beep, _ in beeps]
        result += [1000 * min(distances, key=abs)] if distances else []
    return result


def hold_up(process, seconds):
    """As a machine does that has no time for it."""
    os.kill(process, signal.SIGSTOP)
    time.sleep(seconds)
    os.kill(process, signal.SIGCONT)


def measure(receiver, case, mount, seconds, commands, options=()):
    with road.Road() as lab:
        player = lab.play("--pattern", "flash", "--size", "640x360", "--rate", str(RATE), "--script", *options, stdin=subprocess.PIPE)
        url = lab.source()["url"] + mount
        time.sleep(1)

        processes = {"host": player.pid, "publisher": lab.status()["pid"]}

        def drive():
            for wait, command in commands:
                time.sleep(wait)
                if command.startswith("hold up "):
                    who, ms = command.split()[2:]
                    hold_up(processes[who], int(ms) / 1000)
                    continue
                player.stdin.write((command + "\n").encode())
                player.stdin.flush()

        driver = threading.Thread(target=drive)
        driver.start()
        flashes, beeps, errors = receiver(url, mount, seconds)
        driver.join()
        distances = [d for d in apart(flashes, beeps) if abs(d) < 300]
        worst = max(distances, key=abs) if distances else float("nan")
        good = len(distances) >= min(3, seconds // 2) and abs(worst) <= 20
        print(f"{receiver.__name__[3:]:9} {case:9} {mount or '/':5} {len(flashes)} flashes, {len(beeps)} beeps, "
              f"apart {' '.join(f'{d:+.0f}' for d in distances)} ms: {'good' if good else 'BAD ' + errors.strip()}", flush=True)
        return good


CASES = {
    "steady": ([], ()),
    "pause": ([(3, "pause"), (1.3, "play")], ()),
    "seek": ([(3, "seek 20.4"), (2, "seek 3.1")], ()),
    "loop": ([], ("--loop", "--in", "2", "--out", "5.3")),
    "host": ([(2.5, "hold up host 120"), (2.5, "hold up host 300")], ()),
    "publisher": ([(2.5, "hold up publisher 120")], ()),
}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("cases", nargs="*", choices=[[], *CASES], metavar="CASE")
    parser.add_argument("--seconds", type=int, default=8)
    parser.add_argument("--short", action="store_true", help="4 seconds, without anything on the way")
    options = parser.parse_args()
    cases = ["steady"] if options.short else options.cases or list(CASES)
    seconds = 4 if options.short else options.seconds
    jobs = [(receiver, case, mount, seconds, *CASES[case])
            for receiver in (by_ffmpeg, by_gstreamer) for mount in ("", "/raw") for case in cases]
    return 0 if all([road.undisturbed(lambda: measure(*job)) for job in jobs]) else 1


if __name__ == "__main__":
    sys.exit(main())
