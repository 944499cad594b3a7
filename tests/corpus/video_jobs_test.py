#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""usage: video_jobs_test.py CLI [NAME-PART]. All video jobs over the videos of CLIPHEAVE_CORPUS and over made ones, held
against what ffprobe, ffmpeg and exiftool see."""
import collections
import concurrent.futures
import os
import pathlib
import re
import sys
import tempfile

import corpus
import differences
import made_videos
import video_checks
import video_places
import video_oracles as oracles

LIMIT_SECONDS = 600       # for a run that hangs; on a busy machine a good one may take minutes
AT_ONCE = 12              # videos of one run
MOST_WORK = 40e6          # pixels times frames of a video that all jobs try
MOST_MEMORY = 900 * corpus.MIB
TYPED = {"MP4", "MPEG", "M4V", "MOV"}
NEED_A_TYPE = {"rotate90", "rotate180", "rotate270", "high", "medium", "low"}
FRAME_JOBS = {"rotate90", "rotate180", "rotate270", "speed", "slow", "gif", "frames", "mute"}
COPYING = {"slow", "mov", "mp4", "m4v"}
JOBS = {
    "rotate90": ["rotate", "--by", "90"], "rotate180": ["rotate", "--by", "180"], "rotate270": ["rotate", "--by", "270"],
    "speed": ["speed", "--factor", "2X"], "slow": ["slow", "--factor", "0.5X"],
    "high": ["compress", "--quality", "high"], "medium": ["compress", "--quality", "medium"], "low": ["compress", "--quality", "low"],
    "mov": ["convert", "--to", "mov"], "mp4": ["convert", "--to", "mp4"], "m4v": ["convert", "--to", "m4v"],
    "gif": ["gif"], "audio": ["audio"], "frames": ["frames", "--every", "1 pic per second"], "mute": ["mute"],
}
# What is tried with large videos, and with damaged ones.
LIGHT_JOBS = {"slow", "mov", "audio"}
BROKEN_JOBS = {"rotate90", "mov", "gif", "audio", "mute"}
# The further variants of a job differ little from the first: not for every video.
OF_FEW = {"rotate180": 4, "rotate270": 4, "medium": 3, "low": 4, "mp4": 3, "m4v": 8}


class Source:
    def __init__(self, path, key):
        self.path, self.key = path, key
        self.kind = corpus.extension(path)
        self.digest = corpus.digest(path)
        self.probe = oracles.Probe(path)
        video = self.probe.video
        frames, damaged = oracles.decoded(path)
        self.decodes = video is not None and video.get("width", 0) > 0 and frames > 0
        self.damaged = damaged or "broken" in key
        self.samples = oracles.samples_of(path, input_options=self.probe.own_times) if self.probe.audio_count and not self.damaged else []

    def work(self):
        video = self.probe.video or {}
        return video.get("width", 0) * video.get("height", 0) * len(self.probe.times)

    def takes(self, job):
        return ("broken" not in self.key or job in BROKEN_JOBS) and (self.work() <= MOST_WORK or job in LIGHT_JOBS)

    def audio_seconds(self):
        return len(self.samples) / oracles.AUDIO_RATE


def run(cli, storage, job, *paths, prefix=()):
    return corpus.Run(*prefix, cli, "--quiet", "--json", "--storage", storage, "video", *job, *paths, limit_seconds=LIMIT_SECONDS)


def ffmpeg_copies(source, target_kind):
    """Whether another program can copy these streams into the container."""
    with tempfile.TemporaryDirectory() as folder:
        _, _, status = oracles.output_of("ffmpeg", "-v", "error", "-nostdin", "-i", oracles.file_url(source.path), "-map", "0:V?", "-map",
                                         "0:a?", "-c", "copy", "-strict", "-2", "-f", "ipod" if target_kind == "m4v" else target_kind,
                                         f"{folder}/out")
        return status == 0


def excuse(source, job, message):
    """Whether the failure is justified."""
    if not re.search(r"[a-z]{3}", message):
        return False
    if source.damaged or job in FRAME_JOBS and not source.decodes:
        return True
    if "no decoder" in message and job not in ("mov", "mp4", "m4v"):
        return True
    if source.probe.duration == 0 and "no duration" in message:
        return True
    if job in NEED_A_TYPE and source.kind not in TYPED:
        return "no file type" in message
    if job == "audio":
        return source.probe.audio_count == 0 and "no audio track" in message
    if "cannot hold" in message and job in COPYING:
        return not ffmpeg_copies(source, "mov" if job == "slow" else job)
    return not source.decodes and source.probe.audio_count == 0


class Trial:
    """Everything that is found out, by (file, job, what)."""

    def __init__(self, cli):
        self.cli = cli
        self.found = {}
        self.counts = collections.Counter()
        self.slowest, self.largest = (0, ""), (0, "")

    def note(self, key, job, what, text):
        self.found[(key, job, what)] = text

    def watch(self, done, keys, job):
        """False when the run did not end as it should."""
        self.slowest = max(self.slowest, (round(done.seconds, 1), f"{job} {keys[0]}"))
        self.largest = max(self.largest, (done.peak_bytes >> 20, f"{job} {keys[0]}"))
        if done.peak_bytes > MOST_MEMORY:
            self.note(keys[0], job, "memory", f"{done.peak_bytes >> 20} MiB with {len(keys)} videos")
        return not done.timed_out and done.status in (0, 1)

    def several(self, sources, job, storage):
        """(source, outcome) of videos in one run; one by one where that run ends badly."""
        storage.mkdir(parents=True)
        done = run(self.cli, storage, JOBS[job], *[source.path for source in sources])
        if not self.watch(done, [source.key for source in sources], job):
            if len(sources) == 1:
                self.note(sources[0].key, job, "end", f"status {done.status}, {done.seconds:.0f} s: {done.errors[-300:]}")
                return []
            return [pair for i, source in enumerate(sources) for pair in self.several([source], job, storage / f"alone{i}")]
        outcomes = done.json()["items"]
        if len(outcomes) != len(sources):
            self.note(sources[0].key, job, "outcomes", f"{len(outcomes)} instead of {len(sources)}")
            return []
        failed = any(outcome["status"] != "completed" for outcome in outcomes)
        if (done.status == 1) != failed:
            self.note(sources[0].key, job, "status", f"{done.status} although {'one' if failed else 'none'} failed")
        made = {path for outcome in outcomes for path in outcome["outputs"]}
        for path in storage.rglob("*"):
            if path.is_file() and str(path) not in made:
                self.note(sources[0].key, job, "left", f"{path.name} is no output of {[s.key for s in sources]}")
        return list(zip(sources, outcomes))

    def judge(self, source, outcome, job):
        message = outcome.get("message", "")
        self.counts[(job, outcome["status"])] += 1
        if outcome["status"] != "completed":
            if not excuse(source, job, message):
                self.note(source.key, job, "failed", message)
            if outcome["outputs"]:
                self.note(source.key, job, "outputs", "failed, with outputs")
            return
        outputs = [pathlib.Path(path) for path in outcome["outputs"]]
        try:
            check = video_checks.Check(source, outputs, job)
            if source.damaged or not source.decodes and job in FRAME_JOBS:
                # Where decoders disagree, the output is at least one.
                check.expect("opens", job == "frames" or check.out.video_count + check.out.audio_count > 0
                             or source.probe.video_count + source.probe.audio_count == 0, "no track in it")
            elif source.probe.video is None and job in ("high", "medium", "low"):
                check.streams(0, 1)
            else:
                video_checks.CHECKS[job](check)
        except Exception as error:  # noqa: BLE001  an output that an oracle cannot take is a finding
            self.note(source.key, job, "check", repr(error))
            return
        for what, text in check.found.items():
            self.note(source.key, job, what, text)
        if abs(source.path.stat().st_mtime - outputs[0].stat().st_mtime) > 1:
            self.note(source.key, job, "file-date", "the output's date is not the source's")

    def compare_facts(self, pairs, job, facts):
        """What a video carries besides its streams."""
        if job in ("gif", "frames"):
            return
        seen = oracles.exif_facts([outcome["outputs"][0] for _, outcome in pairs])
        for source, outcome in pairs:
            before, after = facts.get(str(source.path), {}), seen.get(outcome["outputs"][0])
            lost = {fact: (value, after.get(fact)) for fact, value in before.items() if after.get(fact) != value} if after else {}
            if lost:
                self.note(source.key, job, "facts", f"{lost}")


def sources_of(root, files, folder, part):
    paths = [(path, str(path.relative_to(root))) for path in files if corpus.extension(path) in corpus.VIDEO]
    if not part.startswith("video/"):
        paths += [(path, f"made/{path.name}") for path in made_videos.make(folder)]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        return list(pool.map(lambda pair: Source(*pair), [pair for pair in paths if part in pair[1]]))


def chunks(sources):
    """Videos that may be tried in one run: no two of a name."""
    rest = list(sources)
    while rest:
        taken, names = [], set()
        for source in rest:
            if len(taken) < AT_ONCE and source.path.stem not in names:
                taken.append(source)
                names.add(source.path.stem)
        yield taken
        rest = [source for source in rest if source not in taken]


def main():
    cli, part = sys.argv[1], sys.argv[2] if len(sys.argv) > 2 else ""
    jobs = sys.argv[3].split(",") if len(sys.argv) > 3 else list(JOBS)
    root, files = corpus.corpus_or_skip()
    trial = Trial(cli)
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        work = pathlib.Path(folder)
        (work / "made").mkdir()
        sources = sources_of(root, files, work / "made", part)
        facts = oracles.exif_facts([source.path for source in sources])
        for job in jobs:
            step = OF_FEW.get(job, 1)
            for number, chunk in enumerate(chunks([s for s in sources if s.takes(job)][::step])):
                pairs = trial.several(chunk, job, work / job / str(number))
                list(pool.map(lambda pair: trial.judge(*pair, job), pairs))
                trial.compare_facts([pair for pair in pairs if pair[1]["status"] == "completed"], job, facts)
        if not part:
            (work / "places").mkdir()
            for case, text in video_places.all_cases(cli, work / "made", work / "places"):
                trial.note("places", case.replace(" ", "-"), "case", text)
        for source in sources:
            if corpus.digest(source.path) != source.digest:
                trial.note(source.key, "all", "source", "the source was changed")
    known = corpus.parse_differences(getattr(differences, "VIDEO_JOBS", ""))
    present = {source.key for source in sources} if not part else set()
    left_out = [source.key for source in sources if source.work() > MOST_WORK]
    summary = f"{len(sources)} videos; {dict(trial.counts)}; slowest run {trial.slowest}; most MiB {trial.largest}; only the light jobs: " \
              f"{left_out}; {len(known)} known differences"
    corpus.finish(corpus.judge(trial.found, known, present), summary)


if __name__ == "__main__":
    main()
