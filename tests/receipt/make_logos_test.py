#!/usr/bin/python3
"""Tests of scripts/make-logos: the bitmaps are laid out in the plain way, the same each time, and small enough."""

import struct
import subprocess
import tempfile
import unittest
from pathlib import Path

from jobs import PROJECT

MAKE_LOGOS = PROJECT / "scripts" / "make-logos"
HEADERS = struct.Struct("<2sIHHIIiiHHIIiiII")
BLACK, WHITE = bytes(4), b"\xff\xff\xff\0"
# Width, height, bits a pixel, where the pixels begin, bytes a row.
LAYOUTS = {
    "photo.bmp": (288, 192, 24, 54, 864),
    "drawing.bmp": (200, 128, 8, 1078, 200),
    "text.bmp": (202, 66, 1, 62, 28),
}


class MakeLogos(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with tempfile.TemporaryDirectory() as folder:
            folders = [Path(folder) / name for name in ("once", "twice")]
            runs = [subprocess.Popen([MAKE_LOGOS, each]) for each in folders]
            if any([run.wait() for run in runs]):
                raise RuntimeError("scripts/make-logos failed")
            cls.files, cls.again = ({file.name: file.read_bytes() for file in each.iterdir()} for each in folders)

    def pixels(self, name: str) -> list[bytes]:
        """The rows, from the bottom."""
        width, height, bits, offset, row = LAYOUTS[name]
        file = self.files[name]
        return [file[at : at + (width * bits + 7) // 8] for at in range(offset, offset + row * height, row)]

    def test_same_bytes_each_time(self):
        self.assertEqual(set(self.files), set(self.again))
        for name, file in self.files.items():
            self.assertTrue(file == self.again[name], name)

    def test_headers(self):
        self.assertEqual(set(self.files), set(LAYOUTS))
        for name, (width, height, bits, offset, row) in LAYOUTS.items():
            with self.subTest(name):
                file = self.files[name]
                fields = HEADERS.unpack_from(file)
                size = offset + row * height
                self.assertEqual(fields[:10], (b"BM", size, 0, 0, offset, 40, width, height, 1, bits))
                self.assertEqual(fields[10:12], (0, row * height))  # not compressed
                self.assertEqual(len(file), size)

    def test_palettes(self):
        levels = b"".join(bytes((level, level, level, 0)) for level in range(256))
        self.assertEqual(self.files["drawing.bmp"][54:1078].hex(" ", 4), levels.hex(" ", 4))
        self.assertEqual(self.files["text.bmp"][54:62], BLACK + WHITE)

    def test_something_is_drawn(self):
        self.assertGreater(len(set(b"".join(self.pixels("photo.bmp")))), 240)
        # Paper around the drawing, its outlines, and shades between.
        drawing = b"".join(self.pixels("drawing.bmp"))
        self.assertEqual(drawing[:200], b"\xff" * 200)
        self.assertEqual((min(drawing), max(drawing)), (0, 255))
        self.assertGreater(len(set(drawing)), 100)
        white = sum(byte.bit_count() for row in self.pixels("text.bmp") for byte in row)
        self.assertGreater(202 * 66 - white, 1500)
        self.assertGreater(white, 202 * 66 // 2)

    def test_all_together_may_be_sent(self):
        for bits, offset in ((1, 62), (8, 1078)):
            sizes = (offset + (width * bits + 31) // 32 * 4 * height for width, height, _, _, _ in LAYOUTS.values())
            self.assertLess(sum(sizes), 98304, bits)

    def test_usage(self):
        run = subprocess.run([MAKE_LOGOS], capture_output=True, text=True, check=False)
        self.assertEqual((run.returncode, run.stdout), (2, ""))
        self.assertIn("scripts/make-logos FOLDER", run.stderr)


if __name__ == "__main__":
    unittest.main()
