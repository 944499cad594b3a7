# SPDX-License-Identifier: GPL-3.0-or-later
"""Video jobs against the ffmpeg command that does the same with the same settings."""
import re
import shutil
import subprocess

import measure
import samples
import window

RUNS = 4
MIB = 1 << 20
SECONDS = 20
LOOPS = 60  # of the dense video; makes about a gigabyte
ENCODE = ["-c:v", "libx264", "-preset", "medium", "-crf", 18, "-c:a", "aac", "-b:a", "192k"]
SCENE = "testsrc2=size={size}:rate=30:duration={seconds},noise=alls={noise}:allf=t"


def made_video(folder, name, size, seconds, crf, noise=0):
    target = folder / name
    if not target.exists():
        # Tagged: where a video does not say its colours, programs assume different ones.
        colours = ["-vf", "scale=out_color_matrix=bt709", "-colorspace", "bt709", "-color_primaries", "bt709",
                   "-color_trc", "bt709"]
        samples.ffmpeg("-f", "lavfi", "-i", SCENE.format(size=size, seconds=seconds, noise=noise), "-f", "lavfi", "-i",
                       f"anoisesrc=duration={seconds}:amplitude=0.2:seed=3", "-c:v", "libx264", "-preset", "veryfast",
                       "-crf", crf, *colours, "-pix_fmt", "yuv420p", "-c:a", "aac", *samples.tags(1), target)
    return target


def large_video(folder):
    """About a gigabyte of real video with audio."""
    target = folder / "large-video.mp4"
    if not target.exists():
        base = made_video(folder, "dense.mp4", "1920x1080", 4, 8, 20)
        loops = max(1, 10 ** 9 // base.stat().st_size)
        samples.ffmpeg("-stream_loop", loops, "-i", base, "-c", "copy", target)
    return target


def ffmpeg(source, *arguments):
    return ["ffmpeg", "-v", "error", "-nostdin", "-y", "-i", source, *arguments]


class Bench:
    def __init__(self, options, table):
        self.table, self.storage = table, options.folder / "storage"
        self.cli = [options.cli, "--quiet", "--storage", self.storage, "video"]

    def clean(self):
        shutil.rmtree(self.storage, ignore_errors=True)
        self.storage.mkdir()
        subprocess.run(["sync", "-f", str(self.storage)], check=True)

    def compare(self, what, job, theirs, most, name="ffmpeg", files=1):
        """Times of our job, which must make so many files, and of the command that does the same."""
        self.clean()
        measure.child(*self.cli, *job)
        made = sum(1 for _ in self.storage.iterdir())
        if made != files:
            raise RuntimeError(f"{what}: {made} files")
        mine, other = measure.median_seconds(RUNS, [*self.cli, *job], theirs, between=self.clean)
        self.table.add(what, f"{mine:.2f} s")
        self.table.add(f"{name}, the same", f"{other:.2f} s")
        self.table.add(f"{what} against {name}", f"{mine / other:.2f}", f"at most {most}", mine / other <= most)


def gif_psnr(gif, source, chosen, yardstick):
    """How close the frames of an animation are to those of the video that it was made from, in dB. `chosen`: the filter
    that takes them; `yardstick`: what both are compared as."""
    run = subprocess.run(["ffmpeg", "-nostdin", "-i", gif, "-i", source, "-lavfi",
                          f"[0:v]settb=1/25,setpts=N,{yardstick}[a];[1:v]{chosen},settb=1/25,setpts=N,{yardstick}[b];"
                          "[a][b]psnr", "-f", "null", "-"], capture_output=True, text=True, check=True)
    return float(re.findall(r"average:([\d.]+)", run.stderr)[-1])


def bench_gif(bench, source):
    theirs, kept = bench.storage / "theirs.gif", bench.storage.with_name("ours.gif")
    command = ffmpeg(source, "-filter_complex", "fps=1,split[a][b];[a]palettegen[p];[b][p]paletteuse", theirs)
    bench.compare("GIF of 20 s", ["gif", source], command, 0.8)
    bench.clean()
    measure.child(*bench.cli, "gif", source)
    shutil.move(bench.storage / f"{source.stem}.gif", kept)
    measure.child(*command)
    # The video has 30 frames a second: ours are those at whole seconds, the filter of theirs takes others.
    # The samples that the video itself has, and pixels with interpolated colours. (ffmpeg's own quick conversion to
    # pixels, which repeats colours, would favour its frames where edges are drawn, as in this video.)
    yardsticks = {"the video's samples": "scale=out_color_matrix=bt709:out_range=tv,format=yuv420p",
                  "interpolated pixels": "scale=flags=bicubic+accurate_rnd+full_chroma_int,format=rgb24"}
    for name, yardstick in yardsticks.items():
        ours = gif_psnr(kept, source, "select=not(mod(n\\,30))", yardstick)
        other = gif_psnr(theirs, source, "fps=1", yardstick)
        bench.table.add(f"PSNR of the GIF's frames, {name}", f"{ours:.1f} dB, of ffmpeg's {other:.1f} dB",
                        "at least ffmpeg's", ours >= other)
    kept.unlink()


def bench_memory(options, bench):
    source = made_video(options.folder, "video-4k.mp4", "3840x2160", 3, 23)
    bench.clean()
    mine = measure.child(*bench.cli, "compress", "--quality", "high", source).peak_bytes
    theirs = measure.child(*ffmpeg(source, *ENCODE, bench.storage / "theirs.mp4")).peak_bytes
    bench.table.add("peak memory of a 4K compression", f"{mine / MIB:.0f} MiB, of ffmpeg's {theirs / MIB:.0f} MiB",
                    "at most 1.2 times ffmpeg's", mine <= 1.2 * theirs)


def bench_window(options, table):
    """The window while four exports run at once."""
    links = []
    for number in range(4):
        links.append(options.folder / f"four-{number}.mp4")
        links[-1].unlink(missing_ok=True)
        links[-1].hardlink_to(options.folder / "video-20s.mp4")
    with window.screen(options.folder) as environment:
        for row in window.rows(environment, options.cli.parent / "window_bench", "jobs", *links):
            window.add(table, row)


def bench_video(options, table):
    bench = Bench(options, table)
    bench.clean()
    source = made_video(options.folder, "video-20s.mp4", "1920x1080", SECONDS, 20)
    theirs = bench.storage / "theirs.mp4"
    bench.compare("rotation of 20 s 1080p", ["rotate", "--by", "90", source],
                  ffmpeg(source, "-vf", "transpose=1,fps=30", *ENCODE, theirs), 1)
    bench.compare("compression (high) of 20 s 1080p", ["compress", "--quality", "high", source],
                  ffmpeg(source, *ENCODE, theirs), 1)
    bench.compare("20 frames of 20 s 1080p", ["frames", "--every", "1 pic per second", source],
                  ffmpeg(source, "-vf", "fps=1", bench.storage / "theirs%d.tiff"), 0.8,
                  files=SECONDS)
    bench_gif(bench, source)
    large = large_video(options.folder)
    size = f"{large.stat().st_size / 10 ** 9:.1f} GB"
    bench.compare(f"audio out of {size}", ["audio", large], ffmpeg(large, "-vn", "-c:a", "copy", theirs.with_suffix(".m4a")),
                  1)
    bench.compare(f"conversion of {size} to MOV", ["convert", "--to", "mov", large], ["cp", large, theirs], 1.1, "cp")
    bench_memory(options, bench)
    bench_window(options, table)
    shutil.rmtree(bench.storage)
