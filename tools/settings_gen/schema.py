"""Reads the settings schema and checks it strictly. Every problem has a file and a line."""

import re
import tomllib
from dataclasses import dataclass, field
from pathlib import Path

from schema_checks import (ACCESSOR_NUMBERS, LOOKED_UP, OLDER_NUMBERS, RESET_NUMBERS,
                           SAMPLE_NUMBERS, check_across_classes, check_field_types,
                           fault_of_accessor, fault_of_text, find_columns, find_files)

PROJECT = Path(__file__).resolve().parent.parent.parent
SCHEMA = PROJECT / "kpx" / "settings" / "schema"
INT32 = range(-2**31, 2**31)

# Value type of an accessor -> its column type where the schema states no other.
USUAL_CODE = {"long": 1, "int": 1, "flag": 1, "double": 3, "text": 4}
ENUMERATION_CODE = 1
CODES = (1, 3, 4, 6, 7)
DECIMALS = range(-2, 16)  # -2 scientific, -1 all digits; a double keeps no more than 15

# Bases that a class may have -> the header that declares them.
BASES = {base: f"kpx/config/{base}.h" for base in ("CFGConfig", "CFGHeader", "CFGRow", "CFGTable")}

# Every class has the first; which others it may have depends on its base.
COMMON_FIELDS = {"class", "about", "base", "settings"}
ACCESSOR_FIELDS = {"setting", "block", "override", "template"}
COLUMN_FIELDS = {"row", "columns"}
FIELDS_OF_BASE = {
    "CFGConfig": ACCESSOR_FIELDS | {"name", "constructor", "reset", "reset_error", "reset_only"},
    "CFGHeader": COLUMN_FIELDS | {"name"},
    "CFGTable": COLUMN_FIELDS,
    "CFGRow": ACCESSOR_FIELDS,
}
TEMPLATE_FIELDS = {"parameters", "setting", "constructor", "reset"}
SETTING_FIELDS = {"key", "get", "set", "value", "decimals", "code", "caption", "group", "missing",
                  "guard", "set_guard", "older_key", "shares_key", "note"}
PARAMETER = re.compile(r"\{(\w+)\}")


class Problems:
    """Collects what is wrong, so that one run tells everything."""

    def __init__(self):
        self.lines = []

    def told(self):
        """Each problem once; a line of a template has its problem again in each block."""
        return list(dict.fromkeys(self.lines))

    def add(self, path, line, message):
        self.lines.append(f"{path}:{line}: {message}")


@dataclass
class Text:
    """A caption or group: a literal, or the number of a text that is looked up."""
    literal: str = ""
    id: int = 0


@dataclass
class Setting:
    path: Path
    line: int
    key: str
    value: str = "text"
    get: str = ""
    set: str = ""
    decimals: int | None = None
    code: int = 0
    caption: Text | None = None
    group: Text | None = None
    missing: int | float | None = None
    guard: int = 0
    set_guard: int = 0
    older_key: str = ""
    shares_key: bool = False
    note: str = ""

    @property
    def kind(self):
        return {"long": "integer", "int": "integer", "flag": "flag", "double": "real",
                "text": "text"}.get(self.value, "enumeration")


@dataclass
class Default:
    """One entry of a constructor: a setting and the value that it gets."""
    setting: Setting
    to: object


@dataclass
class SettingsClass:
    path: Path
    name: str
    family: str
    about: str = ""
    base: str = "CFGConfig"
    stored_name: str = ""
    settings: list = field(default_factory=list)
    constructor: list = field(default_factory=list)
    reset: list | None = None
    reset_error: int = 0
    row: str = ""
    columns: list = field(default_factory=list)  # of a header or table: cells of its row class
    column_keys: list = field(default_factory=list)
    lines: object = None
    rejected: set = field(default_factory=set)  # keys of settings that have problems of their own

    @property
    def shape(self):
        """What an object of the class is: a configuration, a row or a table."""
        return {"CFGRow": "row", "CFGTable": "table"}.get(self.base, "configuration")

    @property
    def element_name(self):
        if self.shape != "configuration":
            return self.base
        if self.stored_name.startswith("CFGConfig"):
            return self.stored_name
        return "CFGConfig" + self.stored_name


class Lines:
    """Where in a file fields, arrays and the entries of arrays stand. Each entry that is a table
    has a line of its own; that keeps changes to a schema readable, and gives errors a line."""

    def __init__(self, text):
        self.fields = {}
        self.entries = {}
        table = ""
        array = None
        for number, line in enumerate(text.split("\n"), 1):
            stripped = line.strip()
            if array:
                if stripped.startswith("]"):
                    array = None
                elif stripped and not stripped.startswith("#"):
                    self.entries[array].append(number)
                continue
            if match := re.match(r"\[([\w.-]+)\]", stripped):
                table = match[1] + "."
                self.fields[match[1]] = number
            elif match := re.match(r"([\w-]+)\s*=\s*(.*)", stripped):
                name = table + match[1]
                self.fields[name] = number
                if match[2].startswith("[") and "]" not in match[2]:
                    array = name
                    self.entries[name] = []

    def of(self, name, index=None):
        entries = self.entries.get(name, [])
        if index is not None and index < len(entries):
            return entries[index]
        return self.fields.get(name, 1)


class Reader:
    """Reads one class and expands its blocks."""

    def __init__(self, path, shown, family, templates, enumerations, problems):
        self.path = path
        self.shown = shown
        self.family = family
        self.templates = templates
        self.enumerations = enumerations
        self.problems = problems

    def problem(self, line, message):
        self.problems.add(self.shown, line, message)

    def read(self):
        data, lines = load(self.path, self.shown, self.problems)
        if data is None:
            return None
        self.lines = lines
        for name in check_field_types(data, self.shown, lines, "", self.problems):
            del data[name]
        base = data.get("base", "CFGConfig")
        if base not in BASES:
            self.problem(lines.of("base"), f"unknown base '{base}'")
            base = "CFGConfig"
        for name in data:
            if name not in COMMON_FIELDS | FIELDS_OF_BASE[base]:
                self.problem(lines.of(name), f"unknown field '{name}'" if base == "CFGConfig"
                             else f"unknown field '{name}' of a class on {base}")
        required = {"class", "about", "settings"}
        for name in sorted(required | (FIELDS_OF_BASE[base] & COLUMN_FIELDS)):
            if name not in data and name not in lines.fields:
                self.problem(1, f"missing field '{name}'")
        result = SettingsClass(self.shown, data.get("class", ""), self.family,
                               data.get("about", ""), base)
        result.stored_name = data.get("name", result.name)
        result.lines = lines
        result.row = data.get("row", "")
        result.column_keys = data.get("columns", [])
        if result.name != self.path.stem:
            self.problem(lines.of("class"), f"class '{result.name}' in a file of another name")
        if not re.fullmatch(r"[A-Za-z_][A-Za-z0-9_]*", result.name):
            self.problem(lines.of("class"), f"'{result.name}' is no name of a class")
        elif not re.fullmatch(r"[A-Za-z0-9_.-]+", result.stored_name):
            self.problem(lines.of("name"),
                         f"'{result.stored_name}' gives no name of an XML element: letters A to Z, "
                         "digits, '_', '-' and '.' do")

        count = len(self.problems.lines)
        raw_settings, raw_defaults, reset = [], [], []
        self.expand_blocks(data, raw_settings, raw_defaults, reset)
        for index, entry in enumerate(self.tables(data, "setting", "setting")):
            raw_settings.append((lines.of("setting", index), entry))
        for index, entry in enumerate(self.tables(data, "constructor", "constructor")):
            raw_defaults.append((lines.of("constructor", index), entry))
        self.apply_overrides(data, raw_settings)
        result.settings = [setting for line, entry in raw_settings
                           if (setting := self.setting(line, entry))]
        # A rejected line has its own problem; what uses its key or setter is no further one.
        keys = {setting.key for setting in result.settings}
        setters = {setting.set for setting in result.settings}
        result.rejected = {str(entry.get("key")) for _, entry in raw_settings} - keys
        self.rejected_setters = {str(entry.get("set")) for _, entry in raw_settings} - setters
        self.check_unique(result)
        if len(self.problems.lines) == count:
            self.check_count(result, data)
        self.defaults(result, raw_defaults)
        self.reset_order(result, data, reset)
        return result

    # --- tables and templates ------------------------------------------------------------------

    def tables(self, data, name, shown_name):
        """The entries of an array of tables."""
        entries = data.get(name, [])
        if not isinstance(entries, list) or not all(isinstance(each, dict) for each in entries):
            self.problem(self.lines.of(shown_name), f"'{shown_name}' is no list of tables")
            return []
        if entries and len(self.lines.entries.get(shown_name, [])) != len(entries):
            self.problem(self.lines.of(shown_name),
                         f"'{shown_name}' needs each entry on a line of its own")
        return entries

    def expand_blocks(self, data, raw_settings, raw_defaults, reset):
        local = {}
        for name, content in data.get("template", {}).items():
            if not isinstance(content, dict):
                self.problem(self.lines.of(f"template.{name}"), f"template '{name}' is no table")
                continue
            local[name] = Template(self.shown, content, self.lines, f"template.{name}.")
            local[name].check(self.problems)
        used = set()
        for index, block in enumerate(self.tables(data, "block", "block")):
            line = self.lines.of("block", index)
            name = str(block.get("template"))
            template = local.get(name) or self.templates.get(name)
            if template is None:
                self.problem(line, f"unknown template '{name}'")
                continue
            used.add(name)
            parameters = {key: value for key, value in block.items() if key != "template"}
            if set(parameters) != set(template.parameters):
                self.problem(line, f"template '{name}' takes {', '.join(template.parameters)}")
                continue

            def filled(value, where=line):
                return self.fill(value, parameters, where)

            for at, entry in template.entries("setting"):
                raw_settings.append((at if name in local else line, filled(entry)))
            for at, entry in template.entries("constructor"):
                raw_defaults.append((at if name in local else line, filled(entry)))
            reset.extend(filled(key) for key in template.content.get("reset", []))
        for name in local:
            if name not in used:
                self.problem(self.lines.of(f"template.{name}"), f"template '{name}' is not used")

    def fill(self, value, parameters, line):
        if isinstance(value, dict):
            return {key: self.fill(each, parameters, line) for key, each in value.items()}
        if not isinstance(value, str):
            return value
        if (whole := PARAMETER.fullmatch(value)) and whole[1] in parameters:
            return parameters[whole[1]]

        def replacement(match):
            if match[1] not in parameters:
                self.problem(line, f"unknown parameter '{match[1]}' in a template")
                return ""
            return str(parameters[match[1]])

        return PARAMETER.sub(replacement, value)

    def apply_overrides(self, data, raw_settings):
        by_key = {str(entry.get("key")): entry for _, entry in raw_settings}
        for index, override in enumerate(self.tables(data, "override", "override")):
            line = self.lines.of("override", index)
            entry = by_key.get(str(override.get("key")))
            if entry is None:
                self.problem(line, f"override of unknown key '{override.get('key')}'")
                continue
            for name, value in override.items():
                if name not in SETTING_FIELDS:
                    self.problem(line, f"unknown field '{name}'")
                elif name != "key" and entry.get(name) == value:
                    self.problem(line, f"override of '{name}' changes nothing")
                else:
                    entry[name] = value

    # --- one setting ---------------------------------------------------------------------------

    def setting(self, line, entry):
        count = len(self.problems.lines)
        for name in entry:
            if name not in SETTING_FIELDS:
                self.problem(line, f"unknown field '{name}'")
        for name in ("key", "value"):
            if name not in entry:
                self.problem(line, f"missing field '{name}'")
        self.expect_types(line, entry)
        if len(self.problems.lines) > count:
            return None
        value = entry["value"]
        if value not in USUAL_CODE and value not in self.enumerations:
            self.problem(line, f"unknown type '{value}'")
            return None
        setting = Setting(self.shown, line, entry["key"], value, entry.get("get", ""),
                          entry.get("set", ""))
        if not setting.key:
            self.problem(line, "empty key")
        for prefix in ("get", "set"):
            accessor = getattr(setting, prefix)
            if accessor and (fault := fault_of_accessor(accessor, prefix)):
                self.problem(line, f"'{accessor}' is no name of a {prefix}ter: {fault}")
        for name in ("key", "older_key", "caption", "group", "note"):
            if fault := fault_of_text(name, entry.get(name, "")):
                self.problem(line, f"'{name}' {fault}")
        if (setting.kind == "real") != ("decimals" in entry):
            self.problem(line, "missing field 'decimals'" if setting.kind == "real"
                         else "'decimals' is for real settings only")
        setting.decimals = entry.get("decimals")
        if setting.kind == "real" and setting.decimals is not None:
            if setting.decimals not in DECIMALS:
                self.problem(line, f"decimals {setting.decimals} are not from -2 to 15")
        setting.code = entry.get("code", USUAL_CODE.get(value, ENUMERATION_CODE))
        if setting.code not in CODES:
            self.problem(line, f"unknown type code {setting.code}")
        # A column is created by its setter, or by the constructor where there are no accessors.
        creates = bool(setting.set) or not setting.get
        for name in ("caption", "group"):
            if creates != (name in entry):
                self.problem(line, f"missing field '{name}'" if creates
                             else f"'{name}' without a setter that creates the column")
        setting.caption = text_of(entry.get("caption", ""))
        setting.group = text_of(entry.get("group", ""))
        if "missing" in entry:
            if not setting.get:
                self.problem(line, "'missing' without a getter")
            self.check_value(line, setting, entry["missing"], "'missing'")
            if setting.kind == "text":
                self.problem(line, "'missing' is for numbers only")
        setting.missing = entry.get("missing")
        for name, accessor in (("guard", setting.get), ("set_guard", setting.set)):
            if name in entry and not accessor:
                self.problem(line, f"'{name}' without the accessor that it guards")
        setting.guard = entry.get("guard", 0)
        setting.set_guard = entry.get("set_guard", 0)
        setting.older_key = entry.get("older_key", "")
        setting.shares_key = entry.get("shares_key", False)
        setting.note = entry.get("note", "")
        return setting if len(self.problems.lines) == count else None

    def expect_types(self, line, entry):
        kinds = {"decimals": int, "code": int, "guard": int, "set_guard": int,
                 "missing": (int, float), "shares_key": bool}
        for name, value in entry.items():
            kind = kinds.get(name, str)
            wrong_bool = isinstance(value, bool) and kind is not bool
            if name in SETTING_FIELDS and (wrong_bool or not isinstance(value, kind)):
                self.problem(line, f"'{name}' has a value of the wrong type")
            elif name in ("guard", "set_guard"):
                self.check_number(line, name, value, ACCESSOR_NUMBERS)

    def check_number(self, line, name, value, own):
        if not any(value in numbers for numbers in (OLDER_NUMBERS, own, SAMPLE_NUMBERS)):
            self.problem(line, f"'{name}' is no error number: those of our own are {own.start} "
                               f"to {own.stop - 1}; --next-numbers tells the next free one")

    def check_value(self, line, setting, value, what):
        number = isinstance(value, (int, float)) and not isinstance(value, bool)
        if setting.kind == "text":
            good = isinstance(value, str)
        elif setting.kind == "real":
            good = number and abs(value) < 1e50
        else:
            good = number and isinstance(value, int) and value in INT32
            good = good and (setting.kind != "flag" or value in (0, 1))
        if not good:
            self.problem(line, f"{what} is no value of type '{setting.value}'")
        return good

    # --- the class as a whole ------------------------------------------------------------------

    def check_unique(self, result):
        keys, accessors = {}, {}
        for setting in result.settings:
            if not setting.shares_key:
                if setting.key in keys:
                    self.problem(setting.line, f"repeated key '{setting.key}', "
                                               f"first in line {keys[setting.key]}")
                keys.setdefault(setting.key, setting.line)
            for accessor in filter(None, (setting.get, setting.set)):
                if accessor in accessors:
                    self.problem(setting.line, f"repeated accessor '{accessor}', "
                                               f"first in line {accessors[accessor]}")
                accessors.setdefault(accessor, setting.line)
        for setting in result.settings:
            if setting.shares_key and setting.key not in keys.keys() | result.rejected:
                self.problem(setting.line, f"no other setting has the key '{setting.key}'")

    def defaults(self, result, raw_defaults):
        by_setter = {setting.set: setting for setting in result.settings if setting.set}
        by_key = {setting.key: setting for setting in result.settings
                  if not setting.set and not setting.get}
        constructed = set()
        for line, entry in raw_defaults:
            if set(entry) not in ({"set", "to"}, {"key", "to"}):
                self.problem(line, "a constructor entry has 'to', and 'set' or 'key'")
                continue
            named = str(entry.get("set", entry.get("key")))
            setting = by_setter.get(named) if "set" in entry else by_key.get(named)
            if setting is None:
                if named not in (self.rejected_setters if "set" in entry else result.rejected):
                    self.problem(line, f"constructor entry without a setting: '{named}'")
                continue
            if named in constructed:
                self.problem(line, f"repeated constructor entry '{named}'")
            constructed.add(named)
            if self.check_value(line, setting, entry["to"], f"the value of '{named}'"):
                self.check_digits(line, setting, entry["to"])
            result.constructor.append(Default(setting, entry["to"]))
        for setting in by_key.values():
            if setting.key not in constructed:
                self.problem(setting.line, f"nothing ever creates '{setting.key}'")

    def check_digits(self, line, setting, value):
        """A default that is cut when it is stored would never be read again as it stands here."""
        if setting.kind != "real" or setting.decimals == -2:
            return
        value = float(value)
        kept = float(f"{value:.15g}") if setting.decimals == -1 else round(value, setting.decimals)
        if kept != value:
            digits = "15 digits" if setting.decimals == -1 else f"{setting.decimals} decimals"
            self.problem(line, f"the value of '{setting.set or setting.key}' is stored with "
                               f"{digits}, as {kept!r}")

    def reset_order(self, result, data, from_blocks):
        own = data.get("reset")
        line = self.lines.of("reset")
        if own is None and not from_blocks:
            if "reset_error" in data:
                self.problem(self.lines.of("reset_error"), "'reset_error' without 'reset'")
            return
        if own == "constructor":
            keys = list(dict.fromkeys(each.setting.key for each in result.constructor))
        elif own is None or isinstance(own, list):
            keys = from_blocks + (own or [])
        else:
            self.problem(line, "'reset' is a list of keys, or \"constructor\" for its order")
            return
        known = self.known_keys(result, data)
        for key in sorted({key for key in keys if keys.count(key) > 1}):
            self.problem(line, f"repeated key '{key}' in 'reset'")
        for key in dict.fromkeys(keys):
            if key not in known and key not in result.rejected:
                self.problem(line, f"unknown key '{key}' in 'reset'")
        for key in data.get("reset_only", []):
            if key not in keys:
                self.problem(self.lines.of("reset_only"), f"'reset' does not list '{key}'")
        if "reset_error" in data:
            self.check_number(self.lines.of("reset_error"), "reset_error", data["reset_error"],
                              RESET_NUMBERS)
        elif "reset_error" not in self.lines.fields:
            self.problem(line, "missing field 'reset_error'")
        result.reset = keys
        result.reset_error = data.get("reset_error", 0)

    @staticmethod
    def keys_with_accessors(result):
        keys = {setting.key for setting in result.settings}
        return keys | {setting.older_key for setting in result.settings if setting.older_key}

    def known_keys(self, result, data):
        keys = self.keys_with_accessors(result)
        for key in data.get("reset_only", []):
            if key in keys:
                self.problem(self.lines.of("reset_only"), f"'{key}' is a setting")
            keys.add(key)
        return keys

    def check_count(self, result, data):
        keys = self.keys_with_accessors(result)
        count = len(keys | set(data.get("reset_only", [])) | set(result.column_keys))
        if "settings" in data and data["settings"] != count:
            self.problem(self.lines.of("settings"), f"{count} settings, not {data['settings']}")


class Template:
    """Settings that several blocks or classes share but for some parameters."""

    def __init__(self, shown, content, lines, prefix):
        self.shown = shown
        self.content = content
        self.lines = lines
        self.prefix = prefix
        self.parameters = content.get("parameters", [])

    def check(self, problems):
        for name in check_field_types(self.content, self.shown, self.lines, self.prefix, problems):
            del self.content[name]
            self.parameters = []
        for name, kind in (("setting", dict), ("constructor", dict), ("reset", str)):
            entries = self.content.get(name, [])
            if not isinstance(entries, list) or not all(isinstance(each, kind)
                                                        for each in entries):
                problems.add(self.shown, self.lines.of(self.prefix + name), f"'{name}' is no list "
                             f"of {'keys' if kind is str else 'tables'}")
                self.content[name] = []
        for name in self.content:
            if name not in TEMPLATE_FIELDS:
                problems.add(self.shown, self.lines.of(self.prefix + name),
                             f"unknown field '{name}'")
        for name in ("parameters", "setting"):
            if name not in self.content:
                problems.add(self.shown, self.lines.of(self.prefix.rstrip(".")),
                             f"missing field '{name}'")

    def entries(self, name):
        for index, entry in enumerate(self.content.get(name, [])):
            yield self.lines.of(self.prefix + name, index), entry


def text_of(text):
    match = LOOKED_UP.fullmatch(text)
    return Text(id=int(match[1])) if match else Text(literal=text)


def load(path, shown, problems):
    data = path.read_bytes()
    try:
        text = data.decode("utf-8").replace("\r\n", "\n")
    except UnicodeDecodeError as error:
        problems.add(shown, data.count(b"\n", 0, error.start) + 1,
                     f"no UTF-8: byte 0x{data[error.start]:02X}; save the file as UTF-8")
        return None, None
    try:
        return tomllib.loads(text), Lines(text)
    except tomllib.TOMLDecodeError as error:
        place = re.search(r"\(at line (\d+)", str(error))
        problems.add(shown, place[1] if place else len(text.splitlines()),
                     re.sub(r" \(at .*\)", "", str(error)))
        return None, None


def read_enumerations(header):
    """The enumerated types that accessors may have: those that the header declares."""
    return set(re.findall(r"^enum (\w+) : std::int32_t", header.read_text(encoding="utf-8"),
                          re.MULTILINE))


def read_schema(folder, enumerations, problems):
    """All classes of a schema folder: FAMILY/CLASS.toml, and templates/NAME.toml."""
    folder = folder.resolve()
    shown_from = PROJECT if folder.is_relative_to(PROJECT) else folder.parent
    template_files, class_files = find_files(folder, shown_from, problems)
    templates = {}
    for path in template_files:
        shown = path.relative_to(shown_from)
        content, lines = load(path, shown, problems)
        if content is not None:
            templates[path.stem] = Template(shown, content, lines, "")
            templates[path.stem].check(problems)
    classes, unread = [], set()
    for path in class_files:
        reader = Reader(path, path.relative_to(shown_from), path.parent.name, templates,
                        enumerations, problems)
        result = reader.read()
        if result:
            classes.append(result)
        else:
            unread.add(path.stem)
    check_across_classes(classes, folder == SCHEMA, problems)
    find_columns(classes, unread, problems)
    return sorted(classes, key=lambda each: each.name)
