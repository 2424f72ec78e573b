#!/usr/bin/env python3
"""Do the conversion tests test? Plants one small fault after another into a copy of lib/format_conversion (and the
plug-in's converters), compiles what it touches, runs the conversion tests, and reports the share of faults that they
notice.

  tests/mutation/mutate.py                    200 drawn faults, in about half an hour
  tests/mutation/mutate.py --count 20 --seed 7
  tests/mutation/mutate.py --planted          the named faults of planted.py only

Nothing of the working tree is touched: the copy lies in build/mutation. A fault that changes no instruction of any
build of the kernels is none, and another is drawn for it. Exit code 0 when at least --goal percent of the faults were
noticed (with --planted: all)."""

import argparse
import json
import os
import pathlib
import random
import re
import resource
import shlex
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "mutation"
COPY = WORK / "tree"
BUILD = WORK / "build"
SHADOW = WORK / "shadow"
FAULTLESS = WORK / "faultless"
PROGRAMS = ["conversion_examples", "black_alpha", "conversion_sweep"]
# Program and QUILLO_SWEEP, what notices most for the least time first.
STEPS = [("conversion_examples", "quick"), ("conversion_sweep", "reduced"), ("black_alpha", "quick"), ("conversion_sweep", "quick")]
# A fault that makes a test hang is noticed as well. Of the processor's time: the machine may have other things to do.
SECONDS = {"reduced": 120, "quick": 300}

# Results do not depend on these lines: when memory is fetched, from which size on it is streamed, which processor is there.
WITHOUT_INFLUENCE = re.compile(r"prefetch|ahead|streaming_from|fence|assert|#|widest|note_ran|by_string|restrict|cpuid|cached")
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
    files = sorted((COPY / "lib/format_conversion").rglob("*"))
    files += sorted((COPY / "Plugins/Plugins.AdobeCC.Transmit").glob("format_conversion*.cpp"))
    return [f for f in files if f.suffix in (".h", ".cpp")]


def all_faults():
    found = []
    for file in source_files():
        if file.name in SKIPPED_FILES:
            continue
        text = file.read_text()
        code = without_comments(text)
        for name, sites in FAULTS.items():
            for start, end, new in sites(code):
                begin = text.rfind("\n", 0, start) + 1
                line = text[begin:text.find("\n", end)]
                if not WITHOUT_INFLUENCE.search(line) and new != text[start:end]:
                    found.append((file, name, start, end, new))
    return found


def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)


def passes(program, mode, tests="*"):
    def limited():
        resource.setrlimit(resource.RLIMIT_CPU, (SECONDS[mode], SECONDS[mode]))

    command = [program, "--gtest_brief=1", "--gtest_fail_fast", f"--gtest_filter={tests}"]
    return run(command, env={**os.environ, "QUILLO_SWEEP": mode}, preexec_fn=limited).returncode == 0


def prepare():
    """The faultless tree: built and tested once, built again only where it has changed since."""
    WORK.mkdir(parents=True, exist_ok=True)
    files = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, check=True, stdout=subprocess.PIPE).stdout.split(b"\0")
    kept = {f.decode() for f in files if f and (ROOT / f.decode()).is_file()}
    changed = False
    for name in kept:
        copy = COPY / name
        if not copy.exists() or copy.read_bytes() != (ROOT / name).read_bytes():
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(ROOT / name, copy)
            shutil.copymode(ROOT / name, copy)
            changed = True
    for copy in [f for f in COPY.rglob("*") if f.is_file() and str(f.relative_to(COPY)) not in kept]:
        copy.unlink()
        changed = True
    if not changed and FAULTLESS.exists():
        return
    FAULTLESS.unlink(missing_ok=True)
    subprocess.run(["cmake", "-S", COPY, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O1",
                    "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON", "-DQUILLO_MACOS=OFF"], check=True, stdout=subprocess.DEVNULL)
    if run(["cmake", "--build", BUILD, "--target", *PROGRAMS]).returncode != 0:
        sys.exit("the faultless tree does not build")
    for program, mode in STEPS:
        if not passes(next(p for p in BUILD.rglob(program) if p.is_file()), mode):
            sys.exit(f"the faultless tree does not pass {program}")
    FAULTLESS.touch()


class reachable_tests:
    """Which tests run code of an object at all: those of the front ends and kernels whose own object needs it."""

    def __init__(self, objects):
        self.names = {}
        defined, needed = {}, {}
        listed = subprocess.run(["nm", "-A", "-P", *objects], cwd=BUILD, check=True, stdout=subprocess.PIPE, text=True).stdout
        for line in listed.splitlines():
            place, symbol, kind = line.split()[:3]
            output = place.rstrip(":")
            if kind in "UwV":
                needed.setdefault(output, set()).add(symbol)
            elif kind in "TW":
                defined.setdefault(symbol, []).append(output)
        readable = subprocess.run(["c++filt"], input="\n".join(defined), check=True, stdout=subprocess.PIPE, text=True).stdout
        for symbol, function in zip(defined, readable.splitlines()):
            name = re.search(r"(?:Processing::FXlib::format_conversion::|^)((?:\w+::)*\w+)([<(])", function)
            if name:
                test = "*/" + name[1].replace("::", "__") + ("_*" if name[2] == "<" else "")
                for output in defined[symbol]:
                    self.names.setdefault(output, set()).add(test)
        self.needs = {}
        for output in objects:
            self.needs[output] = found = {output}
            waiting = [output]
            while waiting:
                for symbol in needed.get(waiting.pop(), ()):
                    new = set(defined.get(symbol, ())) - found
                    found |= new
                    waiting += new

    def of(self, objects):
        """As a filter of tests."""
        names = {name for output, needs in self.needs.items() if needs & objects for name in self.names.get(output, ())}
        return ":".join(sorted(names)) or "-*"


class workshop:
    """Compiles what a fault touches and links it before the faultless rest, so that nothing else is built again."""

    def __init__(self):
        self.commands = {}
        judged = set(source_files())
        for entry in json.loads((BUILD / "compile_commands.json").read_text()):
            words = shlex.split(entry["command"])
            source = pathlib.Path(entry["file"])
            # Tests, references and programs are not what is judged, though they use the library's headers too.
            if source in judged:
                # A cache of compilations would only fill up.
                self.commands[words[words.index("-o") + 1]] = words["ccache" in words[0]:], source
        listed = subprocess.run(["ninja", "-C", BUILD, "-t", "deps"], check=True, stdout=subprocess.PIPE, text=True).stdout
        self.users = {}
        for block in listed.split("\n\n"):
            lines = block.splitlines()
            output = lines[0].split(":")[0] if lines else ""
            if output in self.commands:
                for line in lines[1:]:
                    self.users.setdefault((BUILD / line.strip()).resolve(), []).append(output)
        self.reachable = reachable_tests(list(self.commands))
        self.link = {}
        for program in PROGRAMS:
            told = subprocess.run(["ninja", "-C", BUILD, "-t", "commands", program], check=True, stdout=subprocess.PIPE, text=True)
            last = told.stdout.strip().splitlines()[-1]
            self.link[program] = shlex.split(next(step for step in last.split(" && ") if " -o " in step))

    def objects(self, file, start):
        """What has to be compiled for a fault at start of file, what most likely shows it first: a few that name the
        function which it is in, narrow ones, then wide ones, then all the rest."""
        users = self.users.get(file.resolve(), [])
        function = re.search(r"(\w+)\(", file.read_text()[:start].rsplit("QUILLO_INLINE", 1)[-1])
        callers = [o for o in users if function and re.search(rf"\b{function[1]}\b", self.commands[o][1].read_text())]
        narrow, wide = [], []
        for target in sorted({output.split(".dir")[0] for output in users}):
            some = [output for output in callers or users if output.startswith(target + ".dir")][:3]
            (wide if "_avx" in target else narrow).extend(some)
        return [narrow, wide, [output for output in users if output not in narrow + wide]]

    def compile(self, output, file, faulty, target):
        command, source = self.commands[output]
        replaced = {str(source): str(faulty if source == file else source), output: str(target), output + ".d": str(target) + ".d"}
        command = [replaced.get(word, word) for word in command]
        return run([command[0], f"-I{SHADOW}", *command[1:]], cwd=BUILD).returncode == 0

    def try_fault(self, file, start, end, new):
        """Noticed by whom, 'survived', or None where it is no fault: it does not build, or changes no instruction."""
        shutil.rmtree(SHADOW, ignore_errors=True)
        text = file.read_text()
        faulty = SHADOW / file.relative_to(COPY)
        faulty.parent.mkdir(parents=True)
        faulty.write_text(text[:start] + new + text[end:])
        changed = {}
        for outputs in self.objects(file, start):
            before = len(changed)
            for output in outputs:
                target = SHADOW / f"{output.replace('/', '_')}.o"
                if not self.compile(output, file, faulty, target):
                    return None
                if target.read_bytes() != (BUILD / output).read_bytes():
                    changed[output] = target
            if len(changed) == before:
                continue
            outcome = self.test(changed)
            if outcome != "survived":
                return outcome
        return "survived" if changed else None

    def test(self, changed):
        tests = self.reachable.of(changed.keys())
        linked = set()
        for program, mode in STEPS:
            if program not in linked:
                command = list(self.link[program])
                command[command.index("-o") + 1] = str(SHADOW / program)
                first = next(i for i, word in enumerate(command) if word.endswith(".o"))
                if run([*command[:first], *changed.values(), *command[first:]], cwd=BUILD).returncode != 0:
                    return None
                linked.add(program)
            if not passes(SHADOW / program, mode, tests if program == "conversion_sweep" else "*"):
                return f"{program} {mode}"
        return "survived"


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
    shop = workshop()
    print(f"seed {arguments.seed}", flush=True)
    results = []
    faults = planted() if arguments.planted else drawn(arguments.count, random.Random(arguments.seed))
    for file, name, start, end, new in faults:
        where = describe(file, start, end, new)
        outcome = shop.try_fault(file, start, end, new)
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
