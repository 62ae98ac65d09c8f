// Holds DWG files of the built program against two readers that other people wrote: they must find in them what the
// DXF file of the same drawing says, and have nothing to complain about.
// Arguments: the program, a folder for files.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { stages } from './dwg_drawing.mjs';
import { factsOfAcad, factsOfDxf, factsOfRed } from './dwg_facts.mjs';

const self = fileURLToPath(import.meta.url);
const mark = 'FACTS ';

if (process.argv[2] === '--red') {
    const facts = await factsOfRed(process.argv[3]);
    console.log(mark + JSON.stringify(facts, (key, value) => typeof value === 'bigint' ? Number(value) : value));
    process.exit(0);
}

const { Client } = await import('@modelcontextprotocol/sdk/client/index.js');
const { StdioClientTransport } = await import('@modelcontextprotocol/sdk/client/stdio.js');
const [program, folder] = process.argv.slice(2);
const client = new Client({ name: 'kovacad-check', version: '1' });
await client.connect(new StdioClientTransport({
    command: program, args: ['mcp'], stderr: 'ignore', env: { ...process.env, QT_QPA_PLATFORM: 'offscreen' },
}));
const call = async (name, args = {}) => {
    const result = await client.callTool({ name, arguments: args });
    const text = result.content[0].text;
    assert.ok(!result.isError, `${name}: ${text}`);
    return text;
};
const draw = async rows => {
    for (const row of rows) {
        const text = await call('run_commands', { commands: row, cancel_first: true });
        assert.match(text, /\[ready\] Command:$/, row.join('|'));
        assert.doesNotMatch(text, /Invalid|Unknown command/, row.join('|'));
    }
};
const save = async (name, version) => {
    const path = join(folder, name);
    const text = await call('save_drawing', version ? { path, dwg_version: version } : { path });
    assert.match(text, /^Saved: .*$/, 'the program tells of losses');
    return path;
};

// Comparison ----------------------------------------------------------------------------------------------------------

const faults = [];
const near = (a, b) => Math.abs(a - b) <= 1e-9 * Math.max(1, Math.abs(a), Math.abs(b)) ||
    // Angles a turn apart.
    Math.abs(Math.abs(a - b) - 2 * Math.PI) < 1e-9;

function compareEntities(where, mine, theirs) {
    const tell = (what, a, b) => faults.push(`${where}: ${mine.kind} ${mine.handle}: ${what}: ${JSON.stringify(a)} | ${JSON.stringify(b)}`);
    if (mine.kind !== theirs.kind) return tell('kind', mine.kind, theirs.kind);
    if (mine.layer !== theirs.layer) tell('layer', mine.layer, theirs.layer);
    if (mine.numbers.length !== theirs.numbers.length || !mine.numbers.every((v, i) => near(v, theirs.numbers[i])))
        tell('numbers', mine.numbers, theirs.numbers);
    if (JSON.stringify(mine.words) !== JSON.stringify(theirs.words)) tell('words', mine.words, theirs.words);
    const parts = JSON.stringify(mine.parts), others = JSON.stringify(theirs.parts);
    if (parts !== others) tell('parts', mine.parts, theirs.parts);
}

// `unknown`: kinds that the reader does not give; kinds under several names are put under one by `rename`.
function compare(where, mine, theirs, unknown, rename) {
    for (const table of ['layers', 'linetypes', 'styles']) {
        const [a, b] = [mine, theirs].map(facts => facts[table].map(n => n.toUpperCase()).sort().join(', '));
        if (a !== b) faults.push(`${where}: ${table}: ${a} | ${b}`);
    }
    const [a, b] = [mine, theirs].map(facts => Object.keys(facts.blocks).sort().join(', '));
    if (a !== b) faults.push(`${where}: blocks: ${a} | ${b}`);
    let compared = 0;
    for (const [block, list] of Object.entries(mine.blocks)) {
        const found = new Map((theirs.blocks[block] ?? []).map(e => [e.handle, e]));
        for (const e of list) {
            if (unknown(e)) {
                found.delete(e.handle);
                continue;
            }
            const other = found.get(e.handle);
            found.delete(e.handle);
            if (!other) {
                faults.push(`${where}: ${block}: ${e.kind} ${e.handle} is missing`);
                continue;
            }
            compareEntities(`${where}: ${block}`, { ...e, kind: rename[e.kind] ?? e.kind }, { ...other, kind: rename[other.kind] ?? other.kind });
            compared++;
        }
        for (const e of found.values()) {
            // The view of the whole sheet is the first entity of a sheet with views.
            if (e.kind === 'VIEWPORT' && block.startsWith('*PAPER_SPACE') && theirs.blocks[block][0].handle === e.handle) continue;
            faults.push(`${where}: ${block}: ${e.kind} ${e.handle} is not ours`);
        }
    }
    assert.ok(compared > 400, `${where}: only ${compared} entities were compared`);
    return compared;
}

const rename = { MLEADER: 'MULTILEADER', ACAD_TABLE: 'TABLE' };
// These it reads and leaves out of what it gives.
const leftOut = new Set(['REGION', 'ARC_DIMENSION', 'HELIX']);
const unknownToRed = e => leftOut.has(e.kind) || (e.kind === 'INSERT' && e.several);

// What readers say of any file, also of those of the program that made the format. acad-ts keeps some kinds without
// looking into them. libredwg reads a byte of each attribute and a bit of each body that are not there (64: some value is
// out of bounds), and takes the cells of tables wrongly.
const known = {
    plain: { acad: /^$/, red: /^$/ },
    attributed: { acad: /^$/, red: /^Open dwg file with error code: 64$/ },
    rare: {
        acad: /^Unlisted object with DXF name (HELIX|LARGE_RADIAL_DIMENSION) |^DWG R2010\+ table content is not mapped yet/,
        red: null,
    },
};

await call('new_drawing', { template: 'metric' });
let compared = 0;
for (const [stage, rows] of Object.entries(stages)) {
    await draw(rows);
    const mine = factsOfDxf(await save(`${stage}.dxf`));
    for (const version of ['R2010', 'R2013', 'R2018']) {
        const path = await save(`${stage}_${version}.dwg`, version);
        let where = `acad-ts on ${stage} ${version}`;
        const acad = await factsOfAcad(path);
        for (const line of acad.complaints) if (!known[stage].acad.test(line)) faults.push(`${where}: ${line}`);
        compared += compare(where, mine, acad.facts, e => ['HELIX', 'LARGE_RADIAL_DIMENSION'].includes(e.kind), rename);

        if (!known[stage].red) continue;
        where = `libredwg on ${stage} ${version}`;
        const child = spawnSync(process.execPath, [self, '--red', path], { encoding: 'utf8', maxBuffer: 1 << 28 });
        const lines = (child.stdout + child.stderr).split('\n').filter(line => line !== '');
        const facts = lines.find(line => line.startsWith(mark));
        for (const line of lines) if (line !== facts && !known[stage].red.test(line)) faults.push(`${where}: ${line}`);
        assert.ok(facts, `${where}: no answer`);
        compared += compare(where, mine, JSON.parse(facts.slice(mark.length)), unknownToRed, rename);
    }
}
await client.close();

if (faults.length > 0) {
    console.log(`${faults.length} faults (our DXF | their reading):`);
    for (const line of faults.slice(0, 60)) console.log('  ' + line);
    process.exit(1);
}
console.log(`DWG readers: all well, ${compared} entities compared`);
