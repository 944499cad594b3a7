#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""usage: save_test.py CLI. Saves a title into every MP4-family video of CLIPHEAVE_CORPUS and has others read it back."""
import collections
import hashlib
import json
import pathlib
import subprocess
import sys
import tempfile

import corpus
import differences

TITLE = "Ein Titel — 新しい題 🎬"
VIDEO_FAMILY = corpus.ISOBMFF & corpus.VIDEO


def lines(*command):
    done = subprocess.run([str(part) for part in command], capture_output=True, stdin=subprocess.DEVNULL)
    return done.stdout.decode(errors="replace").splitlines()


def json_of(*command):
    return json.loads("\n".join(lines(*command)))


def streams(path):
    """One hash a stream of its packets as they are stored."""
    return lines("ffmpeg", "-v", "quiet", "-i", path, "-map", "0", "-c", "copy", "-copy_unknown", "-f", "streamhash",
                 "-hash", "md5", "-")


def exiftool_title(path):
    return "\n".join(lines("exiftool", "-s3", "-api", "largefilesupport=1", "-ItemList:Title", path))


def ffprobe_title(path):
    return "\n".join(lines("ffprobe", "-v", "quiet", "-show_entries", "format_tags=title", "-of", "default=nk=1:nw=1", path))


def raw_items(cli, path):
    """The file's metadata items but the title, countable. In a file that became an M4V the © boxes of the user data
    count as ISO user data; they are the same boxes."""
    listed, = corpus.Run(cli, "--quiet", "--json", "list", "--metadata", path).json()
    kept = collections.Counter()
    for item in listed.get("metadata", []):
        identifier = item.get("identifier", "").replace("udta/", "uiso/", 1)
        if identifier != "itsk/%A9nam":
            kept[(identifier, json.dumps(item.get("value"), sort_keys=True))] += 1
    return kept


def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def save_one(cli, path, storage):
    """{what: text} of everything that is not as it should be; the outcome in words."""
    before = digest(path)
    run = corpus.Run(cli, "--quiet", "--json", "--storage", storage, "save", "--set", f"title={TITLE}", path,
                     limit_seconds=60)
    if run.timed_out or run.status not in (0, 1):
        return {"status": f"ended with {run.status}: {run.errors[-300:]}"}, "crashed"
    outcome, = run.json()["items"]
    found = {}
    if digest(path) != before:
        found["source"] = "the source was changed"
    target = storage / path.name
    if not target.is_file():
        return {**found, "output": f"no output: {outcome}"}, "failed"
    if abs(target.stat().st_mtime - path.stat().st_mtime) > 1:
        found["dates"] = "the modification date was not carried over"
    if digest(target) == before:
        # A rewrite that fails delivers the source as it is, and says why.
        if not outcome.get("message"):
            found["silent"] = "copied unchanged without a message"
        return {**found, "copied": f"copied unchanged: {outcome.get('message')}"}, "copied"
    return {**found, **read_back(cli, path, target)}, "saved"


def read_back(cli, path, target):
    found = {}
    for oracle, title in (("exiftool", exiftool_title(target)), ("ffprobe", ffprobe_title(target))):
        if title != TITLE:
            found[oracle] = f"{oracle} reads the title {title!r}"
    if streams(path) != streams(target):
        found["streams"] = f"streams differ: {streams(path)} became {streams(target)}"
    before, after = raw_items(cli, path), raw_items(cli, target)
    if before != after:
        found["items"] = f"lost {list((before - after).elements())}, new {list((after - before).elements())}"
    return found


def main():
    cli = sys.argv[1]
    root, files = corpus.corpus_or_skip()
    found, outcomes = {}, collections.Counter()
    for path in files:
        if corpus.extension(path) not in VIDEO_FAMILY:
            continue
        with tempfile.TemporaryDirectory() as storage:
            faults, outcome = save_one(cli, path, pathlib.Path(storage))
        outcomes[outcome] += 1
        if "broken" in path.relative_to(root).parts:
            # Of a damaged file only this is asked: no crash, no hang, the source untouched, no silence.
            faults = {what: text for what, text in faults.items() if what in ("status", "source", "silent")}
        found.update({(str(path.relative_to(root)), "title", what): text for what, text in faults.items()})
    present = {str(path.relative_to(root)) for path in files}
    known = corpus.parse_differences(differences.SAVE)
    corpus.finish(corpus.judge(found, known, present), f"outcomes: {dict(outcomes)}; {len(known)} known differences")


if __name__ == "__main__":
    main()
