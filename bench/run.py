#!/usr/bin/env python3
"""Runs the benchmarks and prints, below their own table, each figure of the library beside its
peer's from the same run. Benchmarks are named AREA/task_of_words/kpx and AREA/task_of_words/PEER."""

import json
import re
import subprocess
import sys
import tempfile
from pathlib import Path


def tasks_of(program, pattern):
    """The tasks that a filter chooses."""
    listed = subprocess.run([program, "--benchmark_list_tests", f"--benchmark_filter={pattern}"],
                            check=True, capture_output=True, text=True).stdout
    names = [line.split("/iterations:")[0].split("/min_time:")[0] for line in listed.splitlines()
             if "/" in line]
    odd = [name for name in names if not re.fullmatch(r"[a-z]+/[a-z0-9_]+/\w+", name)]
    if odd:
        sys.exit(f"bench: not named AREA/task_of_words/PROGRAM: {', '.join(odd)}")
    return list(dict.fromkeys(name.rpartition("/")[0] for name in names))


def check_filter(program, arguments):
    """Ends where a filter chooses nothing, with the names that there are."""
    all_tasks = tasks_of(program, ".")
    if arguments and not arguments[0].startswith("-") and not tasks_of(program, arguments[0]):
        print(f"bench: nothing matches '{arguments[0]}'; there are:", *all_tasks, sep="\n  ",
              file=sys.stderr)
        sys.exit(2)


def run(program, arguments):
    with tempfile.TemporaryDirectory() as folder:
        out = Path(folder) / "result.json"
        command = [program, "--benchmark_repetitions=5", "--benchmark_enable_random_interleaving",
                   "--benchmark_report_aggregates_only", f"--benchmark_out={out}",
                   "--benchmark_out_format=json", "--benchmark_min_time=0.1"]
        if arguments and not arguments[0].startswith("-"):
            command.append(f"--benchmark_filter={arguments.pop(0)}")
        if subprocess.run(command + arguments).returncode != 0:
            sys.exit("bench: the benchmark program failed")
        return json.loads(out.read_text()) if out.stat().st_size else {"benchmarks": []}


def medians(result):
    tasks = {}
    for row in result["benchmarks"]:
        if row.get("aggregate_name") not in (None, "median"):
            continue
        name = row["run_name"].split("/iterations:")[0].split("/min_time:")[0]
        task, _, program = name.rpartition("/")
        tasks.setdefault(task, {})[program] = row
    return tasks


def figure(row):
    if "bytes_per_second" in row:
        return f"{row['bytes_per_second'] / 1e6:,.0f} MB/s"
    if "bytes_per_element" in row:
        return f"{row['bytes_per_element']:,.1f} bytes"
    scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[row["time_unit"]]
    nanoseconds = row["cpu_time"] * scale
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:,.2f} {unit}"
    return f"{nanoseconds:,.1f} ns"


def times_as_good(own, peer):
    if "bytes_per_element" in own:
        return peer["bytes_per_element"] / own["bytes_per_element"]
    if "bytes_per_second" in own:
        return own["bytes_per_second"] / peer["bytes_per_second"]
    scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    return (peer["cpu_time"] * scale[peer["time_unit"]]) / (
        own["cpu_time"] * scale[own["time_unit"]])


def main():
    check_filter(sys.argv[1], sys.argv[2:])
    tasks = medians(run(sys.argv[1], sys.argv[2:]))
    print("\nMedians of this run; the last column tells how many times as good kpx is.\n")
    print(f"{'task':44} {'kpx':>14} {'peer':>14}  {'name of the peer':24} {'times':>6}")
    for task, programs in tasks.items():
        own = programs.get("kpx")
        peers = {name: row for name, row in programs.items() if name != "kpx"}
        if own and not peers:
            print(f"{task:44} {figure(own):>14}")
        for name, row in peers.items():
            if own:
                print(f"{task:44} {figure(own):>14} {figure(row):>14}  {name:24} "
                      f"{times_as_good(own, row):6.2f}")


if __name__ == "__main__":
    main()
