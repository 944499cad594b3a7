#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""usage: save_test.py CLI. Saves a title into every MP4-family video of CLIPHEAVE_CORPUS and has others read it back."""
import collections
import json

import corpus
import differences

TITLE = "Ein Titel — 新しい題 🎬"
VIDEO_FAMILY = corpus.ISOBMFF & corpus.VIDEO


def exiftool_title(path):
    return corpus.output("exiftool", "-s3", "-api", "largefilesupport=1", "-ItemList:Title", path)


def ffprobe_title(path):
    return corpus.output("ffprobe", "-v", "quiet", "-show_entries", "format_tags=title", "-of", "default=nk=1:nw=1", path)


# A new title takes the place of these too.
OLD_TITLES = {"itsk/%A9nam", "uiso/%A9nam", "uiso/titl", "mdta/com.apple.quicktime.title", "mdta/title"}


def raw_items(cli, path):
    """The file's metadata items but the titles, countable. In a file that became an M4V the © boxes of the user data
    count as ISO user data; they are the same boxes."""
    listed, = corpus.Run(cli, "--quiet", "--json", "list", "--metadata", path).json()
    kept = collections.Counter()
    for item in listed.get("metadata", []):
        identifier = item.get("identifier", "").replace("udta/", "uiso/", 1)
        if identifier not in OLD_TITLES:
            kept[(identifier, json.dumps(item.get("value"), sort_keys=True))] += 1
    return kept


def save_one(cli, path, storage):
    """{"title what": text} of everything that is not as it should be; the outcome in words."""
    run = corpus.Run(cli, "--quiet", "--json", "--storage", storage, "save", "--set", f"title={TITLE}", path,
                     limit_seconds=60)
    if run.timed_out or run.status not in (0, 1):
        return {"title status": f"ended with {run.status}: {run.errors[-300:]}"}, "crashed"
    outcome, = run.json()["items"]
    target = storage / path.name
    if not target.is_file():
        return {"title output": f"no output: {outcome}"}, "failed"
    found = {}
    if abs(target.stat().st_mtime - path.stat().st_mtime) > 1:
        found["title dates"] = "the modification date was not carried over"
    if corpus.digest(target) == corpus.digest(path):
        # A rewrite that fails delivers the source as it is, and says why.
        if not outcome.get("message"):
            found["title silent"] = "copied unchanged without a message"
        return {**found, "title copied": f"copied unchanged: {outcome.get('message')}"}, "copied"
    return {**found, **read_back(cli, path, target)}, "saved"


def read_back(cli, path, target):
    found = {}
    for oracle, title in (("exiftool", exiftool_title(target)), ("ffprobe", ffprobe_title(target))):
        if title != TITLE:
            found[f"title {oracle}"] = f"{oracle} reads the title {title!r}"
    before, after = corpus.stream_hashes(path, "0"), corpus.stream_hashes(target, "0")
    if before != after:
        found["title streams"] = f"streams differ: {before} became {after}"
    before, after = raw_items(cli, path), raw_items(cli, target)
    if before != after:
        found["title items"] = f"lost {list((before - after).elements())}, new {list((after - before).elements())}"
    return found


if __name__ == "__main__":
    # Of a damaged file only this is asked: no crash, no hang, the source untouched, no silence.
    corpus.check_each(VIDEO_FAMILY, "title", save_one, differences.SAVE, ("title status", "title source", "title silent"))
