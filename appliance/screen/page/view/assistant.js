// The assistant: what was said, what was understood, and what came of it.
import { lookUp } from "../model/words.js";
import { byId, setText, when } from "./dom.js";
import { drawReceived } from "./received.js";

const Fates = { none: "Silent", "under way": "Under way", delivered: "Delivered", failed: "Failed" };

function draw(assistant) {
    const known = assistant ?? { turn: 0, sentence: "", action: "", fate: "none", reason: "", view: "closed", messages: [] };
    const isOpen = known.view === "open";
    setText(byId("assistant-view"), isOpen ? "View open" : "View closed");
    byId("assistant-view").dataset.open = String(isOpen);
    setText(byId("assistant-sentence"), known.sentence ? `“${known.sentence}”` : "Nothing has been said yet");
    setText(byId("assistant-action"), known.action || (known.turn > 0 ? "Not understood" : "–"));
    setText(byId("assistant-fate"), lookUp(Fates, known.fate, known.fate));
    byId("assistant-fate").dataset.fate = known.fate;
    setText(byId("assistant-reason"), known.reason);
    byId("assistant-reason").hidden = known.reason === "";
    drawReceived(byId("assistant-received"), known.messages);
}

export function createAssistant() {
    return when(
        ({ state }) => [state.assistant],
        ({ state }) => draw(state.assistant),
    );
}
