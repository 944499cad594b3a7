# SPDX-License-Identifier: GPL-3.0-or-later
"""What exiftool and ImageMagick, which this project did not write, read in photos."""
import base64
import collections
import hashlib
import json
import re
import subprocess

# Facts of the file itself, and what exiftool computes from other tags.
OF_THE_FILE = re.compile(r"SourceFile|ExifTool:|File:System:|File:(File:)?(FileSize|CurrentIPTCDigest)|Composite:|QuickTime:MediaData")
# Numbers that say where in the file something stands: that it is there counts, and what stands there is compared as such.
PLACES = re.compile(r":(\w*Offsets?|\w*ImageStart|JpgFromRawStart|OffsetToHiddenData|OffsetTable\w*|MPImageLength)$")
STRIPS = re.compile(r"EXIF:(IFD0|SubIFD\d*):(Strip|Tile)(Offsets|ByteCounts)$")
BINARY = re.compile(r":(PreviewImage|JpgFromRaw|OtherImage|ThumbnailImage)$")
EMBEDDED_JPEG = re.compile(r":MPImage\d+$")


class Photo:
    """A photo's tags with their values, countable, as "family 0:family 1:name"; tags of an embedded file have "DocN:"
    before the name, parts of a structure their path behind it. Long binary values stand for themselves by their hash."""

    def __init__(self, row, path):
        self.tags, self.warnings, self.texts = collections.Counter(), collections.Counter(), []
        self.path, self.profile, self.strips = path, b"", {}
        for key, value in row.items():
            # The XMP of a JPEG 2000 image stands in a box that exiftool calls XML.
            self.take(re.sub(r":Main|:Copy\d+", "", key).replace("XML:XML-", "XMP:XMP-"), value)

    def take(self, key, value):
        if key == "ExifTool:Warning":
            self.warnings[re.sub(r"\b(0x)?[0-9a-f]*\d[0-9a-f]*\b", "#", str(value))] += 1
        if STRIPS.match(key):
            self.strips.setdefault(key, value)
        if OF_THE_FILE.match(key):
            return
        if isinstance(value, str) and value.startswith("base64:"):
            data = base64.b64decode(value[7:])
            if key == "ICC_Profile:ICC_Profile":
                self.profile = data
            value = "bytes " + hashlib.md5(jpeg_pixels(data) if EMBEDDED_JPEG.search(key) else data).hexdigest()
        elif not BINARY.search(key):
            self.texts += [(key, text) for _, text in leaves(key, value)]
        for path, text in leaves(key, value):
            self.tags[(path, "" if PLACES.search(key) else text)] += 1

    def payload(self, limit):
        """Hashes of the strips and tiles of a TIFF's images within the first `limit` bytes: what a cut file lacks may be
        anything; of the items of a HEIF file."""
        data = self.path.read_bytes()
        yield from heif_items(data)
        data = data[:limit]
        for key, value in sorted(self.strips.items()):
            counts = self.strips.get(re.sub(r"Offsets$", "ByteCounts", key), value)
            if counts is not value:
                bounds = zip(*(numbers(one) for one in (value, counts)))
                yield key, hashlib.md5(b"".join(data[at:at + size] for at, size in bounds)).hexdigest()


def boxes(data, at, end):
    while at + 8 <= end:
        size, head = int.from_bytes(data[at:at + 4], "big"), 8
        if size == 1:
            size, head = int.from_bytes(data[at + 8:at + 16], "big"), 16
        size = size or end - at
        if size < head:
            return
        yield data[at + 4:at + 8], at + head, min(at + size, end)
        at += size


def heif_items(data):
    """(id, type, hash) of the items that are neither Exif nor XMP: images, thumbnails, gain maps, grids. Source: ISO/IEC
    14496-12, 8.11."""
    meta = next(((at + 4, end) for kind, at, end in boxes(data, 0, len(data)) if kind == b"meta"), None)
    inner = {kind: at for kind, at, _ in boxes(data, *meta)} if meta else {}
    if b"iloc" not in inner or b"iinf" not in inner:
        return
    place = inner[b"iinf"] + (6 if data[inner[b"iinf"]] == 0 else 8)
    kinds = {}
    for kind, at, end in boxes(data, place, meta[1]):
        wide = 4 if data[at] == 3 else 2
        if kind == b"infe" and data[at] >= 2:
            kinds[int.from_bytes(data[at + 4:at + 4 + wide], "big")] = data[at + 6 + wide:at + 10 + wide]
    at, version = inner[b"iloc"] + 4, data[inner[b"iloc"]]

    def number(size):
        nonlocal at
        at += size
        return int.from_bytes(data[at - size:at], "big")

    sizes = number(2)
    for _ in range(number(4 if version == 2 else 2)):
        item, method = number(4 if version == 2 else 2), number(2) & 15 if version else 0
        number(2)
        base, content = number(sizes >> 4 & 15), b""
        for _ in range(number(2)):
            number(sizes & 15 if version else 0)
            offset = base + number(sizes >> 12) + (inner.get(b"idat", 0) if method == 1 else 0)
            content += data[offset:offset + number(sizes >> 8 & 15)]
        if kinds.get(item) not in (b"Exif", b"mime"):
            yield item, kinds.get(item), hashlib.md5(content).hexdigest()


def numbers(value):
    text = base64.b64decode(value[7:]).decode() if str(value).startswith("base64:") else str(value)
    return [int(number) for number in text.split()]


def leaves(path, value):
    if isinstance(value, dict):
        return [leaf for name, one in value.items() for leaf in leaves(f"{path}.{name}", one)]
    if isinstance(value, list):
        return [leaf for one in value for leaf in leaves(path, one)]
    return [(path, str(value))]


def jpeg_scan(data, at=0):
    """Where the entropy-coded data of a JPEG image begins; the end when it never does."""
    at += 2
    while at + 4 <= len(data) and data[at] == 0xFF and data[at + 1] != 0xDA:
        at += 1 if data[at + 1] == 0xFF else 2 + int.from_bytes(data[at + 2:at + 4], "big")
    return at


def jpeg_pixels(data):
    """An embedded JPEG without its marker segments and what fills it up."""
    return data[jpeg_scan(data):].rstrip(b"\0")


def photos(folder):
    """{name: Photo} of a folder by one run of exiftool, which says besides what it finds invalid."""
    done = subprocess.run(["exiftool", "-a", "-G0:1:3:4", "-s", "-ee", "-struct", "-j", "-n", "-b", "-u", "-api", "validate=1",
                           "-api", "largefilesupport=1", "-all", "-ICC_Profile", folder], capture_output=True)
    rows = json.loads(done.stdout.decode(errors="replace") or "[]")
    return {path.name: Photo(row, path) for row in rows for path in [folder / row["SourceFile"].rpartition("/")[2]]}


def pixels(folder):
    """{name: signatures of the images} by ImageMagick, of the photos that it can decode."""
    paths = sorted(map(str, folder.iterdir()))
    done = subprocess.run(["identify", "-quiet", "-format", "%i|%wx%h %#\n", *paths], capture_output=True)
    found = collections.defaultdict(list)
    for line in done.stdout.decode(errors="replace").splitlines():
        name, _, signature = line.rpartition("|")
        found[name.rpartition("/")[2]].append(signature)
    return found
