"""Which faults there are: small changes of the conversion library's and the plug-in converters' text."""

import pathlib
import re
from typing import NamedTuple


class Fault(NamedTuple):
    """The text from start to end of the file becomes new."""
    file: pathlib.Path
    name: str
    start: int
    end: int
    new: str

    def text(self):
        text = self.file.read_text()
        return text[:self.start] + self.new + text[self.end:]

    def where(self, root):
        text = self.file.read_text()
        number = text.count("\n", 0, self.start) + 1
        begin = text.rfind("\n", 0, self.start) + 1
        line_end = (text + "\n").index("\n", self.end)
        shown = f"{text[begin:self.start]}[{text[self.start:self.end]} -> {self.new}]{text[self.end:line_end]}"
        return f"{self.file.relative_to(root)}:{number}: {' '.join(shown.split())}"


# Results do not depend on these lines: when memory is fetched, from which size on it is streamed, from which on string
# instructions are used, which processor is there.
WITHOUT_INFLUENCE = re.compile(r"^\s*#|prefetch|ahead|streaming_from|fence|assert|widest|note_ran|by_string|bytes >= 256|restrict|cpuid|cached")
# Nor on these faults of a kind: what is aligned may be taken as if it were not, nothing has to be streamed, lines that
# only touch each other may go in either order, and a limit itself counts on either side of it. 32-bit words shifted
# right are never negative or masked after; 128 more or less is the same byte.
EQUIVALENT = {
    "true to false": r"run<processor::ssse3, ",
    "bit and to bit or": r"& 15\) == 0",
    "logical to arithmetic shift": r"friend vec shift_right_u32",
    "plus to minus": r"static_cast<unsigned char>\(\(weighted_sum<p, order>.*black_c\) >> 8",
    "less or equal to less": r"any_order\(\) const",
    "less to less or equal": r"any_order\(\) const|if \(width < 0\)|level < 0 \? 0",
    "greater to greater or equal": r"level > 255 \? 255",
}
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


def source_files(tree):
    files = sorted((tree / "lib/format_conversion").rglob("*"))
    files += sorted((tree / "Plugins/Plugins.AdobeCC.Transmit").glob("format_conversion*.cpp"))
    return [f for f in files if f.suffix in (".h", ".cpp")]


def all_faults(tree):
    found = []
    for file in source_files(tree):
        if file.name in SKIPPED_FILES:
            continue
        text = file.read_text()
        code = without_comments(text)
        for name, sites in FAULTS.items():
            for start, end, new in sites(code):
                begin = text.rfind("\n", 0, start) + 1
                line = text[begin:text.find("\n", end)]
                without_influence = WITHOUT_INFLUENCE.search(line) or re.search(EQUIVALENT.get(name, "$^"), line)
                if not without_influence and new != text[start:end]:
                    found.append(Fault(file, name, start, end, new))
    return found


def drawn(tree, generator):
    """All faults in random order, each kind in turn, so that the many numbers do not crowd out the rest."""
    by_kind = {}
    for fault in all_faults(tree):
        by_kind.setdefault(fault.name, []).append(fault)
    for kind in by_kind.values():
        generator.shuffle(kind)
    while by_kind:
        for name in list(by_kind):
            yield by_kind[name].pop()
            if not by_kind[name]:
                del by_kind[name]


def planted(tree):
    import planted as named
    for fault in named.FAULTS:
        file = tree / fault["file"]
        text = file.read_text()
        if text.count(fault["old"]) != 1:
            raise SystemExit(f"{fault['name']}: the place in {fault['file']} is not there any more; update planted.py")
        start = text.index(fault["old"])
        yield Fault(file, fault["name"], start, start + len(fault["old"]), fault["new"])
