"""Compares what the library exports with the list beside this script.

usage: check_exports.py [--write] NM|OBJDUMP LIBRARY SOURCE_FOLDER GENERATED_FOLDER

The list is the library's promise to modules that were built with it, so that nothing joins or leaves
it unawares. It has each function below the header that declares it, and each class of settings in
one line. Some lines begin with the only system that exports them: a DLL has no way to keep the
private functions of a class to itself that it exports as a whole. --write takes over what LIBRARY
exports, for a change that is meant.
"""

import pathlib
import re
import sys

from exports import declared, name_of, public_headers, settings_classes, symbols, written

LIST = pathlib.Path(__file__).with_name("exports.txt")
TABLE = re.compile(r"(?:vtable|VTT|typeinfo name|typeinfo) for (?:kpx::)?(\S+)|"
                   r"(?:non-)?virtual thunk to |guard variable for ")


def headers_of_names(source):
    """Which header declares a function, a class or a member."""
    places = {}
    for header in public_headers(source):
        place = header.relative_to(source).as_posix()
        for name in declared(header):
            places.setdefault(name, place)
        for name in re.findall(r"^(?:class|struct|enum class) (?:KPX_API )?(\w+)[^;]*$",
                               header.read_text(encoding="utf-8"), re.MULTILINE):
            places[name] = place
    return places


def lines_of(library_symbols, source, generated):
    places = headers_of_names(source)
    settings = settings_classes(generated)
    lines, problems = set(), []
    for symbol in library_symbols:
        if TABLE.match(symbol) and not TABLE.match(symbol)[1]:
            continue
        name = TABLE.match(symbol)[1] if TABLE.match(symbol) else name_of(symbol)
        name = name.removeprefix("detail::")
        owner = name.rpartition("::")[0]
        if name.startswith("operator"):  # it stands beside the class that it is for
            owner = re.findall(r"kpx::(\w+)", symbol)[-1]
        if name.startswith("kpx_c_"):
            lines.add(("kpx_c.h", symbol))
        elif name in settings or owner in settings:
            own = owner if owner in settings else name
            lines.add(("generated", "class " + own))
        elif TABLE.match(symbol) and name in places:
            lines.add((places[name], "class " + name))
        elif name in places or owner.split("::")[0] in places:
            lines.add((places.get(name) or places[owner.split("::")[0]], written(symbol)))
        else:
            problems.append(f"no header of the library declares what it exports: {symbol}")
    return lines, problems


def read_list():
    listed, header = {}, None
    for line in LIST.read_text(encoding="utf-8").splitlines() if LIST.exists() else ():
        if line.startswith("  "):
            system, only, symbol = line.strip().rpartition(" only: ")
            listed[header, symbol] = {system} if only else {"ELF", "DLL"}
        elif line and not line.startswith("#"):
            header = line
    return listed


def write_list(listed):
    text = "# What the shared library exports; see check_exports.py.\n"
    last = None
    for (header, symbol), systems in sorted(listed.items()):
        if header != last:
            text += f"\n{header}\n"
            last = header
        only = "" if len(systems) == 2 else f"{next(iter(systems))} only: "
        text += f"  {only}{symbol}\n"
    LIST.write_text(text, encoding="utf-8")


arguments = sys.argv[1:]
is_written = "--write" in arguments
tool, library, source, generated = [each for each in arguments if each != "--write"]
system = "DLL" if "objdump" in pathlib.Path(tool).name else "ELF"
exported, problems = lines_of(symbols(tool, library, False), source, generated)
listed = read_list()
if is_written:
    for line in listed.keys() | exported:
        systems = listed.setdefault(line, set())
        (systems.add if line in exported else systems.discard)(system)
    write_list({line: systems for line, systems in listed.items() if systems})
else:
    expected = {line for line, systems in listed.items() if system in systems}
    problems += [f"exported, but not listed: {header}: {symbol}"
                 for header, symbol in sorted(exported - expected)]
    problems += [f"listed, but not exported: {header}: {symbol}"
                 for header, symbol in sorted(expected - exported)]
if problems:
    sys.exit("\n".join(problems))
