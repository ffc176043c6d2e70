#!/usr/bin/env python3
"""Checks the text tables of the sources against tests/lint/language_keys.txt.

Usage: check_text_tables.py PROJECT_FOLDER

Every row of a src/**/*_texts.h must stand in the list of keys, with the same default and the same room. The language
files are checked against the same list, so a key that is misspelt in a table, which shows its default in every
language, is found here.
"""

import re
import sys
from pathlib import Path

# The section of a language file that a table's texts are read from.
SECTIONS = {
    "barcode_1d_texts.h": "1DCODE",
    "barcode_2d_texts.h": "2DCODE",
    "download_page_texts.h": "DOWNLOAD",
    "font_page_texts.h": "FONT",
    "operation_dialog_texts.h": "DOCUMENT",
    "operation_page_texts.h": "OPERATION",
    "print_density_texts.h": "GPD",
    "layout_page_texts.h": "LAYOUT",
    "message_texts.h": "MessageBox",
    "utility_page_texts.h": "UTILITY",
    "version_page_texts.h": "VERSION",
    "water_mark_page_texts.h": "WATERMARK",
}

LENGTHS = {
    "kShortCaption": 20,
    "kLongCaption": 50,
    "kNote": 100,
    "kNotice": 256,
    "kHelpText": 1024,
    "kMessageText": 1024,
}

LITERAL = r'"(?:[^"\\\n]|\\.)*"'
ROW = re.compile(
    r"\{\s*\w+\s*,\s*TEXT16\(\s*(?P<key>" + LITERAL + r")\s*\)\s*,"
    r"\s*TEXT16\(\s*(?P<default>" + LITERAL + r"(?:\s*" + LITERAL + r")*)\s*\)\s*,\s*(?P<length>\w+)\s*,?\s*\}"
)
ESCAPES = {"\\n": "\n", "\\t": "\t", '\\"': '"', "\\\\": "\\"}


class Report:
    def __init__(self) -> None:
        self.passed = 0
        self.failed = 0

    def check(self, good: bool, where: str, fault: str) -> None:
        if good:
            self.passed += 1
        else:
            self.failed += 1
            print(f"FAILED {where}: {fault}")


def without_comments(code: str) -> str:
    return re.sub(LITERAL + r"|//[^\n]*", lambda found: found[0] if found[0].startswith('"') else "", code)


def text_of(literals: str) -> str:
    """Adjacent literals as the compiler joins them; an escape that is not known stays, and differs."""
    joined = "".join(literal[1:-1] for literal in re.findall(LITERAL, literals))
    return re.sub(r"\\.", lambda found: ESCAPES.get(found[0], found[0]), joined)


def unquoted(text: str) -> str:
    return text[1:-1] if len(text) >= 2 and text[0] == text[-1] == '"' else text


def read_sentences(path: Path) -> dict:
    """{(section, key): text} of a language file."""
    sentences = {}
    section = ""
    for line in path.read_text(encoding="utf-16").splitlines():
        key, is_entry, text = line.partition("=")
        if line.startswith("["):
            section = line.strip("[] ")
        elif is_entry:
            sentences[section, key.strip()] = unquoted(text.strip())
    return sentences


def read_keys(path: Path) -> dict:
    """{(section, key): (length, default)}; a default of "-" is the English language file's own sentence."""
    sentences = read_sentences(path.parents[2] / "language" / "ENG_KVMR72.res")
    keys = {}
    for line in path.read_text(encoding="utf-8").splitlines():
        if line and not line.startswith("#"):
            section, key, length, default = line.split("\t")
            text = sentences.get((section, key), "") if default == "-" else unquoted(default)
            keys[section, key] = (length, text.replace("\\n", "\n"))
    return keys


def check_table(path: Path, keys: dict, report: Report) -> None:
    report.check(path.name in SECTIONS, path.name, "has no section in this check")
    section = SECTIONS.get(path.name, "")
    code = without_comments(path.read_text(encoding="utf-8"))
    rows = list(ROW.finditer(code))
    report.check(bool(rows), path.name, "holds no rows")
    # A row in another form would slip through.
    report.check(2 * len(rows) == code.count("TEXT16("), path.name, "holds texts that are not of a row's form")
    seen = set()
    for row in rows:
        key = text_of(row["key"])
        where = f"{path.name} line of {key}"
        report.check(key not in seen, where, "is there twice")
        seen.add(key)
        report.check((section, key) in keys, where, f"is no key of section {section}")
        if (section, key) not in keys:
            continue
        length, default = keys[section, key]
        actual = LENGTHS.get(row["length"])
        report.check(str(actual) == length, where, f"has room {row['length']} ({actual}), not {length}")
        text = text_of(row["default"])
        report.check(text == default, where, f"has the default '{text}', not '{default}'")


def check_lengths(header: Path, report: Report) -> None:
    code = header.read_text(encoding="utf-8")
    for name, length in LENGTHS.items():
        found = re.search(rf"constexpr std::size_t {name} = (\d+);", code)
        report.check(found is not None and int(found[1]) == length, f"{header.name} {name}", f"is not {length}")


def main() -> int:
    if len(sys.argv) != 2:
        print(__doc__)
        return 2
    project = Path(sys.argv[1])
    report = Report()
    keys = read_keys(project / "tests" / "lint" / "language_keys.txt")
    check_lengths(project / "src" / "language" / "text_entry.h", report)
    tables = sorted((project / "src").rglob("*_texts.h"))
    for path in tables:
        check_table(path, keys, report)
    for name in SECTIONS:
        report.check(name in {path.name for path in tables}, name, "is missing")
    print(f"{report.passed} passed, {report.failed} failed")
    return 1 if report.failed else 0


if __name__ == "__main__":
    sys.exit(main())
