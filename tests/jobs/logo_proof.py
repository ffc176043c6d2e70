#!/usr/bin/python3
"""Proves the download of logos: what the Download page shows of them is what the printer gets, dot for dot.

    logo_proof.py --program logo_jobs.exe --work FOLDER

Three example logos go through the real page, in black and white and in grey. Of each logo these have to agree in every
pixel: the converted file that the page shows, what that has to be, the file as two programs read it that have nothing
to do with each other (ImageMagick and netpbm), and what the virtual receipt printer makes of the job. Prints a line for
each logo; exit code 1 when one is wrong.
"""

import argparse
import io
import shutil
import struct
import subprocess
import sys
from pathlib import Path

from PIL import Image

PROJECT = Path(__file__).resolve().parents[2]

NAMES = ("photo", "drawing", "text")
# The job's number, and whether it is in grey.
JOBS = ((2, False), (3, True))

Rows = list[bytes]


def run(command: list) -> bytes:
    done = subprocess.run([str(word) for word in command], capture_output=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{command}: exit code {done.returncode}\n{done.stdout[-2000:]!r}\n{done.stderr.decode()}")
    return done.stdout


def rows_of(data: bytes, width: int) -> Rows:
    return [data[at : at + width] for at in range(0, len(data), width)]


def rows_of_file(file: bytes) -> Rows:
    """The grey levels of a bitmap file of 1 or 8 bits a pixel that is laid out in the plain way, from the top."""
    offset, _, width, height, _, bits = struct.unpack_from("<IIiiHH", file, 10)
    row_bytes = (width * bits + 31) // 32 * 4
    assert bits in (1, 8) and offset == 54 + 4 * 2**bits and len(file) == offset + row_bytes * height
    rows = []
    for row in rows_of(file[offset:], row_bytes):
        if bits == 1:
            dots = f"{int.from_bytes(row, 'big'):0{8 * row_bytes}b}"
            row = bytes(255 * int(dot) for dot in dots)
        rows.append(row[:width])
    return rows[::-1]


def rows_of_picture(picture: Image.Image) -> Rows:
    return rows_of(picture.convert("L").tobytes(), picture.width)


def read_by_imagemagick(file: Path, width: int) -> Rows:
    return rows_of(run(["convert", file, "-depth", "8", "gray:-"]), width)


def read_by_netpbm(file: Path) -> Rows:
    with Image.open(io.BytesIO(run(["bmptopnm", "-quiet", file]))) as picture:
        return rows_of_picture(picture)


def on_paper(rows: Rows, grey: bool) -> Rows:
    """What the printer has of a picture: 16 levels, or two; and white where the raster is filled up."""
    across, down = (8, 2) if grey else (32, 8)
    width = -(-len(rows[0]) // across) * across
    height = -(-len(rows) // down) * down
    if grey:
        rows = [bytes(17 * (level >> 4) for level in row) for row in rows]
    rows = [row.ljust(width, b"\xff") for row in rows]
    white = [b"\xff" * width] * (height - len(rows))
    return rows + white if grey else white + rows


def stored_in(job: Path, folder: Path) -> list[Rows]:
    run([PROJECT / "receipt" / "show", job, "--document", "LOGO", "--logos", folder])
    logos = []
    for number in range(1, len(list(folder.iterdir())) + 1):
        with Image.open(folder / f"logo-{number}.png") as picture:
            logos.append(rows_of_picture(picture))
    return logos


def first_difference(rows: Rows, expected: Rows) -> str | None:
    if len(rows) != len(expected):
        return f"{len(rows)} rows instead of {len(expected)}"
    for y, (row, wanted) in enumerate(zip(rows, expected)):
        if len(row) != len(wanted):
            return f"{len(row)} pixels in row {y} instead of {len(wanted)}"
        for x, (level, right) in enumerate(zip(row, wanted)):
            if level != right:
                return f"{level} at {x}, {y} instead of {right}"
    return None


def main() -> int:
    parser = argparse.ArgumentParser(description="Proves the download of logos from the page to the printer's memory.")
    parser.add_argument("--program", required=True)
    parser.add_argument("--work", required=True, type=Path)
    options = parser.parse_args()

    work = options.work.resolve()
    shutil.rmtree(work, ignore_errors=True)
    run([PROJECT / "scripts" / "make-logos", work])
    run([PROJECT / "scripts" / "wine-run", options.program, f"Z:{work}"])
    faults = []
    left = sorted(file.name for file in work.glob("*.bmp"))
    if left != sorted(f"{name}.bmp" for name in NAMES):
        faults.append(f"the converted files do not go with their rows: {left}")
    print("| job | logo | pixels | levels |\n|---|---|---|---|")
    for number, grey in JOBS:
        stem = f"{number:03}-LOGO"
        stored = stored_in(work / "jobs" / f"{stem}.prn", work / "stored" / stem)
        if len(stored) != len(NAMES):
            faults.append(f"{stem}: {len(stored)} logos")
            continue
        for name, paper in zip(NAMES, stored):
            file = work / "shown" / stem / f"{name}.bmp"
            reference = work / "reference" / f"{number}-{name}.bmp"
            if name == "text" and not grey:
                # Black and white already: nothing is converted.
                if file.exists() or reference.exists():
                    faults.append(f"{stem}: {name} was converted")
                file = reference = work / f"{name}.bmp"
            if file.read_bytes() != reference.read_bytes():
                faults.append(f"{stem}: {name} is not converted as it must be")
            rows = rows_of_file(file.read_bytes())
            for reader, found, wanted in (
                ("ImageMagick", read_by_imagemagick(file, len(rows[0])), rows),
                ("netpbm", read_by_netpbm(file), rows),
                ("the printer", paper, on_paper(rows, grey)),
            ):
                if fault := first_difference(found, wanted):
                    faults.append(f"{stem}: {name}: {reader} has {fault}")
            levels = len(set(b"".join(paper)))
            print(f"| {stem} | {name} | {len(rows[0])} x {len(rows)} | {levels} |")
    print(f"{len(JOBS) * len(NAMES)} logos, {len(faults)} faults")
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
