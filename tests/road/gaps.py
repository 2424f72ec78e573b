#!/usr/bin/env python3
"""gaps.py [--short] [EVENT...]: what receivers see of a gap. While ffmpeg and GStreamer watch both addresses, over TCP and
UDP, the host pauses, seeks, loops or closes, or the publisher is told to end or is killed. A receiver that ends, or shows
nothing more, is started again; good is what needs no more than that."""

import argparse
import concurrent.futures
import os
import signal
import subprocess
import sys
import threading
import time

import road

SETTLED = 1.5  # seconds of pictures before anything happens
SILENT = 3.0   # a receiver without a picture for so long shows nothing
PATIENCE = 20


class Receiver:
    """A stock receiver, and when it wrote which picture."""

    def __init__(self, kind, url, mount, transport):
        self.name = f"{kind} {transport}"
        self.arguments = {"ffmpeg": self.ffmpeg, "GStreamer": self.gstreamer}[kind](url + mount, mount, transport)
        self.start()

    @staticmethod
    def ffmpeg(url, mount, transport):
        decoded = ["-c", "copy"] if mount else ["-vf", "scale=64:36:flags=neighbor"]
        return ["ffmpeg", "-nostdin", "-v", "error", "-rtsp_transport", transport, "-i", url, "-map", "0:v", *decoded,
                "-vsync", "passthrough", "-flush_packets", "1", "-f", "framecrc", "-"]

    @staticmethod
    def gstreamer(url, mount, transport):
        video, audio = road.DECODERS[mount]
        return ["gst-launch-1.0", "-v", *road.gstreamer_line(
            url, f"{video} ! fakesink name=video silent=false sync=false async=false",
            f"{audio} ! fakesink sync=false async=false", transport)]

    def start(self):
        self.pictures = []
        self.ended_at = None
        self.process = subprocess.Popen(self.arguments, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                        stdin=subprocess.DEVNULL, text=True, errors="replace", bufsize=1)
        self.reader = threading.Thread(target=self.read, args=(self.process,), daemon=True)
        self.reader.start()

    def read(self, process):
        for line in process.stdout:
            if line.startswith("0, ") or "video: last-message = chain" in line:
                self.pictures.append(time.monotonic())
        process.wait()
        self.ended_at = time.monotonic()

    def wait(self, since, seconds):
        """For a picture that is newer; False without one."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            if self.pictures and self.pictures[-1] > since:
                return True
            if self.ended_at:
                return False
            time.sleep(0.01)
        return False

    def stop(self):
        self.process.kill()
        self.reader.join()

    def judge(self, happened):
        """What became of it, once the event and all its consequences lie behind."""
        if self.ended_at:
            text = f"ended after {self.ended_at - happened:.1f} s"
        elif time.monotonic() - self.pictures[-1] > SILENT:
            text = f"silent {self.pictures[-1] - happened:+.1f} s"
            self.stop()
        else:
            seen = [t for t in self.pictures if t > happened - 0.5]
            return True, f"went on, longest gap {max(b - a for a, b in zip(seen, seen[1:])) * 1000:.0f} ms"
        end = time.monotonic() + PATIENCE
        again = time.monotonic()
        while time.monotonic() < end:
            self.start()
            if self.wait(0, 10):
                return True, f"{text}; connected again in {self.pictures[0] - again:.1f} s"
            self.stop()
        return False, text + "; not there again"


class Stage:
    """A host that plays a pattern round and round, and everybody who watches one address."""

    def __init__(self, mount, loop):
        self.mount = mount
        self.lab = road.Road()
        self.loop = loop

    def __enter__(self):
        self.open_host()
        transports = ("tcp",) if self.mount else ("tcp", "udp")
        self.receivers = [Receiver(kind, self.url, self.mount, transport)
                          for kind in ("ffmpeg", "GStreamer") for transport in transports]
        for one in self.receivers:
            if not one.wait(0, PATIENCE / 2):
                one.stop()  # gst-launch-1.0 may stumble over two pads at once (road.run_gstreamer)
                one.start()
            if not one.wait(0, PATIENCE):
                raise road.RoadError(f"{one.name} sees nothing of {self.url}{self.mount}")
        time.sleep(SETTLED)
        return self

    def __exit__(self, *exc):
        for one in self.receivers:
            one.stop()
        self.lab.__exit__()

    def open_host(self):
        part = ("--in", "2", "--out", "5") if self.loop else ()
        self.player = self.lab.play("--pattern", "bars", "--size", "640x360", "--rate", "25", "--loop", "--script", *part,
                                    stdin=subprocess.PIPE)
        self.source = self.lab.source(ready=lambda source: source["pid"] == self.player.pid and source["format"])
        self.url = self.source["url"]

    def say(self, line):
        self.player.stdin.write((line + "\n").encode())
        self.player.stdin.flush()

    def pause(self):
        self.say("pause")
        time.sleep(2.5)
        self.say("play")

    def seek(self):
        self.say("seek 20")
        time.sleep(1)
        self.say("seek 3")

    def watch_loop(self):
        time.sleep(3.5)

    def close(self):
        self.say("quit")
        self.player.wait(PATIENCE)
        time.sleep(1)
        self.open_host()

    def end_publisher(self, how):
        before = self.lab.status()["pid"]
        os.kill(before, how)
        began = time.monotonic()
        while True:
            try:
                if self.lab.status()["pid"] != before and self.lab.source()["url"] == self.url:
                    break
            except OSError:
                pass
            if time.monotonic() - began > PATIENCE:
                raise road.RoadError("the publisher does not come back")
            time.sleep(0.01)
        self.note = f"publisher back after {time.monotonic() - began:.1f} s"

    note = ""


EVENTS = {
    "pause": Stage.pause,
    "seek": Stage.seek,
    "loop": Stage.watch_loop,
    "close": Stage.close,
    "publisher ended": lambda stage: stage.end_publisher(signal.SIGTERM),
    "publisher killed": lambda stage: stage.end_publisher(signal.SIGKILL),
}


def run(event, mount):
    with Stage(mount, event == "loop") as stage:
        happened = time.monotonic()
        EVENTS[event](stage)
        time.sleep(SILENT + 1)
        with concurrent.futures.ThreadPoolExecutor(len(stage.receivers)) as pool:
            results = list(pool.map(lambda one: one.judge(happened), stage.receivers))
        for one, (good, text) in zip(stage.receivers, results):
            print(f"{event:16} {mount or '/':5} {one.name:14} {text}  {stage.note}{'' if good else '  BAD'}", flush=True)
        return all(good for good, _ in results)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("events", nargs="*", choices=[[], *EVENTS], metavar="EVENT")
    parser.add_argument("--short", action="store_true", help="only a killed publisher")
    options = parser.parse_args()
    events = ["publisher killed"] if options.short else options.events or list(EVENTS)
    with concurrent.futures.ThreadPoolExecutor(2 if options.short else 1) as pool:
        return 0 if all(list(pool.map(lambda job: run(*job), [(e, mount) for e in events for mount in ("", "/raw")]))) else 1


if __name__ == "__main__":
    sys.exit(main())
