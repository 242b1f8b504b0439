// Recordings that somebody has made up, and what the page makes of them.
import assert from "node:assert/strict";

import { card as cardOf, message, product, settings, someState } from "../support/states.mjs";
import { card, openRecording, screen, until } from "../support/screen.mjs";
import { StandIn } from "../support/stand-in.mjs";

const Red = "data:image/gif;base64,R0lGODlhAQABAPAAAP8AAAAAACwAAAAAAQABAAACAkQBADs=";
const { test } = screen(() => new StandIn().start());

test("Names that every object has lead nowhere, and to no request", async (page) => {
    const asked = [];
    page.on("request", (request) => request.url().startsWith("http") && asked.push(request.url()));
    const names = ["constructor", "__proto__", "toString", "valueOf", "hasOwnProperty"];
    const products = names.map((name) => product({ picture: name, badge: name, name }));
    const reference = { merchant: "constructor", variantRef: "constructor" };
    const base = someState({
        card: cardOf({ products, merchant: "constructor" }),
        partner: { page: "constructor", product: reference, cart: [{ product: reference, quantity: 1 }], messages: [] },
        assistant: { turn: 1, sentence: "a", action: "", nlu: [], fate: "constructor", reason: "", view: "toString", messages: [] },
        settings: settings({ partner: "constructor", confirm: "constructor" }),
        images: names.map((name) => ({ name, size: 1, version: "1" })),
        apps: {},
    });
    await openRecording(page, { base, events: [{ at: 1, name: "constructor", data: 1 }] });
    await until(page, () => document.querySelectorAll("#products .picture[data-picture=gone]").length === 5);
    await page.getByRole("tab", { name: "Pictures" }).click();
    await until(page, () => document.querySelectorAll("#images .picture[data-picture=gone]").length === 5);
    assert.equal(await page.locator("#partner-page").textContent(), "constructor");
    assert.equal(await page.locator("#partner-title").textContent(), "");
    assert.equal(await page.locator("#assistant-fate").textContent(), "constructor");
    assert.equal(await page.locator("#lanes > [data-there=true]").count(), 1);
    assert.deepEqual(asked, []);
});

test("A recording's picture is not the appliance's, though it has the same name", async (page, server) => {
    const shown = cardOf({ sequence: 5, products: [product({ picture: "1.gif?v=1" })] });
    server.pictures.add("1.gif?v=1");
    server.step("card", shown);
    await card.pictured(page, 1);
    const source = () => page.locator("#products .picture img:not(.backdrop)").getAttribute("src");
    assert.match(await source(), /^blob:/);
    await openRecording(page, { base: someState({ card: shown }), pictures: { "1.gif?v=1": Red } });
    await until(page, () => document.querySelector("#products .picture[data-picture=shown] img:not(.backdrop)")?.src.startsWith("data:"));
    await page.getByRole("button", { name: "Back to live" }).click();
    await until(page, () => document.querySelector("#products .picture[data-picture=shown] img:not(.backdrop)")?.src.startsWith("blob:"));
});

test("As much as a recording may have is drawn, and more is refused", async (page) => {
    const line = { line: "I/x(1): y", at: 1 };
    const messages = Array.from({ length: 1000 }, (_, index) => ({ ...message({ number: index + 1 }), at: 1 }));
    const log = Array.from({ length: 5000 }, () => ({ ...line }));
    await openRecording(page, { base: someState({ messages, log }), kept: { messages: 1000, log: 5000 } });
    await until(page, () => document.querySelectorAll("#log > li").length === 5000);
    assert.equal(await page.locator("#messages > li").count(), 1000);
    await page.getByRole("button", { name: "Back to live" }).click();
    await openRecording(page, { base: someState({ log: [...log, line] }) });
    await page.getByRole("alert").filter({ hasText: "base.log has more than 5000 entries" }).waitFor();
    assert.equal(await page.locator("#playback").isVisible(), false);
});
