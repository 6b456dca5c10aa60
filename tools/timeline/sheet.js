"use strict";
const data = JSON.parse(document.getElementById("data").textContent);
const find = (id) => document.getElementById(id);
const scroll = find("scroll"), tip = find("tip"), lines = find("lines");
const head = document.querySelector(".head"), rows = document.querySelector(".rows");
const LEAST = 0.5, MOST = 400; // pixels a second
let scale = data.scale;

const clock = (t) => `${Math.floor(t / 60)}:${(t % 60).toFixed(3).padStart(6, "0")}`;
const short = (v) => String(Math.round(v * 1000) / 1000);
const namesWidth = () => document.querySelector(".corner").getBoundingClientRect().width;

// Everything in a group "time" has seconds for x; what must not be stretched stands in a group "at".
function draw() {
  for (const svg of [head, rows]) {
    svg.setAttribute("width", data.seconds * scale);
    for (const group of svg.querySelectorAll(".time")) group.setAttribute("transform", `scale(${scale} 1)`);
    for (const group of svg.querySelectorAll(".at"))
      group.setAttribute("transform", `translate(${group.dataset.t} ${group.dataset.y}) scale(${1 / scale} 1)`);
    // Pictures and words that would lie on each other give way.
    const ends = {};
    for (const group of svg.querySelectorAll("[data-room]")) {
      const x = group.dataset.t * scale, kind = group.dataset.kind;
      const fits = !(x < ends[kind]);
      group.style.display = fits ? "" : "none";
      if (fits) ends[kind] = x + Number(group.dataset.room);
    }
    for (const path of svg.querySelectorAll(".beats")) path.style.display = scale < 6 ? "none" : "";
  }
}

// `x`: what stays where it is, in pixels from the left edge of the music on screen.
function zoom(factor, x) {
  const time = (scroll.scrollLeft + x) / scale;
  scale = Math.min(MOST, Math.max(LEAST, scale * factor));
  draw();
  scroll.scrollLeft = time * scale - x;
}

function fit(width) {
  scale = Math.min(MOST, Math.max(LEAST, width / data.seconds));
  draw();
}
const fitWindow = () => fit(scroll.clientWidth - namesWidth() - 4);

function timeAt(event) {
  const box = (event.currentTarget.ownerSVGElement || event.currentTarget).getBoundingClientRect();
  return (event.clientX - box.left) / scale;
}

function valueAt(points, t) {
  let low = 0, high = points.length - 1;
  if (high < 0) return 0;
  if (t <= points[0][0]) return points[0][1];
  if (t >= points[high][0]) return points[high][1];
  while (high - low > 1) {
    const middle = (low + high) >> 1;
    if (points[middle][0] <= t) low = middle; else high = middle;
  }
  const [t0, v0] = points[low], [t1, v1] = points[high];
  return t1 > t0 ? v0 + (v1 - v0) * (t - t0) / (t1 - t0) : v1;
}

function rowAt(event) {
  const y = event.clientY - rows.getBoundingClientRect().top;
  return data.rows.find((row) => y >= row.y && y < row.y + row.height);
}

// The trigger under the pointer: within a few pixels.
function triggerAt(row, t) {
  let best = null, reach = 6 / scale;
  for (const trigger of row.triggers)
    for (const time of trigger.times)
      if (Math.abs(time - t) <= reach) { reach = Math.abs(time - t); best = { ...trigger, time }; }
  return best;
}

function music(t) {
  if (data.beat <= 0 || t < data.firstBar) return "";
  const beat = Math.floor((t - data.firstBar) / data.beat + 1e-6);
  return `  bar ${Math.floor(beat / 4) + 1}.${beat % 4 + 1}`;
}

function describe(row, t) {
  let text = `${clock(t)}  ${short(t)} s${music(t)}`;
  if (!row) return text;
  text += `\n${row.number}  ${row.name}  ${short(row.start)} to ${short(row.end)}${row.on ? "" : "  (off)"}  line ${row.line}`;
  const trigger = triggerAt(row, t);
  if (trigger) text += `\n@ ${trigger.name} ${trigger.value} at ${short(trigger.time)}`;
  if (t >= row.start && t < row.end)
    for (const spline of row.splines) text += `\n~ ${spline.name} ${short(valueAt(spline.points, t))}`;
  return text;
}

function hover(event) {
  const t = timeAt(event);
  tip.textContent = describe(event.currentTarget === rows ? rowAt(event) : null, t);
  tip.hidden = false;
  const box = tip.getBoundingClientRect();
  tip.style.left = Math.min(event.clientX + 14, innerWidth - box.width - 4) + "px";
  tip.style.top = (event.clientY + 18 + box.height > innerHeight ? event.clientY - box.height - 8 : event.clientY + 18) + "px";
  for (const line of document.querySelectorAll(".now")) {
    line.setAttribute("x1", t);
    line.setAttribute("x2", t);
    line.style.display = "";
  }
}

function showLines(first, last) {
  lines.replaceChildren();
  const from = Math.max(1, first - 3), to = Math.min(data.script.length, last + 3);
  for (let n = from; n <= to; ++n) {
    const line = document.createElement(n >= first && n <= last ? "b" : "span");
    const number = document.createElement("i");
    number.textContent = String(n).padStart(5) + "  ";
    line.append(number, data.script[n - 1] + "\n");
    lines.append(line);
  }
  lines.hidden = false;
  lines.scrollTop = 0;
}

function choose(event) {
  const row = rowAt(event);
  if (!row) { lines.hidden = true; return; }
  const trigger = event.currentTarget === rows ? triggerAt(row, timeAt(event)) : null;
  if (trigger) showLines(trigger.line, trigger.line); else showLines(row.line, row.last);
}

for (const part of [head, rows]) {
  part.addEventListener("mousemove", hover);
  part.addEventListener("mouseleave", () => {
    tip.hidden = true;
    for (const line of document.querySelectorAll(".now")) line.style.display = "none";
  });
}
rows.addEventListener("click", choose);
document.querySelector(".names").addEventListener("click", choose);
scroll.addEventListener("wheel", (event) => {
  if (!event.ctrlKey && !head.contains(event.target)) return;
  event.preventDefault();
  zoom(Math.pow(1.0015, -event.deltaY), event.clientX - scroll.getBoundingClientRect().left - namesWidth());
}, { passive: false });
document.addEventListener("keydown", (event) => {
  if (event.ctrlKey || event.altKey || event.metaKey) return;
  const middle = (scroll.clientWidth - namesWidth()) / 2;
  const act = {
    "+": () => zoom(1.25, middle), "=": () => zoom(1.25, middle), "-": () => zoom(0.8, middle), "0": fitWindow,
    ArrowLeft: () => scroll.scrollLeft -= 80, ArrowRight: () => scroll.scrollLeft += 80,
    ArrowUp: () => scroll.scrollTop -= 60, ArrowDown: () => scroll.scrollTop += 60,
    Home: () => scroll.scrollLeft = 0, End: () => scroll.scrollLeft = scroll.scrollWidth,
    Escape: () => lines.hidden = true,
  }[event.key];
  if (!act) return;
  event.preventDefault();
  act();
});
find("theme").addEventListener("click", () => {
  const root = document.documentElement;
  const isDark = root.dataset.theme ? root.dataset.theme === "dark" : matchMedia("(prefers-color-scheme: dark)").matches;
  root.dataset.theme = isDark ? "light" : "dark";
});

// On paper, the rows come in slices that end between two of them, each under the music.
const PAPER_WIDTH = 1040, PAPER_HEIGHT = 680; // pixels, without margins and the title
const pages = document.createElement("div");
pages.id = "pages";
document.body.append(pages);

function slice(svg, top, height) {
  const copy = svg.cloneNode(true);
  copy.setAttribute("viewBox", `0 ${top} ${svg.getAttribute("width")} ${height}`);
  copy.setAttribute("height", height);
  return copy;
}

function paginate() {
  const heads = [document.querySelector(".corner"), head], parts = [document.querySelector(".names"), rows];
  const room = PAPER_HEIGHT - head.getAttribute("height"), end = Number(rows.getAttribute("height"));
  const ends = [...data.rows.map((row) => row.y + row.height), end];
  for (let top = 0, bottom; top < end; top = bottom) {
    bottom = Math.max(...ends.filter((y) => y > top && y <= top + room));
    if (!(bottom > top)) bottom = Math.min(top + room, end); // a row higher than the paper
    const page = document.createElement("div");
    page.append(...heads.map((svg) => svg.cloneNode(true)), ...parts.map((svg) => slice(svg, top, bottom - top)));
    pages.append(page);
  }
}

let kept = 0;
addEventListener("beforeprint", () => { kept = scale; fit(PAPER_WIDTH - namesWidth()); paginate(); });
addEventListener("afterprint", () => { pages.replaceChildren(); scale = kept; draw(); });
fitWindow();
