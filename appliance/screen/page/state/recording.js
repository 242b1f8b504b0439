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
    events: listOf(shapes.event),
    pictures: shapes.pictures,
});

/** The pictures that a timeline speaks of, as in the addresses. */
export function picturesOf(base, events) {
    const names = new Set();
    const take = (name, data) => {
        if (name === "card") {
            (data?.products ?? []).forEach((product) => names.add(product.picture).add(product.badge));
        }
        if (name === "images") {
            (data ?? []).forEach((image) => names.add(`${image.name}?v=${image.version}`));
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

/** Throws a RecordingError that says in words why this is no recording that can be shown. */
export function parseRecording(content) {
    const value = readJson(content);
    if (value?.format === Format && value.version !== Version) {
        throw new RecordingError(`it has version ${String(value.version).slice(0, 20)}, and this page reads ${Version}`);
    }
    const wrong = value?.format === Format ? recording(value, "") : "it is something else than a recording";
    if (wrong) {
        throw new RecordingError(wrong);
    }
    if (Number.isNaN(Date.parse(value.saved))) {
        throw new RecordingError("saved is no time");
    }
    if (!(value.kept.messages >= 1 && value.kept.log >= 1)) {
        throw new RecordingError("kept is below 1");
    }
    return value;
}
