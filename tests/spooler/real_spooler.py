#!/usr/bin/python3
"""Sends the printer sheet's jobs through the system's own spooler.

    real_spooler.py --tests spooler_tests.exe

Starts a print server whose one printer sends to a listener in this program, lets the tests press the sheet's buttons on
that printer (in the Wine prefix WINEPREFIX), and compares the names of the jobs and every byte that arrived.
"""

import argparse
import os
import random
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from print_server import PRINTER, Listener, PrintServer, wait_until

ARRIVAL_SECONDS = 30

SELF_TEST = bytes.fromhex("1B633B01 1D284102000002 1B633B00")
# 5 MB and a bit, no multiple of anybody's buffer.
FIRMWARE = random.Random(72).randbytes(5 * 1024 * 1024 + 1)

EXPECTED = [("SELFTEST", SELF_TEST), ("FIRMWARE", FIRMWARE)]


def difference(expected: bytes, came: bytes) -> str:
    """Empty when they are the same."""
    if expected == came:
        return ""
    both = min(len(expected), len(came))
    first = next((i for i in range(both) if expected[i] != came[i]), both)
    return f"{len(came)} bytes came for {len(expected)}; they differ from byte {first} on"


def press_buttons(tests: str, printers: str, firmware: Path) -> subprocess.CompletedProcess:
    # Ends with this process, however that ends.
    wine_run = Path(__file__).resolve().parents[2] / "scripts/wine-run"
    run = ["setpriv", "--pdeathsig", "TERM", str(wine_run), tests]
    named = {"KVMR72_PRINT_SERVER": printers, "KVMR72_PRINTER": PRINTER, "KVMR72_FIRMWARE": f"Z:{firmware}"}
    # Only files are left open to what the program starts: a pipe would wait for that to end as well.
    with tempfile.TemporaryFile() as output:
        done = subprocess.run(
            run,
            env={**os.environ, **named},
            stdin=subprocess.DEVNULL,
            stdout=output,
            stderr=subprocess.STDOUT,
            check=False,
        )
        output.seek(0)
        done.stdout = output.read().decode(errors="replace")
    return done


def faults_of(tests: str, folder: Path) -> list[str]:
    firmware = folder / "firmware.JK"
    firmware.write_bytes(FIRMWARE)
    listener = Listener()
    with PrintServer(folder / "server", listener.port) as server:
        started = time.monotonic()
        done = press_buttons(tests, server.address, firmware)
        print(done.stdout, end="")
        if done.returncode != 0:
            return [f"{tests} ended with {done.returncode}", server.log()]
        wait_until(
            ARRIVAL_SECONDS, lambda: min(len(listener.jobs), len(server.done())) >= len(EXPECTED)
        )
        print(f"{len(listener.jobs)} jobs arrived in {time.monotonic() - started:.1f} s")
    # The server has ended: nothing more comes.
    names = [name for name, _ in EXPECTED]
    faults = []
    if server.done() != names:
        faults.append(f"the jobs are {server.done()}, not {names}")
    if len(listener.jobs) != len(EXPECTED):
        faults.append(f"{len(listener.jobs)} jobs arrived, not {len(EXPECTED)}")
    for (name, expected), came in zip(EXPECTED, listener.jobs):
        if text := difference(expected, came):
            faults.append(f"{name}: {text}")
    return faults + [server.log()] if faults else []


def main() -> int:
    parser = argparse.ArgumentParser(description="Sends the printer sheet's jobs through the system's own spooler.")
    parser.add_argument("--tests", required=True)
    options = parser.parse_args()
    if "WINEPREFIX" not in os.environ:
        parser.error("set WINEPREFIX to a folder made by scripts/wine-prefix")
    # Not beside the build: a socket's path has little room. The print server's helpers are another user's.
    with tempfile.TemporaryDirectory(prefix="kvmr72-spooler-") as folder:
        os.chmod(folder, 0o755)
        faults = faults_of(options.tests, Path(folder))
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
