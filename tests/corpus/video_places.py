# SPDX-License-Identifier: GPL-3.0-or-later
"""The video jobs over several videos that belong together, and where folders are full, closed or gone: generators of
(case, what is wrong)."""
import json
import os
import pathlib
import signal
import subprocess
import threading
import time

import corpus
import made_videos
import video_oracles as oracles

LIMIT_SECONDS = 120
NOBODY = 65534
# Lossless, so that the reference is the sources' own.
REFERENCE = "-c:v ffv1 -c:a pcm_s16le"


def run(cli, storage, *job_and_paths):
    return corpus.Run(cli, "--quiet", "--json", "--storage", storage, "video", *job_and_paths, limit_seconds=LIMIT_SECONDS)


def outcomes(done):
    return done.json()["items"] if done.out else []


def names_in(folder):
    return sorted(path.name for path in folder.rglob("*") if path.is_file()) if folder.exists() else []


def merges(cli, made, work):
    """The third of three clips is inserted where the longest before it ended, in the middle of the second."""
    clips = []
    for name, seconds, colour in (("one.mp4", 1, 0), ("two.mp4", 2, 120), ("three.mp4", 0.52, 240)):
        made_videos.make_video(work / name, options=f"-vf hue=h={colour} {made_videos.X264} {made_videos.AAC}", seconds=seconds)
        clips.append(work / name)
    segment = lambda kind, number, start, end: f"[{number}:{kind}]{'a' * (kind == 'a')}trim={start}:{end},{'a' * (kind == 'a')}setpts=PTS-STARTPTS"
    segments = [(0, 0, 1), (1, 0, 1), (2, 0, 0.52), (1, 1, 2)]
    graph = ";".join(f"{segment(kind, *where)}[{kind}{i}]" for kind in "va" for i, where in enumerate(segments))
    graph += ";" + "".join(f"[v{i}][a{i}]" for i in range(4)) + "concat=n=4:v=1:a=1[v][a]"
    reference = work / "reference.mkv"
    made_videos.ffmpeg(*[part for clip in clips for part in ("-i", clip)], "-filter_complex", graph, "-map", "[v]", "-map", "[a]",
                       *REFERENCE.split(), reference)
    storage = work / "merged"
    done = run(cli, storage, "merge", *clips)
    if names_in(storage) != ["MergeVideo.mp4"] or len(outcomes(done)) != 3:
        yield "merge", f"{names_in(storage)} and {done.errors[-300:]}"
        return
    target = storage / "MergeVideo.mp4"
    compared = oracles.Comparison(target, reference, (192, 128), seconds=5, audio=True)
    if compared.likeness is None or compared.likeness < 0.98:
        yield "merge frames", f"{compared.likeness}"
    # At the joints a tenth of a second may differ, a segment elsewhere would not.
    audio = oracles.correlation(compared.samples, oracles.samples_of(reference, 5))
    if audio is None or audio < 0.9:
        yield "merge audio", f"{audio}"
    end = oracles.Probe(target).shown_end()
    if abs(end - 3.52) > 0.045:
        yield "merge duration", f"{end} instead of 3.52"
    done = run(cli, storage, "merge", *clips)
    if names_in(storage) != ["MergeVideo.mp4", "three_MergeVideo.mp4"]:
        yield "merge name", f"{names_in(storage)}"
    # Clips of other sizes are drawn upright into the first one's size.
    mixed = work / "mixed"
    run(cli, mixed, "merge", made / "plain.mp4", made / "portrait.mp4")
    seen = oracles.Probe(mixed / "MergeVideo.mp4")
    if seen.video is None or (seen.video["width"], seen.video["height"], seen.rotation()) != (192, 128, (0, False)):
        yield "merge sizes", f"{names_in(mixed)}"
        return
    compared = oracles.Comparison(mixed / "MergeVideo.mp4", made / "portrait.mp4", (192, 128), filter_one="trim=start=2,setpts=PTS-STARTPTS",
                                  filter_other="transpose=clock,scale=-2:128,pad=192:128:(ow-iw)/2:0", seconds=5)
    if compared.likeness is None or compared.likeness < 0.95:
        yield "merge sizes", f"the second video's likeness is {compared.likeness}"


def names(cli, made, work):
    """Of two videos with one name the second stays; extracted audio removes an older output of its video."""
    (work / "other").mkdir()
    other = made_videos.copy(made / "slow-rate.mp4", work / "other" / "plain.mp4")
    storage = work / "names"
    run(cli, storage, "rotate", "--by", "90", made / "plain.mp4", other)
    if names_in(storage) != ["plain.mp4"] or abs(oracles.Probe(storage / "plain.mp4").shown_end() - 5) > 0.6:
        yield "one name", f"{names_in(storage)}"
    run(cli, storage, "audio", made / "plain.mp4")
    if names_in(storage) != ["plain.mp4.m4a"]:
        yield "older video", f"{names_in(storage)}"
    done = run(cli, made, "mute", made / "plain.mp4")
    if [pathlib.Path(path).name for path in outcomes(done)[0]["outputs"]] != ["plain 2.mp4"]:
        yield "own source", f"{outcomes(done)}"
    (made / "plain 2.mp4").unlink(missing_ok=True)
    quick = work / "quick"
    run(cli, quick, "frames", "--every", "5 pics per second", made / "plain.mp4")
    compared = oracles.Comparison(quick / "plain_%d.jpg", made / "plain.mp4", (192, 128), filter_one="setpts=(N+0.003)/TB",
                                  filter_other="fps=5:start_time=0:round=up,select='eq(mod(n\\,5)\\,4)',setpts=N/TB", rgb=True,
                                  input_one=("-framerate", "1", "-start_number", "0", "-f", "image2", "-c:v", "tiff"))
    if names_in(quick)[:2] != ["plain_0.jpg", "plain_1.jpg"] or not compared.likeness or compared.likeness < 0.98:
        yield "five a second", f"{names_in(quick)}, likeness {compared.likeness}"
    older = work / "older"
    older.mkdir()
    (older / "plain.mov").write_text("an older output")
    done = run(cli, older, "convert", "--to", "mov", made / "plain.mp4")
    if "Replaced" not in outcomes(done)[0]["message"] or (older / "plain.mov").stat().st_size < 1000:
        yield "older output", f"{outcomes(done)}"


EVERY_JOB = [["rotate", "--by", "180"], ["speed", "--factor", "1X"], ["slow", "--factor", "0.5X"], ["compress", "--quality", "high"],
             ["convert", "--to", "mov"], ["gif"], ["audio"], ["frames", "--every", "1 pic per second"], ["mute"], ["merge"]]


def failing(cli, storage, videos, reason, allowed=()):
    """Every job fails with `reason`, leaves nothing behind, and goes on with the next video."""
    for job in EVERY_JOB:
        done = run(cli, storage, *job, *videos)
        what = f"{job[0]}, {reason}"
        items = outcomes(done)
        if done.timed_out or done.status != 1 or items and len(items) != len(videos):
            yield what, f"status {done.status}, {done.errors[-300:]}"
        elif any(item["status"] != "failed" or reason not in item["message"] for item in items):
            yield what, f"{[(item['status'], item['message'][-200:]) for item in items]}"
        elif not items and reason not in done.errors:
            yield what, done.errors[-300:]
        left = [name for name in names_in(storage) if name not in allowed]
        if left and job[0] != "frames":  # frames that were complete before stay
            yield what, f"left {left}"
        for name in left:
            (storage / name).unlink()


def full(cli, made, work):
    """A file system too small for any output. Needs the right to mount one."""
    storage = work / "full"
    storage.mkdir()
    mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", storage], capture_output=True).returncode == 0
    if not mounted:
        print("not tried: a full file system, which only the administrator can make here")
        return
    try:
        (storage / "filler").write_bytes(b"x" * (56 << 10))
        yield from failing(cli, storage, [made / "plain.mp4", made / "tagged.mov"], "No space left on device", ("filler",))
    finally:
        subprocess.run(["umount", "-l", storage], check=True)


def closed(cli, made, work):
    storage = work / "closed"
    storage.mkdir()
    storage.chmod(0o555)
    program = cli
    if os.geteuid() == 0:  # who may write everywhere
        for folder in (work, work.parent, work.parent.parent):
            folder.chmod(folder.stat().st_mode | 0o055)
        program = work / "as-nobody"
        program.write_text(f"#!/bin/sh\nshift 2\nexec setpriv --reuid={NOBODY} --regid={NOBODY} --clear-groups env HOME=/nowhere "
                           f"XDG_CONFIG_HOME=/nowhere '{cli}' \"$@\"\n")
        program.chmod(0o755)
    yield from failing(program, storage, [made / "plain.mp4", made / "tagged.mov"], "Permission denied")
    storage.chmod(0o755)


def interrupted(cli, made, work):
    """A folder that goes away, and Ctrl+C, while a video is encoded."""
    long = work / "long.mp4"
    made_videos.make_video(long, size="640x360", seconds=20)
    for name, disturb in (("gone", None), ("stopped", signal.SIGINT)):
        storage = work / name
        process = subprocess.Popen([cli, "--config", work / "none.conf", "--quiet", "--json", "--storage", storage, "video", "compress",
                                    "--quality", "high", long], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        start = time.monotonic()
        while not names_in(storage) and process.poll() is None and time.monotonic() - start < LIMIT_SECONDS:
            time.sleep(0.02)
        if disturb is None:
            for path in storage.iterdir():
                path.unlink()
            storage.rmdir()
        else:
            process.send_signal(disturb)
        watch = threading.Timer(LIMIT_SECONDS, process.kill)
        watch.start()
        out, errors = process.communicate()
        watch.cancel()
        if process.returncode != (1 if disturb is None else 130):
            yield name, f"status {process.returncode}: {errors.decode(errors='replace')[-300:]}"
        # It may have ended just before the signal: then it says so, and the video is whole.
        done = {output for item in json.loads(out)["items"] if item["status"] == "completed" for output in item["outputs"]}
        left = [file for file in names_in(storage) if str(storage / file) not in done]
        if left or any(oracles.Probe(path).duration < 19 for path in done):
            yield name, f"left {names_in(storage)}: {out.decode(errors='replace')[-300:]}"


def all_cases(cli, made, work):
    for cases in (merges, names, full, closed, interrupted):
        folder = work / cases.__name__
        folder.mkdir()
        try:
            yield from cases(cli, made, folder)
        except Exception as error:  # noqa: BLE001  an output that an oracle cannot take is a finding
            yield cases.__name__, repr(error)
