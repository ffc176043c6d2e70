#!/usr/bin/python3
"""Tests of receipt/strip.py: what stands where on the paper, dot by dot."""

import unittest

from jobs import (
    CLEAR_LOGOS,
    DOTS_1_X_1,
    DOTS_8_X_9,
    DOTS_10_X_8,
    END,
    GREY_5_X_3,
    GREY_16_X_1,
    JOBS,
    LEVELS_5_X_3,
    LEVELS_16_X_1,
    LOGO_1_X_1,
    LOGO_8_X_9,
    LOGO_10_X_8,
    NINE_LOGOS,
    SELF_TEST,
    counted,
    databar,
    dots,
    grey_logos,
    hexed,
    joined,
    levels,
    linear,
    logos,
    qr_code,
)
from PIL import Image

import receipt

LEFT = 28  # (567 - 510) / 2: paper of 80 mm, of which 72 mm can be printed on
TOP = 24


def strip_of(*jobs: list[str], document: str | None = None) -> receipt.Strip:
    return receipt.render(receipt.decode(b"".join(joined(job) for job in jobs), document))


def black(image: Image.Image) -> set[tuple[int, int]]:
    """The black dots, as (x, y)."""
    width = image.width
    return {(place % width, place // width) for place, dot in enumerate(image.getdata()) if dot == 0}


def rows_of(dots: set[tuple[int, int]]) -> list[int]:
    return sorted({y for _, y in dots})


class Barcodes(unittest.TestCase):
    def ean_13(self, **settings) -> receipt.Strip:
        return strip_of(linear("02", hexed("590123412345"), width="03", **settings))

    def test_bars_alone(self):
        strip = self.ean_13()
        (symbol,) = strip.symbols
        self.assertEqual(symbol.box, (LEFT, TOP, LEFT + 95 * 3, TOP + 100))
        self.assertEqual((symbol.offset, symbol.kind, symbol.data), (12, "EAN-13", b"590123412345"))
        self.assertEqual((symbol.payload, symbol.text), (b"5901234123457", "5901234123457"))
        self.assertEqual(symbol.text_boxes, ())
        # Bars of 100 dots, a line of 30, 90 to the knife, the cut, and 24 below it.
        self.assertEqual(strip.image.size, (567, TOP + 100 + 30 + 90 + 1 + 24))
        self.assertEqual(strip.cuts, [TOP + 220])
        dots = black(strip.image)
        self.assertEqual(rows_of(dots), list(range(TOP, TOP + 100)) + [TOP + 220])

    def test_modules_in_dots(self):
        # 9 0 1 2 3 4 after a leading 5 are coded A B B A A B; the right half is coded C. Patterns of set A.
        odd = "0001101 0011001 0010011 0111101 0100011 0110001 0101111 0111011 0110111 0001011".split()
        right = ["".join("10"[int(module)] for module in pattern) for pattern in odd]
        even = [pattern[::-1] for pattern in right]
        left_half = [(odd, even)[coding][digit] for coding, digit in zip((0, 1, 1, 0, 0, 1), (9, 0, 1, 2, 3, 4))]
        modules = "101" + "".join(left_half) + "01010" + "".join(right[digit] for digit in (1, 2, 3, 4, 5, 7)) + "101"
        image = self.ean_13().image
        for place, module in enumerate(modules):
            for dot in range(3):
                for y in (TOP, TOP + 50, TOP + 99):
                    value = image.getpixel((LEFT + place * 3 + dot, y))
                    self.assertEqual(value, 0 if module == "1" else 255, (place, dot, y))

    def test_text_above(self):
        strip = self.ean_13(position="01")
        (symbol,) = strip.symbols
        # Thirteen letters of 12 dots in the middle of 285.
        left = LEFT + (285 - 156) // 2
        self.assertEqual(symbol.text_boxes, ((left, TOP, left + 156, TOP + 24),))
        self.assertEqual(symbol.box[1::2], (TOP + 24, TOP + 124))
        self.check_text(strip)

    def test_text_below(self):
        strip = self.ean_13(position="02")
        (symbol,) = strip.symbols
        self.assertEqual(symbol.box[1::2], (TOP, TOP + 100))
        self.assertEqual([box[1::2] for box in symbol.text_boxes], [(TOP + 100, TOP + 124)])
        self.assertEqual(strip.cuts, [TOP + 244])
        self.check_text(strip)

    def test_text_above_and_below_in_font_b(self):
        strip = self.ean_13(position="03", font="01")
        (symbol,) = strip.symbols
        left = LEFT + (285 - 13 * 9) // 2
        self.assertEqual(
            symbol.text_boxes, ((left, TOP, left + 117, TOP + 17), (left, TOP + 117, left + 117, TOP + 134))
        )
        self.assertEqual(symbol.box[1::2], (TOP + 17, TOP + 117))
        self.check_text(strip)

    def check_text(self, strip: receipt.Strip) -> None:
        """Letters stand in every cell of each line of text and nowhere else beside the bars and the cut."""
        (symbol,) = strip.symbols
        dots = black(strip.image)
        for left, top, right, bottom in symbol.text_boxes:
            cell = (right - left) // len(symbol.text)
            for place in range(len(symbol.text)):
                first = left + place * cell
                inside = {dot for dot in dots if first <= dot[0] < first + cell and top <= dot[1] < bottom}
                self.assertGreater(len(inside), 10, place)
            dots -= {dot for dot in dots if left <= dot[0] < right and top <= dot[1] < bottom}
        left, top, right, bottom = symbol.box
        dots = {dot for dot in dots if not (left <= dot[0] < right and top <= dot[1] < bottom)}
        self.assertEqual(rows_of(dots), strip.cuts)

    def test_same_letters_are_drawn_alike_and_others_are_not(self):
        strip = strip_of(linear("03", hexed("1112111"), position="02"))
        left, top, right, bottom = strip.symbols[0].text_boxes[0]
        cells = [strip.image.crop((x, top, x + 12, bottom)).tobytes() for x in range(left, right, 12)]
        # 1112111 and its check digit: 1 * 3 + 1 + 1 * 3 + 2 + 1 * 3 + 1 + 1 * 3 = 16, so 4.
        self.assertEqual(strip.symbols[0].text, "11121114")
        self.assertEqual([cell == cells[0] for cell in cells], [True, True, True, False, True, True, True, False])

    def test_text_wider_than_the_bars_begins_at_the_left(self):
        # Two letters a pair of digits: 8 letters of 12 dots over 79 modules of 2; Code 128 of one pair has 46 * 2.
        strip = strip_of(counted("49", "0A", "7B 43" + "0C" * 8, position="02"))
        (box,) = strip.symbols[0].text_boxes
        self.assertEqual(strip.symbols[0].box[2] - LEFT, ((8 + 2) * 11 + 13) * 2)
        self.assertEqual(box[0::2], (LEFT + (246 - 192) // 2, LEFT + (246 - 192) // 2 + 192))
        strip = strip_of(databar("03", hexed("0123456789012"), text="02"))
        (box,) = strip.symbols[0].text_boxes
        self.assertEqual(strip.symbols[0].text, "(01)01234567890128")
        self.assertEqual(box[0::2], (LEFT, LEFT + 18 * 12))

    def test_text_wider_than_the_paper_is_cut_off(self):
        # 43 letters of 12 dots are 516.
        data = "(10)" + "A" * 20 + "(21)" + "B" * 15
        strip = strip_of(databar("07", hexed(data), text="01", marked="01"))
        (box,) = strip.symbols[0].text_boxes
        self.assertEqual(box[0::2], (LEFT, LEFT + 510))
        self.assertEqual(strip.failures, [])
        self.assertEqual(
            [str(note) for note in strip.notes], ["0010: the text is 516 dots wide and is cut off at the paper's 510"]
        )

    def test_text_of_databar(self):
        for code, count in (("01", 1), ("02", 1), ("03", 0), ("04", 0)):
            strip = strip_of(databar("01", hexed("0123456789012"), text=code))
            self.assertEqual(len(strip.symbols[0].text_boxes), count, code)
        job = databar("01", hexed("0123456789012"), text="04")
        job[1] = "1D 48 03"
        self.assertEqual(strip_of(job).symbols[0].text_boxes, ())

    def test_two_dimensional_symbols_have_no_text(self):
        for name in ("PDF417", "QR Code", "MaxiCode"):
            strip = strip_of(["1D 48 03"] + JOBS[name])
            self.assertEqual(strip.symbols[0].text_boxes, (), name)

    def test_separators_of_stacked_databar(self):
        strip = strip_of(databar("04", hexed("0123456789012"), row="0A", separator="05"))
        rows = [strip.image.crop((LEFT, y, LEFT + 100, y + 1)).tobytes() for y in range(TOP, TOP + 35)]
        # A row of 10 dots, three separators of 5, a row of 10.
        for first, last in ((0, 10), (10, 15), (15, 20), (20, 25), (25, 35)):
            self.assertEqual(len(set(rows[first:last])), 1, first)
        self.assertEqual(len(set(rows)), 5)
        # The separator in the middle is a space and a bar over and over, between four spaces at each end.
        middle = "0000" + "01" * 21 + "0000"
        self.assertEqual(rows[17], b"".join(b"\0\0" if module == "1" else b"\xff\xff" for module in middle))

    def test_model_1_of_qr_code_is_noted(self):
        strip = strip_of(qr_code("4D", hexed("1"), model="01"))
        self.assertEqual([(note.offset, note.failure) for note in strip.notes], [(6, False)])
        self.assertIn("model 1", strip.notes[0].text)
        self.assertEqual(len(strip.symbols), 1)
        self.assertEqual(strip_of(qr_code("4D", hexed("1"))).notes, [])

    def test_what_is_set_lasts_until_it_is_set_again(self):
        job = ["1D 66 00", "1D 48 02", "1D 77 02", "1D 68 32", f"1D 6B 03 {hexed('9638507')} 00", "1D 77 03"]
        strip = strip_of(job + [f"1D 6B 03 {hexed('9638507')} 00"] + END)
        first, second = strip.symbols
        self.assertEqual(first.box, (LEFT, TOP, LEFT + 134, TOP + 50))
        self.assertEqual(second.box, (LEFT, TOP + 74, LEFT + 201, TOP + 124))


class Paper(unittest.TestCase):
    def test_cut_is_a_dashed_line(self):
        strip = strip_of(linear("03", hexed("9638507")))
        (row,) = strip.cuts
        line = "".join("#" if strip.image.getpixel((x, row)) == 0 else "." for x in range(567))
        self.assertEqual(line, ("############........" * 29)[:567])
        for beside in (row - 1, row + 1):
            self.assertEqual(strip.image.crop((0, beside, 567, beside + 1)).getextrema(), (255, 255))

    def test_feed_before_the_cut(self):
        job = linear("03", hexed("9638507"))
        plain = strip_of(job)
        fed = strip_of(job[:-1] + ["0A", "1D 56 42 FF"])
        self.assertEqual(fed.cuts[0] - plain.cuts[0], 30 + 255)

    def test_two_receipts(self):
        strip = strip_of(JOBS["EAN-13"], JOBS["UPC-A"])
        first, second = strip.cuts
        self.assertEqual(strip.symbols[1].box[1], first + 1 + 24)
        self.assertEqual(second - first, 25 + 100 + 30 + 90)

    def test_failure_leaves_a_framed_remark_and_no_bars(self):
        strip = strip_of(linear("02", hexed("5901234123450")))
        self.assertEqual(strip.symbols, [])
        self.assertEqual(
            [str(note) for note in strip.failures],
            ["000C: the printer prints nothing: EAN-13: check digit 0 is wrong, 7 is right"],
        )
        self.assertEqual(rows_of(black(strip.image)), strip.cuts)
        self.check_remark(strip, lines=2)

    def check_remark(self, strip: receipt.Strip, lines: int) -> None:
        """A grey frame over the printable width, with grey words in it."""
        height = 17 * (lines + 1)
        frame = strip.image.crop((LEFT, TOP, LEFT + 510, TOP + height))
        for side in ((0, 0, 510, 1), (0, height - 1, 510, height), (0, 0, 1, height), (509, 0, 510, height)):
            self.assertEqual(frame.crop(side).getextrema(), (140, 140))
        words = frame.crop((9, 8, 501, height - 8))
        self.assertEqual(words.getextrema(), (140, 255))
        self.assertGreater(words.histogram()[140], 100)

    def test_self_test_and_clearing_are_remarks(self):
        for job in (SELF_TEST, CLEAR_LOGOS):
            strip = strip_of(job)
            self.assertEqual((strip.symbols, strip.notes, strip.cuts, strip.logos), ([], [], [], []))
            self.assertEqual(black(strip.image), set())
            self.check_remark(strip, lines=1)

    def test_download_is_a_remark(self):
        strip = strip_of(JOBS["UPC-A"], document="FIRMWARE")
        self.assertEqual((strip.symbols, strip.notes), ([], []))
        self.check_remark(strip, lines=2)

    def test_fault_is_a_remark_at_the_end(self):
        strip = receipt.render([], "0000: 20 is no command")
        self.check_remark(strip, lines=1)

    def test_crop_is_the_symbol_on_white(self):
        strip = strip_of(qr_code("4D", hexed("1"), width="02"))
        picture = strip.crop(strip.symbols[0], border=10, scale=3)
        self.assertEqual(picture.size, (42 * 3 + 20, 42 * 3 + 20))
        inner = strip.image.crop(strip.symbols[0].box)
        self.assertEqual(picture.getpixel((9, 10)), 255)
        for x, y in ((0, 0), (41, 0), (5, 7), (20, 33)):
            self.assertEqual(picture.getpixel((10 + 3 * x + 2, 10 + 3 * y + 1)), inner.getpixel((x, y)))


class Logos(unittest.TestCase):
    def check_logo(self, strip: receipt.Strip, place: int, size: tuple[int, int], expected: bytes, mode="1") -> None:
        """Every dot of a stored logo, and of the strip where it is shown."""
        logo = strip.logos[place]
        self.assertEqual((logo.picture.mode, logo.picture.size), (mode, size))
        self.assertEqual(logo.picture.convert("L").tobytes(), expected)
        self.assertEqual(logo.box[0::2], (LEFT, LEFT + size[0]))
        self.assertEqual(strip.image.crop(logo.box).tobytes(), expected)

    def test_black_and_white(self):
        strip = strip_of(JOBS["logos"])
        first, second = strip.logos
        self.assertEqual((first.offset, second.offset), (7, 19))
        # A falling diagonal; sixteen columns, every second one black.
        self.check_logo(strip, 0, (8, 8), dots(["." * place + "#" for place in range(8)], 8))
        self.check_logo(strip, 1, (16, 8), dots(["#." * 8] * 8, 16))

    def test_columns_go_from_top_to_bottom_first(self):
        # Eight columns of two bytes; the second byte's lowest bit is the sixteenth dot.
        strip = strip_of(logos("01 00 02 00 80 00 00 80 00 01" + "00" * 10))
        self.check_logo(strip, 0, (8, 16), dots(["#"] + [""] * 7 + [".#"] + [""] * 6 + ["..#"], 8))

    def test_rows_that_end_inside_a_byte(self):
        self.check_logo(strip_of(logos(LOGO_10_X_8)), 0, (32, 8), dots(DOTS_10_X_8, 32))

    def test_one_dot_is_at_the_left_of_the_last_row(self):
        self.check_logo(strip_of(logos(LOGO_1_X_1)), 0, (32, 8), dots(DOTS_1_X_1, 32))

    def test_rows_that_fill_no_byte_have_white_ones_above(self):
        self.check_logo(strip_of(logos(LOGO_8_X_9)), 0, (32, 16), dots(DOTS_8_X_9, 32))

    def test_nine_logos(self):
        strip = strip_of(logos(*NINE_LOGOS))
        self.assertEqual([logo.offset for logo in strip.logos], [7 + 36 * place for place in range(9)])
        for place in range(9):
            self.check_logo(strip, place, (32, 8), dots(["#" * (place + 1)] * 8, 32))

    def test_largest(self):
        # Black right of the diagonal from the top left corner: column x has dots in the rows above x, row y has them
        # right of y.
        columns = ((1 << 768) - (1 << 768 - min(x, 768)) for x in range(1024))
        strip = strip_of(logos("80 00 60 00" + b"".join(column.to_bytes(96, "big") for column in columns).hex()))
        (logo,) = strip.logos
        self.assertEqual((logo.picture.mode, logo.picture.size), ("1", (1024, 768)))
        rows = (bytes((255,)) * (y + 1) + bytes(1023 - y) for y in range(768))
        self.assertTrue(logo.picture.convert("L").tobytes() == b"".join(rows))

    def test_grey(self):
        # Planes of the first row F0, CC, AA, 00: levels 14, 12, 10, 8, 6, 4, 2, 0 of 15; of the second the lowest bit
        # is set everywhere: 1 of 15. They are dark: 15 is black.
        self.check_logo(strip_of(JOBS["grey logo"]), 0, (8, 2), levels(["13579BDF", "E" * 8], 8), "L")

    def test_grey_of_two_bytes_a_row(self):
        planes = "FF 00 00 80 00 00 00 00"  # row 0: plane 3 left half, plane 2 the ninth dot
        strip = strip_of(grey_logos("01 00 02 00 01 00" + planes + "00" * 8))
        self.check_logo(strip, 0, (16, 2), levels(["7" * 8 + "B", ""], 16), "L")

    def test_every_grey_level(self):
        self.check_logo(strip_of(grey_logos(GREY_16_X_1)), 0, (16, 2), levels(LEVELS_16_X_1, 16), "L")

    def test_odd_number_of_grey_rows(self):
        self.check_logo(strip_of(grey_logos(GREY_5_X_3)), 0, (8, 4), levels(LEVELS_5_X_3, 8), "L")

    def test_several_grey_logos(self):
        strip = strip_of(grey_logos(GREY_5_X_3, GREY_16_X_1))
        self.assertEqual([logo.offset for logo in strip.logos], [7, 29])
        self.check_logo(strip, 0, (8, 4), levels(LEVELS_5_X_3, 8), "L")
        self.check_logo(strip, 1, (16, 2), levels(LEVELS_16_X_1, 16), "L")

    def test_largest_in_grey(self):
        # Sixteen bands of 64 dots, which begin one level darker every 48 rows. An eighth of a band's dots is a byte.
        bands = [[(band - y // 48) % 16 for band in range(16)] for y in range(768)]
        planes = (
            b"".join(bytes(8) if level & bit else bytes((255,)) * 8 for level in row)
            for row in bands
            for bit in (8, 4, 2, 1)
        )
        strip = strip_of(grey_logos("01 00 80 00 80 01" + b"".join(planes).hex()))
        (logo,) = strip.logos
        self.assertEqual((logo.picture.mode, logo.picture.size), ("L", (1024, 768)))
        rows = (b"".join(bytes((17 * level,)) * 64 for level in row) for row in bands)
        self.assertTrue(logo.picture.tobytes() == b"".join(rows))

    def test_shown_on_the_strip(self):
        strip = strip_of(logos("01 00 01 00" + "FF" * 8))
        # Under a remark of two lines; then the line feed and the margin.
        self.assertEqual(strip.logos[0].box, (LEFT, TOP + 51, LEFT + 8, TOP + 59))
        self.assertEqual(black(strip.image), {(LEFT + x, TOP + 51 + y) for x in range(8) for y in range(8)})
        self.assertEqual(strip.image.height, TOP + 51 + 8 + 30 + 24)
        self.assertEqual(strip.notes, [])

    def test_as_wide_as_the_paper_is_shown_as_it_is(self):
        # 504 dots, every second column black; 512 are too many.
        raster = "FF 00" * 252
        strip = strip_of(logos("3F 00 01 00" + raster))
        self.check_logo(strip, 0, (504, 8), dots(["#." * 252] * 8, 504))
        self.assertEqual(strip.notes, [])
        strip = strip_of(logos("40 00 01 00" + raster + "FF" * 8))
        self.assertEqual([note.offset for note in strip.notes], [7])

    def test_wider_than_the_paper_is_shown_smaller(self):
        strip = strip_of(logos("80 00 02 00" + "FF" * 2048))
        self.assertEqual(strip.logos[0].picture.size, (1024, 16))
        self.assertEqual(
            [str(note) for note in strip.notes],
            ["0007: the logo is 1024 dots wide, the paper has 510; it is shown smaller"],
        )
        self.assertEqual(strip.failures, [])
        # 16 rows become 16 * 510 / 1024 = 7.
        self.assertEqual(strip.logos[0].box, (LEFT, TOP + 51, LEFT + 510, TOP + 58))
        self.assertEqual(black(strip.image), {(LEFT + x, TOP + 51 + y) for x in range(510) for y in range(7)})

    def test_made_smaller_black_and_white_become_grey(self):
        strip = strip_of(logos("80 00 01 00" + "FF 00" * 512))
        shown = strip.image.crop(strip.logos[0].box)
        self.assertEqual(shown.size, (510, 3))
        # Two or three columns in one: half of them black, a third or two thirds.
        self.assertLessEqual(set(shown.getdata()), {85, 127, 128, 170})

    def test_job_that_ends_between_its_logos(self):
        job = joined(logos(LOGO_10_X_8, LOGO_1_X_1, LOGO_8_X_9)[:3])
        with self.assertRaises(receipt.DecodeError) as caught:
            receipt.decode(job, "LOGO")
        strip = receipt.render(caught.exception.commands, str(caught.exception))
        self.check_logo(strip, 0, (32, 8), dots(DOTS_10_X_8, 32))
        self.assertEqual(len(strip.logos), 1)
        # Grey words below the logo: it is not all.
        below = strip.image.crop((LEFT, strip.logos[0].box[3], LEFT + 510, strip.image.height))
        self.assertEqual(below.getextrema(), (140, 255))


if __name__ == "__main__":
    unittest.main()
