#!/usr/bin/env python3
"""Builds the DLL a second time and compares it, byte for byte, with the first.

    same_build.py BUILD_FOLDER

Links it anew from the objects of the first build, in another folder. With KVMR72_SAME_BUILD=1 in the environment,
compiles a copy of the sources that lies elsewhere, which takes about as long as the first build.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

PROJECT = pathlib.Path(__file__).resolve().parents[2]
DLL = pathlib.Path("bin/KVMR72UI.dll")


def setting(build, name):
    """What the first build was configured with."""
    for line in (build / "CMakeCache.txt").read_text().splitlines():
        key, _, value = line.partition("=")
        if key.partition(":")[0] == name:
            return value
    return ""


def link_again(build, folder):
    commands = subprocess.run(["ninja", "-C", str(build), "-t", "commands", str(DLL)], check=True, capture_output=True,
                              text=True).stdout.splitlines()
    second = folder / DLL.name
    link = commands[-1].replace(f"-o {DLL}", f"-o {second}")
    if link == commands[-1]:
        sys.exit(f"{build}: the last command is not the one that links {DLL}")
    # The import library is made beside it.
    words = [f"-Wl,--out-implib,{folder}/KVMR72UI.dll.a" if word.startswith("-Wl,--out-implib,") else word
             for word in link.split(" ")]
    subprocess.run(" ".join(words), shell=True, check=True, cwd=build)
    return second


def compile_again(build, folder):
    copy = folder / "sources"
    for part in ("cmake", "src"):
        shutil.copytree(PROJECT / part, copy / part)
    shutil.copy(PROJECT / "CMakeLists.txt", copy)
    again = folder / "build"
    subprocess.run(["cmake", "-S", copy, "-B", again, "-G", "Ninja", "-DKVMR72_HOST=OFF", "-DKVMR72_TESTS=OFF",
                    f"-DCMAKE_TOOLCHAIN_FILE={copy}/cmake/mingw-w64.cmake",
                    f"-DCMAKE_BUILD_TYPE={setting(build, 'CMAKE_BUILD_TYPE')}"], check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", again, "--target", "KVMR72UI", "-j2"], check=True, stdout=subprocess.DEVNULL)
    return again / DLL


def main(build):
    way = compile_again if os.environ.get("KVMR72_SAME_BUILD") == "1" else link_again
    with tempfile.TemporaryDirectory() as folder:
        first = (build / DLL).read_bytes()
        second = way(build.resolve(), pathlib.Path(folder)).read_bytes()
    if first == second:
        return 0
    if len(first) != len(second):
        print(f"{DLL}: {len(first)} bytes, the second time {len(second)}", file=sys.stderr)
    differing = [at for at, pair in enumerate(zip(first, second)) if pair[0] != pair[1]]
    if differing:
        print(f"{DLL}: {len(differing)} bytes differ, the first at {differing[0]:#x}", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
