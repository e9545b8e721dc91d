#!/usr/bin/env python3
"""line_coverage.py FOLDER MINIMUM: prints which lines of src/ no test ran, file by file, from the counts
below FOLDER; fails below MINIMUM percent.

Counts of test programs are read as well: of an inline function the linker keeps one copy, often theirs.
Debian's gcovr stops at functions of one name in two places of a file, which lambdas and templates make."""
import collections
import json
import pathlib
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor


def reports(counts, folder):
    result = subprocess.run(["x86_64-w64-mingw32-gcov", "--json-format", "--stdout", counts],
                            capture_output=True, cwd=folder, check=True)
    lines = result.stdout.decode("utf-8", "replace").splitlines()
    return [json.loads(line) for line in lines if line.startswith("{")]


def main(folder, minimum):
    hits = collections.defaultdict(collections.Counter)
    counts = sorted(path.resolve() for path in pathlib.Path(folder).rglob("*.gcda"))
    with ThreadPoolExecutor() as pool:
        for found in pool.map(lambda path: reports(path, folder), counts):
            for file in (file for report in found for file in report["files"]):
                name = "src/" + file["file"].rpartition("src/")[2]
                if "src/" not in file["file"] or file["file"].startswith("/usr/"):
                    continue
                for line in file["lines"]:
                    hits[name][line["line_number"]] += line["count"]
    total = sum(len(lines) for lines in hits.values())
    run = sum(1 for lines in hits.values() for count in lines.values() if count)
    for name, lines in sorted(hits.items()):
        missed = sorted(number for number, count in lines.items() if not count)
        if missed:
            print(f"{name}: {len(missed)} of {len(lines)}: {', '.join(map(str, missed))}")
    percent = 100 * run / total if total else 0.0
    print(f"lines: {percent:.1f} % ({run} of {total})")
    return 0 if percent >= minimum else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], float(sys.argv[2])))
