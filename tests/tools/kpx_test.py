#!/usr/bin/env python3
"""Runs kpx as its users do and checks output, exit codes and the files it leaves."""

import csv
import io
import json
import os
import subprocess
import sys
import tempfile
import time
import unittest
import unittest.mock
import xml.etree.ElementTree
import xml.parsers.expat
import zipfile
from pathlib import Path

KPX = None


def kpx(*arguments, stdin=b""):
    done = subprocess.run([KPX, *map(str, arguments)], input=stdin, capture_output=True,
                          timeout=120)
    return done.returncode, done.stdout.decode(), done.stderr.decode()


def shape_by_expat(content):
    """Elements, written attributes and depth as another parser counts them."""
    count = {"elements": 0, "attributes": 0, "depth": 0, "deepest": 0}

    def start(_, attributes):
        count["elements"] += 1
        count["attributes"] += len(attributes)
        count["depth"] += 1
        count["deepest"] = max(count["deepest"], count["depth"])

    def end(_):
        count["depth"] -= 1

    parser = xml.parsers.expat.ParserCreate()
    parser.specified_attributes = True
    parser.StartElementHandler = start
    parser.EndElementHandler = end
    parser.Parse(content, True)
    return count["elements"], count["attributes"], count["deepest"]


class ToolTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.file = Path(self.folder.name) / "general.xml"
        code, out, _ = kpx("config", "defaults", "CFGGeneralSettings")
        self.assertEqual(code, 0)
        self.file.write_bytes(out.encode())

    def write(self, name, content):
        path = Path(self.folder.name) / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def answers(self, expected, *arguments, stdin=b""):
        """Runs kpx, checks the exit code and that data and messages do not mix."""
        code, out, err = kpx(*arguments, stdin=stdin)
        self.assertEqual(code, expected, f"{arguments}\n{out}\n{err}")
        if expected >= 2:
            self.assertTrue(err.strip(), "a failure without a message")
        return out, err


class ConfigTest(ToolTest):
    def test_set_changes_one_value_and_no_other_byte(self):
        before = self.file.read_bytes()
        self.answers(0, "config", "set", self.file, "FDS_Tol_Z", "0.035")
        after = self.file.read_bytes()
        self.assertEqual(len(before.split(b"\n")), len(after.split(b"\n")))
        changed = [(a, b) for a, b in zip(before.split(b"\n"), after.split(b"\n")) if a != b]
        self.assertEqual(len(changed), 1)
        self.assertIn(b'Value="0.020"', changed[0][0])
        self.assertEqual(changed[0][0].replace(b'"0.020"', b'"0.035"'), changed[0][1])
        out, _ = self.answers(0, "config", "get", self.file, "FDS_Tol_Z")
        self.assertEqual(out, "0.035\n")

    def test_every_encoding_survives_a_change(self):
        text = self.file.read_text()
        for declared, codec, mark in (("UTF-8", "utf-8", b""), ("UTF-8", "utf-8", b"\xef\xbb\xbf"),
                                      ("UTF-16", "utf-16-le", b"\xff\xfe"),
                                      ("UTF-16", "utf-16-be", b"\xfe\xff"),
                                      ("ISO-8859-1", "latin-1", b""),
                                      ("windows-1252", "cp1252", b"")):
            with self.subTest(declared=declared, codec=codec, mark=mark):
                document = (f'<?xml version="1.0" encoding="{declared}"?>\r\n'
                            f"<!-- Größe -->{text}\r\n\r\n")
                path = self.write("encoded.xml", mark + document.encode(codec))
                self.answers(0, "config", "set", path, "NIV_LG", "7")
                number = document.index('Name="NIV_LG"')
                value = document.index('Value="', number) + 7
                expected = document[:value] + "7" + document[document.index('"', value):]
                self.assertEqual(path.read_bytes(), mark + expected.encode(codec))

    def test_refused_values_and_keys_leave_the_file_alone(self):
        before = self.file.read_bytes()
        for code, key, value, mentioned in (
                (2, "CA2T_Tol_XY", "abc", ("CA2T_Tol_XY", "abc")),
                (2, "CA2T_Tol_XY", "1.234,56", ("CA2T_Tol_XY", "1.234,56")),
                (2, "NIV_LG", "1.5", ("NIV_LG", "1.5")),
                (2, "NIV_LG", "99999999999", ("NIV_LG", "99999999999")),
                (2, "NIV_LG", "", ("NIV_LG",)),
                (1, "NoSuchKey", "1", ("NoSuchKey",))):
            with self.subTest(key=key, value=value):
                _, err = self.answers(code, "config", "set", self.file, key, value)
                for word in mentioned:
                    self.assertIn(word, err)
                self.assertEqual(self.file.read_bytes(), before)

    def test_rounding_is_told(self):
        _, err = self.answers(0, "config", "set", self.file, "CA2T_Tol_XY", "0.0254")
        self.assertIn("0.025", err)
        _, err = self.answers(0, "config", "set", self.file, "CA2T_Tol_XY", "0.03")
        self.assertEqual(err, "")

    def test_dry_run_and_backup(self):
        before = self.file.read_bytes()
        self.answers(0, "config", "set", self.file, "NIV_LG", "7", "--dry-run")
        self.assertEqual(self.file.read_bytes(), before)
        self.answers(0, "config", "set", self.file, "NIV_LG", "7", "--backup")
        self.assertEqual(Path(str(self.file) + ".bak").read_bytes(), before)
        self.assertNotEqual(self.file.read_bytes(), before)

    def test_a_backup_is_never_overwritten(self):
        contents = []
        for value in "789":
            contents.append(self.file.read_bytes())
            self.answers(0, "config", "set", self.file, "NIV_LG", value, "--backup")
        for name, content in zip((".bak", ".bak2", ".bak3"), contents):
            self.assertEqual(Path(str(self.file) + name).read_bytes(), content)

    def test_a_key_that_is_not_there_is_explained(self):
        text = self.file.read_text().replace('Name="NIV_LG"', 'Name="NIV_LZ"')
        path = self.write("doubled.xml", text)
        for verb in (("get",), ("set",)):
            value = ("7",) if verb == ("set",) else ()
            for key, words in (("NIV_LG", ("is a setting of CFGGeneralSettings", "--add")),
                               ("niv_rgh", ("did you mean 'NIV_RgH'",)),
                               ("NIV_RgHH", ("did you mean 'NIV_RgH'",)),
                               ("Colour", ("nor a setting of CFGGeneralSettings",))):
                with self.subTest(verb=verb, key=key):
                    _, err = self.answers(1, "config", *verb, path, key, *value)
                    for word in words:
                        self.assertIn(word, err)
        _, err = self.answers(2, "config", "set", path, "NIV_LZ", "7")
        self.assertRegex(err, r"\(--index 1, lines \d+, \d+\)")
        self.assertIn("more than once", self.answers(0, "config", "get", path, "NIV_LZ")[1])
        strange = self.write("strange.xml", text.replace("CFGConfigCFGGeneral", "CFGConfigStrange"))
        _, err = self.answers(2, "config", "set", strange, "NIV_RgH", "7")
        self.assertIn("CFGConfigStrangeSettings", err)
        # Nothing was compared, so it is not equal.
        self.answers(1, "config", "diff", strange)

    def test_show_tells_a_line_break_from_a_backslash(self):
        header = kpx("config", "defaults", "CFGHeader")[1].encode()
        shown = [self.answers(0, "config", "show", "-", "--changed",
                              stdin=header.replace(b'Value=""', value, 1))[0]
                 for value in (b'Value="a\nb"', b'Value="a\\nb"')]
        self.assertIn("a\\nb", shown[0])
        self.assertIn("a\\\\nb", shown[1])
        self.assertEqual(self.answers(0, "config", "show", "CFGHeader", "--changed")[0], "")

    def test_diff_lists_exactly_what_was_changed(self):
        self.answers(0, "config", "diff", self.file)
        self.answers(0, "config", "set", self.file, "FDS_Tol_Z", "0.035")
        out, _ = self.answers(1, "config", "diff", self.file)
        self.assertEqual([line for line in out.splitlines() if "FDS_Tol_Z" in line],
                         out.splitlines()[-1:])
        out, _ = self.answers(1, "config", "diff", self.file, "--json")
        self.assertIn("FDS_Tol_Z", out)
        json.loads(out)
        # Captions and groups are no values.
        relabelled = self.write("relabelled.xml", self.file.read_text().replace(
            'Caption="Toleranz_XY"', 'Caption="Tolerance"'))
        self.answers(0, "config", "diff", self.file, relabelled)

    def test_show_changed_and_unchanged(self):
        self.answers(0, "config", "set", self.file, "NIV_LG", "7")
        out, _ = self.answers(0, "config", "show", self.file, "--changed")
        self.assertIn("NIV_LG", out)
        self.assertNotIn("NIV_LZ", out)
        self.assertEqual(len(json.loads(self.answers(
            0, "config", "show", "CFGGeneralSettings", "--json")[0])[0]["settings"]), 220)

    def test_validate_names_each_finding(self):
        self.answers(0, "config", "validate", self.file)
        text = self.file.read_text()

        def with_value(key, value, source=text):
            begin = source.index('Value="', source.index(f'Name="{key}"')) + 7
            return source[:begin] + value + source[source.index('"', begin):]

        duplicated = text.replace('Name="KT_LG"', 'Name="KT_LZ"')
        for content, key in ((text.replace('Name="KT_LG"', 'Name="Stranger"'), "Stranger"),
                             (text.replace('Name="KT_LG"', 'Name="Stranger"'), "KT_LG"),
                             (with_value("FDS_Tol_Z", "1.234,56"), "FDS_Tol_Z"),
                             (with_value("FDS_Tol_Z", "wide"), "FDS_Tol_Z"),
                             (with_value("NIV_LG", "4\n4"), "NIV_LG"), (duplicated, "KT_LZ")):
            with self.subTest(key=key):
                out, _ = self.answers(1, "config", "validate", self.write("odd.xml", content))
                self.assertIn(key, out)

    def test_several_configurations_below_one_root(self):
        text = self.file.read_text()
        header = kpx("config", "defaults", "CFGHeader")[1]
        both = self.write("both.xml", f"<Project>{text}{header}</Project>")
        self.answers(0, "config", "set", both, "Description", "Netz & <Punkt>")
        out, _ = self.answers(0, "config", "get", both, "Description")
        self.assertEqual(out, "Netz & <Punkt>\n")
        twice = self.write("twice.xml", f"<Project>{text}{text}</Project>")
        before = twice.read_bytes()
        _, err = self.answers(2, "config", "set", twice, "NIV_LG", "7")
        self.assertIn("CFGGeneralSettings", err)
        self.assertEqual(twice.read_bytes(), before)

    def test_standard_input(self):
        data = self.file.read_bytes()
        out, _ = self.answers(0, "config", "get", "-", "CA2T_Tol_XY", stdin=data)
        self.assertEqual(out, "0.020\n")
        out, _ = self.answers(0, "config", "set", "-", "CA2T_Tol_XY", "0.5", stdin=data)
        self.assertEqual(kpx("config", "get", "-", "CA2T_Tol_XY", stdin=out.encode())[1], "0.500\n")


class SelectionTest(ToolTest):
    """Files with several configurations: every verb lets a person say which is meant."""

    def setUp(self):
        super().setUp()
        header = kpx("config", "defaults", "CFGHeader")[1].split("\n", 1)[1]
        stranger = ('<CFGConfigStrange><CFGClass><CFGCol Name="Class"><CFGValue Value="x"/>'
                    "</CFGCol></CFGClass></CFGConfigStrange>\r\n")
        other = header.replace('Name="Description"', 'Name="Unheard"').replace(
            'Value=""', 'Value="second"', 1)
        self.several = self.write("several.xml", f"<Project>\r\n{header}{stranger}{other}</Project>\r\n")

    def test_get_and_set_need_to_know_which(self):
        before = self.several.read_bytes()
        for verb in (("get",), ("set", "new")):
            _, err = self.answers(2, "config", verb[0], self.several, "Class", *verb[1:])
            for place in ("CFGHeader (--index 1, line 4)", "CFGHeader (--index 3, line 15)"):
                self.assertIn(place, err)
        self.assertEqual(self.several.read_bytes(), before)
        out, _ = self.answers(0, "config", "get", self.several, "Class", "--index", 3)
        self.assertEqual(out, "second\n")
        out, _ = self.answers(0, "config", "get", self.several, "Class", "--class",
                              "CFGConfigStrange")
        self.assertEqual(out, "x\n")
        self.answers(0, "config", "set", self.several, "Class", "new", "--index", 3)
        self.assertEqual(self.several.read_bytes(), before.replace(b"second", b"new"))

    def test_show_counts_as_index_does(self):
        shown = json.loads(self.answers(0, "config", "show", self.several, "--json")[0])
        self.assertEqual([(each["class"], each["index"], each["line"]) for each in shown],
                         [("CFGHeader", 1, 2), ("CFGConfigStrange", 2, 12), ("CFGHeader", 3, 13)])
        out, _ = self.answers(0, "config", "show", self.several, "--class", "CFGHeader")
        self.assertIn("--index 3", out)
        self.assertNotIn("CFGConfigStrange", out)

    def test_diff_and_validate_of_one(self):
        self.answers(0, "config", "validate", self.several, "--index", 1)
        out, _ = self.answers(1, "config", "validate", self.several, "--class", "CFGHeader")
        self.assertEqual([line.split(":")[1] for line in out.splitlines()], ["13", "18"], out)
        self.answers(0, "config", "diff", self.several, "CFGHeader", "--index", 1)
        out, _ = self.answers(1, "config", "diff", self.several, self.several, "--index", 1,
                              "--other-index", 3)
        self.assertIn("CFGHeader (1): Class: \"\" -> second", out)

    def test_what_is_not_there_is_named(self):
        for arguments, mentioned in ((("--index", 4), "holds 3 configurations"),
                                     (("--class", "CFGConfigPolar"), "CFGConfigStrange"),
                                     (("--class", "CFGHeader", "--index", 2), "not CFGHeader")):
            with self.subTest(arguments=arguments):
                _, err = self.answers(1, "config", "show", self.several, *arguments)
                self.assertIn(mentioned, err)
        self.answers(2, "config", "show", self.several, "--index", 0)

    def test_rows_and_tables_are_no_configurations(self):
        for name in ("CFGConfigDXFConvertLineRow", "CFGConfigDXFConvertLineTable"):
            for verb in (("defaults", name), ("show", name), ("get", name, "X"), ("validate", name),
                         ("diff", name), ("diff", self.several, name),
                         ("convert", name, "--to", "json"), ("show", self.several, "--class", name),
                         ("set", self.several, "Class", "1", "--class", name)):
                with self.subTest(verb=verb):
                    _, err = self.answers(2, "config", *verb)
                    self.assertIn("does not travel through XML", err)

    def test_add_writes_a_missing_key_only_when_asked(self):
        before = self.several.read_bytes()
        arguments = ("config", "set", self.several, "Description", "d", "--index", 3)
        self.assertIn("--add", self.answers(1, *arguments)[1])
        self.assertEqual(self.several.read_bytes(), before)
        self.answers(0, *arguments, "--add")
        added = self.several.read_bytes()
        self.assertIn(b'Caption="Beschreibung" Category="64"', added[len(before) - 60:])
        self.answers(0, *arguments, "--add")
        self.assertEqual(self.several.read_bytes(), added)
        self.answers(1, "config", "set", self.several, "Klasse", "d", "--index", 3, "--add")


class ConvertTest(ToolTest):
    HEADER = (' ObjectID="7" UserChangedID="-3" UserCreatedID="2147483647" '
              'changed="05.03.2021-08:33:34" created="31.12.1999-23:59:59" TransID="9"')
    # As the suite writes it, with nothing at its default.
    FULL = (f'<CFGConfigStrange{HEADER} Name="N &amp; n" ClassID="5">\r\n'
            f'<CFGClass{HEADER} Name="Else">\r\n'
            f'<CFGCol{HEADER} ClassID="1" Type="4" Name="K&quot;=1" Caption="c" Category="d" '
            'Length="1" Prec="2" Nullable="1" Empty="1" Default="de" Unit="3">\r\n'
            f'<CFGValue{HEADER} Value="a\r\nb\nc\td &quot;q&quot; &apos;\\ \u00e4 \U0001f600 " '
            'ColID="1" RowID="2" Data="3"/>\r\n'
            "</CFGCol>\r\n</CFGClass>\r\n</CFGConfigStrange>")

    def to_json(self, path, *arguments):
        out, _ = self.answers(0, "config", "convert", path, "--to", "json", *arguments)
        return out

    def back(self, text):
        done = subprocess.run([KPX, "config", "convert", "-", "--to", "xml"], input=text.encode(),
                              capture_output=True, timeout=60)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout

    def test_json_gives_back_the_same_bytes(self):
        general = self.file.read_bytes().decode()
        body = general.split("\n", 1)[1]
        documents = {
            "defaults": general, "without declaration": body, "everything set": self.FULL,
            "several": f"<Project a='1'>\n<!-- \u00fc --><x>&#8364;</x>{body}{self.FULL}\n\n{self.FULL}"
                       "<y/></Project>\n",
        }
        for name, document in documents.items():
            for codec, mark in (("utf-8", b""), ("utf-8", b"\xef\xbb\xbf"),
                                ("utf-16-le", b"\xff\xfe"), ("utf-16-be", b"\xfe\xff")):
                with self.subTest(document=name, codec=codec, mark=mark):
                    content = mark + document.encode(codec)
                    text = self.to_json(self.write("some.xml", content))
                    self.assertEqual(self.back(text), content)
        latin = '<?xml version="1.0" encoding="ISO-8859-1"?>\n' + self.FULL.replace(
            "\U0001f600", "&#128512;")
        path = self.write("latin.xml", latin.encode("latin-1"))
        self.assertEqual(self.back(self.to_json(path)), path.read_bytes())

    def test_every_class_survives(self):
        for entry in json.loads(kpx("classes", "list", "--json")[1]):
            code, out, _ = kpx("config", "defaults", entry["class"])
            if code == 0:
                with self.subTest(name=entry["class"]):
                    text = self.to_json(self.write("class.xml", out))
                    self.assertEqual(self.back(text).decode(), out)

    def test_odd_files_keep_every_attribute(self):
        odd = ('<p><CFGConfigX ClassID="007" Name=""><CFGClass>\n <CFGCol Type="" Name="k"/>'
               '<CFGCol Name="k" changed="now" Unit="99999999999"><CFGValue/></CFGCol>'
               '<CFGCol Type="1"><CFGValue Value="\ud83d" Data="-0"/></CFGCol></CFGClass></CFGConfigX>'
               "<CFGConfigCFGClassHeader/></p>").encode("utf-16-le", "surrogatepass")
        path = self.write("odd.xml", b"\xff\xfe" + odd)

        def attributes(content):
            text = content.decode("utf-16", "surrogatepass").replace("\ud83d", "?")
            return [(element.tag, element.attrib)
                    for element in xml.etree.ElementTree.fromstring(text).iter()]

        again = self.back(self.to_json(path))
        self.assertEqual(attributes(again), attributes(path.read_bytes()))
        self.assertIn("\ud83d".encode("utf-16-le", "surrogatepass"), again)

    def test_json_tells_when_the_spelling_is_not_kept(self):
        general = self.file.read_bytes()
        for old, new, kind in ((b"\r\n", b"\n", "line end"), (b'"', b"'", "quotes"),
                               (b"\r\n<CFGCol", b"\r\n  <CFGCol", "spacing"),
                               (b'Value="4"', b'Value="&#52;"', "reference")):
            with self.subTest(kind=kind):
                declaration, body = general.split(b"\r\n", 1)
                path = self.write("odd.xml", declaration + b"\r\n" + body.replace(old, new))
                _, err = self.answers(0, "config", "convert", path, "--to", "json")
                self.assertEqual(len(err.splitlines()), 1, err)
                self.assertIn(kind, err)
        self.assertEqual(self.answers(0, "config", "convert", self.file, "--to", "json")[1], "")

    def test_mistyped_values_in_json_are_told_with_their_place(self):
        text = self.to_json(self.file)
        for old, new, message in (('"0.020"', '"0.0355"', "0.036"), ('"0.020"', '"0,035"', "0.035"),
                                  ('"0.020"', "null", "no value"), ('"4"', '"abc"', "read as 0")):
            with self.subTest(new=new):
                path = self.write("typo.json", text.replace(f'"value": {old}', f'"value": {new}', 1))
                out, err = self.answers(0, "config", "convert", path, "--to", "xml")
                self.assertIn("</CFGConfigCFGGeneralSettings>", out)
                self.assertEqual(len(err.splitlines()), 1, err)
                self.assertRegex(err, r"typo.json:\d+:\d+: /configurations/0/settings/\d+/value: ")
                self.assertIn(message, err)
                out, _ = self.answers(1, "config", "convert", path, "--to", "xml", "--strict")
                self.assertEqual(out, "")
        path = self.write("many.json", text.replace('"value": "0.020"', '"value": "0,02"'))
        self.assertEqual(len(self.answers(0, "config", "convert", path, "--to", "xml")[1]
                             .splitlines()), 6)

    def test_a_changed_value_comes_back(self):
        text = self.to_json(self.file)
        line = next(each for each in text.splitlines() if '"FDS_Tol_Z"' in each)
        self.assertTrue(line.strip().startswith('{"key": "FDS_Tol_Z", "value": "0.020", "type": 3'))
        changed = self.back(text.replace(line, line.replace("0.020", "0.035")))
        before = self.file.read_bytes()
        self.answers(0, "config", "set", self.file, "FDS_Tol_Z", "0.035")
        self.assertEqual(changed, self.file.read_bytes())
        self.assertNotEqual(changed, before)
        path = self.write("typo.json", text.replace(line, line.replace("0.020", "o.o2")))
        self.assertIn("FDS_Tol_Z", self.answers(0, "config", "convert", path, "--to", "xml")[1])

    def test_what_json_cannot_keep_is_refused(self):
        for inside, named in (("<!-- c -->", "comment"), ("<x/>", "'x'"), ("text", "text"),
                              ('<CFGCol Name="a" Colour="1"/>', "'Colour'"),
                              ('<CFGCol Name="a" Name="b"/>', "second attribute 'Name'")):
            with self.subTest(inside=inside):
                path = self.write("odd.xml", f"<CFGConfigX>\n<CFGClass>{inside}</CFGClass></CFGConfigX>")
                _, err = self.answers(3, "config", "convert", path, "--to", "json")
                self.assertIn(f"{path}:2:11: ", err)
                self.assertIn(named, err)

    def test_bad_json_is_refused_with_its_place(self):
        good = self.to_json("CFGHeader")
        target = Path(self.folder.name) / "out.xml"
        for old, new, place in (
                ('"value": ""', '"value": 7', ":9:36: /configurations/0/settings/0/value"),
                ('"type": 4', '"type": "4"', "settings/0/type"),
                ('"type": 4', '"type": 2147483648', "32-bit"),
                ('"type": 4', '"type": 1e99', "32-bit"),
                ('"type": 4', '"type": 4, "colour": 1', "settings/0/colour"),
                ('"type": 4', '"type": 4, "type": 4', ":9:"),
                ('"type": 4, ', "", "lacks the field 'type'"),
                ('"value": ""', '"value": "\\u0000"', "settings/0/value"),
                ('"value": ""', '"value": "a\\u0001b"', "settings/0/value: holds the character U+0001"),
                ("}\n      ]", "},\n      ]", "comma"),
                ('"value": ""', '"value": {"utf16": "d800"}', "UTF-8"),
                ('"version": 1', '"version": 2', ":3:"),
                ('"class": "CFGHeader"', '"class": "CFGGeneralSettings"', "configurations/0/element"),
                ('"settings"', '"before": "<a>", "settings"', "well-formed"),
                ('"settings"', '"changed": "yesterday", "settings"', "configurations/0/changed"),
                (good, "", "empty"), (good, good[:-4], ":13:"), (good, good + "x", ":15:1:"),
                (good, "[" * 100000, "deeply"), (good, "<a/>", "XML already")):
            with self.subTest(new=new[:40]):
                path = self.write("bad.json", good.replace(old, new, 1))
                _, err = self.answers(3, "config", "convert", path, "--to", "xml", "-o", target)
                self.assertEqual(len(err.strip().splitlines()), 1, err)
                self.assertIn(str(path), err)
                self.assertIn(place, err)
                self.assertFalse(target.exists())

    def test_csv_and_ini_are_read_by_others(self):
        header = kpx("config", "defaults", "CFGHeader")[1].split("\n", 1)[1].replace(
            'Value=""', 'Value="a;b&quot;,\nd "', 1)
        path = self.write("two.xml", f"<p>{header}{header}</p>")
        for arguments, separator in (((), ","), (("--separator", ";", "--bom"), ";")):
            out, _ = self.answers(0, "config", "convert", path, "--to", "csv", *arguments)
            rows = list(csv.reader(io.StringIO(out.removeprefix("\ufeff"), newline=""),
                                   delimiter=separator))
            self.assertEqual(rows[:2], [["class", "key", "value", "type", "caption", "group"],
                                        ["CFGHeader", "Class", 'a;b",\nd ', "4", "Class ", "64"]])
            self.assertEqual(rows[3][0], "CFGHeader.2")
            self.assertEqual(out.startswith("\ufeff"), "--bom" in arguments)
        out, _ = self.answers(0, "config", "convert", path, "--to", "ini", "--class", "CFGHeader")
        self.assertEqual(out, '[CFGHeader]\r\nClass=a;b",\\nd \r\nDescription=\r\n\r\n'
                              '[CFGHeader.2]\r\nClass=a;b",\\nd \r\nDescription=\r\n')
        for key in ("", "a=b", ";a", "[a", " a", "a ", "Class"):
            odd = self.write("odd.xml", header.replace('Name="Description"', f'Name="{key}"'))
            with self.subTest(key=key):
                _, err = self.answers(3, "config", "convert", odd, "--to", "ini")
                self.assertIn(f"{odd}:", err)

    def test_output_is_written_whole_and_never_over_the_input(self):
        before = self.file.read_bytes()
        here = Path(self.folder.name)
        os.link(self.file, here / "same.xml")
        for target in (self.file, here / "same.xml", here / "." / "general.xml"):
            self.answers(2, "config", "convert", self.file, "--to", "csv", "-o", target)
        self.answers(4, "config", "convert", self.file, "--to", "csv", "-o", here / "no" / "x.csv")
        self.assertEqual(self.file.read_bytes(), before)
        target = here / "out.json"
        self.answers(0, "config", "convert", self.file, "--to", "json", "-o", target)
        self.assertEqual(target.read_text(), self.to_json(self.file))

    def test_a_selection_leaves_the_others_out(self):
        body = self.file.read_text().split("\n", 1)[1]
        path = self.write("several.xml", f"<Project>\r\n{self.FULL}\r\n{body}</Project>")
        text = self.to_json(path, "--index", 2)
        self.assertNotIn("CFGConfigStrange", text)
        left = self.write("left.xml", self.back(text))
        self.answers(0, "config", "diff", left, "CFGGeneralSettings")


class BadInputTest(ToolTest):
    def test_a_mistyped_verb_is_named(self):
        for arguments in (("confg",), ("config", "shw", "x"), ("ini", "sett"), ("texts", "gett")):
            _, err = self.answers(2, *arguments)
            self.assertIn(f"'{arguments[len(arguments) > 1]}' is no verb", err)
        self.assertIn("a verb is missing", self.answers(2, "xml")[1])

    def test_bad_files_give_one_message_and_the_right_code(self):
        good = self.file.read_bytes()
        cases = {
            "missing": None,
            "empty": b"",
            "truncated": good[:len(good) // 2],
            "binary": bytes(range(256)) * 64,
            "wrongly encoded": good.replace(b"Meldungen", b"Meld\xfcngen"),
            "no configuration": b"<a/>",
        }
        for name, content in cases.items():
            path = Path(self.folder.name) / "missing.xml"
            if content is not None:
                path = self.write("bad.xml", content)
            for verb in (("get", path, "NIV_LG"), ("set", path, "NIV_LG", "7"), ("diff", path),
                         ("validate", path), ("show", path)):
                with self.subTest(case=name, verb=verb[0]):
                    _, err = self.answers(3, "config", *verb)
                    self.assertEqual(len(err.strip().splitlines()), 1, err)
                    self.assertIn(str(path), err)
                    if content is not None:
                        self.assertEqual(path.read_bytes(), content)

    def test_truncated_file_is_named_with_its_line(self):
        path = self.write("cut.xml", "<a>\n<b>\n")
        out, _ = self.answers(1, "xml", "check", path)
        self.assertIn(f"{path}:1:1: ", out)
        self.assertIn(f"{path}:2:1: ", out)

    def test_wrong_declaration_is_a_finding(self):
        for name in ("KLINGON-7", "UTF-16"):
            path = self.write("declared.xml", f'<?xml version="1.0" encoding="{name}"?><a>\u00e4</a>')
            out, _ = self.answers(1, "xml", "check", path)
            self.assertIn(name, out)

    def test_check_names_what_other_programs_refuse(self):
        path = self.write("odd.xml", '<a>\n<b c=d e="1" e="2">&x; & </b>\n</a>')
        out, _ = self.answers(1, "xml", "check", path)
        self.assertEqual([line.split(": ")[0] for line in out.splitlines()],
                         [f"{path}:2:{column}" for column in (6, 14, 20, 24)], out)

    @unittest.skipIf(os.name != "posix" or os.geteuid() == 0, "needs a folder it may not write")
    def test_folder_without_permission(self):
        os.chmod(self.folder.name, 0o500)
        try:
            before = self.file.read_bytes()
            self.answers(4, "config", "set", self.file, "NIV_LG", "7")
            self.assertEqual(self.file.read_bytes(), before)
        finally:
            os.chmod(self.folder.name, 0o700)

    def test_full_output_device_is_reported(self):
        if not Path("/dev/full").exists():
            self.skipTest("no full device here")
        with open("/dev/full", "wb") as full:
            done = subprocess.run([KPX, "classes", "export"], stdout=full, stderr=subprocess.PIPE,
                                  timeout=60)
        self.assertEqual(done.returncode, 4)

    def test_wrong_usage(self):
        for arguments in ((), ("config",), ("config", "get"), ("config", "nonsense"),
                          ("config", "defaults", "NoSuchClass"), ("xml", "stats")):
            with self.subTest(arguments=arguments):
                self.answers(2, *arguments)


class ClassesTest(ToolTest):
    def test_export_tells_what_a_constructed_object_holds(self):
        classes = {entry["class"]: entry for entry in json.loads(kpx("classes", "export")[1])}
        general = classes["CFGGeneralSettings"]
        self.assertEqual(general["element"], "CFGConfigCFGGeneralSettings")
        self.assertEqual(len(general["settings"]), 220)
        keys = [setting["key"] for setting in general["settings"]]
        self.assertEqual(general["reset_order"], keys)
        self.assertEqual(keys[0], "TACHY_RgL")
        by_key = {setting["key"]: setting for setting in general["settings"]}
        self.assertEqual(by_key["TACHY_Tol_XY"]["caption"], "Toleranz eranz XY")
        self.assertEqual(by_key["CA2T_Tol_XY"],
                         {"key": "CA2T_Tol_XY", "type": 3, "caption": "Toleranz_XY",
                          "category": "Kreis an 2 Tangenten", "value": "0.020", "prec": 0,
                          "param1": 1, "param2": 1, "param3": 0, "param4": 0, "param5": 0,
                          "param6": 1, "length": 0, "nullable": 0, "empty": 0, "unit": 0,
                          "default": ""})
        self.assertEqual(general["setters"]["setNivRgH"],
                         {"key": "NIV_RgH", "type": 1, "caption": "346", "category": ""})
        self.assertEqual(general["missing"], {})
        self.assertEqual(classes["CFGHeader"]["reset_order"], ["Class", "Description"])


class XmlTest(ToolTest):
    def test_stats_and_check_of_a_real_file(self):
        real = Path("/usr/share/mime/packages/freedesktop.org.xml")
        if not real.exists():
            self.skipTest("shared-mime-info is not installed")
        stats = json.loads(self.answers(0, "xml", "stats", real, "--json")[0])[0]
        self.assertEqual(stats["bytes"], real.stat().st_size)
        self.assertTrue(stats["well_formed"])
        self.assertEqual((stats["elements"], stats["attributes"], stats["depth"]),
                         shape_by_expat(real.read_bytes()))
        self.answers(0, "xml", "check", real)

    def test_format_keeps_content_and_settles(self):
        path = self.write("mixed.xml",
                          "<?xml version='1.0'?><!--c--><r a='1'><x><y/></x><t>a <b>c</b>\n d</t>"
                          "<p xml:space='preserve'> <q/> </p></r>")
        out, _ = self.answers(0, "xml", "format", path)
        self.assertEqual(out, "<?xml version='1.0'?>\n<!--c-->\n<r a='1'>\n  <x>\n    <y/>\n"
                              "  </x>\n  <t>a <b>c</b>\n d</t>\n"
                              "  <p xml:space='preserve'> <q/> </p>\n</r>\n")
        self.assertEqual(self.answers(0, "xml", "format", "-", stdin=out.encode())[0], out)



class IniTest(ToolTest):
    FILE = "; Größe\r\n\r\n[A]\r\nx = 1\r\ny=2 ; 3\r\nlost\r\n"

    def test_a_change_touches_its_line_only(self):
        for codec, mark in (("utf-8", b""), ("utf-8", b"\xef\xbb\xbf"), ("cp1252", b""),
                            ("utf-16-le", b"\xff\xfe"), ("utf-16-be", b"\xfe\xff")):
            with self.subTest(codec=codec, mark=mark):
                path = self.write("a.ini", mark + self.FILE.encode(codec))
                self.answers(0, "ini", "set", path, "A", "y", "2 ; 3")
                self.assertEqual(path.read_bytes(), mark + self.FILE.encode(codec))
                self.answers(0, "ini", "set", path, "A", "x", "--", "-ö")
                self.answers(0, "ini", "set", path, "Neu", "z", "")
                self.answers(0, "ini", "del", path, "A", "y")
                expected = "; Größe\r\n\r\n[A]\r\nx=-ö\r\nlost\r\n[Neu]\r\nz=\r\n"
                self.assertEqual(path.read_bytes(), mark + expected.encode(codec))
                self.assertEqual(self.answers(0, "ini", "get", path, "A", "x")[0], "-ö\n")

    def test_list_and_standard_input(self):
        stdin = ("above=0\n" + self.FILE).encode()
        out, _ = self.answers(0, "ini", "list", "-", stdin=stdin)
        self.assertEqual(out, "above=0\n\n[A]\nx= 1\ny=2 ; 3\n")
        listed = json.loads(self.answers(0, "ini", "list", "-", "--json", stdin=stdin)[0])
        self.assertEqual([each["section"] for each in listed], ["", "A"])
        got, _ = self.answers(0, "ini", "get", "-", "A", "y", "--json", stdin=stdin)
        self.assertEqual(json.loads(got), {"section": "A", "key": "y", "value": "2 ; 3"})
        out, _ = self.answers(0, "ini", "set", "-", "", "above", "1", stdin=stdin)
        self.assertEqual(out.encode(), stdin.replace(b"=0", b"=1"))

    def test_refusals_leave_the_file_alone(self):
        path = self.write("a.ini", self.FILE)
        for code, arguments in ((1, ("get", path, "a", "x")), (1, ("get", path, "A", "X")),
                                (1, ("del", path, "A", "z")), (2, ("set", path, "A", "a=b", "1")),
                                (2, ("set", path, "]", "a", "1")), (2, ("set", path, "A", "x")),
                                (3, ("set", str(path) + "x", "A", "a", "1"))):
            with self.subTest(arguments=arguments):
                _, err = self.answers(code, "ini", *arguments)
                self.assertTrue(err)
                self.assertEqual(path.read_bytes(), self.FILE.encode())
        self.assertEqual(len(list(Path(self.folder.name).glob("a.ini*"))), 1)

    def test_check_names_line_and_column(self):
        path = self.write("a.ini", self.FILE + " X=1\r\n")
        out, _ = self.answers(1, "ini", "check", path)
        self.assertEqual([line.split(str(path))[1].split(" ")[0] for line in out.splitlines()],
                         [":6:1:", ":7:2:"])
        report = json.loads(self.answers(1, "ini", "check", path, "--json")[0])
        self.assertEqual([each["line"] for each in report[0]["problems"]], [6, 7])
        self.answers(0, "ini", "check", self.write("b.ini", "[A]\nx=1\n"))
        self.answers(3, "ini", "check", "missing.ini", path)


class RegistryTest(ToolTest):
    KEY = r"HKEY_CURRENT_USER\Software\KPX\Settings"

    def setUp(self):
        super().setUp()
        for root in ("USER", "MACHINE"):
            os.environ[f"KPX_{root}_REGISTRY"] = str(Path(self.folder.name) / f"{root}.sqlite")
            self.addCleanup(os.environ.pop, f"KPX_{root}_REGISTRY")

    def get(self, name):
        return self.answers(0, "registry", "get", self.KEY, name)[0]

    def test_values_of_all_types(self):
        short = r"hkcu\software\kpx\settings"
        self.answers(0, "registry", "set", self.KEY, "Größe", "Deutsch [Default]")
        self.answers(0, "registry", "set", self.KEY, "Count", "4294967295", "--type", "dword")
        self.answers(0, "registry", "set", short, "count", "0x2b")
        self.answers(0, "registry", "set", self.KEY, "Place", "2c00,FF", "--type", "binary")
        self.answers(0, "registry", "set", self.KEY, "", "default")
        out, _ = self.answers(0, "registry", "list", short)
        self.assertEqual(out, "@ (string) = default\nCount (dword) = 43\n"
                              "Größe (string) = Deutsch [Default]\nPlace (binary) = 2c 00 ff\n")
        listed = json.loads(self.answers(0, "registry", "list", self.KEY, "--json")[0])
        self.assertEqual([each["name"] for each in listed["values"]],
                         ["", "Count", "Größe", "Place"])
        for bad in (("Count", "4294967296"), ("Count", "x"), ("Place", "2c0"), ("Count",)):
            self.answers(2, "registry", "set", self.KEY, *bad)
        self.assertEqual(self.get("Count"), "43\n")

    def test_deleting_refuses_keys_below(self):
        self.answers(0, "registry", "set", self.KEY, "x", "1")
        self.answers(1, "registry", "del", r"HKCU\Software\KPX")
        self.answers(0, "registry", "del", self.KEY, "X")
        self.answers(1, "registry", "get", self.KEY, "x")
        self.answers(0, "registry", "del", self.KEY)
        self.answers(1, "registry", "list", self.KEY)
        self.answers(0, "registry", "del", r"HKCU\Software", "--tree")
        self.assertEqual(self.answers(0, "registry", "list", "HKCU")[0], "")
        self.answers(2, "registry", "list", r"HKEY_USERS\x")

    def test_export_import_and_diff(self):
        self.answers(0, "registry", "set", self.KEY, "Größe", 'with "quotes" \\')
        self.answers(0, "registry", "set", self.KEY, "Place", "00" * 60, "--type", "binary")
        exported = Path(self.folder.name) / "a.reg"
        self.answers(0, "registry", "export", "HKCU", exported)
        content = exported.read_bytes()
        self.assertTrue(content.startswith(
            b"\xff\xfe" + "Windows Registry Editor Version 5.00\r\n\r\n".encode("utf-16-le")))
        self.assertEqual(self.answers(0, "registry", "diff", "HKCU", exported)[0], "")
        self.answers(0, "registry", "set", self.KEY, "New", "1")
        self.answers(0, "registry", "del", self.KEY, "Place")
        out, _ = self.answers(1, "registry", "diff", "HKCU", exported)
        self.assertIn('"New"=-', out)
        self.assertIn('"Place"=hex:00,', out)
        steps = json.loads(self.answers(1, "registry", "diff", "HKCU", exported, "--json")[0])
        self.assertEqual([(step["action"], step["name"]) for step in steps],
                         [("remove_value", "New"), ("write", "Place")])
        self.answers(0, "registry", "import", "-", stdin=out.encode())
        self.assertEqual(self.answers(0, "registry", "diff", "HKCU", exported)[0], "")
        self.answers(0, "registry", "del", r"HKCU\Software", "--tree")
        self.answers(0, "registry", "import", exported)
        self.assertEqual(self.get("Größe"), 'with "quotes" \\\n')

    def test_a_wrong_line_imports_nothing(self):
        path = self.write("a.reg", "Windows Registry Editor Version 5.00\n\n[HKCU\\A]\n"
                                   '"x"=dword:1\n"y"=word:1\n')
        _, err = self.answers(3, "registry", "import", path)
        self.assertIn(f"{path}:5: ", err)
        self.answers(1, "registry", "list", r"HKCU\A")

    def test_a_store_that_is_none_is_told(self):
        self.write("USER.sqlite", "this is no registry")
        self.answers(3, "registry", "list", "HKCU")
        self.answers(4, "registry", "set", self.KEY, "x", "1")


class TextsTest(ToolTest):
    LIST = ("# title\tDansk\n# header\t7\n614\tFejl \\ud83d\n12\ta\\r\\nb\n614\t\n"
            "-5\t\\\\ \\t\n")

    def setUp(self):
        super().setUp()
        registry = {"KPX_USER_REGISTRY": str(Path(self.folder.name) / "user.db"),
                    "KPX_MACHINE_REGISTRY": str(Path(self.folder.name) / "machine.db")}
        patch = unittest.mock.patch.dict(os.environ, registry)
        patch.start()
        self.addCleanup(patch.stop)

    def test_english_lies_beside_the_tool(self):
        self.assertEqual(kpx("texts", "get", 614), (0, "Fehler\n", ""))
        self.assertEqual(kpx("texts", "get", 614, "--language", "eng"), (0, "Error\n", ""))
        self.assertEqual(kpx("texts", "get", 4300)[:2], (1, ""))
        self.assertEqual(kpx("texts", "get", 614, "--language", "fra")[0], 3)
        file = Path(KPX).parent / "MLT" / "ENG.LNG"
        self.assertEqual(kpx("texts", "check", file)[0], 0)
        german = Path(__file__).resolve().parents[2] / "kpx" / "support" / "texts" / "deu.tsv"
        out = kpx("texts", "coverage", file, "--german", german, "--json")[1]
        self.assertEqual(json.loads(out)[0]["missing"], [])
        code, out, _ = kpx("texts", "diff", "", file, "--json")
        self.assertIn({"id": 1528, "before": "Unbekannt", "after": "Unknown"}, json.loads(out))
        self.assertEqual(code, 1)

    def test_lists_and_language_files_turn_into_each_other(self):
        table, file = self.write("dan.tsv", self.LIST), Path(self.folder.name) / "DAN.LNG"
        self.assertEqual(kpx("texts", "build", table, file), (0, "", ""))
        self.assertEqual(kpx("texts", "dump", file)[:2], (0, self.LIST.replace("ud83d", "uD83D")))
        code, _, err = kpx("texts", "dump", "--json", file)
        self.assertEqual((code, "text 614" in err), (3, True))
        good = self.LIST.replace("\\ud83d", "\\u00e6")
        code, out, _ = kpx("texts", "dump", "--json", "-", stdin=good.encode())
        self.assertEqual(json.loads(out)["texts"][1], {"id": 12, "text": "a\r\nb"})
        self.assertEqual(kpx("texts", "build", "-", file, stdin=out.encode())[0], 0)
        self.assertEqual(kpx("texts", "dump", file)[1], good.replace("\\u00e6", "\u00e6"))
        self.assertEqual(kpx("texts", "get", 12, file)[1], "a\nb\n")

    def test_bad_lists_are_named_and_build_nothing(self):
        file = Path(self.folder.name) / "X.LNG"
        for content, place in (("1\ta\nx\ty\n", ":2:1: "), ("{\"texts\": 1}", "\"texts\""),
                               ("{\"texts\": [{\"id\": 2147483648, \"text\": \"\"}]}", "32 bits"),
                               ("{\"texts\": [", "parse error")):
            with self.subTest(content):
                code, out, err = kpx("texts", "build", self.write("x.tsv", content), file)
                self.assertEqual((code, out, file.exists()), (3, "", False))
                self.assertIn(place, err)

    def test_check_and_coverage_tell_each_fault(self):
        table = self.write("dan.tsv", "541\tfejl %d\n12\tto linjer\n1\t\n614\ta\n614\tb\n7\tx\n"
                           "1528\t" + "lang" * 20 + "\n")
        german = self.write("deu.tsv", "541\tFehler %s %d\n12\teine\\nzwei\n1\tx\n614\ty\n"
                            "1528\tz\n9\tneun\n")
        code, out, _ = kpx("texts", "check", table, "--german", german, "--json")
        self.assertEqual(code, 1)
        found = [(finding["id"], finding["entry"]) for finding in json.loads(out)[0]["findings"]]
        self.assertEqual(found, [(541, 1), (12, 2), (1, 3), (614, 5), (7, 6), (1528, 7)])
        out = kpx("texts", "coverage", table, "--german", german)[1]
        self.assertIn(": 66.7 %, 4 of 6 texts, 0 of them as in German, 2 missing, 1 unknown", out)
        file = Path(self.folder.name) / "CUT.LNG"
        kpx("texts", "build", table, file)
        self.write("CUT.LNG", file.read_bytes()[:-1])
        code, out, _ = kpx("texts", "check", file)
        self.assertEqual((code, "ends early, behind 6 of 7 texts" in out), (3, True))


class TimersTest(ToolTest):
    CSV = ("Timer name,Time (ms),# Calls\nNo timers run\n\nTimer name,Time (ms),# Calls\n"
           "a, b,1.500000,3\nlong,600.250000,1001,*currently running*\n\n")

    def test_table_and_trace(self):
        path = self.write("t.csv", self.CSV)
        lines = self.answers(0, "timers", "show", path)[0].splitlines()
        self.assertEqual([line.split()[0] for line in lines[-2:]], ["long", "a,"])
        shown = json.loads(self.answers(0, "timers", "show", path, "--json")[0])
        self.assertEqual([len(report["timers"]) for report in shown], [0, 2])
        trace = json.loads(self.answers(0, "timers", "trace", path)[0])
        bars = [event for event in trace["traceEvents"] if event["ph"] == "X"]
        self.assertEqual([(bar["name"], bar["dur"], bar["args"]["calls"]) for bar in bars],
                         [("long", 600250, 1001), ("a, b", 1500, 3)])
        self.assertEqual(len({(bar["pid"], bar["tid"]) for bar in bars}), 2)

    def test_other_files_are_refused_with_the_line(self):
        for content, line in (("", 1), ("a,b\n", 1), (self.CSV + "x\n", 8)):
            _, err = self.answers(3, "timers", "show", self.write("t.csv", content))
            self.assertIn(f"t.csv:{line}:1:", err)


class NasTest(ToolTest):
    def test_codes_are_listed_and_looked_up_both_ways(self):
        lines = self.answers(0, "nas", "codes")[0].splitlines()
        kinds = json.loads(self.answers(0, "nas", "codes", "--json")[0])
        self.assertEqual(lines, [f"{kind['code']}  {kind['name']}" for kind in kinds])
        self.assertEqual(len(kinds), 91)
        for wanted in (kinds[2]["name"], str(kinds[2]["code"])):
            self.assertEqual(self.answers(0, "nas", "codes", wanted)[0], lines[2] + "\n")
            found = json.loads(self.answers(0, "nas", "codes", wanted, "--json")[0])
            self.assertEqual(found, kinds[2])

    def test_unknown_codes_get_one_sentence_with_what_may_be_meant(self):
        for wanted, mentioned in (("ax_flurstueck", "AX_Flurstueck (11001)"),
                                  ("Flurst\u00fcck", "AX_Flurstueck (11001)"),
                                  ("Grenzpunkt", "AX_Grenzpunkt (11003)"), ("xyz", "'xyz'"),
                                  ("", "''"), ("A" * 5000, "A" * 5000), ("11009", "11009"),
                                  ("9" * 30, "9" * 30)):
            with self.subTest(wanted=wanted):
                out, err = self.answers(1, "nas", "codes", wanted)
                self.assertEqual(out, "")
                self.assertEqual(len(err.splitlines()), 1)
                self.assertIn(mentioned, err)


class UnzipTest(ToolTest):
    CONTENT = {"Höhen/Punkte.txt": b"P1 1.5 2.5\n" * 5000, "leer": b"", "a/b/c.bin": os.urandom(300)}

    def archive(self, out):
        with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED) as archive:
            for name, content in self.CONTENT.items():
                archive.writestr(name, content)
        return out

    def unpacked(self, folder):
        return {path.relative_to(folder).as_posix(): path.read_bytes()
                for path in folder.rglob("*") if path.is_file()}

    def test_archives_of_another_program_come_back_whole(self):
        folder = Path(self.folder.name)
        self.archive(folder / "plain.zip")
        # Limits at which the writer turns to 64-bit fields; as if the archive were huge.
        with unittest.mock.patch.multiple(zipfile, ZIP64_LIMIT=5, ZIP_FILECOUNT_LIMIT=1):
            self.archive(folder / "sizes64.zip")
        self.assertIn(b"PK\6\6", (folder / "sizes64.zip").read_bytes())

        class Pipe(io.BytesIO):
            def seek(self, *_):
                raise OSError
            tell = seek
        pipe = self.archive(Pipe())
        self.assertIn(b"PK\7\x08", pipe.getvalue())
        self.write("descriptor.zip", pipe.getvalue())
        for name in ("plain", "sizes64", "descriptor"):
            with self.subTest(name=name):
                path, out = folder / f"{name}.zip", folder / name
                self.answers(0, "unzip", path, "--test")
                self.assertFalse(out.exists())
                self.answers(0, "unzip", path, "-d", out)
                self.assertEqual(self.unpacked(out), self.CONTENT)
                listed = json.loads(self.answers(0, "unzip", path, "--list", "--json")[0])
                self.assertEqual({each["name"]: each["bytes"] for each in listed["entries"]},
                                 {each: len(content) for each, content in self.CONTENT.items()})

    def test_files_that_exist_stay_unless_told(self):
        folder = Path(self.folder.name)
        path = self.archive(folder / "a.zip")
        out = folder / "out"
        out.mkdir()
        (out / "leer").write_bytes(b"mine")
        for code, more, kept in ((5, (), b"mine"), (0, ("--overwrite", "never"), b"mine"),
                                 (0, ("--overwrite", "always"), b"")):
            self.answers(code, "unzip", path, "-d", out, *more)
            self.assertEqual((out / "leer").read_bytes(), kept)
        self.assertEqual(self.unpacked(out), self.CONTENT)

    def test_refused_entries_are_named_with_their_reason(self):
        folder = Path(self.folder.name)
        path = folder / "evil.zip"
        with zipfile.ZipFile(path, "w") as archive:
            for name in ("../escaped", "/absolute", "good", "dir/NUL.txt"):
                archive.writestr(name, "x")
        out, err = self.answers(5, "unzip", path, "-d", folder / "out")
        for word in ("../escaped", "/absolute", "dir/NUL.txt", "3 refused"):
            self.assertIn(word, out)
        self.assertIn("3 entries", err)
        self.assertEqual(self.unpacked(folder / "out"), {"good": b"x"})
        self.assertFalse((folder / "escaped").exists())
        report = json.loads(self.answers(5, "unzip", path, "--test", "--json")[0])
        self.assertEqual([entry["status"] for entry in report["entries"]],
                         ["parentStep", "absoluteName", "done", "reservedName"])

    def test_what_cannot_be_done_at_all(self):
        path = self.archive(Path(self.folder.name) / "a.zip")
        for code, arguments in ((3, (self.file, "--list")), (3, ("missing.zip", "--test")),
                                (2, (path,)), (2, ("-", "--list")), (2, (path, "-d", "x", "--list")),
                                (4, (path, "-d", self.file))):
            with self.subTest(arguments=arguments):
                self.answers(code, "unzip", *arguments)


class ErrorsTest(ToolTest):
    def test_number_leads_to_its_operation(self):
        self.assertEqual(self.answers(0, "errors", 71472)[0], "71472  InitMLT\n")
        reset = json.loads(self.answers(0, "errors", 900001, "--json")[0])
        self.assertEqual([(each["class"], each["accessor"]) for each in reset],
                         [("CFGGeneralSettings", "ResetPos")])
        self.answers(1, "errors", 1)
        for wrong in ("x", "1x", "99999999999"):
            self.answers(2, "errors", wrong)

    def test_list_has_each_number_once_and_in_order(self):
        numbers = [each["number"] for each in
                   json.loads(self.answers(0, "errors", "list", "--json")[0])]
        self.assertEqual(numbers, sorted(set(numbers)))
        self.assertEqual(len(self.answers(0, "errors", "list")[0].splitlines()), len(numbers))


class LogTest(ToolTest):
    LINE = ("Projekt: {}    Job: Tag 1    Fehler: {}     Datum / Zeit: {} / 08:03:04    "
            "User: {} (pc7, 16384 MB)")

    def log(self):
        lines = [self.LINE.format("Aue", 42905, "05.03.2021", "Möller"),
                 self.LINE.format("Aue", 42905, "06.03.2021", "Berg"),
                 "Projekt: Aue    Job:                       Datum / Zeit: 07.03.2021 / 09:00:00"
                 "    User: Berg (pc7, 1 MB)  Info: weg",
                 "Projekt: half a li",
                 self.LINE.format("Tal", 123456, "08.03.2021", "Berg")]
        return self.write("Error.log", "\r\n".join(lines) + "\r\n")

    def test_filters(self):
        path = self.log()
        for lines, arguments in (([1, 2, 3, 4, 5], ()), ([1, 2], ("--number", 42905)),
                                 ([2, 3, 5], ("--user", "be*")), ([5], ("--project", "tal")),
                                 ([2, 3], ("--from", "06.03.2021", "--to", "2021-03-07")),
                                 ([3], ("--from", "06.03.2021-08:03:05", "--project", "Aue")),
                                 ([1, 2, 5], ("--number", 42905, "--number", 123456))):
            with self.subTest(arguments=arguments):
                found = json.loads(self.answers(0, "log", "show", path, "--json", *arguments)[0])
                self.assertEqual([each["line"] for each in found], lines)
        self.answers(1, "log", "show", path, "--number", 1)
        for wrong in ("31.02.2021", "yesterday", "05.03.2021-8:3", "05.03.2021-25:00:00"):
            self.answers(2, "log", "show", path, "--from", wrong)
        self.answers(3, "log", "show", Path(self.folder.name) / "missing.log")

    def test_lines_are_shown_with_their_operations(self):
        out, _ = self.answers(0, "log", "show", self.log())
        shown = out.splitlines()
        self.assertEqual(shown[0], "05.03.2021-08:03:04  42905 CFGCol::serializeXML  "
                                   "project: Aue  job: Tag 1  user: Möller")
        self.assertEqual(shown[3], "line 4 is broken: Projekt: half a li")

    def test_stats(self):
        path = self.log()
        counted = json.loads(self.answers(0, "log", "stats", path, path, "--json")[0])
        self.assertEqual((counted["lines"], counted["texts"], counted["broken"]), (10, 2, 2))
        self.assertEqual([(each["number"], each["count"]) for each in counted["numbers"]],
                         [(42905, 4), (123456, 2)])
        self.assertEqual(counted["users"], {"Berg": 6, "Möller": 2})
        self.assertEqual((counted["first"], counted["last"]),
                         ("05.03.2021-08:03:04", "08.03.2021-08:03:04"))
        out, _ = self.answers(0, "log", "stats", path)
        self.assertIn("       2  42905 CFGCol::serializeXML\n", out)

    def test_follow_shows_what_is_written_afterwards(self):
        path = self.log()
        watcher = subprocess.Popen([KPX, "log", "follow", path, "--seconds", "60", "--json"],
                                   stdout=subprocess.PIPE)
        self.addCleanup(watcher.wait)
        self.addCleanup(watcher.kill)
        self.addCleanup(watcher.stdout.close)
        time.sleep(0.5)
        line = self.LINE.format("Neu", 7, "09.03.2021", "Berg").encode() + b"\n"
        with path.open("ab") as log:
            log.write(line[:50])
            log.flush()
            time.sleep(0.3)
            log.write(line[50:])
        self.assertEqual(json.loads(watcher.stdout.readline())["project"], "Neu")
        path.write_bytes(line)  # a new log in its place
        self.assertEqual(json.loads(watcher.stdout.readline())["line"], 1)


class DoctorTest(ToolTest):
    def test_every_line_tells_source_and_problem(self):
        folder = Path(self.folder.name)
        environment = {"KPX_INI": str(folder / "missing"), "HOME": str(folder),
                       "KPX_USER_REGISTRY": str(folder / "user.db"),
                       "KPX_MACHINE_REGISTRY": str(folder / "machine.db")}
        with unittest.mock.patch.dict(os.environ, environment):
            lines = json.loads(self.answers(1, "doctor", "--json")[0])
            out, _ = self.answers(1, "doctor")
        facts = {each["name"]: each for each in lines}
        self.assertTrue(all(each["source"] for each in lines))
        program = facts["program folder"]
        self.assertEqual((program["value"], program["source"]),
                         (environment["KPX_INI"], "environment variable KPX_INI"))
        self.assertIn("no such file", program["problem"])
        self.assertEqual(facts["home folder"]["problem"], "")
        self.assertIn("    ! ", out)
        self.assertEqual(sorted(path.name for path in folder.iterdir()), ["general.xml"],
                         "looking creates nothing")


if __name__ == "__main__":
    KPX = sys.argv.pop(1)
    unittest.main()
