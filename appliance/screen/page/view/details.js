// All that is known of one message.
import { clock, day } from "../model/words.js";
import { el } from "./dom.js";

function linkTo(number, go) {
    return el("button.link", { type: "button", "data-number": number, onclick: () => go(number) }, `message ${number}`);
}

function valueOf(value) {
    if (!Array.isArray(value)) {
        return value === "" ? el("em", {}, "empty text") : value;
    }
    if (value.length === 0) {
        return el("em", {}, "empty list");
    }
    return el("ol.values", {}, value.map((item) => el("li", {}, item === "" ? el("em", {}, "empty") : item)));
}

function rowsOf(message, go) {
    return [
        ["Number", String(message.number)],
        ["Time", `${day(message.at)} ${clock(message.at)}`],
        ["Kind", message.kind],
        ["From", message.from],
        ["To", message.to],
        [message.kind === "voice" ? "Method" : "Operation", message.operation],
        ["URI", message.uri],
        ["Result", message.result],
        ["Refused because", message.error],
        ["Answers", message.answers > 0 ? linkTo(message.answers, go) : ""],
    ].filter(([, value]) => value !== "");
}

function list(rows) {
    return el("dl", {}, rows.map(([name, value]) => [el("dt", {}, name), el("dd", {}, value)]).flat());
}

/** `go(number)` leads to another message. */
export function makeDetails(message, go) {
    const extras = Object.entries(message.extras).map(([key, value]) => [key, valueOf(value)]);
    return el(
        "div.details",
        { id: `message-${message.number}` },
        list(rowsOf(message, go)),
        el("h4", {}, message.kind === "voice" ? "Arguments" : "Extra data"),
        extras.length > 0 ? list(extras) : el("p.quiet", {}, "None"),
    );
}
