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


def editors(source, target):
    """name -> command that writes the title into every MP3 of `target`, a copy of `source`, in place."""
    files = [target / path.name for path in sorted(source.glob("*.mp3"))]
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
    table.add("those saves against cp", f"{mine / copy:.2f}", *([f"at most {most}", mine / copy <= most] if most else []))
    return source, mine


def bench_editors(table, storage, source, mine):
    """The same work by others: a copy of the folder, edited in place, until it is on the disk as a save's files are."""
    target = storage / "edited"

    def clean():
        shutil.rmtree(storage, ignore_errors=True)
        storage.mkdir()
        sync()

    def sync():
        subprocess.run(["sync", "-f", str(storage)], check=True)

    for name, most in (("id3v2 -t", 1.5), ("kid3-cli", 1), ("eyeD3", 1)):
        if not shutil.which(name.split()[0]):
            print(f"{name.split()[0]} is not there: scripts/install-packages bench")
            continue
        edit = editors(source, target)[name]
        command = ["sh", "-c", 'cp -r "$0" "$1" && shift && exec "$@"', source, target, *edit]
        theirs, = measure.median_seconds(RUNS, command, between=clean, after=sync)
        table.add(f"cp and {name}", f"{theirs * 1000:.0f} ms with sync")
        table.add(f"saves against cp and {name}", f"{mine / theirs:.2f}", f"at most {most}", mine / theirs <= most)


def bench_audio(options, table):
    storage = options.folder / "storage"
    for kind, most in (("mp3", None), ("flac", 2), ("m4a", 2)):
        source, mine = bench_format(options, table, storage, kind, most)
        if kind == "mp3":
            bench_editors(table, storage, source, mine)
    shutil.rmtree(storage)
