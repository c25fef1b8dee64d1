#!/usr/bin/env python3
"""Reads every #include and holds it against the table of edges: who may include whom.

usage: check_layers.py [ROOT]

Prints one line per forbidden edge, "FILE:LINE: WHY", and ends with status 1 when there is any.
"""
import pathlib
import re
import sys

SUITE_BELOW_ENGINE = ["suite/utility", "suite/core", "suite/midi", "suite/audio", "suite/player_core"]

# What a folder may include besides itself. The longest matching folder of a file, or the file itself, decides.
MAY_INCLUDE = {
    "suite/utility": [],
    "exc": [],
    "suite/core": ["exc", "suite/utility"],
    "suite/midi": ["exc", "suite/utility", "suite/core"],
    "suite/audio": ["exc", "suite/utility"],
    "suite/player_core": ["exc", "suite/utility", "suite/core", "suite/midi"],
    "Sources/types.h": [],
    "Sources/samples_ticks_converter": ["Sources/types.h", "exc", "suite/utility", "suite/core", "suite/midi"],
    "Sources/file_loader": ["Sources/types.h", "exc", "suite/utility", "suite/core", "suite/audio"],
    "Sources/ob_show_control": ["Sources/types.h", "Sources/samples_ticks_converter", "exc"] + SUITE_BELOW_ENGINE,
    "Sources/audio_player": [
        "Sources/types.h",
        "Sources/samples_ticks_converter",
        "Sources/file_loader",
        "Sources/ob_show_control",
        "exc",
    ] + SUITE_BELOW_ENGINE,
    "player_core/player_wrapper": ["Sources", "exc"] + SUITE_BELOW_ENGINE,
    "reference_suite/utility": ["exc", "suite/utility"],
    "reference_suite/core": ["exc", "suite/utility", "suite/core", "reference_suite/utility"],
    "reference_suite/midi": [
        "exc", "suite/utility", "suite/core", "suite/midi", "reference_suite/utility", "reference_suite/core",
    ],
    "reference_suite/audio": [
        "exc", "suite/utility", "suite/core", "suite/audio", "reference_suite/utility", "reference_suite/core",
    ],
    "reference_suite/player_core": [
        "exc", "reference_suite/utility", "reference_suite/core", "reference_suite/midi",
    ] + SUITE_BELOW_ENGINE,
    "host/session": ["Sources", "player_core/player_wrapper", "exc"] + SUITE_BELOW_ENGINE,
    "host/session/device_setup.cpp": ["host/session", "reference_suite", "exc"] + SUITE_BELOW_ENGINE,
    # It writes files: what it needs of the other side is the writer of Standard MIDI Files.
    "host/demo": ["exc/file", "reference_suite/midi/standard_midi_file"],
    "host/cli": ["host/session", "suite/audio/sample_rates.h"],
    "host/terminal": ["host/session"],
    "host/memory": [],
    "host": ["host/session", "host/cli", "host/terminal", "host/demo", "host/memory"],
}
# These read anything, and nothing of the product reads them.
FREE = ["tests", "benchmarks", "fuzz"]
# More than the folder's row says, for its .cpp files only.
SOURCES_MAY_ALSO = {"exc": ["suite/utility"]}

THIRD_PARTY_MAY_STAND_IN = ["reference_suite", "host"] + FREE
# A library's headers belong to the folders that need it.
THIRD_PARTY_ONLY_IN = {"CLI/": ["host"], "nlohmann/": ["host"], "sndfile.h": ["reference_suite"],
                       "vorbis/": ["reference_suite", "host/demo"], "soxr.h": ["reference_suite"],
                       "toml++/": ["reference_suite"], "jack/": ["reference_suite"], "soundio/": ["reference_suite"],
                       "rubberband/": ["reference_suite"]}

STANDARD = set("""
algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits
clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint
cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem format forward_list
fstream functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale
map memory memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex
scoped_allocator semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf
string string_view strstream syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map
unordered_set utility valarray variant vector version
""".split())
POSIX = set("""
dirent.h dlfcn.h errno.h fcntl.h float.h limits.h malloc.h math.h poll.h pthread.h sched.h semaphore.h signal.h stdint.h stdio.h
stdlib.h string.h sys/file.h sys/ioctl.h sys/mman.h sys/prctl.h sys/resource.h sys/stat.h sys/statvfs.h
sys/syscall.h sys/time.h sys/types.h sys/wait.h termios.h time.h unistd.h cxxabi.h
""".split())

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')
TEST_SWITCH = re.compile(r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b.*\bTEST\b")


def in_folder(path, folder):
    return path == folder or path.startswith(folder + "/")


def longest(path, folders):
    """The longest of `folders` that holds `path`; None when none does."""
    held = [folder for folder in folders if in_folder(path, folder)]
    return max(held, key=len) if held else None


def system_fault(path, name):
    if name in STANDARD or name in POSIX:
        return None
    if not any(in_folder(path, folder) for folder in THIRD_PARTY_MAY_STAND_IN):
        return f"<{name}> is a third-party header; here only the standard library and POSIX may be included"
    for prefix, folders in THIRD_PARTY_ONLY_IN.items():
        if name.startswith(prefix) and not any(in_folder(path, folder) for folder in folders + FREE):
            return f"<{name}> belongs to {' and '.join(folders)} only"
    return None


def own_fault(root, path, name):
    if ".." in name.split("/"):
        return f'"{name}" goes up; include from the root of the repository'
    if name.endswith((".cpp", ".cc", ".c")):
        return f'"{name}" is a source file; only headers are included'
    if not (root / name).is_file():
        return f'"{name}" does not exist from the root of the repository'
    if any(in_folder(path, folder) for folder in FREE):
        return None
    row = longest(path, MAY_INCLUDE)
    if row is None:
        return f"{path} lies in no folder of the table of edges"
    if any(in_folder(name, folder) for folder in FREE):
        return f'product code includes "{name}"'
    target = longest(name, MAY_INCLUDE)
    below = MAY_INCLUDE[row] + (SOURCES_MAY_ALSO.get(row, []) if path.endswith(".cpp") else [])
    # A folder with a row of its own is not part of the row above it: "host" does not open "host/cli/...".
    if target == row or any(in_folder(name, folder) for folder in below):
        return None
    return f'"{name}": {row} may not include {target or name}'


def faults_of(root, path):
    for number, line in enumerate((root / path).read_text(encoding="utf-8").splitlines(), 1):
        if not path.startswith("tests/") and TEST_SWITCH.match(line):
            yield number, "product code asks whether it is compiled for a test"
        match = INCLUDE.match(line)
        if match:
            quote, name = match.groups()
            fault = own_fault(root, path, name) if quote == '"' else system_fault(path, name)
            if fault:
                yield number, fault


def sources(root):
    tops = {folder.split("/")[0] for folder in MAY_INCLUDE} | set(FREE) | {"library"}
    for top in sorted(tops):
        for file in sorted((root / top).rglob("*")):
            if file.suffix in (".h", ".cpp", ".hpp", ".cc") and file.is_file():
                yield file.relative_to(root).as_posix()


def main(arguments):
    root = pathlib.Path(arguments[1] if len(arguments) > 1 else ".").resolve()
    files, faults = 0, 0
    for path in sources(root):
        files += 1
        for number, fault in faults_of(root, path):
            faults += 1
            print(f"{path}:{number}: {fault}")
    print(f"{files} files read, {faults} forbidden edges")
    return 1 if faults or files == 0 else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
