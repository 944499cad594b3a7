#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""usage: import_test.py CLI. Imports every file of CLIPHEAVE_CORPUS and holds the result against programs of others."""
import collections
import sys

import corpus
import differences
import oracles

FILE_SECONDS = 10  # of one file; anything near it hangs
MOST_GROWTH = 64 * corpus.MIB  # of the memory over a run that imports nothing
TEXTS = ("title", "artist", "album")
NUMBERS = {"durationSeconds": 0.02, "width": 0, "height": 0, "latitude": 0.0002, "longitude": 0.0002}
LEAST_SECONDS = 0.15  # encoder delay and padding are counted by some and not by others


def each_alone(cli, files):
    """Every file by itself, damaged or not: no crash, no hang, no memory out of proportion."""
    empty = min(corpus.Run(cli, "--quiet", "--json", "list", cli + ".none").peak_bytes for _ in range(3))
    faults, slowest, largest = [], (0, ""), (0, "")
    for path in files:
        photo = corpus.extension(path) in corpus.PHOTO
        run = corpus.Run(cli, "--quiet", "--json", "list", *(["--photos"] if photo else ["--metadata"]), path,
                         limit_seconds=FILE_SECONDS)
        growth = run.peak_bytes - empty
        slowest, largest = max(slowest, (run.seconds, path.name)), max(largest, (growth, path.name))
        if run.timed_out:
            faults.append(f"{path}: not done after {FILE_SECONDS} s")
        elif run.status not in (0, 1, 3):
            faults.append(f"{path}: ended with {run.status}: {run.errors[-300:]}")
        if growth > MOST_GROWTH:
            faults.append(f"{path}: {growth // corpus.MIB} MiB more memory than an empty run")
    print(f"alone: slowest {slowest[1]} {slowest[0]:.2f} s; most memory {largest[1]} +{largest[0] // corpus.MIB} MiB")
    return faults


def whole(cli, root, wanted, *options):
    """The folder in one run: exactly one item for each file of a wanted kind. Gives faults and items by path."""
    run = corpus.Run(cli, "--quiet", "--json", "list", *options, root)
    if run.status not in (0, 1) or run.timed_out:
        return [f"list {' '.join(options)}: ended with {run.status}: {run.errors[-300:]}"], {}
    items = [item for item in run.json() if item.get("status") != "skipped"]
    counts = collections.Counter(item["path"] for item in items)
    faults = [f"{path}: {counts[path]} items instead of {int(path in wanted)}"
              for path in sorted(counts.keys() | wanted) if counts[path] != (path in wanted)]
    print(f"list {' '.join(options)}: {len(items)} items, {run.seconds:.2f} s, peak {run.peak_bytes // corpus.MIB} MiB")
    return faults, {item["path"]: item for item in items}


def same(field, ours, theirs):
    if field in TEXTS:
        return " ".join(str(ours).split()) == " ".join(str(theirs).replace("\0", " ").split())
    try:
        ours, theirs = float(ours), float(theirs)
    except ValueError:
        return False
    slack = max(LEAST_SECONDS, NUMBERS[field] * abs(theirs)) if field == "durationSeconds" else NUMBERS[field]
    return abs(ours - theirs) <= slack


def compare(name, item, readings, fields):
    """{(file, field, oracle): text} of what is read otherwise, by whom."""
    found = {}
    for field in fields:
        ours = item.get(field)
        for oracle, facts in readings.items():
            theirs = facts.get(field)
            if theirs is not None and (ours is None or not same(field, ours, theirs)):
                found[(name, field, oracle)] = f"we read {ours!r}, {oracle} reads {theirs!r}"
        if ours is not None and not any(field in facts for facts in readings.values()):
            found[(name, field, "nobody")] = f"we read {ours!r}, nobody else reads any"
    return found


def all_differences(root, items, photos):
    by_exiftool = oracles.exiftool_all(root)
    found = {}
    for path, item in items.items():
        name = path.removeprefix(f"{root}/")
        if name.startswith("broken/"):
            continue  # of damaged files there is no right reading, only a safe one
        readings = {"exiftool": by_exiftool.get(path, {}), "ffprobe": oracles.ffprobe(path),
                    "mutagen": oracles.mutagen_facts(path)}
        fields = [*TEXTS, *NUMBERS]
        if corpus.extension(path) in corpus.AUDIO:
            fields = [*TEXTS, "durationSeconds"]
        found.update(compare(name, item, readings, fields))
    for path, item in photos.items():
        name = path.removeprefix(f"{root}/")
        if not name.startswith("broken/") and corpus.extension(path) in corpus.PHOTO:
            readings = {"exiftool": by_exiftool.get(path, {})}
            found.update(compare(name, item, readings, ("width", "height", "latitude", "longitude")))
    return found


def main():
    cli = sys.argv[1]
    root, files = corpus.corpus_or_skip()
    # Memory is measured first: a child starts with the peak of the process that made it.
    faults = each_alone(cli, files)
    kinds = {str(path): corpus.extension(path) for path in files}
    media = {path for path, kind in kinds.items() if kind in corpus.AUDIO or kind in corpus.VIDEO}
    browser = {path for path, kind in kinds.items() if kind in corpus.PHOTO or kind in corpus.VIDEO}
    more, items = whole(cli, root, media, "--metadata")
    faults += more
    more, photos = whole(cli, root, browser, "--photos")
    faults += more
    found = all_differences(root, items, photos)
    present = {str(path.relative_to(root)) for path in files}
    known = corpus.parse_differences(differences.IMPORT)
    faults += corpus.judge(found, known, present)
    corpus.finish(faults, f"{len(files)} files, {len(found)} differences, {len(known)} known")


if __name__ == "__main__":
    main()
