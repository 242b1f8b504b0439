// Sentences to the assistant: buttons for the known ones and a field for any other.
import { shownOf } from "../model/products.js";
import { Ordinals } from "../model/words.js";
import { byId, el, keyed, setText, when } from "./dom.js";

function makeChoice({ index }, say) {
    const sentence = `show me the ${Ordinals[index]} one`;
    return el(
        "li",
        {},
        el("button.chip", { type: "button", onclick: () => say(sentence) }, `The ${Ordinals[index]} one`, el("span")),
    );
}

function choicesOf(card) {
    const isShown = card?.state === "shown" && card.source === "merchant";
    return isShown ? shownOf(card).map((product, index) => ({ product, index })) : [];
}

function drawChoices(card, say) {
    const choices = choicesOf(card);
    keyed(
        byId("choices"),
        choices,
        ({ index }) => index,
        (choice) => makeChoice(choice, say),
        (item, { product }) => setText(item.querySelector("span"), product.name),
    );
    byId("choices").hidden = choices.length === 0;
    const isRetailers = card?.state === "shown" && card.source === "retailer";
    const none = isRetailers
        ? "By voice only a merchant's products can be chosen, not the retailer's."
        : "As soon as a merchant's products are on the card, they can be chosen here.";
    setText(byId("no-choices"), choices.length > 0 ? "" : none);
    byId("no-choices").hidden = choices.length > 0;
}

export function createSpeak(say, tell) {
    document.querySelectorAll("[data-say]").forEach((button) => {
        button.append(el("span.said", {}, `“${button.dataset.say}”`));
        button.addEventListener("click", () => say(button.dataset.say));
    });
    byId("speak-form").addEventListener("submit", async (event) => {
        event.preventDefault();
        const field = byId("sentence");
        const sentence = field.value.trim();
        if (sentence === "") {
            tell("Write what to say first.");
            field.focus();
        } else if (await say(sentence)) {
            field.select();
        }
    });
    return when(
        ({ state }) => [state.card],
        ({ state }) => drawChoices(state.card, say),
    );
}
