#!/usr/bin/env python3
"""Writes the gallery's drawings and renders them: make_gallery.py PROGRAM [FOLDER].

First the drawings that command scripts among the examples make, then one native file a picture.
Each drawing is a native file with nothing but what it needs; the program fills in the rest. The pictures are for people
to look at; they are not compared byte by byte, since installed fonts differ.
"""
import json
import math
import pathlib
import struct
import subprocess
import sys
import zlib

PI = math.pi


def color(index):
    return {"method": "ACI", "aci": index}


def entity(kind, **members):
    head = {"layer": members.pop("layer", "0"), "color": members.pop("color", {"method": "ByLayer"}),
            "lineweight": members.pop("lineweight", -1), "visible": True}
    if "linetype" in members:
        head["linetype"] = members.pop("linetype")
    return {**head, "type": kind, **members}


def points(*pairs):
    return [{"x": x, "y": y} for x, y in pairs]


def line(x0, y0, x1, y1, **more):
    return entity("Line", startX=x0, startY=y0, endX=x1, endY=y1, **more)


def circle(x, y, r, **more):
    return entity("Circle", centerX=x, centerY=y, radius=r, **more)


def text(x, y, height, content, **more):
    return entity("Text", **{"x": x, "y": y, "height": height, "rotation": 0.0, "content": content, "hAlign": 0,
                             "vAlign": 0, "textStyle": "Standard", **more})


def mtext(x, y, width, height, content, **more):
    return entity("MText", **{"x": x, "y": y, "width": width, "height": height, "rotation": 0.0, "content": content,
                              "attachment": 1, **more})


def polyline(pairs, closed=False, bulges=None, widths=None, **more):
    n = len(pairs)
    start = [w[0] for w in widths] if widths else [0.0] * n
    end = [w[1] for w in widths] if widths else [0.0] * n
    return entity("Polyline", closed=closed, vertices=points(*pairs), bulges=bulges or [0.0] * n, startWidths=start,
                  endWidths=end, **more)


def hatch(loops, pattern="SOLID", scale=1.0, angle=0.0, **more):
    return entity("Hatch", patternType=1, patternName=pattern, patternScale=scale, patternAngle=angle, islandStyle=0,
                  loops=[{"type": 2, "inner": i > 0, "vertices": points(*ring), "bulges": [0.0] * len(ring)}
                         for i, ring in enumerate(loops)], **more)


def dimension(sub_type, **members):
    zero = {k: 0.0 for k in ("def1X", "def1Y", "def2X", "def2Y", "dimLineX", "dimLineY", "def3X", "def3Y", "def4X",
                             "def4Y", "textRotation", "userTextX", "userTextY", "linearRotation", "obliqueAngle")}
    return entity("Dimension", subType=sub_type, **{**zero, "textOverride": "", "dimStyleName": "Standard", **members})


def box(x, y, w, h):
    return [(x, y), (x + w, y), (x + w, y + h), (x, y + h)]


def curves():
    out = []
    for i in range(12):
        out.append(entity("Arc", centerX=0.0, centerY=0.0, radius=10.0 + 5 * i, startAngle=i * PI / 6,
                          endAngle=i * PI / 6 + PI * 1.2, color=color(i % 6 + 1)))
    out.append(entity("Ellipse", centerX=150.0, centerY=0.0, majorX=60.0, majorY=30.0, minorRatio=0.4, startParam=0.0,
                      endParam=2 * PI))
    out.append(entity("Ellipse", centerX=150.0, centerY=0.0, majorX=40.0, majorY=20.0, minorRatio=0.4, startParam=0.5,
                      endParam=4.0, color=color(1)))
    control = [(90, -60), (110, -20), (140, -90), (170, -30), (200, -80), (220, -40)]
    out.append(entity("Spline", degree=3, closed=False, controlPoints=points(*control),
                      knots=[0, 0, 0, 0, 1, 2, 3, 3, 3, 3], fitPoints=[], controlZ=[], weights=[], color=color(5)))
    out.append(polyline(control, linetype="Dashed", color=color(8)))
    return out, {"linetypes": ["Dashed"]}


def wide_polylines():
    out = [polyline([(0, 0), (60, 0), (60, 40), (100, 40)], widths=[(6, 6)] * 4),
           polyline([(0, 60), (50, 60)], widths=[(20, 0)] * 2, color=color(1)),
           polyline([(60, 60), (100, 60), (130, 60)], bulges=[-1.0, 1.0, 0.0], widths=[(2, 8), (8, 2), (0, 0)], color=color(5)),
           polyline(box(120, 0, 40, 30), closed=True, bulges=[0.4, 0.0, 0.4, 0.0], widths=[(3, 3)] * 4, color=color(3)),
           polyline([(130, 15), (150, 15)], closed=True, bulges=[1.0, 1.0], widths=[(8, 8)] * 2, color=color(2))]
    return out, {}


def linetypes():
    names = ["Continuous", "Center", "Dashed", "Hidden", "Phantom", "Dot", "DashDot", "Divide", "Border", "Center2", "DashedX2"]
    out = []
    for i, name in enumerate(names):
        y = -12.0 * i
        out.append(line(60, y, 260, y, linetype=name, lineweight=35))
        out.append(text(0, y - 2, 5, name))
    out.append(polyline([(280, 0), (330, -20), (280, -40), (330, -60), (280, -80)], linetype="DashDot", ltgen=True, color=color(1)))
    out.append(circle(310, -105, 15, linetype="Hidden", color=color(5)))
    return out, {"linetypes": names[1:]}


def lineweights():
    out = []
    for i, weight in enumerate((0, 13, 25, 35, 50, 70, 100, 140, 200)):
        out.append(line(30, -8.0 * i, 120, -8.0 * i, lineweight=weight))
        out.append(text(0, -8.0 * i - 2, 4, f"{weight / 100:.2f}"))
    return out, {}


def text_alignment():
    out = []
    words = [("Left", 0, 0), ("Center", 1, 0), ("Right", 2, 0), ("Middle", 4, 0), ("TL", 0, 3), ("MC", 1, 2), ("BR", 2, 1)]
    for i, (word, h, v) in enumerate(words):
        y = -15.0 * i
        out += [line(-3, y, 3, y, color=color(1)), line(0, y - 3, 0, y + 3, color=color(1)),
                text(0, y, 6, word, hAlign=h, vAlign=v)]
    out.append(text(50, 0, 8, "%%uUnderlined%%u %%oover%%o 45%%d %%p0.1 %%c20"))
    out.append(text(50, -20, 8, "Width factor", widthFactor=1.6))
    out.append(text(50, -40, 8, "Oblique", oblique=0.35))
    out.append(text(50, -60, 8, "Backward", generation=2, hAlign=2))
    out.append(text(50, -80, 8, "Upside down", generation=4))
    out.append(text(130, -60, 8, "Fit between points", hAlign=5, fit=True, fitEndX=230.0, fitEndY=-60.0))
    out.append(text(130, -80, 8, "Aligned", hAlign=3, fit=True, fitEndX=230.0, fitEndY=-50.0))
    out.append(text(50, -100, 8, "\u00c4\u00d6\u00dc \u00e9\u00e8 \u00f1 \u03b1\u03b2\u03b3\u03a9 \u0416\u0443\u043a"))
    return out, {}


def multiline_text():
    content = ("{\\H1.5x;\\C1;Title} with \\Lunderline\\l and \\Ooverline\\o\\P"
               "A paragraph that is long enough to be wrapped at the width of its frame, more than once.\\P"
               "Stacks: \\S1/2; \\S3#4; tol. \\S+0.1^-0.2; and \\W1.4;wide\\W1; \\Q20;slanted\\Q0; text\\P"
               "\\pi0,l6;Tabbed and indented paragraph, with a hanging second line to see.")
    out = [mtext(0, 0, 120, 5, content), polyline([(0, 5), (120, 5)], color=color(8))]
    for i, attachment in enumerate(range(1, 10)):
        x, y = 150 + 40 * (i % 3), -10 - 25 * (i // 3)
        out += [circle(x, y, 1, color=color(1)), mtext(x, y, 0, 4, f"Attach\\P{attachment}", attachment=attachment)]
    out.append(hatch([box(145, -100, 90, 25)], "ANSI31", 1.0, color=color(8)))
    out.append(mtext(150, -85, 0, 6, "Background", bgFlags=3, bgColor=color(7), bgScale=1.5))
    return out, {}


def hatch_patterns():
    names = ["ANSI31", "ANSI37", "BRICK", "AR-HBONE", "HONEY", "EARTH", "GRAVEL", "DOTS", "ESCHER", "STARS", "INSUL", "AR-CONC"]
    out = []
    for i, name in enumerate(names):
        x, y = 70 * (i % 4), -60 * (i // 4)
        scale = 0.05 if name.startswith("AR-") and name != "AR-HBONE" else 0.06 if name == "AR-HBONE" else 1.0
        out += [hatch([box(x, y, 60, 40)], name, scale), polyline(box(x, y, 60, 40), closed=True), text(x, y + 43, 5, name)]
    return out, {}


def hatch_islands():
    out = []
    for style in range(3):
        x = 90.0 * style
        rings = [box(x, 0, 80, 80), box(x + 12, 12, 56, 56), box(x + 26, 26, 28, 28)]
        h = hatch(rings, "ANSI31", 1.0)
        h["islandStyle"] = style
        out += [h] + [polyline(r, closed=True) for r in rings]
    return out, {}


def dimensions():
    out = [polyline([(0, 0), (80, 0), (80, 30), (50, 50), (0, 50)], closed=True, lineweight=35)]
    out.append(dimension(0, def1X=0.0, def1Y=0.0, def2X=80.0, def2Y=0.0, dimLineX=80.0, dimLineY=-12.0))
    out.append(dimension(0, def1X=80.0, def1Y=0.0, def2X=80.0, def2Y=30.0, dimLineX=94.0, dimLineY=30.0, linearRotation=PI / 2))
    out.append(dimension(1, def1X=80.0, def1Y=30.0, def2X=50.0, def2Y=50.0, dimLineX=55.0, dimLineY=60.0))
    out.append(dimension(0, def1X=0.0, def1Y=0.0, def2X=0.0, def2Y=50.0, dimLineX=-14.0, dimLineY=50.0, linearRotation=PI / 2,
                         styleOverrides={"DIMTOL": 1.0, "DIMTP": 0.1, "DIMTM": 0.2}))
    out.append(dimension(0, def1X=0.0, def1Y=50.0, def2X=50.0, def2Y=50.0, dimLineX=50.0, dimLineY=66.0,
                         styleOverrides={"DIMALT": 1.0}))
    out += [circle(150, 30, 22, lineweight=35), circle(220, 30, 22, lineweight=35)]
    out.append(dimension(4, def1X=150.0, def1Y=30.0, def2X=150 + 22 * math.cos(0.6), def2Y=30 + 22 * math.sin(0.6),
                         dimLineX=185.0, dimLineY=54.0))
    out.append(dimension(3, def1X=220 - 22 * math.cos(0.8), def1Y=30 - 22 * math.sin(0.8), def2X=220 + 22 * math.cos(0.8),
                         def2Y=30 + 22 * math.sin(0.8), dimLineX=220.0, dimLineY=30.0))
    out += [line(140, -60, 200, -60), line(140, -60, 185, -20)]
    out.append(dimension(5, def1X=200.0, def1Y=-60.0, def2X=185.0, def2Y=-20.0, def3X=140.0, def3Y=-60.0, dimLineX=178.0, dimLineY=-46.0))
    return out, {}


def gradients():
    kinds = ("LINEAR", "CYLINDER", "INVCYLINDER", "SPHERICAL", "HEMISPHERICAL", "CURVED", "INVSPHERICAL", "INVHEMISPHERICAL",
             "INVCURVED")
    out = []
    for i, name in enumerate(kinds):
        for j, (angle, shift) in enumerate(((0.0, 0.0), (0.6, 0.0), (0.0, 1.0))):
            g = hatch([box(54.0 * i, -54.0 * j, 48, 48)])
            g["gradient"] = {"name": name, "angle": angle, "shift": shift, "tint": 0.5, "singleColor": False, "reserved": 0,
                             "stops": [{"value": 0.0, "rgb": 0x1040C0}, {"value": 1.0, "rgb": 0xFFE060}]}
            out.append(g)
        out.append(text(54.0 * i, 52, 3.5, name))
    return out, {}


def complex_linetype(name, pattern, elements):
    """elements: what stands at the end of a pattern's entry, by the entry's index."""
    plain = {"flags": 0, "shape": 0, "style": "", "scale": 1.0, "rotation": 0.0, "offsetX": 0.0, "offsetY": 0.0, "text": ""}
    return {"name": name, "description": name, "standard": False, "pattern": pattern,
            "elements": [{**plain, **elements.get(i, {})} for i in range(len(pattern))]}


def complex_linetypes():
    def shape(number, **more):
        return {"flags": 4, "shape": number, "style": "ltypeshp.shx", **more}

    records = [
        complex_linetype("FENCELINE1", [6.35, -2.54, -2.54, 25.4], {1: shape(133, offsetX=-2.54, scale=2.54)}),
        complex_linetype("FENCELINE2", [6.35, -2.54, -2.54, 25.4], {1: shape(132, offsetX=-2.54, scale=2.54)}),
        complex_linetype("TRACKS", [3.81, 3.81], {0: shape(130, scale=6.35)}),
        complex_linetype("BATTING", [0.00254, -2.54, -5.08, -2.54],
                         {1: shape(134, offsetX=-2.54, scale=2.54), 2: shape(134, rotation=PI, offsetX=2.54, scale=2.54)}),
        complex_linetype("ZIGZAG", [0.00254, -5.08, -10.16, -5.08],
                         {1: shape(131, offsetX=-5.08, scale=5.08), 2: shape(131, rotation=PI, offsetX=5.08, scale=5.08)}),
        complex_linetype("HOT_WATER_SUPPLY", [12.7, -5.08, -5.08],
                         {1: {"flags": 10, "style": "Standard", "text": "HW", "scale": 2.54, "offsetX": -2.54, "offsetY": -1.27}})]
    out = []
    for i, record in enumerate(records):
        y = -25.0 * i
        out += [text(0, y - 2.5, 5, record["name"]), line(75, y, 230, y, linetype=record["name"]),
                polyline([(250, y + 5), (300, y + 5), (330, y - 10)], bulges=[0.0, -0.5, 0.0], ltgen=True, linetype=record["name"],
                         color=color(i % 6 + 1))]
    out.append(circle(380, -60, 40, linetype="TRACKS", color=color(8)))
    return out, {"linetype_records": records}


def dimension_kinds():
    out = [line(0, 0, 60, 0, lineweight=35), line(0, 0, 45, 40, lineweight=35)]
    out.append(dimension(2, def1X=0.0, def1Y=0.0, def2X=60.0, def2Y=0.0, def3X=0.0, def3Y=0.0, def4X=45.0, def4Y=40.0,
                         dimLineX=48.0, dimLineY=18.0))
    out.append(entity("Arc", centerX=120.0, centerY=0.0, radius=35.0, startAngle=0.3, endAngle=2.6, lineweight=35))
    out.append(dimension(8, def1X=120 + 35 * math.cos(0.3), def1Y=35 * math.sin(0.3), def2X=120 + 35 * math.cos(2.6),
                         def2Y=35 * math.sin(2.6), def3X=120.0, def3Y=0.0, dimLineX=120.0, dimLineY=46.0))
    out.append(entity("Arc", centerX=270.0, centerY=-60.0, radius=110.0, startAngle=1.1, endAngle=2.0, lineweight=35))
    out.append(dimension(4, def1X=270.0, def1Y=-60.0, def2X=270 + 110 * math.cos(1.5), def2Y=-60 + 110 * math.sin(1.5), dimLineX=276.0,
                         dimLineY=20.0, jogged=True, jogCenterX=262.0, jogCenterY=0.0, jogPointX=270.0, jogPointY=25.0))
    # Ordinates from a datum.
    plate = [(0, -90), (60, -90), (60, -60), (25, -60), (25, -40), (0, -40)]
    out.append(polyline(plate, closed=True, lineweight=35))
    for x, y in ((0, -90), (25, -60), (60, -90)):
        out.append(dimension(7, def1X=float(x), def1Y=float(y), def2X=float(x), def2Y=-105.0, def4X=0.0, def4Y=-90.0, def3X=0.0, def3Y=-90.0))
    for x, y in ((0, -90), (60, -60), (25, -40)):
        out.append(dimension(6, def1X=float(x), def1Y=float(y), def2X=78.0, def2Y=float(y), def3X=0.0, def3Y=-90.0))
    # Tolerances, limits, alternate units, inspection, ticks, suppressed lines.
    variants = [("plus and minus", {"DIMTOL": 1.0, "DIMTP": 0.2, "DIMTM": 0.1}, {}), ("symmetric", {"DIMTOL": 1.0, "DIMTP": 0.1, "DIMTM": 0.1}, {}),
                ("limits", {"DIMLIM": 1.0, "DIMTP": 0.2, "DIMTM": 0.1}, {}), ("alternate", {"DIMALT": 1.0}, {}),
                ("ticks", {"DIMTSZ": 2.5}, {}), ("one side", {"DIMSE1": 1.0, "DIMSD1": 1.0}, {}),
                ("inspection", {}, {"inspectShape": 1, "inspectLabel": "A", "inspectRate": "100%"}), ("prefix", {}, {"textOverride": "4x <> TYP"})]
    for i, (_, overrides, more) in enumerate(variants):
        x, y = 110.0 + 110.0 * (i % 2), -40.0 - 22.0 * (i // 2)
        out += [line(x, y - 8, x, y, color=color(8)), line(x + 80, y - 8, x + 80, y, color=color(8))]
        out.append(dimension(0, def1X=x, def1Y=y - 4, def2X=x + 80, def2Y=y - 4, dimLineX=x, dimLineY=y + 6, styleOverrides=overrides, **more))
    for e in out:
        if e["type"] == "Dimension":
            e["styleOverrides"] = {**e.get("styleOverrides", {}), "DIMSCALE": 1.6}
    return out, {}


def text_styles():
    fonts = ["txt.shx", "DejaVu Sans", "DejaVu Serif", "DejaVu Sans Mono", "gdt.shx"]
    styles = [{"name": f, "fontFile": f, "height": 0.0, "widthFactor": 1.0, "obliqueAngle": 0.0, "backward": False, "upsideDown": False,
               "vertical": False} for f in fonts]
    styles += [{**styles[1], "name": "Narrow", "widthFactor": 0.6}, {**styles[1], "name": "Slanted", "obliqueAngle": 0.3},
               {**styles[0], "name": "Vertical", "vertical": True}]
    out = []
    for i, style in enumerate(styles[:-1]):
        out += [text(0, -16.0 * i, 4, style["name"], color=color(8)), text(60, -16.0 * i, 8, "ABC abc 123 %%c50 %%p0.1", textStyle=style["name"],
                                                                                widthFactor=style["widthFactor"],
                                                                                oblique=style["obliqueAngle"])]
    out.append(text(250, 0, 8, "VERTICAL", textStyle="Vertical"))
    out.append(mtext(275, 8, 90, 6, "{\\fDejaVu Serif|b1|i0;Bold} and {\\fDejaVu Sans|b0|i1;italic} words, {\\C5;coloured} ones, "
                                    "{\\H0.6x;small} ones\\Pand a stack: \\S12/25;", textStyle="DejaVu Sans"))
    return out, {"textStyles": styles}


def png(folder):
    """A small picture: a chequered field with a diagonal run of colours."""
    n = 96
    rows = b"".join(b"\0" + b"".join(bytes((x * 255 // n, y * 255 // n, 255 if (x // 12 + y // 12) % 2 else 90)) for x in range(n)) for y in range(n))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    path = folder / "chequers-source.png"
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", n, n, 8, 2, 0, 0, 0)) +
                     chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))
    return path


def images():
    def image(x, y, size, **more):
        return entity("Image", **{"filePath": "chequers-source.png", "insertionX": float(x), "insertionY": float(y), "width": size, "height": size,
                                  "rotation": 0.0, "brightness": 50, "contrast": 50, "fade": 0, "showFrame": True, "imageTransparency": 0,
                                  "pixelWidth": 96, "pixelHeight": 96, **more})

    clip = points(*[(150 + 28 * math.cos(i * PI / 3), 30 + 28 * math.sin(i * PI / 3)) for i in range(6)])
    return [image(0, 0, 60.0), image(75, 5, 45.0, rotation=0.3), image(120, 0, 60.0, clipEnabled=True, clipBoundary=clip),
            image(200, 0, 60.0, fade=60, showFrame=False), image(270, 0, 60.0, brightness=70, contrast=30),
            image(340, 0, 60.0, filePath="missing.png"), image(410, 0, 60.0, filePath="missing.png", clipEnabled=True,
                                                               clipBoundary=points((415, 5), (465, 15), (450, 55), (420, 40))),
            text(0, -10, 5, "whole"), text(75, -10, 5, "turned"), text(125, -10, 5, "clipped"), text(200, -10, 5, "faded"), text(270, -10, 5, "adjusted"),
            text(340, -10, 5, "missing"), text(410, -10, 5, "missing, clipped")], {"image": True}


def paper_space():
    out, _ = dimensions()
    out.append(hatch([box(0, 0, 50, 30)], "ANSI31", 1.0, color=color(8)))

    def viewport(number, x, y, w, h, tx, ty, scale, **more):
        return entity("Viewport", centerX=x, centerY=y, width=w, height=h, viewTargetX=tx, viewTargetY=ty, viewScale=scale, viewTwist=0.0, on=True,
                      locked=False, vpId=number, snapBase={"x": 0.0, "y": 0.0}, snapSpacing={"x": 10.0, "y": 10.0},
                      gridSpacing={"x": 10.0, "y": 10.0}, snapAngle=0.0, statusFlags=0, vpFrozenLayers=[], **more)

    sheet = [polyline(box(7, 5, 406, 287), closed=True, widths=[(0.7, 0.7)] * 4), polyline(box(273, 5, 140, 30), closed=True),
             line(273, 20, 413, 20), text(277, 24, 6, "Gallery"), text(277, 9, 4, "Scale 1:1 and 2:1"),
             viewport(2, 150, 170, 270, 180, 105, 10, 1.0), circle(350, 200, 55, handle=5000), viewport(3, 350, 200, 110, 110, 150, 30, 2.0, clipHandle=5000)]
    layout = {"name": "Layout1", "tabOrder": 1, "pageSetup": {"paperWidth": 420.0, "paperHeight": 297.0, "landscape": True}, "entities": sheet}
    return out, {"layouts": [layout], "activeLayout": "Layout1", "tilemode": 0}


def leaders():
    out = [circle(0, 0, 10),
           entity("Leader", vertices=points((7, 7), (25, 25), (40, 25)), annotation="Drill %%c20", arrowSize=4.0, textHeight=4.0,
                  hasArrow=True, splined=False, hookLine=True, hookDir=1),
           entity("Leader", vertices=points((-7, -7), (-20, -25), (-45, -10), (-60, -30)), annotation="", arrowSize=4.0,
                  textHeight=4.0, hasArrow=True, splined=True, hookLine=False, hookDir=0),
           entity("MLeader", heads=[{"vertices": points((7, -7), (30, -30))}, {"vertices": points((0, -10), (30, -30))}],
                  contentType=2, textContent="Two heads,\\Pone text", contentPosX=45.0, contentPosY=-30.0, landingGap=2.0,
                  landingDistance=8.0, hasLanding=True, hasDogleg=True, arrowSize=4.0, textHeight=4.0, styleName="Standard",
                  blockName=""),
           entity("Tolerance", insertionX=-60.0, insertionY=30.0, textHeight=5.0, styleName="Standard", rotation=0.0,
                  symbol="j", toleranceValue="0.05", toleranceMC="M", datum1="A", datum1MC="", datum2="B", datum2MC="M",
                  datum3="", datum3MC="")]
    return out, {}


def table():
    cells = []
    rows = [["Parts", "", ""], ["Pos", "Name", "Qty"], ["1", "Plate 120 x 80", "2"], ["2", "Bolt M12", "8"], ["3", "Nut M12", "8"]]
    for r, row in enumerate(rows):
        for c, content in enumerate(row):
            cells.append({"content": content, "alignment": 5 if r < 2 or c != 1 else 4, "mergeRight": 2 if r == 0 and c == 0 else 0,
                          "mergeDown": 0, "isMerged": r == 0 and c > 0, "textStyle": "Standard"})
    return [entity("Table", insertionX=0.0, insertionY=0.0, rows=5, cols=3, rowHeights=[12.0, 9.0, 9.0, 9.0, 9.0],
                   colWidths=[20.0, 60.0, 20.0], textHeight=0.0, styleName="Standard", cells=cells)], {}


def multilines():
    elements = [{"offset": o, "color": color(c), "linetype": t} for o, c, t in ((0.5, 7, "ByLayer"), (0.0, 1, "Center2"), (-0.5, 7, "ByLayer"))]
    out = [entity("MLine", vertices=points((0, 0), (100, 0), (100, 60), (40, 60)), scale=10.0, elements=elements,
                  justificationAcad=1, closed=False),
           entity("MLine", vertices=points((130, 0), (190, 0), (160, 55)), scale=8.0, elements=elements, justificationAcad=0,
                  closed=True)]
    return out, {"linetypes": ["Center2"]}


def blocks():
    block = {"name": "Door", "description": "", "baseX": 0.0, "baseY": 0.0, "explodable": True, "scaleUniform": False,
             "entities": [line(0, 0, 0, 20), entity("Arc", centerX=0.0, centerY=0.0, radius=20.0, startAngle=0.0, endAngle=PI / 2,
                                                    color={"method": "ByBlock"}), line(0, 0, 20, 0, linetype="Hidden2")]}
    out = []
    for i in range(6):
        out.append(entity("BlockReference", blockName="Door", insertX=40.0 * i, insertY=0.0, scaleX=1.0 if i % 2 == 0 else -1.0,
                          scaleY=1.0 + 0.15 * i, rotation=i * 0.25, rows=1, columns=1, rowSpacing=0.0, columnSpacing=0.0,
                          attributes=[], color=color(i + 1)))
    out.append(entity("BlockReference", blockName="Door", insertX=0.0, insertY=-80.0, scaleX=0.8, scaleY=0.8, rotation=0.0, rows=2,
                      columns=8, rowSpacing=25.0, columnSpacing=26.0, attributes=[], color=color(8)))
    return out, {"blocks": [block], "linetypes": ["Hidden2"]}


def masks():
    out = [hatch([box(0, 0, 120, 80)], "ANSI37", 2.0, color=color(8)),
           entity("Wipeout", vertices=points((20, 20), (60, 10), (80, 40), (50, 70), (15, 50)), showFrame=True),
           text(30, 35, 8, "Wipeout"),
           entity("Solid2D", corners=points((90, 10), (115, 10), (90, 35), (115, 30)), trace=False, color=color(1)),
           entity("Image", filePath="missing-picture.png", insertionX=130.0, insertionY=0.0, width=80.0, height=60.0, rotation=0.2,
                  brightness=50, contrast=50, fade=0, showFrame=True, imageTransparency=0, pixelWidth=0, pixelHeight=0)]
    return out, {}


def surfaces():
    grid = [{"x": 10.0 * i, "y": 10.0 * j + 3 * math.sin(i), "z": 0.0} for i in range(7) for j in range(5)]
    out = [entity("Mesh", rows=7, cols=5, closedM=False, closedN=False, vertices=grid, color=color(4)),
           entity("Face3D", vertices=[{"x": 80.0, "y": 0.0, "z": 0.0}, {"x": 120.0, "y": 5.0, "z": 10.0}, {"x": 115.0, "y": 40.0, "z": 0.0},
                                      {"x": 85.0, "y": 35.0, "z": 5.0}], edgeFlags=4, color=color(2)),
           entity("Polyline3D", vertices=[{"x": 130 + 20 * math.cos(t / 4), "y": 20 + 20 * math.sin(t / 4), "z": float(t)} for t in range(40)],
                  closed=False, color=color(6)),
           entity("Region", vertices=points((160, 0), (200, 0), (200, 40), (160, 40)), bulges=[0.0, 0.5, 0.0, 0.0], loops=[], color=color(3))]
    return out, {}


DRAWINGS = {f.__name__.replace("_", "-"): f for f in (
    curves, wide_polylines, linetypes, complex_linetypes, lineweights, text_alignment, text_styles, multiline_text, hatch_patterns,
    hatch_islands, gradients, dimensions, dimension_kinds, leaders, table, multilines, blocks, masks, images, surfaces, paper_space)}


# Scripts whose drawings are shown, with the size of the picture and the template of the drawing.
SCRIPTS = {"house": ("1600x1130", "metric"), "flange": ("1600x1130", "metric"), "schematic": ("1600x870", "metric"),
           "clamp": ("1600x1130", "metric-a4")}


def builtin_linetypes(names, resource):
    """The records of built-in linetypes, read from the program's own library file."""
    out, lines = [], pathlib.Path(resource).read_text(encoding="utf-8").splitlines()
    for i, row in enumerate(lines):
        if row.startswith("*"):
            name, _, description = row[1:].partition(",")
            if name in names:
                out.append({"name": name, "description": description, "standard": True,
                            "pattern": [float(v) for v in lines[i + 1].split(",")[1:]], "elements": []})
    return out


def main():
    program = pathlib.Path(sys.argv[1]).resolve()
    here = pathlib.Path(__file__).resolve().parent
    folder = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else here
    folder.mkdir(parents=True, exist_ok=True)
    for name, (size, template) in SCRIPTS.items():
        subprocess.run([program, "run", "--template", template, "--script", here / f"../../examples/{name}.scr", "--png", folder / f"{name}.png", "--size", size],
                       check=True, stdout=subprocess.DEVNULL)
    for name, make in DRAWINGS.items():
        entities, more = make()
        drawing = {"format": "kovacad", "version": 2, "entities": entities}
        if "linetypes" in more:
            drawing["linetypes"] = builtin_linetypes(more["linetypes"], here / "../../resources/kovacad.lin")
        if "linetype_records" in more:
            drawing["linetypes"] = more["linetype_records"]
        for member in ("blocks", "textStyles", "layouts", "activeLayout", "tilemode"):
            if member in more:
                drawing[member] = more[member]
        picture = png(folder) if "image" in more else None
        source = folder / f"{name}.kvcad"
        source.write_text(json.dumps(drawing, ensure_ascii=False), encoding="utf-8")
        subprocess.run([program, "render", source, folder / f"{name}.png", "--size", "800x500"], check=True)
        source.unlink()
        if picture:
            picture.unlink()


if __name__ == "__main__":
    main()
