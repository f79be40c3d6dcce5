#!/usr/bin/env python3
"""Prints what scripts/fuzz has found, as a table.

    fuzz_table.py BUILD RUNS FUZZER...    exit status 1 when a fuzzer failed or could not be run
"""

import json
import os
import subprocess
import sys


def counts(top, path):
    """Returns what gcov says of the counts at PATH, which lie in TOP as their program left them."""
    # The notes of the compiler are looked for beside the counts.
    beside = path[:-len("gcda")] + "gcno"
    if not os.path.exists(beside):
        os.symlink(path[len(top):-len("gcda")] + "gcno", beside)
    # Counts of an object that was compiled anew meanwhile cannot be read.
    text = subprocess.run(["gcov", "--json-format", "--stdout", path], capture_output=True, check=False).stdout
    return [file for line in text.splitlines() for file in json.loads(line)["files"]]


def reached(build, fuzzer, source):
    """Returns the number of SOURCE's lines that FUZZER reached, that of all, and the numbers of those it did not."""
    top = os.path.join(build, "found", fuzzer)
    lines = {}
    for folder, _, names in os.walk(top):
        if os.path.basename(source) + ".gcda" not in names:
            continue
        for file in counts(top, os.path.join(folder, os.path.basename(source) + ".gcda")):
            if file["file"].endswith("/src/" + source):
                for entry in file["lines"]:
                    number = entry["line_number"]
                    lines[number] = max(lines.get(number, 0), entry["count"])
    missed = sorted(number for number, count in lines.items() if count == 0)
    return len(lines) - len(missed), len(lines), missed


def main():
    build, runs, chosen = sys.argv[1], sys.argv[2], sys.argv[3:]
    sources = {}
    with open(os.path.join(build, "tests/fuzz/fuzzers.txt"), encoding="utf-8") as rows:
        for row in rows:
            name, *files = row.split()
            sources[name] = files
    failed = 0
    print(f"{'fuzzer':<16} {'executions':>10} {'seconds':>8} {'a second':>9}  lines reached")
    for fuzzer in chosen:
        folder = os.path.join(build, "found", fuzzer)
        try:
            with open(os.path.join(folder, "ended"), encoding="utf-8") as ended:
                status, begin, end = ended.read().split()
            seconds = float(end) - float(begin)
        except (OSError, ValueError):
            status, seconds = "1", 0
        if status != "0":
            failed = 1
            print(f"{fuzzer:<16} failed, see {folder}")
            continue
        shares = []
        for source in sources[fuzzer]:
            count, lines, missed = reached(build, fuzzer, source)
            failed = failed or not lines
            shares.append(f"{source} {100 * count // lines} %" if lines else f"{source} not measured")
            with open(os.path.join(folder, "missed"), "a", encoding="utf-8") as note:
                note.write(f"{source}: {missed}\n")
        rate = int(runs) / seconds
        print(f"{fuzzer:<16} {runs:>10} {seconds:>8.0f} {rate:>9.0f}  {', '.join(shares)}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
