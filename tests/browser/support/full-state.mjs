// A state in which every panel has something to show, and some of it is too long.
import { card as cardOf, message, product, settings } from "./states.mjs";

export const Long = "Extraordinarily-long-single-word-product-name-without-any-place-to-break";
const received = [
    { number: 1, time: "2026-01-01T10:00:00.000Z", operation: "http://a/b/show_detailed_view", from: "x", extras: {}, outcome: "taken" },
    { number: 2, time: "2026-01-01T10:00:01.000Z", operation: "http://a/b/click_add_cart", from: "x", extras: {}, outcome: "no product's page is open" },
];
const bought = { merchant: "freshmart", variantRef: "FM-1001-1" };
const products = [
    product({ picture: "1.gif?v=1" }),
    product({ name: Long, variantRef: "2" }),
    product({ name: "With a picture", variantRef: "3", picture: "3.gif?v=1", badge: "4.gif?v=1", price: "1,234,567,890원" }),
];
const kinds = ["launch", "reply", "refusal", "voice"];
const messages = kinds.flatMap((kind, index) => [
    { ...message({ number: index * 2 + 1, kind, error: kind === "refusal" ? "NoReply" : "" }), at: 1767225600000 },
    { ...message({ number: index * 2 + 2, kind, from: "org.tizen.nuvex-da", extras: { list: ["a", ""], none: [] } }), at: 1767225601000 },
]);
const colours = Array.from({ length: 8 }, (_, n) => `\x1b[${30 + n}mink ${n}\x1b[0m \x1b[${90 + n}mbright\x1b[0m \x1b[4${n}mback\x1b[0m`);
const log = ["V", "D", "I", "W", "E", "F"].map((level) => ({ at: 1767225600000, line: `${level}/carvoy-service( 12): ${colours.join(" ")}` }));

export const full = {
    card: cardOf({ products, troubles: ["~image-404=2"], term: "milk" }),
    partner: { page: "product", product: bought, cart: [{ product: bought, quantity: 2 }], messages: received },
    assistant: { turn: 1, sentence: "add it", action: "", nlu: [], fate: "failed", reason: "not understood", view: "open", messages: received },
    record: { isLoggedIn: 1, isLinked: 0, totalCount: 3, productCountInCart: null, currentViewType: null },
    flag: 1,
    images: [{ name: "1.gif", size: 43, version: "1" }],
    apps: { "org.tizen.carvoy": true, "org.tizen.carvoy-service": true },
    notice: { text: "A notice of the appliance's.", level: "error" },
    settings: settings(),
    messages,
    log,
};

/** The pictures that are there. */
export const pictures = ["1.gif?v=1", "3.gif?v=1", "4.gif?v=1"];
