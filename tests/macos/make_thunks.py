"""Assembly in which every conversion function of a built macOS module, and on x86-64 every function
outside a namespace, is a jump into that module.

make_thunks.py ARCH MODULE OUT: tests that link the result instead of the conversion library run the module's code, and
fail to link when the module lacks a function. thunks.cpp fills the slots.
"""
import pathlib
import re
import subprocess
import sys

import static_checks as check

OURS = re.compile(r"__ZNK?10Processing5FXlib17format_conversion|__Z\d+(convert_|composite)")


def functions(module, arch):
    lines = check.run("nm", "-U", f"--arch={arch}", module).splitlines()
    names = {fields[2] for fields in map(str.split, lines) if len(fields) == 3 and fields[1] in "tT"}
    wanted = {name for name in names if OURS.match(name) and "_GLOBAL__N_" not in name}
    if arch == "x86_64":
        wanted |= {name for name in names if re.match(r"__Z\d", name)}
    return sorted(name[1:] for name in wanted)


def argument_sizes(demangled):
    """Bytes of each argument, of a function whose arguments are pointers and small numbers."""
    depth, start, inside = 0, None, demangled.rindex(")")
    for i in range(inside, -1, -1):
        depth += {")": 1, "(": -1}.get(demangled[i], 0)
        if depth == 0:
            start = i + 1
            break
    given = demangled[start:inside]
    sizes = []
    for text in filter(None, given.split(", ")):
        sizes.append(8 if text.endswith(("*", "&")) else 1 if text == "bool" else 4)
    return sizes


def thunk_x86_64(slot, _):
    return [f"    jmp *{slot}(%rip)"]


def thunk_arm64(slot, sizes):
    """Beyond eight arguments Linux gives each a slot of eight bytes, Apple only the room it needs."""
    load = [f"    adrp x16, {slot}", f"    ldr x16, [x16, :lo12:{slot}]"]
    if len(sizes) <= 9:
        return load + ["    br x16"]
    moves, at = [], 0
    for i, size in enumerate(sizes[8:]):
        at = -(-at // size) * size
        register, store = {8: ("x17", "str"), 4: ("w17", "str"), 1: ("w17", "strb")}[size]
        moves += [f"    ldr {register}, [x29, #{16 + 8 * i}]", f"    {store} {register}, [sp, #{at}]"]
        at += size
    room = -(-at // 16) * 16
    return (["    stp x29, x30, [sp, #-16]!", "    mov x29, sp", f"    sub sp, sp, #{room}"] + moves + load +
            ["    blr x16", "    mov sp, x29", "    ldp x29, x30, [sp], #16", "    ret"])


def main():
    arch, module, out = sys.argv[1:]
    names = functions(module, arch)
    if not names:
        sys.exit(f"{module} has no conversion functions")
    demangled = subprocess.run(["c++filt"], input="\n".join(names), capture_output=True, text=True, check=True)
    make = {"x86_64": thunk_x86_64, "arm64": thunk_arm64}[arch]
    text = [".text"]
    for i, (name, readable) in enumerate(zip(names, demangled.stdout.splitlines())):
        text += [f".globl {name}", f".type {name}, %function", f"{name}:"] + make(f"slot_{i}", argument_sizes(readable))
    text += [".data", ".balign 8"] + [f"slot_{i}: .quad 0" for i in range(len(names))]
    text += [".section .rodata"] + [f"name_{i}: .asciz \"{name}\"" for i, name in enumerate(names)]
    text += [".data", ".balign 8", ".globl quillo_thunks", "quillo_thunks:"]
    text += [f"    .quad name_{i}, slot_{i}" for i in range(len(names))] + ["    .quad 0, 0"]
    text += ['.section .note.GNU-stack,"",%progbits', ""]
    pathlib.Path(out).write_text("\n".join(text))


main()
