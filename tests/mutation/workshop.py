"""Compiles what a fault touches, links it before the faultless rest, so that nothing else is built again, and runs the
tests that it can reach."""

import json
import os
import pathlib
import re
import resource
import shlex
import shutil
import subprocess
import tempfile

from faults import source_files

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "mutation"
COPY = WORK / "tree"
BUILD = WORK / "build"
SHADOW = WORK / "shadow"
FAULTLESS = WORK / "faultless"
PROGRAMS = ["conversion_examples", "black_alpha", "conversion_sweep"]
# Program and QUILLO_SWEEP, what notices most for the least time first. The last is for faults that all else has missed.
STEPS = [("conversion_examples", "quick"), ("black_alpha", "quick"), ("conversion_sweep", "reduced"), ("conversion_sweep", "quick")]
# A fault that makes a test hang is noticed as well. Seconds of the processor's time, many times what is needed: the
# machine may have other things to do.
LIMITS = {"conversion_examples": 30, "black_alpha": 30, "conversion_sweep": 300}


def run(command, seconds=600, **options):
    """The output, or None when it failed or took too long."""
    def limited():
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", preexec_fn=limited, **options)
    return done.stdout if done.returncode == 0 else None


def passes(program, mode, tests="*"):
    command = [program, "--gtest_brief=1", "--gtest_fail_fast", f"--gtest_filter={tests}"]
    return run(command, LIMITS[program.name], env={**os.environ, "QUILLO_SWEEP": mode}) is not None


def prepare():
    """The faultless tree: built and tested once, built again only where it has changed since."""
    shutil.rmtree(SHADOW, ignore_errors=True)
    SHADOW.mkdir(parents=True)
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
    if run(["cmake", "--build", BUILD, "--target", *PROGRAMS], 3600) is None:
        raise SystemExit("the faultless tree does not build")
    for program, mode in STEPS:
        if not passes(next(p for p in BUILD.rglob(program) if p.is_file()), mode):
            raise SystemExit(f"the faultless tree does not pass {program}")
    FAULTLESS.touch()


def processors_that_are_not_here():
    """As builds of the kernel bodies end with: what these hold cannot be tested."""
    flags = set(re.findall(r"\w+", pathlib.Path("/proc/cpuinfo").read_text()))
    needed = {"_avx2": {"avx2"}, "_avx512": {"avx2", "avx512f", "avx512bw", "avx512vl", "avx512_vbmi", "avx512_vnni"}}
    return tuple(name for name, features in needed.items() if not features <= flags)


class ReachableTests:
    """Which tests of the sweep run code of an object at all: those of the front ends and kernels whose own object needs
    it."""

    def __init__(self, objects):
        defined, needed = {}, {}
        listed = subprocess.run(["nm", "-A", "-P", *objects], cwd=BUILD, check=True, stdout=subprocess.PIPE, text=True).stdout
        for line in listed.splitlines():
            place, symbol, kind = line.split()[:3]
            output = place.rstrip(":")
            if kind in "Uwv":
                needed.setdefault(output, set()).add(symbol)
            else:
                defined.setdefault(symbol, []).append(output)
        self.names = {}
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
        return ":".join(sorted(names))


class Workshop:
    def __init__(self):
        self.commands = {}
        absent = processors_that_are_not_here()
        judged = set(source_files(COPY))
        for entry in json.loads((BUILD / "compile_commands.json").read_text()):
            words = shlex.split(entry["command"])
            output = words[words.index("-o") + 1]
            source = pathlib.Path(entry["file"])
            # Tests, references and programs are not what is judged, though they use the library's headers too.
            if source in judged and not output.split(".dir/")[0].endswith(absent):
                # A cache of compilations would only fill up.
                self.commands[output] = words["ccache" in words[0]:], source
        listed = subprocess.run(["ninja", "-C", BUILD, "-t", "deps"], check=True, stdout=subprocess.PIPE, text=True).stdout
        self.users = {}
        for block in listed.split("\n\n"):
            lines = block.splitlines()
            output = lines[0].split(":")[0] if lines else ""
            if output in self.commands:
                for line in lines[1:]:
                    self.users.setdefault((BUILD / line.strip()).resolve(), []).append(output)
        self.reachable = ReachableTests(list(self.commands))
        self.link = {}
        for program in PROGRAMS:
            told = subprocess.run(["ninja", "-C", BUILD, "-t", "commands", program], check=True, stdout=subprocess.PIPE, text=True)
            last = told.stdout.strip().splitlines()[-1]
            self.link[program] = shlex.split(next(step for step in last.split(" && ") if " -o " in step))

    def objects(self, fault):
        """What has to be compiled for a fault, in the order in which it most likely shows for the least time: one object
        of each build that names the function which the fault is in, then all the rest."""
        users = self.users.get(fault.file.resolve(), [])
        function = re.search(r"(\w+)\(", fault.file.read_text()[:fault.start].rsplit("QUILLO_INLINE", 1)[-1])
        callers = [o for o in users if function and re.search(rf"\b{function[1]}\b", self.commands[o][1].read_text())]
        first = []
        for target in sorted({output.split(".dir/")[0] for output in users}):
            first += [output for output in callers or users if output.split(".dir/")[0] == target][:1]
        return first, [output for output in users if output not in first]

    def compile(self, output, fault, faulty, target):
        command, source = self.commands[output]
        replaced = {str(source): str(faulty if source == fault.file else source), output: str(target), output + ".d": str(target) + ".d"}
        command = [replaced.get(word, word) for word in command]
        return run([command[0], f"-I{target.parent}", *command[1:]], cwd=BUILD) is not None

    def try_fault(self, fault):
        """Noticed by whom, 'survived', or None where it is no fault: it does not build, or changes no instruction."""
        with tempfile.TemporaryDirectory(dir=SHADOW) as folder:
            shadow = pathlib.Path(folder)
            faulty = shadow / fault.file.relative_to(COPY)
            faulty.parent.mkdir(parents=True)
            faulty.write_text(fault.text())
            changed = {}
            first, rest = self.objects(fault)
            for outputs, steps in [(first, STEPS[:-1]), (rest, STEPS)]:
                for output in outputs:
                    target = shadow / f"{output.replace('/', '_')}.o"
                    if not self.compile(output, fault, faulty, target):
                        return None
                    if target.read_bytes() != (BUILD / output).read_bytes():
                        changed[output] = target
                if changed:
                    outcome = self.test(changed, steps, shadow)
                    if outcome != "survived":
                        return outcome
            return "survived" if changed else None

    def test(self, changed, steps, shadow):
        tests = self.reachable.of(changed.keys())
        linked = set()
        for program, mode in steps:
            if program == "conversion_sweep" and not tests:
                continue
            if program not in linked:
                command = list(self.link[program])
                command[command.index("-o") + 1] = str(shadow / program)
                first = next(i for i, word in enumerate(command) if word.endswith(".o"))
                if run([*command[:first], *changed.values(), *command[first:]], cwd=BUILD) is None:
                    return None
                linked.add(program)
            if not passes(shadow / program, mode, tests if program == "conversion_sweep" else "*"):
                return f"{program} {mode}"
        return "survived"
