#!/usr/bin/env python3
"""Compares the lists of packages with what the build files ask for: a machine that has a package
already hides that a list lacks it. Every package that a CMake file looks for must be in a list of a
verb that reads this file, and every row of provides.tsv must be asked for somewhere."""

import re
import sys
from pathlib import Path

root = Path(__file__).resolve().parents[2]
# The lists that are installed whenever the CMake files of a folder are read.
LISTS = {"": ["build"], "kpx": ["build"], "tools": ["build"], "examples": ["build"],
         "texts": ["build"], "cmake": ["build"], "tests": ["build", "test"],
         "bench": ["build", "bench"], "fuzz": ["build", "fuzz"]}
# What the cross build asks for is installed from other packages, in the list of its own.
ASKS = re.compile(r"\b(find_package|find_program|pkg_check_modules)\s*\(\s*(\w+)([^)]*)\)")


def read_list(name):
    return set((root / "tools/packages" / f"{name}.txt").read_text().split())


def provides():
    rows = {}
    for line in (root / "tools/packages/provides.tsv").read_text().splitlines():
        if line and not line.startswith("#"):
            kind, name, package = line.split()
            rows[kind, name] = package
    return rows


def asked(text):
    for command, first, rest in ASKS.findall(text):
        if command == "pkg_check_modules":
            for module in re.findall(r"[\w+.]+-[\w+.-]+", rest):
                yield "pkg_check", module
        elif command == "find_program":
            yield "find_program", rest.split()[0]
        else:
            yield "find_package", first


def main():
    rows = provides()
    used = set()
    faults = []
    files = [path for pattern in ("CMakeLists.txt", "*.cmake") for path in root.rglob(pattern)
             if "build" not in path.relative_to(root).parts]
    for path in sorted(files):
        place = path.relative_to(root)
        folder = place.parts[0] if len(place.parts) > 1 else ""
        installed = set().union(*(read_list(name) for name in LISTS[folder]))
        for ask in asked(path.read_text()):
            used.add(ask)
            package = rows.get(ask)
            if package is None:
                faults.append(f"{place}: {ask[1]} has no row in tools/packages/provides.tsv")
            elif package not in installed:
                faults.append(f"{place}: {ask[1]} needs {package}, which is not in "
                              f"{' or '.join(LISTS[folder])}.txt")
    faults += [f"tools/packages/provides.tsv: nothing asks for {name}"
               for _, name in sorted(set(rows) - used)]
    print("\n".join(faults) if faults else f"{len(used)} requests of {len(files)} files are covered")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
