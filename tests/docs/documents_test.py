#!/usr/bin/env python3
"""The documents name what there is: files, commands, links, options, sections and keys of language files, jobs, paths
that an installation touches, rooms. Every page and dialog has its pictures."""

import fnmatch
import os
import re
import sys
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(PROJECT / "tests" / "lint"))
import check_sources  # noqa: E402
SKIPPED = {".git", "build", "out", "node_modules"}
# What somebody wrote: other endings are of files that the programs make, or of somebody else's.
OURS = {".cmake", ".cpp", ".h", ".in", ".json", ".md", ".mjs", ".py", ".rc", ".sh", ".inf", ".ini", ".res", ".DAT"}
# Where a page's captions are, and what sends its jobs.
PAGES_THAT_PRINT = {
    "1D Code": ("1DCODE", ["src/docpages/barcode_1d_page.cpp"]),
    "2D Code": ("2DCODE", ["src/docpages/barcode_2d_page.cpp"]),
    "Utility": ("UTILITY", ["src/devpages/utility_page.cpp"]),
    "Download": (
        "DOWNLOAD",
        ["src/devpages/download_page.cpp", "src/devpages/logo_group.cpp", "src/devpages/logo_list.cpp"],
    ),
}
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


def source(name):
    return (PROJECT / name).read_text(encoding="utf-8")


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

    def test_named_constants_exist(self):
        code = texts_of(r"(src|host|tests|bench)/.*\.(h|cpp)")
        known = set(re.findall(r"\bk[A-Z]\w*", code))
        for document, text in DOCUMENTS.items():
            for name in re.findall(r"`(k[A-Z]\w*)`", FENCE.sub("", text)):
                with self.subTest(document=document, name=name):
                    self.assertIn(name, known)

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

    def test_bounds(self):
        document = " ".join(DOCUMENTS["docs/language-files.md"].split())
        size = re.search(r"kMaxLanguageFileSize = (\d+)u << 20;", source("src/language/language_file.h"))[1]
        self.assertEqual(re.findall(r"larger than (\d+) MB", document), [size])
        most = re.search(r"kMaxLanguages = (\d+);", source("src/language/language_list.h"))[1]
        self.assertEqual(re.findall(r"at most (\d+) are read", document), [most])
        room = re.search(r"kLanguageNameLength = (\d+);", source("src/language/language_choice.h"))[1]
        self.assertEqual(set(re.findall(r"(?:no path,|name of) at most (\d+) units", document)), {str(int(room) - 1)})
        help_room = re.search(r"^HELP_LENGTH = (\d+)$", source("tests/lint/check_language_files.py"), re.MULTILINE)[1]
        self.assertEqual(re.findall(r"takes (\d+) units", document), [str(int(help_room) - 1)])


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

    def test_what_is_pressed(self):
        captions = {}
        for section, _, _, english in keys_of_language_files():
            captions.setdefault(section, set()).add(english)
        rows = tables(DOCUMENTS["docs/command-streams.md"])["Jobs"]
        self.assertTrue(rows)
        for document, pressed, _ in rows:
            with self.subTest(pressed=pressed):
                page, button = pressed.split(": ")
                job = re.search(rf'(\w+)\[\] = L"{document}"', source("src/printer/raw_job.h"))[1]
                section, sources = PAGES_THAT_PRINT[page]
                self.assertIn(page, captions[section])
                # The button for a file bears a picture.
                if button != "the file's button":
                    self.assertIn(button, captions[section])
                self.assertIn(f"{job},", "".join(source(name) for name in sources).replace(")", ","))


class BarcodesDocumentTest(unittest.TestCase):
    def test_commands(self):
        prints = tables(DOCUMENTS["docs/command-streams.md"])["Test prints"]
        sent = {row[0]: row[1].replace(" / ", " ") for row in prints if len(row) == 3}
        rows = tables(DOCUMENTS["docs/barcodes.md"])["Types, commands, readers"]
        self.assertEqual([row[0] for row in rows], list(sent))
        for name, command, *_ in rows:
            with self.subTest(type=name):
                # The command that prints, whatever number or level follows it.
                self.assertEqual({command[: len("1D 6B 00")]}, set(re.findall(r"1D 6B \w\w", sent[name])))
                kinds = re.findall(r"kind (\d)$", command)
                self.assertEqual([f"{int(kind):02X}" for kind in kinds], re.findall(r"1D 73 (\w\w)", sent[name]))


class HostOptionsTest(unittest.TestCase):
    def test_named_options_are_the_program_s(self):
        rows = re.findall(r'\{L"(--[\w-]+)",\s*(nullptr|"[^"]*"),', source("host/options.cpp"))
        takes_value = {name: value != "nullptr" for name, value in rows}
        self.assertEqual(len(takes_value), source("host/options.cpp").count('{L"--'))
        named = []
        for line in re.findall(r"^KVMR72Host (.*)$", DOCUMENTS["README.md"], re.MULTILINE):
            words = re.findall(r'"[^"]*"|\S+', line.split(" rem ")[0])
            named += [(word, (words + [""])[at + 1]) for at, word in enumerate(words) if word.startswith("--")]
        self.assertTrue(named)
        for option, value in named:
            with self.subTest(option=option):
                self.assertIn(option, takes_value)
                self.assertEqual(takes_value[option], bool(value) and not value.startswith("--"))

    def test_other_documents(self):
        known = set(re.findall(r'L"(--[\w-]+)"', source("host/options.cpp")))
        for document, text in DOCUMENTS.items():
            # In words: `--language` of the host program, the host program's `--version`.
            named = re.findall(r"`(--[\w-]+)` of the host program|host program's `(--[\w-]+)`", " ".join(text.split()))
            for option in {name for pair in named for name in pair if name}:
                with self.subTest(document=document, option=option):
                    self.assertIn(option, known)


class InstallDocumentTest(unittest.TestCase):
    def setUp(self):
        self.code = texts_of(r"src/.*\.(h|cpp)")
        self.document = DOCUMENTS["install/README.md"]
        # Case does not count in paths.
        self.left = self.document.partition("stays behind:")[2].lower()

    def text_behind(self, beginning):
        """What the sources hold behind this, up to the literal's end, with single backslashes."""
        found = re.findall(beginning + r'"([^"\n]+)"', self.code)
        self.assertEqual(len(found), 1, beginning)
        return found[0].replace("\\\\", "\\").rstrip("\\")

    def test_every_file_that_is_written_is_told_of(self):
        names = set(re.findall(r'"(?:[^"\n]*\\)?([\w.]+\.(?:bmp|dat))"', self.code))
        self.assertEqual(len(names), 4)
        for name in names:
            self.assertIn(f"{name.lower()}`", self.left)

    def test_what_stays_behind(self):
        for place in (
            "C:\\Windows" + self.text_behind(r"kControlFontPath =\s+TEXT16\("),
            "%APPDATA%" + self.text_behind(r"\{applicationData, L"),
            "HKEY_CURRENT_USER\\" + self.text_behind(r"kLanguageKey\[\] = L"),
        ):
            self.assertIn(f"| `{place.lower()}` |", self.left)
        self.assertIn(self.text_behind(r"kPaperPrefix\[\] = TEXT16\(").lower(), self.left)

    def test_folders(self):
        font = self.text_behind(r"kControlFontPath =\s+TEXT16\(").rpartition("\\")[0]
        made = re.search(r"^if not exist (\S+) mkdir (\S+)$", self.document, re.MULTILINE).groups()
        self.assertEqual([path.lower() for path in made], [f"c:\\windows{font}"] * 2)
        driver = self.text_behind(r"Is64BitSystem\(\) \? L")
        for name in ("install/README.md", "README.md", "docs/language-files.md"):
            self.assertIn(f"`c:\\windows{driver}`", DOCUMENTS[name].lower())


class ArchitectureDocumentTest(unittest.TestCase):
    def test_includes(self):
        line = re.search(r"^intrface ──> .*$", DOCUMENTS["docs/architecture.md"], re.MULTILINE)[0]
        steps = [step.split(", ") for step in line.split(" ──> ")]
        place = {layer: at for at, step in enumerate(steps) for layer in step}
        self.assertEqual(set(place), set(check_sources.BELOW))
        for layer, below in check_sources.BELOW.items():
            for other in below:
                with self.subTest(layer=layer, includes=other):
                    each_other = {layer, other} == {"language", "intrface/win"}
                    if not (each_other and place[layer] == place[other]):
                        self.assertLess(place[layer], place[other], "does not point to the right")

    def test_rooms(self):
        block = DOCUMENTS["docs/architecture.md"].split("```")[1]
        rooms = re.findall(r"^  (\w+(?:/win)?)/? ", block, re.MULTILINE)
        self.assertEqual(set(rooms), set(check_sources.BELOW))
        scripts = re.search(r"^scripts/ +(.*?)\Z", block, re.MULTILINE | re.DOTALL)[1]
        files = {os.path.basename(name) for name in FILES if re.fullmatch(r"scripts/[\w-]+", name)}
        self.assertEqual(set(re.findall(r"[\w-]+", scripts)), files)


class GalleryTest(unittest.TestCase):
    LANGUAGES = ("ENG", "CHN", "CHF")

    def setUp(self):
        self.gallery = DOCUMENTS["docs/gallery/README.md"]
        self.pages = re.findall(r', L"([\w-]+)"\},', source("host/plugin_pages.cpp"))
        self.dialogs = re.findall(r'L"([\w-]+)\.bmp"', source("host/pictures.cpp"))
        self.assertTrue(self.pages and self.dialogs)

    @staticmethod
    def linked(text, language, base=""):
        """The pictures of a language that a document shows, without their folders."""
        return re.findall(rf"!\[[^]]+\]\({base}{language}/(?:printer/)?([\w-]+)\.png\)", text)

    def lacking(self, shown):
        """Pages and dialogs without a picture. A page's may tell more: water-mark-image."""
        of_pages = [name for name in shown if name not in self.dialogs]
        return [page for page in self.pages if not any(f"{name}-".startswith(f"{page}-") for name in of_pages)] + [
            dialog for dialog in self.dialogs if dialog not in shown
        ]

    def test_every_page_and_dialog_in_each_language(self):
        self.assertEqual(self.lacking(self.linked(self.gallery, "ENG")), [])
        for language in self.LANGUAGES[1:]:
            lacking = self.lacking(self.linked(self.gallery, language))
            self.assertEqual([name for name in lacking if not name.startswith("control-font-")], [], language)

    def test_a_row_has_each_language(self):
        for heading in ("Printing preferences", "Printer properties"):
            for title, *cells in tables(self.gallery)[heading]:
                with self.subTest(title=title):
                    path = re.fullmatch(r"!\[.*\]\(ENG/(.*)\)", cells[0])[1]
                    pictures = [f"![{title}]({language}/{path})" for language in self.LANGUAGES]
                    same = [pictures[0]] + ["as in English"] * 2
                    self.assertIn(cells, [pictures] if "control-font" not in path else [same])

    def test_every_picture_has_its_row(self):
        files = [name for name in FILES if re.fullmatch(r"docs/gallery/.*\.png", name)]
        self.assertEqual(files, sorted(f"docs/gallery/{name}" for name in re.findall(r"\]\((.*?)\)", self.gallery)))

    def test_readme_shows_the_english_ones(self):
        shown = self.linked(DOCUMENTS["README.md"], "ENG", "docs/gallery/")
        # Of the four moments' dialogs, which are alike, one.
        lacking = [name for name in self.lacking(shown) if not name.startswith("operation-")]
        self.assertEqual(lacking, [])
        self.assertIn("operation-start-of-document", shown)


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
