"""Two machines, each a network namespace, and between them a wire that can be made bad.

Every packet goes through this process, so that no module of the kernel is needed and the same seed loses the same
packets. Nothing leaves the two namespaces. Making them takes the rights of root.
"""

import ctypes
import dataclasses
import fcntl
import heapq
import itertools
import os
import random
import select
import struct
import subprocess
import threading
import time

TUNSETIFF, TUNSETCARRIER = 0x400454CA, 0x400454E2
TAP, NO_PACKET_INFORMATION = 0x0002, 0x1000
CLONE_NEWNET = 0x40000000
NUMBERS = itertools.count()


class NotPermitted(Exception):
    pass


@dataclasses.dataclass(frozen=True)
class Faults:
    loss: float = 0  # share of the packets, of each direction
    delay_s: float = 0
    reorder: float = 0  # share of the packets that others overtake,
    overtaken_s: float = 0.01  # by so much
    rate: float = 0  # bits a second, of each direction; 0: no limit
    queue_s: float = 0.2  # what waits longer than this for its turn is dropped


class Machine:
    """A network namespace with one interface, tap0, and its loopback."""

    def __init__(self, name, address):
        self.space = f"quillo-{os.getpid()}-{next(NUMBERS)}-{name}"
        self.address = address
        self.device = -1
        made = subprocess.run(["ip", "netns", "add", self.space], capture_output=True, text=True)
        if made.returncode:
            raise NotPermitted(made.stderr.strip())
        try:
            self.device = self._open_device()
            for arguments in (["addr", "add", f"{address}/24", "dev", "tap0"], ["link", "set", "lo", "up"],
                              ["link", "set", "tap0", "up"]):
                self.ip(*arguments)
        except OSError as problem:
            self.close()
            raise NotPermitted(str(problem)) from problem

    def ip(self, *arguments):
        subprocess.run(["ip", "-n", self.space, *arguments], check=True)

    def enter(self):
        """The calling thread, and what it starts from now on, is in the namespace."""
        libc = ctypes.CDLL(None, use_errno=True)
        space = os.open(f"/var/run/netns/{self.space}", os.O_RDONLY)
        try:
            if libc.setns(space, CLONE_NEWNET):
                raise OSError(ctypes.get_errno(), "setns")
        finally:
            os.close(space)

    def _open_device(self):
        """A thread of its own moves into the namespace to open it."""
        opened = []

        def inside():
            try:
                self.enter()
                device = os.open("/dev/net/tun", os.O_RDWR | os.O_NONBLOCK)
                fcntl.ioctl(device, TUNSETIFF, struct.pack("16sH22x", b"tap0", TAP | NO_PACKET_INFORMATION))
                opened.append(device)
            except OSError as problem:
                opened.append(problem)

        thread = threading.Thread(target=inside)
        thread.start()
        thread.join()
        if isinstance(opened[0], OSError):
            raise opened[0]
        return opened[0]

    def change_address(self, address):
        self.ip("addr", "del", f"{self.address}/24", "dev", "tap0")
        self.ip("addr", "add", f"{address}/24", "dev", "tap0")
        self.address = address

    def command(self, *command):
        return ["ip", "netns", "exec", self.space, *command]

    def close(self):
        if self.device >= 0:
            os.close(self.device)
        subprocess.run(["ip", "netns", "del", self.space], check=False)


class Wire:
    """Carries frames between two machines, on a thread of its own."""

    def __init__(self, one, other, seed=1):
        self.ends = (one.device, other.device)
        self.faults = Faults()
        self.connected = True
        self.carried = self.dropped = self.carried_bytes = 0
        self._random = random.Random(seed)
        self._turns = [0.0, 0.0]
        self._waiting = []
        self._order = itertools.count()
        self._stop, self._stopping = os.pipe()
        self._thread = threading.Thread(target=self._run)
        self._thread.start()

    def plug(self, connected):
        """As a cable is plugged in and out: both ends notice."""
        self.connected = connected
        for end in self.ends:
            fcntl.ioctl(end, TUNSETCARRIER, struct.pack("i", connected))

    def close(self):
        os.write(self._stopping, b"x")
        self._thread.join()
        os.close(self._stop)
        os.close(self._stopping)

    def _run(self):
        while True:
            limit = max(0, self._waiting[0][0] - time.monotonic()) if self._waiting else None
            ready = select.select([*self.ends, self._stop], [], [], limit)[0]
            if self._stop in ready:
                return
            for side in (0, 1):
                if self.ends[side] in ready:
                    self._take(side)
            now = time.monotonic()
            while self._waiting and self._waiting[0][0] <= now:
                self._give(*heapq.heappop(self._waiting)[2:])

    def _take(self, side):
        for _ in range(64):
            try:
                frame = os.read(self.ends[side], 65536)
            except OSError:  # nothing more, or the interface is down
                return
            faults = self.faults
            if not self.connected or self._random.random() < faults.loss:
                self.dropped += 1
                continue
            now = due = time.monotonic()
            if faults.rate:
                due = max(now, self._turns[side]) + len(frame) * 8 / faults.rate
                if due - now > faults.queue_s:
                    self.dropped += 1
                    continue
                self._turns[side] = due
            due += faults.delay_s
            if self._random.random() < faults.reorder:
                due += faults.overtaken_s
            if due <= now and not self._waiting:
                self._give(1 - side, frame)
            else:
                heapq.heappush(self._waiting, (due, next(self._order), 1 - side, frame))

    def _give(self, side, frame):
        try:
            os.write(self.ends[side], frame)
            self.carried += 1
            self.carried_bytes += len(frame)
        except OSError:  # the interface is down
            self.dropped += 1
