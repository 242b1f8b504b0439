// The keyboard's focus and the person's place, where what has them goes away.
import assert from "node:assert/strict";

import { card as cardOf, message, product } from "../support/states.mjs";
import { card, openRecording, screen, until } from "../support/screen.mjs";
import { StandIn } from "../support/stand-in.mjs";

const { test } = screen(() => new StandIn().start());

const term = (page) => page.getByRole("searchbox", { name: "What to search for" });

test("A bar that is closed gives the focus back", async (page, server) => {
    await term(page).focus();
    await page.keyboard.press("Enter");
    await page.getByRole("alert").filter({ hasText: "Write what to search for first." }).waitFor();
    await page.getByRole("button", { name: "Close this message" }).focus();
    await page.keyboard.press("Enter");
    await page.locator("#told").waitFor({ state: "hidden" });
    await page.locator("#term:focus").waitFor();

    server.step("notice", { text: "The assistant did not listen.", level: "error" });
    await page.getByRole("button", { name: "Close this notice" }).focus();
    await page.keyboard.press("Enter");
    await page.locator("#notice").waitFor({ state: "hidden" });
    await page.locator("#term:focus").waitFor();

    // A notice that the server takes back takes no focus with it.
    server.step("notice", { text: "Another.", level: "error" });
    await page.getByRole("button", { name: "Close this notice" }).focus();
    server.step("notice", null);
    await page.locator("#notice").waitFor({ state: "hidden" });
    await page.locator("#term:focus").waitFor();
});

test("The steps of a recording keep the focus at its ends, and Back to live gives it back", async (page) => {
    await openRecording(page, { events: [{ at: 1, name: "flag", data: 1 }] });
    await term(page).focus();
    const [back, on] = [page.getByRole("button", { name: "One event back" }), page.getByRole("button", { name: "One event on" })];
    assert.equal(await back.getAttribute("aria-disabled"), "true");
    await on.focus();
    await page.keyboard.press("Enter");
    await page.locator("#playback-next[aria-disabled=true]:focus").waitFor();
    await page.keyboard.press("Enter");
    await page.locator("#playback-where", { hasText: "1 of 1" }).waitFor();
    await back.focus();
    await page.keyboard.press("Enter");
    await page.locator("#playback-back[aria-disabled=true]:focus").waitFor();
    await page.getByRole("button", { name: "Back to live" }).focus();
    await page.keyboard.press("Enter");
    await page.locator("#playback").waitFor({ state: "hidden" });
    await page.locator("#term:focus").waitFor();
});

test("A product that goes hands its focus to the card", async (page, server) => {
    server.step("card", cardOf({ sequence: 8, products: [product()] }));
    await page.getByRole("button", { name: "Choose Whole Milk" }).focus();
    server.step("card", cardOf({ sequence: 9, state: "searching", outcome: "", products: [] }));
    await card.in(page, "searching");
    await page.locator("#card:focus").waitFor();
});

test("What leads to a message that is not kept any more becomes plain text, and gives its focus to the row", async (page, server) => {
    server.step("message", message({ number: 1 }));
    server.step("message", message({ number: 2, kind: "reply", answers: 1, result: "succeeded" }));
    await page.locator("#messages > [data-number='2'] > button").click();
    await page.getByRole("button", { name: "message 1", exact: true }).focus();
    for (let number = 3; number <= 301; ++number) {
        server.step("message", message({ number }));
    }
    await page.locator("#messages > [data-number='1']").waitFor({ state: "detached" });
    await page.locator("#messages > [data-number='2'] > button:focus").waitFor();
    await page.locator("#messages .details dd", { hasText: "message 1" }).first().waitFor();
    assert.equal(await page.locator("#messages .details .link").count(), 0);
});

test("A row that is opened stays where it is, also when others come, until somebody goes to the end", async (page, server) => {
    const top = (number) => page.locator(`#messages > [data-number='${number}']`).evaluate((row) => row.getBoundingClientRect().top);
    await page.locator("#messages > [data-number='301']").waitFor();
    const before = await top(301);
    await page.locator("#messages > [data-number='301'] > button").click();
    await page.locator("#messages .details").waitFor();
    assert.equal(await top(301), before);
    const place = await page.locator("#messages-scroller").evaluate((scroller) => scroller.scrollTop);
    server.step("message", message({ number: 302 }));
    await page.locator("#messages > [data-number='302']").waitFor({ state: "attached" });
    assert.ok((await page.locator("#messages-scroller").evaluate((scroller) => scroller.scrollTop)) <= place);
    await page.getByRole("button", { name: "Newest" }).click();
    await until(page, () => {
        const { scrollHeight, scrollTop, clientHeight } = document.getElementById("messages-scroller");
        return scrollHeight - scrollTop - clientHeight < 2;
    });
});

test("What is told is in sight wherever the page is scrolled to, and does not cover what is tabbed to", async (page, server) => {
    server.step("card", cardOf({ sequence: 10, products: Array.from({ length: 6 }, () => product()) }));
    await card.in(page, "found");
    await page.evaluate(() => window.scrollTo(0, document.body.scrollHeight));
    server.step("notice", { text: "Look here.", level: "error" });
    const box = await page.locator("#notice", { hasText: "Look here." }).boundingBox();
    assert.ok(box.y >= 0 && box.y + box.height <= 740, JSON.stringify(box));
    for (let steps = 0; steps < 30; ++steps) {
        await page.keyboard.press("Shift+Tab");
        const covered = await page.evaluate(() => {
            const at = document.activeElement;
            const over = document.getElementById("over");
            const isOver = at === document.body || over.contains(at) || at.closest(".top");
            return !isOver && at.getBoundingClientRect().top < over.getBoundingClientRect().bottom - 1 ? at.outerHTML.slice(0, 100) : "";
        });
        assert.equal(covered, "");
    }
    server.step("notice", null);
}, { context: { viewport: { width: 360, height: 740 } } });

test("A notice that was closed stays closed when the page connects again, and comes as news if it is", async (page, server) => {
    server.step("notice", { text: "Nobody listens.", level: "error" });
    await page.getByRole("button", { name: "Close this notice" }).click();
    const streams = server.opened;
    server.drop();
    await until(page, () => document.getElementById("connection").dataset.connection === "lost");
    await page.locator("#connection[data-connection=live]").waitFor();
    assert.ok(server.opened > streams);
    server.step("flag", 5);
    await page.locator("#flag", { hasText: "5" }).waitFor({ state: "attached" });
    assert.equal(await page.locator("#notice").isVisible(), false);
    server.step("notice", { text: "Nobody listens.", level: "error" });
    await page.locator("#notice", { hasText: "Nobody listens." }).waitFor();
}, { expected: /Failed to load resource: net::ERR_|EventSource/ });
