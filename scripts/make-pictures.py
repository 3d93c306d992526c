#!/usr/bin/env python3
"""Draws the pictures of the document pages into resources/pictures/.

The bitmaps are uncompressed 24-bit BMP files; the icons hold a 32x32, a 48x48 and a
64x64 image, each with a 24-bit colour part and a 1-bit mask. Everything that is meant to be see-through has
the transparent colour RGB(0, 255, 255), which the pages skip when they draw a bitmap;
the icons carry it in their mask instead. Run it again after changing a drawing:

    python3 scripts/make-pictures.py
"""

import os
import struct

TRANSPARENT = (0, 255, 255)
BLACK = (0, 0, 0)
WHITE = (255, 255, 255)
TEXT = (64, 64, 64)
LIGHT = (192, 192, 192)
INK = (0, 0, 160)
DOT = (40, 40, 40)

# Glyphs: 3x5 for small numbers and the maker's name, 10x14 for the orientation letter.
SMALL_GLYPHS = {
    "1": [".#.", "##.", ".#.", ".#.", "###"],
    "2": ["##.", "..#", ".#.", "#..", "###"],
    "3": ["##.", "..#", ".#.", "..#", "##."],
    "A": [".#.", "#.#", "###", "#.#", "#.#"],
    "E": ["###", "#..", "##.", "#..", "###"],
    "K": ["#.#", "#.#", "##.", "#.#", "#.#"],
    "O": [".#.", "#.#", "#.#", "#.#", ".#."],
    "R": ["##.", "#.#", "##.", "#.#", "#.#"],
    "S": [".##", "#..", ".#.", "..#", "##."],
    "T": ["###", ".#.", ".#.", ".#.", ".#."],
    "V": ["#.#", "#.#", "#.#", "#.#", ".#."],
}
LETTER_A = [
    "....##....", "...####...", "...####...", "..##..##..", "..##..##..", "..##..##..",
    ".##....##.", ".##....##.", ".########.", ".########.", "##......##", "##......##",
    "##......##", "##......##"]


class Canvas:
    def __init__(self, width, height):
        self.width = width
        self.height = height
        self.pixels = [[TRANSPARENT] * width for _ in range(height)]

    def put(self, x, y, colour):
        if 0 <= x < self.width and 0 <= y < self.height:
            self.pixels[y][x] = colour

    def fill(self, x, y, w, h, colour):
        for yy in range(y, y + h):
            for xx in range(x, x + w):
                self.put(xx, yy, colour)

    def frame(self, x, y, w, h, colour=BLACK):
        for xx in range(x, x + w):
            self.put(xx, y, colour)
            self.put(xx, y + h - 1, colour)
        for yy in range(y, y + h):
            self.put(x, yy, colour)
            self.put(x + w - 1, yy, colour)

    def line(self, x0, y0, x1, y1, colour=BLACK):
        dx, dy = abs(x1 - x0), -abs(y1 - y0)
        sx, sy = (1 if x0 < x1 else -1), (1 if y0 < y1 else -1)
        err = dx + dy
        while True:
            self.put(x0, y0, colour)
            if (x0, y0) == (x1, y1):
                return
            e2 = 2 * err
            if e2 >= dy:
                err += dy
                x0 += sx
            if e2 <= dx:
                err += dx
                y0 += sy

    def disc(self, cx, cy, r, colour):
        for yy in range(int(cy - r) - 1, int(cy + r) + 2):
            for xx in range(int(cx - r) - 1, int(cx + r) + 2):
                if (xx - cx) ** 2 + (yy - cy) ** 2 <= r * r:
                    self.put(xx, yy, colour)

    def ring(self, cx, cy, r, colour=BLACK):
        for yy in range(int(cy - r) - 1, int(cy + r) + 2):
            for xx in range(int(cx - r) - 1, int(cx + r) + 2):
                d = (xx - cx) ** 2 + (yy - cy) ** 2
                if (r - 1) ** 2 < d <= r * r:
                    self.put(xx, yy, colour)

    def glyph(self, rows, x, y, colour=BLACK, scale=1):
        for r, row in enumerate(rows):
            for c, cell in enumerate(row):
                if cell == "#":
                    self.fill(x + c * scale, y + r * scale, scale, scale, colour)

    def text(self, s, x, y, colour=BLACK):
        for ch in s:
            self.glyph(SMALL_GLYPHS[ch], x, y, colour)
            x += 4


def rotate_left(rows):
    """The glyph turned a quarter anticlockwise: its top points left."""
    w = len(rows[0])
    return ["".join(rows[c][w - 1 - r] for c in range(len(rows))) for r in range(w)]


def rotate_right(rows):
    """The glyph turned a quarter clockwise: its top points right."""
    h = len(rows)
    return ["".join(rows[h - 1 - c][r] for c in range(h)) for r in range(len(rows[0]))]


def sheet(cv, x, y, w, h, ear=6, ear_left=False):
    """A white sheet with a black outline and a folded corner at the top."""
    cv.fill(x, y, w, h, WHITE)
    cv.frame(x, y, w, h)
    if not ear:
        return
    cx = x if ear_left else x + w - 1
    step = 1 if ear_left else -1
    for i in range(ear):
        for j in range(ear - i):
            cv.put(cx + step * (ear - 1 - j), y + i, TRANSPARENT)
    for i in range(ear):
        cv.put(cx + step * (ear - 1 - i), y + i, BLACK)
        for j in range(i):
            cv.put(cx + step * (ear - 1 - j), y + i, LIGHT)
    cv.line(cx + step * (ear - 1), y, cx + step * (ear - 1), y + ear - 1)
    cv.line(cx + step * (ear - 1), y + ear - 1, cx, y + ear - 1)


def content(cv, x, y, w, h, right=False):
    """Lines of text inside a sheet's area; short last lines show the reading side."""
    row = 0
    for yy in range(y, y + h - 1, 4):
        length = w if row % 3 != 2 else w * 2 // 3
        start = x + w - length if right else x
        cv.line(start, yy, start + length - 1, yy, TEXT)
        row += 1


def turn_over_arrow(cv, x0, x1, y):
    """An arch from one side to the other, with its head on the right."""
    mid, half = (x0 + x1) / 2, (x1 - x0) / 2
    points = [(x, round(y - 5 * (1 - ((x - mid) / half) ** 2))) for x in range(x0, x1 + 1)]
    for (xa, ya), (xb, yb) in zip(points, points[1:]):
        cv.line(xa, ya, xb, yb)
    cv.line(x1 - 3, y, x1, y)
    cv.line(x1, y - 3, x1, y)


def stack(cv, x, y, numbers, w=13, h=18, dx=5, dy=6):
    """Sheets laid over each other, back first; each shows its number."""
    for i, n in enumerate(numbers):
        sx, sy = x + i * dx, y + i * dy
        sheet(cv, sx, sy, w, h, ear=0)
        last = i == len(numbers) - 1
        if last:
            cv.glyph(SMALL_GLYPHS[n], sx + (w - 6) // 2, sy + (h - 10) // 2, BLACK, 2)
        else:
            cv.glyph(SMALL_GLYPHS[n], sx + 1, sy + 1)


def braille_cell(cv, x, y, raised, r, gap_x, gap_y, shaded):
    """Six dot positions: raised ones are solid, the others a thin ring."""
    for n in range(6):
        cx = x + (n // 3) * gap_x
        cy = y + (n % 3) * gap_y
        if n + 1 in raised:
            cv.disc(cx, cy, r, DOT)
            if shaded:
                cv.disc(cx - r / 3, cy - r / 3, r / 3, WHITE)
            cv.ring(cx, cy, r)
        else:
            cv.ring(cx, cy, r, TEXT)


def portrait():
    cv = Canvas(48, 48)
    sheet(cv, 9, 4, 30, 40)
    cv.glyph(LETTER_A, 19, 17)
    return cv


def landscape(turn):
    cv = Canvas(48, 48)
    sheet(cv, 4, 9, 40, 30)
    letter = turn(LETTER_A)
    cv.glyph(letter, 17, 19)
    return cv


def single_sided():
    cv = Canvas(48, 48)
    sheet(cv, 10, 4, 28, 40)
    content(cv, 14, 13, 20, 28)
    return cv


def double_sided(empty_back):
    # Front and back of one sheet side by side; the back is seen mirrored.
    cv = Canvas(48, 48)
    sheet(cv, 1, 8, 21, 32, ear=5)
    content(cv, 4, 16, 15, 21)
    sheet(cv, 26, 8, 21, 32, ear=5, ear_left=True)
    if not empty_back:
        content(cv, 29, 16, 15, 21, right=True)
    turn_over_arrow(cv, 11, 36, 6)
    return cv


def collation(collated):
    cv = Canvas(48, 48)
    if collated:
        stack(cv, 1, 9, "321")
        stack(cv, 24, 9, "321")
    else:
        stack(cv, 3, 12, "11")
        stack(cv, 26, 12, "22")
    return cv


def fold_line(folded):
    cv = Canvas(48, 48)
    sheet(cv, 7, 4, 34, 40)
    if folded:
        content(cv, 10, 12, 11, 30)
        content(cv, 27, 12, 11, 30)
        for yy in range(5, 43, 4):
            cv.line(24, yy, 24, yy + 1)
        for i in range(3):
            cv.line(24 - i, 1 + i, 24 + i, 1 + i)
            cv.line(24 - i, 46 - i, 24 + i, 46 - i)
    else:
        content(cv, 10, 12, 28, 30)
    return cv


def logo():
    # The maker's mark: a braille cell showing "k" (dots 1 and 3) and the name.
    cv = Canvas(64, 32)
    braille_cell(cv, 7, 6, {1, 3}, 3.5, 10, 10, shaded=False)
    cv.text("KESTROVA", 28, 14)
    cv.line(28, 21, 58, 21, INK)
    return cv


def ink_drop(cv, cx, cy, r, top, colour):
    """A drop of ink: a round bottom under a point at height `top`."""
    for yy in range(top, cv.height):
        for xx in range(cv.width):
            px, py = xx + 0.5, yy + 0.5
            inside = (px - cx) ** 2 + (py - cy) ** 2 <= r * r
            if py < cy:
                half = r * (py - top) / (cy - top)
                inside = inside or abs(px - cx) <= half
            if inside:
                cv.put(xx, yy, colour)


def color_ink_icon(size):
    # Colour printing: cyan, magenta and yellow drops.
    k = size / 32
    cv = Canvas(size, size)
    ink_drop(cv, 8.5 * k, 23 * k, 6 * k, round(12 * k), (0, 174, 239))
    ink_drop(cv, 23.5 * k, 23 * k, 6 * k, round(12 * k), (236, 0, 140))
    ink_drop(cv, 16 * k, 13 * k, 6 * k, round(1 * k), (255, 222, 0))
    outline(cv, round(k))
    return cv


def grayscale_ink_icon(size):
    # Grayscale printing: one gray drop.
    k = size / 32
    cv = Canvas(size, size)
    ink_drop(cv, 15.5 * k, 20 * k, 9 * k, round(2 * k), (128, 128, 128))
    outline(cv, round(k))
    cv.disc(11.5 * k, 21 * k, 2.2 * k, WHITE)
    return cv


def outline(cv, width):
    """A dark edge `width` pixels wide on every drawn part, and a light one pixel around
    it, so that the drops stand out on a dark page as well as on a light one."""
    def clear(x, y):
        return not (0 <= x < cv.width and 0 <= y < cv.height) or cv.pixels[y][x] == TRANSPARENT
    around = ((1, 0), (-1, 0), (0, 1), (0, -1))
    edge = set()
    for _ in range(width):
        ring = [(x, y) for y in range(cv.height) for x in range(cv.width)
                if not clear(x, y) and (x, y) not in edge
                and any(clear(x + dx, y + dy) or (x + dx, y + dy) in edge for dx, dy in around)]
        edge.update(ring)
    for x, y in edge:
        cv.put(x, y, BLACK)
    halo = [(x, y) for y in range(cv.height) for x in range(cv.width)
            if clear(x, y) and any(not clear(x + dx, y + dy) for dx, dy in around)]
    for x, y in halo:
        cv.put(x, y, WHITE)


def dib_rows(cv):
    """Bottom-up BGR rows, each padded to four bytes."""
    pad = b"\0" * ((4 - cv.width * 3 % 4) % 4)
    return b"".join(
        b"".join(bytes((b, g, r)) for r, g, b in row) + pad for row in reversed(cv.pixels))


def write_bmp(path, cv):
    bits = dib_rows(cv)
    info = struct.pack("<IiiHHIIiiII", 40, cv.width, cv.height, 1, 24, 0, len(bits), 2835, 2835, 0, 0)
    header = struct.pack("<2sIHHI", b"BM", 14 + len(info) + len(bits), 0, 0, 14 + len(info))
    with open(path, "wb") as f:
        f.write(header + info + bits)


def icon_image(cv):
    """One image of an icon file: its header, 24-bit colours and 1-bit mask."""
    colours = Canvas(cv.width, cv.height)
    mask = bytearray()
    stride = (cv.width + 31) // 32 * 4
    for y in reversed(range(cv.height)):
        row = bytearray(stride)
        for x in range(cv.width):
            if cv.pixels[y][x] == TRANSPARENT:
                row[x // 8] |= 0x80 >> (x % 8)
                colours.pixels[y][x] = BLACK
            else:
                colours.pixels[y][x] = cv.pixels[y][x]
        mask += row
    bits = dib_rows(colours) + bytes(mask)
    return struct.pack("<IiiHHIIiiII", 40, cv.width, cv.height * 2, 1, 24, 0, len(bits), 0, 0, 0, 0) + bits


def write_ico(path, canvases):
    """An icon file with one image per size, so that large text gets a drawn one."""
    images = [icon_image(cv) for cv in canvases]
    offset = 6 + 16 * len(images)
    directory = struct.pack("<HHH", 0, 1, len(images))
    for cv, image in zip(canvases, images):
        directory += struct.pack("<BBBBHHII", cv.width, cv.height, 0, 0, 1, 24, len(image), offset)
        offset += len(image)
    with open(path, "wb") as f:
        f.write(directory + b"".join(images))


BITMAPS = {
    "portrait.bmp": portrait,
    "landscape.bmp": lambda: landscape(rotate_left),
    "landscape_inverse.bmp": lambda: landscape(rotate_right),
    "single_sided.bmp": single_sided,
    "double_sided.bmp": lambda: double_sided(False),
    "double_sided_empty_page.bmp": lambda: double_sided(True),
    "collated.bmp": lambda: collation(True),
    "uncollated.bmp": lambda: collation(False),
    "fold_line.bmp": lambda: fold_line(True),
    "no_fold_line.bmp": lambda: fold_line(False),
    "logo.bmp": logo,
}
ICON_SIZES = (32, 48, 64)  # text at 100%, 150% and 200%
ICONS = {
    "color_ink.ico": color_ink_icon,
    "grayscale_ink.ico": grayscale_ink_icon,
}


def main():
    folder = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "resources", "pictures")
    os.makedirs(folder, exist_ok=True)
    for name, draw in BITMAPS.items():
        write_bmp(os.path.join(folder, name), draw())
    for name, draw in ICONS.items():
        write_ico(os.path.join(folder, name), [draw(size) for size in ICON_SIZES])


if __name__ == "__main__":
    main()
