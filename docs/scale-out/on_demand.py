#!/usr/bin/env python3
"""Pulls a source for a router while somebody watches there, and only then.

  on_demand.py janus --source rtsp://HOST:8554/NAME [--mountpoint 1] [--video-port 5004] [--audio-port 5002]
      Asks Janus once a second how many watch the mountpoint; hands it the source's own RTP packets.

  on_demand.py hls --sources rtsp://HOST:8554 [--listen 8581]
      Is asked by nginx (auth_request) before each playlist of a stream NAME; pulls HOST's source NAME into nginx's RTMP
      application, and answers when there is a playlist. A stream that nobody asks for goes after a while.

Nothing is decoded, but for HLS sound is encoded anew: Opus to AAC.
"""

import argparse
import http.server
import itertools
import json
import os
import re
import signal
import subprocess
import sys
import threading
import time
import urllib.error
import urllib.request

LINGER = 10  # seconds from the last viewer to the end of the pull
PATIENCE = 8  # seconds that a first viewer of HLS waits for a playlist
RESTART = 1  # seconds between two attempts to reach the source


class Pull:
    """A program that runs while it is wanted, started anew when it ends by itself."""

    def __init__(self, command):
        self.command = command
        self.process = None
        self.last_wanted = float("-inf")
        self.last_start = float("-inf")

    def want(self):
        self.last_wanted = time.monotonic()
        self.look()

    def look(self):
        """To be called about once a second."""
        now = time.monotonic()
        if self.process and self.process.poll() is not None:
            self.process = None
        wanted = now - self.last_wanted < LINGER
        if wanted and not self.process and now - self.last_start > RESTART:
            self.last_start = now
            self.process = subprocess.Popen(self.command, stdin=subprocess.DEVNULL)
        elif not wanted:
            self.stop()

    def stop(self):
        if not self.process:
            return
        self.process.terminate()
        try:
            self.process.wait(5)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.process = None


class Janus:
    """A session with the streaming plug-in, made anew whenever Janus does not know it any more."""

    def __init__(self, url):
        self.url = url
        self.plugin = None
        self.numbers = itertools.count()

    def _post(self, path, body):
        body["transaction"] = str(next(self.numbers))
        asked = urllib.request.Request(self.url + path, json.dumps(body).encode(), {"Content-Type": "application/json"})
        with urllib.request.urlopen(asked, timeout=3) as answer:
            return json.load(answer)

    def viewers(self, mountpoint):
        try:
            if not self.plugin:
                session = f"/{self._post('', {'janus': 'create'})['data']['id']}"
                handle = self._post(session, {"janus": "attach", "plugin": "janus.plugin.streaming"})
                self.plugin = f"{session}/{handle['data']['id']}"
            told = self._post(self.plugin, {"janus": "message", "body": {"request": "info", "id": mountpoint}})
            return told["plugindata"]["data"]["info"].get("viewers", 0)
        except (OSError, KeyError, ValueError):
            self.plugin = None
            return 0


def serve_janus(options):
    # The packets go on as they came; they fit a browser's path, and key frames come every second.
    pull = Pull(["gst-launch-1.0", "-q", "rtspsrc", f"location={options.source}", "protocols=tcp", "latency=0", "name=s",
                 "s.", "!", "application/x-rtp,media=video", "!", "udpsink", "host=127.0.0.1", "sync=false",
                 f"port={options.video_port}",
                 "s.", "!", "application/x-rtp,media=audio", "!", "udpsink", "host=127.0.0.1", "sync=false",
                 f"port={options.audio_port}"])
    janus = Janus(options.janus)
    try:
        while True:
            if janus.viewers(options.mountpoint):
                pull.want()
            pull.look()
            time.sleep(options.interval)
    finally:
        pull.stop()


def serve_hls(options):
    pulls, lock = {}, threading.Lock()

    def wanted(name):
        command = ["ffmpeg", "-nostdin", "-v", "error", "-rtsp_transport", "tcp", "-i", f"{options.sources}/{name}",
                   "-c:v", "copy", "-c:a", "aac", "-b:a", "160k", "-f", "flv", f"{options.rtmp}/{name}"]
        with lock:
            pulls.setdefault(name, Pull(command)).want()

    def has_playlist(name):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            if os.path.exists(os.path.join(options.folder, name + ".m3u8")):
                return True
            time.sleep(0.1)
        return False

    class Asked(http.server.BaseHTTPRequestHandler):
        def do_GET(self):
            name = self.path.lstrip("/")
            known = re.fullmatch(r"[a-z0-9-]{1,64}", name)
            if known:
                wanted(name)
            # What nginx does not find it answers by itself.
            self.send_response(204 if known and has_playlist(name) else 403)
            self.end_headers()

        def log_message(self, *_):
            pass

    server = http.server.ThreadingHTTPServer(("127.0.0.1", options.listen), Asked)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    try:
        while True:
            time.sleep(1)
            with lock:
                for pull in pulls.values():
                    pull.look()
    finally:
        for pull in pulls.values():
            pull.stop()


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(0))
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    routers = parser.add_subparsers(required=True)
    janus = routers.add_parser("janus")
    janus.set_defaults(serve=serve_janus)
    janus.add_argument("--source", required=True)
    janus.add_argument("--janus", default="http://127.0.0.1:8088/janus")
    janus.add_argument("--mountpoint", type=int, default=1)
    janus.add_argument("--video-port", type=int, default=5004)
    janus.add_argument("--audio-port", type=int, default=5002)
    janus.add_argument("--interval", type=float, default=0.5)
    hls = routers.add_parser("hls")
    hls.set_defaults(serve=serve_hls)
    hls.add_argument("--sources", required=True)
    hls.add_argument("--listen", type=int, default=8581)
    hls.add_argument("--rtmp", default="rtmp://127.0.0.1:1935/live")
    hls.add_argument("--folder", default="/tmp/quillo-hls")
    options = parser.parse_args()
    try:
        options.serve(options)
    except KeyboardInterrupt:
        pass


main()
