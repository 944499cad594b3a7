#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks of the source tree: check_sources.py sizes|nodiscard|words|headers|messages|format FOLDER.

Each check returns its faults as texts; the exit status is 1 when there are any, 77 when the check cannot be made here.
"""
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys

MAX_LINES = {".cpp": 800, ".h": 200}
# A declaration of the whole controller is longer by nature; nothing else is.
LONGER_HEADERS = {"app/AppDelegate.h": 450}
MAX_FUNCTION = 60
AIM_FUNCTION = 40  # for 95 of 100 functions

SKIPPED_FOLDERS = {".git", "__pycache__", "third_party"}
TEXT_SUFFIXES = {".cpp", ".h", ".py", ".md", ".txt", ".cmake", ".json", ".sh", ".in", ".desktop", ".xml", ".ts", ""}

# References that a reader of the repository cannot follow, and marks of unfinished work. Written so that this file does
# not match itself.
FORBIDDEN = [
    (re.compile(r"\bspe[c]\b|\bspecificatio[n] part", re.I), "points to a document outside the repository"),
    (re.compile(r"\bPart\s+[1-6]\.[1-9]\b"), "points to a document outside the repository"),
    (re.compile(r"\bissu[e] #\d+", re.I), "points to a tracker"),
    (re.compile(r"(?<!\w)/wor[k]/|/tmp/b[-]"), "names a path of one machine"),
    (re.compile(r"\b(TOD[O]|FIXM[E]|XX[X])\b"), "marks unfinished work"),
]
# © Lines of licences and byte tables of formats say what they must.
WORDS_EXEMPT = {"LICENSE"}


def sources(root, suffixes):
    for folder, names, files in os.walk(root):
        names[:] = sorted(n for n in names if n not in SKIPPED_FOLDERS and not n.startswith("build"))
        for name in sorted(set(files) - SKIPPED_FOLDERS):  # .git is a file in a linked worktree
            path = pathlib.Path(folder, name)
            if path.suffix in suffixes:
                yield path.relative_to(root).as_posix(), path


def functions(text):
    """(first line number, lines) of each function outside of classes, as the formatter lays them out."""
    start = None
    for number, line in enumerate(text.splitlines(), 1):
        if start is None:
            if re.match(r"[A-Za-z~]", line) and not re.match(r"(namespace|using|typedef|extern \")", line):
                start = number
        elif line == "}":
            yield start, number - start + 1
        if start is not None and re.match(r"(}|};|.*;$)", line):
            # The end of a function, a class, a table or a one-line declaration.
            if line in ("}", "};") or (number == start or not line.startswith((" ", "\t"))):
                start = None


def check_sizes(root):
    faults = []
    lengths = []
    for name, path in sources(root, {".cpp", ".h"}):
        text = path.read_text(encoding="utf-8")
        limit = LONGER_HEADERS.get(name, MAX_LINES[path.suffix])
        lines = text.count("\n")
        if lines > limit:
            faults.append(f"{name}: {lines} lines, {limit} at most: split it by topic")
        if path.suffix == ".cpp":
            for first, length in functions(text):
                lengths.append(length)
                if length > MAX_FUNCTION:
                    faults.append(f"{name}:{first}: a function of {length} lines, {MAX_FUNCTION} at most")
    if len(lengths) >= 20:
        p95 = statistics.quantiles(lengths, n=20)[-1]
        print(f"{len(lengths)} functions, median {statistics.median(lengths):.0f} lines, 95th percentile {p95:.0f}")
        if p95 > AIM_FUNCTION:
            faults.append(f"95th percentile of function lengths {p95:.0f}, {AIM_FUNCTION} at most")
    return faults


def check_nodiscard(root):
    """Every function that returns a Result, declared in a header, is [[nodiscard]]; helpers of tests need not be."""
    faults = []
    for name, path in sources(root, {".h"}):
        if name.startswith("tests/"):
            continue
        text = re.sub(r"//[^\n]*", "", path.read_text(encoding="utf-8"))
        for match in re.finditer(r"\bResult<", text):
            end = closing_angle(text, match.end())
            # A function name and its parameters must follow, not a variable or a closing bracket.
            if end is None or not re.match(r"\s*[&*]?\s*[A-Za-z_][\w:]*\s*\(", text[end:]):
                continue
            before = re.split(r"[;{}]|(?:public|private|protected)\s*:", text[: match.start()])[-1]
            if re.search(r"\b(using|friend|return)\b|\(|<[^>]*$", before):
                continue
            if "nodiscard" not in before:
                line = text.count("\n", 0, match.start()) + 1
                faults.append(f"{name}:{line}: returns a Result without [[nodiscard]]")
    return faults


def closing_angle(text, position):
    """The position after the ">" that closes the "<" before `position`."""
    depth = 1
    while position < len(text) and depth:
        depth += {"<": 1, ">": -1}.get(text[position], 0)
        position += 1
    return position if depth == 0 else None


def check_words(root):
    faults = []
    for name, path in sources(root, TEXT_SUFFIXES):
        if name in WORDS_EXEMPT:
            continue
        try:
            text = path.read_text(encoding="utf-8")
        except UnicodeDecodeError:
            continue  # fuzz seeds and other bytes
        for number, line in enumerate(text.splitlines(), 1):
            for pattern, why in FORBIDDEN:
                if pattern.search(line):
                    faults.append(f"{name}:{number}: {why}: {line.strip()[:100]}")
    return faults


def check_headers(root):
    """First lines: the licence, and in headers the guard."""
    faults = []
    for name, path in sources(root, {".cpp", ".h"}):
        lines = path.read_text(encoding="utf-8").splitlines()[:2] + ["", ""]
        if lines[0] != "// SPDX-License-Identifier: GPL-3.0-or-later":
            faults.append(f"{name}: the licence line is not the first")
        if path.suffix == ".h" and lines[1] != "#pragma once":
            faults.append(f"{name}: #pragma once is not the second line")
    return faults


CODE = re.compile(r'\bMessageCode\s+k\w+\s*\{\s*"([^"]*)"\s*\}')
LITERALS = r'(?:"(?:[^"\\]|\\.)*"\s*)+'
ROW = re.compile(r'\{\s*"([^"]*)",\s*(?:QT_TRANSLATE_NOOP\(\s*"Words",\s*)?(' + LITERALS + r')\)?\s*\}')
WORD_TABLES = ("app/words/words.cpp", "cli/words.cpp")


def gaps(words):
    return sorted(set(re.findall(r"%[1-9]", words)))


def word_rows(root, table):
    """The rows of a table and its faults: a code twice, words that leave a gap number out."""
    rows, faults = {}, []
    for code, words in ROW.findall((root / table).read_text(encoding="utf-8")):
        if code in rows:
            faults.append(f"{table}: two rows for {code}")
        if gaps(words) != [f"%{n + 1}" for n in range(len(gaps(words)))]:
            faults.append(f"{table}: the gaps of {code} are not numbered from %1 on")
        rows[code] = words
    return rows, faults


def declared_codes(root):
    """Where each code is declared, and the faults: one code at two places, a text that is no code."""
    codes, faults = {}, []
    for name, path in sources(root, {".h", ".cpp"}):
        if name.startswith("tests/"):
            continue
        for code in CODE.findall(path.read_text(encoding="utf-8")):
            if code in codes:
                faults.append(f"{name}: {code} is declared in {codes[code]} too")
            if not re.fullmatch(r"[a-z0-9]+(-[a-z0-9]+)*", code):
                faults.append(f'{name}: "{code}" is not words joined by hyphens')
            codes[code] = name
    return codes, faults


def check_messages(root):
    """Every MessageCode has one row in both tables of words, with the same gaps; no row is without its code."""
    codes, faults = declared_codes(root)
    tables = {}
    for table in WORD_TABLES:
        tables[table], own = word_rows(root, table)
        faults += own
        faults += [f"{codes[code]}: {table} has no words for {code}" for code in codes if code not in tables[table]]
        faults += [f"{table}: no MessageCode {code}" for code in tables[table] if code not in codes]
    first, second = tables.values()
    faults += [f"{code}: its gaps differ in the two tables" for code in first
               if code in second and gaps(first[code]) != gaps(second[code])]
    return faults


def check_format(root):
    tool = shutil.which("clang-format-14") or shutil.which("clang-format")
    version = subprocess.run([tool, "--version"], capture_output=True, text=True).stdout if tool else ""
    if not re.search(r"version 14\.", version):
        print("clang-format 14 is not here; other versions lay out differently")
        sys.exit(77)
    files = [str(path) for _, path in sources(root, {".cpp", ".h"})]
    done = subprocess.run([tool, "--dry-run", "-Werror", "--style=file", *files], capture_output=True, text=True)
    return [line for line in done.stderr.splitlines() if "error:" in line or "warning:" in line]


CHECKS = {"sizes": check_sizes, "nodiscard": check_nodiscard, "words": check_words, "headers": check_headers,
          "messages": check_messages, "format": check_format}


def main():
    faults = CHECKS[sys.argv[1]](pathlib.Path(sys.argv[2]))
    print("\n".join(faults) or f"{sys.argv[1]}: no faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
