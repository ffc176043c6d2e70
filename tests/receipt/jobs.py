"""Print jobs written by hand from the printer's command descriptions, and what the tests here share.

A job is a list of commands as hexadecimal text, so that where each command begins follows from the list.
"""

import sys
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(PROJECT))


def joined(commands: list[str]) -> bytes:
    return bytes.fromhex("".join(commands))


def hexed(text: str) -> str:
    return text.encode("ascii").hex()


END = ["0A", "1D 56 42 00"]


def linear(code: str, data: str, font="00", position="00", width="02", height="64") -> list[str]:
    """UPC-A to Codabar."""
    header = [f"1D 66 {font}", f"1D 48 {position}", f"1D 77 {width}", f"1D 68 {height}"]
    return header + [f"1D 6B {code} {data} 00"] + END


def counted(code: str, count: str, data: str, position="00", width="02") -> list[str]:
    """Code 93 and Code 128: closed once with no bytes, then sent."""
    settings = [f"1D 77 {width}", "1D 68 64"]
    header = ["1D 66 00", f"1D 48 {position}"] + settings + [f"1D 6B {code} 00"] + settings
    return header + [f"1D 6B {code} {count} {data}", "00"] + END


def databar(
    kind: str, data: str, width="02", row="28", separator="02", segments="02", text="04", marked="00"
) -> list[str]:
    """Rows of 28h = 40 dots."""
    setting = f"1D 73 {kind} {width} {row} 02 {separator} {segments} {text} {marked}"
    return ["1D 66 00", "1D 48 00", setting, f"1D 6B 0D {data} 00"] + END


def pdf417(rows: str, columns: str, level: str, data: str, width="02", height="06") -> list[str]:
    return [f"1D 70 01 01 {rows} {columns} {width} {height}", f"1D 71 {level}", f"1D 6B 0A {data} 00"] + END


def qr_code(level: str, data: str, width="04", language="00", model="02") -> list[str]:
    return [f"1D 6F 00 {width} {language} {model}", f"1D 6B 0B {level} 41 2C {data} 00"] + END


def maxicode(data: str) -> list[str]:
    return ["1D 71 00", f"1D 6B 0C {data} 00"] + END


OPEN, CLOSE = "1B 63 3B 01", "1B 63 3B 00"
SELF_TEST = [OPEN, "1D 28 41 02 00 00 02", CLOSE]
CLEAR_LOGOS = [OPEN, "1C 71 00 00", "0A", CLOSE]
# Two logos of 8 x 8 and 16 x 8 dots; a grey one of 8 x 2 dots.
LOGOS = [OPEN, "1C 71 02", "01 00 01 00 80 40 20 10 08 04 02 01", "02 00 01 00" + "FF 00" * 8, "0A", CLOSE]
GREY_LOGO = [OPEN, "1C 72 01", "01 00 01 00 01 00" + "F0 CC AA 00 00 00 00 FF", "0A", CLOSE]


def logos(*rasters: str) -> list[str]:
    """A job that stores black-and-white logos, each with its header."""
    return [OPEN, f"1C 71 {len(rasters):02X}", *rasters, "0A", CLOSE]


def grey_logos(*rasters: str) -> list[str]:
    return [OPEN, f"1C 72 {len(rasters):02X}", *rasters, "0A", CLOSE]


# Pictures of a few dots in rows of four bytes and columns of whole bytes. What a picture leaves of its rows is white,
# at the right; what it leaves of its columns is white, above it.
LOGO_10_X_8 = "04 00 01 00 FF 7F 3F 1F 0F 07 03 01 00 01" + "00" * 22
DOTS_10_X_8 = [
    "#.........",
    "##........",
    "###.......",
    "####......",
    "#####.....",
    "######....",
    "#######...",
    "########.#",
]
LOGO_1_X_1 = "04 00 01 00 01" + "00" * 31
DOTS_1_X_1 = ["."] * 7 + ["#"]
LOGO_8_X_9 = "04 00 02 00 01 80 01 40 01 20 01 10 01 08 01 04 01 02 01 01" + "00" * 48
DOTS_8_X_9 = ["........"] * 7 + [
    "########",
    "#.......",
    ".#......",
    "..#.....",
    "...#....",
    "....#...",
    ".....#..",
    "......#.",
    ".......#",
]
# Five dots are filled up with three white ones, three rows with a fourth. The levels' four bits, inverted, from the
# highest on.
GREY_5_X_3 = "01 00 01 00 02 00 F8 F0 C8 A8 E0 18 98 50 00 C0 30 A8 00 00 00 00"
LEVELS_5_X_3 = ["01234", "56789", "ABCDE", ""]
# Every level; the second of the two rows that a unit has is white.
GREY_16_X_1 = "01 00 02 00 01 00 FF 00 F0 F0 CC CC AA AA 00 00 00 00 00 00 00 00"
LEVELS_16_X_1 = ["0123456789ABCDEF", ""]
# Nine of 32 x 8 dots, the first with one black column, the ninth with nine.
NINE_LOGOS = ["04 00 01 00" + "FF" * count + "00" * (32 - count) for count in range(1, 10)]


def dots(rows: list[str], width: int) -> bytes:
    """Black (#) and white dots, a byte each, the rows filled up with white."""
    return b"".join(bytes(0 if dot == "#" else 255 for dot in row.ljust(width, ".")) for row in rows)


def levels(rows: list[str], width: int) -> bytes:
    """Grey levels 0 (black) to F (white) as bytes from 0 to 255, the rows filled up with white."""
    return b"".join(bytes(17 * int(level, 16) for level in row.ljust(width, "F")) for row in rows)


JOBS = {
    "UPC-A": linear("00", hexed("123456789012")),
    "UPC-E": linear("01", hexed("01230000045")),
    "EAN-13": linear("02", hexed("590123412345")),
    "EAN-8": linear("03", hexed("9638507")),
    "Code 39": linear("04", hexed("123ABC*")),
    "ITF": linear("05", hexed("12345678")),
    "Codabar": linear("06", hexed("A123456789A")),
    "Code 93": counted("48", "06", hexed("123ABC")),
    "Code 128": counted("49", "06", hexed("{A1234")),
    "DataBar Omnidirectional": databar("01", hexed("0123456789012")),
    "DataBar Truncated": databar("02", hexed("0123456789012")),
    "DataBar Stacked": databar("03", hexed("0123456789012")),
    "DataBar Stacked Omnidirectional": databar("04", hexed("0123456789012")),
    "DataBar Limited": databar("05", hexed("0123456789012")),
    "DataBar Expanded": databar("06", hexed("(01)01234567890128"), marked="01"),
    "DataBar Expanded Stacked": databar("07", hexed("(01)01234567890128(10)AB"), marked="01"),
    "PDF417": pdf417("0C", "03", "02", hexed("01234567890123")),
    "QR Code": qr_code("4D", hexed("01234567890123")),
    "MaxiCode": maxicode(hexed("01234567890123")),
    "self test": SELF_TEST,
    "clear logos": CLEAR_LOGOS,
    "logos": LOGOS,
    "grey logo": GREY_LOGO,
}
