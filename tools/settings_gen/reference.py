#!/usr/bin/env python3
"""Writes the settings reference from the schema: one Markdown page for each family, and
index.html, one page with a search over all settings that needs neither server nor network.

A schema or text table that is not perfect gives no output: every problem is printed with its file
and line.
"""

import argparse
import html
import json
import re
import sys
from dataclasses import dataclass, field
from pathlib import Path

from schema import PROJECT, Problems, read_enumerations, read_schema

sys.path.insert(0, str(PROJECT / "tools" / "texts_gen"))
from texts_gen import read_table  # noqa: E402

HERE = Path(__file__).resolve().parent
NONE = "–"
# The columns of each table, and what a reader has to know of them.
COLUMNS = {
    "key": "The name of the setting in stored files. A click copies a name.",
    "getter": "The function that reads it; none where the cell is empty.",
    "setter": "The function that writes it, and creates the column where it is missing.",
    "type": "The C++ type of the accessors and, behind the point, the type code that stored files "
            "carry: long · 1 is a long under code 1. Codes: 1 integer, 3 real, 4 text, 6 and 7 "
            "flags (0 or 1). A flag is an int; enum… is an enumerated type.",
    "decimals": "How many a real is stored with; all (-1): 15 significant digits.",
    "default": f"What a new object has; {NONE}: nothing, the first call of the setter creates it.",
    "caption": "The name for people, as it is stored. A number alone is stored as a number: the "
               "number of a text, and the German text stands beside it. GetMLT(n): text n is "
               "looked up when the column is created, and the text itself is stored.",
    "group": "The heading under which dialogs show it; numbers as with the caption.",
    "when missing": "What the getter answers when the object has no such column.",
    "errors": "Numbers under which a failing getter (get) or setter (set) is reported.",
}
HUMP = re.compile(r"(?<=[^\W\d_A-ZÄÖÜ])(?=[A-ZÄÖÜ])|(?<=[A-ZÄÖÜ])(?=[A-ZÄÖÜ][a-zäöüß])"
                  r"|(?<=[0-9])(?=[A-Z])|(?<=[_./:-])(?=\w)")


@dataclass
class Label:
    """A caption or group: what the schema says, and the German text where it is a number."""
    stored: str = ""
    german: str = ""


@dataclass
class Entry:
    """What the reference tells of one setting, or of one column of a table or its header."""
    anchor: str
    key: str
    getter: str = ""
    setter: str = ""
    type: str = ""
    decimals: str = ""
    default: str = NONE
    caption: Label | None = None
    group: Label | None = None
    missing: str = ""
    errors: list = field(default_factory=list)
    older_key: str = ""
    note: str = ""


@dataclass
class Page:
    """One class: its entries, and its orders where the table does not show them already."""
    each: object
    entries: list
    reset: list | None
    construction: list | None


def family_title(family):
    return family.replace("_", " and ").capitalize()


def shown_value(value):
    """A value as in a program: quotes show where a text ends, escapes what cannot be seen."""
    return json.dumps(value, ensure_ascii=False) if isinstance(value, str) else str(value)


def label(text, german):
    if text is None:
        return None
    number = text.id or (int(text.literal) if re.fullmatch(r"[0-9]+", text.literal) else 0)
    if text.id:
        stored = f"GetMLT({text.id})"
    else:
        plain = text.literal and text.literal == text.literal.strip()
        stored = text.literal if plain else shown_value(text.literal)
    return Label(stored, german.get(number, ""))


class Anchors:
    """Link targets of one class: the key where it is fit for one, and never the same twice."""

    def __init__(self, name):
        self.name = name
        self.used = set()

    def of(self, key, accessor=""):
        wanted = f"{self.name}." + (re.sub(r"[^A-Za-z0-9_]+", "-", key).strip("-") or "key")
        if accessor:
            wanted += f".{accessor}"
        anchor, count = wanted, 1
        while anchor in self.used:
            count += 1
            anchor = f"{wanted}-{count}"
        self.used.add(anchor)
        return anchor


def entry_of(setting, defaults, anchors, german):
    further = setting.get or setting.set if setting.shares_key else ""
    entry = Entry(anchors.of(setting.key, further), setting.key, setting.get, setting.set)
    entry.type = f"{setting.value} · {setting.code}"
    if setting.decimals is not None:
        entry.decimals = "all (-1)" if setting.decimals == -1 else str(setting.decimals)
    if setting.key in defaults:
        entry.default = shown_value(defaults[setting.key])
    # A getter alone never creates the column, so it has no caption and group to give it.
    if setting.set or not setting.get:
        entry.caption = label(setting.caption, german)
        entry.group = label(setting.group, german)
    if setting.get:
        zero = {"real": "0.0", "text": '""'}.get(setting.kind, "0")
        entry.missing = zero if setting.missing is None else str(setting.missing)
    entry.errors = [f"{number} {what}" for number, what in
                    ((setting.guard, "get"), (setting.set_guard, "set")) if number]
    entry.older_key = setting.older_key
    entry.note = setting.note
    return entry


def column_of(column, anchors, german):
    return Entry(anchors.of(column.key), column.key, type=f"column · {column.code}", default="",
                 caption=label(column.caption, german), group=label(column.group, german))


def page_of(each, german):
    anchors = Anchors(each.name)
    defaults = {default.setting.key: default.to for default in each.constructor}
    entries = [entry_of(setting, defaults, anchors, german) for setting in each.settings]
    entries += [column_of(column, anchors, german) for column in each.columns]
    table = list(dict.fromkeys(entry.key for entry in entries))
    constructed = list(dict.fromkeys(default.setting.key for default in each.constructor))
    in_table_order = [key for key in table if key in defaults]
    return Page(each, entries, None if each.reset == table else each.reset,
                None if constructed == in_table_order else constructed)


def facts(page):
    """Sentences about a class as (text, code) pairs; either may be empty."""
    each = page.each
    out = [("element", each.element_name), ("schema", each.path.as_posix())]
    if each.base != "CFGConfig":
        out.append(("derives from", each.base))
    if each.row:
        out.append(("its rows are of class", each.row))
    if each.reset_error:
        out.append(("a failing ResetPos reports", str(each.reset_error)))
    if each.reset is not None and page.reset is None:
        out.append(("ResetPos keeps the order of the table", ""))
    return out


def orders(page):
    return [(title, keys) for title, keys in (("Order of ResetPos", page.reset),
                                              ("Order of construction", page.construction))
            if keys is not None]


# --- Markdown ------------------------------------------------------------------------------------

def markdown_text(text):
    text = re.sub(r"([\\`*_{}\[\]<>#|~&])", r"\\\1", text)
    return text.replace("\n", " ")


def markdown_code(text):
    """A code span; a run of back quotes in it needs a longer one around it."""
    if not text:
        return ""
    fence = "`" * (1 + max(map(len, re.findall("`+", text)), default=0))
    space = " " if "`" in text else ""
    return fence + space + text.replace("|", "\\|") + space + fence


def markdown_label(each):
    if each is None:
        return ""
    return markdown_text(each.stored + (f" – {each.german}" if each.german else ""))


def markdown_row(entry):
    key = markdown_code(entry.key)
    if entry.older_key:
        key += f"<br>older: {markdown_code(entry.older_key)}"
    if entry.note:
        key += f"<br>note: {markdown_text(entry.note)}"
    default = entry.default if entry.default == NONE else markdown_code(entry.default)
    cells = [key, markdown_code(entry.getter), markdown_code(entry.setter), entry.type,
             entry.decimals, default, markdown_label(entry.caption), markdown_label(entry.group),
             markdown_code(entry.missing), ", ".join(entry.errors)]
    return f"| {' | '.join(cells)} |\n"


def markdown_of(family, families, pages):
    out = [f"# Settings: {family_title(family)}\n\n",
           "[Search all settings](index.html). Families: ",
           " · ".join(f"[{family_title(each)}]({each}.md)" if each != family
                      else family_title(each) for each in families), ".\n\n",
           *(f"- [{page.each.name}](#{page.each.name}) ({len(page.entries)})\n" for page in pages),
           "\nWhat the columns of the tables mean:\n\n",
           *(f"- **{column}**: {markdown_text(meaning)}\n" for column, meaning in COLUMNS.items())]
    for page in pages:
        out.append(f'\n<a id="{page.each.name}"></a>\n\n## {page.each.name}\n\n'
                   f"{markdown_text(page.each.about)}\n\n")
        out.extend(f"- {text}{': ' if code else ''}{markdown_code(code)}\n"
                   for text, code in facts(page))
        if page.entries:
            out.append(f"\n| {' | '.join(COLUMNS)} |\n|{'---|' * len(COLUMNS)}\n")
            out.extend(map(markdown_row, page.entries))
        for title, keys in orders(page):
            out.append(f"\n{title}: {', '.join(map(markdown_code, keys)) or 'empty'}.\n")
    return "".join(out)


# --- HTML ----------------------------------------------------------------------------------------

def code(text, attributes=""):
    return f"<code{attributes}>{html.escape(text)}</code>" if text else ""


def breakable(text):
    """A name that a narrow column breaks at its humps; what is copied and searched stays whole."""
    return "<wbr>".join(map(html.escape, HUMP.split(text)))


def name(text):
    """A name that a click copies."""
    return f'<code class="name" tabindex="-1">{breakable(text)}</code>' if text else ""


def html_label(each):
    if each is None:
        return ""
    german = f" <i>{html.escape(each.german)}</i>" if each.german else ""
    return html.escape(each.stored) + german


def html_row(entry):
    link = html.escape(entry.anchor)
    key = (f'<a class="link" href="#{link}" title="Link to this setting">#</a><wbr>'
           f"{name(entry.key)}")
    if entry.older_key:
        key += f" <small>older: {name(entry.older_key)}</small>"
    if entry.note:
        key += f' <small class="note">{html.escape(entry.note)}</small>'
    default = NONE if entry.default == NONE else code(entry.default)
    errors = "<br>".join(map(html.escape, entry.errors))
    cells = [key, name(entry.getter), name(entry.setter), html.escape(entry.type), entry.decimals,
             default, html_label(entry.caption), html_label(entry.group), code(entry.missing),
             errors]
    return f'<tr id="{link}">' + "".join(f"\n<td>{cell}</td>" for cell in cells) + "</tr>\n"


def html_class(page):
    each = page.each
    about = " · ".join(html.escape(text) + (" " if text and value else "")
                       + (f'<a href="#{value}">{code(value)}</a>' if value and value == each.row
                          else code(value)) for text, value in facts(page))
    out = [f'<section id="{each.name}" data-family="{html.escape(each.family)}" '
           f'style="--rows: {len(page.entries)}">\n<header>\n'
           f'<h2><a class="link" href="#{each.name}" title="Link to this class">#</a>'
           f"{name(each.name)}</h2>\n<p>{html.escape(each.about)}</p>\n"
           f'<p class="facts">{about}</p>\n</header>\n']
    if page.entries:
        head = "".join(f"<th>{column}</th>" for column in COLUMNS)
        out.append(f"<table>\n<thead><tr>{head}</tr></thead>\n<tbody>\n")
        out.extend(map(html_row, page.entries))
        out.append("</tbody>\n</table>\n")
    for title, keys in orders(page):
        out.append(f"<details><summary>{title}</summary>\n<ol>"
                   + "".join(f"<li><code>{breakable(key)}</code></li>" for key in keys)
                   + "</ol></details>\n")
    out.append("</section>\n")
    return "".join(out)


def html_of(families):
    def contents(family, pages):
        links = "".join(f'<li><a href="#{page.each.name}">{breakable(page.each.name)}</a> '
                        f"<small>{len(page.entries)}</small></li>\n" for page in pages)
        return (f'<h3>{html.escape(family_title(family))}</h3>\n'
                f'<p class="page"><a href="{html.escape(family)}.md">as Markdown</a></p>\n'
                f"<ul>\n{links}</ul>\n")

    pages = [page for each in families.values() for page in each]
    parts = {
        "style": (HERE / "reference.css").read_text(encoding="utf-8"),
        "script": (HERE / "reference.js").read_text(encoding="utf-8"),
        "total": str(sum(len(page.entries) for page in pages)),
        "noun": "settings and table columns" if any(page.each.columns for page in pages)
                else "settings",
        "options": "".join(f'<option value="{html.escape(family)}">'
                           f"{html.escape(family_title(family))}</option>\n"
                           for family in families),
        "legend": "".join(f"<dt>{column}</dt><dd>{html.escape(meaning)}</dd>\n"
                          for column, meaning in COLUMNS.items()),
        "contents": "".join(contents(*each) for each in families.items()),
        "classes": "".join(map(html_class, pages)),
    }
    frame = (HERE / "reference.html").read_text(encoding="utf-8")
    return re.sub(r"\{\{(\w+)\}\}", lambda match: parts[match[1]], frame)


# --- all pages -----------------------------------------------------------------------------------

def write_reference(classes, german, folder):
    """Writes all pages into `folder` and answers how many entries they show."""
    families = {}
    for each in classes:
        families.setdefault(each.family, []).append(page_of(each, german))
    families = dict(sorted(families.items()))
    folder.mkdir(parents=True, exist_ok=True)
    for family, pages in families.items():
        (folder / f"{family}.md").write_text(markdown_of(family, families, pages),
                                             encoding="utf-8")
    (folder / "index.html").write_text(html_of(families), encoding="utf-8")
    return sum(len(page.entries) for pages in families.values() for page in pages)


def main():
    settings = PROJECT / "kpx" / "settings"
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--schema", type=Path, default=settings / "schema",
                        help="folder with one folder for each family")
    parser.add_argument("--enumerations", type=Path, default=settings / "Enumerations.h",
                        help="header that declares the enumerated types")
    parser.add_argument("--texts", type=Path,
                        default=PROJECT / "kpx" / "support" / "texts" / "deu.tsv",
                        help="table of the German texts")
    parser.add_argument("--output", type=Path, required=True, help="folder to write to")
    arguments = parser.parse_args()

    problems = Problems()
    classes = read_schema(arguments.schema, read_enumerations(arguments.enumerations), problems)
    texts, text_problems = read_table(arguments.texts)
    if problems.lines or text_problems:
        print("\n".join(problems.told() + text_problems), file=sys.stderr)
        return 1
    total = write_reference(classes, dict(texts), arguments.output)
    print(f"{total} settings and table columns of {len(classes)} classes: "
          f"{arguments.output / 'index.html'}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
