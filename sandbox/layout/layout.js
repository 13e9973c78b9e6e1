"use strict";

(() => {
  const smallestCard = 110; // When all cards fit.
  const smallestScrolledCard = 100;
  const largestCard = 420;
  const roomyCard = 190;
  const aspect = 16 / 9;

  const clock = window.zelvanoClock;
  const categoryNames = { FORYOU: "For you", MOSTVIEWED: "Most viewed", MOSTRECENT: "Most recent" };

  const panel = document.getElementById("panel");
  const list = document.getElementById("cards");
  const nothing = document.getElementById("nothing");
  const template = document.getElementById("card");

  let columns = 1;

  const text = (value) => (typeof value === "string" ? value : "");
  const buttons = () => Array.from(list.querySelectorAll("button"));

  function makeCard(video, index) {
    const item = template.content.firstElementChild.cloneNode(true);
    const find = (name) => item.querySelector(name);
    const title = text(video.title) || "Untitled video";
    const seconds = Math.floor(Number(video.durationSec)) || 0;
    const category = text(video.category);
    const categoryName = Object.hasOwn(categoryNames, category) ? categoryNames[category] : category;

    const button = find("button");
    button.dataset.index = String(index);
    button.dataset.category = category;
    button.style.setProperty("--order", String(Math.min(index, 8)));
    button.setAttribute("aria-label", [title, clock.spoken(seconds), categoryName].filter(Boolean).join(", "));

    find(".title").textContent = title;
    find(".duration").textContent = seconds > 0 ? clock.text(seconds) : "";
    find(".category").textContent = categoryName;

    const picture = find("img");
    picture.addEventListener("error", () => { picture.hidden = true; });
    picture.hidden = !text(video.imageUrl);
    if (!picture.hidden)
      picture.src = video.imageUrl;
    return item;
  }

  // The number of columns with the largest cards that all fit.
  function bestGrid(count, width, height, gap) {
    let best = { columns: 1, cardWidth: 0 };
    for (let tried = 1; tried <= count; ++tried) {
      const rows = Math.ceil(count / tried);
      const byWidth = (width - gap * (tried - 1)) / tried;
      const byHeight = ((height - gap * (rows - 1)) / rows) * aspect;
      const cardWidth = Math.min(byWidth, byHeight, largestCard);
      if (cardWidth > best.cardWidth + 0.5)
        best = { columns: tried, cardWidth };
    }
    return best;
  }

  function fit() {
    const count = list.childElementCount;
    if (count === 0)
      return;
    const style = getComputedStyle(list);
    const gap = parseFloat(style.columnGap);
    const width = list.clientWidth - parseFloat(style.paddingLeft) - parseFloat(style.paddingRight);
    const height = list.clientHeight - parseFloat(style.paddingBottom);

    let { columns: fitting, cardWidth } = bestGrid(count, width, height, gap);
    // Scroll only vertically: a horizontal swipe makes the library close the page.
    const scrolls = cardWidth < smallestCard && count > 1;
    if (scrolls) {
      fitting = Math.max(1, Math.floor((width + gap) / (smallestScrolledCard + gap)));
      cardWidth = Math.min((width - gap * (fitting - 1)) / fitting, largestCard);
    }
    columns = fitting;
    const used = cardWidth * columns + gap * (columns - 1);
    list.classList.toggle("scrolls", scrolls);
    list.classList.toggle("roomy", cardWidth >= roomyCard);
    list.style.setProperty("--columns", String(columns));
    panel.style.setProperty("--inset", `${Math.floor((width - used) / 2)}px`);
    panel.style.setProperty("--card-width", `${Math.floor(cardWidth)}px`);
  }

  function updateSuggestions(videos) {
    const valid = (video) => typeof video === "object" && video !== null;
    const shown = Array.isArray(videos) ? videos : [];
    const focused = document.activeElement?.dataset?.index;
    // An entry that is not a video gets no card but keeps its index, because the library counts it.
    list.replaceChildren(...shown.flatMap((video, index) => (valid(video) ? [makeCard(video, index)] : [])));
    list.scrollTo(0, 0);
    list.hidden = list.childElementCount === 0;
    nothing.hidden = !list.hidden;
    panel.hidden = false;
    fit();
    if (focused !== undefined)
      buttons().find((button) => button.dataset.index === focused)?.focus();
  }

  function moveFocus(event) {
    const all = buttons();
    const current = all.indexOf(document.activeElement);
    const targets = {
      ArrowLeft: current - 1,
      ArrowRight: current + 1,
      ArrowUp: current - columns,
      ArrowDown: current + columns,
      Home: 0,
      End: all.length - 1,
    };
    const target = all[targets[event.key]];
    if (current < 0 || !target)
      return;
    event.preventDefault();
    target.focus();
  }

  list.addEventListener("click", (event) => {
    const card = event.target.closest("button");
    if (card)
      location.href = `zelvano://index?${card.dataset.index}`;
  });
  list.addEventListener("keydown", moveFocus);
  new ResizeObserver(fit).observe(document.documentElement);

  window.updateSuggestions = updateSuggestions;
  // Wait for load: a navigation stops the loading of the page, even a refused one.
  window.addEventListener("load", () => { location.href = "zelvano://ready"; });
})();
