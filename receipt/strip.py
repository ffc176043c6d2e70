"""Puts what a job prints onto a strip of paper: 80 mm wide at 180 dots per inch, of which 72 mm can be printed on."""

import functools
import textwrap
from collections.abc import Iterable
from dataclasses import dataclass, field

from PIL import Image, ImageChops, ImageDraw, ImageFont

from . import symbols
from .commands import DATABAR_KINDS, Command, DecodeError

PAPER = 567
PRINTABLE = 510
MARGIN = (PAPER - PRINTABLE) // 2
TOP = 24
LINE = 30
# From the print line to the knife.
TO_CUTTER = 90
DASH, GAP = 12, 8
BLACK, GREY, WHITE = 0, 140, 255
LONGEST = 100_000  # rows that are drawn: 14 metres
MOST = 20_000  # commands that are taken: settings need no paper

FONT_FILE = "/usr/share/fonts/truetype/liberation/LiberationMono-Regular.ttf"
# Of each font: the cell's width and height, and the size in which the letters fill it.
FONT_CELLS = {0: (12, 24, 20), 1: (9, 17, 15)}

Box = tuple[int, int, int, int]


@dataclass(frozen=True)
class Symbol:
    """A printed symbol: `payload` is what a reader must give, `text` its human-readable line, `box` its dots in the
    strip (left, top, right and bottom, the last two just outside), `text_boxes` those of the lines of text."""

    offset: int
    kind: str
    data: bytes
    payload: bytes
    text: str
    box: Box
    text_boxes: tuple[Box, ...] = ()


@dataclass(frozen=True)
class Logo:
    """A logo that went into the printer: `picture` has every dot, in 1 bit or 16 grey levels; `box` is where the strip
    shows it."""

    offset: int
    picture: Image.Image
    box: Box


@dataclass(frozen=True)
class Note:
    """Something to know about the command at `offset`; a failure is a command that prints nothing."""

    offset: int
    text: str
    failure: bool = False

    def __str__(self) -> str:
        return f"{self.offset:04X}: {self.text}"


@dataclass
class Strip:
    """The paper, what is on it, where it is cut (rows of the picture), and the logos that went into the printer."""

    image: Image.Image
    symbols: list[Symbol] = field(default_factory=list)
    notes: list[Note] = field(default_factory=list)
    logos: list[Logo] = field(default_factory=list)
    cuts: list[int] = field(default_factory=list)
    too_long: bool = False  # the job goes on where paper or patience ends
    fault: str | None = None  # what stopped the job

    @property
    def failures(self) -> list[Note]:
        return [note for note in self.notes if note.failure]

    def crop(self, symbol: Symbol, border: int = 60, scale: int = 1) -> Image.Image:
        """A symbol alone on white, for a reader: on the strip, text or the paper's edge may stand in its quiet zone."""
        dots = self.image.crop(symbol.box)
        dots = dots.resize((dots.width * scale, dots.height * scale), Image.NEAREST)
        picture = Image.new("L", (dots.width + 2 * border, dots.height + 2 * border), WHITE)
        picture.paste(dots, (border, border))
        return picture


@functools.lru_cache(maxsize=None)
def load_font(size: int) -> ImageFont.FreeTypeFont:
    try:
        return ImageFont.truetype(FONT_FILE, size)
    except OSError as error:
        raise symbols.ToolMissing(f"{FONT_FILE} is not installed (fonts-liberation)") from error


def draw_text(text: str, number: int) -> Image.Image:
    """A line of text in dots, each letter in its cell."""
    width, height, size = FONT_CELLS[number]
    image = Image.new("1", (width * len(text), height), 1)
    draw = ImageDraw.Draw(image)
    draw.fontmode = "1"
    for place, letter in enumerate(text):
        draw.text((place * width, height - height // 5 - 1), letter, fill=0, font=load_font(size), anchor="ls")
    return image.convert("L")


def logo_picture(values: dict) -> Image.Image:
    """A stored logo as it will be printed, with the white dots that fill its last bytes. A set bit is dark.

    Black and white: column after column, eight dots a byte, the highest bit on top. Grey: row after row, each as four
    planes of the level's bits, the highest bit first.
    """
    width, height, raster = values["width"], values["height"], values["raster"]
    if not values["grey"]:
        columns = Image.frombytes("1", (height, width), raster)
        return ImageChops.invert(columns.transpose(Image.TRANSPOSE))
    across = width // 8
    darkness = Image.new("L", (width, height))
    for plane in range(4):
        bits = b"".join(raster[row * across : (row + 1) * across] for row in range(plane, height * 4, 4))
        weight = WHITE * (8 >> plane) // 15
        layer = Image.frombytes("1", (width, height), bits).convert("L")
        darkness = ImageChops.add(darkness, layer.point([0] * 255 + [weight]))
    return ImageChops.invert(darkness)


class Paper:
    """Paper that is printed from the top down, with what a job has set so far."""

    def __init__(self) -> None:
        self.y = TOP
        self.placed: list[tuple[Image.Image, int, int]] = []
        self.settings: dict[str, dict] = {}
        self.strip = Strip(Image.new("L", (PAPER, 1), WHITE))

    def paste(self, image: Image.Image, x: int) -> Box:
        self.placed.append((image, x, self.y))
        box = (x, self.y, x + image.width, self.y + image.height)
        self.y += image.height
        return box

    def note(self, command: Command, text: str, failure: bool = False) -> None:
        note = Note(command.offset, text, failure)
        self.strip.notes.append(note)
        if failure:
            self.remark(str(note))

    def remark(self, text: str) -> None:
        """Words that the printer does not print, in a grey frame so that nobody takes them for print."""
        width, height, _ = FONT_CELLS[1]
        per_line = (PRINTABLE - 2 * width) // width
        lines = textwrap.wrap(text, per_line)
        frame = Image.new("L", (PRINTABLE, height * (len(lines) + 1)), WHITE)
        ImageDraw.Draw(frame).rectangle((0, 0, frame.width - 1, frame.height - 1), outline=GREY)
        for place, line in enumerate(lines):
            words = draw_text(line, 1).point(lambda dot: GREY if dot == BLACK else WHITE)
            frame.paste(words, (width, height // 2 + place * height))
        self.paste(frame, MARGIN)

    def setting(self, name: str, words: str) -> dict:
        if name not in self.settings:
            raise symbols.Refused(f"{words} has not been set")
        return self.settings[name]

    def drawing(self, kind: str, values: dict) -> symbols.Drawing:
        data = values["data"]
        if not data:
            raise symbols.Refused("there is no data")
        if kind in symbols.LINEAR:
            width = self.setting("barcode_width", "the module width")["width"]
            return symbols.linear(kind, data, width, self.setting("barcode_height", "the height")["height"])
        if kind == "DataBar":
            settings = self.setting("databar", "the kind of DataBar")
            return symbols.databar(settings["kind"], data, settings)
        if kind == "PDF417":
            level = self.setting("correction", "the error correction level")["level"]
            return symbols.pdf417(data, self.setting("pdf417", "rows and columns"), level)
        if kind == "QR Code":
            return symbols.qr_code(data, self.setting("qr", "the module width"), values["level"])
        return symbols.maxicode(data)

    def text_places(self, kind: str) -> tuple[bool, bool]:
        """Whether the symbol's text stands above it and below it."""
        if kind in symbols.LINEAR:
            position = self.settings.get("hri_position", {"position": 0})["position"]
            return position in (1, 3), position in (2, 3)
        if kind == "DataBar":
            # Its own setting counts, not that of the other barcodes; nothing is composite, so no secondary data is.
            return False, self.settings["databar"]["text"] in (1, 2)
        return False, False

    def print_barcode(self, command: Command) -> None:
        kind = command.values["kind"]
        name = kind
        try:
            drawing = self.drawing(kind, command.values)
            if kind == "DataBar":
                name = DATABAR_KINDS[self.settings["databar"]["kind"]]
            if drawing.image.width > PRINTABLE:
                raise symbols.Refused(f"the symbol is {drawing.image.width} dots wide, the paper has {PRINTABLE}")
        except symbols.Refused as refused:
            self.note(command, f"the printer prints nothing: {kind}: {refused}", failure=True)
            return
        above, below = self.text_places(kind)
        number = self.settings.get("hri_font", {"font": 0})["font"]
        text_boxes = []
        if above:
            text_boxes.append(self.print_text(command, drawing, number))
        box = self.paste(drawing.image, MARGIN)
        if below:
            text_boxes.append(self.print_text(command, drawing, number))
        self.strip.symbols.append(
            Symbol(command.offset, name, command.values["data"], drawing.payload, drawing.text, box, tuple(text_boxes))
        )
        if kind == "QR Code" and self.settings["qr"]["model"] == 1:
            self.note(command, "QR Code model 1 is asked for and model 2 is drawn: no tool here draws model 1")

    def print_text(self, command: Command, drawing: symbols.Drawing, number: int) -> Box:
        """In the middle of the bars; a text that is wider than they are begins at the paper's left."""
        line = draw_text(drawing.text, number)
        if line.width > PRINTABLE:
            self.note(command, f"the text is {line.width} dots wide and is cut off at the paper's {PRINTABLE}")
            line = line.crop((0, 0, PRINTABLE, line.height))
        left = min(max((drawing.image.width - line.width) // 2, 0), PRINTABLE - line.width)
        return self.paste(line, MARGIN + left)

    def cut(self, command: Command) -> None:
        self.y += TO_CUTTER + command.values["feed"]
        dashes = Image.new("L", (PAPER, 1), WHITE)
        for x in range(0, PAPER, DASH + GAP):
            dashes.paste(BLACK, (x, 0, min(x + DASH, PAPER), 1))
        self.strip.cuts.append(self.y)
        self.paste(dashes, 0)
        self.y += TOP

    def store_logo(self, command: Command) -> None:
        picture = logo_picture(command.values)
        shown = picture.convert("L")
        self.remark(f"{command.meaning}, stored, not printed:")
        if picture.width > PRINTABLE:
            self.note(command, f"the logo is {picture.width} dots wide, the paper has {PRINTABLE}; it is shown smaller")
            shown = shown.resize((PRINTABLE, max(picture.height * PRINTABLE // picture.width, 1)), Image.BOX)
        self.strip.logos.append(Logo(command.offset, picture, self.paste(shown, MARGIN)))

    def take(self, command: Command) -> None:
        name = command.name
        if name == "barcode":
            self.print_barcode(command)
        elif name == "line_feed":
            self.y += LINE
        elif name == "cut":
            self.cut(command)
        elif name == "self_test":
            self.remark("The printer prints its SELF-TEST PAGE here.")
        elif name == "logo":
            self.store_logo(command)
        elif name == "clear_logos":
            self.remark("The printer clears all its logos and prints nothing.")
        elif name == "download":
            self.remark(f"The printer takes {command.meaning}, and prints nothing.")
        else:
            self.settings[name] = command.values

    def finish(self) -> Strip:
        bottom = 0 if self.strip.cuts and self.placed[-1][1] == 0 else TOP  # a cut leaves room below itself
        self.strip.image = Image.new("L", (PAPER, self.y + bottom), WHITE)
        for image, x, y in self.placed:
            self.strip.image.paste(image, (x, y))
        return self.strip


def render(commands: Iterable[Command], fault: str | None = None) -> Strip:
    """The strip that the commands print. What stopped the job, `fault` or a DecodeError of the commands, is to be seen
    at the strip's end. Of a job that is too long nothing is asked for beyond LONGEST and MOST."""
    paper = Paper()
    paper.strip.fault = fault
    try:
        for taken, command in enumerate(commands, start=1):
            paper.take(command)
            if paper.y > LONGEST or taken > MOST:
                reason = (
                    f"the paper is longer than {LONGEST} rows"
                    if paper.y > LONGEST
                    else f"the job has more than {MOST} commands"
                )
                paper.note(command, f"{reason}: nothing after it is shown", failure=True)
                paper.strip.too_long = True
                break
    except DecodeError as error:
        paper.strip.fault = str(error)
    if paper.strip.fault is not None:
        paper.remark(f"{paper.strip.fault}. Nothing after it is shown.")
    return paper.finish()
