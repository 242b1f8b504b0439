// What a state, its parts and an event look like: what the views rely on.
import { either, flag, isObject, listOf, mapOf, number, object, oneOf, optional, orNull, text } from "./shape.js";

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
    reasons: listOf(text),
    source: oneOf("merchant", "retailer"),
    merchant: text,
    term: text,
    troubles: listOf(text),
    products: listOf(product, 100),
});

const reference = object({ merchant: text, variantRef: text });

const received = object({
    number,
    time: text,
    operation: text,
    from: text,
    extras: mapOf(text),
    outcome: text,
});

const partner = object({
    page: text,
    product: reference,
    cart: listOf(object({ product: reference, quantity: number })),
    messages: listOf(received),
});

const assistant = object({
    turn: number,
    sentence: text,
    action: text,
    nlu: listOf(text),
    fate: text,
    reason: text,
    view: text,
    messages: listOf(received),
});

const settings = object({
    confirm: text,
    delay: number,
    partner: optional(text),
    merchants: listOf(text),
    switches: listOf(object({ id: text, label: text, words: text, for: text, group: text, on: flag })),
});

const message = {
    number,
    kind: oneOf("launch", "reply", "refusal", "voice"),
    from: text,
    to: text,
    operation: text,
    uri: text,
    extras: mapOf(either(text, listOf(text))),
    result: text,
    error: text,
    answers: number,
};

const images = listOf(object({ name: text, size: number, version: text }));
const apps = mapOf(flag);

const slices = {
    card: orNull(card),
    partner: orNull(partner),
    assistant: orNull(assistant),
    record: orNull(mapOf(orNull(number))),
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
    messages: optional(listOf(object({ ...message, at: number }))),
    log: optional(listOf(object({ line: text, at: number }))),
});

const anyEvent = object({ at: number, name: text });

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

export const kept = object({ messages: number, log: number });

/** A picture in the recording itself. */
export function isPictureData(data) {
    return typeof data === "string" && /^data:image\/(png|jpeg|gif|webp|bmp);base64,/.test(data);
}

export function pictures(value, path) {
    if (!isObject(value)) {
        return `${path} is no object`;
    }
    const wrong = Object.keys(value).find((name) => !isPictureData(value[name]));
    return wrong === undefined ? "" : `${path}.${wrong} is no picture`;
}
