#!/usr/bin/env python3
"""Breaks the engine in one place after the other, and counts how often a test notices.

usage: mutate.py [--build DIR] [--seed N] [--count N] [--minutes N] [--jobs N] [FOLDER...]

A mutation is one small change of one line: a relation, an operator, a constant, a negation, a statement left
out. Each is compiled alone, linked in front of the library that holds the original, and tried by the tests of
its folder. One that compiles to the same code changes nothing and does not count. Without --count every
mutation there is runs, in an order drawn by --seed; --minutes ends the run early with what has been tried.

Survivors that are explained stand in tools/mutation_survivors.txt. Ends with status 1 when less than 90 % of
the rest are noticed.
"""
import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import random
import re
import shlex
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
GOAL = 90.0
# The tests of a folder, the ones that notice most first.
TESTS = {
    "Sources/samples_ticks_converter": ["samples_ticks_converter_test"],
    "Sources/ob_show_control": ["ob_show_control_test"],
    "Sources/file_loader": ["file_loader_test", "audio_player_test"],
    "Sources/audio_player": ["audio_player_test"],
    "reference_suite/player_core": ["reference_player_core_test", "scenarios_test"],
}
RELATIONS = [(" == ", " != "), (" != ", " == "), (" < ", " <= "), (" <= ", " < "), (" > ", " >= "),
             (" >= ", " > "), (" && ", " || "), (" || ", " && "), (" + ", " - "), (" - ", " + "),
             (" * ", " / "), (" += ", " -= "), ("++", "--"), ("--", "++")]
WORDS = [(r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"(?<=[(\s])!(?=[\w(])", ""),
         (r"\bif \((?!const|auto)(.*)\)(?= \{| [^|&]*;)", r"if (!(\1))"), (r"\bbreak;", ";"),
         (r"\bcontinue;", ";"), (r"\breturn;", ";"), (r"\bstd::max\b", "std::min"), (r"\bstd::min\b", "std::max"),
         (r"\bupper_bound\b", "lower_bound"), (r"\blower_bound\b", "upper_bound")]
STATEMENT = re.compile(r"^(\s*)[\w:.>\-\[\]()*]+(\(.*\)| [-+]?= .*);$")
NUMBER = re.compile(r"(?<![\w.\"'])\d+(?![\w.\"'])")
# Texts, places named in texts, and what only the compiler reads.
LEFT_ALONE = re.compile(r"^\s*(//|#|using |namespace|static_assert|case |public:|private:|template|\}|const auto&)")


def mutations_of_line(line):
    """Yields (what, changed line)."""
    code = re.sub(r"\s*//.*$", "", line)
    if LEFT_ALONE.match(code) or '"' in code or "EXC_" in code:
        return
    for old, new in RELATIONS:
        for match in re.finditer(re.escape(old), code):
            yield f"{old.strip()} to {new.strip()}", code[:match.start()] + new + code[match.end():]
    for pattern, new in WORDS:
        for match in re.finditer(pattern, code):
            changed = code[:match.start()] + match.expand(new) + code[match.end():]
            what = "negated" if match.group(0).startswith("if") else f"{match.group(0)} to {new or 'nothing'}"
            yield what, changed
    for match in NUMBER.finditer(code):
        yield f"{match.group(0)} plus 1", code[:match.start()] + str(int(match.group(0)) + 1) + code[match.end():]
    statement = STATEMENT.match(code)
    if statement and not re.match(r"\s*(return|const|auto|throw|delete)\b", code):
        yield "left out", statement.group(1) + ";"


def all_mutations(folders):
    for folder in folders:
        for source in sorted((ROOT / folder).rglob("*.cpp")):
            lines = source.read_text().splitlines()
            for number, line in enumerate(lines):
                for what, changed in mutations_of_line(line):
                    yield folder, source.relative_to(ROOT), number, line.strip(), what, changed


class Build:
    def __init__(self, folder):
        self.folder = pathlib.Path(folder).resolve()
        entries = json.loads((self.folder / "compile_commands.json").read_text())
        self.compile = {pathlib.Path(entry["file"]).resolve(): entry["command"] for entry in entries}
        self.link = {}
        self.seconds = {}
        self.originals = {}
        self.lock = threading.Lock()

    def prepare(self, tests):
        subprocess.run(["cmake", "--build", self.folder, "--target", *tests], check=True, stdout=subprocess.DEVNULL)
        for test in tests:
            commands = subprocess.run(["ninja", "-C", self.folder, "-t", "commands", test], check=True,
                                      capture_output=True, text=True).stdout.splitlines()
            link = commands[-1].split("&& cd ")[0].strip(": &")
            self.link[test] = re.sub(r"\s&&\s*$", "", link)
            start = time.monotonic()
            run = subprocess.run([self.program(test)], cwd=self.folder, capture_output=True, check=False)
            if run.returncode != 0:
                sys.exit(f"{test} fails before anything is broken. Mend it first.")
            self.seconds[test] = time.monotonic() - start

    def program(self, test):
        output = re.search(r" -o (\S+)", self.link[test]).group(1)
        return self.folder / output

    def object_of(self, source, text, folder):
        """Compiles `text` in the place of `source`. None when it is no program."""
        command = shlex.split(self.compile[ROOT / source])
        changed = folder / source.name
        changed.write_text(text)
        output = folder / "changed.o"
        command[command.index("-o") + 1] = str(output)
        command[command.index("-c") + 1] = str(changed)
        command = [word for word in command if word != "-Werror"]
        run = subprocess.run([*command, "-w"], cwd=self.folder, capture_output=True, check=False)
        return output if run.returncode == 0 else None

    def digest(self, path, folder):
        code = folder / "code.bin"
        subprocess.run(["objcopy", "--strip-debug", "--remove-section=.comment", path, code], check=True)
        return hashlib.sha256(code.read_bytes()).hexdigest()

    def original_digest(self, source, folder):
        with self.lock:
            if source not in self.originals:
                path = self.object_of(source, (ROOT / source).read_text(), folder)
                self.originals[source] = self.digest(path, folder)
            return self.originals[source]

    def notices(self, test, changed, folder):
        output = folder / test
        original = re.search(r" -o (\S+)", self.link[test]).group(1)
        command = self.link[test].replace(f"-o {original}", f"{changed} -o {output}", 1)
        subprocess.run(command, shell=True, cwd=self.folder, capture_output=True, check=True)
        limit = 20 + 10 * self.seconds[test]
        with tempfile.TemporaryDirectory(dir=folder) as scratch:
            environment = {**os.environ, "TMPDIR": scratch, "GTEST_FAIL_FAST": "1"}
            try:
                run = subprocess.run([output], cwd=scratch, capture_output=True, check=False, timeout=limit,
                                     env=environment)
            except subprocess.TimeoutExpired:
                return True
        return run.returncode != 0


def attempt(build, mutation):
    """One of "same", "no program", "noticed", "survived"."""
    folder_name, source, number, _, _, changed_line = mutation
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        lines = (ROOT / source).read_text().splitlines()
        original = build.original_digest(source, folder)
        lines[number] = changed_line
        changed = build.object_of(source, "\n".join(lines) + "\n", folder)
        if changed is None:
            return "no program"
        if build.digest(changed, folder) == original:
            return "same"
        return "noticed" if any(build.notices(test, changed, folder) for test in TESTS[folder_name]) else "survived"


def explained_survivors():
    listing = ROOT / "tools" / "mutation_survivors.txt"
    if not listing.exists():
        return set()
    rows = [line.split(" | ") for line in listing.read_text().splitlines() if line and not line.startswith("#")]
    return {tuple(field.strip() for field in row[:3]) for row in rows}


def report(results, minutes):
    print(f"\n{'folder':34} {'tried':>6} {'noticed':>8} {'explained':>10} {'score':>7}")
    total = [0, 0, 0]
    for folder in TESTS:
        counts = [sum(1 for f, r in results if f == folder and r in kinds)
                  for kinds in (("noticed", "survived", "explained"), ("noticed",), ("explained",))]
        if counts[0] == 0:
            continue
        total = [a + b for a, b in zip(total, counts)]
        print(f"{folder:34} {counts[0]:6} {counts[1]:8} {counts[2]:10} {score(counts):6.1f} %")
    idle = sum(1 for _, r in results if r in ("same", "no program"))
    print(f"{'all':34} {total[0]:6} {total[1]:8} {total[2]:10} {score(total):6.1f} %"
          f"   ({idle} more change nothing or do not compile; {minutes:.0f} min)")
    return score(total)


def score(counts):
    judged = counts[0] - counts[2]
    return 100.0 * counts[1] / judged if judged else 100.0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default="build/mutate", help="a configured Ninja build with compile commands")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--count", type=int, default=0, help="0: all of them")
    parser.add_argument("--minutes", type=float, default=0, help="0: as long as it takes")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("folders", nargs="*", default=list(TESTS), metavar="FOLDER")
    options = parser.parse_args()
    unknown = [folder for folder in options.folders if folder not in TESTS]
    if unknown:
        sys.exit(f"no tests are known for {', '.join(unknown)}; there are {', '.join(TESTS)}")

    build = Build(options.build)
    build.prepare(sorted({test for folder in options.folders for test in TESTS[folder]}))
    mutations = list(all_mutations(options.folders))
    random.Random(options.seed).shuffle(mutations)
    if options.count:
        mutations = mutations[:options.count]
    explained = explained_survivors()
    start, results = time.monotonic(), []

    def run(mutation):
        if options.minutes and time.monotonic() - start > 60 * options.minutes:
            return
        outcome = attempt(build, mutation)
        folder, source, number, line, what, _ = mutation
        if outcome == "survived" and (str(source), line, what) in explained:
            outcome = "explained"
        results.append((folder, outcome))
        if outcome == "survived":
            print(f"survived: {source}:{number + 1} | {line} | {what}", flush=True)
        elif len(results) % 50 == 0:
            print(f"{len(results)} of {len(mutations)}, {(time.monotonic() - start) / 60:.0f} min", flush=True)

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        list(pool.map(run, mutations))
    sys.exit(0 if report(results, (time.monotonic() - start) / 60) >= GOAL else 1)


if __name__ == "__main__":
    main()
