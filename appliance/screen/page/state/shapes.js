// What a state, its parts and an event look like: what the views rely on.
import { either, flag, isObject, listOf, mapOf, number, object, oneOf, optional, orNull, text, time, whole } from "./shape.js";

/** As many as a page can draw without anybody waiting for it. */
export const Most = { messages: 1000, log: 5000, events: 5000, received: 100, extras: 1000, values: 5000, files: 500, pictures: 2000, few: 100 };

const product = object({
    name: text,
    size: optional(text),
    discount: text,
    formerPrice: text,
    price: text,
    variantRef: optional(text),
    id: optional(text),
    discountType: optional(text),
    picture: text,
    badge: optional(text),
});

const card = object({
    sequence: number,
    state: oneOf("empty", "searching", "shown"),
    outcome: oneOf("", "found", "nothing", "failed"),
    reasons: listOf(text, Most.few),
    source: oneOf("merchant", "retailer"),
    merchant: text,
    term: text,
    troubles: listOf(text, Most.few),
    products: listOf(product, Most.few),
});

const reference = object({ merchant: text, variantRef: text });

const received = object({
    number,
    time: text,
    operation: text,
    from: text,
    extras: mapOf(text, Most.extras),
    outcome: text,
});

const partner = object({
    page: text,
    product: reference,
    cart: listOf(object({ product: reference, quantity: number }), Most.files),
    messages: listOf(received, Most.received),
});

const assistant = object({
    turn: number,
    sentence: text,
    action: text,
    nlu: listOf(text, Most.few),
    fate: text,
    reason: text,
    view: text,
    messages: listOf(received, Most.received),
});

const settings = object({
    confirm: text,
    delay: number,
    partner: optional(text),
    merchants: listOf(text, Most.few),
    switches: listOf(object({ id: text, label: text, words: text, for: text, group: text, on: flag }), Most.few),
});

const message = {
    number,
    kind: oneOf("launch", "reply", "refusal", "voice"),
    from: text,
    to: text,
    operation: text,
    uri: text,
    extras: mapOf(either(text, listOf(text, Most.values)), Most.extras),
    result: text,
    error: text,
    answers: number,
};

const images = listOf(object({ name: text, size: number, version: text }), Most.files);
const apps = mapOf(flag, Most.files);

const slices = {
    card: orNull(card),
    partner: orNull(partner),
    assistant: orNull(assistant),
    record: orNull(mapOf(orNull(number), Most.few)),
    flag: orNull(number),
    images,
    settings: orNull(settings),
    apps,
    notice: orNull(object({ text, level: text })),
};

const entries = { message: object(message), log: object({ line: text }) };

export const state = object({
    ...Object.fromEntries(Object.entries(slices).map(([name, shape]) => [name, optional(shape)])),
    // Before the first event.
    images: optional(orNull(images)),
    apps: optional(orNull(apps)),
    messages: optional(listOf(object({ ...message, at: time }), Most.messages)),
    log: optional(listOf(object({ line: text, at: time }), Most.log)),
});

const anyEvent = object({ at: time, name: text });

/** Names that no view knows say nothing about their data. */
export function event(value, path) {
    const wrong = anyEvent(value, path);
    if (wrong) {
        return wrong;
    }
    const known = { ...slices, ...entries };
    if (Object.hasOwn(known, value.name)) {
        return known[value.name](value.data, `${path}.data`);
    }
    return value.data === undefined ? `${path}.data is missing` : "";
}

export const kept = object({ messages: whole(1, Most.messages), log: whole(1, Most.log) });

/** A picture in the recording itself. */
export function isPictureData(data) {
    return typeof data === "string" && /^data:image\/(png|jpeg|gif|webp|bmp);base64,/.test(data);
}

export function pictures(value, path) {
    if (!isObject(value)) {
        return `${path} is no object`;
    }
    const names = Object.keys(value);
    if (names.length > Most.pictures) {
        return `${path} has more than ${Most.pictures} entries`;
    }
    const wrong = names.find((name) => !isPictureData(value[name]));
    return wrong === undefined ? "" : `${path}.${wrong} is no picture`;
}
