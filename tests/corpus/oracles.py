# SPDX-License-Identifier: GPL-3.0-or-later
"""What programs of others read from a file: exiftool, ffprobe and mutagen, each as {field: value} with the keys of the
command line's JSON. A program that does not read the item in question leaves the key out."""
import json
import re

import corpus

# exiftool's groups that hold the items which the import reads, by extension; the first that has the tag counts.
ISO_GROUPS = ("ItemList",)
TAG_GROUPS = ("ID3v2_4", "ID3v2_3", "ID3v2_2", "ID3v1", "Vorbis", "RIFF", "AIFF", "ASF", "APE", "Matroska")
EXIFTOOL_TAGS = {"title": ("Title", "Name"), "artist": ("Artist", "Author"), "album": ("Album", "AlbumTitle")}


def run_json(*command):
    return json.loads(corpus.output(*command) or "null")


def exiftool_all(root):
    """One run over the whole folder: {path: facts}."""
    rows = run_json("exiftool", "-r", "-j", "-n", "-G1", "-a", "-q", "-api", "largefilesupport=1", "-ext", "*", root)
    return {row["SourceFile"]: exiftool_facts(row) for row in rows}


def exiftool_facts(row):
    facts = {}
    kind = corpus.extension(row["SourceFile"])
    groups = ISO_GROUPS if kind in corpus.ISOBMFF else TAG_GROUPS
    for field, names in EXIFTOOL_TAGS.items():
        values = [row[f"{group}:{name}"] for group in groups for name in names if row.get(f"{group}:{name}", "") != ""]
        if values:
            facts[field] = "; ".join(map(str, values[0])) if isinstance(values[0], list) else values[0]
    if kind in corpus.ISOBMFF:
        facts.update(exiftool_position(row), **exiftool_frame(row))
        if row.get("QuickTime:Duration"):
            facts["durationSeconds"] = row["QuickTime:Duration"]
    elif kind in corpus.PHOTO:
        facts.update(exiftool_photo(row))
    return facts


def exiftool_frame(row):
    """The size in the sample description of the first track that has one, else in its header."""
    for name in ("SourceImage", "Image"):
        for track in range(1, 9):
            if row.get(f"Track{track}:{name}Width"):
                return {"width": row[f"Track{track}:{name}Width"], "height": row[f"Track{track}:{name}Height"]}
    return {}


def exiftool_position(row):
    """Of a video: the keys of the QuickTime metadata come after the boxes of the user data and win."""
    for group in ("Keys", "UserData", "ItemList"):
        numbers = str(row.get(f"{group}:GPSCoordinates", "")).split()
        if len(numbers) >= 2:
            return {"latitude": float(numbers[0]), "longitude": float(numbers[1])}
    found = re.search(r"Lat=(\S+) Lon=(\S+)", str(row.get("UserData:LocationInformation", "")))
    return {"latitude": float(found[1]), "longitude": float(found[2])} if found else {}


def exiftool_photo(row):
    facts = {}
    size = str(row.get("Composite:ImageSize", "")).replace("x", " ").split()
    if len(size) == 2:
        facts["width"], facts["height"] = map(int, size)
    position = [("latitude", "S", "GPS:GPSLatitude"), ("longitude", "W", "GPS:GPSLongitude")]
    for field, negative, tag in position:
        value = row.get(tag)
        if isinstance(value, (int, float)):
            facts[field] = -abs(value) if str(row.get(tag + "Ref", "")).startswith(negative) else value
    return facts


def ffprobe(path):
    found = run_json("ffprobe", "-v", "quiet", "-print_format", "json", "-show_format", "-show_streams", path) or {}
    facts = {}
    container = found.get("format", {})
    if float(container.get("duration", 0)) > 0:
        facts["durationSeconds"] = float(container["duration"])
    videos = [stream for stream in found.get("streams", []) if stream.get("codec_type") == "video"
                and not stream.get("disposition", {}).get("attached_pic")]
    if videos and videos[0].get("width"):
        facts.update(width=videos[0]["width"], height=videos[0]["height"])
    if corpus.extension(path) not in corpus.ISOBMFF:
        # Of ISO files ffprobe folds all key spaces into one; that is no reading of the same item.
        tags = dict(container.get("tags", {}))
        for stream in found.get("streams", []):
            if stream.get("codec_type") == "audio":
                tags = {**stream.get("tags", {}), **tags}
        lower = {key.lower(): value for key, value in tags.items()}
        facts.update({field: lower[field] for field in ("title", "artist", "album") if lower.get(field)})
    return facts


def mutagen_facts(path):
    import mutagen
    import mutagen.mp4
    try:
        found = mutagen.File(path)
    except Exception:  # noqa: BLE001  whatever it cannot read, it does not read
        return {}
    if found is None:
        return {}
    facts = {}
    if getattr(found.info, "length", 0):
        facts["durationSeconds"] = found.info.length
    keys = {"title": ("TIT2", "\xa9nam", "title", "Title"), "artist": ("TPE1", "\xa9ART", "artist", "Artist", "Author"),
            "album": ("TALB", "\xa9alb", "album", "Album", "WM/AlbumTitle")}
    for field, names in keys.items():
        for name in names:
            try:
                value = found.tags[name] if found.tags else None
            except (KeyError, ValueError):
                continue
            if value and joined_text(value):
                facts[field] = joined_text(value)
                break
    return facts


def joined_text(value):
    texts = value.text if hasattr(value, "text") else value
    return "; ".join(map(str, texts)) if isinstance(texts, list) else str(value)
