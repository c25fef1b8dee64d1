#!/usr/bin/env python3
"""Conversions of ours and of libsmf in one run, in turns: medians of the repetitions, and their ratio.

usage: lookup_ratios.py BUILD_FOLDER [--repetitions N] [--seconds S]
"""
import argparse
import json
import subprocess
import sys

PLACES = ["InTheMiddle", "NearTheEnd", "AtRandom"]
DIRECTIONS = [("samples to ticks", "SamplesToTicks", "SecondsToTicks"),
              ("ticks to samples", "TicksToSamples", "TicksToSeconds")]
# Without a peer.
ALONE = [("rounded to ticks", "SamplesToTicksRounded", "AtRandom"),
         ("samples to ticks", "SamplesToTicks", "WhilePlaying"),
         ("ticks to samples", "TicksToSamples", "WhilePlaying"),
         ("eight of them", "Eight", "WhilePlaying")]
TEMPOS = [1, 10, 100, 1000, 10000]


def medians(program, repetitions, seconds):
    """Name of a benchmark to nanoseconds of CPU, which others on the machine disturb least."""
    command = [program, f"--benchmark_repetitions={repetitions}", f"--benchmark_min_time={seconds}",
               "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true",
               "--benchmark_format=json"]
    result = subprocess.run(command, capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(f"{program}: status {result.returncode}\n{result.stderr}")
    return {row["run_name"]: row["cpu_time"] for row in json.loads(result.stdout)["benchmarks"]
            if row["aggregate_name"] == "median"}


def nanoseconds(value):
    return f"{value:9.1f} ns"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--repetitions", type=int, default=9)
    parser.add_argument("--seconds", type=float, default=0.02, help="of each repetition")
    options = parser.parse_args()
    found = medians(f"{options.build}/benchmarks/tick_lookup_by_map_size_benchmark", options.repetitions,
                    options.seconds)
    print(f"{'conversion':18} {'place':12} {'tempos':>7} {'fresh heap':>12} {'used heap':>12} {'libsmf':>12} "
          f"{'libsmf / ours':>14}")
    for words, ours, theirs in DIRECTIONS:
        for place in PLACES:
            for tempos in TEMPOS:
                fresh, used = (found[f"Lookup/{ours}{place}/tempos:{tempos}/used_heap:{heap}"] for heap in (0, 1))
                peer = found.get(f"SmfLibrary/{theirs}{place}/{tempos}")
                beside = f"{nanoseconds(peer)} {peer / fresh:14.2f}" if peer else "  not installed"
                print(f"{words:18} {place:12} {tempos:7} {nanoseconds(fresh)} {nanoseconds(used)} {beside}")
    for words, name, place in ALONE:
        for tempos in TEMPOS:
            fresh, used = (found[f"Lookup/{name}{place}/tempos:{tempos}/used_heap:{heap}"] for heap in (0, 1))
            print(f"{words:18} {place:12} {tempos:7} {nanoseconds(fresh)} {nanoseconds(used)}")


if __name__ == "__main__":
    main()
