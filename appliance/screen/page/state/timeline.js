// What the stream has brought since its last `timeline`: the state as of now, and the events that led to it.
import { apply, applyAll, complete, DefaultKept, emptyState } from "./reducer.js";
import { Most } from "./shapes.js";

// A page that is open for days must not grow for ever: what is older goes into the base.
// No more than a recording may have.
const FoldedAtOnce = 1000;

export class Timeline {
    constructor() {
        this.kept = DefaultKept;
        this.base = emptyState();
        this.events = [];
        this.now = this.base;
    }

    begin(data) {
        this.kept = { ...DefaultKept, ...data.kept };
        this.base = complete(data.base);
        this.events = [...data.events];
        this.now = applyAll(this.base, this.events, this.kept);
        this.#fold(this.events.length - Most.events);
    }

    add(event) {
        this.events.push(event);
        this.now = apply(this.now, event, this.kept);
        if (this.events.length > Most.events) {
            this.#fold(FoldedAtOnce);
        }
    }

    #fold(number) {
        if (number > 0) {
            this.base = applyAll(this.base, this.events.splice(0, number), this.kept);
        }
    }
}
