#!/usr/bin/env python3
"""Tests of scripts/package with the built DLL.

Usage: package_test.py --dll FILE
"""

import argparse
import hashlib
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent.parent
PAYLOAD = [
    "CHF_KVMR72.res",
    "CHN_KVMR72.res",
    "ENG_KVMR72.res",
    "KVMR72.ini",
    "KVMR72UI.dll",
    "LANGUAGE_KVMR72.DAT",
]
DLL = None


def version():
    return re.search(r"VERSION (\d+\.\d+\.\d+) LANGUAGES", (PROJECT / "CMakeLists.txt").read_text())[1]


def sections(text):
    """An INF or INI file's lines by section, comments left out."""
    found = {}
    name = None
    for line in text.replace("\r\n", "\n").split("\n"):
        line = line.split(";")[0].strip()
        if line.startswith("["):
            name = line[1:-1]
            found[name] = []
        elif line:
            found[name].append(line)
    return found


class PackageTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.work = Path(folder.name)

    def run_script(self, tree=PROJECT, dll=None, **more):
        out = more.pop("out", self.work / "out")
        return subprocess.run(
            [sys.executable, "-B", tree / "scripts" / "package", "--dll", dll or DLL, "--out", out],
            capture_output=True, text=True, check=False, **more,
        )  # fmt: skip

    def package(self, **more):
        run = self.run_script(**more)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        return Path(run.stdout.strip())

    def contents(self):
        with zipfile.ZipFile(self.package()) as archive:
            self.assertIsNone(archive.testzip())
            return {name.split("/")[-1]: archive.read(name) for name in archive.namelist()}

    def copied_tree(self):
        tree = self.work / "tree"
        for name in ("install", "language"):
            shutil.copytree(PROJECT / name, tree / name)
        (tree / "scripts").mkdir()
        shutil.copy(PROJECT / "scripts" / "package", tree / "scripts")
        for name in ("CMakeLists.txt", "CHANGELOG.md"):
            shutil.copy(PROJECT / name, tree)
        return tree

    def assert_refused(self, tree, words, dll=None):
        run = self.run_script(tree, dll)
        self.assertEqual(run.returncode, 1)
        self.assertIn(words, run.stderr)
        self.assertFalse(list(self.work.glob("out/*")))

    def test_tells_its_use(self):
        run = subprocess.run([PROJECT / "scripts" / "package", "--help"], capture_output=True, text=True, check=False)
        self.assertEqual(run.returncode, 0)
        self.assertIn("--dll", run.stdout)

    def test_holds_the_files_in_one_folder(self):
        folder = f"KVMR72UI-{version()}"
        archive = self.package()
        self.assertEqual(archive.name, folder + ".zip")
        papers = ["CHANGELOG.md", "KVMR72UI-part.inf", "README.md", "SHA256SUMS"]
        with zipfile.ZipFile(archive) as opened:
            names = opened.namelist()
        self.assertEqual(names, sorted(f"{folder}/{name}" for name in PAYLOAD + papers))

    def test_holds_the_files_as_they_are(self):
        contents = self.contents()
        self.assertEqual(contents["KVMR72UI.dll"], Path(DLL).read_bytes())
        for name in PAYLOAD:
            if (PROJECT / "language" / name).exists():
                self.assertEqual(contents[name], (PROJECT / "language" / name).read_bytes(), name)
        for name in ("KVMR72.ini", "KVMR72UI-part.inf", "README.md"):
            lines = (PROJECT / "install" / name).read_text(encoding="utf-8").split("\n")
            self.assertEqual(contents[name].decode("utf-8").split("\r\n"), lines, name)

    def test_sums_are_those_of_every_other_file(self):
        contents = self.contents()
        sums = contents.pop("SHA256SUMS").decode("ascii")
        lines = [f"{hashlib.sha256(data).hexdigest()}  {name}\n" for name, data in sorted(contents.items())]
        self.assertEqual(sums, "".join(lines))

    def test_setup_names_exactly_the_files(self):
        setup = sections(self.contents()["KVMR72UI-part.inf"].decode("ascii"))
        self.assertEqual(sorted(setup["KVMR72UI_Files"]), PAYLOAD)
        self.assertEqual(sorted(setup["SourceDisksFiles.amd64"]), [f"{name} = 1" for name in PAYLOAD])
        # 66000: the folder that the spooler names for drivers.
        self.assertEqual(setup["DestinationDirs"], ["KVMR72UI_Files = 66000"])
        self.assertEqual(len(setup), 3)

    def test_configuration_names_the_plug_in(self):
        configuration = sections(self.contents()["KVMR72.ini"].decode("ascii"))
        self.assertEqual(configuration, {"OEMFiles": ["OEMConfigFile1=KVMR72UI.dll"]})

    def test_is_the_same_whoever_makes_it_when(self):
        first = self.package().read_bytes()
        tree = self.copied_tree()
        for path in tree.rglob("*"):
            os.utime(path, (1, 1))
            if path.is_file():
                path.chmod(0o700)
        second = self.package(
            tree=tree, out=self.work / "other", umask=0o077, env=dict(os.environ, TZ="Asia/Shanghai", LC_ALL="C")
        )
        self.assertEqual(first, second.read_bytes())

    def test_refuses_a_file_that_setup_does_not_name(self):
        tree = self.copied_tree()
        shutil.copy(tree / "language" / "ENG_KVMR72.res", tree / "language" / "FRA_KVMR72.res")
        self.assert_refused(tree, "FRA_KVMR72.res")

    def test_refuses_a_file_that_is_missing(self):
        tree = self.copied_tree()
        (tree / "language" / "CHF_KVMR72.res").unlink()
        self.assert_refused(tree, "CHF_KVMR72.res")

    def test_refuses_a_language_file_that_is_not_utf_16(self):
        tree = self.copied_tree()
        (tree / "language" / "CHF_KVMR72.res").write_text("[LAYOUT]\n", encoding="utf-8")
        self.assert_refused(tree, "is not UTF-16")

    def test_refuses_a_dll_of_another_version(self):
        tree = self.copied_tree()
        text = (tree / "CMakeLists.txt").read_text(encoding="utf-8")
        (tree / "CMakeLists.txt").write_text(text.replace(f"VERSION {version()} ", "VERSION 9.8.7 "), encoding="utf-8")
        self.assert_refused(tree, f"has version {version()}, the project 9.8.7")

    def test_refuses_a_dll_without_a_version_and_none(self):
        dll = self.work / "empty.dll"
        self.assert_refused(PROJECT, "empty.dll", dll)
        dll.write_bytes(b"MZ")
        self.assert_refused(PROJECT, "has no version", dll)

    def test_refuses_a_folder_that_cannot_be_made_or_written(self):
        file = self.work / "file"
        file.write_bytes(b"here")
        taken = self.work / "taken" / f"KVMR72UI-{version()}.zip"
        (taken / "here").mkdir(parents=True)
        for out, name in ((file, "file"), (file / "below", "file"), (taken.parent, taken.name)):
            run = self.run_script(out=out)
            self.assertEqual((run.returncode, run.stdout), (1, ""))
            self.assertRegex(run.stderr, rf"^package: .*{re.escape(name)}.*\n$")
        self.assertEqual(file.read_bytes(), b"here")
        self.assertEqual(list(taken.parent.iterdir()), [taken])


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--dll", required=True)
    options, rest = parser.parse_known_args()
    DLL = options.dll
    unittest.main(argv=[sys.argv[0], *rest])
