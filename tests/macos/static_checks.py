"""What can be known of a macOS module without running it. Each check raises AssertionError with what it found."""
import hashlib
import pathlib
import plistlib
import re
import struct
import subprocess

LLVM = "14"
SYSTEM = "/usr/lib/libSystem.B.dylib"
LIBCXX = "/usr/lib/libc++.1.dylib"
FRAMEWORKS = "/System/Library/Frameworks"
CORE_FOUNDATION = f"{FRAMEWORKS}/CoreFoundation.framework/Versions/A/CoreFoundation"
CORE_SERVICES = f"{FRAMEWORKS}/CoreServices.framework/Versions/A/CoreServices"
SENDER = "@rpath/libquillo.4.dylib"
MINIMUM = {"x86_64": "10.15", "arm64": "11.0"}


def run(tool, *arguments):
    return subprocess.run([f"llvm-{tool}-{LLVM}", *map(str, arguments)], check=True, capture_output=True, text=True).stdout


def objdump(path, *arguments):
    """llvm-objdump's lines without the file's name at the top."""
    return run("objdump", "--macho", *arguments, path).splitlines()[1:]


def wanted_names(exports_file):
    lines = pathlib.Path(exports_file).read_text().splitlines()
    return {"_" + line for line in lines if line and not line.startswith("#")}


def stub_names(stubs, arch):
    """Library install name -> the symbols that its stub lists for a processor."""
    found = {}
    for path in sorted(pathlib.Path(stubs).rglob("*.tbd")):
        text = path.read_text()
        name = re.search(r"^install-name: '(.*)'", text, re.M).group(1)
        names = set()
        for block in re.split(r"^  - targets: ", text, flags=re.M)[1:]:
            targets, _, rest = block.partition("]")
            if f"{arch}-macos" in targets:
                rest = rest.split("symbols:")[1].replace("...", " ")
                names |= {word.strip("'") for word in re.split(r"[\s,\[\]]+", rest)} - {"", "-"}
        found[name] = names
    return found


def architectures(path):
    return run("lipo", path, "-archs").split()


def thin(path, arch, folder):
    """One processor's slice as a file of its own."""
    if architectures(path) == [arch]:
        return pathlib.Path(path)
    out = pathlib.Path(folder) / f"{pathlib.Path(path).name}.{arch}"
    run("lipo", path, "-thin", arch, "-output", out)
    return out


def header(path, arch, kind):
    words = " ".join(objdump(path, "--private-header")).split()
    assert arch.upper() in words, f"not for {arch}: {words}"
    assert kind in words, f"not a {kind}: {words}"
    for flag in ("NOUNDEFS", "DYLDLINK", "TWOLEVEL"):
        assert flag in words, f"flag {flag} is missing"
    for flag in ("WEAK_DEFINES", "BINDS_TO_WEAK"):
        assert flag not in words, f"flag {flag}: names are shared with other libraries of the process"


def exports(path, wanted):
    named = set(run("nm", "-gU", "--format=just-symbols", path).split())
    found = {line.split()[-1] for line in objdump(path, "--exports-trie") if re.match(r"\s*0x[0-9A-F]+\s+_", line, re.I)}
    for what, names in (("symbol table", named), ("exports trie", found)):
        assert names == wanted, f"{what}: missing {sorted(wanted - names)}, too many {sorted(names - wanted)}"


def libraries(path, wanted, install_name=None):
    lines = [line.strip() for line in objdump(path, "--dylibs-used")]
    versions = dict(re.match(r"(\S+) \(compatibility version ([\d.]+)", line).groups() for line in lines)
    if install_name:
        assert lines[0].startswith(install_name + " "), f"calls itself {lines[0]}"
        versions.pop(install_name)
    assert set(versions) == set(wanted), f"uses {sorted(versions)}"
    assert versions.get(SENDER, "1.0.0") == "1.0.0", f"asks for version {versions[SENDER]} of the sender library"


def run_paths(path, wanted):
    found = [line.strip() for line in objdump(path, "--rpaths")]
    assert found == wanted, f"run paths {found}"


def build_version(path, arch):
    text = "\n".join(objdump(path, "--private-headers"))
    command = re.search(r"cmd LC_BUILD_VERSION\n(?:.*\n)*?.*platform (\S+)\n(?:.*\n)*?.*minos (\S+)", text)
    assert command and command.groups() == ("macos", MINIMUM[arch]), f"built for {command and command.groups()}"


def bindings(path):
    """Imported symbol -> name of the library it is bound to."""
    found = {}
    for line in objdump(path, "--bind", "--lazy-bind"):
        fields = line.split()
        if len(fields) >= 5 and fields[0].startswith("__"):
            found[fields[-1]] = fields[-2]
    return found


def imports(path, arch, stubs):
    """Every import is one that its own library's stub lists."""
    undefined = set(run("nm", "-u", "--format=just-symbols", path).split())
    bound = bindings(path)
    assert set(bound) <= undefined | {"dyld_stub_binder"}, f"bound but not undefined: {sorted(set(bound) - undefined)}"
    assert undefined <= set(bound), f"undefined but not bound: {sorted(undefined - set(bound))}"
    short = {pathlib.PurePosixPath(name).name.split(".")[0]: names for name, names in stub_names(stubs, arch).items()}
    short["libquillo"] = {name for name in bound if name.startswith("_Quillolib_send_")}
    for symbol, library in bound.items():
        assert symbol in short.get(library, ()), f"{symbol} is bound to {library}"


def binds(path, prefix, library):
    """Names that begin so are imported, all of them from that library."""
    found = {symbol: bound for symbol, bound in bindings(path).items() if symbol.startswith(prefix)}
    assert found, f"nothing that begins with {prefix} is imported"
    wrong = {symbol: bound for symbol, bound in found.items() if bound != library}
    assert not wrong, f"not bound to {library}: {wrong}"


def sections(path):
    text = "\n".join(objdump(path, "--private-headers"))
    names = set(re.findall(r"sectname (\S+)", text))
    unwanted = {name for name in names if name.startswith(("__thread_", "__objc_"))}
    assert not unwanted, f"sections {sorted(unwanted)}"
    protections = set(re.findall(r"initprot (\S+)", text))
    assert "rwx" not in protections, "a segment is writable and executable"


def unwind_records(path):
    """The linker drops records that are not compact; an exception cannot pass such a function."""
    text = run("objdump", "--unwind-info", path)
    bare = re.findall(r"function offset=(0x[0-9a-f]+), encoding(?:\[\d+\])?=0x00000000", text)
    symbols = {int(line.split()[0], 16): line.split()[2] for line in run("nm", "-n", path).splitlines() if line[0] != " "}
    # The helper that ends the process has none by design of the compiler.
    names = {symbols.get(int(offset, 16), offset) for offset in bare} - {"___clang_call_terminate"}
    names = {name for name in names if not name.startswith(("GCC_except_table", "__mh_"))}
    assert not names, f"no unwind record: {sorted(names)}"


def no_build_paths(path, *folders):
    data = pathlib.Path(path).read_bytes()
    for folder in (*folders, "/home/", "/usr/lib/llvm"):
        assert folder.encode() not in data, f"{folder} stands in the file"


def disassembly(path):
    """Function name -> the set of its instructions."""
    found, current = {}, None
    for line in run("objdump", "--macho", "-d", "--no-show-raw-insn", path).splitlines():
        if line.endswith(":") and not line.startswith(" "):
            current = found.setdefault(line[:-1], set())
        elif current is not None and "\t" in line:
            current.add(" ".join(line.split("\t")[1:]))
    return found


WIDE = re.compile(r"%[yz]mm|^v[a-z]")
BEYOND_SSSE3 = re.compile(
    r"^(pmulld|pmuldq|pminud|pmaxud|pminsd|pmaxsd|pminuw|pmaxuw|pminsb|pmaxsb|packusdw|pblendvb|pblendw|blendv?p[sd]|"
    r"p(ins|extr)[bdq]|extractps|insertps|pmov[sz]x\w+|ptest|pcmpeqq|pcmpgtq|phminposuw|mpsadbw|dpp[sd]|round[sp][sd]|"
    r"movntdqa|crc32|popcnt|lzcnt|tzcnt|andn|bextr|mulx|shlx|shrx|sarx|pclmul|aes)")


def instructions(path, may_be_wide, may_be_newer):
    """Wider code only where the name says so; both patterns match function names."""
    functions = disassembly(path)
    wide = {name for name, body in functions.items() if any(WIDE.search(one) for one in body)}
    newer = {name for name, body in functions.items() if any(BEYOND_SSSE3.match(one) for one in body)}
    stray = {name for name in wide if not re.search(may_be_wide, name)}
    assert not stray, f"instructions of a newer processor outside the variants for it: {sorted(stray)[:5]}"
    stray = {name for name in newer if not re.search(may_be_newer, name) and not re.search(may_be_wide, name)}
    assert not stray, f"instructions beyond SSSE3: {sorted(stray)[:5]}"
    return wide


def has_instructions(path, *wanted):
    every = set().union(*disassembly(path).values())
    for mnemonic in wanted:
        assert any(one.startswith(mnemonic) for one in every), f"{mnemonic} does not occur"


def holds_all_of(path, archive):
    """Nothing of a static library was left out."""
    lines = run("nm", "-gU", archive).splitlines()
    wanted = {line.split()[2] for line in lines if len(line.split()) == 3 and line.split()[1] in "TSD"}
    there = {line.split()[-1] for line in run("nm", "-U", path).splitlines() if line.strip()}
    assert wanted, f"{archive} defines nothing"
    missing = wanted - there
    assert not missing, f"{len(missing)} of {len(wanted)} are missing, for example {sorted(missing)[:3]}"
    return len(wanted)


def signature(path):
    """An ad-hoc signature whose page hashes are those of the file."""
    data = pathlib.Path(path).read_bytes()
    commands, = struct.unpack_from("<I", data, 16)
    at, place = 32, None
    for _ in range(commands):
        kind, size = struct.unpack_from("<II", data, at)
        if kind == 0x1D:
            place, = struct.unpack_from("<I", data, at + 8)
        at += size
    assert place, "not signed"
    magic, _, count = struct.unpack_from(">III", data, place)
    assert magic == 0xFADE0CC0, "no signature where one should be"
    blobs = dict(struct.unpack_from(">II", data, place + 12 + 8 * i) for i in range(count))
    directory = place + blobs[0]
    fields = struct.unpack_from(">IIIIIIIIIBBBB", data, directory)
    _, _, _, flags, hashes, _, _, pages, limit, hash_size, hash_kind, _, page_bits = fields
    assert flags & 2, "the signature is not ad hoc"
    assert not flags & 0x10000, "the hardened runtime goes badly with an ad-hoc signature"
    assert (hash_kind, hash_size) == (2, 32), "the hashes are not SHA-256"
    assert limit == place, "the signature covers another length"
    page = 1 << page_bits
    assert pages == -(-limit // page), "the number of pages is wrong"
    for i in range(pages):
        want = data[directory + hashes + 32 * i: directory + hashes + 32 * (i + 1)]
        assert hashlib.sha256(data[i * page:min((i + 1) * page, limit)]).digest() == want, f"page {i} was changed"


def info_plist(bundle, version):
    contents = pathlib.Path(bundle) / "Contents"
    info = plistlib.loads((contents / "Info.plist").read_bytes())
    assert info["CFBundlePackageType"] == "BNDL" and info["CFBundleInfoDictionaryVersion"] == "6.0", info
    assert (contents / "MacOS" / info["CFBundleExecutable"]).is_file(), "the executable's name is wrong"
    assert info["CFBundleShortVersionString"] == info["CFBundleVersion"] == version, info
    assert re.fullmatch(r"[A-Za-z0-9.-]+", info["CFBundleIdentifier"]), info
    assert info["CFBundleName"] and info["LSMinimumSystemVersion"] == MINIMUM["x86_64"], info
