# SPDX-License-Identifier: GPL-3.0-or-later
"""What the corpus tests share: the kind tables, running the command line, the list of known differences."""
import collections
import hashlib
import itertools
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
MIB = 1 << 20

AUDIO = set("""OPUS AMR RAM RFL RMI RNS RPS SIB SND VPM WAV WMA AA3 AAC AC3 AFC AIF AIFF AM AT3 AU AUD CAF CDA CPF DMSA
DMSE DSS EMP EMX FLAC KPI M3D M4A M4B M4R MID MIDI MP3 OGG OMF PTF""".split())
VIDEO = set("""HEVC 3G2 3GP ANM ASF ASX AVI AVS CLK CPI DIVX DMSM DREAM DVDMEDIA DVM DVR-MS DXR F4V FBR FLA FLV HDMOV M2P
M2TS M4P M4V MKV MOD MOI MOV MP4 MPE MPEG MPG MXF OGM PSH QT QTM RCPROJECT RM RMVB SCM SMIL SMJPEG SRT STX SWF TIX TS
VOB VRO WMV WTV XVID YUV""".split())
PHOTO = set("""HEIC HEIF 3DM 3DMF 3DS 3FR ABM AFX AI ANI ART ARW BLD BLEND BMP BOO BR5 CDR CDT CGM CIFF CLP CMX CONT CPT
CR2 CRW CUR CVX DCM DCR DIB DNG DRW DS4 DSC DT2 DWF DWG EMF EMZ ERF FH8 FLC FOV FPF FPX FUJI FXG GIF HDP HPI ICNS ICO
IDML IFF IMG INX IPX ISD ITC2 IV JP2 JPEG JPG JPX K25 KDC LBM MA MAX MB MDI MDL MDX MINO MNG MOS MRW MSP NCR NEF OBJ ORF
PAL PAT PBM PCS PCT PCX PEF PGM PIC PICT PICTCLIPPING PNG PPM PSD PSP PSPIMGE PTX PXN QXD RAF RAS RAW RELS RGB RLE RTD
RW2 SCT SHP SKF SKP SR2 SRF STP SVG SVGZ TEX TGA THM TIF TIFF VWX WB1 WBC WBD WBMP WBZ WEBP WMF WP WPG X3F XBM XCF XPM
XPS""".split())
ISOBMFF = {"MP4", "MOV", "M4V", "3GP", "3G2", "F4V", "QT", "M4A", "M4B"}


def extension(path):
    """Upper case, without the dot; empty for ".hidden" and "a."."""
    return pathlib.PurePath(path).suffix[1:].upper()


def corpus_or_skip():
    """The folder, or the end of the test when there is none."""
    folder = os.environ.get("CLIPHEAVE_CORPUS", "")
    if not folder:
        print("CLIPHEAVE_CORPUS is not set")
        sys.exit(SKIPPED)
    root = pathlib.Path(folder).resolve()
    files = sorted(path for path in root.rglob("*") if path.is_file())
    if not files:
        sys.exit(f"CLIPHEAVE_CORPUS: no files in {root}")
    return root, files


def output(*command):
    """What another program prints, without the end of the line."""
    done = subprocess.run([str(part) for part in command], capture_output=True, stdin=subprocess.DEVNULL)
    return done.stdout.decode(errors="replace").strip()


def stream_hashes(path, *maps):
    """One hash a stream of its packets as they are stored."""
    maps = [part for each in maps for part in ("-map", each)]
    return output("ffmpeg", "-v", "quiet", "-i", path, *maps, "-c", "copy", "-copy_unknown", "-f", "streamhash", "-hash", "md5",
                  "-").splitlines()


def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


class Run:
    """One run of the command line, with an own empty preferences file."""

    def __init__(self, cli, *arguments, limit_seconds=600):
        with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryFile() as out, \
                tempfile.TemporaryFile() as errors:
            command = [cli, "--config", f"{folder}/test.conf", *map(str, arguments)]
            start = time.monotonic()
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=out, stderr=errors)
            self.timed_out = False
            while os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT | os.WNOHANG) is None:
                if time.monotonic() - start > limit_seconds:
                    self.timed_out = True
                    process.kill()
                time.sleep(0.002)
            self.seconds = time.monotonic() - start
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = self.status = os.waitstatus_to_exitcode(status)
            self.peak_bytes = usage.ru_maxrss * 1024
            out.seek(0)
            errors.seek(0)
            self.out, self.errors = out.read(), errors.read().decode(errors="replace")

    def json(self):
        return json.loads(self.out)


def parse_differences(text):
    """Blocks of "reason:" lines at the margin and indented "file field+… oracle+…" lines -> {(file, field, oracle): reason}."""
    known, reason, open_reason = {}, [], False
    for line in text.strip().splitlines():
        if not line.strip():
            continue
        if not line.startswith(" "):
            reason = reason + [line] if open_reason else [line]
            open_reason = True
            continue
        open_reason = False
        name, fields, oracles = line.rsplit(maxsplit=2)
        for field, oracle in itertools.product(fields.split("+"), oracles.split("+")):
            known[(name.strip(), field, oracle)] = " ".join(reason)
    return known


def judge(differences, known, present):
    """Faults: differences without an entry, and entries that no difference bears out. Entries for files that this corpus
    does not hold are left alone, since a smaller corpus is a corpus too, and so are those whose reason begins with "Since"
    or "Until" and a release of another program, which this machine may not have."""
    faults = [f"{' '.join(key)}: {text}" for key, text in sorted(differences.items()) if key not in known]
    faults += [f"stale entry, no difference any more: {' '.join(key)}" for key in sorted(known)
               if key not in differences and key[0] in present and not known[key].startswith(("Since ", "Until "))]
    return faults


def check_each(wanted, job, check, known_text, of_broken=()):
    """Checks each file whose extension is `wanted` with check(cli, path, storage) -> ({"job what": text}, outcome), and that it
    leaves the source alone ("`job` source"); then ends the test. Of damaged files only `of_broken` counts; without it they
    are left out."""
    cli = sys.argv[1]
    root, files = corpus_or_skip()
    found, outcomes = {}, collections.Counter()
    for path in files:
        name = path.relative_to(root)
        broken = "broken" in name.parts
        if extension(path) not in wanted or broken and not of_broken:
            continue
        before = digest(path)
        with tempfile.TemporaryDirectory() as storage:
            faults, outcome = check(cli, path, pathlib.Path(storage))
        outcomes[outcome] += 1
        if digest(path) != before:
            faults[f"{job} source"] = "the source was changed"
        found.update({(str(name), *what.split()): text for what, text in faults.items() if not broken or what in of_broken})
    known = parse_differences(known_text)
    present = {str(path.relative_to(root)) for path in files}
    finish(judge(found, known, present), f"outcomes: {dict(outcomes)}; {len(known)} known differences")


def finish(faults, summary):
    print(summary)
    if faults:
        print(f"{len(faults)} faults:")
        print("\n".join(faults))
    sys.exit(1 if faults else 0)
