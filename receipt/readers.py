"""Reads barcodes back from pictures with three readers that have nothing to do with what drew them.

A reader that is not installed is an error: a symbol that nobody has read is not proven.
"""

import base64
import json
import os
import re
import subprocess
import tempfile
from collections.abc import Sequence
from dataclasses import dataclass
from pathlib import Path

from PIL import Image

from .strip import Strip, Symbol
from .symbols import ToolMissing, check_digit

HERE = Path(__file__).resolve().parent
# Where `npm ci` has put node_modules.
MODULES = Path(os.environ.get("RECEIPT_MODULES") or HERE.parent / "build" / "receipt")
READERS = ("zbar", "ZXing", "zxing-wasm")
# Pixels a dot: readers of photographs find narrow bars hard.
SCALE = 2
# Seconds that a reader may take for all pictures of a run.
PATIENCE = 300


@dataclass(frozen=True)
class Reading:
    """What a reader found: its own name of the symbology, and the data."""

    format: str
    data: bytes


def run(command: Sequence[str], package: str) -> subprocess.CompletedProcess:
    try:
        return subprocess.run(command, capture_output=True, check=False, timeout=PATIENCE)
    except FileNotFoundError as error:
        raise ToolMissing(f"{command[0]} is not installed ({package})") from error
    except subprocess.TimeoutExpired as error:
        raise ToolMissing(f"{command[0]} has not ended after {PATIENCE} seconds") from error


# Not read as XML: bytes that are no text may stand in it. Data that could end a section is in base 64.
ZBAR_SOURCE = re.compile(
    rb"<source href='(?P<href>[^']*)'>(?P<symbols>(?:<!\[CDATA\[.*?\]\]>|.)*?)</source>", re.DOTALL
)
ZBAR_SYMBOL = re.compile(
    rb"<symbol type='(?P<type>[^']*)'[^>]*>\s*<data(?P<format> format='base64'[^>]*)?>"
    rb"<!\[CDATA\[(?P<data>.*?)\]\]></data>",
    re.DOTALL,
)


def read_zbar(pictures: Sequence[str]) -> list[list[Reading]]:
    found = run(("zbarimg", "--xml", "--nodbus", "-q", "-Supca.enable=1", *pictures), "zbar-tools")
    if found.returncode not in (0, 4):  # 4: nothing found in one of them
        raise ToolMissing(f"zbarimg failed: {found.stderr.decode('utf-8', 'replace').strip()}")
    by_picture: dict[str, list[Reading]] = {picture: [] for picture in pictures}
    for source in ZBAR_SOURCE.finditer(found.stdout):
        readings = by_picture[source["href"].decode()]
        for symbol in ZBAR_SYMBOL.finditer(source["symbols"]):
            data = base64.b64decode(symbol["data"]) if symbol["format"] else symbol["data"]
            readings.append(Reading(symbol["type"].decode(), data))
    return [by_picture[picture] for picture in pictures]


ZXING_SYMBOL = re.compile(
    r"^Bytes:(?P<bytes>(?: *[0-9A-Fa-f]{2})*) *\nBytesECI:.*\nFormat:(?P<format>.*)$", re.MULTILINE
)


def read_zxing(pictures: Sequence[str]) -> list[list[Reading]]:
    return [read_zxing_picture(picture) for picture in pictures]


def read_zxing_picture(picture: str) -> list[Reading]:
    found = run(("ZXingReader", picture), "zxing-cpp-tools")
    if found.returncode < 0:
        return []  # it stops itself at stacked DataBar, which it cannot read
    if found.returncode != 0:
        raise ToolMissing(f"ZXingReader failed: {found.stderr.decode('utf-8', 'replace').strip()}")
    # The text in front of these three lines is as it stands in the symbol, line ends and all.
    text = found.stdout.decode("utf-8", "replace")
    return [
        Reading(match["format"].strip(), bytes.fromhex(match["bytes"]))
        for match in ZXING_SYMBOL.finditer(text)
    ]


def read_zxing_wasm(pictures: Sequence[str]) -> list[list[Reading]]:
    if not (MODULES / "node_modules" / "zxing-wasm").is_dir():
        raise ToolMissing(f"zxing-wasm is not in {MODULES / 'node_modules'} (npm ci)")
    found = run(("node", str(HERE / "scan.mjs"), str(MODULES), "All", *pictures), "nodejs")
    lines = found.stdout.decode("utf-8").rstrip("\n").split("\n")
    if found.returncode != 0 or len(lines) != len(pictures):
        raise ToolMissing(f"zxing-wasm failed: {found.stderr.decode('utf-8', 'replace').strip()}")
    return [
        [Reading(reading["format"], bytes.fromhex(reading["bytes"])) for reading in json.loads(line)] for line in lines
    ]


RUN = {"zbar": read_zbar, "ZXing": read_zxing, "zxing-wasm": read_zxing_wasm}


def read_files(pictures: Sequence[str]) -> dict[str, list[list[Reading]]]:
    """Of each reader, what it finds in each picture."""
    return {reader: read(pictures) for reader, read in RUN.items()} if pictures else {reader: [] for reader in READERS}


def read_images(images: Sequence[Image.Image]) -> dict[str, list[list[Reading]]]:
    with tempfile.TemporaryDirectory() as folder:
        pictures = []
        for number, image in enumerate(images):
            pictures.append(os.path.join(folder, f"{number}.png"))
            image.save(pictures[-1])
        return read_files(pictures)


# What each reader calls the symbologies that it reads.
FORMATS = {
    "UPC-A": {"zbar": "UPC-A", "ZXing": "UPC-A", "zxing-wasm": "EAN13"},
    "UPC-E": {"zbar": "UPC-A", "ZXing": "UPC-E", "zxing-wasm": "UPCE"},
    "EAN-13": {"zbar": "EAN-13", "ZXing": "EAN-13", "zxing-wasm": "EAN13"},
    "EAN-8": {"zbar": "EAN-8", "ZXing": "EAN-8", "zxing-wasm": "EAN8"},
    "Code 39": {"zbar": "CODE-39", "ZXing": "Code39", "zxing-wasm": "Code39"},
    "ITF": {"zbar": "I2/5", "ZXing": "ITF", "zxing-wasm": "ITF"},
    "Codabar": {"zbar": "Codabar", "ZXing": "Codabar", "zxing-wasm": "Codabar"},
    "Code 93": {"zbar": "CODE-93", "ZXing": "Code93", "zxing-wasm": "Code93"},
    "Code 128": {"zbar": "CODE-128", "ZXing": "Code128", "zxing-wasm": "Code128"},
    "DataBar Omnidirectional": {"zbar": "DataBar", "ZXing": "DataBar", "zxing-wasm": "DataBarOmni"},
    "DataBar Truncated": {"zbar": "DataBar", "ZXing": "DataBar", "zxing-wasm": "DataBarOmni"},
    "DataBar Stacked": {"zbar": "DataBar", "zxing-wasm": "DataBarStk"},
    "DataBar Stacked Omnidirectional": {"zbar": "DataBar", "zxing-wasm": "DataBarStk"},
    "DataBar Limited": {"zxing-wasm": "DataBarLtd"},
    "DataBar Expanded": {"zbar": "DataBar-Exp", "ZXing": "DataBarExpanded", "zxing-wasm": "DataBarExp"},
    "DataBar Expanded Stacked": {"zxing-wasm": "DataBarExpStk"},
    "PDF417": {"ZXing": "PDF417", "zxing-wasm": "PDF417"},
    "QR Code": {"zbar": "QR-Code", "ZXing": "QRCode", "zxing-wasm": "QRCode"},
    "MaxiCode": {"ZXing": "MaxiCode", "zxing-wasm": "MaxiCode"},
}


def long_upc(short: str) -> str:
    """The twelve digits that the eight of a UPC-E stand for."""
    body, last = short[1:7], short[6]
    if last in "012":
        middle = body[:2] + last + "0000" + body[2:5]
    elif last == "3":
        middle = body[:3] + "00000" + body[3:5]
    elif last == "4":
        middle = body[:4] + "00000" + body[4]
    else:
        middle = body[:5] + "0000" + last
    return short[0] + middle + check_digit(short[0] + middle)


def expected(symbol: Symbol, reader: str) -> Reading | None:
    """What a reader says when it has read the symbol rightly; None when it does not read the symbology."""
    name = FORMATS[symbol.kind].get(reader)
    if name is None:
        return None
    data = symbol.payload
    if symbol.kind == "UPC-A" and reader == "zxing-wasm":
        data = b"0" + data
    elif symbol.kind == "UPC-E" and reader != "ZXing":
        data = long_upc(data.decode("ascii")).encode("ascii")
        data = b"0" + data if reader == "zxing-wasm" else data
    elif symbol.kind == "Codabar" and reader == "ZXing":
        data = data[1:-1]
    elif reader == "ZXing" and symbol.kind in ("DataBar Omnidirectional", "DataBar Truncated"):
        data = data[2:]
    elif reader == "ZXing" and symbol.kind == "DataBar Expanded":
        # It names the application identifiers, so it needs them, and one more than that of an article number.
        if not symbol.data.startswith(b"(") or re.fullmatch(rb"\(01\)[0-9]{14}", symbol.data):
            return None
        data = symbol.data
    elif symbol.kind == "Code 39" and reader == "zxing-wasm" and re.search(rb"[$%+/][A-Z]", data):
        return None  # it takes them for the full ASCII that they stand for elsewhere
    elif reader == "zbar" and not data.isascii():
        return None  # it makes text of the bytes as it guesses
    return Reading(name, data)


@dataclass(frozen=True)
class Scan:
    """What the readers made of one symbol."""

    symbol: Symbol
    readings: dict[str, list[Reading]]

    def read_by(self) -> list[str]:
        """The readers that gave what the symbol says."""
        return [reader for reader, found in self.readings.items() if expected(self.symbol, reader) in found]

    def misread_by(self) -> list[str]:
        """The readers that read this symbology and gave something else."""
        return [
            reader
            for reader, found in self.readings.items()
            if found and expected(self.symbol, reader) is not None and expected(self.symbol, reader) not in found
        ]

    @property
    def good(self) -> bool:
        return bool(self.read_by()) and not self.misread_by()


def scan(strip: Strip) -> list[Scan]:
    """Every symbol of a strip, cut out with a quiet zone, each dot a few pixels wide for the readers' sake."""
    images = [strip.crop(symbol, border=60, scale=SCALE) for symbol in strip.symbols]
    found = read_images(images)
    return [
        Scan(symbol, {reader: found[reader][number] for reader in READERS})
        for number, symbol in enumerate(strip.symbols)
    ]
