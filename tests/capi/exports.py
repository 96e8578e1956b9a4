"""What a built library exports, and what its headers declare."""

import pathlib
import re
import shutil
import subprocess

STANDARD_NAMES = (
    (r"std::__cxx11::", "std::"),
    (r"\[abi:\w+\]", ""),
    (r", std::(?:char_traits|allocator|less|equal_to|hash|default_delete)<(?:[^<>]|<[^<>]*>)*>", ""),
    (r"std::basic_string<char16_t ?>", "std::u16string"),
    (r"std::basic_string<wchar_t ?>", "std::wstring"),
    (r"std::basic_string<char ?>", "std::string"),
    (r"std::basic_string_view<char16_t ?>", "std::u16string_view"),
    (r"std::basic_string_view<wchar_t ?>", "std::wstring_view"),
    (r"std::basic_string_view<char ?>", "std::string_view"),
    # Which of the types has 64 bits depends on the system.
    (r"\bunsigned long(?: long)?\b", "uint64"),
    (r"\blong(?: long)?\b", "int64"),
    (r"\b(\d+)u?ll?\b", r"\1"),
    (r"__va_list_tag\*|(?<=, )char\*(?=\)$)", "va_list"),
    (r"_IO_FILE|_iobuf", "FILE"),
    (r"std::basic_ostream<char ?>", "std::ostream"),
    (r" >", ">"),
    (r"kpx::", ""),
)


def without_nested(text, opening, closing):
    """The text without what stands in brackets."""
    kept, depth = [], 0
    for unit in text:
        depth += unit == opening
        if depth == 0:
            kept.append(unit)
        depth -= unit == closing
    return "".join(kept)


def symbols(tool, library, with_inline=True):
    """The exported symbols as the compiler writes them in C++; `tool` is nm, or objdump for a DLL.
    Which inline functions are among them depends on the compiler; of a DLL they cannot be told."""
    if "objdump" in pathlib.Path(tool).name:
        listing = subprocess.run([tool, "-p", library], check=True, capture_output=True, text=True)
        names = listing.stdout.split("[Ordinal/Name Pointer] Table")[1].split("\n\n")[0]
        names = "".join(name + "\n" for name in re.findall(r"\] (?:\+base\[[^\]]*\] +\w+ )?(\S+)$",
                                                         names, re.MULTILINE))
        filt = shutil.which(tool.replace("objdump", "c++filt")) or "c++filt"
        # C names have no underscore in front on 64-bit Windows.
        return subprocess.run([filt], input=names, check=True, capture_output=True,
                              text=True).stdout.splitlines()
    listing = subprocess.run([tool, "-DC", "--defined-only", library], check=True,
                             capture_output=True, text=True)
    return [line[19:] for line in listing.stdout.splitlines() if with_inline or line[17] != "W"]


def name_of(symbol):
    """Its name without parameters, result and the namespace; None for tables of classes."""
    if re.match(r"(vtable|typeinfo|VTT|non-virtual|virtual|guard variable) ?", symbol):
        return None
    symbol = re.sub(r"\[abi:\w+\]", "", symbol).replace("operator()", "operator_call")
    # The signs of operators are no brackets.
    sign = re.search(r"operator(<<|>>|<=>|<=|>=|<|>|->)", symbol)
    if sign:
        symbol = symbol.replace(sign[0], "operator_sign", 1)
    name = without_nested(without_nested(symbol, "<", ">"), "(", ")").removesuffix(" const")
    before, is_operator, after = name.partition("operator")
    name = (before.split(" ")[-1] + is_operator + after).removeprefix("kpx::")
    return name.replace("operator_sign", sign[0]) if sign else name


def written(symbol):
    """A symbol as it stands in the list: without what is the same for all of them."""
    for pattern, name in STANDARD_NAMES:
        symbol = re.sub(pattern, name, symbol)
    return symbol


def public_headers(source):
    for header in sorted(pathlib.Path(source, "kpx").rglob("*.h")):
        if not {"internal", "posix", "windows"} & set(header.parts):
            yield header


def declared(header):
    """Of each function and class of a header whether all of its declarations are exempt: noexcept,
    or nothing that other modules can call."""
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
        nested = re.match(r"  (?:class|struct) (?:KPX_LOCAL )?(\w+);", line)
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


def settings_classes(generated):
    return {header.stem for header in pathlib.Path(generated, "kpx", "settings").glob("*.h")}
