#!/usr/bin/env python3
"""The byte map in docs/settings-record.md against src/devmode/oemdev.h: names, offsets, sizes and order."""

import re
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent.parent
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


if __name__ == "__main__":
    unittest.main()
