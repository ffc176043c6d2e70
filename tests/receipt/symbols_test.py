#!/usr/bin/python3
"""Tests of receipt/symbols.py: sizes in dots, data that is refused, and every symbology read back."""

import random
import string
import unittest

from jobs import JOBS, databar, hexed, joined, linear, maxicode, pdf417, qr_code

import receipt
from receipt import readers, symbols

CODE_39 = string.digits + string.ascii_uppercase + "-. $/+%"
# Two readers at least, but where only one of the three reads the symbology.
READERS = {
    "DataBar Limited": ["zxing-wasm"],
    "DataBar Expanded": ["zbar", "zxing-wasm"],
    "DataBar Expanded Stacked": ["zxing-wasm"],
    "DataBar Stacked": ["zbar", "zxing-wasm"],
    "DataBar Stacked Omnidirectional": ["zbar", "zxing-wasm"],
    "PDF417": ["ZXing", "zxing-wasm"],
    "MaxiCode": ["ZXing", "zxing-wasm"],
}
ALL_READERS = ["zbar", "ZXing", "zxing-wasm"]


def strip_of(*jobs: list[str]) -> receipt.Strip:
    return receipt.render(receipt.decode(b"".join(joined(job) for job in jobs)))


def linear_job(code: str, data: bytes, width="03") -> list[str]:
    return linear(code, data.hex(), width=width)


def counted_job(code: str, data: bytes, width="02") -> list[str]:
    settings = ["1D 66 00", "1D 48 00", f"1D 77 {width}", "1D 68 64"]
    return settings + [f"1D 6B {code} {len(data):02X} {data.hex()}", "00", "0A", "1D 56 42 00"]


def code_128(data: bytes) -> receipt.Symbol:
    strip = strip_of(counted_job("49", data))
    if strip.failures:
        raise AssertionError(strip.failures[0].text)
    return strip.symbols[0]


def failure_of(job: list[str]) -> str:
    """Why the printer prints nothing, without the words that every reason begins with."""
    strip = strip_of(job)
    assert not strip.symbols and len(strip.failures) == 1, job
    return strip.failures[0].text.removeprefix("the printer prints nothing: ")


class Sizes(unittest.TestCase):
    def size(self, job: list[str]) -> tuple[int, int]:
        strip = strip_of(job)
        self.assertEqual(strip.failures, [])
        left, top, right, bottom = strip.symbols[0].box
        return right - left, bottom - top

    def test_linear(self):
        # UPC-A and EAN-13: guards of 3, 5 and 3, twelve digits of 7. EAN-8: eight digits. UPC-E: guards of 3 and 6, six
        # digits. Code 39: wide is twice narrow, so 12 and a gap of 1 a character, with start and stop. ITF: wide is
        # three times narrow, so 9 a digit, start 4, stop 5. Codabar: 9 a character that has two wide elements, 10 one
        # that has three, a gap of 1. Code 93: 9 a character, with start, two checks, stop, and a last bar. Code 128: 11
        # a character, with start and check, and a stop of 13.
        for name, modules in (
            ("UPC-A", 3 + 42 + 5 + 42 + 3),
            ("EAN-13", 3 + 42 + 5 + 42 + 3),
            ("EAN-8", 3 + 28 + 5 + 28 + 3),
            ("UPC-E", 3 + 42 + 6),
            ("Code 39", 8 * 12 + 7),
            ("ITF", 4 + 8 * 9 + 5),
            ("Codabar", 2 * 10 + 9 * 9 + 10),
            ("Code 93", 10 * 9 + 1),
            ("Code 128", 6 * 11 + 13),
        ):
            with self.subTest(name):
                self.assertEqual(self.size(JOBS[name]), (modules * 2, 100))
        for width in (2, 3, 4, 5):
            job = linear("02", b"590123412345".hex(), width=f"{width:02X}", height="FF")
            self.assertEqual(self.size(job), (95 * width, 255))

    def test_databar(self):
        # Expanded: guards of 2 modules, 17 a character, 15 a finder for every two characters. An identifier 01 with its
        # number are 48 bits, four characters of 12, and one to check; an identifier 10 with AB makes two characters
        # more. Rows of 40 dots, separators of 2.
        for name, size in (
            ("DataBar Omnidirectional", (96 * 2, 40)),
            ("DataBar Truncated", (96 * 2, 40)),
            ("DataBar Stacked", (50 * 2, 40 + 2 + 40)),
            ("DataBar Stacked Omnidirectional", (50 * 2, 40 + 3 * 2 + 40)),
            ("DataBar Limited", (79 * 2, 40)),
            ("DataBar Expanded", ((4 + 5 * 17 + 3 * 15) * 2, 40)),
            ("DataBar Expanded Stacked", ((4 + 2 * 17 + 15) * 2, 4 * 40 + 3 * 3 * 2)),
        ):
            with self.subTest(name):
                self.assertEqual(self.size(JOBS[name]), size)

    def test_databar_settings(self):
        job = databar("04", b"0123456789012".hex(), width="05", row="64", separator="07")
        self.assertEqual(self.size(job), (50 * 5, 100 + 3 * 7 + 100))

    def test_segments_of_expanded_stacked(self):
        # Seven characters: in rows of two 2 + 2 + 2 + 1, of four 4 + 3, of eight in one. An odd number has room for
        # the pairs below it.
        data = b"(01)01234567890128(10)AB".hex()
        for segments, pairs, rows in (("02", 1, 4), ("03", 1, 4), ("04", 2, 2), ("05", 2, 2), ("08", 4, 1)):
            size = self.size(databar("07", data, width="01", segments=segments, marked="01"))
            characters = 7 if rows == 1 else 2 * pairs
            finders = (characters + 1) // 2
            self.assertEqual(size, (4 + 17 * characters + 15 * finders, 40 * rows + 6 * (rows - 1)), segments)

    def test_pdf417(self):
        # Start 17, two row indicators and three columns of 17, stop 18.
        self.assertEqual(self.size(JOBS["PDF417"]), ((17 + 5 * 17 + 18) * 2, 12 * 6))
        job = pdf417("03", "0A", "00", b"123".hex(), width="01", height="19")
        self.assertEqual(self.size(job), (17 + 12 * 17 + 18, 3 * 25))

    def test_qr_code(self):
        # Version 1 has 21 modules and holds 34 digits at level M, version 2 has 25.
        self.assertEqual(self.size(qr_code("4D", b"1".hex() * 34)), (84, 84))
        self.assertEqual(self.size(qr_code("4D", b"1".hex() * 35, width="14")), (500, 500))

    def test_qr_code_levels(self):
        # Digits that version 1 holds at each level; one more needs version 2.
        for level, digits in (("4C", 41), ("4D", 34), ("51", 27), ("48", 17)):
            self.assertEqual(self.size(qr_code(level, "31" * digits, width="01")), (21, 21))
            self.assertEqual(self.size(qr_code(level, "31" * (digits + 1), width="01")), (25, 25))

    def test_maxicode(self):
        # 28.14 mm x 26.91 mm at 180 dots per 25.4 mm.
        self.assertEqual(self.size(JOBS["MaxiCode"]), (199, 191))


class Refusals(unittest.TestCase):
    def refused(self, job: list[str], reason: str) -> None:
        self.assertEqual(failure_of(job), reason)

    def test_check_digits(self):
        # 1234567890128, 96385074, 012345678905 and 01234567890128 are right.
        for code, kind, number, right in (
            ("00", "UPC-A", b"01234567890", "5"),
            ("02", "EAN-13", b"123456789012", "8"),
            ("03", "EAN-8", b"9638507", "4"),
        ):
            strip = strip_of(linear_job(code, number), linear_job(code, number + right.encode()))
            self.assertEqual([symbol.payload for symbol in strip.symbols], [number + right.encode()] * 2)
            for wrong in sorted(set("0123456789") - {right}):
                reason = f"{kind}: check digit {wrong} is wrong, {right} is right"
                self.refused(linear_job(code, number + wrong.encode()), reason)
        self.refused(databar("01", b"01234567890123".hex()), "DataBar: check digit 3 is wrong, 8 is right")

    def test_lengths_of_numbers(self):
        for code, kind, length in (("00", "UPC-A", 12), ("01", "UPC-E", 12), ("02", "EAN-13", 13), ("03", "EAN-8", 8)):
            for digits in (length - 2, length + 1):
                reason = f"{kind}: {digits} digits: {length - 1} or {length} are needed"
                self.refused(linear_job(code, b"0" * digits), reason)
            self.refused(linear_job(code, b"0" * (length - 2) + b"A"), f"{kind}: only digits are allowed")
        for kind in ("01", "02", "03", "04", "05"):
            self.refused(databar(kind, b"0".hex() * 12), "DataBar: 12 digits: 13 or 14 are needed")

    def test_upc_e(self):
        for number, short in (
            (b"01200000345", b"123450"),
            (b"01210000345", b"123451"),
            (b"01220000345", b"123452"),
            (b"01230000045", b"123453"),
            (b"01234000005", b"123454"),
            (b"01234500005", b"123455"),
            (b"01234500009", b"123459"),
        ):
            symbol = strip_of(linear_job("01", number)).symbols[0]
            self.assertEqual(symbol.payload[:7], b"0" + short)
        for number in (b"02345678901", b"01234500004", b"01230000100", b"01234000010"):
            self.refused(linear_job("01", number), "UPC-E: the number has no short form: too few zeros")
        self.refused(linear_job("01", b"11200000345"), "UPC-E: the first digit must be 0")

    def test_itf_needs_pairs(self):
        self.refused(linear_job("05", b"123456789"), "ITF: 9 digits: pairs are needed")
        self.refused(linear_job("05", b"12A4"), "ITF: only digits are allowed")

    def test_code_39(self):
        for data in (b"123", b"*123", b"123*", b"*123*"):
            symbol = strip_of(linear_job("04", data)).symbols[0]
            self.assertEqual((symbol.payload, symbol.text), (b"123", "*123*"))
        self.refused(linear_job("04", b"1*3"), 'Code 39: "*" is not in Code 39')
        self.refused(linear_job("04", b"abc"), 'Code 39: "a" is not in Code 39')
        self.refused(linear_job("04", b"**"), "Code 39: there is no data between start and stop")
        self.refused(linear_job("04", b"*"), "Code 39: there is no data between start and stop")

    def test_codabar(self):
        for stop, letter in zip("ABCDTN*E", "ABCDABCD"):
            symbol = strip_of(linear_job("06", b"A12" + stop.encode())).symbols[0]
            self.assertEqual((symbol.payload, symbol.text), (f"A12{letter}".encode(), f"A12{stop}"))
        for data in (b"A123", b"T12A", b"AA", b"12"):
            self.refused(linear_job("06", data), "Codabar: start A to D, data, and a stop are needed")
        self.refused(linear_job("06", b"A1B2C"), "Codabar: only digits and -$:/.+ are allowed between start and stop")

    def test_code_93(self):
        self.refused(counted_job("48", b"AB\x80"), "Code 93: 80 is not in Code 93")

    def test_code_128(self):
        begin = "Code 128: the data must begin with a code set: {A, {B or {C"
        for data, reason in (
            (b"1234", begin),
            (b"{{", begin),
            (b"{1{A", begin),
            (b"{A", "Code 128: there is no data after the code set"),
            (b"{A12{", "Code 128: a brace stands at the end of the data"),
            (b"{Aa", "Code 128: 61 is not in code set A"),
            (b"{B\x01", "Code 128: 01 is not in code set B"),
            (b"{B\x80", "Code 128: 80 is not in code set B"),
            (b"{C\x64", "Code 128: 64 is no pair of digits in code set C"),
            (b"{C\x01{2", "Code 128: {2 has no meaning in code set C"),
            (b"{C\x01{S", "Code 128: {S has no meaning in code set C"),
            (b"{C\x01{{", "Code 128: {{ has no meaning in code set C"),
            (b"{A1{5", "Code 128: {5 has no meaning in code set A"),
            (b"{A1{D", "Code 128: {D has no meaning in code set A"),
            (b"{A{S", "Code 128: a shift stands at the end of the data"),
            (b"{A{S{B", "Code 128: a character must follow a shift"),
        ):
            self.refused(counted_job("49", data), reason)

    def test_databar(self):
        self.refused(
            databar("05", b"2123456789012".hex()), "DataBar: the first digit of DataBar Limited must be 0 or 1"
        )
        for kind in ("06", "07"):
            self.refused(
                databar(kind, b"0101234567890128".hex(), marked="01"),
                "DataBar: the data does not begin with an application identifier in parentheses",
            )
            self.refused(
                databar(kind, b"AB12".hex()),
                "DataBar: the data does not begin with the digits of an application identifier",
            )
            for byte in b"#$@[]^`{|}~\x7f\x80\xff":
                reason = f"DataBar: {byte:02X} is not in DataBar Expanded"
                self.refused(databar(kind, f"3031 {byte:02X} 31"), reason)
                self.refused(databar(kind, f"{hexed('(10)A')} {byte:02X}", marked="01"), reason)
            strip = strip_of(databar(kind, b"(99".hex(), marked="01"))
            self.assertEqual(len(strip.failures), 1)

    def test_pdf417_that_does_not_fit(self):
        # Level 5 alone are 64 words of the nine.
        reason = failure_of(pdf417("03", "03", "05", b"01234567890123".hex()))
        self.assertTrue(
            reason.startswith("PDF417: the data does not fit 3 rows of 3 columns with level 5 ("), reason
        )

    def test_too_much_data(self):
        for job in (qr_code("48", "41" * 2000), maxicode("41" * 94), linear_job("04", b"A" * 300)):
            self.assertTrue(failure_of(job))

    def test_no_data(self):
        for code, kind in (("00", "UPC-A"), ("04", "Code 39"), ("0C", "MaxiCode"), ("0D", "DataBar")):
            job = ["1D 77 02", "1D 68 64", f"1D 6B {code} 00", "1D 56 42 00"]
            self.refused(job, f"{kind}: there is no data")

    def test_nothing_set(self):
        for job, reason in (
            (["1D 68 64", "1D 6B 03 39 00"], "EAN-8: the module width has not been set"),
            (["1D 77 02", "1D 6B 03 39 00"], "EAN-8: the height has not been set"),
            (["1D 6B 0D 39 00"], "DataBar: the kind of DataBar has not been set"),
            (["1D 71 02", "1D 6B 0A 39 00"], "PDF417: rows and columns has not been set"),
            (["1D 70 01 01 0C 03 02 06", "1D 6B 0A 39 00"], "PDF417: the error correction level has not been set"),
            (["1D 6B 0B 4D 41 2C 39 00"], "QR Code: the module width has not been set"),
        ):
            self.refused(job + ["1D 56 42 00"], reason)

    def test_wider_than_the_paper(self):
        # Of the paper's 510 dots Code 93 of five characters takes (5 + 4) * 9 + 1 = 82 modules of 6; Code 128 of five
        # takes (5 + 2) * 11 + 13 = 90; DataBar takes 96.
        self.assertEqual(len(strip_of(counted_job("48", b"12345", width="06")).symbols), 1)
        too_wide = "the symbol is {} dots wide, the paper has 510"
        self.refused(counted_job("49", b"{A12345", width="06"), "Code 128: " + too_wide.format(540))
        self.assertEqual(len(strip_of(databar("01", b"0123456789012".hex(), width="05")).symbols), 1)
        self.refused(databar("01", b"0123456789012".hex(), width="06"), "DataBar: " + too_wide.format(576))
        # QR Code: 21 modules of 24 dots are 504; 25 are 600.
        self.assertEqual(len(strip_of(qr_code("4D", "31", width="18")).symbols), 1)
        self.refused(qr_code("4D", "31" * 35, width="18"), "QR Code: " + too_wide.format(600))

    def test_exactly_as_wide_as_the_paper(self):
        # Code 128 of 20 characters: (20 + 2) * 11 + 13 = 255 modules.
        self.assertEqual(strip_of(counted_job("49", b"{B" + b"a" * 20, width="02")).symbols[0].box[::2], (28, 538))
        self.refused(
            counted_job("49", b"{B" + b"a" * 21, width="02"), "Code 128: the symbol is 532 dots wide, the paper has 510"
        )


class Code128(unittest.TestCase):
    """The one symbology that is made here, module for module."""

    def test_modules_of_all_pairs_are_as_zint_makes_them(self):
        for start in range(0, 100, 10):
            pairs = bytes(range(start, start + 10))
            digits = "".join(f"{pair:02d}" for pair in pairs).encode()
            self.assertEqual(symbols.code_128(b"{C" + pairs).row, symbols.modules("CODE128", digits)[0])

    def test_modules_of_sets_a_and_b_are_as_zint_makes_them(self):
        for start in range(0x20, 0x80, 12):
            letters = bytes(range(start, min(start + 12, 0x80)))
            escaped = letters.replace(b"{", b"{{")
            self.assertEqual(symbols.code_128(b"{B" + escaped).row, symbols.modules("CODE128B", letters)[0])
        controls = bytes(range(0x00, 0x20))
        self.assertEqual(symbols.code_128(b"{A" + controls).row, symbols.modules("CODE128", controls)[0])

    def test_values(self):
        for data, values in (
            (b"{A1A\x00_", [103, 17, 33, 64, 63]),
            (b"{B1a{{\x7f", [104, 17, 65, 91, 95]),
            (b"{C\x00\x63\x0c", [105, 0, 99, 12]),
            (b"{A1{B1{C\x01{A1{C\x01{B1", [103, 17, 100, 17, 99, 1, 101, 17, 99, 1, 100, 17]),
            (b"{A{A1", [103, 17]),
            (b"{A{SaA", [103, 98, 65, 33]),
            (b"{B{S\x01a", [104, 98, 65, 65]),
            (b"{A{S{{", [103, 98, 91]),
            (b"{A{1{2{3{41", [103, 102, 97, 96, 101, 17]),
            (b"{B{1{2{3{41", [104, 102, 97, 96, 100, 17]),
            (b"{C{1\x01{1", [105, 102, 1, 102]),
        ):
            self.assertEqual(symbols.Code128(data).values, values, data)

    def test_a_brace_is_not_in_set_a(self):
        with self.assertRaises(symbols.Refused):
            symbols.Code128(b"{A1{{")

    def test_payload(self):
        for data, payload, text in (
            (b"{A1234", b"1234", "1234"),
            (b"{C\x0c\x22", b"1234", "1234"),
            (b"{B{1" + b"AB{1CD", b"AB\x1dCD", "ABCD"),
            (b"{B{4a" + b"b", b"\xe1b", "ab"),
            (b"{B{4{4ab{4{4c", b"\xe1\xe2c", "abc"),
            (b"{B{4{4a{4bc", b"\xe1b\xe3", "abc"),
            (b"{A\x01{SbC", b"\x01bC", " bC"),
        ):
            symbol = symbols.code_128(data)
            self.assertEqual((symbol.payload, symbol.text), (payload, text))


class ReadBack(unittest.TestCase):
    """Every symbology as the printer draws it, through three readers that know nothing of it."""

    def check(self, strip: receipt.Strip) -> dict[str, set[str]]:
        """All symbols are read, by all readers that read the symbology; returns who read which."""
        self.assertEqual(strip.failures, [])
        by_kind: dict[str, set[str]] = {}
        for scan in readers.scan(strip):
            symbol = scan.symbol
            what = f"{symbol.kind} {symbol.data!r} {scan.readings}"
            can = [reader for reader in ALL_READERS if readers.expected(symbol, reader)]
            self.assertEqual(scan.read_by(), can, what)
            self.assertEqual(scan.misread_by(), [], what)
            self.assertTrue(scan.good, what)
            by_kind.setdefault(symbol.kind, set()).update(can)
        return by_kind

    def test_every_symbology(self):
        kinds = [name for name in JOBS if "logo" not in name and name != "self test"]
        strip = strip_of(*(JOBS[name] for name in kinds))
        self.assertEqual([symbol.kind for symbol in strip.symbols], kinds)
        for kind, found in self.check(strip).items():
            self.assertEqual(sorted(found), sorted(READERS.get(kind, ALL_READERS)), kind)

    def test_random_numbers(self):
        dice = random.Random(72)

        def digits(count: int) -> bytes:
            return "".join(dice.choices(string.digits, k=count)).encode()

        jobs = []
        for _ in range(3):
            jobs += [linear_job("00", digits(11)), linear_job("02", digits(12)), linear_job("03", digits(7))]
            jobs += [linear_job("05", digits(2 * dice.randint(3, 8)))]
            body = "".join(dice.choices("0123456789-$:/.+", k=dice.randint(3, 10)))
            jobs += [linear_job("06", (dice.choice("ABCD") + body + dice.choice("ABCDTN*E")).encode(), width="02")]
            maker = digits(2)
            for number in (
                maker + dice.choice((b"0", b"1", b"2")) + b"0000" + digits(3),
                maker + dice.choice((b"3", b"6", b"9")) + b"00000" + digits(2),
                maker + digits(1) + b"7" + b"00000" + digits(1),
                maker + digits(2) + b"3" + b"0000" + dice.choice((b"5", b"7", b"9")),
            ):
                jobs += [linear_job("01", b"0" + number)]
            for kind in ("01", "02", "03", "04"):
                jobs += [databar(kind, digits(13).hex(), width="03")]
            jobs += [databar("05", (b"1" + digits(12)).hex(), width="03")]
        self.check(strip_of(*jobs))

    def test_random_texts(self):
        dice = random.Random(180)

        def text(letters: str, low: int, high: int) -> bytes:
            return "".join(dice.choices(letters, k=dice.randint(low, high))).encode("latin-1")

        printable = "".join(map(chr, range(0x20, 0x7F)))
        jobs = []
        for _ in range(3):
            jobs += [linear_job("04", text(CODE_39, 1, 12), width="02")]
            jobs += [counted_job("48", text(printable, 1, 10))]
            jobs += [counted_job("49", b"{B" + text(printable.replace("{", ""), 1, 14))]
            jobs += [counted_job("49", b"{C" + bytes(dice.choices(range(100), k=6)) + b"{B" + text("abc", 1, 3))]
            jobs += [counted_job("49", b"{A" + text("ABC123", 1, 5) + b"{Sx" + b"{C" + bytes((12, 34)) + b"{B{{}")]
            # Identifier 10 has up to 20 characters; zint takes no blank there.
            lot = text(string.ascii_letters + string.digits + "!%&'*+,-./:;<=>?_", 1, 8)
            jobs += [databar("06", (b"(10)" + lot).hex(), marked="01")]
            jobs += [databar("07", (b"(01)01234567890128(10)" + lot + b"(21)A1").hex(), segments="04", marked="01")]
            jobs += [pdf417("14", "04", "03", text(printable, 1, 40).hex())]
            jobs += [pdf417("14", "04", "03", bytes(dice.choices(range(1, 256), k=20)).hex())]
            jobs += [qr_code(dice.choice(("4C", "4D", "51", "48")), text(printable, 1, 60).hex())]
            jobs += [maxicode(text(string.ascii_uppercase + string.digits, 1, 60).hex())]
        self.check(strip_of(*jobs))

    def test_texts_in_chinese_and_japanese(self):
        chinese = qr_code("4D", "中文条码".encode("gbk").hex())
        japanese = qr_code("48", "バーコード".encode("shift_jis").hex(), language="01")
        strip = strip_of(chinese, japanese)
        self.assertEqual(self.check(strip), {"QR Code": {"ZXing", "zxing-wasm"}})

    def test_functions_of_code_128(self):
        strip = strip_of(counted_job("49", b"{B{1" + b"10AB{121X"), counted_job("49", b"{C{1\x01\x0c"))
        self.assertEqual([symbol.payload for symbol in strip.symbols], [b"10AB\x1d21X", b"0112"])
        self.check(strip)

    def test_expanded_without_marks_is_data_as_it_stands(self):
        strip = strip_of(databar("06", b"01234567890123".hex()), databar("07", b"3103ABC".hex(), segments="04"))
        self.assertEqual([symbol.payload for symbol in strip.symbols], [b"01234567890123", b"3103ABC"])
        self.assertEqual(self.check(strip)["DataBar Expanded"], {"zbar", "zxing-wasm"})

    def test_narrowest_modules(self):
        strip = strip_of(
            databar("01", b"0123456789012".hex(), width="01"),
            pdf417("0C", "03", "02", b"NARROW".hex(), width="01", height="03"),
            qr_code("4D", b"NARROW".hex(), width="01"),
        )
        self.check(strip)

    def test_every_width_of_an_ean_13(self):
        self.check(strip_of(*(linear_job("02", b"590123412345", width=f"{width:02X}") for width in (2, 3, 4, 5))))

    def test_a_dot_that_is_missing_is_seen(self):
        strip = strip_of(JOBS["EAN-13"])
        left, top, right, bottom = strip.symbols[0].box
        strip.image.paste(255, (left + 60, top, left + 90, bottom))
        (scan,) = readers.scan(strip)
        self.assertFalse(scan.good)
        self.assertEqual(scan.read_by(), [])

    def test_another_number_is_seen(self):
        strip = strip_of(JOBS["EAN-13"])
        other = strip_of(linear_job("02", b"400638133393", width="02"))
        strip.image.paste(other.image.crop(other.symbols[0].box), strip.symbols[0].box[:2])
        (scan,) = readers.scan(strip)
        self.assertFalse(scan.good)
        self.assertEqual(scan.misread_by(), ALL_READERS)


if __name__ == "__main__":
    unittest.main()
