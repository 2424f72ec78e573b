"""The finished bundle, looked at from outside: bundle_test.py BUNDLE SUBBUILDS SOURCE VERSION."""
import pathlib
import sys
import tempfile
import unittest

import static_checks as check

bundle, builds, source, version = sys.argv[1:5]
bundle, builds, source = pathlib.Path(bundle), pathlib.Path(builds), pathlib.Path(source)
slices = tempfile.TemporaryDirectory()
PLUGIN = source / "Plugins/Plugins.AdobeCC.Transmit"


class Slice:
    """The same questions for each processor's slice of the module and of the sender library."""

    def setUp(self):
        contents = bundle / "Contents"
        self.module = check.thin(contents / "MacOS/Plugins.AdobeCC.Transmit", self.arch, slices.name)
        self.sender = check.thin(contents / "Frameworks/libquillo.4.dylib", self.arch, slices.name)
        self.both = (self.module, self.sender)
        self.archives = builds / self.arch

    def test_header(self):
        check.header(self.module, self.arch, "BUNDLE")
        check.header(self.sender, self.arch, "DYLIB")

    def test_exports_are_the_list(self):
        check.exports(self.module, check.wanted_names(PLUGIN / "exports.txt"))
        check.exports(self.sender, check.wanted_names(source / "sender/open/exports.txt"))

    def test_libraries(self):
        system = {check.SYSTEM, check.LIBCXX}
        check.libraries(self.module, system | {check.CORE_FOUNDATION, check.CORE_SERVICES, check.SENDER})
        check.libraries(self.sender, system, install_name=check.SENDER)

    def test_run_paths(self):
        check.run_paths(self.module, ["@loader_path/../Frameworks", "@loader_path"])
        check.run_paths(self.sender, [])

    def test_minimum_system(self):
        for binary in self.both:
            check.build_version(binary, self.arch)

    def test_imports_come_from_their_libraries(self):
        for binary in self.both:
            check.imports(binary, self.arch, source / "macos/stubs")
        check.binds(self.module, "_CF", "CoreFoundation")
        check.binds(self.module, "_FS", "CoreServices")
        check.binds(self.module, "_Quillolib_send_", "libquillo")
        check.binds(self.module, "_system", "libSystem")

    def test_sections(self):
        for binary in self.both:
            check.sections(binary)

    def test_no_build_path_inside(self):
        for binary in self.both:
            check.no_build_paths(binary, str(source), str(builds))

    def test_signature(self):
        for binary in self.both:
            check.signature(binary)

    def test_every_function_of_the_libraries_is_inside(self):
        count = check.holds_all_of(self.module, self.archives / "lib/format_conversion/libformat_conversion.a")
        self.assertGreater(count, 20)
        check.holds_all_of(self.module, self.archives / "Plugins/Plugins.AdobeCC.Transmit/libtransmit.a")


class OnX86(Slice, unittest.TestCase):
    arch = "x86_64"

    def test_every_function_can_be_unwound(self):
        for binary in self.both:
            check.unwind_records(binary)

    def test_wide_instructions_only_in_the_variants(self):
        # A variant's processor is part of its functions' types: 1 is AVX2, 2 is AVX-512.
        variants = r"9processorE[12]E"
        wide = check.instructions(self.module, may_be_wide=variants, may_be_newer=r"^__Z\d+(convert_|composite)")
        self.assertTrue(wide, "no wide variant is inside")
        check.instructions(self.sender, may_be_wide=r"(?!)", may_be_newer=r"(?!)")

    def test_vector_instructions_are_used(self):
        check.has_instructions(self.module, "pshufb", "movntdq")


class OnArm(Slice, unittest.TestCase):
    arch = "arm64"


class Whole(unittest.TestCase):
    def test_architectures(self):
        for binary in ("MacOS/Plugins.AdobeCC.Transmit", "Frameworks/libquillo.4.dylib"):
            self.assertEqual(check.architectures(bundle / "Contents" / binary), ["x86_64", "arm64"])

    def test_information(self):
        check.info_plist(bundle, version)

    def test_nothing_else_is_inside(self):
        files = {str(path.relative_to(bundle)) for path in bundle.rglob("*") if path.is_file()}
        self.assertEqual(files, {"Contents/Info.plist", "Contents/MacOS/Plugins.AdobeCC.Transmit",
                                 "Contents/Frameworks/libquillo.4.dylib"})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=1)
