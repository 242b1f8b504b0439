// Times, sizes and names as the page writes them.

const pad = (number, digits = 2) => String(number).padStart(digits, "0");

/** Local time of day, to the millisecond: all that an engineer compares. */
export function clock(at) {
    const time = new Date(at);
    const seconds = `${pad(time.getSeconds())}.${pad(time.getMilliseconds(), 3)}`;
    return `${pad(time.getHours())}:${pad(time.getMinutes())}:${seconds}`;
}

export function day(at) {
    const time = new Date(at);
    return `${time.getFullYear()}-${pad(time.getMonth() + 1)}-${pad(time.getDate())}`;
}

export function dayAndTime(at) {
    return `${day(at)} ${clock(at).slice(0, 8)}`;
}

export function bytes(size) {
    return size < 10000 ? `${size} bytes` : `${Math.round(size / 1000)} kB`;
}

/** What a table has under a name that comes from outside, which may be one that every object has. */
export function lookUp(table, name, otherwise) {
    return Object.hasOwn(table, name) ? table[name] : otherwise;
}

export function count(number, one, many = `${one}s`) {
    return `${number} ${number === 1 ? one : many}`;
}

/** "corner-store" is shown as "Corner store". */
export function merchantName(id) {
    const words = id.replace(/-/g, " ");
    return words.charAt(0).toUpperCase() + words.slice(1);
}

export const Ordinals = [
    "first",
    "second",
    "third",
    "fourth",
    "fifth",
    "sixth",
    "seventh",
    "eighth",
    "ninth",
    "tenth",
];
