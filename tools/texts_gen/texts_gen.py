#!/usr/bin/env python3
"""Turns a table of texts (id, tab, text) into a C++ source with the texts as constant data.

A table that is not perfect gives no output: every problem is printed with its file and line.
"""

import argparse
import re
import sys
from pathlib import Path

ESCAPES = {"n": "\n", "r": "\r", "t": "\t", "\\": "\\"}


def unescape(text):
    """The text with its escapes resolved; ValueError for one that does not exist."""
    def replace(match):
        if match.group(1).startswith("u") and len(match.group(1)) == 5:
            return chr(int(match.group(1)[1:], 16))
        if match.group(1) not in ESCAPES:
            raise ValueError(f"unknown escape {match.group(0)!r}")
        return ESCAPES[match.group(1)]
    return re.sub(r"\\(u[0-9A-Fa-f]{4}|.?)", replace, text)


def read_line(line):
    """(id, text) of a line; ValueError says what is wrong with it."""
    number, tab, text = line.partition("\t")
    if not tab:
        raise ValueError("no tab between id and text")
    if not re.fullmatch(r"-?[0-9]+", number) or not -2**31 <= int(number) < 2**31:
        raise ValueError(f"{number!r} is no id of 32 bits")
    if not text:
        raise ValueError("no text")
    control = re.search(r"[\x00-\x1f]", text)
    if control:
        raise ValueError(f"control character {control.group(0)!r}; line break and tab are "
                         "written as \\n and \\t")
    return int(number), unescape(text)


def read_table(path):
    """(rows, problems). Blank lines and lines that begin with # do not count."""
    rows, problems = [], []
    try:
        content = path.read_bytes().decode("utf-8-sig")
    except (OSError, UnicodeDecodeError) as error:
        return [], [f"{path}: {error}"]
    for number, line in enumerate(content.split("\n"), 1):
        line = line.removesuffix("\r")
        if not line or line.startswith("#"):
            continue
        try:
            rows.append(read_line(line))
        except ValueError as problem:
            problems.append(f"{path}:{number}: {problem}")
    if not rows and not problems:
        problems.append(f"{path}: no texts")
    return rows, problems


def units(text):
    """UTF-16 units."""
    data = text.encode("utf-16-le", "surrogatepass")
    return [int.from_bytes(data[i:i + 2], "little") for i in range(0, len(data), 2)]


def lines_of(numbers):
    return "".join("    " + ", ".join(numbers[i:i + 16]) + ",\n"
                   for i in range(0, len(numbers), 16))


def cpp_source(rows):
    """One array of units and an index without pointers, which needs no work when the library is
    loaded, however many texts there are."""
    all_units, index = [], []
    for number, text in rows:
        of_text = units(text)
        # The smallest integer has no literal of its own.
        shown = str(number) if number != -2**31 else "-2147483647 - 1"
        index.append(f"    {{{shown}, {len(all_units)}, {len(of_text)}}},\n")
        all_units += of_text
    places = {number: place for place, (number, _) in enumerate(rows)}
    places = [str(places[number]) for number in sorted(places)]
    return ("// Generated from the table of texts; changes here are lost.\n"
            '#include "kpx/support/texts/internal/BuiltInTexts.h"\n\n'
            "namespace kpx::detail {\n\n"
            "const char16_t builtInUnits[] = {\n" + lines_of([str(unit) for unit in all_units]) +
            "};\n\nconst BuiltInText builtInTexts[] = {\n" + "".join(index) + "};\n\n"
            f"const std::size_t builtInTextCount = {len(index)};\n\n"
            "const std::uint32_t builtInPlaces[] = {\n" + lines_of(places) + "};\n\n"
            f"const std::size_t builtInIdCount = {len(places)};\n\n"
            "}  // namespace kpx::detail\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("table", type=Path)
    parser.add_argument("output", type=Path)
    arguments = parser.parse_args()
    rows, problems = read_table(arguments.table)
    for problem in problems:
        print(problem, file=sys.stderr)
    if problems:
        return 1
    arguments.output.parent.mkdir(parents=True, exist_ok=True)
    arguments.output.write_text(cpp_source(rows), encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
