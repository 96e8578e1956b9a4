#!/usr/bin/env python3
"""Fails on an include of a higher layer, of an internal folder from outside the folder it lies in,
on a circle of includes, and on an operating-system header or #if outside kpx/platform. The layers
stand in layers.txt beside this script."""

import re
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
INCLUDE = re.compile(r'^\s*#\s*include\s+(["<])([^">]+)[">]')
SYSTEM_CONDITION = re.compile(
    r"^\s*#\s*(if|ifdef|ifndef|elif)\b.*\b(_WIN32|_WIN64|__linux__|__unix__|__APPLE__|WIN32)\b")
SYSTEM_HEADERS = re.compile(
    r"^(windows\.h|unistd\.h|fcntl\.h|dlfcn\.h|pwd\.h|iconv\.h|dirent\.h|sys/.*|linux/.*)$")


def read_layers(path):
    layers = {}
    for line in path.read_text().splitlines():
        line = line.split("#")[0].split()
        if line:
            layers[line[1]] = int(line[0])
    return layers


def layer_of(path):
    parts = Path(path).parts
    return parts[1] if len(parts) > 2 and parts[0] == "kpx" else None


def enters_internals(name, target):
    """Whether a file looks into the internals of a folder that it does not lie in."""
    owner, found, _ = target.partition("internal/")
    return bool(found) and not name.startswith(owner)


def check(root, layers):
    problems = []
    includes = {}
    for folder in ("tools", "examples"):
        for path in sorted((root / folder).rglob("*.[hc]*")):
            name = path.relative_to(root).as_posix()
            for target in re.findall(r'#include "(kpx/[^"]*)"', path.read_text(encoding="utf-8")):
                if enters_internals(name, target):
                    problems.append(f"{name}: may not enter {target}")
    for path in sorted((root / "kpx").rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        name = path.relative_to(root).as_posix()
        own = layer_of(name)
        includes[name] = []
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            where = f"{name}:{number}"
            if SYSTEM_CONDITION.match(line) and own != "platform":
                problems.append(f"{where}: operating-system condition outside kpx/platform")
            match = INCLUDE.match(line)
            if not match:
                continue
            bracket, target = match.groups()
            if bracket == "<" and SYSTEM_HEADERS.match(target) and own != "platform":
                problems.append(f"{where}: system header {target} outside kpx/platform")
            used = layer_of(target)
            if used is None:
                continue
            includes[name].append(target)
            if enters_internals(name, target):
                problems.append(f"{where}: may not enter {target}")
            if own is None:
                continue  # the umbrella header
            for layer in (own, used):
                if layer not in layers:
                    problems.append(f"{where}: layer {layer} is not in layers.txt")
                    break
            else:
                if layers[used] > layers[own]:
                    problems.append(f"{where}: layer {own} may not include {used}")
    return problems + circles(includes)


def circles(includes):
    found, done = [], set()

    def visit(name, trail):
        if name in trail:
            found.append("circle: " + " -> ".join(trail[trail.index(name):] + [name]))
        elif name not in done:
            for target in includes.get(name, []):
                visit(target, trail + [name])
            done.add(name)

    for name in includes:
        visit(name, [])
    return found


def self_test():
    """The check itself must notice what it is there for."""
    import tempfile
    with tempfile.TemporaryDirectory() as folder:
        root = Path(folder)
        for layer, text in (("low", '#include "kpx/high/b.h"\n#include <unistd.h>\n'),
                            ("high", '#include "kpx/low/a.h"\n#ifdef _WIN32\n#endif\n'
                                     '#include "kpx/low/internal/c.h"\n')):
            (root / "kpx" / layer).mkdir(parents=True)
            (root / "kpx" / layer / ("a.h" if layer == "low" else "b.h")).write_text(text)
        problems = "\n".join(check(root, {"low": 0, "high": 1}))
        for expected in ("low may not include high", "circle:", "unistd.h", "condition outside",
                         "may not enter kpx/low/internal/c.h"):
            if expected not in problems:
                return f"the layer check overlooks: {expected}"
    return None


def main():
    failure = self_test()
    problems = [failure] if failure else check(HERE.parent.parent,
                                               read_layers(HERE / "layers.txt"))
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
