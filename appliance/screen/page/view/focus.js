// Where the focus goes when what has it goes away: never to nowhere.
import { byId } from "./dom.js";

const Passing = ".over";

// What had it last, besides the bars that come and go.
let last = null;
document.addEventListener("focusin", ({ target }) => {
    if (!target.closest(Passing)) {
        last = target;
    }
});

/** To be called before `place` is hidden. */
export function handFocusBack(place) {
    if (place.contains(document.activeElement)) {
        const isThere = last?.isConnected && last.getClientRects().length > 0;
        (isThere ? last : byId("card")).focus({ preventScroll: true });
    }
}
