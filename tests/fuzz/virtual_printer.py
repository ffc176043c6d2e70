#!/usr/bin/python3
"""Feeds the virtual receipt printer jobs that no driver sends: whole jobs of the tests, mutated.

    virtual_printer.py --replay
    virtual_printer.py --seconds N --runs N --seed N --finds FOLDER

A job may be refused with a DecodeError, and a barcode with a note on the strip; anything else is a find, and so is a
strip that does not hold what it says. The first form runs the jobs of the tests and of found/virtual_printer as they
are, and some hundred mutations, the same ones every time.
"""

import argparse
import hashlib
import random
import re
import sys
import time
import traceback
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "receipt"))

from jobs import JOBS, joined  # noqa: E402  lies with the printer's own tests

import receipt  # noqa: E402

FOUND = HERE / "found" / "virtual_printer"
DOCUMENTS = (None, None, None, None, "Barcode", "2Dcode", "SELFTEST", "LOGO", "FIRMWARE")
LONGEST_JOB = 6000
SECONDS_A_JOB = 30
REPLAYED_MUTATIONS = 1000


class Objection(Exception):
    """The printer has taken a job but says something untrue of it."""


def require(holds: bool, what: str) -> None:
    if not holds:
        raise Objection(what)


def tiles(found: list[receipt.Command], job: bytes) -> int:
    """Where the commands end; they follow each other without a gap and hold the job's own bytes."""
    at = 0
    for command in found:
        require(command.offset == at and job[at : command.end] == command.data, f"{command.name} is elsewhere")
        require(command.end > at or not job, f"{command.name} has no bytes")
        at = command.end
    return at


def decoded(job: bytes, document: str | None) -> tuple[list[receipt.Command], str | None]:
    try:
        found = receipt.decode(job, document)
    except receipt.DecodeError as error:
        end = tiles(error.commands, job)
        require(end <= len(job) and 0 <= error.offset <= len(job), "the fault is not inside the job")
        require(str(error).startswith(f"{error.offset:04X}: "), "the fault does not begin with its place")
        return error.commands, str(error)
    require(tiles(found, job) == len(job), "bytes are left over")
    return found, None


def check_strip(strip: receipt.Strip, found: list[receipt.Command], fault: str | None) -> None:
    width, height = strip.image.size
    require(width == 567 and height > 0, "the paper has another size")
    offsets = {command.offset for command in found}
    for symbol in strip.symbols:
        for left, top, right, bottom in (symbol.box, *symbol.text_boxes):
            require(0 <= left < right <= width and 0 <= top < bottom <= height, f"{symbol.kind} is not on the paper")
        require(strip.crop(symbol).getextrema()[0] == 0, f"{symbol.kind} has no black dot")
    for logo in strip.logos:
        require(0 <= logo.box[0] < logo.box[2] <= width and logo.box[3] <= height, "a logo is not on the paper")
    require(all(0 <= row < height for row in strip.cuts), "a cut is not on the paper")
    boxes = sorted(strip.symbols + strip.logos, key=lambda printed: printed.offset)
    require(all(upper.box[3] <= lower.box[1] for upper, lower in zip(boxes, boxes[1:])), "one is printed on another")
    require(all(upper < lower for upper, lower in zip(strip.cuts, strip.cuts[1:])), "the paper runs backwards")
    for placed in (*strip.symbols, *strip.notes, *strip.logos):
        require(placed.offset in offsets, "something belongs to no command")
    if not strip.too_long:
        names = [command.name for command in found]
        require(len(strip.cuts) == names.count("cut"), "a cut is missing")
        require(len(strip.logos) == names.count("logo"), "a logo is missing")
        require(len(strip.symbols) + len(strip.failures) == names.count("barcode"), "a barcode is missing")


def outcome(job: bytes, document: str | None) -> frozenset[str]:
    """Runs a job. What happened in words, without its numbers: new words are a new way through the printer."""
    began = time.monotonic()
    found, fault = decoded(job, document)
    strip = receipt.render(found, fault)
    check_strip(strip, found, fault)
    require(time.monotonic() - began < SECONDS_A_JOB, f"the job takes more than {SECONDS_A_JOB} seconds")
    words = [command.name for command in found] + [note.text for note in strip.notes] + [fault or ""]
    return frozenset(re.sub(r"\b[0-9A-F]{2,}\b|[0-9]+|\".*\"", "#", word) for word in words)


class Mutator:
    """Jobs of the tests as lists of commands, changed by whole commands and by bytes."""

    NUMBERS = (0, 1, 2, 3, 4, 7, 8, 9, 0x0A, 0x1B, 0x1C, 0x1D, 0x20, 0x30, 0x39, 0x41, 0x6B, 0x7B, 0x7F, 0x80, 0xFF)

    def __init__(self, seed: int) -> None:
        self.random = random.Random(seed)
        self.jobs = [[bytes.fromhex(command) for command in job] for job in JOBS.values()]
        self.jobs += [[path.read_bytes()] for path in found_jobs()]

    def job(self) -> bytes:
        chance = self.random
        commands = list(chance.choice(self.jobs))
        for _ in range(chance.choice((0, 0, 1, 1, 2, 4))):
            commands = self.with_command(commands)
        job = bytearray(b"".join(commands))
        for _ in range(chance.choice((0, 1, 1, 1, 2, 3, 8))):
            self.change_bytes(job)
        return bytes(job[:LONGEST_JOB])

    def with_command(self, commands: list[bytes]) -> list[bytes]:
        chance = self.random
        place = chance.randrange(len(commands) + 1)
        way = chance.randrange(5)
        if way == 0:
            return commands[:place] + commands[place + 1 :]
        if way == 1:
            return commands[:place] + [chance.choice(chance.choice(self.jobs))] + commands[place:]
        if way == 2:
            return commands + chance.choice(self.jobs)
        if way == 3:
            return commands[:place] + commands[chance.randrange(place + 1) :]
        chance.shuffle(commands)
        return commands

    def change_bytes(self, job: bytearray) -> None:
        chance = self.random
        at = chance.randrange(len(job) + 1)
        way = chance.randrange(7)
        if way == 0 and at < len(job):
            job[at] = chance.choice(self.NUMBERS)
        elif way == 1 and at < len(job):
            job[at] = (job[at] + chance.choice((-1, 1))) % 256
        elif way == 2 and at < len(job):
            job[at] ^= 1 << chance.randrange(8)
        elif way == 3:
            job[at:at] = bytes(chance.choice(self.NUMBERS) for _ in range(chance.choice((1, 2, 8, 40, 255))))
        elif way == 4:
            job[at:at] = bytes(chance.choice(b"0123456789") for _ in range(chance.choice((1, 2, 13, 90))))
        elif way == 5:
            del job[at : at + chance.choice((1, 2, 8, 100))]
        else:
            del job[at:]


def found_jobs() -> list[Path]:
    return sorted(FOUND.glob("*.prn"))


class Printer:
    """Runs jobs and keeps those that break something."""

    def __init__(self, finds: Path | None) -> None:
        self.finds = finds
        self.seen: set[frozenset[str]] = set()
        self.words: set[str] = set()
        self.broken: set[tuple[str, str, int]] = set()
        self.runs = 0

    def run(self, job: bytes, document: str | None) -> None:
        self.runs += 1
        try:
            words = outcome(job, document)
        except Exception as fault:  # noqa: BLE001  whatever it is, it is a find
            self.keep(job, document, fault)
            return
        self.seen.add(words)
        self.words |= words

    def keep(self, job: bytes, document: str | None, fault: Exception) -> None:
        place = traceback.extract_tb(fault.__traceback__)[-1]
        kind = (type(fault).__name__ + (str(fault) if isinstance(fault, Objection) else ""), place.filename, place.lineno)
        if kind in self.broken:
            return
        self.broken.add(kind)
        traceback.print_exception(fault)
        print(f"document {document}, job {job.hex(' ')}", flush=True)
        if self.finds:
            self.finds.mkdir(parents=True, exist_ok=True)
            (self.finds / f"{hashlib.sha1(job).hexdigest()[:12]}.prn").write_bytes(job)

    def report(self) -> None:
        print(f"#{self.runs} cov: {len(self.words)} ft: {len(self.seen)} corp: {len(JOBS)} finds: {len(self.broken)}")


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--replay", action="store_true", help="the kept jobs and the same mutations every time")
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--runs", type=int, default=10_000_000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--finds", type=Path, help="where jobs are kept that break something")
    arguments = parser.parse_args()
    if arguments.replay:
        arguments.seconds, arguments.runs, arguments.seed = float("inf"), REPLAYED_MUTATIONS, 1
    printer = Printer(arguments.finds)
    for job in [joined(job) for job in JOBS.values()] + [path.read_bytes() for path in found_jobs()]:
        for document in sorted(set(DOCUMENTS), key=str):
            printer.run(job, document)
    mutator = Mutator(arguments.seed)
    end = time.monotonic() + arguments.seconds
    told = time.monotonic()
    while printer.runs < arguments.runs and time.monotonic() < end:
        printer.run(mutator.job(), mutator.random.choice(DOCUMENTS))
        if time.monotonic() - told > 10:
            printer.report()
            told = time.monotonic()
    printer.report()
    return 1 if printer.broken else 0


if __name__ == "__main__":
    sys.exit(main())
