#!/usr/bin/env python3
"""Writes a table of texts of the size and with the ids of the suite's own: 8,337 lines for 8,215
ids, 79 of them more than once. The last text of an id says so."""

import sys
from pathlib import Path

ASSIGNMENTS, IDS, REPEATED = 8337, 8215, 79


def rows():
    ids = [i for i in range(1, 8301) if not 4295 <= i <= 4394 and i % 101] + [*range(9301, 9397)]
    ids = ids[:IDS - 1] + [9396]
    again = [ids[i * 100] for i in range(REPEATED)]
    repeats = (again * 2)[:ASSIGNMENTS - IDS]
    for i in repeats:
        yield i, f"Früherer Text {i}"
    for i in ids:
        yield i, f"Überprüfung der Maße {i}:\\n%s in %.3f m" if i % 13 == 0 else f"Text {i} für Höhe"


def main():
    lines = [f"{number}\t{text}\n" for number, text in rows()]
    assert len(lines) == ASSIGNMENTS
    Path(sys.argv[1]).write_text("".join(lines), encoding="utf-8")


if __name__ == "__main__":
    main()
