"""Checks that every function that the library exports is guarded or lets exceptions pass on purpose.

usage: check_guards.py NM LIBRARY SOURCE_FOLDER GENERATED_FOLDER TEST LIST

Taken from the library's symbols, so that none is forgotten. Left out are functions that are
noexcept, which the compiler sees to, and what other modules cannot call. Each of the rest has to be
called without memory by TEST, or to stand in LIST with the reason why not. Accessors and ResetPos
of settings classes are called by that test through the catalogue.
"""

import fnmatch
import os
import pathlib
import subprocess
import sys
import tempfile

from exports import declared, name_of, public_headers, settings_classes, symbols


def called_by(test):
    """The names of the functions that the test program calls without memory."""
    with tempfile.TemporaryDirectory() as folder:
        names = pathlib.Path(folder, "called")
        subprocess.run([test, "--gtest_filter=Exports.ReportFailuresAndLetNoneOut"], check=True,
                       env={**os.environ, "KPX_CALLED": str(names)}, stdout=subprocess.DEVNULL)
        return set(names.read_text(encoding="utf-8").split())


nm, library, source, generated, test, purposes = sys.argv[1:]
facts = {}
for header in public_headers(source):
    for name, is_exempt in declared(header).items():
        facts[name] = facts.get(name, True) and is_exempt
settings = settings_classes(generated)

called = called_by(test)
patterns = {}
for number, line in enumerate(pathlib.Path(purposes).read_text(encoding="utf-8").splitlines(), 1):
    if line.strip() and not line.startswith("#"):
        patterns[line.split()[0]] = number

problems = []
for name in sorted(set(filter(None, map(name_of, symbols(nm, library))))):
    owner, _, function = name.rpartition("::")
    if name.startswith("detail::") or "~" in name or function == owner.rsplit("::")[-1]:
        continue
    if owner in settings or facts.get(name) or facts.get(owner) or name in called:
        continue
    matching = [pattern for pattern in patterns if fnmatch.fnmatchcase(name, pattern)]
    if not matching:
        problems.append(f"{name} is exported, but neither called in ExportsTest.cpp nor listed")
    for pattern in matching:
        patterns[pattern] = None
problems += [f"{purposes}:{number}: {pattern} matches nothing that is exported"
             for pattern, number in patterns.items() if number]
if problems:
    sys.exit("\n".join(problems))
