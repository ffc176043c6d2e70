"""A print server of this process's own, with one printer that sends its jobs on to a listener on this machine."""

import contextlib
import grp
import os
import pwd
import shutil
import socket
import subprocess
import threading
import time
from pathlib import Path

PRINTER = "receipts"

START_SECONDS = 20
STOP_SECONDS = 10

FILES = """\
User {user}
Group {group}
ServerRoot {folder}/root
RequestRoot {folder}/spool
TempDir {folder}/tmp
CacheDir {folder}/cache
StateDir {folder}/state
ErrorLog {folder}/error_log
AccessLog {folder}/access_log
PageLog {folder}/page_log
Printcap
"""

# Whoever gets to the socket may print. The page log gets a line for each job.
SETTINGS = """\
Listen {folder}/socket
Browsing No
WebInterface No
LogLevel info
PageLogFormat %{{job-name}}
<Location />
Order allow,deny
Allow all
</Location>
<Policy default>
<Limit All>
Order deny,allow
</Limit>
</Policy>
"""

# Without a driver of its own a printer passes bytes on as they are.
PRINTERS = """\
<Printer {printer}>
DeviceURI socket://127.0.0.1:{port}/?snmp=false
State Idle
Accepting Yes
</Printer>
"""


class Listener:
    """Keeps what comes in by each connection, on a free port of this machine."""

    def __init__(self) -> None:
        self._socket = socket.create_server(("127.0.0.1", 0))
        self.port = self._socket.getsockname()[1]
        self.jobs: list[bytes] = []
        threading.Thread(target=self._listen, daemon=True).start()

    def _listen(self) -> None:
        while True:
            connection, _ = self._socket.accept()
            with connection:
                parts = []
                while part := connection.recv(1 << 16):
                    parts.append(part)
                # Before the connection is closed: then the printer takes the job as done.
                self.jobs.append(b"".join(parts))


class PrintServer:
    """Runs while it is the context. All its files are in the folder, which it makes where every user may look."""

    def __init__(self, folder: Path, port: int) -> None:
        self._folder = folder
        self.address = str(folder / "socket")
        # Its backends run as another user than root and read the jobs.
        for part in ("", "root", "spool", "tmp", "cache", "state"):
            (folder / part).mkdir(parents=True)
            (folder / part).chmod(0o755)
        as_root = os.getuid() == 0
        user = "lp" if as_root else pwd.getpwuid(os.getuid()).pw_name
        group = "lp" if as_root else grp.getgrgid(os.getgid()).gr_name
        files = FILES.format(folder=folder, user=user, group=group)
        (folder / "cups-files.conf").write_text(files, encoding="utf-8")
        (folder / "cupsd.conf").write_text(SETTINGS.format(folder=folder), encoding="utf-8")
        printers = PRINTERS.format(printer=PRINTER, port=port)
        (folder / "root" / "printers.conf").write_text(printers, encoding="utf-8")

    def __enter__(self) -> "PrintServer":
        program = shutil.which("cupsd", path="/usr/sbin:/usr/bin")
        if program is None:
            raise RuntimeError("cupsd is missing: run scripts/setup")
        # Where the system restricts programs, the one at that place may use the system's own folders only.
        own = shutil.copy(program, self._folder / "cupsd")
        settings = ["-c", str(self._folder / "cupsd.conf"), "-s", str(self._folder / "cups-files.conf")]
        # Ends with this process, however that ends.
        command = ["setpriv", "--pdeathsig", "TERM", own, "-f"] + settings
        with open(self._folder / "output", "wb") as output:
            self._process = subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT
            )
        try:
            wait_until(START_SECONDS, lambda: self._process.poll() is not None or self._answers())
            if not self._answers():
                raise RuntimeError(f"cupsd does not start:\n{self.log()}")
        except BaseException:
            self.stop()
            raise
        return self

    def __exit__(self, *_) -> None:
        self.stop()

    def stop(self) -> None:
        """Ends the server and the job that it is about to print."""
        self._process.terminate()
        try:
            self._process.wait(STOP_SECONDS)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()

    def _answers(self) -> bool:
        with socket.socket(socket.AF_UNIX) as client:
            return client.connect_ex(self.address) == 0

    def done(self) -> list[str]:
        """The names of the jobs that it is done with, in that order."""
        with contextlib.suppress(FileNotFoundError):
            return (self._folder / "page_log").read_text(encoding="utf-8").splitlines()
        return []

    def log(self) -> str:
        """What the server said, for a person."""
        files = [self._folder / name for name in ("output", "error_log")]
        return "".join(file.read_text(errors="replace") for file in files if file.exists())


def wait_until(seconds: float, condition) -> bool:
    """Polls until the condition holds; whether it did in time."""
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            return False
        time.sleep(0.01)
    return True
