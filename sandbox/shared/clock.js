"use strict";

// The length of a video, as text and for screen readers. Both take whole seconds.
window.zelvanoClock = {
  text(seconds) {
    const pad = (number) => String(number).padStart(2, "0");
    const [hours, minutes, rest] = [Math.floor(seconds / 3600), Math.floor(seconds / 60) % 60, seconds % 60];
    return hours > 0 ? `${hours}:${pad(minutes)}:${pad(rest)}` : `${minutes}:${pad(rest)}`;
  },

  spoken(seconds) {
    const amount = (number, unit) => (number === 0 ? "" : `${number} ${unit}${number === 1 ? "" : "s"}`);
    return [
      amount(Math.floor(seconds / 3600), "hour"),
      amount(Math.floor(seconds / 60) % 60, "minute"),
      amount(seconds % 60, "second"),
    ].filter(Boolean).join(" ");
  },
};
