// Where the messages go in the sequence diagram: which lanes there are, and from which to which an arrow leads.

export const DefaultPartner = "org.example.partnerpay";

/** From left to right so that most arrows join neighbours. */
export function lanesFor(partner = DefaultPartner) {
    return [
        { id: "others", app: "", name: "Others", short: "Others" },
        { id: "ui", app: "org.tizen.carvoy", name: "UI app", short: "UI app" },
        { id: "service", app: "org.tizen.carvoy-service", name: "Service", short: "Service" },
        { id: "retailer", app: "org.tizen.carvoy-retailer", name: "Retailer's service", short: "Retailer" },
        { id: "partner", app: partner, name: "Partner app", short: "Partner" },
        { id: "assistant", app: "org.tizen.nuvex-da", name: "Assistant", short: "Assistant" },
    ];
}

export function laneOf(lanes, app) {
    const index = lanes.findIndex((lane) => lane.app !== "" && lane.app === app);
    return Math.max(index, 0);
}

// Whoever delivers what was said plays the assistant, on a connection that has no app's name.
function startOf(message, lanes) {
    const start = laneOf(lanes, message.from);
    return message.kind === "voice" && lanes[start].app === "" ? lanes.findIndex(({ id }) => id === "assistant") : start;
}

/**
 * `start` and `end` are the lanes' numbers, `left` and `width` the arrow's place in parts of the diagram's width;
 * `side` is the end at which a label has more room.
 */
export function layoutOf(message, lanes) {
    const start = startOf(message, lanes);
    const end = laneOf(lanes, message.to);
    const left = (Math.min(start, end) + 0.5) / lanes.length;
    const width = Math.abs(end - start) / lanes.length;
    const direction = start === end ? "self" : start < end ? "right" : "left";
    const side = left + width / 2 > 0.55 ? "right" : "left";
    return { start, end, left, width, direction, side };
}

export function shortOperation(operation) {
    return operation.slice(operation.lastIndexOf("/") + 1) || "default";
}

const Limit = 60;
const MostParts = 20;

function cut(text) {
    return text.length > Limit ? `${text.slice(0, Limit)}…` : text;
}

/** The extra data in one line: lists by their length only. */
export function summaryOf(message) {
    const parts = Object.entries(message.extras).slice(0, MostParts).map(([key, value]) => {
        const name = key.replace(/^key_/, "");
        return Array.isArray(value) ? `${name} [${value.length}]` : `${name} ${cut(value)}`;
    });
    const fate = message.kind === "refusal" ? message.error : message.kind === "reply" ? message.result : "";
    return [fate, ...parts].filter(Boolean).join(" · ");
}
