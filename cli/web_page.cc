#include "cli/web_page.h"

namespace corvane::cli {
namespace {

constexpr char kPage[] = R"PAGE(<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>Start</title>
<style>
:root {
  --bg: #f6f7f9; --card: #ffffff; --text: #1d2330; --muted: #667085; --line: #e3e6eb;
  --accent: #2f6fde; --accent-soft: #e8effc; --shadow: 0 1px 2px rgba(16,24,40,.06), 0 1px 3px rgba(16,24,40,.08);
}
@media (prefers-color-scheme: dark) {
  :root { --bg: #15171c; --card: #1f232b; --text: #e7e9ee; --muted: #98a1b3; --line: #2c313b;
          --accent: #7aa7ff; --accent-soft: #25324a; --shadow: 0 1px 2px rgba(0,0,0,.4); }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--bg); color: var(--text);
       font: 15px/1.45 system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", "DejaVu Sans", sans-serif; }
main { max-width: 1200px; margin: 0 auto; padding: 28px 20px 48px; }
header { display: flex; flex-direction: column; align-items: center; gap: 14px; margin-bottom: 26px; }
h1 { font-size: 22px; font-weight: 600; margin: 0; letter-spacing: .2px; }
h2 { font-size: 13px; font-weight: 600; text-transform: uppercase; letter-spacing: .08em; color: var(--muted);
     margin: 30px 0 12px; }
#search { width: min(640px, 100%); padding: 12px 16px; font-size: 16px; border-radius: 24px; color: var(--text);
          border: 1px solid var(--line); background: var(--card); box-shadow: var(--shadow); outline: none; }
#search:focus { border-color: var(--accent); }
#tiles { display: grid; grid-template-columns: repeat(auto-fill, minmax(104px, 1fr)); grid-auto-rows: 1fr; gap: 14px; }
@media (max-width: 480px) { #tiles { grid-template-columns: repeat(3, minmax(0, 1fr)); gap: 10px; } }
.tile { position: relative; background: var(--card); border: 1px solid var(--line); border-radius: 14px;
        box-shadow: var(--shadow); padding: 16px 8px 10px; text-align: center; min-width: 0;
        display: flex; flex-direction: column; justify-content: space-between; }
.tile a.go { color: inherit; text-decoration: none; display: flex; flex-direction: column; align-items: center; gap: 8px; }
.tile:hover { border-color: var(--accent); }
.icon { width: 44px; height: 44px; border-radius: 12px; display: grid; place-items: center; overflow: hidden;
        font-size: 20px; font-weight: 700; color: #fff; }
.icon img { width: 32px; height: 32px; }
.name { font-size: 13px; width: 100%; overflow: hidden; text-overflow: ellipsis; white-space: nowrap; }
.parts { font-size: 11px; color: var(--muted); width: 100%; overflow: hidden; text-overflow: ellipsis; white-space: nowrap; }
.pinned::after { content: "\1F4CC"; position: absolute; top: 6px; left: 8px; font-size: 12px; }
.actions { display: flex; flex-wrap: wrap; justify-content: center; gap: 3px; margin-top: 8px; opacity: .35;
           transition: opacity .15s; }
.tile:hover .actions, .tile:focus-within .actions { opacity: 1; }
@media (hover: none) { .actions { opacity: 1; } }
.actions button { border: 0; background: var(--accent-soft); color: var(--text); border-radius: 8px; padding: 3px 6px;
                  font-size: 11.5px; cursor: pointer; }
@media (max-width: 480px) { .actions button { padding: 2px 4px; font-size: 11px; } }
.actions button:hover { background: var(--accent); color: #fff; }
.columns { display: grid; grid-template-columns: 1fr 1fr; gap: 24px; }
@media (max-width: 760px) { .columns { grid-template-columns: 1fr; } main { padding: 18px 12px 32px; } }
ul.rows { list-style: none; margin: 0; padding: 0; background: var(--card); border: 1px solid var(--line);
          border-radius: 14px; box-shadow: var(--shadow); overflow: hidden; }
ul.rows li { display: flex; gap: 10px; align-items: baseline; padding: 9px 14px; border-top: 1px solid var(--line); min-width: 0; }
ul.rows li:first-child { border-top: 0; }
ul.rows li.day { background: var(--accent-soft); font-size: 12px; font-weight: 600; color: var(--muted); }
ul.rows time { color: var(--muted); font-size: 12px; font-variant-numeric: tabular-nums; flex: none; }
ul.rows a { color: var(--text); text-decoration: none; overflow: hidden; text-overflow: ellipsis; white-space: nowrap; }
ul.rows a:hover { color: var(--accent); }
.empty { color: var(--muted); padding: 12px 14px; }
dialog { border: 1px solid var(--line); border-radius: 14px; background: var(--card); color: var(--text);
         max-width: min(720px, 92vw); box-shadow: 0 10px 30px rgba(0,0,0,.25); }
dialog pre { white-space: pre-wrap; font: 13px/1.5 ui-monospace, "DejaVu Sans Mono", monospace; margin: 0 0 12px; }
dialog button { float: right; }
#status { position: fixed; bottom: 16px; left: 50%; transform: translateX(-50%); background: var(--text); color: var(--bg);
          padding: 8px 14px; border-radius: 10px; font-size: 13px; display: none; }
</style>
</head>
<body>
<main>
  <header>
    <h1>Your sites</h1>
    <input id="search" type="search" placeholder="Search your history" autocomplete="off" aria-label="Search your history">
  </header>
  <section id="results" hidden><h2>Found in your history</h2><ul class="rows" id="found"></ul></section>
  <section id="home">
    <div id="tiles" aria-label="Your sites"></div>
    <div class="columns">
      <section><h2>Lately taken up</h2><ul class="rows" id="recent"></ul></section>
      <section><h2>Today</h2><ul class="rows" id="today"></ul></section>
    </div>
  </section>
</main>
<dialog id="why"><pre id="whytext"></pre><button id="whyclose" type="button">Close</button></dialog>
<div id="status" role="status"></div>
<script>
"use strict";
const $ = (id) => document.getElementById(id);

function el(tag, className, text) {
  const node = document.createElement(tag);
  if (className) node.className = className;
  if (text !== undefined) node.textContent = text;
  return node;
}

async function api(path, body) {
  const init = body === undefined ? {} :
      {method: "POST", headers: {"Content-Type": "application/json"}, body: JSON.stringify(body)};
  const response = await fetch(path, init);
  const value = await response.json();
  if (!response.ok) throw new Error(value.error || ("status " + response.status));
  return value;
}

function say(text) {
  const status = $("status");
  status.textContent = text;
  status.style.display = "block";
  clearTimeout(say.timer);
  say.timer = setTimeout(() => { status.style.display = "none"; }, 3500);
}

// Only web and file addresses become links: a stored text never runs.
function safeHref(url) {
  const full = /^[a-z]+:/i.test(url) ? url : "https://" + url;
  return /^(https?|file):/i.test(full) ? full : null;
}

function hostOf(url) {
  try { return new URL(safeHref(url) || "https://invalid").hostname; } catch (e) { return ""; }
}

function hue(text) {
  let h = 0;
  for (const c of text) h = (h * 31 + c.codePointAt(0)) % 360;
  return h;
}

function iconFor(site) {
  const box = el("span", "icon");
  const label = (site.name || hostOf(site.url) || "?").trim();
  const letter = () => {
    box.textContent = label.slice(0, 1).toUpperCase();
    box.style.background = "hsl(" + hue(label) + " 55% 45%)";
  };
  const host = hostOf(site.url);
  if (!host) { letter(); return box; }
  const img = el("img");
  img.alt = "";
  img.loading = "lazy";
  img.onerror = () => { img.remove(); letter(); };
  img.src = "/api/favicon?host=" + encodeURIComponent(host);
  box.append(img);
  return box;
}

function button(text, title, onClick) {
  const b = el("button", "", text);
  b.type = "button";
  b.title = title;
  b.addEventListener("click", (event) => { event.preventDefault(); onClick(); });
  return b;
}

async function act(path, body, done) {
  try { await api(path, body); say(done); await loadSites(); } catch (e) { say(e.message); }
}

async function why(site) {
  try {
    const answer = await api("/api/explain?target=" + encodeURIComponent(site.domain || hostOf(site.url)));
    $("whytext").textContent = answer.lines.join("\n");
  } catch (e) {
    $("whytext").textContent = e.message;
  }
  $("why").showModal();
}

function tile(site) {
  const card = el("div", "tile" + (site.focus ? " pinned" : ""));
  card.dataset.id = site.id;
  const href = safeHref(site.url);
  const link = el(href ? "a" : "div", "go");
  if (href) link.href = href;
  link.append(iconFor(site), el("span", "name", site.name || hostOf(site.url)));
  const parts = (site.subSites || []).map((sub) => sub.name || sub.domain).join(" · ");
  if (parts) link.append(el("span", "parts", parts));
  card.append(link);
  const actions = el("div", "actions");
  if (site.focus) {
    actions.append(button("Unpin", "Unpin this site", () => act("/api/unpin", {id: "p" + site.focusId}, "Unpinned")));
  } else {
    actions.append(button("Pin", "Pin this site first",
        () => act("/api/pin", {url: site.mainDomain || hostOf(site.url), name: site.name || hostOf(site.url)}, "Pinned")));
  }
  if (site.kind !== "pin") {
    actions.append(button("Hide", "Hide this site for good", () => act("/api/hide", {id: site.id}, "Hidden")));
    actions.append(button("Why", "Why this site is here", () => why(site)));
  }
  card.append(actions);
  return card;
}

function row(record, withTime) {
  const item = el("li");
  if (withTime && record.lastVisit) {
    const time = el("time", "", record.lastVisit.slice(11, 16));
    time.dateTime = record.lastVisit;
    item.append(time);
  }
  const href = safeHref(record.url);
  const link = el(href ? "a" : "span", "", record.name || record.url);
  if (href) link.href = href;
  link.title = record.url;
  item.append(link);
  return item;
}

function fillDays(list, days, emptyText) {
  list.replaceChildren();
  for (const day of days) {
    list.append(el("li", "day", day.heading || day.label));
    for (const visit of day.visits) list.append(row(visit, true));
  }
  if (!list.children.length) list.append(el("li", "empty", emptyText));
}

async function loadSites() {
  try {
    const sites = await api("/api/sites?n=" + (window.innerWidth < 600 ? 18 : 36));
    $("tiles").replaceChildren(...sites.map(tile));
    if (!sites.length) $("tiles").append(el("p", "empty", "No sites yet: the ranking grows from your history."));
  } catch (e) { say(e.message); }
}

async function loadLists() {
  try {
    const recent = await api("/api/recent?n=8");
    $("recent").replaceChildren(...recent.map((r) => row(r, false)));
    if (!recent.length) $("recent").append(el("li", "empty", "Nothing new lately."));
    const days = await api("/api/history?n=30");
    fillDays($("today"), days.slice(0, 1), "No visits yet today.");
  } catch (e) { say(e.message); }
}

let searchSerial = 0;
$("search").addEventListener("input", async () => {
  const text = $("search").value.trim();
  const serial = ++searchSerial;
  $("results").hidden = !text;
  $("home").hidden = !!text;
  if (!text) return;
  try {
    const days = await api("/api/search?q=" + encodeURIComponent(text));
    if (serial === searchSerial) fillDays($("found"), days, "Nothing found.");
  } catch (e) { say(e.message); }
});
$("whyclose").addEventListener("click", () => $("why").close());
loadSites();
loadLists();
</script>
</body>
</html>
)PAGE";

}  // namespace

const char* StartPageHtml() { return kPage; }

}  // namespace corvane::cli
