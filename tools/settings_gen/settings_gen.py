#!/usr/bin/env python3
"""Turns the settings schema into C++ classes and their catalogue.

Writes into the build tree only, and only what changed. A schema that is not perfect gives no
output: every problem is printed with its file and line.
"""

import argparse
import difflib
import sys
import textwrap
from dataclasses import replace
from pathlib import Path

from schema import BASES, SCHEMA, Problems, read_enumerations, read_schema
from schema_checks import ACCESSOR_NUMBERS, RESET_NUMBERS, next_numbers

HERE = Path(__file__).resolve().parent
SETTINGS = HERE.parent.parent / "kpx" / "settings"

# In the catalogue, but written by hand in a lower layer; its entry stands in Catalogue.cpp.
HAND_WRITTEN = ["CFGHeader"]

CPP_TYPES = {"long": "std::int32_t", "int": "int", "flag": "int", "double": "double",
             "text": "CString"}


def literal(text):
    """A UTF-16 literal."""
    escapes = {'"': '\\"', "\\": "\\\\", "\n": "\\n", "\t": "\\t", "\r": "\\r"}
    return 'u"' + "".join(escapes.get(unit, unit) for unit in text) + '"'


def value_type(setting):
    return CPP_TYPES.get(setting.value, setting.value)


def argument_type(setting):
    return "const CString&" if setting.value == "text" else value_type(setting)


def number(setting, value):
    """A value of a setting as a C++ expression."""
    if setting.kind == "text":
        return literal(value)
    if setting.kind == "real":
        return repr(float(value))
    text = str(value) if value != -2**31 else "(-2147483647 - 1)"
    return f"static_cast<{setting.value}>({text})" if setting.kind == "enumeration" else text


def text_source(text):
    return f"{{.id = {text.id}}}" if text.id else f"{{.literal = {literal(text.literal)}}}"


def shown_text(text):
    return f"text {text.id}" if text.id else f'"{text.literal}"'


def comment(text, indent=""):
    return "".join(f"{indent}/// {line}\n"
                   for line in textwrap.wrap(text, 99 - len(indent) - 4,
                                             break_on_hyphens=False, break_long_words=False))


def about_setting(setting):
    """What a reader of the header needs to know of an accessor pair."""
    parts = [f'Key "{setting.key}"']
    if setting.caption.literal or setting.caption.id:
        parts.append(f"caption {shown_text(setting.caption)}")
    kind = {"integer": "integer", "flag": "0 or 1", "enumeration": "enumeration, any number is kept",
            "real": "real", "text": "text"}[setting.kind]
    if setting.kind == "real":
        kind += ", all digits" if setting.decimals == -1 else f", {setting.decimals} decimals"
    parts.append(kind)
    sentence = ", ".join(parts) + "."
    if setting.get and setting.missing is not None:
        sentence += f" {setting.missing} when missing."
    if setting.older_key:
        sentence += f' The getter reads the older key "{setting.older_key}" when it is missing.'
    if setting.guard:
        sentence += f" A failing getter reports {setting.guard}."
    if setting.set_guard:
        sentence += f" A failing setter reports {setting.set_guard}."
    if setting.note:
        sentence += f" {setting.note}"
    return sentence


def about_behaviour(each):
    """What holds for all accessors of a class."""
    if each.columns:
        xml, rows = "all columns", ""
        if each.shape == "table":
            xml = "the record header only, neither columns nor rows"
            rows = (" Rows are kept as plain `CFGRow` values: a row of another class is not "
                    "refused. `FindCol` copies over what the given row holds, so cells that only "
                    "it has remain; give it a new row.")
        return (f'As XML: element "{each.element_name}" with {xml}. The columns are those of '
                f"`{each.row}`: " + ", ".join(f'"{cell.key}"' for cell in each.columns) + "."
                + rows)
    what = "cell" if each.shape == "row" else "column"
    xml = f'element "{each.element_name}"'
    if each.shape == "row":
        xml += " with the record header only; a new row has no cells"
    if not any(setting.get or setting.set for setting in each.settings):
        return f"As XML: {xml}."
    return (f"As XML: {xml}. Getters convert the stored text and create nothing; a missing {what} "
            "answers 0, 0.0 or the empty text where nothing else is said. Setters change the text "
            f"of the {what}, or create it with its type, caption and group; they answer 1.")


def header_of(each):
    enumerations = any(setting.kind == "enumeration" for setting in each.settings)
    out = [f"#pragma once\n\n// Generated from {each.path}. Do not edit.\n\n",
           f'#include "{BASES[each.base]}"\n']
    if enumerations:
        out.append('#include "kpx/settings/Enumerations.h"\n')
    out.append("\nnamespace kpx {\n\n")
    out.append(comment(each.about) + "///\n" + comment(about_behaviour(each)))
    out.append(f"class KPX_API {each.name} : public {each.base} {{\n public:\n")
    if each.shape != "row":
        out.append("  /// A new object has its columns.\n" if each.columns
                   else "  /// A new object has its settings with their defaults.\n")
        out.append(f"  {each.name}();\n")
    if each.reset is not None:
        out.append("\n" + comment(f"A failure is reported as {each.reset_error}.", "  "))
        out.append("  void ResetPos() override;\n")
    for setting in each.settings:
        if not setting.get and not setting.set:
            continue
        out.append("\n" + comment(about_setting(setting), "  "))
        if setting.get:
            out.append(f"  {value_type(setting)} {setting.get}() const;\n")
        if setting.set:
            out.append(f"  int {setting.set}({argument_type(setting)} value);\n")
    out.append("};\n\n}  // namespace kpx\n")
    return "".join(out)


def definition(setting):
    fields = [f".key = KeyLiteral({literal(setting.key)})", f".kind = ValueKind::{setting.kind}"]
    if setting.kind == "real":
        fields.append(f".decimals = {setting.decimals}")
    fields.append(f".type = {setting.code}")
    fields.append(f".caption = {text_source(setting.caption)}")
    fields.append(f".group = {text_source(setting.group)}")
    if setting.missing is not None:
        name = "missingReal" if setting.kind == "real" else "missingInteger"
        value = repr(float(setting.missing)) if setting.kind == "real" else str(setting.missing)
        fields.append(f".{name} = {value}")
    if setting.older_key:
        fields.append(f".olderKey = KeyLiteral({literal(setting.older_key)})")
    if setting.guard:
        fields.append(f".getterError = {setting.guard}")
    if setting.set_guard:
        fields.append(f".setterError = {setting.set_guard}")
    return "    {" + ", ".join(fields) + "},\n"


def table_name(what, each):
    """Names of their own, so that several classes can be compiled together."""
    return f"{what}Of{each.name}"


def accessors(each, index, setting):
    family = {"real": "Real", "text": "Text"}.get(setting.kind, "Integer")
    enumeration = setting.kind == "enumeration"
    definition_ = f"{table_name('definitions', each)}[{index}]"
    out = []
    if setting.get:
        columns = "Cells" if each.shape == "row" else "Class.Cols"
        call = f"detail::get{family}({columns}, {definition_})"
        if enumeration:
            call = f"static_cast<{setting.value}>({call})"
        out.append(f"{value_type(setting)} {each.name}::{setting.get}() const {{ return {call}; }}\n")
    if setting.set:
        out.append(f"int {each.name}::{setting.set}({argument_type(setting)} value) "
                   f"{{ return detail::set{family}(*this, {definition_}, value); }}\n")
    return "".join(out)


def access(each, index, setting):
    names = [f"&{each.name}::{name}" if name else "nullptr" for name in (setting.get, setting.set)]
    return (f"    detail::access<{names[0]}, {names[1]}>(\n"
            f"        {table_name('definitions', each)}[{index}], {literal(setting.get)}, "
            f"{literal(setting.set)}),\n")


def catalogue_entry(each):
    settings = "{}" if each.shape == "table" else table_name("accesses", each)
    element = each.element_name if each.shape == "configuration" else ""
    return (f"\nnamespace detail {{\n\nextern const SettingsClass settingsClass{each.name};\n"
            f"constinit const SettingsClass settingsClass{each.name} = {{\n"
            f"    .name = {literal(each.name)},\n"
            f"    .family = {literal(each.family)},\n"
            f"    .elementName = {literal(element)},\n"
            f"    .settings = {settings},\n"
            f"    .shape = ClassShape::{each.shape},\n"
            f"    .make = &makeObject<{each.name}>,\n"
            f"    .resetError = {each.reset_error},\n"
            "};\n\n}  // namespace detail\n}  // namespace kpx\n")


def columns_source_of(each):
    """The source of a table or of its header: their columns and no accessors of their own."""
    includes = [each.name, "engine/GeneratedClass"]
    if each.shape == "configuration":
        includes.append("internal/HeaderAccess")
    out = [f"// Generated from {each.path}. Do not edit.\n\n",
           f'#include "kpx/settings/{includes[0]}.h"\n\n',
           *(f'#include "kpx/settings/{name}.h"\n' for name in includes[1:]),
           "\nnamespace kpx {\nnamespace {\n\n",
           f"constexpr SettingDef {table_name('definitions', each)}[] = {{\n",
           *(definition(replace(cell, value="text", decimals=None, missing=None, guard=0,
                                set_guard=0)) for cell in each.columns),
           "};\n\n"]
    if each.shape == "configuration":
        out.append(f"constexpr SettingAccess {table_name('accesses', each)}[] = {{\n"
                   "    detail::headerAccesses[0],\n    detail::headerAccesses[1],\n")
        out.extend(access(each, index, replace(cell, get="", set=""))
                   for index, cell in enumerate(each.columns))
        out.append("};\n\n")
    out.append("}  // namespace\n\n"
               f"{each.name}::{each.name}() {{\n"
               f"  Class.Name.Assign({literal(each.stored_name)});\n"
               f"  detail::defineColumns(*this, {table_name('definitions', each)});\n}}\n")
    out.append(catalogue_entry(each))
    return "".join(out)


def source_of(each):
    if each.columns:
        return columns_source_of(each)
    indices = {id(setting): index for index, setting in enumerate(each.settings)}
    out = [f"// Generated from {each.path}. Do not edit.\n\n",
           f'#include "kpx/settings/{each.name}.h"\n\n',
           '#include "kpx/settings/engine/GeneratedClass.h"\n\n',
           "namespace kpx {\nnamespace {\n\n",
           f"constexpr SettingDef {table_name('definitions', each)}[] = {{\n",
           *(definition(setting) for setting in each.settings),
           "};\n\n",
           f"constexpr SettingAccess {table_name('accesses', each)}[] = {{\n",
           *(access(each, indices[id(setting)], setting) for setting in each.settings),
           "};\n\n"]
    if each.reset:
        out.append(f"constexpr KeyLiteral {table_name('resetKeys', each)}[] = {{\n")
        out.extend(f"    KeyLiteral({literal(key)}),\n" for key in each.reset)
        out.append("};\n\n")
    out.append("}  // namespace\n\n")
    if each.shape != "row":
        out.extend(constructor(each, indices))
    if each.reset is not None:
        keys = table_name("resetKeys", each) if each.reset else "{}"
        out.append(f"void {each.name}::ResetPos() {{ "
                   f"detail::resetKeyOrder(*this, {keys}, {each.reset_error}); }}\n\n")
    out.extend(accessors(each, indices[id(setting)], setting) for setting in each.settings)
    out.append(catalogue_entry(each))
    return "".join(out)


def constructor(each, indices):
    yield (f"{each.name}::{each.name}() {{\n"
           f"  detail::beginConstruction(*this, {literal(each.stored_name)}, "
           f"{len({default.setting.key for default in each.constructor})});\n")
    for default in each.constructor:
        value = number(default.setting, default.to)
        if default.setting.set:
            yield f"  {default.setting.set}({value});\n"
        else:
            family = {"real": "Real", "text": "Text"}.get(default.setting.kind, "Integer")
            yield (f"  detail::set{family}(*this, {table_name('definitions', each)}"
                   f"[{indices[id(default.setting)]}], "
                   f"{value});\n")
    yield "}\n\n"


def catalogue_of(classes):
    names = sorted([each.name for each in classes] + HAND_WRITTEN)
    return ("// Generated from the settings schema. Do not edit.\n\n"
            '#include "kpx/settings/internal/CatalogueTable.h"\n\n'
            "namespace kpx::detail {\n\n"
            + "".join(f"extern const SettingsClass settingsClass{name};\n" for name in names)
            + "\nnamespace {\nconstexpr const SettingsClass* classes[] = {\n"
            + "".join(f"    &settingsClass{name},\n" for name in names)
            + "};\n}  // namespace\n\n"
            "std::span<const SettingsClass* const> classTable() noexcept { return classes; }\n\n"
            "}  // namespace kpx::detail\n")


def umbrella_of(classes):
    return ("#pragma once\n\n// Generated from the settings schema. Do not edit.\n"
            "// All settings classes, and their catalogue.\n\n"
            + "".join(f'#include "kpx/settings/{each.name}.h"\n' for each in classes)
            + '#include "kpx/settings/Catalogue.h"\n')


def names_of(classes):
    return ("#pragma once\n\n// Generated from the settings schema. Do not edit.\n"
            "// The settings classes as modules name them.\n\n"
            '#include "kpx/settings/AllSettings.h"\n\n'
            + "".join(f"using kpx::{each.name};\n" for each in classes))


def write_if_changed(path, text):
    data = text.encode()
    if not path.exists() or path.read_bytes() != data:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data)


def find(classes, name):
    """Prints where a class, key, accessor or error number is defined."""
    hits, names = [], set(BASES)
    if name in BASES:
        hits.append(f"{BASES[name]}:1: {name}, written by hand")
    for each in classes:
        of_class = {each.name, each.stored_name, str(each.reset_error)}
        if each.shape == "configuration":
            of_class.add(each.element_name)
        names |= of_class
        if name in of_class:
            field = "reset_error" if name == str(each.reset_error) else "class"
            what = f"ResetPos of {each.name}" if field == "reset_error" else (
                f"{each.name}, {each.shape}, element \"{each.element_name}\"")
            hits.append(f"{each.path}:{each.lines.of(field)}: {what}")
        for setting in each.settings:
            of_setting = {setting.get, setting.set, setting.key, setting.older_key,
                          str(setting.guard), str(setting.set_guard)}
            names |= of_setting
            if name in of_setting:
                note = f": {setting.note}" if setting.note else ""
                hits.append(f"{setting.path}:{setting.line}: {each.name}, key \"{setting.key}\""
                            f"{note}")
    if hits and name not in ("", "0"):
        print("\n".join(hits))
        return 0
    near = difflib.get_close_matches(name, sorted(names - {"", "0"}), 3, 0.75)
    print(f"No class, key, accessor or error number of the schema is '{name}'."
          + (f" Near it: {', '.join(near)}." if near else ""), file=sys.stderr)
    return 1


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--schema", type=Path, default=SCHEMA,
                        help="folder with one folder for each family")
    parser.add_argument("--enumerations", type=Path, default=SETTINGS / "Enumerations.h",
                        help="header that declares the enumerated types")
    parser.add_argument("--output", type=Path, help="folder to write to; without it, only check")
    parser.add_argument("--stamp", type=Path, help="file to touch at the end")
    parser.add_argument("--find", metavar="NAME",
                        help="print where a class, key, accessor or error number is defined, "
                             "and write nothing")
    parser.add_argument("--next-numbers", action="store_true",
                        help="print the next free error numbers, and write nothing")
    arguments = parser.parse_args()

    if arguments.next_numbers:
        free = next_numbers(arguments.schema)
        for what, number_, own in zip(("ResetPos: reset_error", "accessors: guard, set_guard"),
                                      free, (RESET_NUMBERS, ACCESSOR_NUMBERS)):
            print(f"{what} = {number_ if number_ in own else 'none is left'}")
        return 0 if all(map(range.__contains__, (RESET_NUMBERS, ACCESSOR_NUMBERS), free)) else 1

    problems = Problems()
    classes = read_schema(arguments.schema, read_enumerations(arguments.enumerations), problems)
    if problems.lines:
        print("\n".join(problems.told()), file=sys.stderr)
        return 1
    if arguments.find is not None:
        return find(classes, arguments.find)
    if arguments.output:
        folder = arguments.output / "kpx" / "settings"
        for each in classes:
            write_if_changed(folder / f"{each.name}.h", header_of(each))
            write_if_changed(folder / f"{each.name}.cpp", source_of(each))
        write_if_changed(folder / "CatalogueTable.cpp", catalogue_of(classes))
        write_if_changed(folder / "AllSettings.h", umbrella_of(classes))
        write_if_changed(folder / "SettingsNames.h", names_of(classes))
    if arguments.stamp:
        arguments.stamp.touch()
    return 0


if __name__ == "__main__":
    sys.exit(main())
