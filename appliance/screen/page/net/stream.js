// The event stream: connects, notices when it has gone quiet, and connects again after growing pauses.

export const Pauses = [500, 1000, 2000, 4000, 5000];
const DefaultBeat = 2000;
const QuietBeats = 3;

export class Stream {
    /** `on` has timeline(data), step(event) and connection(state): "connecting", "live", "quiet" or "lost". */
    constructor(on, address = "/events") {
        this.on = on;
        this.address = address;
        this.beat = DefaultBeat;
        this.failures = 0;
        this.isLive = false;
    }

    start() {
        this.source = new EventSource(this.address);
        this.source.addEventListener("timeline", (event) => this.#begin(JSON.parse(event.data)));
        this.source.addEventListener("step", (event) => this.#step(JSON.parse(event.data)));
        this.source.addEventListener("beat", () => this.#heard());
        this.source.addEventListener("error", () => this.#again("lost"));
        this.#heard();
    }

    #begin(data) {
        this.beat = data.beat > 0 ? data.beat : DefaultBeat;
        this.failures = 0;
        this.isLive = true;
        this.#heard();
        this.on.timeline(data);
        this.on.connection("live");
    }

    #step(event) {
        this.#heard();
        // What comes before a timeline has nothing to be applied to.
        if (this.isLive) {
            this.on.step(event);
        }
    }

    #heard() {
        clearTimeout(this.quiet);
        this.quiet = setTimeout(() => this.#again("quiet"), QuietBeats * this.beat);
    }

    #again(why) {
        clearTimeout(this.quiet);
        this.source.close();
        this.isLive = false;
        const pause = Pauses[Math.min(this.failures, Pauses.length - 1)];
        this.failures += 1;
        this.on.connection(why);
        setTimeout(() => this.start(), pause);
    }
}
