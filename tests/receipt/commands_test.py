#!/usr/bin/python3
"""Tests of receipt/commands.py: every command byte by byte, every way to end too early, every byte without meaning."""

import random
import unittest

from jobs import (
    CLOSE,
    END,
    GREY_5_X_3,
    GREY_16_X_1,
    JOBS,
    LOGO_1_X_1,
    LOGO_8_X_9,
    LOGO_10_X_8,
    NINE_LOGOS,
    OPEN,
    grey_logos,
    hexed,
    joined,
    linear,
    logos,
)

import receipt

# What may follow first bytes that are no command yet, and what may be each command's parameters.
NEXT = {
    "": [0x0A, 0x1B, 0x1C, 0x1D],
    "1B": [0x63],
    "1B 63": [0x3B],
    "1C": [0x71, 0x72],
    "1D": [0x28, 0x48, 0x56, 0x66, 0x68, 0x6B, 0x6F, 0x70, 0x71, 0x73, 0x77],
    "1D 28": [0x41],
    "1D 28 41": [0x02],
    "1D 28 41 02": [0x00],
    "1D 28 41 02 00": [0x00],
    "1D 48": range(0, 4),
    "1D 56": [0x42],
    "1D 66": range(0, 2),
    "1D 68": range(1, 256),
    "1D 6B": [0, 1, 2, 3, 4, 5, 6, 0x0A, 0x0B, 0x0C, 0x0D, 0x48, 0x49],
    "1D 6B 0B": [0x48, 0x4C, 0x4D, 0x51],
    "1D 6B 0B 4D": [0x41],
    "1D 6B 0B 4D 41": [0x2C],
    "1D 6F": [0x00],
    "1D 6F 00": range(1, 25),
    "1D 6F 00 04": range(0, 2),
    "1D 6F 00 04 00": range(1, 3),
    "1D 70": [0x01],
    "1D 70 01": [0x01],
    "1D 70 01 01": range(3, 91),
    "1D 70 01 01 03": range(1, 31),
    "1D 70 01 01 03 01": range(1, 8),
    "1D 70 01 01 03 01 02": range(2, 26),
    "1D 71": range(0, 9),
    "1D 73": range(1, 8),
    "1D 73 01": range(1, 7),
    "1D 73 01 02": range(2, 251),
    "1D 73 01 02 28": range(1, 11),
    "1D 73 01 02 28 02": range(1, 11),
    "1D 73 01 02 28 02 01": range(2, 21),
    "1D 73 01 02 28 02 01 02": range(1, 5),
    "1D 73 01 02 28 02 01 02 01": range(0, 2),
    "1D 77": range(2, 7),
}
FRAMED_NEXT = {
    "1D 28 41 02 00 00": [0x02],
    "1C 71": range(0, 10),
    "1C 71 00": [0x00],
    "1C 72": range(1, 10),
    "1C 72 01": [0x01],
    "1C 72 01 01": [0x00],
}


class Decoding(unittest.TestCase):
    def error(self, job: bytes, document: str | None = None) -> receipt.DecodeError:
        with self.assertRaises(receipt.DecodeError) as caught:
            receipt.decode(job, document)
        return caught.exception

    def refused_at(self, commands: list[str], offset: int, document: str | None = None) -> receipt.DecodeError:
        error = self.error(joined(commands), document)
        self.assertEqual(error.offset, offset, f"{commands}: {error}")
        return error


class EachCommand(Decoding):
    def decoded(self, commands: list[str]) -> list[tuple[int, str, dict]]:
        found = receipt.decode(joined(commands))
        self.assertEqual([command.data for command in found], [bytes.fromhex(command) for command in commands])
        return [(command.offset, command.meaning, command.values) for command in found]

    def test_upc_a(self):
        self.assertEqual(
            self.decoded(linear("00", hexed("123456789012"), font="01", position="03", width="06", height="FF")),
            [
                (0, "text of barcodes in font B", {"font": 1}),
                (3, "text of barcodes: above and below the bars", {"position": 3}),
                (6, "barcode module width 6 dots", {"width": 6}),
                (9, "barcode height 255 dots", {"height": 255}),
                (12, 'UPC-A: "123456789012"', {"kind": "UPC-A", "data": b"123456789012"}),
                (28, "line feed", {}),
                (29, "feed to the cutter and 0 dots, cut", {"feed": 0}),
            ],
        )

    def test_words_of_text_positions(self):
        for code, words in (("00", "not printed"), ("01", "above the bars"), ("02", "below the bars")):
            found = self.decoded(linear("03", hexed("9638507"), position=code))
            self.assertEqual(found[0][1], "text of barcodes in font A")
            self.assertEqual(found[1][1], f"text of barcodes: {words}")

    def test_codes_of_ended_barcodes(self):
        for code, kind in (
            ("00", "UPC-A"),
            ("01", "UPC-E"),
            ("02", "EAN-13"),
            ("03", "EAN-8"),
            ("04", "Code 39"),
            ("05", "ITF"),
            ("06", "Codabar"),
            ("0A", "PDF417"),
            ("0C", "MaxiCode"),
            ("0D", "DataBar"),
        ):
            found = self.decoded([f"1D 6B {code} 41 5C 80 42 00"] + END)
            self.assertEqual(found[0], (0, rf'{kind}: "A\x5C\x80B"', {"kind": kind, "data": b"A\\\x80B"}))

    def test_code_128_is_closed_and_sent_again(self):
        found = self.decoded(JOBS["Code 128"])
        self.assertEqual(found[4], (12, "Code 128 of no bytes: nothing is printed", {"kind": "Code 128"}))
        self.assertEqual([offset for offset, _, _ in found[5:]], [16, 19, 22, 32, 33, 34])
        self.assertEqual(found[7][1:], ('Code 128, 6 bytes: "{A1234"', {"kind": "Code 128", "data": b"{A1234"}))
        self.assertEqual(found[8][1], "ignored after counted data")

    def test_code_93_may_hold_zero_bytes(self):
        commands = list(JOBS["Code 93"])
        commands[7] = "1D 6B 48 03 41 00 0A"
        values = {"kind": "Code 93", "data": b"A\0\n"}
        self.assertEqual(self.decoded(commands)[7][1:], (r'Code 93, 3 bytes: "A\x00\x0A"', values))

    def test_longest_counted_data(self):
        commands = list(JOBS["Code 93"])
        commands[7] = "1D 6B 48 FF" + "41" * 255
        self.assertEqual(self.decoded(commands)[7][2]["data"], b"A" * 255)

    def test_databar(self):
        commands = ["1D 73 07 01 02 03 04 05 02 01", "1D 6B 0D 41 00"] + END
        offset, meaning, values = self.decoded(commands)[0]
        self.assertEqual(
            meaning,
            "DataBar Expanded Stacked: module 1, row 2, composite row 3, separator 4 dots; 5 segments a row; "
            "text: primary data; identifiers marked in the data",
        )
        self.assertEqual(
            values,
            {
                "kind": 7,
                "width": 1,
                "height": 2,
                "composite_height": 3,
                "separator": 4,
                "segments": 5,
                "text": 2,
                "identifiers": 1,
            },
        )
        for code, name in (
            ("01", "Omnidirectional"),
            ("02", "Truncated"),
            ("03", "Stacked"),
            ("04", "Stacked Omnidirectional"),
            ("05", "Limited"),
            ("06", "Expanded"),
        ):
            commands[0] = f"1D 73 {code} 01 02 03 04 05 02 01"
            self.assertTrue(self.decoded(commands)[0][1].startswith(f"DataBar {name}: "))

    def test_pdf417(self):
        found = self.decoded(["1D 70 01 01 03 1E 07 19", "1D 71 08", "1D 6B 0A 41 0A 1D 00"] + END)
        self.assertEqual(
            found[0],
            (0, "PDF417: 3 rows, 30 columns, module 7 x 25 dots", {"rows": 3, "columns": 30, "width": 7, "height": 25}),
        )
        self.assertEqual(found[1], (8, "error correction level 8", {"level": 8}))
        self.assertEqual(found[2][2], {"kind": "PDF417", "data": b"A\n\x1d"})

    def test_qr_code(self):
        found = self.decoded(["1D 6F 00 18 01 01", "1D 6B 0B 51 41 2C 41 0A 42 00"] + END)
        self.assertEqual(
            found[0], (0, "QR Code: module 24 dots, Japanese, model 1", {"width": 24, "language": 1, "model": 1})
        )
        values = {"kind": "QR Code", "level": "Q", "data": b"A\nB"}
        self.assertEqual(found[1], (6, r'QR Code, level Q: "A\x0AB"', values))

    def test_self_test(self):
        self.assertEqual(
            self.decoded(JOBS["self test"]),
            [
                (0, "printer-side commands begin", {}),
                (4, "print the self-test page", {}),
                (11, "printer-side commands end", {}),
            ],
        )

    def test_clear_logos(self):
        self.assertEqual(self.decoded(JOBS["clear logos"])[1], (4, "clear all stored logos", {}))

    def test_logos(self):
        found = self.decoded(JOBS["logos"])
        self.assertEqual(found[1], (4, "store 2 black-and-white logos", {"count": 2, "grey": False}))
        self.assertEqual(found[2][:2], (7, "logo 1 of 2: 8 x 8 dots, 8 bytes of raster"))
        self.assertEqual(found[2][2]["raster"], bytes((128, 64, 32, 16, 8, 4, 2, 1)))
        self.assertEqual(found[3][:2], (19, "logo 2 of 2: 16 x 8 dots, 16 bytes of raster"))
        self.assertEqual(found[4][0], 39)

    def test_grey_logo(self):
        found = self.decoded(JOBS["grey logo"])
        self.assertEqual(found[1], (4, "store 1 grey logo", {"count": 1, "grey": True}))
        self.assertEqual(found[2][:2], (7, "logo 1 of 1: 8 x 2 dots, 16 grey levels, 8 bytes of raster"))

    def test_largest_logos(self):
        # 1024 x 768 dots in black and white: 128 bytes across, 96 bytes down; in grey 4 x 768 / 8 = 384.
        raster = "00" * (128 * 96 * 8)
        found = self.decoded([OPEN, "1C 71 01", "80 00 60 00" + raster, "0A", CLOSE])
        self.assertEqual((found[2][2]["width"], found[2][2]["height"]), (1024, 768))
        # 767 rows come as 768.
        found = self.decoded([OPEN, "1C 72 01", "01 00 80 00 80 01" + raster * 4, "0A", CLOSE])
        self.assertEqual((found[2][2]["width"], found[2][2]["height"]), (1024, 768))

    def test_sizes_of_logos(self):
        # Rows of four bytes however few dots they have, columns of whole bytes.
        for raster, size in (
            (LOGO_10_X_8, "32 x 8 dots, 32 bytes of raster"),
            (LOGO_1_X_1, "32 x 8 dots, 32 bytes of raster"),
            (LOGO_8_X_9, "32 x 16 dots, 64 bytes of raster"),
        ):
            found = self.decoded(logos(raster))
            self.assertEqual(found[2][:2], (7, f"logo 1 of 1: {size}"))
            self.assertEqual(found[2][2]["raster"], bytes.fromhex(raster)[4:])
        # In grey rows of whole bytes, and an even number of them.
        for raster, size in (
            (GREY_5_X_3, "8 x 4 dots, 16 grey levels, 16 bytes of raster"),
            (GREY_16_X_1, "16 x 2 dots, 16 grey levels, 16 bytes of raster"),
        ):
            found = self.decoded(grey_logos(raster))
            self.assertEqual(found[2][:2], (7, f"logo 1 of 1: {size}"))
            self.assertEqual(found[2][2]["raster"], bytes.fromhex(raster)[6:])

    def test_nine_logos(self):
        found = self.decoded(logos(*NINE_LOGOS))
        self.assertEqual(found[1][1], "store 9 black-and-white logos")
        for number in range(1, 10):
            offset, meaning, values = found[1 + number]
            self.assertEqual(offset, 7 + 36 * (number - 1))
            self.assertEqual(meaning, f"logo {number} of 9: 32 x 8 dots, 32 bytes of raster")
            self.assertEqual(values["raster"], b"\xff" * number + bytes(32 - number))
        self.assertEqual([found[11][0], found[12][0]], [7 + 36 * 9, 7 + 36 * 9 + 1])

    def test_firmware_is_known_by_its_name_alone(self):
        for job in (b"", b"\0\1\2", joined(JOBS["UPC-A"])):
            (command,) = receipt.decode(job, "FIRMWARE")
            self.assertEqual((command.offset, command.data, command.name), (0, job, "download"))
            self.assertEqual(command.meaning, f"a file for the printer, {len(job)} bytes, passed on unchanged")

    def test_iterate_gives_commands_before_the_fault(self):
        commands = receipt.iterate(bytes.fromhex("1D 66 00 1D 48 01 1D 99"))
        self.assertEqual([next(commands).offset, next(commands).offset], [0, 3])
        with self.assertRaises(receipt.DecodeError):
            next(commands)


class EndingTooEarly(Decoding):
    def test_every_length_of_every_job(self):
        for name, commands in JOBS.items():
            job = joined(commands)
            starts = [len(joined(commands[:count])) for count in range(len(commands) + 1)]
            for length in range(len(job)):
                # Inside a command: where it begins. Between commands: where the next would begin.
                offset = max(start for start in starts if start <= length)
                with self.subTest(name, length=length):
                    error = self.error(job[:length])
                    self.assertEqual(error.offset, offset, error)
                    before = [command.offset for command in error.commands]
                    self.assertEqual(before, [start for start in starts if start < offset])

    def test_says_what_is_missing(self):
        for job, reason in (
            ("1D 73 01 02", "0000: the job ends inside the command 1D 73 01 02: height is missing"),
            (
                "1D 6B 49 03 41",
                "0000: the job ends inside the command 1D 6B 49 03 41: 2 of 3 bytes of data are missing",
            ),
            (
                "1B 63 3B 01 1C 71 01 01 00 01 00 FF",
                "0007: the job ends inside the command 01 00 01 00 FF: "
                "7 of 8 bytes of the raster of logo 1 of 1 are missing",
            ),
            (
                "1B 63 3B 01 1C 71 03",
                "0007: the job ends with 0 of 3 logos: a printer takes what comes next for the others",
            ),
            (
                "1B 63 3B 01 1C 71 03 01 00 01 00" + "FF" * 8,
                "0013: the job ends with 1 of 3 logos: a printer takes what comes next for the others",
            ),
            (
                "1B 63 3B 01 1C 72 02 01 00 01 00 01 00" + "FF" * 8,
                "0015: the job ends with 1 of 2 logos: a printer takes what comes next for the others",
            ),
            ("1D 66 00", "0003: the job ends without feeding and cutting"),
            ("1D 6B 49 01 41", "0005: the job ends without the zero byte after counted data"),
            ("1B 63 3B 01", "0004: the job ends without 1B 63 3B 00"),
            ("1B 63 3B 01 1C 71 00 00", "0008: the job ends without the line feed after the logos"),
            ("", "0000: the job ends and nothing has been printed or stored"),
            ("0A 1D 56 42 00", "0005: the job ends and nothing has been printed or stored"),
        ):
            self.assertEqual(str(self.error(bytes.fromhex(job))), reason)


class BytesWithoutMeaning(Decoding):
    def check_next(self, before: str, first: str, allowed) -> None:
        start = len(bytes.fromhex(before))
        here = start + len(bytes.fromhex(first))
        for byte in range(256):
            job = bytes.fromhex(before + first) + bytes((byte,))
            error = self.error(job)
            if byte in allowed:
                self.assertIn("the job ends", error.reason, f"{job.hex(' ')}: {error}")
            else:
                self.assertEqual(error.offset, here, f"{job.hex(' ')}: {error}")
                self.assertTrue(error.reason.startswith(f"{byte:02X} "), error)

    def test_every_byte_of_every_command(self):
        for first, allowed in NEXT.items():
            with self.subTest(first):
                self.check_next("", first, allowed)

    def test_every_byte_of_framed_commands(self):
        for first, allowed in FRAMED_NEXT.items():
            with self.subTest(first):
                self.check_next(OPEN, first, allowed)

    def test_every_byte_of_the_frame(self):
        for byte in range(2, 256):
            self.refused_at([f"1B 63 3B {byte:02X}"], 3)

    def test_unknown_byte_between_any_commands(self):
        for name, commands in JOBS.items():
            for place in range(len(commands) + 1):
                if commands[place - 1].startswith(("1C 71 02", "1C 72 01", "01 00 01 00 80")):
                    continue  # a logo's header stands there
                with self.subTest(name, place=place):
                    offset = len(joined(commands[:place]))
                    self.refused_at(commands[:place] + ["20"] + commands[place:], offset)

    def test_control_byte_in_data_that_no_zero_ended(self):
        for code in ("00", "01", "02", "03", "04", "05", "06", "0C", "0D"):
            self.refused_at([f"1D 6B {code} 31 32"] + END, 5)

    def test_text_may_hold_control_bytes(self):
        # The closing zero of the data is lost: the cut's own takes its place, and the job has no end.
        self.refused_at(["1D 6B 0A 31 32"] + END, 10)

    def test_logo_sizes(self):
        for size, good in (("00 00", False), ("01 00", True), ("80 00", True), ("81 00", False), ("00 01", False)):
            error = self.error(joined([OPEN, "1C 71 01", size]))
            self.assertEqual(error.offset, 7, error)
            self.assertEqual("is no width of a logo" in error.reason, not good, error)
        for size, good in (("00 00", False), ("01 00", True), ("60 00", True), ("61 00", False), ("00 01", False)):
            error = self.error(joined([OPEN, "1C 71 01", "01 00", size]))
            self.assertEqual(error.offset, 7 if good else 9, error)
        for size, good in (("00 00", False), ("01 00", True), ("80 01", True), ("81 01", False)):
            error = self.error(joined([OPEN, "1C 72 01", "01 00 01 00", size]))
            self.assertEqual(error.offset, 7 if good else 11, error)

    def test_second_logo_is_checked_where_it_stands(self):
        self.refused_at([OPEN, "1C 71 02", "01 00 01 00" + "00" * 8, "01 00 00 00", "0A", CLOSE], 21)
        self.refused_at([OPEN, "1C 71 02", "01 00 01 00" + "00" * 8, "0A", CLOSE], 19)

    def test_raster_that_is_too_long(self):
        self.refused_at([OPEN, "1C 71 01", "01 00 01 00" + "00" * 9, "0A", CLOSE], 19)


class Damage(unittest.TestCase):
    def test_every_byte_belongs_to_a_command_or_is_reported(self):
        dice = random.Random(1976)
        jobs = [joined(commands) for commands in JOBS.values()]
        whole = 0
        for _ in range(4000):
            job = bytearray(dice.choice(jobs))
            for _ in range(dice.randint(1, 3)):
                place = dice.randrange(len(job))
                job[place : place + dice.randrange(2)] = dice.randbytes(dice.randrange(3))
            try:
                commands = receipt.decode(bytes(job))
                end = len(job)
                whole += 1
            except receipt.DecodeError as error:
                commands = error.commands
                end = sum(len(command.data) for command in commands)
                self.assertLessEqual(end, error.offset)
                self.assertLessEqual(error.offset, len(job))
            self.assertEqual(b"".join(command.data for command in commands), bytes(job[:end]))
            self.assertEqual([command.offset for command in commands], [0, *(command.end for command in commands)][:-1])
        self.assertGreater(whole, 100)


class RulesOfJobs(Decoding):
    def test_printer_side_commands_need_their_frame(self):
        self.refused_at(["1D 28 41 02 00 00 02"], 0)
        self.refused_at(["1C 71 00 00", "0A"], 0)
        self.refused_at(["1C 71 01", "01 00 01 00" + "00" * 8, "0A"], 0)
        self.refused_at(["1C 72 01", "01 00 01 00 01 00" + "00" * 8, "0A"], 0)
        self.refused_at([OPEN, OPEN], 4)
        self.refused_at([CLOSE], 0)

    def test_barcodes_do_not_stand_in_the_frame(self):
        for command in ("1D 66 00", "1D 73 01 02 28 02 02 02 01 01", "1D 6B 00 31 00", "1D 6B 49 00", "1D 56 42 00"):
            self.refused_at([OPEN, command], 4)

    def test_frame_opens_between_receipts_only(self):
        self.refused_at(["1D 66 00", OPEN], 3)
        self.refused_at(["0A", OPEN], 1)
        receipt.decode(joined(JOBS["UPC-A"] + JOBS["self test"] + JOBS["QR Code"]))

    def test_line_feed_follows_logos(self):
        self.refused_at([OPEN, "1C 71 00 00", CLOSE], 8)
        self.refused_at([OPEN, "1C 71 01", "01 00 01 00" + "00" * 8, "1D 28 41 02 00 00 02"], 19)

    def test_zero_byte_follows_counted_data(self):
        commands = list(JOBS["Code 93"])
        del commands[8]
        self.refused_at(commands, len(joined(commands[:8])))

    def test_zero_byte_does_not_follow_the_closed_barcode(self):
        self.refused_at(["1D 6B 49 00", "00"] + END, 4)

    def test_a_closed_barcode_prints_nothing(self):
        self.refused_at(["1D 6B 49 00"] + END, 9)

    def test_whatever_is_set_or_fed_must_be_cut(self):
        for command in ("0A", "1D 66 00", "1D 73 01 02 28 02 02 02 01 01", "1D 6B 00 31 00", "1D 6B 49 00"):
            error = self.error(joined(JOBS["UPC-A"] + [command]))
            self.assertIn("without feeding and cutting", error.reason)

    def test_document_names(self):
        own = {name: "Barcode" for name in JOBS}
        own.update(dict.fromkeys(("PDF417", "QR Code", "MaxiCode"), "2Dcode"))
        own.update(dict.fromkeys((name for name in JOBS if "Stacked" in name), "2Dcode"))
        own.update({"self test": "SELFTEST", "clear logos": "SELFTEST", "logos": "LOGO", "grey logo": "LOGO"})
        for name, commands in JOBS.items():
            for document in ("Barcode", "2Dcode", "SELFTEST", "LOGO"):
                if document == own[name]:
                    receipt.decode(joined(commands), document)
                else:
                    error = self.error(joined(commands), document)
                    self.assertIn(f'not in a job that is called "{document}"', error.reason)


if __name__ == "__main__":
    unittest.main()
