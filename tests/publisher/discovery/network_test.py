"""Names on two machines, each a network namespace with a message bus and an avahi-daemon of its own.

usage: network_test.py DISCOVERY_ANNOUNCE QUILLO [--times] [TEST...]
With --times names must come and go within the seconds that are promised on a machine that has time for it. The tests spend their time waiting for each other's names, so all of them run at once, each on a network of its own.
Ends with 77, for "skipped", where namespaces may not be made.
"""
import concurrent.futures
import contextlib
import itertools
import json
import os
import queue
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

ANNOUNCE, QUILLO = sys.argv[1:3] if len(sys.argv) > 2 else ("", "")
TIMES = "--times" in sys.argv[3:]
PATIENCE = 15  # seconds; a limit for waiting, not a promise
NOT_PERMITTED = 77
NUMBERS = itertools.count()

BUS = """<busconfig><type>system</type><listen>unix:path={socket}</listen><auth>EXTERNAL</auth>
<policy context="default"><allow user="*"/><allow own="*"/><allow send_type="method_call"/>
<allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/></policy></busconfig>
"""
AVAHI = """[server]
host-name={host}
use-ipv4=yes
use-ipv6=yes
[wide-area]
enable-wide-area=no
[publish]
publish-hinfo=no
publish-workstation=no
"""


class Process:
    """A running program and the lines it says."""

    def __init__(self, command, env):
        self.popen = subprocess.Popen(command, env=env, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                      stderr=subprocess.STDOUT, text=True)
        self.lines = queue.Queue()
        self.seen = []
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        for line in self.popen.stdout:
            self.lines.put(line.rstrip("\n"))
        self.lines.put(None)

    def wait_for(self, start, patience=PATIENCE):
        """The rest of the next line that starts so; AssertionError without one."""
        end = time.monotonic() + patience
        while True:
            try:
                line = self.lines.get(timeout=max(0, end - time.monotonic()))
            except queue.Empty:
                raise AssertionError(f"no line '{start}' within {patience} s; seen: {self.seen}") from None
            if line is None:
                raise AssertionError(f"ended before it said '{start}'; seen: {self.seen}")
            self.seen.append(line)
            if line.startswith(start):
                return line[len(start):]

    def rest(self, patience=PATIENCE):
        """All lines until it ends."""
        self.popen.wait(patience)
        return list(iter(self.lines.get, None))

    def say(self, line):
        self.popen.stdin.write(line + "\n")
        self.popen.stdin.flush()

    def end(self):
        """Lets it end by itself."""
        self.popen.stdin.close()
        self.popen.wait(PATIENCE)
        self.popen.stdout.close()

    def kill(self):
        if self.popen.poll() is None:
            self.popen.kill()
        self.popen.wait()
        if not self.popen.stdin.closed:
            self.popen.stdin.close()
        self.popen.stdout.close()


class Machine:
    def __init__(self, name, address, folder):
        self.name = name
        self.address = address
        self.space = f"quillo-{os.getpid()}-{next(NUMBERS)}-{name}"
        self.folder = os.path.join(folder, name)
        self.socket = os.path.join(self.folder, "bus")
        self.processes = []
        self.hosts = []
        self.bus = self.daemon = None
        os.mkdir(self.folder)
        os.mkdir(os.path.join(self.folder, "run"))
        os.chmod(self.folder, 0o755)
        subprocess.run(["ip", "netns", "add", self.space], check=True, capture_output=True)

    def connect(self, device):
        inside = ["ip", "-n", self.space]
        subprocess.run([*inside, "link", "set", device, "name", "eth0"], check=True)
        subprocess.run([*inside, "addr", "add", f"{self.address}/24", "dev", "eth0"], check=True)
        for link in ("lo", "eth0"):
            subprocess.run([*inside, "link", "set", link, "up"], check=True)

    def change_address(self, address):
        inside = ["ip", "-n", self.space, "addr"]
        subprocess.run([*inside, "del", f"{self.address}/24", "dev", "eth0"], check=True)
        subprocess.run([*inside, "add", f"{address}/24", "dev", "eth0"], check=True)
        self.address = address

    def run(self, *command, **more):
        """In a host name of its own too."""
        env = {**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.socket}", **more}
        inside = ["ip", "netns", "exec", self.space, "unshare", "--uts", "--mount", "sh", "-c",
                  f'hostname {self.name} && mkdir -p /run/avahi-daemon && mount --bind {self.folder}/run /run/avahi-daemon'
                  ' && exec "$@"', "sh", *command]
        process = Process(inside, env)
        self.processes.append(process)
        return process

    def start_bus(self):
        path = os.path.join(self.folder, "bus.conf")
        with open(path, "w") as file:
            file.write(BUS.format(socket=self.socket))
        self.bus = self.run("dbus-daemon", f"--config-file={path}", "--nofork", "--nopidfile", "--print-address=1")
        self.bus.wait_for("unix:")

    def start_avahi(self):
        path = os.path.join(self.folder, "avahi.conf")
        with open(path, "w") as file:
            file.write(AVAHI.format(host=self.name))
        self.daemon = self.run("avahi-daemon", "--no-drop-root", "--no-chroot", "--no-rlimits", f"--file={path}")
        self.daemon.wait_for("Server startup complete")

    def stop_avahi(self):
        self.daemon.kill()
        for entry in os.listdir(os.path.join(self.folder, "run")):
            os.remove(os.path.join(self.folder, "run", entry))

    def announce(self, source="Adobe Premiere Pro", port=8554, machine="studio"):
        return self.run(ANNOUNCE, machine, source, str(port), "path=/adobe-premiere-pro", f"name={source}", "id=00ff",
                        "version=1.0")

    def play(self):
        """A host with the real module; its sender starts the publisher."""
        runtime = os.path.join(self.folder, "runtime")
        os.makedirs(runtime, 0o700, exist_ok=True)
        self.hosts.append(self.run(QUILLO, "play", "--pattern", "bars", "--size", "320x180", "--rate", "25", "--script",
                                   QUILLO_RUNTIME_DIR=runtime, QUILLO_PUBLISHER=QUILLO))
        return self.hosts[-1]

    def stop_playing(self):
        for host in self.hosts:
            host.kill()
        with contextlib.suppress(OSError):
            self.kill_publisher(signal.SIGTERM)

    def kill_publisher(self, how=signal.SIGKILL):
        with open(os.path.join(self.folder, "runtime", "publisher.lock")) as file:
            os.kill(int(file.read()), how)

    def listed(self, seconds=1):
        process = self.run(QUILLO, "list", "--json", "--seconds", str(seconds))
        return {one["name"]: one for one in json.loads("\n".join(process.rest()))}

    def sees(self, name, patience=PATIENCE):
        end = time.monotonic() + patience
        while time.monotonic() < end:
            found = self.listed()
            if name in found:
                return found[name]
        raise AssertionError(f"{name} is not seen by {self.name}")

    def misses(self, name, patience=PATIENCE):
        end = time.monotonic() + patience
        while time.monotonic() < end:
            if name not in self.listed():
                return
        raise AssertionError(f"{name} is still seen by {self.name}")

    def close(self):
        for process in reversed(self.processes):
            process.kill()
        subprocess.run(["ip", "netns", "del", self.space], check=False)


class Browser:
    """avahi-browse, as it tells of names that come and go."""

    def __init__(self, machine):
        self.process = machine.run("stdbuf", "-oL", "avahi-browse", "--parsable", "--no-db-lookup", "_rtsp._tcp")
        self.told = []

    def seconds_until(self, sign, name, since):
        """sign + or -, which is told once for each protocol; a name may come before another is missed."""
        wanted = (sign, name)
        for when, what in self.told:
            if what == wanted and when >= since:
                return when - since
        while True:
            fields = self.process.wait_for("").split(";")
            what = fields[0], re.sub(r"\\(\d{3})", lambda code: chr(int(code.group(1))), fields[3])
            self.told.append((time.monotonic(), what))
            if what == wanted:
                return self.told[-1][0] - since


class Discovery(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="quillo-net-")
        os.chmod(self.folder, 0o755)
        self.addCleanup(shutil.rmtree, self.folder)
        self.alpha = Machine("alpha", "10.66.0.1", self.folder)
        self.addCleanup(self.alpha.close)
        self.beta = Machine("beta", "10.66.0.2", self.folder)
        self.addCleanup(self.beta.close)
        ends = f"q{os.getpid()}-{next(NUMBERS)}", f"q{os.getpid()}-{next(NUMBERS)}"
        subprocess.run(["ip", "link", "add", ends[0], "netns", self.alpha.space, "type", "veth", "peer", "name", ends[1],
                        "netns", self.beta.space], check=True)
        self.alpha.connect(ends[0])
        self.beta.connect(ends[1])

    def start(self, *machines):
        for machine in machines:
            machine.start_bus()
            machine.start_avahi()

    def test_a_source_is_seen_with_all_it_says_and_goes_at_once(self):
        self.start(self.alpha, self.beta)
        announcer = self.alpha.announce()
        self.assertEqual(announcer.wait_for("named "), "studio (Adobe Premiere Pro)")
        source = self.beta.sees("studio (Adobe Premiere Pro)")
        self.assertEqual(source["host"], "alpha.local")
        self.assertEqual(source["port"], 8554)
        self.assertEqual(source["addresses"], ["10.66.0.1"])
        self.assertEqual(source["urls"], ["rtsp://10.66.0.1:8554/adobe-premiere-pro"])
        self.assertEqual(source["txt"], {"path": "/adobe-premiere-pro", "name": "Adobe Premiere Pro", "id": "00ff",
                                         "version": "1.0"})
        announcer.say("withdraw")
        self.beta.misses("studio (Adobe Premiere Pro)", 4)
        self.assertIsNone(announcer.popen.poll(), "the others of this process would stay")

    def within(self, promised, seconds, what):
        print(f"    {what}: {seconds:.1f} s", flush=True)
        self.assertLess(seconds, promised if TIMES else PATIENCE, what)

    def test_a_host_is_seen_renamed_and_missed(self):
        self.start(self.alpha, self.beta)
        browser = Browser(self.beta)
        name = "alpha (Adobe Premiere Pro)"
        began = time.monotonic()
        first = self.alpha.play()
        self.addCleanup(self.alpha.stop_playing)
        self.within(2, browser.seconds_until("+", name, began), "a host and its publisher start, the name is seen")
        began = time.monotonic()
        self.alpha.play()
        self.within(3, browser.seconds_until("+", f"{name} #2", began), "a second host is seen by another name")
        began = time.monotonic()
        first.popen.kill()
        self.within(3, browser.seconds_until("-", name, began), "the first is killed, its name goes")
        began = time.monotonic()
        self.alpha.kill_publisher()
        self.within(3, browser.seconds_until("-", f"{name} #2", began), "the publisher is killed, its name goes")
        self.within(10, browser.seconds_until("+", name, began), "the second host has another publisher, and a name")

    def test_a_name_in_use_gets_a_number(self):
        self.start(self.alpha, self.beta)
        first, second = self.alpha.announce(), self.alpha.announce(port=8555)
        names = {first.wait_for("named "), second.wait_for("named ")}
        self.assertEqual(names, {"studio (Adobe Premiere Pro)", "studio (Adobe Premiere Pro) #2"})
        third = self.beta.announce(port=8556)
        self.assertEqual(third.wait_for("named "), "studio (Adobe Premiere Pro) #3")
        ports = {self.beta.sees(name)["port"] for name in [*names, "studio (Adobe Premiere Pro) #3"]}
        self.assertEqual(ports, {8554, 8555, 8556})

    def test_a_killed_process_leaves_no_name(self):
        self.start(self.alpha, self.beta)
        announcer = self.alpha.announce()
        name = announcer.wait_for("named ")
        self.beta.sees(name)
        announcer.kill()
        self.beta.misses(name, 4)

    def test_the_daemon_may_come_later_and_come_again(self):
        self.beta.start_bus()
        self.beta.start_avahi()
        self.alpha.start_bus()
        announcer = self.alpha.announce()
        announcer.wait_for("report names will be announced as soon as avahi-daemon runs")
        self.alpha.start_avahi()
        name = announcer.wait_for("named ")
        self.beta.sees(name)
        self.alpha.stop_avahi()
        announcer.wait_for("report the connection to avahi-daemon is lost")
        self.alpha.start_avahi()
        self.beta.sees(name)
        self.assertEqual(self.alpha.sees(name)["host"], "alpha.local")

    def test_without_a_bus_this_process_answers_and_asks(self):
        announcer = self.alpha.announce()
        announcer.wait_for("report no D-Bus")
        name = announcer.wait_for("named ")
        other = self.beta.announce(port=8555)
        self.assertEqual(other.wait_for("named "), "studio (Adobe Premiere Pro) #2")
        for machine in (self.alpha, self.beta):
            self.assertEqual(machine.sees(name)["port"], 8554)
        announcer.end()
        self.beta.misses(name, 4)
        # A daemon that comes takes over.
        self.start(self.beta)
        other.wait_for("report avahi-daemon runs now")
        self.assertEqual(self.alpha.sees("studio (Adobe Premiere Pro) #2")["host"], "beta.local")

    def test_a_new_address_is_told(self):
        self.start(self.alpha, self.beta)
        announcer = self.alpha.announce()
        name = announcer.wait_for("named ")
        self.assertEqual(self.beta.sees(name)["addresses"], ["10.66.0.1"])
        self.alpha.change_address("10.66.0.9")
        self.seconds_until_address(name, "10.66.0.9")

    def seconds_until_address(self, name, address):
        began = time.monotonic()
        while self.beta.sees(name)["addresses"] != [address]:
            self.assertLess(time.monotonic() - began, PATIENCE, "the old address is still told")
        return time.monotonic() - began

    def test_a_new_address_is_told_without_a_daemon(self):
        announcer = self.alpha.announce()
        name = announcer.wait_for("named ")
        self.assertEqual(self.beta.sees(name)["addresses"], ["10.66.0.1"])
        self.alpha.change_address("10.66.0.9")
        self.within(3, self.seconds_until_address(name, "10.66.0.9"), "an address changes, the new one is told")

    def test_who_only_asks_takes_no_name(self):
        self.start(self.alpha)
        ask = ("avahi-resolve", "-4", "-n", "beta.local")
        asking = self.beta.run(QUILLO, "list", "--seconds", "8")
        self.assertNotIn("10.66.0.2", "\n".join(self.alpha.run(*ask).rest()))
        self.assertIsNone(asking.popen.poll(), "it has to ask all the while")
        self.beta.announce().wait_for("named ")
        self.assertIn("10.66.0.2", "\n".join(self.alpha.run(*ask).rest()))

    def test_waiting_for_the_first_ends_with_it(self):
        self.beta.announce()
        began = time.monotonic()
        asked = self.alpha.run(QUILLO, "list", "--first", "--seconds", "60").rest(PATIENCE)
        self.assertIn("    rtsp://10.66.0.2:8554/adobe-premiere-pro", asked)
        self.within(3, time.monotonic() - began, "somebody waits for a name that comes")


def permitted():
    if not (shutil.which("ip") and shutil.which("avahi-daemon") and shutil.which("dbus-daemon")):
        return "ip, avahi-daemon or dbus-daemon is not installed"
    space = f"quillo-{os.getpid()}-try"
    made = subprocess.run(["ip", "netns", "add", space], capture_output=True, text=True, check=False)
    if made.returncode:
        return made.stderr.strip()
    tried = subprocess.run(["ip", "netns", "exec", space, "unshare", "--uts", "--mount", "true"], capture_output=True,
                           text=True, check=False)
    subprocess.run(["ip", "netns", "del", space], check=False)
    return tried.stderr.strip() if tried.returncode else None


def run_one(test):
    result = unittest.TestResult()
    start = time.monotonic()
    test.run(result)
    problems = "".join(text for _, text in result.failures + result.errors)
    print(f"{'FAILED' if problems else 'ok'}  {test.id()}  {time.monotonic() - start:.1f} s\n{problems}", end="", flush=True)
    return not problems


def run_all(names):
    tests = [test for test in unittest.defaultTestLoader.loadTestsFromTestCase(Discovery)
             if not names or test.id().rsplit(".", 1)[-1] in names]
    with concurrent.futures.ThreadPoolExecutor(max(1, len(tests))) as pool:
        return len(tests) > 0 and all(list(pool.map(run_one, tests)))


if __name__ == "__main__":
    if not QUILLO:
        sys.exit(__doc__)
    if problem := permitted():
        print(f"SKIPPED: network namespaces may not be made here: {problem}")
        sys.exit(NOT_PERMITTED)
    sys.exit(0 if run_all([name for name in sys.argv[3:] if name != "--times"]) else 1)
