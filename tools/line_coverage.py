#!/usr/bin/env python3
"""line_coverage.py FOLDER MINIMUM: prints which lines of the product no test ran, file by file, from the
counts below FOLDER; fails where lines of src/ or of companions/ are below MINIMUM percent. Branches are
printed as well, without those that only an exception takes.

Counts of test programs are read as well: of an inline function the linker keeps one copy, often theirs.
Debian's gcovr stops at functions of one name in two places of a file, which lambdas and templates make."""
import collections
import json
import pathlib
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor


PARTS = ("src", "companions")


def reports(counts, folder):
    result = subprocess.run(["x86_64-w64-mingw32-gcov", "--branch-probabilities", "--json-format", "--stdout", counts],
                            capture_output=True, cwd=folder, check=True)
    lines = result.stdout.decode("utf-8", "replace").splitlines()
    return [json.loads(line) for line in lines if line.startswith("{")]


def part_name(path):
    """The name below the project of a product's file, else None."""
    for part in PARTS:
        if not path.startswith("/usr/") and f"/{part}/" in "/" + path:
            return f"{part}/" + ("/" + path).rpartition(f"/{part}/")[2]
    return None


def percent(counts):
    return 100 * sum(1 for count in counts if count) / len(counts) if counts else 0.0


def main(folder, minimum):
    hits = collections.defaultdict(collections.Counter)
    taken = collections.defaultdict(collections.Counter)
    counts = sorted(path.resolve() for path in pathlib.Path(folder).rglob("*.gcda"))
    with ThreadPoolExecutor() as pool:
        for found in pool.map(lambda path: reports(path, folder), counts):
            for file in (file for report in found for file in report["files"]):
                name = part_name(file["file"])
                if name is None:
                    continue
                for line in file["lines"]:
                    number = line["line_number"]
                    hits[name][number] += line["count"]
                    for index, branch in enumerate(line["branches"]):
                        if not branch["throw"]:
                            taken[name][number, index] += branch["count"]
    for name, lines in sorted(hits.items()):
        missed = sorted(number for number, count in lines.items() if not count)
        if missed:
            print(f"{name}: {len(missed)} of {len(lines)}: {', '.join(map(str, missed))}")
    status = 0
    for part in PARTS:
        lines, branches = ([count for name, found in table.items() if name.startswith(part + "/")
                            for count in found.values()] for table in (hits, taken))
        print(f"{part}: {percent(lines):.1f} % of {len(lines)} lines, "
              f"{percent(branches):.1f} % of {len(branches)} branches")
        status |= percent(lines) < minimum
    return int(status)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], float(sys.argv[2])))
