// The image directory: what lies there, with thumbnails.
import { filesOf } from "../state/recording.js";
import { bytes, count } from "../model/words.js";
import { byId, el, keyed, setText, when } from "./dom.js";
import { makePicture, showPicture } from "./picture.js";

function makeImage(image) {
    const words = el("figcaption", {}, el("code", {}, image.name), el("span.quiet"));
    return el("li", {}, el("figure", {}, makePicture(""), words));
}

function updateImage(item, image, addressOf) {
    showPicture(item.querySelector(".picture"), "known", filesOf([image])[0], addressOf);
    setText(item.querySelector(".quiet"), bytes(image.size));
}

/** Files are only asked for while somebody looks: they come and go with each search. */
export function createImages(addressOf) {
    const panel = byId("panel-images");
    return when(
        ({ state, isHoodOpen, source }) => [state.images, panel.hidden, isHoodOpen, source],
        ({ state, source }) => {
            setText(byId("images-count"), count(state.images.length, "file"));
            byId("images-none").hidden = state.images.length > 0;
            if (panel.hidden) {
                return;
            }
            keyed(
                byId("images"),
                state.images,
                (image) => `${source}/${image.name}`,
                makeImage,
                (item, image) => updateImage(item, image, addressOf),
            );
        },
    );
}
