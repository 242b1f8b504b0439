// A recording that can be looked at from any of its events.
import { apply, complete } from "./reducer.js";

const SnapshotEvery = 50;

export class Player {
    constructor(recording) {
        this.recording = recording;
        this.position = 0;
        this.snapshots = [complete(recording.base)];
    }

    get length() {
        return this.recording.events.length;
    }

    /** The last event that counts, or undefined before the first. */
    get event() {
        return this.position > 0 ? this.recording.events[this.position - 1] : undefined;
    }

    seek(position) {
        this.position = Math.max(0, Math.min(this.length, Math.trunc(position) || 0));
    }

    /** The state after the first `position` events. */
    get state() {
        const { events, kept } = this.recording;
        const wanted = Math.floor(this.position / SnapshotEvery);
        const known = Math.min(wanted, this.snapshots.length - 1);
        let state = this.snapshots[known];
        for (let i = known * SnapshotEvery; i < this.position; ++i) {
            state = apply(state, events[i], kept);
            if ((i + 1) % SnapshotEvery === 0) {
                this.snapshots[(i + 1) / SnapshotEvery] = state;
            }
        }
        return state;
    }
}
