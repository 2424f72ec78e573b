"""How the publisher is started: by hand, by the service manager, with which file; and what helps at the keyboard.

usage: serve_test.py QUILLO SOURCES
"""
import os
import re
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import unittest

QUILLO, SOURCES = sys.argv[1:3] if len(sys.argv) > 2 else ("", "")
PATIENCE = 20


class Place(unittest.TestCase):
    def setUp(self):
        self.place = tempfile.TemporaryDirectory(prefix="quillo-serve-")
        self.addCleanup(self.place.cleanup)
        self.folder = os.path.join(self.place.name, "run")
        self.env = dict(os.environ, QUILLO_RUNTIME_DIR=self.folder, XDG_CONFIG_HOME=self.place.name)
        self.file = os.path.join(self.place.name, "own.conf")

    def write(self, text, mode=0o600):
        with open(self.file, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(self.file, mode)

    def run_quillo(self, *arguments):
        return subprocess.run((QUILLO,) + arguments, env=self.env, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=PATIENCE, check=False)


class Configuration(Place):
    def test_good_file(self):
        self.write("[network]\nport = 9000\n")
        done = self.run_quillo("serve", "--config", self.file, "--check-config")
        self.assertEqual((done.returncode, done.stdout), (0, self.file + ": can be used\n"))

    def test_bad_file(self):
        self.write("[network]\nport = high\n\n[acces]\n")
        for check in (("--check-config",), ()):
            done = self.run_quillo("serve", "--config", self.file, *check)
            self.assertEqual(done.returncode, 3)
            self.assertEqual(done.stderr.splitlines(),
                             [self.file + ":2: port = \"high\" is not allowed: 0 to 65535",
                              self.file + ":4: there is no group [acces]: did you mean access?"])

    def test_file_with_a_password_that_others_can_read(self):
        self.write("[access]\nuser = anna\npassword = hunter2\n", 0o644)
        done = self.run_quillo("serve", "--config", self.file)
        self.assertEqual(done.returncode, 3)
        self.assertIn(f"chmod 600 '{self.file}'", done.stderr)
        self.assertNotIn("hunter2", done.stderr)

    def test_named_file_must_be_there_and_the_default_one_need_not(self):
        self.assertEqual(self.run_quillo("serve", "--config", self.file, "--check-config").returncode, 3)
        self.assertEqual(self.run_quillo("serve", "--check-config").returncode, 0)


class Serving:
    """quillo serve on a free port of this machine, and the lines it says."""

    def __init__(self, place, *arguments, command=None, pass_fds=()):
        command = command or (QUILLO, "serve")
        self.process = subprocess.Popen((*command, "--bind", "127.0.0.1", "--port", "0", *arguments), env=place.env,
                                        stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, pass_fds=pass_fds)
        place.addCleanup(self.end)

    def wait_for(self, pattern):
        seen = []
        for line in self.process.stderr:
            seen.append(line)
            if found := re.search(pattern, line):
                return found
        raise AssertionError(f"no line like '{pattern}': {seen}")

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            self.process.wait(PATIENCE)
        self.process.stderr.close()
        return self.process.returncode


def status_of(connection):
    connection.settimeout(PATIENCE)
    connection.sendall(struct.pack("<IIII", 0x6F6C7551, 32, 0, 0))
    stream = connection.makefile("rb")
    return stream.read(struct.unpack("<IIII", stream.read(16))[2])


class Activation(Place):
    def activated(self, *arguments, kind=socket.SOCK_STREAM):
        # As the service manager does: the socket is there first, and comes as descriptor 3.
        os.mkdir(self.folder, 0o700)
        path = os.path.join(self.folder, "publisher.sock")
        listening = socket.socket(socket.AF_UNIX, kind)
        self.addCleanup(listening.close)
        listening.bind(path)
        if kind == socket.SOCK_STREAM:
            listening.listen()
        script = f"exec 3<&{listening.fileno()}; LISTEN_PID=$$ LISTEN_FDS=1 exec \"$@\""
        return path, Serving(self, *arguments, command=("bash", "-c", script, "bash", QUILLO, "serve"),
                             pass_fds=(listening.fileno(),))

    def test_socket_is_taken_over_and_left_in_place(self):
        path, serving = self.activated()
        with socket.socket(socket.AF_UNIX) as early:
            early.connect(path)
            self.assertIn(b'"version"', status_of(early))
        self.assertEqual(serving.end(), 0)
        with socket.socket(socket.AF_UNIX) as next_one:
            next_one.connect(path)  # waits for the next publisher

    def test_something_else_is_refused(self):
        _, serving = self.activated(kind=socket.SOCK_DGRAM)
        serving.wait_for("something else than one local stream socket")
        self.assertNotEqual(serving.process.wait(PATIENCE), 0)

    def test_socket_for_another_process_is_not_ours(self):
        self.env.update(LISTEN_PID="1", LISTEN_FDS="1")
        Serving(self).wait_for("serves at rtsp://127.0.0.1")
        with socket.socket(socket.AF_UNIX) as local:
            local.connect(os.path.join(self.folder, "publisher.sock"))
            self.assertIn(b'"version"', status_of(local))


class Priority(Place):
    def test_hosts_go_first(self):
        def nice_of(*arguments):
            serving = Serving(self, *arguments)
            serving.wait_for("serves at")
            folder = f"/proc/{serving.process.pid}/task"
            found = {os.getpriority(os.PRIO_PROCESS, int(thread)) for thread in os.listdir(folder)}
            self.assertEqual(serving.end(), 0)
            return found

        before = os.getpriority(os.PRIO_PROCESS, 0)
        self.assertEqual(nice_of(), {max(before, 10)})
        self.write("[process]\nnice = 12\n")
        self.assertEqual(nice_of("--config", self.file), {max(before, 12)})


class Signals(Place):
    def test_hangup_reads_the_file_again(self):
        self.write("[limits]\nconnections = 5\n")
        serving = Serving(self, "--config", self.file)
        serving.wait_for("serves at")
        self.write("[limits]\nconnections = 6\n")
        serving.process.send_signal(signal.SIGHUP)
        serving.wait_for("own.conf is read again")
        self.assertEqual(serving.end(), 0)

    def test_version_and_level_are_in_the_log(self):
        version = self.run_quillo("--version").stdout.split()[1]
        serving = Serving(self, "--log-json", "--log-level", "notice")
        serving.wait_for(rf'^{{"time":"[^"]*","level":"notice","message":"publisher {re.escape(version)} serves at ')
        self.assertEqual(self.run_quillo("serve", "--log-level", "loud").returncode, 2)


class Keyboard(Place):
    def complete(self, *words):
        script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _quillo; '
                  'printf "%s\\n" "${COMPREPLY[@]}"')
        done = subprocess.run(("bash", "-c", script, "bash", os.path.join(SOURCES, "completions", "quillo.bash"), QUILLO) +
                              words, capture_output=True, text=True, timeout=PATIENCE, check=True)
        return done.stdout.split()

    def test_bash_completes_commands_options_and_values(self):
        commands = re.findall(r"^  ([a-z]+) ", self.run_quillo("--help").stdout.partition("Subcommands:")[2], re.M)
        self.assertGreaterEqual(len(commands), 6)
        self.assertEqual(sorted(self.complete("")), sorted(commands))
        self.assertEqual(self.complete("se"), ["serve"])
        self.assertEqual(self.complete("serve", "--check"), ["--check-config"])
        self.assertEqual(self.complete("serve", "--log-level", "n"), ["notice"])
        self.assertIn("--pattern", self.complete("play", "--"))
        self.assertNotIn("--pattern", self.complete("serve", "--"))

    def test_zsh_completes_the_same(self):
        if not shutil.which("zsh"):
            self.skipTest("no zsh here")

        def complete(*words):
            # What the shell would be offered; the words are where it puts them.
            script = ('compadd() { shift; print -rl -- "$@" }; _files() { print -r -- a file }; file=$1; shift; '
                      'words=("$@"); CURRENT=$#; source $file')
            done = subprocess.run(("zsh", "-f", "-c", script, "zsh", os.path.join(SOURCES, "completions", "_quillo"), QUILLO) +
                                  words, capture_output=True, text=True, timeout=PATIENCE, check=True)
            self.assertEqual(done.stderr, "")
            return done.stdout.splitlines()

        commands = re.findall(r"^  ([a-z]+) ", self.run_quillo("--help").stdout.partition("Subcommands:")[2], re.M)
        self.assertEqual(sorted(complete("")), sorted(commands + ["--help", "--version"]))
        self.assertIn("notice", complete("serve", "--log-level", ""))
        self.assertIn("--check-config", complete("serve", "--"))
        self.assertIn("--pattern", complete("play", "--loop", "--"))
        self.assertNotIn("--pattern", complete("serve", "--"))
        self.assertEqual(complete("serve", "--config", ""), ["a file"])

    def test_units_are_understood(self):
        if not shutil.which("systemd-analyze"):
            self.skipTest("no systemd here")
        for name in ("quillo.socket", "quillo.service"):
            with open(os.path.join(SOURCES, "packaging", "systemd", name), encoding="utf-8") as unit:
                text = unit.read().replace("/usr/bin/quillo", QUILLO)
            with open(os.path.join(self.place.name, name), "w", encoding="utf-8") as unit:
                unit.write(text)
        os.mkdir(self.folder, 0o700)
        done = subprocess.run(("systemd-analyze", "--user", "--man=no", "verify", "./quillo.socket", "./quillo.service"),
                              cwd=self.place.name, env=dict(self.env, XDG_RUNTIME_DIR=self.folder), capture_output=True,
                              text=True, timeout=PATIENCE, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_units_name_the_program_and_the_socket(self):
        folder = os.path.join(SOURCES, "packaging", "systemd")
        with open(os.path.join(folder, "quillo.socket"), encoding="utf-8") as unit:
            self.assertIn("\nListenStream=%t/quillo/publisher.sock\n", unit.read())
        with open(os.path.join(folder, "quillo.service"), encoding="utf-8") as unit:
            self.assertIn("\nExecStart=/usr/bin/quillo serve\n", unit.read())


if __name__ == "__main__":
    sys.argv = sys.argv[:1] + sys.argv[3:]
    unittest.main(verbosity=2)
