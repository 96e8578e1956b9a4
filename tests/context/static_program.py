"""Links a program to the static library as a user without the project's build does, and looks into
the error log that it writes.

usage: static_program.py SOURCE LIBRARY COMPILER [ARGUMENT ...]
"""

import os
import pathlib
import subprocess
import sys
import tempfile

source, library, *compiler = sys.argv[1:]
with tempfile.TemporaryDirectory() as name:
    folder = pathlib.Path(name)
    program = folder / "program"
    subprocess.run([*compiler, source, library, "-lz", "-lsqlite3", "-o", program], check=True)
    registry = {"KPX_USER_REGISTRY": folder / "user", "KPX_MACHINE_REGISTRY": folder / "machine"}
    subprocess.run([program, folder], env={**os.environ, **registry}, check=True)
    log = folder / "Error.log"
    text = log.read_text(encoding="utf-8") if log.exists() else ""
    if text.count("Fehler: 56922 ") != 1:
        sys.exit(f"the error log does not hold the report:\n{text}")
