"""hls_viewers.py PLAYLIST COUNT SECONDS: viewers of HLS. Each asks for the playlist once a second and for every segment
that is new. Ends with a line of JSON: when the first segment came, and how many the least and the most served one got."""

import json
import sys
import threading
import time
import urllib.error
import urllib.request

playlist, count, seconds = sys.argv[1], int(sys.argv[2]), float(sys.argv[3])
began = time.monotonic()
segments = [0] * count
first = []


def get(url):
    with urllib.request.urlopen(url, timeout=10) as answer:
        return answer.read()


def watch(number):
    seen = set()
    while time.monotonic() < began + seconds:
        try:
            lines = get(playlist).decode().split("\n")
            for name in (line for line in lines if line.endswith(".ts")):
                if name not in seen and get(playlist.rpartition("/")[0] + "/" + name):
                    seen.add(name)
                    first.append(time.monotonic() - began)
        except (OSError, urllib.error.URLError):
            pass
        segments[number] = len(seen)
        time.sleep(1)


threads = [threading.Thread(target=watch, args=(number,)) for number in range(count)]
for thread in threads:
    thread.start()
for thread in threads:
    thread.join()
print(json.dumps({"first_s": min(first, default=-1), "least": min(segments), "most": max(segments)}))
