#!/usr/bin/env python3
"""The macOS installer, read back by programs that did not make it: pkg_test.py MAKE_PKG BUNDLE VERSION [PACKAGE].

bsdtar reads the archive and the payloads; the bill of materials is read here, from its layout alone.
"""
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml

make_pkg, bundle, version = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]
given = pathlib.Path(sys.argv[4]) if len(sys.argv) > 4 else None


def made(out):
    subprocess.run([sys.executable, make_pkg, bundle, version, out], check=True)
    return out


def unpacked(archive, folder):
    folder.mkdir(parents=True)
    subprocess.run(["bsdtar", "-xpf", archive, "-C", folder, "--no-same-owner"], check=True)
    return folder


def bill(data):
    """path -> (mode, size, checksum) of a bill of materials."""
    magic, store_version, _, index, _, names, _ = struct.unpack_from(">8sIIIIII", data)
    assert magic == b"BOMStore" and store_version == 1
    count, = struct.unpack_from(">I", data, index)
    table = [struct.unpack_from(">II", data, index + 4 + 8 * i) for i in range(count)]
    block = [data[at:at + size] for at, size in table]
    entry, at = {}, names + 4
    for _ in range(struct.unpack_from(">I", data, names)[0]):
        number, length = struct.unpack_from(">IB", data, at)
        entry[data[at + 5:at + 5 + length].decode()] = number
        at += 5 + length
    assert set(entry) == {"BomInfo", "Paths", "HLIndex", "VIndex", "Size64"}
    kind, _, child, size, paths = struct.unpack_from(">4sIIII", block[entry["Paths"]])
    assert kind == b"tree" and size == 4096
    is_leaf, entries, forward, backward = struct.unpack_from(">HHII", block[child])
    assert (is_leaf, entries, forward, backward) == (1, paths, 0, 0)
    found, path_of = {}, {0: None}
    for i in range(entries):
        info, named = struct.unpack_from(">II", block[child], 12 + 8 * i)
        number, about = struct.unpack(">II", block[info])
        parent, = struct.unpack_from(">I", block[named])
        name = block[named][4:].rstrip(b"\0").decode()
        path_of[number] = name if path_of[parent] is None else f"{path_of[parent]}/{name}"
        mode, user, group, _, size = struct.unpack_from(">HIIII", block[about], 4)
        checksum, = struct.unpack_from(">I", block[about], 23)
        assert (user, group) == (0, 80)
        found[path_of[number]] = (mode, size, checksum)
    return found


class Package(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.package = given or made(self.folder / "made.pkg")
        self.parts = unpacked(self.package, self.folder / "parts")

    def install(self, root):
        """What the installer does with the components."""
        for reference in xml.parse(self.parts / "Distribution").iter("pkg-ref"):
            if reference.text:
                part = self.parts / reference.text.lstrip("#")
                info = xml.parse(part / "PackageInfo").getroot()
                place = root / info.get("install-location").lstrip("/")
                place.parent.mkdir(parents=True, exist_ok=True)
                shutil.copytree(unpacked(part / "Payload", self.folder / part.stem), place, dirs_exist_ok=True)

    def test_two_runs_give_the_same_bytes(self):
        self.assertEqual(self.package.read_bytes(), made(self.folder / "again.pkg").read_bytes())

    def test_description(self):
        top = xml.parse(self.parts / "Distribution").getroot()
        self.assertEqual(top.find("options").get("hostArchitectures"), "x86_64,arm64")
        chosen = {ref.get("id") for ref in top.find("choice").iter("pkg-ref")}
        for part in ("module", "uninstall"):
            info = xml.parse(self.parts / f"{part}.pkg/PackageInfo").getroot()
            self.assertIn(info.get("identifier"), chosen)
            self.assertEqual((info.get("version"), info.get("relocatable")), (version, "false"))

    def test_bills_tell_what_the_payloads_hold(self):
        for part in ("module", "uninstall"):
            payload = unpacked(self.parts / f"{part}.pkg/Payload", self.folder / part)
            listed = bill((self.parts / f"{part}.pkg/Bom").read_bytes())
            there = {".": payload, **{f"./{path.relative_to(payload)}": path for path in payload.rglob("*")}}
            self.assertEqual(set(listed), set(there))
            for name, path in there.items():
                mode, size, checksum = listed[name]
                self.assertEqual(mode & 0o777, 0o755 if path.is_dir() else path.stat().st_mode & 0o777, name)
                if path.is_file():
                    told = subprocess.run(["cksum", path], capture_output=True, text=True, check=True).stdout.split()
                    self.assertEqual((checksum, size), (int(told[0]), int(told[1])), name)

    def test_installs_the_bundle_and_removes_it_without_trace(self):
        root = self.folder / "root"
        other = root / "Library/Application Support/Adobe/Common/Plugins/7.0/MediaCore/Other.bundle"
        other.mkdir(parents=True)
        own = root / "Library/Application Support/Quillo Transmit"
        before = sorted(root.rglob("*"))
        self.install(root)
        installed = other.parent / bundle.name
        subprocess.run(["diff", "-r", bundle, installed], check=True)
        self.assertTrue((installed / "Contents/MacOS/Plugins.AdobeCC.Transmit").stat().st_mode & 0o111)
        subprocess.run(["sh", own / "uninstall", root], check=True, capture_output=True)
        self.assertEqual(sorted(root.rglob("*")), before)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
