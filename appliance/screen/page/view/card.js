// The product card: what the refrigerator's screen shows.
import { count, merchantName, Ordinals } from "../model/words.js";
import { pictureFates, shownOf } from "../model/products.js";
import { plainReason } from "../model/reasons.js";
import { byId, el, hidden, icon, keyed, setText, when } from "./dom.js";
import { makePicture, showPicture } from "./picture.js";

function whereOf(card) {
    return card.source === "retailer" ? "Retailer" : merchantName(card.merchant);
}

function stateOf(card) {
    return card?.state === "shown" ? card.outcome || "found" : (card?.state ?? "empty");
}

// What the retailer has cannot be chosen: voice control only knows what a merchant has found.
function makeTile({ index, isRetailers }, say) {
    const isChoosable = !isRetailers;
    const sentence = `show me the ${Ordinals[index]} one`;
    const name = el("span.name", { lang: isRetailers ? "ko" : undefined });
    const choose = el("button.choose", { type: "button", onclick: () => say(sentence) }, hidden("Choose "), name);
    const badge = el("img.badge-icon", { alt: "Badge", hidden: true });
    return el(
        "li.tile",
        {},
        makePicture(""),
        badge,
        el("span.place", { "aria-hidden": "true" }, String(index + 1)),
        el("p.discount"),
        el("h3", {}, isChoosable ? choose : name),
        el("p.size"),
        el("p.prices", {}, el("s.former", {}), el("strong.price")),
    );
}

function fill(tile, selector, text, before = "") {
    const place = tile.querySelector(selector);
    place.hidden = text === "";
    if (place.dataset.text !== text) {
        place.dataset.text = text;
        place.replaceChildren(...(before ? [hidden(before)] : []), text);
    }
}

async function fillBadge(tile, name, addressOf) {
    const badge = tile.querySelector(".badge-icon");
    if (badge.dataset.name === name) {
        return;
    }
    badge.dataset.name = name;
    badge.hidden = true;
    const address = name ? await addressOf(name) : "";
    if (address && badge.dataset.name === name) {
        badge.src = address;
        badge.hidden = false;
    }
}

function updateTile(tile, { product, fate }, addressOf) {
    showPicture(tile.querySelector(".picture"), fate, product.picture, addressOf);
    fillBadge(tile, product.badge ?? "", addressOf);
    fill(tile, ".name", product.name || "Without a name");
    fill(tile, ".size", product.size ?? "");
    fill(tile, ".discount", product.discount);
    fill(tile, ".former", product.formerPrice, "before ");
    fill(tile, ".price", product.price);
}

function drawTiles(card, source, { say, addressOf }) {
    const isFound = stateOf(card) === "found";
    const products = isFound ? shownOf(card) : [];
    const fates = pictureFates(products);
    const items = products.map((product, index) => ({
        product,
        index,
        fate: fates[index],
        isRetailers: card.source === "retailer",
        key: `${source}/${card.sequence}/${index}/${card.source}`,
    }));
    keyed(
        byId("products"),
        items,
        (item) => item.key,
        (item) => makeTile(item, say),
        (tile, item) => updateTile(tile, item, addressOf),
    );
    byId("products").hidden = items.length === 0;
}

function drawHead(card) {
    const state = stateOf(card);
    const isSearched = state !== "empty";
    setText(byId("card-where"), isSearched ? whereOf(card) : "Your screen");
    setText(byId("card-term"), isSearched ? `“${card.term}”` : "Nothing searched yet");
    const troubles = byId("card-troubles");
    troubles.hidden = !isSearched || card.troubles.length === 0;
    troubles.replaceChildren(...(troubles.hidden ? [] : card.troubles.map((word) => el("code.word", {}, word))));
    const number = state === "found" ? shownOf(card).length : 0;
    setText(byId("card-count"), number > 0 ? count(number, "product") : "");
}

function drawFailure(card) {
    setText(byId("failed-words"), plainReason(card.reasons, card.source));
    const own = card.reasons.map((reason) => el("li", {}, el("code", {}, reason)));
    byId("failed-reasons").replaceChildren(...own);
    byId("failed-own").hidden = own.length === 0;
}

function draw(card, source, tools) {
    const state = stateOf(card);
    byId("card-body").dataset.state = state;
    byId("card-body").dataset.sequence = card?.sequence ?? 0;
    for (const panel of document.querySelectorAll("[data-when]")) {
        panel.hidden = panel.dataset.when !== state;
    }
    drawHead(card);
    if (state === "failed") {
        drawFailure(card);
    }
    if (state === "nothing") {
        setText(byId("nothing-words"), `${whereOf(card)} has nothing for “${card.term}”.`);
    }
    drawTiles(card, source, tools);
}

/** What a person who does not see the card is told when it changes; "" for nothing. */
export function announcementOf(card) {
    const where = card && whereOf(card);
    switch (stateOf(card)) {
        case "searching":
            return `Searching for ${card.term}.`;
        case "found":
            return `${count(shownOf(card).length, "product")} for ${card.term} at ${where}.`;
        case "nothing":
            return `Nothing found for ${card.term} at ${where}.`;
        case "failed":
            return `The search for ${card.term} failed. ${plainReason(card.reasons, card.source)}`;
        default:
            return "";
    }
}

/** `tools` has say(sentence) and addressOf(picture). */
export function createCard(tools) {
    byId("failed-icon").append(icon("warning"));
    return when(
        ({ state, source }) => [state.card, source],
        ({ state, source }) => draw(state.card, source, tools),
    );
}
