// The event stream: connects, notices when it has gone quiet, and connects again after growing pauses.

export const Pauses = [500, 1000, 2000, 4000, 5000];
const DefaultBeat = 2000;
const QuietBeats = 3;
const HealthyBeats = 3;

export class Stream {
    /**
     * `on` has timeline(data), step(event) and connection(state): "connecting", "live", "quiet" or "lost".
     */
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
        this.isLive = true;
        // Only what lasts is well again: a stream may break off after each beginning.
        clearTimeout(this.health);
        this.health = setTimeout(() => (this.failures = 0), HealthyBeats * this.beat);
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

    /** Without a connection until the next start: a browser has only few of them for all of its pages. */
    stop() {
        clearTimeout(this.quiet);
        clearTimeout(this.health);
        clearTimeout(this.pause);
        this.source?.close();
        this.isLive = false;
        this.on.connection("connecting");
    }

    #again(why) {
        clearTimeout(this.quiet);
        clearTimeout(this.health);
        this.source.close();
        this.isLive = false;
        const pause = Pauses[Math.min(this.failures, Pauses.length - 1)];
        this.failures += 1;
        this.on.connection(why);
        this.pause = setTimeout(() => this.start(), pause);
    }
}
