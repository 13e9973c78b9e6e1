"use strict";

// A web player of another maker. It shows one video and is available as window.kPlayer. If a native host injects
// qwebchannel.js and registers an object "kHost", the player calls it in order:
//   mediaDidChange(media)               four times a second during play, and before each other call
//   loadStateDidChange(1)               once for each source, when it can play
//   playbackStateDidChange(state)       see playbackState; the first call is "loaded"
//   eventDidFire(name, params)          an event of a plug-in
(() => {
  const arrowSeconds = 5;
  const controlsMilliseconds = 2500; // How long the controls stay during play.
  const messageMilliseconds = 5000;

  const loadState = { playable: 1 };
  const playbackState = {
    loaded: 2, ready: 3, waiting: 4, playing: 5, paused: 6, ended: 7, failed: 8, seekForward: 9, seekBackward: 10,
  };

  const clock = window.zelvanoClock;
  const find = (id) => document.getElementById(id);
  const [root, video, front, layer, message, toggle, seekBar] =
    ["player", "video", "front", "layer", "message", "toggle", "seek"].map(find);

  const configuration = new URLSearchParams(location.search);
  const autoPlay = configuration.get("autoPlay") === "true";
  let entryId = "";
  let playable = false; // The element repeats the event after each seek.
  let playsWhenPlayable = false;
  let seeks = []; // Requested seeks without an event from the element yet.
  let reported = "none"; // The last state sent to the host: "none", "playing", "paused" or "ended".

  const finite = (number) => (Number.isFinite(number) ? number : 0);
  const wantsToPlay = () => !video.error && (playsWhenPlayable || !video.paused);

  // ---- To the host ----

  let host = null;
  let waitingCalls = []; // Until the channel connects.

  function call(method, ...parameters) {
    if (host)
      host[method]?.(...parameters);
    else
      waitingCalls?.push([method, ...parameters]);
  }

  function reportMedia() {
    call("mediaDidChange", {
      entryId,
      duration: finite(video.duration),
      currentTime: video.currentTime,
      videoWidth: video.videoWidth,
      videoHeight: video.videoHeight,
      paused: video.paused,
    });
  }

  // The host reads the last media values in its handlers, so send them before each other call.
  function report(method, ...parameters) {
    reportMedia();
    call(method, ...parameters);
  }

  const reportPlayback = (state) => report("playbackStateDidChange", state);

  function connect() {
    const transport = window.qt?.webChannelTransport;
    if (!transport || !window.QWebChannel) {
      waitingCalls = null;
      return;
    }
    new window.QWebChannel(transport, (channel) => {
      const calls = waitingCalls;
      waitingCalls = null;
      host = channel.objects.kHost;
      if (host)
        calls.forEach((waiting) => call(...waiting));
    });
  }

  // ---- To the plug-ins ----

  const notificationHandlers = [];
  const stateHandlers = [];

  function sendNotification(name, params) {
    notificationHandlers.filter((entry) => entry.name === name).forEach((entry) => entry.handler(params));
  }

  function state() {
    if (wantsToPlay())
      return "playing";
    return video.ended ? "ended" : "paused";
  }

  // ---- The video ----

  // "3", or the service's identifier for video 3: "sandbox-3", or "sandbox-3-2" in a longer list.
  function numberOf(id) {
    const [, plain, listed] = /^(\d+)$|^sandbox-(\d+)(?:-\d+)?$/.exec(id) ?? [];
    const number = Number(plain ?? listed);
    return number >= 1 ? number : 0;
  }

  function open(id, playing) {
    const number = numberOf(id);
    if (number === 0) {
      showMessage(id ? `There is no video “${id}”.` : "There is no video to play.");
      return;
    }
    showMessage("");
    entryId = id;
    playable = false;
    playsWhenPlayable = playing;
    reported = "none";
    seeks = [];
    video.src = `/media/${number}.mp4`;
    refresh();
  }

  function play() {
    if (!video.src)
      return;
    if (video.error) {
      open(entryId, true);
      return;
    }
    playsWhenPlayable = !playable;
    if (playable) {
      if (video.currentTime >= video.duration)
        video.currentTime = 0; // The element does this by itself only at its own end.
      video.play().catch(() => {}); // Rejected by the browser's policy, or by an earlier pause.
    }
    refresh();
  }

  function pause() {
    playsWhenPlayable = false;
    video.pause();
    refresh();
  }

  function seek(seconds) {
    const target = Math.min(Math.max(Number(seconds), 0), video.duration);
    const from = video.currentTime;
    if (!Number.isFinite(target) || target === from)
      return;
    if (reported === "ended")
      reported = "paused"; // The video may reach its end again.
    video.currentTime = target;
    seeks.push(target > from ? playbackState.seekForward : playbackState.seekBackward);
    refresh();
  }

  function becomePlayable() {
    if (playable)
      return;
    playable = true;
    report("loadStateDidChange", loadState.playable);
    reportPlayback(playbackState.ready);
    if (playsWhenPlayable)
      play();
    refresh();
  }

  // A media element repeats events, for example after a seek. The host gets each change once.
  function become(what) {
    if (reported === what)
      return;
    reported = what;
    reportPlayback(playbackState[what]);
    refresh();
  }

  const reactions = {
    canplay: becomePlayable,
    playing: () => become("playing"),
    pause: () => {
      // The element also pauses at the end and before the first play.
      if (!video.ended && reported === "playing")
        become("paused");
    },
    ended: () => become("ended"),
    waiting: () => {
      if (!video.seeking) // The seek is reported already.
        reportPlayback(playbackState.waiting);
    },
    seeking: () => {
      if (seeks.length > 0) // Without a request: the element seeks by itself to play again from the end.
        reportPlayback(seeks.shift());
    },
    error: () => {
      playsWhenPlayable = false;
      showMessage("This video cannot be played.");
      reportPlayback(playbackState.failed);
    },
    loadedmetadata: reportMedia,
    timeupdate: reportMedia,
  };

  // ---- What is seen ----

  const shapes = {
    play: "M8 5.2v13.6L19 12z",
    pause: "M7 5h3.6v14H7zM13.4 5H17v14h-3.6z",
    replay: "M12 5.5V2L7 6.5 12 11V7.6a5.6 5.6 0 1 1-5.6 5.6H4.2A7.8 7.8 0 1 0 12 5.5z",
  };

  let messageTimer = 0;
  let controlsTimer = 0;
  let lastState = "";

  // Over a loaded video the message disappears.
  function showMessage(text) {
    clearTimeout(messageTimer);
    message.textContent = text;
    message.hidden = text === "";
    if (text && video.src && !video.error)
      messageTimer = setTimeout(() => { message.hidden = true; }, messageMilliseconds);
  }

  function refresh() {
    const now = state();
    const action = now === "playing" ? "pause" : now === "ended" ? "replay" : "play";
    toggle.setAttribute("aria-label", { play: "Play", pause: "Pause", replay: "Play again" }[action]);
    document.querySelectorAll(".toggle path").forEach((path) => path.setAttribute("d", shapes[action]));
    root.dataset.state = now;
    root.classList.toggle("empty", !video.src);
    root.classList.toggle("waits", Boolean(video.src) && !video.error && video.readyState < 3 && now === "playing");
    seekBar.disabled = !Number.isFinite(video.duration);
    showTime();
    if (now === lastState)
      return;
    lastState = now;
    showControls();
    stateHandlers.forEach((handler) => handler(now));
  }

  let scrubbing = false;

  function showTime() {
    const duration = finite(video.duration);
    if (!scrubbing) {
      seekBar.max = duration || 1;
      seekBar.value = video.currentTime;
    }
    const buffered = video.buffered.length ? video.buffered.end(video.buffered.length - 1) : 0;
    seekBar.style.setProperty("--played", Number(seekBar.value) / Number(seekBar.max));
    seekBar.style.setProperty("--buffered", buffered / Number(seekBar.max));
    showSeconds(Math.floor(Number(seekBar.value)), Math.floor(duration));
  }

  // Only on changes: the bar moves with each frame.
  function showSeconds(position, duration) {
    const shown = `${position}/${duration}`;
    if (shown === seekBar.dataset.shown)
      return;
    seekBar.dataset.shown = shown;
    find("current").textContent = clock.text(position);
    find("total").textContent = clock.text(duration);
    seekBar.setAttribute("aria-valuetext", `${clock.spoken(position) || "start"} of ${clock.spoken(duration)}`);
  }

  let frame = 0;

  function showEachFrame() {
    cancelAnimationFrame(frame);
    showTime();
    if (!video.paused)
      frame = requestAnimationFrame(showEachFrame);
  }

  function showControls() {
    clearTimeout(controlsTimer);
    root.classList.remove("quiet");
    controlsTimer = setTimeout(() => {
      root.classList.toggle("quiet", state() === "playing" && !document.querySelector(".controls :focus-visible"));
    }, controlsMilliseconds);
  }

  // ---- What the viewer does ----

  const playOrPause = () => (wantsToPlay() ? pause() : play());

  function onKey(event) {
    if (event.defaultPrevented || event.ctrlKey || event.altKey || event.metaKey)
      return;
    showControls();
    if (event.key === "ArrowLeft")
      seek(video.currentTime - arrowSeconds);
    else if (event.key === "ArrowRight")
      seek(video.currentTime + arrowSeconds);
    else if (event.key === " " && !event.target.closest("button"))
      playOrPause();
    else
      return;
    event.preventDefault();
  }

  for (const [event, reaction] of Object.entries(reactions))
    video.addEventListener(event, reaction);
  for (const event of ["play", "playing", "pause", "ended", "waiting", "canplay", "error", "durationchange", "progress",
    "seeking", "seeked", "emptied"])
    video.addEventListener(event, refresh);
  video.addEventListener("playing", showEachFrame);

  front.addEventListener("click", (event) => {
    if (!event.target.closest(".layer, .controls"))
      playOrPause();
  });
  toggle.addEventListener("click", playOrPause);
  // Seek when the handle is released, not for each pixel.
  seekBar.addEventListener("input", () => { scrubbing = true; showTime(); });
  seekBar.addEventListener("change", () => { scrubbing = false; seek(seekBar.value); });
  document.addEventListener("keydown", onKey);
  for (const event of ["pointermove", "pointerdown", "focusin"])
    document.addEventListener(event, showControls);
  document.addEventListener("contextmenu", (event) => event.preventDefault());

  // ---- What others may call ----

  const evaluations = {
    "{autoPlay}": () => autoPlay,
    "{entryId}": () => entryId,
    "{duration}": () => finite(video.duration),
    "{currentTime}": () => video.currentTime,
  };

  window.kPlayer = {
    play,
    pause,
    seek,
    changeMedia: (id) => open(String(id ?? ""), true),
    evaluate: (expression) => (Object.hasOwn(evaluations, expression) ? evaluations[expression]() : null),
    sendNotification,

    // For plug-ins. They draw in the layer, which is over the video above the controls and as high as its content. Each
    // state change calls the state handlers with "playing", "paused" or "ended".
    layer,
    get state() { return state(); },
    onState: (handler) => { stateHandlers.push(handler); },
    onNotification: (name, handler) => { notificationHandlers.push({ name, handler }); },
    raise: (name, params) => report("eventDidFire", name, params),
  };

  open(configuration.get("entryId") ?? "", autoPlay);
  refresh();
  reportPlayback(playbackState.loaded);
  connect();
})();
