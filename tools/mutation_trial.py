"""Builds one change of the engine and says whether its tests notice it.

The machine may be busy and a test may fail once for no reason, so that no failure is believed at once: the test in
which it happened runs again alone, in the unbroken program, where it must succeed, and then in the broken one, which
gets many times as long. Only what goes wrong again is noticed.
"""
import hashlib
import json
import os
import pathlib
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

from mutations import ROOT

QUICK = 0.2  # seconds; the tests that take longer come last
MOST_MEMORY = 2 << 30  # bytes. A change may well loop for ever: neither memory nor disk may run full of it.


def limit_files():
    resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 28, 1 << 28))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def memory_of(process):
    pages = pathlib.Path(f"/proc/{process.pid}/statm").read_text().split()
    return int(pages[1]) * resource.getpagesize() if pages else 0


def run_tests(program, tests, patience, report=None):
    """The first test that fails, ends the program or finds no end within `patience` seconds; None when all succeed."""
    with tempfile.TemporaryDirectory() as scratch:
        environment = {**os.environ, "TMPDIR": scratch, "GTEST_FAIL_FAST": "1", "GTEST_COLOR": "no",
                       "GTEST_FILTER": ":".join(tests)}
        if report:
            environment["GTEST_OUTPUT"] = f"json:{report}"
        log = pathlib.Path(scratch) / "log"
        with open(log, "wb") as output:
            run = subprocess.Popen([program], cwd=scratch, env=environment, stdout=output, stderr=output,
                                   preexec_fn=limit_files, start_new_session=True)
            grown, size = time.monotonic(), 0
            while True:
                try:
                    run.wait(0.1)
                    break
                except subprocess.TimeoutExpired:
                    if log.stat().st_size != size:
                        grown, size = time.monotonic(), log.stat().st_size
                    if time.monotonic() - grown > patience or memory_of(run) > MOST_MEMORY:
                        os.killpg(run.pid, signal.SIGKILL)
        if run.returncode == 0:
            return None
        text = log.read_text(errors="replace")
        failed = re.findall(r"^\[  FAILED  \] ([^\s,]+)", text, re.MULTILINE)
        started = re.findall(r"^\[ RUN      \] (\S+)", text, re.MULTILINE)
        return failed[0] if failed else started[-1] if started else tests[0]


class Program:
    """One test program: how it is linked, and what its tests take."""

    def __init__(self, build, name):
        self.build = build
        commands = subprocess.run(["ninja", "-C", build, "-t", "commands", name], check=True, capture_output=True,
                                  text=True).stdout.splitlines()
        self.link = re.sub(r"\s&&\s*$", "", commands[-1].split("&& cd ")[0].strip(": &"))
        self.output = re.search(r" -o (\S+)", self.link).group(1)
        with tempfile.TemporaryDirectory() as scratch:
            report = pathlib.Path(scratch) / "report.json"
            failed = run_tests(self.path(), ["*"], 300, report)
            if failed:
                sys.exit(f"{name}: {failed} fails before anything is broken. Mend it first.")
            suites = json.loads(report.read_text())["testsuites"]
        self.tests = [(f"{suite['name']}.{test['name']}", pathlib.Path(test["file"]).stem, float(test["time"][:-1]))
                      for suite in suites for test in suite["testsuite"]]

    def path(self):
        return self.build / self.output

    def rounds(self, source):
        """The tests in the order in which they are tried: those of this source, the quick ones, the rest."""
        own = [test for test in self.tests if test[1] == f"{source.stem}_test" and test[2] < QUICK]
        rest = [test for test in self.tests if test not in own]
        for tests in (own, [test for test in rest if test[2] < QUICK], [test for test in rest if test[2] >= QUICK]):
            if tests:
                yield [name for name, _, _ in tests], 3 + 5 * max(seconds for _, _, seconds in tests)

    def goes_wrong_again(self, broken, test):
        for _ in range(3):
            start = time.monotonic()
            if run_tests(self.path(), [test], 300) is None:
                return run_tests(broken, [test], 3 + 20 * (time.monotonic() - start)) is not None
        return False

    def notices(self, changed, source, folder):
        broken = folder / "broken"
        command = self.link.replace(f"-o {self.output}", f"{changed} -o {broken}", 1)
        subprocess.run(command, shell=True, cwd=self.build, capture_output=True, check=True)
        for tests, patience in self.rounds(source):
            while tests:
                failed = run_tests(broken, tests, patience)
                if failed and self.goes_wrong_again(broken, failed):
                    return True
                tests = tests[tests.index(failed) + 1:] if failed else []
        return False


class Build:
    def __init__(self, folder, programs, jobs):
        self.folder = pathlib.Path(folder).resolve()
        self.compiling = threading.Semaphore(jobs)  # that many at a time; the tests wait more than they compute
        self.scratch = pathlib.Path(tempfile.mkdtemp(prefix="mutations-", dir=self.folder))
        entries = json.loads((self.folder / "compile_commands.json").read_text())
        self.compile = {pathlib.Path(entry["file"]).resolve(): entry["command"] for entry in entries}
        subprocess.run(["cmake", "--build", self.folder, "--target", *programs], check=True, stdout=subprocess.DEVNULL)
        self.programs = {name: Program(self.folder, name) for name in programs}
        self.originals = {}
        self.lock = threading.Lock()

    def close(self):
        shutil.rmtree(self.scratch)

    def command_for(self, source, before, what, output):
        """Reading past the end of a vector shall be noticed; nothing is compiled twice, so that ccache is no help."""
        command = [word for word in shlex.split(self.compile[ROOT / source]) if word != "-Werror"]
        if pathlib.Path(command[0]).name == "ccache":
            command = command[1:]
        command[command.index("-o") + 1] = str(output)
        command[command.index("-c") + 1] = str(what)
        return [*command[:1], "-w", "-D_GLIBCXX_ASSERTIONS", *before, *command[1:]]

    def headers_of(self, source):
        """Everything that `source` includes, compiled once for all of its changes: most of their time otherwise."""
        headers = self.scratch / "headers" / str(source.with_suffix(".h")).replace("/", "_")
        if not headers.exists():
            headers.parent.mkdir(parents=True, exist_ok=True)
            lines = (ROOT / source).read_text().splitlines()
            headers.write_text("".join(f"{line}\n" for line in lines if line.startswith("#include")))
            command = self.command_for(source, ["-x", "c++-header"], headers, f"{headers}.gch")
            subprocess.run(command, cwd=self.folder, check=True)
        return headers

    def object_of(self, source, text, folder):
        """Compiles `text` in the place of `source`. None when it is no program."""
        with self.lock:
            headers = self.headers_of(source)
        changed = folder / source.name
        changed.write_text(text)
        output = folder / "changed.o"
        command = self.command_for(source, ["-include", str(headers)], changed, output)
        with self.compiling:
            run = subprocess.run(command, cwd=self.folder, capture_output=True, check=False)
        return output if run.returncode == 0 else None

    def digest(self, path, folder):
        code = folder / "code.bin"
        subprocess.run(["objcopy", "--strip-debug", "--remove-section=.comment", path, code], check=True)
        return hashlib.sha256(code.read_bytes()).hexdigest()

    def original_digest(self, source, folder):
        if source not in self.originals:
            path = self.object_of(source, (ROOT / source).read_text(), folder)
            self.originals[source] = self.digest(path, folder)
        return self.originals[source]

    def attempt(self, mutation, programs):
        """One of "same", "no program", "noticed", "survived"."""
        with tempfile.TemporaryDirectory(dir=self.scratch) as name:
            folder = pathlib.Path(name)
            original = self.original_digest(mutation.source, folder)
            changed = self.object_of(mutation.source, mutation.source_text(), folder)
            if changed is None:
                return "no program"
            if self.digest(changed, folder) == original:
                return "same"
            noticed = any(self.programs[name].notices(changed, mutation.source, folder) for name in programs)
            return "noticed" if noticed else "survived"
