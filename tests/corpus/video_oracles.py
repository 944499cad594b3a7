# SPDX-License-Identifier: GPL-3.0-or-later
"""What ffprobe, ffmpeg and exiftool see in videos: streams, times of frames, likeness of frames and of audio."""
import array
import json
import re
import subprocess
import tempfile

AUDIO_RATE = 4000  # samples a second that are compared
SECONDS = 2        # of frames and audio that are compared
WIDTH = 160        # at most, of the frames that are compared
QUIET = ("-nostdin", "-hide_banner", "-threads", "1", "-filter_threads", "1", "-filter_complex_threads", "1")


def output_of(*command, limit_seconds=120):
    done = subprocess.run([str(part) for part in command], capture_output=True, stdin=subprocess.DEVNULL, timeout=limit_seconds)
    return done.stdout, done.stderr.decode(errors="replace"), done.returncode


def file_url(path):
    """ffmpeg takes ":" in names for its own."""
    return f"file:{path}"


def number(text):
    try:
        return float(text)
    except (TypeError, ValueError):
        return None


# By the display matrix {a b c d}.
UPRIGHT = {(0, 1, -1, 0): "transpose=clock", (0, -1, 1, 0): "transpose=cclock", (-1, 0, 0, -1): "hflip,vflip", (-1, 0, 0, 1): "hflip",
           (1, 0, 0, -1): "vflip", (0, 1, 1, 0): "transpose=cclock_flip", (0, -1, -1, 0): "transpose=clock_flip"}


class Probe:
    """`start`: where the presentation begins, s; none: where ffprobe says."""

    def __init__(self, path, start=None):
        out, _, _ = output_of("ffprobe", "-v", "quiet", "-of", "json", "-show_format", "-show_streams", "-show_chapters",
                              "-show_entries", "packet=stream_index,pts_time,duration_time,flags", "-i", file_url(path))
        found = json.loads(out.decode(errors="replace") or "{}")
        self.path = path
        self.format = found.get("format", {})
        self.chapters = [(round(float(c["start_time"]), 2), c.get("tags", {}).get("title")) for c in found.get("chapters", [])]
        self.streams = found.get("streams", [])
        videos = [s for s in self.streams if s.get("codec_type") == "video" and not s["disposition"]["attached_pic"]]
        audios = [s for s in self.streams if s.get("codec_type") == "audio"]
        self.video, self.video_count = videos[0] if videos else None, len(videos)
        self.audio, self.audio_count = audios[0] if audios else None, len(audios)
        self.start = start if start is not None else max(0, number(self.format.get("start_time")) or 0)
        # An encoder's delay may lie before zero: ffmpeg would move the whole file until its first packet is at zero.
        earliest = min(0, number(self.format.get("start_time")) or 0)
        self.own_times = ("-itsoffset", str(earliest)) if earliest < 0 and start is None else ()
        self.duration = number(self.format.get("duration")) or 0
        self.times = self._times(found.get("packets", [])) if self.video else []

    def _times(self, packets):
        """(start, duration) of the frames that are shown, from the start of the presentation."""
        packets = [packet for packet in packets if packet.get("stream_index") == self.video["index"]]
        times = [(number(packet.get("pts_time")), number(packet.get("duration_time"))) for packet in packets
                 if "D" not in packet.get("flags", "")]
        if any(start is None for start, _ in times):  # only a decoder knows them
            out, _, _ = output_of("ffprobe", "-v", "quiet", "-of", "json", "-select_streams", "V:0", "-show_entries",
                                  "frame=best_effort_timestamp_time,pkt_duration_time", "-i", file_url(self.path))
            frames = json.loads(out.decode(errors="replace") or "{}").get("frames", [])
            times = [(number(frame.get("best_effort_timestamp_time")), number(frame.get("pkt_duration_time"))) for frame in frames]
        return sorted((start - self.start, duration or 0) for start, duration in times if start is not None)

    def rotation(self):
        """Degrees clockwise, and whether the frame is mirrored."""
        for data in self.video.get("side_data_list", []):
            if "displaymatrix" in data:
                rows = [list(map(int, line.split(":")[1].split())) for line in data["displaymatrix"].strip().splitlines()]
                (a, b), (c, d) = rows[0][:2], rows[1][:2]
                return -int(data["rotation"]) % 360, a * d - b * c < 0
        return 0, False

    def upright(self):
        """The filter that draws the frames as they are shown."""
        for data in self.video.get("side_data_list", []):
            if "displaymatrix" in data:
                signs = [(int(n) > 0) - (int(n) < 0) for row in data["displaymatrix"].strip().splitlines()[:2]
                         for n in row.split(":")[1].split()[:2]]
                return UPRIGHT.get(tuple(signs), "null")
        return "null"

    def sample_aspect(self):
        """Width to height of a sample."""
        wide, high = map(int, self.video.get("sample_aspect_ratio", "1:1").split(":"))
        return wide / high if wide > 0 and high > 0 else 1.0

    def shown_ratio(self):
        """Width to height as shown."""
        ratio = self.video["width"] * self.sample_aspect() / self.video["height"]
        return 1 / ratio if self.rotation()[0] % 180 else ratio

    def shown_end(self):
        return self.times[-1][0] + self.times[-1][1] if self.times else 0

    def longest_frame(self):
        starts = [start for start, _ in self.times]
        return max([b - a for a, b in zip(starts, starts[1:])] + [duration for _, duration in self.times[-1:]] + [0.001])


FINE_RGB = "scale=flags=bicubic+accurate_rnd+full_chroma_int,format=gbrp,"  # chroma interpolated; the default repeats it


class Comparison:
    """The likeness of the frames of two videos at the same times, drawn small, as SSIM; and the audio of the first, as
    samples from the start of the presentation. One run of ffmpeg."""

    def __init__(self, one, other, size, filter_one="null", filter_other="null", seconds=SECONDS, input_one=(), rgb=False, audio=False,
                 video=True, pad=True, input_other=()):
        wide = min(WIDTH, size[0])
        # Through the same conversion of colours from RGB on, where one of them is that.
        high = max(2, round(size[1] * wide / size[0]))
        small = f"{FINE_RGB if rgb else ''}scale={wide}:{high}:flags=area+accurate_rnd+full_chroma_int,format=yuv420p,setsar=1"
        command = ["ffmpeg", *QUIET, "-v", "info", *input_one, "-noautorotate", "-t", seconds, "-i", file_url(one)]
        if video:
            command += [*input_other, "-noautorotate", "-t", seconds, "-i", file_url(other), "-filter_complex",
                        f"[0:V:0]setpts=PTS+0.008/TB,{filter_one},{small}[a];[1:V:0]{filter_other},{small}{',tpad=stop_mode=clone:stop=1' if pad else ''}[b];"
                        f"[a][b]ssim=shortest=1", "-f", "null", "-"]
        with tempfile.NamedTemporaryFile() as samples:
            if audio:
                command += ["-map", "0:a:0", *AUDIO_OUTPUT, "-y", samples.name]
            _, self.errors, _ = output_of(*command)
            self.samples = as_samples(samples.read())
        found = re.findall(r"SSIM.* All:([\d.]+)", self.errors)
        self.likeness = float(found[-1]) if found else None


AUDIO_OUTPUT = ("-af", f"aresample={AUDIO_RATE}:async=1:first_pts=0:min_hard_comp=0.02,aformat=channel_layouts=mono", "-f", "s16le")


def as_samples(data):
    return array.array("h", data[:len(data) // 2 * 2])


def samples_of(path, seconds=SECONDS, own_start=True, input_options=()):
    """`own_start`: from the file's first packet, else from zero."""
    copied = () if own_start else ("-copyts",)
    return as_samples(output_of("ffmpeg", *QUIET, "-v", "error", *copied, *input_options, "-t", seconds, "-i", file_url(path), "-map",
                                "0:a:0", *AUDIO_OUTPUT, "-")[0])


DAMAGE = "(?i)invalid|error|corrupt|truncat|partial file|missing|nothing was encoded"


def decoded(path, seconds=SECONDS):
    """How many frames of the first video a decoder gives in this time, and whether it complains about any stream."""
    _, errors, _ = output_of("ffmpeg", *QUIET, "-v", "info", "-t", seconds, "-i", file_url(path), "-map", "0:V:0?", "-map", "0:a:0?", "-vsync",
                             "passthrough", "-f", "null", "-")
    frames = re.findall(r"frame= *(\d+)", errors)
    return int(frames[-1]) if frames else 0, re.search(DAMAGE, errors) is not None


def correlation(a, b):
    """The best one within 10 ms, -1 to 1; None where the audio is nearly silent."""
    reach = AUDIO_RATE // 100
    n = min(len(a), len(b)) - reach
    if n < AUDIO_RATE // 20 or sum(map(int.__mul__, b[:n], b[:n])) / n < 100:
        return None

    def best(lags):
        return max((correlation_at(a[max(0, lag):][:n], b[max(0, -lag):][:n]), lag) for lag in lags)

    value, lag = best(range(-reach, reach + 1, 4))
    # A tone of 500 Hz is the reverse of itself after four of these samples.
    return value if value > 0.99 else max(value, best(set(range(-reach, reach + 1)) - {lag})[0])


def correlation_at(x, y):
    xx, yy = sum(map(int.__mul__, x, x)), sum(map(int.__mul__, y, y))
    return sum(map(int.__mul__, x, y)) / (xx * yy) ** 0.5 if xx and yy else 0.0


EXIF_FACTS = {"title": ("ItemList:Title", "Keys:Title", "UserData:Title", "Keys:DisplayName", "Matroska:Title"),
              "made": ("QuickTime:CreateDate",), "recorded": ("Keys:CreationDate",),
              "latitude": ("Composite:GPSLatitude",), "longitude": ("Composite:GPSLongitude",),
              "make": ("Keys:Make", "UserData:Make", "Keys:AndroidManufacturer"), "model": ("Keys:Model", "UserData:Model")}


def exif_facts(paths):
    """What a transcode carries over: {path: facts}."""
    paths = [path for path in paths if "\n" not in str(path)]  # which separates them here
    if not paths:
        return {}
    with tempfile.NamedTemporaryFile() as names:
        names.write(b"".join(str(path).encode("utf-8", "surrogateescape") + b"\n" for path in paths))
        names.flush()
        out, _, _ = output_of("exiftool", "-j", "-n", "-G1", "-q", "-api", "largefilesupport=1", "-@", names.name, limit_seconds=300)
    found = {}
    for row in json.loads(out.decode(errors="replace") or "[]"):
        facts = found.setdefault(row["SourceFile"], {})
        for fact, names in EXIF_FACTS.items():
            values = [row[name] for name in names if row.get(name) not in (None, "", "0000:00:00 00:00:00")]
            if values:
                facts[fact] = round(values[0], 4) if isinstance(values[0], float) else values[0]
    return found
