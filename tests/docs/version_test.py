#!/usr/bin/env python3
"""Everything that tells a version tells the project's.

Usage: version_test.py --dll FILE --host FILE    (with WINEPREFIX, which the host program is run in)
"""

import argparse
import re
import subprocess
import sys
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent.parent
DLL = None
HOST = None


def project_version():
    text = (PROJECT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"^project\(KVMR72UI VERSION (\d+)\.(\d+)\.(\d+) ", text, re.MULTILINE).groups()


def text_value(dll, key):
    """A text of the DLL's properties: behind its key and at most one unit that fills up."""
    mark = (key + "\0").encode("utf-16-le")
    at = dll.index(mark) + len(mark)
    return dll[at : at + 200].decode("utf-16-le", "replace").lstrip("\0").split("\0")[0]


# Texts of the Version page that tell the version, in words that are fixed.
VERSION_PAGE = {
    "src/devpages/version_page_texts.h": "utf-8",
    "src/resources/dialogs.rc": "utf-8",
    "language/ENG_KVMR72.res": "utf-16",
    "language/CHN_KVMR72.res": "utf-16",
    "language/CHF_KVMR72.res": "utf-16",
    "tests/lint/language_keys.txt": "utf-8",
    "tests/lint/check_language_files.py": "utf-8",
}


class VersionTest(unittest.TestCase):
    def setUp(self):
        self.numbers = project_version()
        self.version = ".".join(self.numbers)
        self.dll = Path(DLL).read_bytes()

    def test_of_the_dll(self):
        at = self.dll.index(bytes.fromhex("BD04EFFE"))
        words = [int.from_bytes(self.dll[i : i + 2], "little") for i in range(at + 8, at + 24, 2)]
        major, minor, patch = map(int, self.numbers)
        # Twice, of the file and of the product: minor and major, then the fourth number and the third.
        self.assertEqual(words, [minor, major, 0, patch] * 2)
        self.assertEqual(text_value(self.dll, "FileVersion"), self.version)
        self.assertEqual(text_value(self.dll, "ProductVersion"), self.version)

    def test_names_in_the_dll(self):
        names = {
            "CompanyName": "Kestrel",
            "FileDescription": "KVM-R72 receipt printer driver user interface",
            "InternalName": "KVMR72UI",
            "LegalCopyright": "Copyright (C) Kestrel",
            "OriginalFilename": "KVMR72UI.dll",
            "ProductName": "KVM-R72 receipt printer driver",
        }
        self.assertEqual({key: text_value(self.dll, key) for key in names}, names)

    def test_of_the_host_program(self):
        run = subprocess.run(
            [PROJECT / "scripts" / "wine-run", HOST, "--version"], capture_output=True, text=True, check=False
        )
        self.assertEqual((run.returncode, run.stdout.strip()), (0, f"KVMR72Host {self.version}"))

    def test_of_the_changelog(self):
        text = (PROJECT / "CHANGELOG.md").read_text(encoding="utf-8")
        self.assertEqual(re.findall(r"^## \[(.+?)\]", text, re.MULTILINE)[0], self.version)

    def test_of_the_version_page(self):
        # The installed driver's and the user interface's, of which the page has the first two numbers.
        expected = [".".join(self.numbers[:2])] * 2
        for name, encoding in VERSION_PAGE.items():
            text = (PROJECT / name).read_text(encoding=encoding)
            with self.subTest(file=name):
                self.assertEqual(re.findall(r"\bv(\d[\d.]*)", text), expected)

    def test_of_the_readme(self):
        text = (PROJECT / "README.md").read_text(encoding="utf-8")
        self.assertEqual(re.findall(r"KVMR72UI-([\d.]+)\.zip", text), [self.version])


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--dll", required=True)
    parser.add_argument("--host", required=True)
    options, rest = parser.parse_known_args()
    DLL, HOST = options.dll, options.host
    unittest.main(argv=[sys.argv[0], *rest])
