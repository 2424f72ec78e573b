"""The whole road from outside: plays a file with the built command, and watches it with stock receivers.

Nothing of the project's code is used to judge: receivers are ffmpeg and GStreamer's own tools, the expected picture is
computed here from the file's decoded samples.
"""

import contextlib
import hashlib
import json
import os
import re
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time


class RoadError(Exception):
    pass


def build_folder():
    top = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    return os.environ.get("QUILLO_BUILD", os.path.join(top, "build", "run"))


def quillo():
    program = os.path.join(build_folder(), "tools", "quillo", "quillo")
    if not os.access(program, os.X_OK):
        sys.exit(f"there is no {program}: build it, or name another build folder in QUILLO_BUILD")
    return program


def free_port():
    with socket.socket() as sock:
        sock.bind(("127.0.0.1", 0))
        return sock.getsockname()[1]


def end(process):
    """Interrupts it, stopped or not, and kills it when it does not heed that."""
    if process.poll() is None:
        process.send_signal(signal.SIGCONT)
        process.send_signal(signal.SIGINT)
        try:
            process.wait(10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


class Road:
    """A runtime folder of its own, a player, and the publisher that the sender starts. With a port of its own the
    publisher comes back at the same address, whoever else publishes on this machine."""

    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="quillo-road-")
        publisher = os.path.join(self.folder, "publisher")
        with open(publisher, "w", encoding="utf-8") as script:
            script.write(f'#!/bin/sh\nexec "{quillo()}" "$@" --port {free_port()}\n')
        os.chmod(publisher, 0o700)
        self.env = dict(os.environ, QUILLO_RUNTIME_DIR=self.folder, QUILLO_PUBLISHER=publisher)
        self.processes = []

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        for process in reversed(self.processes):
            end(process)
        with contextlib.suppress(Exception):
            os.kill(self.status()["pid"], signal.SIGTERM)
        shutil.rmtree(self.folder, ignore_errors=True)

    def start(self, arguments, **kwargs):
        kwargs.setdefault("stdin", subprocess.DEVNULL)
        kwargs.setdefault("stdout", open(os.path.join(self.folder, f"out{len(self.processes)}"), "wb"))
        kwargs.setdefault("stderr", subprocess.STDOUT)
        process = subprocess.Popen(arguments, env=self.env, **kwargs)
        self.processes.append(process)
        return process

    def play(self, *options, **kwargs):
        return self.start([quillo(), "play", *options], **kwargs)

    def output(self, index=0):
        with open(os.path.join(self.folder, f"out{index}"), "rb") as file:
            return file.read().decode(errors="replace")

    def status(self):
        """The publisher's own account, asked for over its local socket."""
        with socket.socket(socket.AF_UNIX) as sock:
            sock.settimeout(3)
            sock.connect(os.path.join(self.folder, "publisher.sock"))
            sock.sendall(struct.pack("<IIII", 0x6F6C7551, 32, 0, 0))
            head = _exactly(sock, 16)
            _, _, size, _ = struct.unpack("<IIII", head)
            return json.loads(_exactly(sock, size))

    def source(self, seconds=15, index=0, ready=lambda source: source.get("format")):
        """Waits until the publisher knows a source with a picture format, and gives its status."""
        end = time.monotonic() + seconds
        last = None
        while time.monotonic() < end:
            try:
                last = self.status()
                if len(last["sources"]) > index and ready(last["sources"][index]):
                    return last["sources"][index]
            except (OSError, ValueError, KeyError) as error:
                last = error
            time.sleep(0.05)
        raise RoadError(f"no source within {seconds} s: {last}\n{self.output()}")


def _exactly(sock, size):
    data = b""
    while len(data) < size:
        part = sock.recv(size - len(data))
        if not part:
            raise OSError("publisher closed the connection")
        data += part
    return data


def stolen():
    """Seconds of its processors that this machine's neighbours took from it so far; 0 where nobody counts them."""
    with contextlib.suppress(OSError, IndexError), open("/proc/stat", encoding="ascii") as counts:
        return int(counts.readline().split()[8]) / os.sysconf("SC_CLK_TCK")
    return 0


def undisturbed(measure, tries=3):
    """Whether measure() finds all well. What was bad while neighbours took a part of the machine is measured again."""
    for left in reversed(range(tries)):
        began, before = time.monotonic(), stolen()
        if measure():
            return True
        share = (stolen() - before) / ((time.monotonic() - began) * os.cpu_count())
        if share < 0.01 or not left:
            return False
        print(f"    {share:.0%} of the processors were taken meanwhile: once more", flush=True)


def run(arguments, seconds=120, **kwargs):
    return subprocess.run(arguments, timeout=seconds, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, **kwargs)


def probe(path_or_url, seconds=30, extra=()):
    """What ffprobe says of a file or a live source."""
    result = run(["ffprobe", "-v", "error", *extra, "-show_streams", "-of", "json", path_or_url], seconds)
    if result.returncode:
        raise RoadError(result.stderr.decode())
    return json.loads(result.stdout)["streams"]


def file_pictures(path):
    """The file's frames as UYVY, from its own samples: each chroma sample serves the pixels it was made for, nothing is
    filtered, and a pair of pixels takes the chroma of its left one. An odd width loses its last column."""
    video = next(s for s in probe(path) if s["codec_type"] == "video")
    width, height, pixels = video["width"], video["height"], video["pix_fmt"]
    halves = {"yuv420p": (1, 1), "yuvj420p": (1, 1), "yuv422p": (1, 0), "yuv444p": (0, 0)}
    if pixels not in halves:
        raise RoadError(f"{path}: {pixels} is not one of {', '.join(halves)}")
    across, down = halves[pixels]
    chroma_width, chroma_height = (width + across) >> across, (height + down) >> down
    size = width * height + 2 * chroma_width * chroma_height
    even = width & ~1
    woven = down and video.get("field_order", "progressive") not in ("progressive", "unknown")

    def chroma_row(row):
        """Of woven fields each has chroma lines of its own, every second one."""
        chroma = (row >> 2) * 2 + (row & 1) if woven else row >> down
        return chroma if chroma < chroma_height else chroma - 2

    process = subprocess.Popen(["ffmpeg", "-v", "error", "-i", path, "-map", "0:v:0", "-f", "rawvideo", "-vsync", "0",
                                "-pix_fmt", pixels, "-"], stdout=subprocess.PIPE, stdin=subprocess.DEVNULL)
    with process:
        while len(data := process.stdout.read(size)) == size:
            rows = []
            for row in range(height):
                line = bytearray(even * 2)
                luma = row * width
                line[1::2] = data[luma:luma + even]
                for place, plane in ((0, 0), (2, 1)):
                    start = width * height + plane * chroma_width * chroma_height + chroma_row(row) * chroma_width
                    chroma = data[start:start + chroma_width]
                    line[place::4] = (chroma if across else chroma[::2])[:even // 2]
                rows.append(bytes(line))
            yield rows


def digest(rows):
    return hashlib.blake2b(b"".join(rows), digest_size=16).digest()


def receive_ffmpeg(url, seconds, pixels="uyvy422", extra=()):
    """Frames as ffmpeg delivers them, without any conversion; the caller gives the announced pixel format."""
    return ["ffmpeg", "-v", "error", "-rtsp_transport", "tcp", *extra, "-i", url, "-map", "0:v", "-t", str(seconds),
            "-f", "rawvideo", "-vsync", "passthrough", "-pix_fmt", pixels, "-"]


def receive_gstreamer(url, frames, pixels="UYVY"):
    return ["gst-launch-1.0", "-q", "rtspsrc", f"location={url}", "latency=0", "protocols=tcp", "name=s", "s.",
            "!", "application/x-rtp,media=video", "!", "rtpvrawdepay", "!", f"video/x-raw,format={pixels}", "!",
            "identity", f"eos-after={frames + 1}", "!", "fdsink", "fd=1", "sync=false"]


def frames_of(arguments, size, seconds=120, look=lambda index, digest, data: None):
    """The digests of the frames that a receiver writes, and its complaints."""
    process = subprocess.Popen(arguments, stdout=subprocess.PIPE, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL)
    digests = []
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        data = process.stdout.read(size)
        if len(data) < size:
            break
        digests.append(hashlib.blake2b(data, digest_size=16).digest())
        look(len(digests) - 1, digests[-1], data)
    process.kill()
    complaints = process.stderr.read().decode(errors="replace")
    process.wait()
    return digests, complaints


def record_ffmpeg(url, seconds, transport="tcp"):
    """What ffmpeg writes of both streams in so many seconds: the times of each, and its complaints."""
    result = run(["ffmpeg", "-nostdin", "-v", "error", "-rtsp_transport", transport, "-i", url, "-t", str(seconds),
                  "-map", "0:v", "-map", "0:a", "-c", "copy", "-f", "framecrc", "-"], seconds + 60)
    text = result.stdout.decode()
    unit = {stream: int(n) / int(d) for stream, n, d in re.findall(r"^#tb (\d): (\d+)/(\d+)$", text, re.M)}
    times = {"0": [], "1": []}
    for stream, when in re.findall(r"^(\d),\s*-?\d+,\s*(-?\d+),", text, re.M):
        times[stream].append(int(when) * unit[stream])
    return {"video": times["0"], "audio": times["1"]}, result.stderr.decode().strip()


DECODERS = {"": ("rtph264depay ! h264parse ! avdec_h264", "rtpopusdepay ! opusdec"),
            "/raw": ("rtpvrawdepay", "rtpL24depay")}


def gstreamer_line(url, video, audio, protocols="tcp"):
    return (f"rtspsrc location={url} protocols={protocols} latency=200 name=s "
            f"s. ! application/x-rtp,media=video ! {video} s. ! application/x-rtp,media=audio ! {audio}").split()


def run_gstreamer(seconds, option, line, **kwargs):
    """gst-launch-1.0 looks for a pad to link among all of rtspsrc's, without a lock, while another thread may add the next
    one. It says so itself, the picture or the sound is missing then, and it is begun anew."""
    for _ in range(3):
        result = run(["timeout", "-s", "INT", str(seconds + 2), "gst-launch-1.0", option, *line], seconds + 60, **kwargs)
        if b"gst_pad_get_parent_element: assertion" not in result.stderr:
            break
    return result


def record_gstreamer(url, mount, seconds):
    """What GStreamer gives of both streams in so many seconds: the types that it found, and the times of each."""
    video, audio = (f"{decoder} ! fakesink name={name} silent=false sync=false async=false"
                    for decoder, name in zip(DECODERS[mount], ("video", "audio")))
    result = run_gstreamer(seconds, "-v", gstreamer_line(url, video, audio),
                           env={**os.environ, "GST_DEBUG": "GST_EVENT:4", "GST_DEBUG_NO_COLOR": "1"})
    text, log = result.stdout.decode(errors="replace"), result.stderr.decode(errors="replace")
    types, times = {}, {}
    for name in ("video", "audio"):
        # From the log, as gst-launch-1.0 does not tell of the pads every time; what comes last counts.
        caps = re.findall(rf"creating caps event ({name}/x-raw.*)", log)
        types[name] = dict(field for one in caps for field in re.findall(r"([a-z-]+)=\(\w+\)\"?([^,;\"\n]+)", one))
        told = re.findall(rf"GstFakeSink:{name}: last-message = (chain .*)", text)
        told = [line for before, line in zip([""] + told, told) if line != before]  # one buffer may be told twice
        times[name] = [sum(float(part) * unit for part, unit in zip(when.split(":"), (3600, 60, 1)))
                       for line in told for when in re.findall(r"pts: ([\d:.]+)", line)]
    return types, times
