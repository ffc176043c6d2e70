#!/usr/bin/python3
"""Prints what the conversion of logos costs, and how many times as fast as general image libraries it is.

    logo_table.py PROGRAMS WINDOWS_PROGRAM PICTURE.bmp WORK_FOLDER

PROGRAMS is the folder with logo_bench, logo_peers and logo_freeimage; WINDOWS_PROGRAM is logo_bench.exe, run with
scripts/wine-run in WINEPREFIX; PICTURE.bmp has 24 bits a pixel. Start it on one processor.

Programs are measured in turn, again and again, and each ratio is the median of those within one round: so what else the
machine does meanwhile strikes all of them alike.
"""
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import time
from functools import partial
from typing import NamedTuple

BENCH = pathlib.Path(__file__).resolve().parent
PIXELS = 1024 * 768
ROUNDS = 15
# Of whole processes, which are slow.
PROCESS_ROUNDS = 7
PROCESSES_IN_TURN = 3


class Peer(NamedTuple):
    label: str
    program: str
    work: str
    least: float | None  # how many times as fast ours is to be
    call: str


class Row(NamedTuple):
    what: str
    line: str
    most: float | None  # instructions a pixel
    peers: list


ORDERED_24 = [
    Peer("Qt", "peers", "qt ordered24", 3.5, "QImage::convertToFormat(Format_Mono, OrderedDither) of RGB888"),
    Peer("Qt BGR", "peers", "qt ordered24 bgr", None, "the same of BGR888, the order of colours in our source"),
    Peer("swscale", "peers", "swscale ordered24", 3.5, "sws_scale to MONOBLACK, dither bayer, of BGR24"),
]
ORDERED_8 = [
    Peer("swscale", "peers", "swscale ordered8", 15, "sws_scale to MONOBLACK, dither bayer, of GRAY8"),
    Peer("Qt", "peers", "qt ordered8", 35, "QImage::convertToFormat(Format_Mono, OrderedDither) of Indexed8"),
    Peer("Qt grey", "peers", "qt ordered8 grey", None, "the same of Grayscale8"),
]
PLAIN = "the plain version in C++ that our tests compare with, a bit or a level at a time"
ROWS = [
    Row("24-bit -> grey through tone tables", "grey24", 11,
        [Peer("Pillow", "pillow", "grey24", 1.4, 'Image.convert("L") of RGB, without a tone curve')]),
    Row("8-bit -> grey through a table", "grey8", 4.5, []),
    Row("grey -> mean threshold, packed", "mean", 1.3,
        [Peer("Leptonica", "peers", "leptonica threshold", 4.5, "pixThresholdToBinary, given the threshold")]),
    Row("grey -> ordered 8x8, packed", "ordered8", 1, ORDERED_8),
    Row("grey -> ordered 16x16, packed", "ordered16", 1, ORDERED_8),
    Row("24-bit -> mean threshold, whole", "none24", None, []),
    Row("24-bit -> ordered 8x8, whole", "m3of24", 12, ORDERED_24),
    Row("24-bit -> ordered 16x16, whole", "m4of24", 12, ORDERED_24),
    Row("grey -> serpentine error diffusion", "diffusion", 13,
        [Peer("Leptonica", "peers", "leptonica diffusion", 2.1, "pixDitherToBinary"),
         Peer("Pillow", "pillow", "diffusion8", 4.5, 'Image.convert("1") of L')]),
    Row("8-bit -> error diffusion, whole", "diffuse8", None, []),
    Row("24-bit -> error diffusion, whole", "diffuse24", 24,
        [Peer("Pillow", "pillow", "diffusion24", 2.8, 'Image.convert("1") of RGB'),
         Peer("Qt", "peers", "qt diffusion24", 2.8,
              "QImage::convertToFormat(Format_Mono, DiffuseDither) of RGB888")]),
    Row("1-bit -> 8-dot columns", "columns", 1.5,
        [Peer("plain", "peers", "plain columns", None, PLAIN),
         Peer("Pillow", "pillow", "columns", None, 'Image.transpose(TRANSPOSE).tobytes("raw", "1;I") of 1')]),
    Row("grey -> four bit planes", "planes", 2.5, [Peer("plain", "peers", "plain planes", None, PLAIN)]),
]
# A process a file.
MOST_MILLISECONDS = 6
FREEIMAGE = Peer("FreeImage", "", "", 2.3, "FreeImage_Load, FreeImage_Dither (FID_BAYER8x8, FID_FS), FreeImage_Save")
FILE_ROWS = [
    ("24-bit -> ordered 8x8", "ordered", "file24m3",
     ["-colorspace", "Gray", "-ordered-dither", "o8x8", "-type", "Bilevel"]),
    ("24-bit -> error diffusion", "diffusion", "file24diffused", ["-monochrome"]),
]


class Answering:
    """A program that measures the work it is told."""

    def __init__(self, command):
        self.process = subprocess.Popen([*map(str, command)], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def time(self, work):
        """Microseconds."""
        self.process.stdin.write(f"{work}\n")
        self.process.stdin.flush()
        return float(self.process.stdout.readline())

    def end(self):
        self.process.stdin.close()
        if self.process.wait() != 0:
            sys.exit(f"logo_table.py: {self.process.args[0]} failed")


def process_time(command):
    """Milliseconds from starting a program to its end, the least of a few runs."""
    times = []
    for _ in range(PROCESSES_IN_TURN):
        start = time.perf_counter()
        process = os.posix_spawn(command[0], command, {**os.environ, "MAGICK_THREAD_LIMIT": "1"})
        _, status = os.waitpid(process, 0)
        times.append(time.perf_counter() - start)
        if status != 0:
            sys.exit(f"logo_table.py: {command[0]} failed")
    return min(times) * 1e3


def medians_in_turn(rounds, works):
    """The median of each work's times, and of how many times as slow as the first one it is."""
    times = [[work() for work in works] for _ in range(rounds)]
    return ([statistics.median(column) for column in zip(*times)],
            [statistics.median(time / of_round[0] for time, of_round in zip(column, times)) for column in zip(*times)])


def instructions(bench, picture, line):
    counted = subprocess.run(
        ["valgrind", "--tool=callgrind", "--toggle-collect=MeasuredWork", "--callgrind-out-file=/dev/null", bench,
         picture, line], check=True, capture_output=True, text=True).stderr
    return int(re.search(r"Collected : (\d+)", counted).group(1))


def against(value, limit, is_reached, digits):
    """A figure with what is to be reached, marked where it is not."""
    if limit is None:
        return f"{value:.{digits}f}"
    return f"{value:.{digits}f} ({limit:g}){'' if is_reached else '!'}"


def ratios(peers, values):
    return ", ".join(
        f"{peer.label} {against(value, peer.least, peer.least is None or value >= peer.least, 1 if value >= 10 else 2)}"
        for peer, value in zip(peers, values))


def print_line(what, counted, speed, windows, peers):
    print(f"{what:36} {counted:>11} {speed:>10} {windows:>8}   {peers}".rstrip())


def print_notes(peers):
    print("\nThe calls:")
    for call in dict.fromkeys(f"{peer.label}: {peer.call}" for peer in peers):
        print(f"  {call}")
    print("Under Wine, files are converted without the start of a process, which is Wine's own.\n"
          "python-escpos, another peer for columns, is no Debian package.")


def print_rows(ours, windows, others, count):
    print_line("", "instr/pixel", "Mpixel/s", "Windows", "times as fast as")
    for row in ROWS:
        works = [partial(ours.time, row.line), partial(windows.time, row.line)]
        works += [partial(others[peer.program].time, peer.work) for peer in row.peers]
        times, slower = medians_in_turn(ROUNDS, works)
        counted = count(row.line) / PIXELS
        print_line(row.what, against(counted, row.most, row.most is None or counted <= row.most, 2),
                   f"{PIXELS / times[0]:.0f}", f"{1 / slower[1]:.2f}", ratios(row.peers, slower[2:]))


def print_file_rows(ours, windows, commands_of):
    """The peers of these rows."""
    print_line("\nA BMP file into a BMP file", "", "ms/process", "Windows", "times as fast as")
    all_peers = []
    for what, how, line, magick in FILE_ROWS:
        peers = [FREEIMAGE, Peer("ImageMagick 6", "", "", 50, f"convert {' '.join(magick)}")]
        times, slower = medians_in_turn(
            PROCESS_ROUNDS, [partial(process_time, command) for command in commands_of(how, magick)])
        _, in_process = medians_in_turn(ROUNDS, [partial(ours.time, line), partial(windows.time, line)])
        print_line(what, "", against(times[0], MOST_MILLISECONDS, times[0] <= MOST_MILLISECONDS, 1),
                   f"{1 / in_process[1]:.2f}", ratios(peers, slower[1:]))
        all_peers += peers
    return all_peers


def main(programs, windows_program, picture, folder):
    programs, folder = pathlib.Path(programs), pathlib.Path(folder)
    bench = str(programs / "logo_bench")
    levels, mono, converted = (str(folder / name) for name in ("levels.bmp", "mono.bmp", "converted.bmp"))
    for how, to in (("grey", levels), ("diffusion", mono)):
        subprocess.run([bench, "--convert", how, picture, to], check=True)
    ours = Answering([bench, picture])
    windows = Answering([BENCH.parent / "scripts" / "wine-run", windows_program, f"Z:{picture}"])
    others = {"peers": Answering([programs / "logo_peers", picture, levels, mono]),
              "pillow": Answering([BENCH / "logo_peers.py", picture, levels, mono])}

    def commands_of(how, magick):
        return [[bench, "--convert", how, picture, converted],
                [str(programs / "logo_freeimage"), how, picture, converted],
                [shutil.which("convert"), picture, *magick, f"BMP3:{converted}"]]

    print("Logos, 1024 x 768, one processor. Instructions a pixel repeat exactly. Times vary from machine to machine;\n"
          "what counts are the ratios within this run: how many times as fast as another ours is, and as built for\n"
          "Windows, under Wine, as natively. In brackets: what is to be reached; ! where it is not.\n")
    print_rows(ours, windows, others, partial(instructions, bench, picture))
    file_peers = print_file_rows(ours, windows, commands_of)
    for program in (ours, windows, *others.values()):
        program.end()
    print_notes([peer for row in ROWS for peer in row.peers] + file_peers)


if __name__ == "__main__":
    main(*sys.argv[1:])
