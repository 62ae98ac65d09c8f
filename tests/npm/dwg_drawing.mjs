// A drawing of several hundred entities as rows of command inputs: every kind that commands draw, on several layers,
// in blocks and on a sheet, and a field of the common ones.
const once = [
    // Layers, linetypes, styles.
    '-LAYER|M|Walls|C|3|Walls|LW|0.5|Walls|',
    '-LAYER|N|Hidden|C|T|10,20,30|Hidden|',
    '-LAYER|M|Names|C|1|Names|',
    '-LINETYPE|L|DASHED||',
    '-LINETYPE|L|CENTER||',
    '-LAYER|L|DASHED|Hidden|',
    '-STYLE|Roman|romans.shx|0|0.8|10|N|N|N',
    // Curves.
    'POINT|1,2',
    'RAY|0,0|10,10|',
    'XLINE|0,0|10,5|',
    'SPLINE|0,0|10,10|20,0|30,10|',
    'SPLINE|M|CV|0,40|10,50|20,40|30,50|',
    'ELLIPSE|50,50|70,50|5',
    'ELLIPSE|A|50,80|70,80|5|0|90',
    'POLYGON|5|100,100|I|10',
    'DONUT|5|8|120,120|',
    'PLINE|0,400|10,400|A|20,410|',
    'REVCLOUD|R|700,0|750,30',
    'RECTANGLE|200,0|260,40',
    'ARC|0,1000|10,1005|20,1000',
    'CIRCLE|300,0|20',
    'LINE|400,0|410,0|410,10|',
    'MLINE|0,200|50,200|50,250|',
    // Faces and bodies of three dimensions.
    'SOLID|0,100|10,100|0,110|10,110|',
    '3DPOLY|0,0,0|10,0,5|10,10,10|',
    '3DFACE|0,0,0|10,0,0|10,10,5|0,10,5|',
    'LINE|1,1,1|2,3,4|',
    // Texts.
    '-LAYER|S|Names|',
    'TEXT|0,300|5|0|Hello|',
    'TEXT|J|MC|100,300|5|30|Middle \u00C4\u20AC|',
    'MTEXT|0,50|W|40|First {\\C1;second} line|the next|',
    'MTEXT|0,600|W|60|\\fArial|b1;Bold \\H2x;twice|',
    'TOLERANCE|PO|0.1|M|A||50,-50',
    'WIPEOUT|200,100|220,100|220,120|',
    // Hatches.
    'HATCH|P|ANSI31|1|0|210,10|',
    'CIRCLE|900,0|5',
    'HATCH|P|S|900,0|',
    'CIRCLE|900,40|5',
    'CIRCLE|900,40|9',
    'HATCH|P|ANSI37|0.5|15|907,40|',
    // Dimensions and leaders.
    '-LAYER|S|Walls|',
    'DIMALIGNED|0,0|30,40|-10,10',
    'DIMLINEAR|0,0|60,0|30,-10',
    'DIMORDINATE|10,10|20,30',
    'DIMRADIUS|320,0|330,10',
    'DIMDIAMETER|300,20|310,30',
    'DIMANGULAR||410,0|400,0|410,10|405,5',
    'DIMARC|10,1005|10,1015',
    '-DIMSTYLE|S|Mine',
    'LEADER|0,0|10,10|20,10||Note|',
    'MLEADER|100,0|120,20|Callout text|',
    // Blocks, groups.
    'CIRCLE|500,0|3',
    'LINE|500,0|510,10|',
    '-BLOCK|Plain|500,0|W|480,-20|520,20|',
    '-INSERT|Plain|600,0|1|1|0',
    '-INSERT|Plain|600,50|2|2|45',
    'MINSERT|Plain|800,0|1|1|0|2|3|10|10',
    '-GROUP|C|G1|two of them|905,0|400,0|',
    // Colours and lineweights of their own.
    'COLOR|T|10,20,30',
    'LINE|0,700|10,700|',
    'COLOR|BYLAYER',
    'CHPROP|5,700||LW|0.3|',
    'CHPROP|300,20||LT|CENTER|S|2|',
    'CHPROP|0,300||LA|Hidden|',
    // Sheets.
    '-LAYOUT|N|Sheet',
    '-LAYOUT|S|Layout1',
    'MVIEW|20,20|120,100',
    'TEXT|10,10|3|0|on paper|',
    'RECTANGLE|0,0|297,210',
    '-LAYOUT|S|Sheet',
    'MVIEW|30,30|120,100',
    'LINE|5,5|5.25,6.125|',
    '-LAYOUT|S|Model',
];

function field() {
    const rows = [];
    for (let i = 0; i < 60; i++) {
        const x = 2000 + (i % 10) * 50 + 1 / 3, y = Math.floor(i / 10) * 50 + i / 7;
        rows.push(`-LAYER|S|${['0', 'Walls', 'Names'][i % 3]}|`);
        rows.push(`LINE|${x},${y}|${x + 20},${y + i}|`, `CIRCLE|${x},${y}|${1 + i / 9}`,
            `ARC|${x},${y}|${x + 5},${y + 4}|${x + 10},${y}`, `PLINE|${x},${y}|${x + 9},${y}|${x + 9},${y + 9}|C`,
            `TEXT|${x},${y}|2.5|${i}|Text ${i}|`, `-INSERT|Plain|${x},${y + 20}|1|1|${i}`);
    }
    return rows;
}

// Attributes, and bodies without a modeller's data.
const attributed = [
    'CIRCLE|900,80|5',
    'REGION|905,80|',
    'ATTDEF||TAG1|Prompt|Default|500,0|2.5|0',
    'CIRCLE|500,0|3',
    '-BLOCK|Tagged|500,0|W|480,-20|520,20|',
    'MINSERT|Tagged|800,50|1|1|0|2|3|10|10|Third',
    ...Array.from({ length: 20 }, (none, i) => `-INSERT|Tagged|${3000 + i * 10},${i / 3}|1|1|${i * 7}|Value ${i}`),
];

// Kinds that not every reader knows.
const rare = [
    'HELIX|0,-100|10|5|20',
    'DIMJOGGED|10,1005|30,1030|20,1020|22,1018',
    'TABLE|3|2|300,300|a|b|c|d|e|f|g|h|i|j',
];

const inputs = rows => rows.map(row => row.split('|'));
// Lists of command inputs, one list a command; the later ones are drawn on top of the earlier ones.
export const stages = { plain: inputs([...once, ...field()]), attributed: inputs(attributed), rare: inputs(rare) };
