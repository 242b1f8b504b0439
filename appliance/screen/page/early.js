// Runs before the first paint, so that the page does not flash in the other theme.
try {
    const theme = localStorage.getItem("theme");
    if (theme === "light" || theme === "dark") {
        document.documentElement.dataset.theme = theme;
    }
} catch {
    // No storage: the system's preference stands.
}
