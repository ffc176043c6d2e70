#!/usr/bin/env python3
"""Checks what compilers do not: layers, lists and words of the source tree.

Usage: check_sources.py [--root FOLDER]

Prints a line for each finding and ends with "N passed, N failed", counted in checks. Fails when a check does.
"""

import argparse
import os
import re
import shutil
import subprocess
import sys

STANDARD_HEADERS = set(
    """
    algorithm any array atomic barrier bit bitset cassert ccomplex cctype cerrno cfenv cfloat charconv chrono cinttypes
    climits clocale cmath compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint
    cstdio cstdlib cstring ctgmath ctime cuchar cwchar cwctype deque exception execution filesystem format forward_list
    fstream functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map
    memory memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator
    semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string string_view
    strstream syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility
    valarray variant vector version
    """.split()
)
# Not standard, yet the same with every compiler: the vector instructions that each x86-64 has, in the one header that
# wraps them.
PROCESSOR_HEADERS = {("src/printer/pixel_lanes.h", "emmintrin.h")}

# What each layer may include. The host's declarations and the wrappers around the system lie below the pages although
# their folder is the top's.
SYSTEM_LAYER = "intrface/win"
SYSTEM_FILES = {"intrface/print_oem.h"}
PAGES = {"docpages", "devpages"}
BELOW = {
    "base": set(),
    "devmode": {"base"},
    "printer": {"base", "devmode"},
    "language": {"base", SYSTEM_LAYER, "resources"},
    SYSTEM_LAYER: {"base", "devmode", "language", "printer", "resources"},
    # The document sheet shows the printer side's Version page and relabels open printer sheets.
    "docpages": {"base", "devmode", "devpages", "language", "printer", SYSTEM_LAYER, "resources"},
    "devpages": {"base", "devmode", "language", "printer", SYSTEM_LAYER, "resources"},
    "intrface": {"base", "devmode", "language", "printer", SYSTEM_LAYER, "resources"} | PAGES,
    "resources": set(),
}

# Each with a letter in brackets, so that none finds itself here.
FORBIDDEN = [
    re.compile(pattern)
    for pattern in (
        r"(?i)\b[s]pec(ification)?s?\b",
        r"\b[P]arts? [1-6]\.[0-9]",
        r"\b(T[O]DO|F[I]XME|X[X]X|H[A]CK)\b",
        r"(?<![\w.$}])/(?:home|root|work)/",
        r"\.\./[s]hared\b",
        r"(?i)\b[i]ssues?:? (?:no\.? ?)?#?[0-9]",
        # Where packages come from is the business of the machine that installs them.
        r"(?i)\b(?:n[p]mjs|deb\.d[e]bian|pypi|crates)\.(?:org|io)\b|\bg[i]thub\.com\b|\bproxy\.g[o]lang\b",
    )
]
# Written by npm, with addresses of those whose packages are installed.
WORDS_EXEMPT = {"receipt/package-lock.json"}
# Its last column has the captions that the user reads; they are fixed word for word.
CAPTIONS = "tests/lint/language_keys.txt"

FORMATTED_FOLDERS = ("src", "host", "tests", "bench")
SKIPPED_FOLDERS = {".git", "build", "out", "node_modules"}

INCLUDE = re.compile(r"^[ \t]*#[ \t]*(?:include|include_next|import)\b[ \t]*(.*)$", re.MULTILINE)
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)


class Tree:
    """The files of a source tree, named relative to its root with slashes."""

    def __init__(self, root):
        self.root = os.path.abspath(root)

    def path(self, name):
        return os.path.join(self.root, name)

    def exists(self, name):
        return os.path.isfile(self.path(name))

    def read(self, name):
        """The file's text, or None when it holds none."""
        with open(self.path(name), "rb") as file:
            data = file.read()
        try:
            text = data.decode("utf-16" if data[:2] in (b"\xff\xfe", b"\xfe\xff") else "utf-8-sig")
        except UnicodeDecodeError:
            return None
        return None if "\0" in text else text

    def walk(self, folder="."):
        names = []
        for path, folders, files in os.walk(self.path(folder)):
            folders[:] = sorted(set(folders) - SKIPPED_FOLDERS)
            for file in sorted(files):
                names.append(os.path.relpath(os.path.join(path, file), self.root).replace(os.sep, "/"))
        return names

    def project_files(self):
        """Tracked files and untracked ones that are not ignored; outside a repository, all but build folders."""
        git = subprocess.run(
            ["git", "-C", self.root, "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
            capture_output=True,
            check=False,
        )
        if git.returncode != 0:
            return self.walk()
        names = {os.fsdecode(name) for name in git.stdout.split(b"\0") if name}
        return sorted(name for name in names if self.exists(name))

    def listed_sources(self, variable):
        text = re.sub(r"#[^\n]*", "", self.read("cmake/sources.cmake"))
        match = re.search(r"set\(\s*" + variable + r"\b([^)]*)\)", text)
        return match.group(1).split() if match else []

    def includes(self, name):
        """(line, target, is_quoted) of each include; the target is None where it is not spelled out."""
        text = COMMENT.sub(lambda comment: re.sub(r"[^\n]", " ", comment.group()), self.read(name) or "")
        found = []
        for match in INCLUDE.finditer(text):
            line = text.count("\n", 0, match.start(1)) + 1
            target = re.match(r'([<"])([^>"]+)[>"]', match.group(1))
            found.append((line, target.group(2), target.group(1) == '"') if target else (line, None, False))
        return found

    def resolve(self, name, target):
        """The file below src/ that a quoted include in `name` means, or None."""
        for folder in (os.path.dirname(name), "src"):
            candidate = os.path.normpath(os.path.join(folder, target)).replace(os.sep, "/")
            if candidate.startswith("src/") and self.exists(candidate):
                return candidate
        return None


def check_portable_files(tree):
    """Portable files reach standard headers and our own portable headers only."""
    findings = []
    sources = tree.listed_sources("PORTABLE_SOURCES")
    if not sources:
        return ["cmake/sources.cmake: names no portable sources"]
    reached_from = {}
    pending = []
    for source in sources:
        if tree.exists(source):
            reached_from[source] = source
            pending.append(source)
        else:
            findings.append(f"{source}: is listed as portable but does not exist")
    while pending:
        name = pending.pop()
        chain = "" if reached_from[name] == name else f" (reached from {reached_from[name]})"
        for line, target, is_quoted in tree.includes(name):
            if target is None:
                findings.append(f"{name}:{line}: portable code spells its includes out{chain}")
            elif target in STANDARD_HEADERS or (name, target) in PROCESSOR_HEADERS:
                continue
            elif not is_quoted:
                findings.append(f"{name}:{line}: <{target}> is not a standard header{chain}")
            else:
                header = tree.resolve(name, target)
                if header is None:
                    findings.append(f'{name}:{line}: "{target}" is not a header of ours{chain}')
                elif header not in reached_from:
                    reached_from[header] = reached_from[name]
                    pending.append(header)
    return findings


def layer_of(name):
    """The layer of a file below src/, or None."""
    inside = name[len("src/") :]
    if inside in SYSTEM_FILES or inside.startswith(SYSTEM_LAYER + "/"):
        return SYSTEM_LAYER
    folder = inside.split("/")[0]
    return folder if "/" in inside and folder in BELOW else None


def check_layers(tree):
    """Includes point down the layers."""
    findings = []
    names = [name for name in tree.walk("src") if name.endswith((".h", ".cpp"))]
    if not names:
        return ["src: holds no sources"]
    for name in names:
        layer = layer_of(name)
        if layer is None:
            findings.append(f"{name}: lies in no known layer")
            continue
        for line, target, is_quoted in tree.includes(name):
            header = tree.resolve(name, target) if is_quoted else None
            if header is None:
                if is_quoted:
                    findings.append(f'{name}:{line}: "{target}" does not exist below src')
                continue
            below = layer_of(header)
            if below != layer and below not in BELOW[layer]:
                findings.append(f"{name}:{line}: {layer} may not include {header}")
    return findings


def check_words(tree):
    """No file holds words that say nothing to a reader of this project alone."""
    findings = []
    rows = [line.split("\t") for line in (tree.read(CAPTIONS) or "").splitlines()]
    captions = [row[-1] for row in rows if any(pattern.search(row[-1]) for pattern in FORBIDDEN)]
    names = [name for name in tree.project_files() if name not in WORDS_EXEMPT]
    if not names:
        return ["no project files found"]
    for name in names:
        for pattern in FORBIDDEN:
            match = pattern.search("/" + name)
            if match:
                findings.append(f'{name}: "{match.group()}" in its name')
        text = tree.read(name) or ""
        for caption in captions:
            text = text.replace(caption, "")
        for number, line in enumerate(text.split("\n"), 1):
            for pattern in FORBIDDEN:
                match = pattern.search(line)
                if match:
                    findings.append(f'{name}:{number}: "{match.group()}"')
    return findings


def check_source_list(tree):
    """cmake/sources.cmake names each source once, and every one there is."""
    listed = tree.listed_sources("PORTABLE_SOURCES") + tree.listed_sources("WIN32_SOURCES")
    present = {name for name in tree.walk("src") if name.endswith(".cpp")}
    if not present:
        return ["src: holds no sources"]
    findings = [f"{name}: is not in cmake/sources.cmake" for name in sorted(present - set(listed))]
    findings += [f"{name}: is listed but does not exist" for name in sorted(set(listed) - present)]
    findings += [f"{name}: is listed twice" for name in sorted({name for name in listed if listed.count(name) > 1})]
    return findings


def check_test_list(tree):
    """Each test file is named in its folder's CMakeLists.txt, or in that of tests/: one that is not never runs."""
    findings = []
    lists = {}
    names = [name for name in tree.walk("tests") if name.endswith("_test.cpp")]
    if not names:
        return ["tests: holds no tests"]
    for name in names:
        named = set()
        folder = os.path.dirname(name)
        for place in {folder, "tests"}:
            if place not in lists:
                file = f"{place}/CMakeLists.txt"
                text = re.sub(r"#[^\n]*", "", tree.read(file) or "") if tree.exists(file) else ""
                lists[place] = {
                    os.path.normpath(os.path.join(place, word)).replace(os.sep, "/")
                    for word in re.findall(r"[^\s()\"]+_test\.cpp", text)
                }
            named |= lists[place]
        if name not in named:
            findings.append(f"{name}: is in neither {folder}/CMakeLists.txt nor tests/CMakeLists.txt")
    return findings


def check_format(tree):
    """Every source is as clang-format leaves it."""
    tool = shutil.which("clang-format-14") or shutil.which("clang-format")
    if tool is None:
        return ["clang-format is not installed: the format cannot be checked"]
    names = [name for folder in FORMATTED_FOLDERS for name in tree.walk(folder) if name.endswith((".h", ".cpp"))]
    if not names:
        return ["no sources found"]
    if not tree.exists(".clang-format"):
        return [".clang-format: does not exist"]
    run = subprocess.run(
        [tool, "--dry-run", "-Werror", *names], cwd=tree.root, capture_output=True, text=True, check=False
    )
    wrong = {}
    for match in re.finditer(r"^(.+?):(\d+):\d+: error: ", run.stderr, re.MULTILINE):
        wrong.setdefault(match.group(1), match.group(2))
    findings = [f"{name}:{line}: is not formatted" for name, line in wrong.items()]
    if run.returncode != 0 and not findings:
        findings = [f"clang-format: {line}" for line in run.stderr.splitlines()] or ["clang-format failed"]
    return findings


CHECKS = (check_portable_files, check_layers, check_words, check_source_list, check_test_list, check_format)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    here = os.path.dirname(os.path.abspath(__file__))
    parser.add_argument("--root", default=os.path.join(here, "..", ".."), help="the source tree (default: this one)")
    tree = Tree(parser.parse_args().root)
    failed = 0
    for check in CHECKS:
        findings = check(tree)
        for finding in findings:
            print(f"{check.__name__}: {finding}")
        failed += 1 if findings else 0
    print(f"{len(CHECKS) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
