"""What a receiver of the flash pattern saw (watch.cpp), and what follows from it."""

import queue
import subprocess
import threading
import time

LATE = 0.25  # a picture that comes so much later than the earliest ones is not live


class Watcher:
    """What the receiver says, collected while it runs."""

    def __init__(self, command, rate):
        """command: the receiver, with its address and transport; rate: of the pattern, frames a second."""
        self.rate = rate
        self.pictures, self.beeps, self.opened = [], [], []  # (arrived, time, number, connection), (time, connection)
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.first = queue.Queue()
        threading.Thread(target=self._read, daemon=True).start()
        if not self.first.get(timeout=20):
            raise AssertionError("the receiver ended before it showed anything")

    def _read(self):
        for line in self.process.stdout:
            word, *numbers = line.split()
            connection = len(self.opened)
            if word == "open":
                self.opened.append(time.monotonic())
            elif word == "picture":
                arrived, stamp, number = (int(n) for n in numbers)
                self.pictures.append((arrived / 1e9, stamp / 1e9, number, connection))
                self.first.put(True)
            elif word == "beep":
                self.beeps.append((int(numbers[0]) / 1e9, connection))
        self.first.put(False)

    def go_to(self, url):
        self.process.stdin.write(url + "\n")
        self.process.stdin.flush()

    def close(self):
        self.process.stdin.close()
        try:
            self.process.wait(5)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()

    def lateness(self, picture):
        """Against the earliest picture ever, by the frame numbers: 0 is as live as it gets."""
        base = min(arrived - number / self.rate for arrived, _, number, _ in self.pictures if number >= 0)
        return picture[0] - picture[2] / self.rate - base

    def live_after(self, when):
        """Seconds until the first readable picture that is live and followed by most of a second's pictures."""
        good = [p[0] for p in self.pictures if p[0] >= when and p[2] >= 0 and self.lateness(p) < LATE]
        for start in good:
            if sum(1 for arrived in good if start <= arrived < start + 1) > 0.8 * self.rate:
                return start - when
        return float("inf")

    def apart(self, when):
        """From each flash to its beep, from a time on."""
        flashes = [(stamp, connection) for arrived, stamp, number, connection in self.pictures
                   if arrived >= when and number >= 0 and number % round(self.rate) == 0]
        result = []
        for stamp, connection in flashes:
            near = [beep - stamp for beep, there in self.beeps if there == connection and abs(beep - stamp) < 0.4]
            if near:
                result.append(min(near, key=abs))
        return result
