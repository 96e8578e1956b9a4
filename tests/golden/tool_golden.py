"""What kpx prints is the same, byte by byte, on every system: the answers of many verbs against
the golden file data/answers.txt.

    tool_golden.py KPX DATA      compares; where KPX_GOLDEN_WRITE names a folder, writes there
"""

import difflib
import os
import sys
import tempfile
import zlib
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tools"))
import runner  # noqa: E402: only found now

KPX, DATA = os.path.abspath(sys.argv[1]), Path(sys.argv[2])

# Longer answers stand in the golden file as their length and sum.
WHOLE = 2500

INPUT = {
    "bad.xml": "<?xml version=\"1.0\"?>\r\n<a b='ä'>\n<c>&unknown;<d></c>\n</a>".encode(),
    "wide.xml": "\ufeff<?xml version='1.0' encoding='UTF-16'?>\r\n<a>\r\n<b c=\"€\n\"/></a>"
    .encode("utf-16-le"),
    "timers.csv": "Timer name,Time (ms),# Calls\nHöhe, oft,617.512500,1234\nlang,7566.000000,12\n"
                  "läuft noch,0.000000,1,*currently running*\n\n".encode(),
    "Maß.ini": "[KPX]\r\nSYSTEM_PATH=D:\\data\r\n[KPX]\r\nohne\r\nMaß=ä\r\n".encode(),
    "lines.ini": b"[A]\na=1\nb=2\x1a\nc=3\r\n",
    "texts.tsv": "# title\tPrüfung\n541\tIn %s, %d\n614\tGröße\\n€\n".encode(),
    "one.reg": "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\A]\r\n\"ä\"=\"1\"\r\n"
    .encode("utf-16"),
    "two.reg": b"Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\A]\n\"b\"=dword:2a\n",
    "error.log": "Projekt: Aue    Job: Tag 1    Fehler: 42905     Datum / Zeit: 05.03.2021 / "
                 "08:03:04    User: Möller (PC, 1024 MB)\r\nkeine Zeile\n".encode(),
}

# Each line is a command. "< file" gives it an input, "> file" keeps its answer for later ones.
COMMANDS = """
config defaults CTripelPole > pole.xml
config defaults CFGGeneralSettings > general.xml
config show pole.xml
config show CFGSystemSettings --json
config get general.xml CA2T_Tol_XY --json
config set - HeightEcc 0.025 < pole.xml > changed.xml
config set general.xml CA2T_Tol_XY 0.0625
config diff pole.xml changed.xml
config diff changed.xml --json
config diff general.xml
config validate pole.xml
config validate bad.xml
config validate CFGGeneralSettings --json
config convert changed.xml --to json > pole.json
config convert pole.json --to xml
config convert changed.xml --to csv --bom
config convert CFGDescriptionSchema --to csv --separator ;
config convert changed.xml --to ini
config convert CFGGeneralSettings --to json
classes list
classes show CFGNASExport
classes export
xml check bad.xml
xml check bad.xml wide.xml --json
xml check - < bad.xml
xml format wide.xml
xml format pole.xml
timers show timers.csv
timers show timers.csv --json
timers trace timers.csv
ini list Maß.ini
ini list - --json < lines.ini
ini check Maß.ini lines.ini --json
ini set - KPX Länge 2€ < Maß.ini
ini get Maß.ini KPX Maß
texts build texts.tsv -
texts build texts.tsv texts.lng
texts dump texts.lng
texts dump texts.lng --json
texts check texts.tsv
texts diff texts.tsv texts.lng
registry diff one.reg two.reg
registry diff one.reg two.reg --json
nas codes
errors 42905 --json
log show error.log
log show error.log --user M*r --project *.ini
log show error.log --user M*r
log stats error.log --json
"""


def run(arguments, stdin, folder):
    # Python, wine and the file system agree on how the bytes of names are read.
    done = runner.run([KPX, *arguments], input=stdin, cwd=folder,
                      env={**os.environ, "LC_ALL": "C.UTF-8"})
    return done.returncode, done.stdout


def summed(data):
    return f"{len(data)} bytes, CRC-32 {zlib.crc32(data):08X}\n"


def shown(data):
    """Readable lines from which every byte can be told."""
    if len(data) > WHOLE:
        return [summed(data)]
    text = data.decode("utf-8", "surrogateescape")
    return [repr(line) + "\n" for line in text.splitlines(keepends=True)]


def answers():
    lines = []
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        for file, content in INPUT.items():
            (folder / file).write_bytes(content)
        for command in COMMANDS.split("\n"):
            words = command.split()
            if not words:
                continue
            stdin, keep = b"", None
            if ">" in words:
                keep = folder / words[-1]
                words = words[:-2]
            if "<" in words:
                stdin = (folder / words[-1]).read_bytes()
                words = words[:-2]
            code, out = run(words, stdin, folder)
            if keep:
                keep.write_bytes(out)
            lines += [f"$ kpx {command}\n", *shown(out), f"exit code {code}\n", "\n"]
        for file in sorted(folder.iterdir()):
            if file.name not in INPUT:
                lines.append(f"{file.name}: {summed(file.read_bytes())}")
    return lines


def main():
    lines = answers()
    if folder := os.environ.get("KPX_GOLDEN_WRITE"):
        (Path(folder) / "answers.txt").write_bytes("".join(lines).encode())
        return 0
    golden = (DATA / "answers.txt").read_bytes().decode().splitlines(keepends=True)
    different = list(difflib.unified_diff(golden, lines, "golden", "kpx", n=1))
    sys.stdout.reconfigure(encoding="utf-8")
    sys.stdout.writelines(different[:100])
    return 1 if different else 0


sys.exit(main())
