#!/usr/bin/env python3
"""Makes many fonts of one: the same font under names of its own, for measuring with many faces installed.

Usage: make_faces.py FONT.ttf COUNT FOLDER
"""

import pathlib
import struct
import sys

FAMILY = "Liberation Sans"  # as the font's own name records spell it


def main():
    font = pathlib.Path(sys.argv[1]).read_bytes()
    folder = pathlib.Path(sys.argv[3])
    folder.mkdir(parents=True, exist_ok=True)
    tables = struct.unpack(">H", font[4:6])[0]
    names = next(struct.unpack(">4sIII", font[12 + 16 * i : 28 + 16 * i]) for i in range(tables)
                 if font[12 + 16 * i : 16 + 16 * i] == b"name")
    start, length = names[2], names[3]
    for number in range(int(sys.argv[2])):
        face = f"Bench Face {number:04d}"
        assert len(face) == len(FAMILY)
        table = font[start : start + length]
        for encoding in ("utf-16-be", "latin-1"):
            table = table.replace(FAMILY.encode(encoding), face.encode(encoding))
            postscript = FAMILY.replace(" ", "").encode(encoding)
            table = table.replace(postscript, f"BenchFace{number:05d}".encode(encoding))
        (folder / f"face{number:04d}.ttf").write_bytes(font[:start] + table + font[start + length :])


if __name__ == "__main__":
    main()
