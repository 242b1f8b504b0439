// The only place that makes elements. Text is always text: nothing here takes markup.

const Svg = "http://www.w3.org/2000/svg";

function set(element, name, value) {
    if (name.startsWith("on")) {
        element.addEventListener(name.slice(2), value);
    } else if (value === true) {
        element.setAttribute(name, "");
    } else if (value !== false && value !== undefined && value !== null) {
        element.setAttribute(name, value);
    }
}

/** el("p.note.small", {title: "…", onclick: f}, "text", otherElement): classes in the name, listeners by on… */
export function el(name, attributes = {}, ...children) {
    const [tag, ...classes] = name.split(".");
    const element = document.createElement(tag);
    element.classList.add(...classes);
    Object.entries(attributes).forEach(([key, value]) => set(element, key, value));
    element.append(...children.flat().filter((child) => child !== null && child !== undefined && child !== ""));
    return element;
}

/** An icon of the page's sprite. */
export function icon(name) {
    const svg = document.createElementNS(Svg, "svg");
    svg.setAttribute("class", "icon");
    svg.setAttribute("aria-hidden", "true");
    const use = document.createElementNS(Svg, "use");
    use.setAttribute("href", `#icon-${name}`);
    svg.append(use);
    return svg;
}

export const byId = (id) => document.getElementById(id);

export function setText(element, text) {
    if (element.textContent !== text) {
        element.textContent = text;
    }
}

export function hidden(text) {
    return el("span.hidden", {}, text);
}

// To the next that stays, or to what holds them all.
function handFocusOn(element, staying) {
    let heir = element.nextElementSibling;
    while (heir && !staying.has(heir)) {
        heir = heir.nextElementSibling;
    }
    const place = heir?.querySelector("button") ?? element.parentElement.closest("[tabindex]");
    place?.focus({ preventScroll: true });
}

/**
 * Makes the children of `parent` those of `items`, in order, and touches only what differs, so that focus, selection and
 * scroll stay. `make(item)` returns an element; `update(element, item)` is called for each. Of items with the same key
 * the last one counts.
 */
export function keyed(parent, items, keyOf, make, update = () => {}) {
    const known = parent.keyedChildren ?? new Map();
    const wanted = new Map(items.map((item) => [keyOf(item), item]));
    const next = new Map();
    for (const [key, item] of wanted) {
        next.set(key, known.get(key) ?? make(item));
    }
    for (const [key, element] of known) {
        if (!next.has(key)) {
            if (element.contains(document.activeElement)) {
                handFocusOn(element, new Set(next.values()));
            }
            element.remove();
        }
    }
    let at = parent.firstElementChild;
    for (const [key, element] of next) {
        if (element === at) {
            at = at.nextElementSibling;
        } else {
            parent.insertBefore(element, at);
        }
        update(element, wanted.get(key));
    }
    parent.keyedChildren = next;
}

/** A function of a view that calls `draw` only when one of the values that `select` picks has changed. */
export function when(select, draw) {
    let last = null;
    return (view) => {
        const now = select(view);
        if (last === null || now.some((value, index) => value !== last[index])) {
            last = now;
            draw(view);
        }
    };
}
