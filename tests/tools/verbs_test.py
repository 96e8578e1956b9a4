"""What holds for every verb: wrong usage, lost output, hostile texts, the commands of the README."""

import json
import os
import re
import shlex
import subprocess
import time
import unittest
import unittest.mock
import zipfile
from pathlib import Path

from runner import run
from tool import KPX, ON_WINDOWS, PROGRAM, ToolTest, kpx

PROJECT = Path(__file__).resolve().parents[2]


def verbs():
    """Every verb with the arguments that its help names."""
    for line in kpx("--help-all")[1].splitlines():
        words = line.replace("[", "").replace("]", "").split()
        if line.startswith("Usage: ") and "VERB" not in words:
            begin = words.index("OPTIONS")
            yield words[2:begin], words[begin + 1:]


class VerbsTest(ToolTest):
    def setUp(self):
        super().setUp()
        here = Path(self.folder.name)
        environment = {"HOME": str(here), "KPX_USER_REGISTRY": str(here / "user.db"),
                       "KPX_MACHINE_REGISTRY": str(here / "machine.db")}
        patch = unittest.mock.patch.dict(os.environ, environment)
        patch.start()
        self.addCleanup(patch.stop)


class UsageTest(VerbsTest):
    def test_no_verb_takes_an_option_or_argument_too_many(self):
        found = list(verbs())
        self.assertGreater(len(found), 30)
        for verb, arguments in found:
            given = ["x"] * len(arguments)
            with self.subTest(verb=verb):
                _, err = self.answers(2, *verb, *given, "--no-such")
                self.assertIn(f"'--no-such' is no option of kpx {' '.join(verb)};", err)
                if not (arguments and arguments[-1].endswith("...")):
                    _, err = self.answers(2, *verb, *given, "surplus")
                    self.assertIn("'surplus' is one argument too many: kpx", err)
        self.assertEqual(list(Path(self.folder.name).iterdir()), [self.file])

    def test_what_is_meant_is_asked(self):
        before = self.file.read_bytes()
        for arguments, sentence in (
                (("confg",), "'confg' is no verb; did you mean 'config'?"),
                (("config", "val"), "'val' is no verb; did you mean 'validate'?"),
                ((), "a verb is missing"), (("config", "defaults", "CFGHeadr"), "'CFGHeader'"),
                (("xml",), "a verb is missing; kpx xml --help"),
                (("config", "set", self.file, "NIV_LG", "7", "--dryrun"), "did you mean '--dry-run'?"),
                (("config", "get", self.file), "KEY is missing: kpx config get [OPTIONS] FILE|CLASS KEY"),
                (("config", "get", self.file, "NIV_LG", "--index"), "--index needs a value"),
                (("config", "get", self.file, "NIV_LG", "--index", "0x1"), "'0x1' is no whole number"),
                (("config", "convert", self.file, "--to", "yaml"), "'yaml' is none of json, csv"),
                (("unzip", "a.zip", "--list", "--test"), "--list and --test do not go together"),
                (("ini", "set", "a.ini", "S", "K", "-x"), "a value that begins with - needs --"),
                (("ini", "set", "a.ini", "S", "K", "1", "++"), "'++' needs -- before it"),
                (("xml", "check", "-", "-"), "read only once")):
            with self.subTest(arguments=arguments):
                self.assertIn(sentence, self.answers(2, *arguments)[1])
        self.assertEqual(self.file.read_bytes(), before)


@unittest.skipUnless(Path("/dev/full").exists() and not ON_WINDOWS, "no full device here")
class LostOutputTest(VerbsTest):
    def code(self, *arguments, stdout="/dev/full", stdin=b""):
        with open(stdout, "wb") as full:
            return subprocess.run([*KPX, *map(str, arguments)], stdout=full, input=stdin,
                                  stderr=subprocess.PIPE, timeout=60).returncode

    def test_a_change_that_cannot_be_told_is_no_refusal(self):
        before = self.file.read_bytes()
        here = Path(self.folder.name)
        for arguments in (("config", "set", self.file, "NIV_LG", "7", "--dry-run"),
                          ("classes", "export"), ("--help",)):
            self.assertEqual(self.code(*arguments), 4)
        self.assertEqual(self.code("config", "set", "-", "NIV_LG", "7", stdin=before), 4)
        self.assertEqual(self.file.read_bytes(), before)
        self.assertEqual(self.code("config", "set", self.file, "NIV_LG", "7"), 6)
        self.assertIn("7", self.answers(0, "config", "get", self.file, "NIV_LG")[0])
        self.assertEqual(self.code("xml", "format", self.file, "--write", "--json"), 6)
        self.answers(0, "xml", "format", self.file, "--check")
        with zipfile.ZipFile(here / "a.zip", "w") as archive:
            archive.writestr("a.txt", "x")
        self.assertEqual(self.code("unzip", here / "a.zip", "--test"), 4)
        self.assertEqual(self.code("unzip", here / "a.zip", "-d", here / "out"), 6)
        self.assertEqual((here / "out" / "a.txt").read_text(), "x")

    def test_a_closed_output_gets_into_no_file(self):
        command = shlex.join([PROGRAM, "config", "set", str(self.file), "NIV_LG", "7"])
        done = subprocess.run(["sh", "-c", command + " >&-"], stderr=subprocess.PIPE, timeout=60)
        self.assertEqual(done.returncode, 6)
        self.answers(0, "config", "validate", self.file)

    def test_of_several_files_some_are_written(self):
        path = self.write("a.xml", "<a><b/></a>")
        arguments = ("xml", "format", "--write", path, "/dev/stdin")
        self.answers(5, *arguments, stdin=path.read_bytes())  # a pipe cannot be replaced
        self.assertEqual(path.read_text(), "<a>\n  <b/>\n</a>\n")
        self.answers(4, *arguments, stdin=b"<a><b/></a>")


class HostileTextsTest(VerbsTest):
    EVIL = "\x1b[2J\x07\x9b1m\x7f\u202e"
    # What a terminal could take for a command; line ends and tabs are none.
    COMMANDS = re.compile("[\x00-\x08\x0b\x0c\x0e-\x1f\x7f-\x9f\u202e]")

    def files(self):
        """Files of all kinds with such characters in every text, in a folder with such a name."""
        here = Path(self.folder.name) / f"a{self.EVIL}b"
        here.mkdir()
        header = kpx("config", "defaults", "CFGHeader")[1].split("\n", 1)[1]
        evil_class = (f'<CFGConfigX{self.EVIL}><CFGClass Odd{self.EVIL}="1"><CFGCol Name="K{self.EVIL}">'
                      f'<CFGValue Value="v{self.EVIL}"/></CFGCol></CFGClass></CFGConfigX{self.EVIL}>')
        contents = {
            "a.xml": "<p>" + header.replace('Value=""', f'Value="{self.EVIL}"').replace(
                '"Class"', f'"{self.EVIL}"') + evil_class + "</p>",
            "bad.xml": f"<a {self.EVIL}='1'><b{self.EVIL}>&{self.EVIL};</c{self.EVIL}>",
            "a.json": '{"format": "kpx-configurations", "' + self.EVIL + '": 1}',
            "a.ini": f"[S{self.EVIL}]\nk{self.EVIL}=v{self.EVIL}\nk{self.EVIL}=1\n",
            "a.tsv": f"541\t{self.EVIL}\n614\t{self.EVIL}\n{self.EVIL}\t1\n",
            "list.json": '{"title": "' + self.EVIL + '", "texts": 1}',
            "a.csv": f"Timer name,Time (ms),# Calls\nt{self.EVIL},1.5,2\n{self.EVIL}\n",
            "a.reg": "Windows Registry Editor Version 5.00\n\n"
                     f'[HKEY_CURRENT_USER\\K{self.EVIL}]\n"n{self.EVIL}"="v{self.EVIL}"\n',
            "bad.reg": f"Windows Registry Editor Version 5.00\n\n[{self.EVIL}]\n",
            "a.log": f"Projekt: {self.EVIL}    Job: {self.EVIL}    Fehler: 1     Datum / Zeit: "
                     f"05.03.2021 / 08:03:04    User: {self.EVIL} (pc, 1 MB)\nx{self.EVIL}\n",
        }
        for name, content in contents.items():
            (here / name).write_text(content, encoding="utf-8", newline="")
        with zipfile.ZipFile(here / "a.zip", "w") as archive:
            archive.writestr(f"e{self.EVIL}", "x")
            archive.writestr(f"../{self.EVIL}", "x")
        return here

    def commands(self, here):
        a, ini, log, zipped = here / "a.xml", here / "a.ini", here / "a.log", here / "a.zip"
        key = f"HKCU\\K{self.EVIL}"
        yield from (("registry", "import", here / "a.reg"), ("registry", "import", here / "bad.reg"))
        for json in ((), ("--json",)):
            for arguments in (
                    ("config", "show", a), ("config", "show", a, here / "bad.xml"),
                    ("config", "get", a, f"K{self.EVIL}"), ("config", "get", a, f"no{self.EVIL}"),
                    ("config", "set", a, f"K{self.EVIL}", "1"),
                    ("config", "set", a, "Description", self.EVIL, "--dry-run"),
                    ("config", "diff", a), ("config", "diff", a, "CFGHeader"),
                    ("config", "validate", a), ("classes", "show", self.EVIL),
                    ("xml", "check", here / "bad.xml"), ("xml", "stats", a, here / "bad.xml"),
                    ("xml", "format", a), ("xml", "format", a, "--check"),
                    ("ini", "get", ini, f"S{self.EVIL}", f"k{self.EVIL}"), ("ini", "list", ini),
                    ("ini", "get", ini, "S", self.EVIL), ("ini", "check", ini),
                    ("texts", "get", "614", here / "a.tsv"), ("texts", "dump", here / "a.tsv"),
                    ("texts", "dump", here / "list.json"), ("texts", "check", here / "a.tsv"),
                    ("texts", "coverage", here / "a.tsv"), ("texts", "diff", here / "a.tsv", ""),
                    ("texts", "get", "1", "--language", self.EVIL),
                    ("timers", "show", here / "a.csv"), ("errors", self.EVIL),
                    ("nas", "codes", self.EVIL), ("log", "show", log, log), ("log", "stats", log),
                    ("log", "follow", here, "--seconds", "1"),
                    ("registry", "get", key, f"n{self.EVIL}"), ("registry", "get", key, self.EVIL),
                    ("registry", "list", "HKCU"), ("registry", "list", key),
                    ("registry", "export", "HKCU"), ("registry", "diff", here / "a.reg", "HKLM"),
                    ("unzip", zipped, "--list"), ("unzip", zipped, "-d", here / "out"), ("doctor",)):
                yield (*arguments, *json)
        for to in ("json", "csv", "ini", "xml"):
            yield ("config", "convert", a, "--to", to)
        yield ("config", "convert", here / "a.json", "--to", "xml")
        yield ("timers", "trace", here / "a.csv")
        yield ("texts", "build", here / "a.tsv", "-")
        yield ("ini", "set", here / "new.ini", "]", self.EVIL, "1")
        yield ("registry", "set", self.EVIL, "1")
        yield (self.EVIL,)
        yield ("config", "show", a, f"--{self.EVIL}")

    @unittest.skipIf(ON_WINDOWS, "no pseudo terminal")
    def test_no_verb_sends_them_to_a_terminal(self):
        import pty
        here = self.files()
        environment = {**os.environ, "KPX_INI": str(here)}
        left = {tuple(verb) for verb, _ in verbs()}
        for arguments in self.commands(here):
            left -= {arguments[:1], arguments[:2]}
            controller, terminal = pty.openpty()
            done = subprocess.Popen([*KPX, *map(str, arguments)], stdin=subprocess.DEVNULL,
                                    stdout=terminal, stderr=terminal, env=environment)
            os.close(terminal)
            shown = b""
            try:
                while chunk := os.read(controller, 1 << 16):
                    shown += chunk
            except OSError:  # how the other end of a terminal tells that it is closed
                pass
            os.close(controller)
            self.assertIn(done.wait(60), range(7))
            with self.subTest(arguments=arguments):
                self.assertTrue(shown or arguments[:2] == ("registry", "import"))
                found = self.COMMANDS.search(shown.decode())
                self.assertIsNone(found, found and shown[max(0, found.start() - 80):found.end() + 20])
        self.assertEqual(left, {("config", "defaults"), ("classes", "list"), ("classes", "export"),
                                ("ini", "del"), ("registry", "del")}, "these show no texts of files")

    @unittest.skipIf(ON_WINDOWS, "no such names of files")
    def test_data_on_a_pipe_is_exact(self):
        here = self.files()
        for verb in (("config", "get", here / "a.xml"), ("ini", "get", here / "a.ini", f"S{self.EVIL}")):
            key = ("K" if verb[0] == "config" else "k") + self.EVIL
            self.assertEqual(self.answers(0, *verb, key)[0], f"v{self.EVIL}\n")
        listed = kpx("unzip", here / "a.zip", "--list")[1]
        self.assertIn("e\\x1b[2J\\x07\\xc2\\x9b1m\\x7f\\xe2\\x80\\xae", listed)

    def test_names_in_messages_are_cut(self):
        long = "N" * 900
        path = self.write("long.xml", f'<CFGConfig{long}><CFGClass><CFGCol Name="{9 * long}"/>'
                                      f"</CFGClass></CFGConfig{long}>")
        for arguments in (("config", "get", path, "x"), ("config", "validate", path),
                          ("xml", "check", self.write("bad.xml", f"<{long}>"))):
            code, out, err = kpx(*arguments)
            self.assertEqual(code, 1)
            self.assertLess(len(out + err), 1500)


class JsonTest(VerbsTest):
    """The answers with --json are as docs/json.md says: each field of an answer stands there, and each
    field that stands there comes in an answer of its verb."""

    def documented(self):
        """The fields of each verb, and the kinds of problems."""
        fields, kinds = {}, {}
        text = (PROJECT / "docs" / "json.md").read_text(encoding="utf-8")
        for section in re.split(r"^#+ ", text, flags=re.M)[1:]:
            title, rows = section.split("\n", 1)
            rows = [row.split("|") for row in rows.splitlines() if row.startswith("| `")]
            if title == "Problems":
                kinds = {row[1].strip(" `"): set(re.findall(r"`(.*?)`", row[2])) for row in rows}
            elif rows:
                fields[title] = {row[1].strip(" `"): row[2].strip() for row in rows}
        self.assertEqual(list(fields.pop("Answers in JSON")), ["form"])
        return fields, kinds

    def commands(self):
        """By verb, commands that together tell all fields."""
        general, header = self.file, kpx("config", "defaults", "CFGHeader")[1]
        body = header.split("\n", 1)[1]
        odd = self.write("odd.xml", f"<p>{body}{body.replace('CFGClassHeader', 'Strange')}</p>")
        few = self.write("few.xml", re.sub("<CFGCol Name=.Class.*?</CFGCol>", "", header, flags=re.S)
                         .replace('Value=""', 'Value="x"'))
        keys = "".join(f'<CFGCol Name="k{i}"/>' for i in range(1200))
        many = self.write("many.xml", f"<CFGConfigCFGClassHeader><CFGClass>{keys}</CFGClass>"
                                      "</CFGConfigCFGClassHeader>")
        bad = self.write("bad.xml", "<!DOCTYPE a><a>" + "&b;" * 1200)
        ini = self.write("a.ini", "[A]\nx=1\n" + "nothing\n" * 1200)
        table = self.write("a.tsv", "541\tx\nx\n" + "9999999\tx\n" * 1200)
        log = self.write("a.log", "Projekt: A    Job: J    Fehler: 42905     Datum / Zeit: 05.03.2021 / "
                         "08:03:04    User: B (pc, 1 MB)\r\nProjekt: A    Job:                       Datum"
                         " / Zeit: 07.03.2021 / 09:00:00    User: B (pc7, 1 MB)  Info: weg\r\nx\r\n")
        timers = self.write("t.csv", "Timer name,Time (ms),# Calls\na,1.5,3\n")
        one = self.write("a.reg", "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\KpxShape\\A]\n"
                                  '"n"="v"\n')
        kpx("registry", "import", one)
        zipped = Path(self.folder.name) / "a.zip"
        with zipfile.ZipFile(zipped, "w") as archive:
            archive.writestr("a", "x")
            archive.writestr("../a", "x")
        missing, key = zipped.with_name("missing"), r"HKCU\KpxShape"
        return {
            "config defaults": [("CFGHeader",)], "config show": [(odd, missing)],
            "config get": [(general, "NIV_LG")], "config set": [(general, "NIV_LG", "7", "--dry-run")],
            "config diff": [(few, odd), (few,)], "config validate": [(many, missing)],
            "classes list": [()], "classes show": [("CFGHeader",)], "classes export": [()],
            "xml check": [(bad, missing)], "xml stats": [(general, missing)],
            "xml format": [(general,), ("--check", general, missing)],
            "ini get": [(ini, "A", "x")], "ini list": [(ini,)], "ini check": [(ini, missing)],
            "texts get": [("614",)], "texts dump": [(table,)], "texts check": [(table, missing)],
            "texts coverage": [(self.write("b.tsv", "614\tx\n9999999\tx\n"), missing)],
            "texts diff": [("", self.write("c.tsv", "614\tx\n"))],
            "registry get": [(key + r"\A", "n")], "registry list": [(key,), (key + r"\A",)],
            "registry export": [(key,)], "registry diff": [("HKCU\\KpxShape\\No", one)],
            "log show": [(log, missing)], "log stats": [(log,)],
            "log follow": [(log, "--seconds", "1")],
            "timers show": [(timers,)], "errors": [("900001",)], "nas codes": [("11003",)],
            "unzip": [(zipped, "--list")], "doctor": [()],
        }

    def paths(self, value, path, documented):
        """Every field below a value, as the documentation writes it, with the value."""
        if isinstance(value, list):
            for each in value:
                yield from self.paths(each, path + "[]", documented)
        elif isinstance(value, dict):
            named = any(field.startswith(f"{path}.*") for field in documented)
            for key, each in value.items():
                name = "*" if named else key
                yield from self.paths(each, f"{path}.{name}" if path else name, documented)
        else:
            yield path, value

    def followed(self, command):
        """What a verb tells while the log grows."""
        log = Path(command[2])
        watcher = subprocess.Popen([*KPX, *map(str, command)], stdout=subprocess.PIPE)
        time.sleep(0.5)
        with log.open("ab") as more:
            more.write(log.read_bytes())
        return watcher.communicate(timeout=60)[0].decode().splitlines()

    TYPES = {"text": str, "number": (int, float), "truth": bool, "null": type(None)}

    def check(self, answer, documented, kinds):
        """Names the fields of an answer, each of which has to be documented."""
        self.assertEqual(next(iter(answer.items())), ("form", 1))
        for path, value in self.paths({**answer, "form": None}, "", documented):
            if path == "form":
                continue
            self.assertIn(path, documented)
            types = tuple(self.TYPES[each] for each in documented[path].split(" or "))
            self.assertIsInstance(value, types, path)
            if path.endswith(".kind") and kinds:
                self.assertIn(value, kinds)
            yield path

    def test_every_answer_is_as_documented(self):
        fields, kinds = self.documented()
        commands = self.commands()
        listed = [" ".join(verb) for verb, _ in verbs()
                  if re.search("^  --json ", kpx(*verb, "--help")[1], re.M)]
        self.assertEqual(sorted(listed), sorted(fields))
        self.assertEqual(sorted(listed), sorted(commands))
        for verb, documented in fields.items():
            with self.subTest(verb=verb):
                seen = set()
                for arguments in commands[verb]:
                    command = (*verb.split(), *arguments, "--json")
                    follows = verb == "log follow"
                    for out in self.followed(command) if follows else [kpx(*command)[1]]:
                        seen.update(self.check(json.loads(out), documented, kinds.get(verb)))
                self.assertEqual(sorted(set(documented) - seen), [], "documented, but never told")


class ReadmeTest(VerbsTest):
    def test_every_command_works_as_it_stands_there(self):
        text = (PROJECT / "README.md").read_text(encoding="utf-8")
        section = text.split("## From the command line", 1)[1].split("\n## ", 1)[0]
        commands = [line.split("  #")[0] for line in section.splitlines()
                    if line.startswith("    kpx ")]
        self.assertGreater(len(commands), 15)
        here = Path(self.folder.name)
        for part in ("texts", "tests", "examples"):
            os.symlink(PROJECT / part, here / part)
        for command in commands:
            words = shlex.split(command)[1:]
            target = words.pop() if ">" in words else None
            words = [word for word in words if word != ">"]
            if ON_WINDOWS and words[0] == "registry":  # the tests at work beside this one share it
                continue
            with self.subTest(command=command):
                done = run([PROGRAM, *words], cwd=here)
                # A new machine has no folders for the suite.
                allowed = (0, 1) if words[:1] == ["doctor"] or words[:2] == ["config", "diff"] else (0,)
                self.assertIn(done.returncode, allowed, done.stderr)
            if target:
                (here / target).write_bytes(done.stdout)
