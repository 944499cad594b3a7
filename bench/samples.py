# SPDX-License-Identifier: GPL-3.0-or-later
"""Files to measure with: a library of small files and single large ones, made with ffmpeg and byte by byte."""
import pathlib
import struct
import subprocess

# A text of fixed length that stands in every generated tag; each clone gets another one of the same length.
MARK = "Sample 000000 of the library"
VARIANTS = 4
SECONDS = {"mp4": 1.6, "mov": 1.6, "mp3": 1.6, "flac": 0.25, "wav": 0.3, "m4a": 2.0}


def ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-y", *map(str, arguments)], check=True)


def tags(variant):
    words = {"title": MARK, "artist": f"Artist {variant}", "album": f"Album {variant}", "date": str(2000 + variant),
             "track": f"{variant + 1}/12", "comment": "A comment of ordinary length. " * 3}
    return [part for key, value in words.items() for part in ("-metadata", f"{key}={value}")]


def base_file(folder, kind, variant):
    """One real file of a kind; the variants differ in length, tags and layout."""
    target = folder / f"base-{variant}.{kind}"
    seconds = SECONDS[kind] * (1 + variant / 4)
    tone = ["-f", "lavfi", "-i", f"sine=frequency={220 * (variant + 1)}:duration={seconds}"]
    noise = ["-f", "lavfi", "-i", f"anoisesrc=duration={seconds}:amplitude=0.2:seed={variant}"]
    image = ["-f", "lavfi", "-i", "testsrc=size=240x240:rate=1:duration=1"]
    if kind in ("mp4", "mov"):
        scene = ["-f", "lavfi", "-i", f"testsrc2=size=192x108:rate=24:duration={seconds}"]
        layout = ["-movflags", "+faststart"] if variant % 2 else []
        ffmpeg(*scene, *tone, *tags(variant), "-c:v", "libx264", "-preset", "ultrafast", "-crf", 34, "-pix_fmt",
               "yuv420p", "-c:a", "aac", "-b:a", "64k", *layout, target)
    elif kind in ("mp3", "flac", "m4a") and variant % 2:
        codec = {"mp3": ["-c:a", "libmp3lame", "-b:a", "96k", "-id3v2_version", 3, "-write_id3v1", 1],
                 "flac": ["-c:a", "flac"], "m4a": ["-c:a", "aac", "-b:a", "96k"]}[kind]
        ffmpeg(*noise, *image, "-map", "0:a", "-map", "1:v", "-frames:v", 1, "-c:v", "mjpeg", "-disposition:v",
               "attached_pic", *tags(variant), *codec, target)
    else:
        ffmpeg(*noise, *tags(variant), *(["-b:a", "128k"] if kind in ("mp3", "m4a") else []), target)
    return target.read_bytes()


def small_library(folder, per_kind):
    """`per_kind` files of each kind in folders of 100; each has a title of its own."""
    complete = folder.with_name(folder.name + "-is-complete")
    if complete.exists():
        return
    bases = folder.parent / "bases"
    bases.mkdir(parents=True, exist_ok=True)
    mark = MARK.encode()
    for kind in SECONDS:
        patterns = [base_file(bases, kind, variant) for variant in range(VARIANTS)]
        if not all(mark in pattern for pattern in patterns):
            raise RuntimeError(f"the title did not get into the {kind} files")
        for number in range(per_kind):
            target = folder / f"{kind}-{number // 100}" / f"{number:04}.{kind}"
            target.parent.mkdir(parents=True, exist_ok=True)
            title = MARK.replace("000000", f"{number:06}").encode()
            target.write_bytes(patterns[number % VARIANTS].replace(mark, title))
    complete.touch()


def boxes(data):
    """The top-level boxes of a small MP4 file: type -> bytes."""
    found, at = {}, 0
    while at + 8 <= len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        size = size or len(data) - at
        found[kind.decode("latin-1")] = data[at:at + size]
        at += size
    return found


def long_video(folder):
    """An hour of a tiny video: the header tables of a real long recording."""
    target = folder / "hour.mp4"
    if not target.exists():
        ffmpeg("-f", "lavfi", "-i", "color=size=32x18:rate=25:duration=3600", "-f", "lavfi", "-i",
               "anullsrc=r=8000:cl=mono:d=3600", "-c:v", "mpeg4", "-c:a", "aac", "-b:a", "8k", *tags(1), target)
    return target.read_bytes()


def large_mp4(folder, name, payload, moov_first, sparse):
    """An MP4 with `payload` more bytes in its media data; the header is that of an hour of video. Gives path and size
    of the header boxes. The media data must be found where the tables say: the padding follows it."""
    parts = boxes(long_video(folder))
    media = parts["mdat"][8:]
    ftyp, moov = parts["ftyp"], parts["moov"]
    header = struct.pack(">I4sQ", 1, b"mdat", 16 + len(media) + payload)
    # In the source the media data began behind ftyp, an 8-byte free box and the 8-byte mdat header.
    start = len(ftyp) + len(parts.get("free", b"")) + 8
    now = len(ftyp) + (len(moov) if moov_first else 0) + len(header)
    moov = shifted(moov, now - start)
    target = folder / name
    with open(target, "wb") as file:
        file.write(ftyp + (moov if moov_first else b"") + header + media)
        if sparse:
            file.truncate(file.tell() + payload)
            file.seek(0, 2)
        else:
            fill(file, payload)
        file.write(b"" if moov_first else moov)
    return target, len(ftyp) + len(moov)


def shifted(moov, delta):
    """The moov box with every chunk offset moved by `delta`."""
    data, at = bytearray(moov), 0
    while (at := data.find(b"stco", at)) >= 0:
        count = struct.unpack(">I", data[at + 8:at + 12])[0]
        offsets = struct.unpack(f">{count}I", data[at + 12:at + 12 + 4 * count])
        data[at + 12:at + 12 + 4 * count] = struct.pack(f">{count}I", *(o + delta for o in offsets))
        at += 12 + 4 * count
    return bytes(data)


def fill(file, length):
    """Bytes that neither compress nor stay holes."""
    block = pathlib.Path("/dev/urandom").open("rb").read(4 << 20)
    while length > 0:
        length -= file.write(block[:length])


def large_audio(folder, kind, size):
    """An MP3, WAV or FLAC file of about `size` bytes with tags at its beginning."""
    target = folder / f"large.{kind}"
    noise = ["-f", "lavfi", "-i", "anoisesrc=duration=20:amplitude=0.3:seed=7"]
    codec = {"mp3": ["-b:a", "192k", "-write_xing", 0], "wav": [], "flac": []}[kind]
    ffmpeg(*noise, *tags(2), *codec, target)
    data = target.read_bytes()
    if kind == "wav":
        at = data.index(b"data")
        body = size - at - 8
        data = data[:4] + struct.pack("<I", size - 8) + data[8:at + 4] + struct.pack("<I", body)
        target.write_bytes(data)
        with open(target, "ab") as file:
            fill(file, body)
    else:
        audio = data[len(data) // 4:]
        with open(target, "ab") as file:
            while file.tell() < size:
                file.write(audio)
    return target
