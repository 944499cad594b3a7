# SPDX-License-Identifier: GPL-3.0-or-later
"""What must hold of the outputs of the video jobs, each check with the text of what is wrong."""
import math
import os
import pathlib
import re
import tempfile

import video_oracles as oracles

ROTATIONS = {"90": "transpose=clock", "180": "hflip,vflip", "270": "transpose=cclock"}
LARGEST = {"medium": (320, 568), "low": (128, 224)}
LEAST_LIKENESS = {"medium": 0.8, "low": 0.5, "gif": 0.9}
LEAST_CORRELATION = {"medium": 0.85, "low": 0.7, "mov": 0.97, "mp4": 0.97, "m4v": 0.97}
HDR = ("smpte2084", "arib-std-b67")
STILLS_SECONDS = 8  # how much of gif and frames is compared


class Check:
    def __init__(self, source, outputs, job):
        self.source, self.target, self.outputs, self.job = source, outputs[0], outputs, job
        self.probe = source.probe
        self.found = {}
        self.out = None if job == "frames" else oracles.Probe(self.target, None if job in ("mov", "mp4", "m4v") else 0)

    def expect(self, what, holds, text):
        if not holds:
            self.found[what] = str(text)

    def streams(self, videos, audios):
        self.expect("streams", (self.out.video_count, self.out.audio_count) == (videos, audios),
                    f"{self.out.video_count} video and {self.out.audio_count} audio streams instead of {videos} and {audios}")
        for stream, codec in ((self.out.video, "h264"), (self.out.audio, "aac")):
            if stream and self.job != "slow":
                self.expect("codec", stream.get("codec_name") == codec, stream.get("codec_name"))

    def size(self, wanted):
        """Sides are even; one that was odd loses a pixel."""
        seen = self.out.video["width"], self.out.video["height"]
        self.expect("size", seen == tuple(side - side % 2 for side in wanted), f"{seen} instead of {wanted}")

    def aspect_ratio(self, rotated=False):
        seen = self.out.shown_ratio()
        wanted = 1 / self.probe.shown_ratio() if rotated else self.probe.shown_ratio()
        tolerance = max(0.01, 2.5 / min(self.out.video["width"], self.out.video["height"]))  # for the pixel that is lost
        self.expect("aspect", abs(seen / wanted - 1) < tolerance, f"{seen:.3f} instead of {wanted:.3f}")

    def rotation(self, wanted):
        self.expect("rotation", self.out.rotation() == wanted, f"{self.out.rotation()} instead of {wanted}")

    def video_end(self, wanted, frame):
        end = self.out.shown_end()
        if len(self.probe.times) > 1:  # on the duration of a single frame programs disagree
            self.expect("duration", abs(end - wanted) < frame + 0.004, f"ends at {end:.3f} instead of {wanted:.3f}")

    def times(self, until=None, factor=1.0):
        wanted = [start * factor for start, _ in self.probe.times if until is None or start < until - 0.0015]
        seen = [start for start, _ in self.out.times]
        self.expect("frames", len(seen) == len(wanted), f"{len(seen)} frames instead of {len(wanted)}")
        if len(seen) != len(wanted) or not seen:
            return
        worst = max(abs((a - seen[0]) - (b - wanted[0])) for a, b in zip(seen, wanted))
        self.expect("times", worst < 0.0025, f"a frame is {worst:.4f} s off")
        self.expect("start", abs(seen[0] - wanted[0]) < 0.008, f"starts at {seen[0]:.3f} instead of {wanted[0]:.3f}")

    def colours(self):
        for tag in ("color_range", "color_space", "color_primaries", "color_transfer"):
            wanted, seen = self.probe.video.get(tag), self.out.video.get(tag)
            tagged = wanted and not self.rgb() and wanted not in ("unknown", "reserved", "gbr") and (tag != "color_range" or wanted == "pc")
            self.expect(tag, not tagged or seen == wanted, f"{seen} instead of {wanted}")

    def rgb(self):
        video = self.probe.video or {}
        return re.match("rgb|bgr|gbr|argb|abgr|pal|monow", video.get("pix_fmt", "")) is not None

    def likeness_and_audio(self, filter_source="null", filter_target="null", video=True, audio=False, **options):
        """Both in one reading of the output."""
        if video and min(self.probe.video["width"], self.probe.video["height"]) < 16:
            video = False  # too small to be compared
        if not video and not audio:
            return []
        size = (2, 2)
        if video:
            size = self.out.video["width"], self.out.video["height"]
            size = size[::-1] if self.out.rotation()[0] % 180 else size
            filter_target = f"{self.out.upright()},{filter_target}"
            filter_source = f"{self.probe.upright()},{filter_source}"
        compared = oracles.Comparison(self.target, self.source.path, size, filter_target, filter_source, audio=audio, video=video,
                                      **{"input_other": self.probe.own_times, "rgb": self.rgb(), **options})
        least = LEAST_LIKENESS.get(self.job, 0.98)
        if video:
            self.expect("ssim", compared.likeness is not None and compared.likeness > least, compared.likeness)
        return compared.samples

    def audio(self, seen, until=oracles.SECONDS):
        wanted = self.source.samples[:int(until * oracles.AUDIO_RATE)]
        seen = seen[:int(oracles.SECONDS * oracles.AUDIO_RATE)]
        value = oracles.correlation(seen, wanted)
        self.expect("audio", value is None or value > LEAST_CORRELATION.get(self.job, 0.9), f"correlation {value}")
        frame = 1.5 * 1024 / (int(self.probe.audio.get("sample_rate") or 0) or 8000)  # a last packet is decoded whole
        missing = (len(wanted) - len(seen)) / oracles.AUDIO_RATE
        self.expect("audio-length", abs(missing) < 0.05 + frame, f"{missing:.3f} s less")


def rotate(check):
    degrees = check.job[len("rotate"):]
    check.streams(1, min(check.probe.audio_count, 1))
    video = check.probe.video
    sides = (video["width"], video["height"])
    lies = (check.probe.rotation()[0] + int(degrees)) % 180
    check.size(sides[::-1] if lies else sides)
    check.rotation((0, False))
    check.aspect_ratio(degrees != "180")
    check.video_end(check.probe.shown_end(), max(1 / 30, check.probe.longest_frame()))
    check.expect("rate", check.out.video.get("avg_frame_rate") == "30/1" or len(check.out.times) < 4, check.out.video.get("avg_frame_rate"))
    check.colours()
    # Fields, which do not rotate with the frame.
    fields = "" if check.probe.video.get("field_order", "progressive") == "progressive" or degrees == "180" else "yadif,"
    samples = check.likeness_and_audio(f"{fields}tpad=stop_mode=clone:stop_duration=0.04,fps=30,{ROTATIONS[degrees]}",
                                       audio=degrees == "180" and check.probe.audio_count > 0)
    if len(samples):
        check.audio(samples)


def encode(check):
    """Compress, speed and mute keep the frames' times."""
    check.streams(1, min(check.probe.audio_count, 1))
    until = check.probe.duration / 2 if check.job == "speed" else None
    largest = LARGEST.get(check.job)
    if largest:
        sides = sorted((check.out.video["width"], check.out.video["height"]))
        check.expect("size", all(a <= b and a % 2 == 0 for a, b in zip(sides, largest)), sides)
    else:
        check.size((check.probe.video["width"], check.probe.video["height"]))
        check.colours()
    check.rotation(check.probe.rotation())
    check.aspect_ratio()
    check.times(until)
    check.video_end(min(check.probe.shown_end(), until or math.inf), check.probe.longest_frame())
    samples = check.likeness_and_audio(audio=check.probe.audio_count > 0)
    if check.probe.audio_count and check.job == "mute":
        loudest = max(map(abs, samples), default=0)
        check.expect("silence", loudest <= 2, f"a sample of {loudest}")
    elif check.probe.audio_count:
        check.audio(samples, min(until or math.inf, oracles.SECONDS))


def slow(check):
    check.streams(1, min(check.probe.audio_count, 1))
    seen, wanted = check.out.video.get("codec_name"), check.probe.video.get("codec_name")
    check.expect("codec", seen == wanted, f"{seen} instead of {wanted}")
    check.times(factor=2)
    check.video_end(2 * check.probe.shown_end(), 2 * check.probe.longest_frame())
    check.rotation(check.probe.rotation())
    check.aspect_ratio()
    samples = check.likeness_and_audio("setpts=PTS*2", audio=check.probe.audio_count > 0)
    length = min(2 * check.source.audio_seconds(), oracles.SECONDS)
    if check.probe.audio_count and length > 0.5:
        seen = len(samples) / oracles.AUDIO_RATE
        check.expect("audio-length", abs(seen - length) < 0.15, f"{seen:.3f} s instead of {length:.3f} s")


def kinds(probe):
    # In MP4 the layers of MPEG audio have one number.
    return sorted((s.get("codec_type", "?"), s.get("codec_name", "?").replace("mp2", "mp3")) for s in probe.streams
                  if s.get("codec_type") in ("video", "audio") and not s["disposition"]["attached_pic"])


def convert(check):
    check.expect("streams", kinds(check.out) == kinds(check.probe), f"{kinds(check.out)} instead of {kinds(check.probe)}")
    check.expect("chapters", check.out.chapters == check.probe.chapters, f"{check.out.chapters} instead of {check.probe.chapters}")
    has_video = check.source.decodes and check.out.video is not None
    if has_video:
        check.rotation(check.probe.rotation())
        check.aspect_ratio()
        check.times()
        check.colours()
    samples = check.likeness_and_audio(video=has_video, audio=check.probe.audio_count > 0 and check.out.audio_count > 0)
    if check.probe.audio_count and check.out.audio_count:
        check.audio(samples)


def audio(check):
    check.streams(0, 1)
    check.expect("codec", check.out.audio is not None and check.out.audio.get("codec_name") == "aac", "no AAC")
    check.audio(oracles.samples_of(check.target, own_start=False))


def whole_seconds(probe):
    """How many frames one a second makes: the video may end before its file says so."""
    ends = (probe.duration, probe.shown_end())
    return {max(1, math.ceil(round(end - slack, 3))) for end in ends for slack in (0, 0.05)}


def stills(check, count):
    wanted = whole_seconds(check.probe)
    check.expect("frames", count in wanted, f"{count} frames instead of {sorted(wanted)}")


SHOWN_EACH_SECOND = "fps=1:start_time=0:round=up,setpts=N/TB"


def gif(check):
    data = check.target.read_bytes()
    stills(check, len(check.out.times))
    check.expect("loop", b"NETSCAPE2.0\x03\x01\x00\x00" in data, "does not loop for ever")
    check.aspect_ratio()
    # HDR is tone mapped by a rule of our own.
    if check.probe.video.get("color_transfer") not in HDR:
        check.likeness_and_audio(SHOWN_EACH_SECOND, "setpts=N/TB", pad=False, seconds=STILLS_SECONDS, rgb=True)


def frames(check):
    outputs = check.outputs
    stills(check, len(outputs))
    names = [f"{check.source.path.stem}_{i}.jpg" for i in range(len(outputs))]
    check.expect("names", [path.name for path in outputs] == names, [path.name for path in outputs[:3]])
    check.expect("tiff", all(path.read_bytes()[:4] in (b"II*\0", b"MM\0*") for path in outputs), "no TIFF")
    with tempfile.TemporaryDirectory(dir=outputs[0].parent) as folder:
        for i, path in enumerate(outputs):
            os.link(path, f"{folder}/{i}.tif")
        check.out = oracles.Probe(pathlib.Path(folder) / "0.tif")
        check.target = pathlib.Path(folder) / "%d.tif"
        check.aspect_ratio()
        if check.probe.video.get("color_transfer") not in HDR:
            check.likeness_and_audio(SHOWN_EACH_SECOND, "setpts=N/TB", pad=False, seconds=STILLS_SECONDS, rgb=True,
                                     input_one=("-framerate", "1", "-start_number", "0", "-f", "image2", "-c:v", "tiff"))


CHECKS = {"rotate90": rotate, "rotate180": rotate, "rotate270": rotate, "speed": encode, "slow": slow, "high": encode, "medium": encode,
          "low": encode, "mov": convert, "mp4": convert, "m4v": convert, "gif": gif, "audio": audio, "frames": frames, "mute": encode}
