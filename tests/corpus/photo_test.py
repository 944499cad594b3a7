#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""usage: photo_test.py CLI. Every photo command over every photo of CLIPHEAVE_CORPUS: what was named differs and nothing else."""
import base64
import collections
import concurrent.futures
import dataclasses
import os
import pathlib
import plistlib
import re
import shutil
import sys
import tempfile

import corpus
import differences
import photo_oracles as oracles

# Photos that the browser takes under other names alone.
SAME_KIND = {"AVIF": "heif", "HIF": "heic", "HEJ2": "heic", "CR3": "cr2", "EXV": "jpg", "MPO": "jpg", "JXL": "jpg", "IIQ": "raw"}
TAKEN = 1_000_000_000.0  # of every source: 2001
OF_BROKEN = ("silent", "source", "dates", "pixels", "left")
SHORTEST = 6  # bytes that are searched for; shorter ones stand anywhere by chance

GPS = r"EXIF:GPS:|EXIF:IFD0:GPSInfo|XMP:XMP-[^:]+:(.*\.)?(GPS|\w*(Lat|Long)itude)|XMP:XMP-drone-dji:\w+Altitude|XMP:XMP-geo:|RIFF:WebP_Flags|File:ExifByteOrder"
STRAYED = (r"EXIF:IFD[01]:(ColorSpace|ComponentsConfiguration|CompressedBitsPerPixel|Contrast|CreateDate|CustomRendered|DateTimeOriginal|"
           r"DigitalZoomRatio|Exif\w+|Exposure\w+|FNumber|FileSource|Flash\w*|FocalLength\w*|GainControl|ISO|LightSource|MaxApertureValue|"
           r"MeteringMode|Saturation|SceneCaptureType|SceneType|Sharpness|UserComment|WhiteBalance)")  # where other writers put them
EXIF = (rf"{STRAYED}|" r"EXIF:(ExifIFD|InteropIFD):|EXIF:IFD0:ExifOffset|MakerNotes:|PrintIM:|PNG:Exif|XMP:XMP-(exif|exifEX|aux):(?!GPS)|"
        r"XMP:XMP-xmp:CreateDate|XMP:XMP-photoshop:DateCreated")
IPTC = r"IPTC:|Photoshop:IPTCDigest|XMP:XMP-dc:(Title|Subject|Creator|Description|Rights)|XMP:XMP-(photoshop:(?!ColorMode|ICCProfile|History|CameraProfiles|TextLayers|DocumentAncestors)|(iptcCore|iptcExt):)"
BASIC = (r"EXIF:IFD0:(Artist|ImageDescription|Copyright|XP\w+|ExifOffset)|EXIF:ExifIFD:(UserComment|ExifVersion|ComponentsConfiguration|"
         r"FlashpixVersion|ColorSpace)|IPTC:|Photoshop:IPTCDigest|XMP:XMP-dc:(Title|Subject|Creator|Description|Rights)|"
         r"XMP:XMP-(tiff|exif):(Artist|Copyright|ImageDescription|UserComment)|PNG:(Title|Author|Description|Copyright|Comment)")
CAMERA = (r"EXIF:IFD0:(Make|Model)|EXIF:ExifIFD:(DateTimeOriginal|CreateDate|LensMake|LensModel)|XMP:XMP-tiff:(Make|Model)|XMP:XMP-exif:"
          r"DateTime(Original|Digitized)|XMP:XMP-photoshop:DateCreated|XMP:XMP-xmp:CreateDate|XMP:XMP-exifEX:Lens|XMP:XMP-aux:Lens$")
# What exiftool says of values that must be as they are.
WARNINGS_MEANT = {
    "the version of the block is fixed": r"GPS tag # GPSHPositioningError requires GPSVersionID",
    "the block is fixed; TIFF files need no method": r"Missing required TIFF GPS tag # GPSProcessingMethod",
    "the lens is written into photos of any version": r"ExifIFD tag # Lens(Make|Model) requires ExifVersion",
    "the file is cut, and what was added stands where its image would go on": r".* (runs|is) past end of file",
    "a maker note is read by the maker's name, which was changed": r".*(MakerNotes|maker notes)",
}
PLACE = {"GPSVersionID": "2 2 0 0", "GPSLatitude": "33.5", "GPSLatitudeRef": "S", "GPSLongitude": "151.25", "GPSLongitudeRef": "E",
         "GPSAltitude": "10", "GPSAltitudeRef": "1"}
STAMPS = {"GPSSpeed": "0", "GPSSpeedRef": "K", "GPSTrack": "0", "GPSTrackRef": "T", "GPSTimeStamp": "01:02:03", "GPSDateStamp": "2024:02:29"}
TYPED = {"title": "Ünïque Tïtle", "keywords": "basalt, surf,dusk", "artist": "Halla", "copyright": "© Halla", "imageDescription": "Desc",
         "comments": "a comment", "cameraDate": "2025:06:14 21:36:20", "latitude": "-33.5",
         "longitude": "151.25", "altitude": "-10", "gpsDate": "2024:02:29", "gpsTime": "01:02:03"}


# Values of a list, and how exiftool calls them.
LISTED = {("{TIFF}", "Make"): "EXIF:IFD0:Make", ("{TIFF}", "Model"): "EXIF:IFD0:Model", ("{Exif}", "FNumber"): "EXIF:ExifIFD:FNumber",
          ("{Exif}", "ExposureTime"): "EXIF:ExifIFD:ExposureTime", ("{Exif}", "FocalLength"): "EXIF:ExifIFD:FocalLength",
          ("{Exif}", "ISOSpeedRatings"): "EXIF:ExifIFD:ISO", ("{Exif}", "DateTimeOriginal"): "EXIF:ExifIFD:DateTimeOriginal",
          ("{GPS}", "Latitude"): "EXIF:GPS:GPSLatitude", ("{GPS}", "LongitudeRef"): "EXIF:GPS:GPSLongitudeRef",
          ("{GPS}", "Altitude"): "EXIF:GPS:GPSAltitude", ("{IPTC}", "ObjectName"): "IPTC:ObjectName"}


def in_gps(values):
    return {f"EXIF:GPS:{key}": value for key, value in values.items()}


@dataclasses.dataclass
class Command:
    words: list
    prefix: str = ""
    may_change: str = "$^"
    gone: str = "$^"  # keys that must not stand in the output
    written: dict = dataclasses.field(default_factory=dict)


COMMANDS = {
    "no-gps": Command(["remove", "gps"], "NoGPS_", GPS, r".*(GPS|Latitude|Longitude)"),
    "no-exif": Command(["remove", "exif"], "NoExif_", EXIF, r"EXIF:(ExifIFD|InteropIFD):|MakerNotes:"),
    "no-iptc": Command(["remove", "iptc"], "NoIPTC_", IPTC, IPTC),
    "no-exif-gps": Command(["remove", "exif-gps"], "NoExifAndGPS_", f"{EXIF}|{GPS}", r"EXIF:(ExifIFD|InteropIFD|GPS):|.*GPSL"),
    "all": Command(["remove", "all"], "NoExifAndGPS_", ".*"),
    "gps": Command(["gps", "--date", "2024:02:29", "--time", "01:02:03", "--", "-33.5", "151.25", "-10"], "", GPS, "$^",
                   in_gps(PLACE | STAMPS)),
    "change-gps": Command(["change-gps", "--", "-33.5", "151.25", "-10"], "noExif_", f"{EXIF}|{GPS}", r"EXIF:ExifIFD:", in_gps(PLACE)),
    "apply": Command(["apply", *(f"--set={field}={text}" for field, text in TYPED.items())], "", f"{BASIC}|{CAMERA}|{GPS}", "$^",
                     in_gps(PLACE | STAMPS) | {
                         "EXIF:IFD0:Artist": "Halla", "EXIF:IFD0:Copyright": "© Halla", "EXIF:IFD0:ImageDescription": "Desc",
                         "EXIF:ExifIFD:UserComment": "a comment",
                         "EXIF:ExifIFD:DateTimeOriginal": "2025:06:14 21:36:20", "EXIF:ExifIFD:CreateDate": "2025:06:14 21:36:20"}),
    # exiftool reads a maker note by the maker's name.
    "import": Command([], "", "EXIF:GPS:GPSVersionID"),
    "camera": Command(["apply", "--set=make=Kestrel", "--set=model=Two"], "", rf"{CAMERA}|.*?MakerNote|PrintIM|File:ExifByteOrder|{BASIC}", "$^",
                      {"EXIF:IFD0:Make": "Kestrel", "EXIF:IFD0:Model": "Two", "EXIF:ExifIFD:LensMake": "Kestrel", "EXIF:ExifIFD:LensModel": "Two"}),
}


def run(cli, storage, *words):
    done = corpus.Run(cli, "--quiet", "--json", "--storage", storage, "photo", *words)
    if done.timed_out or done.status not in (0, 1):
        raise RuntimeError(f"{words[:3]}: ended with {done.status}: {done.errors[-500:]}")
    return {pathlib.Path(item["source"]).name: item for item in done.json()["items"]}


class Work:
    def __init__(self, cli, root, files, folder):
        self.cli, self.folder = cli, folder
        self.sources = {}  # path of the copy -> name in the corpus
        for path in files:
            name = path.relative_to(root)
            kind = SAME_KIND.get(corpus.extension(path), path.suffix[1:])
            if name.parts[0] in ("photo", "broken") and kind.upper() in corpus.PHOTO:
                copy = folder / "sources" / f"{name.parts[0]}-{path.stem}.{kind}"
                copy.parent.mkdir(exist_ok=True)
                shutil.copyfile(path, copy)
                os.utime(copy, (TAKEN, TAKEN))
                self.sources[copy] = str(name)
        self.digests = {path: corpus.digest(path) for path in self.sources}
        self.before = oracles.photos(folder / "sources")
        self.images = oracles.pixels(folder / "sources")
        self.found = {}

    def fault(self, path, job, what, text):
        """Of damaged files there is no right reading: only what harms counts."""
        if not self.sources[path].startswith("broken/") or what in OF_BROKEN:
            self.found.setdefault((self.sources[path], job, what), text)

    def perform(self, job):
        command, storage = COMMANDS[job], self.folder / job
        outcomes = run(self.cli, storage, *command.words, *self.sources)
        return job, outcomes, oracles.photos(storage), oracles.pixels(storage)

    def import_own_lists(self):
        """Each photo's own list, all metadata, written into it again."""
        lists, storage = self.folder / "lists", self.folder / "import"
        exported = run(self.cli, lists, "export", "each", *self.sources)
        outcomes = {}
        for path in self.sources:
            if exported[path.name]["status"] != "completed":
                outcomes[path.name] = exported[path.name]
                continue
            plist, = map(pathlib.Path, exported[path.name]["outputs"])
            properties = plistlib.loads(plist.read_bytes())
            self.check_list(path, properties)
            plist.write_bytes(plistlib.dumps(properties, fmt=plistlib.FMT_BINARY))
            outcomes.update(run(self.cli, storage, "import", plist, path))
        return "import", outcomes, oracles.photos(storage), oracles.pixels(storage)

    def check_list(self, path, properties):
        tags = dict(self.before[path.name].tags.keys()) if path.name in self.before else {}
        for (block, key), tag in LISTED.items():
            ours, theirs = properties.get(block, {}).get(key), tags.get(tag)
            ours = " ".join(map(str, ours)) if isinstance(ours, list) else ours
            if theirs and theirs != "undef" and str(ours).strip() != theirs.strip() and not is_close(ours, theirs):
                self.fault(path, "export", key, f"we list {ours!r}, exiftool reads {theirs!r}")

    def check(self, job, outcomes, after, images):
        command = COMMANDS[job]
        for path in self.sources:
            outcome, target = outcomes[path.name], self.folder / job / (command.prefix + path.name)
            if outcome["status"] != "completed":
                self.fault(path, job, "refused" if outcome["message"] and not target.exists() else "silent", outcome["message"])
                continue
            if abs(target.stat().st_mtime - TAKEN) > 1:
                self.fault(path, job, "dates", "the date was not carried over")
            name = target.name
            if path.name not in self.before:
                continue
            if images.get(name) != self.images.get(path.name):
                self.fault(path, job, "pixels", f"{self.images.get(path.name)} became {images.get(name)}")
            self.compare(path, job, self.before[path.name], after[name])
        for name in set(after) - {command.prefix + path.name for path in self.sources}:
            raise RuntimeError(f"{job}: unexpected output {name}")

    def compare(self, path, job, before, after):
        command = COMMANDS[job]
        size = path.stat().st_size
        images, left = set(before.payload(size)), set(after.payload(size))
        if images != left and not (job == "all" and left and left < images):  # thumbnails and the like go then
            self.fault(path, job, "payload", f"{images ^ left}")
        may_change = re.compile(command.may_change)
        lost, new = before.tags - after.tags, after.tags - before.tags
        changed = [(sign, *tag) for sign, tags in (("-", lost), ("+", new)) for tag in sorted(tags)
                   if not may_change.match(re.sub(r":Doc\d+:", ":", tag[0]))]
        if changed:
            self.fault(path, job, "tags", [(a, b, c[:60]) for a, b, c in changed])
        more = [text for text in after.warnings - before.warnings
                if not any(re.match(r"(\[minor\] )?" + meant, text) for meant in WARNINGS_MEANT.values())]
        if more:
            self.fault(path, job, "warnings", list(more))
        gone = re.compile(command.gone)
        left = [(key, value[:50]) for key, value in after.tags if gone.match(key)]
        if left:
            self.fault(path, job, "left", left)
        seen = dict(after.tags.keys())
        wrong = {key: seen.get(key) for key, value in command.written.items() if seen.get(key) != value}
        if wrong:
            self.fault(path, job, "written", wrong)
        if job == "all":
            self.check_bare(path, before, after)

    def check_bare(self, path, before, after):
        """Nothing of the source's texts and dates stands anywhere in the file, in no form; the profile does."""
        if before.profile != after.profile:
            self.fault(path, "all", "profile", "differs")
        data = after.path.read_bytes()
        for at in range(0, len(before.profile), 65519):
            data = data.replace(before.profile[at:at + 65519], b"")
        left = sorted({(key, text[:50]) for key, text in before.texts if not key.startswith("ICC_Profile") and stands_in(text, data)})
        if left:
            self.fault(path, "all", "texts", left)

    def check_sources(self):
        for path, digest in self.digests.items():
            if corpus.digest(path) != digest:
                self.fault(path, "any", "source", "was changed")


def is_close(ours, theirs):
    try:
        return abs(abs(float(ours)) - abs(float(theirs))) <= 1e-4 * abs(float(theirs))  # lists have signs besides letters
    except (TypeError, ValueError):
        return False


def stands_in(text, data):
    if re.fullmatch(r"[-0-9. ]*", text):
        return False
    forms, date = [text], re.match(r"(\d{4}):(\d\d):(\d\d)(?: (\d\d:\d\d:\d\d.*))?$", text)
    if date:
        year, month, day, time = date.groups("")
        forms += [f"{year}-{month}-{day}T{time}", f"{year}-{month}-{day}", f"{year}{month}{day}"]
    return any(is_in(form, data) for form in forms)


def is_in(text, data):
    plain = text.encode("utf-8", "surrogatepass")
    wide = [text.encode(f"utf-16-{order}", "surrogatepass") for order in ("le", "be")]
    # The letters in the middle of the base64 form depend on the place in a group of three alone.
    packed = [base64.b64encode(bytes(shift) + plain)[shift and 4:-4] for shift in range(3)]
    return any(len(form) >= SHORTEST and form in data for form in [plain, *wide, *packed])


def main():
    cli = sys.argv[1]
    root, files = corpus.corpus_or_skip()
    with tempfile.TemporaryDirectory() as folder:
        work = Work(cli, root, files, pathlib.Path(folder))
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            for done in pool.map(lambda job: work.import_own_lists() if job == "import" else work.perform(job), COMMANDS):
                work.check(*done)
        work.check_sources()
        found = joined_refusals(work.found)
        known = corpus.parse_differences(differences.PHOTO)
        present = {str(path.relative_to(root)) for path in files}
        corpus.finish(corpus.judge(found, known, present),
                      f"{len(work.sources)} photos, {len(COMMANDS)} commands; {len(known)} known differences")


def joined_refusals(found):
    """A photo that every command refuses counts once."""
    refused = collections.Counter(name for name, job, what in found if what == "refused")
    every = {name for name, count in refused.items() if count == len(COMMANDS)}
    return {(name, "every" if what == "refused" and name in every else job, what): text for (name, job, what), text in found.items()}


if __name__ == "__main__":
    main()
