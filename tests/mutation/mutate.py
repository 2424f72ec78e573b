#!/usr/bin/env python3
"""Do the conversion tests test? Plants one small fault after another into a copy of lib/format_conversion (and the
plug-in's converters), builds the conversion tests there, runs them, and reports the share of faults that they notice.

  tests/mutation/mutate.py                    200 drawn faults; takes an hour or two
  tests/mutation/mutate.py --count 20 --seed 7
  tests/mutation/mutate.py --planted          the named faults of planted.py only

Nothing of the working tree is touched: the copy lies in build/mutation. Exit code 0 when at least --goal percent of
the faults were noticed (with --planted: all)."""

import argparse
import json
import pathlib
import random
import re
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "mutation"
COPY = WORK / "tree"
BUILD = WORK / "build"
PROGRAMS = ["conversion_examples", "black_alpha", "conversion_sweep"]
# A fault that makes a test hang is noticed as well.
SECONDS = {"conversion_examples": 60, "black_alpha": 20, "conversion_sweep": 300}

# Results do not depend on these lines: how memory is fetched or stored, which processor is there.
WITHOUT_INFLUENCE = re.compile(r"prefetch|ahead|stream|fence|static_assert|assert|#|widest|note_ran|restrict|cpuid|__builtin")
SKIPPED_FILES = {"processor.cpp", "processor.h", "access.h", "access.cpp", "instances.h", "color_space.h"}


def exchange(pattern, replacement):
    """Sites are the matches of pattern, one fault each."""
    compiled = re.compile(pattern)

    def sites(code):
        for match in compiled.finditer(code):
            new = match.expand(replacement) if isinstance(replacement, str) else replacement(match)
            yield match.start(), match.end(), new

    return sites


def next_number(step):
    return lambda m: str(int(m.group(0), 0) + step)


NUMBER = r"(?<![\w.#<])(?:0x[0-9a-fA-F]+|\d+)(?![\w.\"])"
FAULTS = {
    "number + 1": exchange(NUMBER, next_number(1)),
    "number - 1": exchange(NUMBER, next_number(-1)),
    "plus to minus": exchange(r"(?<=[\w)\]]) \+ (?=[\w(])", " - "),
    "minus to plus": exchange(r"(?<=[\w)\]]) - (?=[\w(])", " + "),
    "times to plus": exchange(r"(?<=[\w)\]]) \* (?=[\w(])", " + "),
    "greater to greater or equal": exchange(r" > (?=[\w(])", " >= "),
    "less to less or equal": exchange(r"(?<=[\w)\]]) < (?=[\w(])", " <= "),
    "less or equal to less": exchange(r" <= ", " < "),
    "at least to more": exchange(r" >= ", " > "),
    "equal to not equal": exchange(r" == ", " != "),
    "and to or": exchange(r" && ", " || "),
    "bit and to bit or": exchange(r"(?<=[\w)\]]) & (?=[\w(])", " | "),
    "right shift to left": exchange(r"(?<=[\w)\]]) >> (?=[\w(])", " << "),
    "true to false": exchange(r"\btrue\b", "false"),
    "false to true": exchange(r"\bfalse\b", "true"),
    "add to subtract": exchange(r"\b(\w*_)?adds?(_epi16|_epi32|_epi8|_epu8|_16|_32|_8)?\(", lambda m: m.group(0).replace("add", "sub")),
    "low to high half": exchange(r"unpacklo", "unpackhi"),
    "high to low half": exchange(r"unpackhi", "unpacklo"),
    "arithmetic to logical shift": exchange(r"srai", "srli"),
    "logical to arithmetic shift": exchange(r"srli", "srai"),
    "unsigned to signed product": exchange(r"mulhi_epu16", "mulhi_epi16"),
    "statement left out": exchange(r"(?m)^(\s+)(?!return|break|continue|using|static|constexpr|auto|const|int |bool |for|if|else|while|case|template|struct|class|namespace|[\w:<>, ]+ const [\w]+ ?[={(])([\w:.\[\]\->*&(][^;{}]*;)$", r"\1;"),
}


def without_comments(code):
    """Comments and strings become blanks of the same length, so that positions stay."""
    blank = lambda m: re.sub(r"[^\n]", " ", m.group(0))
    code = re.sub(r"//[^\n]*", blank, code)
    code = re.sub(r"/\*.*?\*/", blank, code, flags=re.S)
    return re.sub(r'"(?:\\.|[^"\\\n])*"', blank, code)


def source_files():
    files = [f for f in sorted((COPY / "lib/format_conversion").rglob("*")) if f.suffix in (".h", ".cpp")]
    files.append(COPY / "Plugins/Plugins.AdobeCC.Transmit/format_conversion.cpp")
    return [f for f in files if f.exists() and f.name not in SKIPPED_FILES]


def all_faults():
    found = []
    for file in source_files():
        text = file.read_text()
        code = without_comments(text)
        for name, sites in FAULTS.items():
            for start, end, new in sites(code):
                begin = text.rfind("\n", 0, start) + 1
                line = text[begin:text.find("\n", end)]
                if not WITHOUT_INFLUENCE.search(line) and new != text[start:end]:
                    found.append((file, name, start, end, new))
    return found


def run(command, seconds):
    try:
        return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=seconds, text=True)
    except subprocess.TimeoutExpired:
        return None


def prepare():
    WORK.mkdir(parents=True, exist_ok=True)
    shutil.rmtree(COPY, ignore_errors=True)
    files = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, check=True, stdout=subprocess.PIPE).stdout.split(b"\0")
    for name in filter(None, (f.decode() for f in files)):
        if (ROOT / name).is_file():
            (COPY / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(ROOT / name, COPY / name)
    subprocess.run(["cmake", "-S", COPY, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                    "-DCMAKE_CXX_FLAGS_DEBUG=-O1", "-DCMAKE_CXX_COMPILER_LAUNCHER="], check=True, stdout=subprocess.DEVNULL)
    if not build():
        sys.exit("the faultless tree does not build")
    killer = test()
    if killer:
        sys.exit(f"the faultless tree does not pass {killer}")


def build():
    done = run(["cmake", "--build", BUILD, "--target", *PROGRAMS], 1200)
    return done is not None and done.returncode == 0


def test():
    """The program that noticed, or nothing."""
    for program in PROGRAMS:
        path = next(p for p in BUILD.rglob(program) if p.is_file())
        done = run([path, "--gtest_brief=1", "--gtest_fail_fast"], SECONDS[program])
        if done is None:
            return program + " (too long)"
        if done.returncode != 0:
            return program
    return None


def try_fault(file, start, end, new):
    """noticed by whom, 'survived', or None when it does not even compile."""
    text = file.read_text()
    file.write_text(text[:start] + new + text[end:])
    try:
        return (test() or "survived") if build() else None
    finally:
        file.write_text(text)


def drawn(count, generator):
    faults = all_faults()
    by_kind = {}
    for fault in faults:
        by_kind.setdefault(fault[1], []).append(fault)
    # Each kind in turn, so that the many numbers do not crowd out the rest.
    for kind in by_kind.values():
        generator.shuffle(kind)
    while by_kind:
        for name in list(by_kind):
            yield by_kind[name].pop()
            if not by_kind[name]:
                del by_kind[name]


def describe(file, start, end, new):
    text = file.read_text()
    number = text.count("\n", 0, start) + 1
    begin = text.rfind("\n", 0, start) + 1
    line = text[begin:text.find("\n", end)]
    shown = text[begin:start] + "[" + text[start:end] + " -> " + new + "]" + text[end:begin + len(line)]
    return f"{file.relative_to(COPY)}:{number}: {' '.join(shown.split())}"


def planted():
    import planted as named
    for fault in named.FAULTS:
        file = COPY / fault["file"]
        text = file.read_text()
        if text.count(fault["old"]) != 1:
            sys.exit(f"{fault['name']}: the place in {fault['file']} is not there any more; update planted.py")
        start = text.index(fault["old"])
        yield file, fault["name"], start, start + len(fault["old"]), fault["new"]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=200)
    parser.add_argument("--seed", type=int, default=int(time.time()))
    parser.add_argument("--goal", type=float, default=90)
    parser.add_argument("--planted", action="store_true")
    arguments = parser.parse_args()
    prepare()
    print(f"seed {arguments.seed}", flush=True)
    results = []
    faults = planted() if arguments.planted else drawn(arguments.count, random.Random(arguments.seed))
    for file, name, start, end, new in faults:
        where = describe(file, start, end, new)
        outcome = try_fault(file, start, end, new)
        if outcome is None:
            if arguments.planted:
                sys.exit(f"{name} does not compile")
            continue
        results.append({"fault": name, "where": where, "outcome": outcome})
        print(f"{len(results):3} {outcome:22} {name}: {where}", flush=True)
        if not arguments.planted and len(results) == arguments.count:
            break
    noticed = sum(r["outcome"] != "survived" for r in results)
    share = 100 * noticed / max(len(results), 1)
    (WORK / "report.json").write_text(json.dumps({"seed": arguments.seed, "share": share, "faults": results}, indent=1))
    print(f"{noticed} of {len(results)} faults noticed: {share:.1f} %")
    sys.exit(0 if share >= (100 if arguments.planted else arguments.goal) else 1)


if __name__ == "__main__":
    main()
