"use strict";

(() => {
  const pollMilliseconds = 1000;
  const sessions = document.getElementById("sessions");
  const state = document.getElementById("state");
  const sections = new Map();
  let last = 0;

  const copyOf = (name) => document.getElementById(name).content.firstElementChild.cloneNode(true);

  function sectionFor(user) {
    if (!sections.has(user)) {
      const section = copyOf("session");
      section.querySelector(".user").textContent = user ? `User ${user}` : "Not yet identified";
      sections.set(user, section);
      sessions.prepend(section);
    }
    return sections.get(user);
  }

  function note(body) {
    const parts = [];
    if (body.position !== undefined)
      parts.push(`at ${Number(body.position).toFixed(1)} s`);
    if (body.size !== undefined)
      parts.push(`size ${body.size}`);
    if (body.videoId !== undefined)
      parts.push(body.videoId.split("/").pop());
    else if (body.pageUrl !== undefined)
      parts.push(`page ${body.pageUrl}`);
    return parts.join(" · ");
  }

  function show(request) {
    const item = copyOf("request");
    const put = (name, value) => { item.querySelector(name).textContent = value; };
    const answered = request.httpStatus !== 0;
    put("time", new Date(request.time).toLocaleTimeString([], { hour12: false }));
    put(".event", request.type || request.path.replace(/^\/+/, ""));
    put(".note", note(request.body));
    put(".status", answered ? request.serviceStatus || request.httpStatus : "cut");
    put("pre", `${request.method} ${request.path}\n${JSON.stringify(request.body, null, 2)}`);
    item.classList.toggle("failed", !answered || request.serviceStatus !== 200 || request.httpStatus !== 200);

    const section = sectionFor(request.user ?? "");
    const list = section.querySelector("ol");
    list.append(item);
    section.querySelector(".count").textContent = `${list.childElementCount} request${list.childElementCount === 1 ? "" : "s"}`;
  }

  async function poll() {
    try {
      const answer = await (await fetch(`/console/requests?after=${last}`)).json();
      if (answer.last < last)
        location.reload(); // The service has restarted and counts from 1.
      if (last === 0 && answer.last > 0)
        sessions.replaceChildren();
      answer.requests.forEach(show);
      last = answer.last;
      state.textContent = last === 1 ? "Live, 1 request" : `Live, ${last} requests`;
    } catch {
      state.textContent = "The service does not answer.";
    }
    setTimeout(poll, pollMilliseconds);
  }

  poll();
})();
