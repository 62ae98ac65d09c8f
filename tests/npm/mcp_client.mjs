// Drives the built program with the protocol's own client library over standard input and output.
// Arguments: the program, a folder for files.
import assert from 'node:assert/strict';
import { readFileSync, statSync } from 'node:fs';
import { join } from 'node:path';
import { Client } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport } from '@modelcontextprotocol/sdk/client/stdio.js';

const [program, folder] = process.argv.slice(2);
const transport = new StdioClientTransport({
    command: program, args: ['mcp'], stderr: 'ignore',
    env: { ...process.env, QT_QPA_PLATFORM: 'offscreen' },
});
const client = new Client({ name: 'kovacad-check', version: '1' });
const strays = [];
client.onerror = error => strays.push(String(error));
await client.connect(transport);

const call = (name, args = {}) => client.callTool({ name, arguments: args });
const text = result => result.content.find(part => part.type === 'text')?.text ?? '';
const ok = async (name, args) => {
    const result = await call(name, args);
    assert.ok(!result.isError, `${name} failed: ${text(result)}`);
    return result;
};
const fails = async (name, args) => {
    const result = await call(name, args);
    assert.equal(result.isError, true, `${name} ${JSON.stringify(args)} did not fail: ${text(result)}`);
    return text(result);
};
const run = async (...commands) => text(await ok('run_commands', { commands }));

// The handshake and the list of tools.
assert.equal(client.getServerVersion().name, 'kovacad');
assert.match(client.getInstructions(), /^KovaCAD is a 2D\/3D CAD/);
const { tools } = await client.listTools();
assert.deepEqual(tools.map(tool => tool.name),
    ['drawing_info', 'new_drawing', 'open_drawing', 'save_drawing', 'run_commands', 'cancel_command', 'run_python',
        'list_entities', 'render_image', 'list_commands']);
for (const tool of tools) assert.equal(tool.inputSchema.type, 'object', tool.name);
await client.ping();

// A small floor plan: walls, a door, a dimension, a label.
await ok('new_drawing', { template: 'metric' });
await run('-LAYER', 'M', 'Walls', 'LW', '0.5', '', '');
await run('RECTANGLE', '0,0', '6000,4000');
await run('RECTANGLE', '200,200', '5800,3800');
await run('LINE', '3000,200', '3000,3800', '');
await run('-LAYER', 'M', 'Doors', 'C', '3', '', '');
assert.match(await run('ARC', 'C', '3000,1000', '3900,1000', 'A', '90'), /\[ready\] Command:$/);
await run('-LAYER', 'M', 'Dims', 'C', '1', '', '');
await run('DIMLINEAR', '0,0', '6000,0', '3000,-800');
await run('DIMLINEAR', '0,0', '0,4000', '-800,2000');
await run('TEXT', '800,2000', '250', '0', 'Room 1', '');
assert.match(await run('CIRCLE'), /\[waiting\]/);
await ok('cancel_command');
assert.match(text(await ok('run_commands', { commands: ['LINE', '0,0'], cancel_first: true })), /\[waiting\]/);
await ok('cancel_command');

const info = JSON.parse(text(await ok('drawing_info')));
assert.equal(JSON.stringify(info).includes('Walls'), true);
const dimensions = JSON.parse(text(await ok('list_entities', { type: 'DIMENSION' })));
const dimensionCount = (dimensions.entities ?? dimensions).length;
assert.equal(dimensionCount, 2);
const walls = JSON.parse(text(await ok('list_entities', { layer: 'Walls', limit: 2 })));
assert.equal((walls.entities ?? walls).length, 2);

// Python sees the same drawing.
assert.equal(text(await ok('run_python', { code: 'from kova.doc import current\nprint(len(current().model_space))' })).trim(), '7');
assert.match(await fails('run_python', { code: '1/0' }), /ZeroDivisionError/);

// A picture.
const picture = await ok('render_image', { width: 640, height: 480, save_to: join(folder, 'plan.png') });
const image = picture.content.find(part => part.type === 'image');
assert.equal(image.mimeType, 'image/png');
const png = Buffer.from(image.data, 'base64');
assert.deepEqual([png.readUInt32BE(16), png.readUInt32BE(20)], [640, 480]);
assert.deepEqual(png, readFileSync(join(folder, 'plan.png')));

// Files there and back.
const dxf = join(folder, 'plan.dxf');
await ok('save_drawing', { path: dxf });
assert.ok(statSync(dxf).size > 10000);
await ok('new_drawing');
await ok('open_drawing', { path: dxf });
const again = JSON.parse(text(await ok('list_entities', { type: 'DIMENSION' })));
assert.equal((again.entities ?? again).length, 2);

// Commands by a part of their name; failures are results, not protocol errors.
assert.match(text(await ok('list_commands', { contains: 'CIRC' })), /CIRCLE/);
await fails('open_drawing', { path: join(folder, 'missing.dxf') });
await fails('list_entities', { space: 'No such layout' });
await fails('list_entities', { limit: '5' });
await fails('run_commands', { commands: 'LINE' });
await fails('render_image', { width: 'wide' });
assert.equal(await fails('no_such_tool'), 'Unknown tool: no_such_tool');
assert.equal(await fails('list_entities', { type: 'FROB' }), 'Unknown entity type: FROB');
assert.equal(await fails('list_entities', { space: 'Nowhere' }), 'No layout named Nowhere');
await assert.rejects(client.request({ method: 'no/such/method' }, { parse: value => value }));
await client.ping();

assert.deepEqual(strays, [], 'lines that are no protocol');
await client.close();
console.log('MCP client: all well');
