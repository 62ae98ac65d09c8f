// What a drawing holds, told in the same way whether it comes from DXF groups or from a reader of DWG files:
// blocks by name (the spaces under "*MODEL_SPACE", "*PAPER_SPACE", ...) as lists of entities, each
// { kind, handle, layer, numbers, words }, and the names of layers, linetypes and text styles.
import { readFileSync } from 'node:fs';

const radians = degrees => degrees * Math.PI / 180;
const point = (p, count = 3) => [p.x, p.y, p.z ?? 0].slice(0, count);
const points = (list, count = 3) => list.flatMap(p => point(p, count));
const hex = handle => typeof handle === 'string' ? handle.toUpperCase() : Number(handle).toString(16).toUpperCase();

// Numbers -------------------------------------------------------------------------------------------------------------
// Each function gives the numbers and words of a kind that all readers know; a kind without one counts only.

// From DXF groups: `all(code)` lists the values of a code, `one` gives the first one.
const fromGroups = {
    POINT: g => [g.xyz(10)],
    LINE: g => [g.xyz(10).concat(g.xyz(11))],
    CIRCLE: g => [g.xyz(10).concat(g.one(40))],
    ARC: g => [g.xyz(10).concat(g.one(40), radians(g.one(50)), radians(g.one(51)))],
    ELLIPSE: g => [g.xyz(10).concat(g.xyz(11), g.one(40), g.one(41), g.one(42))],
    RAY: g => [g.xyz(10).concat(g.xyz(11))],
    XLINE: g => [g.xyz(10).concat(g.xyz(11))],
    SOLID: g => [[10, 11, 12, 13].flatMap(code => g.xyz(code).slice(0, 2))],
    '3DFACE': g => [[10, 11, 12, 13].flatMap(code => g.xyz(code))],
    TEXT: g => [g.xyz(10).slice(0, 2).concat(g.one(40), radians(g.one(50)), g.one(41, 1)), [g.word(1), g.word(7, 'Standard')]],
    MTEXT: g => [g.xyz(10).concat(g.one(40), g.one(41)), [g.all(3).join('') + g.word(1), g.word(7, 'Standard')]],
    LWPOLYLINE: g => [g.vertices(['x', 'y', 'bulge'])],
    SPLINE: g => [[g.one(71), ...g.all(40).map(Number), ...g.list(10)]],
    INSERT: g => [g.xyz(10).concat(g.one(41, 1), g.one(42, 1), g.one(43, 1), radians(g.one(50))), [g.word(2)]],
    LEADER: g => [g.list(10)],
    MLINE: g => [g.list(11)],
    WIPEOUT: g => [g.xyz(10).concat(g.xyz(11), g.xyz(12))],
    VIEWPORT: g => [g.xyz(10).concat(g.one(40), g.one(41), g.one(45))],
    DIMENSION: g => [g.xyz(10).concat(g.xyz(11).slice(0, 2), g.one(42)), [g.word(2), g.word(3, 'Standard')]],
    HATCH: g => [g.rings(), [g.word(2)]],
    TOLERANCE: g => [g.xyz(10), [g.word(1)]],
};

const fromAcad = {
    POINT: e => [point(e.location)],
    LINE: e => [point(e.startPoint).concat(point(e.endPoint))],
    CIRCLE: e => [point(e.center).concat(e.radius)],
    ARC: e => [point(e.center).concat(e.radius, e.startAngle, e.endAngle)],
    ELLIPSE: e => [point(e.center).concat(point(e.majorAxisEndPoint), e.radiusRatio, e.startParameter, e.endParameter)],
    RAY: e => [point(e.startPoint).concat(point(e.direction))],
    XLINE: e => [point(e.firstPoint).concat(point(e.direction))],
    SOLID: e => [points([e.firstCorner, e.secondCorner, e.thirdCorner, e.fourthCorner], 2)],
    '3DFACE': e => [points([e.firstCorner, e.secondCorner, e.thirdCorner, e.fourthCorner])],
    TEXT: e => [point(e.insertPoint, 2).concat(e.height, e.rotation, e.widthFactor), [e.value, e.style.name]],
    MTEXT: e => [point(e.insertPoint).concat(e.height, e.rectangleWidth), [e.value, e.style.name]],
    LWPOLYLINE: e => [e.vertices.flatMap(v => [v.location.x, v.location.y, v.bulge])],
    SPLINE: e => [[e.degree, ...e.knots, ...points(e.controlPoints)]],
    INSERT: e => [point(e.insertPoint).concat(e.xScale, e.yScale, e.zScale, e.rotation), [e.block.name]],
    LEADER: e => [points(e.vertices)],
    MLINE: e => [points(e.vertices.map(v => v.position))],
    WIPEOUT: e => [point(e.insertPoint).concat(point(e.uVector), point(e.vVector))],
    VIEWPORT: e => [point(e.center).concat(e.width, e.height, e.viewHeight)],
    DIMENSION: e => [point(e.definitionPoint).concat(point(e.textMiddlePoint, 2), e.measurement), [e.block.name, e.style.name]],
    HATCH: e => [e.paths.flatMap(path => path.edges.flatMap(edge => (edge.vertices ? points(edge.vertices, 2)
                                                          : edge.center ? point(edge.center, 2).concat(edge.radius)
                                                                        : points([edge.start, edge.end], 2)))),
                 [e.pattern.name]],
    TOLERANCE: e => [point(e.insertionPoint), [e.text]],
};

const fromRed = {
    POINT: e => [point(e.position)],
    LINE: e => [point(e.startPoint).concat(point(e.endPoint))],
    CIRCLE: e => [point(e.center).concat(e.radius)],
    ARC: e => [point(e.center).concat(e.radius, e.startAngle, e.endAngle)],
    ELLIPSE: e => [point(e.center).concat(point(e.majorAxisEndPoint), e.axisRatio, e.startAngle, e.endAngle)],
    RAY: e => [point(e.firstPoint).concat(point(e.unitDirection))],
    XLINE: e => [point(e.firstPoint).concat(point(e.unitDirection))],
    SOLID: e => [points([e.corner1, e.corner2, e.corner3, e.corner4], 2)],
    '3DFACE': e => [points([e.corner1, e.corner2, e.corner3, e.corner4])],
    TEXT: e => [point(e.startPoint, 2).concat(e.textHeight, e.rotation, e.xScale), [e.text, e.styleName]],
    MTEXT: e => [point(e.insertionPoint).concat(e.textHeight, e.rectWidth), [e.text, e.styleName]],
    LWPOLYLINE: e => [e.vertices.flatMap(v => [v.x, v.y, v.bulge])],
    SPLINE: e => [[e.degree, ...e.knots, ...points(e.controlPoints)]],
    INSERT: e => [point(e.insertionPoint).concat(e.xScale, e.yScale, e.zScale, e.rotation), [e.name]],
    LEADER: e => [points(e.vertices)],
    MLINE: e => [points(e.vertices.map(v => v.vertex))],
    WIPEOUT: e => [point(e.position).concat(point(e.uPixel), point(e.vPixel))],
    VIEWPORT: e => [point(e.viewportCenter).concat(e.width, e.height, e.viewHeight)],
    DIMENSION: e => [point(e.definitionPoint).concat(point(e.textPoint, 2), e.measurement), [e.name, e.styleName]],
    HATCH: e => [e.boundaryPaths.flatMap(path => path.vertices
                                             ? points(path.vertices, 2)
                                             : path.edges.flatMap(edge => edge.center ? point(edge.center, 2).concat(edge.radius)
                                                                                      : points([edge.start, edge.end], 2))),
                 [e.patternName]],
    TOLERANCE: e => [point(e.insertionPoint), [e.text]],
};

function entity(kind, handle, layer, source, rules) {
    const [numbers = [], words = []] = rules[kind]?.(source) ?? [];
    return { kind, handle, layer, numbers, words };
}

// DXF -----------------------------------------------------------------------------------------------------------------

class Groups {
    constructor(pairs) { this.pairs = pairs; }
    all(code) { return this.pairs.filter(p => p[0] === code).map(p => p[1]); }
    word(code, fallback = '') { return this.all(code)[0] ?? fallback; }
    one(code, fallback = 0) { return Number(this.word(code, fallback)); }
    xyz(code) { return [this.one(code), this.one(code + 10), this.one(code + 20)]; }
    // All points of a code.
    list(code) {
        const out = [];
        for (const [at, value] of this.pairs) {
            if (at === code) out.push(Number(value), 0, 0);
            if (at === code + 10 && out.length) out[out.length - 2] = Number(value);
            if (at === code + 20 && out.length) out[out.length - 1] = Number(value);
        }
        return out;
    }
    vertices() {
        const out = [];
        for (const [code, value] of this.pairs) {
            if (code === 10) out.push(Number(value), 0, 0);
            if (code === 20) out[out.length - 2] = Number(value);
            if (code === 42 && out.length) out[out.length - 1] = Number(value);
        }
        return out;
    }
    // Points of a hatch's polylines and lines, centres and radii of its arcs.
    rings() {
        const out = [];
        let inside = false;
        for (const [code, value] of this.pairs) {
            if (code === 91) inside = true;
            if (code === 75) break;
            if (inside && [10, 20, 11, 21, 40].includes(code)) out.push(Number(value));
        }
        return out;
    }
}

export function factsOfDxf(path) {
    const lines = readFileSync(path, 'utf8').split(/\r?\n/);
    const records = [];
    for (let i = 0; i + 1 < lines.length; i += 2) {
        const code = Number(lines[i]), value = lines[i + 1];
        if (code === 0) records.push({ type: value, pairs: [] });
        else records.at(-1).pairs.push([code, value]);
    }
    const facts = { blocks: {}, layers: [], linetypes: [], styles: [] };
    const nameOfOwner = {};
    let section = '', block = null, last = null;
    for (const { type, pairs } of records) {
        const own = pairs.slice(0, pairs.findIndex(p => p[0] >= 1000) < 0 ? undefined : pairs.findIndex(p => p[0] >= 1000));
        const groups = new Groups(own);
        // The owner stands behind the lists in braces.
        let depth = 0;
        const head = new Groups(own.filter(([code, value]) => {
            if (code === 102) depth = value.startsWith('{') ? 1 : 0;
            return depth === 0;
        }));
        if (type === 'SECTION') section = groups.word(2);
        else if (type === 'LAYER' && section === 'TABLES') facts.layers.push(groups.word(2));
        else if (type === 'LTYPE' && section === 'TABLES') facts.linetypes.push(groups.word(2));
        else if (type === 'STYLE' && section === 'TABLES') facts.styles.push(groups.word(2));
        else if (type === 'BLOCK_RECORD') {
            nameOfOwner[groups.word(5)] = groups.word(2).toUpperCase();
            facts.blocks[groups.word(2).toUpperCase()] = [];
        } else if (type === 'BLOCK') block = groups.word(2).toUpperCase();
        else if (type === 'ENDBLK') block = null;
        else if ((section === 'BLOCKS' && block) || section === 'ENTITIES') {
            if (['ENDSEC', 'SEQEND', 'VERTEX'].includes(type)) {
                if (type === 'VERTEX') last.parts.push(groups.xyz(10));
                continue;
            }
            const found = entity(type, groups.word(5), groups.word(8), groups, fromGroups);
            found.parts = [];
            found.several = groups.one(70, 1) > 1 || groups.one(71, 1) > 1;
            if (type === 'ATTRIB') {
                last.parts.push([groups.word(5), groups.word(2), groups.word(1)]);
                continue;
            }
            last = found;
            const owner = section === 'ENTITIES' ? nameOfOwner[head.word(330)] : block;
            // The sheet's own viewport is no entity that anybody drew.
            if (type === 'VIEWPORT' && groups.one(69) === 1) continue;
            facts.blocks[owner].push(found);
        }
    }
    return facts;
}

// Readers of DWG files ------------------------------------------------------------------------------------------------

// Gives the facts and what the reader had to complain about.
export async function factsOfAcad(path) {
    const { DwgReader } = await import('@node-projects/acad-ts');
    const bytes = readFileSync(path);
    const complaints = [];
    const doc = DwgReader.readFromStream(bytes.buffer.slice(bytes.byteOffset, bytes.byteOffset + bytes.byteLength),
                                         (sender, event) => complaints.push(event.message));
    const facts = { blocks: {}, layers: [...doc.layers].map(l => l.name), linetypes: [...doc.lineTypes].map(l => l.name),
                    styles: [...doc.textStyles].map(s => s.name) };
    for (const record of doc.blockRecords) {
        const list = facts.blocks[record.name.toUpperCase()] = [];
        for (const e of record.entities) {
            const kind = e.objectName;
            const found = entity(kind, hex(e.handle), e.layer.name, e, fromAcad);
            found.parts = kind === 'INSERT' ? [...e.attributes].map(a => [hex(a.handle), a.tag, a.value])
                : kind === 'POLYLINE' ? [...e.vertices].map(v => point(v.location)) : [];
            list.push(found);
        }
    }
    return { facts, complaints };
}

// This reader prints its complaints, and its state does not survive a second file: it gets a process of its own.
export async function factsOfRed(path) {
    const { Dwg_File_Type, LibreDwg } = await import('@mlightcad/libredwg-web');
    const library = await LibreDwg.create('./node_modules/@mlightcad/libredwg-web/wasm/');
    const bytes = readFileSync(path);
    const data = library.dwg_read_data(bytes.buffer.slice(bytes.byteOffset, bytes.byteOffset + bytes.byteLength),
                                       Dwg_File_Type.DWG);
    const drawing = library.convert(data);
    const names = table => drawing.tables[table].entries.map(entry => entry.name);
    const facts = { blocks: {}, layers: names('LAYER'), linetypes: names('LTYPE'), styles: names('STYLE') };
    for (const record of drawing.tables.BLOCK_RECORD.entries) {
        facts.blocks[record.name.toUpperCase()] = record.entities.filter(e => e.type !== 'ATTRIB').map(e => {
            const kind = e.type.startsWith('POLYLINE') ? 'POLYLINE' : e.type;
            const found = entity(kind, hex(e.handle), e.layer, e, fromRed);
            found.parts = kind === 'INSERT' ? (e.attribs ?? []).map(a => [hex(a.handle), a.tag, a.text.text])
                : kind === 'POLYLINE' ? e.vertices.map(v => point(v)) : [];
            return found;
        });
    }
    return facts;
}
