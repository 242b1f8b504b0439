// The one way from events to a state: live, after a reload and in a recording.
//
// A state is never changed, only replaced; what an event does not concern stays the same object, by which the views
// know that they have nothing to do.

export const DefaultKept = { messages: 300, log: 1000 };

const Lists = new Set(["messages", "log"]);
const ListOf = { message: "messages", log: "log" };

// An event always gives the same entry, so that going back and forth in a recording keeps the rows that are drawn.
const entries = new WeakMap();

function entryOf(event) {
    let entry = entries.get(event);
    if (!entry) {
        entry = { ...event.data, at: event.at };
        entries.set(event, entry);
    }
    return entry;
}

export function emptyState() {
    return {
        card: null,
        partner: null,
        assistant: null,
        record: null,
        flag: null,
        images: [],
        settings: null,
        apps: {},
        notice: null,
        messages: [],
        log: [],
    };
}

/** What the server does not know yet is null or not there; the views may rely on all lists and maps. */
export function complete(state) {
    const known = Object.entries(state).filter(([, value]) => value !== null);
    return { ...emptyState(), ...Object.fromEntries(known) };
}

function append(list, entry, limit) {
    const next = list.length >= limit ? list.slice(list.length - limit + 1) : list.slice();
    next.push(entry);
    return next;
}

export function apply(state, event, kept = DefaultKept) {
    const list = Object.hasOwn(ListOf, event.name) ? ListOf[event.name] : "";
    if (list) {
        return { ...state, [list]: append(state[list], entryOf(event), kept[list]) };
    }
    // No event replaces a whole list.
    return Lists.has(event.name) ? state : { ...state, [event.name]: event.data };
}

export function applyAll(state, events, kept = DefaultKept) {
    return events.reduce((before, event) => apply(before, event, kept), state);
}
