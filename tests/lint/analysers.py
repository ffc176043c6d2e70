#!/usr/bin/env python3
"""Has static analysers read the plug-in and the host program: clang-tidy, cppcheck and, of the plug-in alone, g++.

    analysers.py NATIVE_BUILD WINDOWS_BUILD OUTPUT_FOLDER

The builds hold compile_commands.json. Incremental: ninja has them read what has changed, cppcheck sees to it by itself.
"""
import json
import pathlib
import shlex
import subprocess
import sys

from second_compiler import kept, system_headers

PROJECT = pathlib.Path(__file__).resolve().parents[2]
OURS = ("src/", "host/")

RULES = """\
rule tidy
  command = clang++ $arguments -M -MF $out.d -MT $out $in && clang-tidy-14 --quiet $checks $in -- $arguments 2>$out.log $
    || { cat $out.log; exit 1; } && touch $out
  depfile = $out.d
  deps = gcc
  description = clang-tidy $in
rule paths
  command = $compiler $arguments -O0 -fanalyzer -Werror -MD -MF $out.d -MT $out -S -o /dev/null $in && touch $out
  depfile = $out.d
  deps = gcc
  description = -fanalyzer $in
"""

# What a file is not asked for, and why.
LEFT_OUT = {
    # Has the runtime's own names, parameters and locks.
    "src/intrface/win/runtime_threads.cpp": ("cert-fio38-c", "misc-non-copyable-objects", "readability-non-const-parameter",
                                             "readability-inconsistent-declaration-parameter-name"),
}

CLANG = ["--target=x86_64-w64-windows-gnu", "-nostdinc++"]


def sources(build):
    """Our source files and what the compiler is told of each."""
    result = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        source = pathlib.Path(entry["file"])
        if source.suffix == ".cpp" and source.is_relative_to(PROJECT):
            name = source.relative_to(PROJECT).as_posix()
            if name.startswith(OURS):
                result.setdefault(name, kept(shlex.split(entry["command"])))
    return result


def escaped(arguments):
    return shlex.join(arguments).replace("$", "$$")


def plan(portable, windows):
    """Ninja's file: portable code is read as the native compilers see it, the rest as for Windows."""
    # The analyser of g++ 12 follows paths through C++ only roughly. With constructors and returned objects it takes for
    # uninitialised what is not, wherever the system's headers come between, as they do outside the portable code.
    windows_paths = ["-Wno-analyzer-use-of-uninitialized-value"]
    headers = [argument for folder in system_headers() for argument in ("-isystem", str(folder))]
    lines = [RULES]
    for name, arguments in portable.items():
        lines += [f"build {name}.tidy: tidy {PROJECT / name} | {PROJECT}/.clang-tidy",
                  f"  arguments = {escaped(arguments)}",
                  # Takes what a std::function keeps for lost. Nothing here is made with new, and the unit tests run
                  # under a sanitizer that counts.
                  "  checks = --checks=-clang-analyzer-cplusplus.NewDeleteLeaks",
                  f"build {name}.paths: paths {PROJECT / name}",
                  "  compiler = g++",
                  f"  arguments = {escaped(arguments)}"]
    for name, arguments in windows.items():
        lines += [f"build {name}.tidy: tidy {PROJECT / name} | {PROJECT}/.clang-tidy",
                  f"  arguments = {escaped(CLANG + headers + arguments)}"]
        if name in LEFT_OUT:
            lines.append("  checks = --checks=" + ",".join(f"-{check}" for check in LEFT_OUT[name]))
        if name.startswith("src/"):
            lines += [f"build {name}.paths: paths {PROJECT / name}",
                      "  compiler = x86_64-w64-mingw32-g++-posix",
                      f"  arguments = {escaped(arguments + windows_paths)}"]
    return "\n".join(lines) + "\n"


def cppcheck(output):
    """What cppcheck says of everything at once: it knows the platform's functions, and needs no headers of it."""
    seen = output / "cppcheck"
    seen.mkdir(exist_ok=True)
    return subprocess.run(
        ["cppcheck", "--enable=warning,performance,portability", "--inline-suppr", "--error-exitcode=1", "--quiet",
         "--std=c++20", "--language=c++", "--platform=win64", "--library=windows", f"--cppcheck-build-dir={seen}",
         "-D__MINGW32__", "-D_WIN32", "-D_WIN64", "-DUNICODE", "-Isrc", "-Ihost", *OURS], cwd=PROJECT).returncode


def main(native, windows, output):
    portable = sources(native)
    others = {name: arguments for name, arguments in sources(windows).items() if name not in portable}
    if not portable or not others:
        sys.exit(f"{native}, {windows}: no sources of ours in compile_commands.json")
    output.mkdir(parents=True, exist_ok=True)
    (output / "build.ninja").write_text(plan(portable, others))
    results = [subprocess.run(["ninja", "-k", "0", "-C", str(output)]).returncode, cppcheck(output)]
    return 1 if any(results) else 0


if __name__ == "__main__":
    sys.exit(main(*map(pathlib.Path, sys.argv[1:4])))
