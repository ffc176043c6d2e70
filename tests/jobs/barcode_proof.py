#!/usr/bin/python3
"""Proves the barcode pages: types data into them, presses Print, draws the jobs and reads the symbols back.

    barcode_proof.py --host KVMR72Host.exe --work FOLDER [--count N] [--seed S]

N random valid texts of each of the 19 types go through the real pages, each through real controls; every job is drawn
by the virtual receipt printer and read by three readers. What they read is compared with what the symbology makes of
the text. Prints how many of each type each reader read; exit code 1 when one symbol is wrong or read by too few.
"""

import argparse
import subprocess
import sys
from collections import Counter
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(PROJECT))

from barcode_texts import TYPES, Text, texts  # noqa: E402

import receipt  # noqa: E402
from receipt import readers  # noqa: E402

# All others are read by two at least.
ONE_READER = {"GS1 DataBar Limited", "GS1 DataBar Expanded Stacked"}

RECORD_SIZE = 1976
FONT_1D, FONT_2D = 596, 884


def record(defaults: bytes) -> bytes:
    """The default record with settings that let the longest texts fit on the paper."""
    data = bytearray(defaults)
    assert len(data) == RECORD_SIZE
    data[FONT_1D + 1] = 2  # module width
    data[FONT_1D + 4] = 60  # height
    data[FONT_1D + 20] = 2  # GS1 DataBar: module width, row height
    data[FONT_1D + 24] = 40
    data[FONT_1D + 34] = 1  # identifiers are marked
    data[FONT_2D + 1 : FONT_2D + 6] = bytes((2, 6, 4, 20, 3))  # PDF417: width, height, columns, rows, level
    data[FONT_2D + 6] = 2
    data[FONT_2D + 8] = 40
    data[FONT_2D + 17] = 4  # segments
    data[FONT_2D + 19] = 1
    data[FONT_2D + 20] = 4  # QR Code: width, model
    data[FONT_2D + 22] = 2
    return bytes(data)


def run_host(host: str, arguments: list[str]) -> None:
    environment = [str(PROJECT / "scripts" / "wine-run"), host]
    done = subprocess.run(environment + arguments, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{' '.join(arguments)}: exit code {done.returncode}\n{done.stdout}{done.stderr}")


def print_jobs(host: str, work: Path, wanted: list[Text]) -> list[bytes]:
    """The bytes of each text's job, in order."""
    work.mkdir(parents=True, exist_ok=True)
    jobs = work / "jobs"
    for old in jobs.glob("*"):
        old.unlink()
    stored = work / "record.bin"
    stored.unlink(missing_ok=True)
    nothing = work / "nothing.tsv"
    nothing.write_text("", encoding="utf-8")
    run_host(host, ["--record", f"Z:{stored}", "--prints", f"Z:{nothing}"])
    stored.write_bytes(record(stored.read_bytes()))
    prints = work / "prints.tsv"
    lines = [f"{text.page}\t{text.type}\t{text.typed}\n" for text in wanted]
    prints.write_text("".join(lines), encoding="utf-8", newline="\n")
    run_host(host, ["--record", f"Z:{stored}", "--prints", f"Z:{prints}", "--jobs", f"Z:{jobs}"])
    return [job.read_bytes() for job in sorted(jobs.glob("*.prn"))]


def main() -> int:
    parser = argparse.ArgumentParser(description="Proves the barcode pages from the page to the paper.")
    parser.add_argument("--host", required=True)
    parser.add_argument("--work", required=True, type=Path)
    parser.add_argument("--count", type=int, default=50)
    parser.add_argument("--seed", type=int, default=72)
    options = parser.parse_args()

    wanted = texts(options.seed, options.count)
    jobs = print_jobs(options.host, options.work.resolve(), wanted)
    faults = []
    if len(jobs) != len(wanted):
        print(f"{len(jobs)} jobs for {len(wanted)} texts")
        return 1

    pictures, symbols = [], []
    for text, job in zip(wanted, jobs):
        document = "Barcode" if text.page == "1D" else "2Dcode"
        strip = receipt.render(receipt.decode(job, document=document))
        if strip.failures or len(strip.symbols) != 1:
            faults.append(f"{text}: {[str(note) for note in strip.notes]}")
            continue
        symbol = strip.symbols[0]
        if symbol.payload != text.read:
            faults.append(f"{text}: says {symbol.payload!r}")
        pictures.append(strip.crop(symbol, scale=readers.SCALE))
        symbols.append((text, symbol))

    found = readers.read_images(pictures)
    read: Counter = Counter()
    for number, (text, symbol) in enumerate(symbols):
        scan = readers.Scan(symbol, {reader: found[reader][number] for reader in readers.READERS})
        read.update((text.type, reader) for reader in scan.read_by())
        if scan.misread_by() or len(scan.read_by()) < (1 if text.type in ONE_READER else 2):
            faults.append(f"{text}: {scan.readings}")

    print("| type | " + " | ".join(readers.READERS) + " |")
    print("|---" * (1 + len(readers.READERS)) + "|")
    for _, kind, _ in TYPES:
        counts = " | ".join(str(read[kind, reader]) for reader in readers.READERS)
        print(f"| {kind} | {counts} |")
    print(f"{len(wanted)} texts, {len(faults)} faults")
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
