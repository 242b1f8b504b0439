// Small descriptions of what a value must look like. A description is a function of a value and its path that returns
// what is wrong, in words, or "".

export const text = (value, path) => (typeof value === "string" ? "" : `${path} is no text`);
export const flag = (value, path) => (typeof value === "boolean" ? "" : `${path} is neither true nor false`);
export const number = (value, path) => (Number.isFinite(value) ? "" : `${path} is no number`);
export const anything = () => "";

export function orNull(shape) {
    return (value, path) => (value === null ? "" : shape(value, path));
}

export function optional(shape) {
    return (value, path) => (value === undefined ? "" : shape(value, path));
}

/** A whole number from `least` to `most`. */
export function whole(least, most) {
    const isWhole = (value) => Number.isInteger(value) && value >= least && value <= most;
    return (value, path) => (isWhole(value) ? "" : `${path} is no whole number from ${least} to ${most}`);
}

const LatestTime = 8.64e15;

/** Milliseconds since 1970, of a day that a calendar has. */
export function time(value, path) {
    const wrong = number(value, path);
    return wrong || (value >= 0 && value <= LatestTime ? "" : `${path} is no time`);
}

export function oneOf(...values) {
    return (value, path) => (values.includes(value) ? "" : `${path} is none of ${values.join(", ")}`);
}

export function either(...shapes) {
    return (value, path) => {
        const wrong = shapes.map((shape) => shape(value, path));
        return wrong.includes("") ? "" : wrong[0];
    };
}

export function isObject(value) {
    return typeof value === "object" && value !== null && !Array.isArray(value);
}

function firstWrong(checks) {
    for (const check of checks) {
        const wrong = check();
        if (wrong) {
            return wrong;
        }
    }
    return "";
}

export function listOf(shape, most) {
    return (value, path) => {
        if (!Array.isArray(value)) {
            return `${path} is no list`;
        }
        if (value.length > most) {
            return `${path} has more than ${most} entries`;
        }
        return firstWrong(value.map((item, index) => () => shape(item, `${path}[${index}]`)));
    };
}

export function mapOf(shape, most) {
    return (value, path) => {
        if (!isObject(value)) {
            return `${path} is no object`;
        }
        const members = Object.entries(value);
        if (members.length > most) {
            return `${path} has more than ${most} entries`;
        }
        return firstWrong(members.map(([key, item]) => () => shape(item, `${path}.${key}`)));
    };
}

/** Members that are not described may be there, and are not looked at. */
export function object(members) {
    return (value, path) => {
        if (!isObject(value)) {
            return `${path} is no object`;
        }
        const names = Object.keys(members);
        return firstWrong(names.map((name) => () => members[name](value[name], path ? `${path}.${name}` : name)));
    };
}
