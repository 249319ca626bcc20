#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Frames mutants of given photos and asks other programs what they think of the mutants and of what was written.

Each run of ferrow-batch gets mutants with whole photos between them. A whole photo that is not exported, or exported
otherwise than alone, was harmed by a mutant. A mutant that was exported with other pixels than the photo it comes
from, although a decoder that takes that photo refuses it, may be half a picture: it is kept for looking at. The same
seed gives the same mutants. Needs ffmpeg, djpeg (libjpeg-turbo-progs) and pngcheck.
"""

import argparse
import collections
import json
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile

MUTANTS_PER_RUN = 40
MUTANTS_PER_WHOLE_PHOTO = 5
FORMATS = ["jpeg", "png", "jpeg", "tiff"]  # Of the outputs, run by run.


def accepted_by(*command):
    done = subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, capture_output=True, timeout=120)
    return done.returncode == 0 and not done.stderr.strip()


def strictly_accepted(path, kind):
    """What a decoder that is not ours, told to forgive nothing, says of the file; None where there is none."""
    if kind == "png":
        return accepted_by("pngcheck", "-q", path)
    if kind == "heif":
        return None
    if kind == "tiff":  # More strictly, it refuses tags that it does not know.
        return subprocess.run(["ffmpeg", "-v", "quiet", "-xerror", "-i", path, "-frames:v", "1", "-f", "null", "-"],
                              stdin=subprocess.DEVNULL, timeout=120).returncode == 0
    ffmpeg = ["ffmpeg", "-v", "error", "-xerror", "-err_detect", "explode+crccheck+bitstream+buffer"]
    seen = accepted_by(*ffmpeg, "-i", path, "-frames:v", "1", "-f", "null", "-")
    return seen and (kind != "jpeg" or accepted_by("djpeg", "-strict", "-outfile", "/dev/null", path))


def pixels(path):
    done = subprocess.run(["ffmpeg", "-v", "quiet", "-i", path, "-frames:v", "1", "-f", "md5", "-"],
                          stdin=subprocess.DEVNULL, capture_output=True, timeout=120)
    return done.stdout


def kind_of(data):
    if data.startswith(b"\xff\xd8"):
        return "jpeg"
    if data.startswith(b"\x89PNG"):
        return "png"
    return "tiff" if data[:2] in (b"II", b"MM") else "heif"


def segments(data):
    """Where segments, chunks or boxes begin, and where the last ends; rows of a JPEG and all of a TIFF are one."""
    kind, starts, at = kind_of(data), [], {"jpeg": 2, "png": 8}.get(kind_of(data), 0)
    while kind != "tiff" and at + 12 <= len(data):
        starts.append(at)
        if kind == "jpeg":
            if data[at + 1] == 0xDA:
                break
            at += 2 + int.from_bytes(data[at + 2 : at + 4], "big")
        else:
            length = int.from_bytes(data[at : at + 4], "big")
            at += length + 12 if kind == "png" else max(length, 8)
    return starts + [min(at, len(data))]


def coded_rows(data):
    """Where the rows of a picture lie: for JPEG from its first scan to its end, else all behind the header."""
    if kind_of(data) != "jpeg":
        return 64, len(data)
    start = segments(data)[-1] + 14
    end = data.find(b"\xff\xd9", start)
    return start, end if end > 0 else len(data)


def is_large_enough(data, how):
    start, end = coded_rows(data)
    return end - start > 4 * int(how.partition(":")[2] or 0)


def mutant(data, how, pick, others):
    how, _, size = how.partition(":")
    at = pick.randrange(2, len(data) - 2)
    if how == "bits":
        changed = bytearray(data)
        for _ in range(pick.choice((1, 1, 2, 8, 64))):
            changed[pick.randrange(len(data))] ^= 1 << pick.randrange(8)
        return bytes(changed)
    if how == "cut":
        return data[:at] if pick.random() < 0.5 else data[:at] + data[min(len(data), at + pick.randrange(1, 5000)) :]
    if how == "spliced":
        other = pick.choice(others)
        return data[:at] + other[min(len(other) - 1, at if pick.random() < 0.5 else pick.randrange(len(other))) :]
    if how == "moved":
        starts = segments(data)
        if len(starts) > 3:
            first, to = pick.randrange(len(starts) - 1), pick.randrange(len(starts))
            piece = data[starts[first] : starts[first + 1]]
            to = starts[to] if to <= first else starts[to] - len(piece)
            rest = data[: starts[first]] + data[starts[first + 1] :]
            return rest[:to] + piece + rest[to:]
        piece, rest = data[at : at + 1000], data[:at] + data[at + 1000 :]
        to = pick.randrange(len(rest))
        return rest[:to] + piece + rest[to:]
    start, end = coded_rows(data)
    size = int(size)
    at = pick.randrange(start, max(start + 1, end - size))
    if how == "zeroed":
        return data[:at] + bytes(size) + data[at + size :]
    if how == "random":
        return data[:at] + pick.randbytes(size) + data[at + size :]
    if how == "doubled":
        return data[: at + size] + data[at:]
    if how == "removed":
        return data[:at] + data[at + size :]
    raise SystemExit(f"mutants.py: no kind of mutant is called {how}")


def frame(options, folder, names, output_format):
    """Outcome by name, as the program reports it."""
    output = folder / "framed"
    shutil.rmtree(output, ignore_errors=True)
    done = subprocess.run([options.batch, "--json", "--quiet", "--output", output, "--format", output_format,
                           "--no-caption", "--border", "8px", *(folder / name for name in names)],
                          capture_output=True, text=True, timeout=3600)
    lines = [json.loads(line) for line in done.stdout.splitlines()]
    outcomes = {pathlib.Path(line["path"]).name: line for line in lines if "path" in line}
    if done.returncode not in (0, 1) or len(outcomes) != len(names):
        raise SystemExit(f"The program ended with {done.returncode}, telling of {len(outcomes)} photos of {len(names)}.")
    return outcomes


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--batch", default="build/dev/src/Command/ferrow-batch", help="the program")
    parser.add_argument("--count", type=int, default=3000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--kinds", default="bits,cut,spliced,moved",
                        help="of these, or zeroed:BYTES, random:BYTES, doubled:BYTES and removed:BYTES amid the coded rows")
    parser.add_argument("--keep", type=pathlib.Path, default=pathlib.Path("build/mutants"), help="for what was found")
    parser.add_argument("photos", nargs="+", type=pathlib.Path)
    options = parser.parse_args()

    pick = random.Random(options.seed)
    photos = [(path.suffix, path.read_bytes()) for path in options.photos]
    kinds = options.kinds.split(",")
    counts = collections.defaultdict(collections.Counter)
    harmed = 0
    options.keep.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        wholes = [f"whole{i}{suffix}" for i, (suffix, _) in enumerate(photos)]
        for whole, (_, data) in zip(wholes, photos):
            (folder / whole).write_bytes(data)
        judged = {whole for whole, (_, data) in zip(wholes, photos) if strictly_accepted(folder / whole, kind_of(data))}
        alone, alone_pixels = {}, {}
        for output_format in sorted(set(FORMATS)):
            for whole, outcome in frame(options, folder, wholes, output_format).items():
                if outcome["outcome"] != "exported":
                    raise SystemExit(f"{whole} is no good photo: {outcome.get('message')}")
                alone[whole, output_format] = pathlib.Path(outcome["destination"]).read_bytes()
                alone_pixels[whole, output_format] = pixels(outcome["destination"])

        made = 0
        while made < options.count:
            output_format = FORMATS[made // MUTANTS_PER_RUN % len(FORMATS)]
            names, origins = [], {}
            for _ in range(min(MUTANTS_PER_RUN, options.count - made)):
                kind = kinds[made % len(kinds)]
                origin = pick.choice([i for i, (_, data) in enumerate(photos) if is_large_enough(data, kind)])
                suffix, data = photos[origin]
                name = f"{made:05}-{kind.replace(':', '')}{suffix}"
                same_type = [other for _, other in photos if kind_of(other) == kind_of(data)]
                (folder / name).write_bytes(mutant(data, kind, pick, same_type))
                origins[name] = (kind_of(data), kind, wholes[origin])
                names.append(name)
                if made % MUTANTS_PER_WHOLE_PHOTO == 0:
                    names.append(pick.choice([whole for whole in wholes if whole not in names] or [name]))
                made += 1
            names = list(dict.fromkeys(names))
            for name, outcome in frame(options, folder, names, output_format).items():
                exported = outcome["outcome"] == "exported"
                written = pathlib.Path(outcome["destination"]) if exported else None
                if name in wholes:
                    if not exported or written.read_bytes() != alone[name, output_format]:
                        harmed += 1
                        print(f"{name}, whole: {outcome}", flush=True)
                    continue
                file_type, kind, origin = origins[name]
                row = counts[file_type, kind]
                row["made"] += 1
                if exported:
                    row["exported"] += 1
                    if written.read_bytes() == alone[origin, output_format]:
                        continue
                    if not strictly_accepted(written, output_format):
                        row["bad output"] += 1
                        shutil.copy(written, options.keep)
                    if pixels(written) != alone_pixels[origin, output_format]:
                        row["other pixels"] += 1
                        if origin in judged and not strictly_accepted(folder / name, file_type):
                            row["refused by others"] += 1
                            shutil.copy(folder / name, options.keep)
            for name in origins:
                (folder / name).unlink()
            print(f"{made} of {options.count}", end="\r", file=sys.stderr, flush=True)

    columns = ["made", "exported", "other pixels", "refused by others", "bad output"]
    print("\t".join(["type", "mutant", *columns]))
    for (file_type, kind), row in sorted(counts.items()):
        print("\t".join([file_type, kind, *(str(row[column]) for column in columns)]))
    print(f"whole photos harmed: {harmed}")
    return 1 if harmed or any(row["bad output"] for row in counts.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
