// The bar over a recording: which it is, and the way through its events.
import { clock, dayAndTime } from "../model/words.js";
import { byId, setText } from "./dom.js";
import { handFocusBack } from "./focus.js";

// As fast as it was, but nobody waits for long.
const Shortest = 60;
const Longest = 1500;

function pauseBefore(player) {
    const { events } = player.recording;
    const next = events[player.position];
    const last = events[player.position - 1];
    return Math.min(Longest, Math.max(Shortest, last && next ? next.at - last.at : Shortest));
}

function whereText(player) {
    const event = player.event;
    const what = event ? `${event.name} at ${clock(event.at)}` : "the beginning";
    return `${player.position} of ${player.length}: ${what}`;
}

export function titleOf(player) {
    return `Recording of ${dayAndTime(Date.parse(player.recording.saved))}`;
}

function draw(player, isPlaying) {
    setText(byId("playback-title"), titleOf(player));
    setText(byId("playback-where"), whereText(player));
    const slider = byId("playback-slider");
    slider.max = player.length;
    slider.value = player.position;
    slider.setAttribute("aria-valuetext", whereText(player));
    byId("playback-play").dataset.playing = String(isPlaying);
    setText(byId("playback-play").querySelector("span"), isPlaying ? "Pause" : "Play");
    // A button that is disabled would lose the focus.
    byId("playback-back").setAttribute("aria-disabled", String(player.position === 0));
    byId("playback-next").setAttribute("aria-disabled", String(player.position === player.length));
}

/** `redraw` shows the state at the player's place, `leave` goes back to live. */
export function createPlayback({ redraw, leave }) {
    let player = null;
    let timer = 0;
    const stop = () => {
        clearTimeout(timer);
        timer = 0;
    };
    const go = (position) => {
        player.seek(position);
        redraw();
    };
    const tick = () => {
        if (player.position >= player.length) {
            stop();
        } else {
            go(player.position + 1);
            timer = setTimeout(tick, pauseBefore(player));
        }
        redraw();
    };
    const play = () => {
        if (player.position >= player.length) {
            player.seek(0);
        }
        timer = setTimeout(tick, Shortest);
        redraw();
    };
    const step = (by) => () => {
        stop();
        go(player.position + by);
    };
    byId("playback-play").addEventListener("click", () => (timer ? (stop(), redraw()) : play()));
    byId("playback-back").addEventListener("click", step(-1));
    byId("playback-next").addEventListener("click", step(1));
    byId("playback-slider").addEventListener("input", (event) => {
        stop();
        go(Number(event.target.value));
    });
    byId("playback-leave").addEventListener("click", () => {
        stop();
        leave();
    });
    return (view) => {
        if (view.player !== player) {
            stop();
            player = view.player;
        }
        if (!player) {
            handFocusBack(byId("playback"));
        }
        byId("playback").hidden = !player;
        // What is saved is what goes on, not what is looked at.
        byId("save").disabled = Boolean(player);
        if (player) {
            draw(player, timer !== 0);
        }
    };
}
