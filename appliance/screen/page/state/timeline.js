// What the stream has brought since its last `timeline`: the state as of now, and the events that led to it.
import { apply, applyAll, complete, DefaultKept, emptyState } from "./reducer.js";

// A page that is open for days must not grow for ever: what is older goes into the base.
const MostEvents = 20000;
const FoldedAtOnce = 5000;

export class Timeline {
    constructor() {
        this.run = "";
        this.kept = DefaultKept;
        this.base = emptyState();
        this.events = [];
        this.now = this.base;
    }

    begin(data) {
        this.run = data.run;
        this.kept = { ...DefaultKept, ...data.kept };
        this.base = complete(data.base);
        this.events = [...data.events];
        this.now = applyAll(this.base, this.events, this.kept);
    }

    add(event) {
        this.events.push(event);
        this.now = apply(this.now, event, this.kept);
        if (this.events.length > MostEvents) {
            this.base = applyAll(this.base, this.events.splice(0, FoldedAtOnce), this.kept);
        }
    }
}
