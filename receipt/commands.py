"""Bytes of a print job into commands, with exact lengths and the offset of the first byte that has no meaning.

A fixed command is a row of FIXED: its first bytes, then fields with a range each. Commands with data have a function
each. `Rules` then holds the commands of one job against each other: what must be framed, what must follow what, how a
job ends. Nothing is skipped and nothing is guessed.
"""

from collections.abc import Callable, Iterator
from dataclasses import dataclass, field

FRAME_OPEN = 0x01
FRAME_CLOSE = 0x00
FIRMWARE = "FIRMWARE"


class DecodeError(Exception):
    """The job cannot be explained from `offset` on; `commands` are those before it.

    The offset is that of the byte that has no meaning at its place. Where the job ends too early it is the first byte
    of the command that is not complete, or the job's length where only whole commands are missing.
    """

    def __init__(self, offset: int, reason: str) -> None:
        super().__init__(f"{offset:04X}: {reason}")
        self.offset = offset
        self.reason = reason
        self.commands: list[Command] = []


@dataclass(frozen=True)
class Command:
    """One command as found: where, which bytes, what it is called, what it says."""

    offset: int
    data: bytes
    name: str
    meaning: str
    values: dict = field(default_factory=dict)

    @property
    def end(self) -> int:
        return self.offset + len(self.data)


@dataclass(frozen=True)
class Field:
    """One parameter byte: the values that it may have, and words for them where numbers say too little."""

    name: str
    allowed: range
    words: dict[int, str] = field(default_factory=dict)

    def check(self, value: int, offset: int) -> None:
        if value not in self.allowed:
            first, last = self.allowed[0], self.allowed[-1]
            raise DecodeError(offset, f"{value:02X} is no {self.name}: {first:02X} to {last:02X}")

    def word(self, value: int) -> str:
        return self.words.get(value, str(value))


def between(first: int, last: int) -> range:
    return range(first, last + 1)


HRI_FONTS = {0: "font A", 1: "font B"}
HRI_POSITIONS = {0: "not printed", 1: "above the bars", 2: "below the bars", 3: "above and below the bars"}
DATABAR_KINDS = {
    1: "DataBar Omnidirectional",
    2: "DataBar Truncated",
    3: "DataBar Stacked",
    4: "DataBar Stacked Omnidirectional",
    5: "DataBar Limited",
    6: "DataBar Expanded",
    7: "DataBar Expanded Stacked",
}
DATABAR_TEXTS = {1: "primary and secondary data", 2: "primary data", 3: "secondary data", 4: "none"}
QR_LEVELS = {ord("L"): "L", ord("M"): "M", ord("H"): "H", ord("Q"): "Q"}

FIXED = (
    (b"\x0a", "line_feed", (), "line feed"),
    (b"\x1b\x63\x3b\x01", "frame_open", (), "printer-side commands begin"),
    (b"\x1b\x63\x3b\x00", "frame_close", (), "printer-side commands end"),
    (b"\x1d\x28\x41\x02\x00\x00\x02", "self_test", (), "print the self-test page"),
    (b"\x1d\x66", "hri_font", (Field("font", between(0, 1), HRI_FONTS),), "text of barcodes in {font}"),
    (b"\x1d\x48", "hri_position", (Field("position", between(0, 3), HRI_POSITIONS),), "text of barcodes: {position}"),
    (b"\x1d\x77", "barcode_width", (Field("width", between(2, 6)),), "barcode module width {width} dots"),
    (b"\x1d\x68", "barcode_height", (Field("height", between(1, 255)),), "barcode height {height} dots"),
    (
        b"\x1d\x73",
        "databar",
        (
            Field("kind", between(1, 7), DATABAR_KINDS),
            Field("width", between(1, 6)),
            Field("height", between(2, 250)),
            Field("composite_height", between(1, 10)),
            Field("separator", between(1, 10)),
            Field("segments", between(2, 20)),
            Field("text", between(1, 4), DATABAR_TEXTS),
            Field("identifiers", between(0, 1), {0: "not marked", 1: "marked in the data"}),
        ),
        "{kind}: module {width}, row {height}, composite row {composite_height}, separator {separator} dots; "
        "{segments} segments a row; text: {text}; identifiers {identifiers}",
    ),
    (
        b"\x1d\x70\x01\x01",
        "pdf417",
        (
            Field("rows", between(3, 90)),
            Field("columns", between(1, 30)),
            Field("width", between(1, 7)),
            Field("height", between(2, 25)),
        ),
        "PDF417: {rows} rows, {columns} columns, module {width} x {height} dots",
    ),
    (b"\x1d\x71", "correction", (Field("level", between(0, 8)),), "error correction level {level}"),
    (
        b"\x1d\x6f\x00",
        "qr",
        (
            Field("width", between(1, 24)),
            Field("language", between(0, 1), {0: "Chinese", 1: "Japanese"}),
            Field("model", between(1, 2)),
        ),
        "QR Code: module {width} dots, {language}, model {model}",
    ),
    (b"\x1d\x56\x42", "cut", (Field("feed", between(0, 255)),), "feed to the cutter and {feed} dots, cut"),
)

# Barcodes whose data ends with a zero byte, and those that count it.
ENDED = {
    0x00: "UPC-A",
    0x01: "UPC-E",
    0x02: "EAN-13",
    0x03: "EAN-8",
    0x04: "Code 39",
    0x05: "ITF",
    0x06: "Codabar",
    0x0A: "PDF417",
    0x0B: "QR Code",
    0x0C: "MaxiCode",
    0x0D: "DataBar",
}
COUNTED = {0x48: "Code 93", 0x49: "Code 128"}
# Data of these is text or bytes of any kind; in the others a control byte means that the closing zero is missing.
ANY_BYTES = {"PDF417", "QR Code"}

MAXIMUM_LOGOS = 9
# A logo is at most 1024 dots wide and 768 high: eight dots a byte across, rows in units of eight; the header of a grey
# one counts four rows of bits for each of dots, so that two rows of dots are a unit.
LOGO_COLUMNS = between(1, 128)
LOGO_ROWS = between(1, 96)
GREY_ROWS = between(1, 384)


class Cursor:
    """The bytes of a job, taken one after the other from the start of a command on."""

    def __init__(self, job: bytes, start: int) -> None:
        self.job = job
        self.start = start
        self.at = start

    def ended(self, what: str) -> DecodeError:
        have = self.job[self.start : self.start + 8].hex(" ").upper()
        return DecodeError(self.start, f"the job ends inside the command {have}: {what} missing")

    def take(self, what: str) -> int:
        if self.at >= len(self.job):
            raise self.ended(f"{what} is")
        self.at += 1
        return self.job[self.at - 1]

    def take_field(self, parameter: Field) -> int:
        value = self.take(parameter.name.replace("_", " "))
        parameter.check(value, self.at - 1)
        return value

    def take_many(self, count: int, what: str) -> bytes:
        have = len(self.job) - self.at
        if have < count:
            raise self.ended(f"{count - have} of {count} bytes of {what} are")
        self.at += count
        return self.job[self.at - count : self.at]

    def command(self, name: str, meaning: str, **values) -> Command:
        return Command(self.start, self.job[self.start : self.at], name, meaning, values)


def fixed(cursor: Cursor, name: str, fields: tuple, meaning: str) -> Command:
    values = {parameter.name: cursor.take_field(parameter) for parameter in fields}
    words = {parameter.name: parameter.word(values[parameter.name]) for parameter in fields}
    return cursor.command(name, meaning.format(**words), **values)


def shown(data: bytes) -> str:
    """Data as text, the bytes that are no letters as \\x.."""
    return "".join(chr(byte) if 0x20 <= byte < 0x7F and byte != 0x5C else f"\\x{byte:02X}" for byte in data)


def ended_barcode(cursor: Cursor, code: int) -> Command:
    kind = ENDED[code]
    values: dict = {}
    if kind == "QR Code":
        level = cursor.take("error correction level")
        if level not in QR_LEVELS:
            raise DecodeError(cursor.at - 1, f"{level:02X} is no QR error correction level: L, M, H or Q")
        values["level"] = QR_LEVELS[level]
        for expected in b"A,":
            value = cursor.take("the text A,")
            if value != expected:
                raise DecodeError(cursor.at - 1, f"{value:02X} where {expected:02X} ({chr(expected)}) must stand")
    data = bytearray()
    while byte := cursor.take("the zero byte that ends the data"):
        if byte < 0x20 and kind not in ANY_BYTES:
            raise DecodeError(cursor.at - 1, f"{byte:02X} in the data of {kind}, which no zero byte has ended")
        data.append(byte)
    level = f", level {values['level']}" if values else ""
    return cursor.command("barcode", f'{kind}{level}: "{shown(data)}"', kind=kind, data=bytes(data), **values)


def counted_barcode(cursor: Cursor, code: int) -> Command:
    kind = COUNTED[code]
    count = cursor.take("the length")
    if count == 0:
        return cursor.command("barcode_closed", f"{kind} of no bytes: nothing is printed", kind=kind)
    data = cursor.take_many(count, "data")
    return cursor.command("barcode", f'{kind}, {count} bytes: "{shown(data)}"', kind=kind, data=data)


def logos(cursor: Cursor, grey: bool) -> Iterator[Command]:
    """The command that says how many logos come, then each logo with its header as a command of its own."""
    count = cursor.take("the number of logos")
    if count == 0 and not grey:
        closing = cursor.take("the zero byte after the number")
        if closing != 0:
            raise DecodeError(cursor.at - 1, f"{closing:02X} after the number 0, where 00 must stand")
        yield cursor.command("clear_logos", "clear all stored logos")
        return
    if count not in between(1, MAXIMUM_LOGOS):
        raise DecodeError(cursor.at - 1, f"{count:02X} is no number of logos: 01 to {MAXIMUM_LOGOS:02X}")
    kind = "grey" if grey else "black-and-white"
    yield cursor.command("store_logos", f"store {count} {kind} logo{'s' if count > 1 else ''}", count=count, grey=grey)
    for number in range(1, count + 1):
        cursor = Cursor(cursor.job, cursor.at)
        if cursor.at == len(cursor.job):
            reason = f"the job ends with {number - 1} of {count} logos: a printer takes what comes next for the others"
            raise DecodeError(cursor.at, reason)
        yield logo(cursor, number, count, grey)


def logo(cursor: Cursor, number: int, count: int, grey: bool) -> Command:
    which = f"logo {number} of {count}"
    if grey:
        for expected in (1, 0):
            value = cursor.take(f"the header of {which}")
            if value != expected:
                reason = f"{value:02X} in the header of {which}, where {expected:02X} must stand"
                raise DecodeError(cursor.at - 1, reason)
    columns = logo_size(cursor, which, "width", LOGO_COLUMNS)
    rows = logo_size(cursor, which, "height", GREY_ROWS if grey else LOGO_ROWS)
    raster = cursor.take_many(columns * rows * 8, f"the raster of {which}")
    width, height = columns * 8, rows * 2 if grey else rows * 8
    meaning = f"{which}: {width} x {height} dots, {'16 grey levels, ' if grey else ''}{len(raster)} bytes of raster"
    return cursor.command(
        "logo", meaning, number=number, grey=grey, columns=columns, rows=rows, width=width, height=height, raster=raster
    )


def logo_size(cursor: Cursor, which: str, what: str, allowed: range) -> int:
    low, high = cursor.take_many(2, f"the header of {which}")
    size = low + high * 256
    if size not in allowed:
        raise DecodeError(cursor.at - 2, f"{size} is no {what} of a logo in the header of {which}: 1 to {allowed[-1]}")
    return size


def one(function: Callable[..., Command]) -> Callable[..., Iterator[Command]]:
    return lambda *arguments: iter((function(*arguments),))


# First bytes, and what reads the rest.
STARTS: dict[bytes, Callable[[Cursor], Iterator[Command]]] = {}
for start, *row in FIXED:
    STARTS[start] = lambda cursor, row=tuple(row): one(fixed)(cursor, *row)
for code in ENDED:
    STARTS[b"\x1d\x6b" + bytes((code,))] = lambda cursor, code=code: one(ended_barcode)(cursor, code)
for code in COUNTED:
    STARTS[b"\x1d\x6b" + bytes((code,))] = lambda cursor, code=code: one(counted_barcode)(cursor, code)
STARTS[b"\x1c\x71"] = lambda cursor: logos(cursor, False)
STARTS[b"\x1c\x72"] = lambda cursor: logos(cursor, True)


def commands_at(cursor: Cursor) -> Iterator[Command]:
    """The command, or the logos, that start at the cursor."""
    start = b""
    while start not in STARTS:
        byte = cursor.take("the rest")
        start += bytes((byte,))
        if not any(known.startswith(start) for known in STARTS):
            before = start[:-1].hex(" ").upper()
            raise DecodeError(cursor.at - 1, f"{byte:02X} {f'after {before} ' if before else ''}is no command")
    return STARTS[start](cursor)


class Rules:
    """What the commands of one job owe each other."""

    SETTINGS = {"hri_font", "hri_position", "barcode_width", "barcode_height", "databar", "pdf417", "correction", "qr"}
    STACKED = {3, 4, 7}

    def __init__(self, document: str | None) -> None:
        self.document = document
        self.framed = False
        self.logos_open = 0
        self.cut_missing = False
        self.databar_kind = 0
        self.acted = False

    def check(self, command: Command) -> None:
        name = command.name
        if self.logos_open == 1 and name not in ("line_feed",):
            raise DecodeError(command.offset, "a line feed must follow the logos")
        if name in ("self_test", "clear_logos", "store_logos") and not self.framed:
            raise DecodeError(command.offset, f"{command.meaning}: not between 1B 63 3B 01 and 1B 63 3B 00")
        if self.framed and (name in self.SETTINGS or name in ("barcode", "barcode_closed", "cut")):
            raise DecodeError(command.offset, f"{command.meaning}: between 1B 63 3B 01 and 1B 63 3B 00")
        getattr(self, f"on_{name}", self.on_other)(command)

    def on_other(self, command: Command) -> None:
        if command.name in self.SETTINGS:
            self.cut_missing = True

    def on_frame_open(self, command: Command) -> None:
        if self.framed or self.cut_missing:
            raise DecodeError(command.offset, "printer-side commands begin inside a job that is not at its end")
        self.framed = True

    def on_frame_close(self, command: Command) -> None:
        if not self.framed:
            raise DecodeError(command.offset, "printer-side commands end that have not begun")
        self.framed = False

    def on_databar(self, command: Command) -> None:
        self.databar_kind = command.values["kind"]
        self.cut_missing = True

    def on_barcode_closed(self, command: Command) -> None:
        self.cut_missing = True

    def on_barcode(self, command: Command) -> None:
        stacked = command.values["kind"] in ("PDF417", "QR Code", "MaxiCode") or (
            command.values["kind"] == "DataBar" and self.databar_kind in self.STACKED
        )
        self.act(command, "2Dcode" if stacked else "Barcode")
        self.cut_missing = True

    def on_cut(self, command: Command) -> None:
        self.cut_missing = False

    def on_line_feed(self, command: Command) -> None:
        if self.logos_open:
            self.logos_open = 0
        elif not self.framed:
            self.cut_missing = True

    def on_self_test(self, command: Command) -> None:
        self.act(command, "SELFTEST")

    def on_clear_logos(self, command: Command) -> None:
        self.act(command, "SELFTEST")
        self.logos_open = 1

    def on_store_logos(self, command: Command) -> None:
        self.act(command, "LOGO")
        self.logos_open = 1 + command.values["count"]

    def on_logo(self, command: Command) -> None:
        self.logos_open -= 1

    def act(self, command: Command, document: str) -> None:
        if self.document not in (None, document):
            raise DecodeError(command.offset, f'{command.meaning}: not in a job that is called "{self.document}"')
        self.acted = True

    def finish(self, end: int) -> None:
        if self.logos_open:
            raise DecodeError(end, "the job ends without the line feed after the logos")
        if self.framed:
            raise DecodeError(end, "the job ends without 1B 63 3B 00")
        if self.cut_missing:
            raise DecodeError(end, "the job ends without feeding and cutting")
        if not self.acted:
            raise DecodeError(end, "the job ends and nothing has been printed or stored")


def iterate(job: bytes, document: str | None = None) -> Iterator[Command]:
    """The commands of a job, one after the other; DecodeError at the first byte that has no meaning.

    `document` is the job's name where it is known: a download of a file has no framing at all and is told by the name
    "FIRMWARE" alone; a job of another name must hold what that name says.
    """
    if document == FIRMWARE:
        yield Command(0, job, "download", f"a file for the printer, {len(job)} bytes, passed on unchanged")
        return
    rules = Rules(document)
    at = 0
    while at < len(job):
        for command in commands_at(Cursor(job, at)):
            rules.check(command)
            yield command
            at = command.end
        if command.name == "barcode" and command.values["kind"] in COUNTED.values():
            if at >= len(job):
                raise DecodeError(at, "the job ends without the zero byte after counted data")
            if job[at] != 0:
                raise DecodeError(at, f"{job[at]:02X} after counted data, where 00 must stand")
            yield Command(at, b"\0", "ignored", "ignored after counted data")
            at += 1
    rules.finish(len(job))


def decode(job: bytes, document: str | None = None) -> list[Command]:
    """All commands of a job. A DecodeError carries those before the fault."""
    found: list[Command] = []
    try:
        for command in iterate(job, document):
            found.append(command)
    except DecodeError as error:
        error.commands = found
        raise
    return found
