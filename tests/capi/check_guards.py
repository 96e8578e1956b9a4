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
import re
import subprocess
import sys
import tempfile


def without_nested(text, opening, closing):
    """The text without what stands in brackets."""
    kept, depth = [], 0
    for unit in text:
        depth += unit == opening
        if depth == 0:
            kept.append(unit)
        depth -= unit == closing
    return "".join(kept)


def exported(nm, library):
    """The names of the functions, without parameters and the namespace."""
    output = subprocess.run([nm, "-DC", "--defined-only", library], check=True,
                            capture_output=True, text=True).stdout
    names = set()
    for line in output.splitlines():
        kind, symbol = line[17:].split(" ", 1)
        if kind not in "TW" or symbol.startswith(("vtable", "typeinfo", "VTT", "non-virtual")):
            continue
        symbol = re.sub(r"\[abi:\w+\]", "", symbol).replace("operator()", "operator_call")
        name = without_nested(without_nested(symbol, "<", ">"), "(", ")").removesuffix(" const")
        name = name.split("operator")[0].split(" ")[-1] + (
            "operator" + name.split("operator", 1)[1] if "operator" in name else "")
        if name.startswith("kpx::"):
            names.add(name.removeprefix("kpx::"))
        elif name.startswith("kpx_c_"):
            names.add(name)
    return names


def declared(header):
    """Of each function and class of a header whether all of its declarations are exempt."""
    text = re.sub(r"//[^\n]*", "", header.read_text(encoding="utf-8"))
    facts = {}
    owner, access = "", "public"
    lines = iter(text.splitlines())
    for line in lines:
        opened = re.match(r"(?:class|struct) (?:KPX_API )?(\w+)(?: final)?(?: :.*)? \{", line)
        if opened:
            owner = opened[1] + "::"
            access = "public" if line.startswith("struct") else "private"
        elif line == "};":
            owner, access = "", "public"
        elif re.match(r" (public|protected|private):", line):
            access = line.strip(" :")
        nested = re.match(r"  (?:class|struct) (\w+);", line)
        if nested and access == "private":
            facts[owner + nested[1]] = True
        found = re.match(r"(?:  )?(?:\S.*?[ &*])?(\w+)\(", line)
        if not found or line.startswith(("    ", "  return ")):
            continue
        declaration = line
        while not re.search(r"[;{}]\s*$", declaration):
            following = next(lines, None)
            if following is None:
                break
            declaration += following
        qualifiers = without_nested(declaration, "(", ")").rsplit(found[1], 1)[-1]
        is_exempt = "noexcept" in qualifiers or access == "private"
        name = owner + found[1]
        facts[name] = facts.get(name, True) and is_exempt
    return facts


def called_by(test):
    """The names of the functions that the test program calls without memory."""
    with tempfile.TemporaryDirectory() as folder:
        names = pathlib.Path(folder, "called")
        subprocess.run([test, "--gtest_filter=Exports.ReportFailuresAndLetNoneOut"], check=True,
                       env={**os.environ, "KPX_CALLED": str(names)}, stdout=subprocess.DEVNULL)
        return set(names.read_text(encoding="utf-8").split())


nm, library, source, generated, test, purposes = sys.argv[1:]
facts = {}
for header in sorted(pathlib.Path(source, "kpx").rglob("*.h")):
    if not {"internal", "posix", "windows"} & set(header.parts):
        for name, is_exempt in declared(header).items():
            facts[name] = facts.get(name, True) and is_exempt
settings = {header.stem for header in pathlib.Path(generated, "kpx", "settings").glob("*.h")}

called = called_by(test)
patterns = {}
for number, line in enumerate(pathlib.Path(purposes).read_text(encoding="utf-8").splitlines(), 1):
    if line.strip() and not line.startswith("#"):
        patterns[line.split()[0]] = number

problems = []
for name in sorted(exported(nm, library)):
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
