// Keeps a scrolled list at its end as it grows, unless somebody has scrolled up; a button leads back to the end.

const Near = 24;

function isAtEnd(scroller) {
    return scroller.scrollHeight - scroller.scrollTop - scroller.clientHeight <= Near;
}

/**
 * `grown()` is to be called after each change of the content, `stay()` where somebody looks at a part of it, and `look()`
 * where that part may have gone.
 */
export function followEnd(scroller, button) {
    let isFollowing = true;
    const toEnd = () => {
        scroller.scrollTop = scroller.scrollHeight;
    };
    const look = () => {
        // A hidden panel has no height, and says nothing about what somebody wants.
        if (scroller.clientHeight > 0) {
            isFollowing = isAtEnd(scroller);
            button.hidden = isFollowing;
        }
    };
    const stay = () => {
        isFollowing = false;
        button.hidden = isAtEnd(scroller);
    };
    scroller.addEventListener("scroll", look);
    button.addEventListener("click", () => {
        isFollowing = true;
        button.hidden = true;
        toEnd();
        scroller.focus({ preventScroll: true });
    });
    new ResizeObserver(() => isFollowing && toEnd()).observe(scroller);
    return { grown: () => isFollowing && toEnd(), stay, look };
}
