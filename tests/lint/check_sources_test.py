#!/usr/bin/env python3
"""Tests of check_sources.py: a small clean tree passes, and every planted fault is found by its check."""

import os
import subprocess
import sys
import tempfile
import unittest

CHECKER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "check_sources.py")

# A caption may hold a word that stands nowhere else.
CAPTION = "Sp" "ecification of a till"

CLEAN = {
    ".clang-format": "BasedOnStyle: Google\nSortIncludes: Never\n",
    ".gitignore": "/ignored/\n",
    "cmake/sources.cmake": (
        "# set(PORTABLE_SOURCES src/base/ghost.cpp)\n"
        "set(PORTABLE_SOURCES\n  src/base/text.cpp\n  src/devmode/record.cpp\n)\n"
        "set(WIN32_SOURCES\n  src/devpages/font.cpp\n  src/docpages/page.cpp\n  src/intrface/dll.cpp\n  src/intrface/win/shell.cpp\n"
        "  src/language/lookup.cpp\n)\n"
    ),
    "language/ENG.res": f'[A]\nB="{CAPTION}"\n',
    "tests/lint/language_keys.txt": f"A\tB\t50\t{CAPTION}\n",
    "src/base/text.h": "#include <string>\n",
    "src/base/text.cpp": '#include "base/text.h"\n// #include <windows.h>\n/*\n#include <windows.h>\n*/\n',
    "src/devmode/record.h": '#include "base/text.h"\n',
    "src/devmode/record.cpp": '#include "devmode/record.h"\n\n#include <algorithm>\n',
    "src/devpages/font.cpp": "#include <vector>\n",
    "src/docpages/page.h": '#include "intrface/win/shell.h"\n',
    "src/docpages/page.cpp": '#include "docpages/page.h"\n#include "resources/resource.h"\n',
    "src/intrface/dll.cpp": '#include "docpages/page.h"\n',
    "src/intrface/print_oem.h": "#include <windows.h>\n",
    "src/intrface/win/shell.h": '#include "intrface/print_oem.h"\n',
    "src/intrface/win/shell.cpp": '#include "intrface/win/shell.h"\n',
    "src/language/lookup.cpp": '#include "intrface/win/shell.h"\n',
    "src/resources/resource.h": "#define IDC_OK 1\n",
    "tests/CMakeLists.txt": "add_executable(bitmap_tests\n  plugin/bitmap_test.cpp\n  ../src/base/text.cpp)\n",
    "tests/plugin/bitmap_test.cpp": "",
    "tests/unit/CMakeLists.txt": "add_executable(unit_tests text_test.cpp) # lost_test.cpp\n",
    "tests/unit/text_test.cpp": "",
    "ignored/notes.txt": "TO" + "DO\n",
    "receipt/package-lock.json": '"url": "https://git' + 'hub.com/somebody"\n',
}


class CheckSourcesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = folder.name
        for name, text in CLEAN.items():
            self.write(name, text)
        subprocess.run(["git", "init", "-q", self.root], check=True)

    def write(self, name, text, encoding="utf-8"):
        path = os.path.join(self.root, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding=encoding, newline="\n") as file:
            file.write(text)

    def append(self, name, text):
        self.write(name, CLEAN[name] + text)

    def run_checker(self, **options):
        return subprocess.run(
            [sys.executable, CHECKER, "--root", self.root], capture_output=True, text=True, check=False, **options
        )

    def expect(self, *findings, checks=1):
        """Exactly these findings, and so many failed checks."""
        run = self.run_checker()
        lines = run.stdout.splitlines()
        self.assertEqual(lines[:-1], list(findings), run.stderr)
        self.assertEqual(lines[-1], f"{6 - checks} passed, {checks} failed")
        self.assertEqual(run.returncode, 1)

    def test_clean_tree_passes(self):
        run = self.run_checker()
        self.assertEqual((run.stdout, run.returncode), ("6 passed, 0 failed\n", 0), run.stderr)

    def test_windows_header_in_a_portable_file(self):
        for header in ("windows.h", "Windows.h", "commctrl.h", "prsht.h", "winspool.h", "compstui.h", "shlobj.h"):
            self.append("src/devmode/record.cpp", f"#include <{header}>\n")
            self.expect(f"check_portable_files: src/devmode/record.cpp:4: <{header}> is not a standard header")

    def test_vector_instructions_stand_in_their_own_header(self):
        self.write("src/printer/pixel_lanes.h", "#include <emmintrin.h>\n")
        self.append("src/devmode/record.cpp", '#include "printer/pixel_lanes.h"\n')
        self.assertNotIn("emmintrin.h", self.run_checker().stdout)
        self.append("src/devmode/record.cpp", "#include <emmintrin.h>\n")
        self.assertIn("src/devmode/record.cpp:4: <emmintrin.h> is not a standard header", self.run_checker().stdout)

    def test_windows_header_reached_through_headers(self):
        self.append("src/base/text.h", '#include "handles.h"\n')
        self.write("src/base/handles.h", "#if defined(_WIN32)\n#include <windows.h>\n#endif\n")
        self.expect(
            "check_portable_files: src/base/handles.h:2: <windows.h> is not a standard header"
            " (reached from src/devmode/record.cpp)"
        )

    def test_portable_include_that_cannot_be_followed(self):
        self.append("src/devmode/record.cpp", "#include SYSTEM_HEADER\n")
        self.expect("check_portable_files: src/devmode/record.cpp:4: portable code spells its includes out")
        self.append("src/devmode/record.h", '#include "windows.h"\n')
        self.append("src/devmode/record.cpp", "")
        self.expect(
            'check_portable_files: src/devmode/record.h:2: "windows.h" is not a header of ours'
            " (reached from src/devmode/record.cpp)",
            'check_layers: src/devmode/record.h:2: "windows.h" does not exist below src',
            checks=2,
        )

    def test_layers(self):
        cases = (
            ("src/base/text.h", "devmode/record.h", "base"),
            ("src/base/text.h", "resources/resource.h", "base"),
            ("src/language/lookup.cpp", "devmode/record.h", "language"),
            ("src/language/lookup.cpp", "docpages/page.h", "language"),
            ("src/intrface/win/shell.cpp", "docpages/page.h", "intrface/win"),
            ("src/intrface/print_oem.h", "docpages/page.h", "intrface/win"),
            ("src/docpages/page.cpp", "intrface/dll.h", "docpages"),
            ("src/devpages/font.cpp", "../docpages/page.h", "devpages"),
        )
        for name, header, layer in cases:
            with self.subTest(name=name, header=header):
                self.setUp()
                target = os.path.normpath("src/docpages/" + header) if header.startswith("..") else "src/" + header
                if target not in CLEAN:
                    self.write(target, "")
                self.append(name, f'#include "{header}"\n')
                line = CLEAN[name].count("\n") + 1
                self.expect(f"check_layers: {name}:{line}: {layer} may not include {target}")

    def test_file_outside_every_layer(self):
        self.write("src/misc/odd.h", "")
        self.expect("check_layers: src/misc/odd.h: lies in no known layer")

    def test_forbidden_words(self):
        for word in (
            "Specific" + "ation",
            "the sp" + "ec says",
            "sha" + "red/sp" + "ec",
            "Pa" + "rt 4.1",
            "Pa" + "rts 2.2",
            "TO" + "DO",
            "FIX" + "ME",
            "XX" + "X",
            "HA" + "CK",
            "/wo" + "rk/main",
            "/ro" + "ot/x",
            "see ../sha" + "red/notes",
            "iss" + "ue 12",
            "Iss" + "ues #3 and 4",
            "https://registry.npm" + "js.org/x",
            "deb.deb" + "ian.org",
            "https://git" + "hub.com/somebody",
            "py" + "pi.org",
            "proxy.go" + "lang.org",
        ):
            with self.subTest(word=word):
                self.write("docs/notes.md", f"first\n{word}\n")
                run = self.run_checker()
                self.assertIn("check_words: docs/notes.md:2: ", run.stdout)
                self.assertEqual(run.stdout.splitlines()[-1], "5 passed, 1 failed")
                self.assertEqual(run.returncode, 1)

    def test_allowed_words(self):
        self.write(
            "docs/notes.md",
            "Part 4, 1.2 parts; inspect __declspec(x); homework/x; mktemp a." + 6 * "X" + "\n"
            "shared/text; issues of 2026, an issue, 2 issues; packages of Debian and npm\n",
        )
        self.assertEqual(self.run_checker().stdout, "6 passed, 0 failed\n")

    def test_forbidden_words_in_utf16_and_in_tracked_files(self):
        self.write("language/ENG.res", "\ufeff[A]\nB=TO" + "DO\n", encoding="utf-16-le")
        self.expect('check_words: language/ENG.res:2: "TO' + 'DO"')
        # Tracked files count even where they are ignored.
        self.write("language/ENG.res", "")
        subprocess.run(["git", "-C", self.root, "add", "-f", "ignored/notes.txt"], check=True)
        self.expect('check_words: ignored/notes.txt:1: "TO' + 'DO"')

    def test_source_missing_from_the_list(self):
        self.write("src/printer/job.cpp", "")
        self.expect("check_source_list: src/printer/job.cpp: is not in cmake/sources.cmake")

    def test_listed_source_that_is_missing(self):
        os.remove(os.path.join(self.root, "src/language/lookup.cpp"))
        self.expect("check_source_list: src/language/lookup.cpp: is listed but does not exist")

    def test_source_listed_twice(self):
        text = CLEAN["cmake/sources.cmake"].replace("WIN32_SOURCES\n", "WIN32_SOURCES\n  src/base/text.cpp\n")
        self.write("cmake/sources.cmake", text)
        self.expect("check_source_list: src/base/text.cpp: is listed twice")

    def test_test_that_is_in_no_list(self):
        # A comment lists nothing, nor does the list of another folder.
        for name in ("tests/unit/lost_test.cpp", "tests/plugin/text_test.cpp", "tests/unit/bitmap_test.cpp"):
            with self.subTest(name=name):
                self.setUp()
                self.write(name, "")
                folder = os.path.dirname(name)
                self.expect(
                    f"check_test_list: {name}: is in neither {folder}/CMakeLists.txt nor tests/CMakeLists.txt"
                )

    def test_tree_without_tests(self):
        for name in ("tests/plugin/bitmap_test.cpp", "tests/unit/text_test.cpp"):
            os.remove(os.path.join(self.root, name))
        self.expect("check_test_list: tests: holds no tests")

    def test_format(self):
        for name in ("src/devmode/record.h", "host/main.cpp", "tests/unit/text_test.cpp", "bench/till_bench.cpp"):
            with self.subTest(name=name):
                self.setUp()
                self.write(name, "int   a ;\n")
                self.expect(f"check_format: {name}:1: is not formatted")

    def test_missing_clang_format_is_a_failure(self):
        tools = tempfile.TemporaryDirectory()
        self.addCleanup(tools.cleanup)
        git = subprocess.run(["which", "git"], capture_output=True, text=True, check=True).stdout.strip()
        os.symlink(git, os.path.join(tools.name, "git"))
        run = self.run_checker(env={**os.environ, "PATH": tools.name})
        self.assertEqual(
            run.stdout,
            "check_format: clang-format is not installed: the format cannot be checked\n5 passed, 1 failed\n",
        )
        self.assertEqual(run.returncode, 1)

    def test_empty_lists_do_not_pass(self):
        self.write("cmake/sources.cmake", "")
        run = self.run_checker()
        self.assertIn("check_portable_files: cmake/sources.cmake: names no portable sources", run.stdout)
        self.assertEqual(run.returncode, 1)


if __name__ == "__main__":
    unittest.main()
