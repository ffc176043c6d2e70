#!/usr/bin/python3
"""Tests of receipt/show as a person starts it: what it prints, what it writes, how it ends."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

from jobs import (
    CLOSE,
    DOTS_8_X_9,
    DOTS_10_X_8,
    GREY_5_X_3,
    GREY_16_X_1,
    JOBS,
    LEVELS_5_X_3,
    LEVELS_16_X_1,
    LOGO_8_X_9,
    LOGO_10_X_8,
    NINE_LOGOS,
    OPEN,
    PROJECT,
    dots,
    grey_logos,
    hexed,
    joined,
    levels,
    linear,
    logos,
)
from PIL import Image

from receipt import readers

SHOW = PROJECT / "receipt" / "show"
ZINT = ["zint", "-b", "QRCODE", "--scale=4", "--border=8"]
# Readers that find nothing, and one that finds another number.
BLIND = {
    "zbarimg": """echo "<source href='$5'>"; echo "</source>"; exit 4""",
    "ZXingReader": "echo No barcode found",
    "node": "echo '[]'",
}
WRONG = """echo "<source href='$5'><symbol type='EAN-8'><data><![CDATA[12345670]]></data></symbol></source>" """


class Show(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.job = self.folder / "job.prn"
        self.png = self.folder / "paper.png"

    def show(self, job: bytes, *options: str, **environment: str) -> subprocess.CompletedProcess:
        self.job.write_bytes(job)
        return subprocess.run(
            [SHOW, self.job, *options],
            capture_output=True,
            text=True,
            check=False,
            cwd=self.folder,
            env={**os.environ, **environment},
        )

    def test_annotated_bytes(self):
        run = self.show(joined(linear("03", hexed("9638507"), position="02")))
        self.assertEqual(run.stderr, "")
        self.assertEqual(
            [line.split("  ", 1)[0] + "|" + " ".join(line.split()[1:]) for line in run.stdout.splitlines()],
            [
                "0000|1D 66 00 text of barcodes in font A",
                "0003|1D 48 02 text of barcodes: below the bars",
                "0006|1D 77 02 barcode module width 2 dots",
                "0009|1D 68 64 barcode height 100 dots",
                '000C|1D 6B 03 39 36 33 38 35 30 37 00 EAN-8: "9638507"',
                "0017|0A line feed",
                "0018|1D 56 42 00 feed to the cutter and 0 dots, cut",
            ],
        )
        self.assertEqual(run.returncode, 0)
        self.assertFalse(self.png.exists())

    def test_long_data_is_shortened(self):
        run = self.show(joined([OPEN, "1C 71 01", "04 00 01 00" + "AA" * 32, "0A", CLOSE]))
        line = run.stdout.splitlines()[2]
        self.assertEqual(
            " ".join(line.split()),
            "0007 04 00 01 00 AA AA AA AA AA AA AA AA AA AA + 22 bytes logo 1 of 1: 32 x 8 dots, 32 bytes of raster",
        )

    def test_fault(self):
        run = self.show(joined(["1D 66 00", "1D 99"]) + joined(JOBS["EAN-8"]), "--png", str(self.png))
        lines = run.stdout.splitlines()
        self.assertEqual(len(lines), 2)
        self.assertEqual(lines[1], "ERROR 0004: 99 after 1D is no command")
        self.assertEqual(run.returncode, 1)
        self.assertTrue(self.png.exists())

    def test_picture(self):
        run = self.show(joined(JOBS["EAN-8"]), "--png", str(self.png))
        self.assertEqual(run.returncode, 0, run.stderr)
        with Image.open(self.png) as image:
            self.assertEqual((image.format, image.mode, image.size), ("PNG", "L", (567, 269)))
            self.assertEqual([round(value) for value in image.info["dpi"]], [180, 180])

    def test_symbol_wider_than_the_paper(self):
        run = self.show(joined(linear("02", hexed("590123412345"), width="06")), "--png", str(self.png), "--scan")
        self.assertIn("FAILED 000C: the printer prints nothing: EAN-13: the symbol is 570 dots wide", run.stdout)
        self.assertEqual(run.returncode, 3)
        self.assertTrue(self.png.exists())

    def test_refused_data(self):
        run = self.show(joined(linear("05", hexed("123"))))
        self.assertIn("FAILED 000C: the printer prints nothing: ITF: 3 digits: pairs are needed", run.stdout)
        self.assertEqual(run.returncode, 3)

    def test_words(self):
        run = self.show(joined(linear("03", hexed("9638507"), position="03")), "--text")
        self.assertEqual(
            run.stdout.splitlines()[7:],
            [
                "paper 567 x 317 dots",
                'EAN-8 134 x 100 dots at 28, 48: "96385074", text "96385074" 2 times',
                "cut at 292",
            ],
        )

    def test_scan(self):
        run = self.show(joined(JOBS["EAN-13"]), "--scan")
        self.assertEqual(
            run.stdout.splitlines()[7:],
            [
                '000C: EAN-13 "5901234123457"',
                "      zbar        reads it",
                "      ZXing       reads it",
                "      zxing-wasm  reads it",
            ],
        )
        self.assertEqual(run.returncode, 0)

    def test_scan_where_one_reader_reads(self):
        run = self.show(joined(JOBS["DataBar Limited"]), "--scan")
        self.assertEqual(
            [line.split(None, 1)[1] for line in run.stdout.splitlines()[-3:]],
            ["does not read this symbology", "does not read this symbology", "reads it"],
        )
        self.assertEqual(run.returncode, 0)

    def scan_with(self, **programs: str) -> subprocess.CompletedProcess:
        """Readers that are replaced by lines of shell."""
        folder = self.folder / "bin"
        folder.mkdir()
        for name, line in programs.items():
            (folder / name).write_text(f"#!/bin/sh\n{line}\n")
            (folder / name).chmod(0o755)
        return self.show(joined(JOBS["EAN-8"]), "--scan", PATH=f"{folder}:{os.environ['PATH']}")

    def verdicts(self, run: subprocess.CompletedProcess) -> list[str]:
        return [line.split(None, 1)[1] for line in run.stdout.splitlines()[-3:]]

    def test_scan_that_nobody_reads(self):
        run = self.scan_with(**BLIND)
        self.assertEqual(self.verdicts(run), ["finds nothing"] * 3, run.stderr)
        self.assertEqual(run.returncode, 4)

    def test_scan_that_one_reads_wrongly(self):
        run = self.scan_with(zbarimg=WRONG)
        self.assertEqual(self.verdicts(run), ['READS EAN-8 "12345670"', "reads it", "reads it"], run.stderr)
        self.assertEqual(run.returncode, 4)

    def test_reader_that_fails_is_an_error(self):
        run = self.scan_with(ZXingReader="echo broken >&2; exit 1")
        self.assertEqual((run.returncode, run.stderr), (2, "receipt/show: ZXingReader failed: broken\n"))
        shutil.rmtree(self.folder / "bin")
        run = self.scan_with(zbarimg="echo broken >&2; exit 2")
        self.assertEqual((run.returncode, run.stderr), (2, "receipt/show: zbarimg failed: broken\n"))

    def test_document(self):
        self.assertEqual(self.show(joined(JOBS["EAN-8"]), "--document", "Barcode").returncode, 0)
        run = self.show(joined(JOBS["EAN-8"]), "--document", "LOGO")
        self.assertIn('ERROR 000C: EAN-8: "9638507": not in a job that is called "LOGO"', run.stdout)
        self.assertEqual(run.returncode, 1)
        self.assertEqual(self.show(joined(JOBS["EAN-8"]), "--document", "other").returncode, 2)

    def test_download(self):
        source = self.folder / "font.zk"
        source.write_bytes(bytes(range(100)))
        options = ("--document", "FIRMWARE", "--source", str(source))
        run = self.show(bytes(range(100)), *options)
        self.assertIn("a file for the printer, 100 bytes, passed on unchanged", run.stdout)
        self.assertEqual(run.returncode, 0)
        for job, fault in (
            (bytes(range(99)), "ERROR 0063: the job has 99 bytes, the file 100"),
            (bytes(range(101)), "ERROR 0064: the job has 101 bytes, the file 100"),
            (bytes(range(50)) + bytes(50), "ERROR 0032: 00 where the file has 32"),
        ):
            run = self.show(job, *options)
            self.assertIn(fault, run.stdout)
            self.assertEqual(run.returncode, 1)
        self.assertEqual(self.show(b"", "--source", str(source)).returncode, 2)

    def test_missing_file(self):
        run = subprocess.run([SHOW, self.folder / "none.prn"], capture_output=True, text=True, check=False)
        self.assertEqual(run.returncode, 2)
        self.assertIn("none.prn", run.stderr)

    def test_missing_programs_are_errors(self):
        job = joined(JOBS["EAN-8"])
        run = self.show(job, PATH=str(self.folder))
        self.assertEqual((run.returncode, run.stderr), (2, "receipt/show: zint is not installed\n"))
        programs = {"zint": "zint", "zbarimg": "zbar-tools", "ZXingReader": "zxing-cpp-tools", "node": "nodejs"}
        for place, missing in enumerate(programs):
            if place == 0:
                continue
            folder = self.folder / missing
            folder.mkdir()
            for program in programs:
                if program != missing:
                    (folder / program).symlink_to(shutil.which(program))
            run = self.show(job, "--scan", PATH=str(folder))
            expected = f"receipt/show: {missing} is not installed ({programs[missing]})\n"
            self.assertEqual((run.returncode, run.stderr), (2, expected))

    def test_missing_module_is_an_error(self):
        run = self.show(joined(JOBS["EAN-8"]), "--scan", RECEIPT_MODULES=str(self.folder))
        self.assertEqual(run.returncode, 2)
        self.assertIn("zxing-wasm is not in", run.stderr)
        module = self.folder / "node_modules" / "zxing-wasm"
        module.mkdir(parents=True)
        run = self.show(joined(JOBS["EAN-8"]), "--scan", RECEIPT_MODULES=str(self.folder))
        self.assertEqual(run.returncode, 2)
        self.assertIn("zxing-wasm failed", run.stderr)

    def stored(self, folder: Path) -> dict[str, tuple[str, tuple[int, int], bytes]]:
        """The folder's files: name, and of the picture its kind, size and dots."""
        found = {}
        for file in folder.iterdir():
            with Image.open(file) as image:
                self.assertEqual(image.format, "PNG")
                found[file.name] = (image.mode, image.size, image.convert("L").tobytes())
        return found

    def test_logos(self):
        folder = self.folder / "new" / "logos"
        first, second = ("1", (32, 8), dots(DOTS_10_X_8, 32)), ("1", (32, 16), dots(DOTS_8_X_9, 32))
        run = self.show(joined(logos(LOGO_10_X_8, LOGO_8_X_9)), "--document", "LOGO", "--logos", str(folder))
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        self.assertEqual(self.stored(folder), {"logo-1.png": first, "logo-2.png": second})

    def test_grey_logos(self):
        folder = self.folder / "logos"
        run = self.show(joined(grey_logos(GREY_5_X_3, GREY_16_X_1)), "--logos", str(folder))
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        first, second = ("L", (8, 4), levels(LEVELS_5_X_3, 8)), ("L", (16, 2), levels(LEVELS_16_X_1, 16))
        self.assertEqual(self.stored(folder), {"logo-1.png": first, "logo-2.png": second})

    def test_logo_wider_than_the_paper_is_written_whole(self):
        run = self.show(joined(logos("80 00 01 00" + "FF 00" * 512)), "--logos", str(self.folder / "logos"))
        self.assertEqual(run.returncode, 0)
        expected = ("1", (1024, 8), dots(["#." * 512] * 8, 1024))
        self.assertEqual(self.stored(self.folder / "logos"), {"logo-1.png": expected})

    def test_logos_of_an_earlier_job_go(self):
        folder = self.folder / "logos"
        self.show(joined(logos(*NINE_LOGOS)), "--logos", str(folder))
        nine = self.stored(folder)
        self.assertEqual(sorted(nine), [f"logo-{number}.png" for number in range(1, 10)])
        for number in range(1, 10):
            self.assertEqual(nine[f"logo-{number}.png"], ("1", (32, 8), dots(["#" * number] * 8, 32)))
        self.show(joined(logos(*NINE_LOGOS[3:5])), "--logos", str(folder))
        self.assertEqual(self.stored(folder), {"logo-1.png": nine["logo-4.png"], "logo-2.png": nine["logo-5.png"]})
        self.assertEqual(self.show(joined(JOBS["clear logos"]), "--logos", str(folder)).returncode, 0)
        self.assertEqual(self.stored(folder), {})

    def test_job_that_ends_between_its_logos(self):
        job = joined(logos(LOGO_10_X_8, LOGO_8_X_9)[:3])
        run = self.show(job, "--document", "LOGO", "--png", str(self.png), "--logos", str(self.folder / "logos"))
        self.assertEqual((run.returncode, run.stderr), (1, ""))
        self.assertEqual(
            run.stdout.splitlines()[-1],
            "ERROR 002B: the job ends with 1 of 2 logos: a printer takes what comes next for the others",
        )
        self.assertEqual(self.stored(self.folder / "logos"), {"logo-1.png": ("1", (32, 8), dots(DOTS_10_X_8, 32))})
        self.assertTrue(self.png.exists())

    def test_logos_in_words(self):
        run = self.show(joined(logos(LOGO_8_X_9, "80 00 02 00" + "FF" * 2048)), "--text")
        # Under frames of two lines each: 24 + 51, and 16 and 51 more; then 7 rows, a line and the margin.
        self.assertEqual(
            run.stdout.splitlines()[-3:],
            [
                "paper 567 x 203 dots",
                "logo of 32 x 16 dots at 28, 75",
                "logo of 1024 x 16 dots at 28, 142, shown 510 x 7",
            ],
        )

    def test_folder_of_logos_that_cannot_be_made(self):
        run = self.show(joined(logos(LOGO_10_X_8)), "--logos", str(self.job))
        self.assertEqual(run.returncode, 2)
        self.assertIn("receipt/show: ", run.stderr)

    def test_help(self):
        run = subprocess.run([SHOW, "--help"], capture_output=True, text=True, check=False)
        self.assertEqual(run.returncode, 0)
        for option in ("--document", "--source", "--png", "--logos", "--scan", "--text", "Exit codes"):
            self.assertIn(option, run.stdout)

    def test_paper_that_is_too_long(self):
        job = bytes.fromhex("0A") + bytes.fromhex("1D5642FF") * 400
        run = self.show(job, "--png", str(self.png))
        self.assertEqual(run.returncode, 1, run.stdout + run.stderr)
        self.assertIn("the paper is longer than 100000 rows: nothing after it is shown", run.stdout)

    def test_nothing_is_listed_behind_the_end_of_the_paper(self):
        # 24 rows and 30 for each line feed: the 3333rd ends at row 100 014.
        run = self.show(b"\x0a" * 3_000_000)
        self.assertEqual(run.returncode, 1, run.stderr)
        self.assertEqual(
            run.stdout.splitlines(),
            [f"{offset:04X}  0A{'line feed':>66}" for offset in range(3333)]
            + ["FAILED 0D04: the paper is longer than 100000 rows: nothing after it is shown"],
        )

    def test_settings_without_end(self):
        run = self.show(bytes.fromhex("1D 66 00") * 1_000_000, "--text")
        lines = run.stdout.splitlines()
        self.assertEqual(run.returncode, 1, run.stderr)
        # The one that is too many begins at byte 60 000.
        self.assertTrue(lines[20_000].startswith("EA60  1D 66 00 "), lines[20_000])
        self.assertEqual(
            lines[20_001], "FAILED EA60: the job has more than 20000 commands: nothing after it is shown"
        )
        # 24 rows above and below a framed line of two heights of 17.
        self.assertEqual(lines[20_002:], ["paper 567 x 99 dots"])

    def test_job_that_is_too_large(self):
        run = self.show(bytes(4 * 1024 * 1024 + 1))
        self.assertEqual(run.returncode, 1)
        self.assertEqual(run.stdout, "ERROR the job has 4194305 bytes: only a download has more than 4194304\n")


class Readers(unittest.TestCase):
    def test_pinned_version(self):
        """The module that is installed is the one that the lock file names."""
        for text in ('"zxing-wasm": "3.1.4"',):
            self.assertIn(text, (PROJECT / "receipt" / "package.json").read_text())
            self.assertIn(text, (PROJECT / "receipt" / "package-lock.json").read_text())
        installed = readers.MODULES / "node_modules" / "zxing-wasm" / "package.json"
        self.assertIn('"version": "3.1.4"', installed.read_text())

    def test_several_symbols_in_one_picture(self):
        with tempfile.TemporaryDirectory() as folder:
            pictures = []
            for data in ("LEFT", "RIGHT"):
                pictures.append(os.path.join(folder, data + ".png"))
                subprocess.run([*ZINT, "-d", data, "-o", pictures[-1]], check=True)
            left, right = (Image.open(picture).convert("L") for picture in pictures)
            both = Image.new("L", (left.width + right.width + 100, left.height + 40), 255)
            both.paste(left, (0, 0))
            both.paste(right, (left.width + 100, 40))
        found = readers.read_images([both, Image.new("L", (50, 50), 255)])
        for reader in readers.READERS:
            self.assertEqual({reading.data for reading in found[reader][0]}, {b"LEFT", b"RIGHT"}, reader)
        self.assertEqual([found[reader][1] for reader in readers.READERS], [[], [], []])

    def test_data_that_looks_like_markup(self):
        for data in ("]]>", "<data><![CDATA[x]]></data>", "'&amp;\"", "</source><source href='x'></source>"):
            with tempfile.TemporaryDirectory() as folder:
                picture = os.path.join(folder, "a.png")
                subprocess.run([*ZINT, "-d", data, "-o", picture], check=True)
                for reader, found in readers.read_files([picture]).items():
                    self.assertEqual([reading.data for reading in found[0]], [data.encode()], reader)

    def test_data_that_looks_like_a_readers_output(self):
        with tempfile.TemporaryDirectory() as folder:
            for data in ("x\nBytes: zz\n", "x\nFormat: QRCode\n", "\x85\u2028"):
                picture = os.path.join(folder, "a.png")
                source = os.path.join(folder, "a.txt")
                with open(source, "w", encoding="utf-8", newline="") as file:
                    file.write(data)
                subprocess.run([*ZINT, "-i", source, "-o", picture], check=True)
                found = readers.read_files([picture])
                for reader in ("ZXing", "zxing-wasm"):
                    self.assertEqual(len(found[reader][0]), 1, (data, reader))

    def test_nothing_to_read(self):
        self.assertEqual(readers.read_files([]), {"zbar": [], "ZXing": [], "zxing-wasm": []})


if __name__ == "__main__":
    unittest.main()
