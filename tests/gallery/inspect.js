// Put at the end of a copy of the page: looks at the page as the browser has laid it out and tells the page that frames
// this one what is wrong.
window.addEventListener("load", () => {
    const smallestReadableFont = 12.5; // CSS pixels
    const findings = [];
    const width = document.documentElement.clientWidth;

    for (const image of document.images) {
        if (!image.complete || image.naturalWidth === 0) findings.push("not loaded: " + image.getAttribute("src"));
        if (image.closest("figure") && !image.alt) findings.push("without a text instead: " + image.getAttribute("src"));
    }
    if (document.documentElement.scrollWidth > width) findings.push("the page is wider than the window");
    for (const element of document.querySelectorAll("body *")) {
        // What is wider than the window may be scrolled within a table's frame, and nowhere else.
        const right = element.getBoundingClientRect().right;
        if (right > width + 0.5 && !element.parentElement.closest(".table")) findings.push("beyond the window: <" + element.localName + "> to " + right);
    }
    for (const element of document.querySelectorAll("h1, h2, h3, p, figcaption, nav span")) {
        if (element.scrollWidth > element.clientWidth) findings.push("beyond its box: " + element.textContent);
    }
    for (const element of document.querySelectorAll("p, td, th, caption, figcaption, a")) {
        const size = parseFloat(getComputedStyle(element).fontSize);
        if (element.textContent.trim() && size < smallestReadableFont) findings.push("too small to read: " + size + " px");
    }
    const summary = "window " + width + ", pictures " + document.images.length;
    parent.postMessage([summary, ...[...new Set(findings)].map((finding) => "finding: " + finding)].join("\n"), "*");
});
