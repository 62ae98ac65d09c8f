#!/usr/bin/env python3
"""Writes the gallery's drawings and renders them: make_gallery.py PROGRAM [FOLDER].

Each drawing is a native file with nothing but what it needs; the program fills in the rest. The pictures are for people
to look at; they are not compared byte by byte, since installed fonts differ.
"""
import json
import math
import pathlib
import subprocess
import sys

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
    for i, name in enumerate(("LINEAR", "CYLINDER", "INVCYLINDER", "SPHERICAL", "INVSPHERICAL")):
        g = hatch([box(54.0 * i, -60, 48, 48)])
        g["gradient"] = {"name": name, "angle": 0.6 if name == "LINEAR" else 0.0, "shift": 0.0, "tint": 0.5, "singleColor": False,
                         "reserved": 0, "stops": [{"value": 0.0, "rgb": 0x1040C0}, {"value": 1.0, "rgb": 0xFFE060}]}
        out.append(g)
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
    curves, wide_polylines, linetypes, lineweights, text_alignment, multiline_text, hatch_patterns, hatch_islands, dimensions,
    leaders, table, multilines, blocks, masks, surfaces)}


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
    for name, make in DRAWINGS.items():
        entities, more = make()
        drawing = {"format": "kovacad", "version": 2, "entities": entities}
        if "linetypes" in more:
            drawing["linetypes"] = builtin_linetypes(more["linetypes"], here / "../../resources/kovacad.lin")
        if "blocks" in more:
            drawing["blocks"] = more["blocks"]
        source = folder / f"{name}.kvcad"
        source.write_text(json.dumps(drawing, ensure_ascii=False), encoding="utf-8")
        subprocess.run([program, "render", source, folder / f"{name}.png", "--size", "800x500"], check=True)
        source.unlink()


if __name__ == "__main__":
    main()
