// A recording as a file: what the page saves, and what it accepts.
import { listOf, object, oneOf, text } from "./shape.js";
import * as shapes from "./shapes.js";

export const Format = "carvoy-screen-recording";
export const Version = 1;
export const MostBytes = 64 * 1024 * 1024;

export class RecordingError extends Error {}

const recording = object({
    format: oneOf(Format),
    version: oneOf(Version),
    saved: text,
    kept: shapes.kept,
    base: shapes.state,
    events: listOf(shapes.event, shapes.Most.events),
    pictures: shapes.pictures,
});

/** The files of a list of the image directory's, as in the addresses. */
export function filesOf(images) {
    return images.map((image) => `${image.name}?v=${image.version}`);
}

/** The pictures that a timeline speaks of, as in the addresses; those that it speaks of last are the last. */
export function picturesOf(base, events) {
    const names = new Set();
    const add = (name) => {
        names.delete(name);
        names.add(name);
    };
    const take = (event, data) => {
        if (event === "card") {
            (data?.products ?? []).forEach((product) => [product.picture, product.badge].forEach(add));
        }
        if (event === "images") {
            filesOf(data ?? []).forEach(add);
        }
    };
    take("card", base.card);
    take("images", base.images);
    events.forEach((event) => take(event.name, event.data));
    return [...names].filter(Boolean);
}

export function makeRecording(timeline, pictures, saved) {
    const { base, events, kept } = timeline;
    return { format: Format, version: Version, saved: saved.toISOString(), kept, base, events, pictures };
}

function readJson(content) {
    try {
        return JSON.parse(content);
    } catch {
        throw new RecordingError("it is not JSON, or only a part of it is there");
    }
}

// A page never has more than is kept.
function trimmed(base, kept) {
    const lists = ["messages", "log"].filter((name) => Array.isArray(base[name]) && base[name].length > kept[name]);
    return { ...base, ...Object.fromEntries(lists.map((name) => [name, base[name].slice(-kept[name])])) };
}

/** What is wrong with a recording, in words, or "". */
export function wrongIn(value) {
    const wrong = recording(value, "");
    return wrong || (Number.isNaN(Date.parse(value.saved)) ? "saved is no time" : "");
}

/** Throws a RecordingError that says in words why this is no recording that can be shown. */
export function parseRecording(content) {
    const value = readJson(content);
    if (value?.format === Format && value.version !== Version) {
        throw new RecordingError(`it has version ${String(value.version).slice(0, 20)}, and this page reads ${Version}`);
    }
    const wrong = value?.format === Format ? wrongIn(value) : "it is something else than a recording";
    if (wrong) {
        throw new RecordingError(wrong);
    }
    return { ...value, base: trimmed(value.base, value.kept) };
}
