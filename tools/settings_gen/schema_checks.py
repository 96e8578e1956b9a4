"""Checks of the settings schema that need no knowledge of how a class is read."""

import re
import unicodedata

# Error numbers of our own; those below belong to older modules. The next layers begin at 910001.
OLDER_NUMBERS = range(1, 900001)
RESET_NUMBERS = range(900001, 902001)
ACCESSOR_NUMBERS = range(902001, 909901)
SAMPLE_NUMBERS = range(909901, 910000)  # for schemas of tests; the project's own takes none

FIELD_TYPES = {"class": str, "about": str, "base": str, "name": str, "row": str, "settings": int,
               "reset_error": int, "columns": list, "reset_only": list, "parameters": list,
               "template": dict}

LOOKED_UP = re.compile(r"GetMLT\(([1-9][0-9]{0,8})\)")


def fault_of_accessor(accessor, prefix):
    """Why this is no name of a getter or setter, or nothing."""
    if not accessor.startswith(prefix):
        return f"it does not begin with '{prefix}'"
    if odd := re.search(r"[^A-Za-z0-9_]", accessor):
        return f"'{odd[0]}' is no letter from A to Z, digit or '_'"
    return "" if accessor != prefix else f"nothing follows '{prefix}'"


def fault_of_text(name, text):
    """What keeps a text from being stored and read as it stands, or nothing. Blanks around a
    caption are stored and shown like any other; around a key nobody would find it again."""
    if any(unicodedata.category(each) in ("Cc", "Zl", "Zp") for each in text):
        return "has a line break or control character"
    if name in ("key", "older_key") and text != text.strip():
        return "begins or ends with a blank"
    if name in ("caption", "group") and "getmlt" in text.lower() and not LOOKED_UP.fullmatch(text):
        return f"looks like a look-up but is none: '{text}'; it is written GetMLT(n)"
    return ""


def check_field_types(data, shown, lines, prefix, problems):
    """The fields of a class or template whose value has the wrong type; each is told."""
    wrong = []
    for name, value in data.items():
        kind = FIELD_TYPES.get(name, object)
        good = isinstance(value, kind) and not (kind is int and isinstance(value, bool))
        if kind is list or (name == "reset" and isinstance(value, list)):
            good = good and all(isinstance(each, str) for each in value)
        if not good:
            problems.add(shown, lines.of(prefix + name),
                         f"'{name}' has a value of the wrong type")
            wrong.append(name)
    return wrong


def check_across_classes(classes, project, problems):
    """Error numbers identify one operation; names and elements one class. A clash is told at both
    places, because either may be the newer one."""
    numbers, names, elements = {}, {}, {}

    def once(table, what, value, path, line):
        if value in table:
            first_path, first_line = table[value]
            problems.add(first_path, first_line, f"{what} {value} is also in {path}:{line}")
            problems.add(path, line, f"{what} {value} is also in {first_path}:{first_line}")
        else:
            table[value] = (path, line)

    def once_number(number, path, line):
        once(numbers, "error number", number, path, line)
        if project and number in SAMPLE_NUMBERS:
            problems.add(path, line, f"error number {number} is one for samples; --next-numbers "
                                     "tells the next free one")

    for each in classes:
        once(names, "class", each.name, each.path, each.lines.of("class"))
        if each.shape == "configuration":
            line = each.lines.of("name" if "name" in each.lines.fields else "class")
            once(elements, "element name", each.element_name, each.path, line)
        if each.reset_error:
            once_number(each.reset_error, each.path, each.lines.of("reset_error"))
        for setting in each.settings:
            for number in filter(None, (setting.guard, setting.set_guard)):
                once_number(number, each.path, setting.line)


def next_numbers(folder):
    """What the next failing ResetPos and the next guarded accessor may report. Read from the
    text of the files, so that it can be asked while the schema still has faults."""
    used = [int(number.replace("_", "")) for path in sorted(folder.rglob("*.toml"))
            for number in re.findall(r"\b(?:reset_error|set_guard|guard)\s*=\s*([0-9_]+)",
                                     path.read_text(encoding="utf-8", errors="replace"))]
    return [max((number for number in used if number in own), default=own.start - 1) + 1
            for own in (RESET_NUMBERS, ACCESSOR_NUMBERS)]


def find_columns(classes, unread, problems):
    """Tables and their headers have the cells of a row class as columns."""
    rows = {each.name: each for each in classes if each.shape == "row"}
    for each in classes:
        if not each.row:
            continue
        if each.row not in rows:
            if each.row in unread:
                continue
            problems.add(each.path, each.lines.of("row"), f"there is no row class '{each.row}'")
            continue
        cells = {cell.key: cell for cell in rows[each.row].settings}
        for key in each.column_keys:
            if key in rows[each.row].rejected:
                continue
            if key not in cells:
                problems.add(each.path, each.lines.of("columns"),
                             f"'{each.row}' has no cell '{key}'")
            elif each.column_keys.count(key) > 1:
                problems.add(each.path, each.lines.of("columns"), f"repeated column '{key}'")
            else:
                each.columns.append(cells[key])


def find_files(folder, shown_from, problems):
    """The templates and the classes of a schema folder. Any other file is a problem, since a class
    in the wrong place or under a wrong suffix would be missing without a word. Names that begin
    with a dot belong to editors and the file system."""
    templates, classes = [], []
    for path in sorted(folder.rglob("*")):
        parts = path.relative_to(folder).parts
        if path.is_dir() or any(part.startswith(".") for part in parts):
            continue
        if len(parts) == 2 and path.suffix == ".toml":
            (templates if parts[0] == "templates" else classes).append(path)
        elif parts[-1] != "README.md" or len(parts) > 2:
            problems.add(path.relative_to(shown_from), 1, "no file of the schema: it has "
                         "FAMILY/CLASS.toml, templates/NAME.toml and README.md")
    return templates, classes
