// States that the appliance has rarely or never, sent by a server of the test's own.
import assert from "node:assert/strict";

import { card as cardOf, message, product, settings } from "../support/states.mjs";
import { card, screen, until } from "../support/screen.mjs";
import { StandIn } from "../support/stand-in.mjs";

const { test } = screen(() => new StandIn().start());

const Hostile = "<img src=x onerror=alert(1)>";

test("Markup in a text from outside stays text, wherever it comes up", async (page, server) => {
    let dialogs = 0;
    page.on("dialog", (dialog) => {
        dialogs += 1;
        return dialog.dismiss();
    });
    const products = [product({ name: Hostile, size: Hostile, discount: Hostile, price: Hostile, formerPrice: Hostile })];
    const hostileMessage = message({ extras: { [Hostile]: Hostile, list: [Hostile] }, operation: Hostile, from: Hostile });
    const received = { number: 1, time: "2026-01-01T00:00:00.000Z", operation: Hostile, from: Hostile, extras: {}, outcome: Hostile };
    const bought = { merchant: Hostile, variantRef: Hostile };
    server.step("card", cardOf({ products, term: Hostile, merchant: Hostile, troubles: [Hostile] }));
    server.step("message", hostileMessage);
    server.step("log", { line: `E/${Hostile}(1): \x1b[31m${Hostile}\x1b[0m` });
    server.step("notice", { text: Hostile, level: "error" });
    server.step("partner", { page: "product", product: bought, cart: [{ product: bought, quantity: 1 }], messages: [received] });
    server.step("assistant", { turn: 1, sentence: Hostile, action: Hostile, nlu: [], fate: Hostile, reason: Hostile, view: "open", messages: [received] });
    server.step("images", [{ name: Hostile, size: 1, version: Hostile }]);
    server.step("settings", settings({ merchants: [Hostile], switches: [{ id: "x", label: Hostile, words: Hostile, for: "both", group: Hostile, on: true }] }));
    await card.tiles(page).first().getByText(Hostile).first().waitFor();
    await page.locator("#messages button").click();
    for (const tab of ["Log", "Records", "Pictures", /^Trouble/]) {
        await page.getByRole("tab", { name: tab }).click();
    }
    await page.locator("#notice", { hasText: Hostile }).waitFor();
    assert.equal(await page.locator("img[src=x], [onerror]").count(), 0);
    assert.equal(dialogs, 0);
    for (const part of ["#products .name", "#card-term", "#partner-title", "#assistant-sentence", "#log .log-text"]) {
        assert.ok((await page.locator(part).first().textContent()).includes(Hostile), part);
    }
});

test("What the server refuses is told in its own words, and what it cannot do in plain ones", async (page, server) => {
    server.answer = { status: 400, body: JSON.stringify({ error: "the term is too odd" }) };
    await page.getByRole("searchbox", { name: "What to search for" }).fill("milk");
    await page.keyboard.press("Enter");
    await page.getByRole("alert").filter({ hasText: "Not done: the term is too odd" }).waitFor();
    server.answer = { status: 503, body: "nothing of use" };
    await page.keyboard.press("Enter");
    await page.getByRole("alert").filter({ hasText: "Not done: the answer was 503." }).waitFor();
    server.answer = { status: 202, body: "" };
    await page.keyboard.press("Enter");
    await page.locator("#told").waitFor({ state: "hidden" });
    assert.equal(server.commands.at(-1).term, "milk");
}, { expected: /Failed to load resource.*(400|503)/ });

test("A choice that was refused is not shown as made", async (page, server) => {
    server.step("settings", settings());
    await page.getByRole("tab", { name: /^Trouble/ }).click();
    await page.locator('#switches [data-switch="503"]').waitFor();
    server.answer = { status: 400, body: JSON.stringify({ error: "not now" }) };
    await page.getByRole("radio", { name: /^Never/ }).click();
    await page.getByRole("alert").filter({ hasText: "not now" }).waitFor();
    await until(page, () => document.querySelector("input[name=confirm][value=now]").checked);
    server.answer = { status: 202, body: "" };
}, { expected: /Failed to load resource.*400/ });

test("A stream that is cut is told, taken up again, and shows the state of a new run", async (page, server) => {
    server.step("card", cardOf({ sequence: 7, term: "old", products: [product()] }));
    await page.locator("#card-term", { hasText: "“old”" }).waitFor();
    server.run = "2";
    server.events = [];
    server.base = { ...server.base, card: cardOf({ sequence: 1, term: "new", products: [product({ name: "Another" })] }) };
    server.drop();
    await page.locator("#card-term", { hasText: "“new”" }).waitFor();
    await page.locator("#connection[data-connection=live]").waitFor();
    assert.deepEqual(await page.locator("#products .name").allTextContents(), ["Another"]);
    server.step("card", cardOf({ sequence: 2, term: "newer" }));
    await page.locator("#card-term", { hasText: "“newer”" }).waitFor();
}, { expected: /Failed to load resource: net::ERR_|EventSource/ });

test("A server that is gone is told as lost, and found again where it was", async (page, server) => {
    const port = Number(new URL(server.address).port);
    await server.end();
    await page.locator("#stale", { hasText: "was lost" }).waitFor();
    await page.getByRole("button", { name: /^Add to cart/ }).click();
    await page.getByRole("alert").filter({ hasText: "Not sent" }).waitFor();
    await server.start(port);
    await page.locator("#connection[data-connection=live]").waitFor();
    await page.locator("#stale").waitFor({ state: "hidden" });
}, { expected: /Failed to load resource: net::ERR_/ });

test("Bursts of messages and lines leave the newest, the opened row, focus and selection", async (page, server) => {
    server.step("message", message({ number: 1000, operation: "kept/open" }));
    const row = page.locator("#messages > [data-number='1000'] > button");
    await row.click();
    await row.focus();
    for (let number = 1001; number <= 1299; ++number) {
        server.step("message", message({ number }));
    }
    for (let number = 1; number <= 2500; ++number) {
        server.step("log", { line: `I/burst(1): line ${number}` });
    }
    await page.locator("#messages > [data-number='1299']").waitFor({ state: "attached" });
    await until(page, () => document.querySelector("#log > li:last-child")?.textContent.includes("line 2500"));
    assert.equal(await page.locator("#messages > li").count(), 300);
    assert.equal(await page.locator("#log > li").count(), 1000);
    assert.equal(await page.locator("#log > li").first().locator(".log-text").textContent(), "line 1501");
    assert.equal(await row.evaluate((button) => button === document.activeElement), true);
    assert.equal(await row.getAttribute("aria-expanded"), "true");
    server.step("message", message({ number: 1300 }));
    await page.locator("#messages > [data-number='1000']").waitFor({ state: "detached" });
    assert.equal(await page.locator("#messages > li").count(), 300);
    // The next row has the focus of the one that went.
    await page.locator("#messages > [data-number='1001'] > button:focus").waitFor();
});

test("A picture whose file is gone says so, and a later version is shown", async (page, server) => {
    server.step("card", cardOf({ sequence: 30, products: [product({ picture: "1.gif?v=gone" })] }));
    await page.locator("#products .picture[data-picture=gone]").waitFor();
    server.pictures.add("1.gif?v=there");
    server.step("card", cardOf({ sequence: 30, products: [product({ picture: "1.gif?v=there" })] }));
    await card.pictured(page, 1);
    // What could not be had is tried again with the next card.
    server.step("card", cardOf({ sequence: 31, products: [product({ picture: "2.gif?v=late" })] }));
    await page.locator("#products .picture[data-picture=gone]").waitFor();
    server.pictures.add("2.gif?v=late");
    server.step("card", cardOf({ sequence: 31, products: [product({ picture: "2.gif?v=late" })] }));
    await card.pictured(page, 1);
});

test("A notice of the server's is shown until it is closed or a command is taken", async (page, server) => {
    server.step("notice", { text: "The assistant did not listen.", level: "error" });
    const notice = page.locator("#notice", { hasText: "did not listen" });
    await notice.waitFor();
    await page.getByRole("button", { name: "Close this notice" }).click();
    await notice.waitFor({ state: "hidden" });
    server.step("notice", { text: "The assistant did not listen.", level: "error" });
    await notice.waitFor();
    await page.getByRole("button", { name: /^Check out/ }).click();
    await notice.waitFor({ state: "hidden" });
});

test("The search field begins with what was searched, and then is the person's", async (page, server) => {
    server.step("settings", settings());
    server.step("card", cardOf({ sequence: 40, term: "tea", merchant: "corner-store" }));
    await page.locator("#card-term", { hasText: "tea" }).waitFor();
    await page.reload();
    await page.locator("#card-term", { hasText: "tea" }).waitFor();
    const field = page.getByRole("searchbox", { name: "What to search for" });
    assert.equal(await field.inputValue(), "tea");
    assert.equal(await page.getByRole("combobox", { name: "Merchant" }).inputValue(), "corner-store");
    await field.fill("coff");
    server.step("card", cardOf({ sequence: 41, term: "cake", merchant: "unheard-of" }));
    server.step("settings", settings({ confirm: "late" }));
    await page.locator("#confirm[data-mode=late]").waitFor({ state: "attached" });
    assert.equal(await field.inputValue(), "coff");
    assert.equal(await page.getByRole("combobox", { name: "Merchant" }).inputValue(), "corner-store");
});

test("The theme follows the system until somebody chooses, and the choice outlives a reload", async (page) => {
    const scheme = () => page.evaluate(() => getComputedStyle(document.body).backgroundColor);
    const dark = await scheme();
    const button = page.getByRole("button", { name: "Dark" });
    assert.equal(await button.getAttribute("aria-pressed"), "true");
    await button.click();
    const light = await scheme();
    assert.notEqual(light, dark);
    await page.reload();
    assert.equal(await scheme(), light);
    assert.equal(await button.getAttribute("aria-pressed"), "false");
}, { context: { colorScheme: "dark" } });
