"""Locks as stock receivers meet them: ffmpeg and GStreamer's own tools in front of the built publisher.

usage: stock_receivers_test.py QUILLO [TEST...]
Ends with 77, for "skipped", where network namespaces may not be made.
"""
import contextlib
import itertools
import json
import os
import queue
import re
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time
import unittest

QUILLO = sys.argv[1] if len(sys.argv) > 1 else ""
PATIENCE = 20  # seconds; a limit for waiting, not a promise
STUCK = -1  # in place of an exit code
NOT_PERMITTED = 77
NUMBERS = itertools.count()
PATH = "/adobe-premiere-pro"
PASSWORD = "hunter2 & more"
IN_URL = "hunter2%20%26%20more"


def run(*command, env=None, patience=PATIENCE):
    """Exit code and all that was said. A receiver that does not end by itself has failed."""
    try:
        done = subprocess.run(command, env=env, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=patience, check=False)
    except subprocess.TimeoutExpired as stuck:
        return STUCK, (stuck.stdout or b"").decode(errors="replace")
    return done.returncode, done.stdout.decode(errors="replace")


class Publisher:
    """quillo serve with a configuration file, and a host that plays the pattern into it."""

    def __init__(self, configuration, prefix=()):
        self.clean = contextlib.ExitStack()
        self.folder = self.clean.enter_context(tempfile.TemporaryDirectory(prefix="quillo-doors-"))
        os.chmod(self.folder, 0o700)
        self.env = dict(os.environ, QUILLO_RUNTIME_DIR=os.path.join(self.folder, "run"), QUILLO_PUBLISHER="",
                        XDG_CONFIG_HOME=os.path.join(self.folder, "config"),
                        XDG_DATA_HOME=os.path.join(self.folder, "data"))
        os.makedirs(os.path.join(self.folder, "config", "quillo"))
        self.file = os.path.join(self.folder, "config", "quillo", "quillo.conf")
        self.configure(configuration)
        self.lines, self.seen = queue.Queue(), []
        self.serving = self.start(*prefix, QUILLO, "serve", "--port", "0", stderr=subprocess.PIPE)
        threading.Thread(target=self._read, daemon=True).start()
        self.url = self.wait_for(r" serves at (\S+)/$")
        self.port = int(self.url.rpartition(":")[2])
        self.start(*prefix, QUILLO, "play", "--pattern", "bars", "--size", "320x180", "--rate", "25",
                   stderr=subprocess.DEVNULL)
        self.wait_for(r"now 320x180")

    def configure(self, text):
        fresh = self.file + ".new"
        with open(fresh, "w", encoding="utf-8") as file:
            os.chmod(fresh, 0o600)
            file.write(text + "[network]\nannounce = false\n")
        os.rename(fresh, self.file)

    def start(self, *command, stderr):
        process = subprocess.Popen(command, env=self.env, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=stderr)
        self.clean.callback(self.stop, process)
        return process

    @staticmethod
    def stop(process):
        process.send_signal(signal.SIGINT)
        try:
            process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def _read(self):
        for line in self.serving.stderr:
            self.lines.put(line.decode(errors="replace").rstrip("\n"))
        self.lines.put(None)

    def wait_for(self, pattern):
        end = time.monotonic() + PATIENCE
        while True:
            try:
                line = self.lines.get(timeout=max(0, end - time.monotonic()))
            except queue.Empty:
                line = None
            if line is None:
                raise AssertionError(f"no line like '{pattern}'; seen: {self.seen}")
            self.seen.append(line)
            if found := re.search(pattern, line):
                return found.group(1) if found.groups() else line

    def status(self):
        with socket.socket(socket.AF_UNIX) as local:
            local.settimeout(PATIENCE)
            local.connect(os.path.join(self.env["QUILLO_RUNTIME_DIR"], "publisher.sock"))
            local.sendall(struct.pack("<IIII", 0x6F6C7551, 32, 0, 0))
            stream = local.makefile("rb")
            size = struct.unpack("<IIII", stream.read(16))[2]
            return stream.read(size).decode()

    def log(self):
        with contextlib.suppress(queue.Empty):
            while (line := self.lines.get_nowait()) is not None:
                self.seen.append(line)
        return "\n".join(self.seen)

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.clean.close()


def ffmpeg(url, *prefix):
    """Ten pictures with ffmpeg: (0, said) when they came."""
    return run(*prefix, "ffmpeg", "-nostdin", "-v", "info", "-rtsp_transport", "tcp", "-i", url, "-map", "0:v",
               "-frames:v", "10", "-f", "null", "-")


def gstreamer(url, *options):
    """Ten pictures with GStreamer's own tool: (0, said) when they came. What it makes of its end does not count: rtspsrc
    sends PAUSE and, before it has, cancels it; where others take the processor in between, it calls that an error."""
    code, said = run("gst-launch-1.0", "-v", "rtspsrc", "location=" + url, "protocols=tcp", *options, "!",
                     "rtph264depay", "!", "fakesink", "num-buffers=10", "silent=false")
    came = said.count("last-message = chain")
    return (0 if came == 10 and code != STUCK else code or 1), said


class Locks(unittest.TestCase):
    def plays(self, result):
        code, said = result
        self.assertEqual(code, 0, said)

    def refused(self, result, why):
        code, said = result
        self.assertNotEqual(code, 0, said)
        self.assertRegex(said, why)

    def test_password(self):
        with Publisher(f"[access]\nuser = studio\npassword = {PASSWORD}\n") as publisher:
            url = f"rtsp://127.0.0.1:{publisher.port}{PATH}"
            with_name = url.replace("//", "//studio:{}@")
            self.refused(ffmpeg(url), "401")
            self.refused(ffmpeg(with_name.format("hunter3")), "401")
            self.plays(ffmpeg(with_name.format(IN_URL)))
            self.plays(ffmpeg(with_name.format(IN_URL).replace(PATH, PATH + "/raw")))
            self.refused(gstreamer(url), "Unauthorized")
            self.refused(gstreamer(url, "user-id=studio", "user-pw=hunter3"), "Unauthorized")
            self.plays(gstreamer(url, "user-id=studio", "user-pw=" + PASSWORD))
            self.assertGreaterEqual(json.loads(publisher.status())["turned_away"]["wrong_password"], 2)
            # Nowhere but in the file.
            self.assertNotIn("hunter2", publisher.status())
            self.assertNotIn("hunter2", publisher.log())
            with open(f"/proc/{publisher.serving.pid}/cmdline", encoding="utf-8") as command:
                self.assertNotIn("hunter2", command.read())
            with open(f"/proc/{publisher.serving.pid}/environ", encoding="utf-8") as environment:
                self.assertNotIn("hunter2", environment.read())

    def test_tls(self):
        with Publisher(f"[tls]\nenabled = true\n[access]\nuser = studio\npassword = {PASSWORD}\n") as publisher:
            self.assertTrue(publisher.url.startswith("rtsps://"))
            shown = re.search(r"SHA-256 fingerprint is (\S+)", publisher.log()).group(1)
            code, made = run("openssl", "x509", "-noout", "-fingerprint", "-sha256", "-in",
                             os.path.join(publisher.env["XDG_DATA_HOME"], "quillo", "certificate.pem"))
            self.assertEqual(code, 0, made)
            self.assertEqual(made.strip().rpartition("=")[2], shown)
            url = f"rtsps://127.0.0.1:{publisher.port}{PATH}"
            self.plays(ffmpeg(url.replace("//", f"//studio:{IN_URL}@")))
            self.refused(ffmpeg(url), "401")
            options = ("user-id=studio", "user-pw=" + PASSWORD)
            self.plays(gstreamer(url, "tls-validation-flags=0", *options))
            self.refused(gstreamer(url, *options), "Could not open resource")
            code, said = ffmpeg(url.replace("rtsps", "rtsp").replace("//", f"//studio:{IN_URL}@"))
            self.assertNotEqual(code, 0, said)

    def test_changes_without_a_restart(self):
        with Publisher("") as publisher:
            url = f"rtsp://127.0.0.1:{publisher.port}{PATH}"
            self.plays(ffmpeg(url))
            publisher.configure(f"[access]\nuser = studio\npassword = {PASSWORD}\n")
            publisher.wait_for("is read again")
            self.refused(ffmpeg(url), "401")
            publisher.configure("[access]\nusr = studio\n")
            publisher.wait_for(r"quillo\.conf:2: there is no key \"usr\".*did you mean user")
            publisher.wait_for("settings so far stay")
            self.refused(ffmpeg(url), "401")


class TwoMachines:
    """Two namespaces with a wire between them, and addresses from the range that the world's documents use."""

    def __init__(self):
        self.clean = contextlib.ExitStack()
        self.near, self.far = (f"quillo-{os.getpid()}-{next(NUMBERS)}-{name}" for name in ("near", "far"))
        for space in (self.near, self.far):
            self.ip("netns", "add", space)
            self.clean.callback(self.ip, "netns", "del", space)
        self.ip("-n", self.near, "link", "add", "wire", "type", "veth", "peer", "name", "wire", "netns", self.far)
        for space, last in ((self.near, 1), (self.far, 2)):
            for address in (f"203.0.113.{last}/24", f"10.77.0.{last}/24"):
                self.ip("-n", space, "address", "add", address, "dev", "wire")
            self.ip("-n", space, "address", "add", f"2001:db8::{last}/64", "dev", "wire", "nodad")
            for device in ("lo", "wire"):
                self.ip("-n", space, "link", "set", device, "up")

    @staticmethod
    def ip(*arguments):
        subprocess.run(("ip",) + arguments, check=True, stdout=subprocess.DEVNULL)

    @staticmethod
    def inside(space):
        return ("ip", "netns", "exec", space)

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.clean.close()


class Addresses(Locks):
    # What the others test needs no network.
    test_password = test_tls = test_changes_without_a_restart = None

    def test_public_address_is_refused(self):
        with TwoMachines() as net, Publisher("", net.inside(net.near)) as publisher:
            def watch(space, address):
                return ffmpeg(f"rtsp://{address}:{publisher.port}{PATH}", *net.inside(space))

            self.plays(watch(net.far, "10.77.0.1"))
            self.plays(watch(net.near, "203.0.113.1"))
            self.refused(watch(net.far, "203.0.113.1"), "203.0.113.1")
            publisher.wait_for(r"refused a connection from (::ffff:)?203\.0\.113\.2: not among \"near\"")
            self.refused(watch(net.far, "[2001:db8::1]"), "2001:db8::1")
            publisher.wait_for(r"refused a connection from 2001:db8::2: ")
            self.assertEqual(json.loads(publisher.status())["turned_away"]["strangers"], 2)
            publisher.configure("[network]\nallow = near, 203.0.113.2\n")
            publisher.wait_for("is read again")
            self.plays(watch(net.far, "203.0.113.1"))


def main():
    names = sys.argv[2:]
    if subprocess.run(("unshare", "-n", "true"), stderr=subprocess.DEVNULL, check=False).returncode != 0:
        print("network namespaces may not be made here")
        return NOT_PERMITTED
    loader = unittest.TestLoader()
    suite = unittest.TestSuite()
    for case in (Locks, Addresses):
        for name in loader.getTestCaseNames(case):
            if getattr(case, name) and (not names or name in names):
                suite.addTest(case(name))
    return 0 if unittest.TextTestRunner(verbosity=2).run(suite).wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
