"""A bill of materials, the list of files by which the macOS installer knows what a package put where.

A store of numbered blocks, big endian, with named entry points; the paths are one leaf of a tree, which is enough for
a few hundred files.
"""
import struct


def remainder(crc):
    for _ in range(8):
        crc = (crc << 1 ^ 0x04C11DB7) & 0xFFFFFFFF if crc & 0x80000000 else crc << 1
    return crc


REMAINDERS = [remainder(byte << 24) for byte in range(256)]


def posix_checksum(data):
    """The CRC that cksum(1) prints."""
    crc = 0
    for byte in data + (len(data).to_bytes((len(data).bit_length() + 7) // 8, "little") if data else b""):
        crc = (crc << 8 & 0xFFFFFFFF) ^ REMAINDERS[crc >> 24 ^ byte]
    return crc ^ 0xFFFFFFFF


class Store:
    def __init__(self):
        self.blocks, self.names = [b""], []

    def block(self, data):
        self.blocks.append(data)
        return len(self.blocks) - 1

    def tree(self, leaf, count, size=4096):
        return self.block(struct.pack(">4sIIIIB", b"tree", 1, self.block(leaf), size, count, 0))

    def name(self, text, block):
        self.names.append((text.encode(), block))

    def bytes(self):
        body, table = b"", []
        for data in self.blocks:
            table.append((512 + len(body) if data else 0, len(data)))
            body += data
        names = struct.pack(">I", len(self.names)) + b"".join(
            struct.pack(">IB", block, len(text)) + text for text, block in self.names)
        index = struct.pack(">I", len(table)) + b"".join(struct.pack(">II", *entry) for entry in table)
        index += struct.pack(">I4I", 2, 0, 0, 0, 0)  # two free places
        names_at = 512 + len(body)
        head = struct.pack(">8sIIIIII", b"BOMStore", 1, len(table) - 1, names_at + len(names), len(index), names_at,
                           len(names))
        return head.ljust(512, b"\0") + body + names + index


def leaf(entries):
    return struct.pack(">HHII", 1, len(entries), 0, 0) + b"".join(struct.pack(">II", *entry) for entry in entries)


def make(entries, time):
    """entries: (path, mode, data or None for a folder), parents before children, "." first."""
    store, ids, paths = Store(), {}, []
    total = sum(len(data) for _, _, data in entries if data is not None)
    info = store.block(struct.pack(">III4I", 1, len(entries) + 1, 1, 0, 0, total, 0))
    for number, (path, mode, data) in enumerate(entries, 1):
        ids[path] = number
        kind, size, checksum = (2, 0, 0) if data is None else (1, len(data), posix_checksum(data))
        about = store.block(struct.pack(">BBHHIIIIBII", kind, 1, 3, mode, 0, 80, time, size, 1, checksum, 0))
        parent, _, name = path.rpartition("/")
        named = store.block(struct.pack(">I", ids.get(parent, 0)) + (name or path).encode() + b"\0")
        paths.append((store.block(struct.pack(">II", number, about)), named))
    store.name("BomInfo", info)
    store.name("Paths", store.tree(leaf(paths), len(paths)))
    store.name("HLIndex", store.tree(leaf([]), 0))
    store.name("VIndex", store.block(struct.pack(">IIIB", 1, store.tree(leaf([]), 0, 128), 0, 0)))
    store.name("Size64", store.tree(leaf([]), 0))
    return store.bytes()
