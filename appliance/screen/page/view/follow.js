// Keeps a scrolled list at its end as it grows, unless somebody has scrolled up; a button leads back to the end.

const Near = 24;

function isAtEnd(scroller) {
    return scroller.scrollHeight - scroller.scrollTop - scroller.clientHeight <= Near;
}

/** Returns what is to be called after each change of the content. */
export function followEnd(scroller, button) {
    let isFollowing = true;
    const toEnd = () => {
        scroller.scrollTop = scroller.scrollHeight;
    };
    scroller.addEventListener("scroll", () => {
        // A hidden panel has no height, and says nothing about what somebody wants.
        if (scroller.clientHeight > 0) {
            isFollowing = isAtEnd(scroller);
            button.hidden = isFollowing;
        }
    });
    button.addEventListener("click", () => {
        isFollowing = true;
        button.hidden = true;
        toEnd();
        scroller.focus({ preventScroll: true });
    });
    new ResizeObserver(() => isFollowing && toEnd()).observe(scroller);
    return () => isFollowing && toEnd();
}
