#!/usr/bin/env python3
"""clips.py [--seconds N] [--png FOLDER] [CLIP...]: plays clips through the module, and records both addresses with ffmpeg
and GStreamer: size, rate, colours, two streams, rising times. One line a clip.

Clips are files, or names from scripts/make_clips; without any, all of those. --short: two small ones, made on the spot."""

import argparse
import concurrent.futures
import fractions
import json
import os
import statistics
import subprocess
import sys
import tempfile

import road

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
MAKE_CLIPS = os.path.join(TOP, "scripts", "make_clips")
SHORT = {
    "progressive": ["-f", "lavfi", "-i", "testsrc2=s=640x360:r=30000/1001", "-f", "lavfi", "-i",
                    "aevalsrc=0.3*sin(2764*t)|0.3*sin(3456*t)|0.3*sin(4147*t)|0|0|0:c=5.1:s=48000",
                    "-pix_fmt", "yuv420p", "-colorspace", "bt709", "-color_range", "tv"],
    "lower-first": ["-f", "lavfi", "-i", "testsrc2=s=720x486:r=60000/1001", "-f", "lavfi", "-i", "sine=r=48000", "-ac", "2",
                    "-vf", "tinterlace=interleave_bottom,setfield=bff,setsar=10/11", "-flags", "+ildct+ilme",
                    "-x264opts", "bff=1", "-pix_fmt", "yuv422p", "-colorspace", "smpte170m", "-color_range", "tv"],
}


def expected_of(path):
    """What receivers have to see of a file."""
    streams = road.probe(path)
    video = next(s for s in streams if s["codec_type"] == "video")
    audio = next(s for s in streams if s["codec_type"] == "audio")
    width, height = video["width"] & ~1, video["height"]
    if video.get("field_order") in ("bb", "tb"):
        height = 480 if height == 486 else height - 2
    return {"width": width, "height": height, "rate": fractions.Fraction(video["avg_frame_rate"]),
            "channels": audio["channels"], "sample_rate": int(audio["sample_rate"])}


class Judge:
    """Collects what is wrong, in words."""

    def __init__(self, who):
        self.who = who
        self.wrong = []

    def same(self, what, found, expected):
        if found != expected:
            self.wrong.append(f"{self.who}: {what} {found}, not {expected}")

    def times(self, name, times, step, seconds):
        if len(times) < 2:
            self.wrong.append(f"{self.who}: {len(times)} of {name}")
            return
        steps = [b - a for a, b in zip(times, times[1:])]
        standing = sum(one == 0 for one in steps)
        if min(steps) < 0:
            self.wrong.append(f"{self.who}: {name} times fall back by {-min(steps) * 1000:.1f} ms")
        if standing:
            self.wrong.append(f"{self.who}: {standing} of {len(steps)} {name} times stand still")
        if step and abs(statistics.median(steps) / step - 1) > 0.01:
            self.wrong.append(f"{self.who}: {name} every {statistics.median(steps) * 1000:.2f} ms")
        if times[-1] - times[0] < 0.8 * seconds:
            self.wrong.append(f"{self.who}: {name} for {times[-1] - times[0]:.1f} s only")


def by_ffmpeg(url, mount, expected, seconds):
    judge = Judge("ffmpeg " + (mount or "/"))
    streams = road.probe(url, extra=["-rtsp_transport", "tcp"])
    judge.same("streams", sorted(s["codec_type"] for s in streams), ["audio", "video"])
    video = next(s for s in streams if s["codec_type"] == "video")
    audio = next(s for s in streams if s["codec_type"] == "audio")
    judge.same("codecs", (video["codec_name"], audio["codec_name"]), ("rawvideo", "pcm_s24be") if mount else ("h264", "opus"))
    judge.same("size", (video["width"], video["height"]), (expected["width"], expected["height"]))
    # Of raw pictures as described: what ffmpeg guesses from the first ones would be a multiple.
    judge.same("rate", fractions.Fraction(video["avg_frame_rate" if mount else "r_frame_rate"]), expected["rate"])
    judge.same("colours", (video.get("color_range"), video.get("color_space")), ("tv", "bt709"))
    judge.same("channels", audio["channels"], expected["channels"] if mount else 2)
    judge.same("sample rate", int(audio["sample_rate"]), expected["sample_rate"] if mount else 48000)
    times, complaints = road.record_ffmpeg(url, seconds)
    judge.same("complaints", complaints, "")
    judge.times("pictures", times["video"], float(1 / expected["rate"]), seconds)
    judge.times("sound", times["audio"], 0, seconds)
    return len(times["video"]), judge.wrong


def by_gstreamer(url, mount, expected, seconds):
    judge = Judge("GStreamer " + (mount or "/"))
    types, times = road.record_gstreamer(url, mount, seconds)
    video, audio = types["video"], types["audio"]
    judge.same("size", (video.get("width"), video.get("height")), (str(expected["width"]), str(expected["height"])))
    if not mount or expected["height"] > 576:  # its depayloader takes colours from the size, not from the description
        judge.same("colours", video.get("colorimetry"), "bt709")
    if not mount:  # the depayloader of raw pictures does not look for a rate
        judge.same("rate", fractions.Fraction(video.get("framerate", "0/1")), expected["rate"])
    judge.same("sample rate", audio.get("rate"), str(expected["sample_rate"] if mount else 48000))
    judge.same("channels", audio.get("channels"), str(expected["channels"] if mount else 2))
    judge.times("pictures", times["video"], float(1 / expected["rate"]), seconds)
    judge.times("sound", times["audio"], 0, seconds)
    return len(times["video"]), judge.wrong


def watch(name, path, seconds, at_once, png):
    expected = expected_of(path)
    with road.Road() as lab:
        player = lab.play(path, "--loop", "--json", "--script", stdin=subprocess.PIPE,
                          stderr=open(os.path.join(lab.folder, "said"), "wb"))
        url = lab.source()["url"]
        with concurrent.futures.ThreadPoolExecutor(4 if at_once else 1) as pool:
            results = list(pool.map(lambda job: job[0](url + job[1], job[1], expected, seconds),
                                    [(by, mount) for mount in ("", "/raw") for by in (by_ffmpeg, by_gstreamer)]))
        if png:
            os.makedirs(png, exist_ok=True)
            road.run(["ffmpeg", "-v", "error", "-y", "-rtsp_transport", "tcp", "-i", url + "/raw", "-frames:v", "1",
                      os.path.join(png, name + ".png")])
        player.communicate(b"quit\n", 20)
        played = json.loads(lab.output())
    wrong = [line for _, lines in results for line in lines]
    if player.returncode:
        wrong.append(f"quillo play ended with {player.returncode}")
    frames = played["frames"]
    print(f"{name:16} {expected['width']}x{expected['height']} {str(expected['rate']):10} "
          f"pushed {frames['pushed']} late {frames['late']} dropped {frames['dropped']}; received "
          f"/ {results[0][0]} and {results[1][0]}, /raw {results[2][0]} and {results[3][0]}: "
          + ("; ".join(wrong) if wrong else "good"), flush=True)
    return not wrong


def short_clips(folder):
    for name, options in SHORT.items():
        path = os.path.join(folder, name + ".mp4")
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *options, "-c:v", "libx264", "-preset", "ultrafast",
                        "-c:a", "aac", "-t", "4", path], check=True)
        yield name, path


def made_clips(names):
    if not names:
        names = subprocess.run([MAKE_CLIPS, "list"], check=True, stdout=subprocess.PIPE, text=True).stdout.split()
    missing = [name for name in names if not os.path.exists(name)]
    if missing:
        subprocess.run([MAKE_CLIPS, *missing], check=True)
    for name in names:
        yield ((os.path.basename(name), name) if os.path.exists(name) else
               (name, os.path.join(TOP, "build", "clips", name + ".mp4")))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("clips", nargs="*")
    parser.add_argument("--seconds", type=float, default=10)
    parser.add_argument("--short", action="store_true")
    parser.add_argument("--png", metavar="FOLDER")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="quillo-clips-") as folder:
        if options.short:
            clips, seconds = short_clips(folder), 2
        else:
            clips, seconds = made_clips(options.clips), options.seconds
        results = [road.undisturbed(lambda: watch(name, path, seconds, options.short, options.png)) for name, path in clips]
    return 0 if results and all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
