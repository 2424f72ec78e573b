"""Faults put into the module on purpose, each of which the link or a static check must name.

planted_faults_test.py SOURCE BUILDS CLANG LD64: links the x86-64 module anew from what its build left behind.
"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

import static_checks as check

source, builds, clang, linker = sys.argv[1:5]
source, build = pathlib.Path(source), pathlib.Path(builds) / "x86_64"
PLUGIN = source / "Plugins/Plugins.AdobeCC.Transmit"
STUBS = source / "macos/stubs"
TARGET = "--target=x86_64-apple-macos10.15"


class PlantedFault(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.stubs = self.folder / "stubs"
        subprocess.run(["cp", "-r", STUBS, self.stubs], check=True)
        self.names = check.wanted_names(PLUGIN / "exports.txt")
        self.archives = [build / "Plugins/Plugins.AdobeCC.Transmit/libtransmit.a",
                         build / "lib/format_conversion/libformat_conversion.a"]

    def link(self, *extra, names=None, forced=True, objects=()):
        exports = self.folder / "exports"
        exports.write_text("\n".join(sorted(names or self.names)) + "\n")
        out = self.folder / "module"
        archives = [f"-Wl,-force_load,{a}" for a in self.archives] if forced else [str(a) for a in self.archives]
        command = [clang, TARGET, f"--ld-path={linker}", "-nostdlib", "-bundle", "-o", out, *objects, *archives,
                   build / "lib/math/libscale.a", build / "sender/open/libquillo.4.dylib",
                   f"-F{self.stubs}", self.stubs / "libc++.1.tbd", self.stubs / "libSystem.B.tbd",
                   "-framework", "CoreFoundation", "-framework", "CoreServices",
                   "-Wl,-platform_version,macos,10.15,14.0", f"-Wl,-exported_symbols_list,{exports}",
                   "-Wl,-rpath,@loader_path/../Frameworks,-rpath,@loader_path", "-Wl,-adhoc_codesign", *extra]
        done = subprocess.run(list(map(str, command)), capture_output=True, text=True)
        return out, done.returncode, done.stderr

    def linked(self, *extra, **how):
        out, code, errors = self.link(*extra, **how)
        self.assertEqual(code, 0, errors)
        return out

    def compiled(self, text):
        file = self.folder / "fault.cpp"
        file.write_text(text)
        subprocess.run([clang, TARGET, "-std=c++20", "-nostdinc++", "-O2", "-c", file, "-o", file.with_suffix(".o")], check=True)
        return file.with_suffix(".o")

    def test_without_a_fault_everything_passes(self):
        module = self.linked()
        check.exports(module, self.names)
        check.imports(module, "x86_64", STUBS)
        check.signature(module)
        check.unwind_records(module)
        for archive in self.archives:
            check.holds_all_of(module, archive)

    def test_a_name_too_few_in_the_export_list(self):
        module = self.linked(names=self.names - {"__Z3gcdxx"})
        with self.assertRaisesRegex(AssertionError, "missing .*__Z3gcdxx"):
            check.exports(module, self.names)

    def test_a_name_too_many_in_the_export_list(self):
        fault = self.compiled('extern "C" void quillo_stray() {}')
        module = self.linked(names=self.names | {"_quillo_stray"}, objects=[fault])
        with self.assertRaisesRegex(AssertionError, "too many .*_quillo_stray"):
            check.exports(module, self.names)

    def test_a_listed_name_that_is_hidden(self):
        hidden = "__ZN10Processing6Quillo7Plugins3Lib4math5scaleExii"
        module = self.linked(names=self.names | {hidden})
        with self.assertRaisesRegex(AssertionError, "missing .*5scaleExii"):
            check.exports(module, self.names | {hidden})

    def test_an_integer_type_that_is_mangled_otherwise_here(self):
        _, code, errors = self.link(names=self.names - {"__Z3gcdxx"} | {"__Z3gcdll"})
        self.assertNotEqual(code, 0)
        self.assertIn("__Z3gcdll", errors)

    def test_a_function_that_the_stub_lacks(self):
        stub = self.stubs / "CoreFoundation.framework/CoreFoundation.tbd"
        stub.write_text(stub.read_text().replace("_CFStringGetBytes", "_CFStringGetSomeBytes"))
        _, code, errors = self.link()
        self.assertNotEqual(code, 0)
        self.assertIn("_CFStringGetBytes", errors)

    def test_a_stub_that_promises_anothers_function(self):
        core_services = self.stubs / "CoreServices.framework/CoreServices.tbd"
        core_services.write_text(core_services.read_text().replace("_FSReadFork, ", ""))
        system = self.stubs / "libSystem.B.tbd"
        system.write_text(system.read_text().replace("- _abort\n", "- _abort\n      - _FSReadFork\n"))
        module = self.linked()
        with self.assertRaisesRegex(AssertionError, "_FSReadFork is bound to libSystem"):
            check.imports(module, "x86_64", STUBS)
        with self.assertRaisesRegex(AssertionError, "not bound to CoreServices"):
            check.binds(module, "_FS", "CoreServices")

    def test_dead_kernels_stripped(self):
        module = self.linked("-Wl,-dead_strip")
        with self.assertRaisesRegex(AssertionError, "are missing"):
            check.holds_all_of(module, self.archives[1])

    def test_archives_that_give_only_what_is_called(self):
        module = self.linked(forced=False)
        with self.assertRaisesRegex(AssertionError, "are missing"):
            check.holds_all_of(module, self.archives[1])

    def test_one_more_library(self):
        extra = self.folder / "extra.tbd"
        extra.write_text((STUBS / "libSystem.B.tbd").read_text().replace("libSystem.B", "libextra"))
        module = self.linked(extra, "-Wl,-needed_library," + str(extra))
        wanted = {check.SYSTEM, check.LIBCXX, check.CORE_FOUNDATION, check.CORE_SERVICES, check.SENDER}
        with self.assertRaisesRegex(AssertionError, "libextra"):
            check.libraries(module, wanted)

    def test_a_changed_byte_behind_the_signature(self):
        module = self.linked()
        data = bytearray(module.read_bytes())
        data[0x1800] ^= 1
        module.write_bytes(data)
        with self.assertRaisesRegex(AssertionError, "page 1 was changed"):
            check.signature(module)

    def test_no_signature(self):
        out, code, errors = self.link("-Wl,-no_adhoc_codesign")
        self.assertEqual(code, 0, errors)
        with self.assertRaisesRegex(AssertionError, "not signed"):
            check.signature(out)

    def test_a_thread_local_variable(self):
        fault = self.compiled("thread_local int stray = 1; int* quillo_stray() { return &stray; }")
        module = self.linked("-Wl,-U,__tlv_bootstrap", objects=[fault])
        with self.assertRaisesRegex(AssertionError, "__thread_vars"):
            check.sections(module)

    def test_an_instruction_of_a_newer_processor(self):
        fault = self.compiled('void quillo_stray(int* p) { asm volatile("vmovd %0, %%xmm0" : : "r"(*p) : "xmm0"); }')
        module = self.linked(objects=[fault])
        with self.assertRaisesRegex(AssertionError, "quillo_stray"):
            check.instructions(module, r"9processorE[12]E", r"^__Z\d+(convert_|composite)")

    def test_a_function_that_no_exception_can_pass(self):
        fault = self.compiled('''asm(".text\\n.globl _quillo_stray\\n_quillo_stray:\\n.cfi_startproc\\npushq %rbx\\n"
            ".cfi_def_cfa_offset 16\\nmovq %rsp, %rbx\\n.cfi_def_cfa %rbx, 16\\nandq $-64, %rsp\\nmovq %rbx, %rsp\\n"
            "popq %rbx\\nretq\\n.cfi_endproc\\n");''')
        module = self.linked(objects=[fault])
        with self.assertRaisesRegex(AssertionError, "_quillo_stray"):
            check.unwind_records(module)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
