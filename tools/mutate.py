#!/usr/bin/env python3
"""Breaks the engine in one place after the other, and counts how often a test notices.

usage: mutate.py [--build DIR] [--seed N] [--count N] [--minutes N] [--jobs N] [--again LOG] [--since COMMIT]
                 [--check] [FOLDER...]

A mutation is one small change of one line: a relation, an operator, a constant, a negation, a statement left
out. Each is compiled alone, linked in front of the library that holds the original, and tried by the tests of
its folder. One that compiles to the same code changes nothing and does not count. Without --count every
mutation there is runs, in an order drawn by --seed; --minutes ends the run early with what has been tried;
--again tries nothing but what an earlier run, whose output is in LOG, saw survive, and --since nothing but
lines that have changed since a commit.

Survivors that are explained stand in tools/mutation_survivors.txt; one that no longer stands in the code ends
the run, and --check looks for nothing else. Ends with status 1 when less than 90 % of
all that was tried is noticed, or when a survivor is not explained.
"""
import argparse
import concurrent.futures
import os
import pathlib
import random
import re
import subprocess
import sys
import time

from mutation_trial import Build
from mutations import ROOT, all_mutations, explained_survivors

GOAL = 90.0
# The tests of a folder, the ones that notice most first.
TESTS = {
    "Sources/samples_ticks_converter": ["samples_ticks_converter_test"],
    "Sources/ob_show_control": ["ob_show_control_test"],
    "Sources/file_loader": ["file_loader_test"],
    "Sources/audio_player": ["audio_player_test", "audio_player_threads_test", "session_memory_test"],
    "reference_suite/player_core": ["reference_player_core_test", "scenarios_test"],
}


def report(results, minutes):
    """Says per folder what was noticed; whether that is enough."""
    print(f"\n{'folder':34} {'tried':>6} {'noticed':>8} {'score':>7} {'explained':>10} {'unexplained':>12}")
    total = [0, 0, 0]
    for folder in TESTS:
        counts = [sum(1 for f, r in results if f == folder and r == kind)
                  for kind in ("noticed", "explained", "survived")]
        if sum(counts):
            total = [a + b for a, b in zip(total, counts)]
            print_row(folder, counts)
    print_row("all", total)
    idle = sum(1 for _, r in results if r in ("same", "no program"))
    print(f"{idle} more change nothing or do not compile; {minutes:.0f} min")
    return score(total) >= GOAL and total[2] == 0


def print_row(name, counts):
    print(f"{name:34} {sum(counts):6} {counts[0]:8} {score(counts):5.1f} % {counts[1]:10} {counts[2]:12}")


def score(counts):
    return 100.0 * counts[0] / sum(counts) if sum(counts) else 100.0


def survivors_of(log):
    return set(re.findall(r"^survived: (.*) \| line \d+$", pathlib.Path(log).read_text(), re.MULTILINE))


def lines_changed_since(commit, folders):
    """(file, number from 1) of every line there is now that was not there then."""
    diff = subprocess.run(["git", "diff", "-U0", commit, "--", *folders], cwd=ROOT, check=True, capture_output=True,
                          text=True).stdout
    lines, file = set(), ""
    for row in diff.splitlines():
        if row.startswith("+++ "):
            file = row.removeprefix("+++ b/")
        hunk = re.match(r"@@ -\S+ \+(\d+)(?:,(\d+))? @@", row)
        if hunk:
            first, count = int(hunk[1]), int(hunk[2] or 1)
            lines.update((file, number) for number in range(first, first + count))
    return lines


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default="build/mutate", help="a configured Ninja build with compile commands")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--count", type=int, default=0, help="0: all of them")
    parser.add_argument("--minutes", type=float, default=0, help="0: as long as it takes")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="compilers at a time")
    parser.add_argument("--again", metavar="LOG")
    parser.add_argument("--since", metavar="COMMIT", help="only lines that have changed since then")
    parser.add_argument("--check", action="store_true", help="only see that what is explained still stands in the code")
    parser.add_argument("folders", nargs="*", default=list(TESTS), metavar="FOLDER")
    options = parser.parse_args()
    unknown = [folder for folder in options.folders if folder not in TESTS]
    if unknown:
        sys.exit(f"no tests are known for {', '.join(unknown)}; there are {', '.join(TESTS)}")

    explained = explained_survivors()
    if options.check:
        return print(f"{len(explained)} survivors are explained, and all of them stand in the code")
    mutations = list(all_mutations(options.folders))
    if options.again:
        survivors = survivors_of(options.again)
        mutations = [mutation for mutation in mutations if mutation.name in survivors]
    if options.since:
        lines = lines_changed_since(options.since, options.folders)
        mutations = [mutation for mutation in mutations if (str(mutation.source), mutation.number + 1) in lines]
        print(f"{len(mutations)} mutations of lines changed since {options.since}", flush=True)
    random.Random(options.seed).shuffle(mutations)
    if options.count:
        mutations = mutations[:options.count]
    build = Build(options.build, sorted({test for folder in options.folders for test in TESTS[folder]}), options.jobs)
    start, results = time.monotonic(), []

    def run(mutation):
        if options.minutes and time.monotonic() - start > 60 * options.minutes:
            return
        outcome = build.attempt(mutation, TESTS[mutation.folder])
        if mutation.name in explained and outcome == "survived":
            outcome = "explained"
        elif mutation.name in explained:
            print(f"explained, but {outcome}: {mutation}", flush=True)
        results.append((mutation.folder, outcome))
        if outcome == "survived":
            print(f"survived: {mutation}", flush=True)
        if len(results) % 50 == 0:
            print(f"{len(results)} of {len(mutations)}, {(time.monotonic() - start) / 60:.0f} min", flush=True)

    with concurrent.futures.ThreadPoolExecutor(4 * options.jobs) as pool:
        list(pool.map(run, mutations))
    build.close()
    sys.exit(0 if report(results, (time.monotonic() - start) / 60) else 1)


if __name__ == "__main__":
    main()
