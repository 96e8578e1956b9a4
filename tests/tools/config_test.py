"""The verbs of configurations, classes and XML."""

import csv
import io
import json
import os
import unittest
import xml.etree.ElementTree
import xml.parsers.expat
from pathlib import Path

from runner import run
from tool import PROGRAM, ToolTest, kpx


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
            0, "config", "show", "CFGGeneralSettings", "--json")[0])["files"][0]["configurations"][0]["settings"]), 220)

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

    def test_several_files_are_all_looked_at(self):
        bad = self.write("bad.xml", self.file.read_text().replace('Name="KT_LG"', 'Name="Stranger"'))
        out, _ = self.answers(1, "config", "validate", self.file, bad)
        self.assertTrue(all(line.startswith(f"{bad}:") for line in out.splitlines()))
        out, err = self.answers(3, "config", "validate", "missing.xml", bad, self.file, "--json")
        self.assertEqual([(each["file"], "error" in each, len(each.get("findings", "")) > 0)
                          for each in json.loads(out)["files"]],
                         [("missing.xml", True, False), (str(bad), False, True),
                          (str(self.file), False, False)])
        self.assertIn("missing.xml", err)
        out, _ = self.answers(0, "config", "show", bad, self.file, "CFGHeader", "--changed")
        self.assertIn(f"[CFGGeneralSettings]   ({bad})\nStranger", out)
        self.assertNotIn(str(self.file), out)

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
        shown = json.loads(self.answers(0, "config", "show", self.several, "--json")[0])["files"][0]
        self.assertEqual([(each["class"], each["index"], each["line"]) for each in shown["configurations"]],
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
        done = run([PROGRAM, "config", "convert", "-", "--to", "xml"], input=text.encode())
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
        for entry in json.loads(kpx("classes", "list", "--json")[1])["classes"]:
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
                (good, "", "empty"), (good, good[:-4], ":13:"),
                (good, good + "x", ":15:1: is no JSON: something follows"),
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

    def test_warnings_are_no_refusal(self):
        path = self.write("type.xml", "<!DOCTYPE a SYSTEM 'a.dtd'><a>&b;</a>")
        out, _ = self.answers(0, "xml", "check", path)
        self.assertRegex(out, r":1:1: warning: .*document type.*\n.*: well-formed\n$")
        found = json.loads(self.answers(0, "xml", "check", path, "--json")[0])["files"][0]
        self.assertTrue(found["well_formed"] and found["problems"][0]["warning"])

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


class ClassesTest(ToolTest):
    def test_export_tells_what_a_constructed_object_holds(self):
        classes = {entry["class"]: entry for entry in json.loads(kpx("classes", "export")[1])["classes"]}
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
        stats = json.loads(self.answers(0, "xml", "stats", real, "--json")[0])["files"][0]
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
        other = self.write("formatted.xml", out)
        self.answers(2, "xml", "format", other, path)
        named, _ = self.answers(1, "xml", "format", "--check", other, path)
        self.assertEqual(named, f"{path}: is not as xml format writes it\n")
        self.answers(0, "xml", "format", "--write", other, path)
        self.assertEqual(path.read_text(), out)
