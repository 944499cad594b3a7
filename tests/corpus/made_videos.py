# SPDX-License-Identifier: GPL-3.0-or-later
"""Small videos of many kinds, made by ffmpeg, for what a folder of real files may not hold."""
import pathlib
import struct
import subprocess

# A tone that rises, so that no part of the audio is like another.
TONE = "aevalsrc=0.4*sin(2*PI*(200*t+90*t*t)):s={rate}:d={seconds}{layout}"
FRAMES = "testsrc2=s={size}:r={rate}:d={seconds}"
X264 = "-c:v libx264 -preset ultrafast -crf 12 -pix_fmt yuv420p"
AAC = "-c:a aac -b:a 128k -ac 2"


def ffmpeg(*arguments):
    done = subprocess.run(["ffmpeg", "-y", "-v", "error", "-nostdin", *map(str, arguments)], capture_output=True)
    if done.returncode:
        raise RuntimeError(f"ffmpeg {arguments}: {done.stderr.decode(errors='replace')}")


def make_video(path, options=f"{X264} {AAC}", size="192x128", rate=25, seconds=2, audio=44100, layout="", video=True):
    """`audio`: samples a second, 0 for none."""
    inputs = ["-f", "lavfi", "-i", FRAMES.format(size=size, rate=rate, seconds=seconds)] if video else []
    if audio:
        inputs += ["-f", "lavfi", "-i", TONE.format(rate=audio, seconds=seconds, layout=layout)]
    ffmpeg(*inputs, *options.split(), path)


def boxes(data, start, end):
    """(type, start of the payload, end) of the boxes there."""
    while start + 8 <= end:
        size, head = struct.unpack_from(">I", data, start)[0], 8
        if size == 1:
            size, head = struct.unpack_from(">Q", data, start + 8)[0], 16
        yield data[start + 4:start + 8], start + head, start + size
        start += size


def find(data, kinds, start=0, end=None):
    """Starts of the payloads of all boxes of a path such as (b"moov", b"trak", b"tkhd")."""
    for kind, first, last in boxes(data, start, len(data) if end is None else end):
        if kind == kinds[0]:
            if len(kinds) == 1:
                yield first
            else:
                yield from find(data, kinds[1:], first, last)


def set_matrix(path, a, b, c, d, x, y):
    """Sets the display matrix of the first track."""
    data = bytearray(path.read_bytes())
    at = next(find(data, (b"moov", b"trak", b"tkhd"))) + 40
    struct.pack_into(">9i", data, at, a << 16, b << 16, 0, c << 16, d << 16, 0, x << 16, y << 16, 1 << 30)
    path.write_bytes(data)


def set_duration(path, seconds):
    """Sets the duration in all headers; the samples stay as they are."""
    data = bytearray(path.read_bytes())
    scale = struct.unpack_from(">I", data, next(find(data, (b"moov", b"mvhd"))) + 12)[0]
    struct.pack_into(">I", data, next(find(data, (b"moov", b"mvhd"))) + 16, seconds * scale)
    for at in find(data, (b"moov", b"trak", b"tkhd")):
        struct.pack_into(">I", data, at + 20, seconds * scale)
    for at in find(data, (b"moov", b"trak", b"edts", b"elst")):
        struct.pack_into(">I", data, at + 8, seconds * scale)
    for at in find(data, (b"moov", b"trak", b"mdia", b"mdhd")):
        units = seconds * struct.unpack_from(">I", data, at + 12)[0]
        struct.pack_into(">I", data, at + 16, min(units, 0xFFFFFFF0))
    path.write_bytes(data)


def spoil(path, out):
    """Overwrites a part in the middle of the media data."""
    data = bytearray(path.read_bytes())
    start = next(find(data, (b"mdat",)))
    end = next(last for kind, _, last in boxes(data, 0, len(data)) if kind == b"mdat")
    at = start + (end - start) // 2
    data[at:at + 3000] = bytes((i * 7919) & 0xFF for i in range(3000))
    out.write_bytes(data)


def colours(matrix, primaries, transfer):
    """A filter that names them: newer releases take them from the frames, not from options of the output."""
    return f"setparams=colorspace={matrix}:color_primaries={primaries}:color_trc={transfer}"


TAGS = ("-metadata title=Harbour -metadata creation_time=2011-03-04T05:06:07Z -metadata location=+48.8577+002.295/ "
        "-metadata make=Acme -metadata model=Phone9 -movflags use_metadata_tags")
ALIKE = [
    # name, keywords of make_video()
    ("plain.mp4", {}),
    ("plain.mov", {}),
    ("plain.m4v", {}),
    ("plain.MPEG", dict(options=f"{X264} {AAC} -f mp4")),
    ("ten-bit.mov", dict(options=f"-c:v libx265 -x265-params log-level=error -preset ultrafast -crf 12 -pix_fmt yuv420p10le -tag:v hvc1 {AAC}")),
    ("pq.mp4", dict(options="-vf scale=out_color_matrix=bt2020,format=yuv420p10le,"
                    f"{colours('bt2020nc', 'bt2020', 'smpte2084')} -c:v libx265 -preset ultrafast -crf 12 -tag:v hvc1 "
                    f"-x265-params log-level=error:colorprim=bt2020:transfer=smpte2084:colormatrix=bt2020nc {AAC}")),
    ("hlg.mov", dict(options="-vf scale=out_color_matrix=bt2020,format=yuv420p10le,"
                     f"{colours('bt2020nc', 'bt2020', 'arib-std-b67')} -c:v libx265 -preset ultrafast -crf 12 -tag:v hvc1 "
                     f"-x265-params log-level=error:colorprim=bt2020:transfer=arib-std-b67:colormatrix=bt2020nc {AAC}")),
    ("variable.mp4", dict(options=f"-vf select='not(mod(n\\,3))+between(n\\,20\\,35)' -vsync vfr {X264} -bf 2 {AAC}")),
    ("mono.mp4", dict(options=f"{X264} -c:a aac -ac 1")),
    ("surround.mp4", dict(options=f"{X264} -c:a aac -b:a 384k", layout=":c=5.1", audio=48000)),
    ("silent.mp4", dict(audio=0, options=X264)),
    ("audio-only.mp4", dict(video=False, options=AAC)),
    ("odd.mp4", dict(size="101x75", options=f"-c:v libx264 -crf 10 -pix_fmt yuv444p {AAC}")),
    ("odd.mkv", dict(size="101x75", options=f"-c:v ffv1 {AAC}")),
    ("odd420.mov", dict(size="101x75", options=f"-c:v mjpeg -q:v 2 -pix_fmt yuvj420p {AAC}")),
    ("anamorphic.mp4", dict(options=f"-vf setsar=4/3 {X264} {AAC}")),
    ("narrow.mov", dict(options=f"-vf setsar=8/9 {X264} {AAC}")),
    ("full-range.mp4", dict(options=f"-vf scale=out_range=full:out_color_matrix=bt709,{colours('bt709', 'bt709', 'bt709')}:range=pc "
                            f"-c:v libx264 -crf 12 -pix_fmt yuvj420p {AAC}")),
    ("bt601.mp4", dict(options=f"-vf scale=out_color_matrix=bt601,{colours('smpte170m', 'smpte170m', 'smpte170m')} {X264} {AAC}")),
    ("bt709.mov", dict(options=f"-vf scale=out_color_matrix=bt709,{colours('bt709', 'bt709', 'bt709')} {X264} {AAC}")),
    ("bt2020.mp4", dict(options=f"-vf scale=out_color_matrix=bt2020,{colours('bt2020nc', 'bt2020', 'bt2020-10')} {X264} {AAC}")),
    ("rgb.mov", dict(options=f"-c:v qtrle {AAC}")),
    ("prores.mov", dict(options="-c:v prores -profile:v 1 -c:a pcm_s16le")),
    ("interlaced.mp4", dict(rate=50, options=f"-vf interlace -c:v libx264 -flags +ildct+ilme -crf 12 -pix_fmt yuv420p {AAC}")),
    ("b-frames.mp4", dict(options=f"-c:v libx264 -bf 3 -g 30 -crf 12 -pix_fmt yuv420p {AAC}")),
    ("sixty.mov", dict(rate="60000/1001", options=f"{X264} {AAC}")),
    ("cinema-rate.mp4", dict(rate="24000/1001", options=f"{X264} {AAC}")),
    ("slow-rate.mp4", dict(rate="2", options=f"{X264} {AAC}", seconds=5)),
    ("cinema.mkv", {}),
    ("old.avi", dict(options="-c:v mpeg4 -q:v 2 -c:a libmp3lame")),
    ("web.mkv", dict(options="-c:v libvpx -b:v 2M -deadline realtime -c:a libopus", audio=48000)),
    ("web9.mkv", dict(options="-c:v libvpx-vp9 -b:v 2M -deadline realtime -c:a libvorbis", audio=48000)),
    ("broadcast.ts", dict(options=f"-output_ts_offset 95000 {X264} {AAC}")),
    ("program.mpg", dict(options="-c:v mpeg2video -q:v 2 -c:a mp2")),
    ("flash.flv", {}),
    ("windows.wmv", dict(options="-c:v wmv2 -q:v 2 -c:a wmav2")),
    ("fragmented.mp4", dict(options=f"{X264} {AAC} -movflags frag_keyframe+empty_moov")),
    ("tagged.mp4", dict(options=f"{X264} {AAC} {TAGS}")),
    ("tagged.mov", dict(options=f"{X264} {AAC} {TAGS}")),
    ("tagged.mkv", dict(options=f"{X264} {AAC} -metadata title=Harbour -metadata creation_time=2011-03-04T05:06:07Z")),
    ("ac3.mp4", dict(options=f"{X264} -c:a ac3", audio=48000)),
    ("mp3.mp4", dict(options=f"{X264} -c:a libmp3lame")),
    ("opus.mp4", dict(options=f"{X264} -c:a libopus -strict -2", audio=48000)),
    ("short.mp4", dict(seconds=0.04)),
    ("name with\nnewline.mp4", {}),
    (b"name \xe9\xff.mp4", {}),
    ("n" * 251 + ".mp4", {}),
    ("100%d %s.mp4", {}),
]


def make(folder):
    """Makes all of them; returns their paths."""
    folder = pathlib.Path(folder)
    paths = []

    def new(name):
        paths.append(folder / (name.decode("utf-8", "surrogateescape") if isinstance(name, bytes) else name))
        return paths[-1]

    for name, keywords in ALIKE:
        if "%" in str(name):
            make_video(folder / "plain-name.mp4", **keywords)
            (folder / "plain-name.mp4").rename(new(name))
        else:
            make_video(new(name), **keywords)
    plain = folder / "plain.mp4"
    for name, matrix in (("portrait.mp4", (0, 1, -1, 0, 128, 0)), ("upside-down.mov", (-1, 0, 0, -1, 192, 128)),
                         ("portrait270.mp4", (0, -1, 1, 0, 0, 192)), ("mirrored.mp4", (-1, 0, 0, 1, 192, 0)),
                         ("mirrored90.mov", (0, 1, 1, 0, 0, 0))):
        set_matrix(copy(plain, new(name)), *matrix)
    set_duration(copy(plain, new("zero-duration.mp4")), 0)
    set_duration(copy(plain, new("million-seconds.mp4")), 1_000_000)
    spoil(folder / "b-frames.mp4", new("spoiled.mp4"))
    make_video(folder / "first.mp4", options=f"{X264} {AAC} -movflags faststart")
    whole = (folder / "first.mp4").read_bytes()
    (folder / "first.mp4").unlink()
    new("truncated.mp4").write_bytes(whole[:len(whole) * 6 // 10])
    new("no-index.mp4").write_bytes(plain.read_bytes()[:5000])
    new("text.mp4").write_text("This is no video.\n" * 40)
    new("empty.mp4").write_bytes(b"")
    ffmpeg("-ss", "0.52", "-i", folder / "b-frames.mp4", "-c", "copy", new("edit-list.mp4"))
    ffmpeg("-i", plain, "-itsoffset", "0.7", "-i", plain, "-map", "0:v", "-map", "1:a", "-c", "copy", new("late-audio.mp4"))
    ffmpeg("-i", plain, "-itsoffset", "0.7", "-i", plain, "-map", "1:v", "-map", "0:a", "-c", "copy", new("late-video.mov"))
    ffmpeg("-i", plain, "-i", plain, "-map", "0", "-map", "1:a", "-c", "copy", new("two-audio-tracks.mp4"))
    subtitle = folder / "text.srt"
    subtitle.write_text("1\n00:00:00,500 --> 00:00:01,500\nHello\n")
    chapters = folder / "chapters.txt"
    chapters.write_text(";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=1000\ntitle=One\n[CHAPTER]\nTIMEBASE=1/1000\n"
                        "START=1000\nEND=2000\ntitle=Two\n")
    ffmpeg("-i", plain, "-i", subtitle, "-i", chapters, "-map", "0", "-map", "1", "-map_metadata", "2", "-c", "copy", "-c:s", "mov_text",
           new("chapters.mp4"))
    subtitle.unlink()
    chapters.unlink()
    return paths


def copy(source, target):
    target.write_bytes(source.read_bytes())
    return target
