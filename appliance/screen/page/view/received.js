// What an app has received lately, as both panels of the apps list it.
import { shortOperation } from "../model/lanes.js";
import { clock } from "../model/words.js";
import { el, keyed } from "./dom.js";

const Most = 5;

function makeRow(message) {
    const isTaken = message.outcome === "taken";
    return el(
        "li.received",
        {},
        el("time", { datetime: message.time }, clock(Date.parse(message.time))),
        el("code", {}, shortOperation(message.operation)),
        isTaken ? null : el("span.refused", {}, message.outcome),
    );
}

/** The newest first. */
export function drawReceived(list, messages) {
    const newest = messages.slice(-Most).reverse();
    keyed(list, newest, (message) => `${message.number}/${message.time}`, makeRow);
    list.hidden = newest.length === 0;
}
