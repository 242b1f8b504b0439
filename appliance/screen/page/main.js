// Puts the page together: the stream or a recording leads to a state, and the state to what is seen.
import { lookUp } from "./model/words.js";
import { createCommands, NotLive, NotSent } from "./net/commands.js";
import { Pictures } from "./net/pictures.js";
import { Stream } from "./net/stream.js";
import { Player } from "./state/player.js";
import { picturesOf } from "./state/recording.js";
import { Timeline } from "./state/timeline.js";
import { createAnnouncer } from "./view/announcer.js";
import { createAssistant } from "./view/assistant.js";
import { createCard } from "./view/card.js";
import { createDiagram } from "./view/diagram.js";
import { byId } from "./view/dom.js";
import { setUpFiles } from "./view/files.js";
import { createImages } from "./view/images.js";
import { createLog } from "./view/log.js";
import { createNotices, createTell } from "./view/notices.js";
import { createPartner } from "./view/partner.js";
import { createPlayback } from "./view/playback.js";
import { createRecords } from "./view/records.js";
import { createSearch } from "./view/search.js";
import { createSpeak } from "./view/speak.js";
import { setUpTabs } from "./view/tabs.js";
import { setUpTheme } from "./view/theme.js";
import { createTrouble } from "./view/trouble.js";

const timeline = new Timeline();
const pictures = new Pictures(() => picturesOf(timeline.now, []));
let connection = "connecting";
let player = null;
// Another object whenever what is shown does not simply go on from what was shown before.
let origin = {};
// Another number whenever pictures come from elsewhere: the appliance, or a recording.
let source = 0;
let views = [];
let frame = 0;

function view() {
    const mode = player ? "recording" : "live";
    const isHoodOpen = document.querySelector("#hood [role=tab][aria-selected=true]").id;
    return { state: player ? player.state : timeline.now, mode, connection, player, origin, source, isHoodOpen };
}

// However many events arrive, the page is drawn once for each frame.
function redraw() {
    frame ||= requestAnimationFrame(() => {
        frame = 0;
        const now = view();
        views.forEach((draw) => draw(now));
    });
}

function show(next) {
    player = next;
    origin = {};
    source += 1;
    redraw();
}

function hindrance() {
    if (player) {
        return NotLive;
    }
    return connection === "live" ? "" : NotSent;
}

// Pictures of a recording are in it; nothing of it is asked of the appliance.
async function addressOf(name) {
    return player ? lookUp(player.recording.pictures, name, "") : pictures.addressOf(name);
}

const tell = createTell();
const commands = createCommands(hindrance, tell);

views = [
    createNotices(),
    createSearch(commands, tell),
    createCard({ say: commands.say, addressOf }),
    createSpeak(commands.say, tell),
    createPartner(),
    createAssistant(),
    createDiagram(redraw),
    createLog(redraw),
    createRecords(),
    createImages(addressOf),
    createTrouble(commands),
    createPlayback({ redraw, leave: () => show(null) }),
    createAnnouncer(),
];
new ResizeObserver(([{ target }]) => {
    document.documentElement.style.setProperty("--over", `${target.offsetHeight}px`);
}).observe(byId("over"));
setUpTheme();
setUpTabs(byId("tabs"), redraw);
setUpFiles({ timeline, pictures, tell, open: (recording) => show(new Player(recording)) });

const stream = new Stream({
    timeline(data) {
        timeline.begin(data);
        origin = {};
        redraw();
    },
    step(event) {
        timeline.add(event);
        redraw();
    },
    connection(now) {
        connection = now;
        redraw();
    },
});
const listen = () => (document.hidden ? stream.stop() : stream.start());
document.addEventListener("visibilitychange", listen);
listen();
