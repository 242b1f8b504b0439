// The sequence diagram's places and texts, and names and reasons in words.
import assert from "node:assert/strict";
import { test } from "node:test";

import { lanesFor, layoutOf, shortOperation, summaryOf } from "../../../appliance/screen/page/model/lanes.js";
import { nameOf, pictureFates } from "../../../appliance/screen/page/model/products.js";
import { plainReason } from "../../../appliance/screen/page/model/reasons.js";
import { card, message, product, someState } from "../support/states.mjs";

const lanes = lanesFor("com.shop.pay");
const place = (from, to) => layoutOf({ from, to }, lanes);

test("Each app has its lane, and everything else shares one", () => {
    assert.deepEqual(
        lanes.map(({ id }) => id),
        ["others", "ui", "service", "retailer", "partner", "assistant"],
    );
    assert.deepEqual([place("org.tizen.carvoy", "com.shop.pay").start, place("org.tizen.carvoy", "com.shop.pay").end], [1, 4]);
    assert.equal(place(":1.9", "org.tizen.carvoy").start, 0);
    assert.equal(place("", "org.tizen.carvoy").start, 0);
    assert.equal(place("org.example.partnerpay", "org.tizen.carvoy").start, 0);
});

test("What was said comes from the assistant, whatever connection delivers it", () => {
    const voice = (from) => layoutOf({ kind: "voice", from, to: "org.tizen.carvoy-service" }, lanes);
    assert.deepEqual([voice(":1.3").start, voice(":1.3").end], [5, 2]);
    assert.equal(voice("org.tizen.carvoy").start, 1);
});

test("An arrow goes from the middle of one lane to the middle of the other", () => {
    const right = place("org.tizen.carvoy", "org.tizen.carvoy-service");
    assert.equal(right.direction, "right");
    assert.ok(Math.abs(right.left - 1.5 / 6) < 1e-9 && Math.abs(right.width - 1 / 6) < 1e-9);
    const left = place("org.tizen.nuvex-da", "org.tizen.carvoy-service");
    assert.equal(left.direction, "left");
    assert.ok(Math.abs(left.left - 2.5 / 6) < 1e-9 && Math.abs(left.width - 3 / 6) < 1e-9);
    const self = place(":1.2", ":1.3");
    assert.deepEqual([self.direction, self.width], ["self", 0]);
});

test("A label stands where there is more room", () => {
    assert.equal(place("org.tizen.carvoy", "org.tizen.carvoy-service").side, "left");
    assert.equal(place("org.tizen.carvoy-service", "org.tizen.nuvex-da").side, "right");
});

test("A row's text has the operation's last part, and the extra data in short", () => {
    assert.equal(shortOperation("http://carvoy-service/appcontrol/operation/search"), "search");
    assert.equal(shortOperation("Result"), "Result");
    assert.equal(shortOperation(""), "default");
    const extras = { key_search_term: "milk", key_product_names: ["a", "b"], other: "x".repeat(80) };
    assert.equal(summaryOf(message({ extras })), `search_term milk · product_names [2] · other ${"x".repeat(60)}…`);
    assert.equal(summaryOf(message({ kind: "reply", result: "failed", extras: {} })), "failed");
    assert.equal(summaryOf(message({ kind: "refusal", error: "NoReply", extras: { a: "" } })), "NoReply · a ");
});

test("A product is known by the card, else by the newest list that named it, else not at all", () => {
    const lists = (name) => ({
        ...message({
            extras: { key_merchant: "freshmart", key_product_names: [name], key_product_variant_refs: ["R-1"] },
        }),
        at: 1,
    });
    const wanted = { merchant: "freshmart", variantRef: "R-1" };
    const onCard = card({ products: [product({ name: "Of the card", variantRef: "R-1" })] });
    const messages = [lists("Older"), lists("Newer")];
    assert.equal(nameOf(someState({ card: onCard, messages }), wanted), "Of the card");
    assert.equal(nameOf(someState({ card: { ...onCard, merchant: "greengrocer" }, messages }), wanted), "Newer");
    assert.equal(nameOf(someState({ card: null, messages }), { ...wanted, variantRef: "R-2" }), "");
    assert.equal(nameOf(someState({ card: null, messages }), { ...wanted, merchant: "other" }), "");
});

test("A picture is missing once a later product has one, and awaited before", () => {
    const fates = (...pictures) => pictureFates(pictures.map((picture) => ({ picture })));
    assert.deepEqual(fates("", "", ""), ["awaited", "awaited", "awaited"]);
    assert.deepEqual(fates("a", "", "c", ""), ["known", "missing", "known", "awaited"]);
});

test("A failed search is told in plain words", () => {
    const words = (reason) => plainReason([reason], "merchant");
    assert.match(words("Not logged in"), /merchant did not accept the sign-in/);
    assert.match(words("Invalid access token"), /Nobody is signed in/);
    assert.match(words("curl perform failed: 503"), /cannot answer at the moment/);
    assert.match(words("curl perform failed: 404"), /refused the search/);
    assert.match(words("curl perform failed: 0"), /no answer/);
    assert.match(words("curl_easy_perform() failed: SSL peer certificate or SSH remote key was not OK"), /certificate is not trusted/);
    assert.match(words("curl_easy_perform() failed: Timeout was reached"), /too long/);
    assert.match(words("curl_easy_perform() failed: Couldn't connect to server"), /could not be reached/);
    assert.match(words("json_parser_load_from_data() failed"), /could not be understood/);
    assert.match(words("no member: products"), /could not be understood/);
    assert.match(words("something new"), /could not be completed/);
    assert.match(plainReason(["something new", "Not logged in"], "retailer"), /retailer did not accept/);
    assert.match(plainReason([], "merchant"), /could not be completed/);
});
