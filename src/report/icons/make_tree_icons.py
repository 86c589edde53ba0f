#!/usr/bin/env python3
"""Draws the icons of the tree menu (resources/program/gifs) as small GIF files.

Each icon is drawn here pixel by pixel on a 16 x 22 grid, written as XPM text and turned
into a GIF with transparency by ImageMagick's `convert`. Run it again after a change:
    python3 src/report/icons/make_tree_icons.py resources/program/gifs
"""
import os
import subprocess
import sys
import tempfile

W, H = 16, 22
MID_X, MID_Y = 7, 11

PALETTE = {
    ".": None,          # transparent
    "l": "#A9B2BC",     # tree lines
    "b": "#7D8894",     # box border
    "w": "#FFFFFF",
    "s": "#2B3744",     # plus / minus sign
    "f": "#E8A838",     # folder body
    "F": "#C98A1C",     # folder edge
    "t": "#F4C96B",     # folder tab / open flap
    "p": "#FFFFFF",     # page
    "P": "#6F7B87",     # page edge
    "r": "#9BB4D1",     # text lines on a page
    "g": "#1F5FA8",     # chart line
    "G": "#C62828",     # chart forecast
}


def blank():
    return [["."] * W for _ in range(H)]


def vline(img, x, y0, y1, c="l"):
    for y in range(y0, y1 + 1):
        img[y][x] = c


def hline(img, y, x0, x1, c="l"):
    for x in range(x0, x1 + 1):
        img[y][x] = c


def rect(img, x0, y0, x1, y1, edge, fill=None):
    for y in range(y0, y1 + 1):
        for x in range(x0, x1 + 1):
            if x in (x0, x1) or y in (y0, y1):
                img[y][x] = edge
            elif fill:
                img[y][x] = fill


def connector(last):
    img = blank()
    vline(img, MID_X, 0, MID_Y if last else H - 1)
    hline(img, MID_Y, MID_X, W - 1)
    return img


def with_box(img, plus):
    rect(img, MID_X - 4, MID_Y - 4, MID_X + 4, MID_Y + 4, "b", "w")
    hline(img, MID_Y, MID_X - 2, MID_X + 2, "s")
    if plus:
        vline(img, MID_X, MID_Y - 2, MID_Y + 2, "s")
    return img


def folder(open_):
    img = blank()
    # tab
    hline(img, 5, 1, 6, "F")
    hline(img, 6, 1, 6, "t")
    rect(img, 1, 6, 14, 17, "F", "f")
    if open_:
        # the open flap, slanted over the body
        for i, y in enumerate(range(10, 18)):
            x0 = 3 - min(i, 2) // 2 if i < 2 else 2 + (i - 2) // 3
            hline(img, y, max(1, x0 + (y - 10) // 3), 15 if y == 10 else 14, "t")
        hline(img, 9, 3, 15, "F")
        hline(img, 17, 1, 14, "F")
    return img


def doc():
    img = blank()
    rect(img, 2, 3, 12, 18, "P", "p")
    # folded corner
    for i in range(4):
        img[3 + i][9 + i] = "P"
        for x in range(9 + i + 1, 13):
            img[3 + i][x] = "."
    hline(img, 7, 9, 12, "P")
    vline(img, 9, 3, 7, "P")
    for y in (9, 11, 13, 15):
        hline(img, y, 4, 10, "r")
    return img


def graph():
    img = blank()
    rect(img, 1, 4, 14, 17, "P", "p")
    points = [(3, 14), (5, 12), (7, 13), (9, 9)]
    forecast = [(9, 9), (11, 8), (12, 6)]
    for pts, c in ((points, "g"), (forecast, "G")):
        for (x0, y0), (x1, y1) in zip(pts, pts[1:]):
            steps = max(abs(x1 - x0), abs(y1 - y0))
            for k in range(steps + 1):
                x = round(x0 + (x1 - x0) * k / steps)
                y = round(y0 + (y1 - y0) * k / steps)
                img[y][x] = c
                if y + 1 <= 16:
                    img[y + 1][x] = c
    return img


def icons():
    return {
        "blank": blank(),
        "vertline": (lambda i: (vline(i, MID_X, 0, H - 1), i)[1])(blank()),
        "node": connector(False),
        "lastnode": connector(True),
        "pnode": with_box(connector(False), True),
        "plastnode": with_box(connector(True), True),
        "mnode": with_box(connector(False), False),
        "mlastnode": with_box(connector(True), False),
        "folderclosed": folder(False),
        "folderopen": folder(True),
        "doc": doc(),
        "graph": graph(),
    }


def xpm(name, img):
    used = sorted({c for row in img for c in row})
    lines = ['/* XPM */', 'static char *%s[] = {' % name,
             '"%d %d %d 1",' % (W, H, len(used))]
    for c in used:
        colour = PALETTE[c]
        lines.append('"%s c %s",' % (c, colour if colour else "None"))
    for row in img:
        lines.append('"%s",' % "".join(row))
    lines[-1] = lines[-1].rstrip(",")
    lines.append("};")
    return "\n".join(lines) + "\n"


def main():
    target = sys.argv[1] if len(sys.argv) > 1 else "."
    os.makedirs(target, exist_ok=True)
    with tempfile.TemporaryDirectory() as work:
        for name, img in icons().items():
            source = os.path.join(work, name + ".xpm")
            with open(source, "w") as f:
                f.write(xpm(name, img))
            subprocess.run(["convert", source, "+set", "date:create", "+set", "date:modify",
                            os.path.join(target, name + ".gif")], check=True)


if __name__ == "__main__":
    main()
