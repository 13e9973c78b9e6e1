"use strict";

// A plug-in of the player. It shows recommended videos while the video is paused, and reports the viewer's pick.
(() => {
  const player = window.kPlayer;
  const clock = window.zelvanoClock;
  const text = (value) => (typeof value === "string" ? value : "");

  function element(name, className, parent) {
    const made = document.createElement(name);
    made.className = className;
    parent?.append(made);
    return made;
  }

  const strip = element("section", "zelvano", player.layer);
  strip.setAttribute("aria-label", "Up next");
  strip.hidden = true;
  element("h2", "zelvano-heading", strip).textContent = "Up next";
  const list = element("ul", "zelvano-cards", strip);
  list.setAttribute("role", "list");

  let videos = [];
  let chosen = false; // Until the video plays again.

  // The JSON text of an array. Anything else means no suggestions.
  function read(params) {
    try {
      const value = JSON.parse(params);
      return typeof params === "string" && Array.isArray(value) ? value : [];
    } catch {
      return [];
    }
  }

  function addPicture(card, url) {
    if (!url)
      return;
    const picture = element("img", "zelvano-picture", card);
    picture.alt = "";
    picture.draggable = false;
    picture.loading = "lazy";
    picture.addEventListener("error", () => picture.remove());
    picture.src = url;
  }

  function makeCard(video, index) {
    const title = text(video.title) || "Untitled video";
    const seconds = Math.floor(Number(video.durationSec)) || 0;
    const item = document.createElement("li");
    const card = element("button", "zelvano-card", item);
    card.type = "button";
    card.dataset.index = String(index);
    card.setAttribute("aria-label", seconds > 0 ? `${title}, ${clock.spoken(seconds)}` : title);
    addPicture(card, text(video.imageUrl));
    element("span", "zelvano-scrim", card);
    if (seconds > 0)
      element("span", "zelvano-duration", card).textContent = clock.text(seconds);
    const caption = element("span", "zelvano-title", card);
    caption.dir = "auto";
    caption.textContent = title;
    return item;
  }

  function showOrHide() {
    strip.hidden = chosen || player.state === "playing" || list.childElementCount === 0;
    fade();
  }

  // Cards fade out towards an edge with more cards beyond it.
  function fade() {
    const beyond = list.scrollWidth - list.clientWidth - Math.abs(list.scrollLeft);
    list.style.setProperty("--fade-start", Math.abs(list.scrollLeft) > 1 ? "28px" : "0px");
    list.style.setProperty("--fade-end", beyond > 1 ? "28px" : "0px");
  }

  function setVideos(params) {
    videos = read(params);
    chosen = false;
    // An entry that is not a video gets no card but keeps its index.
    const valid = (video) => typeof video === "object" && video !== null && !Array.isArray(video);
    const cards = videos.flatMap((video, index) => (valid(video) ? [makeCard(video, index)] : []));
    list.replaceChildren(...cards);
    list.style.setProperty("--count", String(cards.length));
    list.scrollTo(0, 0);
    showOrHide();
  }

  function choose(event) {
    const card = event.target.closest("button");
    if (!card)
      return;
    const index = Number(card.dataset.index);
    const video = videos[index];
    chosen = true;
    showOrHide();
    player.raise("zelvanoPluginEvent", {
      index, videoId: text(video.videoId), url: text(video.url), title: text(video.title),
    });
  }

  function moveFocus(event) {
    const cards = Array.from(list.querySelectorAll("button"));
    const current = cards.indexOf(document.activeElement);
    const targets = { ArrowLeft: current - 1, ArrowRight: current + 1, Home: 0, End: cards.length - 1 };
    if (current < 0 || !(event.key in targets))
      return;
    event.preventDefault(); // Also at the last card, or the player would seek.
    cards[targets[event.key]]?.focus();
  }

  list.addEventListener("click", choose);
  list.addEventListener("keydown", moveFocus);
  list.addEventListener("scroll", fade);
  list.addEventListener("wheel", (event) => { list.scrollLeft += event.deltaX || event.deltaY; }, { passive: true });
  new ResizeObserver(fade).observe(list);

  player.onState((state) => {
    if (state === "playing")
      chosen = false;
    showOrHide();
  });
  player.onNotification("zelvanoData", setVideos);
})();
