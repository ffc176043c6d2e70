#!/usr/bin/python3
"""Pillow at the work that logo_bench does.

    logo_peers.py COLOURS.bmp LEVELS.bmp MONO.bmp    times of the work that standard input names

Each name is answered with microseconds, the least of a few runs.
"""
import sys
import time

from PIL import Image

RUNS_IN_TURN = 7


def measured(work):
    times = []
    for _ in range(RUNS_IN_TURN):
        start = time.perf_counter()
        work()
        times.append(time.perf_counter() - start)
    return min(times) * 1e6


def main(*paths):
    pictures = [Image.open(path) for path in paths]
    for picture in pictures:
        picture.load()
    if [picture.mode for picture in pictures] != ["RGB", "L", "1"]:
        sys.exit("logo_peers.py: not the same picture in 24, 8 and 1 bits")
    colours, levels, mono = pictures
    works = {
        "grey24": lambda: colours.convert("L"),
        "diffusion8": lambda: levels.convert("1"),
        "diffusion24": lambda: colours.convert("1"),
        "columns": lambda: mono.transpose(Image.Transpose.TRANSPOSE).tobytes("raw", "1;I"),
    }
    for line in sys.stdin:
        print(f"{measured(works[line.strip()]):.3f}", flush=True)


if __name__ == "__main__":
    main(*sys.argv[1:])
