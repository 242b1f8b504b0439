// Tells those who do not see the page what has become of a search or a sentence: once, and nothing else.
import { announcementOf } from "./card.js";
import { partnerAnnouncement } from "./partner.js";
import { byId } from "./dom.js";
import { titleOf } from "./playback.js";

function cardKey({ card }) {
    return card && `${card.sequence}/${card.state}/${card.outcome}`;
}

function partnerKey({ partner }) {
    return partner && `${partner.page}/${partner.messages.at(-1)?.number}`;
}

/** What is there when the page opens, or when it is connected again, is not news. */
export function createAnnouncer() {
    let card;
    let partner;
    let seen = null;
    let opened = null;
    return ({ state, origin, player }) => {
        const isNews = origin === seen;
        const words = [];
        if (player && player !== opened) {
            words.push(titleOf(player));
        }
        opened = player;
        if (isNews && cardKey(state) !== card) {
            words.push(announcementOf(state.card));
        }
        if (isNews && partnerKey(state) !== partner) {
            words.push(partnerAnnouncement(state));
        }
        seen = origin;
        card = cardKey(state);
        partner = partnerKey(state);
        const text = words.filter(Boolean).join(" ");
        if (text) {
            byId("announcer").textContent = text;
        }
    };
}
