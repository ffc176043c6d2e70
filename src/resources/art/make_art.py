#!/usr/bin/env python3
"""Writes the pictures of the pages as SVG, and their palette: fourteen of the paper's end, two of the print direction,
three icons of the Font page's tree.

Usage: make_art.py OUTPUT_FOLDER

Each picture of the paper's end is a cut-open receipt printer. Paper travels upwards: the print
head is inside, the cutter stands a fixed distance above it. What lies between
the two decides where a cut falls, and that is what the pictures explain:

* fed: the last print stands above the cutter, blank paper (blue arrow) below;
* not fed: the last print still stands at the head, so a cut runs through it;
* cut: the strip is parted at a red dashed line with scissors;
* start moments: earlier print is pale, and the print to come waits in dark
  below the head; end moments have nothing below the head.

Only straight edges and whole pixels are used, so that nothing is antialiased
and sixteen colours suffice.
"""

import pathlib
import sys

WIDTH, HEIGHT = 118, 180
PAPER_LEFT, PAPER_RIGHT = 34, 84
CUT_Y, BODY_TOP, HEAD_Y, BODY_BOTTOM = 86, 90, 142, 172
GAP = 10  # how far a cut-off piece is lifted
BLADE_Y = CUT_Y - GAP // 2

COLOURS = {
    "background": "#EDF1F5",
    "shadow": "#CDD6DE",
    "paper": "#FFFFFF",
    "edge": "#8A98A4",
    "pale": "#BFC8D0",
    "ink": "#4A5761",
    "body": "#3B4853",
    "body_light": "#5B6B78",
    "body_dark": "#28323A",
    "inside": "#172027",
    "steel": "#A9B6C1",
    "head": "#F59A23",
    "blue": "#1E6FD0",
    "blue_pale": "#DCEBFB",
    "red": "#D8232A",
    "green": "#4CB85C",
}

# id: (moment, fed, cut). 139 and 149 serve both the document and the page.
PICTURES = {
    136: ("document end", True, True),
    137: ("document end", True, False),
    138: ("document end", False, True),
    139: ("any end", False, False),
    140: ("page end", True, True),
    141: ("page end", True, False),
    142: ("page end", False, True),
    143: ("document start", True, True),
    144: ("document start", True, False),
    145: ("document start", False, True),
    146: ("page start", True, True),
    147: ("page start", True, False),
    148: ("page start", False, True),
    149: ("any start", False, False),
}

SCISSORS = (
    "...........###..",
    "..........#####.",
    "..........##.##.",
    "##........##.##.",
    "####.....######.",
    ".#####..######..",
    "...########.....",
    ".....####.......",
    "...########.....",
    ".#####..######..",
    "####.....######.",
    "##........##.##.",
    "..........##.##.",
    "..........#####.",
    "...........###..",
)


def rect(x, y, width, height, colour):
    return (f'<rect x="{x}" y="{y}" width="{width}" height="{height}" '
            f'fill="{COLOURS[colour]}"/>')


def polygon(points, colour):
    text = " ".join(f"{x},{y}" for x, y in points)
    return f'<polygon points="{text}" fill="{COLOURS[colour]}"/>'


def block(x, y, width, height, colour, corner=2):
    """A rectangle with corners stepped off, one pixel row at a time."""
    rows = [rect(x + corner - i, y + i, width - 2 * (corner - i),
                 height - 2 * i, colour) for i in range(corner + 1)]
    return "".join(rows)


# Print on the paper. Each function draws downwards from y.

def line(y, width, colour, indent=0):
    return rect(PAPER_LEFT + 6 + indent, y, width, 2, colour)


def item(y, width, colour):
    """An article on the left and its price on the right."""
    return line(y, width, colour) + rect(PAPER_RIGHT - 14, y, 8, 2, colour)


def shop_sign(y, colour):
    """The head of a receipt: a logo over a centred line. 21 high."""
    middle = (PAPER_LEFT + PAPER_RIGHT) // 2
    return (block(middle - 14, y, 28, 16, colour)
            + polygon(((middle, y + 3), (middle + 5, y + 8), (middle, y + 13),
                       (middle - 5, y + 8)), "paper")
            + line(y + 19, 30, colour, 4))


def barcode(y, colour):
    bars, x = [], PAPER_LEFT + 8
    for width, space in ((2, 1), (1, 2), (3, 1), (1, 1), (2, 2), (1, 1), (3, 2),
                         (1, 1), (2, 1), (1, 2), (1, 1), (1, 0)):
        bars.append(rect(x, y, width, 12, colour))
        x += width + space
    return "".join(bars)


def receipt(bottom, colour):
    """A whole receipt, its last print ending at bottom. 64 high."""
    y = bottom - 64
    widths = (20, 14, 18)
    return (shop_sign(y, colour)
            + "".join(item(y + 25 + 4 * i, w, colour) for i, w in enumerate(widths))
            + rect(PAPER_LEFT + 6, y + 37, 38, 1, colour)
            + rect(PAPER_LEFT + 6, y + 41, 14, 5, colour)
            + rect(PAPER_RIGHT - 20, y + 41, 14, 5, colour)
            + barcode(y + 52, colour))


def lines(bottom, count, colour):
    """Lines of text upwards from bottom, in paragraphs of six."""
    widths = (24, 38, 34, 38, 36, 38)
    return "".join(line(bottom - 2 - 4 * i - 4 * (i // 6), widths[i % 6], colour)
                   for i in range(count))


def heading(y, colour):
    return rect(PAPER_LEFT + 6, y, 26, 9, colour)


def page_boundary(y):
    return "".join(rect(x, y, 4, 1, "blue")
                   for x in range(PAPER_LEFT + 1, PAPER_RIGHT - 1, 7))


def printed(moment, bottom):
    """What has been printed so far. Returns the drawing and the strip's top."""
    what, when = moment.split()
    now = "ink" if when == "end" else "pale"
    if what == "document":
        return receipt(bottom, now), bottom - 69
    if what == "any":
        return lines(bottom, 30, now), -GAP
    pages = (heading(bottom - 57, now) + lines(bottom - 5, 9, now)
             + page_boundary(bottom - 1))
    pages += page_boundary(bottom - 62) + lines(bottom - 66, 18, "pale")
    return pages, -GAP


def to_come(moment):
    """The first print of what starts now, waiting below the head."""
    what, when = moment.split()
    if when == "end":
        return ""
    y = HEAD_Y + 5
    if what == "document":
        return shop_sign(y, "ink")
    if what == "page":
        return heading(y, "ink") + lines(y + 23, 3, "ink")
    return lines(y + 22, 6, "ink")


def arrow():
    middle = (PAPER_LEFT + PAPER_RIGHT) // 2
    top, bottom = CUT_Y + 12, HEAD_Y - 5
    return (polygon(((middle, top), (middle + 11, top + 11),
                     (middle - 11, top + 11)), "blue")
            + rect(middle - 4, top + 11, 8, bottom - top - 11, "blue"))


def strip(moment, fed, cut):
    drawing, top = printed(moment, CUT_Y - 5 if fed else HEAD_Y - 4)
    width = PAPER_RIGHT - PAPER_LEFT
    height = HEIGHT - top
    paper = (rect(PAPER_LEFT, top, width, height, "edge")
             + rect(PAPER_LEFT + 1, top + 1, width - 2, height, "paper"))
    if fed:
        paper += rect(PAPER_LEFT + 1, CUT_Y, width - 2, HEAD_Y - CUT_Y, "blue_pale")
        paper += arrow()
    paper += drawing + to_come(moment)
    if not cut:
        return f'<g clip-path="url(#inside)">{paper}</g>'
    return (f'<g clip-path="url(#below)">{paper}</g>'
            f'<g transform="translate(0 {-GAP})">'
            f'<g clip-path="url(#above)">{paper}</g>'
            + rect(PAPER_LEFT, CUT_Y - 1, width, 1, "edge") + "</g>"
            + rect(PAPER_LEFT, CUT_Y, width, 1, "edge"))


def printer_behind():
    height = BODY_BOTTOM - BODY_TOP
    return (block(6, BODY_TOP, 106, height + 4, "body_dark", 4)
            + block(7, BODY_TOP + 1, 104, height + 2, "body", 4)
            + rect(10, BODY_TOP + 1, 98, 2, "body_light")
            + rect(28, BODY_TOP, 62, height, "inside"))


def printer_in_front():
    tip = BLADE_Y
    blades = (polygon(((24, tip - 5), (33, tip), (24, tip + 5)), "steel")
              + rect(22, tip - 5, 3, BODY_TOP - tip + 5, "steel")
              + polygon(((94, tip - 5), (85, tip), (94, tip + 5)), "steel")
              + rect(93, tip - 5, 3, BODY_TOP - tip + 5, "steel"))
    head = (rect(28, HEAD_Y, 62, 3, "head") + block(22, HEAD_Y - 4, 11, 11, "head", 1)
            + block(85, HEAD_Y - 4, 11, 11, "head", 1))
    panel = (rect(100, 160, 5, 5, "green") + rect(12, 160, 8, 2, "body_light")
             + rect(12, 164, 8, 2, "body_light"))
    return blades + head + panel


def scissors(x, y):
    return "".join(rect(x + column, y + row, 1, 1, "red")
                   for row, pixels in enumerate(SCISSORS)
                   for column, pixel in enumerate(pixels) if pixel == "#")


def cut_marks():
    dashes = "".join(rect(x, BLADE_Y - 1, 5, 2, "red") for x in range(8, 98, 8))
    return dashes + scissors(99, BLADE_Y - 8)


def picture(moment, fed, cut):
    clips = "".join(
        f'<clipPath id="{name}"><rect x="0" y="{top}" width="{WIDTH}" '
        f'height="{bottom - top}"/></clipPath>'
        for name, top, bottom in (("inside", -GAP, BODY_BOTTOM), ("below", CUT_Y, BODY_BOTTOM),
                                  ("above", -GAP, CUT_Y)))
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" '
            f'height="{HEIGHT}" shape-rendering="crispEdges"><defs>{clips}</defs>'
            + rect(0, 0, WIDTH, HEIGHT, "background")
            + rect(4, 176, 110, 2, "shadow") + printer_behind()
            + strip(moment, fed, cut) + printer_in_front()
            + (cut_marks() if cut else "") + "</svg>\n")


# id: turned by 180 degrees.
DIRECTIONS = {129: False, 130: True}
DIRECTION_SIZE = 30


def direction(turned):
    """A sheet with a heading and lines, upright or upside down."""
    sheet = (rect(5, 2, 20, 26, "edge") + rect(6, 3, 18, 24, "paper") + rect(8, 6, 9, 4, "blue")
             + "".join(rect(8, 13 + 4 * i, width, 2, "ink") for i, width in enumerate((14, 12, 8))))
    turn = f' transform="rotate(180 {DIRECTION_SIZE // 2} {DIRECTION_SIZE // 2})"' if turned else ""
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{DIRECTION_SIZE}" '
            f'height="{DIRECTION_SIZE}" shape-rendering="crispEdges">'
            + rect(0, 0, DIRECTION_SIZE, DIRECTION_SIZE, "background") + f"<g{turn}>{sheet}</g></svg>\n")


# id: rows of an icon. A letter is a colour, a dot shows what lies behind.
ICON_SIZE = 16
ICON_COLOURS = {"p": "paper", "e": "edge", "i": "ink", "b": "body", "l": "body_light", "d": "body_dark",
                "g": "green", "u": "blue", "s": "shadow", "o": "head"}
ICONS = {
    # The printer with a receipt.
    125: ("...eeeeeeeeee...",
          "...eppppppppe...",
          "...epiiiippie...",
          "...eppppppppe...",
          "...epiipiiipe...",
          "...eppppppppe...",
          "...epiiippiie...",
          "...eppppppppe...",
          ".bbbddddddddbbb.",
          "blllllllllllllb.",
          "blllllllllllgglb",
          "blllllllllllgglb",
          "bllllllllllllllb",
          "bddddddddddddddb",
          ".bbbbbbbbbbbbbb.",
          "................"),
    # A font: its letter on the baseline.
    126: ("................",
          ".......ii.......",
          "......iiii......",
          "......iiii......",
          ".....ii..ii.....",
          ".....ii..ii.....",
          "....ii....ii....",
          "....ii....ii....",
          "...iiiiiiiiii...",
          "...iiiiiiiiii...",
          "..ii........ii..",
          "..ii........ii..",
          ".iiii......iiii.",
          "................",
          "uuuuuuuuuuuuuuuu",
          "................"),
    # A size of it: the letter's height.
    127: ("................",
          "...u............",
          "..uuu...........",
          "...u.....ii.....",
          "...u....iiii....",
          "...u....i..i....",
          "...u...ii..ii...",
          "...u...i....i...",
          "...u..iiiiiiii..",
          "...u..i......i..",
          "...u.ii......ii.",
          "...u.ii......ii.",
          "..uuu...........",
          "...u............",
          "................",
          "................"),
}


def icon(rows):
    pixels = "".join(rect(x, y, 1, 1, ICON_COLOURS[letter])
                     for y, row in enumerate(rows) for x, letter in enumerate(row) if letter != ".")
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{ICON_SIZE}" height="{ICON_SIZE}" '
            f'shape-rendering="crispEdges">{pixels}</svg>\n')


def main():
    folder = pathlib.Path(sys.argv[1])
    for number, rows in ICONS.items():
        (folder / f"font_{number}.svg").write_text(icon(rows))
    for number, turned in DIRECTIONS.items():
        (folder / f"direction_{number}.svg").write_text(direction(turned))
    for number, state in PICTURES.items():
        (folder / f"operation_{number}.svg").write_text(picture(*state))
    pixels = "\n".join(" ".join(str(int(c[i:i + 2], 16)) for i in (1, 3, 5))
                       for c in COLOURS.values())
    (folder / "palette.ppm").write_text(f"P3\n{len(COLOURS)} 1\n255\n{pixels}\n")


if __name__ == "__main__":
    main()
