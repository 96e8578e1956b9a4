#!/usr/bin/env python3
"""Fails when a program or DLL needs a library that Windows does not bring along itself:

    check_imports.py OBJDUMP FILE...
"""

import re
import subprocess
import sys

# What every supported Windows has in its system folder, which is searched before all others for
# these names.
SYSTEM = {"advapi32.dll", "bcrypt.dll", "comctl32.dll", "gdi32.dll", "kernel32.dll", "msvcrt.dll",
          "ole32.dll", "shell32.dll", "user32.dll"}


def imports(objdump, path):
    listing = subprocess.run([objdump, "-p", path], capture_output=True, text=True, check=True)
    return set(map(str.lower, re.findall(r"DLL Name: (\S+)", listing.stdout)))


def main():
    objdump, *files = sys.argv[1:]
    failures = 0
    for path in files:
        found = imports(objdump, path)
        for name in sorted(found - SYSTEM):
            print(f"{path}: needs {name}")
        failures += bool(found - SYSTEM) or not found
    return 1 if failures or not files else 0


if __name__ == "__main__":
    sys.exit(main())
