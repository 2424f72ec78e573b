#!/usr/bin/env python3
"""Makes the installer for macOS, on any system: make_pkg.py BUNDLE VERSION OUT.

A flat package is a xar archive with a description of the whole and, for each component, what it is (PackageInfo), its
files (Payload, a packed cpio archive) and the list of them (Bom). Two runs give the same bytes.
"""
import gzip
import hashlib
import os
import pathlib
import struct
import sys
import xml.sax.saxutils
import zlib

import bom

IDENTIFIER = "org.quillo.transmit"
MODULES = "/Library/Application Support/Adobe/Common/Plugins/7.0/MediaCore"
OWN = "/Library/Application Support/Quillo Transmit"
TIME = int(os.environ.get("SOURCE_DATE_EPOCH", "1704067200"))


def tree(folder, name):
    """(path, mode, data) of a folder under its name, as the installer wants them: "." first, sorted."""
    found = [(".", 0o40755, None), (f"./{name}", 0o40755, None)]
    for path in sorted(folder.rglob("*")):
        inside = f"./{name}/{path.relative_to(folder)}"
        if path.is_dir():
            found.append((inside, 0o40755, None))
        else:
            found.append((inside, 0o100755 if os.access(path, os.X_OK) else 0o100644, path.read_bytes()))
    return found


def cpio(entries):
    """The old portable format, owner root, group admin."""
    out = b""
    for number, (path, mode, data) in enumerate([*entries, ("TRAILER!!!", 0, b"")], 1):
        name, data = path.encode() + b"\0", data or b""
        out += b"070707%06o%06o%06o%06o%06o%06o%06o%011o%06o%011o" % (
            0, number, mode, 0, 80, 1, 0, TIME, len(name), len(data)) + name + data
    return gzip.compress(out, mtime=0)


def package_info(identifier, version, place, entries):
    kilobytes = -(-sum(len(data or b"") for _, _, data in entries) // 1024)
    return f"""<?xml version="1.0" encoding="utf-8"?>
<pkg-info format-version="2" identifier="{identifier}" version="{version}" install-location="{place}" auth="root" \
overwrite-permissions="false" relocatable="false" postinstall-action="none">
    <payload installKBytes="{kilobytes}" numberOfFiles="{len(entries)}"/>
</pkg-info>
""".encode()


def distribution(version, components):
    refs = "".join(f"""    <pkg-ref id="{name}" version="{version}" installKBytes="{kilobytes}">#{file}</pkg-ref>
""" for name, file, kilobytes in components)
    choices = "".join(f'        <pkg-ref id="{name}"/>\n' for name, _, _ in components)
    return f"""<?xml version="1.0" encoding="utf-8"?>
<installer-gui-script minSpecVersion="2">
    <title>Quillo Transmit</title>
    <options customize="never" require-scripts="false" hostArchitectures="x86_64,arm64"/>
    <domains enable_anywhere="false" enable_currentUserHome="false" enable_localSystem="true"/>
    <volume-check>
        <allowed-os-versions>
            <os-version min="10.15"/>
        </allowed-os-versions>
    </volume-check>
    <choices-outline>
        <line choice="all"/>
    </choices-outline>
    <choice id="all" title="Quillo Transmit">
{choices}    </choice>
{refs}</installer-gui-script>
""".encode()


def xar(files):
    """files: name -> bytes, a name may have one folder in front. The heap begins with the checksum of the contents."""
    heap, number, folders, top = b"\0" * 20, 0, {}, []
    for name, data in files.items():
        number += 1
        digest = hashlib.sha1(data).hexdigest()
        folder, _, last = name.rpartition("/")
        entry = f"""<file id="{number}"><name>{xml.sax.saxutils.escape(last)}</name><type>file</type><mode>0644</mode>\
<data><archived-checksum style="sha1">{digest}</archived-checksum><extracted-checksum style="sha1">{digest}\
</extracted-checksum><encoding style="application/octet-stream"/><size>{len(data)}</size><offset>{len(heap)}</offset>\
<length>{len(data)}</length></data></file>"""
        folders.setdefault(folder, []).append(entry)
        heap += data
    for folder, entries in folders.items():
        number += 1
        inside = "".join(entries)
        top.append(inside if not folder else
                   f'<file id="{number}"><name>{folder}</name><type>directory</type><mode>0755</mode>{inside}</file>')
    contents = f"""<?xml version="1.0" encoding="UTF-8"?>
<xar><toc><creation-time>2024-01-01T00:00:00</creation-time><checksum style="sha1"><offset>0</offset><size>20</size>\
</checksum>{"".join(top)}</toc></xar>
""".encode()
    packed = zlib.compress(contents, 9)
    head = struct.pack(">IHHQQI", 0x78617221, 28, 1, len(packed), len(contents), 1)
    return head + packed + hashlib.sha1(packed).digest() + heap[20:]


def main():
    bundle, version, out = pathlib.Path(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3])
    uninstall = (pathlib.Path(__file__).parent / "uninstall").read_bytes()
    parts = {
        "module": (MODULES, tree(bundle, bundle.name)),
        "uninstall": (OWN, [(".", 0o40755, None), ("./uninstall", 0o100755, uninstall)]),
    }
    components, files = [], {}
    for name, (place, entries) in parts.items():
        identifier, file = f"{IDENTIFIER}.{name}", f"{name}.pkg"
        files[f"{file}/Bom"] = bom.make(entries, TIME)
        files[f"{file}/PackageInfo"] = package_info(identifier, version, place, entries)
        files[f"{file}/Payload"] = cpio(entries)
        components.append((identifier, file, -(-sum(len(data or b"") for _, _, data in entries) // 1024)))
    out.write_bytes(xar({"Distribution": distribution(version, components), **files}))


if __name__ == "__main__":
    main()
