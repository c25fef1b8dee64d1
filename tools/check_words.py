#!/usr/bin/env python3
"""Finds words that must not stand in the repository: references to documents that are not part of it, paths of
the machine that somebody worked on, and work that was switched off or left open.

usage: check_words.py [ROOT]

Prints one line per find, "FILE:LINE: WHY: LINE", and ends with status 1 when there is any.
"""
import pathlib
import re
import subprocess
import sys

# Each pattern is put together from pieces, so that this file does not find itself.
def joined(*pieces):
    return "".join(pieces)


FORBIDDEN = [
    (joined(r"\bPart", r"s? [0-9]+\.[0-9]+"), "names a chapter of a document that is not here; say the rule"),
    (joined(r"\bspec", r"\.md\b"), "names a document that is not here; say the rule"),
    (joined(r"(?i)\bthe speci", r"fication\b"), "names a document that is not here; say the rule"),
    (joined(r"\b(?:collabora", r"tors|traps|outputs|real-parts)\.m", "d"),
     "names a document that is not here; say the rule"),
    (joined(r"(?<![\w.])/(?:wo", r"rk|far", r"m|ro", r"ot|home)/"), "a path of one machine"),
    (joined(r"(?<![\w.])/tm", r"p/[a-z]"), "a path of one machine"),
    (joined(r"\b(?:TO", r"DO|FIX", r"ME|XX", r"X)\b"), "work left open; do it, or say it where work is planned"),
    (joined(r"\bDISA", r"BLED_"), "a test that is switched off"),
    (joined(r"^\s*#\s*if\s+", r"0\b"), "code that is switched off"),
]
PATTERNS = [(re.compile(pattern), why) for pattern, why in FORBIDDEN]


def tracked_files(root):
    """What git would commit; everything, where there is no git."""
    listing = subprocess.run(
        ["git", "-C", root, "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        capture_output=True, check=False)
    if listing.returncode == 0:
        return [root / name for name in listing.stdout.decode().split("\0") if name]
    return sorted(path for path in root.rglob("*") if path.is_file())


def main(arguments):
    root = pathlib.Path(arguments[1] if len(arguments) > 1 else ".").resolve()
    read, finds = 0, 0
    for file in tracked_files(root):
        if not file.is_file():
            continue
        content = file.read_bytes()
        if b"\0" in content:
            continue  # not text
        read += 1
        for number, line in enumerate(content.decode("utf-8", "replace").splitlines(), 1):
            for pattern, why in PATTERNS:
                if pattern.search(line):
                    finds += 1
                    print(f"{file.relative_to(root)}:{number}: {why}: {line.strip()}")
    print(f"{read} files read, {finds} finds")
    return 1 if finds or read == 0 else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
