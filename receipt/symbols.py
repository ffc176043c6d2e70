"""Draws the symbols of barcode commands in dots.

zint makes the modules of a symbol; the commands' own widths and heights then make dots of them, so that every symbol
has the size that the printer gives it. Code 128 is made here, module for module: zint chooses code sets by itself,
while the printer takes those that the data names, and that decides how wide the symbol is.
"""

import functools
import io
import subprocess
import tempfile
from collections.abc import Callable
from dataclasses import dataclass

from PIL import Image

WHITE, BLACK = 255, 0
FNC1 = 0x1D
# A MaxiCode is 28.14 mm x 26.91 mm whatever it holds; a dot is 25.4 mm / 180.
MAXICODE_DOTS = (199, 191)


class Refused(Exception):
    """The printer prints nothing for this barcode; the text says why."""


class ToolMissing(Exception):
    """A program that this one stands on is not installed."""


@dataclass(frozen=True)
class Drawing:
    """A symbol in dots. `payload` is what a reader must give, `text` what is printed above or below the bars."""

    image: Image.Image
    payload: bytes
    text: str


# Seconds that zint may take for a symbol.
PATIENCE = 20


def run_zint(arguments: list[str], data: bytes) -> bytes:
    """What zint prints for the data, a warning counting as a refusal: it says that the symbol is not as commanded."""
    command = ["zint", "--binary", "--werror", "--notext", *arguments, "-i", "-"]
    with tempfile.TemporaryDirectory() as folder:  # it writes out.png beside it unless told otherwise
        try:
            run = subprocess.run(command, input=data, capture_output=True, check=False, cwd=folder, timeout=PATIENCE)
        except FileNotFoundError as error:
            raise ToolMissing("zint is not installed") from error
        except subprocess.TimeoutExpired as error:
            raise Refused(f"zint has not ended after {PATIENCE} seconds") from error
    if run.returncode != 0:
        lines = run.stderr.decode("utf-8", "replace").strip().splitlines() or [f"zint failed with {run.returncode}"]
        raise Refused(lines[0].partition(": ")[2] or lines[0])
    return run.stdout


@functools.lru_cache(maxsize=256)
def modules(kind: str, data: bytes, *options: str) -> tuple[str, ...]:
    """The rows of a symbol from the top, each module a "1" or a "0". The right-hand quiet zone is cut off."""
    text = run_zint(["-b", kind, "--dump", *options], data).decode("ascii")
    rows = ["".join(f"{int(digit, 16):04b}" for digit in line.replace(" ", "")) for line in text.split("\n") if line]
    width = max(len(row.rstrip("0")) for row in rows)
    return tuple(row[:width].ljust(width, "0") for row in rows)


def dots(rows: tuple[str, ...], width: int, heights: list[int]) -> Image.Image:
    """Modules of that many dots across, the rows as high as said."""
    flat = Image.new("L", (len(rows[0]), len(rows)))
    flat.putdata([BLACK if module == "1" else WHITE for row in rows for module in row])
    image = Image.new("L", (flat.width * width, sum(heights)), WHITE)
    top = 0
    for number, height in enumerate(heights):
        row = flat.crop((0, number, flat.width, number + 1))
        image.paste(row.resize((image.width, height), Image.NEAREST), (0, top))
        top += height
    return image


def text_of(data: bytes) -> str:
    """Data as the printer prints it; what has no letter is a blank."""
    return "".join(chr(byte) if 0x20 <= byte < 0x7F else " " for byte in data)


def digits_only(data: bytes) -> str:
    if not data.isdigit():
        raise Refused("only digits are allowed")
    return data.decode("ascii")


def check_digit(digits: str) -> str:
    """The last digit of an article number: every second one from the right counts three times."""
    total = sum(int(digit) * (3 if place % 2 == 0 else 1) for place, digit in enumerate(reversed(digits)))
    return str(-total % 10)


def article_number(data: bytes, length: int) -> str:
    """The number with its check digit, which is added when it is missing."""
    digits = digits_only(data)
    if len(digits) not in (length - 1, length):
        raise Refused(f"{len(digits)} digits: {length - 1} or {length} are needed")
    right = check_digit(digits[: length - 1])
    if digits[length - 1 :] not in ("", right):
        raise Refused(f"check digit {digits[-1]} is wrong, {right} is right")
    return digits[: length - 1] + right


def short_upc(number: str) -> str:
    """The six digits that stand for a number of system 0, with its check digit left out."""
    maker, product = number[1:6], number[6:11]
    if number[0] != "0":
        raise Refused("the first digit must be 0")
    if maker[2] in "012" and maker[3:] == "00" and product[:2] == "00":
        return maker[:2] + product[2:] + maker[2]
    if maker[3:] == "00" and product[:3] == "000":
        return maker[:3] + product[3:] + "3"
    if maker[4] == "0" and product[:4] == "0000":
        return maker[:4] + product[4] + "4"
    if product[:4] == "0000" and product[4] in "56789":
        return maker + product[4]
    raise Refused("the number has no short form: too few zeros")


@dataclass(frozen=True)
class Bars:
    """A symbol of one row in modules, not yet in dots."""

    row: str
    payload: bytes
    text: str


def bars(kind: str, zint_data: str, payload: str, text: str) -> Bars:
    return Bars(modules(kind, zint_data.encode("ascii"))[0], payload.encode("ascii"), text)


def upc_a(data: bytes) -> Bars:
    number = article_number(data, 12)
    return bars("UPCA", number[:11], number, number)


def upc_e(data: bytes) -> Bars:
    number = article_number(data, 12)
    short = "0" + short_upc(number)
    return bars("UPCE", short, short + number[11], short + number[11])


def ean_13(data: bytes) -> Bars:
    number = article_number(data, 13)
    return bars("EANX_CHK", number, number, number)


def ean_8(data: bytes) -> Bars:
    number = article_number(data, 8)
    return bars("EANX_CHK", number, number, number)


CODE_39 = frozenset(b"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-. $/+%")


def code_39(data: bytes) -> Bars:
    """Start and stop are an asterisk each, given or not."""
    inner = data[1:] if data.startswith(b"*") else data
    inner = inner[:-1] if inner.endswith(b"*") else inner
    if not inner:
        raise Refused("there is no data between start and stop")
    for byte in inner:
        if byte not in CODE_39:
            raise Refused(f'"{text_of(bytes((byte,)))}" is not in Code 39')
    text = inner.decode("ascii")
    return bars("CODE39", text, text, f"*{text}*")


def itf(data: bytes) -> Bars:
    digits = digits_only(data)
    if len(digits) % 2:
        raise Refused(f"{len(digits)} digits: pairs are needed")
    return bars("C25INTER", digits, digits, digits)


CODABAR_STOPS = {**{letter: letter for letter in "ABCD"}, "T": "A", "N": "B", "*": "C", "E": "D"}


def codabar(data: bytes) -> Bars:
    """The stop may have its other name, T, N, * or E, which is the same bars as A, B, C or D."""
    text = text_of(data)
    if len(text) < 3 or text[0] not in "ABCD" or text[-1] not in CODABAR_STOPS:
        raise Refused("start A to D, data, and a stop are needed")
    if set(text[1:-1]) - set("0123456789-$:/.+"):
        raise Refused("only digits and -$:/.+ are allowed between start and stop")
    symbol = text[:-1] + CODABAR_STOPS[text[-1]]
    return bars("CODABAR", symbol, symbol, text)


def code_93(data: bytes) -> Bars:
    if max(data) > 127:
        raise Refused(f"{max(data):02X} is not in Code 93")
    return Bars(modules("CODE93", data)[0], data, text_of(data))


# Widths of bars and spaces of the values 0 to 105; a stop follows them.
CODE_128 = (
    "212222 222122 222221 121223 121322 131222 122213 122312 132212 221213 221312 231212 112232 122132 122231 113222 "
    "123122 123221 223211 221132 221231 213212 223112 312131 311222 321122 321221 312212 322112 322211 212123 212321 "
    "232121 111323 131123 131321 112313 132113 132311 211313 231113 231311 112133 112331 132131 113123 113321 133121 "
    "313121 211331 231131 213113 213311 213131 311123 311321 331121 312113 312311 332111 314111 221411 431111 111224 "
    "111422 121124 121421 141122 141221 112214 112412 122114 122411 142112 142211 241211 221114 413111 241112 134111 "
    "111242 121142 121241 114212 124112 124211 411212 421112 421211 212141 214121 412121 111143 111341 131141 114113 "
    "114311 411113 411311 113141 114131 311141 411131 211412 211214 211232"
).split()
CODE_128_STOP = "2331112"
STARTS = {"A": 103, "B": 104, "C": 105}
SWITCHES = {"A": 101, "B": 100, "C": 99}
SHIFT = 98
SPECIALS = {
    "1": {"A": 102, "B": 102, "C": 102},
    "2": {"A": 97, "B": 97},
    "3": {"A": 96, "B": 96},
    "4": {"A": 101, "B": 100},
}


class Code128:
    """The values of a symbol from data in the printer's form: a brace and a letter switch sets or stand for a function,
    two braces are a brace, a byte 0 to 99 in set C is a pair of digits."""

    def __init__(self, data: bytes) -> None:
        self.values: list[int] = []
        self.payload = bytearray()
        self.text = ""
        self.set = ""
        self.shifted = False
        self.high = self.high_next = False
        at = 0
        while at < len(data):
            if data[at] == 0x7B:
                if at + 1 == len(data):
                    raise Refused("a brace stands at the end of the data")
                self.escape(chr(data[at + 1]))
                at += 2
            else:
                self.character(data[at])
                at += 1
        if self.shifted:
            raise Refused("a shift stands at the end of the data")
        if len(self.values) < 2 or not (self.payload or self.text):
            raise Refused("there is no data after the code set")

    def escape(self, letter: str) -> None:
        if not self.set:
            if letter not in STARTS:
                raise Refused("the data must begin with a code set: {A, {B or {C")
            self.set = letter
            self.values.append(STARTS[letter])
        elif self.shifted and letter != "{":
            raise Refused("a character must follow a shift")
        elif letter in SWITCHES:
            if letter != self.set:
                self.values.append(SWITCHES[letter])
                self.set = letter
        elif letter == "S" and self.set != "C":
            self.values.append(SHIFT)
            self.shifted = True
        elif letter == "{" and self.set != "C":
            self.character(0x7B)
        elif self.set in SPECIALS.get(letter, ()):
            self.values.append(SPECIALS[letter][self.set])
            self.function(letter)
        else:
            raise Refused(f"{{{letter} has no meaning in code set {self.set}")

    def function(self, letter: str) -> None:
        if letter == "1" and len(self.values) > 2:
            self.payload.append(FNC1)
        if letter == "4":
            # Once: the next character is from the upper half. Twice: all are, until twice again.
            if self.high_next:
                self.high = not self.high
            self.high_next = not self.high_next

    def character(self, byte: int) -> None:
        if not self.set:
            raise Refused("the data must begin with a code set: {A, {B or {C")
        where = {"A": "B", "B": "A"}[self.set] if self.shifted else self.set
        self.shifted = False
        if where == "C":
            if byte > 99:
                raise Refused(f"{byte:02X} is no pair of digits in code set C")
            self.values.append(byte)
            self.payload += b"%02d" % byte
            self.text += f"{byte:02d}"
            return
        if not (byte < 0x60 if where == "A" else 0x20 <= byte < 0x80):
            raise Refused(f"{byte:02X} is not in code set {where}")
        self.values.append(byte - 0x20 if byte >= 0x20 else byte + 0x40)
        self.payload.append(byte + 0x80 if self.high != self.high_next else byte)
        self.high_next = False
        self.text += text_of(bytes((byte,)))

    def widths(self) -> str:
        check = sum(value * max(place, 1) for place, value in enumerate(self.values)) % 103
        return "".join(CODE_128[value] for value in (*self.values, check)) + CODE_128_STOP

    def row(self) -> str:
        return "".join(("1" if place % 2 == 0 else "0") * int(width) for place, width in enumerate(self.widths()))


def code_128(data: bytes) -> Bars:
    symbol = Code128(data)
    return Bars(symbol.row(), bytes(symbol.payload), symbol.text)


LINEAR: dict[str, Callable[[bytes], Bars]] = {
    "UPC-A": upc_a,
    "UPC-E": upc_e,
    "EAN-13": ean_13,
    "EAN-8": ean_8,
    "Code 39": code_39,
    "ITF": itf,
    "Codabar": codabar,
    "Code 93": code_93,
    "Code 128": code_128,
}


def linear(kind: str, data: bytes, width: int, height: int) -> Drawing:
    found = LINEAR[kind](data)
    return Drawing(dots((found.row,), width, [height]), found.payload, found.text)


# zint's name, and how many separator rows stand between two rows of bars.
DATABAR = {1: ("DBAR_OMN", 0), 2: ("DBAR_OMN", 0), 3: ("DBAR_STK", 1), 4: ("DBAR_OMNSTK", 3), 5: ("DBAR_LTD", 0)}
# Modules across, with the spaces of the guards.
DATABAR_MODULES = {1: 96, 2: 96, 3: 50, 4: 50, 5: 79}
EXPANDED_STACKED = 7
EXPANDED_CHARACTERS = frozenset(
    b"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz" b" !\"%&'()*+,-./:;<=>?_"
)


def databar_text(data: bytes, kind: int) -> tuple[str, str]:
    """The thirteen digits, and what is printed: the check digit is added when it is missing."""
    number = article_number(data, 14)
    if kind == 5 and number[0] not in "01":
        raise Refused("the first digit of DataBar Limited must be 0 or 1")
    return number, f"(01){number}"


def expanded_text(data: bytes, marked: bool) -> tuple[str, list[str], bytes]:
    """zint's data, zint's options, and what a reader gives.

    Application identifiers are marked with parentheses in the data. Without marks the data goes into the symbol as it
    stands: zint then gets its first two digits as an identifier that it does not look into.
    """
    for byte in data:
        if byte not in EXPANDED_CHARACTERS:
            raise Refused(f"{byte:02X} is not in DataBar Expanded")
    text = data.decode("ascii")
    if not marked:
        if not text[:2].isdigit() or len(text) < 3:
            raise Refused("the data does not begin with the digits of an application identifier")
        return f"[{text[:2]}]{text[2:]}", ["--gs1nocheck"], data
    if not text.startswith("("):
        raise Refused("the data does not begin with an application identifier in parentheses")
    return text.replace("(", "[").replace(")", "]"), [], b""


# Identifiers by their first two digits whose data needs no separator after it, since its length is known.
FIXED_LENGTH = frozenset("00 01 02 03 04 11 12 13 14 15 16 17 18 19 20 31 32 33 34 35 36 41".split())


def unmarked(text: str) -> bytes:
    """The element string of data with identifiers in parentheses: a separator where the length is not known."""
    result = ""
    parts = text[1:].split("(")
    for place, part in enumerate(parts):
        identifier, _, value = part.partition(")")
        ends = place + 1 == len(parts) or identifier[:2] in FIXED_LENGTH
        result += identifier + value + ("" if ends else chr(FNC1))
    return result.encode("ascii")


def expanded_width(row: str) -> int:
    """Guards of two modules at both ends, 17 a character, 15 a finder for every two: the width that a row has."""
    characters = 1
    while 4 + 17 * characters + 15 * ((characters + 1) // 2) < len(row):
        characters += 1
    return 4 + 17 * characters + 15 * ((characters + 1) // 2)


def databar(kind: int, data: bytes, settings: dict) -> Drawing:
    """All rows of bars have the row height, all separator rows the separator height."""
    if kind in DATABAR:
        number, text = databar_text(data, kind)
        name, between = DATABAR[kind]
        rows = modules(name, number[:13].encode("ascii"))
        width = DATABAR_MODULES[kind]
        payload = b"01" + number.encode("ascii")
    else:
        marked = settings["identifiers"] == 1
        zint_data, options, payload = expanded_text(data, marked)
        if kind == EXPANDED_STACKED:
            rows = modules("DBAR_EXPSTK", zint_data.encode("ascii"), f"--cols={settings['segments'] // 2}", *options)
        else:
            rows = modules("DBAR_EXP", zint_data.encode("ascii"), *options)
        between = 3
        width = expanded_width(rows[0])
        text = text_of(data)
        payload = payload or unmarked(data.decode("ascii"))
    rows = tuple(row.ljust(width, "0") for row in rows)
    bars_every = between + 1
    heights = [settings["separator"] if place % bars_every else settings["height"] for place in range(len(rows))]
    return Drawing(dots(rows, settings["width"], heights), payload, text)


def pdf417(data: bytes, settings: dict, level: int) -> Drawing:
    rows, columns = settings["rows"], settings["columns"]
    try:
        found = modules("PDF417", data, f"--cols={columns}", f"--rows={rows}", f"--secure={level}")
    except Refused as error:
        raise Refused(f"the data does not fit {rows} rows of {columns} columns with level {level} ({error})") from error
    return Drawing(dots(found, settings["width"], [settings["height"]] * rows), data, "")


QR_LEVELS = {"L": 1, "M": 2, "Q": 3, "H": 4}


def qr_code(data: bytes, settings: dict, level: str) -> Drawing:
    found = modules("QRCODE", data, f"--secure={QR_LEVELS[level]}")
    return Drawing(dots(found, settings["width"], [settings["width"]] * len(found)), data, "")


@functools.lru_cache(maxsize=64)
def maxicode(data: bytes) -> Drawing:
    """Hexagons have no modules to scale: zint's picture, large, brought to the size that the symbol has."""
    picture = run_zint(["-b", "MAXICODE", "--mode=4", "--scale=5", "--filetype=PNG", "--direct"], data)
    image = Image.open(io.BytesIO(picture)).convert("L")
    image = image.resize(MAXICODE_DOTS, Image.BOX).point(lambda grey: WHITE if grey > 127 else BLACK)
    return Drawing(image, data, "")
