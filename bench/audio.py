# SPDX-License-Identifier: GPL-3.0-or-later
"""Titles saved in audio files: against copies of them, and against tag editors working on copies."""
import shutil
import subprocess

import measure
import samples

PER_FORMAT = 200
RUNS = 5
MIB = 1 << 20


def library(folder, kind):
    """PER_FORMAT small files with tags, made once."""
    made = folder / f"audio-{kind}"
    if not made.exists():
        made.mkdir()
        base = folder / f"audio-base.{kind}"
        samples.ffmpeg("-f", "lavfi", "-i", "anoisesrc=duration=20:amplitude=0.3:seed=7", *samples.tags(2), base)
        for number in range(PER_FORMAT):
            shutil.copyfile(base, made / f"{number:03}.{kind}")
    return made


def editors(target):
    """name -> command that writes the title into every MP3 of a folder in place."""
    files = sorted(target.glob("*.mp3"))
    return {"id3v2 -t": ["id3v2", "-t", "Measured", *files],
            "kid3-cli": ["kid3-cli", "-c", "select all", "-c", "set title Measured", "-c", "save", target],
            "eyeD3": ["eyeD3", "-Q", "--to-v2.3", "-t", "Measured", *files]}


def bench_format(options, table, storage, kind, most):
    source = library(options.folder, kind)
    cp = ["cp", "-r", source, storage / "copied"]
    save = [options.cli, "--quiet", "--storage", storage, "save", "--set", "title=Measured", source]

    def clean():
        shutil.rmtree(storage, ignore_errors=True)
        storage.mkdir()
        subprocess.run(["sync", "-f", str(options.folder)], check=True)

    def sync():
        subprocess.run(["sync", "-f", str(storage)], check=True)

    # A save ends when its files are on the disk; a copy is not there yet.
    copy, mine = measure.median_seconds(RUNS, cp, save, between=clean, after=sync)
    clean()
    peak = measure.child(*save).peak_bytes
    saved = list(storage.glob(f"*.{kind}"))
    tool = subprocess.run(["ffprobe", "-v", "quiet", "-show_entries", "format_tags=title", "-of", "default=nk=1:nw=1",
                           saved[0]], capture_output=True, text=True)
    if len(saved) != PER_FORMAT or tool.stdout.strip() != "Measured":
        raise RuntimeError(f"{len(saved)} {kind} files saved, title {tool.stdout!r}")
    table.add(f"title saved in {PER_FORMAT} {kind.upper()} files", f"{mine * 1000:.0f} ms, peak memory "
                                                                     f"{peak / MIB:.1f} MiB")
    table.add("cp of the same files", f"{copy * 1000:.0f} ms with sync")
    table.add("those saves against cp", f"{mine / copy:.2f}", f"at most {most}", mine / copy <= most)
    return source, mine


def bench_editors(table, storage, source, mine):
    """The same work by others: a copy of the folder, edited in place. Copying and editing count."""
    for name in editors(source):
        if not shutil.which(name.split()[0]):
            print(f"{name.split()[0]} is not there: scripts/install-packages bench")
            continue
        shutil.rmtree(storage, ignore_errors=True)
        storage.mkdir()
        target = storage / "edited"
        copy = measure.child("cp", "-r", source, target).seconds
        edit = measure.child(*editors(target)[name]).seconds
        table.add(f"cp and {name}", f"{(copy + edit) * 1000:.0f} ms, {(copy + edit) / mine:.1f} times as long")


def bench_audio(options, table):
    storage = options.folder / "storage"
    for kind, most in (("mp3", 3), ("flac", 3), ("m4a", 3)):
        source, mine = bench_format(options, table, storage, kind, most)
        if kind == "mp3":
            bench_editors(table, storage, source, mine)
    shutil.rmtree(storage)
