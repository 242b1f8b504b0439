// ANSI colours of the log as classes. Everything else that steers a terminal is dropped.

const Colours = ["black", "red", "green", "yellow", "blue", "magenta", "cyan", "white"];

const Plain = { bold: false, dim: false, italic: false, underline: false, ink: "", back: "" };

// A CSI sequence, an OSC sequence, another escape, or a single control character but the tabulator.
const Control = /\x1b\[([0-?]*)[ -/]*([@-~])|\x1b\][^\x07\x1b]*(?:\x07|\x1b\\)?|\x1b[@-_]?|[\x00-\x08\x0a-\x1f\x7f-\x9f]/g;

const Switches = {
    1: { bold: true },
    2: { dim: true },
    3: { italic: true },
    4: { underline: true },
    22: { bold: false, dim: false },
    23: { italic: false },
    24: { underline: false },
    39: { ink: "" },
    49: { back: "" },
};

function colourOf(code) {
    const bright = code >= 90;
    const name = Colours[code % 10];
    return name && (bright ? `bright-${name}` : name);
}

// 38;5;N and 38;2;R;G;B are taken out whole: the theme has no such colours.
function lengthOfExtended(codes, at) {
    return codes[at + 1] === 5 ? 3 : codes[at + 1] === 2 ? 5 : 1;
}

function applyCodes(style, codes) {
    let next = style;
    for (let i = 0; i < codes.length; ++i) {
        const code = codes[i];
        if (code === 0) {
            next = Plain;
        } else if (code === 38 || code === 48) {
            i += lengthOfExtended(codes, i) - 1;
        } else if (Switches[code]) {
            next = { ...next, ...Switches[code] };
        } else if ((code >= 30 && code <= 37) || (code >= 90 && code <= 97)) {
            next = { ...next, ink: colourOf(code) };
        } else if ((code >= 40 && code <= 47) || (code >= 100 && code <= 107)) {
            next = { ...next, back: colourOf(code >= 100 ? code - 10 : code) };
        }
    }
    return next;
}

function classesOf(style) {
    const classes = ["bold", "dim", "italic", "underline"].filter((name) => style[name]).map((name) => `sgr-${name}`);
    if (style.ink) {
        classes.push(`sgr-${style.ink}`);
    }
    if (style.back) {
        classes.push(`sgr-on-${style.back}`);
    }
    return classes;
}

/** [{text, classes}], without empty texts; neighbours of the same look are one. */
export function parseAnsi(line) {
    const pieces = [];
    let style = Plain;
    const add = (text) => {
        const classes = classesOf(style);
        const last = pieces.at(-1);
        if (last && last.classes.join() === classes.join()) {
            last.text += text;
        } else if (text) {
            pieces.push({ text, classes });
        }
    };
    let from = 0;
    for (const found of line.matchAll(Control)) {
        add(line.slice(from, found.index));
        from = found.index + found[0].length;
        if (found[2] === "m" && /^[0-9;]*$/.test(found[1])) {
            style = applyCodes(style, found[1].split(";").map(Number));
        }
    }
    add(line.slice(from));
    return pieces;
}

export function plainText(line) {
    return line.replace(Control, "");
}
