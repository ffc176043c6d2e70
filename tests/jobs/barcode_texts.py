"""Random valid data of every type of the two barcode pages, and what the symbology makes of it.

Each text is what a person types; beside it stands what a reader must find in the symbol, worked out here from the
symbology's own rules.
"""

import random
import string
from dataclasses import dataclass


@dataclass(frozen=True)
class Text:
    page: str  # "1D" or "2D"
    type: str  # as the page's list names it
    typed: str
    read: bytes


# Without $ % + /, which readers of full ASCII take for shifts of the letter behind them.
CODE_39 = string.digits + string.ascii_uppercase + "-. "
PRINTABLE = "".join(map(chr, range(0x20, 0x7F)))


def check_digit(digits: str) -> str:
    """Weights 3 and 1 from the right."""
    total = sum(int(digit) * (3 if place % 2 == 0 else 1) for place, digit in enumerate(reversed(digits)))
    return str(-total % 10)


def shortened(number: str) -> str:
    """The eight digits of a UPC-E of the number's eleven: system, six, check digit."""
    maker, item = number[1:6], number[6:11]
    if maker[2] in "012" and maker[3:] == "00":
        six = maker[:2] + item[2:] + maker[2]
    elif maker[3:] == "00":
        six = maker[:3] + item[3:] + "3"
    elif maker[4] == "0":
        six = maker[:4] + item[4] + "4"
    else:
        six = maker + item[4]
    return "0" + six + check_digit(number)


class Maker:
    """Texts of one seed."""

    def __init__(self, seed: int):
        self.dice = random.Random(seed)

    def digits(self, count: int) -> str:
        return "".join(self.dice.choices(string.digits, k=count))

    def text(self, letters: str, low: int, high: int) -> str:
        return "".join(self.dice.choices(letters, k=self.dice.randint(low, high)))

    def number(self, length: int, front: str = "") -> tuple[str, bytes]:
        """With its check digit or without."""
        body = front + self.digits(length - 1 - len(front))
        whole = body + check_digit(body)
        return self.dice.choice((body, whole)), whole.encode()

    def upc_a(self):
        return self.number(12)

    def upc_e(self):
        maker, last = self.digits(2), self.digits(1)
        body = "0" + self.dice.choice(
            (
                maker + self.dice.choice("012") + "0000" + self.digits(3),
                maker + self.dice.choice("3456789") + "00000" + self.digits(2),
                maker + last + self.dice.choice("123456789") + "00000" + self.digits(1),
                maker + last + self.digits(1) + self.dice.choice("123456789") + "0000" + self.dice.choice("56789"),
            )
        )
        return self.dice.choice((body, body + check_digit(body))), shortened(body).encode()

    def ean_8(self):
        return self.number(8)

    def ean_13(self):
        """Those that begin with 0 are UPC-A, and read as such."""
        return self.number(13, self.dice.choice("123456789"))

    def code_39(self):
        data = self.text(CODE_39, 1, 10)
        return self.dice.choice((data, f"*{data}*")), data.encode()

    def itf(self):
        data = self.digits(2 * self.dice.randint(3, 9))
        return data, data.encode()

    def codabar(self):
        start, stop = self.dice.choices("ABCD", k=2)
        data = start + self.text(string.digits + "$-/:.+", 3, 10) + stop
        return data, data.encode()

    def code_93(self):
        data = self.text(PRINTABLE, 1, 9)
        return data, data.encode()

    def code_128(self):
        """Runs of the three code sets, digits of set C typed as digits."""
        typed, read = "", ""
        for _ in range(self.dice.randint(1, 3)):
            code_set = self.dice.choice("ABC")
            if code_set == "C":
                run = self.digits(2 * self.dice.randint(1, 3))
                typed += "{C" + run
            else:
                letters = PRINTABLE.replace("{", "")
                run = self.text("".join(c for c in letters if code_set == "B" or c < "`"), 1, 4)
                typed += "{" + code_set + run
            read += run
        return typed, read.encode()

    def data_bar(self, front: str = ""):
        """Readers give the identifier of an article number with it."""
        typed, number = self.number(14, front)
        return typed, b"01" + number

    def data_bar_limited(self):
        return self.data_bar(self.dice.choice("01"))

    def data_bar_expanded(self):
        """Identifiers in parentheses: an article number, a lot."""
        body = self.digits(13)
        article = body + check_digit(body)
        lot = self.text(string.ascii_uppercase + string.digits, 1, 6)
        return f"(01){article}(10){lot}", f"01{article}10{lot}".encode()

    def pdf417(self):
        data = self.text(PRINTABLE, 1, 30)
        return data, data.encode()

    def qr_code(self):
        data = self.text(PRINTABLE, 1, 60)
        return data, data.encode()

    def maxi_code(self):
        data = self.text(string.ascii_uppercase + string.digits, 1, 60)
        return data, data.encode()


TYPES = (
    ("1D", "UPC-A", Maker.upc_a),
    ("1D", "UPC-E", Maker.upc_e),
    ("1D", "EAN8", Maker.ean_8),
    ("1D", "EAN13", Maker.ean_13),
    ("1D", "Code39", Maker.code_39),
    ("1D", "ITF", Maker.itf),
    ("1D", "Codabar", Maker.codabar),
    ("1D", "Code93", Maker.code_93),
    ("1D", "Code128", Maker.code_128),
    ("1D", "GS1 DataBar Omnidirectional", Maker.data_bar),
    ("1D", "GS1 DataBar Truncated", Maker.data_bar),
    ("1D", "GS1 DataBar Limited", Maker.data_bar_limited),
    ("1D", "GS1 DataBar Expanded", Maker.data_bar_expanded),
    ("2D", "PDF417", Maker.pdf417),
    ("2D", "GS1 DataBar Stacked", Maker.data_bar),
    ("2D", "GS1 DataBar Stacked Omnidirectional", Maker.data_bar),
    ("2D", "GS1 DataBar Expanded Stacked", Maker.data_bar_expanded),
    ("2D", "QR Code", Maker.qr_code),
    ("2D", "Maxi Code", Maker.maxi_code),
)


def texts(seed: int, count: int) -> list[Text]:
    """So many of each type."""
    maker = Maker(seed)
    return [Text(page, kind, *make(maker)) for page, kind, make in TYPES for _ in range(count)]
