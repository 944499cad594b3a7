#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""usage: clear_test.py CLI. Clears every MP4-family video of CLIPHEAVE_CORPUS: what must go is gone, byte for byte, what
must stay is there, and others see no other difference than the edit's; the same view for a saved title."""
import collections
import json
import re

import corpus
import differences
import save_test

# What exiftool shows of the file itself, of the places of boxes, and of the container's brand.
OF_THE_FILE = re.compile(r"SourceFile|ExifTool:|System:|File:|Composite:|QuickTime:(MediaData|MajorBrand|MinorVersion|"
                         r"CompatibleBrands)|(Track\d+|QuickTime):ChunkOffset")
# The handlers of the boxes that hold the items: (tag, values).
OF_ITEM_BOXES = {"QuickTime:HandlerType": ("Metadata", "Metadata Tags"), "QuickTime:HandlerVendorID": ("Apple",)}
# Names of handlers are descriptions: nothing plays by them.
STRUCTURE = re.compile(r"(Track\d+|QuickTime):(?!HandlerDescription)")
LOCATION = re.compile("Location|GPS|Coordinates", re.IGNORECASE)
SHORTEST = 6  # bytes of a text that are searched for; shorter ones stand anywhere by chance


def exiftool(path):
    """The tags and values that exiftool sees in the file, countable."""
    row, = json.loads(corpus.output("exiftool", "-a", "-G1:4", "-j", "-api", "largefilesupport=1", path))
    tags = collections.Counter()
    for key, value in row.items():
        key = re.sub(r":Copy\d+:", ":", key)
        if not OF_THE_FILE.match(key) and value not in OF_ITEM_BOXES.get(key, ()):
            tags[(key, str(value))] += 1
    return tags


def differing(before, after):
    return {"lost": sorted((before - after)), "new": sorted((after - before))} if before != after else {}


def items(cli, path):
    listed, = corpus.Run(cli, "--quiet", "--json", "list", "--metadata", path).json()
    return listed, listed.get("metadata", [])


def top_level(data):
    """(type, payload) of the boxes of a file."""
    at = 0
    while at + 8 <= len(data):
        size, head = int.from_bytes(data[at:at + 4], "big"), 8
        if size == 1:
            size, head = int.from_bytes(data[at + 8:at + 16], "big"), 16
        size = size or len(data) - at
        if size < head:
            return
        yield data[at + 4:at + 8], data[at + head:at + size]
        at += size


def texts_left(source_items, data):
    """Values of the source that still stand in the target outside the media data."""
    kept = b"".join(payload for kind, payload in top_level(data) if kind != b"mdat")
    left = []
    for item in source_items:
        value = item.get("value")
        if not isinstance(value, str) or LOCATION.search(item["identifier"] + item.get("key", "")) or \
                item["identifier"].endswith(("/loci", "%A9xyz")):
            continue
        for encoded in (value.encode("utf-8", "surrogatepass"), value.encode("utf-16-be", "surrogatepass")):
            if len(value) >= SHORTEST and encoded in kept:
                left.append((item["identifier"], value[:60]))
    return left


def is_north_and_east(listed):
    return listed.get("latitude", 0) > 0 and listed.get("longitude", 0) > 0


def check_cleared(cli, path, target):
    found = {}
    listed, before_items = items(cli, path)
    data = target.read_bytes()
    left = texts_left(before_items, data)
    if left:
        found["texts"] = f"still in the file: {left}"
    after_listed, after_items = items(cli, target)
    beyond = [item["identifier"] for item in after_items
              if not item["identifier"].endswith(("/loci", "%A9xyz")) and "location" not in item["identifier"]]
    if beyond:
        found["items"] = f"items left: {beyond}"
    if is_north_and_east(listed) and "latitude" in after_listed:
        found["location"] = "the position is still there"
    if "latitude" in listed and not is_north_and_east(listed) and \
            (listed["latitude"], listed.get("longitude")) != (after_listed.get("latitude"), after_listed.get("longitude")):
        found["location"] = "the position was lost"
    if media_hashes(path) != media_hashes(target):
        found["streams"] = "streams differ"
    before, after = exiftool(path), exiftool(target)
    structure = [collections.Counter({tag: count for tag, count in tags.items() if STRUCTURE.match(tag[0])})
                 for tags in (before, after)]
    if changed := differing(*structure):
        found["structure"] = f"tags differ: {changed}"
    shown = sorted(tag for tag in after if not STRUCTURE.match(tag[0]) and not LOCATION.search(tag[0]))
    if shown:
        found["exiftool"] = f"tags left: {shown}"
    return found


def media_hashes(path):
    """One hash a stream, without attached pictures, which are metadata."""
    return corpus.stream_hashes(path, "0:V?", "0:a?", "0:s?", "0:d?", "0:t?")


def check_titled(path, target):
    """Nothing but the titles differs in all that exiftool knows."""
    titles = {f"{group}:Title" for group in ("ItemList", "UserData", "Keys")}
    before, after = (collections.Counter({tag: count for tag, count in exiftool(one).items() if tag[0] not in titles})
                     for one in (path, target))
    changed = differing(before, after)
    return {"exiftool-save": f"tags differ: {changed}"} if changed else {}


def run(cli, path, storage, *command):
    """The outcome, and the target when it was written."""
    done = corpus.Run(cli, "--quiet", "--json", "--storage", storage, *command, path, limit_seconds=60)
    if done.timed_out or done.status not in (0, 1):
        raise RuntimeError(f"{path}: {command[0]} ended with {done.status}: {done.errors[-300:]}")
    outcome, = done.json()["items"]
    return outcome, (storage / path.name if outcome["status"] == "completed" else None)


def check_one(cli, path, storage):
    outcome, target = run(cli, path, storage, "clear")
    faults = {}
    if target:
        faults = check_cleared(cli, path, target)
    elif not outcome.get("message"):
        faults["silent"] = "failed without a message"
    _, titled = run(cli, path, storage, "save", "--set", f"title={save_test.TITLE}")
    faults.update(check_titled(path, titled) if titled else {})
    return {f"clear {what}": text for what, text in faults.items()}, outcome["status"]


if __name__ == "__main__":
    corpus.check_each(save_test.VIDEO_FAMILY, "clear", check_one, differences.CLEAR)
