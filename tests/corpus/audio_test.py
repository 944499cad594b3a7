#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""usage: audio_test.py CLI. Saves every field into every audio file of CLIPHEAVE_CORPUS, clears it, and has others read
the results back."""
import mutagen
import mutagen.id3
import mutagen.mp4

import corpus
import differences

FIELDS = {"title": "Ein Titel — 新しい題 🎬", "subtitle": "Untertitel", "album": "Альбом", "artist": "Künstler",
          "albumArtist": "3/12", "composer": "Compositrice", "band": "Band", "lyricist": "Dichterin",
          "publisher": "Verlag", "copyright": "© 2001", "comments": "Ein Wort", "year": "1999",
          "recorded": "2001:02:03 04:05:06"}
# What a writer or a reader has no place for: by the extension of the file.
DROPPED = {"FLAC": {"albumArtist", "band", "publisher"}, "WAV": {"band", "publisher"}, "AU": {"band", "publisher"}}
COPIED = {"aac", "alac", "ac3"}
M4A_NAMES = {"title": "\xa9nam", "album": "\xa9alb", "artist": "\xa9ART", "composer": "\xa9wrt", "year": "\xa9day",
             "comments": "\xa9cmt", "lyricist": "\xa9lyr", "copyright": "cprt", "publisher": "\xa9pub", "band": "aART",
             "subtitle": "\xa9st3"}
ID3_NAMES = {"title": "TIT2", "subtitle": "TIT3", "album": "TALB", "artist": "TPE1", "albumArtist": "TRCK",
             "composer": "TCOM", "band": "TPE2", "lyricist": "TEXT", "publisher": "TPUB", "copyright": "TCOP",
             "year": "TYER", "recorded": "TRDA"}


def codec(path):
    return corpus.output("ffprobe", "-v", "quiet", "-select_streams", "a:0", "-show_entries", "stream=codec_name", "-of",
                  "default=nk=1:nw=1", path).partition("\n")[0]


def samples(path, *how):
    """A hash of the decoded audio; with `-c copy` of the packets."""
    return corpus.output("ffmpeg", "-v", "quiet", "-i", path, "-map", "0:a:0", *(how or ("-c:a", "pcm_s24le")), "-f", "hash",
                  "-hash", "md5", "-")


def heard_samples(path):
    """The same without the priming of a CAF file, which ffmpeg decodes with the rest."""
    data = path.read_bytes() if path.suffix.lower() == ".caf" else b""
    table = data.find(b"pakt")
    priming = int.from_bytes(data[table + 28:table + 32], "big") if table > 0 else 0
    return samples(path, "-af", f"atrim=start_sample={priming}", "-c:a", "pcm_s24le") if priming else samples(path)


def is_lossless(name):
    integer = name.startswith("pcm_") and not name.startswith(("pcm_f", "pcm_s32", "pcm_mulaw", "pcm_alaw"))
    return integer or name in {"flac", "alac", "ape", "tta", "wmalossless"}


def id3_faults(path):
    tag = mutagen.id3.ID3(path, translate=False)
    found = {name: str(tag.getall(frame)[0]) if tag.getall(frame) else None for name, frame in ID3_NAMES.items()}
    found["comments"] = str(tag.getall("COMM")[0]) if tag.getall("COMM") else None
    faults = {f"mutagen {name}": text for name, text in found.items() if text != FIELDS[name]}
    if tag.version[:2] != (2, 3) or tag.getall("TCON"):
        faults["mutagen tag"] = f"version {tag.version}, {list(tag)}"
    return faults


def m4a_faults(path):
    kind = mutagen.File(path, options=[mutagen.mp4.MP4])
    if kind is None:
        return {"mutagen file": "no MPEG-4 file"}
    faults = {f"mutagen {name}": kind.get(key) for name, key in M4A_NAMES.items() if kind.get(key) != [FIELDS[name]]}
    if kind.get("trkn") != [(3, 12)]:
        faults["mutagen track"] = kind.get("trkn")
    return faults


def flac_faults(path, target):
    try:
        mutagen.File(path)
    except mutagen.MutagenError:
        return {}  # a source that it does not take
    found = mutagen.File(target).get("title")
    return {} if found == [FIELDS["title"]] else {"mutagen title": found}


def read_back(cli, path, target):
    kind = corpus.extension(path)
    item, = corpus.Run(cli, "--quiet", "--json", "list", target).json()
    faults = {f"import {name}": item.get(name) for name, text in FIELDS.items()
              if name not in DROPPED.get(kind, ()) and item.get(name) != text}
    if kind == "MP3":
        faults.update(id3_faults(target))
        if samples(path, "-c", "copy") != samples(target, "-c", "copy"):
            faults["save audio"] = "packets differ"
    elif kind == "FLAC":
        faults.update(flac_faults(path, target))
    else:
        faults.update(m4a_faults(target))
    name = codec(path)
    if (name in COPIED or is_lossless(name)) and heard_samples(path) != samples(target):
        faults["save audio"] = f"{name}: decoded samples differ"
    return faults


def clear_faults(cli, path, storage):
    outcome, = corpus.Run(cli, "--quiet", "--json", "--storage", storage, "clear", path, limit_seconds=120).json()["items"]
    target = storage / path.name
    if outcome["status"] != "completed":
        return {"clear failed": outcome.get("message")}
    listed, = corpus.Run(cli, "--quiet", "--json", "list", "--metadata", target).json()
    left = {item["identifier"]: item["value"] for item in listed.get("metadata", [])}
    if corpus.extension(path) == "MP3":
        left.pop("id3/APIC", None)  # the cover of an MP3 survives a removal
        if samples(path, "-c", "copy") != samples(target, "-c", "copy"):
            return {"clear audio": "packets differ"}
    elif is_lossless(codec(path)) and samples(path) != samples(target):
        return {"clear audio": "decoded samples differ"}
    return {"clear items": left} if left else {}


def check_one(cli, path, storage):
    settings = [argument for name, text in FIELDS.items() for argument in ("--set", f"{name}={text}")]
    run = corpus.Run(cli, "--quiet", "--json", "--storage", storage, "save", *settings, path, limit_seconds=120)
    if run.timed_out or run.status not in (0, 1):
        return {"save status": f"ended with {run.status}: {run.errors[-300:]}"}, "crashed"
    outcome, = run.json()["items"]
    target = storage / path.name
    faults = {}
    if outcome["status"] == "completed":
        faults = read_back(cli, path, target)
        faults.update(clear_faults(cli, path, storage))
    elif not outcome.get("message"):
        faults["save silent"] = "failed without a reason"
    elif target.exists() and target.read_bytes() != path.read_bytes():
        faults["save failed"] = "neither whole nor the source"
    elif codec(path) and "broken" not in path.parts:
        faults["save failed"] = outcome["message"]
    return faults, outcome["status"]


if __name__ == "__main__":
    corpus.check_each(corpus.AUDIO, "save", check_one, differences.AUDIO, ("save status", "save source", "save silent"))
