#!/usr/bin/env python3
"""faults.py WATCH QUILLO [--short] [NAME...]: bad networks between a publisher and a receiver that does not give up.

Each case has two network namespaces of its own and a wire between them (wire.py). A pattern plays on one side, on the
other WATCH (tests/network/watch.cpp) receives the encoded address. After each fault the picture must be live again
within 3 s, with sound and picture at most 20 ms apart from then on, and after each interruption the name must be found
within 5 s. Ends with 77, for "skipped", where namespaces may not be made.
"""

import argparse
import concurrent.futures
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from watcher import Watcher
from wire import Faults, Machine, NotPermitted, Wire

sys.path.append(os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "road"))

from road import end  # noqa: E402

RATE = 50
LIVE_WITHIN, FOUND_WITHIN, APART = 3.0, 5.0, 0.020
SETTLE = 2.5  # seconds before the fault, and once more when all has to be well again
NOT_PERMITTED = 77


def options():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("watch", metavar="WATCH")
    parser.add_argument("quillo", metavar="QUILLO")
    parser.add_argument("names", metavar="NAME", nargs="*")
    parser.add_argument("--short", action="store_true", help="few cases, seconds long")
    return parser.parse_args()


OPTIONS = options()
WATCH, QUILLO = OPTIONS.watch, OPTIONS.quillo


class Lab:
    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="quillo-network-")
        self.processes, self.watchers = [], []
        self.here = Machine("here", "10.77.0.1")
        try:
            self.there = Machine("there", "10.77.0.2")
        except NotPermitted:
            self.here.close()
            raise
        self.wire = Wire(self.here, self.there)
        # Neither a bus nor a daemon: what this machine runs of them belongs to another network.
        self.env = dict(os.environ, QUILLO_RUNTIME_DIR=self.folder, QUILLO_PUBLISHER=QUILLO,
                        DBUS_SYSTEM_BUS_ADDRESS="unix:path=" + os.path.join(self.folder, "no-bus"))
        self._start(self.here, QUILLO, "play", "--pattern", "flash", "--size", "640x360", "--rate", str(RATE))

    def _start(self, machine, *command):
        with open(os.path.join(self.folder, f"out{len(self.processes)}"), "wb") as out:
            self.processes.append(subprocess.Popen(machine.command(*command), env=self.env, stdin=subprocess.DEVNULL,
                                                   stdout=out, stderr=subprocess.STDOUT))

    def find(self, patience=20.0):
        """The address under which the other machine finds the source, asking anew from now on, as receivers do: once,
        and listening. Who asks again within the second hears nothing, as answers to all are not repeated that soon."""
        asked = subprocess.run(self.there.command(QUILLO, "list", "--json", "--first", "--seconds", str(patience)),
                               env=self.env, capture_output=True, text=True, check=False)
        for source in json.loads(asked.stdout or "[]"):
            for url in source["urls"]:
                if self.here.address in url:
                    return url
        raise AssertionError(f"not found by name within {patience:.0f} s: {asked.stdout}\n{self.output()}")

    def watch(self, transport):
        self.watchers.append(Watcher(self.there.command(WATCH, self.find(), transport), RATE))
        return self.watchers[-1]

    def output(self):
        texts = []
        for name in sorted(os.listdir(self.folder)):
            if re.fullmatch(r"out\d+", name):
                with open(os.path.join(self.folder, name), errors="replace") as file:
                    texts.append(file.read())
        return "\n".join(texts)[-2000:]

    def close(self):
        for watcher in self.watchers:
            watcher.close()
        for process in self.processes:
            end(process)
        # The publisher that the sender started ends with everything else of this namespace.
        pids = subprocess.run(["ip", "netns", "pids", self.here.space], capture_output=True, text=True, check=False)
        for pid in pids.stdout.split():
            os.kill(int(pid), signal.SIGTERM)
        self.wire.close()
        self.here.close()
        self.there.close()
        shutil.rmtree(self.folder, ignore_errors=True)


def bad_wire(faults, seconds):
    def act(lab, _watcher):
        lab.wire.faults = faults
        time.sleep(seconds)
        lab.wire.faults = Faults()
        return None

    return act


def half_the_rate(seconds):
    def act(lab, watcher):
        carried = lab.wire.carried_bytes
        time.sleep(1)
        return bad_wire(Faults(rate=8 * (lab.wire.carried_bytes - carried) / 2), seconds)(lab, watcher)

    return act


def unplugged(seconds):
    def act(lab, _watcher):
        lab.wire.plug(False)
        time.sleep(seconds)
        lab.wire.plug(True)
        began = time.monotonic()
        lab.find()
        return time.monotonic() - began

    return act


def moved(lab, watcher):
    began = time.monotonic()
    lab.here.change_address("10.77.0.3")
    url = lab.find()
    found = time.monotonic() - began
    watcher.go_to(url)
    return found


def cases():
    """Name: transport, what happens, whether some pictures may be missing while it does."""
    long = 8
    table = {"steady": ("tcp", bad_wire(Faults(), 3))}
    for transport in ("udp", "tcp"):
        for percent in (0.1, 1, 5):
            table[f"loss-{percent}%-{transport}"] = (transport, bad_wire(Faults(loss=percent / 100), long))
        for ms in (1, 10, 50):
            table[f"delay-{ms}ms-{transport}"] = (transport, bad_wire(Faults(delay_s=ms / 1000), long))
        table[f"reorder-5%-{transport}"] = (transport, bad_wire(Faults(reorder=0.05), long))
        table[f"half-the-rate-{transport}"] = (transport, half_the_rate(long))
        for seconds in (1, 10, 60):
            table[f"unplugged-{seconds}s-{transport}"] = (transport, unplugged(seconds))
        table[f"new-address-{transport}"] = (transport, moved)
    return table


# Over TCP the delays of a busy machine, too, set sound and picture apart: that is for the whole list and an idle one.
SHORT = {"loss-1%-udp": ("udp", bad_wire(Faults(loss=0.01), 2)), "unplugged-1s-udp": ("udp", unplugged(1)),
         "delay-50ms-udp": ("udp", bad_wire(Faults(delay_s=0.05), 3))}


def run(name, transport, act):
    """One case: whether it is good, and a line about it."""
    try:
        lab = Lab()
    except NotPermitted as problem:
        return None, f"{name}: {problem}"
    try:
        watcher = lab.watch(transport)
        time.sleep(SETTLE)
        began = time.monotonic()
        found = act(lab, watcher)
        ended = time.monotonic() if found is None else time.monotonic() - found
        time.sleep(LIVE_WITHIN + SETTLE)
        live = watcher.live_after(ended)
        apart = watcher.apart(ended + LIVE_WITHIN)
        during = [p for p in watcher.pictures if began <= p[0] < ended and p[2] >= 0]
        share = len(during) / max(1.0, (ended - began) * RATE)
        worst = max(apart, key=abs, default=float("inf"))
        good = live <= LIVE_WITHIN and abs(worst) <= APART and len(apart) >= 2 and (found or 0) <= FOUND_WITHIN
        text = (f"{name:18} {share:4.0%} of the pictures meanwhile, live again after {live:.2f} s, "
                + (f"found after {found:.2f} s, " if found is not None else "")
                + f"apart at most {worst * 1000:+.0f} ms of {len(apart)}, {len(watcher.opened)} connections, "
                f"{lab.wire.dropped} of {lab.wire.carried + lab.wire.dropped} packets lost: {'good' if good else 'BAD'}")
        return good, text if good else text + "\n" + lab.output()
    except AssertionError as problem:
        return False, f"{name}: {problem}"
    finally:
        lab.close()


def main():
    table = SHORT if OPTIONS.short else cases()
    unknown = set(OPTIONS.names) - set(table)
    if unknown:
        sys.exit(f"faults.py: no such case: {', '.join(sorted(unknown))}; there are {', '.join(table)}")
    table = {name: case for name, case in table.items() if not OPTIONS.names or name in OPTIONS.names}
    results = []
    # They mostly wait; the short form has to be short.
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        for future in [pool.submit(run, name, *case) for name, case in table.items()]:
            good, text = future.result()
            print(text, flush=True)
            results.append(good)
    if None in results:
        return NOT_PERMITTED
    return 0 if results and all(results) else 1


sys.exit(main())
