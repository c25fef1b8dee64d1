"""The small changes that mutate.py makes, and the ones whose survival is explained."""
import collections
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
EXPLAINED = ROOT / "tools" / "mutation_survivors.txt"
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


def numbered(texts):
    """Each text, with its number behind it when it has stood before."""
    seen = collections.Counter()
    for text in texts:
        seen[text] += 1
        yield text if seen[text] == 1 else f"{text} #{seen[text]}"


class Mutation:
    def __init__(self, folder, source, number, text, what, changed):
        self.folder = folder  # whose tests judge it
        self.source = source  # from the root
        self.number = number  # of the line, from 0
        self.name = f"{source} | {text} | {what}"  # stays the same when lines move
        self.changed = changed  # the line as it shall read

    def __str__(self):
        return f"{self.name} | line {self.number + 1}"

    def source_text(self):
        lines = (ROOT / self.source).read_text().splitlines()
        lines[self.number] = self.changed
        return "\n".join(lines) + "\n"


def all_mutations(folders):
    for folder in folders:
        for source in sorted((ROOT / folder).rglob("*.cpp")):
            lines = source.read_text().splitlines()
            texts = numbered(line.strip() for line in lines)
            for number, (line, text) in enumerate(zip(lines, texts)):
                changes = list(mutations_of_line(line))
                for what, (_, changed) in zip(numbered(what for what, _ in changes), changes):
                    yield Mutation(folder, source.relative_to(ROOT), number, text, what, changed)


def explained_survivors():
    """The names of the survivors that are explained. A group of them stands under the comment that says why."""
    names, reason = set(), False
    for number, line in enumerate(EXPLAINED.read_text().splitlines() if EXPLAINED.exists() else [], 1):
        if line.startswith("#") or not line:
            reason = line.startswith("#")
        elif reason:
            names.add(line)
        else:
            sys.exit(f"{EXPLAINED.name}:{number}: no reason stands above this row")
    gone = names - {mutation.name for mutation in all_mutations({name.split("/")[0] for name in names})}
    if gone:
        sys.exit(f"{EXPLAINED.name}: there is nothing like this any more:\n" + "\n".join(sorted(gone)))
    return names
