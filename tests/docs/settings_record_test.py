#!/usr/bin/env python3
"""The byte map in docs/settings-record.md against src/devmode/oemdev.h: names, offsets, sizes and order.

Its ranges against what the tests of --show-record expect, and the table of numbers for the barcode fonts.
"""

import re
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent.parent
SHOW_RECORD = "tests/host/show_record_test.cpp"
LEAST = {"INT32_MIN": -(2**31)}
SIZES = {"std::uint8_t": 1, "std::int32_t": 4, "std::uint32_t": 4, "Char16": 2}
FIELD = re.compile(r"^\s+([\w:]+) (\w+)(?:\[(\w+)\])?;$", re.MULTILINE)


def read_structures():
    """Each structure of the header as [(name, offset, size)], the ends of a block included, and its size."""
    code = re.sub(r"//[^\n]*", "", (PROJECT / "src/devmode/oemdev.h").read_text(encoding="utf-8"))
    constants = dict(re.findall(r"constexpr std::\w+ (\w+) = (\d+);", code))
    structures = {}
    for name, body in re.findall(r"^struct (\w+) \{\n(.*?)^\};", code, re.MULTILINE | re.DOTALL):
        fields = []
        offset = 0
        widest = 1
        for kind, field, count in FIELD.findall(body):
            inner, size, alignment = structures.get(kind, (None, SIZES.get(kind), SIZES.get(kind)))
            offset += -offset % alignment
            widest = max(widest, alignment)
            total = size * int(constants.get(count, count or 1))
            if kind == "OemDevHeader":
                fields += [(f"{field}.{part}", offset + at, bytes_) for part, at, bytes_ in inner]
            else:
                fields.append((field, offset, total))
            offset += total
        structures[name] = (fields, offset + -offset % widest, widest)
    return structures


def read_tables():
    """The document's rows as [(name, offset, size)]: of the record, and of the arrays by name."""
    text = (PROJECT / "docs/settings-record.md").read_text(encoding="utf-8")
    tables = {"": []}
    array = ""
    for line in text.splitlines():
        heading = re.match(r"#+ (?:Each of `(\w+)`)?", line)
        if heading:
            array = heading[1] or ""
            tables.setdefault(array, [])
        row = re.match(r"\| (\+?)(\d+) \| (\d+) \| `([\w.]+)` \|", line)
        if row:
            assert bool(row[1]) == bool(array), line
            tables[array].append((row[4], int(row[2]), int(row[3])))
    arrays = re.findall(r"^\| `(\w+)` \| (\d+) \| (\d+) \| (\d+) \|$", text, re.MULTILINE)
    return tables, {name: tuple(map(int, numbers)) for name, *numbers in arrays}


class SettingsRecordTest(unittest.TestCase):
    def setUp(self):
        self.structures = read_structures()
        self.tables, self.arrays = read_tables()

    def test_header_is_understood(self):
        pinned = re.findall(
            r"PIN_OFFSET\((\w+), ([\w.]+), (\d+)\)", (PROJECT / "src/devmode/oemdev.h").read_text(encoding="utf-8")
        )
        self.assertGreater(len(pinned), 100)
        for structure, field, offset in pinned:
            found = [at for name, at, _ in self.structures[structure][0] if name == field]
            self.assertEqual(found, [int(offset)], field)
        self.assertEqual(self.structures["OEMDEV"][1], 1976)

    def test_record(self):
        fields = [field for field in self.structures["OEMDEV"][0] if field[0] not in self.arrays]
        self.assertEqual(self.tables[""], fields)

    def test_fonts(self):
        places = {name: (offset, size) for name, offset, size in self.structures["OEMDEV"][0]}
        self.assertEqual(sorted(self.arrays), ["Barcode1D", "Barcode2D"])
        for array, structure in (("Barcode1D", "BarcodeFont1D"), ("Barcode2D", "BarcodeFont2D")):
            fields, size, _ = self.structures[structure]
            offset, each, count = self.arrays[array]
            self.assertEqual(self.tables[array], fields)
            self.assertEqual((offset, each, each * count), (places[array][0], size, places[array][1]))


def read_rows():
    """The document's rows by name: (offset in the record, bytes, meaning, range); of fonts those of the first one."""
    text = (PROJECT / "docs/settings-record.md").read_text(encoding="utf-8")
    _, arrays = read_tables()
    rows = {}
    base = 0
    for line in text.splitlines():
        heading = re.match(r"#+ (?:Each of `(\w+)`)?", line)
        if heading:
            base = arrays[heading[1]][0] if heading[1] else 0
        row = re.match(r"\| \+?(\d+) \| (\d+) \| `([\w.]+)` \| (.*?) \| (.*?) \| .*? \|$", line)
        if row:
            rows[row[3]] = (base + int(row[1]), int(row[2]), row[4], row[5])
    return rows


def ends_of(text, size):
    """(least, most) of a range in words; None where it has no numbers."""
    ends = [int(number) for number in re.findall(r"\d+", text)]
    if re.fullmatch(r"\d+, \d+|\d+ to \d+|\d+ to \d+ typed, to \d+ with the arrows", text):
        return ends[0], ends[-1]
    if re.fullmatch(r"up to \d+", text):
        return LEAST["INT32_MIN"] if size == 4 else 0, ends[0]
    return None


def family(name):
    """One name for the fields of the four moments, of which the tests try some here and some there."""
    return re.sub(r"(Doc|Page)(Start|End)", "*", name)


class RangesTest(unittest.TestCase):
    def setUp(self):
        self.rows = read_rows()
        code = (PROJECT / SHOW_RECORD).read_text(encoding="utf-8")
        table = re.search(r"kRanges\[\] = \{(.*?)\n    \};", code, re.DOTALL)[1]
        tried = re.findall(r"\{(\d+), (\d), (-?\w+), (-?\d+)\}", table)
        self.assertEqual(len(tried), table.count("{"))
        self.tried = {
            int(offset): (int(size), int(LEAST.get(least, least)), int(most)) for offset, size, least, most in tried
        }

    def numbers_of_fonts(self):
        """{field: (least, most)} of src/printer/barcode_fonts.cpp."""
        code = (PROJECT / "src/printer/barcode_fonts.cpp").read_text(encoding="utf-8")
        named = dict(re.findall(r"NumberRange (k\w+) = \{(\d+, \d+)\};", code))
        boxes = re.findall(r"\{\{(?:\{(\d+, \d+)\}|(k\w+)), .*?&BarcodeFont[12]D::(\w+)", code)
        return {field: tuple(map(int, (ends or named[name]).split(", "))) for ends, name, field in boxes}

    def test_of_the_four_moments_are_the_same(self):
        told = {}
        for name, (_, size, meaning, ends) in self.rows.items():
            if family(name) != name:
                told.setdefault(family(name), set()).add((size, meaning, ends))
        self.assertEqual(len(told), 14)
        for name, each in told.items():
            self.assertEqual(len(each), 1, name)

    def test_ranges(self):
        by_offset = {offset: (name, size, ends) for name, (offset, size, _, ends) in self.rows.items()}
        # Fonts behind the first of their array hold the same.
        for first, each, count in read_tables()[1].values():
            by_offset.update(
                {
                    offset + number * each: field
                    for offset, field in list(by_offset.items())
                    if first <= offset < first + each
                    for number in range(1, count)
                }
            )
        known = set()
        for offset, (size, least, most) in self.tried.items():
            name, bytes_, ends = by_offset[offset]
            with self.subTest(field=name):
                self.assertEqual((bytes_, ends_of(ends, bytes_)), (size, (least, most)))
                known.add(family(name))
        for name, ends in self.numbers_of_fonts().items():
            with self.subTest(field=name):
                self.assertEqual(ends_of(self.rows[name][3], 1), ends)
                known.add(name)
        # Eight elements make the font's width.
        least, most = ends_of(self.rows["bElementWidth"][3], 1)
        self.assertEqual(ends_of(self.rows["dwFontWidth"][3], 4), (8 * least, 8 * most))
        # Of some lists only a number behind them is tried, with what is said of it.
        code = (PROJECT / SHOW_RECORD).read_text(encoding="utf-8")
        for name, most in re.findall(r'"(b\w+) \d+ not in the list \(0 to (\d+)\)', code):
            self.assertEqual(ends_of(self.rows[name][3], 1), (0, int(most)))
            known.add(family(name))
        # Nothing else has a range but the font's width and bytes that may be anything.
        told = {name: ends_of(ends, size) for name, (_, size, _, ends) in self.rows.items()}
        others = {family(name) for name, ends in told.items() if ends is not None and ends != (0, 255)} - known
        self.assertEqual(others, {"dwFontWidth"})

    def test_of_texts(self):
        # A unit is two bytes, the last one ends the text.
        texts = {name: (size, ends) for name, (_, size, _, ends) in self.rows.items() if ends.endswith(" units")}
        self.assertEqual(len(texts), 5)
        for name, (size, ends) in texts.items():
            self.assertEqual(ends, f"up to {size // 2 - 1} units", name)

    def test_segments_of_a_composite_symbol(self):
        code = (PROJECT / "src/printer/barcode_fonts.cpp").read_text(encoding="utf-8")
        least = re.search(r"kCompositeSegments = (\d+);", code)[1]
        _, _, meaning, ends = self.rows["bGs1SegmentCount"]
        self.assertEqual(re.findall(r"of a composite symbol (\d+) to (\d+)", meaning), [(least, ends.split()[-1])])

    def test_some_meanings(self):
        """Where a meaning has a word for a number, what --show-record says of that number has it too."""
        code = (PROJECT / SHOW_RECORD).read_text(encoding="utf-8")
        compared = set()
        for offset, value, shown in re.findall(r'\{(\d+), (\d+), "\w+", "\w+ \d+ (.*)"\}', code):
            for name, (at, _, meaning, _) in self.rows.items():
                word = re.search(rf"(?:^|[,:;] ){value} ([A-Za-z]+)", meaning)
                if at == int(offset) and word:
                    with self.subTest(field=name):
                        # Its beginning: "centred" is "Centered" there.
                        self.assertRegex(shown.lower(), rf"\b{word[1].lower()[:4]}")
                        compared.add(name)
        self.assertGreaterEqual(len(compared), 10)


if __name__ == "__main__":
    unittest.main()
