#!/usr/bin/env python3
"""Frames photos in many frames and lays the results out on sheets, one sheet for each photo, to be looked at.

    tools/contactsheet.py FERROW_BATCH FOLDER PHOTO... [--logo FILE]

Writes FOLDER/<photo>.png. What ferrow-batch says of a photo stands below its picture. Needs ImageMagick's montage.
"""
import argparse
import pathlib
import subprocess
import tempfile

LONG_TEXT = "{cameraModel} · {lens} · {focalLength} · {aperture} · {shutterSpeed} · ISO {iso}"

# Name and options of each frame. Every feature alone, then those that meet.
FRAMES = {
    "default": [],
    "percent": ["--border", "6%"],
    "no border": ["--border", "0px", "--caption-position", "image-bottom-right", "--caption-color", "#ffffff"],
    "sides": ["--border-sides", "4%,4%,18%,4%", "--caption-size", "5%", "--caption-position", "border-bottom-center",
              "--caption-align", "center", "--caption-vertical-padding", "6%"],
    "1:1": ["--border", "4%", "--shape", "1:1", "--no-caption"],
    "4:5 turning": ["--border", "4%", "--shape", "4:5", "--shape-turns", "--no-caption"],
    "16:9 up": ["--border", "4%", "--shape", "16:9", "--balance", "-100", "--no-caption"],
    "9:16 down": ["--border", "4%", "--shape", "9:16", "--balance", "60", "--no-caption"],
    "blur": ["--border", "10%", "--background", "blur", "--no-caption"],
    "blur, square": ["--border", "5%", "--background", "blur:70,40", "--shape", "1:1", "--photo-shadow", "--corners",
                     "4%", "--no-caption"],
    "line": ["--border", "10%", "--line", "0.5%,3%,#c8a96a", "--no-caption"],
    "line, corners": ["--border", "10%", "--line", "0.5%,3%,#c8a96a", "--corners", "8%", "--no-caption"],
    "line at the edge": ["--border", "6%", "--line", "1%,0%,#000000", "--no-caption"],
    "shadow": ["--border", "10%", "--photo-shadow", "--border-color", "#f4f1ea", "--no-caption"],
    "translucent": ["--border", "10%", "--border-color", "#3060a080", "--corners", "6%", "--format", "png",
                    "--no-caption"],
    "shrinks": ["--border", "6%", "--caption", LONG_TEXT, "--caption-size", "8%", "--caption-fit", "--caption-padding",
                "4%", "--caption-vertical-padding", "1%"],
    "wide letters": ["--border", "10%", "--caption", "{cameraModel}", "--caption-size", "3%", "--caption-uppercase",
                     "--caption-letter-spacing", "20", "--caption-align", "center", "--caption-position",
                     "border-bottom-center", "--caption-vertical-padding", "3%"],
    "two captions": ["--border", "8%", "--caption", "{cameraModel}", "--caption-size", "2.4%", "--caption-position",
                     "border-bottom-left", "--caption-align", "left", "--caption-padding", "8%",
                     "--caption-vertical-padding", "2.5%", "--caption", "{aperture} · {shutterSpeed}",
                     "--caption-size", "2.4%", "--caption-position", "border-bottom-right", "--caption-padding", "8%",
                     "--caption-vertical-padding", "2.5%"],
    "on the photo": ["--border", "3%", "--caption", "{cameraModel}\n{filename}", "--caption-size", "5%",
                     "--caption-position", "image-center", "--caption-align", "center", "--caption-color", "#ffffff"],
    "all of it": ["--border-sides", "6%,6%,20%,6%", "--shape", "4:5", "--balance", "-40", "--background", "blur:50,30",
                  "--line", "0.4%,2%,#ffffff", "--corners", "3%", "--photo-shadow", "--caption", "{cameraModel}",
                  "--caption-font", "serif", "--caption-size", "4%", "--caption-color", "#ffffff",
                  "--caption-position", "border-bottom-center", "--caption-align", "center", "--caption-fit",
                  "--caption-vertical-padding", "7%"],
}
LOGO_FRAMES = {
    "logo in the border": ["--border", "12%", "--logo-position", "border-bottom-left", "--logo-width", "14",
                           "--no-caption"],
    "logo over a caption": ["--border", "3%", "--caption", "{cameraModel} and more of it", "--caption-size", "5%",
                            "--caption-position", "image-bottom-right", "--logo-position", "image-bottom-right"],
}


def framed(program, photo, options, folder):
    """The framed copy, absent where there is none, and what was said."""
    run = subprocess.run([program, "--quiet", "--long-side", "900", *options, "--output", folder, photo],
                         capture_output=True, text=True, check=False)
    said = " / ".join(line.split(": ", 1)[-1] for line in run.stderr.splitlines())
    made = list(pathlib.Path(folder).iterdir())
    return (made[0] if made else None), said


def sheet(program, photo, logo, target):
    frames = dict(FRAMES)
    if logo:
        frames |= {name: [*options, "--logo", logo] for name, options in LOGO_FRAMES.items()}
    cells = []
    with tempfile.TemporaryDirectory() as scratch:
        for number, (name, options) in enumerate(frames.items()):
            folder = pathlib.Path(scratch, str(number))
            folder.mkdir()
            picture, said = framed(program, photo, options, str(folder))
            label = name if not said else f"{name}: {said[:34]}"
            cells += ["-label", label.replace("%", "%%").replace("\\", ""), picture or "xc:red"]
        subprocess.run(["montage", "-background", "#909090", "-pointsize", "13", *cells, "-geometry",
                        "330x330+10+10", "-tile", "6x", target], check=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program")
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("photos", nargs="+", type=pathlib.Path)
    parser.add_argument("--logo")
    arguments = parser.parse_args()
    arguments.folder.mkdir(parents=True, exist_ok=True)
    for photo in arguments.photos:
        target = arguments.folder / (photo.stem + ".png")
        sheet(arguments.program, photo, arguments.logo, target)
        print(target)


if __name__ == "__main__":
    main()
