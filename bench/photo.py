# SPDX-License-Identifier: GPL-3.0-or-later
"""Photos: metadata edits against cp, exiftool and exiv2, the date stamp against ImageMagick, the thumbnails of the grid
against vipsthumbnail."""
import os
import shutil
import subprocess

import measure
import samples
import window

RUNS = 5
EDITED = 200
STAMPED = 20
IN_GRID = 2000
STAMP_RATIO = 0.5
COPY_RATIO = 2
# Name: our command, exiftool's options, what exiv2 does to copies.
EDITS = {
    "EXIF removal": (["remove", "exif"], ["-exif:all="], ["-de"]),
    "removal of all metadata": (["remove", "all"], ["-all="], ["-da"]),
    "GPS save": (["gps", "--date", "2024:02:29", "--time", "01:02:03", "--", "-33.5", "151.25", "-10"],
                 ["-GPSLatitude=33.5", "-GPSLatitudeRef=S", "-GPSLongitude=151.25", "-GPSLongitudeRef=E", "-GPSAltitude=10",
                  "-GPSAltitudeRef#=1", "-GPSDateStamp=2024:02:29", "-GPSTimeStamp=01:02:03"],
                 ["-Mset Exif.GPSInfo.GPSLatitude 33/1 30/1 0/1", "-Mset Exif.GPSInfo.GPSLatitudeRef S",
                  "-Mset Exif.GPSInfo.GPSLongitude 151/1 15/1 0/1", "-Mset Exif.GPSInfo.GPSLongitudeRef E"]),
}


def photos(folder, count):
    """JPEG files of 12 megapixels, about 0.6 MB, with dates; clones of one, as a camera's continuous shooting gives."""
    folder.mkdir(exist_ok=True)
    base = folder.parent / "photo.jpg"
    if not base.exists():
        samples.ffmpeg("-f", "lavfi", "-i", "mandelbrot=size=4000x3000", "-frames:v", 1, "-q:v", 12, base)
        subprocess.run(["exiftool", "-q", "-overwrite_original", "-DateTimeOriginal=2025:06:14 21:36:20",
                        "-CreateDate=2025:06:14 21:36:20", base], check=True)
    made = [folder / f"IMG_{number:04}.jpg" for number in range(count)]
    for path in made:
        if not path.exists():
            shutil.copyfile(base, path)
    return made


def bench_edits(options, table):
    sources = photos(options.folder / "edited", EDITED)
    storage = options.folder / "storage"

    def clean():
        shutil.rmtree(storage, ignore_errors=True)
        storage.mkdir()
        subprocess.run(["sync", "-f", str(storage)], check=True)

    def sync():
        subprocess.run(["sync", "-f", str(storage)], check=True)

    for name, (words, exiftool, exiv2) in EDITS.items():
        commands = {"cp of the same files": ["cp", *sources, storage],
                    name: [options.cli, "--quiet", "--storage", storage, "photo", *words, *sources],
                    "exiftool": ["exiftool", "-q", *exiftool, "-o", f"{storage}/", *sources]}
        if shutil.which("exiv2"):
            commands["cp and exiv2"] = ["bash", "-c", 'cp "${@:1:$0}" "${@:$0+1:1}" && exiv2 "${@:$0+2}" "${@:$0+1:1}"/*.jpg',
                                        len(sources), *sources, storage, *exiv2]
        times = dict(zip(commands, measure.median_seconds(RUNS, *commands.values(), between=clean, after=sync)))
        clean()
        peak = measure.child(*commands[name]).peak_bytes
        if len(list(storage.glob("*.jpg"))) != EDITED:
            raise RuntimeError(f"{name}: photos are missing")
        mine, copied = times.pop(name), times.pop("cp of the same files")
        size = f"{EDITED} JPEG of 12 megapixels, {sources[0].stat().st_size / 1e6:.1f} MB each"
        table.add(f"{name} from {size}, with sync", f"{mine * 1000:.0f} ms, peak memory {peak >> 20} MiB")
        table.add(f"{name} against cp ({copied * 1000:.0f} ms)", f"{mine / copied:.2f}", f"at most {COPY_RATIO}",
                  mine <= COPY_RATIO * copied)
        for other, theirs in times.items():
            table.add(f"{name} against {other} ({theirs * 1000:.0f} ms)", f"{mine / theirs:.2f}", "less than 1", mine < theirs)
    shutil.rmtree(storage)


def bench_stamp(options, table):
    if not shutil.which("convert"):
        print("ImageMagick is not there: scripts/install-packages bench")
        return
    sources = photos(options.folder / "stamped", STAMPED)
    storage = options.folder / "storage"
    loop = 'for f; do convert "$f" -pointsize 90 -fill white -gravity southeast -annotate +50+50 ' \
           '"06/14/2025 21:36:20" -quality 10 "$0/${f##*/}" || exit 1; done'
    theirs = ["sh", "-c", loop, storage, *sources]
    ours = [options.cli, "--quiet", "--storage", storage, "photo", "stamp", "--position", "Lower right corner",
            "--font-size", 90, *sources]

    def clean():
        shutil.rmtree(storage, ignore_errors=True)
        storage.mkdir()

    def sync():
        subprocess.run(["sync", "-f", str(storage)], check=True)

    mine, other = measure.median_seconds(RUNS, ours, theirs, between=clean, after=sync)
    peak = measure.child(*ours).peak_bytes
    if len(list(storage.glob("*_date.jpg"))) != STAMPED:
        raise RuntimeError("photos were not stamped")
    size = f"{STAMPED} JPEG of 12 megapixels"
    table.add(f"date stamp on {size}, with sync", f"{mine * 1000:.0f} ms, peak memory {peak >> 20} MiB")
    table.add("convert -annotate -quality 10 on each of them, with sync", f"{other * 1000:.0f} ms")
    table.add("date stamp against convert", f"{mine / other:.2f}", f"at most {STAMP_RATIO}", mine / other <= STAMP_RATIO)
    shutil.rmtree(storage)


def bench_grid(options, table):
    folder = options.folder / "grid"
    sources = photos(folder, IN_GRID)
    with window.screen(options.folder) as environment:
        bench = options.cli.parent / "window_bench"
        first, all_tiles = window.rows(environment, bench, "grid", folder)
    window.add(table, first)
    mine = window.milliseconds(all_tiles) / IN_GRID
    table.add(f"{IN_GRID} JPEG of 12 megapixels scrolled in the grid, each", f"{mine:.1f} ms")
    if not shutil.which("vipsthumbnail"):
        print("vipsthumbnail is not there: scripts/install-packages bench")
        return
    made = options.folder / "thumbnails"
    made.mkdir(exist_ok=True)
    some = sources[:200]
    theirs, = measure.median_seconds(3, ["vipsthumbnail", "-s", 256, "-o", os.path.join(made, "%s.png"), *some])
    shutil.rmtree(made)
    theirs = theirs * 1000 / len(some)
    table.add("vipsthumbnail -s 256, each", f"{theirs:.1f} ms")
    table.add("a tile of the grid against vipsthumbnail", f"{mine / theirs:.2f}", "at most 1", mine <= theirs)


def bench_photo(options, table):
    bench_edits(options, table)
    bench_stamp(options, table)
    bench_grid(options, table)
