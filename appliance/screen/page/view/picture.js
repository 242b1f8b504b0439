// A picture's place: it waits, gets its picture, or says that there is none.
import { el, setText } from "./dom.js";

// While the file is on its way the place stays as it is; what comes for an earlier address counts no more.
async function load(place, image, name, addressOf) {
    const address = await addressOf(name);
    if (place.dataset.name !== name) {
        return;
    }
    if (address) {
        image.src = address;
        place.firstElementChild.src = address;
    } else {
        place.dataset.picture = "gone";
    }
}

/** `alt` is what the picture shows, "" where a text beside it says so. */
export function makePicture(alt) {
    const image = el("img", { alt, draggable: "false" });
    const words = el("span.picture-words");
    const backdrop = el("img.backdrop", { alt: "", "aria-hidden": "true" });
    const place = el("div.picture", { "data-picture": "awaited" }, backdrop, image, words);
    const isWanted = () => place.dataset.picture === "coming";
    image.addEventListener("load", () => isWanted() && (place.dataset.picture = "shown"));
    image.addEventListener("error", () => isWanted() && (place.dataset.picture = "gone"));
    return place;
}

const Words = { missing: "No picture" };

/** `fate` is "known", "awaited" or "missing"; `name` is the picture's, where it is known. */
export function showPicture(place, fate, name, addressOf) {
    const [backdrop, image, words] = place.children;
    setText(words, Words[fate] ?? "");
    // What could not be had is asked for again when the card is drawn anew, as after a lost connection.
    const isUnderWay = place.dataset.picture === "coming" || place.dataset.picture === "shown";
    if (fate === "known" && place.dataset.name === name && isUnderWay) {
        return;
    }
    place.dataset.name = name;
    if (fate === "known") {
        place.dataset.picture = "coming";
        load(place, image, name, addressOf);
    } else {
        image.removeAttribute("src");
        backdrop.removeAttribute("src");
        place.dataset.picture = fate;
    }
}
