#!/usr/bin/env python3
"""The documents name what there is: files, commands, links, sections and keys of language files, jobs."""

import fnmatch
import os
import re
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent.parent
SKIPPED = {".git", "build", "out", "node_modules"}
# What somebody wrote: other endings are of files that the programs make, or of somebody else's.
OURS = {".cmake", ".cpp", ".h", ".in", ".json", ".md", ".mjs", ".py", ".rc", ".sh", ".inf", ".ini", ".res", ".DAT"}
FENCE = re.compile(r"^```.*?^```$", re.MULTILINE | re.DOTALL)


def project_files():
    files = []
    for folder, folders, names in os.walk(PROJECT):
        folders[:] = sorted(set(folders) - SKIPPED)
        files += [os.path.relpath(os.path.join(folder, name), PROJECT) for name in names + folders]
    return sorted(files)


FILES = project_files()
BASE_NAMES = {os.path.basename(name) for name in FILES}
FOLDERS = {name for name in FILES if "/" not in name and (PROJECT / name).is_dir()}
DOCUMENTS = {name: (PROJECT / name).read_text(encoding="utf-8") for name in FILES if name.endswith(".md")}


def texts_of(pattern):
    """The files of this name, one behind the other."""
    return "".join((PROJECT / name).read_text(encoding="utf-8") for name in FILES if re.fullmatch(pattern, name))


def exists(path, document):
    """A path of the project, or one from the document's folder; with stars, one that fits."""
    if "*" in path:
        return bool(fnmatch.filter(FILES, path))
    return any((PROJECT / folder / path).exists() for folder in ("", os.path.dirname(document)))


def is_named_well(span, document):
    """Whether a code span is no path of ours, or one that exists."""
    path = span.split(" ")[0].rstrip("/")
    # A leading underscore: the ending of a name.
    if not re.fullmatch(r"[A-Za-z0-9.*][\w.*+-]*(/[\w.*+-]+)*", path) or "..." in path:
        return True
    first = path.split("/")[0]
    if "/" in path:
        # Below the folders of the sources their names are enough, as in printer/raw_job.h.
        return first not in FOLDERS or first in SKIPPED or exists(path, document)
    if os.path.splitext(path)[1] in OURS:
        return path in BASE_NAMES or exists(path, document)
    return True


def tables(text):
    """The rows of each section's tables, without heads and backticks, by heading."""
    found = {}
    heading = ""
    for line, below in zip(text.splitlines(), [*text.splitlines()[1:], ""]):
        if line.startswith("#"):
            heading = line.lstrip("# ")
        elif line.startswith("|") and not line.startswith("|---") and not below.startswith("|---"):
            found.setdefault(heading, []).append([cell.strip(" `") for cell in line.strip("|").split("|")])
    return found


def keys_of_language_files():
    text = (PROJECT / "tests/lint/language_keys.txt").read_text(encoding="utf-8")
    return [line.split("\t") for line in text.splitlines() if not line.startswith("#")]


class DocumentsTest(unittest.TestCase):
    def test_there_are_documents(self):
        for name in ("README.md", "CONTRIBUTING.md", "CHANGELOG.md", "docs/architecture.md", "install/README.md"):
            self.assertIn(name, DOCUMENTS)

    def test_named_files_exist(self):
        for document, text in DOCUMENTS.items():
            for span in re.findall(r"`([^`\n]+)`", FENCE.sub("", text)):
                with self.subTest(document=document, span=span):
                    self.assertTrue(is_named_well(span, document), "does not exist")

    def test_linked_files_exist(self):
        for document, text in DOCUMENTS.items():
            for link in re.findall(r"\]\(([^)#\s]+)[^)]*\)", FENCE.sub("", text)):
                with self.subTest(document=document, link=link):
                    self.assertTrue((PROJECT / os.path.dirname(document) / link).exists(), "does not exist")

    def test_named_commands_exist(self):
        commands = set()
        for document, text in DOCUMENTS.items():
            for path in re.findall(r"(?<![\w/])((?:scripts|receipt|tests|bench)/[\w./-]*\w)", text):
                commands.add(path)
                with self.subTest(document=document, path=path):
                    self.assertTrue(exists(path, document), "does not exist")
        self.assertIn("scripts/test", commands)

    def test_named_options_are_told_by_the_scripts(self):
        for document, text in DOCUMENTS.items():
            for script, option in re.findall(r"(scripts/[\w-]+) (--[\w-]+)", text):
                with self.subTest(document=document, script=script, option=option):
                    self.assertIn(option.lstrip("-"), (PROJECT / script).read_text(encoding="utf-8"))

    def test_scripts_can_be_run(self):
        for name in sorted({name for text in DOCUMENTS.values() for name in re.findall(r"\bscripts/[\w-]+", text)}):
            with self.subTest(script=name):
                # Sourced, not run.
                self.assertTrue(os.access(PROJECT / name, os.X_OK) or name == "scripts/wine-env")


class LanguageFilesDocumentTest(unittest.TestCase):
    def setUp(self):
        self.tables = tables(DOCUMENTS["docs/language-files.md"])

    def test_sections(self):
        rows = {row[0]: row[2] for row in self.tables["Format"] if len(row) == 3 and row[2].startswith("src/")}
        self.assertEqual(set(rows), {row[0] for row in keys_of_language_files()})
        for section, table in rows.items():
            code = (PROJECT / table).read_text(encoding="utf-8")
            for key in [row[1] for row in keys_of_language_files() if row[0] == section]:
                self.assertIn(f'"{key}"', code, f"{section} is not read from {table}")

    def test_rooms(self):
        rooms = {row[0]: row[1] for row in self.tables["Format"] if row[0].startswith("k")}
        code = (PROJECT / "src/language/text_entry.h").read_text(encoding="utf-8")
        self.assertEqual(rooms, dict(re.findall(r"constexpr std::size_t (k\w+) = (\d+);", code)))

    def test_files(self):
        files = [row[0] for row in self.tables["Language files"]]
        self.assertEqual(sorted(files), sorted(name for name in FILES if name.startswith("language/")))

    def test_keys_of_the_list(self):
        text = (PROJECT / "language/LANGUAGE_KVMR72.DAT").read_text(encoding="utf-16")
        keys = re.findall(r"^(\w+)=", text.split("[FILEVER]")[0], re.MULTILINE)
        self.assertEqual([row[0] for row in self.tables["The list of languages"]], keys[:5])

    def test_names_in_the_sources(self):
        code = texts_of(r"src/.*\.(h|cpp)")
        rows = self.tables["Where the files are"]
        for name in ["LANGUAGE_KVMR72", "IsFirstRun_KVMR72"]:
            self.assertIn(name, [row[0] for row in rows])
            self.assertIn(f'L"{name}"', code)
        for name in (r"\\system32\\spool\\drivers\\x64\\3\\", r"\\Pavane\\", r"SOFTWARE\\KESTREL\\LANGUAGE"):
            self.assertIn(name, code)
            self.assertIn(name.strip("\\").replace("\\\\", "\\").lower(), DOCUMENTS["docs/language-files.md"].lower())


class CommandStreamsDocumentTest(unittest.TestCase):
    def test_jobs(self):
        rows = tables(DOCUMENTS["docs/command-streams.md"])["Jobs"]
        code = (PROJECT / "src/printer/raw_job.h").read_text(encoding="utf-8")
        self.assertEqual({row[0] for row in rows}, set(re.findall(r'Job\[\] = L"(\w+)"', code)))

    def test_calls(self):
        named = re.findall(r"`((?:Start|End|Write)\w+)`", DOCUMENTS["docs/command-streams.md"])
        code = (PROJECT / "src/printer/raw_job.cpp").read_text(encoding="utf-8")
        self.assertEqual(named, list(dict.fromkeys(named)))
        self.assertEqual(set(named), set(re.findall(r"\b(\w+(?:PrinterW?))\(", code)))


class LayersDocumentTest(unittest.TestCase):
    def test_every_folder_of_tests_is_told_of(self):
        rows = tables(DOCUMENTS["docs/testing.md"])["Layers"]
        folders = sorted(f"tests/{path.name}" for path in (PROJECT / "tests").iterdir() if path.is_dir())
        self.assertEqual(sorted([row[1] for row in rows] + ["tests/rig"]), folders)

    def test_programs_are_targets_or_tests(self):
        lists = texts_of(r".*CMakeLists\.txt")
        names = set(re.findall(r"(?:add_executable\(|NAME |add_wine_test\()(\w+)", lists))
        for row in tables(DOCUMENTS["docs/testing.md"])["Layers"]:
            for name in re.findall(r"\b[a-z]+_\w*", row[2]):
                with self.subTest(name=name):
                    # An underscore at its end: what the names of several tests begin with.
                    known = [each for each in names if each == name or name[-1] == "_" and each.startswith(name)]
                    self.assertTrue(known, "is neither")


class ChangelogTest(unittest.TestCase):
    def test_headings(self):
        headings = re.findall(r"^## (.*)$", DOCUMENTS["CHANGELOG.md"], re.MULTILINE)
        self.assertTrue(headings)
        for heading in headings:
            self.assertRegex(heading, r"^\[\d+\.\d+\.\d+\] - (Unreleased|\d{4}-\d{2}-\d{2})$")


if __name__ == "__main__":
    unittest.main()
