#!/usr/bin/env python3
"""Generates src/engine/fonts/stroke_font_table.cpp, the built-in single-stroke font.

Basic Latin and Greek come from the simplex alphabets of the Hershey fonts (Debian package hershey-fonts-data); Cyrillic,
symbols and accents are drawn below; accented letters are composed by their Unicode decomposition.

    python3 resources/stroke-font/make_stroke_font.py [/usr/share/hershey-fonts] > src/engine/fonts/stroke_font_table.cpp

Coordinates here: 21 units are a capital height, y up from the baseline, x from the start of the character.
"""
import math
import sys
import unicodedata

CAP = 21.0
FONTS = sys.argv[1] if len(sys.argv) > 1 else "/usr/share/hershey-fonts"


class G:
    """A glyph: polylines and its advance."""

    def __init__(self, strokes, advance):
        self.strokes = [[(float(x), float(y)) for x, y in s] for s in strokes if s]
        self.advance = float(advance)

    def points(self):
        return [p for s in self.strokes for p in s]

    def box(self):
        xs = [p[0] for p in self.points()]
        ys = [p[1] for p in self.points()]
        return min(xs), min(ys), max(xs), max(ys)

    def map(self, f, advance=None):
        return G([[f(x, y) for x, y in s] for s in self.strokes], self.advance if advance is None else advance)

    def scale(self, sx, sy=None):
        sy = sx if sy is None else sy
        return self.map(lambda x, y: (x * sx, y * sy), self.advance * sx)

    def shift(self, dx, dy=0.0):
        return self.map(lambda x, y: (x + dx, y + dy))

    def mirror(self):
        return self.map(lambda x, y: (self.advance - x, y))

    def turned(self):
        """Turned by 180 degrees so that it keeps its height above the baseline."""
        _, y0, _, y1 = self.box()
        return self.map(lambda x, y: (self.advance - x, y0 + y1 - y))

    def plus(self, *strokes, advance=None):
        return G(self.strokes + [list(s) for s in strokes], self.advance if advance is None else advance)

    def without(self, *indices):
        return G([s for i, s in enumerate(self.strokes) if i not in indices], self.advance)


def read_hershey(name):
    glyphs = []
    for line in open(f"{FONTS}/{name}.jhf", encoding="ascii"):
        line = line.rstrip("\n")
        if not line.strip():
            continue
        data = line[8:]
        left = ord(data[0]) - ord("R")
        right = ord(data[1]) - ord("R")
        strokes, run = [], []
        for i in range(2, len(data) - 1, 2):
            if data[i] == " " and data[i + 1] == "R":
                strokes.append(run)
                run = []
            else:
                run.append((ord(data[i]) - ord("R") - left, 9 - (ord(data[i + 1]) - ord("R"))))
        strokes.append(run)
        glyphs.append(G(strokes, right - left))
    return glyphs


def arc(cx, cy, rx, ry, a0, a1, step=22.5):
    n = max(2, math.ceil(abs(a1 - a0) / step))
    return [(cx + rx * math.cos(math.radians(a0 + (a1 - a0) * i / n)),
             cy + ry * math.sin(math.radians(a0 + (a1 - a0) * i / n))) for i in range(n + 1)]


def circle(cx, cy, r, step=22.5):
    return arc(cx, cy, r, r, 0, 360, step)


def dot(x, y, r=1.0):
    return [(x, y + r), (x - r, y), (x, y - r), (x + r, y), (x, y + r)]


def bowl(x0, x1, y0, y1):
    """Right bowl of B, R, P: from the stem at the top round to the stem at the bottom."""
    r = (y1 - y0) / 2
    cx = x1 - r * 0.85
    return [(x0, y1)] + arc(cx, (y0 + y1) / 2, x1 - cx, r, 90, -90) + [(x0, y0)]


def drawn(strokes, lsb=4, rsb=3):
    """A glyph whose ink starts at x = 0 in the drawing below."""
    g = G(strokes, 0)
    x0, _, x1, _ = g.box()
    return g.map(lambda x, y: (x - x0 + lsb, y), x1 - x0 + lsb + rsb)


font = {}
latin = read_hershey("rowmans")
assert len(latin) == 96
for i in range(95):
    font[chr(32 + i)] = latin[i]
# Simple forms for signs that the source draws heavy or as an arrow.
font["["] = drawn([[(5, 25), (0, 25), (0, -6), (5, -6)]], 4, 3)
font["]"] = font["["].mirror()
font["{"] = drawn([[(7, 25), (5, 24), (4, 22), (4, 13), (3, 11), (0, 9.5), (3, 8), (4, 6), (4, -3), (5, -5), (7, -6)]], 3, 3)
font["}"] = font["{"].mirror()
font["|"] = drawn([[(0, 25), (0, -6)]], 4, 4)
font["^"] = drawn([[(0, 13), (6, 21), (12, 13)]], 3, 3)
font["~"] = drawn([[(0, 7), (1, 9.5), (3, 11), (5, 11), (7, 10), (10, 8), (12, 7), (14, 7), (16, 8.5), (17, 11)]], 4, 4)
greek = read_hershey("greeks")
upper = "ΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟΠΡΣΤΥΦΧΨΩ"
lower = "αβγδεζηθικλμνξοπρστυφχψω"
for i in range(24):
    font[upper[i]] = greek[ord("A") - 32 + i]
    font[lower[i]] = greek[ord("a") - 32 + i]
font["ς"] = drawn([arc(6, 8, 6, 6, 45, 200) + [(1, 4), (4, 2), (8, 1), (9, -1), (8, -4), (5, -6)]])
font["϶"] = font["ε"].mirror()
font["ϑ"], font["ϕ"], font["ϖ"], font["ϱ"], font["ϐ"], font["ϰ"] = (font[c] for c in "θφπρβκ")
font["·"] = drawn([dot(1, 10)], 4, 4)

# Cyrillic ------------------------------------------------------------------------------------------------------------
for cyr, lat in zip("АВЕКМНОРСТХІЅЈ", "ABEKMHOPCTXISJ"):
    font[cyr] = font[lat]
for cyr, lat in zip("аеорсухіѕј", "aeopcyxisj"):
    font[cyr] = font[lat]
font["Г"], font["П"], font["Ф"] = font["Γ"], font["Π"], font["Φ"]
stem = [(0, 21), (0, 0)]
font["Б"] = drawn([stem, [(0, 21), (12, 21)], bowl(0, 13, 0, 12)])
font["Д"] = drawn([[(2, 0), (5, 8), (6, 21), (14, 21), (14, 0)], [(0, -5), (0, 0), (17, 0), (17, -5)]], 2, 2)
font["Ж"] = drawn([[(0, 21), (6, 11), (0, 0)], [(6, 11), (12, 11)], [(18, 21), (12, 11), (18, 0)], [(9, 21), (9, 0)]], 2, 2)
font["З"] = drawn([arc(6, 16, 6, 5, 155, -90) + [(4, 11)], [(6, 11)] + arc(6.5, 5.5, 7, 5.5, 90, -155)], 3, 3)
font["И"] = drawn([[(0, 21), (0, 0), (13, 21), (13, 0)]], 4, 4)
font["Л"] = drawn([[(0, 0), (2, 1), (4, 6), (5, 21), (14, 21), (14, 0)]], 2, 4)
font["У"] = drawn([[(0, 21), (7, 7)], [(14, 21), (7, 7), (5, 3), (3, 1), (0, 0)]], 2, 2)
font["Ц"] = drawn([[(0, 21), (0, 0), (13, 0), (13, 21)], [(13, 0), (16, 0), (16, -5)]], 4, 2)
font["Ч"] = drawn([[(0, 21), (0, 14), (1, 11), (4, 9), (8, 9), (13, 11)], [(13, 21), (13, 0)]], 3, 4)
font["Ш"] = drawn([[(0, 21), (0, 0), (18, 0), (18, 21)], [(9, 21), (9, 0)]], 4, 4)
font["Щ"] = drawn([[(0, 21), (0, 0), (18, 0), (18, 21)], [(9, 21), (9, 0)], [(18, 0), (21, 0), (21, -5)]], 4, 2)
font["Ъ"] = drawn([[(0, 21), (5, 21), (5, 0)], bowl(5, 17, 0, 12)], 2, 3)
font["Ы"] = drawn([stem, bowl(0, 11, 0, 12), [(16, 21), (16, 0)]], 4, 4)
font["Ь"] = drawn([stem, bowl(0, 12, 0, 12)])
font["Э"] = drawn([arc(6, 10.5, 9, 10.5, 145, -145), [(5, 10.5), (15, 10.5)]], 3, 3)
font["Є"] = font["Э"].mirror()
font["Ю"] = drawn([stem, [(0, 10.5), (6, 10.5)], arc(13, 10.5, 7, 10.5, 0, 360)], 4, 2)
font["Я"] = font["R"].mirror()
font["Ґ"] = drawn([[(0, 0), (0, 21), (11, 21), (11, 25)]], 4, 1)
font["Џ"] = drawn([[(0, 21), (0, 0), (14, 0), (14, 21)], [(7, 0), (7, -5)]], 4, 4)
font["Љ"] = drawn([[(0, 0), (2, 1), (4, 6), (5, 21), (13, 21), (13, 0)], bowl(13, 23, 0, 12)], 2, 3)
font["Њ"] = drawn([stem, [(12, 21), (12, 0)], [(0, 12), (12, 12)], bowl(12, 22, 0, 12)], 4, 3)
font["Ђ"] = drawn([[(0, 21), (14, 21)], [(5, 21), (5, 0)], [(5, 12), (11, 12), (15, 9), (15, 2), (12, -2), (9, -3)]], 1, 3)
font["Ћ"] = drawn([[(0, 21), (14, 21)], [(5, 21), (5, 0)], [(5, 12), (11, 12), (15, 9), (15, 0)]], 1, 3)
for c in "вгджзийклмнптцчшщъыьэюяєґџљњћ":
    if c.upper() in font:
        font[c] = font[c.upper()].scale(0.8, 14 / 21)
font["ф"] = drawn([arc(6, 7, 6, 7, 0, 360), [(6, 21), (6, -7)]], 3, 3)
font["б"] = drawn([arc(6, 6.5, 6, 6.5, 0, 360), [(0, 7), (0, 12), (1, 16), (4, 19), (8, 20), (11, 22)]], 3, 3)
font["ђ"] = drawn([[(3, 21), (3, 0)], [(0, 17), (9, 17)], [(3, 10), (6, 13), (9, 14), (12, 13), (13, 10), (13, -2), (11, -6), (8, -7)]], 2, 4)
font["ћ"] = drawn([[(3, 21), (3, 0)], [(0, 17), (9, 17)], [(3, 10), (6, 13), (9, 14), (12, 13), (13, 10), (13, 0)]], 2, 4)

# Letters that do not decompose -----------------------------------------------------------------------------------------
font["ı"] = drawn([[(0, 14), (0, 0)]], 4, 4)
font["ȷ"] = drawn([[(3, 14), (3, -3), (2, -6), (0, -7)]], 2, 4)
font["Ø"] = font["O"].plus([(3, -2), (19, 23)])
font["ø"] = font["o"].plus([(3, -2), (15, 16)])
font["Æ"] = drawn([[(0, 0), (10, 21), (21, 21)], [(10, 21), (10, 0), (21, 0)], [(4, 7), (10, 7)], [(10, 11), (18, 11)]], 2, 2)
o, e, a = font["o"], font["e"], font["a"]
font["æ"] = G(a.strokes + e.shift(11).strokes, 11 + e.advance)
font["œ"] = G(o.strokes + e.shift(12).strokes, 12 + e.advance)
font["Œ"] = drawn([arc(8, 10.5, 8, 10.5, 45, 315), [(13, 21), (13, 0), (23, 0)], [(13, 21), (23, 21)], [(13, 11), (20, 11)]], 3, 2)
font["ß"] = drawn([[(0, 0), (0, 16), (1, 19), (4, 21), (7, 21), (10, 19), (10, 15), (8, 13), (5, 12)],
                   [(5, 12), (9, 11), (12, 8), (12, 4), (10, 1), (7, 0), (4, 0)]], 4, 3)
font["ẞ"] = font["ß"].scale(1.1, 1.0)
font["Þ"] = drawn([stem, bowl(0, 13, 5, 16)])
font["þ"] = font["p"].plus([(4, 21), (4, 14)])
font["Ð"] = font["D"].plus([(0, 11), (9, 11)])
font["Đ"] = font["Ð"]
font["ð"] = drawn([arc(6, 6.5, 6, 6.5, 0, 360), [(12, 7), (12, 11), (10, 15), (6, 19), (3, 21)], [(3, 16), (10, 20)]], 3, 3)
font["đ"] = font["d"].plus([(10, 17), (18, 17)])
font["Ħ"] = font["H"].plus([(1, 16), (21, 16)])
font["ħ"] = font["h"].plus([(1, 17), (9, 17)])
font["Ł"] = font["L"].plus([(0, 7), (9, 14)])
font["ł"] = font["l"].plus([(1, 8), (7, 13)])
font["Ŧ"] = font["T"].plus([(4, 10), (12, 10)])
font["ŧ"] = font["t"].plus([(2, 7), (9, 7)])
font["Ŋ"] = font["N"].plus([(18, 0), (18, -3), (16, -6), (13, -7)])
font["ŋ"] = font["n"].plus([(15, 0), (15, -3), (13, -6), (10, -7)])
font["ĸ"] = font["к"]
font["ſ"] = drawn([[(0, 0), (0, 16), (2, 20), (5, 21), (7, 20)]], 4, 2)
font["Ĳ"] = G(font["I"].strokes + font["J"].shift(8).strokes, 8 + font["J"].advance)
font["ĳ"] = G(font["i"].strokes + font["j"].shift(8).strokes, 8 + font["j"].advance)
font["Ŀ"] = font["L"].plus(dot(11, 11))
font["ŀ"] = font["l"].plus(dot(8, 11), advance=11)
font["ŉ"] = G(font["'"].strokes + font["n"].shift(5).strokes, 5 + font["n"].advance)
font["ƒ"] = drawn([[(11, 20), (9, 21), (7, 20), (6, 17), (4, -4), (3, -7), (0, -7)], [(2, 13), (9, 13)]], 2, 2)
font["ơ"], font["Ơ"] = o.plus([(14, 13), (16, 15), (16, 17)]), font["O"].plus([(17, 19), (20, 21), (20, 24)])
font["ư"], font["Ư"] = font["u"].plus([(15, 14), (18, 15), (18, 18)]), font["U"].plus([(18, 20), (22, 21), (22, 24)])
font["ə"] = e.turned()

# Signs -------------------------------------------------------------------------------------------------------------------
space = font[" "]
for c in "\u00a0\u2002\u2007":
    font[c] = space
for c, w in (("\u2003", 21), ("\u2009", 5), ("\u202f", 5), ("\u200a", 3), ("\u2005", 5), ("\u2004", 7), ("\u2006", 4), ("\u2008", 6), ("\u3000", 28)):
    font[c] = G([], w)
for c in "\u200b\u200c\u200d\u2060\ufeff":
    font[c] = G([], 0)
hyphen = drawn([[(0, 9), (9, 9)]], 3, 3)
for c in "\u00ad\u2010\u2011":
    font[c] = hyphen
font["−"] = font["-"]
font["–"] = drawn([[(0, 9), (13, 9)]], 2, 2)
font["—"] = drawn([[(0, 9), (24, 9)]], 1, 1)
font["―"], font["‒"] = font["—"], font["–"]
font["¡"] = font["!"].turned().shift(0, -7)
font["¿"] = font["?"].turned().shift(0, -7)
font["¢"] = font["c"].plus([(11, 18), (7, -4)])
font["£"] = drawn([[(13, 17), (12, 20), (9, 21), (6, 20), (4, 17), (4, 4), (3, 1), (0, 0), (13, 0)], [(1, 11), (10, 11)]], 3, 3)
font["¤"] = drawn([circle(7, 10, 4.5), [(0, 3), (4, 7)], [(14, 3), (10, 7)], [(0, 17), (4, 13)], [(14, 17), (10, 13)]])
font["¥"] = font["Y"].plus([(4, 9), (14, 9)], [(4, 5), (14, 5)])
font["€"] = drawn([arc(10, 10.5, 8, 10.5, 50, 310), [(0, 13), (11, 13)], [(0, 8), (11, 8)]], 2, 3)
font["₽"] = font["P"].plus([(1, 7), (12, 7)])
font["¦"] = drawn([[(0, 23), (0, 12)], [(0, 7), (0, -4)]])
font["§"] = drawn([[(9, 19), (7, 21), (4, 21), (1, 19), (1, 16), (9, 11), (9, 8), (7, 6)],
                   [(3, 14), (1, 12), (1, 9), (9, 4), (9, 1), (7, -1), (3, -1), (1, 1)]], 3, 3)
font["¶"] = drawn([[(8, -3), (8, 21), (4, 21), (1, 19), (0, 16), (1, 13), (4, 11), (8, 11)], [(8, 21), (12, 21), (12, -3)]], 3, 3)
c_small = font["C"].scale(0.5)
x0, y0, x1, y1 = c_small.box()
font["©"] = drawn([circle(10.5, 10.5, 10.5)] + c_small.shift(10.5 - (x0 + x1) / 2, 10.5 - (y0 + y1) / 2).strokes, 2, 2)
r_small = font["R"].scale(0.5)
x0, y0, x1, y1 = r_small.box()
font["®"] = drawn([circle(10.5, 10.5, 10.5)] + r_small.shift(10.5 - (x0 + x1) / 2, 10.5 - (y0 + y1) / 2).strokes, 2, 2)
t_small, m_small = font["T"].scale(0.5).shift(0, 10.5), font["M"].scale(0.5).shift(8, 10.5)
font["™"] = G(t_small.strokes + m_small.strokes, 8 + m_small.advance)
font["ª"] = a.scale(0.6).shift(0, 12).plus([(2, 9), (10, 9)])
font["º"] = o.scale(0.6).shift(0, 12).plus([(2, 9), (9, 9)])
font["№"] = G(font["N"].strokes + o.scale(0.5).shift(21, 10).plus([(23, 7), (29, 7)]).strokes, 32)
font["«"] = drawn([[(6, 13), (0, 7), (6, 1)], [(12, 13), (6, 7), (12, 1)]], 3, 3)
font["»"] = font["«"].mirror()
font["‹"] = drawn([[(6, 13), (0, 7), (6, 1)]], 3, 3)
font["›"] = font["‹"].mirror()
font["¬"] = drawn([[(0, 11), (16, 11), (16, 5)]], 4, 4)
font["°"] = drawn([circle(3.5, 17.5, 3.5, 30)], 2, 2)
font["˚"] = font["°"]
font["±"] = drawn([[(8, 19), (8, 5)], [(0, 12), (16, 12)], [(0, 1), (16, 1)]], 4, 4)
font["∓"] = drawn([[(8, 15), (8, 1)], [(0, 8), (16, 8)], [(0, 19), (16, 19)]], 4, 4)
font["×"] = drawn([[(0, 16), (14, 2)], [(0, 2), (14, 16)]], 4, 4)
font["÷"] = drawn([[(0, 9), (18, 9)], dot(9, 16), dot(9, 2)], 4, 4)
font["µ"] = font["μ"]
font["•"] = drawn([circle(3, 10, 3, 45), circle(3, 10, 1.5, 45)], 3, 3)
font["∙"], font["⋅"] = font["·"], font["·"]
font["…"] = G([dot(4, 1), dot(12, 1), dot(20, 1)], 24)
quote = [(1, 21), (2, 20), (2, 18), (1, 16), (0, 15)]
font["’"] = drawn([quote], 3, 3)
font["‘"] = font["’"].turned()
font["‚"] = font["’"].shift(0, -18)
font["‛"] = font["’"].mirror()
font["”"] = drawn([quote, [(x + 5, y) for x, y in quote]], 3, 3)
font["“"] = font["”"].turned()
font["„"] = font["”"].shift(0, -18)
font["′"] = drawn([[(3, 21), (0, 14)]], 3, 2)
font["″"] = drawn([[(3, 21), (0, 14)], [(8, 21), (5, 14)]], 3, 2)
font["†"] = drawn([[(5, 21), (5, -2)], [(0, 14), (10, 14)]], 3, 3)
font["‡"] = drawn([[(5, 21), (5, -2)], [(0, 15), (10, 15)], [(0, 5), (10, 5)]], 3, 3)
pct = font["%"]
font["‰"] = pct.plus(circle(pct.advance + 4, 3.5, 3.5, 30), advance=pct.advance + 9)
font["‖"] = drawn([[(0, 25), (0, -7)], [(6, 25), (6, -7)]])
for c, base in zip("¹²³⁰⁴⁵⁶⁷⁸⁹⁺⁻⁼⁽⁾ⁿ", "1230456789+-=()n"):
    font[c] = font[base].scale(0.6).shift(0, 11)
for c, base in zip("₀₁₂₃₄₅₆₇₈₉₊₋₌₍₎", "0123456789+-=()"):
    font[c] = font[base].scale(0.6).shift(0, -4)
for c, top, bottom in (("¼", "1", "4"), ("½", "1", "2"), ("¾", "3", "4"), ("⅓", "1", "3"), ("⅔", "2", "3"),
                       ("⅛", "1", "8"), ("⅜", "3", "8"), ("⅝", "5", "8"), ("⅞", "7", "8"), ("⅕", "1", "5")):
    n, d = font[top].scale(0.55).shift(0, 9.5), font[bottom].scale(0.55).shift(12, 0)
    font[c] = G(n.strokes + d.strokes + [[(5, -1), (19, 22)]], 12 + d.advance)
font["⌀"] = drawn([circle(10, 10.5, 8.5), [(2, 0), (18, 21)]], 2, 2)
font["∅"] = font["⌀"]
font["≤"] = drawn([[(14, 19), (0, 12), (14, 5)], [(0, 0), (14, 0)]], 4, 4)
font["≥"] = font["≤"].mirror()
font["⩽"], font["⩾"] = font["≤"], font["≥"]
font["≠"] = font["="].plus([(7, -1), (19, 19)])
font["≈"] = G(font["~"].shift(0, 4).strokes + font["~"].shift(0, -3).strokes, font["~"].advance)
font["≡"] = drawn([[(0, 15), (18, 15)], [(0, 9), (18, 9)], [(0, 3), (18, 3)]], 4, 4)
font["∼"] = font["~"]
font["≅"] = G(font["~"].shift(0, 6).strokes + font["="].shift(0, -4).strokes, font["~"].advance)
font["∞"] = drawn([arc(5, 9, 5, 4.5, 40, 320) + arc(16, 9, 5, 4.5, -140, 140) + [arc(5, 9, 5, 4.5, 40, 320)[0]]], 3, 3)
font["√"] = drawn([[(0, 10), (3, 12), (8, 0), (15, 25)]], 2, 2)
font["∑"], font["∏"], font["∆"], font["Ω"] = font["Σ"], font["Π"], font["Δ"], font["Ω"]
font["∂"] = drawn([arc(6, 6, 6, 6, 0, 360), [(12, 6), (12, 13), (10, 18), (6, 21), (2, 20)]], 3, 3)
font["∫"] = drawn([[(11, 23), (9, 25), (7, 23), (6, 19), (5, -3), (4, -7), (2, -8), (0, -6)]], 2, 2)
font["∇"] = font["Δ"].turned()
font["∈"] = drawn([[(13, 19), (7, 19)] + arc(7, 10.5, 7, 8.5, 90, 270) + [(13, 2)], [(0, 10.5), (12, 10.5)]], 3, 3)
font["∠"] = drawn([[(15, 18), (0, 0), (18, 0)]], 3, 3)
font["⊥"] = drawn([[(9, 21), (9, 0)], [(0, 0), (18, 0)]], 3, 3)
font["∥"] = drawn([[(0, 0), (6, 21)], [(7, 0), (13, 21)]], 3, 3)
font["∩"] = drawn([[(0, 0), (0, 13)] + arc(7, 13, 7, 8, 180, 0) + [(14, 0)]], 3, 3)
font["∪"] = font["∩"].turned()
font["∧"], font["∨"] = drawn([[(0, 0), (8, 19), (16, 0)]]), drawn([[(0, 19), (8, 0), (16, 19)]])
font["∴"] = drawn([dot(7, 14), dot(0, 3), dot(14, 3)])
font["℃"] = G(font["°"].strokes + font["C"].shift(9).strokes, 9 + font["C"].advance)
font["℉"] = G(font["°"].strokes + font["F"].shift(9).strokes, 9 + font["F"].advance)
font["℄"] = G(font["C"].strokes + font["L"].shift(8, -5).strokes, 8 + font["L"].advance)
font["℮"] = e
font["Ω"], font["K"] = font["Ω"], font["K"]
arrow = {"→": [[(0, 9), (22, 9)], [(16, 14), (22, 9), (16, 4)]],
         "←": [[(22, 9), (0, 9)], [(6, 14), (0, 9), (6, 4)]],
         "↔": [[(0, 9), (24, 9)], [(18, 14), (24, 9), (18, 4)], [(6, 14), (0, 9), (6, 4)]],
         "↑": [[(5, -2), (5, 22)], [(0, 16), (5, 22), (10, 16)]],
         "↓": [[(5, 22), (5, -2)], [(0, 4), (5, -2), (10, 4)]],
         "↕": [[(5, 22), (5, -2)], [(0, 4), (5, -2), (10, 4)], [(0, 16), (5, 22), (10, 16)]],
         "⇒": [[(0, 12), (18, 12)], [(0, 6), (18, 6)], [(14, 16), (22, 9), (14, 2)]],
         "↗": [[(0, 0), (18, 18)], [(8, 18), (18, 18), (18, 8)]]}
for c, strokes in arrow.items():
    font[c] = drawn(strokes, 3, 3)
square = [(0, 0), (0, 18), (18, 18), (18, 0), (0, 0)]
font["□"] = drawn([square], 3, 3)
font["■"] = drawn([square, [(3, 3), (3, 15), (15, 15), (15, 3), (3, 3)], [(6, 6), (6, 12), (12, 12), (12, 6), (6, 6)]], 3, 3)
font["△"] = drawn([[(0, 0), (10, 18), (20, 0), (0, 0)]], 3, 3)
font["▽"] = drawn([[(0, 18), (10, 0), (20, 18), (0, 18)]], 3, 3)
font["◊"] = drawn([[(0, 10), (6, 21), (12, 10), (6, -1), (0, 10)]], 3, 3)
font["✓"] = drawn([[(0, 8), (6, 0), (16, 20)]], 3, 3)
font["○"] = drawn([circle(9, 10, 9)], 3, 3)
font["●"] = drawn([circle(9, 10, 9), circle(9, 10, 6), circle(9, 10, 3)], 3, 3)
font["☐"], font["☒"] = font["□"], drawn([square, [(0, 0), (18, 18)], [(0, 18), (18, 0)]], 3, 3)

# Geometric tolerancing -----------------------------------------------------------------------------------------------
font["⌖"] = drawn([circle(12, 10.5, 7), [(0, 10.5), (24, 10.5)], [(12, -1.5), (12, 22.5)]], 3, 3)          # position
font["◎"] = drawn([circle(10, 10.5, 10), circle(10, 10.5, 5.5)], 3, 3)                                    # concentricity
font["⌯"] = drawn([[(0, 10.5), (24, 10.5)], [(5, 16.5), (19, 16.5)], [(5, 4.5), (19, 4.5)]], 3, 3)           # symmetry
font["⌭"] = drawn([circle(12, 10.5, 6.5), [(0, 0), (8, 21)], [(16, 0), (24, 21)]], 3, 3)                   # cylindricity
font["⏥"] = drawn([[(0, 3), (6, 18), (26, 18), (20, 3), (0, 3)]], 3, 3)                                   # flatness
font["⏤"] = drawn([[(0, 10.5), (24, 10.5)]], 3, 3)                                                       # straightness
font["⌓"] = drawn([arc(12, 4, 12, 14, 0, 180) + [(24, 4)]], 3, 3)                               # profile of a surface
font["⌒"] = drawn([arc(12, 4, 12, 14, 0, 180)], 3, 3)                                             # profile of a line
font["⌰"] = drawn([[(0, 0), (13, 18)], [(6, 16), (13, 18), (14, 10)], [(10, 0), (23, 18)], [(16, 16), (23, 18), (24, 10)],
                   [(0, 0), (10, 0)]], 3, 3)                                                            # total run-out
for i in range(26):
    letter = font[chr(65 + i)].scale(0.62)
    x0, y0, x1, y1 = letter.box()
    font[chr(0x24B6 + i)] = drawn([circle(14, 10.5, 14)] +
                                  letter.shift(14 - (x0 + x1) / 2, 10.5 - (y0 + y1) / 2).strokes, 2, 2)
for i in range(9):
    letter = font[chr(49 + i)].scale(0.62)
    x0, y0, x1, y1 = letter.box()
    font[chr(0x2460 + i)] = drawn([circle(14, 10.5, 14)] +
                                  letter.shift(14 - (x0 + x1) / 2, 10.5 - (y0 + y1) / 2).strokes, 2, 2)

# Accents: centred on x = 0, their foot at y = 0 (above) or their top at y = 0 (below) ----------------------------------
ABOVE = {
    0x300: [[(-3, 5), (2, 0)]],
    0x301: [[(3, 5), (-2, 0)]],
    0x302: [[(-4, 0), (0, 5), (4, 0)]],
    0x303: [[(-5, 0.5), (-4, 2.5), (-2, 3), (2, 0.5), (4, 1), (5, 3)]],
    0x304: [[(-4.5, 2), (4.5, 2)]],
    0x306: [arc(0, 5, 4.5, 4.5, 190, 350)],
    0x307: [dot(0, 2)],
    0x308: [dot(-3.5, 2), dot(3.5, 2)],
    0x309: [[(-2, 5), (0, 6), (2, 5), (2, 3), (0, 2), (0, 0)]],
    0x30a: [circle(0, 2.7, 2.7, 30)],
    0x30b: [[(0, 5), (-4, 0)], [(5, 5), (1, 0)]],
    0x30c: [[(-4, 5), (0, 0), (4, 5)]],
    0x30f: [[(0, 5), (4, 0)], [(-5, 5), (-1, 0)]],
    0x311: [arc(0, 0, 4.5, 4.5, 10, 170)],
    0x313: [[(1, 4), (1, 2), (-1, 0)]],
    0x342: [[(-5, 0.5), (-4, 2.5), (-2, 3), (2, 0.5), (4, 1), (5, 3)]],
}
BELOW = {
    0x323: [dot(0, -2)],
    0x324: [dot(-3.5, -2), dot(3.5, -2)],
    0x325: [circle(0, -3, 2.5, 30)],
    0x326: [[(1, -2), (1, -4), (-1, -6)]],
    0x327: [[(0, 0), (0, -2), (2, -3), (2, -5), (0, -6), (-3, -5)]],
    0x328: [[(0, 0), (-2, -3), (-1, -5), (1, -6), (3, -5)]],
    0x32d: [[(-4, -6), (0, -2), (4, -6)]],
    0x32e: [arc(0, -1.5, 4.5, 4.5, 190, 350)],
    0x331: [[(-4.5, -2), (4.5, -2)]],
}
for c, mark in (("´", 0x301), ("`", 0x300), ("¨", 0x308), ("¯", 0x304), ("ˆ", 0x302), ("˜", 0x303), ("˘", 0x306),
                ("˙", 0x307), ("ˇ", 0x30c), ("˝", 0x30b), ("΄", 0x301)):
    font[c] = drawn([[(x, y + 16) for x, y in s] for s in ABOVE[mark]], 3, 3)
font["΅"] = drawn([[(x, y + 16) for x, y in s] for s in ABOVE[0x308]] + [[(x, y + 19) for x, y in s] for s in ABOVE[0x301]], 3, 3)
font["¸"] = drawn(BELOW[0x327], 3, 3)
font["˛"] = drawn(BELOW[0x328], 3, 3)
# The combining marks themselves: no advance, over the middle of an average character before them.
for code, strokes in ABOVE.items():
    font[chr(code)] = G([[(x - 9, y + 17) for x, y in s] for s in strokes], 0)
for code, strokes in BELOW.items():
    font[chr(code)] = G([[(x - 9, y - 1) for x, y in s] for s in strokes], 0)


def compose(c):
    """A precomposed letter from its base and its marks; None when a part is missing."""
    parts = unicodedata.normalize("NFD", c)
    if c == "ģ":
        parts = "g\u0313"  # the cedilla stands above as a comma
    if "\u031b" in parts:  # the horn belongs to the base
        parts = unicodedata.normalize("NFC", parts[0] + "\u031b") + parts[1:].replace("\u031b", "")
    if len(parts) < 2 or parts[0] not in font or any(ord(m) not in ABOVE and ord(m) not in BELOW for m in parts[1:]):
        return None
    base = parts[0]
    if base in "iі" and any(ord(m) in ABOVE for m in parts[1:]):
        base = "ı"
    if base in "jј":
        base = "ȷ"
    g = font[base]
    x0, y0, x1, y1 = g.box()
    cx = (x0 + x1) / 2
    top = max(y1, 14.0) + (3.0 if y1 < 20 else 2.0)
    bottom = min(y0, 0.0)
    greek_capital = base in upper
    for m in parts[1:]:
        code = ord(m)
        if code in BELOW:
            off = x1 - 2 if code == 0x328 else cx
            gap = 0.0 if code in (0x327, 0x328) else -1.5
            g = g.plus(*[[(x + off, y + bottom + gap) for x, y in s] for s in BELOW[code]])
        elif greek_capital and code == 0x301 and len(parts) == 2:
            g = g.plus([(x0 - 2, 21), (x0 - 5, 15)])
        else:
            g = g.plus(*[[(x + cx, y + top) for x, y in s] for s in ABOVE[code]])
            top = g.box()[3] + 1.0
    g = g.map(lambda x, y: (x, min(y, 34.5)))  # the highest that the table holds
    left = g.box()[0]
    if left < 0.5:
        g = g.map(lambda x, y: (x + 0.5 - left, y), g.advance + 0.5 - left)
    right = g.box()[2]
    return G(g.strokes, max(g.advance, right + 0.5))


for code in list(range(0xC0, 0x250)) + list(range(0x374, 0x530)) + list(range(0x1E00, 0x1F00)) + list(range(0x2120, 0x2130)):
    c = chr(code)
    if c in font:
        continue
    whole = unicodedata.normalize("NFC", c)
    if whole != c and whole in font:
        font[c] = font[whole]
        continue
    g = compose(c)
    if g:
        font[c] = g
for c, base in (("ј", "j"), ("\u037e", ";"), ("\u0387", "·"), ("\u212b", "Å"), ("\u2126", "Ω"), ("\u212a", "K")):
    font[c] = font[base]

# Output ------------------------------------------------------------------------------------------------------------------
X0, Y0, FIRST = -28, -24, 33  # half units; also known to stroke_font.cpp


def code_of(v, origin):
    n = round(v * 2) - origin + FIRST
    if not FIRST <= n <= 126:
        raise ValueError(f"coordinate {v} is out of range")
    return chr(n)


def encode(g):
    out = []
    for s in g.strokes:
        pairs = []
        for x, y in s:
            p = code_of(x, X0) + code_of(y, Y0)
            if not pairs or pairs[-1] != p:
                pairs.append(p)
        if len(pairs) == 1:
            pairs.append(pairs[0])
        out.append("".join(pairs))
    return " ".join(out)


def literal(text):
    # "??" would begin a trigraph in old dialects.
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"').replace("?", "\\?") + '"'


rows = []
for c in sorted(font):
    g = font[c]
    rows.append(f"    {{0x{ord(c):04X}, {round(g.advance * 2)}, {literal(encode(g))}}},")

print(f"""// Generated by resources/stroke-font/make_stroke_font.py; see the README beside it for the origin of the shapes.
#include "engine/fonts/stroke_font_table.hpp"

namespace kova::engine {{

// clang-format off
static constexpr StrokeGlyphData kGlyphs[] = {{
{chr(10).join(rows)}
}};
// clang-format on

std::span<const StrokeGlyphData> strokeGlyphData() {{ return kGlyphs; }}

}}  // namespace kova::engine""")
print(f"{len(rows)} glyphs", file=sys.stderr)
