#!/usr/bin/env python3
"""Has clang read our Windows sources, for its warnings only.

    second_compiler.py BUILD_FOLDER OUTPUT_FOLDER [FOLDER...]

BUILD_FOLDER holds the compile_commands.json of the mingw-w64 build. Of the project's folders those that are named are
read, or all. Incremental: ninja has it read what has changed.
"""
import json
import pathlib
import shlex
import subprocess
import sys

OURS = ("src/", "host/", "bench/", "tests/")


def system_headers():
    """The C++ headers of the first compiler, which clang does not find by itself."""
    libgcc = subprocess.run(["x86_64-w64-mingw32-g++-posix", "-print-libgcc-file-name"],
                            check=True, capture_output=True, text=True).stdout.strip()
    headers = pathlib.Path(libgcc).parent / "include" / "c++"
    return [headers, headers / "x86_64-w64-mingw32", headers / "backward"]


def kept(arguments):
    """What clang must know of the first compiler's arguments: definitions, include folders, warnings."""
    result = []
    take_next = False
    for argument in arguments:
        if take_next or argument.startswith(("-D", "-I", "-W", "-std=")):
            result.append(argument)
            take_next = False
        elif argument == "-isystem":
            result.append(argument)
            take_next = True
    return result


def main(build, output, folders=OURS):
    project = pathlib.Path(__file__).resolve().parents[2]
    clang = ["clang++", "--target=x86_64-w64-windows-gnu", "-nostdinc++"]
    for folder in system_headers():
        clang += ["-isystem", str(folder)]
    lines = ["rule clang", "  command = $compile -MD -MF $out.d -MT $out -fsyntax-only $in && touch $out", "  depfile = $out.d",
             "  deps = gcc", "  description = clang $in", ""]
    objects = []
    for entry in json.loads((build / "compile_commands.json").read_text()):
        source = pathlib.Path(entry["file"])
        if source.suffix != ".cpp" or not source.is_relative_to(project):
            continue
        name = source.relative_to(project).as_posix()
        if not name.startswith(tuple(folders)):
            continue
        target = f"{name}.checked"
        if target in objects:
            continue
        objects.append(target)
        command = shlex.join(clang + kept(shlex.split(entry["command"])) + ["-Werror"]).replace("$", "$$")
        lines += [f"build {target}: clang {source}", f"  compile = {command}"]
    if not objects:
        sys.exit(f"{build}: no sources of ours in compile_commands.json")
    output.mkdir(parents=True, exist_ok=True)
    (output / "build.ninja").write_text("\n".join(lines) + "\n")
    return subprocess.run(["ninja", "-k", "0", "-C", str(output)]).returncode


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]),
                  [f"{folder.rstrip('/')}/" for folder in sys.argv[3:]] or OURS))
