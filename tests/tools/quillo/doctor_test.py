"""The doctor on a machine that is well, and on one that is not.

usage: doctor_test.py QUILLO
"""
import json
import os
import socket
import subprocess
import sys
import tempfile
import unittest

QUILLO = sys.argv[1] if len(sys.argv) > 1 else ""
PATIENCE = 90


class Doctor(unittest.TestCase):
    def setUp(self):
        self.place = tempfile.TemporaryDirectory(prefix="quillo-doctor-")
        self.addCleanup(self.place.cleanup)
        self.folder = os.path.join(self.place.name, "run")
        os.mkdir(self.folder, 0o700)
        self.config = os.path.join(self.place.name, "config")
        os.makedirs(os.path.join(self.config, "quillo"))
        self.env = dict(os.environ, QUILLO_RUNTIME_DIR=self.folder, XDG_CONFIG_HOME=self.config, NO_COLOR="1")

    def configure(self, text):
        with open(os.path.join(self.config, "quillo", "quillo.conf"), "w", encoding="utf-8") as file:
            file.write(text)

    def examine(self, *options, **environment):
        done = subprocess.run((QUILLO, "doctor") + options, env=dict(self.env, **environment), stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=PATIENCE, check=False)
        return done.returncode, done.stdout, done.stderr

    def findings(self, check, **environment):
        code, report, said = self.examine("--json", **environment)
        report = json.loads(report)
        self.assertEqual(code, 0 if report["good"] else 1, said)
        self.assertEqual(report["good"], all(one["state"] != "bad" for one in report["findings"]))
        return [one for one in report["findings"] if one["check"] == check]

    def test_everything_is_looked_at_and_pictures_go_round(self):
        code, report, said = self.examine()
        for check in ("configuration", "folder", "shared memory", "publisher", "ports", "firewall", "interfaces",
                      "names", "clock", "plug-ins", "encoder", "loop"):
            self.assertRegex(report, rf"(?m)^(good |note |bad  ) {check} ", said)
        self.assertRegex(report, r"(?m)^good  loop .*25 pictures, the first after \d+ ms")
        self.assertEqual(code, 1 if "\nbad " in report else 0)
        self.assertEqual(os.listdir(self.folder), [])

    def test_folder_that_others_can_see_is_bad(self):
        os.chmod(self.folder, 0o755)
        found, = self.findings("folder")
        self.assertEqual(found["state"], "bad")
        self.assertIn(self.folder, found["what"])
        self.assertIn("chmod 700", found["remedy"])

    def test_configuration_is_checked(self):
        self.configure("[network]\nprot = 1\n")
        found, = self.findings("configuration")
        self.assertEqual(found["state"], "bad")
        self.assertIn("quillo.conf:2: there is no key \"prot\" in [network]: did you mean port?", found["what"])

    def test_missing_plug_ins_are_named_with_their_package(self):
        empty = os.path.join(self.place.name, "empty")
        os.mkdir(empty)
        registry = {"GST_PLUGIN_SYSTEM_PATH_1_0": empty, "GST_REGISTRY_1_0": os.path.join(empty, "registry")}
        found = self.findings("plug-ins", **registry)
        self.assertTrue(any("rtpvrawpay" in one["what"] and one["remedy"] == "sudo apt install gstreamer1.0-plugins-good"
                            and one["state"] == "bad" for one in found), found)
        self.assertEqual(self.findings("encoder", **registry)[0]["state"], "bad")
        self.assertEqual(self.findings("loop", **registry)[0]["state"], "bad")

    def test_taken_port_is_noted(self):
        with socket.socket() as taken:
            taken.bind(("127.0.0.1", 0))
            taken.listen()
            port = taken.getsockname()[1]
            self.configure(f"[network]\naddress = 127.0.0.1\nport = {port}\n")
            self.assertTrue(any(one["state"] == "note" and str(port) in one["what"] for one in self.findings("ports")))


if __name__ == "__main__":
    sys.argv = sys.argv[:1] + sys.argv[2:]
    unittest.main(verbosity=2)
