"""The verbs of texts, errors, files, registry and the other services."""

import io
import json
import os
import re
import subprocess
import time
import unittest
import unittest.mock
import zipfile
from pathlib import Path

from runner import RUNNER
from tool import KPX, ON_WINDOWS, PROGRAM, ToolTest, kpx


@unittest.skipIf(os.name != "posix" or RUNNER or os.environ.get("KPX_SANITIZED"),
                 "needs the memory of kpx alone")
class MemoryTest(ToolTest):
    def test_inputs_of_nothing_but_mistakes_stay_below_sixty_times_their_size(self):
        size = 2 << 20

        def filled(piece):
            return piece * (size // len(piece) + 1)
        registry = b"Windows Registry Editor Version 5.00\n"
        names = b"".join(b"<%x>" % (i * 2654435761 % 2 ** 32) for i in range(size // 9))
        configuration = b"<CFGConfigX><CFGClass>%s</CFGClass></CFGConfigX>"
        for verb, content in {
            ("xml", "check", "open.xml"): filled(b"<a>"),
            ("xml", "stats", "lone.xml"): filled(b"<a>") + b"</b>" * 1000,
            ("xml", "check", "names.xml"): names + b"</zz>" * 1000,
            ("xml", "check", "attributes.xml"): b"<r " + filled(b"b ") + b"/>",
            ("xml", "check", "ampersands.xml"): b"<r>" + filled(b"&") + b"</r>",
            ("config", "validate", "foreign.xml"): (configuration % filled(b"<x/>")).replace(
                b"X>", b"CFGClassHeader>"),
            ("ini", "check", "lines.ini"): filled(b"x\n"),
            ("ini", "check", "bytes.ini"): b"\xef\xbb\xbf" + filled(b"\xe4\n"),
            ("texts", "check", "ids.tsv"): filled(b"1\t\n"),
            ("texts", "check", "brackets.tsv"): b'{"texts":' + filled(b"["),
            ("registry", "import", "wrong.reg"): registry + b"[HKCU\\A]\n" + filled(b"@=-\n") + b"x",
        }.items():
            with self.subTest(verb=verb):
                path = self.write(verb[2], content)
                process = subprocess.Popen([PROGRAM, *verb[:2], path], stdout=subprocess.DEVNULL,
                                           stderr=subprocess.DEVNULL)
                _, status, usage = os.wait4(process.pid, 0)
                process.returncode = os.waitstatus_to_exitcode(status)
                self.assertIn(process.returncode, (1, 3))
                self.assertLess(usage.ru_maxrss * 1024, 60 * len(content))

    def test_more_than_a_thousand_problems_are_counted(self):
        path = self.write("many.ini", "[A]\n" + "nothing\n" * 1500)
        out, _ = self.answers(1, "ini", "check", path)
        self.assertEqual(len(out.splitlines()), 1001)
        self.assertTrue(out.endswith(f"{path}: 500 more; --all prints them\n"), out[-200:])
        self.assertEqual(len(self.answers(1, "ini", "check", path, "--all")[0].splitlines()), 1500)
        found = json.loads(self.answers(1, "ini", "check", path, "--json")[0])["files"][0]
        self.assertEqual((len(found["problems"]), found["left_out"]), (1000, 500))


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
        self.assertEqual([each["section"] for each in listed["sections"]], ["", "A"])
        self.assertEqual(self.answers(0, "ini", "get", "-", "A", "y", stdin=stdin)[0], "2 ; 3\n")
        out, _ = self.answers(0, "ini", "set", "-", "", "above", "1", stdin=stdin)
        self.assertEqual(out.encode(), stdin.replace(b"=0", b"=1"))

    def test_changes_of_several_programs_are_all_kept(self):
        path = str(Path(self.folder.name) / "new.ini")
        running = [subprocess.Popen([*KPX, "ini", "set", path, "S", f"key{number}", "1"],
                                    stderr=subprocess.DEVNULL) for number in range(12)]
        self.assertEqual([program.wait() for program in running], [0] * len(running))
        self.assertEqual(len(self.answers(0, "ini", "list", path)[0].splitlines()), 13)
        self.assertEqual([each.name for each in Path(self.folder.name).glob("*kpx*")], [])

    def test_refusals_leave_the_file_alone(self):
        path = self.write("a.ini", self.FILE)
        for code, arguments in ((1, ("get", path, "a", "x")), (1, ("get", path, "A", "X")),
                                (1, ("del", path, "A", "z")), (2, ("set", path, "A", "a=b", "1")),
                                (2, ("set", path, "]", "a", "1")), (2, ("set", path, "A", "x")),
                                (4, ("set", path.parent / "no" / "a.ini", "A", "a", "1")),
                                (3, ("del", str(path) + "x", "A", "a"))):
            with self.subTest(arguments=arguments):
                _, err = self.answers(code, "ini", *arguments)
                self.assertTrue(err)
                self.assertEqual(path.read_bytes(), self.FILE.encode())
        self.assertEqual(len(list(Path(self.folder.name).glob("a.ini*"))), 1)
        new = path.parent / "new.ini"
        self.assertIn("new file", self.answers(0, "ini", "set", new, "A", "a", "\u00f6")[1])
        self.assertEqual(new.read_bytes(), "[A]\r\na=\u00f6\r\n".encode())

    def test_check_names_line_and_column(self):
        path = self.write("a.ini", self.FILE + " X=1\r\n")
        out, _ = self.answers(1, "ini", "check", path)
        self.assertEqual([line.split(str(path))[1].split(" ")[0] for line in out.splitlines()],
                         [":6:1:", ":7:2:"])
        self.answers(0, "ini", "check", self.write("b.ini", "[A]\nx=1\n"))
        self.answers(3, "ini", "check", "missing.ini", path)


class RegistryTest(ToolTest):
    ROOT = r"HKCU\Software\KPX"
    KEY = r"HKEY_CURRENT_USER\Software\KPX\Settings"

    def setUp(self):
        super().setUp()
        for root in ("USER", "MACHINE"):
            os.environ[f"KPX_{root}_REGISTRY"] = str(Path(self.folder.name) / f"{root}.sqlite")
            self.addCleanup(os.environ.pop, f"KPX_{root}_REGISTRY")
        if ON_WINDOWS:  # one registry for all tests
            kpx("registry", "del", self.ROOT, "--tree")

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
        self.answers(1, "registry", "del", self.ROOT)
        self.answers(0, "registry", "del", self.KEY, "X")
        self.answers(1, "registry", "get", self.KEY, "x")
        self.answers(0, "registry", "del", self.KEY)
        self.answers(1, "registry", "list", self.KEY)
        self.answers(0, "registry", "del", self.ROOT, "--tree")
        self.answers(1, "registry", "list", self.ROOT)
        self.answers(2, "registry", "list", r"HKEY_USERS\x")
        self.assertIn("a root stays", self.answers(2, "registry", "del", "HKCU\\", "--tree")[1])

    def test_export_import_and_diff(self):
        self.answers(0, "registry", "set", self.KEY, "Größe", 'with "quotes" \\')
        self.answers(0, "registry", "set", self.KEY, "Place", "00" * 60, "--type", "binary")
        exported = Path(self.folder.name) / "a.reg"
        self.answers(0, "registry", "export", self.ROOT, exported)
        content = exported.read_bytes()
        self.assertTrue(content.startswith(
            b"\xff\xfe" + "Windows Registry Editor Version 5.00\r\n\r\n".encode("utf-16-le")))
        self.assertEqual(self.answers(0, "registry", "diff", self.ROOT, exported)[0], "")
        self.answers(0, "registry", "set", self.KEY, "New", "1")
        self.answers(0, "registry", "del", self.KEY, "Place")
        out, _ = self.answers(1, "registry", "diff", self.ROOT, exported)
        self.assertIn('"New"=-', out)
        self.assertIn('"Place"=hex:00,', out)
        steps = json.loads(self.answers(1, "registry", "diff", self.ROOT, exported, "--json")[0])["steps"]
        self.assertEqual([(step["action"], step["name"]) for step in steps],
                         [("remove_value", "New"), ("write", "Place")])
        self.answers(0, "registry", "import", "-", stdin=out.encode())
        self.assertEqual(self.answers(0, "registry", "diff", self.ROOT, exported)[0], "")
        self.answers(0, "registry", "del", self.ROOT, "--tree")
        self.answers(0, "registry", "import", exported)
        self.assertEqual(self.get("Größe"), 'with "quotes" \\\n')

    def test_a_wrong_line_imports_nothing(self):
        path = self.write("a.reg", "Windows Registry Editor Version 5.00\n\n[HKCU\\A]\n"
                                   '"x"=dword:1\n"y"=word:1\n')
        _, err = self.answers(3, "registry", "import", path)
        self.assertIn(f"{path}:5: ", err)
        self.answers(1, "registry", "list", r"HKCU\A")

    @unittest.skipIf(ON_WINDOWS, "the system's registry is no file")
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
        for missing in ("fra", "../ENG", "x [../ENG.LNG]"):
            self.answers(3, "texts", "get", 614, "--language", missing)
        file = Path(PROGRAM).parent / "MLT" / "ENG.LNG"
        self.assertEqual(kpx("texts", "check", file)[0], 0)
        german = Path(__file__).resolve().parents[2] / "kpx" / "support" / "texts" / "deu.tsv"
        out = kpx("texts", "coverage", file, "--german", german, "--json")[1]
        self.assertEqual(json.loads(out)["files"][0]["missing"], [])
        code, out, _ = kpx("texts", "diff", "", file, "--json")
        self.assertIn({"id": 1528, "before": "Unbekannt", "after": "Unknown"}, json.loads(out)["differences"])
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
                               ("{\"texts\": [", ":1:12: is no JSON: it ends")):
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
        found = [(finding["id"], finding["entry"]) for finding in json.loads(out)["files"][0]["findings"]]
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
        trace = json.loads(self.answers(0, "timers", "trace", path)[0])
        bars = [event for event in trace["traceEvents"] if event["ph"] == "X"]
        self.assertEqual([(bar["name"], bar["dur"], bar["args"]["calls"]) for bar in bars],
                         [("long", 600250, 1001), ("a, b", 1500, 3)])
        self.assertEqual(len({(bar["pid"], bar["tid"]) for bar in bars}), 2)

    def test_other_files_are_refused_with_the_line(self):
        for content, line, timers in (("", 1, 0), ("a,b\n", 1, 0), (self.CSV + "x\n", 8, 2),
                                      (self.CSV.replace("a, b,1.500000,3", "a, b,1..5,3"), 5, 1)):
            out, err = self.answers(3, "timers", "show", self.write("t.csv", content))
            self.assertIn(f"t.csv:{line}:1:", err)
            # What is whole is shown all the same.
            self.assertEqual(len(re.findall(r"%.*\d", out)), timers)


class NasTest(ToolTest):
    def test_codes_are_listed_and_looked_up_both_ways(self):
        lines = self.answers(0, "nas", "codes")[0].splitlines()
        kinds = json.loads(self.answers(0, "nas", "codes", "--json")[0])["kinds"]
        self.assertEqual(lines, [f"{kind['code']}  {kind['name']}" for kind in kinds])
        self.assertEqual(len(kinds), 91)
        for wanted in (kinds[2]["name"], str(kinds[2]["code"])):
            self.assertEqual(self.answers(0, "nas", "codes", wanted)[0], lines[2] + "\n")

    def test_unknown_codes_get_one_sentence_with_what_may_be_meant(self):
        for wanted, mentioned in (("ax_flurstueck", "AX_Flurstueck (11001)"),
                                  ("Flurst\u00fcck", "AX_Flurstueck (11001)"),
                                  ("Grenzpunkt", "AX_Grenzpunkt (11003)"), ("xyz", "'xyz'"),
                                  ("", "''"), ("A" * 5000, "A" * 600), ("11009", "11009"),
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
        self.assertEqual(self.answers(0, "errors", 71472)[0],
                         "71472  InitMLT: the texts in the user's language were being loaded\n")
        self.assertIn(": the setting CFGConfigCA2T of CFGConfigCalculation was being read\n",
                      self.answers(0, "errors", 43963)[0])
        reset = json.loads(self.answers(0, "errors", 900001, "--json")[0])["errors"]
        self.assertEqual([(each["class"], each["accessor"]) for each in reset],
                         [("CFGGeneralSettings", "ResetPos")])
        self.answers(1, "errors", 1)
        for wrong in ("x", "1x", "99999999999"):
            self.answers(2, "errors", wrong)

    def test_list_has_each_number_once_and_in_order(self):
        numbers = [each["number"] for each in
                   json.loads(self.answers(0, "errors", "list", "--json")[0])["errors"]]
        self.assertEqual(numbers, sorted(set(numbers)))
        self.assertEqual(len(self.answers(0, "errors", "list")[0].splitlines()), len(numbers))
        for table in Path(__file__).resolve().parents[2].glob("kpx/*/Operations.h"):
            stated = re.findall(r"^    \{(\d+), ", table.read_text(encoding="utf-8"), re.M)
            self.assertLessEqual(set(map(int, stated)), set(numbers), table)


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
                self.assertEqual([each["line"] for each in found["files"][0]["entries"]], lines)
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
        watcher = subprocess.Popen([*KPX, "log", "follow", path, "--seconds", "60", "--json"],
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
            lines = json.loads(self.answers(1, "doctor", "--json")[0])["facts"]
            out, _ = self.answers(1, "doctor")
        facts = {each["name"]: each for each in lines}
        self.assertTrue(all(each["source"] for each in lines))
        program = facts["program folder"]
        self.assertEqual((program["value"], program["source"]),
                         (environment["KPX_INI"], "environment variable KPX_INI"))
        self.assertIn("no such file", program["problem"])
        self.assertEqual(facts["home folder"]["problem"], "")
        if not ON_WINDOWS:  # with one registry for all tests
            self.assertEqual(facts["error log"]["value"], "/Error.log")
            self.assertIn(environment["KPX_USER_REGISTRY"], out)
        self.assertIn("    ! ", out)
        self.assertEqual(sorted(path.name for path in folder.iterdir()), ["general.xml"],
                         "looking creates nothing")
